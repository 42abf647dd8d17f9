#pragma once

#include <QImage>
#include <QString>
#include <QWidget>

#include <memory>

class QSvgRenderer;

// Shows an SVG drawing or photograph, fitted to the window and centred on a white ground.
// Only what the file itself holds is drawn (LumSvgOwnContent), so showing a file never reads
// another one, and nothing is fetched from the network. The drawing is rendered at the
// window's size, whatever size it claims for itself. The right button opens no menu; clicks
// are reported.
class ToviSvgView : public QWidget {
    Q_OBJECT
public:
    explicit ToviSvgView(QWidget* parent = nullptr);
    ~ToviSvgView() override;

    // Shows the drawing at path; false, and the window blank, when the file is missing,
    // too large or not a well-formed SVG drawing.
    bool Load(const QString& path);
    void Clear();
    bool IsLoaded() const;
    // The file shown; empty after Clear or a failed Load.
    const QString& Path() const { return path; }

signals:
    void Clicked();
    void DoubleClicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    // Where the drawing stands in the window, its proportions kept.
    QRect DrawingRect() const;

    std::unique_ptr<QSvgRenderer> renderer;  // null while nothing is shown
    QString path;
    QImage rendered;  // the drawing at DrawingRect's size, made on the first paint at it
};
