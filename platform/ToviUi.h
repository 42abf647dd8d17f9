#pragma once

#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>

class QWidget;

// The window behind a progress loop. The loop's logic (throttling, percentage, cancel)
// lives in ToviProgressDlg; this is only what it shows. The viewer draws it with widgets,
// the command line shows nothing, tests script it.
class ToviProgressView {
public:
    virtual ~ToviProgressView() = default;
    // False once the window was destroyed (by a quit during a pump, say): the loop then runs
    // on with no display.
    virtual bool IsAlive() const = 0;
    virtual void SetCaption(const QString& caption) = 0;
    virtual void SetRange(int lower, int upper) = 0;
    virtual void SetPos(int pos) = 0;
    virtual void SetMessage(const QString& message) = 0;
    virtual void SetPercentText(const QString& percent) = 0;
    // Without a cancel button the window is shorter and its close box does nothing.
    virtual void ShowCancelButton(bool shown) = 0;
    // Disables or enables the owner window; the only guard against starting a second
    // command during the loop.
    virtual void EnableOwner(bool enable) = 0;
    virtual void Show() = 0;
    virtual void Close() = 0;
    // What the window calls when its cancel button is clicked or its close box used; it is
    // called from inside a pump.
    virtual void SetCancelHandler(std::function<void()> handler) = 0;
};

// What the model asks of whoever presents it: message boxes, named dialogs, file and
// folder choices, and the event pump of a long loop. The model never includes widgets; the
// viewer installs the Qt implementation, the command line the non-interactive default,
// tests a scripted one.
class ToviUi {
public:
    // Answers of MessageBox, by the values the host platform uses for them.
    enum Answer { AnswerOk = 1, AnswerCancel = 2, AnswerYes = 6, AnswerNo = 7 };
    enum Buttons { ButtonsOk = 0, ButtonsOkCancel = 1, ButtonsYesNoCancel = 3, ButtonsYesNo = 4 };
    enum Icon {
        IconNone = 0,
        IconError = 0x10,
        IconQuestion = 0x20,
        IconWarning = 0x30,
        IconInformation = 0x40
    };

    virtual ~ToviUi() = default;

    // The application's name: the caption of message boxes unless told otherwise.
    virtual QString ApplicationName() const { return QStringLiteral("ToviCore"); }
    // Asks text in a message box; an empty caption means the application's name.
    virtual int MessageBox(QWidget* parent, const QString& text, const QString& caption,
                           Buttons buttons, Icon icon) = 0;
    // Runs the dialog of that name ("LabelProcessSelectDlg", ...) with values as its fields
    // in and out; true when it ended with OK.
    virtual bool RunDialog(QWidget* parent, const QString& name, QVariantMap& values) = 0;
    // A folder chosen by the user, starting at folder; false when cancelled (folder stays).
    virtual bool BrowseForFolder(QWidget* parent, const QString& title, QString& folder) = 0;
    // A file name to save to; empty when cancelled.
    virtual QString GetSaveFileName(QWidget* parent, const QString& title, const QString& proposed,
                                    const QString& filter) = 0;
    // An existing file to open, starting at folder; empty when cancelled. Nothing by default.
    virtual QString GetOpenFileName(QWidget* parent, const QString& title, const QString& folder,
                                    const QString& filter) {
        (void)parent, (void)title, (void)folder, (void)filter;
        return QString();
    }
    // Runs the pending UI events once, during a long loop on the UI thread.
    virtual void Pump() = 0;
    // A small window with an animation (1 copying, 3 deleting) and a message, shown while the
    // model blocks the UI thread with work that cannot be cancelled; EndWait closes it.
    // Nothing by default.
    virtual void BeginWait(QWidget* parent, const QString& message, int animation) {
        (void)parent, (void)message, (void)animation;
    }
    virtual void EndWait() {}
    // Opens a file written for the user with the desktop's default application for it (a
    // finished report, say). Nothing by default: batch use opens nothing.
    virtual void OpenWithDefaultApplication(const QString& path) { (void)path; }
    // A passing notice that needs no answer, shown for about ms milliseconds where the user
    // looks anyway (the viewer's status bar); nowhere by default.
    virtual void ShowStatus(QWidget* parent, const QString& text, int ms) {
        (void)parent;
        (void)text;
        (void)ms;
    }
    // A progress window owned by parent; null when nothing is to be shown.
    virtual std::unique_ptr<ToviProgressView> CreateProgressView(QWidget* parent) = 0;

    // The installed presenter; the non-interactive one until another is installed.
    static ToviUi& Instance();
    // Installs ui (not owned); null returns to the non-interactive one.
    static void Install(ToviUi* ui);
};

// The presenter for batch use: shows nothing, answers every question with its safe answer
// (Cancel, No), every dialog with Cancel, and pumps nothing.
class ToviNonInteractiveUi : public ToviUi {
public:
    int MessageBox(QWidget*, const QString&, const QString&, Buttons buttons, Icon) override;
    bool RunDialog(QWidget*, const QString&, QVariantMap&) override { return false; }
    bool BrowseForFolder(QWidget*, const QString&, QString&) override { return false; }
    QString GetSaveFileName(QWidget*, const QString&, const QString&, const QString&) override {
        return QString();
    }
    void Pump() override {}
    std::unique_ptr<ToviProgressView> CreateProgressView(QWidget*) override { return nullptr; }
};
