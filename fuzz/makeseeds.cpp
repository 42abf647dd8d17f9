// Writes the seed corpora of the fuzz targets from the delivery writer, so that no binary
// file is kept in the repository. Usage: tovi-fuzz-seeds OUT-DIR READITEM.XML
// OUT-DIR receives corpus/<target>/ for each target, and deliveries/<family>/PHOTO.XML, the
// deliveries fuzz_readitem walks against the definitions it reads.
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ExifJpegWriter.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTextStream>

#include <initializer_list>
#include <utility>

namespace {

bool Write(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QImage SmallImage(int width, int height, int seed) {
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            image.setPixel(x, y, qRgb((x * 16 + seed * 40) & 0xff, (y * 16) & 0xff, seed * 60));
        }
    }
    return image;
}

QByteArray Encoded(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, format) ? bytes : QByteArray();
}

// The seeds of fuzz_photoxml and fuzz_readitem start with the family byte.
QByteArray WithFamily(int family, const QByteArray& bytes) {
    return QByteArray(1, static_cast<char>(family)) + bytes;
}

// One section of READITEM.XML with the file's root around it: a seed far smaller than the
// whole file that still reads as a complete list.
QByteArray OneSection(const QByteArray& readItem, const QString& section) {
    const QByteArray open = "<" + section.toUtf8() + ">";
    const QByteArray close = "</" + section.toUtf8() + ">";
    const qsizetype from = readItem.indexOf(open);
    const qsizetype to = readItem.indexOf(close, from);
    if (from < 0 || to < 0) {
        return QByteArray();
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<information>\n" +
           readItem.mid(from, to + close.size() - from) + "\n</information>\n";
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 3) {
        QTextStream(stderr) << "usage: tovi-fuzz-seeds OUT-DIR READITEM.XML\n";
        return 2;
    }
    const QDir out(args[1]);
    const QDir corpus(out.filePath(QStringLiteral("corpus")));
    const QString scratch = out.filePath(QStringLiteral("scratch"));
    bool ok = true;

    // PHOTO.XML: one small delivery of each family's oldest and newest generations, some
    // with every optional element and repeat, some with few.
    int n = 0;
    for (Generation generation : {Generation::Mlit11, Generation::Mlit20, Generation::Maff15,
                                  Generation::Maff23, Generation::Nexco14, Generation::Nexco24}) {
        DeliveryOptions options;
        options.generation = generation;
        options.photoCount = 3;
        options.seed = static_cast<quint32>(n + 1);
        options.images = DeliveryOptions::Images::None;
        options.optionalShare = n % 2 == 0 ? 1.0 : 0.3;
        options.indent = n % 2 == 0;
        WrittenDelivery written;
        QString error;
        const QString root = scratch + QStringLiteral("/%1").arg(n);
        const QByteArray photo = WriteDelivery(root, options, &written, &error)
                                     ? ReadAll(written.photoFolder + QStringLiteral("/PHOTO.XML"))
                                     : QByteArray();
        ok = !photo.isEmpty() &&
             Write(corpus.filePath(QStringLiteral("photoxml/%1.xml").arg(n)),
                   WithFamily(written.family, photo)) &&
             ok;
        ++n;
    }

    // READITEM.XML: the section of each delivery fuzz_readitem walks, and that delivery.
    const QByteArray readItem = ReadAll(args[2]);
    for (Generation generation : {Generation::Mlit20, Generation::Maff23, Generation::Nexco24}) {
        const int family = FamilyOf(generation);
        const QByteArray section = OneSection(readItem, SectionName(generation));
        ok = !section.isEmpty() &&
             Write(corpus.filePath(QStringLiteral("readitem/%1.xml").arg(family)),
                   WithFamily(family, section)) &&
             ok;
        DeliveryOptions options;
        options.generation = generation;
        options.photoCount = 3;
        options.images = DeliveryOptions::Images::None;
        options.optionalShare = 1.0;
        WrittenDelivery written;
        QString error;
        const QString root = scratch + QStringLiteral("/readitem-%1").arg(family);
        const QByteArray photo = WriteDelivery(root, options, &written, &error)
                                     ? ReadAll(written.photoFolder + QStringLiteral("/PHOTO.XML"))
                                     : QByteArray();
        ok = !photo.isEmpty() &&
             Write(out.filePath(QStringLiteral("deliveries/%1/PHOTO.XML").arg(family)), photo) &&
             ok;
    }
    QDir(scratch).removeRecursively();

    // Exif: a full block with GPS and thumbnail, a bare one, and a JPEG without Exif.
    ExifFacts full;
    full.software = QStringLiteral("tovi");
    full.artist = QStringLiteral("検査員");
    full.dateTimeOriginal = QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9));
    full.orientation = 6;
    full.hasGps = true;
    full.latitude = 35.5;
    full.longitude = 139.25;
    full.altitude = 12.5;
    full.thumbnailSize = QSize(16, 12);
    ExifFacts bare;
    bare.embedThumbnail = false;
    bare.flash = -1;
    bare.meteringMode = -1;
    ExifFacts none;
    none.writeExif = false;
    const std::initializer_list<std::pair<const char*, QByteArray>> jpegs = {
        {"full.jpg", MakeExifJpeg(SmallImage(32, 24, 1), full)},
        {"bare.jpg", MakeExifJpeg(SmallImage(16, 8, 2), bare)},
        {"none.jpg", MakeExifJpeg(SmallImage(8, 8, 3), none)},
    };
    for (const auto& [name, bytes] : jpegs) {
        ok = !bytes.isEmpty() &&
             Write(corpus.filePath(QStringLiteral("exif/") + QLatin1String(name)), bytes) && ok;
    }

    // Display decode: the first byte picks the file's ending (0 .jpg, 1 .png, 2 .bmp, 3 .tif),
    // the rest is the file: JPEGs turned by their Exif, with and without a thumbnail, and one
    // picture in each other format the viewer reads.
    ExifFacts turned = full;
    turned.orientation = 8;
    const std::initializer_list<std::pair<const char*, QByteArray>> pictures = {
        {"turned.jpg", QByteArray(1, '\0') + MakeExifJpeg(SmallImage(40, 24, 5), turned)},
        {"bare.jpg", QByteArray(1, '\0') + MakeExifJpeg(SmallImage(24, 40, 6), bare)},
        {"plain.png", QByteArray(1, '\1') + Encoded(SmallImage(20, 12, 7), "PNG")},
        {"plain.bmp", QByteArray(1, '\2') + Encoded(SmallImage(12, 20, 8), "BMP")},
        {"plain.tif", QByteArray(1, '\3') + Encoded(SmallImage(16, 16, 9), "TIFF")},
    };
    for (const auto& [name, bytes] : pictures) {
        ok = bytes.size() > 1 &&
             Write(corpus.filePath(QStringLiteral("image/") + QLatin1String(name)), bytes) && ok;
    }

    // SVG: a drawing carrying a JPEG photograph in a data URI, with xlink and plain href.
    const QByteArray small = MakeExifJpeg(SmallImage(8, 8, 4), bare).toBase64();
    const QByteArray head =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
        "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"80\" height=\"60\">\n"
        "<rect x=\"1\" y=\"1\" width=\"78\" height=\"58\" fill=\"none\" stroke=\"black\"/>\n";
    ok = !small.isEmpty() &&
         Write(corpus.filePath(QStringLiteral("svg/xlink.svg")),
               head +
                   "<image x=\"0\" y=\"0\" width=\"8\" height=\"8\" "
                   "xlink:href=\"data:image/jpeg;base64," +
                   small + "\"/>\n</svg>\n") &&
         ok;
    ok = Write(corpus.filePath(QStringLiteral("svg/href.svg")),
               head + "<g><image href=\"data:image/jpg;base64," + small +
                   "\"/></g>\n<text x=\"2\" y=\"50\">図</text>\n</svg>\n") &&
         ok;

    // 施工管理値: the texts the delivery writer puts into photographs (every spelling it has,
    // readable or not), and a text of separators alone.
    QStringList texts;
    {
        DeliveryOptions options;
        options.photoCount = 40;
        options.images = DeliveryOptions::Images::None;
        options.optionalShare = 1.0;
        WrittenDelivery written;
        QString error;
        ok = WriteDelivery(scratch, options, &written, &error) && ok;
        for (const WrittenPhoto& photo : written.photos) {
            for (const auto& [tag, text] : photo.elements) {
                if (tag == QStringLiteral("施工管理値") && !texts.contains(text) &&
                    texts.size() < 12) {
                    texts << text;
                }
            }
        }
        QDir(scratch).removeRecursively();
    }
    ok = !texts.isEmpty() && ok;
    texts << QStringLiteral("、、:・");
    for (int i = 0; i < texts.size(); ++i) {
        ok = Write(corpus.filePath(QStringLiteral("controlvalue/%1.txt").arg(i)),
                   texts[i].toUtf8()) &&
             ok;
    }
    if (!ok) {
        QTextStream(stderr) << "tovi-fuzz-seeds: could not write every seed\n";
    }
    return ok ? 0 : 1;
}
