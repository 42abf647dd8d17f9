#pragma once

// What tests of the work area share: a work folder of the test's own and a host without views.

#include "document/ToviHostDocument.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"

#include <QDir>
#include <QSettings>
#include <QString>

// Points the work folder at root/work (made here) until the test resets the settings paths;
// the suite folder lies below it.
inline void UseWorkFolder(const QString& root) {
    QDir().mkpath(root + QStringLiteral("/work"));
    const QString user = root + QStringLiteral("/user.ini");
    {
        QSettings settings(user, QSettings::IniFormat);
        settings.setValue(QStringLiteral("QVScratch"), root + QStringLiteral("/work"));
    }
    ToviEnvironment::SetSettingsPathsForTesting(user, root + QStringLiteral("/system.ini"));
}

// The work folder of UseWorkFolder and the profile in root/profile.ini: every store a window
// writes, kept in the test's folder until ReleaseTestStores.
inline void UseTestStores(const QString& root) {
    UseWorkFolder(root);
    ToviProfile::Instance().UseFile(root + QStringLiteral("/profile.ini"));
}

// Puts the profile and the settings paths back to the user's.
inline void ReleaseTestStores() {
    ToviProfile::Instance().UseFile(QString());
    ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
}

// A host that draws nothing: enough for a document to keep a current array.
class NoViews : public ToviHostDocument {
public:
    void UpdateAllViews(QWidget*, int, QObject*) override {}
};
