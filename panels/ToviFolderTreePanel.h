#pragma once

#include "panels/ToviTreePanel.h"

class QAction;

// The classification tree (工種 or 撮影箇所): selecting a node makes its photographs the
// document's current set. Nodes with photographs under them are bold with their count.
class ToviFolderTreePanel : public ToviTreePanel {
    Q_OBJECT
public:
    explicit ToviFolderTreePanel(QWidget* parent = nullptr);

    // Moves the tree's selection onto the document's selected node; false when there is none
    // or it is not in the tree.
    bool ChangeSelCompulsion();
    void OnPostVisible() override;
    void OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object) override;

    // The context menu's two commands, on the item last right-clicked.
    void OnCloseItem();
    void OnOpenItem();
    QTreeWidgetItem* MenuItem() const { return menuItem; }

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void ConstructImageList();
    void OnSelchangedTree(QTreeWidgetItem* item);
    QTreeWidgetItem* FindItem(ToviNode* node, QTreeWidgetItem* item) const;
    void AllCloseTreeItem(QTreeWidgetItem* item);
    void AllOpenTreeItem(QTreeWidgetItem* item);

    int treeType = 3;  // no tree type: the first hint builds
    QTreeWidgetItem* menuItem = nullptr;
    QAction* closeItem;
    QAction* openItem;
};
