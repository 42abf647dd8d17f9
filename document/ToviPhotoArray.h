#pragma once

#include <QList>
#include <QString>

class ToviPhoto;

// The actual array: every photograph of the delivery in PHOTO.XML order. It owns them.
class ToviPhotoArray : public QList<ToviPhoto*> {
public:
    ToviPhotoArray() = default;
    ToviPhotoArray(const ToviPhotoArray&) = delete;
    ToviPhotoArray& operator=(const ToviPhotoArray&) = delete;
    virtual ~ToviPhotoArray();

    void AllReleaseImage();
    // The first photograph whose image path equals path regardless of case, or null.
    ToviPhoto* GetData(const QString& path);
};
