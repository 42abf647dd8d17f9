#pragma once

#include "platform/MibFile.h"
#include "platform/ToviProfile.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

// What every fuzz target shares: one Qt application, one work folder and one profile store
// per process. The readers under test take paths, so each input is written into the work
// folder and read back through the calls the program makes.
//
// The work folder sits in the build tree (fuzz/work/ beside bin/), never in the system's
// temporary folder: a run that ends in a finding exits without destructors and would leave it
// behind. A run that ends normally removes it. The profile store is a file in that folder, so
// that the settings the reader writes never reach the user's own.
namespace fuzz {

inline int argcStore = 1;
inline char argv0[] = "tovi-fuzz";
inline char* argvStore[] = {argv0, nullptr};

inline const QTemporaryDir& WorkFolder() {
    static const QTemporaryDir* folder = [] {
        // Kept to the end of the process on purpose: Qt's own statics go before it would.
        new QCoreApplication(argcStore, argvStore);
        const QString base = MibProgramPath() + QStringLiteral("../fuzz/work");
        QDir().mkpath(base);
        static QTemporaryDir made(base + QStringLiteral("/run-XXXXXX"));
        if (!made.isValid()) {
            qFatal("fuzz: no work folder under %s", qPrintable(base));
        }
        ToviProfile::Instance().UseFile(made.filePath(QStringLiteral("profile.ini")));
        return &made;
    }();
    return *folder;
}

inline QString WorkPath(const QString& name) {
    return WorkFolder().filePath(name);
}

inline bool WriteInput(const QString& path, const uint8_t* data, size_t size) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return false;
    }
    return file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size)) ==
           static_cast<qint64>(size);
}

}  // namespace fuzz
