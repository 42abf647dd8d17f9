#include "platform/LumImage.h"
#include "platform/LumExiv2Setup.h"
#include "platform/LumJpegFacts.h"
#include "platform/LumSvg.h"
#include "platform/MibFile.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>
#include <QTransform>
#include <QXmlStreamReader>

#include <exiv2/exiv2.hpp>

#include <algorithm>
#include <cstring>
#include <exception>
#include <mutex>

namespace {

// Enough for the Exif block (at most 64 KiB) and the other header segments of a camera JPEG;
// a file whose header runs longer is read whole.
constexpr qint64 kHeadBytes = 256 * 1024;
// A drawing whose own size is absurd is rendered no larger than this on its long side.
constexpr int kMaxSvgSide = 8192;

int Be16(const QByteArray& data, qint64 pos) {
    return (static_cast<uchar>(data[pos]) << 8) | static_cast<uchar>(data[pos + 1]);
}

bool IsJpegSignature(const QByteArray& data) {
    return data.size() >= 3 && static_cast<uchar>(data[0]) == 0xFF &&
           static_cast<uchar>(data[1]) == 0xD8 && static_cast<uchar>(data[2]) == 0xFF;
}

bool IsStandaloneMarker(uchar marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7);
}

bool IsStartOfFrame(uchar marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

struct JpegHead {
    int width = 0;
    int height = 0;
    qint64 scanData = 0;  // first byte of the first scan's entropy-coded data
};

enum class Walk { Found, NeedMore, Invalid };

// Follows the header segments from SOI to the first SOS, taking the frame size on the way.
Walk WalkToFirstScan(const QByteArray& data, JpegHead* head) {
    if (!IsJpegSignature(data)) {
        return Walk::Invalid;
    }
    const qint64 size = data.size();
    qint64 pos = 2;
    for (;;) {
        if (pos + 2 > size) {
            return Walk::NeedMore;
        }
        if (static_cast<uchar>(data[pos]) != 0xFF) {
            return Walk::Invalid;
        }
        const uchar marker = static_cast<uchar>(data[pos + 1]);
        if (marker == 0xFF) {  // fill byte before a marker
            ++pos;
            continue;
        }
        if (IsStandaloneMarker(marker)) {
            pos += 2;
            continue;
        }
        if (marker == 0xD8 || marker == 0xD9 || marker == 0x00) {
            return Walk::Invalid;  // a second SOI, or the end before any scan
        }
        if (pos + 4 > size) {
            return Walk::NeedMore;
        }
        const int length = Be16(data, pos + 2);
        if (length < 2) {
            return Walk::Invalid;
        }
        const qint64 next = pos + 2 + length;
        if (next > size) {
            return Walk::NeedMore;
        }
        if (IsStartOfFrame(marker) && length >= 7) {
            head->height = Be16(data, pos + 5);
            head->width = Be16(data, pos + 7);
        }
        if (marker == 0xDA) {
            if (head->width <= 0 || head->height <= 0) {
                return Walk::Invalid;
            }
            head->scanData = next;
            return Walk::Found;
        }
        pos = next;
    }
}

// True when the scans that start at `from` run on to an EOI marker. A cut file stops inside
// entropy-coded data, where 0xFF is always followed by 0x00 or a restart marker; data after
// the EOI (a maker's trailer) does not matter.
bool HasEndOfImage(const QByteArray& data, qint64 from) {
    const char* bytes = data.constData();
    const qint64 size = data.size();
    qint64 pos = from;
    while (pos < size) {
        const void* hit = std::memchr(bytes + pos, 0xFF, static_cast<size_t>(size - pos));
        if (!hit) {
            return false;
        }
        pos = static_cast<const char*>(hit) - bytes;
        if (pos + 1 >= size) {
            return false;
        }
        const uchar marker = static_cast<uchar>(bytes[pos + 1]);
        if (marker == 0x00 || IsStandaloneMarker(marker)) {
            pos += 2;
        } else if (marker == 0xFF) {
            ++pos;
        } else if (marker == 0xD9) {
            return true;
        } else {
            // Tables or the next scan of a progressive picture: skip the segment's header.
            if (pos + 4 > size) {
                return false;
            }
            const int length = Be16(data, pos + 2);
            if (length < 2) {
                return false;
            }
            pos += 2 + length;
        }
    }
    return false;
}

bool IsCompleteJpeg(const QByteArray& data, JpegHead* head) {
    return WalkToFirstScan(data, head) == Walk::Found && HasEndOfImage(data, head->scanData);
}

// A JPEG read from its start up to its first scan, and no further while that can be helped.
struct JpegRead {
    QByteArray data;  // the bytes read so far, from the start of the file
    JpegHead head;
    bool whole = false;  // data is the whole file
};

// Goes on from the first bytes in read->data: the header up to the first scan (reading on
// when it runs longer), then whether the file is complete, which an EOI as its last two bytes
// tells without reading the scans; otherwise the rest is read and walked. False for a file
// that is not a JPEG or is cut.
bool ReadCompleteJpeg(QFile& file, JpegRead* read) {
    read->whole = file.atEnd();
    Walk walk = WalkToFirstScan(read->data, &read->head);
    if (walk == Walk::NeedMore && !read->whole) {
        read->data += file.readAll();
        read->whole = true;
        walk = WalkToFirstScan(read->data, &read->head);
    }
    if (walk != Walk::Found) {
        return false;
    }
    if (!read->whole && file.seek(file.size() - 2) &&
        file.read(2) == QByteArrayLiteral("\xFF\xD9")) {
        return true;
    }
    if (!read->whole) {
        if (!file.seek(read->data.size())) {
            return false;
        }
        read->data += file.readAll();
        read->whole = true;
    }
    return HasEndOfImage(read->data, read->head.scanData);
}

struct ExifBits {
    int orientation = 1;
    QByteArray thumbnail;  // JPEG bytes, empty when there is none
};

// Reads the Exif orientation and the embedded thumbnail from the header segments of a JPEG.
ExifBits ReadExif(const QByteArray& header) {
    LumPrepareExiv2();
    ExifBits bits;
    try {
        auto image =
            Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(header.constData()),
                                      static_cast<long>(header.size()));
        if (!image.get()) {
            return bits;
        }
        image->readMetadata();
        const Exiv2::ExifData& exif = image->exifData();
        if (exif.empty()) {
            return bits;
        }
        const auto tag = exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
        if (tag != exif.end() && tag->count() > 0) {
#if EXIV2_TEST_VERSION(0, 28, 0)
            const auto value = tag->toInt64();
#else
            const auto value = tag->toLong();
#endif
            if (value >= 1 && value <= 8) {
                bits.orientation = static_cast<int>(value);
            }
        }
        Exiv2::ExifThumbC thumb(exif);
        if (std::strcmp(thumb.mimeType(), "image/jpeg") == 0) {
            const Exiv2::DataBuf buffer = thumb.copy();
#if EXIV2_TEST_VERSION(0, 28, 0)
            bits.thumbnail = QByteArray(reinterpret_cast<const char*>(buffer.c_data()),
                                        static_cast<qsizetype>(buffer.size()));
#else
            if (buffer.size_ > 0) {
                bits.thumbnail =
                    QByteArray(reinterpret_cast<const char*>(buffer.pData_), buffer.size_);
            }
#endif
        }
    } catch (const Exiv2::Error&) {
        return ExifBits{};
    } catch (const std::exception&) {
        return ExifBits{};
    }
    return bits;
}

// Turns a picture stored as the sensor saw it into the way it is meant to be seen.
QImage Orient(const QImage& stored, int orientation) {
    if (stored.isNull()) {
        return stored;
    }
    QTransform quarter;
    quarter.rotate(90);
    switch (orientation) {
        case 2:
            return stored.mirrored(true, false);
        case 3:
            return stored.mirrored(true, true);
        case 4:
            return stored.mirrored(false, true);
        case 5:
            return stored.transformed(quarter).mirrored(true, false);
        case 6:
            return stored.transformed(quarter);
        case 7:
            return stored.transformed(quarter).mirrored(false, true);
        case 8:
            return stored.transformed(QTransform().rotate(270));
        default:
            return stored;
    }
}

QImage DecodeJpeg(const QByteArray& data, const QSize& scaledSize) {
    QBuffer buffer;
    buffer.setData(data);
    if (!buffer.open(QIODevice::ReadOnly)) {
        return QImage();
    }
    QImageReader reader(&buffer, "jpeg");
    reader.setAutoTransform(false);  // the orientation comes from exiv2, as for thumbnails
    if (scaledSize.isValid()) {
        reader.setScaledSize(scaledSize);
    }
    return reader.read();
}

// The size to ask the JPEG decoder for: the coarsest DCT scale whose long side still covers a
// tile. Rounding down keeps the decoder on that scale (rounding up would make it pick the next
// finer one and shrink afterwards).
// The picture for a screen uses it with the screen's side as the tile: even a 30,000-pixel
// JPEG then decodes at an eighth.
QSize ThumbDecodeSize(int width, int height, int tile = LumImage::ThumbTileSize) {
    const int longSide = qMax(width, height);
    for (int denominator : {8, 4, 2}) {
        if (longSide / denominator >= tile) {
            return QSize(qMax(1, width / denominator), qMax(1, height / denominator));
        }
    }
    return QSize();
}

bool IsSvgPath(const QString& path) {
    return path.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive);
}

// longSide 0 renders at the drawing's own size.
QImage RenderSvg(const QString& path, int longSide) {
    QFile file;
    if (!MibOpenRegularFile(file, path) || file.size() > LumSvgMaxFileBytes) {
        return QImage();
    }
    // Broken files are turned away here, before QSvgRenderer would print its parse errors.
    const QByteArray data = LumSvgOwnContent(file.readAll());
    if (data.isEmpty()) {
        return QImage();
    }
    QSvgRenderer renderer(data);
    if (!renderer.isValid()) {
        return QImage();
    }
    QSize size = renderer.defaultSize();
    if (size.isEmpty()) {
        return QImage();
    }
    const int limit = longSide > 0 ? longSide : kMaxSvgSide;
    if (longSide > 0 || qMax(size.width(), size.height()) > limit) {
        size = size.scaled(limit, limit, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    }
    // White under the drawing, as on paper: the panels draw the picture on their own colour.
    QImage canvas(size, QImage::Format_RGB32);
    if (canvas.isNull()) {
        return QImage();
    }
    canvas.fill(Qt::white);
    QPainter painter(&canvas);
    renderer.render(&painter);
    painter.end();
    return canvas;
}

// A PNG runs in chunks up to IEND; a cut one is turned away here, before libpng, which would
// print its complaint on the way.
bool IsCutPng(const QByteArray& data) {
    static const QByteArray signature = QByteArrayLiteral("\x89PNG\r\n\x1a\n");
    if (!data.startsWith(signature)) {
        return false;
    }
    qint64 pos = signature.size();
    while (pos + 8 <= data.size()) {
        const quint32 length = (quint32(Be16(data, pos)) << 16) | quint32(Be16(data, pos + 2));
        if (data.mid(pos + 4, 4) == QByteArrayLiteral("IEND")) {
            return false;
        }
        pos += 12 + qint64(length);  // length, type, data, CRC
    }
    return true;
}

// Formats other than JPEG and SVG: Qt's own readers, which apply a TIFF orientation themselves.
QImage DecodeOther(QFile& file, bool thumb) {
    const QByteArray data = file.readAll();
    if (IsCutPng(data)) {
        return QImage();
    }
    QBuffer buffer;
    buffer.setData(data);
    if (!buffer.open(QIODevice::ReadOnly)) {
        return QImage();
    }
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    if (thumb) {
        const QSize size = reader.size();
        const int tile = LumImage::ThumbTileSize;
        if (size.isValid() && (size.width() > tile || size.height() > tile)) {
            reader.setScaledSize(size.scaled(tile, tile, Qt::KeepAspectRatio).expandedTo({1, 1}));
        }
    }
    return reader.read();
}

}  // namespace

bool LumReadJpegFacts(const QString& path, LumJpegFacts* facts) {
    QFile file;
    if (!MibOpenRegularFile(file, path)) {
        return false;
    }
    JpegRead read;
    read.data = file.read(kHeadBytes);
    if (!ReadCompleteJpeg(file, &read)) {
        return false;
    }
    facts->width = read.head.width;
    facts->height = read.head.height;
    facts->orientation = ReadExif(read.data.left(read.head.scanData)).orientation;
    return true;
}

bool LumReadJpegHeader(const QString& path, LumJpegFacts* facts, QByteArray* header) {
    // Enough for an Exif block (at most 64 KiB) in most files; longer headers are read on.
    constexpr qint64 kFirstBytes = 64 * 1024;
    QFile file;
    if (!MibOpenRegularFile(file, path)) {
        return false;
    }
    JpegRead read;
    read.data = file.read(kFirstBytes);
    if (!ReadCompleteJpeg(file, &read)) {
        return false;
    }
    facts->width = read.head.width;
    facts->height = read.head.height;
    facts->orientation = 1;
    if (header) {
        *header = read.data.left(read.head.scanData);
    }
    return true;
}

QImage LumOrient(const QImage& stored, int orientation) {
    return Orient(stored, orientation);
}

bool LumImage::Load(const QString& path) {
    return LoadForDisplay(path, 0);
}

bool LumImage::LoadForDisplay(const QString& path, int longSide) {
    Clear();
    if (IsSvgPath(path)) {
        return Assign(RenderSvg(path, longSide));
    }
    QFile file;
    if (!MibOpenRegularFile(file, path)) {
        return false;
    }
    if (!IsJpegSignature(file.peek(3))) {
        return Assign(DecodeOther(file, false));
    }
    const QByteArray data = file.readAll();
    JpegHead head;
    if (!IsCompleteJpeg(data, &head)) {
        return false;
    }
    const ExifBits exif = ReadExif(data.left(head.scanData));
    const QSize scaled =
        longSide > 0 ? ThumbDecodeSize(head.width, head.height, longSide) : QSize();
    return Assign(Orient(DecodeJpeg(data, scaled), exif.orientation));
}

bool LumImage::LoadThumb(const QString& path) {
    Clear();
    if (IsSvgPath(path)) {
        return Assign(RenderSvg(path, ThumbTileSize));
    }
    QFile file;
    if (!MibOpenRegularFile(file, path)) {
        return false;
    }
    QByteArray data = file.read(kHeadBytes);
    if (!IsJpegSignature(data)) {
        file.seek(0);
        return Assign(DecodeOther(file, true));
    }
    // Only the header is read while an Exif thumbnail may spare the rest of the file.
    JpegRead read;
    read.data = std::move(data);
    if (!ReadCompleteJpeg(file, &read)) {
        return false;
    }
    const JpegHead& head = read.head;
    const ExifBits exif = ReadExif(read.data.left(head.scanData));

    if (!exif.thumbnail.isEmpty()) {
        JpegHead thumbHead;
        if (IsCompleteJpeg(exif.thumbnail, &thumbHead)) {
            const QImage thumb = DecodeJpeg(exif.thumbnail, QSize());
            if (!thumb.isNull()) {
                return Assign(Orient(thumb, exif.orientation));
            }
        }
    }
    if (!read.whole) {
        if (!file.seek(read.data.size())) {
            return false;
        }
        read.data += file.readAll();
    }
    return Assign(
        Orient(DecodeJpeg(read.data, ThumbDecodeSize(head.width, head.height)), exif.orientation));
}

void LumImage::Clear() {
    image = QImage();
}

bool LumImage::Save(const QString& path, LumImageType type, unsigned quality) const {
    if (image.isNull()) {
        return false;
    }
    static const char* const kFormats[] = {"BMP", "PNG", "JPG"};
    static const int kJpegQuality[] = {50, 75, 90};
    const int t = static_cast<int>(type);
    if (t < 0 || t > 2) {
        return false;
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    const int jpegQuality = kJpegQuality[std::min(quality, 2u)];
    if (!image.save(&buffer, kFormats[t], type == LumImageJpeg ? jpegQuality : -1)) {
        return false;
    }
    return MibWriteFileAtomic(path, bytes);
}

bool LumImage::SaveSvgAsJpeg(const QString& svgPath, const QString& outPath, int width,
                             int height) {
    if (width <= 0 || height <= 0) {
        return false;
    }
    LumImage drawing;
    if (!drawing.Assign(RenderSvg(svgPath, std::max(width, height)))) {
        return false;
    }
    if (drawing.Width() > width || drawing.Height() > height) {
        drawing.image =
            drawing.image.scaled(width, height, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    return drawing.Save(outPath, LumImageJpeg, 1);
}

bool LumImage::IsValid() const {
    return !image.isNull();
}

const QImage& LumImage::Image() const {
    return image;
}

int LumImage::Width() const {
    return image.width();
}

int LumImage::Height() const {
    return image.height();
}

bool LumImage::ConvGrayScaleFromMono() {
    if (image.format() != QImage::Format_Mono && image.format() != QImage::Format_MonoLSB) {
        return false;
    }
    QImage grey = image.convertToFormat(QImage::Format_Grayscale8);
    if (grey.isNull()) {
        return false;
    }
    image = std::move(grey);
    return true;
}

bool LumImage::Assign(QImage decoded) {
    if (decoded.isNull()) {
        image = QImage();
        return false;
    }
    image = std::move(decoded);
    return true;
}
