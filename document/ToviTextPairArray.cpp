#include "document/ToviTextPairArray.h"

void ToviTextPairArray::GetItems(QStringList& out) const {
    out.clear();
    out.reserve(size());
    for (const ToviTextPair& pair : *this) {
        out.append(pair.GetItem());
    }
}

void ToviTextPairArray::GetValues(QStringList& out) const {
    out.clear();
    out.reserve(size());
    for (const ToviTextPair& pair : *this) {
        out.append(pair.GetValue());
    }
}

void ToviTextPairArray::ToArray(QStringList& items, QStringList& values) const {
    GetItems(items);
    GetValues(values);
}

void ToviTextPairArray::GetValue(const QString& item, QString& value) const {
    for (const ToviTextPair& pair : *this) {
        if (pair.GetItem() == item) {
            value = pair.GetValue();
            return;
        }
    }
}

void ToviTextPairArray::GetValue(const QString& item, QStringList& values) const {
    for (const ToviTextPair& pair : *this) {
        if (pair.GetItem() == item) {
            values.append(pair.GetValue());
        }
    }
}

bool ToviTextPairArray::IsExistItem(const QString& item) const {
    for (const ToviTextPair& pair : *this) {
        if (pair.GetItem() == item) {
            return true;
        }
    }
    return false;
}
