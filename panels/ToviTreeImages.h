#pragma once

#include <QList>
#include <QPixmap>

class QTreeWidgetItem;
class ToviLabelManager;

// The pictures of the tree panels, drawn here rather than shipped as bitmaps.
namespace ToviTreeImages {

// The folder tree's 16 x 16 pictures for a tree type: a folder per depth, closed, then the
// same depths open for the selected item, starting at the index the type's table gives
// (6 for type 0, 4 for type 2, 2 for the others).
QList<QPixmap> Folders(int treeType);
// The index of the root's selected picture for a tree type.
int FirstSelected(int treeType);
// The label tree's 24 x 24 pictures: 0 the root selected, 1 to 6 the labels selected, 7 the
// root, 8 to 13 the labels, each in its label's colour.
QList<QPixmap> Labels(const ToviLabelManager& labels);

// Gives item picture images[image], and images[selectedImage] while it is selected; an index
// past the list takes its last picture. Nothing with no pictures.
void SetItemImages(QTreeWidgetItem* item, const QList<QPixmap>& images, int image,
                   int selectedImage);

}  // namespace ToviTreeImages
