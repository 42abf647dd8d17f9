#include "document/ToviPhoto.h"
#include "imagefacts/ToviExifInfo.h"
#include "platform/LumImage.h"
#include "platform/ToviProfile.h"
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

const QString kUnknown = QStringLiteral("(不明)");

ExifFacts Make(const char* make) {
    return Facts([&](ExifFacts& f) { f.make = QString::fromLatin1(make); });
}

ExifFacts NoExif() {
    return Facts([](ExifFacts& f) { f.writeExif = false; });
}

QString ExifValue(const ToviPhoto& photo, const QString& title) {
    QString value = QStringLiteral("<untouched>");
    photo.GetExifInfoFromTitle(title, value);
    return value;
}

QString FileValue(const ToviPhoto& photo, const QString& title) {
    QString value = QStringLiteral("<untouched>");
    photo.GetFileInfoFromTitle(title, value);
    return value;
}

}  // namespace

// The Exif facts of a photograph, checked against Exif blocks the test writer builds byte by
// byte: the text of each field as the reader lays it out and its absurd shapes, the six groups
// and the SVG photograph read through its main image work file, and what a photograph
// answers about its file.
class ExifTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        dir = std::make_unique<QTemporaryDir>();
        QVERIFY(dir->isValid());
        ToviProfile::Instance().UseFile(Path(QStringLiteral("p.ini")));
        UseWorkFolder(dir->path());
        // Should the work folder fall back to the documents folder, that is the test's too.
        qputenv("HOME", QFile::encodeName(dir->path()));
        // Unreadable metadata is an ordinary outcome: nothing may be printed for it.
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
    }
    void cleanup() { ToviEnvironment::SetSettingsPathsForTesting(QString(), QString()); }

    void fieldText_data() {
        QTest::addColumn<ExifFacts>("facts");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("expected");

        const auto southWest = [](ExifFacts& f) {
            f.hasGps = true;
            f.latitude = -33.8688;
            f.longitude = -70.5;
            f.altitude = -5.0;
        };

        QTest::newRow("no software") << ExifFacts() << int(LumCmntSoftware) << kAbsent;
        QTest::newRow("version 2.21") << Facts([](ExifFacts& f) { f.exifVersion = "0221"; })
                                      << int(LumCmntExifVersion) << "2.21";
        QTest::newRow("exposure 2 s") << Facts([](ExifFacts& f) { f.exposureTime = 2.0; })
                                      << int(LumCmntExposureTime) << "2 秒";
        QTest::newRow("bias minus") << Facts([](ExifFacts& f) { f.exposureBias = -1.0; })
                                    << int(LumCmntExposureBiasValue) << "-1.0 EV";
        QTest::newRow("metering centre") << Facts([](ExifFacts& f) { f.meteringMode = 2; })
                                         << int(LumCmntMeteringMode) << "Center weighted average";
        QTest::newRow("flash fired")
            << Facts([](ExifFacts& f) { f.flash = 1; }) << int(LumCmntFlash) << "Fired";
        QTest::newRow("latitude south")
            << Facts(southWest) << int(LumCmntGPSLatitude) << "S 33°52'07.68\"";
        QTest::newRow("below sea level") << Facts(southWest) << int(LumCmntGPSAltitude) << "-5.0 m";
        QTest::newRow("code out of range") << ExifFacts() << 99 << kAbsent;
    }

    void fieldText() {
        QFETCH(ExifFacts, facts);
        QFETCH(int, code);
        QFETCH(QString, expected);

        const QString path = Path(QStringLiteral("P0000001.JPG"));
        QVERIFY(WriteExifJpeg(path, Picture({640, 480}), facts));
        QCOMPARE(Comment(path, code), expected);
    }

    void absurdValues_data() {
        QTest::addColumn<int>("tag");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("value");  // empty: the count is made huge instead
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("expected");

        constexpr int kAscii = 2;
        constexpr int kRational = 5;
        constexpr int kUndefined = 7;
        constexpr int kLong = 4;
        const QByteArray huge;
        QTest::newRow("exposure over zero") << 0x829A << kRational << 1 << Rationals({{1, 0}})
                                            << int(LumCmntExposureTime) << kAbsent;
        QTest::newRow("month 13") << 0x9003 << kAscii << 20 << QByteArray("2024:13:01 10:00:00", 20)
                                  << int(LumCmntDateTimeOriginal) << kAbsent;
        QTest::newRow("version in words") << 0x9000 << kUndefined << 4 << QByteArray("v2.x", 4)
                                          << int(LumCmntExifVersion) << "v2.x";
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

    void absurdValues() {
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
        QVERIFY(Patch(jpeg, t, y, c, value));
        const QString path = Path(QStringLiteral("P0000001.JPG"));
        QVERIFY(WriteBytes(path, jpeg));

        QCOMPARE(Comment(path, code), expected);
        // Every other field is still asked without harm.
        for (int other = 0; other < LumCmntCount; ++other) {
            QString text;
            LumImage::GetComment(path, other, text);
        }
    }

    void unreadableFiles_data() {
        QTest::addColumn<QByteArray>("bytes");  // written as the file; "<none>" writes nothing
        QTest::addColumn<bool>("hasVersion");
        QTest::addColumn<QSize>("size");  // invalid: no size

        const QByteArray jpeg = MakeExifJpeg(Picture({320, 240}), ExifFacts());
        const qsizetype app1End = jpeg.indexOf(QByteArray("\xFF\xDB", 2));  // tables after APP1
        QVERIFY(app1End > 0);
        QTest::newRow("plain JPEG")
            << MakeExifJpeg(Picture({320, 240}), NoExif()) << false << QSize(320, 240);
        QTest::newRow("cut in the picture")
            << jpeg.left(jpeg.size() - 300) << true << QSize(320, 240);
        QTest::newRow("cut in the Exif block") << jpeg.left(app1End / 2) << false << QSize();
        QTest::newRow("empty file") << QByteArray() << false << QSize();
        QTest::newRow("missing file") << QByteArray("<none>") << false << QSize();
    }

    void unreadableFiles() {
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
                QVERIFY2(!LumImage::GetComment(path, code, text),
                         qPrintable(QString::number(code)));
            }
            // Loaded all the same, with every row there so that positions still line up.
            ToviExifInfo info;
            info.Load(path);
            QVERIFY(info.IsLoaded());
            const QList<std::pair<const ToviTextPairArray*, qsizetype>> groups{
                {&info.GetDate(), 3},   {&info.GetImage(), 2}, {&info.GetMaker(), 5},
                {&info.GetFormat(), 1}, {&info.GetShoot(), 9}, {&info.GetGPS(), 3}};
            for (const auto& [group, rows] : groups) {
                QCOMPARE(group->size(), rows);
                for (const ToviTextPair& pair : *group) {
                    QCOMPARE(pair.GetValue(), kUnknown);
                }
            }
        }
        int width = 0;
        int height = 0;
        QCOMPARE(LumImage::GetCommentImageSize(path, width, height), size.isValid());
        if (size.isValid()) {
            QCOMPARE(QSize(width, height), size);
        }
    }

    void rereadsAChangedFile() {
        // One file after another, and one file rewritten in place with a value of the same
        // length: each answer is that of the file as it is now.
        const QString first = Path(QStringLiteral("A.JPG"));
        const QString second = Path(QStringLiteral("B.JPG"));
        QVERIFY(WriteExifJpeg(first, Picture({64, 48}), Make("AAAA")));
        QVERIFY(WriteExifJpeg(second, Picture({64, 48}), Make("BBBB")));
        QCOMPARE(Comment(first, LumCmntMake), QStringLiteral("AAAA"));
        QCOMPARE(Comment(second, LumCmntMake), QStringLiteral("BBBB"));
        QCOMPARE(Comment(first, LumCmntMake), QStringLiteral("AAAA"));

        QVERIFY(WriteExifJpeg(first, Picture({64, 48}), Make("CCCC")));
        QCOMPARE(Comment(first, LumCmntMake), QStringLiteral("CCCC"));
        QVERIFY(QFile::remove(first));
        QCOMPARE(Comment(first, LumCmntMake), kAbsent);
    }

    void mainImageFromSvg_data() {
        QTest::addColumn<QByteArray>("svg");
        QTest::addColumn<bool>("written");

        const ExifFacts facts = Make("SVGCAM");
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
        QTest::newRow("wrapped base64") << SvgWithHref("data:image/jpeg;base64," + wrapped) << true;
        QTest::newRow("PNG only") << SvgWithHref(pngUri) << false;
        QTest::newRow("external file") << SvgWithHref("P0000001.JPG") << false;
        QTest::newRow("broken base64")
            << SvgWithHref("data:image/jpeg;base64,@@@@" + base64) << false;
        QTest::newRow("JPEG cut to a stub") << SvgWithHref(JpegDataUri(jpeg.left(2))) << false;
    }

    void mainImageFromSvg() {
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

    void copyAndClearKeepTheImageGroup() {
        const QString big = Path(QStringLiteral("BIG.JPG"));
        const QString small = Path(QStringLiteral("SMALL.JPG"));
        QVERIFY(WriteExifJpeg(big, Picture({640, 480}), Make("BIG")));
        QVERIFY(WriteExifJpeg(small, Picture({64, 48}), Make("SML")));
        ToviExifInfo source;
        source.Load(big);

        // A new object copied from a loaded one: loaded, every group but the image group.
        const ToviExifInfo copy(source);
        QVERIFY(copy.IsLoaded());
        QCOMPARE(copy.GetPath(), big);
        QCOMPARE(copy.GetMaker()[0].GetValue(), QStringLiteral("BIG"));
        QCOMPARE(copy.GetDate().size(), 3);
        QCOMPARE(copy.GetShoot().size(), 9);
        QVERIFY(copy.GetImage().isEmpty());

        // Assignment leaves the target's own image group.
        ToviExifInfo target;
        target.Load(small);
        target = source;
        QCOMPARE(target.GetMaker()[0].GetValue(), QStringLiteral("BIG"));
        QCOMPARE(target.GetImage()[0].GetValue(), QStringLiteral("64 x 48"));

        source.Clear();
        QVERIFY(!source.IsLoaded());
        QVERIFY(source.GetPath().isEmpty());
        QVERIFY(source.GetDate().isEmpty() && source.GetMaker().isEmpty() &&
                source.GetFormat().isEmpty() && source.GetShoot().isEmpty() &&
                source.GetGPS().isEmpty());
        QCOMPARE(source.GetImage()[0].GetValue(), QStringLiteral("640 x 480"));
    }

    void svgReadThroughWorkFile() {
        const QString svg = Path(QStringLiteral("P0000007.SVG"));
        QVERIFY(WriteBytes(svg, SvgWithJpeg(Make("SVGCAM"))));

        ToviExifInfo info;
        // Load alone never writes the work file: without it every value is unknown.
        info.Load(svg);
        QVERIFY(info.IsLoaded());
        QCOMPARE(info.GetPath(), WorkFileOf(QStringLiteral("P0000007")));
        QCOMPARE(info.GetMaker()[0].GetValue(), kUnknown);

        info.MakeMainImageFromSvg(svg);
        QCOMPARE(info.GetMainImagePath(), WorkFileOf(QStringLiteral("P0000007")));
        QVERIFY(QFile::exists(info.GetMainImagePath()));
        info.Load(svg);
        QCOMPARE(info.GetPath(), info.GetMainImagePath());
        QCOMPARE(info.GetMaker()[0].GetValue(), QStringLiteral("SVGCAM"));
        QCOMPARE(info.GetImage()[0].GetValue(), QStringLiteral("64 x 48"));

        // Photographs of one file title share the work file. One without a main image reads
        // as unknown, not as the other one's camera.
        QVERIFY(QDir().mkpath(Path(QStringLiteral("b"))));
        const QString second = Path(QStringLiteral("b/P0000007.SVG"));
        QVERIFY(WriteBytes(second, SvgWithHref("data:image/jpeg;base64,####")));
        ToviExifInfo two;
        two.MakeMainImageFromSvg(second);
        QCOMPARE(two.GetMainImagePath(), info.GetMainImagePath());
        QVERIFY(!QFile::exists(two.GetMainImagePath()));
        two.Load(second);
        QCOMPARE(two.GetMaker()[0].GetValue(), kUnknown);

        // The extension is compared case included: a lower-case .svg is read as it stands.
        const QString lower = Path(QStringLiteral("P0000002.svg"));
        QVERIFY(WriteBytes(lower, SvgWithJpeg(ExifFacts())));
        ToviExifInfo asItStands;
        asItStands.MakeMainImageFromSvg(lower);
        QVERIFY(asItStands.GetMainImagePath().isEmpty());
        asItStands.Load(lower);
        QCOMPARE(asItStands.GetPath(), lower);
    }

    void checkExif_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("hasExif");

        const QByteArray exif = MakeExifJpeg(Picture({64, 48}), ExifFacts());
        const QByteArray plain = MakeExifJpeg(Picture({64, 48}), NoExif());
        QTest::newRow("JPEG with Exif") << "P1.JPG" << exif << true;
        QTest::newRow("JPEG without Exif") << "P1.JPG" << plain << false;
        QTest::newRow("missing file") << "P1.JPG" << QByteArray("<none>") << false;
        QTest::newRow("SVG with a main image") << "P1.SVG" << SvgWithJpeg(ExifFacts()) << true;
        QTest::newRow("lower-case .svg") << "P1.svg" << SvgWithJpeg(ExifFacts()) << false;
    }

    // Asked once: a later change of the file is not noticed; a copy carries the answer.
    void checkExifIsAskedOnce() {
        const QString path = Path(QStringLiteral("P1.JPG"));
        QVERIFY(WriteExifJpeg(path, Picture({64, 48}), NoExif()));
        ToviPhoto photo(path);
        QVERIFY(!photo.CheckExif());
        QVERIFY(WriteExifJpeg(path, Picture({64, 48}), ExifFacts()));
        QVERIFY(!photo.CheckExif());
        QVERIFY(!ToviPhoto(photo).CheckExif());
        QVERIFY(ToviPhoto(path).CheckExif());
    }

    void checkExif() {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(bool, hasExif);

        const QString path = Path(name);
        if (bytes != "<none>") {
            QVERIFY(WriteBytes(path, bytes));
        }
        ToviPhoto photo(path);
        QCOMPARE(photo.CheckExif(), hasExif);
        // The Exif values agree with the answer: a photograph with Exif has its version.
        photo.LoadExif();
        QCOMPARE(photo.GetExif().IsLoaded(), true);
        QCOMPARE(ExifValue(photo, QStringLiteral("Exifバージョン")).isEmpty(), !hasExif);
    }

    // What a photograph answers about its file: the size in whole KB, the pixel count in 万
    // rounded half up, read-only but not when hidden, nothing for an unknown title.
    void fileFacts_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("readOnly");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("shown");

        const auto jpeg = [](QSize size) { return MakeExifJpeg(Picture(size), NoExif()); };
        const QByteArray bytes(5, 'x');
        QTest::newRow("width x height") << "P1.JPG" << jpeg({9999, 1}) << false << "幅×高さ"
                                        << "9999×1";
        QTest::newRow("15,000 rounds up") << "P1.JPG" << jpeg({15000, 1}) << false << "総画素数"
                                          << "2万画素";
        QTest::newRow("14,999 rounds down") << "P1.JPG" << jpeg({14999, 1}) << false << "総画素数"
                                            << "1万画素";
        QTest::newRow("9,999 as it is") << "P1.JPG" << jpeg({9999, 1}) << false << "総画素数"
                                        << "9999画素";
        QTest::newRow("1,023 bytes")
            << "P1.JPG" << QByteArray(1023, 'x') << false << "ファイルサイズ"
            << "0 KB";
        QTest::newRow("just under 1 MB")
            << "P1.JPG" << QByteArray(1048575, 'x') << false << "ファイルサイズ"
            << "1023 KB";
        QTest::newRow("read-only") << "P1.JPG" << bytes << true << "読み取り専用"
                                   << "Yes";
        QTest::newRow("read-only and hidden") << ".P1.JPG" << bytes << true << "読み取り専用"
                                              << "No";
        QTest::newRow("unknown title") << "P1.JPG" << bytes << false << "種類"
                                       << "";
    }
    void fileFacts() {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(bool, readOnly);
        QFETCH(QString, title);

        const QString path = Path(name);
        QVERIFY(WriteBytes(path, bytes));
        QVERIFY(QFile::setPermissions(
            path, QFileDevice::ReadOwner |
                      (readOnly ? QFileDevice::Permissions() : QFileDevice::WriteOwner)));
        QTEST(FileValue(ToviPhoto(path), title), "shown");
        if (readOnly) {
            QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner));
        }
    }

    void missingFileHasNoFacts() {
        const QStringList titles{"ファイルサイズ", "幅×高さ",      "総画素数",
                                 "作成日時",       "最終更新日時", "読み取り専用"};
        // A missing file, a folder, and a photograph whose path was never built.
        QVERIFY(QDir().mkpath(Path(QStringLiteral("PIC"))));
        for (const ToviPhoto& photo : {ToviPhoto(Path(QStringLiteral("gone.JPG"))),
                                       ToviPhoto(Path(QStringLiteral("PIC"))), ToviPhoto()}) {
            for (const QString& title : titles) {
                QCOMPARE(FileValue(photo, title), QString());
            }
            QCOMPARE(ExifValue(photo, QStringLiteral("撮影日時")), QString());
        }
    }

private:
    QString Path(const QString& name) const { return dir->filePath(name); }

    std::unique_ptr<QTemporaryDir> dir;
};

QTEST_MAIN(ExifTest)
#include "ExifTest.moc"
