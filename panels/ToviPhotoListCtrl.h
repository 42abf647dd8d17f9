#pragma once

#include <QTimer>
#include <QWidget>

class QAbstractItemView;
class QModelIndex;
class QAction;
class QKeyEvent;
class QListView;
class QTableView;
class QToolBar;
class ToviData;
class ToviImageLoader;
class ToviMngListModel;
class ToviPhotoCtrlVisualSetting;
class ToviThumbListModel;

// The scrolling control of the two list modes of the multi-photo panel: the thumbnail list
// (tiles in rows that wrap) or the management list (a table of the shown items). It asks its
// model for visible rows only. Beside the selected item floats the floaty, a small tool bar
// with the six label buttons, shown a moment after the selection settles and kept away while
// the list moves. Keys, scrolling and the floaty's buttons are reported to the panel.
class ToviPhotoListCtrl : public QWidget {
    Q_OBJECT
public:
    enum Mode { ThumbList = 5, ManagementList = 6 };
    static constexpr int kStripHeight = 30;
    static constexpr int kStripWidth = 150;
    // The first command of the floaty's buttons; the button of label i sends 100 + i.
    static constexpr int kFusenCommand = 100;

    // setting is the panel's copy and loader the panel's, neither owned.
    ToviPhotoListCtrl(Mode mode, ToviData* data, const ToviPhotoCtrlVisualSetting* setting,
                      ToviImageLoader* loader, QWidget* parent = nullptr);
    ~ToviPhotoListCtrl() override;

    Mode GetMode() const { return mode; }
    QAbstractItemView* View() const;
    QListView* ThumbView() const { return listView; }
    QTableView* ReportView() const { return tableView; }
    ToviThumbListModel* ThumbModel() const { return thumbModel; }
    ToviMngListModel* MngModel() const { return mngModel; }
    QToolBar* Floaty() const { return floaty; }
    bool IsFloatyOn() const { return floatyOn; }

    // Takes the current array anew (and, in the management list, the columns): no row is
    // selected afterwards.
    void Refill();
    int GetItemCount() const;
    // The focused item (the selection mark), -1 when none.
    int GetSelectionMark() const;
    // The selected item, -1 when none.
    int GetSelectedItem() const;
    // Selects and focuses row, makes it the mark and scrolls it into view; reports nothing.
    void SelectItem(int row);
    // The item's place in the view's viewport.
    QRect ItemRect(int row) const;
    // The comment strip's place under a tile of the thumbnail list, in viewport coordinates.
    QRect StripRect(int row) const;
    // Scrolls the selection mark into view.
    void EnsureMarkVisible();
    // Every item in view has its tile, or its row its file facts.
    bool IsViewFilled() const;
    // The floaty's delay is running.
    bool IsFloatyPending() const { return floatyTimer.isActive(); }
    // Settings that change the look without a refill (comments shown or not).
    void ApplySettings();

    // false: the floaty goes and stays away; true: it goes and comes back after delay ms.
    void ScheduleFloaty(bool show, unsigned delay);
    // The picture of the label's button is on when pasted; its checked state follows, except
    // for the comment button, which never looks pressed.
    void SetButtonState(int label, bool pasted);
    // The row's tile or texts are made anew when it is next shown.
    void InvalidateItem(int row);
    void InvalidateAllItems();
    // The comment of row changed: its strip or its comment cell shows text.
    void SetComment(int row, const QString& text);

signals:
    // A key went through the list; markBefore is the mark before the list moved it.
    void KeyPressed(int key, int markBefore);
    void Scrolled();
    // A floaty button: kFusenCommand + label.
    void FusenCommand(int command);
    // The user selected row; -1 when the list has no selection left.
    void ItemSelected(int row);
    void ItemDoubleClicked(int row);
    void ItemRightClicked(int row);
    // Rows' data changed (a tile's picture or a row's file facts came in): whoever waits for
    // the screen to be filled asks IsViewFilled again.
    void RowsChanged();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    template <class Base>
    friend class ToviReportingView;

    // From the views: true when the key was dealt with here.
    bool KeyDown(QKeyEvent* event, int markBefore);
    void KeyDone(int key, int markBefore);
    void DoubleClicked(const QPoint& pos);
    // The item PageDown (or PageUp) moves to in the thumbnail list; invalid in the table.
    QModelIndex PageMove(bool down) const;
    void CreateFloaty();
    void OnFloatyTimer();
    void OnScroll();
    void OnSelectionChanged();
    bool IsRowVisible(int row) const;

    Mode mode;
    const ToviPhotoCtrlVisualSetting* visualSetting;
    QListView* listView = nullptr;
    QTableView* tableView = nullptr;
    ToviThumbListModel* thumbModel = nullptr;
    ToviMngListModel* mngModel = nullptr;
    QToolBar* floaty = nullptr;
    QAction* buttons[6] = {};
    bool floatyOn = false;
    bool quiet = false;          // selecting for the panel: no report
    bool scrollPending = false;  // the mark is to be scrolled to once the list has a size
    QTimer floatyTimer;
};
