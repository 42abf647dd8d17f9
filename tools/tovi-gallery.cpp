// tovi-gallery: opens a delivery in the viewer's main window and writes a picture of every
// window the viewer shows, one PNG each, for looking them over without clicking through.
//
//   tovi-gallery DELIVERY OUT-DIR [--only NAME]...
//   tovi-gallery --list
//
// Each window is shown without a modal loop and grabbed once its pictures are drawn. A new
// window is one row of Shots() below: its file name and a function that builds and shows it.

#include "app/ToviMainWindow.h"
#include "dialogs/LabelProcessSelectDlg.h"
#include "dialogs/ToviConfirmDlg.h"
#include "dialogs/ToviDetailPanel.h"
#include "dialogs/ToviExtDetailDlg.h"
#include "dialogs/ToviImageWnd.h"
#include "checks/ToviDateTable.h"
#include "dialogs/ToviDateTableDlg.h"
#include "dialogs/ToviIndexPageDlg.h"
#include "dialogs/ToviInputCommentDlg.h"
#include "dialogs/ToviItemSetUpDlg.h"
#include "dialogs/ToviMultiDlg.h"
#include "dialogs/ToviQtUi.h"
#include "dialogs/ToviSelectImageTypeDlg.h"
#include "dialogs/ToviSelectOutputPhotoDlg.h"
#include "dialogs/ToviSetUpDlg.h"
#include "dialogs/ToviTabBaseWnd.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "panels/ToviCheckPane.h"
#include "panels/ToviLabelTreePanel.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviPanelWindows.h"
#include "panels/ToviZoomDialogs.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"
#include "platform/ToviProgressDlg.h"
#include "platform/widgets/LumImgWnd.h"
#include "platform/widgets/ToviProgressWindow.h"
#include "settings/ToviItemManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QThread>
#include <QTreeWidget>

#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

namespace {

void Print(FILE* stream, const QString& line) {
    const QByteArray utf8 = line.toUtf8() + '\n';
    std::fwrite(utf8.constData(), 1, static_cast<size_t>(utf8.size()), stream);
}

// What the shots share: the main window with the delivery open, and the windows made for
// the pictures, which go when the next shot starts.
class Gallery {
public:
    explicit Gallery(const QString& delivery) : delivery(delivery) {}

    ToviMainWindow& Main() { return *window; }
    ToviData* Data() const { return window->Document()->Data(); }

    bool Open() {
        window = std::make_unique<ToviMainWindow>();
        MainAt(QSize(1366, 768));
        window->show();
        if (!window->OpenDelivery(delivery, window->Family()) || !Data()) {
            return false;
        }
        PasteSomeLabels();
        return true;
    }

    // The main window at that size, the tree in front and the detail panel hidden, in display
    // mode type.
    QWidget* MainIn(int type, QSize size = QSize(1366, 768)) {
        MainAt(size);
        HideDetail();
        window->TreeTabs()->setCurrentIndex(0);
        window->SetDivideType(type);
        return window.get();
    }

    QWidget* MainWithChecks(QSize size) {
        QWidget* main = MainIn(ToviPhotoCtrlVisualSetting::Divide4, size);
        window->ShowExtraction();
        window->RunChecks();  // shows the dock
        QElapsedTimer waited;
        waited.start();
        while (window->CheckPane()->IsRunning() && waited.elapsed() < 30000) {
            QApplication::processEvents(QEventLoop::AllEvents, 50);
            QThread::msleep(5);
        }
        return main;
    }

    void MainAt(QSize size) {
        window->showNormal();
        window->resize(size);
    }

    // A window made for one picture; it goes with the next shot.
    template <typename Window>
    Window* Keep(Window* made) {
        made->setAttribute(Qt::WA_DeleteOnClose, false);
        made->show();
        made->raise();
        transient.emplace_back(made);
        return made;
    }

    // A progress loop on the main window, ended by Reset.
    ToviProgressDlg& Progress() {
        progress = std::make_unique<ToviProgressDlg>(false, window.get());
        return *progress;
    }

    // Closes what the previous shot opened, and puts the main window back as it started.
    void Reset() {
        progress.reset();
        transient.clear();
        items.reset();
        window->MpiPanel()->DeleteAllDialog();
        HideDetail();
        window->CheckDock()->hide();
        if (window->MpiPanel()->ConfirmDlg()) {
            window->MpiPanel()->ConfirmDlg()->Window()->close();
        }
    }

    void HideDetail() {
        if (window->DetailPanel()->Visible()) {
            window->ToggleDetailPanel();
        }
    }

    ToviPhoto* Selected() const { return window->MpiPanel()->SelectedPhoto(); }

private:
    // A few labels, so that the name plates, the tiles and the label tree have some to show:
    // on the first five photographs OK, NG 1, the free label, OK and NG 2.
    void PasteSomeLabels() {
        const int labels[] = {0, 1, 5, 0, 2};
        for (int i = 0; i < 5; ++i) {
            if (window->MpiPanel()->OnSelect(i)) {
                window->MpiPanel()->PasteLabel(labels[i]);
            }
        }
        window->MpiPanel()->OnSelect(0);
    }

    QString delivery;
    std::unique_ptr<ToviMainWindow> window;
    std::vector<std::unique_ptr<QWidget>> transient;
    std::unique_ptr<ToviProgressDlg> progress;

public:
    // The item dialog's own copy of the item list, as the setup dialog hands it one.
    std::unique_ptr<ToviItemManager> items;
};

// A message box as the viewer's presenter shows one, without its modal loop.
QWidget* ShowMessage(Gallery& g, ToviUi::Icon icon, const QString& text, ToviUi::Buttons buttons) {
    auto& ui = static_cast<ToviQtUi&>(ToviUi::Instance());
    return g.Keep(ui.CreateMessageBox(&g.Main(), text, QString(), buttons, icon).release());
}

struct Shot {
    QString file;
    // Builds and shows the window; answers the one to take the picture of.
    std::function<QWidget*(Gallery&)> show;
};

std::vector<Shot> Shots() {
    using V = ToviPhotoCtrlVisualSetting;
    std::vector<Shot> shots = {
        {QStringLiteral("main-1.png"), [](Gallery& g) { return g.MainIn(V::Divide1); }},
        {QStringLiteral("main-2.png"), [](Gallery& g) { return g.MainIn(V::Divide2); }},
        {QStringLiteral("main-3.png"), [](Gallery& g) { return g.MainIn(V::Divide3); }},
        {QStringLiteral("main-4.png"), [](Gallery& g) { return g.MainIn(V::Divide4); }},
        {QStringLiteral("main-6.png"), [](Gallery& g) { return g.MainIn(V::Divide6); }},
        {QStringLiteral("main-thumbnails.png"),
         [](Gallery& g) { return g.MainIn(V::DivideThumbList); }},
        {QStringLiteral("main-list.png"),
         [](Gallery& g) { return g.MainIn(V::DivideManagementList); }},
        {QStringLiteral("main-4-1920x1080.png"),
         [](Gallery& g) { return g.MainIn(V::Divide4, QSize(1920, 1080)); }},
        {QStringLiteral("tree-classification.png"),
         [](Gallery& g) { return g.MainIn(V::Divide2); }},
        // The label tree with the photographs of the OK label.
        {QStringLiteral("tree-labels.png"),
         [](Gallery& g) {
             QWidget* main = g.MainIn(V::Divide2);
             g.Main().TreeTabs()->setCurrentIndex(1);
             auto* tree = g.Main().LabelTree()->findChild<QTreeWidget*>();
             QTreeWidgetItem* root = tree ? tree->topLevelItem(0) : nullptr;
             if (root && root->childCount() > 0) {
                 tree->setCurrentItem(root->child(0));
             }
             return main;
         }},
        {QStringLiteral("detail-panel.png"),
         [](Gallery& g) {
             QWidget* main = g.MainIn(V::Divide4);
             g.Main().ToggleDetailPanel();
             return main;
         }},
        {QStringLiteral("zoom-window.png"),
         [](Gallery& g) -> QWidget* {
             g.MainIn(V::Divide4);
             g.Main().MpiPanel()->ShowMultiDlg();
             ToviZoomDialogs* zooms = g.Main().MpiPanel()->ZoomDialogs();
             return zooms && zooms->Count() > 0 ? zooms->Dialog(0)->Window() : nullptr;
         }},
        {QStringLiteral("property-dialog.png"),
         [](Gallery& g) {
             auto* tabs = g.Keep(new ToviTabBaseWnd(g.Main().Document()));
             ToviPhoto* photo = g.Selected();
             if (photo && photo->CheckExif()) {
                 photo->LoadExif();
             }
             tabs->SetContent(photo, g.Data()->GetItemDef(),
                              g.Data()->GetVisualSetting().GetItemShowSettings());
             tabs->resize(520, 640);
             return tabs;
         }},
        {QStringLiteral("confirm-dialog.png"),
         [](Gallery& g) -> QWidget* {
             g.MainIn(V::Divide4);
             g.Main().MpiPanel()->ShowConfirmDlg();
             ToviConfirmView* confirm = g.Main().MpiPanel()->ConfirmDlg();
             return confirm ? confirm->Window() : nullptr;
         }},
        {QStringLiteral("image-window.png"),
         [](Gallery& g) {
             auto* image = g.Keep(new ToviImageWnd(g.Main().Document()));
             image->SetItemDef(g.Data()->GetItemDef());
             image->SetData(g.Data());
             image->resize(900, 680);
             image->SetPhoto(g.Selected());
             return image;
         }},
        {QStringLiteral("comment-dialog.png"),
         [](Gallery& g) {
             const QVariantMap values{
                 {QStringLiteral("comment"),
                  QStringLiteral("配筋間隔を再確認すること。\n黒板の文字が一部読めません。")}};
             return g.Keep(new ToviInputCommentDlg(&g.Main(), values));
         }},
        {QStringLiteral("label-batch-dialog.png"),
         [](Gallery& g) { return g.Keep(new LabelProcessSelectDlg(&g.Main(), {})); }},
        {QStringLiteral("save-choice-dialog.png"),
         [](Gallery& g) { return g.Keep(new ToviSelectOutputPhotoDlg(&g.Main())); }},
        // The extraction dock in front of the trees' dock.
        {QStringLiteral("extraction-dock.png"),
         [](Gallery& g) {
             QWidget* main = g.MainIn(V::Divide4);
             g.Main().ShowExtraction();
             return main;
         }},
        {QStringLiteral("extraction-detail-dialog.png"),
         [](Gallery& g) {
             auto* dialog = new ToviExtDetailDlg(&g.Main());
             dialog->SetData(g.Data());
             dialog->conditions.itemOn[0] = true;
             dialog->conditions.itemTitle[0] = QStringLiteral("工種");
             dialog->conditions.dateOn = true;
             dialog->conditions.dateFrom = QStringLiteral("2023-07-01");
             dialog->conditions.dateTo = QStringLiteral("2023-09-30");
             return g.Keep(dialog);
         }},
        {QStringLiteral("setup-dialog.png"),
         [](Gallery& g) {
             ToviData* data = g.Data();
             return g.Keep(new ToviSetUpDlg(*data->GetLabelManager(), data->GetVisualSetting(),
                                            data->GetSortCondition(), *data->GetItemManager(),
                                            &g.Main()));
         }},
        {QStringLiteral("setup-items-dialog.png"),
         [](Gallery& g) {
             g.items = std::make_unique<ToviItemManager>(*g.Data()->GetItemManager());
             return g.Keep(new ToviItemSetUpDlg(g.items.get(), &g.Main()));
         }},
        {QStringLiteral("setup-type-dialog.png"),
         [](Gallery& g) {
             return g.Keep(new ToviSelectImageTypeDlg({0, 1}, &g.Main()));
         }},
        {QStringLiteral("index-page.png"),
         [](Gallery& g) -> QWidget* {
             auto* page = new ToviIndexPageDlg(&g.Main());
             if (!page->SetData(g.Data())) {
                 delete page;
                 return nullptr;
             }
             return g.Keep(page);
         }},
        {QStringLiteral("date-table-dialog.png"),
         [](Gallery& g) -> QWidget* {
             ToviDateTable table;
             if (!table.Build(*g.Data(), g.Data()->CurrentArray().Indexes())) {
                 return nullptr;
             }
             std::vector<ToviDateRow> rows = table.Rows();
             // The sample's files keep their times; two are moved here (photographs 2 and 7), as a
             // careless copy would leave them, so that the marked rows show.
             for (ToviDateRow& row : rows) {
                 if (row.index == 2 || row.index == 7) {
                     row.modified = row.modified.addDays(-3);
                 }
             }
             auto* dialog = new ToviDateTableDlg(&g.Main());
             dialog->SetRows(std::move(rows));
             return g.Keep(dialog);
         }},
        {QStringLiteral("progress-window.png"),
         [](Gallery& g) -> QWidget* {
             // The loop's own logic makes the window through the presenter, as a long command
             // does.
             ToviProgressDlg& progress = g.Progress();
             progress.SetRange(0, 120);
             progress.Create();
             progress.SetCaption(QString());
             progress.SetMessage(QStringLiteral("写真をコピーしています… (54 / 120)"));
             progress.SetPos(54);
             for (QWidget* top : QApplication::topLevelWidgets()) {
                 if (auto* shown = qobject_cast<ToviProgressWindow*>(top);
                     shown && shown->isVisible()) {
                     return shown;
                 }
             }
             return nullptr;
         }},
        {QStringLiteral("message-information.png"),
         [](Gallery& g) {
             return ShowMessage(g, ToviUi::IconInformation,
                                QStringLiteral("検査状況を保存しました。"), ToviUi::ButtonsOk);
         }},
        {QStringLiteral("message-warning.png"),
         [](Gallery& g) {
             return ShowMessage(
                 g, ToviUi::IconWarning,
                 QStringLiteral("フォルダ /media/cdrom は電子納品のフォルダではありま"
                                "せん。\nPHOTO.XML のあるフォルダを指定してください。"),
                 ToviUi::ButtonsOk);
         }},
        {QStringLiteral("message-question.png"),
         [](Gallery& g) {
             return ShowMessage(
                 g, ToviUi::IconQuestion,
                 QStringLiteral("付箋またはコメントが変更されています。\n検査状況を保存しますか？"),
                 ToviUi::ButtonsYesNoCancel);
         }},
        // The findings of the delivery checks under the photographs, the extraction dock
        // beside the trees, once the run has ended.
        {QStringLiteral("check-dock.png"),
         [](Gallery& g) { return g.MainWithChecks(QSize(1366, 768)); }},
        {QStringLiteral("check-dock-1920x1080.png"),
         [](Gallery& g) { return g.MainWithChecks(QSize(1920, 1080)); }},
    };
    return shots;
}

// True while a picture of the window is still on its way: the main window's page, or any
// image view in the window decoding.
bool IsDrawing(Gallery& g, QWidget* window) {
    ToviMpiPanel* panel = g.Main().MpiPanel();
    if (g.Main().isVisible() && (!panel->IsPageShown() || !panel->IsPageComplete())) {
        return true;
    }
    for (const LumImgWnd* view : window->findChildren<LumImgWnd*>()) {
        if (view->isVisible() && (view->IsLoading() || view->IsDetailPending())) {
            return true;
        }
    }
    return false;
}

void Pump(int ms) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
}

// Waits, as the viewer's own screenshot does, for the pictures to be drawn, then lets the last
// paints and timers run. False when the window has not settled within 30 s; its picture is
// taken as it is.
bool Settle(Gallery& g, QWidget* window) {
    QElapsedTimer clock;
    clock.start();
    Pump(50);
    while (IsDrawing(g, window)) {
        if (clock.elapsed() > 30000) {
            return false;
        }
        Pump(20);
    }
    Pump(300);
    return true;
}

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Orvane Systems"));
    QApplication::setApplicationDisplayName(QStringLiteral("ToviCore"));
    ToviQtUi::InstallTranslations(&app);
    QStringList args = QCoreApplication::arguments().mid(1);
    const std::vector<Shot> shots = Shots();
    if (args == QStringList{QStringLiteral("--list")}) {
        for (const Shot& shot : shots) {
            Print(stdout, shot.file);
        }
        return 0;
    }
    QStringList only;
    for (qsizetype i = args.indexOf(QStringLiteral("--only")); i >= 0 && i + 1 < args.size();
         i = args.indexOf(QStringLiteral("--only"))) {
        only.append(args.takeAt(i + 1));
        args.removeAt(i);
    }
    if (args.size() != 2) {
        Print(stderr, QStringLiteral("usage: tovi-gallery DELIVERY OUT-DIR [--only NAME]... | "
                                     "tovi-gallery --list"));
        return 2;
    }
    const QString out = args[1];
    if (!QDir().mkpath(out)) {
        Print(stderr, QStringLiteral("tovi-gallery: cannot make %1").arg(out));
        return 1;
    }

    // The settings and the work folder of a run are its own, and go with it.
    QTemporaryDir scratch;
    if (!scratch.isValid()) {
        Print(stderr, QStringLiteral("tovi-gallery: no temporary folder"));
        return 1;
    }
    ToviProfile::Instance().UseFile(scratch.filePath(QStringLiteral("profile.ini")));
    QDir().mkpath(scratch.filePath(QStringLiteral("work")));
    {
        QSettings user(scratch.filePath(QStringLiteral("user.ini")), QSettings::IniFormat);
        user.setValue(QStringLiteral("QVScratch"), scratch.filePath(QStringLiteral("work")));
    }
    ToviEnvironment::SetSettingsPathsForTesting(scratch.filePath(QStringLiteral("user.ini")),
                                                scratch.filePath(QStringLiteral("system.ini")));

    ToviQtUi ui;
    ToviUi::Install(&ui);
    ToviPanelWindows windows;
    windows.createConfirm = [](ToviMpiPanel* owner) { return new ToviConfirmDlg(owner); };
    windows.createZoom = &ToviMultiDlg::Make;
    SetPanelWindows(windows);

    int failed = 0;
    {
        Gallery gallery(args[0]);
        if (!gallery.Open()) {
            Print(stderr, QStringLiteral("tovi-gallery: cannot open %1").arg(args[0]));
            failed = 1;
        }
        for (const Shot& shot : shots) {
            if (failed || (!only.isEmpty() && !only.contains(shot.file))) {
                continue;
            }
            QWidget* window = shot.show(gallery);
            if (!window) {
                Print(stderr, QStringLiteral("tovi-gallery: %1: no window").arg(shot.file));
                failed = 1;
                continue;
            }
            if (!Settle(gallery, window)) {
                Print(stderr, QStringLiteral("tovi-gallery: %1: the pictures were not drawn within "
                                             "30 s")
                                  .arg(shot.file));
                failed = 1;
            }
            const QString path = QDir(out).filePath(shot.file);
            if (!window->grab().save(path)) {
                Print(stderr, QStringLiteral("tovi-gallery: cannot write %1").arg(path));
                failed = 1;
            } else {
                Print(stdout, path);
            }
            gallery.Reset();
        }
        // Nothing is saved: the labels pasted for the pictures are dropped unasked.
        if (gallery.Data()) {
            gallery.Data()->SetCheckStatusChanged(false);
        }
    }
    SetPanelWindows({});
    ToviUi::Install(nullptr);
    ToviProfile::Instance().UseFile(QString());
    ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
    return failed;
}
