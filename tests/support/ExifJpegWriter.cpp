#include "tests/support/ExifJpegWriter.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>
#include <QList>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace {

// TIFF field types.
constexpr quint16 kByte = 1, kAscii = 2, kShort = 3, kLong = 4, kRational = 5, kUndefined = 7,
                  kSRational = 10;

// Little-endian, as the whole block is.
void PutLe(QByteArray& out, quint32 v, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out.append(static_cast<char>((v >> (8 * i)) & 0xff));
    }
}

struct Rational {
    qint64 num = 0;
    qint64 den = 1;
};

// The value as a fraction over den, reduced, so that readers show "4.5" rather than "450/100".
Rational ToRational(double value, qint64 den) {
    qint64 num = std::llround(value * static_cast<double>(den));
    const qint64 g = std::gcd(std::llabs(num), den);
    if (g > 1) {
        num /= g;
        den /= g;
    }
    return {num, den};
}

// Exposure times are written as 1/n when shorter than a second, the way cameras do.
Rational ExposureRational(double seconds) {
    if (seconds < 1.0) {
        return {1, std::max<qint64>(1, std::llround(1.0 / seconds))};
    }
    return ToRational(seconds, 10);
}

struct Entry {
    quint16 tag = 0;
    quint16 type = 0;
    quint32 count = 0;
    QByteArray data;  // the value in little-endian bytes, count items of type
};

// One image file directory. Values longer than four bytes go to a data area right after
// the directory, so the directory's size is known before any offset is.
class Ifd {
public:
    void Add(quint16 tag, quint16 type, quint32 count, QByteArray data) {
        entries.append({tag, type, count, std::move(data)});
    }
    // An empty text leaves the tag out.
    void AddAscii(quint16 tag, const QString& text) {
        if (!text.isEmpty()) {
            AddBytes(tag, kAscii, text.toUtf8() + '\0');
        }
    }
    // One kShort or kLong.
    void AddNumber(quint16 tag, quint16 type, quint32 value) {
        QByteArray data;
        PutLe(data, value, type == kShort ? 2 : 4);
        Add(tag, type, 1, data);
    }
    void AddRationals(quint16 tag, const QList<Rational>& values, bool isSigned = false) {
        QByteArray data;
        for (const Rational& r : values) {
            PutLe(data, static_cast<quint32>(r.num), 4);
            PutLe(data, static_cast<quint32>(r.den), 4);
        }
        Add(tag, isSigned ? kSRational : kRational, static_cast<quint32>(values.size()), data);
    }
    void AddBytes(quint16 tag, quint16 type, const QByteArray& bytes) {
        Add(tag, type, static_cast<quint32>(bytes.size()), bytes);
    }
    void SetLong(quint16 tag, quint32 value) {
        for (Entry& e : entries) {
            if (e.tag == tag) {
                e.data.clear();
                PutLe(e.data, value, 4);
            }
        }
    }

    quint32 Size() {
        QByteArray scratch;
        Write(scratch, 0);
        return static_cast<quint32>(scratch.size());
    }

    // Appends the directory to tiff, which must be at offset; entries go in tag order, as
    // readers expect.
    void Write(QByteArray& tiff, quint32 next) {
        std::sort(entries.begin(), entries.end(),
                  [](const Entry& a, const Entry& b) { return a.tag < b.tag; });
        const quint32 offset = static_cast<quint32>(tiff.size());
        quint32 dataOffset = offset + 2 + 12 * static_cast<quint32>(entries.size()) + 4;
        QByteArray area;
        PutLe(tiff, static_cast<quint16>(entries.size()), 2);
        for (const Entry& e : entries) {
            PutLe(tiff, e.tag, 2);
            PutLe(tiff, e.type, 2);
            PutLe(tiff, e.count, 4);
            if (e.data.size() <= 4) {
                tiff.append(e.data.leftJustified(4, '\0'));
            } else {
                PutLe(tiff, dataOffset + static_cast<quint32>(area.size()), 4);
                area.append(e.data).append(QByteArray(e.data.size() & 1, '\0'));
            }
        }
        PutLe(tiff, next, 4);
        tiff.append(area);
    }

    QList<Entry> entries;
};

QByteArray ExifDate(const QDateTime& when) {
    return when.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")).toLatin1() + '\0';
}

// Degrees as the three rationals of a GPS coordinate, seconds to a hundredth.
QList<Rational> Dms(double degrees) {
    const qint64 hundredths = std::llround(std::fabs(degrees) * 3600.0 * 100.0);
    const qint64 d = hundredths / 360000;
    const qint64 m = (hundredths / 6000) % 60;
    const qint64 s = hundredths % 6000;
    const Rational sec = s % 100 == 0 ? Rational{s / 100, 1} : Rational{s, 100};
    return {Rational{d, 1}, Rational{m, 1}, sec};
}

QByteArray EncodeJpeg(const QImage& image, int quality) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly)) {
        return {};
    }
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    if (!writer.write(image)) {
        return {};
    }
    return bytes;
}

// Position after SOI and a JFIF APP0 segment if there is one: an Exif file carries its APP1
// first, so the JFIF header that the encoder writes is dropped.
qsizetype AfterSoiAndJfif(const QByteArray& jpeg) {
    const auto byte = [&](int i) { return static_cast<uchar>(jpeg[i]); };
    if (jpeg.size() < 4 || byte(0) != 0xFF || byte(1) != 0xD8) {
        return -1;
    }
    const qsizetype end = jpeg.size() >= 6 ? 4 + ((byte(4) << 8) | byte(5)) : 0;
    return byte(2) == 0xFF && byte(3) == 0xE0 && end > 0 && end <= jpeg.size() ? end : 2;
}

QByteArray StripJfif(const QByteArray& jpeg) {
    const qsizetype rest = AfterSoiAndJfif(jpeg);
    return rest < 0 ? QByteArray() : jpeg.left(2) + jpeg.mid(rest);
}

// The TIFF structure of the Exif block: IFD0, Exif IFD, GPS IFD, IFD1, thumbnail.
QByteArray BuildTiff(const ExifFacts& facts, QSize imageSize, const QByteArray& thumbnail) {
    Ifd ifd0, exif, gps, ifd1;

    ifd0.AddAscii(0x010F, facts.make);
    ifd0.AddAscii(0x0110, facts.model);
    if (facts.orientation > 0) {
        ifd0.AddNumber(0x0112, kShort, static_cast<quint16>(facts.orientation));
    }
    ifd0.AddRationals(0x011A, {{72, 1}});
    ifd0.AddRationals(0x011B, {{72, 1}});
    ifd0.AddNumber(0x0128, kShort, 2);  // inches
    ifd0.AddAscii(0x0131, facts.software);
    const bool hasDate = facts.dateTimeOriginal.isValid();
    if (hasDate) {
        ifd0.AddBytes(0x0132, kAscii, ExifDate(facts.dateTimeOriginal));
    }
    ifd0.AddAscii(0x013B, facts.artist);
    ifd0.AddNumber(0x0213, kShort, 1);  // YCbCr centred
    ifd0.AddAscii(0x8298, facts.copyright);
    ifd0.AddNumber(0x8769, kLong, 0);
    if (facts.hasGps) {
        ifd0.AddNumber(0x8825, kLong, 0);
    }

    if (facts.exposureTime > 0) {
        exif.AddRationals(0x829A, {ExposureRational(facts.exposureTime)});
        exif.AddRationals(0x9201, {ToRational(-std::log2(facts.exposureTime), 1000)}, true);
    }
    if (facts.fNumber > 0) {
        exif.AddRationals(0x829D, {ToRational(facts.fNumber, 10)});
        exif.AddRationals(0x9202, {ToRational(2.0 * std::log2(facts.fNumber), 1000)});
    }
    if (facts.isoSpeed > 0) {
        exif.AddNumber(0x8827, kShort, static_cast<quint16>(facts.isoSpeed));
    }
    exif.AddBytes(0x9000, kUndefined, facts.exifVersion.left(4).leftJustified(4, '0'));
    if (hasDate) {
        exif.AddBytes(0x9003, kAscii, ExifDate(facts.dateTimeOriginal));
        exif.AddBytes(0x9004, kAscii, ExifDate(facts.dateTimeOriginal));
    }
    exif.AddBytes(0x9101, kUndefined, QByteArray("\x01\x02\x03\x00", 4));
    exif.AddRationals(0x9204, {ToRational(facts.exposureBias, 10)}, true);
    if (facts.maxAperture > 0) {
        exif.AddRationals(0x9205, {ToRational(2.0 * std::log2(facts.maxAperture), 1000)});
    }
    if (facts.meteringMode >= 0) {
        exif.AddNumber(0x9207, kShort, static_cast<quint16>(facts.meteringMode));
    }
    if (facts.flash >= 0) {
        exif.AddNumber(0x9209, kShort, static_cast<quint16>(facts.flash));
    }
    if (facts.focalLength > 0) {
        exif.AddRationals(0x920A, {ToRational(facts.focalLength, 100)});
    }
    exif.AddBytes(0xA000, kUndefined, QByteArray("0100"));
    exif.AddNumber(0xA001, kShort, 1);  // sRGB
    exif.AddNumber(0xA002, kLong, static_cast<quint32>(imageSize.width()));
    exif.AddNumber(0xA003, kLong, static_cast<quint32>(imageSize.height()));

    if (facts.hasGps) {
        gps.AddBytes(0x0000, kByte, QByteArray("\x02\x03\x00\x00", 4));
        gps.AddBytes(0x0001, kAscii, QByteArray(facts.latitude < 0 ? "S" : "N", 2));
        gps.AddRationals(0x0002, Dms(facts.latitude));
        gps.AddBytes(0x0003, kAscii, QByteArray(facts.longitude < 0 ? "W" : "E", 2));
        gps.AddRationals(0x0004, Dms(facts.longitude));
        gps.AddBytes(0x0005, kByte, QByteArray(1, facts.altitude < 0 ? '\x01' : '\x00'));
        gps.AddRationals(0x0006, {ToRational(std::fabs(facts.altitude), 10)});
    }

    const bool withThumbnail = !thumbnail.isEmpty();
    if (withThumbnail) {
        ifd1.AddNumber(0x0103, kShort, 6);  // JPEG
        ifd1.AddRationals(0x011A, {{72, 1}});
        ifd1.AddRationals(0x011B, {{72, 1}});
        ifd1.AddNumber(0x0128, kShort, 2);
        ifd1.AddNumber(0x0201, kLong, 0);
        ifd1.AddNumber(0x0202, kLong, static_cast<quint32>(thumbnail.size()));
    }

    // Offsets count from the start of the TIFF header, which is 8 bytes long.
    const quint32 ifd0At = 8;
    const quint32 exifAt = ifd0At + ifd0.Size();
    const quint32 gpsAt = exifAt + exif.Size();
    const quint32 ifd1At = gpsAt + (facts.hasGps ? gps.Size() : 0);
    const quint32 thumbAt = ifd1At + (withThumbnail ? ifd1.Size() : 0);
    ifd0.SetLong(0x8769, exifAt);
    ifd0.SetLong(0x8825, gpsAt);
    ifd1.SetLong(0x0201, thumbAt);

    QByteArray tiff("II\x2A\x00", 4);
    PutLe(tiff, ifd0At, 4);
    ifd0.Write(tiff, withThumbnail ? ifd1At : 0);
    exif.Write(tiff, 0);
    if (facts.hasGps) {
        gps.Write(tiff, 0);
    }
    if (withThumbnail) {
        ifd1.Write(tiff, 0);
        tiff.append(thumbnail);
    }
    return tiff;
}

}  // namespace

QByteArray MakeExifJpeg(const QImage& image, const ExifFacts& facts, int quality) {
    if (image.isNull()) {
        return {};
    }
    const QByteArray jpeg = EncodeJpeg(image, quality);
    const qsizetype rest = AfterSoiAndJfif(jpeg);
    if (rest < 0) {
        return {};
    }
    if (!facts.writeExif) {
        return jpeg;
    }

    QByteArray thumbnail;
    if (facts.embedThumbnail && !facts.thumbnailSize.isEmpty()) {
        // Stretched to exactly the asked size, whatever the picture's proportions.
        QImage thumbImage(facts.thumbnailSize, QImage::Format_RGB32);
        {
            QPainter painter(&thumbImage);
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawImage(thumbImage.rect(), image);
        }
        thumbnail = StripJfif(EncodeJpeg(thumbImage, 80));
        if (thumbnail.isEmpty()) {
            return {};
        }
    }
    const QByteArray tiff = BuildTiff(facts, image.size(), thumbnail);
    // A segment's length field is 16 bits and counts itself; "Exif\0\0" takes 6 more.
    const int length = 2 + 6 + static_cast<int>(tiff.size());
    if (length > 0xFFFF) {
        return {};
    }
    return jpeg.left(2) + QByteArray("\xFF\xE1", 2) + static_cast<char>(length >> 8) +
           static_cast<char>(length & 0xff) + QByteArray("Exif\0\0", 6) + tiff + jpeg.mid(rest);
}

bool WriteExifJpeg(const QString& path, const QImage& image, const ExifFacts& facts, int quality) {
    const QByteArray bytes = MakeExifJpeg(image, facts, quality);
    if (bytes.isEmpty()) {
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return false;
    }
    return file.write(bytes) == bytes.size() && file.flush();
}
