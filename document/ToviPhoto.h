#pragma once

#include "document/ToviPathTitles.h"
#include "document/ToviNotCopied.h"
#include "document/ToviItemArray.h"
#include "document/ToviTextPairArray.h"
#include "imagefacts/ToviExifInfo.h"
#include "platform/LumImage.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <array>

class ToviControlValueArray;
class ToviData;
class ToviItemDef;
class ToviItemShowSettings;

// One photograph of the delivery: its items from PHOTO.XML, the paths of its image and
// reference drawings, the inspector's labels and comment, and the decoded picture.
class ToviPhoto {
public:
    enum EditJPEGCheckResult {
        EditCheckNone = 0,
        EditCheckUnaltered = 1,
        EditCheckAltered = 2,
        EditCheckUnknown = 3
    };
    static constexpr int kLabelCount = 6;

    ToviPhoto() = default;
    // A loose image file: no document, no items.
    explicit ToviPhoto(const QString& path);
    // The reader's form: copies the items and builds the paths at once.
    ToviPhoto(ToviData* document, const ToviItemArray& items);
    // Copies carry labels, comment and paths but neither the picture nor the existence test.
    // Copies carry everything but the loaded image, the Exif facts and whether the file
    // exists: a copy-constructed photograph has none of them; an assigned one keeps its own
    // Exif facts and existence flag and has its image released.
    ToviPhoto(const ToviPhoto&) = default;
    ToviPhoto& operator=(const ToviPhoto&) = default;
    virtual ~ToviPhoto() = default;

    virtual void Select(bool on) { selected = on; }
    virtual bool IsSelected() const { return selected; }
    // The image path, built first when it is still empty. In a delivery opened from its
    // folder the first call looks the files up on the disc (see MibPathResolver): from then
    // on the paths are the files' own spelling, or empty for a file that would lie outside.
    virtual const QString& GetImagePath();
    virtual void GetImagePath(QString& path);
    // Rebuilds the paths after a media change, keeping files already found.
    virtual void UpdateImagePath();
    // Whether the image and every reference drawing existed at the last UpdateImagePath.
    virtual bool IsExistFile() { return *fileExists; }
    virtual ToviItemArray& GetItems() { return items; }
    virtual const ToviItemArray& GetItems() const { return items; }
    // out receives the reference drawing at index (when there is one and index >= 0).
    virtual void GetPicturePath(QStringList& out, int index);
    virtual const LumImage& GetImage() const { return loaded->image; }
    virtual int GetPictureCount() const { return static_cast<int>(picturePaths.size()); }
    virtual bool IsLabelPasted(unsigned int label) const {
        return label < static_cast<unsigned int>(kLabelCount) && labels[label];
    }
    // The photograph accepts any combination of labels: keeping OK and NG apart, and the
    // comment label in step with the comment, is the panels' business.
    virtual void PasteLabel(unsigned int label);
    virtual void RemoveLabel(unsigned int label);
    // Clears all six labels and empties the comment.
    virtual void RemoveAllLabel();
    virtual void ReleaseImage();
    virtual bool LoadThumb();
    virtual bool LoadImage();

    void MakePath();
    void ClearImagePath() {
        imagePath.clear();
        pathsResolved = false;
    }
    const QStringList& PicturePaths() const { return picturePaths; }
    // Appends the file names the user still has to bring (image or drawings not found).
    void GetOutputFilename(QStringList& names);

    // The first value with this definition index; empty when there is none.
    QString GetTitle(int defIndex) const;
    bool GetTitle(int defIndex, QString& value) const;
    // Every value with this definition index, in file order (repeated elements).
    void GetTitleFromIndex(int defIndex, QStringList& values) const;
    // For each index in order, its first value; an index without an item adds nothing.
    void GetTitleFromIndex(const QList<int>& defIndexes, QStringList& values) const;
    // The items shown in the main list or the zoom view, titled by the definitions.
    bool GetTextPairs(const ToviItemDef* def, ToviTextPairArray& pairs) const;

    // Information list as the display settings want it
    // pairs is emptied, then gets one row per shown entry, in the settings' order: every value
    // of a delivery item, or the file or Exif fact of that title. False when it stays empty.
    bool GetTextPairs(const ToviItemDef* def, const ToviItemShowSettings& settings,
                      ToviTextPairArray& pairs) const;

    bool IsOK() const { return labels[0]; }
    bool HasNGLabel() const { return labels[1] || labels[2] || labels[3]; }
    // 未検査: none of OK, NG1, NG2, NG3; the comment and free labels don't count.
    bool IsNotCheck() const { return !labels[0] && !HasNGLabel(); }
    void CorrectAllOK();
    void CorrectAllNotCheck();

    // ---- Exif and file facts (imagefacts/ToviPhotoExif.cpp) ----
    // Whether the image file carries Exif (its version can be read); asked once and kept.
    bool CheckExif();
    // Reads the Exif groups once (building the path first when it is empty).
    void LoadExif();
    const ToviExifInfo& GetExif();
    // An Exif value by its display title, from the groups LoadExif read; empty when unknown.
    void GetExifInfoFromTitle(const QString& title, QString& value) const;
    // A fact of the image file itself by its display title, read anew on every call.
    void GetFileInfoFromTitle(const QString& title, QString& value) const;

    bool IsImageLoaded() const { return loaded->imageLoaded; }
    bool IsThumbLoaded() const { return loaded->thumbLoaded; }
    bool ConvGrayScaleFromMono() { return loaded->image.ConvGrayScaleFromMono(); }

    ToviData* GetDocument() const { return document; }
    QString GetComment() const { return comment; }
    void SetComment(const QString& text) { comment = text; }
    EditJPEGCheckResult GetEditChkResult() const { return editResult; }
    void SetEditChkResult(EditJPEGCheckResult result) { editResult = result; }
    // The local modification date of the image file as "YYYY-MM-DD"; empty when missing.
    QString GetFileRenewalDate();

    // Control values (施工管理値)
    // False when the item's text does not parse; otherwise out holds one row per value, none
    // for a photograph without the item.
    bool GetControlValueArray(ToviControlValueArray& out) const;

protected:
    std::array<bool, kLabelCount> labels{};

private:
    using PathTitles = ToviPathTitles;
    const PathTitles& TitlesForPaths(bool standAlone) const;
    void FullPathWalk(const PathTitles& titles);
    void RelativeWalk(const PathTitles& titles, const QString& root);
    void UpdateWalk(const PathTitles& titles, const QString& root);
    // Looks the built paths up on the disc, once after each walk; the load never does.
    void ResolvePaths();
    QString ResolvedPath(const QString& path) const;
    // Whether a file is there, from the document's listings of its folders where it can.
    bool FileExists(const QString& path) const;
    // The image path as ResolvePaths makes it, for readers that may not store it.
    QString ImageFile() const;

    QString imagePath;
    QStringList picturePaths;
    ToviNotCopied<bool, ToviCopyPolicy::Keep> fileExists;
    bool rebuilding = false;
    bool pathsResolved = false;
    ToviItemArray items;
    int exifState = -1;
    ToviNotCopied<ToviExifInfo, ToviCopyPolicy::Keep> exif;
    bool selected = false;
    struct LoadedImage {
        LumImage image;
        bool thumbLoaded = false;
        bool imageLoaded = false;
    };
    ToviNotCopied<LoadedImage> loaded;
    ToviData* document = nullptr;
    QString comment;
    EditJPEGCheckResult editResult = EditCheckNone;
};
