#include <QtTest>
#include <QXmlStreamReader>

#include <exiv2/exiv2.hpp>

#include <cmath>
#include <set>

#include "platform/Cp932.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ExifJpegWriter.h"

using Elements = QList<QPair<QString, QString>>;

namespace {

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A Shift_JIS XML file decoded through Cp932 and parsed: its leaves, split into the
// photographs' and the rest, and the child tags of every inner element.
struct ParsedXml {
    QString error;
    QStringList firstLines;
    QString root, rootVersion;
    Elements management;
    QList<Elements> photos;
    QList<QPair<QString, QStringList>> children;  // inner element tag, its child tags
    QString Leaf(const QString& tag) const {
        for (const auto& e : management) {
            if (e.first == tag) {
                return e.second;
            }
        }
        return QStringLiteral("<missing>");
    }
};

ParsedXml Parse(const QString& path) {
    ParsedXml parsed;
    const QByteArray bytes = ReadAll(path);
    bool clean = false;
    const QString text = Cp932::ToUnicode(bytes, &clean);
    if (bytes.isEmpty() || !clean) {
        parsed.error = QStringLiteral("not valid CP932");
        return parsed;
    }
    parsed.firstLines = text.split(QStringLiteral("\r\n")).mid(0, 2);
    QXmlStreamReader xml(text);
    struct Open {
        QString tag;
        QStringList childTags;
        QString text;
    };
    QList<Open> stack;
    bool inPhoto = false;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            if (stack.isEmpty()) {
                parsed.root = xml.name().toString();
                parsed.rootVersion =
                    xml.attributes().value(QStringLiteral("DTD_version")).toString();
            } else {
                stack.last().childTags << xml.name().toString();
            }
            if (xml.name() == QStringLiteral("写真情報") && stack.size() == 1) {
                inPhoto = true;
                parsed.photos.append(Elements());
            }
            stack.append({xml.name().toString(), {}, {}});
        } else if (xml.isCharacters() && !stack.isEmpty()) {
            stack.last().text += xml.text();
        } else if (xml.isEndElement()) {
            const Open done = stack.takeLast();
            if (done.childTags.isEmpty()) {
                (inPhoto ? parsed.photos.last() : parsed.management).append({done.tag, done.text});
            } else {
                parsed.children.append({done.tag, done.childTags});
            }
            if (done.tag == QStringLiteral("写真情報") && stack.size() == 1) {
                inPhoto = false;
            }
        }
    }
    if (xml.hasError()) {
        parsed.error = xml.errorString();
    }
    return parsed;
}

// Content models of the standards' element trees: "a b? c* d+" in DTD order.
QHash<QString, QString> Models(const QString& shape, bool maff) {
    if (shape == QStringLiteral("11")) {
        return {
            {"photodata", "基礎情報 工事情報 写真情報+ ソフトメーカ用TAG*"},
            {"基礎情報", "メディア番号 メディア総枚数 写真フォルダ名? 参考図フォルダ名?"},
            {"工事情報", "工事件名"},
            {"写真情報",
             "シリアル番号 写真ファイル名 写真-大分類? 写真区分? 工種? 種別? 細別? "
             "写真タイトル 撮影箇所? 撮影年月日? 参考図1? 参考図2? 参考図3? 整理フラグ?"},
        };
    }
    const bool v05 = shape == QStringLiteral("05");
    const bool v04 = v05 || shape == QStringLiteral("04");
    return {
        {"photodata", "基礎情報 写真情報+ ソフトメーカ用TAG*"},
        {"基礎情報", "写真フォルダ名 参考図フォルダ名? 適用要領基準"},
        {"写真情報",
         QStringLiteral("写真ファイル情報 撮影工種区分 付加情報* 撮影情報 代表写真 %1 %2 "
                        "請負者説明文?")
             .arg(maff ? "提出頻度写真?" : "提出頻度写真", v04 ? "施工管理値?" : "")},
        {"写真ファイル情報", QStringLiteral("シリアル番号 写真ファイル名 %1 メディア番号")
                                 .arg(v05 ? "写真ファイル日本語名?" : "")},
        {"撮影工種区分", "写真-大分類 写真区分? 工種? 種別? 細別? 写真タイトル 工種区分予備*"},
        {"付加情報", QStringLiteral("参考図ファイル名 %1 参考図タイトル 付加情報予備*")
                         .arg(v05 ? "参考図ファイル日本語名?" : "")},
        {"撮影情報", QStringLiteral("撮影箇所? 撮影年月日%1").arg(v04 ? "" : "?")},
    };
}

QStringList Tokens(const QString& model) {
    return model.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QString Bare(const QString& token) {
    return QStringLiteral("?*+").contains(token.back()) ? token.chopped(1) : token;
}

// Empty when the child tags follow the model, else what went wrong.
QString Mismatch(const QStringList& tags, const QString& model) {
    int i = 0;
    for (const QString& token : Tokens(model)) {
        const QString name = Bare(token);
        const QChar mult = token.back();
        int n = 0;
        for (; i < tags.size() && tags[i] == name; ++i) {
            ++n;
        }
        const bool bad = mult == QLatin1Char('?')   ? n > 1
                         : mult == QLatin1Char('+') ? n < 1
                                                    : mult != QLatin1Char('*') && n != 1;
        if (bad) {
            return QStringLiteral("%1 occurs %2 times in [%3]")
                .arg(name)
                .arg(n)
                .arg(tags.join(' '));
        }
    }
    return i == tags.size() ? QString()
                            : QStringLiteral("unexpected %1 in [%2]").arg(tags[i], tags.join(' '));
}

struct ExifReader {
    Exiv2::ExifData data;
    QString error;
    explicit ExifReader(const QString& path) {
        try {
            auto image = Exiv2::ImageFactory::open(path.toStdString());
            image->readMetadata();
            data = image->exifData();
        } catch (const std::exception& e) {
            error = QString::fromStdString(e.what());
        }
    }
    Exiv2::ExifData::const_iterator Find(const char* key) const {
        return data.findKey(Exiv2::ExifKey(key));
    }
    QString Text(const char* key) const {
        auto it = Find(key);
        return it == data.end() ? QStringLiteral("<missing>")
                                : QString::fromStdString(it->toString()).remove(QChar(0));
    }
    long Long(const char* key, long n = 0) const {
        auto it = Find(key);
        return it == data.end() ? -999 : it->toLong(n);
    }
    double Real(const char* key, long n = 0) const {
        auto it = Find(key);
        if (it == data.end()) {
            return -999.0;
        }
        const Exiv2::Rational r = it->toRational(n);
        return r.second == 0 ? -999.0 : static_cast<double>(r.first) / r.second;
    }
    double Degrees(const char* key) const {
        return Real(key, 0) + Real(key, 1) / 60 + Real(key, 2) / 3600;
    }
};

}  // namespace

class DeliveryWriterTest : public QObject {
    Q_OBJECT

private slots:
    void writesGeneration_data();
    void writesGeneration();
    void deterministicFromSeed();
    void exifReadsBack_data();
    void exifReadsBack();
    void drawsBoardsAndDrawings();
    void refusesBadRequests();
};

void DeliveryWriterTest::writesGeneration_data() {
    QTest::addColumn<Generation>("generation");
    QTest::addColumn<QString>("dtd");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("shape");  // the MLIT tree the generation follows
    QTest::addColumn<int>("family");
    // Empty: every optional element on. Else nothing optional is asked for, and these are the
    // only leaves allowed besides 写真区分 (required for photographs of the works).
    QTest::addColumn<QStringList>("bare");
    const QStringList full;
    const QStringList base{"シリアル番号", "写真ファイル名", "写真タイトル"};
    // 撮影年月日 keeps 撮影情報 from being empty.
    const QStringList later =
        base + QStringList{"メディア番号", "写真-大分類", "撮影年月日", "代表写真"};
    // clang-format off
    QTest::newRow("国交省-11") << Generation::Mlit11 << "PHOTO.DTD" << "1.00" << "11" << 0 << full;
    QTest::newRow("国交省-14") << Generation::Mlit14 << "PHOTO02.DTD" << "02" << "02" << 0 << full;
    QTest::newRow("国交省-16") << Generation::Mlit16 << "PHOTO03.DTD" << "03" << "03" << 0 << full;
    QTest::newRow("国交省-18") << Generation::Mlit18 << "PHOTO04.DTD" << "04" << "04" << 0 << full;
    QTest::newRow("国交省-20") << Generation::Mlit20 << "PHOTO05.DTD" << "05" << "05" << 0 << full;
    QTest::newRow("農水省-15") << Generation::Maff15 << "PHOTO02N.DTD" << "02" << "02" << 2 << full;
    QTest::newRow("農水省-17") << Generation::Maff17 << "PHOTO03.DTD" << "03" << "03" << 2 << full;
    QTest::newRow("農水省-23") << Generation::Maff23 << "PHOTO05.DTD" << "05" << "05" << 2 << full;
    QTest::newRow("NEXCO-14") << Generation::Nexco14 << "PHOTO02.DTD" << "02" << "02" << 3 << full;
    QTest::newRow("NEXCO-18") << Generation::Nexco18 << "PHOTO03.DTD" << "03" << "04" << 3 << full;
    QTest::newRow("NEXCO-24") << Generation::Nexco24 << "PHOTO04.DTD" << "04" << "05" << 3 << full;
    QTest::newRow("国交省-11 bare")
        << Generation::Mlit11 << "PHOTO.DTD" << "1.00" << "11" << 0 << base;
    QTest::newRow("国交省-14 bare") << Generation::Mlit14 << "PHOTO02.DTD" << "02" << "02" << 0
                                   << later + QStringList{"提出頻度写真"};
    QTest::newRow("農水省-23 bare")
        << Generation::Maff23 << "PHOTO05.DTD" << "05" << "05" << 2 << later;
    // clang-format on
}

// Every generation: the file is Shift_JIS, well formed, in the standard's element order, uses
// every element of its tree when all optional ones are on, agrees with what the writer
// reports, and every file it names exists.
void DeliveryWriterTest::writesGeneration() {
    QFETCH(Generation, generation);
    QFETCH(QString, dtd);
    QFETCH(QString, version);
    QFETCH(QString, shape);
    QFETCH(int, family);
    QFETCH(QStringList, bare);
    QTemporaryDir dir;
    DeliveryOptions options;
    options.generation = generation;
    options.photoCount = bare.isEmpty() ? 150 : 40;
    options.seed = 11 + static_cast<quint32>(generation);
    options.images = DeliveryOptions::Images::Tiny;
    options.optionalShare = bare.isEmpty() ? 1.0 : 0.0;
    options.drawingShare = bare.isEmpty() ? 0.5 : 0.0;
    options.maxRepeats = bare.isEmpty() ? 3 : 0;
    WrittenDelivery written;
    QString error;
    QVERIFY2(WriteDelivery(dir.path(), options, &written, &error), qPrintable(error));

    QCOMPARE(written.doctypeDtd, dtd);
    QCOMPARE(written.family, family);
    Generation back{};
    QVERIFY(GenerationFromName(SectionName(generation), &back) && back == generation);
    QCOMPARE(written.photoFolder, dir.path() + "/INDEX_C/PHOTO");

    const ParsedXml xml = Parse(written.photoFolder + "/PHOTO.XML");
    QVERIFY2(xml.error.isEmpty(), qPrintable(xml.error));
    QCOMPARE(xml.firstLines,
             QStringList({R"(<?xml version="1.0" encoding="Shift_JIS"?>)",
                          QStringLiteral(R"(<!DOCTYPE photodata SYSTEM "%1">)").arg(dtd)}));
    QCOMPARE(xml.root, QStringLiteral("photodata"));
    QCOMPARE(xml.rootVersion, version);

    const auto models = Models(shape, family == 2);
    std::set<QString> seen;
    for (const auto& [tag, childTags] : xml.children) {
        QVERIFY2(models.contains(tag), qPrintable("no model for " + tag));
        const QString mismatch = Mismatch(childTags, models[tag]);
        QVERIFY2(mismatch.isEmpty(), qPrintable(tag + ": " + mismatch));
        seen.insert(tag);
        seen.insert(childTags.cbegin(), childTags.cend());
    }
    for (const QString& model : models) {
        for (const QString& token : Tokens(model)) {
            QVERIFY2(!bare.isEmpty() || seen.count(Bare(token)),
                     qPrintable(Bare(token) + " is never written"));
        }
    }
    for (const Elements& leaves : xml.photos) {
        for (const auto& leaf : leaves) {
            QVERIFY2(bare.isEmpty() || bare.contains(leaf.first) || leaf.first == "写真区分",
                     qPrintable(leaf.first));
        }
    }
    if (!bare.isEmpty()) {
        QCOMPARE(xml.Leaf("参考図フォルダ名"), QStringLiteral("<missing>"));
        QCOMPARE(xml.Leaf("ソフトメーカ用TAG"), QStringLiteral("<missing>"));
        QVERIFY(!QFileInfo::exists(written.photoFolder + "/DRA"));
    }

    QCOMPARE(xml.management, written.managementElements);
    QCOMPARE(xml.photos.size(), options.photoCount);
    QCOMPARE(written.photos.size(), options.photoCount);
    const QStringList drawingTags = {"参考図ファイル名", "参考図1", "参考図2", "参考図3"};
    const QRegularExpression isoDate(QStringLiteral("^\\d{4}-\\d{2}-\\d{2}$"));
    for (int i = 0; i < xml.photos.size(); ++i) {
        const Elements& leaves = xml.photos[i];
        const WrittenPhoto& photo = written.photos[i];
        QCOMPARE(leaves, photo.elements);
        QStringList drawings;
        for (const auto& [tag, text] : leaves) {
            if (tag == "シリアル番号") {
                QCOMPARE(text, QString::number(i + 1));
            } else if (tag == "写真ファイル名") {
                QCOMPARE(text, photo.fileName);
            } else if (tag == "撮影年月日") {
                QVERIFY2(isoDate.match(text).hasMatch() &&
                             QDate::fromString(text, Qt::ISODate).isValid(),
                         qPrintable(text));
                QCOMPARE(photo.exif.dateTimeOriginal.date().toString(Qt::ISODate), text);
            } else if (drawingTags.contains(tag)) {
                drawings << text;
            }
        }
        QCOMPARE(drawings, photo.drawings);
        QVERIFY2(QFile::exists(written.photoFolder + "/PIC/" + photo.fileName),
                 qPrintable(photo.fileName));
        for (const QString& name : drawings) {
            QVERIFY2(QFile::exists(written.photoFolder + "/DRA/" + name), qPrintable(name));
        }
    }
    QCOMPARE(QDir(written.photoFolder + "/PIC").entryList(QDir::Files).size(), options.photoCount);
    QCOMPARE(xml.Leaf("写真フォルダ名"), QStringLiteral("PHOTO/PIC"));

    // The camera's date is the 撮影年月日 of the record.
    const ExifReader exif(written.photoFolder + "/PIC/" + written.photos[0].fileName);
    QVERIFY2(exif.error.isEmpty(), qPrintable(exif.error));
    QCOMPARE(exif.Text("Exif.Photo.DateTimeOriginal"),
             written.photos[0].exif.dateTimeOriginal.toString("yyyy:MM:dd HH:mm:ss"));

    const ParsedXml index = Parse(written.indexFolder + "/INDEX_C.XML");
    QVERIFY2(index.error.isEmpty(), qPrintable(index.error));
    QCOMPARE(index.root, QStringLiteral("constdata"));
    QVERIFY(index.firstLines.value(1).startsWith("<!DOCTYPE constdata SYSTEM \"INDE_C0"));
    QCOMPARE(index.Leaf("写真フォルダ名"), QStringLiteral("PHOTO"));
    QVERIFY(!index.Leaf("工事名称").isEmpty() && index.Leaf("工事名称") != "<missing>");
}

// The same seed gives the same bytes, whatever images are asked for; another seed does not.
void DeliveryWriterTest::deterministicFromSeed() {
    QTemporaryDir a, b, c, d;
    DeliveryOptions options;
    options.photoCount = 25;
    options.seed = 42;
    options.images = DeliveryOptions::Images::Tiny;
    options.drawingShare = 0.5;
    QString error;
    WrittenDelivery written;
    QVERIFY2(WriteDelivery(a.path(), options, &written, &error), qPrintable(error));
    QVERIFY(WriteDelivery(b.path(), options, nullptr, &error));
    options.images = DeliveryOptions::Images::None;
    QVERIFY(WriteDelivery(c.path(), options, nullptr, &error));
    options.seed = 43;
    QVERIFY(WriteDelivery(d.path(), options, nullptr, &error));

    const QString photoXml = "/INDEX_C/PHOTO/PHOTO.XML";
    const QByteArray first = ReadAll(a.path() + photoXml);
    QVERIFY(!first.isEmpty());
    QCOMPARE(ReadAll(b.path() + photoXml), first);
    QCOMPARE(ReadAll(c.path() + photoXml), first);
    QVERIFY(ReadAll(d.path() + photoXml) != first);
    QCOMPARE(ReadAll(b.path() + "/INDEX_C/INDEX_C.XML"),
             ReadAll(a.path() + "/INDEX_C/INDEX_C.XML"));
    for (const WrittenPhoto& photo : written.photos) {
        const QString pic = "/INDEX_C/PHOTO/PIC/" + photo.fileName;
        QCOMPARE(ReadAll(b.path() + pic), ReadAll(a.path() + pic));
    }
    QVERIFY(!QFileInfo::exists(c.path() + "/INDEX_C/PHOTO/PIC"));
}

void DeliveryWriterTest::exifReadsBack_data() {
    QTest::addColumn<ExifFacts>("facts");
    QTest::addColumn<QSize>("imageSize");
    const QDateTime taken(QDate(2023, 7, 4), QTime(15, 42, 7));
    // clang-format off
    QTest::newRow("north-east, thumbnail")
        << ExifFacts{.software = "FIELD-CAM FW 1.02", .artist = "K. Sato",
                     .copyright = "Midorikawa",
                     .dateTimeOriginal = taken, .hasGps = true, .latitude = 35.658100,
                     .longitude = 139.741350, .altitude = 12.3}
        << QSize(320, 240);
    QTest::newRow("south-west, below sea, turned")
        << ExifFacts{.dateTimeOriginal = taken, .orientation = 6, .exposureTime = 1.0 / 60.0,
                     .fNumber = 5.6, .focalLength = 12.3, .maxAperture = 3.5, .isoSpeed = 400,
                     .exposureBias = -0.7, .flash = 25, .meteringMode = 2, .exifVersion = "0220",
                     .hasGps = true, .latitude = -33.8568, .longitude = -151.2153, .altitude = -4.5,
                     .thumbnailSize = QSize(120, 160)}
        << QSize(240, 320);
    QTest::newRow("no GPS, no thumbnail, no date")
        << ExifFacts{.orientation = 0, .embedThumbnail = false} << QSize(64, 48);
    // A noisy picture whose thumbnail at this size does not fit at the first quality.
    QTest::newRow("large thumbnail")
        << ExifFacts{.thumbnailSize = QSize(400, 300)} << QSize(800, 600);
    // clang-format on
}

// Every tag written reads back through exiv2 with its value; the thumbnail is a JPEG of the
// size asked; the APP1 segment comes first and its length is right.
void DeliveryWriterTest::exifReadsBack() {
    QFETCH(ExifFacts, facts);
    QFETCH(QSize, imageSize);
    QImage image(imageSize, QImage::Format_RGB32);
    quint32 noise = 12345;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            noise = noise * 1664525u + 1013904223u;
            image.setPixel(x, y, noise >> 8);
        }
    }
    QTemporaryDir dir;
    const QString path = dir.filePath("P.JPG");
    QVERIFY(WriteExifJpeg(path, image, facts));

    const QByteArray bytes = ReadAll(path);
    QCOMPARE(bytes.left(4), QByteArray("\xFF\xD8\xFF\xE1"));
    const int length = (static_cast<uchar>(bytes[4]) << 8) | static_cast<uchar>(bytes[5]);
    QCOMPARE(static_cast<uchar>(bytes[4 + length]), uchar(0xFF));
    QCOMPARE(QImage::fromData(bytes).size(), imageSize);

    const ExifReader exif(path);
    QVERIFY2(exif.error.isEmpty(), qPrintable(exif.error));
    QCOMPARE(exif.Text("Exif.Image.Make"), facts.make);
    QCOMPARE(exif.Text("Exif.Image.Model"), facts.model);
    QCOMPARE(exif.Text("Exif.Image.Software"),
             facts.software.isEmpty() ? "<missing>" : facts.software);
    QCOMPARE(exif.Text("Exif.Image.Artist"), facts.artist.isEmpty() ? "<missing>" : facts.artist);
    QCOMPARE(exif.Text("Exif.Image.Copyright"),
             facts.copyright.isEmpty() ? "<missing>" : facts.copyright);
    QCOMPARE(exif.Long("Exif.Image.Orientation"), facts.orientation ? facts.orientation : -999);
    const QString date = facts.dateTimeOriginal.isValid()
                             ? facts.dateTimeOriginal.toString("yyyy:MM:dd HH:mm:ss")
                             : QStringLiteral("<missing>");
    QCOMPARE(exif.Text("Exif.Image.DateTime"), date);
    QCOMPARE(exif.Text("Exif.Photo.DateTimeOriginal"), date);
    QCOMPARE(exif.Text("Exif.Photo.DateTimeDigitized"), date);

    QString version;
    for (int k = 0; k < 4; ++k) {
        version += QChar(static_cast<char>(exif.Long("Exif.Photo.ExifVersion", k)));
    }
    QCOMPARE(version, QString::fromLatin1(facts.exifVersion));
    const auto near = [](double a, double b, double tolerance) {
        return std::fabs(a - b) <= tolerance;
    };
    QCOMPARE(exif.Real("Exif.Photo.ExposureTime"), facts.exposureTime);
    QVERIFY(
        near(std::pow(2.0, -exif.Real("Exif.Photo.ShutterSpeedValue")), facts.exposureTime, 1e-4));
    QCOMPARE(exif.Real("Exif.Photo.FNumber"), facts.fNumber);
    QVERIFY(near(std::pow(2.0, exif.Real("Exif.Photo.ApertureValue") / 2), facts.fNumber, 0.01));
    QVERIFY(
        near(std::pow(2.0, exif.Real("Exif.Photo.MaxApertureValue") / 2), facts.maxAperture, 0.01));
    QCOMPARE(exif.Long("Exif.Photo.ISOSpeedRatings"), long(facts.isoSpeed));
    QVERIFY(near(exif.Real("Exif.Photo.ExposureBiasValue"), facts.exposureBias, 1e-9));
    QCOMPARE(exif.Long("Exif.Photo.MeteringMode"), long(facts.meteringMode));
    QCOMPARE(exif.Long("Exif.Photo.Flash"), long(facts.flash));
    QVERIFY(near(exif.Real("Exif.Photo.FocalLength"), facts.focalLength, 1e-9));
    QCOMPARE(exif.Long("Exif.Photo.PixelXDimension"), long(imageSize.width()));
    QCOMPARE(exif.Long("Exif.Photo.PixelYDimension"), long(imageSize.height()));

    QCOMPARE(exif.Find("Exif.GPSInfo.GPSLatitude") != exif.data.end(), facts.hasGps);
    if (facts.hasGps) {
        QCOMPARE(exif.Long("Exif.GPSInfo.GPSVersionID", 0), 2L);
        QCOMPARE(exif.Long("Exif.GPSInfo.GPSVersionID", 1), 3L);
        QCOMPARE(exif.Text("Exif.GPSInfo.GPSLatitudeRef"), facts.latitude < 0 ? "S" : "N");
        QCOMPARE(exif.Text("Exif.GPSInfo.GPSLongitudeRef"), facts.longitude < 0 ? "W" : "E");
        QVERIFY(near(exif.Degrees("Exif.GPSInfo.GPSLatitude"), std::fabs(facts.latitude), 3e-6));
        QVERIFY(near(exif.Degrees("Exif.GPSInfo.GPSLongitude"), std::fabs(facts.longitude), 3e-6));
        QCOMPARE(exif.Long("Exif.GPSInfo.GPSAltitudeRef"), facts.altitude < 0 ? 1L : 0L);
        QVERIFY(near(exif.Real("Exif.GPSInfo.GPSAltitude"), std::fabs(facts.altitude), 1e-9));
    }

    Exiv2::ExifThumbC thumb(exif.data);
    const Exiv2::DataBuf buffer = thumb.copy();
    if (!facts.embedThumbnail) {
        QCOMPARE(buffer.size_, 0L);
        return;
    }
    QCOMPARE(QString::fromStdString(thumb.mimeType()), QStringLiteral("image/jpeg"));
    const QByteArray thumbBytes(reinterpret_cast<const char*>(buffer.pData_), buffer.size_);
    QVERIFY(thumbBytes.startsWith("\xFF\xD8"));
    QCOMPARE(QImage::fromData(thumbBytes, "JPEG").size(), facts.thumbnailSize);
}

// The drawn photographs and drawings are pictures of the size asked (turned ones stored
// sideways), with a thumbnail.
void DeliveryWriterTest::drawsBoardsAndDrawings() {
    QTemporaryDir dir;
    DeliveryOptions options;
    options.photoCount = 6;
    options.seed = 5;
    options.imageSize = QSize(320, 240);
    options.drawingShare = 1.0;
    WrittenDelivery written;
    QString error;
    QVERIFY2(WriteDelivery(dir.path(), options, &written, &error), qPrintable(error));
    for (const WrittenPhoto& photo : written.photos) {
        const QString path = written.photoFolder + "/PIC/" + photo.fileName;
        const QImage image(path);
        const bool sideways = photo.exif.orientation == 6 || photo.exif.orientation == 8;
        QCOMPARE(image.size(), sideways ? options.imageSize.transposed() : options.imageSize);
        const ExifReader exif(path);
        const Exiv2::DataBuf buffer = Exiv2::ExifThumbC(exif.data).copy();
        const QByteArray thumbBytes(reinterpret_cast<const char*>(buffer.pData_), buffer.size_);
        QCOMPARE(QImage::fromData(thumbBytes).size(), photo.exif.thumbnailSize);
        QVERIFY(!photo.drawings.isEmpty());
        for (const QString& name : photo.drawings) {
            const QImage drawing(written.photoFolder + "/DRA/" + name);
            QCOMPARE(drawing.size(), options.imageSize);
        }
    }
}

void DeliveryWriterTest::refusesBadRequests() {
    QTemporaryDir dir;
    QFile blocker(dir.filePath("file"));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    DeliveryOptions options;
    options.images = DeliveryOptions::Images::None;
    QString error;
    QVERIFY(!WriteDelivery(dir.filePath("file"), options, nullptr, &error) && !error.isEmpty());
    error.clear();
    options.photoCount = 0;
    QVERIFY(!WriteDelivery(dir.filePath("zero"), options, nullptr, &error) && !error.isEmpty());
    error.clear();
    options.photoCount = 3;
    options.images = DeliveryOptions::Images::Boards;
    options.imageSize = QSize(10, 10);
    QVERIFY(!WriteDelivery(dir.filePath("small"), options, nullptr, &error) && !error.isEmpty());

    QVERIFY(MakeExifJpeg(QImage(), ExifFacts()).isEmpty());
}

QTEST_MAIN(DeliveryWriterTest)
#include "DeliveryWriterTest.moc"
