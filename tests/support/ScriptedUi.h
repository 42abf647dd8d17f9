#pragma once

#include "platform/ToviUi.h"

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

// Everything a progress window was told, kept apart from the window so that a test can
// read it after the dialog that owned the window is gone.
struct ScriptedProgressRecord {
    QWidget* parent = nullptr;
    QStringList captions;
    QList<QPair<int, int>> ranges;
    QList<int> positions;
    QStringList messages;
    QStringList percents;
    QList<bool> cancelButtonStates;  // every ShowCancelButton, in order
    QList<bool> ownerStates;         // every EnableOwner, in order
    bool ownerEnabled = true;
    int showCount = 0;
    int closeCount = 0;
    bool alive = true;
    // Calls other than IsAlive made after the window died: a loop must stop talking to it.
    int callsAfterDeath = 0;
    // Calls after Close: a closed window is not told anything more.
    int callsAfterClose = 0;
    // The handler the window would call on its cancel button or close box; cleared when
    // the view object is destroyed.
    std::function<void()> cancelHandler;

    bool IsShown() const { return showCount > 0 && closeCount == 0 && alive; }
    bool IsCancelButtonShown() const {
        return cancelButtonStates.isEmpty() || cancelButtonStates.last();
    }
};

// A progress window that shows nothing and records everything.
class ScriptedProgressView : public ToviProgressView {
public:
    explicit ScriptedProgressView(std::shared_ptr<ScriptedProgressRecord> record);
    ~ScriptedProgressView() override;

    bool IsAlive() const override { return record->alive; }
    void SetCaption(const QString& caption) override;
    void SetRange(int lower, int upper) override;
    void SetPos(int pos) override;
    void SetMessage(const QString& message) override;
    void SetPercentText(const QString& percent) override;
    void ShowCancelButton(bool shown) override;
    void EnableOwner(bool enable) override;
    void Show() override;
    void Close() override;
    void SetCancelHandler(std::function<void()> handler) override;

    const ScriptedProgressRecord& Record() const { return *record; }

private:
    void Touch();

    std::shared_ptr<ScriptedProgressRecord> record;
};

// A presenter for tests: queued answers for questions and dialogs, recorded questions, a
// pump counter, and progress windows that can be told to press cancel or to die at a given
// pump. Unscripted questions get the safe answer (Cancel, No) and are recorded all the same.
class ScriptedUi : public ToviUi {
public:
    struct Question {
        QString text;
        QString caption;
        Buttons buttons = ButtonsOk;
        Icon icon = IconNone;
    };
    struct FileRequest {
        QString title;
        QString proposed;  // the starting folder of a folder choice
        QString filter;
    };

    QString ApplicationName() const override { return applicationName; }
    void SetApplicationName(const QString& name) { applicationName = name; }

    // ---- message boxes
    void QueueAnswer(int answer) { answers.append(answer); }
    const QList<Question>& Questions() const { return questions; }
    int MessageBox(QWidget* parent, const QString& text, const QString& caption, Buttons buttons,
                   Icon icon) override;

    // ---- named dialogs: an OK answer merges values into the dialog's fields
    void QueueDialog(bool ok, const QVariantMap& values = {});
    const QStringList& DialogNames() const { return dialogNames; }
    // The fields each dialog was given, before the answer changed them.
    const QList<QVariantMap>& DialogInputs() const { return dialogInputs; }
    bool RunDialog(QWidget* parent, const QString& name, QVariantMap& values) override;

    // ---- folder and file choices: std::nullopt or an empty name answers Cancel
    void QueueFolder(const std::optional<QString>& folder) { folders.append(folder); }
    void QueueSaveFileName(const QString& path) { saveNames.append(path); }
    const QList<FileRequest>& FolderRequests() const { return folderRequests; }
    const QList<FileRequest>& SaveRequests() const { return saveRequests; }
    bool BrowseForFolder(QWidget* parent, const QString& title, QString& folder) override;
    QString GetSaveFileName(QWidget* parent, const QString& title, const QString& proposed,
                            const QString& filter) override;

    // ---- the pump and the progress windows
    // Counts every pump; scripted events are numbered by this count, the first pump being 1.
    int Pumps() const { return pumps; }
    void Pump() override;
    // Runs inside every pump, after the scripted events, with the pump's number.
    void SetPumpHook(std::function<void(int)> hook) { pumpHook = std::move(hook); }
    // At pump n the newest progress window's cancel handler is called, as its button or its
    // close box would; it is called even when the button is hidden, which is the close box.
    void PressCancelAtPump(int n) { cancelPumps.append(n); }
    // At pump n the newest progress window dies (IsAlive is false from then on).
    void DieAtPump(int n) { deathPumps.append(n); }
    // When false, CreateProgressView answers null, as a presenter that shows nothing does.
    void SetCreatesProgressViews(bool creates) { createsViews = creates; }
    std::unique_ptr<ToviProgressView> CreateProgressView(QWidget* parent) override;
    const QList<std::shared_ptr<ScriptedProgressRecord>>& ProgressViews() const {
        return progressViews;
    }
    // The newest window's record; null when none was made.
    std::shared_ptr<ScriptedProgressRecord> LastProgress() const {
        return progressViews.isEmpty() ? nullptr : progressViews.last();
    }

private:
    QString applicationName = QStringLiteral("ToviCore");
    QList<int> answers;
    QList<Question> questions;
    QList<QPair<bool, QVariantMap>> dialogAnswers;
    QStringList dialogNames;
    QList<QVariantMap> dialogInputs;
    QList<std::optional<QString>> folders;
    QStringList saveNames;
    QList<FileRequest> folderRequests;
    QList<FileRequest> saveRequests;
    int pumps = 0;
    std::function<void(int)> pumpHook;
    QList<int> cancelPumps;
    QList<int> deathPumps;
    bool createsViews = true;
    QList<std::shared_ptr<ScriptedProgressRecord>> progressViews;
};

// Installs a presenter for the life of a scope and puts the previous one back after.
class ScopedUi {
public:
    explicit ScopedUi(ToviUi& ui);
    ~ScopedUi();

    ScopedUi(const ScopedUi&) = delete;
    ScopedUi& operator=(const ScopedUi&) = delete;

private:
    ToviUi* previous;
};
