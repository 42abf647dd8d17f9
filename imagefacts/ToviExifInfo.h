#pragma once

#include "document/ToviNotCopied.h"
#include "document/ToviTextPairArray.h"

#include <QString>

#include <memory>
#include <vector>

// A photograph's Exif text, read once in six groups of title and value. Every row of a loaded
// group is there, "(不明)" standing for a field the file does not have, so a row's position
// tells which field it is. An SVG photograph is read through the JPEG main image it carries,
// written out to a work file first.
class ToviExifInfo {
public:
    ToviExifInfo() = default;
    // Copies leave the image group of the target as it was, as Clear does.
    ToviExifInfo(const ToviExifInfo&) = default;
    ToviExifInfo& operator=(const ToviExifInfo&) = default;
    virtual ~ToviExifInfo() = default;

    // Reads the six groups from path, or for an ".SVG" path from its main image work file
    // (which MakeMainImageFromSvg must have written). An empty path leaves it unloaded.
    void Load(const QString& path);
    // Empties everything but the image group.
    void Clear();
    bool IsLoaded() const { return loaded; }
    // The file the values were read from: the photograph, or an SVG's main image work file.
    const QString& GetPath() const { return path; }
    const QString& GetMainImagePath() const { return mainImagePath; }

    const ToviTextPairArray& GetDate() const { return date; }
    const ToviTextPairArray& GetImage() const { return *image; }
    const ToviTextPairArray& GetMaker() const { return maker; }
    const ToviTextPairArray& GetFormat() const { return format; }
    const ToviTextPairArray& GetShoot() const { return shoot; }
    const ToviTextPairArray& GetGPS() const { return gps; }

    // Writes the main image of an ".SVG" photograph to its work file; other paths are left.
    void MakeMainImageFromSvg(const QString& svgPath);

private:
    // One row of a group: the code the imaging library answers for, and the row's title.
    class Pack {
    public:
        Pack(int code, const QString& title) : code(code), title(title) {}
        virtual ~Pack() = default;
        int code;
        QString title;
    };
    class Packs : public std::vector<std::unique_ptr<Pack>> {
    public:
        virtual ~Packs() = default;
    };

    static void Load(const QString& path, const Packs& packs, ToviTextPairArray& out);
    void SetMainImagePath(const QString& svgPath);

    QString path;
    bool loaded = false;
    ToviTextPairArray date;
    ToviNotCopied<ToviTextPairArray, ToviCopyPolicy::Keep> image;
    ToviTextPairArray maker;
    ToviTextPairArray format;
    ToviTextPairArray shoot;
    ToviTextPairArray gps;
    QString mainImagePath;
};
