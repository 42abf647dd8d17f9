#include "dialogs/ToviConfirmTreeCtrl.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyledItemDelegate>

namespace {

// Paints every item as in an active window, so the mark does not fade to the pale colour of
// a view without the focus.
class ActiveDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        QStyleOptionViewItem shown(option);
        shown.state |= QStyle::State_Active;
        QStyledItemDelegate::paint(painter, shown, index);
    }
};

}  // namespace

QColor ToviConfirmTreeCtrl::Background() {
    return QColor(0xE4, 0xEB, 0xF7);
}

ToviConfirmTreeCtrl::ToviConfirmTreeCtrl(QWidget* parent) : QTreeWidget(parent) {
    setObjectName(QStringLiteral("tree"));
    setHeaderHidden(true);
    setRootIsDecorated(true);
    // Deep places are read whole by scrolling sideways rather than cut short.
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    header()->setStretchLastSection(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setContextMenuPolicy(Qt::NoContextMenu);
    setFocusPolicy(Qt::NoFocus);
    setItemDelegate(new ActiveDelegate(this));
    QPalette shown = palette();
    shown.setColor(QPalette::Base, Background());
    shown.setColor(QPalette::Text, shown.color(QPalette::Active, QPalette::WindowText));
    for (const QPalette::ColorRole role : {QPalette::Highlight, QPalette::HighlightedText}) {
        shown.setColor(QPalette::Inactive, role, shown.color(QPalette::Active, role));
    }
    setPalette(shown);
}

void ToviConfirmTreeCtrl::keyPressEvent(QKeyEvent* event) {
    event->accept();
}

void ToviConfirmTreeCtrl::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void ToviConfirmTreeCtrl::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
}

void ToviConfirmTreeCtrl::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
}

void ToviConfirmTreeCtrl::mouseMoveEvent(QMouseEvent* event) {
    event->accept();
}
