#pragma once

#include "settings/ToviItemShowSettings.h"

#include <QString>
#include <QStringList>

// Owns a document's information-list entries and keeps which of them are hidden in the
// profile section "ShowSetting". Only the hidden titles are stored, so an item that a later
// delivery brings is shown until the user hides it. Unlike the other settings it doesn't save
// itself when it goes.
class ToviItemManager {
public:
    static const QString ShowSettingSection_;  // "ShowSetting"
    static const QString ShowItemsEntry_;      // "Items"

    ToviItemManager() = default;
    ToviItemManager(const ToviItemManager&) = default;
    ToviItemManager& operator=(const ToviItemManager&) = default;
    virtual ~ToviItemManager() = default;

    ToviItemShowSettings& GetItemShowSettings() { return itemShowSettings; }
    const ToviItemShowSettings& GetItemShowSettings() const { return itemShowSettings; }
    void SetItemShowSettings(const ToviItemShowSettings& settings) { itemShowSettings = settings; }

    // Appends the stored hidden titles to hidden; the manager's own list isn't touched.
    // False when nothing (or an empty text) is stored.
    bool Load(QStringList& hidden) const;
    // Stores the titles of the hidden entries, in list order; everything shown stores an empty
    // text. Answers whether the store took it.
    bool Save() const;

private:
    ToviItemShowSettings itemShowSettings;
};
