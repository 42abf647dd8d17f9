#pragma once

#include <QTreeWidget>

// The tree of the confirm dialog: it only shows where a photograph sits. Keys, clicks and
// right clicks do nothing, scrolling still works, and the marked item keeps its strong
// highlight without the focus.
class ToviConfirmTreeCtrl : public QTreeWidget {
    Q_OBJECT
public:
    static QColor Background();  // 0xF7EBE4 as blue, green, red

    explicit ToviConfirmTreeCtrl(QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
};
