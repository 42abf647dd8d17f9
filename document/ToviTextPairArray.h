#pragma once

#include "document/ToviTextPair.h"

#include <QList>
#include <QStringList>

// An ordered list of title/value pairs. Look-ups compare exactly and case sensitively.
class ToviTextPairArray : public QList<ToviTextPair> {
public:
    using QList<ToviTextPair>::QList;
    ToviTextPairArray() = default;
    ToviTextPairArray(const ToviTextPairArray&) = default;
    ToviTextPairArray& operator=(const ToviTextPairArray&) = default;
    virtual ~ToviTextPairArray() = default;

    // out is emptied, then holds every item text in order.
    void GetItems(QStringList& out) const;
    // out is emptied, then holds every value text in order.
    void GetValues(QStringList& out) const;
    void ToArray(QStringList& items, QStringList& values) const;
    // The value of the first pair with this item; value is left alone when there is none.
    void GetValue(const QString& item, QString& value) const;
    // Appends (without emptying values first) the value of every pair with this item.
    void GetValue(const QString& item, QStringList& values) const;
    bool IsExistItem(const QString& item) const;
};
