// The delivery checks in the main window: their dock under the photographs, the run started
// once the first page of a delivery is on screen, the count in the status bar, and the way
// from a finding to its photograph.

#include "app/ToviMainWindow.h"

#include "document/ToviData.h"
#include "panels/ToviCheckPane.h"
#include "panels/ToviFindingsModel.h"
#include "panels/ToviFolderTreePanel.h"
#include "panels/ToviMpiPanel.h"
#include "platform/ToviUi.h"

#include <QAction>
#include <QDockWidget>
#include <QIcon>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>
#include <QTreeWidget>

namespace {

// Without a first page on screen by then (pictures on a slow disc), the checks start anyway.
constexpr int kStartAfterMs = 5000;

}  // namespace

void ToviMainWindow::CreateCheckDock() {
    checkDock = new QDockWidget(QStringLiteral("チェック結果"), this);
    checkDock->setObjectName(QStringLiteral("checkDock"));
    checkDock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetClosable |
                           QDockWidget::DockWidgetFloatable);
    checkPane = new ToviCheckPane(checkDock);
    checkDock->setWidget(checkPane);
    // Under the photographs, as wide as they are: the findings are long lines. Hidden until
    // asked for (F8, the status bar, the tools menu): the photographs keep the height; the
    // status bar tells the counts. The kept layout brings it back as the user left it.
    // The trees and the detail panel keep the window's height beside it.
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    addDockWidget(Qt::BottomDockWidgetArea, checkDock);
    resizeDocks({checkDock}, {170}, Qt::Vertical);
    checkDock->hide();
    document->AddPanel(checkPane);

    QAction* toggle = checkDock->toggleViewAction();
    toggle->setText(QStringLiteral("チェック結果(&R)"));
    toggle->setShortcut(QKeySequence(Qt::Key_F8));
    checkRunAction = new QAction(QStringLiteral("納品データのチェック(&V)"), this);
    checkRunAction->setObjectName(QStringLiteral("checkRunAction"));
    checkRunAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_V));
    checkRunAction->setToolTip(QStringLiteral("開いている電子納品をチェックし、結果を表示する"));
    connect(checkRunAction, &QAction::triggered, this, &ToviMainWindow::RunChecks);

    checkStatusButton = new QToolButton(this);
    checkStatusButton->setObjectName(QStringLiteral("checkStatus"));
    checkStatusButton->setAutoRaise(true);
    checkStatusButton->setToolTip(QStringLiteral("チェック結果を表示する (F8)"));
    checkStatusButton->hide();
    statusBar()->addPermanentWidget(checkStatusButton);
    connect(checkStatusButton, &QToolButton::clicked, this, [this] {
        checkDock->show();
        checkDock->raise();
    });

    connect(checkPane, &ToviCheckPane::StateChanged, this, &ToviMainWindow::UpdateCheckStatus);
    connect(checkPane, &ToviCheckPane::PhotoActivated, this, &ToviMainWindow::ShowFindingPhoto);

    // A delivery opened is checked once its first page is on screen, so that the checks
    // never hold back what the inspector sees first.
    checkStartTimer.setSingleShot(true);
    checkStartTimer.setInterval(kStartAfterMs);
    const auto startPending = [this] {
        if (!checkPending || !document->IsOpen()) {
            return;
        }
        checkPending = false;
        checkStartTimer.stop();
        // After the page's own paint.
        QTimer::singleShot(0, checkPane, [this] {
            if (document->IsOpen() && !checkPane->IsRunning()) {
                checkPane->Start();
            }
        });
    };
    connect(&checkStartTimer, &QTimer::timeout, this, startPending);
    connect(mpiPanel, &ToviMpiPanel::PageShown, this, startPending);
    connect(document, &ToviViewerDocument::DeliveryOpened, this, [this, startPending] {
        checkPending = true;
        checkStartTimer.start();
        if (mpiPanel->IsPageShown()) {
            startPending();
        }
    });
    connect(document, &ToviViewerDocument::DeliveryClosed, this, [this] {
        checkPending = false;
        checkStartTimer.stop();
        UpdateCheckStatus();
    });

    // The slide show has the screen to itself; the dock comes back after it as it was.
    connect(slideAction, &QAction::toggled, this, [this](bool on) {
        if (on && slideShow && checkDock->isVisible()) {
            checkHiddenForSlides = true;
            checkDock->hide();
        } else if (!on && checkHiddenForSlides) {
            checkHiddenForSlides = false;
            checkDock->show();
        }
    });
}

bool ToviMainWindow::RunChecks() {
    checkDock->show();
    checkDock->raise();
    if (!document->IsOpen()) {
        return false;
    }
    checkPending = false;
    checkStartTimer.stop();
    return checkPane->Start();
}

QString ToviMainWindow::CheckStatusText() const {
    switch (checkPane->GetState()) {
        case ToviCheckPane::Idle:
            return QString();
        case ToviCheckPane::Running:
            return QStringLiteral("チェック中 %1%")
                .arg(checkPane->PhotosTotal() > 0
                         ? checkPane->PhotosDone() * 100 / checkPane->PhotosTotal()
                         : 0);
        case ToviCheckPane::Done:
            return QStringLiteral("チェック: ") + checkPane->CountText();
        case ToviCheckPane::Cancelled:
            return QStringLiteral("チェック中止: ") + checkPane->CountText();
        case ToviCheckPane::Failed:
            break;
    }
    return QStringLiteral("チェック失敗: ") + checkPane->CountText();
}

void ToviMainWindow::UpdateCheckStatus() {
    const QString text = CheckStatusText();
    checkStatusButton->setText(text);
    // The worst severity found, at a glance.
    QIcon icon;
    for (int s = 0; s < ToviCheckFinding::kSeverityCount && icon.isNull(); ++s) {
        const auto severity = static_cast<ToviCheckFinding::Severity>(s);
        if (checkPane->Count(severity) > 0) {
            icon = ToviFindingsModel::SeverityIcon(severity);
        }
    }
    checkStatusButton->setIcon(icon);
    checkStatusButton->setToolButtonStyle(icon.isNull() ? Qt::ToolButtonTextOnly
                                                        : Qt::ToolButtonTextBesideIcon);
    checkStatusButton->setVisible(!text.isEmpty() && document->IsOpen());
}

bool ToviMainWindow::ShowFindingPhoto(int index) {
    ToviData* data = document->Data();
    if (!data || !data->GetPhotoActualPhotoArray(index)) {
        return false;
    }
    if (data->CurrentArray().Position(index) < 0) {
        const int answer = ToviUi::Instance().MessageBox(
            this,
            QStringLiteral("番号 %1 の写真は、いま表示している写真に含まれていません。\n"
                           "すべての写真を表示して、この写真を選択しますか？")
                .arg(index + 1),
            QString(), ToviUi::ButtonsYesNo, ToviUi::IconQuestion);
        if (answer != ToviUi::AnswerYes) {
            statusBar()->showMessage(
                QStringLiteral("番号 %1 の写真は表示中の写真に含まれていません").arg(index + 1),
                5000);
            return false;
        }
        // Every photograph: the extraction off (its conditions stay in its window), the
        // classification tree's top chosen.
        data->CancelExtraction(ToviExtractionSource::CancelButtonOnly);
        ShowTreeTab(0);
        QTreeWidget* tree = folderTree->GetTreeCtrl();
        QTreeWidgetItem* top = tree ? tree->topLevelItem(0) : nullptr;
        if (top && tree->currentItem() != top) {
            tree->setCurrentItem(top);
        }
        if (data->CurrentArray().Position(index) < 0) {
            data->SetSelected(data, true);
        }
        if (data->CurrentArray().Position(index) < 0) {
            return false;
        }
    }
    data->PhotoSelectSetting(index);
    // The panel turns to the page (or list row) of the selected photograph.
    document->UpdateAllViews(nullptr, ToviData::HintSelectionChanged, nullptr);
    statusBar()->showMessage(QStringLiteral("番号 %1 の写真を選択しました").arg(index + 1), 3000);
    return true;
}
