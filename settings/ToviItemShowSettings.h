#pragma once

#include "settings/ToviItemShowSetting.h"

#include <QList>
#include <QString>

// The ordered candidates of a photograph's information list. The order is the display order.
class ToviItemShowSettings : public QList<ToviItemShowSetting> {
public:
    using Grade = ToviItemShowSetting::Grade;

    ToviItemShowSettings() = default;
    ToviItemShowSettings(const ToviItemShowSettings&) = default;
    ToviItemShowSettings& operator=(const ToviItemShowSettings&) = default;
    virtual ~ToviItemShowSettings() = default;

    // Appends an entry and answers its position.
    int Add(const QString& title, bool bold, int index, Grade grade, InfoType infoType);
    // The position of the first entry with exactly this title, or -1.
    int Find(const QString& title) const;
    // A position outside the list is an invalid-argument failure.
    bool IsBold(int position) const;
    // False when no entry has this title.
    bool IsBold(const QString& title) const;
    // A position outside the list is an invalid-argument failure.
    const QString& Title(int position) const;

    // Whether the information list shows its title column.
    bool IsShowTitle() const { return showTitle; }
    void SetShowTitle(bool on) { showTitle = on; }

    // Equal lengths, equal showTitle and equal entries position by position: a reordering is a
    // difference.
    virtual bool operator==(const ToviItemShowSettings& other) const;
    virtual bool operator!=(const ToviItemShowSettings& other) const { return !(*this == other); }

private:
    bool showTitle = true;
};
