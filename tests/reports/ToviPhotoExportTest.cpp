#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/LumImage.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"
#include "reports/ToviPhotoExport.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/WorkArea.h"

#include <QFile>
#include <QImageReader>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

using Export = ToviPhotoExport;

// Folder and file answers from queues, and what the file dialog proposed.
class ExportUi : public ScriptedUi {
public:
    QStringList folders;  // answers of the folder dialog in turn; cancelled when none is left
    QStringList folderStarts;
    QString saveAnswer;
    QStringList proposals;
    QStringList filters;
    bool BrowseForFolder(QWidget*, const QString&, QString& folder) override {
        folderStarts.append(folder);
        if (folders.isEmpty()) {
            return false;
        }
        folder = folders.takeFirst();
        return true;
    }
    QString GetSaveFileName(QWidget*, const QString&, const QString& proposed,
                            const QString& filter) override {
        proposals.append(proposed);
        filters.append(filter);
        return saveAnswer;
    }
};

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

class ToviPhotoExportTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    NoViews host;
    ExportUi ui;
    QString delivery;  // the photo folder, written afresh for every test
    std::unique_ptr<ToviData> document;

    QString Path(const QString& name) const { return temp.filePath(name); }

    // A delivery of count photographs with small JPEGs, the second photograph renamed to the
    // first's name when sameName; all of them in view, or none for a count of 0.
    void Open(int count, bool sameName = false) {
        document.reset();
        QDir(Path(QStringLiteral("d"))).removeRecursively();
        DeliveryOptions options;
        options.photoCount = std::max(count, 1);
        options.images = DeliveryOptions::Images::Tiny;
        options.drawingShare = 0;
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(Path(QStringLiteral("d")), options, &written, &error),
                 qPrintable(error));
        delivery = written.photoFolder;
        if (sameName) {
            QFile xml(delivery + QStringLiteral("/PHOTO.XML"));
            QVERIFY(xml.open(QIODevice::ReadWrite));
            QByteArray bytes = xml.readAll().replace("P0000002.JPG", "P0000001.JPG");
            xml.seek(0);
            xml.write(bytes);
        }
        ToviEnouDataFactory factory;
        document = factory.Create(&host, delivery, PhotoXMLMlit);
        QVERIFY(document);
        document->Load();
        document->BuildTreeNode(0);
        if (count == 0) {
            document->SetSelected(0);  // the OK label, pasted on nothing
        } else {
            document->SetSelected(document.get(), true);
        }
        QCOMPARE(document->GetCurrentPhotoCount(), count);
    }

    QString NameAt(int position) {
        return document->GetPhoto(position)->GetTitle(
            document->GetItemDef()->GetIndexFromTitle(QStringLiteral("写真ファイル名")));
    }

    QString Folder(const QString& name) {
        const QString folder = Path(name);
        QDir().mkpath(folder);
        return folder;
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(Path(QStringLiteral("profile.ini")));
        UseWorkFolder(temp.path());
    }
    void init() {
        ui = ExportUi();
        ToviUi::Install(&ui);
        SetOutputPhotoFolderPath(QString());
    }
    void cleanup() {
        ToviUi::Install(nullptr);
        document.reset();
        for (const QString& name : QDir(temp.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            if (name != QLatin1String("work")) {
                QDir(Path(name)).removeRecursively();
            }
        }
    }
    void cleanupTestCase() { ToviEnvironment::SetSettingsPathsForTesting(QString(), QString()); }

    // Every photograph of the view is copied byte for byte with its times and permissions;
    // the counts say what became of them.
    void outputAll_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("situation");
        QTest::addColumn<int>("copied");
        QTest::newRow("five") << 5 << "" << 5;
        QTest::newRow("none in view: the folder is still asked") << 0 << "" << 0;
        QTest::newRow("a source missing") << 4 << "missing" << 3;
        QTest::newRow("a read-only source") << 3 << "read-only" << 3;
        QTest::newRow("two of one name: both count, the second wins") << 3 << "same name" << 3;
    }
    void outputAll() {
        QFETCH(int, count);
        QFETCH(QString, situation);
        QFETCH(int, copied);
        Open(count, situation == QLatin1String("same name"));
        if (situation == QLatin1String("missing")) {
            QVERIFY(QFile::remove(document->GetPhoto(1)->GetImagePath()));
        } else if (situation == QLatin1String("read-only")) {
            QVERIFY(QFile::setPermissions(document->GetPhoto(0)->GetImagePath(),
                                          QFile::ReadOwner | QFile::ReadGroup));
        }
        const QString out = Folder(QStringLiteral("out"));
        ui.folders = QStringList{out};
        const Export::Counts counts = Export(*document).OutputAllPhoto();
        QVERIFY(counts.done);
        QCOMPARE(counts.count, count);
        QCOMPARE(counts.copied, copied);
        QCOMPARE(counts.failed, count - copied);
        QCOMPARE(ui.Questions().size(), 1);
        QCOMPARE(ui.Questions()[0].text, Export::DoneMessage(count, copied, count - copied));
        QCOMPARE(GetOutputPhotoFolder(), out);
        for (int i = 0; i < count; ++i) {
            ToviPhoto* photo = document->GetPhoto(i);
            const QString source = photo->GetImagePath();
            const QString target = out + QLatin1Char('/') + NameAt(i);
            if (!QFileInfo::exists(source)) {
                QVERIFY(!QFileInfo::exists(target));
                continue;
            }
            if (situation == QLatin1String("same name") && i == 0) {
                continue;  // overwritten by the second
            }
            QCOMPARE(ReadAll(target), ReadAll(source));
            const QFileInfo from(source);
            const QFileInfo to(target);
            QCOMPARE(to.lastModified(), from.lastModified());
            QCOMPARE(to.permissions(), from.permissions());
        }
        if (situation == QLatin1String("same name")) {
            QCOMPARE(ReadAll(out + QStringLiteral("/P0000001.JPG")),
                     ReadAll(document->GetPhoto(1)->GetImagePath()));
        }
    }

    // A folder holding a file named like one of the photographs is refused, with nothing
    // copied into it, and the dialog comes back there; a cancel then ends with no message.
    void conflicts() {
        Open(4);
        const QString taken = Folder(QStringLiteral("taken"));
        QFile planted(taken + QLatin1Char('/') + NameAt(2));
        QVERIFY(planted.open(QIODevice::WriteOnly));
        planted.close();
        const QString free = Folder(QStringLiteral("free"));
        ui.folders = QStringList{taken, free};
        Export::Counts counts = Export(*document).OutputAllPhoto();
        QVERIFY(counts.done);
        QCOMPARE(counts.copied, 4);
        QCOMPARE(QDir(taken).entryList(QDir::Files).size(), 1);
        QCOMPARE(QDir(free).entryList(QDir::Files).size(), 4);
        QCOMPARE(ui.folderStarts, (QStringList{QString(), taken}));
        QCOMPARE(ui.Questions()[0].text, Export::ConflictMessage_);

        ui = ExportUi();
        ui.folders = QStringList{taken};
        counts = Export(*document).OutputAllPhoto();
        QVERIFY(!counts.done);
        QCOMPARE(counts.copied, 0);
        QCOMPARE(ui.folderStarts, (QStringList{free, taken}));
        QCOMPARE(ui.Questions().size(), 1);  // the conflict; no final message
    }

    // The target of each photograph is made from the one before by replacing the previous name
    // everywhere in the path, so a folder named after a photograph sends the others elsewhere.
    void namesReplacedThroughTheWholePath() {
        Open(2);
        const QString odd = Folder(QStringLiteral("in-") + NameAt(0));
        const QString other = Folder(QStringLiteral("in-") + NameAt(1));
        ui.folders = QStringList{odd};
        const Export::Counts counts = Export(*document).OutputAllPhoto();
        QCOMPARE(counts.copied, 2);
        QVERIFY(QFileInfo::exists(odd + QLatin1Char('/') + NameAt(0)));
        QVERIFY(QFileInfo::exists(other + QLatin1Char('/') + NameAt(1)));
        QVERIFY(!QFileInfo::exists(odd + QLatin1Char('/') + NameAt(1)));
    }

    // The save button: slide mode refuses, one photograph goes through the file dialog (the
    // name proposed in the last output folder, the filter by extension), and the folder of the
    // chosen path is kept whether the copy worked or not.
    void outputOne() {
        Open(1);
        Export(*document).OutputPhotos(true);
        QCOMPARE(ui.Questions().size(), 1);
        QCOMPARE(ui.Questions()[0].text, Export::SlideModeMessage_);
        QVERIFY(ui.proposals.isEmpty());

        const QString out = Folder(QStringLiteral("one"));
        SetOutputPhotoFolderPath(out);
        ui.saveAnswer = out + QStringLiteral("/chosen.jpg");
        Export(*document).OutputPhotos(false);
        QCOMPARE(ui.folderStarts.size(), 0);
        QCOMPARE(ui.proposals, QStringList{out + QLatin1Char('/') + NameAt(0)});
        QCOMPARE(ui.filters, QStringList{QStringLiteral("JPEG(*.JPG *.jpg)")});
        QCOMPARE(ui.Questions().last().text, Export::SavedMessage_);
        QCOMPARE(ReadAll(ui.saveAnswer), ReadAll(document->GetPhoto(0)->GetImagePath()));

        ui.saveAnswer = Path(QStringLiteral("gone/x.jpg"));
        QVERIFY(!Export(*document).OutputOnePhoto());
        QCOMPARE(ui.Questions().last().text, Export::SaveFailedMessage_);
        QCOMPARE(int(ui.Questions().last().icon), int(ToviUi::IconError));
        QCOMPARE(GetOutputPhotoFolder(), Path(QStringLiteral("gone")));
    }

    // From a correction window: a changed picture on show asks whether to save the change
    // (a JPEG without Exif) or the delivered file; an unchanged one is copied without asking.
    void fromCorrection_data() {
        QTest::addColumn<bool>("changed");
        QTest::addColumn<int>("choice");  // -1 dialog cancelled, 0 original, 1 corrected
        QTest::addColumn<QString>("saved");  // "copy", "corrected" or ""
        QTest::newRow("unchanged: copied") << false << 1 << "copy";
        QTest::newRow("changed, the change saved") << true << 1 << "corrected";
        QTest::newRow("changed, the original saved") << true << 0 << "copy";
        QTest::newRow("changed, choice cancelled") << true << -1 << "";
    }
    void fromCorrection() {
        QFETCH(bool, changed);
        QFETCH(int, choice);
        QFETCH(QString, saved);
        Open(1);
        ToviPhoto* photo = document->GetPhoto(0);
        LumImage corrected;
        QVERIFY(corrected.Load(photo->GetImagePath()));
        if (choice >= 0) {
            ui.QueueDialog(true, {{Export::WorkedModeField_, choice == 1}});
        } else {
            ui.QueueDialog(false);
        }
        ui.saveAnswer = Folder(QStringLiteral("c")) + QStringLiteral("/saved.jpg");
        const bool done = Export(*document).SaveFromCorrection(photo, corrected, changed, true,
                                                               false, true);
        QCOMPARE(done, !saved.isEmpty());
        QCOMPARE(ui.DialogNames().size(), changed ? 1 : 0);
        if (changed) {
            QCOMPARE(ui.DialogNames()[0], Export::ChoiceDialogName_);
        }
        const QByteArray out = ReadAll(ui.saveAnswer);
        QCOMPARE(out.isEmpty(), saved.isEmpty());
        if (saved == QLatin1String("copy")) {
            QCOMPARE(out, ReadAll(photo->GetImagePath()));
        } else if (saved == QLatin1String("corrected")) {
            QVERIFY(out != ReadAll(photo->GetImagePath()));
            QCOMPARE(QImageReader(ui.saveAnswer).size(), corrected.Image().size());
        }

        ui = ExportUi();
        QVERIFY(!Export(*document).SaveFromCorrection(nullptr, corrected, changed, true, false,
                                                      true));
        QCOMPARE(ui.Questions().size(), 1);
        QCOMPARE(ui.Questions()[0].text, Export::NothingToSaveMessage_);
    }

    // An SVG drawing's thumbnail (at most 128 x 128) and its HTML page are made once in the
    // viewer's work folder and used as they stand afterwards.
    void svgConversions() {
        const QString svg = Path(QStringLiteral("図面.svg"));
        QFile file(svg);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"400\" height=\"200\">"
                   "<rect width=\"400\" height=\"200\" fill=\"#36c\"/></svg>");
        file.close();
        QVERIFY(QDir().mkpath(ToviEnvironment::SuiteFolder()));

        QString thumb;
        QVERIFY(ToviSvgThumbnail(svg, thumb));
        QCOMPARE(QFileInfo(thumb).fileName(), QStringLiteral("図面_thumb.jpg"));
        QCOMPARE(QFileInfo(thumb).dir().dirName(), QStringLiteral("QVフォトビューアー"));
        QCOMPARE(QImageReader(thumb).size(), QSize(128, 64));
        QVERIFY(QFile::remove(thumb));
        QVERIFY(QDir().mkdir(thumb));  // an empty folder in the way goes
        QVERIFY(ToviSvgThumbnail(svg, thumb));
        QVERIFY(QFileInfo(thumb).isFile());
        QFile earlier(thumb);
        QVERIFY(earlier.open(QIODevice::WriteOnly));  // a file of an earlier time is kept
        earlier.write("earlier");
        earlier.close();
        QVERIFY(ToviSvgThumbnail(svg, thumb));
        QCOMPARE(ReadAll(thumb), QByteArray("earlier"));

        QString html;
        QVERIFY(ToviSvgToHtml(svg, html));
        QCOMPARE(QFileInfo(html).fileName(), QStringLiteral("図面.htm"));
        const QString page = QString::fromUtf8(ReadAll(html));
        QVERIFY(page.contains(QUrl::fromLocalFile(svg).toString(QUrl::FullyEncoded)));
        QVERIFY(page.contains(QStringLiteral("<title>図面</title>")));

        QString none;
        QVERIFY(!ToviSvgThumbnail(Path(QStringLiteral("missing.svg")), none));
        QVERIFY(!ToviSvgToHtml(Path(QStringLiteral("missing.svg")), none));
        QVERIFY(QDir(ToviEnvironment::SuiteFolder()).removeRecursively());
        QVERIFY(QFile::remove(svg));
    }

    // The command copies what is on show and prints the counts; a folder with a name taken
    // exits 1 with nothing copied.
    void command() {
        Open(3);
        document.reset();
        const QString tovi = QCoreApplication::applicationDirPath() + QStringLiteral("/tovi");
        const QString out = Folder(QStringLiteral("cli"));
        const QStringList args{QStringLiteral("--profile"), Path(QStringLiteral("cli.ini")),
                               QStringLiteral("export"), delivery, QStringLiteral("--out"),
                               out, QStringLiteral("--json")};
        ProgramRun run = RunProgram(tovi, args);
        QCOMPARE(run.exitCode, 0);
        const QJsonObject counts = QJsonDocument::fromJson(run.out).object();
        QCOMPARE(counts.value(QStringLiteral("count")).toInt(), 3);
        QCOMPARE(counts.value(QStringLiteral("copied")).toInt(), 3);
        QCOMPARE(counts.value(QStringLiteral("failed")).toInt(-1), 0);
        run = RunProgram(tovi, args);
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.err.trimmed(), Export::ConflictMessage_);
        QCOMPARE(QDir(out).entryList(QDir::Files).size(), 3);
    }
};

QTEST_MAIN(ToviPhotoExportTest)
#include "ToviPhotoExportTest.moc"
