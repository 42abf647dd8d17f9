#include "platform/Cp932.h"
#include "platform/MibSheet.h"
#include "platform/ToviVerifierLibrary.h"
#include "tests/imagefacts/ExifFixture.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ProgramRun.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <numeric>

using namespace exiffixture;
using namespace Qt::StringLiterals;

namespace {

QList<int> Ints(const QJsonValue& array) {
    QList<int> ints;
    for (const QJsonValue& v : array.toArray()) {
        ints.append(v.toInt());
    }
    return ints;
}

QJsonObject Json(const ProgramRun& run) {
    QJsonParseError error;
    const QJsonObject json = QJsonDocument::fromJson(run.out, &error).object();
    return error.error == QJsonParseError::NoError ? json : QJsonObject();
}

// Every photo index under node and its children, in tree order.
void Collect(const QJsonObject& node, QList<int>& out) {
    out += Ints(node["indexes"_L1]);
    for (const QJsonValue& child : node["children"_L1].toArray()) {
        Collect(child.toObject(), out);
    }
}

// The cells of a written sheet by reference ("A2"): inline strings unescaped, numbers as
// written; a cell with neither is "".
QMap<QString, QString> SheetCells(const QByteArray& sheetXml) {
    static const QRegularExpression kCell(
        uR"re(<c r="([A-Z]+\d+)"[^>]*?(?:/>|>(?:<is><t[^>]*>(.*?)</t></is>|<v>(.*?)</v>)?</c>))re"_s);
    QMap<QString, QString> cells;
    const QString xml = QString::fromUtf8(sheetXml);
    for (auto it = kCell.globalMatch(xml); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        QString text = m.captured(2) + m.captured(3);
        text.replace(u"&lt;"_s, u"<"_s)
            .replace(u"&gt;"_s, u">"_s)
            .replace(u"&quot;"_s, u"\""_s)
            .replace(u"&amp;"_s, u"&"_s);
        cells.insert(m.captured(1), text);
    }
    return cells;
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
        QVERIFY(QFileInfo::exists(bin + u"/tovi"_s));
        // The build keeps the stand-ins away from the executables.
        QVERIFY(ToviVerifierLibrary::Find(u"JACICCHS"_s).isEmpty());
        // The SVG work file goes below the test's folder, never the user's.
        QSettings(temp.filePath(u"config/Orvane Systems/QVHomeKey.ini"_s), QSettings::IniFormat)
            .setValue(u"QVScratch"_s, temp.path());

        DeliveryOptions options;
        options.photoCount = 12;
        options.images = DeliveryOptions::Images::None;
        options.drawingShare = 0.5;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(u"d"_s), options, &written, &error),
                 qPrintable(error));

        // Five photographs carrying the codes the stand-ins are to answer: a maker's camera
        // that the maker's verifier passes, one it calls outside target (the chain stops
        // there), and three others for the hash checker.
        options.photoCount = 5;
        options.images = DeliveryOptions::Images::Tiny;
        options.drawingShare = 0;
        QVERIFY2(WriteDelivery(temp.filePath(u"c"_s), options, &checked, &error),
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
            QVERIFY(WriteBytes(checked.photoFolder + u"/PIC/"_s + checked.photos[i].fileName,
                               MakeExifJpeg(Picture({64, 48}), facts) + plans[i].second));
        }

        // Files for the failure rows.
        const auto photoXml = [&](const char* folder, const char* dtd, const char* rest) {
            QVERIFY(QDir().mkpath(temp.filePath(QString::fromUtf8(folder))));
            QVERIFY(WriteBytes(temp.filePath(QString::fromUtf8(folder) + u"/PHOTO.XML"_s),
                               Cp932::FromUnicode(QString::fromUtf8(
                                   QByteArray("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
                                              "<!DOCTYPE photodata SYSTEM \"") +
                                   dtd + "\">\n<photodata><基礎情報>" + rest))));
        };
        photoXml("broken", "PHOTO05.DTD", "");
        photoXml("none", "PHOTO05.DTD",
                 "<写真フォルダ名>PHOTO/PIC</写真フォルダ名><適用要領基準>x</適用要領基準>"
                 "</基礎情報></photodata>");
        QVERIFY(QDir().mkpath(temp.filePath(u"empty"_s)));
        QVERIFY(WriteBytes(temp.filePath(u"notes.txt"_s), "no picture here\n"));
        QVERIFY(WriteBytes(temp.filePath(u"P0000002.SVG"_s), SvgWithJpeg(ExifFacts())));
    }

    void info() {
        const ProgramRun text = Tovi({u"info"_s, written.photoFolder});
        QCOMPARE(text.exitCode, 0);
        // Photographs are named by their photo index, as list and check name them.
        QVERIFY(
            QString::fromUtf8(text.out).contains(u"      0  "_s + written.photos.first().fileName));

        const ProgramRun run = Tovi({u"info"_s, written.photoFolder, u"--json"_s});
        QCOMPARE(run.exitCode, 0);
        const QJsonObject json = Json(run);
        QCOMPARE(json["folder"_L1].toString(), written.photoFolder);
        QCOMPARE(json["family"_L1].toInt(), 0);
        QCOMPARE(json["errorType"_L1].toInt(), 4);
        QCOMPARE(json["section"_L1].toString(), u"国交省-20"_s);
        QCOMPARE(json["hasKeyPhoto"_L1].toBool(), true);
        QVERIFY(!json["managementItems"_L1].toArray().isEmpty());
        const QJsonArray definitions = json["definitions"_L1].toArray();
        const QJsonArray photos = json["photos"_L1].toArray();
        QCOMPARE(photos.size(), written.photos.size());
        for (int i = 0; i < photos.size(); ++i) {
            const QJsonObject photo = photos[i].toObject();
            QCOMPARE(photo["index"_L1].toInt(), i);
            QVERIFY(
                photo["imagePath"_L1].toString().endsWith(u"/PIC/"_s + written.photos[i].fileName));
            QCOMPARE(photo["picturePaths"_L1].toArray().size(), written.photos[i].drawings.size());
            // Each item names its definition by index and title, and the two agree.
            for (const QJsonValue& value : photo["items"_L1].toArray()) {
                const QJsonObject item = value.toObject();
                const int def = item["def"_L1].toInt();
                QVERIFY(def >= 0 && def < definitions.size());
                QCOMPARE(item["title"_L1].toString(),
                         definitions[def].toObject()["title"_L1].toString());
            }
        }
    }

    // Every way of not running says so in one line on standard error, with nothing on
    // standard output: exit 1 when the input is unusable, 2 for a usage error. {w}, {d} and
    // {t} stand for the two deliveries and the test's folder.
    void exitCodes_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("mentions");  // in standard error, or output on exit 0
        const auto row = [](const char* tag, QStringList args, int code, QString mentions = {}) {
            QTest::newRow(tag) << args << code << mentions;
        };
        row("missing folder", {"info", "{t}/missing"}, 1, "{t}/missing");
        row("no PHOTO.XML", {"info", "{t}/empty"}, 1, "PHOTO.XML");
        row("not well formed", {"info", "{t}/broken"}, 1);
        row("wrong family", {"info", "{w}", "--family", "3"}, 1, "DOCTYPE");
        row("no photographs is loaded", {"info", "{t}/none"}, 0, "写真がありません");
        row("no folder", {"info"}, 2, "フォルダ");
        row("bad family", {"info", "{w}", "--family", "9"}, 2, "--family");
        row("unknown command", {"frobnicate"}, 2, "frobnicate");
        row("list, bad date", {"list", "{w}", "--date", "2023-01-01"}, 2, "--date");
        row("list, four items",
            {"list", "{w}", "--item", "a=1", "--item", "b=1", "--item", "c=1", "--item", "d=1"}, 2,
            "--item");
        row("list, label out of range", {"list", "{w}", "--label", "6"}, 2, "--label");
        row("list, no such node", {"list", "{w}", "--node", "99/0"}, 2, "99/0");
        // A comment the Shift_JIS record cannot hold is refused before the record is touched.
        row("label, comment outside Shift_JIS",
            {"label", "{w}", "--record", "{t}/outside.xml", "--comment", "0=黒板😀"}, 2, "😀");
        row("exif, not a picture", {"exif", "{t}/notes.txt", "--json"}, 0, "\"hasExif\": false");
        row("exif, missing file", {"exif", "{t}/none.JPG"}, 1);
        row("exif, a folder", {"exif", "{t}"}, 1);
        row("exif, no file", {"exif"}, 2);
        row("exif, two files", {"exif", "{t}/notes.txt", "{t}/notes.txt"}, 2);
        row("exif, unknown option", {"exif", "{t}/notes.txt", "--xml"}, 2);
        row("check, type 3", {"check", "{d}", "--types", "0,3"}, 2, "--types");
        row("check, eleven types", {"check", "{d}", "--types", "0,1,2,0,1,2,0,1,2,0,1"}, 2);
        row("check, no folder", {"check"}, 2);
        row("check, not a delivery", {"check", "{t}"}, 1);
        row("validate, no folder", {"validate"}, 2, "フォルダ");
        row("validate, --xlsx without a file", {"validate", "{w}", "--xlsx"}, 2, "--xlsx");
        row("validate, --xlsx then an option", {"validate", "{w}", "--xlsx", "--json"}, 2,
            "--xlsx");
        row("validate, not a delivery", {"validate", "{t}"}, 1);
        row("validate, dates as JSON", {"validate", "{w}", "--dates", "--json"}, 2, "--dates");
        // Only the first 19 characters count; the rest is no usage error.
        row("check, ten types", {"check", "{d}", "--types", "0,1,2,0,1,2,0,1,2,0"}, 0,
            "3 不明: 5 枚");
    }
    void exitCodes() {
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        QFETCH(QString, mentions);
        const auto fill = [&](QString& text) {
            text.replace(u"{w}"_s, written.photoFolder)
                .replace(u"{d}"_s, checked.photoFolder)
                .replace(u"{t}"_s, temp.path());
        };
        std::for_each(args.begin(), args.end(), fill);
        fill(mentions);
        const ProgramRun run = Tovi(args);
        QCOMPARE(run.exitCode, exitCode);
        if (exitCode == 0) {
            QVERIFY2(QString::fromUtf8(run.out).contains(mentions), run.out.constData());
        } else {
            QCOMPARE(run.err.count(QLatin1Char('\n')), 1);
            QVERIFY2(run.err.contains(mentions), qPrintable(run.err));
            QVERIFY(run.out.isEmpty());
        }
    }

    // The tree's JSON holds every photograph exactly once (all of the writer's photographs
    // have a photo class), and a listing of a node is that node's subtree in tree order.
    void treeAndList() {
        const ProgramRun tree = Tovi({u"tree"_s, written.photoFolder, u"--json"_s});
        QCOMPARE(tree.exitCode, 0);
        const QJsonObject root = Json(tree);
        QVERIFY(root["title"_L1].toString().endsWith(u"PHOTO.XML"_s));
        QList<int> all;
        Collect(root, all);
        std::sort(all.begin(), all.end());
        QList<int> expected(written.photos.size());
        std::iota(expected.begin(), expected.end(), 0);
        QCOMPARE(all, expected);

        QList<int> under;
        Collect(root["children"_L1].toArray().first().toObject(), under);
        const QJsonObject listed =
            Json(Tovi({u"list"_s, written.photoFolder, u"--node"_s, u"0"_s, u"--json"_s}));
        QCOMPARE(Ints(listed["current"_L1]), under);
        QCOMPARE(listed["titles"_L1].toArray().size(), under.size());

        // Extraction and sorting, checked against what the writer wrote.
        const auto work = [&](int i) {
            for (const auto& element : written.photos[i].elements) {
                if (element.first == u"工種"_s) {
                    return element.second;
                }
            }
            return QString();
        };
        QVERIFY(!work(0).isEmpty());
        QList<int> sameWork;
        for (int i = written.photos.size() - 1; i >= 0; --i) {
            if (work(i) == work(0)) {
                sameWork.append(i);
            }
        }
        QCOMPARE(Ints(Json(Tovi({u"list"_s, written.photoFolder, u"--item"_s, u"工種="_s + work(0),
                                 u"--sort"_s, u"シリアル番号"_s, u"--desc"_s,
                                 u"--json"_s}))["current"_L1]),
                 sameWork);
        // No photograph carries a label yet: an empty list, not a missing one.
        QCOMPARE(Json(Tovi({u"list"_s, written.photoFolder, u"--label"_s, u"1"_s,
                            u"--json"_s}))["current"_L1],
                 QJsonValue(QJsonArray()));
    }

    void exifJson() {
        ExifFacts facts;
        facts.hasGps = true;
        facts.latitude = 35.5;
        facts.longitude = 139.25;
        const QString path = temp.filePath(u"P0000001.JPG"_s);
        QVERIFY(WriteExifJpeg(path, Picture({320, 240}), facts));

        const ProgramRun run = Tovi({u"exif"_s, path, u"--json"_s});
        QCOMPARE(run.exitCode, 0);
        const QJsonObject json = Json(run);
        QCOMPARE(json["hasExif"_L1].toBool(), true);
        // Groups of [title, value] rows, and the file facts by title.
        QCOMPARE(json["groups"_L1]["gps"_L1][0].toArray(),
                 QJsonArray({u"緯度"_s, u"N 35°30'00.00\""_s}));
        QCOMPARE(json["file"_L1][u"幅×高さ"_s].toString(), u"320×240"_s);

        // An SVG's main image goes below the work folder that the user's settings name.
        QCOMPARE(
            Json(Tovi({u"exif"_s, temp.filePath(u"P0000002.SVG"_s), u"--json"_s}))["hasExif"_L1],
            QJsonValue(true));
        QVERIFY(QFileInfo::exists(
            temp.filePath(u"QVScratch/QV-SUITE/QVフォトビューアー/P0000002_Exif.JPEG"_s)));
    }

    // The tamper check with the stand-ins beside a copy of tovi; counts follow the results.
    void check_data() {
        QTest::addColumn<QStringList>("libraries");  // "junk": a file that is no library
        QTest::addColumn<QString>("types");          // empty: the saved ones
        QTest::addColumn<QList<int>>("results");
        QTest::addColumn<QStringList>("states");
        QTest::addColumn<QStringList>("errors");  // what standard error mentions
        QTest::newRow("both verifiers")
            << QStringList{"RVRFYJPG", "JACICCHS"} << "0,2,1" << QList<int>{1, 3, 1, 2, 3}
            << QStringList{"loaded", "loaded"} << QStringList{};
        // The maker's verifier still answers for its cameras.
        QTest::newRow("hash library does not load")
            << QStringList{"RVRFYJPG", "junk"} << "1,0" << QList<int>{1, 3, 3, 3, 3}
            << QStringList{"unloadable", "loaded"}
            << QStringList{ToviVerifierLibrary::FileName("JACICCHS")};
        // The build's own tovi has no verifier beside it: the check runs, answering unknown.
        QTest::newRow("no libraries")
            << QStringList{} << "0,1" << QList<int>{3, 3, 3, 3, 3}
            << QStringList{"missing", "missing"}
            << QStringList{ToviVerifierLibrary::FileName("RVRFYJPG"),
                           ToviVerifierLibrary::FileName("JACICCHS"), "使える検証ライブラリがない"};
        // Only the maker's verifier, as saved: the other cameras are no target of it.
        QTest::newRow("saved types")
            << QStringList{"RVRFYJPG", "JACICCHS"} << QString() << QList<int>{1, 3, 3, 3, 3}
            << QStringList{"loaded"} << QStringList{};
    }
    void check() {
        QFETCH(QStringList, libraries);
        QFETCH(QString, types);
        QFETCH(QList<int>, results);
        QFETCH(QStringList, states);
        QFETCH(QStringList, errors);
        QSettings profile(temp.filePath(u"p.ini"_s), QSettings::IniFormat);
        if (types.isEmpty()) {
            profile.setValue(u"VisualSetting/DoEditCheck"_s, 100);
            profile.setValue(u"VisualSetting/EditCheckTypes"_s, u"0"_s);
            profile.sync();
        }
        QStringList args{u"check"_s, checked.photoFolder, u"--json"_s};
        if (!types.isEmpty()) {
            args << u"--types"_s << types;
        }
        const ProgramRun run = Tovi(args, libraries.isEmpty() ? QString() : Program(libraries));
        QCOMPARE(run.exitCode, 0);
        const QJsonObject json = Json(run);
        const QJsonArray rows = json["results"_L1].toArray();
        QList<int> got;
        QJsonObject counts{{"0", 0}, {"1", 0}, {"2", 0}, {"3", 0}};
        for (int i = 0; i < rows.size(); ++i) {
            const QJsonObject row = rows[i].toObject();
            QCOMPARE(row["index"_L1].toInt(), i);
            got.append(row["result"_L1].toInt());
            const QString key = QString::number(got.last());
            counts[key] = counts[key].toInt() + 1;
        }
        QCOMPARE(got, results);
        QCOMPARE(json["counts"_L1].toObject(), counts);
        // One entry per library, in the chain's order, each with its part of the chain.
        QStringList gotStates;
        QList<int> chain;
        for (const QJsonValue& verifier : json["verifiers"_L1].toArray()) {
            gotStates.append(verifier["state"_L1].toString());
            chain += Ints(verifier["types"_L1]);
        }
        QCOMPARE(gotStates, states);
        QCOMPARE(Ints(json["types"_L1]), chain);
        if (!types.isEmpty()) {
            QCOMPARE(json["types"_L1].toVariant().toStringList().join(QLatin1Char(',')), types);
        }
        QCOMPARE(run.err.isEmpty(), errors.isEmpty());
        for (const QString& error : errors) {
            QVERIFY2(run.err.contains(error), qPrintable(run.err));
        }
        if (types.isEmpty()) {  // what was saved stays as it was
            profile.sync();
            QCOMPARE(profile.value(u"VisualSetting/DoEditCheck"_s).toInt(), 100);
            QCOMPARE(profile.value(u"VisualSetting/EditCheckTypes"_s).toString(), u"0"_s);
        }
    }

    // validate --json: exactly the six keys of a finding and the three counts, which add up
    // the findings; exit 1 with an error, 0 with none, whatever warnings there are.
    void validate() {
        // The delivery without images: every photograph and drawing is missing.
        ProgramRun run = Tovi({u"validate"_s, written.photoFolder, u"--json"_s});
        QCOMPARE(run.exitCode, 1);
        QJsonObject json = Json(run);
        QCOMPARE(json.keys(), (QStringList{u"counts"_s, u"findings"_s}));
        QMap<QString, int> counted;
        QSet<int> missing;
        for (const QJsonValue& value : json["findings"_L1].toArray()) {
            const QJsonObject f = value.toObject();
            QCOMPARE(f.keys(), (QStringList{u"code"_s, u"file"_s, u"index"_s, u"item"_s,
                                            u"message"_s, u"severity"_s}));
            ++counted[f["severity"_L1].toString()];
            QVERIFY(!f["message"_L1].toString().isEmpty());
            if (f["code"_L1] == u"file.missing"_s && f["item"_L1] == u"写真ファイル名"_s) {
                const int index = f["index"_L1].toInt(-1);
                QCOMPARE(f["file"_L1].toString(), u"PIC/"_s + written.photos[index].fileName);
                missing.insert(index);
            }
        }
        QCOMPARE(missing.size(), written.photos.size());
        const QJsonObject counts = json["counts"_L1].toObject();
        QCOMPARE(counts.keys(), (QStringList{u"error"_s, u"note"_s, u"warning"_s}));
        for (const QString& severity : counts.keys()) {
            QCOMPARE(counts[severity].toInt(), counted.value(severity));
        }
        // In the text the photograph's heading comes before its findings, the counts last.
        run = Tovi({u"validate"_s, written.photoFolder});
        QCOMPARE(run.exitCode, 1);
        const QString text = QString::fromUtf8(run.out);
        QVERIFY2(text.startsWith(
                     u"写真 0 (%1)\n  エラー file.missing"_s.arg(written.photos[0].fileName)),
                 qPrintable(text));
        QVERIFY(text.endsWith(
            u"結果: エラー %1 件, 警告 %2 件, 注意 %3 件\n"_s.arg(counted.value(u"error"_s))
                .arg(counted.value(u"warning"_s))
                .arg(counted.value(u"note"_s))));

        // A clean delivery, then a stray file in it: a finding about no photograph.
        run = Tovi({u"validate"_s, checked.photoFolder, u"--json"_s, u"--no-images"_s});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(Json(run)["counts"_L1].toObject()["error"_L1].toInt(-1), 0);
        const QString stray = checked.photoFolder + u"/PIC/Thumbs.db"_s;
        QVERIFY(QFile(stray).open(QIODevice::WriteOnly));
        run = Tovi({u"validate"_s, checked.photoFolder, u"--json"_s});
        QVERIFY(QFile::remove(stray));
        QCOMPARE(run.exitCode, 1);
        json = Json(run);
        const QJsonArray findings = json["findings"_L1].toArray();
        const auto found = std::find_if(findings.begin(), findings.end(), [](const QJsonValue& f) {
            return f["code"_L1] == u"file.stray"_s;
        });
        QVERIFY(found != findings.end());
        QVERIFY((*found)["index"_L1].isNull());
        QVERIFY((*found)["item"_L1].isNull());
        QCOMPARE((*found)["file"_L1].toString(), u"PIC/Thumbs.db"_s);
        QCOMPARE((*found)["severity"_L1].toString(), u"error"_s);
    }

    // validate --xlsx: the sheet has the counts the JSON has and one row per finding in the
    // same order, with the photograph's number and シリアル番号; it is set up to print. A sheet
    // that cannot be written leaves what was there, says why and exits 1, with the findings
    // still printed.
    void validateSheet() {
        const QString out = temp.filePath(u"sheet/検査.xlsx"_s);
        QVERIFY(QDir().mkpath(temp.filePath(u"sheet"_s)));
        ProgramRun run = Tovi({u"validate"_s, written.photoFolder, u"--xlsx"_s, out, u"--json"_s});
        QCOMPARE(run.exitCode, 1);
        const QJsonObject json = Json(run);
        const QJsonArray findings = json["findings"_L1].toArray();
        QVERIFY(!findings.isEmpty());
        QByteArray sheet;
        QVERIFY(MibReadZipEntry(out, u"xl/worksheets/sheet1.xml"_s, sheet));
        const QMap<QString, QString> cells = SheetCells(sheet);
        const QJsonObject counts = json["counts"_L1].toObject();
        QCOMPARE(cells.value(u"A5"_s), u"エラー"_s);
        QCOMPARE(cells.value(u"B5"_s), QString::number(counts["error"_L1].toInt()));
        QCOMPARE(cells.value(u"D5"_s), QString::number(counts["warning"_L1].toInt()));
        QCOMPARE(cells.value(u"F5"_s), QString::number(counts["note"_L1].toInt()));
        QCOMPARE(cells.value(u"G7"_s), u"内容"_s);
        const QHash<QString, QString> labels{
            {u"error"_s, u"エラー"_s}, {u"warning"_s, u"警告"_s}, {u"note"_s, u"注意"_s}};
        for (int k = 0; k < findings.size(); ++k) {
            const QJsonObject f = findings[k].toObject();
            const int row = 8 + k;
            const auto cell = [&](char column) {
                return cells.value(u"%1%2"_s.arg(QLatin1Char(column)).arg(row));
            };
            const int index = f["index"_L1].toInt(-1);
            QCOMPARE(cell('A'), index < 0 ? QString() : QString::number(index + 1));
            QString serial;
            for (const auto& [tag, text] : written.photos.value(index).elements) {
                if (tag == u"シリアル番号"_s) {
                    serial = text;
                }
            }
            QCOMPARE(cell('B'), serial);
            QCOMPARE(cell('C'), f["file"_L1].toString());
            QCOMPARE(cell('D'), f["item"_L1].toString());
            QCOMPARE(cell('E'), labels.value(f["severity"_L1].toString()));
            QCOMPARE(cell('F'), f["code"_L1].toString());
            QCOMPARE(cell('G'), f["message"_L1].toString());
        }
        QVERIFY(!cells.contains(u"A%1"_s.arg(8 + findings.size())));
        QVERIFY(sheet.contains("orientation=\"landscape\""));
        QVERIFY(sheet.contains("paperSize=\"9\""));
        QVERIFY(sheet.contains("<pageSetUpPr fitToPage=\"1\"/>"));
        QByteArray styles;
        QVERIFY(MibReadZipEntry(out, u"xl/styles.xml"_s, styles));
        QVERIFY(styles.contains("wrapText=\"1\""));
        QByteArray workbook;
        QVERIFY(MibReadZipEntry(out, u"xl/workbook.xml"_s, workbook));
        QVERIFY2(workbook.contains("_xlnm.Print_Titles") && workbook.contains("$7:$7"),
                 workbook.constData());
        QVERIFY(QFileInfo(out).permissions().testFlag(QFile::ReadOther));
        QCOMPARE(QDir(temp.filePath(u"sheet"_s))
                     .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"検査.xlsx"_s});

        // The text output goes on beside the sheet; a read-only folder keeps its old file.
        const QByteArray old("an older sheet");
        QFile file(out);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(old) > 0);
        file.close();
        const QString folder = temp.filePath(u"sheet"_s);
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
        run = Tovi({u"validate"_s, written.photoFolder, u"--xlsx"_s, out});
        QVERIFY(
            QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.contains(out), qPrintable(run.err));
        QVERIFY(QString::fromUtf8(run.out).contains(u"結果: エラー"_s));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), old);
        file.close();
        QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"検査.xlsx"_s});

        // A clean delivery still exits 0 with its sheet written, no finding below the header;
        // a stray file is a row without a photograph; a folder that is not there is a failure.
        run = Tovi({u"validate"_s, checked.photoFolder, u"--no-images"_s, u"--xlsx"_s, out});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(MibReadZipEntry(out, u"xl/worksheets/sheet1.xml"_s, sheet));
        QCOMPARE(SheetCells(sheet).value(u"B5"_s), u"0"_s);
        QVERIFY(!SheetCells(sheet).contains(u"A8"_s));
        const QString stray = checked.photoFolder + u"/PIC/Thumbs.db"_s;
        QVERIFY(QFile(stray).open(QIODevice::WriteOnly));
        run = Tovi({u"validate"_s, checked.photoFolder, u"--no-images"_s, u"--xlsx"_s, out});
        QVERIFY(QFile::remove(stray));
        QCOMPARE(run.exitCode, 1);
        QVERIFY(MibReadZipEntry(out, u"xl/worksheets/sheet1.xml"_s, sheet));
        const QMap<QString, QString> strayCells = SheetCells(sheet);
        QCOMPARE((QStringList{strayCells.value(u"A8"_s), strayCells.value(u"B8"_s),
                              strayCells.value(u"C8"_s), strayCells.value(u"F8"_s)}),
                 (QStringList{QString(), QString(), u"PIC/Thumbs.db"_s, u"file.stray"_s}));
        run = Tovi(
            {u"validate"_s, checked.photoFolder, u"--xlsx"_s, temp.filePath(u"gone/v.xlsx"_s)});
        QCOMPARE(run.exitCode, 1);
        QVERIFY(!QFileInfo::exists(temp.filePath(u"gone"_s)));
    }

    // validate --dates: the CSV of every photograph, a byte-order mark, CRLF, a header row; a
    // file time two days off flagged, a missing file said so.
    void validateDates() {
        DeliveryOptions options;
        options.photoCount = 3;
        options.images = DeliveryOptions::Images::Tiny;
        options.drawingShare = 0;
        WrittenDelivery dated;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(u"dates"_s), options, &dated, &error),
                 qPrintable(error));
        const QString pic = dated.photoFolder + u"/PIC/"_s;
        QFile moved(pic + dated.photos[1].fileName);
        QVERIFY(moved.open(QIODevice::ReadWrite));
        QVERIFY(moved.setFileTime(dated.photos[1].exif.dateTimeOriginal.addDays(-2),
                                  QFileDevice::FileModificationTime));
        moved.close();
        QVERIFY(QFile::remove(pic + dated.photos[2].fileName));

        const ProgramRun run = Tovi({u"validate"_s, dated.photoFolder, u"--dates"_s});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.out.startsWith("\xEF\xBB\xBF"));
        const QStringList lines = QString::fromUtf8(run.out.mid(3)).split(u"\r\n"_s);
        QCOMPARE(lines.size(), 5);  // header, three rows, nothing after the last CRLF
        QCOMPARE(lines[0],
                 u"番号,シリアル番号,写真ファイル,撮影年月日,Exif撮影日時,"
                 u"ファイル更新日時,Exifとの差(日),更新日時との差(日),差"_s);
        QVERIFY(lines[4].isEmpty());
        const auto cells = [&](int row) { return lines[row + 1].split(u','); };
        const QString taken =
            dated.photos[0].exif.dateTimeOriginal.toString(u"yyyy-MM-dd HH:mm:ss"_s);
        QCOMPARE(cells(0).first(), u"1"_s);  // numbered from 1, as on the sheet
        QCOMPARE(cells(2).first(), u"3"_s);
        QCOMPARE(cells(0).mid(2), (QStringList{u"PIC/"_s + dated.photos[0].fileName, taken.left(10),
                                               taken, taken, u"0"_s, u"0"_s, QString()}));
        QCOMPARE(cells(1).mid(6), (QStringList{u"0"_s, u"-2"_s, u"あり"_s}));
        QCOMPARE(cells(2).mid(4, 2), (QStringList{u"(読めません)"_s, u"(読めません)"_s}));
    }

private:
    // tovi with its own profile, configuration and home folders: nothing of the user's is
    // touched.
    ProgramRun Tovi(const QStringList& args, const QString& program = QString()) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"XDG_CONFIG_HOME"_s, temp.filePath(u"config"_s));
        env.insert(u"HOME"_s, temp.path());
        return RunProgram((program.isEmpty() ? bin : program) + u"/tovi"_s,
                          QStringList{u"--profile"_s, temp.filePath(u"p.ini"_s)} + args, env);
    }
    // A folder holding a copy of tovi and READITEM.XML, and the named stand-in libraries.
    QString Program(const QStringList& libraries) {
        const QString folder = temp.filePath(libraries.join(QLatin1Char('-')));
        if (QDir().mkpath(folder) && !QFileInfo::exists(folder + u"/tovi"_s)) {
            for (const QString& file : {u"tovi"_s, u"READITEM.XML"_s}) {
                QFile::copy(bin + QLatin1Char('/') + file, folder + QLatin1Char('/') + file);
            }
            for (const QString& base : libraries) {
                const bool junk = base == "junk"_L1;
                const QString file = ToviVerifierLibrary::FileName(junk ? u"JACICCHS"_s : base);
                const QString target = folder + QLatin1Char('/') + file;
                if (junk) {
                    WriteBytes(target, "not a library");
                } else {
                    QFile::copy(QStringLiteral(TOVI_STANDIN_DIR "/full/") + file, target);
                }
            }
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
