#pragma once

#include "app/ToviViewerDocument.h"

#include <QMainWindow>
#include <QList>
#include <QStringList>
#include <QTimer>

class QAction;
class QActionGroup;
class QLabel;
class QDockWidget;
class QMenu;
class QMimeData;
class QStackedWidget;
class QTabWidget;
class QToolButton;
class ToviCheckPane;
class ToviDetailPanel;
class ToviExtractionDlg;
class ToviFolderTreePanel;
class ToviLabelTreePanel;
class ToviMpiPanel;
class ToviPanel;
class ToviItemManager;
class ToviLabelManager;
class ToviPhotoCtrlVisualSetting;
class ToviSortCondition;

// The viewer's main window: the multi-photo panel in the centre, the classification tree and
// the label tree as two tabs of one dock, the menus and tool bar, the page indicator, the
// recent deliveries, and the slide show.
class ToviMainWindow : public QMainWindow {
    Q_OBJECT

public:
    static const QString FrameSection_;   // "MainFrame"
    static const QString RecentSection_;  // "RecentDelivery"
    static const QString FamilyEntry_;    // "Family", in FrameSection_
    static constexpr int kRecentCount = 8;
    static constexpr int kSlideIntervalMs = 3000;

    explicit ToviMainWindow(QWidget* parent = nullptr);
    ~ToviMainWindow() override;

    // Opens a delivery (its folder or its PHOTO folder), asking first about unsaved labels
    // and comments of the one open now. True when it is open.
    bool OpenDelivery(const QString& folder, PhotoXMLType family);
    // The record commands; each tells its outcome in one message.
    bool SaveRecord();
    bool LoadRecord(const QString& path = QString());
    // The record with each photograph's file named too; the unsaved-work flag stays.
    bool SaveRecordWithPaths();
    // The page of the delivery's index file, in a window of its own.
    bool ShowIndexPage();
    // Asks whether unsaved labels and comments are to be saved: false when the user
    // cancelled, or chose to save and the save did not happen.
    bool ConfirmDiscard();
    // Pastes label on the selected photograph, or takes it off when it is there (the comment
    // label always opens the comment).
    void ToggleLabel(int label);
    void SetDivideType(int type);
    void SetTreeType(int type);
    // The batch correction of the labels of the photographs on show (付箋の一括訂正・削除).
    bool BatchLabelCorrection();
    // The tamper check over the photographs on show, its count in the status bar; false when
    // it didn't run or was cancelled (the results so far stay).
    bool RunEditCheck();
    // 撮影日の照合: the date table of the photographs on show, read off the UI thread with a
    // progress window; false when it didn't open or was cancelled.
    bool ShowDateTable();
    // Selects the photograph (its PHOTO.XML index) in the multi-photo panel, turning to its
    // page; false when it is not among those on show.
    bool SelectPhotoOnShow(int photoIndex);
    // Sorting off (an empty key) or by key, and the direction; the photographs on show are
    // gathered again in the new order.
    void SetSortChoice(const QString& key, bool ascending);
    QString EditCheckText() const;
    void StartSlideShow();
    void StopSlideShow();
    bool IsSlideShow() const { return slideShow; }
    // 設定: the setup dialog on copies of the open delivery's settings, or of the stored ones
    // with none open; OK applies and stores them.
    void OpenSetUp();
    // Puts what the setup dialog returned into the open delivery (rebuilding the tree or
    // reordering the photographs where the change asks for it) and tells the views once;
    // then stores the settings, and says so when the profile store can't be written.
    void ApplySetUp(const ToviLabelManager& labels, const ToviPhotoCtrlVisualSetting& visual,
                    const ToviSortCondition& sort, const ToviItemManager& items);
    // Tab 0 the classification tree, 1 the labels, with the panels' visibility calls.
    void ShowTreeTab(int index);

    ToviViewerDocument* Document() const { return document; }
    ToviMpiPanel* MpiPanel() const { return mpiPanel; }
    ToviFolderTreePanel* FolderTree() const { return folderTree; }
    ToviLabelTreePanel* LabelTree() const { return labelTree; }
    ToviDetailPanel* DetailPanel() const { return detailPanel; }
    QDockWidget* DetailDock() const { return detailDock; }
    // Shows or hides the detail panel, kept in the document's settings (F9).
    void ToggleDetailPanel();
    QTabWidget* TreeTabs() const { return treeTabs; }
    ToviExtractionDlg* ExtractionDlg() const { return extractionDlg; }
    QDockWidget* ExtractionDock() const { return extractionDock; }
    // Shows the extraction window and puts the keyboard in it (Ctrl+F).
    void ShowExtraction();
    QString PageIndicatorText() const;
    // The delivery checks (ToviMainWindowChecks.cpp): the dock of their findings, shown by F8;
    // RunChecks shows it and checks the open delivery again (Ctrl+Shift+V). A finding's
    // photograph is selected in the multi-photo panel, after asking to show every photograph
    // when it is not among those on show.
    ToviCheckPane* CheckPane() const { return checkPane; }
    QDockWidget* CheckDock() const { return checkDock; }
    bool RunChecks();
    bool ShowFindingPhoto(int index);
    // What the status bar says of the checks; empty before a run.
    QString CheckStatusText() const;
    // The node or label whose photographs are shown, with their number.
    QString CurrentSetText() const;
    QStringList RecentDeliveries() const { return recent; }
    PhotoXMLType Family() const { return family; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void CreateActions();
    void CreateSetUpAction();
    // Puts the current array back in the order of its node or label, once sorting is off.
    void RestoreTreeOrder();
    void CreateMenus();
    void CreateToolBar();
    void CreateToolActions();
    void CreateDateTableAction();
    void UpdateToolActions();
    // The extraction window's dock and its action (ToviMainWindowExtraction.cpp).
    void CreateExtractionDock();
    void CreateCheckDock();
    void UpdateCheckStatus();
    void UpdateActions();
    void UpdateTitle();
    void UpdateLabelActions();
    void OnPageChanged(int current, int total);
    void OnOpen();
    void OnCheckReport();
    void OnExport();
    void OnSlideTimer();
    void AddRecent(const QString& folder);
    void RebuildRecentMenu();
    void LoadFrameSettings();
    void SaveFrameSettings();
    static QString DroppedFolder(const QMimeData* mime);
    // A menu text without its accelerator and ellipsis, for buttons and tool tips.
    static QString PlainText(const QAction* action);

    ToviViewerDocument* document;
    QStackedWidget* centre;
    ToviMpiPanel* mpiPanel;
    QDockWidget* treeDock;
    QTabWidget* treeTabs;
    ToviFolderTreePanel* folderTree;
    ToviLabelTreePanel* labelTree;
    QDockWidget* detailDock;
    ToviDetailPanel* detailPanel;
    QDockWidget* extractionDock = nullptr;
    ToviExtractionDlg* extractionDlg = nullptr;
    ToviPanel* extractionPane = nullptr;
    QDockWidget* checkDock = nullptr;
    ToviCheckPane* checkPane = nullptr;
    QToolButton* checkStatusButton = nullptr;
    QAction* checkRunAction = nullptr;
    QTimer checkStartTimer;  // starts the checks when the first page takes too long
    bool checkPending = false;
    bool checkHiddenForSlides = false;
    bool extractionHiddenForSlides = false;
    int shownTab = 0;
    QLabel* pageLabel;
    QLabel* placeLabel;
    QLabel* countLabel;
    QLabel* checkLabel;
    PhotoXMLType family = PhotoXMLMlit;
    QStringList recent;
    QString recordPath;
    bool slideShow = false;
    bool wasMaximized = false;
    QTimer slideTimer;

    QAction* openAction;
    QAction* closeAction;
    QAction* saveRecordAction;
    QAction* loadRecordAction;
    QAction* recordWithPathsAction;
    QAction* indexPageAction;
    QAction* reportAction;
    QAction* exportAction;
    QAction* quitAction;
    QActionGroup* familyGroup;
    QActionGroup* divideGroup;
    QActionGroup* treeGroup;
    QAction* firstPageAction;
    QAction* prevPageAction;
    QAction* nextPageAction;
    QAction* lastPageAction;
    QAction* prevPhotoAction;
    QAction* nextPhotoAction;
    QAction* slideAction;
    QAction* fullScreenAction;
    QAction* focusAction;
    QAction* confirmAction;
    QAction* detailAction;
    QAction* zoomAction;
    QAction* extractionAction = nullptr;
    QList<QAction*> labelActions;
    QAction* removeAllLabelsAction;
    QAction* batchLabelAction;
    QAction* editCheckAction;
    QAction* dateTableAction = nullptr;
    QActionGroup* sortKeyGroup;
    QActionGroup* sortDirectionGroup;
    QAction* aboutAction;
    QAction* setUpAction;
    QMenu* recentMenu;
};
