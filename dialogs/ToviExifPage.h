#pragma once

#include <QTreeWidget>

class ToviPhoto;

// Every fact the picture file of a photograph carries: the six Exif groups under their
// headings, "(不明)" for a field the file does not have, then the facts of the file itself.
// A third tab beside 写真情報 and 参考図, for the facts the item display settings do not show.
class ToviExifPage : public QTreeWidget {
    Q_OBJECT
public:
    static const QString NoExifText_;   // "Exif 情報はありません"
    static const QString FileHeading_;  // "ファイル"

    explicit ToviExifPage(QWidget* parent = nullptr);

    // Reads the photograph's Exif (once per photograph) and its file facts; null empties.
    void SetPhoto(ToviPhoto* photo);
    void ClearContent();
    // The value of the row titled title under the heading; empty when there is none.
    QString Value(const QString& heading, const QString& title) const;

private:
    QTreeWidgetItem* AddGroup(const QString& heading);
};
