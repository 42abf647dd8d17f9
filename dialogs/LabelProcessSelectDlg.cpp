#include "dialogs/LabelProcessSelectDlg.h"

#include "review/LabelProcessSelectTexts.h"

#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace Texts = LabelProcessSelectTexts;

LabelProcessSelectDlg::LabelProcessSelectDlg(QWidget* parent, const QVariantMap& values)
    : QDialog(parent), choices(new QButtonGroup(this)) {
    setObjectName(Texts::DialogName());
    setWindowTitle(values.value(QStringLiteral("title"), Texts::Title()).toString());
    auto* layout = new QVBoxLayout(this);
    for (const QString& line : values.value(QStringLiteral("lead"), Texts::Lead()).toStringList()) {
        layout->addWidget(new QLabel(line, this));
    }
    const QStringList labels =
        values.value(QStringLiteral("choices"), Texts::Choices()).toStringList();
    const QStringList explanations =
        values.value(QStringLiteral("explanations"), Texts::Explanations()).toStringList();
    const int chosen = values.value(QStringLiteral("action"), 0).toInt();
    for (int i = 0; i < labels.size(); ++i) {
        auto* radio = new QRadioButton(labels[i], this);
        radio->setObjectName(QStringLiteral("action%1").arg(i));
        radio->setChecked(i == chosen);
        choices->addButton(radio, i);
        layout->addSpacing(6);
        layout->addWidget(radio);
        auto* explanation = new QLabel(explanations.value(i), this);
        explanation->setContentsMargins(24, 0, 0, 0);
        layout->addWidget(explanation);
    }
    auto* buttons = new QDialogButtonBox(this);
    QPushButton* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    QPushButton* cancel =
        buttons->addButton(QStringLiteral("キャンセル"), QDialogButtonBox::RejectRole);
    ok->setAutoDefault(false);
    cancel->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addSpacing(6);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

QString LabelProcessSelectDlg::Name() {
    return Texts::DialogName();
}

bool LabelProcessSelectDlg::Run(QWidget* parent, QVariantMap& values) {
    LabelProcessSelectDlg dialog(parent, values);
    if (dialog.exec() != QDialog::Accepted) {
        return false;
    }
    values.insert(QStringLiteral("action"), dialog.Action());
    return true;
}

int LabelProcessSelectDlg::Action() const {
    return std::max(choices->checkedId(), 0);
}
