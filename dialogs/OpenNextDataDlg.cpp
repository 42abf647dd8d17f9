#include "dialogs/OpenNextDataDlg.h"

#include "loading/OpenNextDataTexts.h"
#include "platform/MibFile.h"
#include "platform/ToviUi.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

namespace Texts = OpenNextDataTexts;

OpenNextDataDlg::OpenNextDataDlg(QWidget* parent, const QVariantMap& values)
    : QDialog(parent), folder(new QLineEdit(this)), missing(new QListWidget(this)) {
    setObjectName(Texts::DialogName());
    setWindowTitle(Texts::Title());

    auto* message = new QTextEdit(this);
    message->setObjectName(QStringLiteral("message"));
    message->setReadOnly(true);
    message->setPlainText(values.value(Texts::MessageField(), Texts::Message()).toString());
    QPalette palette = message->palette();
    palette.setColor(QPalette::Base, QColor(0xEE, 0xFF, 0xFA));
    message->setPalette(palette);
    message->setFixedHeight(message->fontMetrics().lineSpacing() * 7 + 12);
    message->setFocusPolicy(Qt::NoFocus);

    auto* folderLabel = new QLabel(Texts::FolderLabel(), this);
    folder->setObjectName(QStringLiteral("folder"));
    folder->setMaxLength(260);
    folder->setText(values.value(Texts::FolderField()).toString());
    folderLabel->setBuddy(folder);
    auto* browse = new QPushButton(Texts::BrowseButton(), this);
    browse->setObjectName(QStringLiteral("browse"));
    browse->setAutoDefault(false);
    connect(browse, &QPushButton::clicked, this, &OpenNextDataDlg::Browse);

    const QStringList names = values.value(Texts::MissingField()).toStringList();
    auto* listLabel = new QLabel(
        values.value(Texts::ListLabelField(), Texts::ListLabel(static_cast<int>(names.size())))
            .toString(),
        this);
    listLabel->setObjectName(QStringLiteral("listLabel"));
    missing->setObjectName(QStringLiteral("missing"));
    missing->addItems(names);
    missing->setMinimumHeight(missing->fontMetrics().lineSpacing() * 6);

    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole)->setDefault(true);
    buttons->addButton(QStringLiteral("キャンセル"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(folderLabel);
    folderRow->addWidget(folder, 1);
    folderRow->addWidget(browse);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(message);
    layout->addWidget(new QLabel(Texts::Prompt(), this));
    layout->addLayout(folderRow);
    layout->addWidget(listLabel);
    layout->addWidget(missing, 1);
    layout->addWidget(buttons);
    resize(560, sizeHint().height());
    folder->setFocus();
}

QString OpenNextDataDlg::Name() {
    return Texts::DialogName();
}

bool OpenNextDataDlg::Run(QWidget* parent, QVariantMap& values) {
    OpenNextDataDlg dialog(parent, values);
    if (dialog.exec() != QDialog::Accepted) {
        return false;
    }
    values.insert(Texts::FolderField(), dialog.Folder());
    return true;
}

QString OpenNextDataDlg::Folder() const {
    return folder->text().trimmed();
}

void OpenNextDataDlg::accept() {
    const QString chosen = Folder();
    if (chosen.isEmpty() ||
        !MibIsFileExist(MibResolveCase(MibNormalDir(chosen), QStringLiteral("PHOTO.XML")))) {
        ToviUi::Instance().MessageBox(this, Texts::NoPhotoXml(), QString(), ToviUi::ButtonsOk,
                                      ToviUi::IconWarning);
        folder->setFocus();
        return;
    }
    QDialog::accept();
}

void OpenNextDataDlg::Browse() {
    QString chosen = Folder();
    if (ToviUi::Instance().BrowseForFolder(this, Texts::BrowseTitle(), chosen)) {
        folder->setText(chosen);
    }
}
