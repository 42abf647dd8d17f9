#include "app/ToviMainWindow.h"

#include "document/ToviData.h"
#include "document/ToviNode.h"
#include "document/ToviPhoto.h"
#include "panels/ToviFolderTreePanel.h"
#include "panels/ToviLabelTreePanel.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviSlideMode.h"
#include "panels/ToviSpiCtrl.h"
#include "platform/ToviProfile.h"
#include "platform/ToviUi.h"
#include "reports/ToviCheckStatusFileOut.h"
#include "reports/ToviPhotoExport.h"
#include "review/ToviLabelManager.h"
#include "review/ToviXmlManager.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QMimeData>
#include <QShortcut>
#include <QStandardPaths>
#include <QStackedWidget>
#include <QStatusBar>
#include <QStyle>
#include <QTabWidget>
#include <QToolButton>
#include <QToolBar>
#include <QTreeWidget>
#include <QUrl>

#include <algorithm>

const QString ToviMainWindow::FrameSection_ = QStringLiteral("MainFrame");
const QString ToviMainWindow::RecentSection_ = QStringLiteral("RecentDelivery");

namespace {

const QString kGeometryEntry = QStringLiteral("Geometry");
const QString kStateEntry = QStringLiteral("DockState");
const QString kTabEntry = QStringLiteral("TreeTab");
const QString kFamilyEntry = QStringLiteral("Family");
const QString kUnset = QStringLiteral("_未定義_");

const char* const kFamilyNames[] = {"国土交通省(&M)", "港湾空港(&K)", "農林水産省(&A)",
                                    "NEXCO(&N)"};

// Display modes offered: the paged ones, and the two lists that arrive with the list views.
struct DivideEntry {
    int type;
    const char* text;
    QKeySequence key;
};

QString RecordFilter() {
    return QStringLiteral("検査状況ファイル (*.xml);;すべてのファイル (*)");
}

// A menu text without its accelerator and ellipsis, for buttons and tool tips.
QString PlainText(const QAction* action) {
    QString text = action->text();
    const qsizetype open = text.indexOf(QStringLiteral("(&"));
    if (open >= 0) {
        text.truncate(open);
    }
    text.remove(QStringLiteral("..."));
    return text;
}

int ReadInt(const QString& section, const QString& entry, int fallback) {
    const int stored = ToviProfile::Instance().GetProfileInt(section, entry, -1) - 100;
    return stored < 0 ? fallback : stored;
}

}  // namespace

ToviMainWindow::ToviMainWindow(QWidget* parent)
    : QMainWindow(parent), document(new ToviViewerDocument(this)) {
    setObjectName(QStringLiteral("ToviMainWindow"));
    setAcceptDrops(true);

    // The centre shows a word of welcome until a delivery is open.
    centre = new QStackedWidget(this);
    auto* welcome =
        new QLabel(QStringLiteral("電子納品のフォルダを開いてください。\n\n"
                                  "［ファイル］→［開く］(%1)、または PHOTO.XML のあるフォルダを\n"
                                  "このウィンドウにドロップします。")
                       .arg(QKeySequence(QKeySequence::Open).toString(QKeySequence::NativeText)),
                   centre);
    welcome->setObjectName(QStringLiteral("welcome"));
    welcome->setAlignment(Qt::AlignCenter);
    welcome->setStyleSheet(QStringLiteral("QLabel { background: white; color: #606060; }"));
    centre->addWidget(welcome);
    mpiPanel = new ToviMpiPanel(document);
    mpiPanel->Create(centre, 1);
    centre->addWidget(mpiPanel);
    setCentralWidget(centre);

    treeDock = new QDockWidget(QStringLiteral("ツリー"), this);
    treeDock->setObjectName(QStringLiteral("treeDock"));
    treeDock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetClosable);
    treeTabs = new QTabWidget(treeDock);
    treeTabs->setObjectName(QStringLiteral("treeTabs"));
    treeTabs->setDocumentMode(true);
    folderTree = new ToviFolderTreePanel;
    folderTree->Create(treeTabs, 2);
    labelTree = new ToviLabelTreePanel;
    labelTree->Create(treeTabs, 3);
    treeTabs->addTab(folderTree, QStringLiteral("分類"));
    treeTabs->addTab(labelTree, QStringLiteral("付箋"));
    treeDock->setWidget(treeTabs);
    treeDock->setMinimumWidth(200);
    addDockWidget(Qt::LeftDockWidgetArea, treeDock);
    resizeDocks({treeDock}, {280}, Qt::Horizontal);
    connect(treeTabs, &QTabWidget::currentChanged, this, &ToviMainWindow::ShowTreeTab);

    document->AddPanel(mpiPanel);
    document->AddPanel(folderTree);
    document->AddPanel(labelTree);
    connect(mpiPanel, &ToviMpiPanel::PageChanged, this, &ToviMainWindow::OnPageChanged);
    connect(document, &ToviViewerDocument::DeliveryOpened, this, [this] {
        centre->setCurrentWidget(mpiPanel);
        UpdateActions();
        UpdateTitle();
    });
    connect(document, &ToviViewerDocument::DeliveryClosed, this, [this] {
        centre->setCurrentIndex(0);
        OnPageChanged(0, 0);
        UpdateActions();
        UpdateTitle();
    });

    pageLabel = new QLabel(this);
    pageLabel->setObjectName(QStringLiteral("pageLabel"));
    pageLabel->setMinimumWidth(
        pageLabel->fontMetrics().horizontalAdvance(QStringLiteral("000000 / 000000")));
    pageLabel->setAlignment(Qt::AlignCenter);
    // The status bar: where the photographs shown come from, and how many the delivery has.
    placeLabel = new QLabel(this);
    placeLabel->setObjectName(QStringLiteral("placeLabel"));
    statusBar()->addWidget(placeLabel, 1);
    countLabel = new QLabel(this);
    statusBar()->addPermanentWidget(countLabel);

    slideTimer.setInterval(kSlideIntervalMs);
    connect(&slideTimer, &QTimer::timeout, this, &ToviMainWindow::OnSlideTimer);

    CreateActions();
    CreateMenus();
    CreateToolBar();
    LoadFrameSettings();
    UpdateActions();
    UpdateTitle();
    OnPageChanged(0, 0);
}

ToviMainWindow::~ToviMainWindow() {
    document->Close(this);
    for (ToviPanel* panel : {static_cast<ToviPanel*>(mpiPanel), static_cast<ToviPanel*>(folderTree),
                             static_cast<ToviPanel*>(labelTree)}) {
        document->RemovePanel(panel);
    }
}

// ---- actions and menus ---------------------------------------------------------------------

void ToviMainWindow::CreateActions() {
    QStyle* s = style();
    openAction =
        new QAction(s->standardIcon(QStyle::SP_DirOpenIcon), QStringLiteral("開く(&O)..."), this);
    openAction->setShortcut(QKeySequence::Open);
    openAction->setToolTip(QStringLiteral("電子納品のフォルダを開く"));
    connect(openAction, &QAction::triggered, this, &ToviMainWindow::OnOpen);

    closeAction = new QAction(QStringLiteral("閉じる(&C)"), this);
    closeAction->setShortcut(QKeySequence::Close);
    connect(closeAction, &QAction::triggered, this, [this] {
        if (ConfirmDiscard()) {
            document->Close(this);
        }
    });

    saveRecordAction = new QAction(s->standardIcon(QStyle::SP_DialogSaveButton),
                                   QStringLiteral("検査状況の保存(&S)..."), this);
    saveRecordAction->setShortcut(QKeySequence::Save);
    connect(saveRecordAction, &QAction::triggered, this, &ToviMainWindow::SaveRecord);

    loadRecordAction = new QAction(QStringLiteral("検査状況の読み込み(&L)..."), this);
    loadRecordAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    connect(loadRecordAction, &QAction::triggered, this, [this] { LoadRecord(); });

    reportAction = new QAction(QStringLiteral("検査状況表の出力(&E)..."), this);
    reportAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
    connect(reportAction, &QAction::triggered, this, &ToviMainWindow::OnCheckReport);

    exportAction = new QAction(QStringLiteral("写真の出力(&P)..."), this);
    exportAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    connect(exportAction, &QAction::triggered, this, &ToviMainWindow::OnExport);

    quitAction = new QAction(QStringLiteral("終了(&X)"), this);
    quitAction->setShortcut(QKeySequence::Quit);
    quitAction->setMenuRole(QAction::QuitRole);
    connect(quitAction, &QAction::triggered, this, &QWidget::close);

    familyGroup = new QActionGroup(this);
    for (int i = 0; i < 4; ++i) {
        QAction* a = familyGroup->addAction(QString::fromUtf8(kFamilyNames[i]));
        a->setCheckable(true);
        a->setData(i);
    }
    connect(familyGroup, &QActionGroup::triggered, this, [this](QAction* a) {
        family = static_cast<PhotoXMLType>(a->data().toInt());
        ToviProfile::Instance().WriteProfileInt(FrameSection_, kFamilyEntry, family + 100);
        // The open delivery is read again under the family chosen.
        if (document->IsOpen() && document->Family() != family) {
            OpenDelivery(document->Folder(), family);
        }
    });

    const DivideEntry divides[] = {
        {ToviPhotoCtrlVisualSetting::Divide1, "1枚表示(&1)", QKeySequence(Qt::ALT | Qt::Key_1)},
        {ToviPhotoCtrlVisualSetting::Divide2, "2枚表示(&2)", QKeySequence(Qt::ALT | Qt::Key_2)},
        {ToviPhotoCtrlVisualSetting::Divide3, "3枚表示(&3)", QKeySequence(Qt::ALT | Qt::Key_3)},
        {ToviPhotoCtrlVisualSetting::Divide4, "4枚表示(&4)", QKeySequence(Qt::ALT | Qt::Key_4)},
        {ToviPhotoCtrlVisualSetting::Divide6, "6枚表示(&6)", QKeySequence(Qt::ALT | Qt::Key_6)},
        {ToviPhotoCtrlVisualSetting::DivideThumbList, "サムネイル一覧(&T)",
         QKeySequence(Qt::ALT | Qt::Key_7)},
        {ToviPhotoCtrlVisualSetting::DivideManagementList, "管理項目一覧(&L)",
         QKeySequence(Qt::ALT | Qt::Key_8)},
    };
    divideGroup = new QActionGroup(this);
    for (const DivideEntry& d : divides) {
        QAction* a = divideGroup->addAction(QString::fromUtf8(d.text));
        a->setCheckable(true);
        a->setData(d.type);
        a->setShortcut(d.key);
    }
    connect(divideGroup, &QActionGroup::triggered, this,
            [this](QAction* a) { SetDivideType(a->data().toInt()); });

    const char* const trees[] = {"工種（写真区分から）(&K)", "撮影箇所(&S)", "工種(&W)"};
    treeGroup = new QActionGroup(this);
    for (int i = 0; i < 3; ++i) {
        QAction* a = treeGroup->addAction(QString::fromUtf8(trees[i]));
        a->setCheckable(true);
        a->setData(i);
    }
    connect(treeGroup, &QActionGroup::triggered, this,
            [this](QAction* a) { SetTreeType(a->data().toInt()); });

    // Bare PageUp, PageDown and the arrows stay with the panel and the trees; the menu's keys
    // are the Ctrl forms, which the cells also hand to the panel.
    firstPageAction = new QAction(s->standardIcon(QStyle::SP_MediaSkipBackward),
                                  QStringLiteral("最初のページ(&F)"), this);
    firstPageAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Home));
    connect(firstPageAction, &QAction::triggered, this, [this] {
        if (mpiPanel->GetCurrentPage() > 1) {
            mpiPanel->OperateTopPage();
        }
    });
    prevPageAction = new QAction(s->standardIcon(QStyle::SP_MediaSeekBackward),
                                 QStringLiteral("前のページ(&P)"), this);
    prevPageAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_PageUp));
    connect(prevPageAction, &QAction::triggered, this, [this] {
        if (mpiPanel->GetCurrentPage() > 1) {
            mpiPanel->OperatePrevPage();
        }
    });
    nextPageAction = new QAction(s->standardIcon(QStyle::SP_MediaSeekForward),
                                 QStringLiteral("次のページ(&N)"), this);
    nextPageAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_PageDown));
    connect(nextPageAction, &QAction::triggered, this, [this] {
        if (mpiPanel->GetCurrentPage() < mpiPanel->GetTotalPage()) {
            mpiPanel->OperateNextPage();
        }
    });
    lastPageAction = new QAction(s->standardIcon(QStyle::SP_MediaSkipForward),
                                 QStringLiteral("最後のページ(&L)"), this);
    lastPageAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_End));
    connect(lastPageAction, &QAction::triggered, this, [this] {
        if (mpiPanel->GetCurrentPage() < mpiPanel->GetTotalPage()) {
            mpiPanel->OperateLastPage();
        }
    });
    prevPhotoAction = new QAction(QStringLiteral("前の写真(&B)"), this);
    prevPhotoAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Left));
    connect(prevPhotoAction, &QAction::triggered, mpiPanel, &ToviMpiPanel::OperatePrevPhoto);
    nextPhotoAction = new QAction(QStringLiteral("次の写真(&X)"), this);
    nextPhotoAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Right));
    connect(nextPhotoAction, &QAction::triggered, mpiPanel, &ToviMpiPanel::OperateNextPhoto);

    slideAction = new QAction(QStringLiteral("スライドショー(&S)"), this);
    slideAction->setShortcut(QKeySequence(Qt::Key_F5));
    slideAction->setCheckable(true);
    connect(slideAction, &QAction::toggled, this, [this](bool on) {
        if (on != slideShow) {
            on ? StartSlideShow() : StopSlideShow();
        }
    });
    // Esc ends the show; it means nothing to the window otherwise.
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, [this] {
        if (slideShow) {
            StopSlideShow();
        }
    });

    fullScreenAction = new QAction(QStringLiteral("全画面表示(&U)"), this);
    fullScreenAction->setShortcut(QKeySequence::FullScreen);
    fullScreenAction->setCheckable(true);
    connect(fullScreenAction, &QAction::toggled, this, [this](bool on) {
        if (on) {
            wasMaximized = isMaximized();
            showFullScreen();
        } else if (wasMaximized) {
            showMaximized();
        } else {
            showNormal();
        }
    });

    confirmAction = new QAction(QStringLiteral("写真格納位置の確認(&C)"), this);
    confirmAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_K));
    connect(confirmAction, &QAction::triggered, mpiPanel, &ToviMpiPanel::ShowConfirmDlg);

    // F6 moves the keyboard between the tree and the photographs.
    focusAction = new QAction(QStringLiteral("ツリーと写真の切り替え(&F)"), this);
    focusAction->setShortcut(QKeySequence(Qt::Key_F6));
    connect(focusAction, &QAction::triggered, this, [this] {
        auto* panel = static_cast<ToviPanel*>(treeTabs->currentWidget());
        QWidget* tree = panel ? panel->GetCtrl() : nullptr;
        const bool inTree = tree && (tree == QApplication::focusWidget() ||
                                     tree->isAncestorOf(QApplication::focusWidget()));
        if (inTree || !treeDock->isVisible()) {
            if (ToviSpiCtrl* cell = mpiPanel->GetSelSpiCtrl()) {
                cell->FocusChild(1103);
            } else {
                mpiPanel->setFocus();
            }
        } else if (tree) {
            tree->setFocus();
        }
    });

    // Labels from the keyboard: Ctrl+1 to Ctrl+6 paste a label on the selected photograph, or
    // take it off again, as its button on the name plate does; the comment label opens the
    // comment. The texts are the label names, renewed when a delivery opens.
    for (int label = 0; label < 6; ++label) {
        QAction* a = new QAction(this);
        a->setCheckable(true);
        a->setShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + label)));
        connect(a, &QAction::triggered, this, [this, label] { ToggleLabel(label); });
        labelActions.append(a);
    }
    removeAllLabelsAction = new QAction(QStringLiteral("すべての付箋をはがす(&A)"), this);
    connect(removeAllLabelsAction, &QAction::triggered, this, [this] {
        mpiPanel->OnRemoveAllLabel();
        UpdateLabelActions();
    });

    aboutAction = new QAction(QStringLiteral("バージョン情報(&A)"), this);
    aboutAction->setMenuRole(QAction::AboutRole);
    connect(aboutAction, &QAction::triggered, this, [this] {
        ToviUi::Instance().MessageBox(
            this,
            QStringLiteral("%1 %2\n電子納品の写真を閲覧・検査するためのビューアーです。")
                .arg(ToviUi::Instance().ApplicationName(), QApplication::applicationVersion()),
            QString(), ToviUi::ButtonsOk, ToviUi::IconInformation);
    });
}

void ToviMainWindow::CreateMenus() {
    QMenu* file = menuBar()->addMenu(QStringLiteral("ファイル(&F)"));
    file->addAction(openAction);
    recentMenu = file->addMenu(QStringLiteral("最近開いた電子納品(&R)"));
    QMenu* families = file->addMenu(QStringLiteral("発注者区分(&K)"));
    families->addActions(familyGroup->actions());
    file->addAction(closeAction);
    file->addSeparator();
    file->addAction(saveRecordAction);
    file->addAction(loadRecordAction);
    file->addSeparator();
    file->addAction(reportAction);
    file->addAction(exportAction);
    file->addSeparator();
    file->addAction(quitAction);

    QMenu* view = menuBar()->addMenu(QStringLiteral("表示(&V)"));
    QMenu* divides = view->addMenu(QStringLiteral("表示枚数(&D)"));
    divides->addActions(divideGroup->actions());
    QMenu* trees = view->addMenu(QStringLiteral("ツリーの種類(&T)"));
    trees->addActions(treeGroup->actions());
    QAction* dockToggle = treeDock->toggleViewAction();
    dockToggle->setText(QStringLiteral("ツリーパネル(&P)"));
    dockToggle->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_T));
    view->addAction(dockToggle);
    view->addAction(focusAction);
    view->addAction(confirmAction);
    view->addSeparator();
    view->addAction(slideAction);
    view->addAction(fullScreenAction);

    QMenu* go = menuBar()->addMenu(QStringLiteral("移動(&G)"));
    go->addAction(firstPageAction);
    go->addAction(prevPageAction);
    go->addAction(nextPageAction);
    go->addAction(lastPageAction);
    go->addSeparator();
    go->addAction(prevPhotoAction);
    go->addAction(nextPhotoAction);

    QMenu* labels = menuBar()->addMenu(QStringLiteral("付箋(&L)"));
    labels->addActions(labelActions);
    labels->addSeparator();
    labels->addAction(removeAllLabelsAction);
    connect(labels, &QMenu::aboutToShow, this, &ToviMainWindow::UpdateLabelActions);

    QMenu* help = menuBar()->addMenu(QStringLiteral("ヘルプ(&H)"));
    help->addAction(aboutAction);
}

void ToviMainWindow::CreateToolBar() {
    QToolBar* bar = addToolBar(QStringLiteral("標準"));
    bar->setObjectName(QStringLiteral("mainToolBar"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addAction(openAction);
    bar->addAction(saveRecordAction);
    bar->addSeparator();
    for (QAction* a : {firstPageAction, prevPageAction}) {
        bar->addAction(a);
    }
    bar->addWidget(pageLabel);
    for (QAction* a : {nextPageAction, lastPageAction}) {
        bar->addAction(a);
    }
    for (QAction* a : {firstPageAction, prevPageAction, nextPageAction, lastPageAction}) {
        if (auto* button = qobject_cast<QToolButton*>(bar->widgetForAction(a))) {
            button->setToolButtonStyle(Qt::ToolButtonIconOnly);
            button->setToolTip(QStringLiteral("%1 (%2)").arg(
                PlainText(a), a->shortcut().toString(QKeySequence::NativeText)));
        }
    }
    bar->addSeparator();
    for (QAction* a : divideGroup->actions()) {
        bar->addAction(a);
        if (auto* button = qobject_cast<QToolButton*>(bar->widgetForAction(a))) {
            button->setToolButtonStyle(Qt::ToolButtonTextOnly);
            button->setText(PlainText(a));
        }
    }
}

void ToviMainWindow::UpdateActions() {
    const bool open = document->IsOpen();
    for (QAction* a : {closeAction, saveRecordAction, loadRecordAction, reportAction, exportAction,
                       slideAction, confirmAction}) {
        a->setEnabled(open);
    }
    familyGroup->actions().value(family)->setChecked(true);
    const ToviData* data = document->Data();
    const int divide = open ? data->GetVisualSetting().GetDivType() : -1;
    for (QAction* a : divideGroup->actions()) {
        a->setEnabled(open);
        a->setChecked(a->data().toInt() == divide);
    }
    const int tree = open ? data->GetVisualSetting().GetTreeType() : -1;
    for (QAction* a : treeGroup->actions()) {
        a->setEnabled(open);
        a->setChecked(a->data().toInt() == tree);
    }
    const int page = mpiPanel->GetCurrentPage();
    const int total = mpiPanel->GetTotalPage();
    firstPageAction->setEnabled(open && page > 1);
    prevPageAction->setEnabled(open && page > 1);
    nextPageAction->setEnabled(open && page < total);
    lastPageAction->setEnabled(open && page < total);
    prevPhotoAction->setEnabled(open && total > 0);
    nextPhotoAction->setEnabled(open && total > 0);
}

void ToviMainWindow::UpdateTitle() {
    const QString name = ToviUi::Instance().ApplicationName();
    setWindowTitle(document->IsOpen() ? QStringLiteral("%1 - %2").arg(
                                            QDir::toNativeSeparators(document->Folder()), name)
                                      : name);
    countLabel->setText(
        document->IsOpen()
            ? QStringLiteral("写真 %1 枚").arg(document->Data()->GetTotalCountPhoto())
            : QString());
}

QString ToviMainWindow::PageIndicatorText() const {
    return pageLabel->text();
}

void ToviMainWindow::OnPageChanged(int current, int total) {
    pageLabel->setText(total > 0 ? QStringLiteral("%1 / %2").arg(current).arg(total)
                                 : QStringLiteral("- / -"));
    placeLabel->setText(CurrentSetText());
    UpdateActions();
    UpdateLabelActions();
}

void ToviMainWindow::ToggleLabel(int label) {
    const ToviPhoto* photo = mpiPanel->SelectedPhoto();
    if (!photo) {
        return;
    }
    // The comment is edited whether or not it is there; any other label turns over.
    if (label != 4 && photo->IsLabelPasted(static_cast<unsigned>(label))) {
        mpiPanel->RemoveLabel(label);
    } else {
        mpiPanel->PasteLabel(label);
    }
    UpdateLabelActions();
}

void ToviMainWindow::UpdateLabelActions() {
    ToviData* data = document->Data();
    const ToviPhoto* photo = data ? mpiPanel->SelectedPhoto() : nullptr;
    const ToviLabelManager* labels = data ? data->GetLabelManager() : nullptr;
    for (int label = 0; label < labelActions.size(); ++label) {
        QAction* a = labelActions[label];
        const QString name = labels ? labels->GetLabelAttribute(label).GetName()
                                    : QStringLiteral("付箋 %1").arg(label + 1);
        a->setText(QStringLiteral("%1(&%2)").arg(name).arg(label + 1));
        a->setEnabled(photo != nullptr);
        a->setChecked(photo && photo->IsLabelPasted(static_cast<unsigned>(label)));
    }
    removeAllLabelsAction->setEnabled(photo != nullptr);
}

QString ToviMainWindow::CurrentSetText() const {
    ToviData* data = document->Data();
    if (!data) {
        return QString();
    }
    QString place;
    if (treeTabs->currentIndex() == 1) {
        const int label = data->GetSelectedIndex();
        const ToviLabelManager* labels = data->GetLabelManager();
        place = label >= 0 && label < 6 && labels
                    ? QStringLiteral("付箋 › %1").arg(labels->GetLabelAttribute(label).GetName())
                    : QStringLiteral("付箋");
    } else {
        // The node's path below the root, whose title is the whole path of PHOTO.XML.
        QStringList path;
        for (const ToviNode* node = data->GetSelectedNode(); node && node->Parent();
             node = node->Parent()) {
            path.prepend(node->Title());
        }
        place = path.isEmpty() ? QStringLiteral("すべての写真") : path.join(QStringLiteral(" › "));
    }
    return QStringLiteral("%1　（%2 枚）").arg(place).arg(data->GetCurrentPhotoCount());
}

// ---- tree tabs -----------------------------------------------------------------------------

void ToviMainWindow::ShowTreeTab(int index) {
    auto* panel = qobject_cast<ToviPanel*>(treeTabs->widget(index));
    if (!panel) {
        return;
    }
    if (treeTabs->currentIndex() != index) {
        // currentChanged comes back here with the same index.
        treeTabs->setCurrentIndex(index);
        return;
    }
    if (index == shownTab && panel->GetData()) {
        return;
    }
    auto* previous = qobject_cast<ToviPanel*>(treeTabs->widget(shownTab));
    if (previous && previous != panel) {
        previous->OnPreVisible();
    }
    shownTab = index;
    panel->OnPreVisible();
    panel->OnPostVisible();
}

// ---- opening and closing -------------------------------------------------------------------

bool ToviMainWindow::OpenDelivery(const QString& folder, PhotoXMLType type) {
    if (!ConfirmDiscard()) {
        return false;
    }
    const ToviViewerDocument::OpenResult result = document->Open(folder, type, this);
    if (result != ToviViewerDocument::Opened) {
        UpdateActions();
        return false;
    }
    // The delivery may have been recognised under another client than the one asked for.
    family = document->Family();
    recordPath.clear();
    AddRecent(folder);
    // A label tree shown at the start makes its label the current set.
    if (treeTabs->currentIndex() != 0) {
        labelTree->OnPostVisible();
    }
    shownTab = treeTabs->currentIndex();
    UpdateActions();
    // The title names the folder; the status bar says only what the user did not choose.
    if (family != type) {
        statusBar()->showMessage(QStringLiteral("発注者区分「%1」の電子納品として開きました")
                                     .arg(PlainText(familyGroup->actions().value(family))),
                                 10000);
    }
    return true;
}

void ToviMainWindow::OnOpen() {
    QString folder =
        document->IsOpen() ? QFileInfo(document->Folder()).absolutePath() : recent.value(0);
    if (folder.isEmpty()) {
        folder = QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
    }
    if (ToviUi::Instance().BrowseForFolder(
            this,
            QStringLiteral("電子納品のフォルダ（PHOTO.XML のあるフォルダ）を選択してください"),
            folder)) {
        OpenDelivery(folder, family);
    }
}

bool ToviMainWindow::ConfirmDiscard() {
    ToviData* data = document->Data();
    if (!data || !data->IsCheckStatusChanged()) {
        return true;
    }
    const int answer = ToviUi::Instance().MessageBox(
        this, QStringLiteral("付箋またはコメントが変更されています。\n検査状況を保存しますか？"),
        QString(), ToviUi::ButtonsYesNoCancel, ToviUi::IconQuestion);
    if (answer == ToviUi::AnswerYes) {
        return SaveRecord();
    }
    return answer == ToviUi::AnswerNo;
}

void ToviMainWindow::closeEvent(QCloseEvent* event) {
    if (slideShow) {
        StopSlideShow();
    }
    if (!ConfirmDiscard()) {
        event->ignore();
        return;
    }
    SaveFrameSettings();
    document->Close(this);
    if (!ToviProfile::Instance().Flush()) {
        ToviUi::Instance().MessageBox(
            this,
            QStringLiteral("設定を保存できませんでした。\n（%1）")
                .arg(QDir::toNativeSeparators(ToviProfile::Instance().FileName())),
            QString(), ToviUi::ButtonsOk, ToviUi::IconWarning);
    }
    event->accept();
}

// ---- the record, the report, the export -----------------------------------------------------

bool ToviMainWindow::SaveRecord() {
    ToviData* data = document->Data();
    if (!data) {
        return false;
    }
    const QString proposed = recordPath.isEmpty()
                                 ? QDir(QFileInfo(document->Folder()).absolutePath())
                                       .filePath(QStringLiteral("検査状況.xml"))
                                 : recordPath;
    const QString path = ToviUi::Instance().GetSaveFileName(this, QStringLiteral("検査状況の保存"),
                                                            proposed, RecordFilter());
    if (path.isEmpty()) {
        return false;
    }
    int result = -1;
    if (!data->SaveExamination(path, QString(), &result)) {
        ToviUi::Instance().MessageBox(
            this, ToviExamResultText(result) + QStringLiteral("。"), QString(), ToviUi::ButtonsOk,
            result == ExamCancelled ? ToviUi::IconInformation : ToviUi::IconWarning);
        return false;
    }
    recordPath = path;
    statusBar()->showMessage(
        QStringLiteral("検査状況を保存しました: %1").arg(QDir::toNativeSeparators(path)), 5000);
    return true;
}

bool ToviMainWindow::LoadRecord(const QString& given) {
    ToviData* data = document->Data();
    if (!data) {
        return false;
    }
    QString path = given;
    if (path.isEmpty()) {
        if (!ConfirmDiscard()) {
            return false;
        }
        path = ToviUi::Instance().GetOpenFileName(
            this, QStringLiteral("検査状況の読み込み"),
            recordPath.isEmpty() ? QFileInfo(document->Folder()).absolutePath() : recordPath,
            RecordFilter());
        if (path.isEmpty()) {
            return false;
        }
    }
    int result = -1;
    if (!data->LoadExamination(path, &result)) {
        ToviUi::Instance().MessageBox(
            this,
            QStringLiteral("%1。\n（%2）")
                .arg(ToviExamResultText(result), QDir::toNativeSeparators(path)),
            QString(), ToviUi::ButtonsOk, ToviUi::IconWarning);
        return false;
    }
    // What is shown is now what the record holds.
    data->UpdateHasComment();
    data->SetCheckStatusChanged(false);
    document->UpdateAllViews(nullptr, ToviData::HintLabelsChanged, nullptr);
    recordPath = path;
    statusBar()->showMessage(
        QStringLiteral("検査状況を読み込みました: %1").arg(QDir::toNativeSeparators(path)), 5000);
    return true;
}

void ToviMainWindow::OnCheckReport() {
    if (ToviData* data = document->Data()) {
        ToviCheckStatusFileOut(*data, *data->GetLabelManager())
            .FileOut(QStringLiteral("検査状況表の出力"));
    }
}

void ToviMainWindow::OnExport() {
    if (ToviData* data = document->Data()) {
        ToviPhotoExport(*data, this).OutputPhotos(IsSlideMode());
    }
}

// ---- display settings ------------------------------------------------------------------------

void ToviMainWindow::SetDivideType(int type) {
    ToviData* data = document->Data();
    if (!data || type < ToviPhotoCtrlVisualSetting::Divide1 ||
        type > ToviPhotoCtrlVisualSetting::DivideManagementList) {
        UpdateActions();
        return;
    }
    ToviPhotoCtrlVisualSetting setting = data->GetVisualSetting();
    setting.SetDivType(static_cast<ToviPhotoCtrlVisualSetting::DivideType>(type));
    data->SetVisualSetting(setting, false);
    document->UpdateAllViews(nullptr, ToviData::HintSettingsChanged, nullptr);
    UpdateActions();
}

void ToviMainWindow::SetTreeType(int type) {
    ToviData* data = document->Data();
    if (!data || type < 0 || type > 2 || data->GetVisualSetting().GetTreeType() == type) {
        UpdateActions();
        return;
    }
    ToviPhotoCtrlVisualSetting setting = data->GetVisualSetting();
    setting.SetTreeType(static_cast<ToviPhotoCtrlVisualSetting::TreeType>(type));
    data->SetVisualSetting(setting, false);
    data->BuildTreeNode(type);
    document->UpdateAllViews(nullptr, ToviData::HintSettingsChanged, nullptr);
    UpdateActions();
}

// ---- slide show ----------------------------------------------------------------------------

void ToviMainWindow::StartSlideShow() {
    if (!document->IsOpen() || slideShow) {
        slideAction->setChecked(slideShow);
        return;
    }
    slideShow = true;
    SetSlideMode(true);
    slideAction->setChecked(true);
    wasMaximized = isMaximized();
    treeDock->hide();
    menuBar()->hide();
    for (QToolBar* bar : findChildren<QToolBar*>()) {
        bar->hide();
    }
    statusBar()->hide();
    showFullScreen();
    slideTimer.start();
    mpiPanel->setFocus();
}

void ToviMainWindow::StopSlideShow() {
    if (!slideShow) {
        return;
    }
    slideShow = false;
    SetSlideMode(false);
    slideTimer.stop();
    slideAction->setChecked(false);
    menuBar()->show();
    for (QToolBar* bar : findChildren<QToolBar*>()) {
        bar->show();
    }
    statusBar()->show();
    treeDock->show();
    fullScreenAction->setChecked(false);
    if (wasMaximized) {
        showMaximized();
    } else {
        showNormal();
    }
}

void ToviMainWindow::OnSlideTimer() {
    ToviData* data = document->Data();
    if (!data || data->GetCurrentPhotoCount() == 0) {
        StopSlideShow();
        return;
    }
    // The show goes page by page and starts again after the last.
    if (mpiPanel->GetCurrentPage() < mpiPanel->GetTotalPage()) {
        mpiPanel->OperateNextPage();
    } else if (mpiPanel->GetTotalPage() > 1) {
        mpiPanel->OperateTopPage();
    }
}

// ---- recent deliveries, drops, frame settings ------------------------------------------------

void ToviMainWindow::AddRecent(const QString& folder) {
    const QString path = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    recent.removeAll(path);
    recent.prepend(path);
    while (recent.size() > kRecentCount) {
        recent.removeLast();
    }
    ToviProfile& profile = ToviProfile::Instance();
    for (int i = 0; i < kRecentCount; ++i) {
        profile.WriteProfileString(RecentSection_, QStringLiteral("Folder%1").arg(i),
                                   recent.value(i, kUnset));
    }
    RebuildRecentMenu();
}

void ToviMainWindow::RebuildRecentMenu() {
    recentMenu->clear();
    for (int i = 0; i < recent.size(); ++i) {
        const QString path = recent[i];
        QAction* a = recentMenu->addAction(
            QStringLiteral("&%1 %2").arg(i + 1).arg(QDir::toNativeSeparators(path)));
        connect(a, &QAction::triggered, this, [this, path] { OpenDelivery(path, family); });
    }
    recentMenu->setEnabled(!recent.isEmpty());
}

QString ToviMainWindow::DroppedFolder(const QMimeData* mime) {
    if (!mime || !mime->hasUrls() || mime->urls().size() != 1 || !mime->urls()[0].isLocalFile()) {
        return QString();
    }
    const QFileInfo info(mime->urls()[0].toLocalFile());
    // A dropped PHOTO.XML stands for its folder.
    if (info.isFile() &&
        info.fileName().compare(QStringLiteral("PHOTO.XML"), Qt::CaseInsensitive) == 0) {
        return info.absolutePath();
    }
    return info.isDir() ? info.absoluteFilePath() : QString();
}

void ToviMainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!slideShow && !DroppedFolder(event->mimeData()).isEmpty()) {
        event->acceptProposedAction();
    }
}

void ToviMainWindow::dropEvent(QDropEvent* event) {
    const QString folder = DroppedFolder(event->mimeData());
    if (folder.isEmpty()) {
        return;
    }
    event->acceptProposedAction();
    // Opening runs a progress loop: not inside the drop's own event.
    QTimer::singleShot(0, this, [this, folder] { OpenDelivery(folder, family); });
}

void ToviMainWindow::LoadFrameSettings() {
    ToviProfile& profile = ToviProfile::Instance();
    family = static_cast<PhotoXMLType>(std::clamp(ReadInt(FrameSection_, kFamilyEntry, 0), 0, 3));
    recent.clear();
    for (int i = 0; i < kRecentCount; ++i) {
        const QString path =
            profile.GetProfileString(RecentSection_, QStringLiteral("Folder%1").arg(i), kUnset);
        if (!path.isEmpty() && path != kUnset && !recent.contains(path)) {
            recent.append(path);
        }
    }
    RebuildRecentMenu();
    const QByteArray geometry = QByteArray::fromBase64(
        profile.GetProfileString(FrameSection_, kGeometryEntry, kUnset).toLatin1());
    if (geometry.isEmpty() || !restoreGeometry(geometry)) {
        resize(1280, 720);
    }
    restoreState(QByteArray::fromBase64(
        profile.GetProfileString(FrameSection_, kStateEntry, kUnset).toLatin1()));
    const int tab = std::clamp(ReadInt(FrameSection_, kTabEntry, 0), 0, 1);
    const QSignalBlocker blocker(treeTabs);
    treeTabs->setCurrentIndex(tab);
    shownTab = tab;
}

void ToviMainWindow::SaveFrameSettings() {
    ToviProfile& profile = ToviProfile::Instance();
    profile.WriteProfileString(FrameSection_, kGeometryEntry,
                               QString::fromLatin1(saveGeometry().toBase64()));
    profile.WriteProfileString(FrameSection_, kStateEntry,
                               QString::fromLatin1(saveState().toBase64()));
    profile.WriteProfileInt(FrameSection_, kTabEntry, treeTabs->currentIndex() + 100);
    profile.WriteProfileInt(FrameSection_, kFamilyEntry, family + 100);
}
