#pragma once

#include "document/ToviItemArray.h"
#include "document/ToviNode.h"
#include "document/ToviPhotoArray.h"
#include "document/ToviPhotoRef.h"
#include "loading/ToviItemDef.h"

#include <QString>
#include <QStringList>

class QObject;
class QWidget;
class ToviHostDocument;
class ToviPhoto;

// One open delivery: its photographs (the actual array), its management items, the
// classification tree (the document is the tree's root), the current array and selection,
// and the link to the host's document through which every change is broadcast.
class ToviData : public ToviNode {
public:
    // The numbers that travel through ToviHostDocument::UpdateAllViews.
    enum UpdateHint {
        HintInitialize = 0,
        HintRefresh1 = 1,
        HintSelectionChanged = 2,
        HintPageReset = 3,
        HintCurrentArrayChanged = 4,
        HintPhotoInfoChanged = 5,
        HintLabelsChanged = 6,
        HintSettingsChanged = 7,
        HintRefresh8 = 8,
        HintDetach = 9,
        HintPhotoSelected = 10,
        HintRefresh11 = 11,
    };

    // Reads the item definitions for the PHOTO.XML in path; a failure is kept as the error
    // type and never fails construction.
    ToviData(ToviHostDocument* hostDocument, const QString& path, PhotoXMLType type);
    ~ToviData() override;
    ToviData(const ToviData&) = delete;
    ToviData& operator=(const ToviData&) = delete;

    virtual const QString& RootPath() const { return rootPath; }
    // Stores the delivery's folder, ending in a separator.
    virtual void RootPath(const QString& path);
    virtual bool IsPhotoArrayEmpty() const { return curPhotos.IsEmpty(); }

    ToviItemDef* GetItemDef() { return &itemDef; }
    const ToviItemDef* GetItemDef() const { return &itemDef; }
    ToviPhotoArray* GetPhotoDataArray() { return &photoData; }
    ToviItemArray* GetMngItemPhoto() { return &mngItems; }
    ToviHostDocument* GetHostDocument() const { return hostDocument; }
    // ToviPhoto::MakePath on every photograph, in order.
    void MakePath();
    bool IsStandAlone() const { return standAlone; }
    void SetStandAlone(bool on) { standAlone = on; }
    PhotoXMLReadErr GetErrorType() const { return errorType; }
    void SetErrorType(PhotoXMLReadErr type) { errorType = type; }

    int GetTotalCountPhoto() const { return static_cast<int>(photoData.size()); }
    int GetCurrentPhotoCount() const { return curPhotos.GetSize(); }
    // The photograph at a current position; null outside the current array.
    ToviPhoto* GetPhoto(int pos) const;
    // The photograph at a photo index; null outside the actual array.
    ToviPhoto* GetPhotoActualPhotoArray(int index) const;
    // The photo index at a current position: -1 on an empty current array, an
    // invalid-argument failure outside a non-empty one.
    int GetPhotoIndex(int pos) const;
    // The same, but -1 for any position outside.
    int GetIndexPhotoArray(int pos) const;
    unsigned long NodeCount() const { return DescendantCount(); }
    bool HasComment() const { return hasComment; }
    // 1 when any photograph carries any label, else 0.
    int IsLabeled() const;
    // Appends every distinct non-empty value of the item titled title over all photographs;
    // true when an empty value was met. False when no definition has that title.
    bool GetPhotoItemValue(const QString& title, QStringList& values);

    ToviPhotoRef& CurrentArray() { return curPhotos; }
    const ToviPhotoRef& CurrentArray() const { return curPhotos; }

    // Broadcasts HintPhotoInfoChanged, skipping sender.
    void UpdatePhotoInf(QWidget* sender);
    // Sends hint to every view of the host's document (nothing without one).
    void Broadcast(QWidget* sender, UpdateHint hint, QObject* object = nullptr) const;

private:
    QString rootPath;
    ToviHostDocument* hostDocument;
    ToviPhotoArray photoData;
    ToviItemArray mngItems;
    ToviItemArray reservedItems;  // kept beside mngItems; nothing fills it
    ToviPhotoRef curPhotos;
    ToviNode* selectedNode = nullptr;
    int selectedLabel = -1;
    ToviItemDef itemDef;
    int selectedPhoto = -1;
    bool checkStatusChanged = false;
    bool standAlone = true;
    QString indexPath;
    PhotoXMLReadErr errorType = ReadErrNone;
    bool extractionOn = false;
    bool hasComment = true;
};

// Makes and clears photograph arrays for a document. The two Create operations are hooks
// that do nothing here.
class ToviPhotoArrayFactory {
public:
    explicit ToviPhotoArrayFactory(ToviData& document) : document(document) {}
    virtual ~ToviPhotoArrayFactory() = default;
    virtual void CreateRightUnder(ToviPhotoArray&, const QString&) {}
    virtual void CreateUnder(ToviPhotoArray&, const QString&) {}
    // Deletes every photograph of the array and leaves it empty.
    virtual void ClearAway(ToviPhotoArray& photos);

protected:
    ToviData& document;
};
