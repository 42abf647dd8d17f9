#pragma once

#include "document/ToviItem.h"

#include <QList>

// The items of a photograph or of the delivery, in file order. Order matters: repeated
// values and block values are told apart by it alone.
class ToviItemArray : public QList<ToviItem> {
public:
    using QList<ToviItem>::QList;
    ToviItemArray() = default;
    ToviItemArray(const ToviItemArray&) = default;
    ToviItemArray& operator=(const ToviItemArray&) = default;
    ToviItemArray(ToviItemArray&&) = default;
    ToviItemArray& operator=(ToviItemArray&&) = default;
    virtual ~ToviItemArray() = default;
};
