#pragma once

// What the benchmark programs share: one temporary folder for the run's deliveries, removed
// at exit, the deliveries written there, and the process's peak memory.

#include "tests/support/DeliveryWriter.h"

#include <QTemporaryDir>

#include <sys/resource.h>

inline QTemporaryDir& Temp() {
    static QTemporaryDir dir;
    return dir;
}

// The process's peak resident memory so far, in MB.
inline double PeakMB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

// Writes a delivery into the run's folder under name and answers its PHOTO folder; a delivery
// that cannot be written ends the run.
inline QString WriteBenchDelivery(const QString& name, const DeliveryOptions& options,
                                  WrittenDelivery* written = nullptr) {
    QString error;
    const QString root = Temp().filePath(name);
    if (!WriteDelivery(root, options, written, &error)) {
        qFatal("cannot write the delivery: %s", qPrintable(error));
    }
    return root + QStringLiteral("/INDEX_C/PHOTO");
}
