#pragma once

#include "platform/ToviUi.h"

#include <QDialog>
#include <QPointer>

class QLabel;
class QProgressBar;
class QPushButton;

// The window of a progress loop: a message line above, the bar with its percentage to the
// right, and a centred キャンセル under them. Shown without taking the focus; the loop's
// logic lives in ToviProgressDlg.
class ToviProgressWindow : public QDialog {
    Q_OBJECT
public:
    explicit ToviProgressWindow(QWidget* owner);

    void SetMessage(const QString& message);
    void SetPercentText(const QString& percent);
    void SetRange(int lower, int upper);
    void SetPos(int pos);
    void ShowCancelButton(bool shown);
    void SetCancelHandler(std::function<void()> handler) { cancelHandler = std::move(handler); }

protected:
    // The close box cancels like the button, when there is one; the loop closes the window.
    void closeEvent(QCloseEvent* event) override;
    void reject() override;

private:
    QLabel* message;
    QProgressBar* bar;
    QLabel* percent;
    QPushButton* cancel;
    std::function<void()> cancelHandler;
};

// ToviProgressView over a ToviProgressWindow that the owner may take down with it during a
// pump: the view then answers IsAlive false and does nothing more.
class ToviProgressWindowView : public ToviProgressView {
public:
    explicit ToviProgressWindowView(QWidget* owner);
    ~ToviProgressWindowView() override;

    bool IsAlive() const override { return !window.isNull(); }
    void SetCaption(const QString& caption) override;
    void SetRange(int lower, int upper) override;
    void SetPos(int pos) override;
    void SetMessage(const QString& message) override;
    void SetPercentText(const QString& percent) override;
    void ShowCancelButton(bool shown) override;
    // Disabling the owner leaves the window itself enabled, so it is not swept along.
    void EnableOwner(bool enable) override;
    void Show() override;
    void Close() override;
    void SetCancelHandler(std::function<void()> handler) override;

private:
    QPointer<QWidget> owner;
    QPointer<ToviProgressWindow> window;
};
