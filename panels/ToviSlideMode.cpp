#include "panels/ToviSlideMode.h"

namespace {

bool slideMode = false;  // the UI thread alone reads and writes it

}  // namespace

void SetSlideMode(bool on) {
    slideMode = on;
}

bool IsSlideMode() {
    return slideMode;
}
