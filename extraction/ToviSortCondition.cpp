#include "extraction/ToviSortCondition.h"

#include "platform/ToviProfile.h"

const QString ToviSortCondition::SortSection_ = QStringLiteral("Sort");
const QString ToviSortCondition::ExecSortEntry_ = QStringLiteral("ExecSort");
const QString ToviSortCondition::AscendingEntry_ = QStringLiteral("Ascending");
const QString ToviSortCondition::KeyItemEntry_ = QStringLiteral("KeyItem");

namespace {

// Integers are stored as value + 100, so that anything below 100 (and the -1 default of an
// entry never written) reads as "nothing saved".
constexpr int kBias = 100;
const QString kUndefined = QStringLiteral("_未定義_");

void ReadFlag(const QString& entry, bool& field) {
    const int value =
        ToviProfile::Instance().GetProfileInt(ToviSortCondition::SortSection_, entry, -1) - kBias;
    if (value >= 0) {
        field = value != 0;
    }
}

bool WriteFlag(const QString& entry, bool value) {
    return ToviProfile::Instance().WriteProfileInt(ToviSortCondition::SortSection_, entry,
                                                   (value ? 1 : 0) + kBias);
}

}  // namespace

ToviSortCondition& ToviSortCondition::operator=(const ToviSortCondition& other) {
    execSort = other.execSort;
    keyItem = other.keyItem;
    ascending = other.ascending || !other.execSort;
    return *this;
}

ToviSortCondition::~ToviSortCondition() {
    Save();
}

void ToviSortCondition::ExecSort(bool on) {
    execSort = on;
    if (!on) {
        ascending = true;
    }
}

bool ToviSortCondition::Load() {
    // The invariant is not enforced here: a stored "off, descending" loads as it was saved.
    ReadFlag(ExecSortEntry_, execSort);
    ReadFlag(AscendingEntry_, ascending);
    const QString key =
        ToviProfile::Instance().GetProfileString(SortSection_, KeyItemEntry_, kUndefined);
    if (key != kUndefined && !key.isEmpty()) {
        keyItem = key;
    }
    return true;
}

bool ToviSortCondition::Save() const {
    return WriteFlag(ExecSortEntry_, execSort) && WriteFlag(AscendingEntry_, ascending) &&
           ToviProfile::Instance().WriteProfileString(SortSection_, KeyItemEntry_, keyItem);
}
