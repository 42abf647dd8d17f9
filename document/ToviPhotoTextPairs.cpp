#include "document/ToviPhoto.h"

#include "document/ToviItemDef.h"
#include "settings/ToviItemShowSettings.h"

namespace {

const QString kShootingDate = QStringLiteral("撮影年月日");

}  // namespace

bool ToviPhoto::GetTextPairs(const ToviItemDef* def, const ToviItemShowSettings& settings,
                             ToviTextPairArray& pairs) const {
    pairs.clear();
    if (!def) {
        return false;
    }
    QString value;
    for (const ToviItemShowSetting& setting : settings) {
        if (!setting.bold) {
            continue;
        }
        switch (setting.infoType) {
            case InfoTypeItem:
                // A repeating item gives one row per value.
                for (const ToviItem& item : items) {
                    if (item.GetDefIndex() != setting.index) {
                        continue;
                    }
                    value = item.Value();
                    // The delivery writes dates as 2024-05-01; the list shows 2024/05/01.
                    if (setting.title == kShootingDate) {
                        value.replace(QLatin1Char('-'), QLatin1Char('/'));
                    }
                    pairs.append(ToviTextPair(setting.title, value));
                }
                break;
            case InfoTypeFile:
                GetFileInfoFromTitle(setting.title, value);
                pairs.append(ToviTextPair(setting.title, value));
                break;
            case InfoTypeExif:
                GetExifInfoFromTitle(setting.title, value);
                pairs.append(ToviTextPair(setting.title, value));
                break;
        }
    }
    return !pairs.isEmpty();
}
