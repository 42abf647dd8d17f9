#include "panels/ToviControlValueTable.h"

#include "imagefacts/ToviControlValues.h"

#include <QHeaderView>

ToviControlValueTable::ToviControlValueTable(QWidget* parent) : QTreeWidget(parent) {
    setObjectName(QStringLiteral("valueTable"));
    setColumnCount(4);
    setHeaderLabels({QStringLiteral("項目名"), QStringLiteral("設計値"), QStringLiteral("実測値"),
                     QStringLiteral("差")});
    setRootIsDecorated(false);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setAllColumnsShowFocus(true);
    setFrameShape(QFrame::StyledPanel);
    setUniformRowHeights(true);
    for (int column = 0; column < 4; ++column) {
        setColumnWidth(column, 85);
        headerItem()->setTextAlignment(column, column == 0 ? Qt::AlignLeft | Qt::AlignVCenter
                                                           : Qt::AlignRight | Qt::AlignVCenter);
    }
}

void ToviControlValueTable::AdjustColumns() {
    const int quarter = viewport()->width() / 4;
    if (quarter <= 0) {
        return;
    }
    for (int column = 0; column < 4; ++column) {
        setColumnWidth(column, quarter);
    }
}

void ToviControlValueTable::resizeEvent(QResizeEvent* event) {
    QTreeWidget::resizeEvent(event);
    AdjustColumns();
}

void ToviControlValueTable::SetValues(const ToviControlValues& values) {
    setUpdatesEnabled(false);
    clear();
    // A lone name is a remark, not a table; and a table is shown only when every part of the
    // text was read, so that nothing the text says is left out of it.
    const bool loneName = values.size() == 1 && values.front()->IsNameOnly();
    if (!loneName && values.IsValid()) {
        for (const auto& value : values) {
            if (value->IsBlank()) {
                continue;
            }
            auto* row = new QTreeWidgetItem(
                this, {value->Name(), value->Design(), value->Actual(), value->Difference()});
            for (int column = 1; column < 4; ++column) {
                row->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
            }
        }
    }
    setUpdatesEnabled(true);
}
