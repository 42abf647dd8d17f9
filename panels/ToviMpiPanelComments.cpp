// The comment strips over the cells of the page.

#include "panels/ToviMpiPanel.h"

#include "document/ToviPhoto.h"
#include "panels/ToviCommentWindow.h"
#include "panels/ToviPhotoListCtrl.h"
#include "panels/ToviSpiCtrl.h"
#include "platform/ToviCheck.h"

// ---- comments ---------------------------------------------------------------------------

int ToviMpiPanel::CommentIndex() const {
    return IsPagedMode() ? GetSelectIndexInPage() : SelectedPosition();
}

void ToviMpiPanel::OnSpiUpdateCommentWindow(ToviSpiCtrl* cell) {
    const ToviPhoto* photo = data && cell ? data->GetPhoto(cell->PhotoIndex()) : nullptr;
    UpdateComment(GetSelectIndexInPage(), photo ? photo->GetComment() : QString());
}

void ToviMpiPanel::UpdateComment(int index, const QString& text) {
    if (listCtrl) {
        listCtrl->SetComment(index, text);  // the strip or the comment column
    } else if (visualSetting.GetDivType() != ToviPhotoCtrlVisualSetting::DivideManagementList) {
        ToviCheckIndex(index, static_cast<qsizetype>(commentWindows.size()),
                       "ToviMpiPanel::UpdateComment");
        if (ToviCommentWindow* window = commentWindows[static_cast<size_t>(index)]) {
            window->SetComment(text);
            window->ShowIfAny(visualSetting.GetVisibleComment());
        }
        if (IsPagedMode() && static_cast<size_t>(index) < spiCtrls.size()) {
            spiCtrls[static_cast<size_t>(index)]->LayoutChildren();
        }
    }
    if (data) {
        data->UpdateHasComment();
    }
}

void ToviMpiPanel::CreateCommentWindow() {
    InitializeCommentWindow();
    commentWindows.resize(static_cast<size_t>(IsPagedMode() ? GetCountInPage() : 0));
}

void ToviMpiPanel::CreateCommentWindow(const int& index) {
    ToviCheckIndex(index, static_cast<qsizetype>(commentWindows.size()),
                   "ToviMpiPanel::CreateCommentWindow");
    QPointer<ToviCommentWindow>& slot = commentWindows[static_cast<size_t>(index)];
    const int n = static_cast<int>(visualSetting.GetCountOfSet());
    if (slot || !IsPagedMode() || !visualSetting.GetVisibleComment() || !data) {
        return;
    }
    ToviSpiCtrl* cell = spiCtrls[static_cast<size_t>(index % n)];
    const int position = index + n * (currentPage - 1);
    auto* window = new ToviCommentWindow(QString(), position, cell);
    QFont font = window->font();
    font.setPointSize(9);
    window->setFont(font);
    window->raise();
    cell->AdoptCommentWindow(window);
    const ToviPhoto* photo = data->GetPhoto(position);
    window->SetComment(photo ? photo->GetComment() : QString());
    slot = window;
    window->ShowIfAny(visualSetting.GetVisibleComment());
}

void ToviMpiPanel::ReCalcCommentWindow() {
    if (!IsPagedMode() || !visualSetting.GetVisibleComment()) {
        return;  // the list modes keep no strips here yet
    }
    const int count = GetCountInPage();
    if (static_cast<size_t>(count) != commentWindows.size()) {
        CreateCommentWindow();
    }
    const int width = count > 0 ? spiCtrls.front()->GetImageSize().width() : 0;
    for (int index = 0; index < static_cast<int>(commentWindows.size()); ++index) {
        CreateCommentWindow(index);
        ToviCommentWindow* window = commentWindows[static_cast<size_t>(index)];
        if (!window) {
            continue;
        }
        window->setGeometry(0, 0, width, ToviCommentWindow::kHeight);
        window->update();
        if (!window->Comment().isEmpty()) {
            window->show();
        }
    }
}

void ToviMpiPanel::InitializeCommentWindow() {
    for (QPointer<ToviCommentWindow>& window : commentWindows) {
        delete window.data();
    }
    commentWindows.clear();
}

void ToviMpiPanel::RenewCommentWindows() {
    InitializeCommentWindow();
    CreateCommentWindow();
    if (visualSetting.GetVisibleComment()) {
        ReCalcCommentWindow();
    }
}
