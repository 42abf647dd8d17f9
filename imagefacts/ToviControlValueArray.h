#pragma once

#include <QList>
#include <QString>

// One row of the host's form of the control values, in the order of ToviControlValue.
struct ToviControlValueRow {
    QString name;
    QString design;
    QString actual;
    QString difference;

    bool operator==(const ToviControlValueRow&) const = default;
};

// The control values as plain records, filled by ToviPhoto::GetControlValueArray.
class ToviControlValueArray : public QList<ToviControlValueRow> {
public:
    using QList<ToviControlValueRow>::QList;
};
