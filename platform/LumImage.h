#pragma once

#include <QImage>
#include <QString>

// One picture in memory: a photograph, its thumbnail or a rendered SVG drawing. A value type;
// copies share the pixels until one of them changes. Every failure (missing file, truncated
// or unreadable data) answers false and leaves the object empty, without a message.
class LumImage {
  public:
    // The square a thumbnail is shown in; LoadThumb never decodes much more than this needs.
    static constexpr int ThumbTileSize = 256;

    // The whole picture, turned as its Exif orientation says.
    bool Load(const QString& path);
    // The Exif thumbnail when the file has one, else the picture decoded at the smallest
    // JPEG scale (1/2, 1/4, 1/8) whose long side still covers a thumbnail tile; turned as its
    // Exif orientation says. SVG drawings are rendered to fit the tile.
    bool LoadThumb(const QString& path);
    void Clear();

    bool IsValid() const;
    const QImage& Image() const;
    int Width() const;
    int Height() const;

    // A 1-bit picture becomes 8-bit grey, so that it can be smoothed when scaled; false when
    // there is no picture or it is not 1-bit.
    bool ConvGrayScaleFromMono();

    // Whether the file's Exif version can be read: what "the photograph has Exif" means.
    // Reads the metadata only.
    static bool HasExifVersion(const QString& path);

  private:
    bool Assign(QImage decoded);

    QImage image;
};
