#include "platform/widgets/LumImgWnd.h"

#include <QMouseEvent>
#include <QPainter>

LumImgWnd::LumImgWnd(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("imageWnd"));
    setFocusPolicy(Qt::ClickFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void LumImgWnd::SetImage(const QImage& picture) {
    image = picture;
    fitted = QImage();
    update();
}

void LumImgWnd::SetDisableImage() {
    image = QImage();
    fitted = QImage();
    update();
}

void LumImgWnd::SetDrawFast(bool fast) {
    if (drawFast != fast) {
        drawFast = fast;
        fitted = QImage();
        update();
    }
}

void LumImgWnd::ExecClearAnchor() {
    fitted = QImage();
    update();
}

QRect LumImgWnd::ImageRect() const {
    if (image.isNull() || width() <= 0 || height() <= 0) {
        return QRect();
    }
    QSize size = image.size();
    // Fitted to the window, never enlarged past twice its own size.
    size.scale(rect().size().boundedTo(image.size() * 2), Qt::KeepAspectRatio);
    size = size.expandedTo(QSize(1, 1));
    return QRect(QPoint((width() - size.width()) / 2, (height() - size.height()) / 2), size);
}

void LumImgWnd::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const QRect target = ImageRect();
    if (target.isEmpty()) {
        return;
    }
    if (fitted.size() != target.size()) {
        fitted = image.scaled(target.size(), Qt::IgnoreAspectRatio,
                              drawFast ? Qt::FastTransformation : Qt::SmoothTransformation);
    }
    painter.drawImage(target.topLeft(), fitted);
}

void LumImgWnd::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        emit Clicked();
    } else if (event->button() == Qt::RightButton) {
        emit RightClicked();
    }
}

void LumImgWnd::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        emit DoubleClicked();
    }
}
