// Paging: the page arithmetic, page moves and the selection, and the mouse and keys of
// the cells.

#include "panels/ToviMpiPanel.h"

#include "document/ToviPhoto.h"
#include "panels/ToviControlValueTable.h"
#include "panels/ToviNamePlate.h"
#include "panels/ToviPanelWindows.h"
#include "panels/ToviPhotoListCtrl.h"
#include "panels/ToviSlideMode.h"
#include "panels/ToviSpiCtrl.h"
#include "panels/ToviSpiListCtrl.h"
#include "panels/ToviZoomDialogs.h"
#include "platform/ToviUi.h"
#include "platform/widgets/LumImgWnd.h"

#include <QApplication>
#include <QLabel>
#include <QPlainTextEdit>

namespace {

// Window ids of the parts of a cell, so that the focus can stay in the same part as the
// selection moves.
int WindowIdOf(const ToviSpiCtrl* cell, const QWidget* focus) {
    if (!cell || !focus) {
        return 0;
    }
    if (focus == cell->ImageWnd()) {
        return 1001;
    }
    if (focus == cell->FailPlate()) {
        return 1095;
    }
    if (focus == cell->InfoList()) {
        return 1102;
    }
    if (focus == cell->NamePlate()) {
        return 1103;
    }
    if (focus == cell->ValueTable()) {
        return 1105;
    }
    if (focus == cell->ValueEdit()) {
        return 1106;
    }
    for (int label = 0; label < 6; ++label) {
        if (focus == cell->NamePlate()->Button(label)) {
            return 1200 + label;
        }
    }
    return 0;
}

}  // namespace

// ---- page arithmetic ---------------------------------------------------------------------

int ToviMpiPanel::GetCurrentPage() const {
    return IsPagedMode() ? currentPage : 1;
}

int ToviMpiPanel::GetTotalPage() const {
    return IsPagedMode() ? totalPage : 1;
}

int ToviMpiPanel::GetCountInPage() const {
    int count = 0;
    for (const ToviSpiCtrl* cell : spiCtrls) {
        count += cell->PhotoIndex() >= 0 ? 1 : 0;
    }
    return count;
}

int ToviMpiPanel::GetSelectIndexInPage() const {
    const int sel = SelectedPosition();
    for (size_t i = 0; i < spiCtrls.size(); ++i) {
        if (sel >= 0 && spiCtrls[i]->PhotoIndex() == sel) {
            return static_cast<int>(i);
        }
    }
    return 0;
}

ToviSpiCtrl* ToviMpiPanel::GetSelSpiCtrl() const {
    const int sel = SelectedPosition();
    for (ToviSpiCtrl* cell : spiCtrls) {
        if (sel >= 0 && cell->PhotoIndex() == sel) {
            return cell;
        }
    }
    return nullptr;
}

int ToviMpiPanel::GetTopPosIndex() const {
    const int sel = SelectedPosition();
    return sel >= 0 ? sel : static_cast<int>(visualSetting.GetCountOfSet()) * (currentPage - 1);
}

int ToviMpiPanel::NormalizeTopPhotoId(int id) const {
    const int n = static_cast<int>(visualSetting.GetCountOfSet());
    const int c = data ? data->GetCurrentPhotoCount() : 0;
    if (n <= 0) {
        return 0;
    }
    return ((c < 1 ? 0 : id) / n) * n;
}

int ToviMpiPanel::GetPageNumber(int id) const {
    const int n = static_cast<int>(visualSetting.GetCountOfSet());
    return n > 0 ? NormalizeTopPhotoId(id) / n : 0;
}

void ToviMpiPanel::ResetPageCount(int top) {
    if (!IsPagedMode()) {
        return;
    }
    const int n = static_cast<int>(visualSetting.GetCountOfSet());
    const int c = data ? data->GetCurrentPhotoCount() : 0;
    currentPage = c > 0 && top >= 0 ? top / n + 1 : 1;
    totalPage = c / n + (c % n != 0 ? 1 : 0);
}

// ---- pages and selection -----------------------------------------------------------------

void ToviMpiPanel::OnChangePage() {
    if (!IsPagedMode()) {
        return;
    }
    const int n = static_cast<int>(visualSetting.GetCountOfSet());
    const int first = n * (currentPage - 1);
    for (ToviSpiCtrl* cell : spiCtrls) {
        cell->ClearPhoto();
    }
    bool anySelected = false;
    for (size_t i = 0; i < spiCtrls.size(); ++i) {
        ToviSpiCtrl* cell = spiCtrls[i];
        cell->SetPhoto(first + static_cast<int>(i));
        cell->LayoutChildren();
        cell->show();
        const ToviPhoto* photo = data ? data->GetPhoto(first + static_cast<int>(i)) : nullptr;
        anySelected = anySelected || (photo && photo->IsSelected());
    }
    if (!anySelected) {
        OnSelect(first);
    }
    UpdateMultiDlg();
    InvalidateName();
    emit PageChanged(GetCurrentPage(), GetTotalPage());
    OnPictureShown();
}

bool ToviMpiPanel::OnSelect(int index) {
    if (index < 0 || !data) {
        return false;
    }
    const bool selected = data->PhotoSelectSetting(data->GetPhotoIndex(index));
    if (listCtrl && IsListMode()) {
        EnableCtrlFloaty();
        listCtrl->ScheduleFloaty(true, 500);
    }
    zoomDialogs->FollowSelection();
    if (confirmDlg) {
        confirmDlg->OnSelect(data, data->GetPhoto(index));
    }
    emit PageChanged(GetCurrentPage(), GetTotalPage());
    return selected;
}

void ToviMpiPanel::PageTail(int page) {
    currentPage = page;
    OnChangePage();
    RenewCommentWindows();
}

void ToviMpiPanel::OperateTopPage() {
    PageTail(1);
}

void ToviMpiPanel::OperateLastPage() {
    PageTail(totalPage);
}

void ToviMpiPanel::OperateNextPage() {
    PageTail(currentPage + 1);
}

void ToviMpiPanel::OperatePrevPage() {
    PageTail(currentPage - 1);
}

void ToviMpiPanel::OperateNextPhoto() {
    const int sel = SelectedPosition();
    if (!IsPagedMode()) {
        OnSelect(sel + 1);
        MoveListMark(1);
        return;
    }
    for (size_t i = 0; i < spiCtrls.size(); ++i) {
        if (spiCtrls[i]->PhotoIndex() != sel) {
            continue;
        }
        if (i + 1 == spiCtrls.size()) {
            PageTail(currentPage + 1);
            return;
        }
        OnSelect(spiCtrls[i + 1]->PhotoIndex());
        InvalidateName();
        return;
    }
    if (!spiCtrls.empty()) {
        OnSelect(spiCtrls.front()->PhotoIndex());
        InvalidateName();
    }
}

void ToviMpiPanel::OperatePrevPhoto() {
    const int sel = SelectedPosition();
    if (!IsPagedMode()) {
        OnSelect(sel - 1);
        MoveListMark(-1);
        return;
    }
    for (size_t i = 0; i < spiCtrls.size(); ++i) {
        if (spiCtrls[i]->PhotoIndex() != sel) {
            continue;
        }
        if (i == 0) {
            PageTail(currentPage - 1);
            OnSelect(spiCtrls.back()->PhotoIndex());
        } else {
            OnSelect(spiCtrls[i - 1]->PhotoIndex());
        }
        InvalidateName();
        return;
    }
    if (!spiCtrls.empty()) {
        OnSelect(spiCtrls.front()->PhotoIndex());
        InvalidateName();
    }
}

void ToviMpiPanel::ClearMessageState() {
    zoomMessage = false;
    zoomPhoto = nullptr;
}

// ---- mouse and keyboard ------------------------------------------------------------------

ToviSpiCtrl* ToviMpiPanel::CellOfId(int id) const {
    for (ToviSpiCtrl* cell : spiCtrls) {
        if (cell->Id() == id) {
            return cell;
        }
    }
    return nullptr;
}

void ToviMpiPanel::OnSpiClicked(int id) {
    ToviSpiCtrl* cell = CellOfId(id);
    if (cell && cell != GetSelSpiCtrl()) {
        OnSelect(cell->PhotoIndex());
        InvalidateName();
    }
}

void ToviMpiPanel::OnSpiDblClicked(int id) {
    ToviSpiCtrl* cell = CellOfId(id);
    const ToviPhoto* photo = cell && data ? data->GetPhoto(cell->PhotoIndex()) : nullptr;
    if (photo && photo->IsSelected()) {
        ClearMessageState();
        ShowMultiDlg();
    }
}

void ToviMpiPanel::OnSpiRClicked(int id) {
    ToviSpiCtrl* cell = CellOfId(id);
    if (!cell) {
        return;
    }
    const bool selected = OnSelect(cell->PhotoIndex());
    InvalidateName();
    if (!selected) {
        return;
    }
    if (IsSlideMode()) {
        ToviUi::Instance().MessageBox(
            this, QStringLiteral("スライドモード中は右クリック操作はできません。"), QString(),
            ToviUi::ButtonsOk, ToviUi::IconInformation);
    } else {
        ShowPopUpMenu();
    }
}

void ToviMpiPanel::OnSpiKeyDown(int key) {
    if (key == 0 || !data || spiCtrls.empty()) {
        return;
    }
    const int focusId = WindowIdOf(GetSelSpiCtrl(), QApplication::focusWidget());
    const int c = data->GetCurrentPhotoCount();
    const int sel = SelectedPosition();
    const auto div = visualSetting.GetDivType();
    const bool twoColumns =
        div == ToviPhotoCtrlVisualSetting::Divide4 || div == ToviPhotoCtrlVisualSetting::Divide6;
    const int r = div == ToviPhotoCtrlVisualSetting::Divide4 ? 2 : 3;
    const int i = GetSelectIndexInPage();
    const int k = GetCountInPage();
    const int last = 2 * r - 1;
    const auto selectCell = [this](int target) {
        if (target >= 0 && target < static_cast<int>(spiCtrls.size())) {
            OnSelect(spiCtrls[target]->PhotoIndex());
            InvalidateName();
        }
    };
    switch (key) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            // Enter on a photograph looks at it closely, as a double click does.
            ClearMessageState();
            ShowMultiDlg();
            return;
        case Qt::Key_PageUp:
            if (GetCurrentPage() != 1) {
                OperatePrevPage();
            }
            break;
        case Qt::Key_PageDown:
            if (GetCurrentPage() != GetTotalPage()) {
                OperateNextPage();
            }
            break;
        case Qt::Key_Up:
            if (sel > 0) {
                OperatePrevPhoto();
            }
            break;
        case Qt::Key_Down:
            if (sel < c - 1) {
                OperateNextPhoto();
            }
            break;
        case Qt::Key_Left:
            if (div <= ToviPhotoCtrlVisualSetting::Divide3) {
                if (sel > 0) {
                    OperatePrevPhoto();
                }
            } else if (twoColumns) {
                if (i >= r) {
                    selectCell(i - r);
                } else if (i == 0) {
                    if (GetCurrentPage() != 1) {
                        OperatePrevPage();
                        selectCell(last);
                    }
                } else {
                    selectCell(i + r - 1 > k - 1 ? i - 1 : i + r - 1);
                }
            }
            break;
        case Qt::Key_Right:
            if (div <= ToviPhotoCtrlVisualSetting::Divide3) {
                if (sel < c - 1) {
                    OperateNextPhoto();
                }
            } else if (twoColumns) {
                if (i < r) {
                    if (i + r <= k - 1) {
                        selectCell(i + r);
                    } else if (i != r - 1 && spiCtrls[i + 1]->PhotoIndex() >= 0) {
                        selectCell(i + 1);
                    }
                } else if (i != last) {
                    selectCell(i - r + 1);
                } else if (GetCurrentPage() != GetTotalPage()) {
                    OperateNextPage();
                    InvalidateName();
                }
            }
            break;
        default:
            break;
    }
    if (ToviSpiCtrl* cell = GetSelSpiCtrl()) {
        cell->FocusChild(focusId);
    }
}
