// SVG bytes in: the embedded main photograph is found and written out as a JPEG file, and the
// drawing's own content is taken apart from its links to other files.
#include "FuzzSupport.h"

#include "platform/LumImage.h"
#include "platform/LumSvg.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const QString in = fuzz::WorkPath(QStringLiteral("drawing.svg"));
    static const QString out = fuzz::WorkPath(QStringLiteral("main.jpg"));
    if (!fuzz::WriteInput(in, data, size)) {
        return 0;
    }
    LumSvgOwnContent(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    LumImage::GetMainImageFromSvg(in, out);
    QFile::remove(out);
    return 0;
}
