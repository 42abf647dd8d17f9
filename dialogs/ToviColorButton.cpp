#include "dialogs/ToviColorButton.h"

#include <QPainter>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace {

// The white face starts this far inside the frame.
constexpr int kInset = 3;

}  // namespace

ToviColorButton::ToviColorButton(QWidget* parent) : QPushButton(parent) {
    setFocusPolicy(Qt::NoFocus);
}

void ToviColorButton::SetImage(const QPixmap& picture) {
    image = picture;
    const qreal ratio = image.devicePixelRatio() > 0 ? image.devicePixelRatio() : 1.0;
    imageWidth = qRound(image.width() / ratio);
    imageHeight = qRound(image.height() / ratio);
    updateGeometry();
    update();
}

QSize ToviColorButton::sizeHint() const {
    return QSize(imageWidth + 4 * kInset + 8, imageHeight + 4 * kInset + 4);
}

void ToviColorButton::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    option.icon = QIcon();
    painter.drawControl(QStyle::CE_PushButtonBevel, option);
    painter.fillRect(rect().adjusted(kInset, kInset, -kInset, -kInset), Qt::white);
    if (!image.isNull()) {
        const QRect target((width() - imageWidth) / 2, (height() - imageHeight) / 2, imageWidth,
                           imageHeight);
        painter.drawPixmap(target, image);
    }
}
