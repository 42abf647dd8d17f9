#pragma once

#include <QPixmap>
#include <QPushButton>

// A label's picture on a push-button face: the frame of a button, white inside it and the
// picture in the middle. The colour is kept with it but doesn't take part in the drawing.
class ToviColorButton : public QPushButton {
    Q_OBJECT
public:
    explicit ToviColorButton(QWidget* parent = nullptr);

    // The colour as 0x00BBGGRR.
    unsigned long GetColor() const { return color; }
    void SetColor(unsigned long value) { color = value; }
    // The picture drawn in the middle; white in it shows the face below.
    void SetImage(const QPixmap& image);
    const QPixmap& GetImage() const { return image; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    unsigned long color = 0xFFFFFF;
    QPixmap image;
    int imageWidth = 0;
    int imageHeight = 0;
};
