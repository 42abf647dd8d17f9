#include "panels/ToviZoomDialogs.h"

#include "document/ToviPhoto.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviPanelWindows.h"
#include "platform/ToviUi.h"

#include <QApplication>
#include <QScreen>
#include <QWidget>

#include <algorithm>

const QString ToviZoomDialogs::LimitMessage_ =
    QStringLiteral("これ以上の表示はできません。\n不要なウィンドウを閉じてください。");
const QString ToviZoomDialogs::CannotShowMessage_ = QStringLiteral("表示できません。");

namespace {

constexpr int kMinWidth = 247;
constexpr int kMinHeight = 101;
constexpr QSize kDefaultSize(800, 600);

}  // namespace

ToviZoomDialogs::ToviZoomDialogs(ToviMpiPanel& panel) : panel(panel) {}

ToviZoomDialogs::~ToviZoomDialogs() {
    DeleteAllDialog();
}

void ToviZoomDialogs::Show(ToviZoomView* view, QWidget* hadFocus) {
    QWidget* window = view->Window();
    // Raised without taking the keyboard from where the inspector is working.
    window->setAttribute(Qt::WA_ShowWithoutActivating);
    window->show();
    window->raise();
    view->SetInfoVisible(panel.dlgInfo);
    if (hadFocus) {
        hadFocus->setFocus(Qt::OtherFocusReason);
    }
}

void ToviZoomDialogs::ShowMultiDlg() {
    inShowMultiDlg = true;
    ToviData* data = panel.GetData();
    ToviPhoto* photo = data ? data->GetSelectedPhoto() : nullptr;
    if (!photo) {
        inShowMultiDlg = false;
        return;
    }
    panel.zoomPhoto = photo;
    panel.zoomMessage = false;
    QWidget* hadFocus = QApplication::focusWidget();
    const QString path = photo->GetImagePath();
    for (const Entry& entry : dialogs) {
        if (entry.window && entry.view->IsSamePhoto(path)) {
            Show(entry.view, hadFocus);
            inShowMultiDlg = false;
            return;
        }
    }
    for (const Entry& entry : dialogs) {
        if (entry.window && !entry.view->IsFixed()) {
            entry.view->SetPhoto(photo);
            Show(entry.view, hadFocus);
            inShowMultiDlg = false;
            return;
        }
    }
    if (Count() >= kMaxDialogs) {
        ToviUi::Instance().MessageBox(&panel, LimitMessage_, QString(), ToviUi::ButtonsOk,
                                      ToviUi::IconWarning);
        inShowMultiDlg = false;
        return;
    }
    const ToviZoomMaker& maker = PanelWindows().createZoom;
    ToviZoomView* view =
        maker ? maker(this, panel.window(), photo, data->GetItemDef(), data, panel.dlgInfo)
              : nullptr;
    if (!view) {
        ToviUi::Instance().MessageBox(&panel, CannotShowMessage_, QString(), ToviUi::ButtonsOk,
                                      ToviUi::IconWarning);
        inShowMultiDlg = false;
        return;
    }
    const QSize size = GetDlgSize();
    if (!dialogs.empty()) {
        panel.dlgTabIndex = dialogs.back().view->GetTabIndex();
        panel.dlgSplPos = dialogs.back().view->GetSplitterPos();
    }
    dialogs.push_back({view, view->Window()});
    QWidget* window = view->Window();
    window->resize(size);
    window->move(GetDlgPos(Count() - 1));
    Show(view, nullptr);
    view->SetSplitterPos(panel.dlgSplPos);
    view->SetTabIndex(panel.dlgTabIndex);
    if (panel.dlgZoom) {
        window->showMaximized();
    }
    if (hadFocus) {
        hadFocus->setFocus(Qt::OtherFocusReason);
    }
    inShowMultiDlg = false;
}

QPoint ToviZoomDialogs::GetDlgPos(int i) const {
    return QPoint(50 * i, 25 * i + panel.mapToGlobal(QPoint(0, 0)).y());
}

QSize ToviZoomDialogs::GetDlgSize() const {
    QSize size(panel.dlgWidth, panel.dlgHeight);
    if (!dialogs.empty() && dialogs.back().window) {
        size = dialogs.back().window->size();
    }
    if (size.width() < kMinWidth || size.height() < kMinHeight) {
        size = kDefaultSize;
    }
    return size;
}

void ToviZoomDialogs::UpdateMultiDlg() {
    const auto loose = std::find_if(dialogs.begin(), dialogs.end(), [](const Entry& entry) {
        return entry.window && !entry.view->IsFixed();
    });
    if (loose == dialogs.end()) {
        return;
    }
    ToviData* data = panel.GetData();
    if (!data || data->GetCurrentPhotoCount() == 0) {
        loose->view->ClearPhoto();
        return;
    }
    ToviPhoto* photo = data->GetSelectedPhoto();
    if (photo && loose->view->IsSamePhoto(photo->GetImagePath())) {
        return;
    }
    loose->view->SetPhoto(photo);
}

void ToviZoomDialogs::FollowSelection() {
    const int loose =
        static_cast<int>(std::count_if(dialogs.begin(), dialogs.end(), [](const Entry& entry) {
            return entry.window && !entry.view->IsFixed();
        }));
    for (int i = 0; i < loose; ++i) {
        ShowMultiDlg();
    }
}

void ToviZoomDialogs::DeleteMultiDlg(size_t i) {
    Entry& entry = dialogs[i];
    if (!entry.window) {
        return;
    }
    if (entry.window->isMaximized()) {
        panel.dlgZoom = true;
    } else {
        panel.dlgZoom = false;
        panel.dlgWidth = entry.window->width();
        panel.dlgHeight = entry.window->height();
        panel.dlgSplPos = entry.view->GetSplitterPos();
    }
    panel.dlgTabIndex = entry.view->GetTabIndex();
    entry.window->hide();
}

void ToviZoomDialogs::Destroy(Entry& entry) {
    if (entry.window) {
        // A window's own button may have asked for this: it goes once its event is over.
        entry.window->hide();
        entry.window->deleteLater();
    }
    entry.window = nullptr;
}

void ToviZoomDialogs::OnDestroyDlg(ToviZoomView* view) {
    const auto found = std::find_if(dialogs.begin(), dialogs.end(),
                                    [view](const Entry& entry) { return entry.view == view; });
    if (found == dialogs.end()) {
        return;
    }
    DeleteMultiDlg(static_cast<size_t>(found - dialogs.begin()));
    Destroy(*found);
    dialogs.erase(found);
}

void ToviZoomDialogs::DeleteAllDialog() {
    for (size_t i = 0; i < dialogs.size(); ++i) {
        DeleteMultiDlg(i);
    }
    for (Entry& entry : dialogs) {
        Destroy(entry);
    }
    dialogs.clear();
}

void ToviZoomDialogs::OnDestroyAllDlg() {
    DeleteAllDialog();
}

void ToviZoomDialogs::OnFixAllDlg() {
    const int n = Count();
    if (n == 0) {
        return;
    }
    const int columns = n <= 2 ? 1 : 2;
    const int rows = n == 1 ? 1 : n == 2 ? 2 : n <= 4 ? 2 : 3;
    QScreen* screen = panel.screen() ? panel.screen() : QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect(0, 0, 1024, 768);
    const int w = area.width() / columns;
    const int h = area.height() / rows;
    for (int i = 0; i < n; ++i) {
        QWidget* window = dialogs[static_cast<size_t>(i)].window;
        if (!window) {
            continue;
        }
        window->showNormal();
        // Down the first column, then the second, from 0, 0 as it always has.
        window->setGeometry(QRect((i / rows) * w, (i % rows) * h, w, h));
    }
}

void ToviZoomDialogs::OnChangeDlgState(ToviZoomView* view) {
    panel.dlgInfo = view->IsInfoVisible();
}
