#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/Cp932.h"
#include "platform/MibFile.h"
#include "platform/MibXslt.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/WorkArea.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool WriteAll(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray Doctype(const char* root, const char* dtd) {
    return QByteArray("<!DOCTYPE ") + root + " SYSTEM \"" + dtd + "\">";
}

}  // namespace

class ToviIndexFilesTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QString photoFolder;  // a delivery of one photograph
    QString parent;       // its index folder, where the index files lie
    QString copyFolder;

    QString Path(const QString& name) const { return temp.filePath(name); }

    std::unique_ptr<ToviData> Open(PhotoXMLType family = PhotoXMLMlit) {
        ToviEnouDataFactory factory;
        return factory.Create(nullptr, photoFolder, family);
    }

    // Only the given index files in the index folder.
    void PutIndexFiles(const QMap<QString, QByteArray>& files) {
        for (const QString& name : QDir(parent).entryList(QDir::Files)) {
            QFile::remove(parent + name);
        }
        for (auto it = files.begin(); it != files.end(); ++it) {
            QVERIFY(WriteAll(parent + it.key(), it.value()));
        }
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(Path(QStringLiteral("profile.ini")));
        UseWorkFolder(temp.path());
        DeliveryOptions options;
        options.photoCount = 1;
        options.images = DeliveryOptions::Images::None;
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(Path(QStringLiteral("d")), options, &written, &error),
                 qPrintable(error));
        photoFolder = written.photoFolder;
        parent = MibParentDir(photoFolder);
        copyFolder = ToviEnvironment::SuiteFolder() + QStringLiteral("IndexCopy/");
    }
    void cleanupTestCase() { ToviEnvironment::SetSettingsPathsForTesting(QString(), QString()); }

    // The stylesheet by the DOCTYPE line and the family, the odd rows as they stand.
    void tables_data() {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("family");
        QTest::addColumn<QString>("stylesheet");
        QTest::newRow("works, 国交省") << Doctype("constdata", "INDE_C05.DTD") << 0
                                       << "MLIT/INDE_C05.XSL";
        QTest::newRow("works, KOWAN") << Doctype("constdata", "INDE_C07.DTD") << 1
                                      << "KOWAN/INDE_C07.XSL";
        QTest::newRow("oldest works has MLIT_E") << Doctype("constdata", "INDE_C01.DTD") << 0
                                                 << "MLIT_E/INDEX_C.XSL";
        QTest::newRow("C02 has none for KOWAN") << Doctype("constdata", "INDE_C02.DTD") << 1
                                                << "";
        QTest::newRow("農水省 own works file") << Doctype("constdata", "INDEC02N.DTD") << 2
                                              << "MAFF/INDEX_CN.XSL";
        QTest::newRow("NEXCO works borrows MLIT") << Doctype("constdata", "PHOT_JH1.DTD") << 3
                                                  << "MLIT/PHOT_JH1.XSL";
        QTest::newRow("NEXCO services D02 borrows MLIT")
            << Doctype("gyomudata", "INDE_D02.DTD") << 3 << "MLIT/INDEX_D.XSL";
        QTest::newRow("NEXCO services D03 its own") << Doctype("gyomudata", "INDE_D03.DTD") << 3
                                                    << "NEXCO/INDE_D03.XSL";
        QTest::newRow("electronic works") << Doctype("constdata", "IND_EC03.DTD") << 2
                                          << "MAFF_E/INDEX_EC.XSL";
        QTest::newRow("IND_MC01 none for KOWAN") << Doctype("constdata", "IND_MC01.DTD") << 1
                                                 << "";
        QTest::newRow("services word tested first")
            << QByteArray("<!-- constdata SYSTEM --> ") + Doctype("gyomudata", "INDE_D04.DTD")
            << 2 << "MAFF/INDE_D04.XSL";
        QTest::newRow("a works DTD under services") << Doctype("gyomudata", "INDE_C05.DTD") << 0
                                                    << "";
        QTest::newRow("no index DOCTYPE") << Doctype("photodata", "PHOTO05.DTD") << 0 << "";
        QTest::newRow("family out of range") << Doctype("constdata", "INDE_C05.DTD") << 7 << "";
    }
    void tables() {
        QFETCH(QByteArray, line);
        QFETCH(int, family);
        QFETCH(QString, stylesheet);
        QCOMPARE(ToviItemDef::StylesheetFor(line, static_cast<PhotoXMLType>(family)), stylesheet);
    }

    // Every stylesheet the tables name is installed beside the program, the one no DTD reaches
    // too, and each turns an index file into a page.
    void installedSet() {
        const QStringList paths = ToviItemDef::AllStylesheets();
        QVERIFY(paths.contains(QStringLiteral("MAFF_E/INDEX_C.XSL")));
        QCOMPARE(paths.size(), 60);
        const QString root = QCoreApplication::applicationDirPath() + QStringLiteral("/XSLPLATE/");
        for (const QString& path : paths) {
            QVERIFY2(MibIsFileExist(root + path), qPrintable(path));
        }
        QCOMPARE(QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 10);
    }

    // The index file is the last INDEX_*.XML by name, else the last PHOTO_*.XML; the
    // stylesheet path is the program folder alone when the tables have no row, and untouched
    // without an index DOCTYPE.
    void findIndexFile_data() {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("index");
        QTest::addColumn<int>("family");
        QTest::addColumn<QString>("stylesheet");  // relative to the program folder
        QTest::newRow("works and services: the last by name")
            << QStringList{"INDEX_C.XML", "INDEX_D.XML"} << "INDEX_D.XML" << 0
            << "XSLPLATE/MLIT/INDE_D03.XSL";
        QTest::newRow("PHOTO_ file when no INDEX_")
            << QStringList{"PHOTO_C.XML", "OTHER.XML"} << "PHOTO_C.XML" << 0
            << "XSLPLATE/MLIT/INDE_C05.XSL";
        QTest::newRow("lower case from Windows media")
            << QStringList{"index_c.xml"} << "index_c.xml" << 0 << "XSLPLATE/MLIT/INDE_C05.XSL";
        QTest::newRow("no row: the program folder")
            << QStringList{"INDEX_C02.XML"} << "INDEX_C02.XML" << 1 << "";
        QTest::newRow("no index DOCTYPE: untouched")
            << QStringList{"INDEX_X.XML"} << "INDEX_X.XML" << 0 << "<untouched>";
        QTest::newRow("none") << QStringList{} << "" << 0 << "<untouched>";
    }
    void findIndexFile() {
        QFETCH(QStringList, names);
        QFETCH(QString, index);
        QFETCH(int, family);
        QFETCH(QString, stylesheet);
        QMap<QString, QByteArray> files;
        for (const QString& name : names) {
            const char* dtd = name.contains(QLatin1String("_D")) ? "INDE_D03.DTD"
                              : name.contains(QLatin1String("C02")) ? "INDE_C02.DTD"
                                                                     : "INDE_C05.DTD";
            const char* root = name.contains(QLatin1String("_D")) ? "gyomudata" : "constdata";
            files.insert(name, name.contains(QLatin1String("_X")) || name.startsWith(QLatin1String("OTHER"))
                                   ? QByteArray("<?xml version=\"1.0\"?>\n<x/>\n")
                                   : "<?xml version=\"1.0\"?>\n" + Doctype(root, dtd) + "\n<" +
                                         root + "/>\n");
        }
        PutIndexFiles(files);
        std::unique_ptr<ToviData> document = Open(static_cast<PhotoXMLType>(family));
        QVERIFY(document);
        QString foundIndex;
        QString foundStylesheet = QStringLiteral("<untouched>");
        document->GetItemDef()->GetPathAndName(foundIndex, foundStylesheet);
        QCOMPARE(foundIndex, index.isEmpty() ? QString() : parent + index);
        const QString program = MibNormalDir(document->GetItemDef()->ProgramPath());
        QCOMPARE(foundStylesheet,
                 stylesheet.startsWith(QLatin1Char('<')) ? stylesheet : program + stylesheet);
    }

    // The copy carries one stylesheet line pointing at the file name, in place of an old one
    // or in front of the root; a file with neither comes out as it was; the stylesheet and the
    // index's DTD stand beside the copy.
    void copy_data() {
        QTest::addColumn<QByteArray>("index");
        QTest::addColumn<QByteArray>("copy");
        const QByteArray head = "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n";
        const QByteArray line = "<?xml-stylesheet type=\"text/xsl\" href=\"INDE_C05.XSL\"?>\n";
        const QByteArray doctype = Doctype("constdata", "INDE_C05.DTD") + "\n";
        QTest::newRow("in front of the root")
            << head + doctype + "<constdata DTD_version=\"05\">\n</constdata>\n"
            << head + doctype + line + "<constdata DTD_version=\"05\">\n</constdata>\n";
        QTest::newRow("an old line replaced, not doubled")
            << head + "<?xml-stylesheet href=\"old.xsl\"?>\r\n" + doctype +
                   "<constdata DTD_version=\"05\">\r\n</constdata>\r\n"
            << head + line + doctype + "<constdata DTD_version=\"05\">\n</constdata>\n";
        QTest::newRow("both words in one line")
            << head + doctype + "<?xml-stylesheet href=\"a\"?><constdata DTD_version=\"05\">\n"
            << head + doctype + line;
        QTest::newRow("neither word") << head + doctype + "<constdata>\n</constdata>\n"
                                      << head + doctype + "<constdata>\n</constdata>\n";
    }
    void copy() {
        QFETCH(QByteArray, index);
        QFETCH(QByteArray, copy);
        PutIndexFiles({{QStringLiteral("INDEX_C.XML"), index},
                       {QStringLiteral("INDE_C05.DTD"), "<!ELEMENT constdata ANY>"}});
        std::unique_ptr<ToviData> document = Open();
        QVERIFY(document);
        const QString path = document->GetIndexPath();
        QCOMPARE(path, copyFolder + QStringLiteral("INDEX_C.XML"));
        QCOMPARE(ReadAll(path), copy);
        QVERIFY(MibIsFileExist(copyFolder + QStringLiteral("INDE_C05.XSL")));
        QCOMPARE(ReadAll(copyFolder + QStringLiteral("INDE_C05.DTD")),
                 QByteArray("<!ELEMENT constdata ANY>"));
        // Kept for the document's life, though the copy went.
        QVERIFY(QDir(copyFolder).removeRecursively());
        QCOMPARE(document->GetIndexPath(), path);
    }

    // Without a row, the copy points at nothing and no stylesheet is copied; without an index
    // file there is no copy, and the next call tries again.
    void copyWithoutStylesheet() {
        PutIndexFiles({{QStringLiteral("INDEX_C.XML"),
                        "<?xml version=\"1.0\"?>\n" + Doctype("constdata", "INDE_C02.DTD") +
                            "\n<constdata DTD_version=\"02\"/>\n"}});
        std::unique_ptr<ToviData> document = Open(PhotoXMLKowan);
        QVERIFY(document);
        const QString path = document->GetIndexPath();
        QVERIFY(ReadAll(path).contains("<?xml-stylesheet type=\"text/xsl\" href=\"\"?>\n"));
        QCOMPARE(QDir(copyFolder).entryList(QDir::Files), QStringList{"INDEX_C.XML"});
        QVERIFY(QDir(copyFolder).removeRecursively());

        PutIndexFiles({});
        document = Open();
        QVERIFY(document);
        QCOMPARE(document->GetIndexPath(), QString());
        PutIndexFiles({{QStringLiteral("INDEX_C.XML"),
                        "<?xml version=\"1.0\"?>\n" + Doctype("constdata", "INDE_C05.DTD") +
                            "\n<constdata/>\n"}});
        QCOMPARE(document->GetIndexPath(), copyFolder + QStringLiteral("INDEX_C.XML"));
        QVERIFY(QDir(copyFolder).removeRecursively());
    }

    // The page shows the summary and every group; the transform expands no entity, reads no
    // other file, and a broken file is a one-line failure.
    void transform() {
        const QByteArray index = Cp932::FromUnicode(QString::fromUtf8(
            QByteArray("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n") +
            "<!DOCTYPE constdata SYSTEM \"INDE_C05.DTD\" [<!ENTITY secret SYSTEM \"" +
            QFile::encodeName(Path(QStringLiteral("secret.txt"))) + "\">]>\n" +
            "<constdata DTD_version=\"05\"><基礎情報><写真フォルダ名>PHOTO</写真フォルダ名>"
            "</基礎情報><工事件名等><工事名称>堤防補強 &amp; 護岸工事</工事名称>"
            "<工期開始日>2024-04-01</工期開始日><工期終了日>2025-03-31</工期終了日>"
            "<備考>&secret;</備考></工事件名等>"
            "<受注者情報><受注者名>緑川建設</受注者名></受注者情報></constdata>\n"));
        QVERIFY(WriteAll(Path(QStringLiteral("secret.txt")), "do not show"));
        PutIndexFiles({{QStringLiteral("INDEX_C.XML"), index}});
        std::unique_ptr<ToviData> document = Open();
        QVERIFY(document);
        const QString copy = document->GetIndexPath();
        QByteArray html;
        QString error;
        QVERIFY2(MibTransformXslt(copy, copyFolder + QStringLiteral("INDE_C05.XSL"), html, &error),
                 qPrintable(error));
        const QString page = QString::fromUtf8(html);
        for (const char* text : {"<title>工事管理ファイル</title>", "堤防補強 &amp; 護岸工事",
                                 "2024-04-01 ～ 2025-03-31", "緑川建設", "<h2>工事件名等</h2>",
                                 "<th>写真フォルダ名</th>"}) {
            QVERIFY2(page.contains(QString::fromUtf8(text)), text);
        }
        QVERIFY(!page.contains(QStringLiteral("do not show")));

        const QString reader = Path(QStringLiteral("reader.xsl"));
        QVERIFY(WriteAll(reader,
                         "<xsl:stylesheet version=\"1.0\" "
                         "xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">"
                         "<xsl:template match=\"/\"><xsl:copy-of select=\"document('" +
                             QFile::encodeName(Path(QStringLiteral("secret.txt"))) +
                             "')\"/></xsl:template></xsl:stylesheet>"));
        QVERIFY(!MibTransformXslt(copy, reader, html, &error) ||
                !html.contains("do not show"));
        QVERIFY(WriteAll(copy, "<constdata><unclosed></constdata>"));
        QVERIFY(!MibTransformXslt(copy, copyFolder + QStringLiteral("INDE_C05.XSL"), html, &error));
        QVERIFY(error.contains(copy));
        QVERIFY(QDir(copyFolder).removeRecursively());
        QVERIFY(QFile::remove(reader) && QFile::remove(Path(QStringLiteral("secret.txt"))));
    }

    // The command prints the three paths and writes the page.
    void command() {
        PutIndexFiles({{QStringLiteral("INDEX_C.XML"),
                        "<?xml version=\"1.0\"?>\n" + Doctype("constdata", "INDE_C05.DTD") +
                            "\n<constdata DTD_version=\"05\"><工事件名等><工事名称>橋梁補修"
                            "</工事名称></工事件名等></constdata>\n"}});
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), Path(QStringLiteral("home")));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), Path(QStringLiteral("home/config")));
        const QString html = Path(QStringLiteral("index.html"));
        const ProgramRun run = RunProgram(
            QCoreApplication::applicationDirPath() + QStringLiteral("/tovi"),
            {QStringLiteral("--profile"), Path(QStringLiteral("cli.ini")), QStringLiteral("index"),
             photoFolder, QStringLiteral("--json"), QStringLiteral("--html"), html},
            environment);
        QCOMPARE(run.exitCode, 0);
        const QJsonObject paths = QJsonDocument::fromJson(run.out).object();
        QCOMPARE(paths.value(QStringLiteral("indexPath")).toString(),
                 parent + QStringLiteral("INDEX_C.XML"));
        QVERIFY(paths.value(QStringLiteral("stylesheetPath"))
                    .toString()
                    .endsWith(QStringLiteral("/XSLPLATE/MLIT/INDE_C05.XSL")));
        QVERIFY(paths.value(QStringLiteral("copyPath")).toString().endsWith(
            QStringLiteral("/QV-SUITE/IndexCopy/INDEX_C.XML")));
        QVERIFY(QString::fromUtf8(ReadAll(html)).contains(QStringLiteral("橋梁補修")));
        QVERIFY(QDir(Path(QStringLiteral("home"))).removeRecursively());
    }
};

QTEST_MAIN(ToviIndexFilesTest)
#include "ToviIndexFilesTest.moc"
