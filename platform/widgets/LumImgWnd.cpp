#include "platform/widgets/LumImgWnd.h"

#include "platform/LumImage.h"
#include "platform/LumImageSource.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

// The reduction decoded first covers this many pixels on its long side, or the window's side
// when that is larger: enough for the fitted view on any screen.
constexpr int kBaseSide = 1280;
constexpr double kZoomStep = 1.25;
constexpr int kPanStep = 64;
// The finer part is asked for once the view has stood still this long.
constexpr int kDetailDelayMs = 60;

QSize Turned(const QSize& size, int turn) {
    return (turn == 90 || turn == 270) ? size.transposed() : size;
}

}  // namespace

LumImgWnd::LumImgWnd(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("imageWnd"));
    setFocusPolicy(Qt::ClickFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    pool.setMaxThreadCount(1);
    detailTimer.setSingleShot(true);
    detailTimer.setInterval(kDetailDelayMs);
    connect(&detailTimer, &QTimer::timeout, this, &LumImgWnd::RequestDetail);
}

LumImgWnd::~LumImgWnd() {
    ++generation;
    pool.clear();
    pool.waitForDone();
}

void LumImgWnd::Reset() {
    ++generation;
    pool.clear();
    detailTimer.stop();
    path.clear();
    baseSource = QImage();
    detailSource = QImage();
    detail = QImage();
    detailRect = QRect();
    detailLevel = -1;
    detailPending = false;
    loading = false;
    seenSize = QSize();
    fittedImage = QImage();
    fitted = true;
}

void LumImgWnd::SetImage(const QImage& picture) {
    Reset();
    image = picture;
    fullSize = image.size();
    update();
}

void LumImgWnd::SetDisableImage() {
    Reset();
    image = QImage();
    fullSize = QSize();
    update();
}

void LumImgWnd::SetDrawFast(bool fast) {
    if (drawFast != fast) {
        drawFast = fast;
        fittedImage = QImage();
        update();
    }
}

void LumImgWnd::ExecClearAnchor() {
    fittedImage = QImage();
    fitted = true;
    update();
}

void LumImgWnd::SetZoomable(bool on) {
    zoomable = on;
    setFocusPolicy(on ? Qt::StrongFocus : Qt::ClickFocus);
    setCursor(on ? Qt::OpenHandCursor : Qt::ArrowCursor);
}

void LumImgWnd::OpenFile(const QString& file) {
    Reset();
    image = QImage();
    fullSize = QSize();
    path = file;
    loading = true;
    update();
    const quint64 ticket = generation;
    const int side = std::max({kBaseSide, width(), height()});
    pool.start([this, ticket, file, side] {
        LumImageSource source;
        QImage base;
        int level = 0;
        if (source.Open(file)) {
            const QSize size = source.Size();
            const int longSide = std::max(size.width(), size.height());
            // The coarsest reduction that still covers the side, or the finest that fits. Only
            // a JPEG is reduced by its decoder: any other format is decoded whole anyway, so it
            // is kept whole, and no finer part is ever asked of it.
            level = 0;
            while (source.IsJpeg() && level < LumImageSource::kMaxLevel &&
                   (longSide >> (level + 1)) >= side) {
                ++level;
            }
            while (level < LumImageSource::kMaxLevel && !source.FitsWhole(level)) {
                ++level;
            }
            base = source.Decode(level);
        }
        const QSize seen = base.isNull() ? QSize() : source.Size();
        QMetaObject::invokeMethod(
            this, [this, ticket, base, level, seen] { OnBase(ticket, base, level, seen); },
            Qt::QueuedConnection);
    });
}

void LumImgWnd::OnBase(quint64 ticket, const QImage& base, int level, const QSize& seen) {
    if (ticket != generation) {
        return;
    }
    loading = false;
    if (base.isNull()) {
        image = QImage();
        fullSize = QSize();
        update();
        emit Loaded(false);
        return;
    }
    baseSource = base;
    baseLevel = level;
    // A format whose reader turns the picture itself measures its size only now.
    seenSize = level == 0 ? base.size() : seen;
    fullSize = Turned(seenSize, turn);
    image = Corrected(baseSource);
    fitted = true;
    fittedImage = QImage();
    update();
    emit Loaded(true);
    emit ZoomChanged(Zoom());
}

void LumImgWnd::SetCorrection(int angle, const Tone& newTone) {
    const int newTurn = ((angle % 360) + 360) % 360;
    const bool turned = newTurn != turn;
    turn = newTurn;
    tone = newTone;
    if (path.isEmpty() || baseSource.isNull()) {
        return;
    }
    if (turned) {
        // The same picture point stays in the centre, turned with the picture.
        fullSize = Turned(seenSize, turn);
        centre = QPointF(fullSize.width() / 2.0, fullSize.height() / 2.0);
        detailSource = QImage();
        detail = QImage();
        detailRect = QRect();
        detailLevel = -1;
    } else if (!detailSource.isNull()) {
        detail = Corrected(detailSource);
    }
    image = Corrected(baseSource);
    fittedImage = QImage();
    ClampCentre();
    ScheduleDetail();
    update();
}

QImage LumImgWnd::Corrected(const QImage& buffer) const {
    if (turn == 0 && !tone) {
        return buffer;
    }
    LumImage work;
    work.SetImage(buffer);
    work.Rotate(turn, 0xFFFFFF, false, true);
    if (tone) {
        tone(work);
    }
    return work.Image();
}

double LumImgWnd::FitZoom() const {
    if (fullSize.isEmpty() || width() <= 0 || height() <= 0) {
        return 1.0;
    }
    const double fit =
        std::min(double(width()) / fullSize.width(), double(height()) / fullSize.height());
    // A small picture is not blown up past twice its size to fill the window.
    return std::min(fit, 2.0);
}

double LumImgWnd::Zoom() const {
    return fitted ? FitZoom() : zoom;
}

QRect LumImgWnd::ImageRect() const {
    if (image.isNull() || width() <= 0 || height() <= 0) {
        return QRect();
    }
    if (fitted) {
        QSize size = fullSize;
        size.scale(rect().size().boundedTo(fullSize * 2), Qt::KeepAspectRatio);
        size = size.expandedTo(QSize(1, 1));
        return QRect(QPoint((width() - size.width()) / 2, (height() - size.height()) / 2), size);
    }
    const QSizeF shown = QSizeF(fullSize) * zoom;
    const QPointF topLeft = QPointF(width() / 2.0, height() / 2.0) - centre * zoom;
    return QRectF(topLeft, shown).toAlignedRect();
}

QRectF LumImgWnd::VisiblePictureRect() const {
    const QRect shown = ImageRect();
    if (shown.isEmpty()) {
        return QRectF();
    }
    const double z = double(shown.width()) / fullSize.width();
    const QRectF visible = QRectF(shown) & QRectF(rect());
    return QRectF((visible.topLeft() - shown.topLeft()) / z, visible.size() / z);
}

void LumImgWnd::SetZoom(double wanted, const QPointF& anchor) {
    if (fullSize.isEmpty()) {
        return;
    }
    const double minimum = std::min(FitZoom(), 1.0);
    wanted = std::clamp(wanted, minimum, kMaxZoom);
    const double current = Zoom();
    const QRect shown = ImageRect();
    // The picture point under the anchor now.
    const QPointF point = (anchor - QPointF(shown.topLeft())) / current;
    zoom = wanted;
    fitted = false;
    centre = point - (anchor - QPointF(width() / 2.0, height() / 2.0)) / zoom;
    AfterZoom();
}

void LumImgWnd::ZoomIn() {
    SetZoom(Zoom() * kZoomStep, QPointF(width() / 2.0, height() / 2.0));
}

void LumImgWnd::ZoomOut() {
    const double next = Zoom() / kZoomStep;
    if (next <= FitZoom()) {
        ZoomToFit();
        return;
    }
    SetZoom(next, QPointF(width() / 2.0, height() / 2.0));
}

void LumImgWnd::ZoomToFit() {
    fitted = true;
    fittedImage = QImage();
    AfterZoom();
}

void LumImgWnd::ZoomToActual() {
    SetZoom(1.0, QPointF(width() / 2.0, height() / 2.0));
}

void LumImgWnd::ClampCentre() {
    if (fitted || fullSize.isEmpty()) {
        return;
    }
    const double halfW = width() / 2.0 / zoom;
    const double halfH = height() / 2.0 / zoom;
    // A picture smaller than the window stands in the middle; a larger one cannot be pushed
    // past its edges.
    const auto clampAxis = [](double c, double half, double full) {
        return half * 2 >= full ? full / 2.0 : std::clamp(c, half, full - half);
    };
    centre.setX(clampAxis(centre.x(), halfW, fullSize.width()));
    centre.setY(clampAxis(centre.y(), halfH, fullSize.height()));
}

void LumImgWnd::AfterZoom() {
    ClampCentre();
    ScheduleDetail();
    update();
    emit ZoomChanged(Zoom());
}

void LumImgWnd::ScheduleDetail() {
    if (path.isEmpty() || baseSource.isNull()) {
        return;
    }
    const int wanted = LumImageSource::LevelFor(Zoom());
    if (wanted >= baseLevel) {
        // The reduction decoded first is fine enough: no part is needed.
        detailTimer.stop();
        return;
    }
    const QRect visible = VisiblePictureRect().toAlignedRect();
    if (detailLevel == wanted && detailRect.contains(visible)) {
        return;
    }
    detailTimer.start();
}

QRect LumImgWnd::ToSeen(const QRect& shown) const {
    // Turning the picture by the view's angle is what the orientation code of that angle
    // does, so the same mapping finds the part in the picture before the turn.
    return LumImageSource::MapToStored(shown, seenSize, LumImageSource::OrientationOfTurn(turn));
}

void LumImgWnd::RequestDetail() {
    const int level = LumImageSource::LevelFor(Zoom());
    if (path.isEmpty() || level >= baseLevel) {
        return;
    }
    // The part on show and half a window more on each side, so that a short pan needs nothing.
    const QRectF visible = VisiblePictureRect();
    const QRect wanted = visible
                             .adjusted(-visible.width() / 2, -visible.height() / 2,
                                       visible.width() / 2, visible.height() / 2)
                             .toAlignedRect() &
                         QRect(QPoint(0, 0), fullSize);
    if (wanted.isEmpty()) {
        return;
    }
    const quint64 ticket = generation;
    const QString file = path;
    const QRect seenPart = ToSeen(wanted);
    detailPending = true;
    pool.clear();  // an older part not yet started is not wanted any more
    pool.start([this, ticket, file, level, seenPart, wanted] {
        LumImageSource source;
        QImage part;
        if (source.Open(file)) {
            part = source.Decode(level, seenPart);
        }
        QMetaObject::invokeMethod(
            this, [this, ticket, part, level, wanted] { OnDetail(ticket, part, level, wanted); },
            Qt::QueuedConnection);
    });
}

void LumImgWnd::OnDetail(quint64 ticket, const QImage& part, int level, const QRect& where) {
    if (ticket != generation) {
        return;
    }
    detailPending = false;
    if (part.isNull()) {
        return;  // the reduction stays on show
    }
    // Decoded before the turn; turned here with the rest of the correction.
    detailSource = part;
    detail = Corrected(part);
    detailRect = where;
    detailLevel = level;
    update();
    emit DetailShown();
    ScheduleDetail();  // the view may have moved on while the part was decoded
}

void LumImgWnd::DrawBuffer(QPainter& painter, const QImage& buffer, const QRectF& covers) const {
    // covers: the part of the whole picture (100 % pixels) that buffer holds.
    const QRect shown = ImageRect();
    const double z = double(shown.width()) / fullSize.width();
    const QRectF target(QPointF(shown.topLeft()) + covers.topLeft() * z, covers.size() * z);
    const QRectF visible = target & QRectF(rect());
    if (visible.isEmpty()) {
        return;
    }
    const double sx = buffer.width() / target.width();
    const double sy = buffer.height() / target.height();
    const QRectF source((visible.left() - target.left()) * sx, (visible.top() - target.top()) * sy,
                        visible.width() * sx, visible.height() * sy);
    painter.drawImage(visible, buffer, source);
}

void LumImgWnd::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const QRect target = ImageRect();
    if (target.isEmpty()) {
        return;
    }
    if (fitted && detail.isNull()) {
        if (fittedImage.size() != target.size()) {
            fittedImage =
                image.scaled(target.size(), Qt::IgnoreAspectRatio,
                             drawFast ? Qt::FastTransformation : Qt::SmoothTransformation);
        }
        painter.drawImage(target.topLeft(), fittedImage);
        return;
    }
    // Zoomed: only the part on screen is scaled, from the reduction and then, over it, from
    // the finer part where there is one.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, Zoom() < 1.0 && !drawFast);
    DrawBuffer(painter, image, QRectF(QPointF(0, 0), QSizeF(fullSize)));
    if (!detail.isNull() && detailLevel >= 0 && detailLevel < baseLevel &&
        LumImageSource::LevelFor(Zoom()) < baseLevel) {
        DrawBuffer(painter, detail, QRectF(detailRect));
    }
}

void LumImgWnd::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fittedImage = QImage();
    if (zoomable) {
        ClampCentre();
        ScheduleDetail();
    }
}

void LumImgWnd::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        if (zoomable && !fitted) {
            dragging = true;
            dragFrom = event->position().toPoint();
            setCursor(Qt::ClosedHandCursor);
        }
        emit Clicked();
    } else if (event->button() == Qt::RightButton) {
        emit RightClicked();
    }
}

void LumImgWnd::mouseMoveEvent(QMouseEvent* event) {
    if (!dragging) {
        return;
    }
    const QPoint now = event->position().toPoint();
    centre -= QPointF(now - dragFrom) / zoom;
    dragFrom = now;
    ClampCentre();
    ScheduleDetail();
    update();
}

void LumImgWnd::mouseReleaseEvent(QMouseEvent* event) {
    if (dragging && event->button() == Qt::LeftButton) {
        dragging = false;
        setCursor(Qt::OpenHandCursor);
    }
}

void LumImgWnd::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (zoomable && IsEnableImage()) {
        // Below 100 % a double click looks closely at that point; at or past it, back to fit.
        if (Zoom() < 1.0) {
            SetZoom(1.0, event->position());
        } else {
            ZoomToFit();
        }
    }
    emit DoubleClicked();
}

void LumImgWnd::wheelEvent(QWheelEvent* event) {
    if (!zoomable || !IsEnableImage()) {
        QWidget::wheelEvent(event);
        return;
    }
    const int steps = event->angleDelta().y() / 120;
    if (steps == 0) {
        event->accept();
        return;
    }
    const double wanted = Zoom() * std::pow(kZoomStep, steps);
    if (wanted <= FitZoom()) {
        ZoomToFit();
    } else {
        SetZoom(wanted, event->position());
    }
    event->accept();
}

void LumImgWnd::keyPressEvent(QKeyEvent* event) {
    if (!zoomable || !IsEnableImage()) {
        QWidget::keyPressEvent(event);
        return;
    }
    const bool ctrl = event->modifiers().testFlag(Qt::ControlModifier);
    if (ctrl && (event->key() == Qt::Key_Plus || event->key() == Qt::Key_Equal)) {
        ZoomIn();
    } else if (ctrl && event->key() == Qt::Key_Minus) {
        ZoomOut();
    } else if (ctrl && event->key() == Qt::Key_0) {
        ZoomToFit();
    } else if (!fitted && !ctrl &&
               (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right ||
                event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)) {
        const int dx = event->key() == Qt::Key_Left ? -1 : event->key() == Qt::Key_Right ? 1 : 0;
        const int dy = event->key() == Qt::Key_Up ? -1 : event->key() == Qt::Key_Down ? 1 : 0;
        centre += QPointF(dx, dy) * (kPanStep / zoom);
        ClampCentre();
        ScheduleDetail();
        update();
    } else {
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
}
