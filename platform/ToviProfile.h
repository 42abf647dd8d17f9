#pragma once

#include <QString>

#include <memory>

class QSettings;

// The section/entry store in which settings persist: read/write an integer, read/write a
// text. By default an INI file in the user's config folder (organisation "Orvane Systems");
// tests and the command line point it at a file of their own. The "+100" convention for
// integers is the callers' rule, not the store's.
class ToviProfile {
public:
    static ToviProfile& Instance();

    // Backs the store with this INI file from now on; an empty path returns to the default.
    void UseFile(const QString& iniPath);
    QString FileName() const;

    int GetProfileInt(const QString& section, const QString& entry, int defaultValue) const;
    bool WriteProfileInt(const QString& section, const QString& entry, int value);
    QString GetProfileString(const QString& section, const QString& entry,
                             const QString& defaultValue) const;
    bool WriteProfileString(const QString& section, const QString& entry, const QString& value);

    ~ToviProfile();

private:
    ToviProfile();
    bool Usable() const;

    std::unique_ptr<QSettings> settings;
};
