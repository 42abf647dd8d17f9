// Label operations on the selected photograph and the cells' label buttons, and the
// right-click menu.

#include "panels/ToviMpiPanel.h"

#include "document/ToviPhoto.h"
#include "panels/ToviPhotoListCtrl.h"
#include "panels/ToviSlideMode.h"
#include "panels/ToviSpiCtrl.h"
#include "platform/ToviUi.h"
#include "review/ToviLabelManager.h"

#include <QCursor>
#include <QMenu>

namespace {

const QString kCommentDialog = QStringLiteral("ToviInputCommentDlg");
const QString kCommentField = QStringLiteral("comment");
constexpr unsigned kZoomCommand = 32770;
constexpr unsigned kFirstRemoveCommand = 32772;
constexpr unsigned kFirstPasteCommand = 32778;
constexpr unsigned kRemoveAllCommand = 32784;

}  // namespace

// ---- labels -----------------------------------------------------------------------------

ToviPhoto* ToviMpiPanel::SelectedPhoto() const {
    const int sel = SelectedPosition();
    return data && sel >= 0 ? data->GetPhoto(sel) : nullptr;
}

void ToviMpiPanel::LabelsChanged() {
    if (!data->IsCheckStatusChanged()) {
        data->SetCheckStatusChanged(true);
    }
    data->UpdatePhotoInf(nullptr);
    if (listCtrl) {
        listCtrl->InvalidateItem(SelectedPosition());
    } else if (ToviSpiCtrl* cell = GetSelSpiCtrl()) {
        cell->UpdateLabelButtons();
    }
    EnableCtrlFloaty();
}

void ToviMpiPanel::PasteLabel(int label) {
    ToviPhoto* photo = SelectedPhoto();
    if (!photo || label < 0 || label > 5) {
        return;
    }
    if (label == 4) {
        QVariantMap values{{kCommentField, photo->GetComment()}};
        if (ToviUi::Instance().RunDialog(this, kCommentDialog, values)) {
            const QString text = values.value(kCommentField).toString();
            QString bare = text;
            bare.remove(QLatin1Char(' ')).remove(QChar(0x3000));
            if (bare.isEmpty()) {
                photo->SetComment(QString());
                photo->RemoveLabel(4);
            } else {
                photo->SetComment(text);
                photo->PasteLabel(4);
            }
            UpdateComment(CommentIndex(), photo->GetComment());
        }
    } else {
        photo->PasteLabel(static_cast<unsigned>(label));
        if (label == 0) {
            for (unsigned ng = 1; ng <= 3; ++ng) {
                photo->RemoveLabel(ng);
            }
        } else if (label <= 3) {
            photo->RemoveLabel(0);
        }
    }
    LabelsChanged();
}

void ToviMpiPanel::RemoveLabel(int label) {
    ToviPhoto* photo = SelectedPhoto();
    if (!photo || label < 0 || label > 5) {
        return;
    }
    if (label == 4) {
        if (IsSlideMode()) {
            ToviUi::Instance().MessageBox(
                this, QStringLiteral("スライドモード中はコメントの編集ができません。"), QString(),
                ToviUi::ButtonsOk, ToviUi::IconInformation);
            return;
        }
        photo->SetComment(QString());
        UpdateComment(CommentIndex(), QString());
    }
    photo->RemoveLabel(static_cast<unsigned>(label));
    LabelsChanged();
}

void ToviMpiPanel::OnPasteLabel(unsigned id) {
    PasteLabel(static_cast<int>(id - kFirstPasteCommand));
}

void ToviMpiPanel::OnRemoveLabel(unsigned id) {
    RemoveLabel(static_cast<int>(id - kFirstRemoveCommand));
}

void ToviMpiPanel::OnRemoveAllLabel() {
    ToviPhoto* photo = SelectedPhoto();
    if (!photo) {
        return;
    }
    photo->RemoveAllLabel();
    data->UpdatePhotoInf(nullptr);
    if (listCtrl) {
        listCtrl->InvalidateItem(SelectedPosition());
    } else if (ToviSpiCtrl* cell = GetSelSpiCtrl()) {
        cell->UpdateLabelButtons();
    }
    UpdateComment(CommentIndex(), QString());
    if (!data->IsCheckStatusChanged()) {
        data->SetCheckStatusChanged(true);
    }
}

void ToviMpiPanel::OnShowProperty() {
    ClearMessageState();
    ShowMultiDlg();
}

void ToviMpiPanel::ShowPopUpMenu() {
    const ToviPhoto* photo = SelectedPhoto();
    const ToviLabelManager* labels = data ? data->GetLabelManager() : nullptr;
    if (!photo || !labels) {
        return;
    }
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("popUpMenu"));
    QAction* zoom = menu.addAction(QStringLiteral("写真拡大[情報](&Z)"));
    zoom->setObjectName(QStringLiteral("command%1").arg(kZoomCommand));
    connect(zoom, &QAction::triggered, this, &ToviMpiPanel::OnShowProperty);
    QMenu* paste = menu.addMenu(QStringLiteral("付箋の貼り付け(&S)"));
    QMenu* remove = menu.addMenu(QStringLiteral("付箋の削除(&R)"));
    bool any = false;
    for (unsigned label = 0; label < 6; ++label) {
        const QString name = labels->GetLabelAttribute(label).GetName();
        const bool pasted = photo->IsLabelPasted(label);
        any = any || pasted;
        QAction* pasteItem = paste->addAction(name);
        pasteItem->setObjectName(QStringLiteral("command%1").arg(kFirstPasteCommand + label));
        pasteItem->setEnabled(!pasted);
        connect(pasteItem, &QAction::triggered, this,
                [this, label] { OnPasteLabel(kFirstPasteCommand + label); });
        QAction* removeItem = remove->addAction(name);
        removeItem->setObjectName(QStringLiteral("command%1").arg(kFirstRemoveCommand + label));
        removeItem->setEnabled(pasted);
        connect(removeItem, &QAction::triggered, this,
                [this, label] { OnRemoveLabel(kFirstRemoveCommand + label); });
    }
    remove->addSeparator();
    QAction* all = remove->addAction(QStringLiteral("全て"));
    all->setObjectName(QStringLiteral("command%1").arg(kRemoveAllCommand));
    all->setEnabled(any);
    connect(all, &QAction::triggered, this, &ToviMpiPanel::OnRemoveAllLabel);
    if (listCtrl) {
        listCtrl->ScheduleFloaty(false, 0);
    }
    menu.exec(QCursor::pos());
    if (listCtrl && IsListMode()) {
        EnableCtrlFloaty();
        listCtrl->ScheduleFloaty(true, 500);
    }
}

void ToviMpiPanel::OnSpiPasteLabel(int label, ToviSpiCtrl* cell) {
    ToviPhoto* photo = data && cell ? data->GetPhoto(cell->PhotoIndex()) : nullptr;
    if (!photo) {
        return;
    }
    photo->PasteLabel(static_cast<unsigned>(label));
    data->UpdatePhotoInf(nullptr);
    cell->UpdateLabelButtons();
}

void ToviMpiPanel::OnSpiRemoveLabel(int label, ToviSpiCtrl* cell) {
    ToviPhoto* photo = data && cell ? data->GetPhoto(cell->PhotoIndex()) : nullptr;
    if (!photo) {
        return;
    }
    photo->RemoveLabel(static_cast<unsigned>(label));
    data->UpdatePhotoInf(nullptr);
    cell->UpdateLabelButtons();
}
