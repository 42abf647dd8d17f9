#include "panels/ToviZoomView.h"

namespace {

ToviZoomMaker& Maker() {
    static ToviZoomMaker maker;
    return maker;
}

}  // namespace

void SetZoomMaker(ToviZoomMaker maker) {
    Maker() = std::move(maker);
}

const ToviZoomMaker& ZoomMaker() {
    return Maker();
}
