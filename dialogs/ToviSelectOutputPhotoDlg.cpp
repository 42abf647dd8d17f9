#include "dialogs/ToviSelectOutputPhotoDlg.h"

#include "reports/ToviPhotoExport.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QVBoxLayout>

ToviSelectOutputPhotoDlg::ToviSelectOutputPhotoDlg(QWidget* parent)
    : QDialog(parent),
      worked(new QRadioButton(QStringLiteral("変更を反映して保存"), this)),
      original(new QRadioButton(QStringLiteral("元の写真を保存"), this)) {
    setObjectName(Name());
    setWindowTitle(QStringLiteral("写真保存"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("明るさ・回転情報が変更されています。"), this));
    worked->setObjectName(QStringLiteral("worked"));
    original->setObjectName(QStringLiteral("original"));
    worked->setChecked(true);
    auto* choices = new QVBoxLayout;
    choices->setContentsMargins(16, 4, 0, 4);
    choices->addWidget(worked);
    choices->addWidget(original);
    layout->addLayout(choices);

    auto* warningRow = new QHBoxLayout;
    auto* icon = new QLabel(this);
    const int side = style()->pixelMetric(QStyle::PM_SmallIconSize);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(side, side));
    warningRow->addWidget(icon);
    auto* warning = new QLabel(QStringLiteral("変更を反映する場合、Exif情報が失われます。"), this);
    warning->setObjectName(QStringLiteral("warning"));
    warningRow->addWidget(warning, 1);
    layout->addLayout(warningRow);
    // The warning concerns the first choice only.
    connect(worked, &QRadioButton::toggled, warning, &QLabel::setEnabled);
    connect(worked, &QRadioButton::toggled, icon, &QLabel::setEnabled);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* save = buttons->addButton(QStringLiteral("保存"), QDialogButtonBox::AcceptRole);
    QPushButton* cancel =
        buttons->addButton(QStringLiteral("キャンセル"), QDialogButtonBox::RejectRole);
    save->setObjectName(QStringLiteral("save"));
    cancel->setObjectName(QStringLiteral("cancel"));
    save->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    worked->setFocus(Qt::OtherFocusReason);
}

QString ToviSelectOutputPhotoDlg::Name() {
    return ToviPhotoExport::ChoiceDialogName_;
}

bool ToviSelectOutputPhotoDlg::Run(QWidget* parent, QVariantMap& values) {
    ToviSelectOutputPhotoDlg dialog(parent);
    if (dialog.exec() != QDialog::Accepted) {
        return false;
    }
    values.insert(ToviPhotoExport::WorkedModeField_, dialog.IsSelectedWorkedPhotoMode());
    return true;
}

bool ToviSelectOutputPhotoDlg::IsSelectedWorkedPhotoMode() const {
    return worked->isChecked();
}
