#include "app/ToviMainWindow.h"
#include "app/ToviViewerDocument.h"
#include "dialogs/ToviMultiDlg.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "panels/ToviFolderTreePanel.h"
#include "panels/ToviLabelTreePanel.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviNamePlate.h"
#include "panels/ToviPhotoListCtrl.h"
#include "panels/ToviPanelWindows.h"
#include "panels/ToviSpiCtrl.h"
#include "panels/ToviZoomDialogs.h"
#include "platform/ToviProfile.h"
#include "review/ToviXmlManager.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/TreeItemPoint.h"
#include "tests/support/WorkArea.h"

#include <QLabel>
#include <QStatusBar>
#include <QActionGroup>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QMenuBar>
#include <QProcess>
#include <QSet>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

namespace {

// Records what reaches a panel: hints, and attach and detach with the document held.
class RecordingPanel : public ToviPanel {
public:
    QStringList events;
    void OnPostAttachData() override {
        events.append(data ? QStringLiteral("attach") : QStringLiteral("detached"));
    }
    void OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object) override {
        events.append(QStringLiteral("hint%1").arg(hint));
        ToviPanel::OnUpdate(sender, hint, object);
    }
};

QAction* FindAction(QWidget* window, const QString& textStart) {
    for (QAction* a : window->findChildren<QAction*>()) {
        if (a->text().startsWith(textStart)) {
            return a;
        }
    }
    return nullptr;
}

}  // namespace

class ToviViewerTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QString pictures;  // 60 photographs with small JPEGs
    QString other;     // 7 photographs, no image files
    ScriptedUiSlot ui;

    QString Path(const QString& name) const { return temp.filePath(name); }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        UseTestStores(temp.path());
        DeliveryOptions options;
        options.photoCount = 60;
        options.images = DeliveryOptions::Images::Tiny;
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(Path(QStringLiteral("d")), options, &written, &error),
                 qPrintable(error));
        pictures = written.photoFolder;
        options.photoCount = 7;
        options.images = DeliveryOptions::Images::None;
        QVERIFY(WriteDelivery(Path(QStringLiteral("o")), options, &written, &error));
        other = written.photoFolder;
        QDir().mkpath(Path(QStringLiteral("plain")));
        QDir().mkpath(Path(QStringLiteral("unknown")));
        QFile xml(Path(QStringLiteral("unknown/PHOTO.XML")));
        QVERIFY(xml.open(QIODevice::WriteOnly));
        xml.write("<?xml version=\"1.0\"?>\n<!DOCTYPE 写真 SYSTEM \"NONE.DTD\">\n<写真/>\n");
    }

    void init() { ui.Begin(); }

    void cleanup() { ui.End(); }

    void cleanupTestCase() {
        ReleaseTestStores();
        ToviEnvironment::SetMountTableForTesting(QString());
    }

    // The start sequence attaches and then sends hint 0; a second delivery stops the first
    // (hint 9, detach) only once it has been read; the stop leaves every panel detached.
    void startAndStop() {
        ToviViewerDocument document;
        RecordingPanel panel;
        document.AddPanel(&panel);
        QCOMPARE(document.Open(pictures, PhotoXMLMlit, nullptr), ToviViewerDocument::Opened);
        QCOMPARE(panel.events, QStringList({QStringLiteral("attach"), QStringLiteral("hint0")}));
        QCOMPARE(panel.GetData(), document.Data());
        // The delivery's top folder stands for its PHOTO folder.
        panel.events.clear();
        QCOMPARE(document.Open(QFileInfo(other).absolutePath(), PhotoXMLMlit, nullptr),
                 ToviViewerDocument::Opened);
        QCOMPARE(document.Data()->GetTotalCountPhoto(), 7);
        QCOMPARE(panel.events.mid(0, 2),
                 QStringList({QStringLiteral("hint9"), QStringLiteral("detached")}));
        QCOMPARE(panel.events.mid(panel.events.size() - 2),
                 QStringList({QStringLiteral("attach"), QStringLiteral("hint0")}));
        panel.events.clear();
        document.Close();
        QCOMPARE(panel.events.first(), QStringLiteral("hint9"));
        QCOMPARE(panel.GetData(), nullptr);
        QVERIFY(!document.IsOpen());
    }

    // A disc is read from the work area the combine copied it to, which goes with the
    // delivery; a work area that was there before the open is not the viewer's to remove.
    void workArea() {
        DeliveryOptions options;
        options.photoCount = 3;
        options.images = DeliveryOptions::Images::Tiny;
        WrittenDelivery disc;
        QString error;
        QVERIFY(WriteDelivery(Path(QStringLiteral("disc")), options, &disc, &error));
        QFile table(Path(QStringLiteral("mounts")));
        QVERIFY(table.open(QIODevice::WriteOnly));
        table.write("/dev/sr0 " + QFile::encodeName(Path(QStringLiteral("disc"))) +
                    " iso9660 ro 0 0\n");
        table.close();
        ToviEnvironment::SetMountTableForTesting(table.fileName());
        ToviViewerDocument document;
        QCOMPARE(document.Open(disc.photoFolder, PhotoXMLMlit, nullptr),
                 ToviViewerDocument::Opened);
        const QString area = ToviEnouDataFactory().CombineFolder();
        QVERIFY(QFileInfo(area).isDir());
        QVERIFY(document.Data()->GetPhoto(0)->GetImagePath().startsWith(area));
        document.Close();
        QVERIFY(!QFileInfo::exists(area));

        ToviEnvironment::SetMountTableForTesting(QString());
        QVERIFY(QDir().mkpath(area));
        QCOMPARE(document.Open(pictures, PhotoXMLMlit, nullptr), ToviViewerDocument::Opened);
        document.Close();
        QVERIFY(QFileInfo(area).isDir());
        QVERIFY(QDir(area).removeRecursively());
    }

    // A delivery whose DOCTYPE the family asked for doesn't know opens under the family that
    // knows it.
    void otherFamily() {
        DeliveryOptions options;
        options.generation = Generation::Maff15;  // a DOCTYPE only 農水省 knows
        options.photoCount = 2;
        options.images = DeliveryOptions::Images::None;
        WrittenDelivery maff;
        QString error;
        QVERIFY(WriteDelivery(Path(QStringLiteral("maff")), options, &maff, &error));
        ToviMainWindow window;
        QVERIFY(window.OpenDelivery(maff.photoFolder, PhotoXMLMlit));
        QCOMPARE(window.Family(), static_cast<PhotoXMLType>(maff.family));
        QCOMPARE(window.Document()->Data()->GetTotalCountPhoto(), 2);

        // Opened before the window is on screen, the word about the family is the only text
        // at the left of the status bar once it is: the place of the photographs is not drawn
        // under it.
        QVERIFY(!window.statusBar()->currentMessage().isEmpty());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(window.findChild<QLabel*>(QStringLiteral("placeLabel"))->isHidden());
        window.statusBar()->clearMessage();
        QVERIFY(window.findChild<QLabel*>(QStringLiteral("placeLabel"))->isVisible());
    }

    // A delivery that can't be shown is told in one message and leaves the open one alone;
    // a cancelled load tells nothing.
    void openFailures_data() {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<bool>("cancel");
        QTest::addColumn<QString>("message");
        QTest::newRow("missing") << QStringLiteral("nowhere") << false
                                 << QStringLiteral("がありません");
        QTest::newRow("not a delivery") << QStringLiteral("plain") << false
                                        << QStringLiteral("電子納品のフォルダではありません");
        QTest::newRow("unknown DOCTYPE")
            << QStringLiteral("unknown") << false << QStringLiteral("文書型宣言");
        QTest::newRow("cancelled") << QString() << true << QString();
    }
    void openFailures() {
        QFETCH(QString, folder);
        QFETCH(bool, cancel);
        QFETCH(QString, message);
        ToviViewerDocument document;
        RecordingPanel panel;
        document.AddPanel(&panel);
        QCOMPARE(document.Open(other, PhotoXMLMlit, nullptr), ToviViewerDocument::Opened);
        ToviData* before = document.Data();
        const qsizetype questions = ui->Questions().size();
        panel.events.clear();
        if (cancel) {
            ui->PressCancelAtPump(ui->Pumps() + 1);
        }
        const QString path = folder.isEmpty() ? pictures : Path(folder);
        QCOMPARE(document.Open(path, PhotoXMLMlit, nullptr),
                 cancel ? ToviViewerDocument::Cancelled : ToviViewerDocument::Failed);
        QCOMPARE(document.Data(), before);
        QCOMPARE(panel.events, QStringList());
        QCOMPARE(ui->Questions().size(), questions + (cancel ? 0 : 1));
        if (!cancel) {
            QVERIFY2(ui->Questions().last().text.contains(message),
                     qPrintable(ui->Questions().last().text));
            QCOMPARE(ui->Questions().last().caption, QString());
        }
    }

    // The window: paging by keys moves the indicator, a label pasted by a click asks about
    // saving at close, the record is saved and read back, and a record of another delivery
    // is refused in words.
    void windowRecordAndClose() {
        QString record = Path(QStringLiteral("record.xml"));
        {
            ToviMainWindow window;
            window.resize(1366, 768);
            window.show();
            QVERIFY(QTest::qWaitForWindowActive(&window));
            QVERIFY(window.OpenDelivery(pictures, PhotoXMLMlit));
            QAction* one = FindAction(&window, QStringLiteral("1枚表示"));
            QVERIFY(one && FindAction(&window, QStringLiteral("サムネイル一覧"))->isEnabled());
            QTest::keyClick(&window, Qt::Key_1, Qt::AltModifier);
            QCOMPARE(window.PageIndicatorText(), QStringLiteral("1 / 60"));
            QTest::keyClick(&window, Qt::Key_PageDown, Qt::ControlModifier);
            QTest::keyClick(&window, Qt::Key_PageDown, Qt::ControlModifier);
            QCOMPARE(window.PageIndicatorText(), QStringLiteral("3 / 60"));
            QTest::keyClick(&window, Qt::Key_End, Qt::ControlModifier);
            QCOMPARE(window.PageIndicatorText(), QStringLiteral("60 / 60"));

            ToviSpiCtrl* cell = window.MpiPanel()->GetSelSpiCtrl();
            QVERIFY(cell);
            ToviLabelButton* ng1 = cell->NamePlate()->Button(1);
            QTest::mouseClick(ng1, Qt::LeftButton, {}, ng1->rect().center());
            ToviPhoto* photo = window.Document()->Data()->GetPhoto(59);
            QVERIFY(photo->IsLabelPasted(1));
            QVERIFY(window.Document()->Data()->IsCheckStatusChanged());

            // Cancel keeps the window; Yes saves under the chosen name, then closes.
            ui->QueueAnswer(ToviUi::AnswerCancel);
            QVERIFY(!window.close());
            QVERIFY(window.isVisible());
            ui->QueueAnswer(ToviUi::AnswerYes);
            ui->QueueFileName(record);
            QVERIFY(window.close());
            QVERIFY(QFileInfo::exists(record));
        }
        ToviMainWindow window;
        QCOMPARE(window.RecentDeliveries().value(0), QDir::cleanPath(pictures));
        QVERIFY(window.OpenDelivery(pictures, PhotoXMLMlit));
        QVERIFY(!window.Document()->Data()->GetPhoto(59)->IsLabelPasted(1));
        QVERIFY(window.LoadRecord(record));
        QVERIFY(window.Document()->Data()->GetPhoto(59)->IsLabelPasted(1));
        QCOMPARE(window.LabelTree()->GetTreeCtrl()->topLevelItem(0)->child(1)->text(0).section(
                     QLatin1Char(' '), -1),
                 QStringLiteral("<1>"));
        QVERIFY(window.OpenDelivery(other, PhotoXMLMlit));
        const qsizetype questions = ui->Questions().size();
        QVERIFY(!window.LoadRecord(record));
        QCOMPARE(ui->Questions().size(), questions + 1);
        QVERIFY(ui->Questions().last().text.startsWith(ToviExamResultText(ExamCountWrong)));
    }

    // Ctrl and a digit turn a label over on the selected photograph, with OK and NG
    // excluding each other as on the name plate.
    void labelKeys() {
        ToviMainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QVERIFY(window.OpenDelivery(pictures, PhotoXMLMlit));
        const ToviPhoto* photo = window.MpiPanel()->SelectedPhoto();
        QVERIFY(photo);
        QTest::keyClick(&window, Qt::Key_2, Qt::ControlModifier);
        QVERIFY(photo->IsLabelPasted(1));
        QTest::keyClick(&window, Qt::Key_1, Qt::ControlModifier);
        QVERIFY(photo->IsLabelPasted(0) && !photo->IsLabelPasted(1));
        QTest::keyClick(&window, Qt::Key_1, Qt::ControlModifier);
        QVERIFY(!photo->IsLabelPasted(0));
        QVERIFY(window.Document()->Data()->IsCheckStatusChanged());
        ui->QueueAnswer(ToviUi::AnswerNo);
        QVERIFY(window.close());
    }

    // Alt+7 and Alt+8 bring the two lists, whose selection follows the photograph's and
    // whose pages count one; the label keys work there too, and a stored list mode opens as
    // it was left.
    void listModes() {
        {
            ToviMainWindow window;
            window.resize(1366, 768);
            window.show();
            QVERIFY(QTest::qWaitForWindowActive(&window));
            QVERIFY(window.OpenDelivery(pictures, PhotoXMLMlit));
            window.MpiPanel()->OnSelect(7);
            QTest::keyClick(&window, Qt::Key_7, Qt::AltModifier);
            ToviPhotoListCtrl* list = window.MpiPanel()->ListCtrl();
            QVERIFY(list && list->GetMode() == ToviPhotoListCtrl::ThumbList);
            QVERIFY(FindAction(&window, QStringLiteral("サムネイル一覧"))->isChecked());
            QCOMPARE(window.PageIndicatorText(), QStringLiteral("1 / 1"));
            QCOMPARE(list->GetItemCount(), 60);
            QCOMPARE(list->GetSelectedItem(), 7);
            QVERIFY(window.MpiPanel()->Cells().empty());
            // A double click on the selected tile opens its zoom window.
            ToviPanelWindows windows;
            windows.createZoom = &ToviMultiDlg::Make;
            SetPanelWindows(windows);
            struct Remove {
                ~Remove() { SetPanelWindows({}); }
            } remove;
            QTest::mouseDClick(list->View()->viewport(), Qt::LeftButton, {},
                               list->ItemRect(7).center());
            QCOMPARE(window.MpiPanel()->ZoomDialogs()->Count(), 1);
            QTest::keyClick(&window, Qt::Key_2, Qt::ControlModifier);
            QVERIFY(window.MpiPanel()->SelectedPhoto()->IsLabelPasted(1));
            // Paging keys have no pages to turn here.
            QTest::keyClick(&window, Qt::Key_PageDown, Qt::ControlModifier);
            QCOMPARE(window.PageIndicatorText(), QStringLiteral("1 / 1"));
            QTest::keyClick(&window, Qt::Key_8, Qt::AltModifier);
            list = window.MpiPanel()->ListCtrl();
            QVERIFY(list && list->GetMode() == ToviPhotoListCtrl::ManagementList);
            QCOMPARE(list->GetSelectedItem(), 7);
            ui->QueueAnswer(ToviUi::AnswerNo);
            QVERIFY(window.close());
        }
        ToviMainWindow window;
        window.show();
        QVERIFY(window.OpenDelivery(pictures, PhotoXMLMlit));
        QCOMPARE(window.Document()->Data()->GetVisualSetting().GetDivType(),
                 ToviPhotoCtrlVisualSetting::DivideManagementList);
        QVERIFY(window.MpiPanel()->ListCtrl());
        window.SetDivideType(ToviPhotoCtrlVisualSetting::Divide4);
        QVERIFY(!window.MpiPanel()->ListCtrl());
        QCOMPARE(window.MpiPanel()->Cells().size(), size_t(4));
    }

    // A profile that can't be written is said once, at the end, and the window still closes.
    void unwritableProfile() {
        QFile blocker(Path(QStringLiteral("blocker")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        // A file where the profile's folder should be: no one, root included, can write there.
        ToviProfile::Instance().UseFile(Path(QStringLiteral("blocker/profile.ini")));
        {
            ToviMainWindow window;
            QVERIFY(window.OpenDelivery(other, PhotoXMLMlit));
            const qsizetype questions = ui->Questions().size();
            QVERIFY(window.close());
            QCOMPARE(ui->Questions().size(), questions + 1);
            QVERIFY(ui->Questions().last().text.startsWith(
                QStringLiteral("設定を保存できませんでした")));
        }
        ToviProfile::Instance().UseFile(Path(QStringLiteral("profile.ini")));
    }

    // Tree type and display mode persist with the document's settings; the window's
    // geometry and tree tab with the frame's.
    void settingsPersist() {
        {
            ToviMainWindow window;
            window.resize(1000, 700);
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            QVERIFY(window.OpenDelivery(pictures, PhotoXMLMlit));
            window.SetDivideType(ToviPhotoCtrlVisualSetting::Divide6);
            QCOMPARE(window.PageIndicatorText(), QStringLiteral("1 / 10"));
            // The new tree keeps the selected photograph's place: its 撮影箇所 alone is shown,
            // until the root is clicked.
            window.SetTreeType(ToviPhotoCtrlVisualSetting::TreeSatsueikasyo);
            QCOMPARE(window.PageIndicatorText(), QStringLiteral("1 / 1"));
            QTreeWidget* tree = window.FolderTree()->GetTreeCtrl();
            QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                              TreeItemPoint(tree, tree->topLevelItem(0)));
            QCOMPARE(window.PageIndicatorText(), QStringLiteral("1 / 10"));
            QCOMPARE(window.CurrentSetText(), QStringLiteral("すべての写真　（60 枚）"));
            QTest::mouseClick(window.TreeTabs()->tabBar(), Qt::LeftButton, {},
                              window.TreeTabs()->tabBar()->tabRect(1).center());
            QCOMPARE(window.TreeTabs()->currentIndex(), 1);
            QVERIFY(window.close());
        }
        ToviMainWindow window;
        QCOMPARE(window.size(), QSize(1000, 700));
        QCOMPARE(window.TreeTabs()->currentIndex(), 1);
        QVERIFY(window.OpenDelivery(pictures, PhotoXMLMlit));
        QCOMPARE(window.Document()->Data()->GetVisualSetting().GetDivType(),
                 ToviPhotoCtrlVisualSetting::Divide6);
        QCOMPARE(window.Document()->Data()->GetVisualSetting().GetTreeType(),
                 ToviPhotoCtrlVisualSetting::TreeSatsueikasyo);
    }

    // Help and version are printed where no window system can be reached, before the GUI
    // application would end the program.
    void helpWithoutDisplay_data() {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("platform");
        QTest::addColumn<QString>("printed");
        const QString none;  // QT_QPA_PLATFORM unset
        const QString nowhere = QStringLiteral("nowhere");
        const QString help = QStringLiteral("--screenshot");
        const QString version = QStringLiteral("tovi-viewer 0.1");
        QTest::newRow("help, no platform") << QStringLiteral("--help") << none << help;
        QTest::newRow("help, unknown platform") << QStringLiteral("--help") << nowhere << help;
        QTest::newRow("-h, no platform") << QStringLiteral("-h") << none << help;
        QTest::newRow("version, no platform") << QStringLiteral("--version") << none << version;
        QTest::newRow("version, unknown platform")
            << QStringLiteral("--version") << nowhere << version;
    }

    void helpWithoutDisplay() {
        QFETCH(QString, option);
        QFETCH(QString, platform);
        QFETCH(QString, printed);
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
            env.remove(QString::fromLatin1(name));
        }
        if (!platform.isEmpty()) {
            env.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
        }
        const ProgramRun run = RunProgram(
            QCoreApplication::applicationDirPath() + QStringLiteral("/tovi-viewer"), {option}, env);
        QVERIFY2(run.exitCode == 0,
                 qPrintable(QStringLiteral("exit %1: %2").arg(run.exitCode).arg(run.err)));
        QVERIFY2(QString::fromUtf8(run.out).contains(printed), run.out.constData());
    }

    // The viewer run unattended on the bundled sample writes a picture with photographs in it.
    void screenshotOfTheSample() {
        const QString sample = QStringLiteral(TOVI_SAMPLE_DIR "/INDEX_C");
        if (!QFileInfo::exists(sample)) {
            QSKIP("the sample delivery is not built");
        }
        const QString shot = Path(QStringLiteral("shot.png"));
        QProcess viewer;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        // Nothing of the user's: settings, work folder and caches all in the test's folder.
        for (const char* name :
             {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
            env.insert(QString::fromLatin1(name), Path(QStringLiteral("home")));
        }
        QDir().mkpath(Path(QStringLiteral("home")));
        QFile::setPermissions(Path(QStringLiteral("home")),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        viewer.setProcessEnvironment(env);
        viewer.start(QCoreApplication::applicationDirPath() + QStringLiteral("/tovi-viewer"),
                     {sample, QStringLiteral("--size"), QStringLiteral("1366x768"),
                      QStringLiteral("--screenshot"), shot, QStringLiteral("--profile"),
                      Path(QStringLiteral("viewer.ini"))});
        QVERIFY(viewer.waitForFinished(60000));
        QCOMPARE(viewer.exitCode(), 0);
        const QImage image(shot);
        QCOMPARE(image.size(), QSize(1366, 768));
        // A blank or one-coloured window has few colours; photographs and text have many.
        QSet<QRgb> colours;
        for (int y = 0; y < image.height(); y += 4) {
            for (int x = 0; x < image.width(); x += 4) {
                colours.insert(image.pixel(x, y));
            }
        }
        QVERIFY2(colours.size() > 500, qPrintable(QString::number(colours.size())));
    }
};

QTEST_MAIN(ToviViewerTest)
#include "ToviViewerTest.moc"
