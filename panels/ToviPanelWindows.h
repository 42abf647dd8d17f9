#pragma once

#include "panels/ToviZoomView.h"

#include <QRect>

#include <functional>

class QWidget;
class ToviData;
class ToviMpiPanel;
class ToviPhoto;

// What the multi-photo panel needs of the floating window that marks the selected
// photograph's place in the classification tree. The window itself is a dialog, which the
// panels do not know: the host installs a maker for it. Deleting the view closes the window;
// a view that goes by itself tells its owner through ToviMpiPanel::EndConfirmDlg first.
class ToviConfirmView {
public:
    static constexpr int kMinimumWidth = 200;
    static constexpr int kMinimumHeight = 300;

    virtual ~ToviConfirmView() = default;

    virtual bool IsTreeType(int type) const = 0;
    virtual void SetTreeType(int type) = 0;
    // Fills the tree from the document's tree and marks the selected photograph.
    virtual void BuildTree(ToviData* data) = 0;
    // Marks the photograph's place; a photograph with no place leaves the mark where it is.
    virtual bool OnSelect(ToviData* data, ToviPhoto* photo) = 0;
    // The place and size kept at the last close.
    virtual QRect StoredRect() const = 0;
    // The window, to place, show and raise.
    virtual QWidget* Window() = 0;
};

// The makers of the windows the panels open but do not define, installed once by the host.
struct ToviPanelWindows {
    std::function<ToviConfirmView*(ToviMpiPanel* owner)> createConfirm;  // null: none
    ToviZoomMaker createZoom;  // null: no zoom windows
};

// Installs the makers; a default-constructed struct removes them.
void SetPanelWindows(const ToviPanelWindows& makers);
// The installed makers; all null until the host installs some.
const ToviPanelWindows& PanelWindows();
