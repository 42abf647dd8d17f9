#include "platform/ToviProfile.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

namespace {

// A hand-edited INI line "a,b" without quotes reads back as a list; it is the text a,b.
QString TextOf(const QVariant& value) {
    if (value.typeId() == QMetaType::QStringList) {
        return value.toStringList().join(QLatin1Char(','));
    }
    return value.toString();
}

QString Key(const QString& section, const QString& entry) {
    return section + QLatin1Char('/') + entry;
}

}  // namespace

ToviProfile& ToviProfile::Instance() {
    static ToviProfile profile;
    return profile;
}

ToviProfile::ToviProfile() {
    UseFile(QString());
}

ToviProfile::~ToviProfile() {
    Flush();
}

bool ToviProfile::Flush() {
    if (settings) {
        settings->sync();
        return settings->status() == QSettings::NoError;
    }
    if (!explicitDirty || !explicitUsable) {
        return true;
    }
    // QSettings makes missing folders on its own: a store whose folder went away is dropped.
    if (!QFileInfo(QFileInfo(explicitPath).absolutePath()).isDir()) {
        return false;
    }
    QSettings file(explicitPath, QSettings::IniFormat);
    file.clear();
    for (auto it = explicitValues.cbegin(); it != explicitValues.cend(); ++it) {
        file.setValue(it.key(), it.value());
    }
    file.sync();
    if (file.status() != QSettings::NoError) {
        return false;
    }
    explicitDirty = false;
    return true;
}

void ToviProfile::UseFile(const QString& iniPath) {
    Flush();
    settings.reset();
    explicitPath.clear();
    explicitValues.clear();
    explicitUsable = true;
    explicitDirty = false;
    if (iniPath.isEmpty()) {
        settings = std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                               QStringLiteral("Orvane Systems"),
                                               QStringLiteral("ToviCore"));
        return;
    }
    explicitPath = QFileInfo(iniPath).absoluteFilePath();
    QDir().mkpath(QFileInfo(explicitPath).absolutePath());
    const QSettings file(explicitPath, QSettings::IniFormat);
    explicitUsable = file.status() != QSettings::FormatError;
    if (explicitUsable) {
        for (const QString& key : file.allKeys()) {
            explicitValues.insert(key, TextOf(file.value(key)));
        }
    }
}

QString ToviProfile::FileName() const {
    return settings ? settings->fileName() : explicitPath;
}

bool ToviProfile::Usable() const {
    // A file that can't be parsed reads as empty: every read gives its default.
    return settings ? settings->status() != QSettings::FormatError : explicitUsable;
}

int ToviProfile::GetProfileInt(const QString& section, const QString& entry,
                               int defaultValue) const {
    bool ok = false;
    const int value = GetProfileString(section, entry, QString()).trimmed().toInt(&ok);
    return ok ? value : defaultValue;
}

bool ToviProfile::WriteProfileInt(const QString& section, const QString& entry, int value) {
    return WriteProfileString(section, entry, QString::number(value));
}

QString ToviProfile::GetProfileString(const QString& section, const QString& entry,
                                      const QString& defaultValue) const {
    if (!Usable()) {
        return defaultValue;
    }
    const QString key = Key(section, entry);
    if (!settings) {
        return explicitValues.value(key, defaultValue);
    }
    const QVariant value = settings->value(key);
    return value.isValid() ? TextOf(value) : defaultValue;
}

bool ToviProfile::WriteProfileString(const QString& section, const QString& entry,
                                     const QString& value) {
    if (!Usable()) {
        return false;
    }
    const QString key = Key(section, entry);
    if (!settings) {
        const auto it = explicitValues.constFind(key);
        if (it == explicitValues.cend() || *it != value) {
            explicitValues.insert(key, value);
            explicitDirty = true;
        }
        return true;
    }
    // Every opening writes the kind of delivery; an unchanged value costs no disk write.
    const QVariant current = settings->value(key);
    if (current.isValid() && current.toString() == value) {
        return true;
    }
    settings->setValue(key, value);
    // Written out when the event loop next runs and when the store goes; a flush (with
    // its fsync) on every write would cost each opening tens of milliseconds.
    return settings->status() == QSettings::NoError;
}
