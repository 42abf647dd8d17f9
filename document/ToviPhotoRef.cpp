#include "document/ToviPhotoRef.h"

#include "platform/ToviCheck.h"

int ToviPhotoRef::Add(int photoIndex) {
    const int found = Find(photoIndex);
    if (found >= 0) {
        return found;
    }
    indexes.append(photoIndex);
    const int position = static_cast<int>(indexes.size() - 1);
    positions.insert(photoIndex, position);
    return position;
}

int ToviPhotoRef::Append(const ToviPhotoRef& other) {
    int first = -1;
    for (int photoIndex : other.indexes) {
        const int position = Add(photoIndex);
        if (first < 0) {
            first = position;
        }
    }
    return first;
}

int ToviPhotoRef::GetAt(int position) const {
    ToviCheckIndex(position, indexes.size(), "ToviPhotoRef::GetAt");
    return indexes[position];
}

void ToviPhotoRef::RemoveAll() {
    indexes.clear();
    positions.clear();
    positionsValid = true;
}

void ToviPhotoRef::Assign(const QList<int>& photoIndexes) {
    indexes = photoIndexes;
    positions.clear();
    positionsValid = false;
}

int ToviPhotoRef::Find(int photoIndex) const {
    if (!positionsValid) {
        RebuildPositions();
    }
    const auto it = positions.constFind(photoIndex);
    return it == positions.cend() ? -1 : it.value();
}

void ToviPhotoRef::RebuildPositions() const {
    positions.clear();
    positions.reserve(indexes.size());
    // Backwards, so that where an index stands twice its first position wins.
    for (qsizetype i = indexes.size() - 1; i >= 0; --i) {
        positions.insert(indexes[i], static_cast<int>(i));
    }
    positionsValid = true;
}
