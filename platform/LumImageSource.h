#pragma once

#include "platform/LumJpegFacts.h"

#include <QImage>
#include <QRect>
#include <QSize>
#include <QString>

// A picture file as a zooming view needs it: its size as seen, and the picture at a
// power-of-two reduction (level 0 whole size, 1 a half, 2 a quarter, 3 an eighth), whole or a
// part of it. A JPEG is reduced and cut by its decoder (the DCT scales and the decoder's clip),
// so a 30,000-pixel photograph never needs more memory than the part on show; other formats
// are decoded whole, within the image reader's allocation limit, and reduced afterwards.
// Safe to use on a worker thread: it touches nothing but the file.
class LumImageSource {
public:
    static constexpr int kMaxLevel = 3;
    // The most pixels one decoded buffer may hold (48 megapixels, 192 MB in 32 bits).
    static constexpr qint64 kBufferPixelLimit = qint64(48) << 20;

    // Reads the header; false for a missing, unreadable or cut file, or an SVG drawing.
    bool Open(const QString& path);
    bool IsOpen() const { return !seen.isEmpty(); }
    bool IsJpeg() const { return jpeg; }
    // The picture's size as seen (its Exif orientation applied).
    QSize Size() const { return seen; }
    // The size of the picture at level.
    QSize LevelSize(int level) const;
    // The coarsest level whose scale is still at least zoom (picture pixels on the screen per
    // picture pixel); 0 for zooms of a half and more.
    static int LevelFor(double zoom);
    // True when the whole picture at level fits one buffer.
    bool FitsWhole(int level) const;
    // The whole picture at level, as seen; null when it does not fit or cannot be decoded.
    QImage Decode(int level) const;
    // The part of the picture (in whole-size pixels, as seen) at level, as seen.
    QImage Decode(int level, const QRect& part) const;

    // Where a rectangle of a picture as seen lies in the picture as stored, for an Exif
    // orientation (1 to 8) and the stored size.
    static QRect MapToStored(const QRect& seenRect, const QSize& stored, int orientation);
    // The orientation code that turns a picture by a quarter-turn angle (0, 90, 180, 270).
    static int OrientationOfTurn(int angle);

private:
    QImage DecodeOther(int level, const QRect& part) const;

    QString path;
    QSize seen;
    QSize stored;
    bool jpeg = false;
    int orientation = 1;
};
