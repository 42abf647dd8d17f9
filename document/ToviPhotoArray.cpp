#include "document/ToviPhotoArray.h"

#include "document/ToviPhoto.h"

ToviPhotoArray::~ToviPhotoArray() {
    qDeleteAll(*this);
}

void ToviPhotoArray::AllReleaseImage() {
    for (ToviPhoto* photo : *this) {
        if (photo) {
            photo->ReleaseImage();
        }
    }
}

ToviPhoto* ToviPhotoArray::GetData(const QString& path) {
    for (ToviPhoto* photo : *this) {
        if (photo && photo->GetImagePath().compare(path, Qt::CaseInsensitive) == 0) {
            return photo;
        }
    }
    return nullptr;
}
