#include "panels/ToviTreeImages.h"

#include "review/ToviLabelManager.h"

#include <QIcon>
#include <QPainter>
#include <QPainterPath>
#include <QTreeWidgetItem>

#include <algorithm>

namespace {

// One colour per depth, from the root down; deeper levels repeat the last.
const QColor kDepthColours[] = {QColor(0x4a, 0x6f, 0xa5), QColor(0xd9, 0x8c, 0x1f),
                                QColor(0x3f, 0x9b, 0x5a), QColor(0xc2, 0xa1, 0x2b),
                                QColor(0x8e, 0x6a, 0xb8), QColor(0x9a, 0x7b, 0x5a)};

QPixmap Folder(const QColor& colour, bool open) {
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(colour.darker(150), 1));
    p.setBrush(colour.lighter(open ? 150 : 120));
    QPainterPath back;
    back.moveTo(1.5, 3.5);
    back.lineTo(6.5, 3.5);
    back.lineTo(8, 5);
    back.lineTo(14.5, 5);
    back.lineTo(14.5, 13.5);
    back.lineTo(1.5, 13.5);
    back.closeSubpath();
    p.drawPath(back);
    p.setBrush(colour);
    if (open) {
        QPainterPath front;
        front.moveTo(1.5, 13.5);
        front.lineTo(3.5, 7.5);
        front.lineTo(15.5, 7.5);
        front.lineTo(13.5, 13.5);
        front.closeSubpath();
        p.drawPath(front);
    } else {
        p.drawRect(QRectF(1.5, 6.5, 13, 7));
    }
    return pixmap;
}

QPixmap Note(const QColor& colour, bool stacked, bool selected) {
    QPixmap pixmap(24, 24);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor edge = colour.darker(160);
    if (stacked) {
        p.setPen(QPen(edge, 1));
        p.setBrush(colour.lighter(130));
        p.drawRoundedRect(QRectF(6.5, 2.5, 15, 15), 2, 2);
    }
    p.setPen(QPen(edge, selected ? 2 : 1));
    p.setBrush(colour);
    QPainterPath note;
    note.moveTo(3.5, 6.5);
    note.lineTo(18.5, 6.5);
    note.lineTo(18.5, 16.5);
    note.lineTo(14.5, 20.5);
    note.lineTo(3.5, 20.5);
    note.closeSubpath();
    p.drawPath(note);
    if (selected) {
        p.setPen(QPen(Qt::white, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        p.drawPolyline(QPolygonF{{7, 13}, {10, 16}, {15, 10}});
    }
    return pixmap;
}

int Depths(int treeType) {
    return ToviTreeImages::FirstSelected(treeType);
}

}  // namespace

int ToviTreeImages::FirstSelected(int treeType) {
    return treeType == 0 ? 6 : treeType == 2 ? 4 : 2;
}

QList<QPixmap> ToviTreeImages::Folders(int treeType) {
    QList<QPixmap> pixmaps;
    const int depths = Depths(treeType);
    for (bool open : {false, true}) {
        for (int depth = 0; depth < depths; ++depth) {
            pixmaps.append(Folder(kDepthColours[std::min(depth, 5)], open));
        }
    }
    return pixmaps;
}

QList<QPixmap> ToviTreeImages::Labels(const ToviLabelManager& labels) {
    QList<QPixmap> pixmaps;
    const QColor root(0x70, 0x80, 0x90);
    for (bool selected : {true, false}) {
        pixmaps.append(Note(root, true, selected));
        for (unsigned long label = 0; label < 6; ++label) {
            pixmaps.append(Note(labels.GetLabelAttribute(label).GetColor(), false, selected));
        }
    }
    return pixmaps;
}

void ToviTreeImages::SetItemImages(QTreeWidgetItem* item, const QList<QPixmap>& images, int image,
                                   int selectedImage) {
    if (images.isEmpty()) {
        return;
    }
    const auto at = [&images](int index) {
        return images[std::clamp(index, 0, static_cast<int>(images.size()) - 1)];
    };
    QIcon icon(at(image));
    icon.addPixmap(at(selectedImage), QIcon::Selected);
    item->setIcon(0, icon);
}
