#pragma once

#include <QString>

// A title with a value: what the display side works with (Exif groups, property lists).
class ToviTextPair {
public:
    ToviTextPair() = default;
    ToviTextPair(const QString& item, const QString& value) : item(item), value(value) {}
    ToviTextPair(const ToviTextPair&) = default;
    ToviTextPair& operator=(const ToviTextPair&) = default;
    virtual ~ToviTextPair() = default;

    virtual const QString& GetItem() const { return item; }
    virtual const QString& GetValue() const { return value; }
    virtual void UpdateItemAndValue(const QString& newItem, const QString& newValue) {
        item = newItem;
        value = newValue;
    }

private:
    QString item;
    QString value;
};
