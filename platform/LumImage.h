#pragma once

#include <QImage>
#include <QString>

// The Exif fields GetComment answers for. The texts have one fixed layout each: dates
// "2024/05/01 09:30:00", exposure "1/250 秒", apertures and F numbers "F2.8", focal length
// "4.5 mm", exposure bias "+0.3 EV", latitude and longitude "N 35°39'29.16\"", altitude
// "12.3 m", flash and metering in the Exif library's English wording, version "2.30", size
// "4000 x 3000" and pixel count "12000000". Reports print them as they stand.
enum LumCMNT : int {
    LumCmntArtist = 0,
    LumCmntCopyright = 1,
    LumCmntDateTime = 2,
    LumCmntMake = 5,
    LumCmntModel = 6,
    LumCmntSoftware = 9,
    LumCmntExifVersion = 10,
    LumCmntDateTimeOriginal = 11,
    LumCmntDateTimeDigitized = 12,
    LumCmntShutterSpeedValue = 13,
    LumCmntApertureValue = 14,
    LumCmntExposureBiasValue = 16,
    LumCmntMaxApertureValue = 17,
    LumCmntMeteringMode = 19,
    LumCmntFlash = 21,
    LumCmntFocalLength = 22,
    LumCmntExposureTime = 23,
    LumCmntFNumber = 24,
    LumCmntGPSLatitude = 28,
    LumCmntGPSLongitude = 29,
    LumCmntGPSAltitude = 30,
    LumCmntImageSize = 31,
    LumCmntPixelCount = 32,
    LumCmntCount = 33,
};

// The file formats LumImage::Save writes.
enum LumImageType : int { LumImageBmp = 0, LumImagePng = 1, LumImageJpeg = 2 };

// One picture in memory: a photograph, its thumbnail or a rendered SVG drawing. A value type;
// copies share the pixels until one of them changes. Every failure (missing file, truncated
// or unreadable data) answers false and leaves the object empty, without a message.
class LumImage {
public:
    // The square a thumbnail is shown in; LoadThumb never decodes much more than this needs.
    static constexpr int ThumbTileSize = 256;

    // The whole picture, turned as its Exif orientation says.
    bool Load(const QString& path);
    // Load for a screen: a JPEG is decoded at the coarsest of 1/2, 1/4 and 1/8 whose long
    // side still reaches longSide (whole when none does), an SVG drawn at that side. A
    // longSide of 0 is Load.
    bool LoadForDisplay(const QString& path, int longSide);
    // The Exif thumbnail when the file has one, else the picture decoded at the smallest
    // JPEG scale (1/2, 1/4, 1/8) whose long side still covers a thumbnail tile; turned as its
    // Exif orientation says. SVG drawings are rendered to fit the tile.
    bool LoadThumb(const QString& path);
    void Clear();
    // Takes picture as it stands (a decoded buffer to correct).
    void SetImage(const QImage& picture);

    bool IsValid() const;
    const QImage& Image() const;
    int Width() const;
    int Height() const;

    // Writes the picture as type with quality 0 (small), 1 (normal) or 2 (fine) for JPEG,
    // through a temporary file renamed into place; metadata such as Exif is not carried over.
    // False when there is no picture or the file cannot be written (an old file then stays).
    bool Save(const QString& path, LumImageType type, unsigned quality) const;
    // Renders the SVG drawing at svgPath into a JPEG of at most width x height (its
    // proportions kept) at outPath; false, and nothing written, when the drawing cannot be
    // read or the file not written.
    static bool SaveSvgAsJpeg(const QString& svgPath, const QString& outPath, int width,
                              int height);

    // ---- Corrections for viewing (platform/LumImageEdit.cpp) ----
    // Turns the picture by angle degrees, clockwise for a positive angle. Quarter turns are
    // exact; any other angle widens the picture and fills the corners with backColor
    // (0xRRGGBB). The two flags are kept for the callers' sake and change nothing here.
    bool Rotate(int angle, unsigned long backColor, bool smooth, bool keepSize);
    // Lightens (amount > 0) or darkens (amount < 0) the picture by a tone curve: 1000 lifts
    // the mid tones as a gamma of 1/2 does, -1000 lowers them as a gamma of 2; black and
    // white stay where they are, so repeated steps never clip. Amounts are bounded to
    // -1000..1000. False when there is no picture.
    bool SetContrast(int amount);

    // A 1-bit picture becomes 8-bit grey, so that it can be smoothed when scaled; false when
    // there is no picture or it is not 1-bit.
    bool ConvGrayScaleFromMono();

    // ---- Exif text and file facts (platform/LumExif.cpp) ----
    // The ready-to-show text of one Exif field (see LumCMNT); false when the file has no such
    // field, no Exif, or cannot be read. The whole metadata of the last file asked is kept,
    // so the codes of one file cost one read until the file changes.
    static bool GetComment(const QString& path, int code, QString& text);
    // Width and height as the file's header states them; the picture is not decoded.
    static bool GetCommentImageSize(const QString& path, int& width, int& height);
    // Writes the JPEG main image of an SVG photograph (the first <image> element holding a
    // JPEG as a base64 data URI) to outPath; false, and nothing written, when there is none.
    static bool GetMainImageFromSvg(const QString& svgPath, const QString& outPath);

private:
    bool Assign(QImage decoded);

    QImage image;
};
