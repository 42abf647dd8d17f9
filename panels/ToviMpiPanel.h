#pragma once

#include "panels/ToviPanel.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QPointer>

#include <memory>
#include <vector>

class ToviCommentWindow;
class ToviConfirmView;
class ToviHostDocument;
class ToviImageLoader;
class ToviItemDef;
class ToviPhoto;
class ToviPhotoListCtrl;
class ToviSpiCtrl;
class ToviZoomDialogs;

// The main viewing area: the document's current photographs as pages of one to six cells
// (the paged modes 0 to 4), paged and walked with the mouse and the keyboard. The list modes
// 5 and 6 show nothing here yet. All positions are positions in the current array.
class ToviMpiPanel : public ToviPanel {
    Q_OBJECT
    friend class ToviZoomDialogs;  // keeps the windows' size and place in the panel's fields

public:
    static const QString MultiDialogSection_;    // "MultiDialogSize"
    static const QString MultiDialogSection2_;   // "MultiDialogInfo"
    static const QString ConfirmDialogSection_;  // "ConfirmDialog"
    static const QString MultiDlgWEntry_;
    static const QString MultiDlgHEntry_;
    static const QString MultiDlgTabIdxEntry_;
    static const QString MultiDlgSplPosEntry_;
    static const QString MultiDlgZoomEntry_;
    static const QString MultiDlgInfoEntry_;
    static const QString ConfirmDlgPosXEntry_;
    static const QString ConfirmDlgPosYEntry_;
    static const QString ConfirmDlgWEntry_;
    static const QString ConfirmDlgHEntry_;

    // Reads the zoom and confirm dialogs' settings from the profile; makes no cell yet.
    explicit ToviMpiPanel(ToviHostDocument* document, QWidget* parent = nullptr);
    // Writes those settings back.
    ~ToviMpiPanel() override;

    bool Create(QWidget* parent, int id) override;
    void OnPreDetachData() override;
    void OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object) override;

    int GetCurrentPage() const;
    int GetTotalPage() const;
    int GetCountInPage() const;
    int GetSelectIndexInPage() const;
    ToviSpiCtrl* GetSelSpiCtrl() const;
    int GetTopPosIndex() const;
    const ToviPhotoCtrlVisualSetting& GetVisualSetting() const { return visualSetting; }
    void SetVisualSetting(const ToviPhotoCtrlVisualSetting& setting, bool force);
    // Page moves do not check their bounds: callers test GetCurrentPage first.
    void OperateTopPage();
    void OperateLastPage();
    void OperateNextPage();
    void OperatePrevPage();
    void OperateNextPhoto();
    void OperatePrevPhoto();
    void ClearMessageState();
    bool IsPagedMode() const;
    // Every cell of the page has its first picture (or its fail plate) on screen.
    bool IsPageShown() const;
    // Every cell of the page has its whole picture (or its fail plate) on screen.
    bool IsPageComplete() const;
    const std::vector<ToviSpiCtrl*>& Cells() const { return spiCtrls; }

    // The page arithmetic and the layout, open to the host and the tests.
    int GetPageNumber(int id) const;
    int NormalizeTopPhotoId(int id) const;
    void ResetPageCount(int top);
    void OnChangePage();
    bool OnSelect(int index);
    void InitiateLayput(int top);
    void Initialize();
    void RecalcLayout();
    void InvalidateName();
    void InvalidateAllCtrls();
    void UpdateNamePlate();
    // Shows on every cell's name plate, or list row, the tamper-check result the photograph
    // holds now, without checking it again.
    void ShowCheckResults();
    void OnSpiKeyDown(int key);
    bool Load();
    bool Save() const;

    // The photograph selected in the current array; null when none is.
    ToviPhoto* SelectedPhoto() const;
    // Labels and the comment of the selected photograph; nothing without one. Label 4 opens
    // the comment dialog; OK pasted removes the NG labels and an NG label removes OK.
    void PasteLabel(int label);
    // Removing label 4 empties the comment first; slide mode refuses it.
    void RemoveLabel(int label);
    void OnPasteLabel(unsigned id);
    void OnRemoveLabel(unsigned id);
    void OnRemoveAllLabel();
    void OnShowProperty();
    // The zoom windows of the selected photograph (at most six; the loose ones follow the
    // selection), refreshed after a page change, and all closed.
    void ShowMultiDlg();
    void UpdateMultiDlg();
    void DeleteAllDialog();
    ToviZoomDialogs* ZoomDialogs() const { return zoomDialogs.get(); }
    // The right-click menu of the selected photograph, at the cursor.
    void ShowPopUpMenu();

    // The comment strips over the cells of the page, one slot per photograph on it.
    void UpdateComment(int index, const QString& text);
    void CreateCommentWindow();
    void CreateCommentWindow(const int& index);
    void ReCalcCommentWindow();
    void InitializeCommentWindow();
    const std::vector<QPointer<ToviCommentWindow>>& CommentWindows() const {
        return commentWindows;
    }

    // The floating window that marks where the selected photograph sits in the tree, made by
    // the maker the host installed (SetPanelWindows); nothing without one.
    void ShowConfirmDlg();
    // Called by the confirm window as it goes: its place and size are kept for the next one.
    void EndConfirmDlg();
    ToviConfirmView* ConfirmDlg() const { return confirmDlg; }

    // ---- the list modes 5 and 6 (ToviMpiPanelLists.cpp)
    // The list of the mode, made anew; the previous one goes.
    void ReCreatetListCtrl();
    void ReCreateMngListCtrl();
    // Refills the list from the current array and selects the selected photograph (the first
    // when none is), scrolled into view, with the floaty 500 ms later.
    void SetupThumbListCtrl();
    void SetupMngmntListCtrl();
    ToviPhotoListCtrl* ListCtrl() const { return listCtrl; }
    // A floaty button: toggles the label on the selected photograph; the comment button
    // always opens the comment dialog.
    void OnFusen(unsigned label);
    void OnFusen01() { OnFusen(0); }
    void OnFusen02() { OnFusen(1); }
    void OnFusen03() { OnFusen(2); }
    void OnFusen04() { OnFusen(3); }
    void OnFusen05() { OnFusen(4); }
    void OnFusen06() { OnFusen(5); }
    // The floaty's buttons show the labels of the selected photograph.
    void EnableCtrlFloaty();
    void ShowFloaty(bool show);
    // Keys the list let through: Left and Right wrap to the neighbouring row of tiles.
    void OnListCtrlKeyDown(int key, int markBefore);

    int DialogWidth() const { return dlgWidth; }
    int DialogHeight() const { return dlgHeight; }
    int DialogSplitterPos() const { return dlgSplPos; }

signals:
    // The page or the selection moved: the host refreshes its page indicator.
    void PageChanged(int currentPage, int totalPage);
    // The page's pictures are all on screen (IsPageShown became true).
    void PageShown();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    int SelectedPosition() const;  // -1 when no photograph of the current array is selected
    void PageTail(int page);
    void DestroyCells();
    void OnPictureShown();
    void OnSpiClicked(int id);
    void OnSpiDblClicked(int id);
    void OnSpiRClicked(int id);
    ToviSpiCtrl* CellOfId(int id) const;
    void OnSpiPasteLabel(int label, ToviSpiCtrl* cell);
    void OnSpiRemoveLabel(int label, ToviSpiCtrl* cell);
    void OnSpiUpdateCommentWindow(ToviSpiCtrl* cell);
    // The closing steps of every label change made from the panel.
    void LabelsChanged();
    // Where the comment of the selected photograph is shown: its place on the page.
    int CommentIndex() const;
    void RenewCommentWindows();
    bool IsListMode() const;
    void DestroyListCtrl();
    void ConnectListCtrl();
    // Selects in the list the document's selected photograph, or the first, as a refill ends.
    void SelectInList();
    void OnListCommand(int command);
    void OnLvnItemchangedList(int row);
    void OnDClicked(int row);
    void OnRClicked(int row);
    void OnScrollList();
    // Moves the list's selection mark by step, as the neighbour-photo moves do.
    void MoveListMark(int step);
    // Hints 2 and 3 in the list modes: the list refilled; withSelect: the document follows
    // the list's selection.
    void RefillList(bool withSelect);

    ToviItemDef* itemDef = nullptr;
    bool zoomMessage = false;
    void* zoomPhoto = nullptr;
    int dlgWidth = 0;
    int dlgHeight = 0;
    int dlgTabIndex = 1;
    int dlgSplPos = 180;
    bool dlgZoom = false;
    bool dlgInfo = true;
    int confirmWidth = 0;
    int confirmHeight = 0;
    int confirmPosX = 0;
    int confirmPosY = 0;
    ToviHostDocument* document;
    std::vector<ToviSpiCtrl*> spiCtrls;     // children of the panel
    ToviPhotoListCtrl* listCtrl = nullptr;  // a child of the panel in the list modes
    int currentPage = 0;
    int totalPage = 0;
    ToviPhotoCtrlVisualSetting visualSetting;
    std::unique_ptr<ToviImageLoader> loader;
    std::unique_ptr<ToviZoomDialogs> zoomDialogs;
    // Children of the cells; a strip goes with its cell, hence the guarded pointers.
    std::vector<QPointer<ToviCommentWindow>> commentWindows;
    ToviConfirmView* confirmDlg = nullptr;
};
