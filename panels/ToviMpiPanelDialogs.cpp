// The windows the panel opens (the confirm dialog and the zoom windows) and their settings in
// the profile.

#include "panels/ToviMpiPanel.h"

#include "panels/ToviPanelWindows.h"
#include "panels/ToviZoomDialogs.h"
#include "platform/ToviProfile.h"

#include <algorithm>

const QString ToviMpiPanel::MultiDialogSection_ = QStringLiteral("MultiDialogSize");
const QString ToviMpiPanel::MultiDialogSection2_ = QStringLiteral("MultiDialogInfo");
const QString ToviMpiPanel::ConfirmDialogSection_ = QStringLiteral("ConfirmDialog");
const QString ToviMpiPanel::MultiDlgWEntry_ = QStringLiteral("DialogWidth");
const QString ToviMpiPanel::MultiDlgHEntry_ = QStringLiteral("DialogHeight");
const QString ToviMpiPanel::MultiDlgTabIdxEntry_ = QStringLiteral("DialogTabIndex");
const QString ToviMpiPanel::MultiDlgSplPosEntry_ = QStringLiteral("DialogSplPos");
const QString ToviMpiPanel::MultiDlgZoomEntry_ = QStringLiteral("DialogZoom");
const QString ToviMpiPanel::MultiDlgInfoEntry_ = QStringLiteral("DialogInfo");
const QString ToviMpiPanel::ConfirmDlgPosXEntry_ = QStringLiteral("DialogPosX");
const QString ToviMpiPanel::ConfirmDlgPosYEntry_ = QStringLiteral("DialogPosY");
const QString ToviMpiPanel::ConfirmDlgWEntry_ = QStringLiteral("DialogWidth");
const QString ToviMpiPanel::ConfirmDlgHEntry_ = QStringLiteral("DialogHeight");

// ---- persistence -------------------------------------------------------------------------

bool ToviMpiPanel::Load() {
    ToviProfile& profile = ToviProfile::Instance();
    const auto read = [&profile](const QString& section, const QString& entry, auto& field) {
        const int value = profile.GetProfileInt(section, entry, -1) - 100;
        if (value >= 0) {
            field = static_cast<std::decay_t<decltype(field)>>(value);
        }
    };
    read(MultiDialogSection_, MultiDlgWEntry_, dlgWidth);
    read(MultiDialogSection_, MultiDlgHEntry_, dlgHeight);
    read(MultiDialogSection_, MultiDlgSplPosEntry_, dlgSplPos);
    read(MultiDialogSection_, MultiDlgZoomEntry_, dlgZoom);
    read(MultiDialogSection2_, MultiDlgInfoEntry_, dlgInfo);
    read(ConfirmDialogSection_, ConfirmDlgPosXEntry_, confirmPosX);
    read(ConfirmDialogSection_, ConfirmDlgPosYEntry_, confirmPosY);
    read(ConfirmDialogSection_, ConfirmDlgWEntry_, confirmWidth);
    read(ConfirmDialogSection_, ConfirmDlgHEntry_, confirmHeight);
    return true;
}

bool ToviMpiPanel::Save() const {
    ToviProfile& profile = ToviProfile::Instance();
    const struct {
        const QString& section;
        const QString& entry;
        int value;
    } values[] = {
        {MultiDialogSection_, MultiDlgWEntry_, dlgWidth},
        {MultiDialogSection_, MultiDlgHEntry_, dlgHeight},
        {MultiDialogSection_, MultiDlgTabIdxEntry_, dlgTabIndex},
        {MultiDialogSection_, MultiDlgSplPosEntry_, dlgSplPos},
        {MultiDialogSection_, MultiDlgZoomEntry_, dlgZoom ? 1 : 0},
        {MultiDialogSection2_, MultiDlgInfoEntry_, dlgInfo ? 1 : 0},
        {ConfirmDialogSection_, ConfirmDlgPosXEntry_, confirmPosX},
        {ConfirmDialogSection_, ConfirmDlgPosYEntry_, confirmPosY},
        {ConfirmDialogSection_, ConfirmDlgWEntry_, confirmWidth},
        {ConfirmDialogSection_, ConfirmDlgHEntry_, confirmHeight},
    };
    for (const auto& value : values) {
        if (!profile.WriteProfileInt(value.section, value.entry, value.value + 100)) {
            return false;
        }
    }
    return true;
}

// ---- the confirm dialog ------------------------------------------------------------------

void ToviMpiPanel::ShowConfirmDlg() {
    const ToviPanelWindows& makers = PanelWindows();
    if (!data || !makers.createConfirm) {
        return;
    }
    const int type = data->GetVisualSetting().GetTreeType();
    if (confirmDlg && confirmDlg->IsTreeType(type)) {
        confirmDlg->Window()->raise();
        return;
    }
    delete confirmDlg;  // another tree type: a new dialog; EndConfirmDlg clears the pointer
    confirmDlg = makers.createConfirm(this);
    if (!confirmDlg) {
        return;
    }
    int width = confirmWidth;
    int height = confirmHeight;
    if (width < ToviConfirmView::kMinimumWidth || height < ToviConfirmView::kMinimumHeight) {
        width = ToviConfirmView::kMinimumWidth;
        height = ToviConfirmView::kMinimumHeight;
    }
    QWidget* window = confirmDlg->Window();
    window->resize(width, height);
    window->move(std::max(0, confirmPosX), std::max(0, confirmPosY));
    window->show();
    if (!confirmDlg->IsTreeType(type)) {
        confirmDlg->SetTreeType(type);
        confirmDlg->BuildTree(data);
    }
}

void ToviMpiPanel::EndConfirmDlg() {
    if (!confirmDlg) {
        return;
    }
    const QRect place = confirmDlg->StoredRect();
    confirmPosX = place.x();
    confirmPosY = place.y();
    confirmWidth = place.width();
    confirmHeight = place.height();
    confirmDlg = nullptr;
}

// ---- zoom windows ------------------------------------------------------------------------

void ToviMpiPanel::ShowMultiDlg() {
    zoomDialogs->ShowMultiDlg();
}

void ToviMpiPanel::UpdateMultiDlg() {
    zoomDialogs->UpdateMultiDlg();
}

void ToviMpiPanel::DeleteAllDialog() {
    zoomDialogs->DeleteAllDialog();
}
