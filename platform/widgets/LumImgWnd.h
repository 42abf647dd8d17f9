#pragma once

#include <QImage>
#include <QPointF>
#include <QThreadPool>
#include <QTimer>
#include <QWidget>

#include <functional>

class LumImage;

// Shows one picture on a white ground. By default the picture is fitted to the window and
// scaled once per picture and size, so painting never rescales the whole image; clicks are
// reported, and a window without a picture (disabled) paints its ground only.
//
// A zoomable window (SetZoomable) also zooms (the wheel about the cursor, Ctrl++ and Ctrl+-,
// Ctrl+0 back to the fitted view, a double click between fitted and 100 %) and pans (dragging,
// the arrow keys). Given a file (OpenFile) rather than a picture, it decodes on a worker
// thread only what the screen needs: the picture reduced to about the window's size first, and
// when zoomed in past that reduction, the part on show (and a margin) at the reduction the zoom
// needs. A turn and a tone correction set with SetCorrection act on every decoded buffer, so
// the delivered file is never touched and a correction never wears the picture down.
class LumImgWnd : public QWidget {
    Q_OBJECT
public:
    // Applies a tone correction to a decoded buffer in place.
    using Tone = std::function<void(LumImage&)>;

    explicit LumImgWnd(QWidget* parent = nullptr);
    ~LumImgWnd() override;

    void SetImage(const QImage& image);
    // Blanks the window until the next picture; a pending decode is dropped.
    void SetDisableImage();
    bool IsEnableImage() const { return !image.isNull(); }
    // What is shown now: the picture, or its reduction when opened from a file (corrected).
    const QImage& Image() const { return image; }
    // The mouse command (0: clicks are only reported).
    void SetCommand(int value) { command = value; }
    int Command() const { return command; }
    // Fast drawing scales without smoothing; off by default. A black-and-white drawing turned
    // grey is drawn smoothed so that its thin lines survive the scaling.
    void SetDrawFast(bool fast);
    bool IsDrawFast() const { return drawFast; }
    // Forgets where the picture was anchored for zooming; the next paint fits it again.
    void ExecClearAnchor();
    // Where the picture stands in the window (fitted, or zoomed and panned).
    QRect ImageRect() const;

    // ---- Zooming ----
    void SetZoomable(bool on);
    bool IsZoomable() const { return zoomable; }
    // Decodes path off the UI thread; Loaded(ok) tells the outcome. The zoom goes back to fit.
    void OpenFile(const QString& path);
    bool IsLoading() const { return loading; }
    // A quarter-turn angle and a tone for every buffer shown; the view keeps its place.
    void SetCorrection(int angle, const Tone& tone);
    // The size of the whole picture as shown (turned), at 100 %.
    QSize PictureSize() const { return fullSize; }
    // Screen pixels per picture pixel.
    double Zoom() const;
    bool IsFitted() const { return fitted; }
    // Zooms keeping the picture point under anchor (window coordinates) where it is.
    void SetZoom(double zoom, const QPointF& anchor);
    void ZoomIn();
    void ZoomOut();
    void ZoomToFit();
    void ZoomToActual();
    // The part of the whole picture (in its own pixels at 100 %) that the window shows.
    QRectF VisiblePictureRect() const;
    // The finer part decoded for the zoom (window tests and benchmarks): its level and place.
    int DetailLevel() const { return detailLevel; }
    QRect DetailRect() const { return detailRect; }
    bool IsDetailPending() const { return detailPending; }
    static constexpr double kMaxZoom = 8.0;

signals:
    void Clicked();
    void DoubleClicked();
    void RightClicked();
    // The file given to OpenFile was decoded (ok) or could not be (not ok).
    void Loaded(bool ok);
    // The zoom changed (screen pixels per picture pixel).
    void ZoomChanged(double zoom);
    // A finer part decoded for the zoom is on screen.
    void DetailShown();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void Reset();
    double FitZoom() const;
    void ClampCentre();
    void AfterZoom();
    void ScheduleDetail();
    void RequestDetail();
    void OnBase(quint64 generation, const QImage& base, int level, const QSize& seen);
    void OnDetail(quint64 generation, const QImage& part, int level, const QRect& rect);
    QImage Corrected(const QImage& buffer) const;
    QRect ToSeen(const QRect& shown) const;
    void DrawBuffer(QPainter& painter, const QImage& buffer, const QRectF& covers) const;

    QImage image;
    mutable QImage fittedImage;  // image scaled to ImageRect's size, made on the first paint
    int command = 0;
    bool drawFast = false;

    bool zoomable = false;
    bool fitted = true;
    double zoom = 1.0;
    QPointF centre;  // picture point at the window's centre, in picture pixels at 100 %
    QSize fullSize;  // the whole picture as shown, at 100 %
    QPoint dragFrom;
    bool dragging = false;

    // Opened from a file:
    QString path;
    QImage baseSource;  // the reduction as decoded, before the correction
    int baseLevel = 0;
    QSize seenSize;  // the picture as decoded, before the turn
    QImage detailSource;
    QImage detail;     // corrected
    QRect detailRect;  // in the picture as shown, at 100 %
    int detailLevel = -1;
    bool detailPending = false;
    bool loading = false;
    int turn = 0;
    Tone tone;
    quint64 generation = 0;
    QTimer detailTimer;
    QThreadPool pool;  // one worker: a newer request waits for the one decoding
};
