#include "platform/Cp932.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/DeliveryWriter.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <numeric>

namespace {

using Run = ProgramRun;

void WriteFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

}  // namespace

// The tovi command as a user runs it: exit codes, the one line on failure, the JSON shape.
class ToviCliTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        tovi = QCoreApplication::applicationDirPath() + QStringLiteral("/tovi");
        QVERIFY(QFileInfo::exists(tovi));
        DeliveryOptions options;
        options.photoCount = 12;
        options.images = DeliveryOptions::Images::None;
        options.drawingShare = 0.5;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(QStringLiteral("d")), options, &written, &error),
                 qPrintable(error));
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

    void infoTextSummary() {
        const Run run = Tovi({QStringLiteral("info"), written.photoFolder});
        QCOMPARE(run.exitCode, 0);
        const QString text = QString::fromUtf8(run.out);
        QVERIFY(text.contains(QStringLiteral("国交省-20")));
        QVERIFY(text.contains(QStringLiteral("写真: 12枚")));
        QVERIFY(text.contains(written.photos.first().fileName));
        // Photographs are named by their photo index, as list and check name them.
        QVERIFY(text.contains(QStringLiteral("      0  ") + written.photos.first().fileName));
    }

    // The help text is the contract of every command and its exit codes.
    void helpDescribesEveryCommand() {
        const Run run = Tovi({QStringLiteral("--help")});
        QCOMPARE(run.exitCode, 0);
        const QString text = QString::fromUtf8(run.out);
        for (const char* command : {"info", "tree", "list", "exif", "check"}) {
            QVERIFY2(text.contains(QStringLiteral("tovi %1 ").arg(QLatin1String(command))),
                     command);
        }
        QVERIFY(text.contains(QStringLiteral("終了コード 0 で終わる")));
        QCOMPARE(Tovi({}).exitCode, 2);
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
        QTest::newRow("not well formed") << QStringList{info, broken} << 1 << QStringLiteral("XML");
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
        QTest::newRow("extra argument")
            << QStringList{info, written.photoFolder, QStringLiteral("x")} << 2
            << QStringLiteral("x");
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
        QTest::newRow("item without =")
            << QStringList{QStringLiteral("--item"), QStringLiteral("工種")}
            << QStringLiteral("--item");
        QTest::newRow("four items") << QStringList{QStringLiteral("--item"), QStringLiteral("a=1"),
                                                   QStringLiteral("--item"), QStringLiteral("b=1"),
                                                   QStringLiteral("--item"), QStringLiteral("c=1"),
                                                   QStringLiteral("--item"), QStringLiteral("d=1")}
                                    << QStringLiteral("--item");
        QTest::newRow("node and label")
            << QStringList{QStringLiteral("--node"), QStringLiteral("0"), QStringLiteral("--label"),
                           QStringLiteral("1")}
            << QStringLiteral("--label");
        QTest::newRow("label out of range")
            << QStringList{QStringLiteral("--label"), QStringLiteral("6")}
            << QStringLiteral("--label");
        QTest::newRow("tree type") << QStringList{QStringLiteral("--type"), QStringLiteral("3")}
                                   << QStringLiteral("--type");
        QTest::newRow("date kind")
            << QStringList{QStringLiteral("--date-kind"), QStringLiteral("2")}
            << QStringLiteral("--date-kind");
        QTest::newRow("node past int") << QStringList{QStringLiteral("--node"),
                                                      QStringLiteral("0/99999999999")}
                                       << QStringLiteral("--node");
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

    // The item definitions live beside the program: a copy of tovi in a folder of its own
    // shows what happens when they are missing, malformed or unbalanced.
    void definitionFileBesideTheProgram_data() {
        QTest::addColumn<QByteArray>("readItem");
        QTest::addColumn<QString>("mentions");
        QTest::newRow("missing") << QByteArray() << QStringLiteral("READITEM.XML");
        QTest::newRow("malformed")
            << QByteArray("<information><国交省-20>") << QStringLiteral("READITEM.XML");
        QTest::newRow("unbalanced steps")
            << QByteArray(
                   "<?xml version=\"1.0\" encoding=\"UTF-8\"?><information><国交省-20>"
                   "<管理項目><タイトル>基礎情報</タイトル><必要度>不要</必要度><データ数>0/1</"
                   "データ数>"
                   "<操作>Child</操作><読込種別>MngItem</読込種別></管理項目>"
                   "<管理項目><タイトル>無い要素</タイトル><必要度>任意</必要度><データ数>0/1</"
                   "データ数>"
                   "<操作>Child</操作></管理項目>"
                   "</国交省-20></information>")
            << QStringLiteral("READITEM.XML");
    }
    void definitionFileBesideTheProgram() {
        QFETCH(QByteArray, readItem);
        QFETCH(QString, mentions);
        const QString folder =
            temp.filePath(QStringLiteral("prog-%1").arg(QTest::currentDataTag()));
        QDir().mkpath(folder);
        const QString copy = folder + QStringLiteral("/tovi");
        QVERIFY(QFile::copy(tovi, copy));
        if (!readItem.isEmpty()) {
            WriteFile(folder + QStringLiteral("/READITEM.XML"), readItem);
        }
        const Run run = Tovi({QStringLiteral("info"), written.photoFolder}, copy);
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.contains(mentions), qPrintable(run.err));
    }

private:
    Run Tovi(const QStringList& args, const QString& program = QString()) {
        return RunProgram(
            program.isEmpty() ? tovi : program,
            QStringList{QStringLiteral("--profile"), temp.filePath(QStringLiteral("p.ini"))} +
                args);
    }

    QTemporaryDir temp;
    QString tovi;
    WrittenDelivery written;
};

QTEST_GUILESS_MAIN(ToviCliTest)
#include "ToviCliTest.moc"
