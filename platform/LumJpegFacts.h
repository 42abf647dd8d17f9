#pragma once

#include <QImage>
#include <QString>

// What the JPEG reader of LumImage knows of a file without decoding its scans, shared with
// LumImageSource, which decodes parts and reductions of the same files.
struct LumJpegFacts {
    int width = 0;  // as stored, before the Exif orientation
    int height = 0;
    int orientation = 1;  // Exif orientation 1 to 8
};

// The facts of the complete JPEG at path (a regular file running from SOI to an EOI); false for
// anything else, a cut file included.
bool LumReadJpegFacts(const QString& path, LumJpegFacts* facts);
// The same check of a complete JPEG with less reading, for checks over many files: the Exif
// block is not parsed (orientation stays 1) and, where the header allows, only its first
// 64 KiB are read besides the last two bytes. header, when given, receives the bytes from the
// start of the file to the first scan's data, the Exif block among them.
bool LumReadJpegHeader(const QString& path, LumJpegFacts* facts, QByteArray* header = nullptr);
// A picture stored as the sensor saw it, turned and mirrored as the Exif orientation says.
QImage LumOrient(const QImage& stored, int orientation);
