#pragma once

#include "document/ToviOwningArray.h"

#include <QString>

class ToviPhoto;

// The actual array: every photograph of the delivery in PHOTO.XML order. It owns them.
class ToviPhotoArray : public ToviOwningArray<ToviPhoto> {
public:
    ToviPhotoArray();
    ~ToviPhotoArray();

    void AllReleaseImage();
    // The first photograph whose image path equals path regardless of case, or null.
    ToviPhoto* GetData(const QString& path);
};
