#include "dialogs/ToviSetUpDlg.h"

#include "dialogs/ToviColorButton.h"
#include "dialogs/ToviItemSetUpDlg.h"
#include "dialogs/ToviSelectImageTypeDlg.h"
#include "platform/Cp932.h"
#include "platform/ToviUi.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QSvgRenderer>
#include <QVBoxLayout>

#include <cstdlib>

namespace {

constexpr int kSlots = 6;
// Controls of the label slots, in slot order.
constexpr int kColorIds[kSlots] = {1058, 1059, 1060, 1061, 1062, 1068};
constexpr int kNameIds[kSlots] = {1063, 1064, 1065, 1066, 1067, 1083};
// Slots 0 (OK) and 4 (comment) keep their names.
constexpr bool kNameEditable[kSlots] = {false, true, true, true, false, true};
const char* const kCaptions[kSlots] = {"OK", "NG1", "NG2", "NG3", "コメント", "任意項目"};

constexpr int kViewIds[7] = {1074, 1075, 1076, 1077, 1078, 1079, 1080};
const char* const kViewTexts[7] = {"1枚表示", "2枚表示",        "3枚表示",   "4枚表示",
                                   "6枚表示", "サムネイル表示", "リスト表示"};
const char* const kViewPictures[7] = {"mode-1", "mode-2",     "mode-3",   "mode-4",
                                      "mode-6", "mode-thumb", "mode-list"};
const char* const kInfoPictures[2] = {"info-hidden", "info-beside"};
constexpr QSize kPreviewSize(96, 72);
constexpr QSize kLabelPictureSize(28, 18);

// One of our pictures, drawn at the screen's density.
QPixmap Picture(const QString& name, QSize size, qreal ratio) {
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QSvgRenderer renderer(QStringLiteral(":/dialogs/icons/%1.svg").arg(name));
    QPainter painter(&pixmap);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(size)));
    return pixmap;
}

QRadioButton* AddRadio(QButtonGroup* group, int value, int id, const QString& text,
                       QWidget* parent) {
    auto* radio = new QRadioButton(text, parent);
    radio->setObjectName(ToviSetUpDlg::ControlName(id));
    group->addButton(radio, value);
    return radio;
}

// Leaves every button of the group unchecked.
void ClearGroup(QButtonGroup* group) {
    group->setExclusive(false);
    for (QAbstractButton* button : group->buttons()) {
        button->setChecked(false);
    }
    group->setExclusive(true);
}

void CheckInGroup(QButtonGroup* group, int value) {
    if (QAbstractButton* button = group->button(value)) {
        button->setChecked(true);
    }
}

// The camera types of an EditCheckTypes text: its first 63 characters cut at ",", each piece
// read like atoi and cut to its low eight bits.
QList<int> TypesOf(const QString& text) {
    QList<int> types;
    for (const QString& piece : text.left(63).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        types.append(
            static_cast<int>(std::strtol(piece.toLatin1().constData(), nullptr, 10) & 0xFF));
    }
    return types;
}

}  // namespace

const QString ToviSetUpDlg::ControlValueTitle_ = QStringLiteral("施工管理値");

ToviSetUpDlg::ToviSetUpDlg(const ToviLabelManager& labels, const ToviPhotoCtrlVisualSetting& visual,
                           const ToviSortCondition& sort, const ToviItemManager& items,
                           QWidget* parent)
    : QDialog(parent),
      labelMngr(labels),
      visualSetting(visual),
      sortCondition(sort),
      itemManager(items) {
    setObjectName(QStringLiteral("ToviSetUpDlg"));
    setWindowTitle(QStringLiteral("設定"));
    CreateControls();
    InitLabelSec();
    InitItemSec();
    InitVisualSettingSec();
    InitSortConditionSec();
}

ToviSetUpDlg::~ToviSetUpDlg() = default;

QString ToviSetUpDlg::ControlName(int id) {
    return QStringLiteral("ctl%1").arg(id);
}

QStringList ToviSetUpDlg::SortKeys() {
    return {QStringLiteral("撮影年月日"), QStringLiteral("シリアル番号"),
            QStringLiteral("写真タイトル")};
}

void ToviSetUpDlg::CreateControls() {
    const qreal ratio = devicePixelRatioF();
    // Widgets are made in reading order, column by column, which is also the tab order.

    // ---- first column: the labels and the sort
    auto* labelBox = new QGroupBox(QStringLiteral("付箋名称"), this);
    auto* checkBox = new QGroupBox(QStringLiteral("写真チェック用　付箋内容"), labelBox);
    auto* freeBox = new QGroupBox(QStringLiteral("任意項目"), labelBox);
    auto* checkGrid = new QGridLayout(checkBox);
    auto* freeGrid = new QGridLayout(freeBox);
    const int nameWidth = fontMetrics().horizontalAdvance(QString(17, QChar(0x5B57)));
    for (int slot = 0; slot < kSlots; ++slot) {
        QWidget* box = slot == 5 ? freeBox : checkBox;
        QGridLayout* grid = slot == 5 ? freeGrid : checkGrid;
        const int row = slot == 5 ? 0 : slot;
        colorButtons[slot] = new ToviColorButton(box);
        colorButtons[slot]->setObjectName(ControlName(kColorIds[slot]));
        colorButtons[slot]->setEnabled(false);
        colorButtons[slot]->SetImage(
            Picture(QStringLiteral("label-%1").arg(slot), kLabelPictureSize, ratio));
        auto* caption = new QLabel(QString::fromUtf8(kCaptions[slot]), box);
        labelNames[slot] = new QLineEdit(box);
        labelNames[slot]->setObjectName(ControlName(kNameIds[slot]));
        labelNames[slot]->setReadOnly(!kNameEditable[slot]);
        labelNames[slot]->setMinimumWidth(nameWidth);
        caption->setBuddy(labelNames[slot]);
        grid->addWidget(colorButtons[slot], row, 0);
        grid->addWidget(caption, row, 1);
        grid->addWidget(labelNames[slot], row, 2);
        grid->setColumnStretch(2, 1);
    }
    auto* labelLayout = new QVBoxLayout(labelBox);
    labelLayout->addWidget(checkBox);
    labelLayout->addWidget(freeBox);

    auto* orderBox = new QGroupBox(QStringLiteral("写真の表示順"), this);
    sortRadio = new QButtonGroup(this);
    auto* orderLayout = new QVBoxLayout(orderBox);
    auto* orderRadios = new QHBoxLayout;
    orderRadios->addWidget(
        AddRadio(sortRadio, 0, 1069, QStringLiteral("「並べ替え」しない"), orderBox));
    orderRadios->addWidget(
        AddRadio(sortRadio, 1, 1070, QStringLiteral("「並べ替え」する"), orderBox));
    orderRadios->addStretch(1);
    orderLayout->addLayout(orderRadios);
    auto* conditionBox = new QGroupBox(QStringLiteral("並べ替えの条件"), orderBox);
    auto* conditionLayout = new QHBoxLayout(conditionBox);
    sortKey = new QComboBox(conditionBox);
    sortKey->setObjectName(ControlName(1071));
    directionRadio = new QButtonGroup(this);
    conditionLayout->addWidget(sortKey, 1);
    conditionLayout->addWidget(
        AddRadio(directionRadio, 0, 1072, QStringLiteral("昇順"), conditionBox));
    conditionLayout->addWidget(
        AddRadio(directionRadio, 1, 1073, QStringLiteral("降順"), conditionBox));
    orderLayout->addWidget(conditionBox);

    auto* first = new QVBoxLayout;
    first->addWidget(labelBox);
    first->addWidget(orderBox);
    first->addStretch(1);

    // ---- second column: the information list and the caption
    auto* itemBox = new QGroupBox(QStringLiteral("『写真情報リスト』表示項目"), this);
    auto* itemLayout = new QVBoxLayout(itemBox);
    itemList = new QListWidget(itemBox);
    itemList->setObjectName(ControlName(1056));
    itemList->setSelectionMode(QAbstractItemView::NoSelection);
    itemList->setMinimumWidth(
        fontMetrics().horizontalAdvance(QStringLiteral("『表示項目』と『表示順』の設定...")) + 24);
    itemButton = new QPushButton(QStringLiteral("『表示項目』と『表示順』の設定..."), itemBox);
    itemButton->setObjectName(ControlName(1057));
    itemLayout->addWidget(itemList, 1);
    itemLayout->addWidget(itemButton);

    auto* titleBox = new QGroupBox(QStringLiteral("写真タイトル表示"), this);
    auto* titleLayout = new QVBoxLayout(titleBox);
    titleRadio = new QButtonGroup(this);
    titleLayout->addWidget(
        AddRadio(titleRadio, 0, 1081, QStringLiteral("写真ファイル名"), titleBox));
    titleLayout->addWidget(
        AddRadio(titleRadio, 1, 1082, QStringLiteral("写真ファイル日本語名"), titleBox));
    titleLayout->addWidget(AddRadio(titleRadio, 2, 1084, QStringLiteral("写真タイトル"), titleBox));

    auto* second = new QVBoxLayout;
    second->addWidget(itemBox, 1);
    second->addWidget(titleBox);

    // ---- third column: the display
    auto* viewBox = new QGroupBox(QStringLiteral("写真表示数"), this);
    auto* viewLayout = new QGridLayout(viewBox);
    viewRadio = new QButtonGroup(this);
    for (int mode = 0; mode < 7; ++mode) {
        viewLayout->addWidget(
            AddRadio(viewRadio, mode, kViewIds[mode], QString::fromUtf8(kViewTexts[mode]), viewBox),
            mode, 0);
    }
    viewPreview = new QLabel(viewBox);
    viewPreview->setObjectName(ControlName(1087));
    viewPreview->setFixedSize(kPreviewSize);
    viewLayout->addWidget(viewPreview, 0, 1, 7, 1, Qt::AlignCenter);
    viewLayout->setColumnStretch(1, 1);

    auto* infoBox = new QGroupBox(QStringLiteral("写真情報リスト表示"), this);
    auto* infoLayout = new QGridLayout(infoBox);
    infoRadio = new QButtonGroup(this);
    infoLayout->addWidget(AddRadio(infoRadio, 0, 1085, QStringLiteral("非表示"), infoBox), 0, 0);
    infoLayout->addWidget(AddRadio(infoRadio, 1, 1086, QStringLiteral("表示"), infoBox), 1, 0);
    infoPreview = new QLabel(infoBox);
    infoPreview->setObjectName(ControlName(1088));
    infoPreview->setFixedSize(kPreviewSize);
    infoLayout->addWidget(infoPreview, 0, 1, 3, 1, Qt::AlignCenter);
    infoLayout->setRowStretch(2, 1);
    infoLayout->setColumnStretch(1, 1);

    auto* commentBox = new QGroupBox(QStringLiteral("コメント表示"), this);
    auto* commentLayout = new QHBoxLayout(commentBox);
    commentRadio = new QButtonGroup(this);
    commentLayout->addWidget(AddRadio(commentRadio, 0, 1130, QStringLiteral("非表示"), commentBox));
    commentLayout->addWidget(AddRadio(commentRadio, 1, 1131, QStringLiteral("表示"), commentBox));
    commentLayout->addStretch(1);

    auto* checkGroup = new QGroupBox(QStringLiteral("画像加工検知"), this);
    auto* checkLayout = new QHBoxLayout(checkGroup);
    doEditCheckBox = new QCheckBox(QStringLiteral("画像加工検知を行う"), checkGroup);
    doEditCheckBox->setObjectName(ControlName(1050));
    selectTypeButton = new QPushButton(QStringLiteral("タイプの選択"), checkGroup);
    selectTypeButton->setObjectName(ControlName(1147));
    checkLayout->addWidget(doEditCheckBox);
    checkLayout->addStretch(1);
    checkLayout->addWidget(selectTypeButton);

    auto* third = new QVBoxLayout;
    third->addWidget(viewBox);
    third->addWidget(infoBox);
    third->addWidget(commentBox);
    third->addWidget(checkGroup);
    third->addStretch(1);

    // ---- closing
    okButton = new QPushButton(QStringLiteral("OK"), this);
    cancelButton = new QPushButton(QStringLiteral("キャンセル"), this);
    okButton->setObjectName(QStringLiteral("ok"));
    cancelButton->setObjectName(QStringLiteral("cancel"));
    okButton->setDefault(true);
    auto* closing = new QHBoxLayout;
    closing->addStretch(1);
    closing->addWidget(okButton);
    closing->addWidget(cancelButton);

    auto* columns = new QHBoxLayout;
    columns->addLayout(first);
    columns->addLayout(second, 1);
    columns->addLayout(third);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addLayout(closing);

    connect(okButton, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    connect(itemButton, &QPushButton::clicked, this, &ToviSetUpDlg::OnBnClickedItemChangeButton);
    connect(viewRadio, &QButtonGroup::idClicked, this, &ToviSetUpDlg::OnViewTypeChange);
    connect(infoRadio, &QButtonGroup::idClicked, this, &ToviSetUpDlg::OnShowPhotoInfoList);
    connect(sortRadio, &QButtonGroup::idClicked, this, [this](int id) {
        if (id == 1) {
            OnBnClickedExecSortRadio();
        } else {
            OnBnClickedUnexecSortRadio();
        }
    });
    connect(doEditCheckBox, &QCheckBox::toggled, this, &ToviSetUpDlg::OnBnClickedChkDoEditCheck);
    connect(selectTypeButton, &QPushButton::clicked, this, &ToviSetUpDlg::OnBtnClickSelectType);
}

void ToviSetUpDlg::InitLabelSec() {
    for (int slot = 0; slot < kSlots; ++slot) {
        const ToviLabelAttribute& label =
            labelMngr.GetLabelAttribute(static_cast<unsigned long>(slot));
        labelNames[slot]->setText(label.GetName());
        labelNames[slot]->setCursorPosition(0);
        colorButtons[slot]->SetColor(label.GetColorValue());
    }
}

void ToviSetUpDlg::InitItemSec() {
    itemList->clear();
    const ToviItemShowSettings& settings = itemManager.GetItemShowSettings();
    for (int position = 0; position < settings.size(); ++position) {
        if (settings[position].bold) {
            auto* item = new QListWidgetItem(settings[position].title, itemList);
            item->setData(Qt::UserRole, position);
        }
    }
    // Without a delivery there are no candidates to choose among.
    itemButton->setEnabled(!settings.isEmpty());
}

void ToviSetUpDlg::InitVisualSettingSec() {
    int mode = visualSetting.GetDivType();
    if (mode < 0 || mode > 6) {
        mode = ToviPhotoCtrlVisualSetting::Divide6;
    }
    CheckInGroup(viewRadio, mode);
    CheckInGroup(infoRadio, visualSetting.GetImageTextArrange() == 1 ? 1 : 0);
    const int title = visualSetting.GetTitleShowType();
    CheckInGroup(titleRadio, title == 0 || title == 1 ? title : 2);
    CheckInGroup(commentRadio, visualSetting.GetVisibleComment() ? 1 : 0);
    doEditCheck = visualSetting.GetDoEditCheck();
    editCheckTypes = visualSetting.GetEditCheckTypes();
    doEditCheckBox->setChecked(doEditCheck);
    selectTypeButton->setEnabled(doEditCheck);
    OnViewTypeChange();
    OnShowPhotoInfoList();
}

void ToviSetUpDlg::InitSortConditionSec() {
    sortKey->clear();
    sortKey->addItems(SortKeys());
    const bool on = sortCondition.IsExecSort();
    CheckInGroup(sortRadio, on ? 1 : 0);
    if (on) {
        sortKey->setCurrentIndex(sortKey->findText(sortCondition.GetKeyItem()));
        SetDirection(sortCondition.IsAscending() ? 0 : 1);
    } else {
        sortKey->setCurrentIndex(-1);
        SetDirection(-1);
    }
    sortKey->setEnabled(on);
    for (QAbstractButton* radio : directionRadio->buttons()) {
        radio->setEnabled(on);
    }
}

void ToviSetUpDlg::SetDirection(int id) {
    ClearGroup(directionRadio);
    CheckInGroup(directionRadio, id);
}

void ToviSetUpDlg::OnViewTypeChange() {
    const int mode = qMax(0, viewRadio->checkedId());
    viewPreview->setPixmap(
        Picture(QString::fromLatin1(kViewPictures[mode]), kPreviewSize, devicePixelRatioF()));
    // The two list modes have no information list beside a photograph.
    const bool listMode = mode == ToviPhotoCtrlVisualSetting::DivideThumbList ||
                          mode == ToviPhotoCtrlVisualSetting::DivideManagementList;
    for (QAbstractButton* radio : infoRadio->buttons()) {
        radio->setEnabled(!listMode);
    }
}

void ToviSetUpDlg::OnShowPhotoInfoList() {
    const int choice = infoRadio->checkedId() == 1 ? 1 : 0;
    infoPreview->setPixmap(
        Picture(QString::fromLatin1(kInfoPictures[choice]), kPreviewSize, devicePixelRatioF()));
}

void ToviSetUpDlg::OnBnClickedExecSortRadio() {
    sortKey->setEnabled(true);
    sortKey->setCurrentIndex(0);
    for (QAbstractButton* radio : directionRadio->buttons()) {
        radio->setEnabled(true);
    }
    SetDirection(0);
}

void ToviSetUpDlg::OnBnClickedUnexecSortRadio() {
    sortKey->setCurrentIndex(-1);
    sortKey->setEnabled(false);
    SetDirection(-1);
    for (QAbstractButton* radio : directionRadio->buttons()) {
        radio->setEnabled(false);
    }
}

void ToviSetUpDlg::OnBnClickedChkDoEditCheck() {
    doEditCheck = doEditCheckBox->isChecked();
    selectTypeButton->setEnabled(doEditCheck);
}

void ToviSetUpDlg::OnBtnClickSelectType() {
    ToviSelectImageTypeDlg dialog(TypesOf(editCheckTypes), this);
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    QStringList numbers;
    for (int type : dialog.GetTypes()) {
        numbers.append(QString::number(type));
    }
    editCheckTypes = numbers.join(QLatin1Char(','));
}

void ToviSetUpDlg::OnBnClickedItemChangeButton() {
    ToviItemSetUpDlg dialog(&itemManager, this);
    if (dialog.exec() == QDialog::Accepted) {
        InitItemSec();
    }
}

QLineEdit* ToviSetUpDlg::GetErrorLabelNameEdit(QString* message) const {
    for (QLineEdit* edit : labelNames) {
        const QString text = edit->text();
        // The names are kept in Shift_JIS: a character it lacks would be lost at the next save.
        if (const QString bad = Cp932::Unencodable(text); !bad.isEmpty()) {
            *message = QStringLiteral(
                           "付箋名に Shift_JIS で表せない文字があります（%1）。\n"
                           "保存できないため、別の文字に置き換えてください。")
                           .arg(bad);
            return edit;
        }
        if (Cp932::ByteLength(text) > kLabelNameMax) {
            *message = QStringLiteral("付箋名が長すぎます。(半角)32文字以下に再設定してください。");
            return edit;
        }
    }
    return nullptr;
}

void ToviSetUpDlg::accept() {
    QString message;
    if (QLineEdit* edit = GetErrorLabelNameEdit(&message)) {
        ToviUi::Instance().MessageBox(this, message, QString(), ToviUi::ButtonsOk,
                                      ToviUi::IconWarning);
        edit->setFocus(Qt::OtherFocusReason);
        edit->selectAll();
        return;
    }
    UpdateLabelManager();
    UpdateVisualSetting();
    UpdateItemManager();
    UpdateSortCondition();
    // Without a delivery the list is empty, and storing it would show every item hidden
    // before.
    if (!itemManager.GetItemShowSettings().isEmpty()) {
        itemManager.Save();
    }
    QDialog::accept();
}

void ToviSetUpDlg::UpdateLabelManager() {
    for (int slot = 0; slot < kSlots; ++slot) {
        labelMngr.GetLabelAttribute(static_cast<unsigned long>(slot))
            .SetName(labelNames[slot]->text());
    }
}

void ToviSetUpDlg::UpdateVisualSetting() {
    visualSetting.SetDivType(
        static_cast<ToviPhotoCtrlVisualSetting::DivideType>(qMax(0, viewRadio->checkedId())));
    visualSetting.SetImageTextArrange(infoRadio->checkedId() == 1
                                          ? ToviPhotoCtrlVisualSetting::TextArrangeBeside
                                          : ToviPhotoCtrlVisualSetting::TextArrangeHidden);
    visualSetting.SetTitleShowType(
        static_cast<ToviPhotoCtrlVisualSetting::TitleShowType>(qMax(0, titleRadio->checkedId())));
    visualSetting.SetVisibleComment(commentRadio->checkedId() == 1);
    visualSetting.SetDoEditCheck(doEditCheck);
    visualSetting.SetEditCheckTypes(editCheckTypes);
}

void ToviSetUpDlg::UpdateItemManager() {
    const ToviItemShowSettings& items = itemManager.GetItemShowSettings();
    visualSetting.SetItemShowSettings(items);
    if (!items.isEmpty()) {
        visualSetting.SetVisibleControlValue(items.IsBold(ControlValueTitle_));
    }
}

void ToviSetUpDlg::UpdateSortCondition() {
    if (sortRadio->checkedId() == 1) {
        sortCondition.ExecSort(true);
        if (sortKey->currentIndex() >= 0) {
            sortCondition.SetKeyItem(sortKey->currentText());
        }
    } else {
        sortCondition.SetKeyItem(QString());
        sortCondition.ExecSort(false);
    }
    sortCondition.Ascending(directionRadio->checkedId() != 1);
}
