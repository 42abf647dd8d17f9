#pragma once

#include "panels/ToviPanel.h"

#include <QIcon>
#include <QList>

class QTreeWidget;
class QTreeWidgetItem;
class ToviNode;

// The base of the two navigation trees: a tree control filling the panel, fully open once
// built, each item's picture chosen by its depth (plain and selected).
class ToviTreePanel : public ToviPanel {
    Q_OBJECT
public:
    // Item roles: Qt::UserRole holds the node (null once the document is gone), this one the
    // number of photographs under it, so that drawing never needs the node.
    static constexpr int CountRole = Qt::UserRole + 1;

    explicit ToviTreePanel(QWidget* parent = nullptr);

    QTreeWidget* GetTreeCtrl() const { return tree; }
    QWidget* GetCtrl() override;
    // Remembers the selected item for the return of the panel.
    bool OnPreVisible() override;
    // Adds node and its subtree under parent (the pictures one deeper at each level) and
    // answers the new item.
    virtual QTreeWidgetItem* RegNode(QTreeWidgetItem* parent, ToviNode* node, int image,
                                     int selectedImage);

protected:
    // The item's picture: images[image] plain, images[selectedImage] when selected; an index
    // past the list takes its last picture.
    void SetImages(QTreeWidgetItem* item, int image, int selectedImage) const;
    static QTreeWidgetItem* NextSibling(QTreeWidgetItem* item);

    QTreeWidget* tree;
    QTreeWidgetItem* selBeforeHide = nullptr;
    QList<QPixmap> images;
};
