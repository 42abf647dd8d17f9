#include "dialogs/ToviExifPage.h"

#include "document/ToviPhoto.h"
#include "imagefacts/ToviExifGroups.h"

#include <QHeaderView>

const QString ToviExifPage::NoExifText_ = QStringLiteral("Exif 情報はありません");
const QString ToviExifPage::FileHeading_ = QStringLiteral("ファイル");

ToviExifPage::ToviExifPage(QWidget* parent) : QTreeWidget(parent) {
    setObjectName(QStringLiteral("exifPage"));
    setColumnCount(2);
    setHeaderLabels({QStringLiteral("項目名"), QStringLiteral("値")});
    setRootIsDecorated(false);
    setIndentation(8);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    header()->setStretchLastSection(true);
    header()->setSectionResizeMode(0, QHeaderView::Interactive);
    header()->resizeSection(0, 150);
}

QTreeWidgetItem* ToviExifPage::AddGroup(const QString& heading) {
    auto* group = new QTreeWidgetItem(this, {heading});
    QFont bold = font();
    bold.setBold(true);
    group->setFont(0, bold);
    group->setFirstColumnSpanned(true);
    group->setFlags(Qt::ItemIsEnabled);
    group->setExpanded(true);
    return group;
}

void ToviExifPage::SetPhoto(ToviPhoto* photo) {
    clear();
    if (!photo) {
        return;
    }
    if (photo->CheckExif()) {
        const ToviExifInfo& exif = photo->GetExif();  // read once, on first asking
        for (const ToviExifGroup& group : kToviExifGroups) {
            QTreeWidgetItem* top = AddGroup(QString::fromUtf8(group.heading));
            for (const ToviTextPair& pair : (exif.*group.pairs)()) {
                new QTreeWidgetItem(top, {pair.GetItem(), pair.GetValue()});
            }
        }
    } else {
        auto* none = new QTreeWidgetItem(this, {NoExifText_});
        none->setFirstColumnSpanned(true);
        none->setFlags(Qt::ItemIsEnabled);
    }
    QTreeWidgetItem* file = AddGroup(FileHeading_);
    for (const char* title : kToviFileFactTitles) {
        QString value;
        photo->GetFileInfoFromTitle(QString::fromUtf8(title), value);
        new QTreeWidgetItem(file, {QString::fromUtf8(title), value});
    }
    expandAll();
}

void ToviExifPage::ClearContent() {
    clear();
}

QString ToviExifPage::Value(const QString& heading, const QString& title) const {
    for (int i = 0; i < topLevelItemCount(); ++i) {
        const QTreeWidgetItem* group = topLevelItem(i);
        if (group->text(0) != heading) {
            continue;
        }
        for (int j = 0; j < group->childCount(); ++j) {
            if (group->child(j)->text(0) == title) {
                return group->child(j)->text(1);
            }
        }
    }
    return QString();
}
