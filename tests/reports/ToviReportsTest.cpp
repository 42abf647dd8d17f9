#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/LumImage.h"
#include "platform/MibSheet.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"
#include "reports/ToviCheckStatusFileOut.h"
#include "reports/ToviPhotoExport.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/WorkArea.h"

#include <QFile>
#include <QImageReader>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

using Report = ToviCheckStatusFileOut;
using Export = ToviPhotoExport;

// Folder and file answers from queues, what the file dialog proposed, and the files the
// desktop was asked to open.
class ReportsUi : public ScriptedUi {
public:
    QStringList folders;  // answers of the folder dialog in turn; cancelled when none is left
    QStringList folderStarts;
    QString saveAnswer;
    QStringList proposals;
    QStringList filters;
    QStringList opened;
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
    void OpenWithDefaultApplication(const QString& path) override { opened.append(path); }
};

// The cells of a written report by reference ("A2"), unescaped; a bordered empty cell is "".
QMap<QString, QString> Cells(const QByteArray& sheetXml) {
    static const QRegularExpression kCell(QStringLiteral(
        R"re(<c r="([A-Z]+\d+)"[^>]*?(?:/>|>(?:<is><t[^>]*>(.*?)</t></is>)?</c>))re"));
    QMap<QString, QString> cells;
    const QString xml = QString::fromUtf8(sheetXml);
    for (auto it = kCell.globalMatch(xml); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        QString text = m.captured(2);
        text.replace(QStringLiteral("&lt;"), QStringLiteral("<"))
            .replace(QStringLiteral("&gt;"), QStringLiteral(">"))
            .replace(QStringLiteral("&quot;"), QStringLiteral("\""))
            .replace(QStringLiteral("&amp;"), QStringLiteral("&"));
        cells.insert(m.captured(1), text);
    }
    return cells;
}

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

class ToviReportsTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    ReportsUi ui;
    NoViews host;
    QString delivery;  // the photo folder of the last delivery opened

    QString Path(const QString& name) const { return temp.filePath(name); }

    QString Folder(const QString& name) {
        const QString folder = Path(name);
        QDir().mkpath(folder);
        return folder;
    }

    // A delivery of count photographs written afresh, with small JPEGs when images, the second
    // photograph renamed to the first's name when sameName; opened with every photograph in
    // view in the tree's order, none for a count of 0.
    std::unique_ptr<ToviData> Open(int count, bool images = false, bool sameName = false) {
        QDir(Path(QStringLiteral("d"))).removeRecursively();
        DeliveryOptions options;
        options.photoCount = std::max(count, 1);
        options.images = images ? DeliveryOptions::Images::Tiny : DeliveryOptions::Images::None;
        options.drawingShare = 0;
        options.optionalShare = 1.0;
        WrittenDelivery written;
        QString error;
        if (!WriteDelivery(Path(QStringLiteral("d")), options, &written, &error)) {
            qWarning("%s", qPrintable(error));
            return nullptr;
        }
        delivery = written.photoFolder;
        if (sameName) {
            QFile xml(delivery + QStringLiteral("/PHOTO.XML"));
            if (!xml.open(QIODevice::ReadWrite)) {
                return nullptr;
            }
            const QByteArray bytes = xml.readAll().replace("P0000002.JPG", "P0000001.JPG");
            xml.seek(0);
            xml.write(bytes);
        }
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> document = factory.Create(&host, delivery, PhotoXMLMlit);
        if (document) {
            document->Load();
            document->BuildTreeNode(0);
            if (count == 0) {
                document->SetSelected(0);  // the OK label, pasted on nothing
            } else {
                document->SetSelected(document.get(), true);
            }
        }
        return document;
    }

    static QString TitleAt(ToviData& document, int position, const QString& title) {
        return document.GetPhoto(position)->GetTitle(
            document.GetItemDef()->GetIndexFromTitle(title));
    }
    static QString Serial(ToviData& document, int position) {
        return TitleAt(document, position, QStringLiteral("シリアル番号"));
    }
    static QString NameAt(ToviData& document, int position) {
        return TitleAt(document, position, QStringLiteral("写真ファイル名"));
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(Path(QStringLiteral("profile.ini")));
        UseWorkFolder(temp.path());
    }
    void init() {
        ui = ReportsUi();
        ToviUi::Install(&ui);
        SetOutputPhotoFolderPath(QString());
    }
    void cleanup() {
        ToviUi::Install(nullptr);
        QVERIFY(!QFileInfo::exists(Report::WorkFolder()));
        for (const QString& name : QDir(temp.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            if (name != QLatin1String("work")) {
                QDir(Path(name)).removeRecursively();
            }
        }
    }
    void cleanupTestCase() { ToviEnvironment::SetSettingsPathsForTesting(QString(), QString()); }

    // Page blocks of 32 rows: a header row and 31 photographs, one more block than full ones
    // even when it stays empty; manual breaks between blocks, the print area over all of them,
    // and the sheet opening in page-break view.
    void pages_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("blocks");
        QTest::newRow("none") << 0 << 1;
        QTest::newRow("one full block") << 31 << 2;
        QTest::newRow("one into the second") << 32 << 2;
        QTest::newRow("two full blocks") << 62 << 3;
    }
    void pages() {
        QFETCH(int, count);
        QFETCH(int, blocks);
        QCOMPARE(Report::PageSizes(count).size(), blocks);
        std::unique_ptr<ToviData> document = Open(count);
        QVERIFY(document);
        QCOMPARE(document->GetCurrentPhotoCount(), count);
        const QString out = Path(QStringLiteral("pages.xlsx"));
        Report report(*document, *document->GetLabelManager());
        QCOMPARE(report.Write(QStringLiteral("検査"), out), Report::Written);

        QByteArray sheet;
        QVERIFY(MibReadZipEntry(out, QStringLiteral("xl/worksheets/sheet1.xml"), sheet));
        const QMap<QString, QString> cells = Cells(sheet);
        QCOMPARE(cells.size(), blocks * 32 * 5);  // every cell of the form has its border
        for (int row = 1; row <= blocks * 32; ++row) {
            const bool header = (row - 1) % 32 == 0;
            QCOMPARE(cells.value(QStringLiteral("A%1").arg(row)) == QStringLiteral("シリアル番号"),
                     header);
        }
        for (int k = 0; k < count; ++k) {
            const int row = 2 + 32 * (k / 31) + k % 31;
            QCOMPARE(cells.value(QStringLiteral("A%1").arg(row)), Serial(*document, k));
        }
        QString breaks;
        for (int b = 1; b < blocks; ++b) {
            breaks += QStringLiteral("<brk id=\"%1\" max=\"16383\" man=\"1\"/>").arg(b * 32);
        }
        QCOMPARE(sheet.contains("<rowBreaks"), blocks > 1);
        QVERIFY(QString::fromUtf8(sheet).contains(breaks));
        QVERIFY(sheet.contains("view=\"pageBreakPreview\""));
        QVERIFY(sheet.contains("paperSize=\"9\""));
        QVERIFY(sheet.contains("orientation=\"portrait\""));
        QVERIFY(sheet.contains("<pageSetUpPr fitToPage=\"1\"/>"));
        QVERIFY(sheet.contains("fitToHeight=\"0\""));
        QByteArray workbook;
        QVERIFY(MibReadZipEntry(out, QStringLiteral("xl/workbook.xml"), workbook));
        QVERIFY2(workbook.contains(QStringLiteral("$A$1:$E$%1<").arg(blocks * 32).toUtf8()),
                 workbook.constData());
    }

    // Column B follows the title setting, D the result with OK first, E the NG labels' names
    // as they were at the start and the comment, joined by "、".
    void columns_data() {
        QTest::addColumn<QString>("labels");
        QTest::addColumn<QString>("comment");
        QTest::addColumn<int>("titleShowType");
        QTest::addColumn<QString>("result");
        QTest::addColumn<QString>("findings");
        QTest::addColumn<QString>("nameTitle");  // the item shown in B; empty for none
        QTest::newRow("NG1 NG3 and a comment")
            << "1,3" << "X" << 2 << "ＮＧ" << "ぼけ、向き、X" << "写真タイトル";
        QTest::newRow("OK and a comment") << "0" << "良好" << 0 << "ＯＫ" << "良好"
                                          << "写真ファイル名";
        QTest::newRow("OK beats NG") << "0,2" << "" << 1 << "ＯＫ" << "傾き"
                                     << "写真ファイル日本語名";
        QTest::newRow("nothing pasted") << "" << "" << 2 << "未検査" << "" << "写真タイトル";
        QTest::newRow("comment to escape") << "4" << "<a & b>\"" << 7 << "未検査" << "<a & b>\""
                                           << "";
    }
    void columns() {
        QFETCH(QString, labels);
        QFETCH(QString, comment);
        QFETCH(int, titleShowType);
        QFETCH(QString, result);
        QFETCH(QString, findings);
        QFETCH(QString, nameTitle);
        std::unique_ptr<ToviData> document = Open(3);
        QVERIFY(document);
        ToviLabelManager& manager = *document->GetLabelManager();
        manager.GetLabelAttribute(1).SetName(QStringLiteral("ぼけ"));
        manager.GetLabelAttribute(2).SetName(QStringLiteral("傾き"));
        manager.GetLabelAttribute(3).SetName(QStringLiteral("向き"));
        ToviPhoto* photo = document->GetPhoto(0);
        for (const QString& label : labels.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            photo->PasteLabel(label.toUInt());
        }
        photo->SetComment(comment);
        ToviPhotoCtrlVisualSetting setting = document->GetVisualSetting();
        setting.SetTitleShowType(static_cast<ToviPhotoCtrlVisualSetting::TitleShowType>(titleShowType));
        document->SetVisualSetting(setting, false);

        const QString out = Path(QStringLiteral("columns.xlsx"));
        Report report(*document, manager);
        QCOMPARE(report.Write(QStringLiteral("検査"), out), Report::Written);
        QByteArray sheet;
        QVERIFY(MibReadZipEntry(out, QStringLiteral("xl/worksheets/sheet1.xml"), sheet));
        const QMap<QString, QString> cells = Cells(sheet);
        const ToviItemDef& def = *document->GetItemDef();
        QCOMPARE(cells.value(QStringLiteral("A2")), Serial(*document, 0));
        QCOMPARE(cells.value(QStringLiteral("B2")),
                 nameTitle.isEmpty() ? QString() : photo->GetTitle(def.GetIndexFromTitle(nameTitle)));
        QVERIFY(!nameTitle.isEmpty() || cells.value(QStringLiteral("B1")) == QStringLiteral("写真"));
        QVERIFY(nameTitle.isEmpty() || cells.value(QStringLiteral("B1")) == nameTitle);
        QCOMPARE(cells.value(QStringLiteral("C2")),
                 photo->GetTitle(def.GetIndexFromTitle(QStringLiteral("撮影箇所"))));
        QCOMPARE(cells.value(QStringLiteral("D2")), result);
        QCOMPARE(cells.value(QStringLiteral("E2")), findings);
        QCOMPARE(cells.value(QStringLiteral("D3")), QStringLiteral("未検査"));
    }

    // The front step's outcomes: the message and its icon, whether the desktop opens the file,
    // and an existing output replaced only by a complete report.
    void outcomes_data() {
        QTest::addColumn<QString>("situation");
        QTest::addColumn<bool>("written");
        QTest::addColumn<QString>("message");  // empty: no message box
        QTest::addColumn<int>("icon");
        const int info = ToviUi::IconInformation;
        QTest::newRow("written over an old file")
            << "old" << true << Report::WrittenMessage_ << info;
        QTest::newRow("written, a stale work folder cleared")
            << "stale" << true << Report::WrittenMessage_ << info;
        QTest::newRow("file dialog cancelled") << "no name" << false << "" << 0;
        QTest::newRow("output read-only") << "read-only" << false << Report::FailedMessage_
                                          << int(ToviUi::IconWarning);
        QTest::newRow("output open in an office program")
            << "locked" << false << Report::FailedMessage_ << int(ToviUi::IconWarning);
        QTest::newRow("folder missing") << "no folder" << false << Report::FailedMessage_
                                        << int(ToviUi::IconWarning);
        QTest::newRow("cancelled in the progress window")
            << "cancel" << false << Report::CancelledMessage_ << info;
    }
    void outcomes() {
        QFETCH(QString, situation);
        QFETCH(bool, written);
        QFETCH(QString, message);
        QFETCH(int, icon);
        std::unique_ptr<ToviData> document = Open(62);
        QVERIFY(document);
        QDir(Path(QStringLiteral("out"))).removeRecursively();
        QVERIFY(QDir().mkpath(Path(QStringLiteral("out"))));
        const QString out = Path(QStringLiteral("out/検査結果.xlsx"));
        const QByteArray old("an older report");
        QFile file(out);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(old) == old.size());
        file.close();
        ui.saveAnswer = out;
        if (situation == QLatin1String("no name")) {
            ui.saveAnswer.clear();
        } else if (situation == QLatin1String("read-only")) {
            QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::ReadGroup));
        } else if (situation == QLatin1String("locked")) {
            QFile lock(Path(QStringLiteral("out/.~lock.検査結果.xlsx#")));
            QVERIFY(lock.open(QIODevice::WriteOnly));
        } else if (situation == QLatin1String("no folder")) {
            ui.saveAnswer = Path(QStringLiteral("gone/検査結果.xlsx"));
        } else if (situation == QLatin1String("cancel")) {
            ui.PressCancelAtPump(1);
        } else if (situation == QLatin1String("stale")) {
            QVERIFY(QDir().mkpath(Report::WorkFolder()));
            QFile stale(Report::WorkFolder() + QStringLiteral("/CHKPHOTO.xlsx"));
            QVERIFY(stale.open(QIODevice::WriteOnly));
        }

        QCOMPARE(
            Report(*document, *document->GetLabelManager()).FileOut(QStringLiteral("検査結果出力")),
            written);
        QCOMPARE(ui.Questions().size(), message.isEmpty() ? 0 : 1);
        if (!message.isEmpty()) {
            QCOMPARE(ui.Questions()[0].text, message);
            QCOMPARE(ui.Questions()[0].caption, QStringLiteral("検査結果出力"));
            QCOMPARE(int(ui.Questions()[0].icon), icon);
        }
        QCOMPARE(ui.opened, written ? QStringList{out} : QStringList());
        QByteArray sheet;
        QCOMPARE(MibReadZipEntry(out, QStringLiteral("xl/worksheets/sheet1.xml"), sheet), written);
        if (!written) {
            QCOMPARE(ReadAll(out), old);
        }
        QFile::setPermissions(out, QFile::ReadOwner | QFile::WriteOwner);
    }

    // The command writes the report of the chosen photographs with their record, and a report
    // that cannot be written leaves the old file, says why and exits 1.
    void reportCommand() {
        QVERIFY(Open(62));
        const QString folder = delivery;
        const QString tovi = QCoreApplication::applicationDirPath() + QStringLiteral("/tovi");
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), Path(QStringLiteral("home")));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), Path(QStringLiteral("home/config")));
        const QString record = Path(QStringLiteral("record.xml"));
        const QString out = Path(QStringLiteral("command.xlsx"));
        const QStringList profile{QStringLiteral("--profile"), Path(QStringLiteral("cli.ini"))};
        QCOMPARE(RunProgram(tovi, profile + QStringList{QStringLiteral("label"), folder,
                                                        QStringLiteral("--record"), record,
                                                        QStringLiteral("--paste"),
                                                        QStringLiteral("5:2")},
                            environment)
                     .exitCode,
                 0);
        const QStringList report = profile + QStringList{QStringLiteral("report"), folder,
                                                         QStringLiteral("--out"), out,
                                                         QStringLiteral("--record"), record,
                                                         QStringLiteral("--label"),
                                                         QStringLiteral("2")};
        ProgramRun run = RunProgram(tovi, report, environment);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.err.trimmed(), Report::WrittenMessage_);
        QByteArray sheet;
        QVERIFY(MibReadZipEntry(out, QStringLiteral("xl/worksheets/sheet1.xml"), sheet));
        const QMap<QString, QString> cells = Cells(sheet);
        QCOMPARE(cells.value(QStringLiteral("D2")), QStringLiteral("ＮＧ"));
        QCOMPARE(cells.value(QStringLiteral("A3")), QString());  // only the one photograph

        QFile lock(Path(QStringLiteral(".~lock.command.xlsx#")));
        QVERIFY(lock.open(QIODevice::WriteOnly));
        const QByteArray before = ReadAll(out);
        run = RunProgram(tovi, report, environment);
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.err.trimmed(), Report::FailedMessage_);
        QCOMPARE(ReadAll(out), before);
        QVERIFY(lock.remove());
    }
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
        std::unique_ptr<ToviData> document =
            Open(count, true, situation == QLatin1String("same name"));
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
            const QString target = out + QLatin1Char('/') + NameAt(*document, i);
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
        std::unique_ptr<ToviData> document = Open(4, true);
        const QString taken = Folder(QStringLiteral("taken"));
        QFile planted(taken + QLatin1Char('/') + NameAt(*document, 2));
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

        ui = ReportsUi();
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
        std::unique_ptr<ToviData> document = Open(2, true);
        const QString odd = Folder(QStringLiteral("in-") + NameAt(*document, 0));
        const QString other = Folder(QStringLiteral("in-") + NameAt(*document, 1));
        ui.folders = QStringList{odd};
        const Export::Counts counts = Export(*document).OutputAllPhoto();
        QCOMPARE(counts.copied, 2);
        QVERIFY(QFileInfo::exists(odd + QLatin1Char('/') + NameAt(*document, 0)));
        QVERIFY(QFileInfo::exists(other + QLatin1Char('/') + NameAt(*document, 1)));
        QVERIFY(!QFileInfo::exists(odd + QLatin1Char('/') + NameAt(*document, 1)));
    }

    // The save button: slide mode refuses, one photograph goes through the file dialog (the
    // name proposed in the last output folder, the filter by extension), and the folder of the
    // chosen path is kept whether the copy worked or not.
    void outputOne() {
        std::unique_ptr<ToviData> document = Open(1, true);
        Export(*document).OutputPhotos(true);
        QCOMPARE(ui.Questions().size(), 1);
        QCOMPARE(ui.Questions()[0].text, Export::SlideModeMessage_);
        QVERIFY(ui.proposals.isEmpty());

        const QString out = Folder(QStringLiteral("one"));
        SetOutputPhotoFolderPath(out);
        ui.saveAnswer = out + QStringLiteral("/chosen.jpg");
        Export(*document).OutputPhotos(false);
        QCOMPARE(ui.folderStarts.size(), 0);
        QCOMPARE(ui.proposals, QStringList{out + QLatin1Char('/') + NameAt(*document, 0)});
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
        std::unique_ptr<ToviData> document = Open(1, true);
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

        ui = ReportsUi();
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
    void exportCommand() {
        Open(3, true);
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

QTEST_MAIN(ToviReportsTest)
#include "ToviReportsTest.moc"
