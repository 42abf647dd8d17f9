#pragma once

#include <QDialog>
#include <QVariantMap>

class QButtonGroup;

// 付箋の一括訂正・削除: the choice of one of three batch corrections of the labels. キャンセル
// is the default button, so that Enter never starts a batch.
class LabelProcessSelectDlg : public QDialog {
    Q_OBJECT
public:
    // The texts and the action (0 to 2) as the document hands them over.
    LabelProcessSelectDlg(QWidget* parent, const QVariantMap& values);

    static QString Name();
    // Runs the dialog; on OK the chosen action is put in values as "action".
    static bool Run(QWidget* parent, QVariantMap& values);

    int Action() const;

private:
    QButtonGroup* choices;
};
