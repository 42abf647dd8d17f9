#include "platform/LumImage.h"

#include <QColor>
#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cmath>

void LumImage::SetImage(const QImage& picture) {
    image = picture;
}

bool LumImage::Rotate(int angle, unsigned long backColor, bool, bool) {
    if (image.isNull()) {
        return false;
    }
    const int turn = ((angle % 360) + 360) % 360;
    if (turn == 0) {
        return true;
    }
    QImage turned;
    if (turn % 90 == 0) {
        turned = image.transformed(QTransform().rotate(turn));
    } else {
        const QTransform transform = QTransform().rotate(turn);
        const QRect bounds = transform.mapRect(image.rect());
        turned = QImage(bounds.size(), QImage::Format_RGB32);
        if (turned.isNull()) {
            return false;
        }
        turned.fill(QColor::fromRgb(static_cast<QRgb>(backColor & 0xFFFFFF)));
        QPainter painter(&turned);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.translate(-bounds.topLeft());
        painter.setTransform(transform, true);
        painter.drawImage(0, 0, image);
    }
    if (turned.isNull()) {
        return false;
    }
    image = std::move(turned);
    return true;
}

bool LumImage::SetContrast(int amount) {
    if (image.isNull()) {
        return false;
    }
    amount = std::clamp(amount, -1000, 1000);
    if (amount == 0) {
        return true;
    }
    const double gamma = std::pow(2.0, -amount / 1000.0);
    std::array<uchar, 256> curve{};
    for (int v = 0; v < 256; ++v) {
        curve[v] = static_cast<uchar>(std::lround(255.0 * std::pow(v / 255.0, gamma)));
    }
    if (image.format() == QImage::Format_Grayscale8) {
        for (int y = 0; y < image.height(); ++y) {
            uchar* line = image.scanLine(y);
            for (int x = 0; x < image.width(); ++x) {
                line[x] = curve[line[x]];
            }
        }
        return true;
    }
    if (image.format() != QImage::Format_RGB32 && image.format() != QImage::Format_ARGB32) {
        QImage converted = image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32
                                                                         : QImage::Format_RGB32);
        if (converted.isNull()) {
            return false;
        }
        image = std::move(converted);
    }
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = line[x];
            line[x] = qRgba(curve[qRed(p)], curve[qGreen(p)], curve[qBlue(p)], qAlpha(p));
        }
    }
    return true;
}
