#pragma once

// What the benchmark programs share: one temporary folder for the run's deliveries, removed
// at exit, and the process's peak memory.

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
