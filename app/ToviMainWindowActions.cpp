// The actions, menus and tool bar of the main window, and what they show of the state.

#include "app/ToviMainWindow.h"

#include "document/ToviData.h"
#include "document/ToviNode.h"
#include "document/ToviPhoto.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviSpiCtrl.h"
#include "platform/ToviProfile.h"
#include "platform/ToviUi.h"
#include "review/ToviLabelManager.h"

#include <QActionGroup>
#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QLabel>
#include <QMenuBar>
#include <QShortcut>
#include <QStyle>
#include <QTabWidget>
#include <QToolButton>
#include <QToolBar>

namespace {

const char* const kFamilyNames[] = {"国土交通省(&M)", "港湾空港(&K)", "農林水産省(&A)",
                                    "NEXCO(&N)"};

// Display modes offered: the paged ones, and the two lists that arrive with the list views.
struct DivideEntry {
    int type;
    const char* text;
    QKeySequence key;
};

}  // namespace

// ---- actions and menus ---------------------------------------------------------------------

QString ToviMainWindow::PlainText(const QAction* action) {
    QString text = action->text();
    const qsizetype open = text.indexOf(QStringLiteral("(&"));
    if (open >= 0) {
        text.truncate(open);
    }
    text.remove(QStringLiteral("..."));
    return text;
}

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

    recordWithPathsAction =
        new QAction(QStringLiteral("写真パス付きで検査状況を保存(&W)..."), this);
    connect(recordWithPathsAction, &QAction::triggered, this, &ToviMainWindow::SaveRecordWithPaths);
    indexPageAction = new QAction(QStringLiteral("工事管理ファイルを表示(&I)..."), this);
    indexPageAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_I));
    connect(indexPageAction, &QAction::triggered, this, &ToviMainWindow::ShowIndexPage);

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
        ToviProfile::Instance().WriteProfileInt(FrameSection_, FamilyEntry_, family + 100);
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

    slideAction = new QAction(QStringLiteral("スライドショー(&W)"), this);
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

    zoomAction = new QAction(QStringLiteral("写真拡大[情報](&Z)"), this);
    zoomAction->setToolTip(QStringLiteral("選択した写真を拡大ウィンドウで開く (Enter)"));
    connect(zoomAction, &QAction::triggered, mpiPanel, &ToviMpiPanel::OnShowProperty);
    detailAction = new QAction(QStringLiteral("詳細パネル(&I)"), this);
    detailAction->setShortcut(QKeySequence(Qt::Key_F9));
    detailAction->setCheckable(true);
    connect(detailAction, &QAction::triggered, this, [this] {
        // The setting decides; the check follows the panel's answer.
        detailAction->setChecked(!detailDock->isHidden());
        ToggleDetailPanel();
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

    CreateToolActions();
    CreateDateTableAction();
    CreateSetUpAction();

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
    file->addAction(recordWithPathsAction);
    file->addSeparator();
    file->addAction(reportAction);
    file->addAction(exportAction);
    file->addAction(indexPageAction);
    file->addSeparator();
    file->addAction(quitAction);

    QMenu* view = menuBar()->addMenu(QStringLiteral("表示(&V)"));
    QMenu* divides = view->addMenu(QStringLiteral("表示枚数(&D)"));
    divides->addActions(divideGroup->actions());
    QMenu* trees = view->addMenu(QStringLiteral("ツリーの種類(&T)"));
    trees->addActions(treeGroup->actions());
    QMenu* sort = view->addMenu(QStringLiteral("並べ替え(&O)"));
    sort->addActions(sortKeyGroup->actions());
    sort->addSeparator();
    sort->addActions(sortDirectionGroup->actions());
    QAction* dockToggle = treeDock->toggleViewAction();
    dockToggle->setText(QStringLiteral("ツリーパネル(&P)"));
    dockToggle->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_T));
    view->addAction(dockToggle);
    view->addAction(detailAction);
    view->addAction(extractionAction);
    view->addAction(checkDock->toggleViewAction());
    view->addAction(focusAction);
    view->addSeparator();
    view->addAction(zoomAction);
    view->addAction(confirmAction);
    view->addSeparator();
    view->addAction(slideAction);
    view->addAction(fullScreenAction);
    view->addSeparator();
    view->addAction(setUpAction);

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
    labels->addSeparator();
    labels->addAction(batchLabelAction);
    connect(labels, &QMenu::aboutToShow, this, &ToviMainWindow::UpdateLabelActions);

    QMenu* tools = menuBar()->addMenu(QStringLiteral("ツール(&T)"));
    tools->addAction(editCheckAction);
    tools->addAction(checkRunAction);
    tools->addAction(dateTableAction);

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
    bar->addSeparator();
    bar->addAction(extractionAction);
    if (auto* button = qobject_cast<QToolButton*>(bar->widgetForAction(extractionAction))) {
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        button->setText(PlainText(extractionAction));
        button->setToolTip(QStringLiteral("%1 (%2)").arg(
            PlainText(extractionAction),
            extractionAction->shortcut().toString(QKeySequence::NativeText)));
    }
}

void ToviMainWindow::UpdateActions() {
    const bool open = document->IsOpen();
    for (QAction* a :
         {closeAction, saveRecordAction, loadRecordAction, recordWithPathsAction, reportAction,
          exportAction, indexPageAction, slideAction, confirmAction, detailAction, zoomAction}) {
        a->setEnabled(open);
    }
    checkRunAction->setEnabled(open);
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
    UpdateToolActions();
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
