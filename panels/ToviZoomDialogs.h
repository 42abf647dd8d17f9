#pragma once

#include "panels/ToviZoomView.h"

#include <QPointer>
#include <QPoint>
#include <QSize>

#include <vector>

class ToviMpiPanel;

// The multi-photo panel's zoom windows: at most six, the loose ones following the selection,
// arranged on request, their size, bar, tab and information pane remembered for the next
// one (in the panel's profile fields).
class ToviZoomDialogs : public ToviZoomOwner {
public:
    static constexpr int kMaxDialogs = 6;
    static const QString LimitMessage_;       // "これ以上の表示はできません。\n…"
    static const QString CannotShowMessage_;  // "表示できません。"

    explicit ToviZoomDialogs(ToviMpiPanel& panel);
    ~ToviZoomDialogs() override;

    // Shows the selected photograph: in the window that shows it already, else in the first
    // loose one, else in a new one while fewer than six are open.
    void ShowMultiDlg();
    // After a page change: the first loose window shows the selected photograph.
    void UpdateMultiDlg();
    // Closes every window, keeping the last one's size for the next.
    void DeleteAllDialog();
    // Each loose window is asked to follow the selection (once per loose window).
    void FollowSelection();
    // Where window i (counted from 0) is placed when it opens.
    QPoint GetDlgPos(int i) const;
    // The size of the next window.
    QSize GetDlgSize() const;

    int Count() const { return static_cast<int>(dialogs.size()); }
    ToviZoomView* Dialog(int i) const { return dialogs.at(static_cast<size_t>(i)).view; }

    void OnDestroyDlg(ToviZoomView* view) override;
    void OnDestroyAllDlg() override;
    void OnFixAllDlg() override;
    void OnChangeDlgState(ToviZoomView* view) override;

private:
    struct Entry {
        ToviZoomView* view;
        QPointer<QWidget> window;  // gone when the main window took it down first
    };
    void DeleteMultiDlg(size_t i);
    void Show(ToviZoomView* view, QWidget* hadFocus);
    void Destroy(Entry& entry);

    ToviMpiPanel& panel;
    std::vector<Entry> dialogs;
    bool inShowMultiDlg = false;
};
