#pragma once

#include <QImage>
#include <QWidget>

// Shows one picture fitted to the window, centred on a white ground. The fitted picture is
// scaled once per picture and size and kept, so painting never rescales the whole image.
// Clicks are reported; a window without a picture (disabled) paints its ground only.
class LumImgWnd : public QWidget {
    Q_OBJECT
public:
    explicit LumImgWnd(QWidget* parent = nullptr);

    void SetImage(const QImage& image);
    // Blanks the window until the next picture.
    void SetDisableImage();
    bool IsEnableImage() const { return !image.isNull(); }
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
    // Where the fitted picture stands in the window.
    QRect ImageRect() const;

signals:
    void Clicked();
    void DoubleClicked();
    void RightClicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    QImage image;
    mutable QImage fitted;  // image scaled to ImageRect's size, made on the first paint at it
    int command = 0;
    bool drawFast = false;
};
