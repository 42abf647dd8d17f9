#include "platform/LumImageSource.h"

#include "platform/MibFile.h"

#include <QFile>
#include <QImageReader>

#include <cmath>

namespace {

QSize Reduced(const QSize& size, int level) {
    return QSize(std::max(1, size.width() >> level), std::max(1, size.height() >> level));
}

QRect ReducedRect(const QRect& rect, int level) {
    const int left = rect.left() >> level;
    const int top = rect.top() >> level;
    const int right = (rect.left() + rect.width() + (1 << level) - 1) >> level;
    const int bottom = (rect.top() + rect.height() + (1 << level) - 1) >> level;
    return QRect(left, top, std::max(1, right - left), std::max(1, bottom - top));
}

bool SwapsSides(int orientation) {
    return orientation >= 5 && orientation <= 8;
}

}  // namespace

bool LumImageSource::Open(const QString& file) {
    path = file;
    seen = stored = QSize();
    jpeg = false;
    orientation = 1;
    if (file.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive)) {
        return false;
    }
    LumJpegFacts facts;
    if (LumReadJpegFacts(file, &facts)) {
        jpeg = true;
        stored = QSize(facts.width, facts.height);
        orientation = facts.orientation;
        seen = SwapsSides(orientation) ? stored.transposed() : stored;
        return true;
    }
    QFile probe;
    if (!MibOpenRegularFile(probe, file)) {
        return false;
    }
    QImageReader reader(&probe);
    if (reader.format() == "jpeg" || reader.format() == "jpg") {
        return false;  // a JPEG that the header walk refused: cut or broken
    }
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (!size.isValid() || size.isEmpty()) {
        return false;
    }
    stored = size;
    // A TIFF turned by its own orientation tag answers the stored size; the decoded picture
    // is measured again after decoding.
    seen = size;
    return true;
}

QSize LumImageSource::LevelSize(int level) const {
    return Reduced(seen, level);
}

int LumImageSource::LevelFor(double zoom) {
    if (!(zoom > 0.0)) {
        return kMaxLevel;
    }
    int level = 0;
    while (level < kMaxLevel && zoom <= 1.0 / double(2 << level)) {
        ++level;
    }
    return level;
}

bool LumImageSource::FitsWhole(int level) const {
    const QSize size = LevelSize(level);
    return qint64(size.width()) * size.height() <= kBufferPixelLimit;
}

QImage LumImageSource::Decode(int level) const {
    if (!IsOpen() || !FitsWhole(level)) {
        return QImage();
    }
    return Decode(level, QRect(QPoint(0, 0), seen));
}

QImage LumImageSource::Decode(int level, const QRect& part) const {
    const QRect wanted = part & QRect(QPoint(0, 0), seen);
    if (!IsOpen() || wanted.isEmpty() || level < 0 || level > kMaxLevel) {
        return QImage();
    }
    const QRect reducedPart = ReducedRect(wanted, level);
    if (qint64(reducedPart.width()) * reducedPart.height() > kBufferPixelLimit) {
        return QImage();
    }
    if (!jpeg) {
        return DecodeOther(level, wanted);
    }
    QFile file;
    if (!MibOpenRegularFile(file, path)) {
        return QImage();
    }
    QImageReader reader(&file, "jpeg");
    reader.setAutoTransform(false);
    // The decoder scales first (by its DCT, to the level's size) and then cuts the part out of
    // the scaled picture, so that only the part is ever held.
    const QSize scaledStored = Reduced(stored, level);
    const QRect storedPart = MapToStored(wanted, stored, orientation);
    const QRect scaledPart = ReducedRect(storedPart, level) & QRect(QPoint(0, 0), scaledStored);
    if (level > 0) {
        reader.setScaledSize(scaledStored);
    }
    if (scaledPart != QRect(QPoint(0, 0), scaledStored)) {
        reader.setScaledClipRect(scaledPart);
    }
    const QImage decoded = reader.read();
    if (decoded.isNull()) {
        return QImage();
    }
    return LumOrient(decoded, orientation);
}

QImage LumImageSource::DecodeOther(int level, const QRect& part) const {
    QFile file;
    if (!MibOpenRegularFile(file, path)) {
        return QImage();
    }
    QImageReader reader(&file);
    reader.setAutoTransform(true);
    QImage whole = reader.read();
    if (whole.isNull()) {
        return QImage();
    }
    if (part != QRect(QPoint(0, 0), seen)) {
        whole = whole.copy(part);
    }
    if (level > 0) {
        whole = whole.scaled(Reduced(whole.size(), level), Qt::IgnoreAspectRatio,
                             Qt::SmoothTransformation);
    }
    return whole;
}

QRect LumImageSource::MapToStored(const QRect& r, const QSize& s, int o) {
    const int sw = s.width();
    const int sh = s.height();
    switch (o) {
        case 2:
            return QRect(sw - (r.x() + r.width()), r.y(), r.width(), r.height());
        case 3:
            return QRect(sw - (r.x() + r.width()), sh - (r.y() + r.height()), r.width(),
                         r.height());
        case 4:
            return QRect(r.x(), sh - (r.y() + r.height()), r.width(), r.height());
        case 5:
            return QRect(r.y(), r.x(), r.height(), r.width());
        case 6:
            return QRect(r.y(), sh - (r.x() + r.width()), r.height(), r.width());
        case 7:
            return QRect(sw - (r.y() + r.height()), sh - (r.x() + r.width()), r.height(),
                         r.width());
        case 8:
            return QRect(sw - (r.y() + r.height()), r.x(), r.height(), r.width());
        default:
            return r;
    }
}

int LumImageSource::OrientationOfTurn(int angle) {
    switch (((angle % 360) + 360) % 360) {
        case 90:
            return 6;
        case 180:
            return 3;
        case 270:
            return 8;
        default:
            return 1;
    }
}
