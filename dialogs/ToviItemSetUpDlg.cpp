#include "dialogs/ToviItemSetUpDlg.h"

#include "settings/ToviItemManager.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace {

constexpr int kShownId = 1090;
constexpr int kHiddenIds[3] = {1095, 1096, 1097};

QLabel* LegendLine(const QString& text, const QColor& color, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    if (color.isValid()) {
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, color);
        label->setPalette(palette);
    }
    return label;
}

QListWidgetItem* TakeSelected(QListWidget* list) {
    const int row = list->currentRow();
    if (row < 0 || !list->item(row)->isSelected()) {
        return nullptr;
    }
    QListWidgetItem* item = list->takeItem(row);
    // The row now at the same place is selected, or the last one when the last went.
    if (list->count() > 0) {
        list->setCurrentRow(qMin(row, list->count() - 1));
    }
    return item;
}

}  // namespace

ToviItemSetUpDlg::ToviItemSetUpDlg(ToviItemManager* edited, QWidget* parent)
    : QDialog(parent), manager(edited) {
    setObjectName(QStringLiteral("ToviItemSetUpDlg"));
    setWindowTitle(QStringLiteral("「表示項目」と「表示順」の設定"));

    category = new QComboBox(this);
    category->setObjectName(ControlName(1144));
    category->addItems(
        {QStringLiteral("管理項目"), QStringLiteral("ファイル情報"), QStringLiteral("Exif情報")});
    const int listWidth =
        fontMetrics().horizontalAdvance(QStringLiteral("ディジタルデータの作成日時")) + 40;
    auto* stack = new QStackedWidget(this);
    for (int kind = 0; kind < 3; ++kind) {
        hiddenLists[kind] = new QListWidget(stack);
        hiddenLists[kind]->setObjectName(ControlName(kHiddenIds[kind]));
        stack->addWidget(hiddenLists[kind]);
    }
    shownList = new QListWidget(this);
    shownList->setObjectName(ControlName(kShownId));
    for (QListWidget* list : {hiddenLists[0], hiddenLists[1], hiddenLists[2], shownList}) {
        list->setMinimumSize(listWidth, fontMetrics().lineSpacing() * 16);
        connect(list, &QListWidget::itemSelectionChanged, this, &ToviItemSetUpDlg::UpdateButtons);
    }

    showButton = new QPushButton(QStringLiteral("表示に->"), this);
    hideButton = new QPushButton(QStringLiteral("<-非表示に"), this);
    upButton = new QPushButton(QStringLiteral("上へ"), this);
    downButton = new QPushButton(QStringLiteral("下へ"), this);
    showButton->setObjectName(ControlName(1091));
    hideButton->setObjectName(ControlName(1092));
    upButton->setObjectName(ControlName(1093));
    downButton->setObjectName(ControlName(1094));

    auto* hiddenBox = new QGroupBox(QStringLiteral("非表示"), this);
    auto* hiddenLayout = new QVBoxLayout(hiddenBox);
    hiddenLayout->addWidget(category);
    hiddenLayout->addWidget(stack, 1);
    auto* moves = new QVBoxLayout;
    moves->addStretch(1);
    moves->addWidget(showButton);
    moves->addWidget(hideButton);
    moves->addStretch(1);
    auto* shownBox = new QGroupBox(QStringLiteral("表示"), this);
    auto* shownLayout = new QVBoxLayout(shownBox);
    shownLayout->addWidget(shownList, 1);
    auto* order = new QHBoxLayout;
    order->addWidget(upButton);
    order->addWidget(downButton);
    shownLayout->addLayout(order);

    auto* lists = new QHBoxLayout;
    lists->addWidget(hiddenBox, 1);
    lists->addLayout(moves);
    lists->addWidget(shownBox, 1);

    auto* legend = new QGroupBox(this);
    auto* legendLayout = new QGridLayout(legend);
    legendLayout->addWidget(
        new QLabel(QStringLiteral("写真情報リストでは、\n各項目は下記のように色分けされます。"),
                   legend),
        0, 0, 3, 1, Qt::AlignTop);
    legendLayout->addWidget(LegendLine(QStringLiteral("管理項目"), QColor(), legend), 0, 1);
    legendLayout->addWidget(
        LegendLine(QStringLiteral("管理項目(必須項目)"), QColor(255, 0, 0), legend), 1, 1);
    legendLayout->addWidget(
        LegendLine(QStringLiteral("管理項目(条件付き必須項目)"), QColor(0, 0, 255), legend), 2, 1);
    legendLayout->addWidget(LegendLine(QStringLiteral("ファイル情報"), QColor(0, 128, 0), legend),
                            0, 2);
    legendLayout->addWidget(LegendLine(QStringLiteral("Exif情報"), QColor(160, 82, 45), legend), 1,
                            2);
    legendLayout->setColumnStretch(0, 1);

    okButton = new QPushButton(QStringLiteral("OK"), this);
    cancelButton = new QPushButton(QStringLiteral("キャンセル"), this);
    okButton->setObjectName(QStringLiteral("ok"));
    cancelButton->setObjectName(QStringLiteral("cancel"));
    okButton->setDefault(true);
    connect(okButton, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    auto* closing = new QHBoxLayout;
    closing->addStretch(1);
    closing->addWidget(okButton);
    closing->addWidget(cancelButton);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(lists, 1);
    layout->addWidget(legend);
    layout->addLayout(closing);

    // Each row carries its position in the manager's list.
    const ToviItemShowSettings& settings = manager->GetItemShowSettings();
    for (int position = 0; position < settings.size(); ++position) {
        const ToviItemShowSetting& entry = settings[position];
        int kind = entry.infoType;
        if (kind < InfoTypeItem || kind > InfoTypeExif) {
            kind = InfoTypeItem;
        }
        auto* item = new QListWidgetItem(entry.title);
        item->setData(Qt::UserRole, position);
        (entry.bold ? shownList : hiddenLists[kind])->addItem(item);
    }

    connect(category, &QComboBox::currentIndexChanged, this, [this, stack](int index) {
        stack->setCurrentIndex(index);
        OnCategoryChanged(index);
    });
    connect(showButton, &QPushButton::clicked, this,
            [this] { MoveRow(VisibleHiddenList(), shownList); });
    connect(hideButton, &QPushButton::clicked, this, [this] {
        const int row = shownList->currentRow();
        if (row < 0 || !shownList->item(row)->isSelected()) {
            return;
        }
        const int position = shownList->item(row)->data(Qt::UserRole).toInt();
        int kind = manager->GetItemShowSettings()[position].infoType;
        if (kind < InfoTypeItem || kind > InfoTypeExif) {
            kind = InfoTypeItem;
        }
        if (kind != visibleHidden) {
            category->setCurrentIndex(kind);
        }
        MoveRow(shownList, hiddenLists[kind]);
    });
    connect(upButton, &QPushButton::clicked, this, [this] { MoveUpDown(-1); });
    connect(downButton, &QPushButton::clicked, this, [this] { MoveUpDown(1); });

    category->setCurrentIndex(0);
    stack->setCurrentIndex(0);
    UpdateButtons();
    setTabOrder(category, hiddenLists[0]);
    setTabOrder(hiddenLists[0], showButton);
    setTabOrder(showButton, hideButton);
    setTabOrder(hideButton, shownList);
    setTabOrder(shownList, upButton);
    setTabOrder(upButton, downButton);
    setTabOrder(downButton, okButton);
    setTabOrder(okButton, cancelButton);
}

QString ToviItemSetUpDlg::ControlName(int id) {
    return QStringLiteral("ctl%1").arg(id);
}

QListWidget* ToviItemSetUpDlg::VisibleHiddenList() const {
    return hiddenLists[visibleHidden];
}

void ToviItemSetUpDlg::OnCategoryChanged(int index) {
    if (index < 0 || index > 2) {
        return;
    }
    visibleHidden = index;
    UpdateButtons();
}

void ToviItemSetUpDlg::MoveRow(QListWidget* from, QListWidget* to) {
    QListWidgetItem* item = TakeSelected(from);
    if (!item) {
        return;
    }
    const int after = to->currentRow();
    const bool afterSelected = after >= 0 && to->item(after)->isSelected();
    to->insertItem(afterSelected ? after + 1 : 0, item);
    to->setCurrentItem(item);
    UpdateButtons();
}

void ToviItemSetUpDlg::MoveUpDown(int step) {
    const int row = shownList->currentRow();
    const int target = row + step;
    if (row < 0 || target < 0 || target >= shownList->count()) {
        return;
    }
    QListWidgetItem* item = shownList->takeItem(row);
    shownList->insertItem(target, item);
    shownList->setCurrentItem(item);
    UpdateButtons();
}

void ToviItemSetUpDlg::UpdateButtons() {
    const auto selectedRow = [](const QListWidget* list) {
        const int row = list->currentRow();
        return row >= 0 && list->item(row)->isSelected() ? row : -1;
    };
    const int shownRow = selectedRow(shownList);
    showButton->setEnabled(selectedRow(VisibleHiddenList()) >= 0);
    hideButton->setEnabled(shownRow >= 0);
    upButton->setEnabled(shownRow > 0);
    downButton->setEnabled(shownRow >= 0 && shownRow < shownList->count() - 1);
    // The last shown item may be moved away, but the list can't then be confirmed.
    okButton->setEnabled(shownList->count() > 0);
}

void ToviItemSetUpDlg::accept() {
    if (shownList->count() == 0) {
        return;
    }
    const ToviItemShowSettings& present = manager->GetItemShowSettings();
    ToviItemShowSettings rebuilt;
    const auto addRows = [&](const QListWidget* list, bool shown) {
        for (int row = 0; row < list->count(); ++row) {
            const int position = list->item(row)->data(Qt::UserRole).toInt();
            const ToviItemShowSetting& entry = present[position];
            rebuilt.Add(entry.title, shown, entry.index, entry.grade, entry.infoType);
        }
    };
    addRows(shownList, true);
    for (QListWidget* list : hiddenLists) {
        addRows(list, false);
    }
    // A new list shows its title column: the flag isn't carried over.
    manager->SetItemShowSettings(rebuilt);
    QDialog::accept();
}
