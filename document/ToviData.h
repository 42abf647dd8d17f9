#pragma once

#include "document/ToviItemArray.h"
#include "document/ToviItemDef.h"
#include "document/ToviNode.h"
#include "document/ToviPathTitles.h"
#include "document/ToviPhotoArray.h"
#include "document/ToviPhotoRef.h"
#include "extraction/ToviExtractionConditions.h"
#include "platform/MibPathResolver.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <memory>
#include <optional>
#include <vector>

class QObject;
class QWidget;
class ToviHostDocument;
class ToviImageCheckCommon;
class ToviItemManager;
class ToviLabelManager;
class ToviPhoto;
class ToviPhotoCtrlVisualSetting;
class ToviSortCondition;

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
    // Stores the delivery's folder, ending in a separator; the files are looked for anew.
    virtual void RootPath(const QString& path);
    // Finds the photographs' files under the root as the disc spells them, kept inside it.
    const MibPathResolver& GetPathResolver() const { return pathResolver; }
    virtual bool IsPhotoArrayEmpty() const { return curPhotos.IsEmpty(); }

    ToviItemDef* GetItemDef() { return &itemDef; }
    const ToviItemDef* GetItemDef() const { return &itemDef; }
    ToviPhotoArray* GetPhotoDataArray() { return &photoData; }
    ToviItemArray* GetMngItemPhoto() { return &mngItems; }
    const ToviItemArray* GetMngItemPhoto() const { return &mngItems; }
    ToviHostDocument* GetHostDocument() const { return hostDocument; }
    // ToviPhoto::MakePath on every photograph, in order.
    void MakePath();
    // The definitions photographs' paths are made from, for the stand-alone (relative file
    // names) or the full-path mode; found by title on first use and kept.
    const ToviPathTitles& GetPathTitles(bool standAlone) const;
    bool IsStandAlone() const { return standAlone; }
    void SetStandAlone(bool on) { standAlone = on; }
    PhotoXMLReadErr GetErrorType() const { return errorType; }
    void SetErrorType(PhotoXMLReadErr type) { errorType = type; }
    // What the load had to mend or leave out, for the delivery checks: values in which bytes
    // that are not Shift_JIS became U+FFFD, and photographs (or occurrences of a repeating
    // block) that lacked an element whose data count is "0" and so were not read.
    struct LoadFaults {
        // One thing left out: a whole photograph (index -1), or one occurrence of a repeating
        // block inside the photograph now at index, or inside the management items (ordinal 0).
        struct Dropped {
            int ordinal = 0;      // 1-based among the 写真情報 elements of the file; 0 for none
            int index = -1;       // the photograph that kept its other values; -1 for none
            QString serial;       // its シリアル番号 as written, when it had one
            QString missing;      // the element that was not there
            QString block;        // the repeating block that was left out; empty for a photograph
            int occurrences = 1;  // of that block in one photograph (missing: of the first)
        };
        // Only the first ones are kept in full; droppedPhotoCount and droppedBlockCount count
        // them all.
        static constexpr int kDroppedKept = 10000;

        int undecodableValues = 0;
        QList<Dropped> dropped;
        int droppedPhotoCount = 0;
        int droppedBlockCount = 0;
        // The ordinal of every photograph left out, ascending: the photograph index of the
        // 写真情報 element at ordinal n is n - 1 less the ordinals below n in this list.
        std::vector<int> droppedOrdinals;
        // How many 写真情報 elements the walk went through, read or left out. Those after
        // them in the file were not reached (something unknown stood between).
        int photoBlocks = 0;
        bool incompleteManagement = false;
        // The photograph index of the 写真情報 element at ordinal (1-based); -1 when that one
        // was left out or not reached.
        int IndexOfOrdinal(int ordinal) const;
    };
    const LoadFaults& GetLoadFaults() const { return loadFaults; }
    void SetLoadFaults(const LoadFaults& faults) { loadFaults = faults; }

    int GetTotalCountPhoto() const { return static_cast<int>(photoData.size()); }
    int GetCurrentPhotoCount() const { return curPhotos.GetSize(); }
    // The photograph at a current position; null outside the current array.
    ToviPhoto* GetPhoto(int pos) const;
    // The photograph at a photo index; null outside the actual array.
    ToviPhoto* GetPhotoActualPhotoArray(int index) const;
    // The photo index at a current position: -1 on an empty current array, an
    // std::out_of_range outside a non-empty one.
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

    // ---- classification tree (ToviDataTree.cpp) ------------------------------------------------
    // Rebuilds the tree (0 and 2 by work type, 1 by shooting place) and the current array
    // under the node that holds the selected photograph. Broadcasts nothing.
    void BuildTreeNode(int treeType);

    // ---- selection (ToviDataTree.cpp) ----------------------------------------------------------
    // Selects a node: the current array becomes everything under it, extracted and sorted,
    // and hint 2 goes out. Re-selecting the selected node does nothing unless forced.
    // Answers the node selected before.
    virtual ToviNode* SetSelected(ToviNode* node, bool force);
    // Selects a label: the current array becomes every photograph carrying it (no
    // extraction); a negative label empties it.
    virtual void SetSelected(int label);
    // Selects the node that holds the selected photograph, else the root and its first
    // photograph.
    void SetSelected();
    // Makes the photograph at a photo index the selected one (hint 10).
    bool PhotoSelectSetting(int index);
    int GetSelectedIndex() const { return selectedLabel; }
    ToviNode* GetSelectedNode() const { return selectedNode; }
    ToviPhoto* GetSelectedPhoto() const;
    // The current position of the selected photograph, or -1.
    int GetSelectCurIndex() const;
    // Sets pos to the first current position whose photograph is selected (-1 when none);
    // leaves it alone on an empty current array.
    virtual void GetIndexSelected(int& pos) const;

    // ---- labels (ToviDataLabels.cpp) -----------------------------------------------------------
    virtual ToviLabelManager* GetLabelManager() { return labelManager.get(); }
    // Empties out, then adds the photo index of every photograph carrying label, in actual
    // order; answers how many.
    int CollectionLabel(unsigned long label, ToviPhotoRef& out) const;
    int CountLabel(unsigned long label) const;
    bool IsCheckStatusChanged() const { return checkStatusChanged; }
    void SetCheckStatusChanged(bool changed) { checkStatusChanged = changed; }
    // Whether a photograph of the current array has a comment; an empty current array leaves
    // the answer as it was.
    void UpdateHasComment();
    // Asks the user for one of the three batch corrections of the labels of the current
    // array, confirms, runs it and sends hint 6.
    bool AllLabelCorrection();
    // Clears every label and comment of the current array.
    virtual void AllRemoveLabel();

    // ---- inspection record (ToviDataExamination.cpp) ------------------------------------------
    // Writes the comment and labels of every photograph of the actual array to path; false
    // with *result set to a ToviExamResult code (an empty path: false, result untouched).
    // A success clears the check status changed flag.
    virtual bool SaveExamination(const QString& path, const QString& note, int* result);
    // Merges a record into the photographs (a value the file lacks stays); false with
    // *result set, nothing changed. Leaves the changed flag alone and sends no hint.
    virtual bool LoadExamination(const QString& path, int* result);
    // The same record, each photograph also naming its image file; the changed flag stays.
    // Answers whether it was written, with the reason in *result when given (the viewer
    // ignores both; the command line reports them).
    bool ReturnExam(const QString& path, int* result = nullptr);

    // ---- the index file (ToviDataIndex.cpp) ---------------------------------------------------
    // The copy of the delivery's index file that points at its stylesheet, made on the first
    // call and kept; empty (and tried again next time) when there is no index file, no
    // stylesheet for it, or no copy could be made.
    QString GetIndexPath();

    // ---- sort (ToviDataExtraction.cpp) ---------------------------------------------------------
    // Orders the current array by the sort condition's key and direction.
    virtual void Sort();
    const ToviSortCondition& GetSortCondition() const { return *sortCondition; }
    ToviSortCondition* GetSortConditionObject() { return sortCondition.get(); }
    // Copies the condition (sorting off forces ascending); doesn't sort.
    void SetSortCondition(const ToviSortCondition& condition);

    // ---- extraction (ToviDataExtraction.cpp) ---------------------------------------------------
    // Where the extraction conditions come from (not owned).
    void SetExtractionData(ToviExtractionSource* source) { extraction = source; }
    ToviExtractionSource* GetExtractionData() const { return extraction; }
    bool IsExtractionOn() const { return extractionOn; }
    // Switches extraction on and rebuilds the current array from the selected node.
    void ExecExtraction();
    // Switches it off and rebuilds the current array unfiltered.
    void CancelExtraction();
    // Switches it off and tells the source; the current array stays as it is.
    void CancelExtraction(ToviExtractionSource::CancelExt value);
    bool ExecExtractionAND();
    bool ExecExtractionOR();
    // Empties the current array (sorting it when sorting is on); hint 4 when update is set.
    void SetCurPhotoArray(bool unused, bool update);
    // Loads and lets go the texts of every photograph, for documents that keep them on disc;
    // this one always holds them.
    virtual void AllTextLoad() {}
    virtual void AllTextUnLoad() {}

    // ---- settings (ToviDataSettings.cpp) -------------------------------------------------------
    ToviPhotoCtrlVisualSetting& GetVisualSetting() { return *visualSetting; }
    const ToviPhotoCtrlVisualSetting& GetVisualSetting() const { return *visualSetting; }
    virtual ToviItemManager* GetItemManager() { return itemManager.get(); }
    // Takes over a setting; the information-list entries always come from the item manager.
    // When forced, or when the tamper-check terms changed, the edit-check hook runs.
    void SetVisualSetting(const ToviPhotoCtrlVisualSetting& setting, bool force);
    // Copies the labels, and the item entries too when withItems is set.
    virtual void SetManager(const ToviLabelManager& labels, const ToviItemManager& items,
                            bool withItems);
    // Replaces the item manager by an empty one.
    virtual void Initialize();
    // Reads the saved settings after a load and derives the information-list entries from this
    // delivery's definitions: the defaults for a new kind of delivery, otherwise everything but
    // the saved hidden titles. Always true.
    virtual bool Load();
    // The camera types of an EditCheckTypes text: its first 19 characters cut at ",", each
    // piece read like atoi and cut to its low eight bits; empty pieces are skipped.
    static QList<int> ParseEditCheckTypes(const QString& types);

    ToviPhotoRef& CurrentArray() { return curPhotos; }
    const ToviPhotoRef& CurrentArray() const { return curPhotos; }

    // ---- tamper checks (ToviDataImageCheck.cpp) ------------------------------------------------
    // Runs the verifier chain on the photograph's image and stores the result on it (1
    // unaltered, 2 altered, 3 anything else), anew on every call; does nothing while the check
    // is off or no type is set.
    void CheckEditJPEG(ToviPhoto* photo);
    // Sets the result of every photograph back to 0 (not checked).
    void Initialize_CheckEditJPEG();
    // The check over every photograph of the current array, in order, under a progress window
    // that moves at least every kEditCheckUpdateMs and can be cancelled. counts[r] is how many
    // photographs have the result r; a cancel keeps the results so far and counts them alone.
    // Answers false when cancelled. Checks nothing while the check is off or no type is set.
    static constexpr int kEditCheckUpdateMs = 50;
    bool CheckEditJPEGCurrent(std::array<int, 4>& counts, QWidget* owner = nullptr);
    ToviImageCheckCommon* GetImageCheck() const { return imageCheck.get(); }

    // Broadcasts HintPhotoInfoChanged, skipping sender.
    void UpdatePhotoInf(QWidget* sender);
    // Sends hint to every view of the host's document (nothing without one).
    void Broadcast(QWidget* sender, UpdateHint hint, QObject* object = nullptr) const;

protected:
    virtual ToviSortCondition* OnCreateSortCondition();
    virtual ToviPhotoCtrlVisualSetting* OnCreateVisualSettings();
    // Called by SetVisualSetting when the tamper-check terms changed (or it was forced), with
    // the camera types of the new setting: rebuilds the verifier chain and forgets every
    // photograph's result.
    virtual void OnEditCheckTermsChanged(const QList<int>& cameraTypes);
    void BuildTreeNodeForKousyu(int treeType);
    void BuildTreeNodeForSatsueikasyo();
    // Depth first from from, a node before its children: the first node holding photoIndex.
    ToviNode* GetNode(int photoIndex, ToviNode* from);
    bool AllOKLabel();
    bool AllRemoveCheckLabel();
    void ExtractionProcess();

private:
    // The photograph at a photo index; outside the actual array is an std::out_of_range.
    ToviPhoto* PhotoAt(int index) const;
    // Fills the current array from everything under node, extracts and sorts.
    void RebuildCurrentArray(ToviNode* node);
    bool RunExtraction(bool orMode);

    QString rootPath;
    MibPathResolver pathResolver;
    ToviHostDocument* hostDocument;
    ToviPhotoArray photoData;
    ToviItemArray mngItems;
    ToviPhotoRef curPhotos;
    ToviNode* selectedNode = nullptr;
    int selectedLabel = -1;
    std::unique_ptr<ToviPhotoCtrlVisualSetting> visualSetting;
    std::unique_ptr<ToviLabelManager> labelManager;
    std::unique_ptr<ToviSortCondition> sortCondition;
    std::unique_ptr<ToviItemManager> itemManager;
    ToviItemDef itemDef;
    int selectedPhoto = -1;
    bool checkStatusChanged = false;
    bool standAlone = true;
    ToviExtractionSource* extraction = nullptr;
    QString indexPath;
    PhotoXMLReadErr errorType = ReadErrNone;
    LoadFaults loadFaults;
    mutable std::array<std::optional<ToviPathTitles>, 2> pathTitles;  // by stand-alone
    bool extractionOn = false;
    bool hasComment = true;
    std::unique_ptr<ToviImageCheckCommon> imageCheck;  // the tamper-check chain
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
