// The multi-photo panel: its cells and their layout, the settings and the hints. Paging and
// the keys, labels, comment strips and the windows it opens each have a file of their own.

#include "panels/ToviMpiPanel.h"

#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "panels/ToviCommentWindow.h"
#include "panels/ToviImageLoader.h"
#include "panels/ToviNamePlate.h"
#include "panels/ToviPanelWindows.h"
#include "panels/ToviPhotoListCtrl.h"
#include "panels/ToviSpiCtrl.h"
#include "panels/ToviZoomDialogs.h"

#include <QPainter>

ToviMpiPanel::ToviMpiPanel(ToviHostDocument* document, QWidget* parent)
    : ToviPanel(parent),
      document(document),
      loader(std::make_unique<ToviImageLoader>()),
      zoomDialogs(std::make_unique<ToviZoomDialogs>(*this)) {
    setObjectName(QStringLiteral("ToviMpiPanel"));
    setFocusPolicy(Qt::NoFocus);
    Load();
}

ToviMpiPanel::~ToviMpiPanel() {
    delete confirmDlg;  // hands its place and size back through EndConfirmDlg
    DestroyListCtrl();
    zoomDialogs->DeleteAllDialog();  // the last one's size is kept for the next run
    DestroyCells();
    Save();
}

bool ToviMpiPanel::Create(QWidget* parent, int id) {
    const bool created = ToviPanel::Create(parent, id);
    if (data) {
        itemDef = data->GetItemDef();
    }
    return created;
}

bool ToviMpiPanel::IsPageShown() const {
    if (listCtrl) {
        return listCtrl->IsViewFilled();
    }
    for (const ToviSpiCtrl* cell : spiCtrls) {
        if (!cell->IsPictureShown()) {
            return false;
        }
    }
    return true;
}

bool ToviMpiPanel::IsPageComplete() const {
    if (listCtrl) {
        return listCtrl->IsViewFilled() && !listCtrl->IsFloatyPending();
    }
    for (const ToviSpiCtrl* cell : spiCtrls) {
        if (!cell->IsFullShown()) {
            return false;
        }
    }
    return true;
}

void ToviMpiPanel::OnPictureShown() {
    if (IsPageShown()) {
        emit PageShown();
    }
}

bool ToviMpiPanel::IsPagedMode() const {
    return visualSetting.GetDivType() <= ToviPhotoCtrlVisualSetting::Divide6 &&
           visualSetting.GetCountOfSet() > 0;
}

int ToviMpiPanel::SelectedPosition() const {
    int pos = -1;
    if (data) {
        data->GetIndexSelected(pos);
    }
    return pos;
}

// ---- building and layout -----------------------------------------------------------------

void ToviMpiPanel::DestroyCells() {
    InitializeCommentWindow();
    for (ToviSpiCtrl* cell : spiCtrls) {
        delete cell;
    }
    spiCtrls.clear();
}

void ToviMpiPanel::InitiateLayput(int top) {
    ResetPageCount(top);
    const int n = static_cast<int>(visualSetting.GetCountOfSet());
    const int c = data ? data->GetCurrentPhotoCount() : 0;
    int first = 0;
    if (IsPagedMode()) {
        first = currentPage < 1 || c < 1 ? 0 : n * (currentPage - 1);
        first = NormalizeTopPhotoId(first);
    }
    DestroyCells();
    DestroyListCtrl();
    if (data && visualSetting.GetDivType() == ToviPhotoCtrlVisualSetting::DivideThumbList) {
        ReCreatetListCtrl();
        SetupThumbListCtrl();
    } else if (data &&
               visualSetting.GetDivType() == ToviPhotoCtrlVisualSetting::DivideManagementList) {
        ReCreateMngListCtrl();
        SetupMngmntListCtrl();
    }
    if (IsPagedMode() && data) {
        int selected = -1;
        for (int i = 0; i < n; ++i) {
            auto* cell = new ToviSpiCtrl(data, &visualSetting, loader.get(), 100 + i, this);
            spiCtrls.push_back(cell);
            connect(cell, &ToviSpiCtrl::Clicked, this, &ToviMpiPanel::OnSpiClicked);
            connect(cell, &ToviSpiCtrl::DoubleClicked, this, &ToviMpiPanel::OnSpiDblClicked);
            connect(cell, &ToviSpiCtrl::RightClicked, this, &ToviMpiPanel::OnSpiRClicked);
            connect(cell, &ToviSpiCtrl::KeyPressed, this, &ToviMpiPanel::OnSpiKeyDown);
            connect(cell, &ToviSpiCtrl::PictureShown, this, &ToviMpiPanel::OnPictureShown);
            connect(cell, &ToviSpiCtrl::PasteLabel, this, &ToviMpiPanel::OnSpiPasteLabel);
            connect(cell, &ToviSpiCtrl::RemoveLabel, this, &ToviMpiPanel::OnSpiRemoveLabel);
            connect(cell, &ToviSpiCtrl::CommentChanged, this,
                    &ToviMpiPanel::OnSpiUpdateCommentWindow);
            cell->ApplyLabelNames();
            cell->SetPhoto(first + i);
            cell->show();
            const ToviPhoto* photo = data->GetPhoto(first + i);
            if (photo && photo->IsSelected()) {
                selected = first + i;
            }
        }
        if (c > 0) {
            OnSelect(selected >= 0 ? selected : first);
        }
        InvalidateName();
    }
    if (visualSetting.GetDivType() != ToviPhotoCtrlVisualSetting::DivideManagementList) {
        InitializeCommentWindow();
        CreateCommentWindow();
    }
    RecalcLayout();
    if (listCtrl) {
        listCtrl->EnsureMarkVisible();  // now that the list has its size
    }
    ReCalcCommentWindow();
    InvalidateAllCtrls();
    emit PageChanged(GetCurrentPage(), GetTotalPage());
    OnPictureShown();
}

void ToviMpiPanel::Initialize() {
    int pos = 0;
    if (data) {
        data->GetIndexSelected(pos);
    }
    if (pos == -1) {
        pos = static_cast<int>(visualSetting.GetCountOfSet()) * (currentPage - 1);
    }
    InitiateLayput(pos);
    itemDef = data ? data->GetItemDef() : nullptr;
}

void ToviMpiPanel::RecalcLayout() {
    const QRect client = rect();
    if (listCtrl && !client.isEmpty()) {
        listCtrl->setGeometry(client);
        if (visualSetting.GetDivType() == ToviPhotoCtrlVisualSetting::DivideThumbList &&
            visualSetting.GetVisibleComment()) {
            ReCalcCommentWindow();
        }
        return;
    }
    if (client.isEmpty() || spiCtrls.empty() || !IsPagedMode()) {
        return;
    }
    const int rows = static_cast<int>(visualSetting.GetRowCount());
    const int cols = static_cast<int>(visualSetting.GetColCount());
    const int gap = 2;
    int x = 0;
    int w = client.width() / cols;
    int h = client.height() / rows;
    size_t next = 0;
    for (int column = 1; column <= cols; ++column) {
        int y = 0;
        for (int row = 1; row <= rows && next < spiCtrls.size(); ++row) {
            spiCtrls[next++]->setGeometry(x, y, w, h);
            if (row != rows) {
                y += h + gap;
                h = (client.height() - y) / (rows - row);
            }
        }
        if (column != cols) {
            x += w + gap;
            w = (client.width() - x) / (cols - column);
        }
        h = client.height() / rows;
    }
    if (visualSetting.GetVisibleComment()) {
        ReCalcCommentWindow();
    }
}

void ToviMpiPanel::InvalidateName() {
    for (ToviSpiCtrl* cell : spiCtrls) {
        cell->InvalidateNamePlate();
    }
}

void ToviMpiPanel::InvalidateAllCtrls() {
    for (ToviSpiCtrl* cell : spiCtrls) {
        cell->update();
    }
    update();
}

void ToviMpiPanel::UpdateNamePlate() {
    for (ToviSpiCtrl* cell : spiCtrls) {
        cell->UpdateLabelButtons();
    }
}

void ToviMpiPanel::ShowCheckResults() {
    if (listCtrl) {
        listCtrl->InvalidateAllItems();
        return;
    }
    for (ToviSpiCtrl* cell : spiCtrls) {
        const ToviPhoto* photo = data ? data->GetPhoto(cell->PhotoIndex()) : nullptr;
        if (photo) {
            cell->NamePlate()->SetCheckStatus(static_cast<int>(photo->GetEditChkResult()));
        }
    }
}

void ToviMpiPanel::resizeEvent(QResizeEvent*) {
    RecalcLayout();
}

void ToviMpiPanel::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), Qt::white);
}

// ---- settings and hints ------------------------------------------------------------------

void ToviMpiPanel::SetVisualSetting(const ToviPhotoCtrlVisualSetting& setting, bool force) {
    const bool rebuild = setting.GetRowCount() != visualSetting.GetRowCount() ||
                         setting.GetColCount() != visualSetting.GetColCount() ||
                         setting.GetDivType() == ToviPhotoCtrlVisualSetting::DivideThumbList ||
                         visualSetting.IsChangeEditCheckTerm(setting) || force;
    const bool itemsChanged = setting.GetItemShowSettings() != visualSetting.GetItemShowSettings();
    const bool arrangeChanged =
        setting.GetImageTextArrange() != visualSetting.GetImageTextArrange();
    const bool detailChanged = setting.GetVisibleDetail() != visualSetting.GetVisibleDetail();
    const bool commentChanged = setting.GetVisibleComment() != visualSetting.GetVisibleComment();
    int top = 0;
    if (data) {
        data->GetIndexSelected(top);
    }
    if (top == -1) {
        top = static_cast<int>(visualSetting.GetCountOfSet()) * (currentPage - 1);
    }
    visualSetting = setting;
    const bool listMode = setting.GetDivType() >= ToviPhotoCtrlVisualSetting::DivideThumbList;
    if (listMode && arrangeChanged) {
        return;
    }
    if (rebuild) {
        InitiateLayput(top);
        return;
    }
    if (commentChanged) {
        if (setting.GetDivType() == ToviPhotoCtrlVisualSetting::DivideManagementList) {
            Initialize();
        } else {
            if (setting.GetVisibleComment()) {
                ReCalcCommentWindow();
            }
            for (ToviCommentWindow* window : commentWindows) {
                if (window) {
                    window->ShowIfAny(setting.GetVisibleComment());
                }
            }
            for (ToviSpiCtrl* cell : spiCtrls) {
                cell->LayoutChildren();  // the comment strip comes or goes above the picture
            }
        }
    }
    for (ToviSpiCtrl* cell : spiCtrls) {
        if (itemsChanged) {
            cell->FillInfo();
        }
        if (arrangeChanged) {
            cell->LayoutChildren();
        }
    }
    if (arrangeChanged && !commentWindows.empty() && setting.GetVisibleComment()) {
        ReCalcCommentWindow();
    }
    if (!detailChanged && !arrangeChanged && !commentChanged) {
        Initialize();
    }
}

void ToviMpiPanel::OnPreDetachData() {
    for (ToviSpiCtrl* cell : spiCtrls) {
        cell->SetPhoto(-1);
    }
    DestroyListCtrl();          // its models read the document on every paint
    InitializeCommentWindow();  // no comment outlives its document on screen
    zoomDialogs->DeleteAllDialog();
}

void ToviMpiPanel::OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object) {
    ToviPanel::OnUpdate(sender, hint, object);
    if (!data) {
        delete confirmDlg;
        return;
    }
    const int n = static_cast<int>(visualSetting.GetCountOfSet());
    switch (hint) {
        case ToviData::HintInitialize:
            SetVisualSetting(data->GetVisualSetting(), false);
            Initialize();
            break;
        case ToviData::HintSelectionChanged:
            RefillList(true);
            if (IsPagedMode()) {
                ResetPageCount(0);
                const int sel = SelectedPosition();
                if (sel >= 0) {
                    currentPage = sel / n + 1;
                }
                OnChangePage();
            }
            if (visualSetting.GetDivType() != ToviPhotoCtrlVisualSetting::DivideManagementList) {
                RenewCommentWindows();
            }
            break;
        case ToviData::HintPageReset:
            RefillList(false);
            if (IsPagedMode()) {
                ResetPageCount(0);
                OnChangePage();
                // The strips would otherwise stay over the photographs of the page left.
                RenewCommentWindows();
            }
            break;
        case ToviData::HintCurrentArrayChanged:
            ResetPageCount(0);
            Initialize();
            OnChangePage();
            break;
        case ToviData::HintLabelsChanged:
            if (listCtrl) {
                // Every tile and row is read anew, comments included.
                listCtrl->InvalidateAllItems();
                EnableCtrlFloaty();
                data->UpdateHasComment();
                break;
            }
            UpdateNamePlate();
            if (IsPagedMode()) {
                for (size_t i = 0; i < spiCtrls.size() && spiCtrls[i]->PhotoIndex() >= 0; ++i) {
                    if (const ToviPhoto* photo = data->GetPhoto(spiCtrls[i]->PhotoIndex())) {
                        UpdateComment(static_cast<int>(i), photo->GetComment());
                    }
                }
            }
            break;
        case ToviData::HintSettingsChanged:
            SetVisualSetting(data->GetVisualSetting(), false);
            break;
        case ToviData::HintPhotoSelected:
            for (ToviSpiCtrl* cell : spiCtrls) {
                cell->ClearAnchor();
            }
            if (confirmDlg) {
                confirmDlg->OnSelect(data, data->GetSelectedPhoto());
            }
            break;
        default:
            break;
    }
}
