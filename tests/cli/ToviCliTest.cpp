#include "platform/Cp932.h"
#include "platform/ToviVerifierLibrary.h"
#include "tests/imagefacts/ExifFixture.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ProgramRun.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <numeric>

using namespace exiffixture;

namespace {

using Run = ProgramRun;

void WriteFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// The results of tovi check --json, in photo-index order; empty when the indexes are not.
QList<int> Results(const QJsonObject& json) {
    QList<int> results;
    const QJsonArray rows = json[QStringLiteral("results")].toArray();
    for (int i = 0; i < rows.size(); ++i) {
        const QJsonObject row = rows[i].toObject();
        if (row[QStringLiteral("index")].toInt() != i) {
            return {};
        }
        results.append(row[QStringLiteral("result")].toInt());
    }
    return results;
}

}  // namespace

// The tovi command as a user or a script runs it: exit codes, the one line on failure, the
// JSON shape; the tamper check through stand-in verifiers copied beside a copy of tovi.
class ToviCliTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        bin = QCoreApplication::applicationDirPath();
        QVERIFY(QFileInfo::exists(bin + QStringLiteral("/tovi")));
        // The build keeps the stand-ins away from the executables.
        QVERIFY(ToviVerifierLibrary::Find(QStringLiteral("JACICCHS")).isEmpty());
        // The SVG work file goes below the test's folder, never the user's.
        QDir().mkpath(temp.filePath(QStringLiteral("config/Orvane Systems")));
        QSettings(temp.filePath(QStringLiteral("config/Orvane Systems/QVHomeKey.ini")),
                  QSettings::IniFormat)
            .setValue(QStringLiteral("QVScratch"), temp.path());

        DeliveryOptions options;
        options.photoCount = 12;
        options.images = DeliveryOptions::Images::None;
        options.drawingShare = 0.5;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(QStringLiteral("d")), options, &written, &error),
                 qPrintable(error));

        // Five photographs carrying the codes the stand-ins are to answer: a maker's camera
        // that the maker's verifier passes, one it calls outside target (the chain stops
        // there), and three others for the hash checker.
        options.photoCount = 5;
        options.images = DeliveryOptions::Images::Tiny;
        options.drawingShare = 0;
        QVERIFY2(WriteDelivery(temp.filePath(QStringLiteral("c")), options, &checked, &error),
                 qPrintable(error));
        const QList<std::pair<const char*, QByteArray>> plans{
            {"G800", "@RVJ=0@@JCOMSIA=0@"},  {"G700 SE", "@RVJ=2@@JCOMSIA=1@"},
            {"FIELD-CAM", "@JCOMSIA=1@"},    {"FIELD-CAM", "@JCOMSIA=-1@"},
            {"FIELD-CAM", "@JCOMSIA=-305@"},
        };
        QCOMPARE(checked.photos.size(), plans.size());
        for (int i = 0; i < plans.size(); ++i) {
            ExifFacts facts;
            facts.model = QString::fromUtf8(plans[i].first);
            QVERIFY(WriteBytes(
                checked.photoFolder + QStringLiteral("/PIC/") + checked.photos[i].fileName,
                MakeExifJpeg(Picture({64, 48}), facts) + plans[i].second));
        }
    }

    // Photographs are named by their photo index, as list and check name them.
    void infoTextNamesPhotoIndexes() {
        const Run run = Tovi({QStringLiteral("info"), written.photoFolder});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(QString::fromUtf8(run.out).contains(QStringLiteral("      0  ") +
                                                    written.photos.first().fileName));
    }

    void infoJsonDescribesTheDelivery() {
        const Run run =
            Tovi({QStringLiteral("info"), written.photoFolder, QStringLiteral("--json")});
        QCOMPARE(run.exitCode, 0);
        QJsonParseError parseError;
        const QJsonObject json = QJsonDocument::fromJson(run.out, &parseError).object();
        QCOMPARE(parseError.error, QJsonParseError::NoError);
        QCOMPARE(json[QStringLiteral("folder")].toString(), written.photoFolder);
        QCOMPARE(json[QStringLiteral("family")].toInt(), 0);
        QCOMPARE(json[QStringLiteral("errorType")].toInt(), 4);
        QCOMPARE(json[QStringLiteral("section")].toString(), QStringLiteral("国交省-20"));
        QCOMPARE(json[QStringLiteral("hasKeyPhoto")].toBool(), true);
        const QJsonArray definitions = json[QStringLiteral("definitions")].toArray();
        const QJsonArray photos = json[QStringLiteral("photos")].toArray();
        QCOMPARE(photos.size(), written.photos.size());
        for (int i = 0; i < photos.size(); ++i) {
            const QJsonObject photo = photos[i].toObject();
            QCOMPARE(photo[QStringLiteral("index")].toInt(), i);
            QVERIFY(photo[QStringLiteral("imagePath")].toString().endsWith(
                QStringLiteral("/PIC/") + written.photos[i].fileName));
            QCOMPARE(photo[QStringLiteral("picturePaths")].toArray().size(),
                     written.photos[i].drawings.size());
            // Each item names its definition by index and title, and the two agree.
            for (const QJsonValue& value : photo[QStringLiteral("items")].toArray()) {
                const QJsonObject item = value.toObject();
                const int def = item[QStringLiteral("def")].toInt();
                QVERIFY(def >= 0 && def < definitions.size());
                QCOMPARE(item[QStringLiteral("title")].toString(),
                         definitions[def].toObject()[QStringLiteral("title")].toString());
            }
        }
        QVERIFY(!json[QStringLiteral("managementItems")].toArray().isEmpty());
    }

    // Every way of not loading says so in one line and exits 1; usage errors exit 2.
    void failuresGiveOneLine_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("mentions");
        const QString missing = temp.filePath(QStringLiteral("missing"));
        const QString empty = temp.filePath(QStringLiteral("empty"));
        QDir().mkpath(empty);
        const QString broken = temp.filePath(QStringLiteral("broken"));
        WriteFile(broken + QStringLiteral("/PHOTO.XML"),
                  "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
                  "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">\n<photodata><基礎情報>");
        const QString unknown = temp.filePath(QStringLiteral("unknown"));
        WriteFile(
            unknown + QStringLiteral("/PHOTO.XML"),
            "<?xml version=\"1.0\"?>\n<!DOCTYPE photodata SYSTEM \"PHOTO77.DTD\">\n<photodata/>");
        const QString none = temp.filePath(QStringLiteral("none"));
        WriteFile(none + QStringLiteral("/PHOTO.XML"),
                  Cp932::FromUnicode(QStringLiteral(
                      "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
                      "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">\n<photodata><基礎情報>"
                      "<写真フォルダ名>PHOTO/PIC</写真フォルダ名><適用要領基準>x</適用要領基準>"
                      "</基礎情報></photodata>")));
        const QString info = QStringLiteral("info");
        QTest::newRow("missing folder") << QStringList{info, missing} << 1 << missing;
        QTest::newRow("no PHOTO.XML")
            << QStringList{info, empty} << 1 << QStringLiteral("PHOTO.XML");
        QTest::newRow("unknown DOCTYPE")
            << QStringList{info, unknown} << 1 << QStringLiteral("DOCTYPE");
        QTest::newRow("wrong family")
            << QStringList{info, written.photoFolder, QStringLiteral("--family"),
                           QStringLiteral("3")}
            << 1 << QStringLiteral("DOCTYPE");
        QTest::newRow("no photographs is loaded") << QStringList{info, none} << 0 << QString();
        QTest::newRow("no folder") << QStringList{info} << 2 << QStringLiteral("フォルダ");
        QTest::newRow("bad family") << QStringList{info, written.photoFolder,
                                                   QStringLiteral("--family"), QStringLiteral("9")}
                                    << 2 << QStringLiteral("--family");
        QTest::newRow("unknown command")
            << QStringList{QStringLiteral("frobnicate")} << 2 << QStringLiteral("frobnicate");
    }
    void failuresGiveOneLine() {
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        QFETCH(QString, mentions);
        const Run run = Tovi(args);
        QCOMPARE(run.exitCode, exitCode);
        if (exitCode != 0) {
            QCOMPARE(run.err.count(QLatin1Char('\n')), 1);
            QVERIFY2(run.err.contains(mentions), qPrintable(run.err));
            QVERIFY(run.out.isEmpty());
        }
    }

    // The tree's JSON holds every photograph exactly once (all of the writer's photographs
    // have a photo class), and a listing of a node is that node's subtree in tree order.
    void treeAndListAgree() {
        const Run tree =
            Tovi({QStringLiteral("tree"), written.photoFolder, QStringLiteral("--json")});
        QCOMPARE(tree.exitCode, 0);
        const QJsonObject root = QJsonDocument::fromJson(tree.out).object();
        QVERIFY(root[QStringLiteral("title")].toString().endsWith(QStringLiteral("PHOTO.XML")));
        const auto collect = [](const QJsonObject& node, auto& self, QList<int>& out) -> void {
            for (const QJsonValue& v : node[QStringLiteral("indexes")].toArray()) {
                out.append(v.toInt());
            }
            for (const QJsonValue& child : node[QStringLiteral("children")].toArray()) {
                self(child.toObject(), self, out);
            }
        };
        QList<int> all;
        collect(root, collect, all);
        QList<int> sorted = all;
        std::sort(sorted.begin(), sorted.end());
        QList<int> expected(written.photos.size());
        std::iota(expected.begin(), expected.end(), 0);
        QCOMPARE(sorted, expected);

        const QJsonObject first = root[QStringLiteral("children")].toArray().first().toObject();
        QList<int> under;
        collect(first, collect, under);
        const Run list =
            Tovi({QStringLiteral("list"), written.photoFolder, QStringLiteral("--node"),
                  QStringLiteral("0"), QStringLiteral("--json")});
        QCOMPARE(list.exitCode, 0);
        const QJsonObject listed = QJsonDocument::fromJson(list.out).object();
        QList<int> current;
        for (const QJsonValue& v : listed[QStringLiteral("current")].toArray()) {
            current.append(v.toInt());
        }
        QCOMPARE(current, under);
        QCOMPARE(listed[QStringLiteral("titles")].toArray().size(), current.size());
    }

    // Extraction and sorting from the command line, checked against what the writer wrote.
    void listExtractsAndSorts() {
        QString work;
        for (const auto& element : written.photos.first().elements) {
            if (element.first == QStringLiteral("工種")) {
                work = element.second;
            }
        }
        QVERIFY(!work.isEmpty());
        QList<int> expected;
        for (int i = 0; i < written.photos.size(); ++i) {
            for (const auto& element : written.photos[i].elements) {
                if (element.first == QStringLiteral("工種") && element.second == work) {
                    expected.append(i);
                }
            }
        }
        const Run run = Tovi({QStringLiteral("list"), written.photoFolder, QStringLiteral("--item"),
                              QStringLiteral("工種=") + work, QStringLiteral("--sort"),
                              QStringLiteral("シリアル番号"), QStringLiteral("--desc"),
                              QStringLiteral("--json")});
        QCOMPARE(run.exitCode, 0);
        QList<int> current;
        for (const QJsonValue& v :
             QJsonDocument::fromJson(run.out).object()[QStringLiteral("current")].toArray()) {
            current.append(v.toInt());
        }
        std::reverse(expected.begin(), expected.end());
        QCOMPARE(current, expected);

        const Run labelled =
            Tovi({QStringLiteral("list"), written.photoFolder, QStringLiteral("--label"),
                  QStringLiteral("1"), QStringLiteral("--json")});
        QCOMPARE(labelled.exitCode, 0);
        QVERIFY(QJsonDocument::fromJson(labelled.out)
                    .object()[QStringLiteral("current")]
                    .toArray()
                    .isEmpty());
    }

    void listUsageErrors_data() {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("mentions");
        QTest::newRow("bad date") << QStringList{QStringLiteral("--date"),
                                                 QStringLiteral("2023-01-01")}
                                  << QStringLiteral("--date");
        QTest::newRow("four items") << QStringList{QStringLiteral("--item"), QStringLiteral("a=1"),
                                                   QStringLiteral("--item"), QStringLiteral("b=1"),
                                                   QStringLiteral("--item"), QStringLiteral("c=1"),
                                                   QStringLiteral("--item"), QStringLiteral("d=1")}
                                    << QStringLiteral("--item");
        QTest::newRow("label out of range")
            << QStringList{QStringLiteral("--label"), QStringLiteral("6")}
            << QStringLiteral("--label");
        QTest::newRow("no such node")
            << QStringList{QStringLiteral("--node"), QStringLiteral("99/0")}
            << QStringLiteral("99/0");
    }
    void listUsageErrors() {
        QFETCH(QStringList, options);
        QFETCH(QString, mentions);
        const Run run = Tovi(QStringList{QStringLiteral("list"), written.photoFolder} + options);
        QCOMPARE(run.exitCode, 2);
        QCOMPARE(run.err.count(QLatin1Char('\n')), 1);
        QVERIFY2(run.err.contains(mentions), qPrintable(run.err));
    }

    void exifJson() {
        ExifFacts facts;
        facts.hasGps = true;
        facts.latitude = 35.5;
        facts.longitude = 139.25;
        const QString path = temp.filePath(QStringLiteral("P0000001.JPG"));
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

    void exifExitCodes_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<bool>("hasExif");

        QTest::newRow("not a picture")
            << QStringList{"exif", "%1/notes.txt", "--json"} << 0 << false;
        QTest::newRow("SVG photograph")
            << QStringList{"exif", "%1/P0000002.SVG", "--json"} << 0 << true;
        QTest::newRow("missing file") << QStringList{"exif", "%1/none.JPG"} << 1 << false;
        QTest::newRow("a folder") << QStringList{"exif", "%1"} << 1 << false;
        QTest::newRow("no file") << QStringList{"exif"} << 2 << false;
        QTest::newRow("two files")
            << QStringList{"exif", "%1/notes.txt", "%1/notes.txt"} << 2 << false;
        QTest::newRow("unknown option")
            << QStringList{"exif", "%1/notes.txt", "--xml"} << 2 << false;
    }

    void exifExitCodes() {
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        QFETCH(bool, hasExif);

        QVERIFY(WriteBytes(temp.filePath(QStringLiteral("notes.txt")), "no picture here\n"));
        QVERIFY(
            WriteBytes(temp.filePath(QStringLiteral("P0000002.SVG")), SvgWithJpeg(ExifFacts())));
        for (QString& arg : args) {
            arg = arg.arg(temp.path());
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

    void checkJson() {
        const QString program = ProgramFolder(QStringLiteral("withBoth"), {"RVRFYJPG", "JACICCHS"});
        const Run run = Tovi({"check", checked.photoFolder, "--types", "0,2,1", "--json"}, program);
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.err.isEmpty(), qPrintable(run.err));
        QJsonParseError error;
        const QJsonObject json = QJsonDocument::fromJson(run.out, &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);

        QCOMPARE(Results(json), QList<int>({1, 3, 1, 2, 3}));
        QCOMPARE(json[QStringLiteral("counts")].toObject(),
                 QJsonObject({{"0", 0}, {"1", 2}, {"2", 1}, {"3", 2}}));
        QCOMPARE(json[QStringLiteral("types")].toArray(), QJsonArray({0, 2, 1}));
        const QJsonArray verifiers = json[QStringLiteral("verifiers")].toArray();
        QCOMPARE(verifiers.size(), 2);
        QCOMPARE(verifiers[0].toObject()[QStringLiteral("state")].toString(),
                 QStringLiteral("loaded"));
        QCOMPARE(verifiers[1].toObject()[QStringLiteral("types")].toArray(), QJsonArray({2, 1}));
        const QJsonObject first = json[QStringLiteral("results")].toArray()[0].toObject();
        QVERIFY(first[QStringLiteral("imagePath")].toString().endsWith(QStringLiteral("/PIC/") +
                                                                       checked.photos[0].fileName));
    }

    // A hash library that does not load: the maker's verifier still answers for its cameras.
    void checkWithALibraryThatDoesNotLoad() {
        const QString program = ProgramFolder(QStringLiteral("junk"), {"RVRFYJPG"});
        QVERIFY(WriteBytes(program + QLatin1Char('/') + ToviVerifierLibrary::FileName("JACICCHS"),
                           "not a library"));
        const Run run = Tovi({"check", checked.photoFolder, "--types", "1,0", "--json"}, program);
        QCOMPARE(run.exitCode, 0);
        const QJsonObject json = QJsonDocument::fromJson(run.out).object();
        QCOMPARE(Results(json), QList<int>({1, 3, 3, 3, 3}));
        QCOMPARE(json[QStringLiteral("verifiers")].toArray()[0].toObject()[QStringLiteral("state")],
                 QStringLiteral("unloadable"));
        QCOMPARE(run.err.count(QLatin1Char('\n')), 1);
    }

    void checkWithoutVerifierLibraries() {
        // The build's own tovi has no verifier beside it.
        const Run run = Tovi({"check", checked.photoFolder, "--types", "0,1", "--json"});
        QCOMPARE(run.exitCode, 0);  // the check ran; its answer is "unknown"
        const QJsonObject json = QJsonDocument::fromJson(run.out).object();
        QCOMPARE(Results(json), QList<int>({3, 3, 3, 3, 3}));
        QCOMPARE(json[QStringLiteral("counts")].toObject()[QStringLiteral("3")].toInt(), 5);
        for (const QJsonValue& verifier : json[QStringLiteral("verifiers")].toArray()) {
            QCOMPARE(verifier.toObject()[QStringLiteral("state")].toString(),
                     QStringLiteral("missing"));
        }
        QVERIFY2(run.err.contains(ToviVerifierLibrary::FileName("RVRFYJPG")), qPrintable(run.err));
        QVERIFY(run.err.contains(ToviVerifierLibrary::FileName("JACICCHS")));
        QVERIFY(run.err.contains(QStringLiteral("使える検証ライブラリがない")));
    }

    void checkUsesSavedTypesAndKeepsThem() {
        const QString ini = temp.filePath(QStringLiteral("p.ini"));
        {
            QSettings profile(ini, QSettings::IniFormat);
            profile.setValue(QStringLiteral("VisualSetting/DoEditCheck"), 100);
            profile.setValue(QStringLiteral("VisualSetting/EditCheckTypes"), QStringLiteral("0"));
        }
        const QString program = ProgramFolder(QStringLiteral("withBoth"), {"RVRFYJPG", "JACICCHS"});
        const Run run = Tovi({"check", checked.photoFolder, "--json"}, program);
        QCOMPARE(run.exitCode, 0);
        // Only the maker's verifier, as saved: the other cameras are no target of it.
        QCOMPARE(Results(QJsonDocument::fromJson(run.out).object()), QList<int>({1, 3, 3, 3, 3}));

        QSettings profile(ini, QSettings::IniFormat);
        QCOMPARE(profile.value(QStringLiteral("VisualSetting/DoEditCheck")).toInt(), 100);
        QCOMPARE(profile.value(QStringLiteral("VisualSetting/EditCheckTypes")).toString(),
                 QStringLiteral("0"));
    }

    void checkUsage_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode");

        QTest::newRow("type 3") << QStringList{"check", "{d}", "--types", "0,3"} << 2;
        QTest::newRow("eleven types")
            << QStringList{"check", "{d}", "--types", "0,1,2,0,1,2,0,1,2,0,1"} << 2;
        QTest::newRow("no folder") << QStringList{"check"} << 2;
        QTest::newRow("not a delivery") << QStringList{"check", "{t}"} << 1;
        // Only the first 19 characters count; the rest is no usage error (it ran: exit 0).
        QTest::newRow("ten types")
            << QStringList{"check", "{d}", "--types", "0,1,2,0,1,2,0,1,2,0"} << 0;
    }

    void checkUsage() {
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        for (QString& arg : args) {
            arg.replace(QStringLiteral("{d}"), checked.photoFolder)
                .replace(QStringLiteral("{t}"), temp.path());
        }
        const Run run = Tovi(args);
        QCOMPARE(run.exitCode, exitCode);
        QVERIFY(!run.err.isEmpty());
    }

private:
    // tovi with its own profile, configuration and home folders: nothing of the user's is
    // touched.
    Run Tovi(const QStringList& args, const QString& program = QString()) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), temp.filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("HOME"), temp.path());
        return RunProgram(
            program.isEmpty() ? bin + QStringLiteral("/tovi") : program + QStringLiteral("/tovi"),
            QStringList{QStringLiteral("--profile"), temp.filePath(QStringLiteral("p.ini"))} + args,
            env);
    }
    // A folder holding a copy of tovi and READITEM.XML, and the named stand-in libraries.
    QString ProgramFolder(const QString& name, const QStringList& libraries) {
        const QString folder = temp.filePath(name);
        if (QFileInfo::exists(folder + QStringLiteral("/tovi"))) {
            return folder;
        }
        QDir().mkpath(folder);
        for (const QString& file : {QStringLiteral("tovi"), QStringLiteral("READITEM.XML")}) {
            QFile::copy(bin + QLatin1Char('/') + file, folder + QLatin1Char('/') + file);
        }
        for (const QString& base : libraries) {
            const QString file = ToviVerifierLibrary::FileName(base);
            QFile::copy(QStringLiteral(TOVI_STANDIN_DIR "/full/") + file,
                        folder + QLatin1Char('/') + file);
        }
        return folder;
    }

    QTemporaryDir temp;
    QString bin;
    WrittenDelivery written;
    WrittenDelivery checked;
};

QTEST_GUILESS_MAIN(ToviCliTest)
#include "ToviCliTest.moc"
