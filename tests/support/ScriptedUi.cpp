#include "tests/support/ScriptedUi.h"

ScriptedProgressView::ScriptedProgressView(std::shared_ptr<ScriptedProgressRecord> record)
    : record(std::move(record)) {}

ScriptedProgressView::~ScriptedProgressView() {
    // The handler points into the dialog that owned this view.
    record->cancelHandler = nullptr;
}

void ScriptedProgressView::Touch() {
    if (!record->alive) {
        ++record->callsAfterDeath;
    }
    if (record->closeCount > 0) {
        ++record->callsAfterClose;
    }
}

void ScriptedProgressView::SetCaption(const QString& caption) {
    Touch();
    record->captions.append(caption);
}

void ScriptedProgressView::SetRange(int lower, int upper) {
    Touch();
    record->ranges.append({lower, upper});
}

void ScriptedProgressView::SetPos(int pos) {
    Touch();
    record->positions.append(pos);
}

void ScriptedProgressView::SetMessage(const QString& message) {
    Touch();
    record->messages.append(message);
}

void ScriptedProgressView::SetPercentText(const QString& percent) {
    Touch();
    record->percents.append(percent);
}

void ScriptedProgressView::ShowCancelButton(bool shown) {
    Touch();
    record->cancelButtonStates.append(shown);
}

void ScriptedProgressView::EnableOwner(bool enable) {
    Touch();
    record->ownerStates.append(enable);
    record->ownerEnabled = enable;
}

void ScriptedProgressView::Show() {
    Touch();
    ++record->showCount;
}

void ScriptedProgressView::Close() {
    Touch();
    ++record->closeCount;
}

void ScriptedProgressView::SetCancelHandler(std::function<void()> handler) {
    Touch();
    record->cancelHandler = std::move(handler);
}

int ScriptedUi::MessageBox(QWidget*, const QString& text, const QString& caption, Buttons buttons,
                           Icon icon) {
    questions.append({text, caption, buttons, icon});
    if (!answers.isEmpty()) {
        return answers.takeFirst();
    }
    return ToviNonInteractiveUi().MessageBox(nullptr, text, caption, buttons, icon);
}

void ScriptedUi::QueueDialog(bool ok, const QVariantMap& values) {
    dialogAnswers.append({ok, values});
}

bool ScriptedUi::RunDialog(QWidget*, const QString& name, QVariantMap& values) {
    dialogNames.append(name);
    dialogInputs.append(values);
    if (dialogAnswers.isEmpty()) {
        return false;
    }
    const auto [ok, answer] = dialogAnswers.takeFirst();
    if (ok) {
        for (auto it = answer.cbegin(); it != answer.cend(); ++it) {
            values.insert(it.key(), it.value());
        }
    }
    return ok;
}

bool ScriptedUi::BrowseForFolder(QWidget*, const QString& title, QString& folder) {
    folderRequests.append({title, folder, QString()});
    if (folders.isEmpty()) {
        return false;
    }
    const std::optional<QString> answer = folders.takeFirst();
    if (!answer || answer->isEmpty()) {
        return false;
    }
    folder = *answer;
    return true;
}

QString ScriptedUi::GetSaveFileName(QWidget*, const QString& title, const QString& proposed,
                                    const QString& filter) {
    saveRequests.append({title, proposed, filter});
    return saveNames.isEmpty() ? QString() : saveNames.takeFirst();
}

void ScriptedUi::Pump() {
    const int number = ++pumps;
    const std::shared_ptr<ScriptedProgressRecord> view = LastProgress();
    if (view && view->alive && view->closeCount == 0) {
        if (cancelPumps.contains(number) && view->cancelHandler) {
            // A copy: the handler may replace itself.
            const std::function<void()> handler = view->cancelHandler;
            handler();
        }
        if (deathPumps.contains(number)) {
            view->alive = false;
        }
    }
    if (pumpHook) {
        pumpHook(number);
    }
}

std::unique_ptr<ToviProgressView> ScriptedUi::CreateProgressView(QWidget* parent) {
    if (!createsViews) {
        return nullptr;
    }
    auto record = std::make_shared<ScriptedProgressRecord>();
    record->parent = parent;
    progressViews.append(record);
    return std::make_unique<ScriptedProgressView>(record);
}

ScopedUi::ScopedUi(ToviUi& ui) : previous(&ToviUi::Instance()) {
    ToviUi::Install(&ui);
}

ScopedUi::~ScopedUi() {
    ToviUi::Install(previous);
}
