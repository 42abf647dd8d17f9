#pragma once

#include "imagefacts/ToviExifInfo.h"

// The six Exif groups as they are shown: a key for machine-read output, the heading people
// read, and the group's rows; and the facts of the file itself, in the order the item display
// settings offer them. The command line and the viewer's Exif page show them alike.
struct ToviExifGroup {
    const char* key;
    const char* heading;
    const ToviTextPairArray& (ToviExifInfo::*pairs)() const;
};

// clang-format off
inline constexpr ToviExifGroup kToviExifGroups[] = {
    {"date", "日時", &ToviExifInfo::GetDate},
    {"image", "画像", &ToviExifInfo::GetImage},
    {"maker", "機器と作者", &ToviExifInfo::GetMaker},
    {"format", "形式", &ToviExifInfo::GetFormat},
    {"shoot", "撮影条件", &ToviExifInfo::GetShoot},
    {"gps", "GPS", &ToviExifInfo::GetGPS},
};

inline constexpr const char* kToviFileFactTitles[] = {
    "ファイルサイズ", "幅×高さ", "総画素数", "作成日時", "最終更新日時", "読み取り専用",
};
// clang-format on
