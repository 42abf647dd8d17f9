#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "imagefacts/ToviImageCheckCommon.h"
#include "imagefacts/ToviJacicImageChecker.h"
#include "imagefacts/ToviRicohImageChecker.h"
#include "platform/ToviProfile.h"
#include "platform/ToviVerifierLibrary.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/imagefacts/ExifFixture.h"
#include "tests/support/ScriptedUi.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace exiffixture;
using Status = ToviCheckProcessor::CheckStatus;

Q_DECLARE_METATYPE(ToviCheckProcessor::CheckStatus)

namespace {

// What a program folder holds of one verifier library.
enum class Lib { Missing, Full, Partial, NotALibrary, LowerCaseName };

constexpr Status kUnaltered = ToviCheckProcessor::StatusUnaltered;
constexpr Status kAltered = ToviCheckProcessor::StatusAltered;
constexpr Status kOutside = ToviCheckProcessor::StatusOutsideTarget;
constexpr Status kError = ToviCheckProcessor::StatusError;

const char kMaker[] = "RVJ_Verify";
const char kHashJpeg[] = "JCOMSIA_CheckHashValue";
const char kHashSvg[] = "JCOMSIA_SVG_CheckHashValue";

// The codes the stand-ins answer: "@RVJ=n@", "@JCOMSIA=n@", "@JCOMSIA_SVG=n@".
QByteArray Markers(std::optional<int> maker, std::optional<int> hash,
                   std::optional<int> svg = std::nullopt) {
    QByteArray bytes;
    for (const auto& [key, code] :
         {std::pair{"RVJ", maker}, {"JCOMSIA", hash}, {"JCOMSIA_SVG", svg}}) {
        if (code) {
            bytes += "@" + QByteArray(key) + "=" + QByteArray::number(*code) + "@";
        }
    }
    return bytes;
}

}  // namespace

Q_DECLARE_METATYPE(Lib)

// The tamper check through stand-ins of the outside verifiers, loaded from a program folder
// of the test's own: the chain orders, both code tables, broken libraries, and the document's
// results.
class ToviImageCheckTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("p.ini")));
        logPath = temp.filePath(QStringLiteral("calls.log"));
        qputenv("TOVI_STANDIN_LOG", QFile::encodeName(logPath));
        const QString full = QStringLiteral(TOVI_STANDIN_DIR "/full/") +
                             ToviVerifierLibrary::FileName(QStringLiteral("JACICCHS"));
        QVERIFY2(QFileInfo::exists(full), qPrintable(full));
    }
    void cleanupTestCase() {
        ToviVerifierLibrary::SetProgramPathOverride(QString());
        qunsetenv("TOVI_STANDIN_LOG");
    }
    void init() { QFile::remove(logPath); }

    void codes_data() {
        // Which verifier answers: the maker's, or the hash checker on a JPEG or an SVG.
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("code");
        QTest::addColumn<Status>("status");

        // The two hash tables differ on -3, -301 and -307: those rows show the wrong table.
        const QList<std::tuple<const char*, int, Status>> rows{
            {"maker", 0, kUnaltered}, {"maker", 1, kAltered},  {"maker", 2, kOutside},
            {"maker", 3, kError},     {"jpeg", 1, kUnaltered}, {"jpeg", -307, kAltered},
            {"jpeg", -303, kOutside}, {"jpeg", -3, kError},    {"jpeg", -301, kError},
            {"svg", -3, kAltered},    {"svg", -301, kOutside}, {"svg", -307, kOutside},
            {"svg", 2, kError},
        };
        for (const auto& [kind, code, status] : rows) {
            QTest::addRow("%s %d", kind, code) << QString::fromLatin1(kind) << code << status;
        }
    }
    void codes() {
        QFETCH(QString, kind);
        QFETCH(int, code);
        QFETCH(Status, status);
        if (kind == QLatin1String("maker")) {
            UseProgramFolder(Lib::Full, Lib::Missing);
            const QString path = Jpeg(QStringLiteral("maker.jpg"), QStringLiteral("G800"),
                                      Markers(code, std::nullopt));
            ToviRicohImageChecker checker;
            QVERIFY(checker.IsEnableDLL());
            QVERIFY(checker.Initiate());
            QCOMPARE(checker.Check(path), status);
            // The verifier gets the whole file in memory.
            QCOMPARE(
                CallLines(),
                QStringList{
                    QStringLiteral("%1 %2 %3").arg(kMaker).arg(QFileInfo(path).size()).arg(code)});
            return;
        }
        UseProgramFolder(Lib::Missing, Lib::Full);
        // Both hash markers are there, so that asking the wrong function shows; the extension
        // decides, whatever its case.
        const QStringList names =
            kind == QLatin1String("jpeg")
                ? QStringList{QStringLiteral("hash.JPG")}
                : QStringList{QStringLiteral("hash.svg"), QStringLiteral("hash.SVG")};
        for (const QString& name : names) {
            const QString path =
                kind == QLatin1String("jpeg")
                    ? Jpeg(name, QStringLiteral("X"), Markers(std::nullopt, code, 1))
                    : Svg(name, Markers(std::nullopt, 1, code));
            ToviJacicImageChecker checker;
            QCOMPARE(checker.Check(path), status);
            QCOMPARE(
                CallLines(),
                QStringList{QStringLiteral("%1 %2 %3")
                                .arg(kind == QLatin1String("jpeg") ? kHashJpeg : kHashSvg, name)
                                .arg(code)});
        }
    }

    // The maker's cameras by the Exif model, blanks of both widths around it trimmed.
    void makerTarget_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<bool>("exif");
        QTest::addColumn<bool>("target");
        QTest::newRow("G700 SE") << QStringLiteral("G700 SE") << true << true;
        QTest::newRow("blanks around") << QStringLiteral("\u3000 G800 \u3000") << true << true;
        QTest::newRow("full-width inner blank") << QStringLiteral("G700\u3000SE") << true << false;
        QTest::newRow("longer name") << QStringLiteral("G800 SE II") << true << false;
        QTest::newRow("no Exif") << QStringLiteral("G800") << false << false;
    }
    void makerTarget() {
        QFETCH(QString, model);
        QFETCH(bool, exif);
        QFETCH(bool, target);
        ToviRicohImageChecker checker;
        QCOMPARE(checker.IsTarget(Jpeg(QStringLiteral("model.jpg"), model, QByteArray(), exif)),
                 target);
    }

    // The file name keeps the case it was first given in.
    void setFileKeepsStoredCase() {
        ToviImageCheckCommon check;
        check.SetFile(QStringLiteral("/d/PIC/P0000001.JPG"));
        check.SetFile(QStringLiteral("/d/pic/p0000001.jpg"));
        QCOMPARE(check.GetFile(), QStringLiteral("/d/PIC/P0000001.JPG"));
    }

    void chainOrder_data() {
        QTest::addColumn<QString>("types");
        QTest::addColumn<QString>("model");
        QTest::addColumn<QByteArray>("markers");
        QTest::addColumn<int>("processors");
        QTest::addColumn<Status>("status");
        QTest::addColumn<QStringList>("calls");

        const QString g800 = QStringLiteral("G800");
        const QString other = QStringLiteral("FIELD-CAM G7");
        const QString m = QString::fromLatin1(kMaker);
        const QString h = QString::fromLatin1(kHashJpeg);
        QTest::newRow("maker's outside target stops the chain")
            << "0,1" << g800 << Markers(2, 1) << 2 << kOutside << QStringList{m};
        QTest::newRow("another camera: the hash checker decides")
            << "0,1" << other << Markers(0, 0) << 2 << kAltered << QStringList{h};
        QTest::newRow("maker's error goes on")
            << "0,1" << g800 << Markers(7, 1) << 2 << kUnaltered << QStringList{m, h};
        QTest::newRow("hash outside, maker decides")
            << "1,0" << g800 << Markers(1, -305) << 2 << kAltered << QStringList{h, m};
        QTest::newRow("hash error, maker outside")
            << "2,1,0" << g800 << Markers(2, 99) << 3 << kOutside << QStringList{h, h, m};
        QTest::newRow("unknown types are skipped")
            << "3,9,255,1" << other << Markers(0, 1) << 1 << kUnaltered << QStringList{h};
        QTest::newRow("only the maker, no target")
            << "0" << other << Markers(0, 1) << 1 << kError << QStringList{};
    }
    void chainOrder() {
        QFETCH(QString, types);
        QFETCH(QString, model);
        QFETCH(QByteArray, markers);
        QFETCH(int, processors);
        QFETCH(Status, status);
        QFETCH(QStringList, calls);

        UseProgramFolder(Lib::Full, Lib::Full);
        ToviImageCheckCommon check;
        check.SetCheckCameraType(ToviData::ParseEditCheckTypes(types));
        QCOMPARE(check.GetProcessorCount(), processors);
        check.SetFile(Jpeg(QStringLiteral("chain.jpg"), model, markers));
        QCOMPARE(check.CheckProcessedImage(), status);
        QCOMPARE(Calls(), calls);

        // A rebuild replaces the whole chain.
        check.SetCheckCameraType({ToviImageCheckCommon::CameraBlackboard});
        QCOMPARE(check.GetProcessorCount(), 1);
    }

    void badLibraries_data() {
        QTest::addColumn<Lib>("maker");
        QTest::addColumn<Lib>("hash");
        QTest::addColumn<QString>("types");
        QTest::addColumn<bool>("svg");
        QTest::addColumn<int>("processors");
        QTest::addColumn<Status>("status");

        QTest::newRow("both missing")
            << Lib::Missing << Lib::Missing << "0,2,1" << false << 0 << kError;
        QTest::newRow("maker lacks its function, hash decides")
            << Lib::Partial << Lib::Full << "0,1" << false << 2 << kAltered;
        QTest::newRow("hash lacks the SVG function")
            << Lib::Missing << Lib::Partial << "1" << true << 1 << kError;
        QTest::newRow("hash no library, maker decides")
            << Lib::Full << Lib::NotALibrary << "2,0" << false << 1 << kUnaltered;
        QTest::newRow("name in another case")
            << Lib::Missing << Lib::LowerCaseName << "1" << false << 1 << kAltered;
    }
    void badLibraries() {
        QFETCH(Lib, maker);
        QFETCH(Lib, hash);
        QFETCH(QString, types);
        QFETCH(bool, svg);
        QFETCH(int, processors);
        QFETCH(Status, status);

        UseProgramFolder(maker, hash);
        const QByteArray markers = Markers(0, 0, 1);
        const QString path = svg ? Svg(QStringLiteral("bad.svg"), markers)
                                 : Jpeg(QStringLiteral("bad.jpg"), QStringLiteral("G800"), markers);
        ToviImageCheckCommon check;
        check.SetCheckCameraType(ToviData::ParseEditCheckTypes(types));
        QCOMPARE(check.GetProcessorCount(), processors);
        check.SetFile(path);
        QCOMPARE(check.CheckProcessedImage(), status);

        // A checker asked directly without its library answers an error, never a crash.
        if (hash == Lib::Missing || hash == Lib::NotALibrary) {
            QCOMPARE(ToviJacicImageChecker().Check(path), kError);
        }
        if (maker != Lib::Full) {
            QCOMPARE(ToviRicohImageChecker().Check(path), kError);
        }
    }

    // The document's results: nothing asked while the check is off, cleared when its terms
    // change, and 3 when the chosen verifier's library is gone.
    void documentResults() {
        UseProgramFolder(Lib::Full, Lib::Full);
        ToviData document(nullptr, temp.path(), PhotoXMLMlit);
        const QString other = QStringLiteral("FIELD-CAM G7");
        const QList<QByteArray> markers{Markers(0, 1), Markers(0, 0), Markers(0, -305),
                                        Markers(0, 99)};
        for (int i = 0; i < markers.size(); ++i) {
            document.GetPhotoDataArray()->append(std::make_unique<ToviPhoto>(
                Jpeg(QStringLiteral("doc%1.jpg").arg(i), other, markers[i])));
        }
        // Every photograph's result, after checking it when asked.
        const auto results = [&](bool check = false) {
            QList<int> list;
            for (ToviPhoto* photo : *document.GetPhotoDataArray()) {
                if (check) {
                    document.CheckEditJPEG(photo);
                }
                list.append(photo->GetEditChkResult());
            }
            return list;
        };
        const auto checkAll = [&] { return results(true); };
        const auto set = [&](bool on, const QString& types) {
            ToviPhotoCtrlVisualSetting setting = document.GetVisualSetting();
            setting.SetDoEditCheck(on);
            setting.SetEditCheckTypes(types);
            document.SetVisualSetting(setting, false);
        };

        QCOMPARE(checkAll(), QList<int>({0, 0, 0, 0}));
        QVERIFY(Calls().isEmpty());
        document.CheckEditJPEG(nullptr);

        set(true, QStringLiteral("1"));
        QCOMPARE(checkAll(), QList<int>({1, 2, 3, 3}));
        set(true, QStringLiteral("1"));  // the same terms keep the results
        QCOMPARE(results(), QList<int>({1, 2, 3, 3}));
        document.SetVisualSetting(document.GetVisualSetting(), true);  // unless forced
        QCOMPARE(results(), QList<int>({0, 0, 0, 0}));
        set(true, QStringLiteral("0"));
        QCOMPARE(results(), QList<int>({0, 0, 0, 0}));
        // Only the maker's verifier, and these photographs aren't its cameras.
        QCOMPARE(checkAll(), QList<int>({3, 3, 3, 3}));
        set(false, QStringLiteral("1"));  // switched off and other types in one step
        QCOMPARE(results(), QList<int>({0, 0, 0, 0}));
        CallLines();
        QCOMPARE(checkAll(), QList<int>({0, 0, 0, 0}));
        QVERIFY(Calls().isEmpty());
        // With the check off on both sides other types count for nothing.
        document.GetPhotoActualPhotoArray(0)->SetEditChkResult(ToviPhoto::EditCheckAltered);
        set(false, QStringLiteral("2,0"));
        QCOMPARE(results(), QList<int>({2, 0, 0, 0}));

        // Type 1 chosen, its library gone: an empty chain and the result 3, nothing asked.
        UseProgramFolder(Lib::Full, Lib::Missing);
        set(true, QStringLiteral("1"));
        QCOMPARE(document.GetImageCheck()->GetProcessorCount(), 0);
        QCOMPARE(checkAll(), QList<int>({3, 3, 3, 3}));
        QVERIFY(Calls().isEmpty());
    }

    // The check over the photographs on show: in their order, counted by result, and a cancel
    // keeps what was checked before it.
    void currentArray() {
        UseProgramFolder(Lib::Missing, Lib::Full);
        ToviData document(nullptr, temp.path(), PhotoXMLMlit);
        const QList<QByteArray> markers{Markers(std::nullopt, 1), Markers(std::nullopt, 0),
                                        Markers(std::nullopt, 1), Markers(std::nullopt, -303)};
        for (int i = 0; i < markers.size(); ++i) {
            document.GetPhotoDataArray()->append(std::make_unique<ToviPhoto>(
                Jpeg(QStringLiteral("cur%1.jpg").arg(i), QStringLiteral("X"), markers[i])));
        }
        for (int index : {3, 1, 0}) {
            document.CurrentArray().Add(index);
        }
        ScriptedUi ui;
        ScopedUi scoped(ui);
        std::array<int, 4> counts{};
        // Off: nothing is asked, nothing counted, no window.
        QVERIFY(document.CheckEditJPEGCurrent(counts));
        QCOMPARE(counts, (std::array<int, 4>{0, 0, 0, 0}));
        QVERIFY(ui.ProgressViews().isEmpty());

        ToviPhotoCtrlVisualSetting setting = document.GetVisualSetting();
        setting.SetDoEditCheck(true);
        setting.SetEditCheckTypes(QStringLiteral("1"));
        document.SetVisualSetting(setting, false);
        CallLines();
        QVERIFY(document.CheckEditJPEGCurrent(counts));
        QCOMPARE(counts, (std::array<int, 4>{0, 1, 1, 1}));
        QCOMPARE(Checked(document), QList<int>({1, 2, 0, 3}));  // photo 2 isn't on show
        QCOMPARE(CallLines().size(), 3);
        // The window moved after the first photograph and again after the last.
        QCOMPARE(ui.LastProgress()->positions.first(), 0);
        QVERIFY(ui.LastProgress()->positions.contains(1));
        QCOMPARE(ui.LastProgress()->positions.last(), 3);
        QCOMPARE(ui.LastProgress()->messages.last(), QStringLiteral("画像加工検知中　3 / 3"));
        QCOMPARE(ui.LastProgress()->closeCount, 1);

        // Cancelled at the first move: the first photograph on show keeps its result.
        document.SetVisualSetting(document.GetVisualSetting(), true);
        ui.PressCancelAtPump(ui.Pumps() + 2);
        QVERIFY(!document.CheckEditJPEGCurrent(counts));
        QCOMPARE(counts, (std::array<int, 4>{0, 0, 0, 1}));
        QCOMPARE(Checked(document), QList<int>({0, 0, 0, 3}));
        QCOMPARE(ui.LastProgress()->closeCount, 1);
    }

private:
    static QList<int> Checked(ToviData& document) {
        QList<int> list;
        for (ToviPhoto* photo : *document.GetPhotoDataArray()) {
            list.append(photo->GetEditChkResult());
        }
        return list;
    }
    // A fresh program folder holding the chosen libraries; the verifiers are looked for there.
    void UseProgramFolder(Lib maker, Lib hash) {
        const QString folder = temp.filePath(QStringLiteral("program%1").arg(++folders));
        QDir().mkpath(folder);
        const auto place = [&](Lib lib, const QString& base) {
            const QString name = ToviVerifierLibrary::FileName(base);
            const QString target =
                folder + QLatin1Char('/') + (lib == Lib::LowerCaseName ? name.toLower() : name);
            if (lib == Lib::NotALibrary) {
                QVERIFY(WriteBytes(target, "this is no shared library\n"));
            } else if (lib != Lib::Missing) {
                const QString from = QStringLiteral(TOVI_STANDIN_DIR) +
                                     (lib == Lib::Partial ? "/partial/" : "/full/") + name;
                QVERIFY2(QFile::copy(from, target), qPrintable(from));
            }
        };
        place(maker, QStringLiteral("RVRFYJPG"));
        place(hash, QStringLiteral("JACICCHS"));
        ToviVerifierLibrary::SetProgramPathOverride(folder);
    }
    // A JPEG from a camera of this model followed by markers.
    QString Jpeg(const QString& name, const QString& model, const QByteArray& markers,
                 bool exif = true) {
        ExifFacts facts;
        facts.writeExif = exif;
        facts.model = model;
        const QString path = temp.filePath(name);
        WriteBytes(path, MakeExifJpeg(Picture({64, 48}), facts) + markers);
        return path;
    }
    QString Svg(const QString& name, const QByteArray& markers) {
        QByteArray svg = SvgWithJpeg(ExifFacts());
        svg.replace("</svg>", "<!-- " + markers + " -->\n</svg>");
        const QString path = temp.filePath(name);
        WriteBytes(path, svg);
        return path;
    }
    QStringList CallLines() {
        const QString text = QString::fromUtf8(ReadBytes(logPath));
        QFile::remove(logPath);
        return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    // The functions the stand-ins were called through since the last look, in order.
    QStringList Calls() {
        QStringList functions;
        for (const QString& line : CallLines()) {
            functions.append(line.section(QLatin1Char(' '), 0, 0));
        }
        return functions;
    }

    QTemporaryDir temp;
    int folders = 0;
    QString logPath;
};

QTEST_GUILESS_MAIN(ToviImageCheckTest)
#include "ToviImageCheckTest.moc"
