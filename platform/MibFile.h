#pragma once

#include <QString>
#include <QStringList>

// File and folder helpers. Paths use '/'; a folder path made by MibNormalDir ends in '/'.

// The path with a trailing separator added when it has none (an empty path stays empty).
QString MibNormalDir(const QString& path);
// The folder above path, ending in a separator ("/a/b/c" and "/a/b/c/" both give "/a/b/").
QString MibParentDir(const QString& path);
bool MibIsFileExist(const QString& path);
bool MibIsFolderExist(const QString& path);
// Creates the folder and any missing parents; true when it exists afterwards.
bool MibCreateDirectory(const QString& path);
// Removes the folder and everything in it.
bool MibRemoveDirectory(const QString& path);
// Copies a file, replacing the target when overwrite is set; the copy is written to a
// temporary file beside the target and renamed into place.
bool MibCopyFileEx(const QString& from, const QString& to, bool overwrite);
// The extension without the dot ("a/b.JPG" gives "JPG"), empty when there is none.
QString MibGetExt(const QString& path);
// The file name without folder and extension.
QString MibGetFileTitle(const QString& path);
// The folder of the running executable, ending in a separator; empty when unknown.
QString MibProgramPath();
// Writes data to path through a temporary file in the same folder, flushed to disk and
// renamed into place, so that a failure (full disk, read-only folder) or a kill at any moment
// leaves any old file as it was. The environment variable TOVI_WRITE_PAUSE_MS makes it wait
// that long halfway through the data, so that tests can kill a writer mid-write.
bool MibWriteFileAtomic(const QString& path, const QByteArray& data, QString* error = nullptr);
// Makes MibWriteFileAtomic fail as a full disk does after this many bytes; negative: no limit.
void MibSetWriteLimitForTesting(qint64 bytes);
