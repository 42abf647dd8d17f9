#pragma once

#include <QMap>
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
    // The file is read now and written by Flush; its folder is made now if missing. Should
    // the folder be removed later (a test's temporary folder, a profile on media taken
    // out), nothing is written back and the folder is not made again.
    void UseFile(const QString& iniPath);
    QString FileName() const;

    // Writes pending changes out now. Also done when the store changes file and at exit;
    // the default store is also written when the event loop next runs. False when the store
    // could not be written (a read-only folder, a full disk); the values stay in memory.
    bool Flush();

    int GetProfileInt(const QString& section, const QString& entry, int defaultValue) const;
    bool WriteProfileInt(const QString& section, const QString& entry, int value);
    QString GetProfileString(const QString& section, const QString& entry,
                             const QString& defaultValue) const;
    bool WriteProfileString(const QString& section, const QString& entry, const QString& value);

    ~ToviProfile();

private:
    ToviProfile();
    bool Usable() const;

    // The default store: the user's settings through QSettings.
    std::unique_ptr<QSettings> settings;

    // A file the caller named, kept in memory between flushes.
    QString explicitPath;
    QMap<QString, QString> explicitValues;  // "section/entry" -> text
    bool explicitUsable = true;
    bool explicitDirty = false;
};
