#include "dialogs/ToviSvgView.h"

#include "platform/LumSvg.h"
#include "platform/MibFile.h"

#include <QFile>
#include <QMouseEvent>
#include <QPainter>
#include <QSvgRenderer>

ToviSvgView::ToviSvgView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("svgView"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setContextMenuPolicy(Qt::PreventContextMenu);
    setFocusPolicy(Qt::ClickFocus);
}

ToviSvgView::~ToviSvgView() = default;

bool ToviSvgView::Load(const QString& file) {
    Clear();
    QFile source;
    if (!MibOpenRegularFile(source, file) || source.size() > LumSvgMaxFileBytes) {
        return false;
    }
    const QByteArray content = LumSvgOwnContent(source.readAll());
    if (content.isEmpty()) {
        return false;
    }
    auto drawing = std::make_unique<QSvgRenderer>(content);
    if (!drawing->isValid()) {
        return false;
    }
    renderer = std::move(drawing);
    path = file;
    update();
    return true;
}

void ToviSvgView::Clear() {
    path.clear();
    rendered = QImage();
    renderer.reset();
    update();
}

bool ToviSvgView::IsLoaded() const {
    return renderer != nullptr;
}

QRect ToviSvgView::DrawingRect() const {
    if (!IsLoaded() || width() <= 0 || height() <= 0) {
        return QRect();
    }
    // The proportions come from the view box, in floating point: a drawing claiming a size
    // beyond what an int holds still has a shape.
    QSizeF shape = renderer->viewBoxF().size();
    if (shape.isEmpty()) {
        shape = renderer->defaultSize();
    }
    if (shape.isEmpty()) {
        return rect();
    }
    QSizeF fitted = shape.scaled(QSizeF(size()), Qt::KeepAspectRatio);
    const QSize whole = fitted.toSize().expandedTo(QSize(1, 1)).boundedTo(size());
    return QRect(QPoint((width() - whole.width()) / 2, (height() - whole.height()) / 2), whole);
}

void ToviSvgView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const QRect target = DrawingRect();
    if (target.isEmpty()) {
        return;
    }
    const qreal ratio = devicePixelRatioF();
    const QSize pixels = (QSizeF(target.size()) * ratio).toSize();
    if (rendered.size() != pixels) {
        rendered = QImage(pixels, QImage::Format_RGB32);
        if (rendered.isNull()) {
            return;
        }
        rendered.setDevicePixelRatio(ratio);
        rendered.fill(Qt::white);
        QPainter canvas(&rendered);
        canvas.setRenderHint(QPainter::Antialiasing);
        renderer->render(&canvas, QRectF(QPointF(0, 0), QSizeF(target.size())));
    }
    painter.drawImage(target.topLeft(), rendered);
}

void ToviSvgView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    rendered = QImage();
}

void ToviSvgView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        emit Clicked();
    }
    event->accept();  // the right button too: no menu, and the parent does not get it
}

void ToviSvgView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        emit DoubleClicked();
    }
    event->accept();
}
