#pragma once

#include <QString>

// Whether the current array is shown in the order of one management item, by which item and
// in which direction. Kept in the profile section "Sort"; the object writes itself back when
// it ends, so a dialog's copy is saved whether the dialog ended by OK or by Cancel.
class ToviSortCondition {
public:
    static const QString SortSection_;     // "Sort"
    static const QString ExecSortEntry_;   // "ExecSort"
    static const QString AscendingEntry_;  // "Ascending"
    static const QString KeyItemEntry_;    // "KeyItem"

    ToviSortCondition() = default;
    ToviSortCondition(const ToviSortCondition& other) = default;
    // Copies the three fields; with sorting off the copy is ascending.
    ToviSortCondition& operator=(const ToviSortCondition& other);
    // Saves unconditionally.
    virtual ~ToviSortCondition();

    bool IsExecSort() const { return execSort; }
    // Switching sorting off also makes the direction ascending.
    void ExecSort(bool on);
    const QString& GetKeyItem() const { return keyItem; }
    void SetKeyItem(const QString& title) { keyItem = title; }
    bool IsAscending() const { return ascending; }
    void Ascending(bool on) { ascending = on; }

    // Reads the entries that were saved; an absent or out-of-range entry leaves its field.
    // Always true.
    bool Load();
    // Writes ExecSort, Ascending and KeyItem in that order; false at the first refused write.
    bool Save() const;

private:
    bool execSort = false;
    QString keyItem = QStringLiteral("撮影年月日");
    bool ascending = true;
};
