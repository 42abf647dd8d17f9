#include "dialogs/ToviInputCommentDlg.h"

#include "platform/Cp932.h"
#include "platform/ToviUi.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

const QString kCommentField = QStringLiteral("comment");

}  // namespace

ToviInputCommentDlg::ToviInputCommentDlg(QWidget* parent, const QVariantMap& values)
    : QDialog(parent),
      edit(new QPlainTextEdit(this)),
      comment(values.value(kCommentField).toString()) {
    setObjectName(Name());
    setWindowTitle(QStringLiteral("コメントの記入"));
    auto* layout = new QVBoxLayout(this);
    auto* explanation = new QLabel(
        QStringLiteral(
            "写真に対してコメントをしたい場合は、以下に記入してください。\n"
            "また、コメントを削除したい場合は、以下を空欄にしOKボタンを押してください。\n"
            "\n"
            "長すぎるコメントは、全てを表示・印刷することはできません。"),
        this);
    explanation->setObjectName(QStringLiteral("explanation"));
    layout->addWidget(explanation);
    edit->setObjectName(kCommentField);
    edit->setPlainText(comment);
    edit->setTabChangesFocus(true);
    edit->setMinimumHeight(edit->fontMetrics().lineSpacing() * 5 + 12);
    layout->addWidget(edit, 1);
    auto* buttons = new QDialogButtonBox(this);
    QPushButton* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    buttons->addButton(QStringLiteral("キャンセル"), QDialogButtonBox::RejectRole);
    ok->setObjectName(QStringLiteral("ok"));
    ok->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    edit->setFocus(Qt::OtherFocusReason);
    edit->moveCursor(QTextCursor::End);
}

QString ToviInputCommentDlg::Name() {
    return QStringLiteral("ToviInputCommentDlg");
}

bool ToviInputCommentDlg::Run(QWidget* parent, QVariantMap& values) {
    ToviInputCommentDlg dialog(parent, values);
    if (dialog.exec() != QDialog::Accepted) {
        return false;
    }
    values.insert(kCommentField, dialog.Comment());
    return true;
}

void ToviInputCommentDlg::accept() {
    // Half-width blanks alone make no comment; the caller tests the full-width ones itself.
    const QString text = edit->toPlainText();
    // The inspection record is Shift_JIS: a character it cannot hold is shown to the user, who
    // replaces it; the dialog stays open with everything typed.
    if (const QString bad = Cp932::Unencodable(text); !bad.isEmpty()) {
        ToviUi::Instance().MessageBox(
            this,
            QStringLiteral("コメントに Shift_JIS で表せない文字があります（%1）。\n"
                           "検査状況ファイルに保存できないため、別の文字に置き換えてください。")
                .arg(bad),
            QString(), ToviUi::ButtonsOk, ToviUi::IconWarning);
        edit->setFocus(Qt::OtherFocusReason);
        return;
    }
    comment = text;
    if (QString(comment).remove(QLatin1Char(' ')).isEmpty()) {
        comment.clear();
    }
    QDialog::accept();
}
