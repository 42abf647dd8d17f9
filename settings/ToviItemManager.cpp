#include "settings/ToviItemManager.h"

#include "platform/ToviProfile.h"

const QString ToviItemManager::ShowSettingSection_ = QStringLiteral("ShowSetting");
const QString ToviItemManager::ShowItemsEntry_ = QStringLiteral("Items");

bool ToviItemManager::Load(QStringList& hidden) const {
    const QString text =
        ToviProfile::Instance().GetProfileString(ShowSettingSection_, ShowItemsEntry_, QString());
    if (text.isEmpty()) {
        return false;
    }
    // Empty pieces between two commas stay as empty titles, but a trailing comma adds none.
    QStringList pieces = text.split(QLatin1Char(','));
    if (pieces.last().isEmpty()) {
        pieces.removeLast();
    }
    hidden.append(pieces);
    return true;
}

bool ToviItemManager::Save() const {
    QString text;
    for (const ToviItemShowSetting& setting : itemShowSettings) {
        if (setting.bold) {
            continue;
        }
        // An empty text takes the title without a comma, so a hidden title that is itself
        // empty leaves no trace at the front. Intended: it matches how the list was always
        // written.
        text = text.isEmpty() ? setting.title : text + QLatin1Char(',') + setting.title;
    }
    return ToviProfile::Instance().WriteProfileString(ShowSettingSection_, ShowItemsEntry_, text);
}
