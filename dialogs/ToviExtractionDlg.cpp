#include "dialogs/ToviExtractionDlg.h"

#include "dialogs/ToviExtDetailDlg.h"
#include "document/ToviData.h"
#include "panels/ToviSlideMode.h"
#include "platform/ToviUi.h"
#include "reports/ToviPhotoExport.h"

#include <QCheckBox>
#include <QKeyEvent>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// A colour given as 0x00BBGGRR.
QColor FromBgr(unsigned value) {
    return QColor(static_cast<int>(value & 0xFF), static_cast<int>((value >> 8) & 0xFF),
                  static_cast<int>((value >> 16) & 0xFF));
}

bool IsSwallowedKey(const QEvent* event) {
    if (event->type() != QEvent::KeyPress) {
        return false;
    }
    const int key = static_cast<const QKeyEvent*>(event)->key();
    return key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter;
}

}  // namespace

const QColor ToviExtractionDlg::Background_ = FromBgr(0xF0E7D9);
const QString ToviExtractionDlg::ExecuteText_ = QStringLiteral("抽出実行");
const QString ToviExtractionDlg::RunningText_ = QStringLiteral("抽出実行中");
const QString ToviExtractionDlg::NothingFoundText_ =
    QStringLiteral("この条件で抽出される写真は1枚もありませんでした。");

ToviExtractionDlg::ToviExtractionDlg(QWidget* parent)
    : QDialog(parent),
      keyPhotoCheck(new QCheckBox(QStringLiteral("代表写真"), this)),
      ngPhotoCheck(new QCheckBox(QStringLiteral("NG写真"), this)),
      notcheckPhotoCheck(new QCheckBox(QStringLiteral("未検査写真"), this)),
      notExifinfoCheck(new QCheckBox(QStringLiteral("Exif情報非保有写真"), this)),
      neceNotwriteCheck(new QCheckBox(QStringLiteral("必須項目未入力写真"), this)),
      detailsButton(new QPushButton(QStringLiteral("詳細設定..."), this)),
      executeButton(new QPushButton(ExecuteText_, this)),
      outputButton(new QPushButton(QStringLiteral("表示写真を保存"), this)) {
    setObjectName(QStringLiteral("ToviExtractionDlg"));
    // Docked in its parent, without a frame or caption of its own; QDialog makes a window of
    // whatever it is given, so the flags are set after it.
    if (parent) {
        setWindowFlags(Qt::Widget);
    }
    QPalette shade = palette();
    shade.setColor(QPalette::Window, Background_);
    setPalette(shade);
    setAutoFillBackground(true);

    keyPhotoCheck->setObjectName(QStringLiteral("keyPhoto"));
    ngPhotoCheck->setObjectName(QStringLiteral("ngPhoto"));
    notcheckPhotoCheck->setObjectName(QStringLiteral("notcheckPhoto"));
    notExifinfoCheck->setObjectName(QStringLiteral("notExifinfo"));
    neceNotwriteCheck->setObjectName(QStringLiteral("neceNotwrite"));
    detailsButton->setObjectName(QStringLiteral("details"));
    executeButton->setObjectName(QStringLiteral("execute"));
    outputButton->setObjectName(QStringLiteral("outputAllPhoto"));
    // The button stays pressed while extraction is on.
    executeButton->setCheckable(true);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(4);
    for (QCheckBox* check :
         {keyPhotoCheck, ngPhotoCheck, notcheckPhotoCheck, notExifinfoCheck, neceNotwriteCheck}) {
        layout->addWidget(check);
        connect(check, &QCheckBox::clicked, this, &ToviExtractionDlg::CheckExecutionEnable);
    }
    layout->addSpacing(4);
    layout->addWidget(detailsButton);
    layout->addWidget(executeButton);
    layout->addSpacing(4);
    layout->addWidget(outputButton);
    layout->addStretch(1);
    for (QPushButton* button : {detailsButton, executeButton, outputButton}) {
        button->setAutoDefault(false);
    }
    connect(detailsButton, &QPushButton::clicked, this, &ToviExtractionDlg::OnBnClickedDetails);
    connect(executeButton, &QPushButton::clicked, this, &ToviExtractionDlg::OnBnClickedExecute);
    connect(outputButton, &QPushButton::clicked, this,
            &ToviExtractionDlg::OnBnClickedOutputAllPhoto);

    // Enter and Escape would close a dialog, and this one lives docked: they are swallowed
    // wherever the focus is inside it.
    for (QWidget* child : findChildren<QWidget*>()) {
        child->installEventFilter(this);
    }
    keyPhotoCheck->setEnabled(false);
    outputButton->setEnabled(false);
    CheckExecutionEnable();
}

ToviExtractionDlg::~ToviExtractionDlg() {
    // The document is expected to outlive the window or to have been released; either way it
    // must not read a window that is gone.
    if (data && data->GetExtractionData() == this) {
        data->SetExtractionData(nullptr);
    }
}

bool ToviExtractionDlg::eventFilter(QObject* watched, QEvent* event) {
    if (IsSwallowedKey(event)) {
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void ToviExtractionDlg::keyPressEvent(QKeyEvent* event) {
    if (IsSwallowedKey(event)) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

void ToviExtractionDlg::SetData(ToviData* document) {
    if (!document) {
        return;
    }
    data = document;
    data->SetExtractionData(this);
}

void ToviExtractionDlg::ReleaseData() {
    if (data) {
        // A running extraction is switched off the way the document stops it; one that is off
        // leaves the document's flag alone, and the window resets itself all the same.
        data->CancelExtraction(CancelAndReset);
        if (data->GetExtractionData() == this) {
            CancelExtraction(CancelAndReset);
        }
    }
    data = nullptr;
    SetRunning(false);
    initialize();
    EnableExtractCtrl(false);
}

void ToviExtractionDlg::initialize() {
    conditions = ToviExtractionConditions();
    keyPhotoCheck->setEnabled(data && data->GetItemDef()->HasKeyPhoto());
    UpdateData(false);
    outputButton->setEnabled(HasCurrentPhotos());
}

void ToviExtractionDlg::SetRunning(bool on) {
    running = on;
    executeButton->setText(on ? RunningText_ : ExecuteText_);
    executeButton->setChecked(on);
}

void ToviExtractionDlg::CancelExtraction(CancelExt value) {
    SetRunning(false);
    if (value == CancelAndReset) {
        if (data) {
            data->SetExtractionData(nullptr);
        }
        initialize();
        executeButton->setEnabled(false);
    }
}

void ToviExtractionDlg::EnableExtractCtrl(bool enable) {
    for (QWidget* control :
         std::initializer_list<QWidget*>{detailsButton, ngPhotoCheck, notcheckPhotoCheck,
                                         notExifinfoCheck, neceNotwriteCheck}) {
        control->setEnabled(enable);
    }
    // Enabling keeps the rules of the two that depend on more: 代表写真 only where the delivery
    // has the item, 抽出実行 only with a condition on.
    keyPhotoCheck->setEnabled(enable && data && data->GetItemDef()->HasKeyPhoto());
    executeButton->setEnabled(enable && (running || conditions.AnyOn()));
}

bool ToviExtractionDlg::HasCurrentPhotos() const {
    return data && data->GetCurrentPhotoCount() > 0;
}

void ToviExtractionDlg::UpdateOutputAllPhotoButton() {
    outputButton->setEnabled(HasCurrentPhotos());
}

void ToviExtractionDlg::UpdateData(bool save) {
    const std::pair<QCheckBox*, bool*> pairs[] = {
        {keyPhotoCheck, &conditions.keyPhoto},
        {ngPhotoCheck, &conditions.ngPhoto},
        {notcheckPhotoCheck, &conditions.notcheckPhoto},
        {notExifinfoCheck, &conditions.notExifinfo},
        {neceNotwriteCheck, &conditions.neceNotwrite},
    };
    for (const auto& [check, value] : pairs) {
        if (save) {
            *value = check->isChecked();
        } else {
            check->setChecked(*value);
        }
    }
}

void ToviExtractionDlg::CheckExecutionEnable() {
    UpdateData(true);
    if (!conditions.AnyOn()) {
        if (running) {
            SetRunning(false);
            if (data) {
                data->CancelExtraction();
            }
        }
        executeButton->setEnabled(false);
    } else if (running) {
        if (data) {
            data->ExecExtraction();
        }
    } else {
        executeButton->setEnabled(true);
    }
    if (data) {
        outputButton->setEnabled(HasCurrentPhotos());
    }
}

void ToviExtractionDlg::OnBnClickedExecute() {
    UpdateData(true);
    if (running) {
        SetRunning(false);
        if (data) {
            data->CancelExtraction();
        }
    } else {
        SetRunning(true);
        if (data) {
            data->ExecExtraction();
        }
    }
    // A cancel in the progress window has come back through CancelExtraction meanwhile.
    executeButton->setChecked(running);
    if (running && data && data->GetCurrentPhotoCount() == 0) {
        ToviUi::Instance().MessageBox(this, NothingFoundText_, QString(), ToviUi::ButtonsOk,
                                      ToviUi::IconInformation);
    }
    outputButton->setEnabled(HasCurrentPhotos());
}

void ToviExtractionDlg::OnBnClickedDetails() {
    ToviExtDetailDlg dialog(this);
    dialog.SetData(data);
    ToviExtractionConditions& in = dialog.conditions;
    for (int j = 0; j < ToviExtractionConditions::kItemCount; ++j) {
        if (conditions.itemOn[j]) {
            in.itemOn[j] = true;
            in.itemTitle[j] = conditions.itemTitle[j];
            in.itemText[j] = conditions.itemText[j];
        }
    }
    if (conditions.dateOn) {
        in.dateOn = true;
        in.dateKind = conditions.dateKind;
        in.dateFrom = conditions.dateFrom;
        in.dateTo = conditions.dateTo;
    }
    in.orMode = conditions.orMode;
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    const ToviExtractionConditions& out = dialog.conditions;
    conditions.itemOn = out.itemOn;
    conditions.itemTitle = out.itemTitle;
    conditions.itemText = out.itemText;
    conditions.dateOn = out.dateOn;
    conditions.dateKind = out.dateKind;
    conditions.dateFrom = out.dateFrom;
    conditions.dateTo = out.dateTo;
    conditions.orMode = out.orMode;
    CheckExecutionEnable();
}

void ToviExtractionDlg::OnBnClickedOutputAllPhoto() {
    if (!data) {
        return;
    }
    ToviPhotoExport(*data, this).OutputPhotos(IsSlideMode());
}
