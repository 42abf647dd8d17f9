#include "dialogs/ToviConfirmDlg.h"

#include "dialogs/ToviConfirmTreeCtrl.h"
#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviNode.h"
#include "document/ToviPhoto.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviTreeImages.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// The items naming a photograph's place in each tree type, from the top of the tree down.
QStringList PathTitles(int treeType) {
    switch (treeType) {
        case 0:
            return {QStringLiteral("写真-大分類"), QStringLiteral("写真区分"),
                    QStringLiteral("工種"), QStringLiteral("種別"), QStringLiteral("細別")};
        case 1:
            return {QStringLiteral("撮影箇所")};
        case 2:
            return {QStringLiteral("工種"), QStringLiteral("種別"), QStringLiteral("細別")};
        default:
            return {};
    }
}

bool IsSwallowedKey(const QEvent* event) {
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease) {
        return false;
    }
    const int key = static_cast<const QKeyEvent*>(event)->key();
    return key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter ||
           key == Qt::Key_Space;
}

QTreeWidgetItem* NextSibling(QTreeWidgetItem* item) {
    QTreeWidgetItem* parent = item->parent();
    if (parent) {
        return parent->child(parent->indexOfChild(item) + 1);
    }
    QTreeWidget* owner = item->treeWidget();
    return owner ? owner->topLevelItem(owner->indexOfTopLevelItem(item) + 1) : nullptr;
}

// Depth first through the item's subtree and then its following siblings' subtrees; the item
// itself counts only when self is set. The first match in that order wins, so a title found
// deeper under an earlier sibling beats the same title higher up later.
QTreeWidgetItem* Search(QTreeWidgetItem* item, const QString& text, bool self) {
    for (; item; item = NextSibling(item), self = true) {
        if (self && item->text(0) == text) {
            return item;
        }
        if (QTreeWidgetItem* found = Search(item->child(0), text, true)) {
            return found;
        }
    }
    return nullptr;
}

}  // namespace

ToviConfirmDlg::ToviConfirmDlg(ToviMpiPanel* owner, QWidget* parent)
    : QDialog(parent ? parent : owner),
      closeButton(new QPushButton(QStringLiteral("閉じる"), this)),
      tree(new ToviConfirmTreeCtrl(this)),
      owner(owner) {
    setObjectName(QStringLiteral("ToviConfirmDlg"));
    setWindowTitle(QStringLiteral("写真格納位置の確認"));
    setModal(false);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setMinimumSize(kMinimumWidth, kMinimumHeight);
    closeButton->setObjectName(QStringLiteral("closeButton"));
    closeButton->setDefault(true);
    connect(closeButton, &QPushButton::clicked, this, &QWidget::close);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(tree, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(closeButton);
    layout->addLayout(buttons);
    installEventFilter(this);
    closeButton->installEventFilter(this);
    tree->installEventFilter(this);
}

ToviConfirmDlg::~ToviConfirmDlg() {
    if (owner) {
        StoreRect();
        ToviMpiPanel* panel = owner;
        owner = nullptr;
        panel->EndConfirmDlg();
    }
}

void ToviConfirmDlg::StoreRect() {
    x = pos().x();
    y = pos().y();
    width = size().width();
    height = size().height();
}

void ToviConfirmDlg::closeEvent(QCloseEvent* event) {
    event->accept();
    StoreRect();
    hide();
    if (owner) {
        // The owner forgets the dialog now, so that a new one may come before this one goes.
        ToviMpiPanel* panel = owner;
        owner = nullptr;
        panel->EndConfirmDlg();
        deleteLater();
    }
}

bool ToviConfirmDlg::eventFilter(QObject* watched, QEvent* event) {
    if (IsSwallowedKey(event)) {
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void ToviConfirmDlg::keyPressEvent(QKeyEvent* event) {
    if (IsSwallowedKey(event)) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

void ToviConfirmDlg::SetImages(QTreeWidgetItem* item, int image, int selectedImage) const {
    ToviTreeImages::SetItemImages(item, images, image, selectedImage);
}

QTreeWidgetItem* ToviConfirmDlg::InsertNode(ToviNode* node, QTreeWidgetItem* parent, int level,
                                            int selectedImage) {
    auto* item = new QTreeWidgetItem(parent, QStringList{node->Title()});
    item->setData(0, Qt::UserRole, QVariant::fromValue(static_cast<void*>(node)));
    SetImages(item, level, selectedImage);
    for (int i = 0; i < node->GetChildNodeCount(); ++i) {
        InsertNode(node->GetNode(i), item, level + 1, selectedImage + 1);
    }
    item->setExpanded(true);
    return item;
}

void ToviConfirmDlg::BuildTree(ToviData* data) {
    const bool known = treeType >= 0 && treeType <= 2;
    images = known ? ToviTreeImages::Folders(treeType) : QList<QPixmap>();
    const int base = ToviTreeImages::FirstSelected(treeType);
    tree->setUpdatesEnabled(false);
    tree->clear();
    if (data) {
        auto* root = new QTreeWidgetItem(tree, QStringList{data->Title()});
        root->setData(0, Qt::UserRole, QVariant::fromValue(static_cast<void*>(data)));
        SetImages(root, 0, base);
        for (int i = 0; i < data->GetChildNodeCount(); ++i) {
            InsertNode(static_cast<ToviNode*>(data)->GetNode(i), root, 1, base + 1);
        }
        root->setExpanded(true);
    }
    tree->setUpdatesEnabled(true);
    int pos = -1;
    if (data) {
        data->GetIndexSelected(pos);
    }
    const ToviPhoto* photo = data && pos >= 0 ? data->GetPhoto(pos) : nullptr;
    QTreeWidgetItem* item = photo ? FindItem(data, photo) : nullptr;
    if (item) {
        tree->setCurrentItem(item);
        tree->scrollToItem(item);
    } else if (!photo) {
        tree->clearSelection();
    }
}

bool ToviConfirmDlg::OnSelect(ToviData* data, ToviPhoto* photo) {
    if (!photo) {
        tree->clearSelection();
        return false;
    }
    QTreeWidgetItem* item = FindItem(data, photo);
    if (!item) {
        return false;
    }
    tree->setCurrentItem(item);
    tree->scrollToItem(item);
    return true;
}

QTreeWidgetItem* ToviConfirmDlg::FindItem(ToviData* data, const ToviPhoto* photo) const {
    const QStringList titles = PathTitles(treeType);
    QTreeWidgetItem* root = tree->topLevelItem(0);
    if (!data || !photo || titles.isEmpty() || !root) {
        return nullptr;
    }
    const ToviItemDef& def = *data->GetItemDef();
    QStringList values;
    for (const QString& title : titles) {
        values.append(photo->GetTitle(def.GetIndexFromTitle(title)));
    }
    QStringList path;
    if (treeType == 1) {
        path.append(values.front());
    } else {
        if (std::all_of(values.begin(), values.end(),
                        [](const QString& v) { return v.isEmpty(); })) {
            return nullptr;
        }
        for (const QString& value : values) {
            if (value.isEmpty()) {
                break;
            }
            path.append(value);
        }
    }
    if (path.isEmpty() || path.front().isEmpty()) {
        path = QStringList{ToviNode::kUnfilledTitle};
    }
    QTreeWidgetItem* item = Search(root, path.front(), true);
    for (qsizetype i = 1; item && i < path.size(); ++i) {
        item = Search(item, path[i], false);
    }
    return item;
}
