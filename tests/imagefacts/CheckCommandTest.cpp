#include "platform/ToviVerifierLibrary.h"
#include "tests/imagefacts/ExifFixture.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/DeliveryWriter.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using namespace exiffixture;

// tovi check as a script runs it: the results of every photograph through the stand-in
// verifiers copied beside a copy of tovi, what it says without them, the user's setting kept.
class CheckCommandTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void jsonResultsAndCounts();
    void textResultsAndCounts();
    void withoutVerifierLibraries();
    void libraryThatDoesNotLoad();
    void savedTypesUsedAndSettingKept();
    void usage_data();
    void usage();

private:
    using Run = ProgramRun;
    Run Tovi(const QString& program, const QStringList& args) const;
    // A folder holding a copy of tovi and READITEM.XML, and the named stand-in libraries.
    QString ProgramFolder(const QString& name, const QStringList& libraries, bool junkHash = false);
    static QList<int> Results(const QJsonObject& json);

    QTemporaryDir temp;
    QString bin;
    WrittenDelivery written;
};

void CheckCommandTest::initTestCase() {
    QVERIFY(temp.isValid());
    bin = QCoreApplication::applicationDirPath();
    QVERIFY(QFileInfo::exists(bin + QStringLiteral("/tovi")));
    // The build keeps the stand-ins away from the executables.
    QVERIFY(ToviVerifierLibrary::Find(QStringLiteral("JACICCHS")).isEmpty());

    DeliveryOptions options;
    options.photoCount = 5;
    options.images = DeliveryOptions::Images::Tiny;
    options.drawingShare = 0;
    QString error;
    QVERIFY2(WriteDelivery(temp.filePath(QStringLiteral("d")), options, &written, &error),
             qPrintable(error));
    // Each photograph carries the codes the stand-ins are to answer: a maker's camera that
    // the maker's verifier passes, one it calls outside target (the chain stops there), and
    // three others for the hash checker.
    struct Plan {
        const char* model;
        QByteArray codes;
    };
    const Plan plans[] = {
        {"G800", "@RVJ=0@@JCOMSIA=0@"},  {"G700 SE", "@RVJ=2@@JCOMSIA=1@"},
        {"FIELD-CAM", "@JCOMSIA=1@"},    {"FIELD-CAM", "@JCOMSIA=-1@"},
        {"FIELD-CAM", "@JCOMSIA=-305@"},
    };
    QCOMPARE(written.photos.size(), 5);
    for (int i = 0; i < 5; ++i) {
        ExifFacts facts;
        facts.model = QString::fromUtf8(plans[i].model);
        QVERIFY(
            WriteBytes(written.photoFolder + QStringLiteral("/PIC/") + written.photos[i].fileName,
                       MakeExifJpeg(Picture({64, 48}), facts) + plans[i].codes));
    }
}

CheckCommandTest::Run CheckCommandTest::Tovi(const QString& program,
                                             const QStringList& args) const {
    return RunProgram(
        program + QStringLiteral("/tovi"),
        QStringList{QStringLiteral("--profile"), temp.filePath(QStringLiteral("p.ini"))} + args);
}

QString CheckCommandTest::ProgramFolder(const QString& name, const QStringList& libraries,
                                        bool junkHash) {
    const QString folder = temp.filePath(name);
    if (QFileInfo::exists(folder + QStringLiteral("/tovi"))) {
        return folder;
    }
    QDir().mkpath(folder);
    for (const QString& file : {QStringLiteral("tovi"), QStringLiteral("READITEM.XML")}) {
        if (!QFile::copy(bin + QLatin1Char('/') + file, folder + QLatin1Char('/') + file)) {
            qWarning("cannot copy %s", qPrintable(file));
        }
    }
    for (const QString& base : libraries) {
        const QString file = ToviVerifierLibrary::FileName(base);
        QFile::copy(QStringLiteral(TOVI_STANDIN_DIR "/full/") + file,
                    folder + QLatin1Char('/') + file);
    }
    if (junkHash) {
        WriteBytes(folder + QLatin1Char('/') + ToviVerifierLibrary::FileName("JACICCHS"),
                   "not a library");
    }
    return folder;
}

QList<int> CheckCommandTest::Results(const QJsonObject& json) {
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

void CheckCommandTest::jsonResultsAndCounts() {
    const QString program = ProgramFolder(QStringLiteral("withBoth"), {"RVRFYJPG", "JACICCHS"});
    const Run run = Tovi(program, {"check", written.photoFolder, "--types", "0,2,1", "--json"});
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
    QCOMPARE(verifiers[0].toObject()[QStringLiteral("state")].toString(), QStringLiteral("loaded"));
    QCOMPARE(verifiers[1].toObject()[QStringLiteral("types")].toArray(), QJsonArray({2, 1}));
    const QJsonObject first = json[QStringLiteral("results")].toArray()[0].toObject();
    QVERIFY(first[QStringLiteral("imagePath")].toString().endsWith(QStringLiteral("/PIC/") +
                                                                   written.photos[0].fileName));
}

void CheckCommandTest::textResultsAndCounts() {
    const QString program = ProgramFolder(QStringLiteral("withBoth"), {"RVRFYJPG", "JACICCHS"});
    // The hash checker alone: the maker's cameras are its to judge too.
    const Run run = Tovi(program, {"check", written.photoFolder, "--types", "1"});
    QCOMPARE(run.exitCode, 0);
    const QStringList lines =
        QString::fromUtf8(run.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 6);
    const QStringList expected{"0\t2 加工あり", "1\t1 加工なし", "2\t1 加工なし", "3\t2 加工あり",
                               "4\t3 不明"};
    for (int i = 0; i < 5; ++i) {
        QVERIFY2(lines[i].startsWith(expected[i] + QLatin1Char('\t')), qPrintable(lines[i]));
        QVERIFY(lines[i].endsWith(written.photos[i].fileName));
    }
    QCOMPARE(lines[5], QStringLiteral("結果: 0 未判定: 0 枚, 1 加工なし: 2 枚, 2 加工あり: 2 枚, "
                                      "3 不明: 1 枚"));
}

void CheckCommandTest::withoutVerifierLibraries() {
    // The build's own tovi has no verifier beside it.
    const Run run = Tovi(bin, {"check", written.photoFolder, "--types", "0,1", "--json"});
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

void CheckCommandTest::libraryThatDoesNotLoad() {
    const QString program = ProgramFolder(QStringLiteral("junk"), {"RVRFYJPG"}, true);
    const Run run = Tovi(program, {"check", written.photoFolder, "--types", "1,0", "--json"});
    // The maker's verifier still answers for its cameras; the rest stays unknown.
    QCOMPARE(run.exitCode, 0);
    const QJsonObject json = QJsonDocument::fromJson(run.out).object();
    QCOMPARE(Results(json), QList<int>({1, 3, 3, 3, 3}));
    const QJsonArray verifiers = json[QStringLiteral("verifiers")].toArray();
    QCOMPARE(verifiers[0].toObject()[QStringLiteral("state")].toString(),
             QStringLiteral("unloadable"));
    QVERIFY2(run.err.contains(QStringLiteral("読み込めない")), qPrintable(run.err));
    QCOMPARE(run.err.count(QLatin1Char('\n')), 1);
}

void CheckCommandTest::savedTypesUsedAndSettingKept() {
    const QString ini = temp.filePath(QStringLiteral("p.ini"));
    {
        QSettings profile(ini, QSettings::IniFormat);
        profile.setValue(QStringLiteral("VisualSetting/DoEditCheck"), 100);
        profile.setValue(QStringLiteral("VisualSetting/EditCheckTypes"), QStringLiteral("0"));
    }
    const QString program = ProgramFolder(QStringLiteral("withBoth"), {"RVRFYJPG", "JACICCHS"});
    const Run run = Tovi(program, {"check", written.photoFolder, "--json"});
    QCOMPARE(run.exitCode, 0);
    // Only the maker's verifier, as saved: the other cameras are no target of it.
    QCOMPARE(Results(QJsonDocument::fromJson(run.out).object()), QList<int>({1, 3, 3, 3, 3}));

    QSettings profile(ini, QSettings::IniFormat);
    QCOMPARE(profile.value(QStringLiteral("VisualSetting/DoEditCheck")).toInt(), 100);
    QCOMPARE(profile.value(QStringLiteral("VisualSetting/EditCheckTypes")).toString(),
             QStringLiteral("0"));
}

void CheckCommandTest::usage_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("exitCode");

    QTest::newRow("type 3") << QStringList{"check", "{d}", "--types", "0,3"} << 2;
    QTest::newRow("empty types") << QStringList{"check", "{d}", "--types", ""} << 2;
    QTest::newRow("no types value") << QStringList{"check", "{d}", "--types"} << 2;
    QTest::newRow("eleven types") << QStringList{"check", "{d}", "--types", "0,1,2,0,1,2,0,1,2,0,1"}
                                  << 2;
    QTest::newRow("no folder") << QStringList{"check"} << 2;
    QTest::newRow("two folders") << QStringList{"check", "{d}", "{d}"} << 2;
    QTest::newRow("not a delivery") << QStringList{"check", "{t}"} << 1;
    // Only the first 19 characters count; the rest is no usage error (it ran: exit 0).
    QTest::newRow("ten types") << QStringList{"check", "{d}", "--types", "0,1,2,0,1,2,0,1,2,0"}
                               << 0;
}

void CheckCommandTest::usage() {
    QFETCH(QStringList, args);
    QFETCH(int, exitCode);
    for (QString& arg : args) {
        arg.replace(QStringLiteral("{d}"), written.photoFolder)
            .replace(QStringLiteral("{t}"), temp.path());
    }
    const Run run = Tovi(bin, args);
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY(!run.err.isEmpty());
}

QTEST_GUILESS_MAIN(CheckCommandTest)
#include "CheckCommandTest.moc"
