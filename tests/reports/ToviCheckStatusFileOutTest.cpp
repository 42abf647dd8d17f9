#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/MibSheet.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"
#include "reports/ToviCheckStatusFileOut.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/WorkArea.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

using Report = ToviCheckStatusFileOut;

// The file dialog's answer and the files the desktop was asked to open.
class ReportUi : public ScriptedUi {
public:
    QString saveAnswer;
    QStringList opened;
    QString GetSaveFileName(QWidget*, const QString&, const QString&, const QString&) override {
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

class ToviCheckStatusFileOutTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QMap<int, QString> deliveries;  // photograph count -> photo folder
    ReportUi ui;
    NoViews host;

    QString Path(const QString& name) const { return temp.filePath(name); }

    // A delivery of count photographs, written once per count.
    QString Delivery(int count) {
        if (!deliveries.contains(count)) {
            DeliveryOptions options;
            options.photoCount = count;
            options.images = DeliveryOptions::Images::None;
            options.optionalShare = 1.0;
            WrittenDelivery written;
            QString error;
            if (!WriteDelivery(Path(QStringLiteral("d%1").arg(count)), options, &written,
                               &error)) {
                qWarning("%s", qPrintable(error));
                return QString();
            }
            deliveries.insert(count, written.photoFolder);
        }
        return deliveries.value(count);
    }

    // The delivery opened with every photograph in view, in the tree's order; none in view for
    // a count of 0.
    std::unique_ptr<ToviData> Open(int count) {
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> document =
            factory.Create(&host, Delivery(std::max(count, 1)), PhotoXMLMlit);
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

    QString Serial(ToviData& document, int position) {
        return document.GetPhoto(position)->GetTitle(
            document.GetItemDef()->GetIndexFromTitle(QStringLiteral("シリアル番号")));
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(Path(QStringLiteral("profile.ini")));
        UseWorkFolder(temp.path());
    }
    void init() {
        ui = ReportUi();
        ToviUi::Install(&ui);
    }
    void cleanup() {
        ToviUi::Install(nullptr);
        QVERIFY(!QFileInfo::exists(Report::WorkFolder()));
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
        if (count == 32) {
            QCOMPARE(cells.value(QStringLiteral("A34")), Serial(*document, 31));
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
        QFile::remove(out);
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
        QFile::remove(out);
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

        QCOMPARE(document->FileOutCheckStatus(QStringLiteral("検査結果出力")), written);
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
        QVERIFY(QDir(Path(QStringLiteral("out"))).removeRecursively());
    }

    // The command writes the report of the chosen photographs with their record, and a report
    // that cannot be written leaves the old file, says why and exits 1.
    void command() {
        const QString folder = Delivery(62);
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
        QVERIFY(QDir(Path(QStringLiteral("home"))).removeRecursively());
    }
};

QTEST_MAIN(ToviCheckStatusFileOutTest)
#include "ToviCheckStatusFileOutTest.moc"
