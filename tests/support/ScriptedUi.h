#pragma once

#include "platform/ToviUi.h"

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <memory>

// What a progress window was told, kept apart from the window so that a test can read it
// after the dialog that owned the window is gone.
struct ScriptedProgressRecord {
    QStringList captions;
    QList<int> positions;
    QStringList messages;
    QStringList percents;
    QList<bool> ownerStates;  // every EnableOwner, in order
    int closeCount = 0;
    bool alive = true;
    // Calls other than IsAlive made after the window died: a loop must stop talking to it.
    int callsAfterDeath = 0;
    // The handler the window would call on its cancel button or close box; cleared when
    // the view object is destroyed.
    std::function<void()> cancelHandler;
};

// A progress window that shows nothing and records what the tests look at.
class ScriptedProgressView : public ToviProgressView {
public:
    explicit ScriptedProgressView(std::shared_ptr<ScriptedProgressRecord> record)
        : record(std::move(record)) {}
    ~ScriptedProgressView() override { record->cancelHandler = nullptr; }

    bool IsAlive() const override { return record->alive; }
    void SetCaption(const QString& caption) override { Touch().captions.append(caption); }
    void SetRange(int, int) override { Touch(); }
    void SetPos(int pos) override { Touch().positions.append(pos); }
    void SetMessage(const QString& message) override { Touch().messages.append(message); }
    void SetPercentText(const QString& percent) override { Touch().percents.append(percent); }
    void ShowCancelButton(bool) override { Touch(); }
    void EnableOwner(bool enable) override { Touch().ownerStates.append(enable); }
    void Show() override { Touch(); }
    void Close() override { ++Touch().closeCount; }
    void SetCancelHandler(std::function<void()> handler) override {
        Touch().cancelHandler = std::move(handler);
    }

private:
    // Every call but IsAlive goes through here.
    ScriptedProgressRecord& Touch() {
        record->callsAfterDeath += record->alive ? 0 : 1;
        return *record;
    }

    std::shared_ptr<ScriptedProgressRecord> record;
};

// A presenter for tests: queued answers for questions and dialogs, recorded questions, a
// pump counter, and progress windows that can be told to press cancel or to die at a given
// pump. Unscripted questions get the safe answer (Cancel, No) and are recorded all the same;
// folder and file choices are always cancelled.
class ScriptedUi : public ToviUi {
public:
    struct Question {
        QString text;
        QString caption;
        Buttons buttons = ButtonsOk;
        Icon icon = IconNone;
    };

    // ---- message boxes
    void QueueAnswer(int answer) { answers.append(answer); }
    const QList<Question>& Questions() const { return questions; }
    int MessageBox(QWidget*, const QString& text, const QString& caption, Buttons buttons,
                   Icon icon) override {
        questions.append({text, caption, buttons, icon});
        return answers.isEmpty()
                   ? ToviNonInteractiveUi().MessageBox(nullptr, text, caption, buttons, icon)
                   : answers.takeFirst();
    }

    // ---- named dialogs: an OK answer merges values into the dialog's fields
    void QueueDialog(bool ok, const QVariantMap& values = {}) {
        dialogAnswers.append({ok, values});
    }
    const QStringList& DialogNames() const { return dialogNames; }
    // The fields each dialog was given, before the answer changed them.
    const QList<QVariantMap>& DialogInputs() const { return dialogInputs; }
    bool RunDialog(QWidget*, const QString& name, QVariantMap& values) override {
        dialogNames.append(name);
        dialogInputs.append(values);
        const auto [ok, answer] = dialogAnswers.isEmpty() ? QPair<bool, QVariantMap>(false, {})
                                                          : dialogAnswers.takeFirst();
        if (ok) {
            values.insert(answer);
        }
        return ok;
    }

    // ---- passing notices, as shown
    const QStringList& Statuses() const { return statuses; }
    void ShowStatus(QWidget*, const QString& text, int) override { statuses.append(text); }

    // ---- file and folder choices: queued answers, then cancel
    void QueueFileName(const QString& path) { fileNames.append(path); }
    void QueueFolder(const QString& path) { folders.append(path); }
    bool BrowseForFolder(QWidget*, const QString&, QString& folder) override {
        if (folders.isEmpty()) {
            return false;
        }
        folder = folders.takeFirst();
        return true;
    }
    QString GetSaveFileName(QWidget*, const QString&, const QString&, const QString&) override {
        return fileNames.isEmpty() ? QString() : fileNames.takeFirst();
    }
    QString GetOpenFileName(QWidget*, const QString&, const QString&, const QString&) override {
        return fileNames.isEmpty() ? QString() : fileNames.takeFirst();
    }

    // ---- the pump and the progress windows
    // Counts every pump; scripted events are numbered by this count, the first pump being 1.
    int Pumps() const { return pumps; }
    void Pump() override {
        const int number = ++pumps;
        const std::shared_ptr<ScriptedProgressRecord> view = LastProgress();
        if (view && view->alive && view->closeCount == 0) {
            if (cancelPumps.contains(number) && view->cancelHandler) {
                const std::function<void()> handler = view->cancelHandler;  // may replace itself
                handler();
            }
            if (deathPumps.contains(number)) {
                view->alive = false;
            }
        }
    }
    // At pump n the newest progress window's cancel handler is called, as its button or its
    // close box would.
    void PressCancelAtPump(int n) { cancelPumps.append(n); }
    // At pump n the newest progress window dies (IsAlive is false from then on).
    void DieAtPump(int n) { deathPumps.append(n); }
    std::unique_ptr<ToviProgressView> CreateProgressView(QWidget*) override {
        progressViews.append(std::make_shared<ScriptedProgressRecord>());
        return std::make_unique<ScriptedProgressView>(progressViews.last());
    }
    const QList<std::shared_ptr<ScriptedProgressRecord>>& ProgressViews() const {
        return progressViews;
    }
    // The newest window's record; null when none was made.
    std::shared_ptr<ScriptedProgressRecord> LastProgress() const {
        return progressViews.isEmpty() ? nullptr : progressViews.last();
    }

private:
    QList<int> answers;
    QList<Question> questions;
    QList<QPair<bool, QVariantMap>> dialogAnswers;
    QStringList dialogNames;
    QList<QVariantMap> dialogInputs;
    int pumps = 0;
    QList<int> cancelPumps;
    QList<int> deathPumps;
    QList<std::shared_ptr<ScriptedProgressRecord>> progressViews;
    QStringList fileNames;
    QStringList folders;
    QStringList statuses;
};

// Installs a presenter for the life of a scope and puts the previous one back after.
class ScopedUi {
public:
    explicit ScopedUi(ToviUi& ui) : previous(&ToviUi::Instance()) { ToviUi::Install(&ui); }
    ~ScopedUi() { ToviUi::Install(previous); }

    ScopedUi(const ScopedUi&) = delete;
    ScopedUi& operator=(const ScopedUi&) = delete;

private:
    ToviUi* previous;
};

// A scripted presenter installed for one test function: Begin in init(), End in cleanup();
// between them ui-> reaches it.
class ScriptedUiSlot {
public:
    void Begin() {
        ui = std::make_unique<ScriptedUi>();
        scoped = std::make_unique<ScopedUi>(*ui);
    }
    void End() {
        scoped.reset();
        ui.reset();
    }
    ScriptedUi* operator->() const { return ui.get(); }
    ScriptedUi& operator*() const { return *ui; }

private:
    std::unique_ptr<ScriptedUi> ui;
    std::unique_ptr<ScopedUi> scoped;
};
