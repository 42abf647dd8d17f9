#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QImage>
#include <QSize>
#include <QString>

// Writes JPEG files that carry a real Exif block, for fixtures: the APP1 segment is built
// byte by byte here (TIFF header, IFD0, Exif IFD, GPS IFD, IFD1 with the thumbnail), so that
// what the program reads through its Exif library is checked against bytes it did not write.
struct ExifFacts {
    bool writeExif = true;  // false: a plain JPEG without APP1
    QString make = QStringLiteral("ORVANE");
    QString model = QStringLiteral("FIELD-CAM G7");
    QString software;            // empty leaves the tag out
    QString artist;              // empty leaves the tag out
    QString copyright;           // empty leaves the tag out
    QDateTime dateTimeOriginal;  // also written as DateTime and DateTimeDigitized
    int orientation = 1;         // 1..8; 0 leaves the tag out
    // Exposure facts; a value <= 0 leaves the tag out. ShutterSpeedValue and ApertureValue
    // are written too, derived from exposureTime and fNumber.
    double exposureTime = 1.0 / 250.0;  // seconds
    double fNumber = 2.8;
    double focalLength = 4.5;  // mm
    double maxAperture = 2.8;  // the lens's smallest F number, written as MaxApertureValue
    int isoSpeed = 100;
    double exposureBias = 0.0;  // EV (written even when 0)
    int flash = 0;              // the Exif Flash value; negative leaves the tag out
    int meteringMode = 5;       // the Exif MeteringMode value; negative leaves the tag out
    QByteArray exifVersion = "0230";
    // GPS
    bool hasGps = false;
    double latitude = 0.0;   // degrees, negative for south
    double longitude = 0.0;  // degrees, negative for west
    double altitude = 0.0;   // metres
    // The embedded thumbnail in IFD1 (a JPEG of this size made from the image).
    bool embedThumbnail = true;
    QSize thumbnailSize{160, 120};
};

// The JPEG bytes of image with the facts' Exif block; empty on failure, which includes a
// thumbnail too large for the 64 KB the Exif block may take.
QByteArray MakeExifJpeg(const QImage& image, const ExifFacts& facts, int quality = 85);
// Writes MakeExifJpeg's bytes to path; false on failure.
bool WriteExifJpeg(const QString& path, const QImage& image, const ExifFacts& facts,
                   int quality = 85);
