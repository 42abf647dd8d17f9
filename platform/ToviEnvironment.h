#pragma once

#include <QString>

// The work folder that every temporary file of the suite goes to, and what the delivery code
// asks of the machine about a path. The suite settings are two INI files, organisation
// "Orvane Systems", application "QVHomeKey": the user's (read first) and the system's.
class ToviEnvironment {
public:
    // The work folder, ending in "QVScratch" and without a trailing separator. False when no
    // location could be found. The caller creates the folder itself when it needs it.
    static bool GetWorkFolder(QString& folder);
    // The suite folder (work folder + "/QV-SUITE/") as UTF-8 with a terminating NUL. A size too
    // small for it returns the size needed and copies nothing; a null buffer returns 0;
    // otherwise it copies and returns the length in bytes. 0 when there is no work folder.
    static int GetSuiteFolder(int size, char* buffer);
    // The suite folder, or an empty text when there is no work folder.
    static QString SuiteFolder();

    // Replace the two settings files, the mount table and the block-device folder (normally
    // /sys/class/block); an empty path returns to the system's own.
    static void SetSettingsPathsForTesting(const QString& userIni, const QString& systemIni);
    static void SetMountTableForTesting(const QString& path);
    static void SetBlockDevicesForTesting(const QString& folder);
};

// The kind of storage a path lies on: 0 unknown (relative or empty path, no mount table),
// 1 no mount point found, 2 removable, 3 fixed, 4 remote, 5 optical, 6 RAM disk.
unsigned int ToviGetDriveType(const QString& path);
// The network name of a path on a mapped drive; 1 on success, 0 otherwise.
int ToviGetUniversalName(const QString& path, QString& out, bool upper);

// Sets up the C library's allocator for a process that holds a large delivery: call it first
// thing in main. Without fast bins, the millions of small values of 100,000 photographs
// aren't swept together again on every larger allocation and free (a fifth of a load's time
// and most of its teardown).
void ToviTuneAllocator();
