#include "settings/ToviItemShowSetting.h"

bool ToviItemShowSetting::operator==(const ToviItemShowSetting& other) const {
    return title == other.title && bold == other.bold && index == other.index &&
           grade == other.grade && infoType == other.infoType;
}
