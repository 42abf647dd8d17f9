#include "tests/support/ScriptedUi.h"

int ScriptedUi::MessageBox(QWidget*, const QString& text, const QString& caption, Buttons buttons,
                           Icon icon) {
    questions.append({text, caption, buttons, icon});
    if (!answers.isEmpty()) {
        return answers.takeFirst();
    }
    return ToviNonInteractiveUi().MessageBox(nullptr, text, caption, buttons, icon);
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
}

std::unique_ptr<ToviProgressView> ScriptedUi::CreateProgressView(QWidget*) {
    progressViews.append(std::make_shared<ScriptedProgressRecord>());
    return std::make_unique<ScriptedProgressView>(progressViews.last());
}
