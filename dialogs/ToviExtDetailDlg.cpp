#include "dialogs/ToviExtDetailDlg.h"

#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviNode.h"
#include "platform/ToviUi.h"

#include <QAbstractItemView>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// The number at the start of text as atoi reads it: blanks, a sign, digits; 0 without digits.
int LeadingInt(const QString& text) {
    qsizetype i = 0;
    while (i < text.size() && text[i].isSpace()) {
        ++i;
    }
    bool negative = false;
    if (i < text.size() && (text[i] == QLatin1Char('-') || text[i] == QLatin1Char('+'))) {
        negative = text[i] == QLatin1Char('-');
        ++i;
    }
    long long value = 0;
    for (; i < text.size() && text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9'); ++i) {
        value = std::min<long long>(value * 10 + (text[i].unicode() - '0'), 1LL << 31);
    }
    return static_cast<int>(negative ? -value : std::min<long long>(value, INT_MAX));
}

// A list that does not widen its window for a long value, but whose drop-down shows it whole
// (up to a limit).
void FitPopup(QComboBox* combo) {
    QAbstractItemView* view = combo->view();
    const int wanted = view->sizeHintForColumn(0) + view->verticalScrollBar()->sizeHint().width() +
                       2 * view->frameWidth() + 8;
    view->setMinimumWidth(std::min(std::max(wanted, combo->width()), 640));
}

}  // namespace

const QString ToviExtDetailDlg::ErrorCaption_ = QStringLiteral("設定エラー");
const QString ToviExtDetailDlg::NoTextMessage_ =
    QStringLiteral("抽出文字列が未入力です。抽出したい内容を記入してください。");
const QString ToviExtDetailDlg::BadDateMessage_ = QStringLiteral(
    "日付の設定に誤りがあります。\n左側の日付は右側の日付を超えないように"
    "設定してください。");

ToviExtDetailDlg::ToviExtDetailDlg(QWidget* parent)
    : QDialog(parent),
      dateCheck(new QCheckBox(QStringLiteral("日付で抽出する"), this)),
      shotDateRadio(new QRadioButton(QStringLiteral("撮影年月日で検索"), this)),
      fileDateRadio(new QRadioButton(QStringLiteral("ファイル更新日で検索"), this)),
      fromEdit(new QDateEdit(this)),
      toEdit(new QDateEdit(this)),
      andRadio(new QRadioButton(QStringLiteral("かつ"), this)),
      orRadio(new QRadioButton(QStringLiteral("または"), this)) {
    setObjectName(QStringLiteral("ToviExtDetailDlg"));
    setWindowTitle(QStringLiteral("詳細設定"));
    setModal(true);
    auto* layout = new QVBoxLayout(this);

    auto* itemBox = new QGroupBox(this);
    auto* grid = new QGridLayout(itemBox);
    const QString rowNames[] = {QStringLiteral("項目１"), QStringLiteral("項目２"),
                                QStringLiteral("項目３")};
    for (int j = 0; j < ToviExtractionConditions::kItemCount; ++j) {
        Row& row = rows[static_cast<size_t>(j)];
        row.check = new QCheckBox(rowNames[j], itemBox);
        row.check->setObjectName(QStringLiteral("item%1").arg(j + 1));
        row.items = new QComboBox(itemBox);
        row.items->setObjectName(QStringLiteral("itemTitle%1").arg(j + 1));
        row.items->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        row.items->setMinimumContentsLength(14);
        row.values = new QComboBox(itemBox);
        row.values->setObjectName(QStringLiteral("itemText%1").arg(j + 1));
        row.values->setEditable(true);
        // What is typed stays as typed: no completion from the list, no new entries on Enter.
        row.values->setCompleter(nullptr);
        row.values->setInsertPolicy(QComboBox::NoInsert);
        row.values->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        row.values->setMinimumContentsLength(24);
        grid->addWidget(row.check, j, 0);
        grid->addWidget(row.items, j, 1);
        grid->addWidget(new QLabel(QStringLiteral("文字列"), itemBox), j, 2);
        grid->addWidget(row.values, j, 3);
        connect(row.check, &QCheckBox::clicked, this, [this, j] { OnItemCheck(j); });
        connect(row.items, &QComboBox::activated, this, [this, j] { OnItemChanged(j); });
    }
    grid->setColumnStretch(3, 1);
    layout->addWidget(itemBox);

    auto* dateBox = new QGroupBox(this);
    auto* dateLayout = new QVBoxLayout(dateBox);
    dateCheck->setObjectName(QStringLiteral("dateOn"));
    shotDateRadio->setObjectName(QStringLiteral("shotDate"));
    fileDateRadio->setObjectName(QStringLiteral("fileDate"));
    fromEdit->setObjectName(QStringLiteral("dateFrom"));
    toEdit->setObjectName(QStringLiteral("dateTo"));
    dateLayout->addWidget(dateCheck);
    auto* kinds = new QHBoxLayout;
    kinds->setContentsMargins(20, 0, 0, 0);
    kinds->addWidget(shotDateRadio);
    kinds->addWidget(fileDateRadio);
    kinds->addStretch(1);
    dateLayout->addLayout(kinds);
    auto* range = new QHBoxLayout;
    range->setContentsMargins(20, 0, 0, 0);
    for (QDateEdit* edit : {fromEdit, toEdit}) {
        edit->setCalendarPopup(true);
        edit->setDisplayFormat(QStringLiteral("yyyy/MM/dd"));
        // A picker shows today until a date is given, as an empty one cannot be shown.
        edit->setDate(QDate::currentDate());
    }
    range->addWidget(fromEdit);
    range->addWidget(new QLabel(QStringLiteral("～"), dateBox));
    range->addWidget(toEdit);
    range->addStretch(1);
    dateLayout->addLayout(range);
    auto* kindGroup = new QButtonGroup(this);
    kindGroup->addButton(shotDateRadio, 0);
    kindGroup->addButton(fileDateRadio, 1);
    connect(dateCheck, &QCheckBox::clicked, this, &ToviExtDetailDlg::OnDateCheck);
    layout->addWidget(dateBox);

    auto* modeBox = new QGroupBox(this);
    auto* modeLayout = new QVBoxLayout(modeBox);
    modeLayout->addWidget(
        new QLabel(QStringLiteral("メイン画面の項目も含め、\n以下の条件で抽出を行う"), modeBox));
    andRadio->setObjectName(QStringLiteral("andMode"));
    orRadio->setObjectName(QStringLiteral("orMode"));
    auto* modes = new QHBoxLayout;
    modes->setContentsMargins(20, 0, 0, 0);
    modes->addWidget(andRadio);
    modes->addWidget(orRadio);
    modes->addStretch(1);
    modeLayout->addLayout(modes);
    auto* modeGroup = new QButtonGroup(this);
    modeGroup->addButton(andRadio, 0);
    modeGroup->addButton(orRadio, 1);
    layout->addWidget(modeBox);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    QPushButton* cancel =
        buttons->addButton(QStringLiteral("キャンセル"), QDialogButtonBox::RejectRole);
    ok->setObjectName(QStringLiteral("ok"));
    cancel->setObjectName(QStringLiteral("cancel"));
    ok->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &ToviExtDetailDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void ToviExtDetailDlg::SetData(ToviData* document) {
    data = document;
}

QString ToviExtDetailDlg::FormatDate(const QDate& date) {
    if (!date.isValid()) {
        return QString();
    }
    return QString::asprintf("%04d-%02d-%02d", date.year(), date.month(), date.day());
}

QDate ToviExtDetailDlg::ParseDate(const QString& text) {
    const qsizetype first = text.indexOf(QLatin1Char('-'));
    const qsizetype second = first < 0 ? -1 : text.indexOf(QLatin1Char('-'), first + 1);
    if (first < 0 || second < 0) {
        return QDate();
    }
    return QDate(LeadingInt(text.left(first)), LeadingInt(text.mid(first + 1, 2)),
                 LeadingInt(text.right(2)));
}

void ToviExtDetailDlg::showEvent(QShowEvent* event) {
    if (!initialized) {
        OnInitDialog();
    }
    QDialog::showEvent(event);
}

void ToviExtDetailDlg::FillItemList(int row) {
    QComboBox* list = rows[static_cast<size_t>(row)].items;
    list->clear();
    if (!itemDef) {
        return;
    }
    for (int i = 0; i < itemDef->GetCount(); ++i) {
        const Definition& d = itemDef->GetDef(i);
        if (d.show == Definition::ShowMainList || d.show == Definition::ShowZoomDlg) {
            list->addItem(d.title);
        }
    }
}

void ToviExtDetailDlg::FillValueList(int row, const QString& title) {
    QComboBox* list = rows[static_cast<size_t>(row)].values;
    list->clear();
    if (!data) {
        return;
    }
    QStringList values;
    if (data->GetPhotoItemValue(title, values)) {
        values.append(ToviNode::kUnfilledTitle);
    }
    list->addItems(values);
    FitPopup(list);
}

void ToviExtDetailDlg::OnInitDialog() {
    initialized = true;
    itemDef = data ? data->GetItemDef() : nullptr;
    for (int j = 0; j < ToviExtractionConditions::kItemCount; ++j) {
        Row& row = rows[static_cast<size_t>(j)];
        const bool on = conditions.itemOn[static_cast<size_t>(j)];
        row.check->setChecked(on);
        FillItemList(j);
        FitPopup(row.items);
        if (!on) {
            row.items->setCurrentIndex(-1);
            row.items->setEnabled(false);
            row.values->setEnabled(false);
            continue;
        }
        // A title that is no longer among the definitions opens on the first of them.
        const int at = row.items->findText(conditions.itemTitle[static_cast<size_t>(j)],
                                           Qt::MatchExactly | Qt::MatchCaseSensitive);
        row.items->setCurrentIndex(at >= 0 ? at : 0);
        FillValueList(j, row.items->currentText());
        const QString& text = conditions.itemText[static_cast<size_t>(j)];
        const int value = row.values->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
        if (value >= 0) {
            row.values->setCurrentIndex(value);
        } else {
            // A text of the user's own, not among the photographs' values, is kept.
            row.values->setEditText(text);
        }
    }
    dateCheck->setChecked(conditions.dateOn);
    (conditions.dateKind != 0 ? fileDateRadio : shotDateRadio)->setChecked(true);
    if (conditions.dateOn) {
        for (const auto& [edit, text] :
             {std::pair{fromEdit, conditions.dateFrom}, std::pair{toEdit, conditions.dateTo}}) {
            const QDate date = text.isEmpty() ? QDate() : ParseDate(text);
            if (date.isValid()) {
                edit->setDate(date);
            }
        }
    }
    EnableDate(conditions.dateOn);
    (conditions.orMode != 0 ? orRadio : andRadio)->setChecked(true);
}

void ToviExtDetailDlg::OnItemCheck(int row) {
    Row& r = rows[static_cast<size_t>(row)];
    if (!r.check->isChecked()) {
        r.items->setCurrentIndex(-1);
        r.values->clear();
        r.values->clearEditText();
        r.items->setEnabled(false);
        r.values->setEnabled(false);
        return;
    }
    r.items->setEnabled(true);
    r.values->setEnabled(true);
    if (r.items->count() == 0) {
        FillItemList(row);
        FitPopup(r.items);
    }
    r.items->setCurrentIndex(0);
    OnItemChanged(row);
}

void ToviExtDetailDlg::OnItemChanged(int row) {
    Row& r = rows[static_cast<size_t>(row)];
    FillValueList(row, r.items->currentText());
    r.values->setCurrentIndex(0);
}

void ToviExtDetailDlg::OnDateCheck() {
    EnableDate(dateCheck->isChecked());
}

void ToviExtDetailDlg::EnableDate(bool enable) {
    for (QWidget* control :
         std::initializer_list<QWidget*>{shotDateRadio, fileDateRadio, fromEdit, toEdit}) {
        control->setEnabled(enable);
    }
}

void ToviExtDetailDlg::accept() {
    ToviUi& ui = ToviUi::Instance();
    for (int j = 0; j < ToviExtractionConditions::kItemCount; ++j) {
        const Row& row = rows[static_cast<size_t>(j)];
        const size_t at = static_cast<size_t>(j);
        conditions.itemOn[at] = row.check->isChecked();
        if (!conditions.itemOn[at]) {
            conditions.itemTitle[at].clear();
            conditions.itemText[at] = row.values->currentText();
            continue;
        }
        conditions.itemTitle[at] = row.items->currentText();
        conditions.itemText[at] = row.values->currentText();
        if (conditions.itemText[at].isEmpty()) {
            ui.MessageBox(this, NoTextMessage_, ErrorCaption_, ToviUi::ButtonsOk,
                          ToviUi::IconWarning);
            row.values->setFocus();
            return;
        }
    }
    conditions.dateOn = dateCheck->isChecked();
    conditions.dateKind = fileDateRadio->isChecked() ? 1 : 0;
    if (conditions.dateOn) {
        conditions.dateFrom = FormatDate(fromEdit->date());
        conditions.dateTo = FormatDate(toEdit->date());
        // The texts compare as the dates do: both have the same form.
        if (conditions.dateFrom > conditions.dateTo) {
            ui.MessageBox(this, BadDateMessage_, ErrorCaption_, ToviUi::ButtonsOk,
                          ToviUi::IconWarning);
            fromEdit->setFocus();
            return;
        }
    } else {
        conditions.dateFrom.clear();
        conditions.dateTo.clear();
    }
    conditions.orMode = orRadio->isChecked() ? 1 : 0;
    QDialog::accept();
}
