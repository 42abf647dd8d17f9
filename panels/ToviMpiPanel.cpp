#include "panels/ToviMpiPanel.h"

#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "panels/ToviCommentWindow.h"
#include "panels/ToviControlValueTable.h"
#include "panels/ToviImageLoader.h"
#include "panels/ToviNamePlate.h"
#include "panels/ToviPhotoListCtrl.h"
#include "panels/ToviPanelWindows.h"
#include "panels/ToviSlideMode.h"
#include "panels/ToviSpiCtrl.h"
#include "panels/ToviSpiListCtrl.h"
#include "platform/ToviCheck.h"
#include "platform/ToviProfile.h"
#include "platform/ToviUi.h"
#include "platform/widgets/LumImgWnd.h"
#include "review/ToviLabelManager.h"

#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPainter>

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

namespace {

const QString kCommentDialog = QStringLiteral("ToviInputCommentDlg");
const QString kCommentField = QStringLiteral("comment");
constexpr unsigned kZoomCommand = 32770;
constexpr unsigned kFirstRemoveCommand = 32772;
constexpr unsigned kFirstPasteCommand = 32778;
constexpr unsigned kRemoveAllCommand = 32784;

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

ToviMpiPanel::ToviMpiPanel(ToviHostDocument* document, QWidget* parent)
    : ToviPanel(parent), document(document), loader(std::make_unique<ToviImageLoader>()) {
    setObjectName(QStringLiteral("ToviMpiPanel"));
    setFocusPolicy(Qt::NoFocus);
    Load();
}

ToviMpiPanel::~ToviMpiPanel() {
    delete confirmDlg;  // hands its place and size back through EndConfirmDlg
    DestroyListCtrl();
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
        ClearMessageState();  // the zoom dialog comes with the review windows
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

// ---- labels and comments -----------------------------------------------------------------

ToviPhoto* ToviMpiPanel::SelectedPhoto() const {
    const int sel = SelectedPosition();
    return data && sel >= 0 ? data->GetPhoto(sel) : nullptr;
}

int ToviMpiPanel::CommentIndex() const {
    return IsPagedMode() ? GetSelectIndexInPage() : SelectedPosition();
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
    ClearMessageState();  // the zoom dialog comes with the review windows
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
    zoom->setEnabled(false);  // the zoom dialog comes with the review windows
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
