#pragma once

// What tests of the work area share: a work folder of the test's own and a host without views.

#include "document/ToviHostDocument.h"
#include "platform/ToviEnvironment.h"

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

// A host that draws nothing: enough for a document to keep a current array.
class NoViews : public ToviHostDocument {
public:
    void UpdateAllViews(QWidget*, int, QObject*) override {}
};
