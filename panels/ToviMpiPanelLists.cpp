// The list modes of the multi-photo panel: the thumbnail list (5) and the management list (6),
// both one ToviPhotoListCtrl over the current array, with the floaty beside the selection.

#include "panels/ToviMpiPanel.h"

#include "document/ToviPhoto.h"
#include "panels/ToviPhotoListCtrl.h"

#include <QAbstractItemView>
#include <QApplication>

namespace {

constexpr unsigned kFloatyDelayMs = 500;

}  // namespace

bool ToviMpiPanel::IsListMode() const {
    const auto type = visualSetting.GetDivType();
    return type == ToviPhotoCtrlVisualSetting::DivideThumbList ||
           type == ToviPhotoCtrlVisualSetting::DivideManagementList;
}

void ToviMpiPanel::DestroyListCtrl() {
    delete listCtrl;
    listCtrl = nullptr;
}

void ToviMpiPanel::ReCreatetListCtrl() {
    DestroyListCtrl();
    listCtrl = new ToviPhotoListCtrl(ToviPhotoListCtrl::ThumbList, data, &visualSetting,
                                     loader.get(), this);
    ConnectListCtrl();
}

void ToviMpiPanel::ReCreateMngListCtrl() {
    DestroyListCtrl();
    listCtrl = new ToviPhotoListCtrl(ToviPhotoListCtrl::ManagementList, data, &visualSetting,
                                     loader.get(), this);
    ConnectListCtrl();
}

void ToviMpiPanel::ConnectListCtrl() {
    QFont font = listCtrl->font();
    font.setPointSize(9);
    listCtrl->setFont(font);
    connect(listCtrl, &ToviPhotoListCtrl::KeyPressed, this, &ToviMpiPanel::OnListCtrlKeyDown);
    connect(listCtrl, &ToviPhotoListCtrl::Scrolled, this, &ToviMpiPanel::OnScrollList);
    connect(listCtrl, &ToviPhotoListCtrl::FusenCommand, this, &ToviMpiPanel::OnListCommand);
    connect(listCtrl, &ToviPhotoListCtrl::ItemSelected, this, &ToviMpiPanel::OnLvnItemchangedList);
    connect(listCtrl, &ToviPhotoListCtrl::ItemDoubleClicked, this, &ToviMpiPanel::OnDClicked);
    connect(listCtrl, &ToviPhotoListCtrl::ItemRightClicked, this, &ToviMpiPanel::OnRClicked);
    // The list's screen filled tells PageShown, as the cells' pictures do in the paged modes.
    connect(listCtrl, &ToviPhotoListCtrl::RowsChanged, this, &ToviMpiPanel::OnPictureShown);
    listCtrl->show();
}

void ToviMpiPanel::SelectInList() {
    const int count = listCtrl->GetItemCount();
    int row = data ? data->GetSelectCurIndex() : -1;
    if (row < 0 && count > 0) {
        row = 0;
        OnSelect(row);  // the document follows the list to its first photograph
    }
    if (row >= 0) {
        listCtrl->SelectItem(row);
    }
}

void ToviMpiPanel::SetupThumbListCtrl() {
    if (!listCtrl) {
        return;
    }
    listCtrl->ScheduleFloaty(false, 0);
    listCtrl->ApplySettings();
    listCtrl->Refill();
    SelectInList();
    EnableCtrlFloaty();
    listCtrl->ScheduleFloaty(true, kFloatyDelayMs);
}

void ToviMpiPanel::SetupMngmntListCtrl() {
    if (!listCtrl) {
        return;
    }
    // The refill reads nothing but the count, so no wait window is needed over it.
    QWidget* focus = QApplication::focusWidget();
    listCtrl->ScheduleFloaty(false, 0);
    listCtrl->Refill();
    SelectInList();
    if (focus && focus != QApplication::focusWidget()) {
        focus->setFocus();
    }
    EnableCtrlFloaty();
    listCtrl->ScheduleFloaty(true, kFloatyDelayMs);
}

void ToviMpiPanel::EnableCtrlFloaty() {
    if (!listCtrl || !data) {
        return;
    }
    const ToviPhoto* photo = data->GetPhoto(listCtrl->GetSelectedItem());
    if (!photo) {
        return;
    }
    for (int label = 0; label < 6; ++label) {
        listCtrl->SetButtonState(label, photo->IsLabelPasted(static_cast<unsigned>(label)));
    }
}

void ToviMpiPanel::ShowFloaty(bool show) {
    if (!listCtrl) {
        return;
    }
    if (!show) {
        listCtrl->ScheduleFloaty(false, 0);
    } else if (IsListMode()) {
        EnableCtrlFloaty();
        listCtrl->ScheduleFloaty(true, kFloatyDelayMs);
    }
}

void ToviMpiPanel::OnFusen(unsigned label) {
    if (!IsListMode() || !listCtrl || !data || label > 5) {
        return;
    }
    const ToviPhoto* photo = data->GetPhoto(listCtrl->GetSelectedItem());
    if (!photo) {
        return;
    }
    if (photo->IsLabelPasted(label) && label != 4) {
        RemoveLabel(static_cast<int>(label));
    } else {
        PasteLabel(static_cast<int>(label));
    }
}

void ToviMpiPanel::OnListCommand(int command) {
    switch (command - ToviPhotoListCtrl::kFusenCommand) {
        case 0:
            OnFusen01();
            break;
        case 1:
            OnFusen02();
            break;
        case 2:
            OnFusen03();
            break;
        case 3:
            OnFusen04();
            break;
        case 4:
            OnFusen05();
            break;
        case 5:
            OnFusen06();
            break;
        default:
            break;
    }
}

void ToviMpiPanel::OnListCtrlKeyDown(int key, int markBefore) {
    if (!listCtrl || !data ||
        visualSetting.GetDivType() != ToviPhotoCtrlVisualSetting::DivideThumbList) {
        return;
    }
    // Where the list could not move (at the end of a row of tiles) the selection wraps.
    const int mark = listCtrl->GetSelectionMark();
    const int count = data->GetCurrentPhotoCount();
    if (key == Qt::Key_Left && markBefore == mark && mark >= 1) {
        OperatePrevPhoto();
    } else if (key == Qt::Key_Right && markBefore == mark && mark != count - 1) {
        OperateNextPhoto();
    }
}

void ToviMpiPanel::OnLvnItemchangedList(int row) {
    if (row >= 0) {
        OnSelect(row);
    }
    if (listCtrl && listCtrl->GetSelectedItem() < 0) {
        listCtrl->ScheduleFloaty(false, 0);
    }
}

void ToviMpiPanel::OnDClicked(int row) {
    const ToviPhoto* photo = data ? data->GetPhoto(row) : nullptr;
    if (photo && photo->IsSelected()) {
        ClearMessageState();
        ShowMultiDlg();
    }
}

void ToviMpiPanel::OnRClicked(int row) {
    // Allowed in slide mode too: the menu's own items refuse what slide mode forbids.
    if (OnSelect(row)) {
        ShowPopUpMenu();
    }
}

void ToviMpiPanel::OnScrollList() {
    if (visualSetting.GetVisibleComment()) {
        ReCalcCommentWindow();
    }
}

void ToviMpiPanel::MoveListMark(int step) {
    if (!listCtrl || !IsListMode()) {
        return;
    }
    const int mark = listCtrl->GetSelectionMark();
    listCtrl->SelectItem(mark + step);
    EnableCtrlFloaty();
    listCtrl->ScheduleFloaty(true, kFloatyDelayMs);
}

void ToviMpiPanel::RefillList(bool withSelect) {
    if (!listCtrl) {
        return;
    }
    if (visualSetting.GetDivType() == ToviPhotoCtrlVisualSetting::DivideThumbList) {
        SetupThumbListCtrl();
    } else if (visualSetting.GetDivType() == ToviPhotoCtrlVisualSetting::DivideManagementList) {
        SetupMngmntListCtrl();
    }
    const int row = listCtrl->GetSelectedItem();
    if (withSelect && row >= 0) {
        OnSelect(row);
    }
}
