#include "panels/ToviTreePanel.h"

#include "document/ToviNode.h"
#include "panels/ToviTreeImages.h"

#include <QHeaderView>
#include <QTreeWidget>
#include <QVBoxLayout>

ToviTreePanel::ToviTreePanel(QWidget* parent) : ToviPanel(parent), tree(new QTreeWidget(this)) {
    tree->setObjectName(QStringLiteral("tree"));
    tree->setHeaderHidden(true);
    // Long names scroll sideways rather than losing their counts at the edge.
    tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    tree->header()->setStretchLastSection(false);
    tree->setRootIsDecorated(true);
    tree->setFrameShape(QFrame::StyledPanel);
    tree->setDragEnabled(false);
    tree->setFocusPolicy(Qt::StrongFocus);
    tree->setContextMenuPolicy(Qt::DefaultContextMenu);
    QPalette palette = tree->palette();
    palette.setColor(QPalette::Text, Qt::black);
    palette.setColor(QPalette::Base, Qt::white);
    tree->setPalette(palette);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tree);
}

QWidget* ToviTreePanel::GetCtrl() {
    return tree;
}

bool ToviTreePanel::OnPreVisible() {
    selBeforeHide = tree->currentItem();
    return true;
}

QTreeWidgetItem* ToviTreePanel::RegNode(QTreeWidgetItem* parent, ToviNode* node, int image,
                                        int selectedImage) {
    auto* item = new QTreeWidgetItem(parent, QStringList{node->Title()});
    item->setData(0, Qt::UserRole, QVariant::fromValue(static_cast<void*>(node)));
    item->setData(0, CountRole, node->GetImageCount());
    SetImages(item, image, selectedImage);
    for (int i = 0; i < node->GetChildNodeCount(); ++i) {
        RegNode(item, node->GetNode(i), image + 1, selectedImage + 1);
    }
    item->setExpanded(true);
    return item;
}

void ToviTreePanel::SetImages(QTreeWidgetItem* item, int image, int selectedImage) const {
    ToviTreeImages::SetItemImages(item, images, image, selectedImage);
}

QTreeWidgetItem* ToviTreePanel::NextSibling(QTreeWidgetItem* item) {
    QTreeWidgetItem* parent = item->parent();
    if (parent) {
        return parent->child(parent->indexOfChild(item) + 1);
    }
    QTreeWidget* owner = item->treeWidget();
    return owner ? owner->topLevelItem(owner->indexOfTopLevelItem(item) + 1) : nullptr;
}
