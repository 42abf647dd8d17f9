#pragma once

#include <QString>

#include <functional>

class QWidget;
class ToviData;
class ToviItemDef;
class ToviPhoto;

// A zoom window as the multi-photo panel sees it. The windows themselves are built above the
// panels; the host installs a maker (ToviZoomMaker) that builds them. Deleting the view
// closes its window.
class ToviZoomView {
public:
    virtual ~ToviZoomView() = default;
    virtual QWidget* Window() = 0;
    // Shows another photograph (null: none).
    virtual void SetPhoto(ToviPhoto* photo) = 0;
    // Shows nothing until the next photograph.
    virtual void ClearPhoto() = 0;
    // Whether it shows the file at path (case ignored, as on the discs).
    virtual bool IsSamePhoto(const QString& path) const = 0;
    // A fixed window keeps its photograph when the selection moves.
    virtual bool IsFixed() const = 0;
    virtual bool IsInfoVisible() const = 0;
    virtual void SetInfoVisible(bool visible) = 0;
    // The bar between the picture and the information, at least 60.
    virtual int GetSplitterPos() const = 0;
    virtual void SetSplitterPos(int position) = 0;
    // The information tab; -1 without tabs.
    virtual int GetTabIndex() const = 0;
    virtual void SetTabIndex(int index) = 0;
    // Fills the information anew for the photograph and the document's settings.
    virtual void RefreshInfo() = 0;
};

// What a zoom window asks of the panel that owns it; each passes the window itself.
class ToviZoomOwner {
public:
    virtual ~ToviZoomOwner() = default;
    // 閉じる: close this one.
    virtual void OnDestroyDlg(ToviZoomView* view) = 0;
    // 全閉: close them all.
    virtual void OnDestroyAllDlg() = 0;
    // 整列: arrange them all.
    virtual void OnFixAllDlg() = 0;
    // 情報 was turned on or off.
    virtual void OnChangeDlgState(ToviZoomView* view) = 0;
};

// Builds a zoom window for owner showing photo, with its information pane shown or not; null
// when it could not be made. parent is the window it stays above. The host installs it with the
// other panel windows (ToviPanelWindows).
using ToviZoomMaker =
    std::function<ToviZoomView*(ToviZoomOwner* owner, QWidget* parent, ToviPhoto* photo,
                                ToviItemDef* itemDef, ToviData* data, bool infoVisible)>;
