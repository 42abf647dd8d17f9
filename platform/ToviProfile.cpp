#include "platform/ToviProfile.h"

#include <QSettings>

namespace {

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
    if (settings) {
        settings->sync();
    }
}

void ToviProfile::UseFile(const QString& iniPath) {
    if (settings) {
        settings->sync();
    }
    if (iniPath.isEmpty()) {
        settings = std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                               QStringLiteral("Orvane Systems"),
                                               QStringLiteral("ToviCore"));
    } else {
        settings = std::make_unique<QSettings>(iniPath, QSettings::IniFormat);
    }
}

QString ToviProfile::FileName() const {
    return settings->fileName();
}

bool ToviProfile::Usable() const {
    // A file that can't be parsed reads as empty: every read gives its default.
    return settings->status() != QSettings::FormatError;
}

int ToviProfile::GetProfileInt(const QString& section, const QString& entry,
                               int defaultValue) const {
    if (!Usable()) {
        return defaultValue;
    }
    bool ok = false;
    const int value = settings->value(Key(section, entry)).toString().trimmed().toInt(&ok);
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
    const QVariant value = settings->value(Key(section, entry));
    if (!value.isValid()) {
        return defaultValue;
    }
    // A hand-edited INI line "a,b" without quotes reads back as a list; it is the text a,b.
    if (value.typeId() == QMetaType::QStringList) {
        return value.toStringList().join(QLatin1Char(','));
    }
    return value.toString();
}

bool ToviProfile::WriteProfileString(const QString& section, const QString& entry,
                                     const QString& value) {
    if (!Usable()) {
        return false;
    }
    const QString key = Key(section, entry);
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
