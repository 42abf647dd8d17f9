// The main window: its parts, the tree tabs, the display settings, the slide show, the recent
// deliveries, drops and the frame's settings. The actions are in ToviMainWindowActions.cpp,
// the delivery and the commands on it in ToviMainWindowDelivery.cpp.

#include "app/ToviMainWindow.h"

#include "dialogs/ToviDetailPanel.h"
#include "document/ToviData.h"
#include "panels/ToviCheckPane.h"
#include "panels/ToviFolderTreePanel.h"
#include "panels/ToviLabelTreePanel.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviSlideMode.h"
#include "platform/ToviProfile.h"

#include <QDir>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QMimeData>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>

#include <algorithm>

const QString ToviMainWindow::FrameSection_ = QStringLiteral("MainFrame");
const QString ToviMainWindow::RecentSection_ = QStringLiteral("RecentDelivery");
const QString ToviMainWindow::FamilyEntry_ = QStringLiteral("Family");

namespace {

const QString kGeometryEntry = QStringLiteral("Geometry");
const QString kStateEntry = QStringLiteral("DockState");
const QString kTabEntry = QStringLiteral("TreeTab");
const QString kUnset = QStringLiteral("_未定義_");

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

    // The selected photograph large, with its facts: on the right, shown by F9 and kept so
    // in the document's settings.
    detailDock = new QDockWidget(QStringLiteral("詳細"), this);
    detailDock->setObjectName(QStringLiteral("detailDock"));
    detailDock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    detailPanel = new ToviDetailPanel(document);
    detailPanel->Create(detailDock, 4);
    detailDock->setWidget(detailPanel);
    detailDock->setMinimumWidth(2 * ToviDetailPanel::kMinPane + 20);
    addDockWidget(Qt::RightDockWidgetArea, detailDock);
    resizeDocks({detailDock}, {520}, Qt::Horizontal);
    detailDock->hide();
    connect(detailPanel, &ToviDetailPanel::VisibleChanged, this, [this](bool visible) {
        detailDock->setVisible(visible);
        detailAction->setChecked(visible);
        if (visible) {
            detailPanel->AdjustSplitter();
        }
    });

    document->AddPanel(mpiPanel);
    document->AddPanel(folderTree);
    document->AddPanel(labelTree);
    document->AddPanel(detailPanel);
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
    // A passing message takes the place of the label: the status bar hides it only when it is
    // on screen as the message comes, so a message given before the window shows, or while
    // the label is being laid out, would be drawn over it.
    connect(statusBar(), &QStatusBar::messageChanged, placeLabel,
            [this](const QString& message) { placeLabel->setVisible(message.isEmpty()); });
    countLabel = new QLabel(this);
    statusBar()->addPermanentWidget(countLabel);

    slideTimer.setInterval(kSlideIntervalMs);
    connect(&slideTimer, &QTimer::timeout, this, &ToviMainWindow::OnSlideTimer);

    CreateActions();
    CreateExtractionDock();
    CreateCheckDock();
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
                             static_cast<ToviPanel*>(labelTree), extractionPane}) {
        document->RemovePanel(panel);
    }
    document->RemovePanel(checkPane);
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
    UpdateToolActions();
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
    UpdateToolActions();
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
    family = static_cast<PhotoXMLType>(std::clamp(ReadInt(FrameSection_, FamilyEntry_, 0), 0, 3));
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
    // The kept layout places the detail dock; whether it shows is the document's setting.
    detailDock->setVisible(detailPanel->Visible());
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
    profile.WriteProfileInt(FrameSection_, FamilyEntry_, family + 100);
}

void ToviMainWindow::ToggleDetailPanel() {
    ToviData* data = document->Data();
    if (!data) {
        return;
    }
    ToviPhotoCtrlVisualSetting setting = data->GetVisualSetting();
    setting.SetVisibleDetail(!setting.GetVisibleDetail());
    data->SetVisualSetting(setting, false);
    document->UpdateAllViews(nullptr, ToviData::HintSettingsChanged, nullptr);
}
