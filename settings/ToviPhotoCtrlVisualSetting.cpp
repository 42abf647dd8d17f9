#include "settings/ToviPhotoCtrlVisualSetting.h"

#include "platform/ToviProfile.h"

const QString ToviPhotoCtrlVisualSetting::VisualSettingSection_ = QStringLiteral("VisualSetting");
const QString ToviPhotoCtrlVisualSetting::TextArrangeEntry_ = QStringLiteral("TextArrange");
const QString ToviPhotoCtrlVisualSetting::TreeTypeEntry_ = QStringLiteral("TreeType");
const QString ToviPhotoCtrlVisualSetting::DivideTypeEntry_ = QStringLiteral("DivideType");
const QString ToviPhotoCtrlVisualSetting::TitleShowTypeEntry_ = QStringLiteral("TitleShowType");
const QString ToviPhotoCtrlVisualSetting::DoEditCheck_ = QStringLiteral("DoEditCheck");
const QString ToviPhotoCtrlVisualSetting::VisibleDetail_ = QStringLiteral("VisibleDetail");
const QString ToviPhotoCtrlVisualSetting::VisibleProperty_ = QStringLiteral("VisibleProperty");
const QString ToviPhotoCtrlVisualSetting::VisibleComment_ = QStringLiteral("VisibleComment");
const QString ToviPhotoCtrlVisualSetting::VisibleControlValue_ =
    QStringLiteral("VisibleControlValue");
const QString ToviPhotoCtrlVisualSetting::EditCheckTypes_ = QStringLiteral("EditCheckTypes");
const QString ToviPhotoCtrlVisualSetting::EditCheckType_ = QStringLiteral("EditCheckType");

namespace {

// Integers and truth values are stored as value + 100, so that anything below 100 (and the
// -1 default of an entry never written) reads as "nothing saved".
constexpr int kBias = 100;

ToviProfile& Profile() {
    return ToviProfile::Instance();
}

// The stored number, or -1 (or below) when nothing usable was saved. There is no range check:
// a stored 150 in DivideType makes the mode 50.
qint64 ReadNumber(const QString& entry) {
    return qint64{Profile().GetProfileInt(ToviPhotoCtrlVisualSetting::VisualSettingSection_, entry,
                                          -1)} -
           kBias;
}

template <typename Enum>
void ReadEnum(const QString& entry, Enum& field) {
    const qint64 value = ReadNumber(entry);
    if (value >= 0) {
        field = static_cast<Enum>(static_cast<int>(value));
    }
}

void ReadFlag(const QString& entry, bool& field) {
    const qint64 value = ReadNumber(entry);
    if (value >= 0) {
        field = value != 0;
    }
}

bool WriteNumber(const QString& entry, int value) {
    // Wraps rather than overflows for a value no dialog can set.
    const int stored = static_cast<int>(static_cast<unsigned int>(value) + kBias);
    return Profile().WriteProfileInt(ToviPhotoCtrlVisualSetting::VisualSettingSection_, entry,
                                     stored);
}

}  // namespace

ToviPhotoCtrlVisualSetting::~ToviPhotoCtrlVisualSetting() {
    Save();
}

unsigned long ToviPhotoCtrlVisualSetting::GetRowCount() const {
    switch (divType) {
        case Divide1:
            return 1;
        case Divide2:
            return 2;
        case Divide3:
            return 3;
        case Divide4:
            return 2;
        case DivideThumbList:
        case DivideManagementList:
            return 0;
        case Divide6:
        default:
            return 3;
    }
}

unsigned long ToviPhotoCtrlVisualSetting::GetColCount() const {
    switch (divType) {
        case Divide1:
        case Divide2:
        case Divide3:
            return 1;
        case DivideThumbList:
        case DivideManagementList:
            return 0;
        case Divide4:
        case Divide6:
        default:
            return 2;
    }
}

unsigned long ToviPhotoCtrlVisualSetting::GetCountOfSet() const {
    switch (divType) {
        case Divide1:
            return 1;
        case Divide2:
            return 2;
        case Divide3:
            return 3;
        case Divide4:
            return 4;
        case DivideThumbList:
        case DivideManagementList:
            return 0;
        case Divide6:
        default:
            return 6;
    }
}

bool ToviPhotoCtrlVisualSetting::IsPreviewStyle() const {
    return divType >= Divide1 && divType <= Divide6;
}

bool ToviPhotoCtrlVisualSetting::IsThumbListStyle() const {
    return divType == DivideThumbList;
}

bool ToviPhotoCtrlVisualSetting::IsManagementListStyle() const {
    return divType == DivideManagementList;
}

bool ToviPhotoCtrlVisualSetting::IsChangeEditCheckTerm(
    const ToviPhotoCtrlVisualSetting& other) const {
    if (doEditCheck != other.doEditCheck) {
        return true;
    }
    return doEditCheck && editCheckTypes != other.editCheckTypes;
}

bool ToviPhotoCtrlVisualSetting::Load() {
    ReadEnum(TextArrangeEntry_, imageTextArrange);
    ReadEnum(TreeTypeEntry_, treeType);
    ReadEnum(DivideTypeEntry_, divType);
    ReadEnum(TitleShowTypeEntry_, titleShowType);
    ReadFlag(DoEditCheck_, doEditCheck);
    ReadFlag(VisibleDetail_, visibleDetail);
    ReadFlag(VisibleProperty_, visibleProperty);
    ReadFlag(VisibleComment_, visibleComment);
    ReadFlag(VisibleControlValue_, visibleControlValue);
    editCheckTypes = Profile().GetProfileString(VisualSettingSection_, EditCheckTypes_, QString());
    if (editCheckTypes.isEmpty()) {
        editCheckTypes = QStringLiteral("1");
    }
    return true;
}

bool ToviPhotoCtrlVisualSetting::Save() const {
    return WriteNumber(TextArrangeEntry_, imageTextArrange) &&
           WriteNumber(TreeTypeEntry_, treeType) && WriteNumber(DivideTypeEntry_, divType) &&
           WriteNumber(TitleShowTypeEntry_, titleShowType) &&
           WriteNumber(DoEditCheck_, doEditCheck ? 1 : 0) &&
           WriteNumber(VisibleDetail_, visibleDetail ? 1 : 0) &&
           WriteNumber(VisibleProperty_, visibleProperty ? 1 : 0) &&
           WriteNumber(VisibleComment_, visibleComment ? 1 : 0) &&
           WriteNumber(VisibleControlValue_, visibleControlValue ? 1 : 0) &&
           Profile().WriteProfileString(VisualSettingSection_, EditCheckTypes_, editCheckTypes);
}
