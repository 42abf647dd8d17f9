#pragma once

#include <QHash>
#include <QList>

// The current array: photo indexes in display order, used as an ordered set. A position
// map beside the list keeps Add at constant cost on arrays of any size.
class ToviPhotoRef {
public:
    ToviPhotoRef() = default;
    virtual ~ToviPhotoRef() = default;

    // The position of photoIndex; appended first when it isn't there yet.
    int Add(int photoIndex);
    // Add for each index of other, in order: the position of the first, or -1 when empty.
    int Append(const ToviPhotoRef& other);

    int GetSize() const { return static_cast<int>(indexes.size()); }
    int size() const { return GetSize(); }
    bool IsEmpty() const { return indexes.isEmpty(); }
    // The photo index at a position; outside the array is an invalid-argument failure.
    int GetAt(int position) const;
    int operator[](int position) const { return GetAt(position); }
    void RemoveAll();
    // Replaces the contents (for sorting and extraction); the order given is kept.
    void Assign(const QList<int>& photoIndexes);
    const QList<int>& Indexes() const { return indexes; }
    QList<int>::const_iterator begin() const { return indexes.cbegin(); }
    QList<int>::const_iterator end() const { return indexes.cend(); }
    bool Contains(int photoIndex) const { return Find(photoIndex) >= 0; }
    // The first position of photoIndex, or -1.
    int Position(int photoIndex) const { return Find(photoIndex); }

protected:
    // The position of photoIndex, or -1.
    int Find(int photoIndex) const;

private:
    void RebuildPositions() const;

    QList<int> indexes;
    mutable QHash<int, int> positions;  // photo index -> first position
    mutable bool positionsValid = true;
};
