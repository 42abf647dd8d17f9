#pragma once

// Files for the Exif tests: pictures, SVG photographs carrying a JPEG main image, Exif blocks
// with one value overwritten, and a work folder of the test's own.

#include "platform/ToviEnvironment.h"
#include "tests/support/ExifJpegWriter.h"
#include "tests/support/WorkArea.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QtEndian>

#include <functional>

namespace exiffixture {

inline QImage Picture(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(90, 140, 200));
    QPainter painter(&image);
    painter.fillRect(0, 0, size.width() / 2, size.height() / 2, Qt::yellow);
    return image;
}

inline ExifFacts Facts(const std::function<void(ExifFacts&)>& change) {
    ExifFacts facts;
    change(facts);
    return facts;
}

inline bool WriteBytes(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size() && file.flush();
}

inline QByteArray ReadBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// An SVG photograph whose <image> refers to href, through the attribute given.
inline QByteArray SvgWithHref(const QByteArray& href,
                              const QByteArray& attribute = QByteArrayLiteral("xlink:href")) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\" "
           "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"64\" height=\"48\">\n"
           "  <rect width=\"64\" height=\"48\" fill=\"#ffffff\"/>\n"
           "  <image x=\"0\" y=\"0\" width=\"64\" height=\"48\" " +
           attribute + "=\"" + href + "\"/>\n</svg>\n";
}

inline QByteArray JpegDataUri(const QByteArray& jpeg) {
    return "data:image/jpeg;base64," + jpeg.toBase64();
}

// A JPEG with Exif made by the writer, as an SVG's main image.
inline QByteArray SvgWithJpeg(const ExifFacts& facts) {
    return SvgWithHref(JpegDataUri(MakeExifJpeg(Picture({64, 48}), facts)));
}

inline QString WorkFileOf(const QString& title) {
    return ToviEnvironment::SuiteFolder() + QStringLiteral("QVフォトビューアー/") + title +
           QStringLiteral("_Exif.JPEG");
}

inline void PutLe(QByteArray& bytes, qsizetype at, quint32 value, int size) {
    for (int i = 0; i < size; ++i) {
        bytes[at + i] = static_cast<char>((value >> (8 * i)) & 0xff);
    }
}

// Overwrites one entry (tag, type, count) of the writer's little-endian Exif block: its value
// with bytes of the same length, or, given no bytes, its count with a huge one. False when the
// entry is not there.
inline bool Patch(QByteArray& jpeg, quint16 tag, quint16 type, quint32 count,
                  const QByteArray& value) {
    const qsizetype tiff = jpeg.indexOf(QByteArray("Exif\0\0", 6)) + 6;
    QByteArray pattern(8, '\0');
    PutLe(pattern, 0, tag, 2);
    PutLe(pattern, 2, type, 2);
    PutLe(pattern, 4, count, 4);
    const qsizetype entry = tiff < 6 ? -1 : jpeg.indexOf(pattern, tiff);
    if (entry < 0) {
        return false;
    }
    if (value.isEmpty()) {
        PutLe(jpeg, entry + 4, 0x7FFFFFFF, 4);
        return true;
    }
    const qsizetype at = value.size() <= 4
                             ? entry + 8
                             : tiff + qFromLittleEndian<quint32>(jpeg.constData() + entry + 8);
    if (at + value.size() > jpeg.size()) {
        return false;
    }
    jpeg.replace(at, value.size(), value);
    return true;
}

inline QByteArray Rationals(std::initializer_list<std::pair<quint32, quint32>> values) {
    QByteArray bytes;
    for (const auto& [num, den] : values) {
        QByteArray pair(8, '\0');
        PutLe(pair, 0, num, 4);
        PutLe(pair, 4, den, 4);
        bytes += pair;
    }
    return bytes;
}

}  // namespace exiffixture
