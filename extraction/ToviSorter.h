#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class ToviData;
class ToviPhotoRef;

// Reorders the document's current array by the value of one management item. A sorter lives
// for one sort: PrepareSort takes the keys out of the photographs once, QuickSort orders them
// and writes the new order back. Only the current array changes, never the photographs.
class ToviSorter {
public:
    // One entry of the array being sorted.
    struct Data {
        bool numeric = false;  // compare by number (the key "シリアル番号") instead of text
        int index = -1;        // the photo index
        int number = -1;       // the leading decimal number of text, when numeric
        QString text;          // the item's value; empty when the photograph has none
        QByteArray bytes;      // text in code page 932, what a text comparison looks at
    };

    ToviSorter() = default;
    explicit ToviSorter(ToviData* data) : data(data) {}
    virtual ~ToviSorter() = default;

    // Takes the key of every entry of ref, which must be the document's current array: the
    // values are read by position from that array. An empty ref leaves the entries as they
    // were.
    virtual void PrepareSort(const QString& key, const ToviPhotoRef& ref);
    // Orders the prepared entries and replaces ref's content with their indexes; nothing
    // happens when there are none.
    virtual void QuickSort(bool ascending, ToviPhotoRef& ref);
    // Always null.
    virtual void* EndSort() const { return nullptr; }

    // A total order: key first (number or code page 932 bytes, unsigned), then photo index.
    // Only a's numeric flag is looked at. <0 or >0, never 0 for distinct indexes.
    static int CompareUp(const Data& a, const Data& b);
    // The exact mirror of CompareUp, tie-break included.
    static int CompareDown(const Data& a, const Data& b);

    // The prepared entries, in the order of the array they were taken from.
    const QList<Data>& Entries() const { return array; }

private:
    // The key alone: numbers, or code page 932 bytes compared unsigned. -1, 0 or 1.
    static int CompareKeys(const Data& a, const Data& b);

    ToviData* data = nullptr;
    QList<Data> array;
};
