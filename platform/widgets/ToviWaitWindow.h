#pragma once

#include <QDialog>

class QLabel;

// A small window with a busy bar and a message, up while the UI thread does work that cannot
// be cancelled (copying a disc into the work area). Its only button is none.
class ToviWaitWindow : public QDialog {
    Q_OBJECT
public:
    ToviWaitWindow(QWidget* parent, const QString& message, int animation);

    QString Message() const;
    int Animation() const { return animation; }

protected:
    void reject() override {}  // Escape and the close box do nothing while the work runs

private:
    QLabel* message;
    int animation;
};
