#include "platform/ToviUi.h"

namespace {

ToviUi*& Installed() {
    static ToviUi* ui = nullptr;
    return ui;
}

}  // namespace

ToviUi& ToviUi::Instance() {
    static ToviNonInteractiveUi fallback;
    return Installed() ? *Installed() : fallback;
}

void ToviUi::Install(ToviUi* ui) {
    Installed() = ui;
}

int ToviNonInteractiveUi::MessageBox(QWidget*, const QString&, const QString&, Buttons buttons,
                                     Icon) {
    switch (buttons) {
        case ButtonsOk:
            return AnswerOk;
        case ButtonsYesNo:
            return AnswerNo;
        default:
            return AnswerCancel;
    }
}
