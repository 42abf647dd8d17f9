#include "panels/ToviPanelWindows.h"

namespace {

ToviPanelWindows& Installed() {
    static ToviPanelWindows makers;
    return makers;
}

}  // namespace

void SetPanelWindows(const ToviPanelWindows& makers) {
    Installed() = makers;
}

const ToviPanelWindows& PanelWindows() {
    return Installed();
}
