#include "document/ToviPhoto.h"
#include "platform/ToviProfile.h"
#include "tests/imagefacts/ExifFixture.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <memory>

using namespace exiffixture;

namespace {

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

// What a photograph answers about its file: whether it has Exif, the Exif values and the file
// facts by their display titles.
class ToviPhotoExifTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void checkExif_data();
    void checkExif();
    void checkExifIsAskedOnce();
    void exifByTitle_data();
    void exifByTitle();
    void exifByTitleNeedsLoadAndFile();
    void pixelCount_data();
    void pixelCount();
    void fileSize_data();
    void fileSize();
    void fileDates();
    void readOnly_data();
    void readOnly();
    void missingFileHasNoFacts();

private:
    QString Path(const QString& name) const { return dir->filePath(name); }

    std::unique_ptr<QTemporaryDir> dir;
};

void ToviPhotoExifTest::init() {
    dir = std::make_unique<QTemporaryDir>();
    QVERIFY(dir->isValid());
    ToviProfile::Instance().UseFile(Path(QStringLiteral("p.ini")));
    UseWorkFolder(dir->path());
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
}

void ToviPhotoExifTest::cleanup() {
    ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
}

void ToviPhotoExifTest::checkExif_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("hasExif");

    const QByteArray exif = MakeExifJpeg(Picture({64, 48}), ExifFacts());
    const QByteArray plain =
        MakeExifJpeg(Picture({64, 48}), Facts([](ExifFacts& f) { f.writeExif = false; }));
    QTest::newRow("JPEG with Exif") << "P1.JPG" << exif << true;
    QTest::newRow("JPEG without Exif") << "P1.JPG" << plain << false;
    QTest::newRow("Exif without a version")
        << "P1.JPG" << MakeExifJpeg(Picture({64, 48}), Facts([](ExifFacts& f) {
                                        f.exifVersion = QByteArray("\x01\x02\x03\x04", 4);
                                    }))
        << false;
    QTest::newRow("missing file") << "P1.JPG" << QByteArray("<none>") << false;
    QTest::newRow("SVG with a main image") << "P1.SVG" << SvgWithJpeg(ExifFacts()) << true;
    QTest::newRow("SVG with a plain main image")
        << "P1.SVG" << SvgWithHref(JpegDataUri(plain)) << false;
    QTest::newRow("lower-case .svg") << "P1.svg" << SvgWithJpeg(ExifFacts()) << false;
}

void ToviPhotoExifTest::checkExif() {
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

void ToviPhotoExifTest::checkExifIsAskedOnce() {
    const QString path = Path(QStringLiteral("P1.JPG"));
    QVERIFY(
        WriteExifJpeg(path, Picture({64, 48}), Facts([](ExifFacts& f) { f.writeExif = false; })));
    ToviPhoto photo(path);
    QVERIFY(!photo.CheckExif());
    QVERIFY(WriteExifJpeg(path, Picture({64, 48}), ExifFacts()));
    QVERIFY(!photo.CheckExif());
    // A copy carries the answer.
    const ToviPhoto copy(photo);
    QVERIFY(!const_cast<ToviPhoto&>(copy).CheckExif());
    ToviPhoto fresh(path);
    QVERIFY(fresh.CheckExif());
}

void ToviPhotoExifTest::exifByTitle_data() {
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("value");

    // Titles reading the same value as another (the dates, shutter speed and F number) are
    // left out; the settings' spellings 作者名 and レンズ最小F値 find nothing, as intended.
    const QList<std::pair<const char*, const char*>> rows{
        {"撮影日時", "2022/08/09 10:11:12"},
        {"幅×高さ(Exif)", "320 x 240"},
        {"総画素数(Exif)", "76800"},
        {"画像入力機器のメーカー名", "ORVANE"},
        {"画像入力機器のモデル名", "FIELD-CAM G7"},
        {"作成者", "鈴木 一郎"},
        {"作者名", ""},
        {"撮影著作権者/編集著作権者", "Orvane"},
        {"Exifバージョン", "2.30"},
        {"露出時間", "1/125 秒"},
        {"絞り値", "F4"},
        {"露光補正値", "-0.7 EV"},
        {"レンズ最少F値", "F2.8"},
        {"レンズ最小F値", ""},
        {"測光方式", "Multi-segment"},
        {"フラッシュ", "Fired"},
        {"レンズの焦点距離", "6.1 mm"},
        {"緯度", "N 35°39'29.16\""},
        {"経度", "E 139°44'28.86\""},
        {"高度", "12.3 m"},
        {"使用ソフトウェア名", ""},  // unknown reads empty
        {"ファイルサイズ", ""},      // a file title
        {"撮影者", ""},
    };
    for (const auto& [title, value] : rows) {
        QTest::newRow(title) << QString::fromUtf8(title) << QString::fromUtf8(value);
    }
}

void ToviPhotoExifTest::exifByTitle() {
    QFETCH(QString, title);
    QFETCH(QString, value);

    ExifFacts facts;
    facts.dateTimeOriginal = QDateTime(QDate(2022, 8, 9), QTime(10, 11, 12));
    facts.artist = QStringLiteral("鈴木 一郎");
    facts.copyright = QStringLiteral("Orvane");
    facts.exposureTime = 1.0 / 125.0;
    facts.fNumber = 4.0;
    facts.exposureBias = -0.7;
    facts.flash = 1;
    facts.focalLength = 6.1;
    facts.hasGps = true;
    facts.latitude = 35.6581;
    facts.longitude = 139.74135;
    facts.altitude = 12.3;
    const QString path = Path(QStringLiteral("P0000001.JPG"));
    QVERIFY(WriteExifJpeg(path, Picture({320, 240}), facts));
    ToviPhoto photo(path);
    photo.LoadExif();
    QCOMPARE(ExifValue(photo, title), value);
}

void ToviPhotoExifTest::exifByTitleNeedsLoadAndFile() {
    const QString path = Path(QStringLiteral("P0000001.JPG"));
    QVERIFY(WriteExifJpeg(path, Picture({64, 48}), ExifFacts()));
    ToviPhoto photo(path);
    const QString make = QStringLiteral("画像入力機器のメーカー名");
    // The look-up reads no file itself.
    QCOMPARE(ExifValue(photo, make), QString());
    QCOMPARE(photo.GetExif().GetMaker()[0].GetValue(), QStringLiteral("ORVANE"));
    QCOMPARE(ExifValue(photo, make), QStringLiteral("ORVANE"));
    // Kept values are not answered once the file is gone (noticed within a quarter second,
    // so that a look-up per list cell stays cheap).
    QVERIFY(QFile::remove(path));
    QThread::msleep(300);
    QCOMPARE(ExifValue(photo, make), QString());
    QVERIFY(photo.GetExif().IsLoaded());
}

void ToviPhotoExifTest::pixelCount_data() {
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("dimensions");
    QTest::addColumn<QString>("pixels");

    QTest::newRow("15,000 rounds up") << QSize(15000, 1) << "15000×1"
                                      << "2万画素";
    QTest::newRow("14,999 rounds down") << QSize(14999, 1) << "14999×1"
                                        << "1万画素";
    QTest::newRow("10,000") << QSize(10000, 1) << "10000×1"
                            << "1万画素";
    QTest::newRow("9,999 as it is") << QSize(9999, 1) << "9999×1"
                                    << "9999画素";
    QTest::newRow("width first") << QSize(48, 640) << "48×640"
                                 << "3万画素";
}

void ToviPhotoExifTest::pixelCount() {
    QFETCH(QSize, size);
    QFETCH(QString, dimensions);
    QFETCH(QString, pixels);

    const QString path = Path(QStringLiteral("P0000001.JPG"));
    QVERIFY(WriteExifJpeg(path, Picture(size), Facts([](ExifFacts& f) { f.writeExif = false; })));
    const ToviPhoto photo(path);
    QCOMPARE(FileValue(photo, QStringLiteral("幅×高さ")), dimensions);
    QCOMPARE(FileValue(photo, QStringLiteral("総画素数")), pixels);
}

void ToviPhotoExifTest::fileSize_data() {
    QTest::addColumn<qsizetype>("bytes");
    QTest::addColumn<QString>("shown");

    QTest::newRow("1,023 bytes") << qsizetype(1023) << "0 KB";
    QTest::newRow("1,024 bytes") << qsizetype(1024) << "1 KB";
    QTest::newRow("just under 1 MB") << qsizetype(1048575) << "1023 KB";
}

void ToviPhotoExifTest::fileSize() {
    QFETCH(qsizetype, bytes);
    QFETCH(QString, shown);

    const QString path = Path(QStringLiteral("P0000001.JPG"));
    QVERIFY(WriteBytes(path, QByteArray(bytes, 'x')));
    const ToviPhoto photo(path);
    QCOMPARE(FileValue(photo, QStringLiteral("ファイルサイズ")), shown);
    // Not a picture: no dimensions.
    QCOMPARE(FileValue(photo, QStringLiteral("幅×高さ")), QString());
    QCOMPARE(FileValue(photo, QStringLiteral("総画素数")), QString());
}

void ToviPhotoExifTest::fileDates() {
    const QString path = Path(QStringLiteral("P0000001.JPG"));
    QVERIFY(WriteBytes(path, QByteArray(10, 'x')));
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime(QDate(2021, 3, 4), QTime(5, 6, 7)),
                                 QFileDevice::FileModificationTime));
    }
    ToviPhoto photo(path);
    QCOMPARE(FileValue(photo, QStringLiteral("最終更新日時")),
             QStringLiteral("2021/03/04 05:06:07"));
    QCOMPARE(photo.GetFileRenewalDate(), QStringLiteral("2021-03-04"));
    static const QRegularExpression kStamp(
        QStringLiteral("^\\d{4}/\\d{2}/\\d{2} \\d{2}:\\d{2}:\\d{2}$"));
    const QString created = FileValue(photo, QStringLiteral("作成日時"));
    QVERIFY2(kStamp.match(created).hasMatch(), qPrintable(created));
    QVERIFY(created != QStringLiteral("2021/03/04 05:06:07"));  // made now, changed in 2021
}

void ToviPhotoExifTest::readOnly_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("writable");
    QTest::addColumn<QString>("shown");

    QTest::newRow("writable") << "P1.JPG" << true << "No";
    QTest::newRow("read-only") << "P1.JPG" << false << "Yes";
    QTest::newRow("read-only and hidden") << ".P1.JPG" << false << "No";
}

void ToviPhotoExifTest::readOnly() {
    QFETCH(QString, name);
    QFETCH(bool, writable);
    QFETCH(QString, shown);

    const QString path = Path(name);
    QVERIFY(WriteBytes(path, QByteArray(5, 'x')));
    QFileDevice::Permissions permissions = QFileDevice::ReadOwner | QFileDevice::ReadGroup;
    if (writable) {
        permissions |= QFileDevice::WriteOwner;
    }
    QVERIFY(QFile::setPermissions(path, permissions));
    const ToviPhoto photo(path);
    QCOMPARE(FileValue(photo, QStringLiteral("読み取り専用")), shown);
    QVERIFY(QFile::setPermissions(path, permissions | QFileDevice::WriteOwner));
}

void ToviPhotoExifTest::missingFileHasNoFacts() {
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
    // A known file and an unknown title.
    const QString path = Path(QStringLiteral("P1.JPG"));
    QVERIFY(WriteBytes(path, QByteArray(5, 'x')));
    QCOMPARE(FileValue(ToviPhoto(path), QStringLiteral("種類")), QString());
}

QTEST_MAIN(ToviPhotoExifTest)
#include "ToviPhotoExifTest.moc"
