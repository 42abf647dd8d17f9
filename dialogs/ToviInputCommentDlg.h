#pragma once

#include <QDialog>
#include <QVariantMap>

class QPlainTextEdit;

// コメントの記入: takes the comment of one photograph. Any length; line breaks are kept.
class ToviInputCommentDlg : public QDialog {
    Q_OBJECT
public:
    // values["comment"] is the comment the edit starts with.
    ToviInputCommentDlg(QWidget* parent, const QVariantMap& values);

    static QString Name();
    // Runs the dialog; on OK the comment is put back in values as "comment".
    static bool Run(QWidget* parent, QVariantMap& values);

    QString Comment() const { return comment; }
    QPlainTextEdit* Edit() const { return edit; }

public slots:
    void accept() override;

private:
    QPlainTextEdit* edit;
    QString comment;
};
