#include "panels/ToviLabelTreePanel.h"

#include "panels/ToviTreeImages.h"
#include "review/ToviLabelManager.h"

#include <QTreeWidget>

ToviLabelTreePanel::ToviLabelTreePanel(QWidget* parent) : ToviTreePanel(parent) {
    setObjectName(QStringLiteral("ToviLabelTreePanel"));
    tree->setIconSize(QSize(24, 24));
    connect(tree, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* item) { OnSelchangedTree(item); });
}

QTreeWidgetItem* ToviLabelTreePanel::Root() const {
    return tree->topLevelItem(0);
}

bool ToviLabelTreePanel::IsSelectTreeRoot() const {
    return Root() && tree->currentItem() == Root();
}

void ToviLabelTreePanel::Initialize() {
    const QSignalBlocker blocker(tree);
    images = ToviTreeImages::Labels(*data->GetLabelManager());
    tree->setUpdatesEnabled(false);
    tree->clear();
    selBeforeHide = nullptr;
    auto* root = new QTreeWidgetItem(tree, QStringList{QStringLiteral("付箋")});
    root->setData(0, Qt::UserRole, -1);
    SetImages(root, 7, 0);
    for (int label = 0; label < 6; ++label) {
        auto* item = new QTreeWidgetItem(
            root,
            QStringList{data->GetLabelManager()->GetLabelAttribute(static_cast<unsigned long>(label)).GetName()});
        item->setData(0, Qt::UserRole, label);
        SetImages(item, label + 8, label + 1);
    }
    tree->setUpdatesEnabled(true);
}

void ToviLabelTreePanel::OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object) {
    ToviPanel::OnUpdate(sender, hint, object);
    if (!data) {
        return;
    }
    switch (hint) {
        case ToviData::HintInitialize:
            Initialize();
            break;
        case ToviData::HintPhotoInfoChanged:
            UpdateItemCount();
            break;
        case ToviData::HintLabelsChanged:
            UpdateItemCount();
            if (isVisible()) {
                ReSelectNode();
            }
            break;
        case ToviData::HintSettingsChanged:
            UpdateItemName();
            UpdateItemCount();
            break;
        default:
            break;
    }
}

void ToviLabelTreePanel::UpdateItemCount() {
    QTreeWidgetItem* root = Root();
    if (!data || !root) {
        return;
    }
    for (int i = 0; i < root->childCount(); ++i) {
        QTreeWidgetItem* item = root->child(i);
        const int label = item->data(0, Qt::UserRole).toInt();
        if (label < 0 || label > 5) {
            continue;
        }
        QString text =
            data->GetLabelManager()->GetLabelAttribute(static_cast<unsigned long>(label)).GetName();
        const int count = data->CountLabel(static_cast<unsigned long>(label));
        if (count > 0) {
            text += QStringLiteral(" <%1>").arg(count);
        }
        item->setText(0, text);
    }
    tree->setUpdatesEnabled(true);
}

void ToviLabelTreePanel::UpdateItemName() {
    QTreeWidgetItem* root = Root();
    if (!data || !root) {
        return;
    }
    tree->setUpdatesEnabled(false);
    for (int i = 0; i < root->childCount(); ++i) {
        QTreeWidgetItem* item = root->child(i);
        const int label = item->data(0, Qt::UserRole).toInt();
        item->setText(0, data->GetLabelManager()->GetLabelAttribute(static_cast<unsigned long>(label)).GetName());
    }
    tree->setUpdatesEnabled(true);
}

void ToviLabelTreePanel::ReSelectNode() {
    if (data) {
        data->SetSelected(data->GetSelectedIndex());
    }
}

void ToviLabelTreePanel::OnSelchangedTree(QTreeWidgetItem* item) {
    // The root carries -1, which empties the current set.
    if (data && item) {
        data->SetSelected(item->data(0, Qt::UserRole).toInt());
    }
}

void ToviLabelTreePanel::OnPostVisible() {
    if (!data) {
        return;
    }
    data->AllTextLoad();
    data->SetCurPhotoArray(true, false);
    data->SetSelected(data->GetSelectedIndex());
    if (Root()) {
        Root()->setExpanded(true);
    }
    UpdateItemCount();
}
