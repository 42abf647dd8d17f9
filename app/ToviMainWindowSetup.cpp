// The 設定 command of the main window: the setup dialog and what its OK changes.

#include "app/ToviMainWindow.h"

#include "dialogs/ToviSetUpDlg.h"
#include "document/ToviData.h"
#include "document/ToviNode.h"
#include "panels/ToviMpiPanel.h"
#include "extraction/ToviSortCondition.h"
#include "platform/ToviProfile.h"
#include "platform/ToviUi.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviItemManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QAction>
#include <QSet>
#include <QTabWidget>

#include <algorithm>
#include <memory>

void ToviMainWindow::CreateSetUpAction() {
    setUpAction = new QAction(QStringLiteral("設定(&S)..."), this);
    setUpAction->setObjectName(QStringLiteral("setUpAction"));
    // The desktop's preferences key; some desktops define none, so it is set outright.
    setUpAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    setUpAction->setMenuRole(QAction::PreferencesRole);
    connect(setUpAction, &QAction::triggered, this, &ToviMainWindow::OpenSetUp);
}

void ToviMainWindow::OpenSetUp() {
    if (slideShow) {
        return;
    }
    ToviData* data = document->Data();
    if (data) {
        ToviSetUpDlg dialog(*data->GetLabelManager(), data->GetVisualSetting(),
                            data->GetSortCondition(), *data->GetItemManager(), this);
        if (dialog.exec() == QDialog::Accepted) {
            ApplySetUp(dialog.GetLabelMngr(), dialog.GetVisualSetting(), dialog.GetSortCondition(),
                       dialog.GetItemManager());
        }
        return;
    }
    // Nothing open: the stored settings, as the next delivery will read them. There are no
    // item candidates without a delivery's definitions.
    std::unique_ptr<ToviSetUpDlg> dialog;
    {
        ToviLabelManager labels;
        labels.Load();
        ToviPhotoCtrlVisualSetting visual;
        visual.Load();
        ToviSortCondition sort;
        sort.Load();
        dialog = std::make_unique<ToviSetUpDlg>(labels, visual, sort, ToviItemManager(), this);
    }  // the objects read write back what they read here, not after the dialog's copies
    if (dialog->exec() == QDialog::Accepted) {
        ApplySetUp(dialog->GetLabelMngr(), dialog->GetVisualSetting(), dialog->GetSortCondition(),
                   dialog->GetItemManager());
    }
}

void ToviMainWindow::ApplySetUp(const ToviLabelManager& labels,
                                const ToviPhotoCtrlVisualSetting& visual,
                                const ToviSortCondition& sort, const ToviItemManager& items) {
    ToviData* data = document->Data();
    if (data) {
        // Plain values, not copies of the objects: a copy would store the old state when it
        // goes.
        const ToviPhotoCtrlVisualSetting& shown = data->GetVisualSetting();
        const int oldTree = shown.GetTreeType();
        // The multi-photo panel lays its page out again on hint 7 unless one of these changed.
        const bool paneChanged = shown.GetVisibleComment() != visual.GetVisibleComment() ||
                                 shown.GetImageTextArrange() != visual.GetImageTextArrange() ||
                                 shown.GetVisibleDetail() != visual.GetVisibleDetail();
        const ToviSortCondition& current = data->GetSortCondition();
        const bool oldSort = current.IsExecSort();
        const QString oldKey = current.GetKeyItem();
        const bool oldAscending = current.IsAscending();

        data->SetManager(labels, items, true);
        data->SetVisualSetting(visual, false);
        data->SetSortCondition(sort);

        const ToviSortCondition& now = data->GetSortCondition();
        const bool sortChanged =
            now.IsExecSort() != oldSort ||
            (now.IsExecSort() && (now.GetKeyItem() != oldKey || now.IsAscending() != oldAscending));
        const int newTree = data->GetVisualSetting().GetTreeType();
        const bool reordered = newTree != oldTree || sortChanged;
        if (newTree != oldTree) {
            // The new tree brings a new current array, sorted as now set.
            data->BuildTreeNode(newTree);
        } else if (sortChanged) {
            if (now.IsExecSort()) {
                data->Sort();
            } else {
                RestoreTreeOrder();
            }
        }
        // The panels take the display mode and the rest from the document on this hint.
        document->UpdateAllViews(nullptr, ToviData::HintSettingsChanged, nullptr);
        if (reordered && paneChanged) {
            mpiPanel->Initialize();  // else the page keeps the photographs of the old order
        }
        UpdateActions();
        UpdateLabelActions();
        data->GetLabelManager()->Save();
        data->GetVisualSetting().Save();
        data->GetSortConditionObject()->Save();
    } else {
        labels.Save();
        visual.Save();
        sort.Save();
    }
    if (!ToviProfile::Instance().Flush()) {
        ToviUi::Instance().MessageBox(
            this,
            QStringLiteral("設定を保存できませんでした。\n%1\n\n"
                           "変更した設定はこのまま使われますが、次回の起動には引き継がれません。")
                .arg(ToviProfile::Instance().FileName()),
            QString(), ToviUi::ButtonsOk, ToviUi::IconWarning);
    }
}

void ToviMainWindow::RestoreTreeOrder() {
    ToviData* data = document->Data();
    ToviPhotoRef& array = data->CurrentArray();
    QList<int> members;
    for (int pos = 0; pos < array.GetSize(); ++pos) {
        members.append(array.GetAt(pos));
    }
    if (treeTabs->currentIndex() == 1) {
        // A label's photographs come in the order of the delivery.
        std::sort(members.begin(), members.end());
        array.Assign(members);
        return;
    }
    // A node's photographs in the order of the tree, without those extraction left out.
    const QSet<int> kept(members.cbegin(), members.cend());
    QList<int> all;
    if (const ToviNode* node = data->GetSelectedNode()) {
        node->GetAllUnder(all);
    }
    QList<int> ordered;
    for (int index : all) {
        if (kept.contains(index)) {
            ordered.append(index);
        }
    }
    if (ordered.size() == members.size()) {
        array.Assign(ordered);
    }
}
