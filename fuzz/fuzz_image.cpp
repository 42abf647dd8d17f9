// Picture bytes in, pixels out, through every decode the viewer makes of a photograph: the
// thumbnail of a cell, the picture for a screen, and the image window's reductions and parts.
// The first byte picks the file's ending, by which the readers choose their way.
#include "FuzzSupport.h"

#include "platform/LumImage.h"
#include "platform/LumImageSource.h"

#include <QImageReader>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const char* const endings[] = {".jpg", ".png", ".bmp", ".tif"};
    if (size < 1) {
        return 0;
    }
    const QString path =
        fuzz::WorkPath(QStringLiteral("picture") + QLatin1String(endings[data[0] % 4]));
    if (!fuzz::WriteInput(path, data + 1, size - 1)) {
        return 0;
    }
    LumImage image;
    image.LoadThumb(path);
    image.LoadForDisplay(path, 2560);
    LumImageSource source;
    // As the image window asks: a JPEG at its coarsest reduction and in parts, any other
    // format whole.
    if (source.Open(path)) {
        const QSize seen = source.Size();
        if (source.IsJpeg()) {
            source.Decode(LumImageSource::kMaxLevel);
            source.Decode(0, QRect(seen.width() / 3, seen.height() / 3, 64, 48));
            source.Decode(1, QRect(0, 0, seen.width(), 16));
        } else {
            source.Decode(0);
        }
    }
    QFile::remove(path);
    return 0;
}
