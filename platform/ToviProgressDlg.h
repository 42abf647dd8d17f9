#pragma once

#include <QString>

#include <memory>

class QWidget;
class ToviProgressView;

// Keeps the application alive during a long loop on the UI thread: disables the owner,
// shows a bar, a percentage and a message, pumps pending events whenever the loop reports
// progress, and lets the loop poll for a cancel. The window and the pump come from the
// installed ToviUi, so the loop's code is the same in the viewer, the command line and the
// tests. The bar's range and position are kept here as well, so positions, percentage and
// cancel state hold when nothing is shown or the window was lost during a pump.
class ToviProgressDlg {
public:
    // A throttled dialog acts only about 100 times over its range, and its cancel starts
    // out pollable.
    explicit ToviProgressDlg(bool throttled, QWidget* parent = nullptr);
    virtual ~ToviProgressDlg();

    ToviProgressDlg(const ToviProgressDlg&) = delete;
    ToviProgressDlg& operator=(const ToviProgressDlg&) = delete;

    // Opens the window (shown without taking the focus) and disables its owner; a null
    // parent means the one given to the constructor. False when already open.
    bool Create(QWidget* parent = nullptr);
    // An empty caption means the application's name.
    void SetCaption(const QString& text);
    // Meant to be called before Create: without cancel the button is hidden and the close
    // box does nothing.
    void SetCancelBtnEnabled(bool enabled);
    void SetRange(int lower, int upper);
    // The step of StepIt when not throttled; answers the previous step.
    int SetStep(int step);
    // Answers the bar's previous position.
    int SetPos(int pos);
    int StepIt();
    // An empty message leaves the shown one in place.
    void SetMessage(const QString& message);
    // True once per cancel; while throttled, a cancel is noticed only at an update position.
    bool GetCancel();
    // The usual opening for a loop over count items: cancel as given, the window created
    // without an owner, the application's name as caption, range 0 to count, step 1,
    // position 0.
    void OpenForLoop(int count, bool cancelEnabled);
    // Re-enables the owner and closes the window; false when there was no window to close.
    virtual bool DestroyWindow();

    QString Percent() const { return percent; }
    QString Message() const { return message; }
    QString Caption() const { return caption; }
    int Position() const { return barPos; }
    int Lower() const { return barLower; }
    int Upper() const { return barUpper; }
    int Step() const { return barStep; }
    bool IsThrottled() const { return throttled; }
    bool IsCancelBtnEnabled() const { return cancelEnabled; }
    // Between Create and DestroyWindow, and the window not lost during a pump.
    bool IsWindow() const;

private:
    void DisposeOfMessages();
    void EnableParentWindow(bool enable);
    void SetPercent();
    int ClampToBar(qint64 pos) const;
    void MoveBar(qint64 pos);
    void OnCancel();

    QWidget* parent = nullptr;
    std::unique_ptr<ToviProgressView> view;
    bool created = false;

    bool cancelEnabled = true;
    bool cancelled = false;
    bool throttled = false;
    bool pollPending = false;
    int interval = 0;
    int nextUpdate = 0;
    int position = 0;

    // The bar starts as a fresh progress bar does: 0 to 100, step 10.
    int barLower = 0;
    int barUpper = 100;
    int barPos = 0;
    int barStep = 10;
    QString caption;
    QString message;
    QString percent = QStringLiteral("0%");
};
