// Exif reading of LumImage: the one place besides the decoder that includes exiv2.

#include "platform/LumImage.h"

#include <exiv2/exiv2.hpp>

#include <QFile>

#include <mutex>

namespace {

void MuteExiv2() {
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setHandler(nullptr);
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    });
}

}  // namespace

bool LumImage::HasExifVersion(const QString& path) {
    if (path.isEmpty() || !QFile::exists(path)) {
        return false;
    }
    MuteExiv2();
    try {
        auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
        if (!image.get()) {
            return false;
        }
        image->readMetadata();
        const Exiv2::ExifData& exif = image->exifData();
        return exif.findKey(Exiv2::ExifKey("Exif.Photo.ExifVersion")) != exif.end();
    } catch (const std::exception&) {
        return false;  // unreadable or not an image: no Exif
    }
}
