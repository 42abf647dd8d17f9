#include "panels/ToviSpiListCtrl.h"

#include "document/ToviItemDef.h"
#include "document/ToviTextPairArray.h"
#include "settings/ToviItemShowSettings.h"

#include <QHeaderView>

namespace {

const QString kControlValueTitle = QStringLiteral("施工管理値");

}  // namespace

ToviSpiListCtrl::ToviSpiListCtrl(QWidget* parent) : QTreeWidget(parent) {
    setObjectName(QStringLiteral("infoList"));
    setColumnCount(2);
    setHeaderLabels({QStringLiteral("項目名"), QStringLiteral("入力値")});
    setRootIsDecorated(false);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setAllColumnsShowFocus(true);
    setUniformRowHeights(true);
    setFrameShape(QFrame::StyledPanel);
    setTextElideMode(Qt::ElideRight);
}

void ToviSpiListCtrl::Fill(const ToviItemShowSettings& settings, const ToviTextPairArray& pairs) {
    setUpdatesEnabled(false);
    clear();
    for (int position = 0; position < settings.size(); ++position) {
        const QString& title = settings.Title(position);
        if (title == kControlValueTitle) {
            continue;
        }
        QStringList values;
        pairs.GetValue(title, values);
        for (const QString& value : values) {
            auto* row = new QTreeWidgetItem(this, {title, value});
            row->setToolTip(1, value);
            const QColor colour = TitleColour(title);
            if (colour.isValid()) {
                row->setForeground(0, colour);
            }
            row->setForeground(1, QColor(Qt::black));
        }
    }
    setUpdatesEnabled(true);
}

void ToviSpiListCtrl::AddDefinitionColours(const ToviItemDef& def) {
    if (!itemColours.isEmpty()) {
        return;
    }
    static const QColor kByGrade[] = {QColor(), QColor(255, 0, 0), QColor(0, 0, 255),
                                      QColor(0, 0, 0)};
    for (int i = 0; i < def.GetCount(); ++i) {
        const Definition& definition = def.GetDef(i);
        if (definition.grade >= 1 && definition.grade <= 3) {
            itemColours.append({kByGrade[definition.grade], definition.title});
        }
    }
}

void ToviSpiListCtrl::AddShowSettingColours(const ToviItemShowSettings& settings) {
    for (const ToviItemShowSetting& setting : settings) {
        if (setting.infoType == InfoTypeFile) {
            itemColours.append({QColor(0, 128, 0), setting.title});
        } else if (setting.infoType == InfoTypeExif) {
            itemColours.append({QColor(160, 82, 45), setting.title});
        }
    }
}

void ToviSpiListCtrl::ClearAll() {
    clear();
    itemColours.clear();
}

QColor ToviSpiListCtrl::TitleColour(const QString& title) const {
    for (const auto& [colour, name] : itemColours) {
        if (name == title) {
            return colour;
        }
    }
    return QColor();
}

void ToviSpiListCtrl::resizeEvent(QResizeEvent* event) {
    QTreeWidget::resizeEvent(event);
    AdjustColumns(showTitle, beside);
}

void ToviSpiListCtrl::AdjustColumns(bool titleShown, bool besideImage) {
    showTitle = titleShown;
    beside = besideImage;
    const int half = viewport()->width() / 2;
    if (showTitle) {
        setColumnWidth(0, half);
        setColumnWidth(1, half);
    } else {
        setColumnWidth(0, 0);
        setColumnWidth(1, beside ? half / 3 : half);
    }
}
