#include "platform/LumImage.h"
#include "tests/imagefacts/ExifFixture.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace exiffixture;

Q_DECLARE_METATYPE(ExifFacts)

namespace {

// A text the reader must not answer for.
const QString kAbsent = QStringLiteral("<absent>");

QString Comment(const QString& path, int code) {
    QString text;
    return LumImage::GetComment(path, code, text) ? text : kAbsent;
}

}  // namespace

// The Exif text of each field as the reader lays it out, checked against Exif blocks that
// the test writer builds byte by byte; and the header size and the SVG main image. The writer's
// default values of every field are read back through the Exif groups in ToviExifInfoTest;
// here are the other shapes of each value.
class LumExifTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void fieldText_data();
    void fieldText();
    void absurdValues_data();
    void absurdValues();
    void unreadableFiles_data();
    void unreadableFiles();
    void rereadsAChangedFile();
    void headerSize_data();
    void headerSize();
    void mainImageFromSvg_data();
    void mainImageFromSvg();

private:
    QString Path(const QString& name) const { return dir->filePath(name); }

    std::unique_ptr<QTemporaryDir> dir;
};

void LumExifTest::init() {
    dir = std::make_unique<QTemporaryDir>();
    QVERIFY(dir->isValid());
    // Unreadable metadata is an ordinary outcome: nothing may be printed for it.
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
}

void LumExifTest::fieldText_data() {
    QTest::addColumn<ExifFacts>("facts");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("expected");

    const auto southWest = [](ExifFacts& f) {
        f.hasGps = true;
        f.latitude = -33.8688;
        f.longitude = -70.5;
        f.altitude = -5.0;
    };

    QTest::newRow("no software") << Facts() << int(LumCmntSoftware) << kAbsent;
    QTest::newRow("no date") << Facts() << int(LumCmntDateTimeOriginal) << kAbsent;
    QTest::newRow("version 2.21") << Facts([](ExifFacts& f) { f.exifVersion = "0221"; })
                                  << int(LumCmntExifVersion) << "2.21";
    QTest::newRow("exposure 2 s") << Facts([](ExifFacts& f) { f.exposureTime = 2.0; })
                                  << int(LumCmntExposureTime) << "2 秒";
    QTest::newRow("exposure 1.5 s") << Facts([](ExifFacts& f) { f.exposureTime = 1.5; })
                                    << int(LumCmntExposureTime) << "1.5 秒";
    QTest::newRow("F number whole")
        << Facts([](ExifFacts& f) { f.fNumber = 4.0; }) << int(LumCmntFNumber) << "F4";
    QTest::newRow("lens smallest F") << Facts([](ExifFacts& f) { f.maxAperture = 3.5; })
                                     << int(LumCmntMaxApertureValue) << "F3.5";
    QTest::newRow("bias plus") << Facts([](ExifFacts& f) { f.exposureBias = 0.3; })
                               << int(LumCmntExposureBiasValue) << "+0.3 EV";
    QTest::newRow("bias minus") << Facts([](ExifFacts& f) { f.exposureBias = -1.0; })
                                << int(LumCmntExposureBiasValue) << "-1.0 EV";
    QTest::newRow("metering centre") << Facts([](ExifFacts& f) { f.meteringMode = 2; })
                                     << int(LumCmntMeteringMode) << "Center weighted average";
    QTest::newRow("flash fired") << Facts([](ExifFacts& f) { f.flash = 1; }) << int(LumCmntFlash)
                                 << "Fired";
    QTest::newRow("flash left out")
        << Facts([](ExifFacts& f) { f.flash = -1; }) << int(LumCmntFlash) << kAbsent;
    QTest::newRow("focal length whole") << Facts([](ExifFacts& f) { f.focalLength = 24.0; })
                                        << int(LumCmntFocalLength) << "24.0 mm";
    QTest::newRow("latitude south")
        << Facts(southWest) << int(LumCmntGPSLatitude) << "S 33°52'07.68\"";
    QTest::newRow("longitude west")
        << Facts(southWest) << int(LumCmntGPSLongitude) << "W 70°30'00.00\"";
    QTest::newRow("below sea level") << Facts(southWest) << int(LumCmntGPSAltitude) << "-5.0 m";
    QTest::newRow("no GPS") << Facts() << int(LumCmntGPSLatitude) << kAbsent;
    QTest::newRow("code out of range") << Facts() << 99 << kAbsent;
}

void LumExifTest::fieldText() {
    QFETCH(ExifFacts, facts);
    QFETCH(int, code);
    QFETCH(QString, expected);

    const QString path = Path(QStringLiteral("P0000001.JPG"));
    QVERIFY(WriteExifJpeg(path, Picture({640, 480}), facts));
    QCOMPARE(Comment(path, code), expected);
}

void LumExifTest::absurdValues_data() {
    QTest::addColumn<int>("tag");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("value");  // empty: the count is made huge instead
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("expected");

    constexpr int kAscii = 2;
    constexpr int kRational = 5;
    constexpr int kUndefined = 7;
    constexpr int kSRational = 10;
    constexpr int kLong = 4;
    const QByteArray huge;
    QTest::newRow("exposure over zero")
        << 0x829A << kRational << 1 << Rationals({{1, 0}}) << int(LumCmntExposureTime) << kAbsent;
    QTest::newRow("shutter speed beyond reason")
        << 0x9201 << kSRational << 1 << Rationals({{0x7FFFFFFF, 1}})
        << int(LumCmntShutterSpeedValue) << kAbsent;
    QTest::newRow("focal length zero")
        << 0x920A << kRational << 1 << Rationals({{0, 1}}) << int(LumCmntFocalLength) << kAbsent;
    QTest::newRow("bias over zero") << 0x9204 << kSRational << 1 << Rationals({{3, 0}})
                                    << int(LumCmntExposureBiasValue) << kAbsent;
    QTest::newRow("unset clock") << 0x9003 << kAscii << 20 << QByteArray("0000:00:00 00:00:00", 20)
                                 << int(LumCmntDateTimeOriginal) << kAbsent;
    QTest::newRow("month 13") << 0x9003 << kAscii << 20 << QByteArray("2024:13:01 10:00:00", 20)
                              << int(LumCmntDateTimeOriginal) << kAbsent;
    QTest::newRow("binary version")
        << 0x9000 << kUndefined << 4 << QByteArray("\xFF\x01\xFE\x02", 4) << int(LumCmntExifVersion)
        << kAbsent;
    QTest::newRow("version in words")
        << 0x9000 << kUndefined << 4 << QByteArray("v2.x", 4) << int(LumCmntExifVersion) << "v2.x";
    QTest::newRow("latitude past the pole")
        << 0x0002 << kRational << 3 << Rationals({{91, 1}, {0, 1}, {0, 1}})
        << int(LumCmntGPSLatitude) << kAbsent;
    QTest::newRow("minutes as a fraction")
        << 0x0002 << kRational << 3 << Rationals({{35, 1}, {39486, 1000}, {0, 1}})
        << int(LumCmntGPSLatitude) << "N 35°39'29.16\"";
    QTest::newRow("width zero: the frame's size")
        << 0xA002 << kLong << 1 << QByteArray(4, '\0') << int(LumCmntImageSize) << "640 x 480";
    QTest::newRow("make of a huge count")
        << 0x010F << kAscii << 7 << huge << int(LumCmntMake) << kAbsent;
}

void LumExifTest::absurdValues() {
    QFETCH(int, tag);
    QFETCH(int, type);
    QFETCH(int, count);
    QFETCH(QByteArray, value);
    QFETCH(int, code);
    QFETCH(QString, expected);

    ExifFacts facts;
    facts.dateTimeOriginal = QDateTime(QDate(2024, 5, 1), QTime(9, 30));
    facts.hasGps = true;
    facts.latitude = 35.6581;
    facts.longitude = 139.74135;
    QByteArray jpeg = MakeExifJpeg(Picture({640, 480}), facts);
    const auto t = static_cast<quint16>(tag);
    const auto y = static_cast<quint16>(type);
    const auto c = static_cast<quint32>(count);
    QVERIFY(value.isEmpty() ? PatchCount(jpeg, t, y, c, 0x7FFFFFFF)
                            : PatchValue(jpeg, t, y, c, value));
    const QString path = Path(QStringLiteral("P0000001.JPG"));
    QVERIFY(WriteBytes(path, jpeg));

    QCOMPARE(Comment(path, code), expected);
    // Every other field is still asked without harm.
    for (int other = 0; other < LumCmntCount; ++other) {
        QString text;
        LumImage::GetComment(path, other, text);
    }
}

void LumExifTest::unreadableFiles_data() {
    QTest::addColumn<QByteArray>("bytes");  // written as the file; "<none>" writes nothing
    QTest::addColumn<bool>("hasVersion");
    QTest::addColumn<QSize>("size");  // invalid: no size

    const QByteArray jpeg = MakeExifJpeg(Picture({320, 240}), ExifFacts());
    const qsizetype app1End = jpeg.indexOf(QByteArray("\xFF\xDB", 2));  // tables after APP1
    QVERIFY(app1End > 0);
    QTest::newRow("plain JPEG") << MakeExifJpeg(Picture({320, 240}),
                                                Facts([](ExifFacts& f) { f.writeExif = false; }))
                                << false << QSize(320, 240);
    QTest::newRow("cut in the picture") << jpeg.left(jpeg.size() - 300) << true << QSize(320, 240);
    QTest::newRow("cut in the Exif block") << jpeg.left(app1End / 2) << false << QSize();
    QTest::newRow("empty file") << QByteArray() << false << QSize();
    QTest::newRow("missing file") << QByteArray("<none>") << false << QSize();
}

void LumExifTest::unreadableFiles() {
    QFETCH(QByteArray, bytes);
    QFETCH(bool, hasVersion);
    QFETCH(QSize, size);

    const QString path = Path(QStringLiteral("P0000001.JPG"));
    if (bytes != "<none>") {
        QVERIFY(WriteBytes(path, bytes));
    }
    QString text;
    QCOMPARE(LumImage::GetComment(path, LumCmntExifVersion, text), hasVersion);
    if (!hasVersion) {
        for (int code = 0; code < LumCmntCount; ++code) {
            QVERIFY2(!LumImage::GetComment(path, code, text), qPrintable(QString::number(code)));
        }
    }
    int width = 0;
    int height = 0;
    QCOMPARE(LumImage::GetCommentImageSize(path, width, height), size.isValid());
    if (size.isValid()) {
        QCOMPARE(QSize(width, height), size);
    }
}

void LumExifTest::rereadsAChangedFile() {
    // One file after another, and one file rewritten in place with a value of the same
    // length: each answer is that of the file as it is now.
    const QString first = Path(QStringLiteral("A.JPG"));
    const QString second = Path(QStringLiteral("B.JPG"));
    QVERIFY(WriteExifJpeg(first, Picture({64, 48}), Facts([](ExifFacts& f) { f.make = "AAAA"; })));
    QVERIFY(WriteExifJpeg(second, Picture({64, 48}), Facts([](ExifFacts& f) { f.make = "BBBB"; })));
    QCOMPARE(Comment(first, LumCmntMake), QStringLiteral("AAAA"));
    QCOMPARE(Comment(second, LumCmntMake), QStringLiteral("BBBB"));
    QCOMPARE(Comment(first, LumCmntMake), QStringLiteral("AAAA"));

    QVERIFY(WriteExifJpeg(first, Picture({64, 48}), Facts([](ExifFacts& f) { f.make = "CCCC"; })));
    QCOMPARE(Comment(first, LumCmntMake), QStringLiteral("CCCC"));
    QVERIFY(QFile::remove(first));
    QCOMPARE(Comment(first, LumCmntMake), kAbsent);
}

void LumExifTest::headerSize_data() {
    QTest::addColumn<QString>("format");
    QTest::addColumn<QSize>("size");

    QTest::newRow("JPEG") << "JPG" << QSize(640, 480);
    QTest::newRow("JPEG, one row") << "JPG" << QSize(15000, 1);
    QTest::newRow("PNG") << "PNG" << QSize(300, 200);
}

void LumExifTest::headerSize() {
    QFETCH(QString, format);
    QFETCH(QSize, size);

    const QString path = Path(QStringLiteral("P.") + format);
    if (format == QLatin1String("JPG")) {
        QVERIFY(
            WriteExifJpeg(path, Picture(size), Facts([](ExifFacts& f) { f.writeExif = false; })));
    } else {
        QVERIFY(Picture(size).save(path, qPrintable(format)));
    }
    int width = 0;
    int height = 0;
    QVERIFY(LumImage::GetCommentImageSize(path, width, height));
    QCOMPARE(QSize(width, height), size);
}

void LumExifTest::mainImageFromSvg_data() {
    QTest::addColumn<QByteArray>("svg");
    QTest::addColumn<bool>("written");

    const ExifFacts facts = Facts([](ExifFacts& f) { f.make = "SVGCAM"; });
    const QByteArray jpeg = MakeExifJpeg(Picture({64, 48}), facts);
    const QByteArray base64 = jpeg.toBase64();
    QByteArray wrapped;
    for (qsizetype i = 0; i < base64.size(); i += 76) {
        wrapped += base64.mid(i, 76) + "\n      ";
    }
    QByteArray png;
    {
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        Picture({8, 8}).save(&buffer, "PNG");
    }
    const QByteArray pngUri = "data:image/png;base64," + png.toBase64();

    QTest::newRow("xlink:href") << SvgWithJpeg(facts) << true;
    QTest::newRow("plain href") << SvgWithHref(JpegDataUri(jpeg), "href") << true;
    QTest::newRow("wrapped base64") << SvgWithHref("data:image/jpeg;base64," + wrapped) << true;
    QTest::newRow("a PNG first, then the JPEG")
        << SvgWithHref(pngUri).replace("</svg>",
                                       "<image xlink:href=\"" + JpegDataUri(jpeg) + "\"/></svg>")
        << true;
    QTest::newRow("PNG only") << SvgWithHref(pngUri) << false;
    QTest::newRow("no image element")
        << QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\"><rect width=\"4\"/></svg>")
        << false;
    QTest::newRow("external file") << SvgWithHref("P0000001.JPG") << false;
    QTest::newRow("broken base64") << SvgWithHref("data:image/jpeg;base64,@@@@" + base64) << false;
    QTest::newRow("not base64") << SvgWithHref("data:image/jpeg," + base64) << false;
    QTest::newRow("JPEG cut to a stub") << SvgWithHref(JpegDataUri(jpeg.left(2))) << false;
    QTest::newRow("not XML") << QByteArray("\x89PNG garbage <image") << false;
}

void LumExifTest::mainImageFromSvg() {
    QFETCH(QByteArray, svg);
    QFETCH(bool, written);

    const QString svgPath = Path(QStringLiteral("P0000001.SVG"));
    const QString out = Path(QStringLiteral("P0000001_Exif.JPEG"));
    QVERIFY(WriteBytes(svgPath, svg));
    QCOMPARE(LumImage::GetMainImageFromSvg(svgPath, out), written);
    QCOMPARE(QFile::exists(out), written);
    if (written) {
        QCOMPARE(Comment(out, LumCmntMake), QStringLiteral("SVGCAM"));
    }
    QVERIFY(!LumImage::GetMainImageFromSvg(Path(QStringLiteral("missing.SVG")), out + "2"));
}

QTEST_MAIN(LumExifTest)
#include "LumExifTest.moc"
