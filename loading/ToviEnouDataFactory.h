#pragma once

#include "document/ToviData.h"
#include "loading/ToviDataFactory.h"

#include <QByteArray>
#include <QString>

#include <vector>

class DoxDocument;
class DoxIterator;
class ToviItemArray;
class ToviItemDef;
class ToviPhotoArray;

// Reads an electronic delivery: walks PHOTO.XML against the item definitions of its kind
// into the document's management items and photographs.
class ToviEnouDataFactory : public ToviDataFactory {
public:
    ToviEnouDataFactory() = default;

    // Why the last load returned no document, in one Japanese sentence; empty after a load
    // that succeeded. The host words its own messages; the command line prints this one.
    const QString& GetLoadError() const { return loadError; }
    // Why a document this factory made carries its error type, in one Japanese sentence
    // naming the folder or file at fault; empty for no error and for "no photographs".
    QString GetErrorTypeText(const ToviData& document) const;

    // The copy of the index file that points at its stylesheet (ToviItemDef::MakeIndexCopy).
    QString GetNewIndexPath(const QString& indexPath, const QString& stylesheetPath) {
        return ToviItemDef::MakeIndexCopy(indexPath, stylesheetPath);
    }

    // ---- media combine (ToviEnouDataFactoryCombine.cpp) ----
    // Gathers a delivery spread over several discs. A folder on optical or removable media is
    // copied into the work area "QV-CombineData" (the files beside it too, such as the index),
    // and the document is pointed at the copy; a folder on a fixed, remote or RAM disk is
    // opened in place. Then, while photographs or drawings are missing, the user is asked for
    // the next folder ("OpenNextDataDlg"), whose files are added in turn. rebuildPaths makes
    // the photographs forget the paths they had on the first disc once it is copied. True
    // when the run ended normally, a cancel included; false for a folder of an unusable kind
    // or a failed copy, after the message and with the work area removed.
    bool StartCombineProc(const QString& path, ToviData* document, bool rebuildPaths,
                          QWidget* parent = nullptr);
    // Removes the work area of the combine, showing a wait window meanwhile.
    void DeleteTempData(QWidget* parent = nullptr);
    // The folder the document was last pointed at by a combine run.
    QString GetDataFolderPath() const { return dataFolderPath; }
    // The work area and its photo folder; empty without a suite folder.
    QString CombineFolder() const;
    QString CombinePhotoFolder() const;

protected:
    std::unique_ptr<ToviData> OnNewDocumentInstance(ToviHostDocument* hostDocument) override;
    bool OnLoad(ToviLoadCallback callback, void* arg) override;

private:
    bool Walk(ToviItemDef* def, DoxIterator& it, ToviLoadCallback callback, void* arg);
    // The repeating photograph block. False when some photograph lacked an element whose
    // data count is "0": that photograph is left out (listed in the load faults) and the walk
    // goes on with the next; or when a repeating block inside one lost an occurrence.
    [[nodiscard]] bool LoadPhotoItem(ToviItemDef* def, ToviPhotoArray* photos, DoxIterator& it,
                                     int& index, ToviLoadCallback callback, void* arg);
    // A repeating block inside either; false when an occurrence lacked an element of data
    // count "0": that occurrence is left out (blockDrops, blockMissing), the others stay.
    [[nodiscard]] bool LoadBlockPuralData(ToviItemDef* def, ToviItemArray& items, DoxIterator& it,
                                          int& index, ToviLoadCallback callback, void* arg);
    // Lists something left out in the load faults; count occurrences for a block.
    void RecordDropped(int ordinal, int index, const QString& serial, const QString& missing,
                       const QString& block, int count);
    // The value of the シリアル番号 definition among items; empty when it has none.
    static QString SerialOf(const ToviItemArray& items, int serialDef);
    void StoreElement(const ToviItemDef* def, int i, ToviItemArray& items, DoxIterator& it);
    // The element's text, shared with the previous value of the same definition when equal.
    QString ValueOf(int i, const DoxIterator& it);

    // The last value each definition took, by definition index: consecutive photographs
    // mostly share 工種, dates and flags, so those share one copy. data points into the
    // slice of the file parsed as generation, and is only looked at while that one stands.
    struct LastValue {
        quint64 generation = 0;
        const char* data = nullptr;
        qsizetype size = 0;
        QString text;
    };

    // A PHOTO.XML larger than this is refused before it is read.
    static constexpr qint64 kLargestFile = qint64(1) << 30;

    QString loadError;
    QString dataFolderPath;
    qint64 budget = 0;     // bytes the document may take, from the file's size
    qint64 used = 0;       // what it takes so far, estimated
    bool refused = false;  // the load passed the budget and stopped
    std::vector<LastValue> lastValues;
    QByteArray scratch;                   // text gathered from several nodes
    const DoxDocument* source = nullptr;  // the file being walked
    ToviData::LoadFaults faults;
    int blockDrops = 0;    // occurrences the last LoadBlockPuralData left out
    QString blockMissing;  // the first element they lacked
};
