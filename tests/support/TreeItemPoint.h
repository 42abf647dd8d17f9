#pragma once

// Where a test clicks a tree item: on the start of its text, inside the viewport. The centre of
// its rectangle is not enough: a tree that scrolls sideways makes that rectangle as wide as
// its widest item, and its centre may lie outside what is shown.

#include <QTreeWidget>

#include <algorithm>

inline QPoint TreeItemPoint(QTreeWidget* tree, QTreeWidgetItem* item) {
    tree->scrollToItem(item);
    const QRect rect = tree->visualItemRect(item);
    const int x = std::clamp(rect.left() + 12, 0, std::max(0, tree->viewport()->width() - 2));
    return QPoint(x, rect.center().y());
}
