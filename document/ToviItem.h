#pragma once

#include <QString>

// One element read from PHOTO.XML: the index of its definition and its text, kept as the
// file had it (dates keep the file's form, numbers stay text).
class ToviItem {
public:
    ToviItem() = default;
    ToviItem(int defIndex, const QString& value) : defIndex(defIndex), value(value) {}

    int GetDefIndex() const { return defIndex; }
    void SetDefIndex(int index) { defIndex = index; }
    QString GetValue() const { return value; }
    void GetValue(QString& out) const { out = value; }
    void SetValue(const QString& text) { value = text; }
    // The text without a copy, for look-ups inside the library.
    const QString& Value() const { return value; }

private:
    int defIndex = -1;
    QString value;
};
