#include "panels/ToviFolderTreePanel.h"

#include "document/ToviNode.h"
#include "panels/ToviTreeImages.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

namespace {

ToviNode* NodeOf(const QTreeWidgetItem* item) {
    return item ? static_cast<ToviNode*>(item->data(0, Qt::UserRole).value<void*>()) : nullptr;
}

// Draws a node with photographs under it bold, its count behind it in blue; the root plain.
class CountDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        QStyleOptionViewItem shown(option);
        const int count = CountOf(index);
        if (count > 0) {
            shown.font.setBold(true);
        }
        QStyledItemDelegate::paint(painter, shown, index);
        if (count <= 0) {
            return;
        }
        initStyleOption(&shown, index);
        shown.font.setBold(true);
        const QWidget* widget = option.widget;
        const QStyle* style = widget ? widget->style() : QApplication::style();
        const QRect textRect = style->subElementRect(QStyle::SE_ItemViewItemText, &shown, widget);
        const int textWidth = QFontMetrics(shown.font).horizontalAdvance(shown.text);
        painter->save();
        painter->setFont(option.font);
        painter->setPen(QColor(32, 97, 220));
        painter->drawText(textRect.adjusted(textWidth + 5 + 4, 0, 40, 0),
                          Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                          QString::number(count));
        painter->restore();
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        const int count = CountOf(index);
        if (count > 0) {
            QFont bold(option.font);
            bold.setBold(true);
            const QString text = index.data().toString();
            size.rwidth() += QFontMetrics(bold).horizontalAdvance(text) -
                             option.fontMetrics.horizontalAdvance(text) + 5 +
                             option.fontMetrics.horizontalAdvance(QString::number(count)) + 8;
        }
        return size;
    }

private:
    static int CountOf(const QModelIndex& index) {
        if (!index.parent().isValid()) {
            return 0;  // the root is never bold nor counted
        }
        return index.data(ToviTreePanel::CountRole).toInt();
    }
};

}  // namespace

ToviFolderTreePanel::ToviFolderTreePanel(QWidget* parent)
    : ToviTreePanel(parent),
      closeItem(new QAction(QStringLiteral("この項目を閉じる"), this)),
      openItem(new QAction(QStringLiteral("この項目を開く"), this)) {
    setObjectName(QStringLiteral("ToviFolderTreePanel"));
    tree->setItemDelegate(new CountDelegate(tree));
    closeItem->setObjectName(QStringLiteral("closeItem"));
    closeItem->setStatusTip(QStringLiteral("項目以下のアイテムを全て閉じる"));
    openItem->setObjectName(QStringLiteral("openItem"));
    openItem->setStatusTip(QStringLiteral("この項目以下、全ての項目を開く"));
    connect(closeItem, &QAction::triggered, this, &ToviFolderTreePanel::OnCloseItem);
    connect(openItem, &QAction::triggered, this, &ToviFolderTreePanel::OnOpenItem);
    connect(tree, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* item) { OnSelchangedTree(item); });
    tree->setContextMenuPolicy(Qt::NoContextMenu);  // the panel's own handler takes it
}

void ToviFolderTreePanel::ConstructImageList() {
    images = ToviTreeImages::Folders(treeType);
}

void ToviFolderTreePanel::OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object) {
    if (hint == ToviData::HintDetach) {
        // The tree stays on show as it was, but its items let go of the document's nodes,
        // which go with the document.
        for (QTreeWidgetItemIterator it(tree); *it; ++it) {
            (*it)->setData(0, Qt::UserRole, QVariant::fromValue(static_cast<void*>(nullptr)));
        }
    }
    ToviPanel::OnUpdate(sender, hint, object);
    const bool acted = hint == ToviData::HintInitialize || hint == ToviData::HintRefresh1 ||
                       hint == ToviData::HintSettingsChanged || hint == ToviData::HintRefresh8 ||
                       hint == ToviData::HintRefresh11 || hint == ToviData::HintDetach;
    if (!acted || !data) {
        return;
    }
    const int documentType = data->GetVisualSetting().GetTreeType();
    if (hint == ToviData::HintSettingsChanged && treeType != 3 && documentType == treeType) {
        return;
    }
    treeType = documentType;
    {
        // Signals off while the items go and come: the selection the rebuild passes through
        // is no user's choice.
        const QSignalBlocker blocker(tree);
        tree->setUpdatesEnabled(false);
        tree->clear();
        menuItem = nullptr;
        selBeforeHide = nullptr;
        ConstructImageList();
        if (hint == ToviData::HintInitialize || hint == ToviData::HintSettingsChanged) {
            const int first = ToviTreeImages::FirstSelected(treeType);
            auto* root = new QTreeWidgetItem(tree, QStringList{data->Title()});
            root->setData(0, Qt::UserRole, QVariant::fromValue(static_cast<void*>(data)));
            SetImages(root, 0, first);
            for (int i = 0; i < data->GetChildNodeCount(); ++i) {
                RegNode(root, static_cast<ToviNode*>(data)->GetNode(i), 1, first + 1);
            }
            root->setExpanded(true);
        }
        tree->setUpdatesEnabled(true);
    }
    ChangeSelCompulsion();
}

bool ToviFolderTreePanel::ChangeSelCompulsion() {
    ToviNode* node = data ? data->GetSelectedNode() : nullptr;
    QTreeWidgetItem* root = tree->topLevelItem(0);
    if (!node || !root) {
        return false;
    }
    QTreeWidgetItem* item = FindItem(node, root);
    if (!item) {
        return false;
    }
    tree->setCurrentItem(item);
    tree->scrollToItem(item);
    return true;
}

QTreeWidgetItem* ToviFolderTreePanel::FindItem(ToviNode* node, QTreeWidgetItem* item) const {
    for (; item; item = NextSibling(item)) {
        if (NodeOf(item) == node) {
            return item;
        }
        if (QTreeWidgetItem* found = FindItem(node, item->child(0))) {
            return found;
        }
    }
    return nullptr;
}

void ToviFolderTreePanel::OnSelchangedTree(QTreeWidgetItem* item) {
    if (data && item) {
        data->SetSelected(NodeOf(item), false);
    }
}

void ToviFolderTreePanel::OnPostVisible() {
    if (!data) {
        return;
    }
    data->AllTextLoad();
    data->SetCurPhotoArray(true, false);
    data->SetSelected(data->GetSelectedNode(), true);
}

void ToviFolderTreePanel::contextMenuEvent(QContextMenuEvent* event) {
    // From the keyboard the menu opens where the current item is.
    const QPoint at = event->reason() == QContextMenuEvent::Keyboard && tree->currentItem()
                          ? tree->visualItemRect(tree->currentItem()).center()
                          : tree->viewport()->mapFrom(this, event->pos());
    QTreeWidgetItem* hit = tree->itemAt(at);
    if (!hit) {
        return;
    }
    menuItem = hit;
    QMenu menu(this);
    menu.addAction(closeItem);
    menu.addAction(openItem);
    menu.exec(tree->viewport()->mapToGlobal(at));
    tree->viewport()->update();
}

void ToviFolderTreePanel::OnCloseItem() {
    if (!menuItem) {
        return;
    }
    AllCloseTreeItem(menuItem);
    // A selection inside what closed moves up to the closed item, as the control has it.
    QTreeWidgetItem* current = tree->currentItem();
    for (QTreeWidgetItem* up = current ? current->parent() : nullptr; up; up = up->parent()) {
        if (!up->isExpanded()) {
            current = up;
        }
    }
    if (current && current != tree->currentItem()) {
        tree->setCurrentItem(current);
    }
    if (data && current && NodeOf(current) != data->GetSelectedNode()) {
        data->SetSelected(NodeOf(current), false);
    }
}

void ToviFolderTreePanel::AllCloseTreeItem(QTreeWidgetItem* item) {
    if (item != menuItem) {
        if (QTreeWidgetItem* next = NextSibling(item)) {
            AllCloseTreeItem(next);
        }
    }
    if (QTreeWidgetItem* child = item->child(0)) {
        AllCloseTreeItem(child);
    }
    item->setExpanded(false);
}

void ToviFolderTreePanel::OnOpenItem() {
    if (menuItem) {
        AllOpenTreeItem(menuItem);
    }
}

void ToviFolderTreePanel::AllOpenTreeItem(QTreeWidgetItem* item) {
    item->setExpanded(true);
    for (int i = 0; i < item->childCount(); ++i) {
        AllOpenTreeItem(item->child(i));
    }
}
