#include "tests/imagefacts/ExifFixture.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include "tests/support/ProgramRun.h"

#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QtTest>

using namespace exiffixture;

// tovi exif as a script runs it: the JSON shape, the order of the groups, the exit codes.
class ExifCommandTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void jsonNamesGroupsAndFileFacts();
    void exitCodes_data();
    void exitCodes();

private:
    using Run = ProgramRun;
    Run Tovi(const QStringList& args) const;

    QTemporaryDir dir;
    QString tovi;
};

void ExifCommandTest::initTestCase() {
    QVERIFY(dir.isValid());
    tovi = QCoreApplication::applicationDirPath() + QStringLiteral("/tovi");
    QVERIFY(QFileInfo::exists(tovi));
}

ExifCommandTest::Run ExifCommandTest::Tovi(const QStringList& args) const {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    // The SVG work file goes below the test's folder, never the user's.
    QDir().mkpath(dir.filePath(QStringLiteral("config/Orvane Systems")));
    {
        QSettings settings(dir.filePath(QStringLiteral("config/Orvane Systems/QVHomeKey.ini")),
                           QSettings::IniFormat);
        settings.setValue(QStringLiteral("QVScratch"), dir.path());
    }
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("config")));
    return RunProgram(tovi, QStringList{QStringLiteral("--profile"), dir.filePath("p.ini")} + args,
                      env);
}

void ExifCommandTest::jsonNamesGroupsAndFileFacts() {
    ExifFacts facts;
    facts.hasGps = true;
    facts.latitude = 35.5;
    facts.longitude = 139.25;
    const QString path = dir.filePath(QStringLiteral("P0000001.JPG"));
    QVERIFY(WriteExifJpeg(path, Picture({320, 240}), facts));

    const Run run = Tovi({QStringLiteral("exif"), path, QStringLiteral("--json")});
    QCOMPARE(run.exitCode, 0);
    QJsonParseError error;
    const QJsonObject json = QJsonDocument::fromJson(run.out, &error).object();
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(json[QStringLiteral("hasExif")].toBool(), true);

    // The groups in their reading order, each as [title, value] rows.
    const QStringList keys{"date", "image", "maker", "format", "shoot", "gps"};
    qsizetype last = -1;
    for (const QString& key : keys) {
        const qsizetype at = run.out.indexOf("\"" + key.toUtf8() + "\":");
        QVERIFY2(at > last, qPrintable(key));
        last = at;
    }
    const QJsonObject groups = json[QStringLiteral("groups")].toObject();
    QCOMPARE(groups.keys().size(), keys.size());
    const QJsonArray gps = groups[QStringLiteral("gps")].toArray();
    QCOMPARE(gps.size(), 3);
    QCOMPARE(gps[0].toArray()[0].toString(), QStringLiteral("緯度"));
    QCOMPARE(gps[0].toArray()[1].toString(), QStringLiteral("N 35°30'00.00\""));
    QCOMPARE(groups[QStringLiteral("shoot")].toArray().size(), 9);

    const QJsonObject file = json[QStringLiteral("file")].toObject();
    QCOMPARE(file[QStringLiteral("幅×高さ")].toString(), QStringLiteral("320×240"));
    QCOMPARE(file[QStringLiteral("総画素数")].toString(), QStringLiteral("8万画素"));
    QCOMPARE(file[QStringLiteral("ファイルサイズ")].toString(),
             QStringLiteral("%1 KB").arg(QFileInfo(path).size() / 1024));
    QCOMPARE(file.keys().size(), 6);
}

void ExifCommandTest::exitCodes_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<bool>("hasExif");

    QTest::newRow("not a picture") << QStringList{"exif", "%1/notes.txt", "--json"} << 0 << false;
    QTest::newRow("SVG photograph")
        << QStringList{"exif", "%1/P0000002.SVG", "--json"} << 0 << true;
    QTest::newRow("missing file") << QStringList{"exif", "%1/none.JPG"} << 1 << false;
    QTest::newRow("a folder") << QStringList{"exif", "%1"} << 1 << false;
    QTest::newRow("no file") << QStringList{"exif"} << 2 << false;
    QTest::newRow("two files") << QStringList{"exif", "%1/notes.txt", "%1/notes.txt"} << 2 << false;
    QTest::newRow("unknown option") << QStringList{"exif", "%1/notes.txt", "--xml"} << 2 << false;
}

void ExifCommandTest::exitCodes() {
    QFETCH(QStringList, args);
    QFETCH(int, exitCode);
    QFETCH(bool, hasExif);

    QVERIFY(WriteBytes(dir.filePath(QStringLiteral("notes.txt")), "no picture here\n"));
    QVERIFY(WriteBytes(dir.filePath(QStringLiteral("P0000002.SVG")), SvgWithJpeg(ExifFacts())));
    for (QString& arg : args) {
        arg = arg.arg(dir.path());
    }
    const Run run = Tovi(args);
    QCOMPARE(run.exitCode, exitCode);
    if (exitCode == 0) {
        const QJsonObject json = QJsonDocument::fromJson(run.out).object();
        QCOMPARE(json[QStringLiteral("hasExif")].toBool(), hasExif);
        QVERIFY(run.err.isEmpty());
    } else {
        // One line saying what was wrong, and nothing on standard output.
        QCOMPARE(run.err.count('\n'), 1);
        QVERIFY(run.out.isEmpty());
    }
}

QTEST_GUILESS_MAIN(ExifCommandTest)
#include "ExifCommandTest.moc"
