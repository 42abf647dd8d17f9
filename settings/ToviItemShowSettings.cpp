#include "settings/ToviItemShowSettings.h"

#include "platform/ToviCheck.h"

int ToviItemShowSettings::Add(const QString& title, bool bold, int index, Grade grade,
                              InfoType infoType) {
    ToviItemShowSetting setting(title);
    setting.bold = bold;
    setting.index = index;
    setting.grade = grade;
    setting.infoType = infoType;
    append(setting);
    return static_cast<int>(size()) - 1;
}

int ToviItemShowSettings::Find(const QString& title) const {
    for (qsizetype i = 0; i < size(); ++i) {
        if (at(i).title == title) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

bool ToviItemShowSettings::IsBold(int position) const {
    ToviCheckIndex(position, size(), "ToviItemShowSettings::IsBold");
    return at(position).bold;
}

bool ToviItemShowSettings::IsBold(const QString& title) const {
    const int position = Find(title);
    return position >= 0 && at(position).bold;
}

const QString& ToviItemShowSettings::Title(int position) const {
    ToviCheckIndex(position, size(), "ToviItemShowSettings::Title");
    return at(position).title;
}

bool ToviItemShowSettings::operator==(const ToviItemShowSettings& other) const {
    if (showTitle != other.showTitle || size() != other.size()) {
        return false;
    }
    for (qsizetype i = 0; i < size(); ++i) {
        if (at(i) != other.at(i)) {
            return false;
        }
    }
    return true;
}
