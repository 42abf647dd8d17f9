#include "document/ToviPhotoArray.h"

#include "document/ToviPhoto.h"

ToviPhotoArray::ToviPhotoArray() = default;
ToviPhotoArray::~ToviPhotoArray() = default;

void ToviPhotoArray::AllReleaseImage() {
    for (ToviPhoto* photo : *this) {
        photo->ReleaseImage();
    }
}

ToviPhoto* ToviPhotoArray::GetData(const QString& path) {
    for (ToviPhoto* photo : *this) {
        if (photo->GetImagePath().compare(path, Qt::CaseInsensitive) == 0) {
            return photo;
        }
    }
    return nullptr;
}
