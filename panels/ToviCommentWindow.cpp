#include "panels/ToviCommentWindow.h"

#include "panels/ToviSlideMode.h"
#include "platform/ToviUi.h"

#include <QMouseEvent>
#include <QPainter>
#include <QSvgRenderer>

namespace {

const QString kLead = QStringLiteral("　");
const QString kEllipsis = QStringLiteral("...");

QSvgRenderer& MarginImage() {
    static QSvgRenderer renderer(QStringLiteral(":/tovi/icons/comment-margin.svg"));
    return renderer;
}

}  // namespace

ToviCommentWindow::ToviCommentWindow(const QString& text, int photoPosition, QWidget* parent)
    : QLabel(parent), photoPosition(photoPosition) {
    setObjectName(QStringLiteral("commentWindow"));
    setFrameShape(QFrame::Box);
    setLineWidth(1);
    setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setTextFormat(Qt::PlainText);
    setWordWrap(false);
    setAutoFillBackground(true);
    QPalette shown = palette();
    shown.setColor(QPalette::Window, Qt::white);
    shown.setColor(QPalette::WindowText, Qt::black);
    setPalette(shown);
    // Without a minimum the label would claim the width of its whole text.
    setMinimumSize(0, 0);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    SetComment(text);
}

void ToviCommentWindow::SetComment(const QString& text) {
    comment = text;
    setText(FitText(comment));
    setToolTip(comment);
    update();
}

void ToviCommentWindow::ShowIfAny(bool visible) {
    setVisible(visible && !comment.isEmpty());
}

QString ToviCommentWindow::FitText(const QString& text) const {
    if (text.isEmpty()) {
        return QString();
    }
    const QFontMetrics metrics(font());
    QString display = kLead + text;
    const int width = contentsRect().width();
    if (width <= 0) {
        return QString();
    }
    if (width >= metrics.horizontalAdvance(display)) {
        return display;
    }
    const int room = width - metrics.horizontalAdvance(kEllipsis);
    display = kLead;
    qsizetype next = 0;
    qsizetype added = 0;
    do {
        // A surrogate pair is one character: both halves go in and come out together.
        added = next + 1 < text.size() && text[next].isHighSurrogate() &&
                        text[next + 1].isLowSurrogate()
                    ? 2
                    : 1;
        display += text.mid(next, added);
        next += added;
    } while (next < text.size() && room > metrics.horizontalAdvance(display));
    display.chop(added);
    // Behind Japanese text the dots take the Japanese font and come out wider than measured
    // alone: more characters go until the whole fits.
    while (display.size() > kLead.size() &&
           metrics.horizontalAdvance(display + kEllipsis) > width) {
        display.chop(display.size() > kLead.size() + 1 && display.back().isLowSurrogate() &&
                             display[display.size() - 2].isHighSurrogate()
                         ? 2
                         : 1);
    }
    return display + kEllipsis;
}

void ToviCommentWindow::paintEvent(QPaintEvent* event) {
    QLabel::paintEvent(event);
    const QRect client = contentsRect();
    QPainter painter(this);
    MarginImage().render(&painter,
                         QRectF(client.left(), client.top(), kMarginWidth, client.height()));
}

void ToviCommentWindow::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    setText(FitText(comment));
}

void ToviCommentWindow::mousePressEvent(QMouseEvent* event) {
    QLabel::mousePressEvent(event);
    if (event->button() == Qt::LeftButton) {
        event->accept();  // the strip's click is the cell's click, not the panel's
        emit Clicked(this);
    }
}

void ToviCommentWindow::mouseDoubleClickEvent(QMouseEvent* event) {
    QLabel::mouseDoubleClickEvent(event);
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (IsSlideMode()) {
        ToviUi::Instance().MessageBox(
            this, QStringLiteral("スライドモード中はコメントの編集ができません。"), QString(),
            ToviUi::ButtonsOk, ToviUi::IconInformation);
        return;
    }
    emit DoubleClicked(this);
}
