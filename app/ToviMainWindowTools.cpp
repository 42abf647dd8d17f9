// The operations of the main window that act on every photograph on show at once: the batch
// correction of labels, the tamper check, and the order in which the photographs are shown.

#include "app/ToviMainWindow.h"

#include "document/ToviData.h"
#include "extraction/ToviSortCondition.h"
#include "panels/ToviMpiPanel.h"
#include "platform/ToviUi.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QActionGroup>
#include <QLabel>
#include <QStatusBar>
#include <QTabWidget>

#include <array>

namespace {

// The keys the sort offers, as the setup dialog lists them.
const char* const kSortKeys[] = {"撮影年月日", "シリアル番号", "写真タイトル"};

}  // namespace

void ToviMainWindow::CreateToolActions() {
    batchLabelAction = new QAction(QStringLiteral("付箋の一括訂正・削除(&B)..."), this);
    batchLabelAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_B));
    batchLabelAction->setToolTip(
        QStringLiteral("表示中のすべての写真の付箋を、まとめて貼る・はがす"));
    connect(batchLabelAction, &QAction::triggered, this, [this] { BatchLabelCorrection(); });

    editCheckAction = new QAction(QStringLiteral("画像加工検知(&C)..."), this);
    editCheckAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    editCheckAction->setToolTip(QStringLiteral("表示中のすべての写真の画像加工検知を行う"));
    connect(editCheckAction, &QAction::triggered, this, [this] { RunEditCheck(); });

    // The sort: off or one of the keys, and the direction, which means something only while
    // sorting.
    sortKeyGroup = new QActionGroup(this);
    QAction* off = sortKeyGroup->addAction(QStringLiteral("並べ替えしない(&N)"));
    off->setCheckable(true);
    off->setData(QString());
    const char* const accelerators[] = {"&D", "&S", "&T"};
    for (int i = 0; i < 3; ++i) {
        const QString key = QString::fromUtf8(kSortKeys[i]);
        QAction* a = sortKeyGroup->addAction(
            QStringLiteral("%1(%2)").arg(key, QString::fromLatin1(accelerators[i])));
        a->setCheckable(true);
        a->setData(key);
    }
    sortDirectionGroup = new QActionGroup(this);
    QAction* up = sortDirectionGroup->addAction(QStringLiteral("昇順(&A)"));
    up->setData(true);
    QAction* down = sortDirectionGroup->addAction(QStringLiteral("降順(&E)"));
    down->setData(false);
    for (QAction* a : sortDirectionGroup->actions()) {
        a->setCheckable(true);
    }
    connect(sortKeyGroup, &QActionGroup::triggered, this, [this](QAction* a) {
        const QAction* direction = sortDirectionGroup->checkedAction();
        SetSortChoice(a->data().toString(), !direction || direction->data().toBool());
    });
    connect(sortDirectionGroup, &QActionGroup::triggered, this, [this](QAction* a) {
        const QAction* key = sortKeyGroup->checkedAction();
        SetSortChoice(key ? key->data().toString() : QString(), a->data().toBool());
    });

    checkLabel = new QLabel(this);
    checkLabel->setObjectName(QStringLiteral("checkLabel"));
    statusBar()->addPermanentWidget(checkLabel);
    connect(document, &ToviViewerDocument::DeliveryClosed, checkLabel, &QLabel::clear);
}

void ToviMainWindow::UpdateToolActions() {
    const ToviData* data = document->Data();
    const bool shown = data && data->GetCurrentPhotoCount() > 0 && !slideShow;
    batchLabelAction->setEnabled(shown);
    editCheckAction->setEnabled(shown);
    if (dateTableAction) {
        dateTableAction->setEnabled(shown);
    }
    const bool sorting = data && data->GetSortCondition().IsExecSort();
    const QString key = sorting ? data->GetSortCondition().GetKeyItem() : QString();
    for (QAction* a : sortKeyGroup->actions()) {
        a->setEnabled(data && !slideShow);
        a->setChecked(data && a->data().toString() == key);
    }
    const bool ascending = !data || data->GetSortCondition().IsAscending();
    for (QAction* a : sortDirectionGroup->actions()) {
        a->setEnabled(sorting && !slideShow);
        a->setChecked(sorting && a->data().toBool() == ascending);
    }
}

bool ToviMainWindow::BatchLabelCorrection() {
    ToviData* data = document->Data();
    if (!data || slideShow) {
        return false;
    }
    const bool result = data->AllLabelCorrection();
    UpdateLabelActions();
    return result;
}

bool ToviMainWindow::RunEditCheck() {
    ToviData* data = document->Data();
    if (!data || slideShow || data->GetCurrentPhotoCount() == 0) {
        return false;
    }
    const auto isSet = [data] {
        const ToviPhotoCtrlVisualSetting& setting = data->GetVisualSetting();
        return setting.GetDoEditCheck() && !setting.GetEditCheckTypes().isEmpty();
    };
    if (!isSet()) {
        // The check is chosen in the settings; the way there is offered at once.
        const int answer = ToviUi::Instance().MessageBox(
            this,
            QStringLiteral("画像加工検知が設定されていません。\n"
                           "設定を開いて「画像加工検知を行う」をオンにしますか？"),
            QString(), ToviUi::ButtonsYesNo, ToviUi::IconQuestion);
        if (answer != ToviUi::AnswerYes) {
            return false;
        }
        OpenSetUp();
        if (!isSet() || !document->Data()) {
            return false;
        }
    }
    std::array<int, 4> counts{};
    const bool finished = data->CheckEditJPEGCurrent(counts, this);
    mpiPanel->ShowCheckResults();
    const int checked = counts[1] + counts[2] + counts[3];
    checkLabel->setText(
        QStringLiteral("画像加工検知%1: 加工なし %2 枚 / 加工あり %3 枚 / 判定不能 %4 枚")
            .arg(finished ? QString() : QStringLiteral("（中断）"))
            .arg(counts[1])
            .arg(counts[2])
            .arg(counts[3]));
    checkLabel->setToolTip(QStringLiteral("%1　%2 枚を検知").arg(CurrentSetText()).arg(checked));
    return finished;
}

QString ToviMainWindow::EditCheckText() const {
    return checkLabel->text();
}

void ToviMainWindow::SetSortChoice(const QString& key, bool ascending) {
    ToviData* data = document->Data();
    if (!data || slideShow) {
        UpdateToolActions();
        return;
    }
    ToviSortCondition condition = data->GetSortCondition();
    if (key.isEmpty()) {
        condition.ExecSort(false);  // and ascending, as sorting off always is
    } else {
        condition.ExecSort(true);
        condition.SetKeyItem(key);
        condition.Ascending(ascending);
    }
    data->SetSortCondition(condition);
    // The photographs on show are gathered again from where they came, and sorted on the way.
    if (treeTabs->currentIndex() == 1 && data->GetSelectedIndex() >= 0) {
        data->SetSelected(data->GetSelectedIndex());
    } else if (data->GetSelectedNode()) {
        data->SetSelected(data->GetSelectedNode(), true);
    }
    UpdateToolActions();
}
