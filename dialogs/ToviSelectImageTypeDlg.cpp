#include "dialogs/ToviSelectImageTypeDlg.h"

#include "imagefacts/ToviImageCheckCommon.h"
#include "imagefacts/ToviJacicImageChecker.h"
#include "platform/ToviUi.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kRowCount = 3;

}  // namespace

ToviSelectImageTypeDlg::ToviSelectImageTypeDlg(const QList<int>& chosen, QWidget* parent)
    : QDialog(parent), list(new QListWidget(this)), description(new QLabel(this)), types(chosen) {
    setObjectName(QStringLiteral("ToviSelectImageTypeDlg"));
    setWindowTitle(QStringLiteral("画像加工検知タイプの選択"));
    auto* layout = new QVBoxLayout(this);

    list->setObjectName(QStringLiteral("typeList"));
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    // The electronic blackboard needs the hash checker; the other type that uses it is
    // offered all the same, as the check then reports its own failure.
    const bool hashChecker = ToviJacicImageChecker().IsEnableDLL();
    for (int i = 0; i < kRowCount; ++i) {
        const ToviImageCheckCommon::CameraType type = ToviImageCheckCommon::QueryCameraType(i);
        if (type == ToviImageCheckCommon::CameraBlackboard && !hashChecker) {
            continue;
        }
        auto* item = new QListWidgetItem(ToviImageCheckCommon::QueryCameraName(type), list);
        item->setData(Qt::UserRole, static_cast<int>(type));
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        item->setCheckState(chosen.contains(static_cast<int>(type)) ? Qt::Checked : Qt::Unchecked);
    }
    list->setMinimumWidth(list->fontMetrics().horizontalAdvance(QStringLiteral("M")) * 36);
    list->setFixedHeight(list->sizeHintForRow(0) * kRowCount + 2 * list->frameWidth() + 4);
    layout->addWidget(list);

    description->setObjectName(QStringLiteral("description"));
    description->setWordWrap(true);
    description->setFrameShape(QFrame::StyledPanel);
    description->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    description->setMinimumHeight(description->fontMetrics().lineSpacing() * 3 + 8);
    layout->addWidget(description);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    QPushButton* cancel = buttons->addButton(QStringLiteral("ｷｬﾝｾﾙ"), QDialogButtonBox::RejectRole);
    ok->setObjectName(QStringLiteral("ok"));
    cancel->setObjectName(QStringLiteral("cancel"));
    ok->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);

    connect(list, &QListWidget::itemSelectionChanged, this,
            &ToviSelectImageTypeDlg::OnSelectionChanged);
    OnSelectionChanged();
    list->setFocus(Qt::OtherFocusReason);
}

QString ToviSelectImageTypeDlg::DescriptionOf(int type) {
    if (type == ToviImageCheckCommon::CameraRicohG600) {
        return QStringLiteral(
            "RICOH社デジタルカメラの「画像加工検知機能」を利用して撮影した画像の加工判定を行います"
            "。");
    }
    return QStringLiteral(
        "改ざん検知機能を有したソフトウェアまたはアプリを利用して撮影した画像の加工判定を行います"
        "。");
}

QString ToviSelectImageTypeDlg::NoSelectionText() {
    return QStringLiteral("リストで選択したタイプの説明を表示します。");
}

void ToviSelectImageTypeDlg::OnSelectionChanged() {
    const QList<QListWidgetItem*> selected = list->selectedItems();
    description->setText(selected.isEmpty()
                             ? NoSelectionText()
                             : DescriptionOf(selected.first()->data(Qt::UserRole).toInt()));
}

void ToviSelectImageTypeDlg::accept() {
    QList<int> ticked;
    for (int row = 0; row < list->count(); ++row) {
        const QListWidgetItem* item = list->item(row);
        if (item->checkState() == Qt::Checked) {
            ticked.append(item->data(Qt::UserRole).toInt());
        }
    }
    if (ticked.isEmpty()) {
        ToviUi::Instance().MessageBox(this, QStringLiteral("一つ以上チェックを付けてください。"),
                                      QString(), ToviUi::ButtonsOk, ToviUi::IconWarning);
        list->setFocus(Qt::OtherFocusReason);
        return;
    }
    types = ticked;
    QDialog::accept();
}
