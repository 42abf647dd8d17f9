#pragma once

#include <QString>
#include <QStringList>

class QFile;

// File and folder helpers. Paths use '/'; a folder path made by MibNormalDir ends in '/'.

// The path with a trailing separator added when it has none (an empty path stays empty).
QString MibNormalDir(const QString& path);
// The folder above path, ending in a separator ("/a/b/c" and "/a/b/c/" both give "/a/b/").
QString MibParentDir(const QString& path);
// True when path names a regular file (through symbolic links); false for a folder, a FIFO,
// a device or a socket, which no reader may open.
bool MibIsFileExist(const QString& path);
// Opens path for reading when it is a regular file. Anything else is refused before it is
// opened, so that a FIFO or a device dressed up as a delivery file neither blocks nor is read.
bool MibOpenRegularFile(QFile& file, const QString& path);
// True when value is a bare file name that can only name a file inside the folder it is
// joined to: not empty, no separator of either kind, no "..", no drive letter ("C:").
bool MibIsPlainFileName(const QString& value);
// The path of name in folder as the disc spells it: name itself when it is there, else an
// entry whose name differs only in case (media written on Windows), else folder + name.
QString MibResolveCase(const QString& folder, const QString& name);
bool MibIsFolderExist(const QString& path);
// Creates the folder and any missing parents; true when it exists afterwards.
bool MibCreateDirectory(const QString& path);
// Removes the folder and everything in it.
bool MibRemoveDirectory(const QString& path);
// Copies a file, replacing the target when overwrite is set; the copy is written to a
// temporary file beside the target and renamed into place.
bool MibCopyFileEx(const QString& from, const QString& to, bool overwrite);
// Copies a delivered file out: its bytes onto to (replacing a file there), then the source's
// permissions and its access and modification times on the copy, so that the copy of a
// read-only file is read-only too. True when the bytes were copied, whatever became of the
// permissions and times.
bool MibCopyFileKeepStatus(const QString& from, const QString& to);
// Moves a file onto to in one step, replacing what was there: a rename within one file
// system, else a copy into a temporary file beside to that is renamed into place. On failure
// an existing file at to is as it was.
bool MibMoveFileReplacing(const QString& from, const QString& to);
// Copies the folder tree from into to (made when missing), replacing files of the same names.
// Only folders and regular files are copied; links and anything else are left behind, so a
// link on a disc never brings a file from outside it. False when anything could not be
// copied.
bool MibCopyDirectoryTree(const QString& from, const QString& to);
// The extension without the dot ("a/b.JPG" gives "JPG"), empty when there is none.
QString MibGetExt(const QString& path);
// The file name without folder and extension.
QString MibGetFileTitle(const QString& path);
// The folder of the running executable, ending in a separator; empty when unknown.
QString MibProgramPath();

// The program's own files: the data it reads (READITEM.XML, XSLPLATE/) and the outside
// verifier libraries it loads.
enum class MibProgramFiles { Data, Libraries };
// The folder the program's files of that kind are in, ending in a separator. A build keeps
// everything beside its executables, which is recognised by READITEM.XML lying there; an
// installed copy (the executables in PREFIX/bin/) keeps its data in PREFIX/share/tovicore/ and
// its libraries, ours and the verifiers, in PREFIX/lib/tovicore/. When neither layout is found
// the program folder is answered, so that a message about a missing file names it.
QString MibProgramFolder(MibProgramFiles kind);
// The same for an executable in programFolder.
QString MibProgramFolderOf(const QString& programFolder, MibProgramFiles kind);
// Writes data to path through a temporary file in the same folder, flushed to disk and
// renamed into place, so that a failure (full disk, read-only folder) or a kill at any moment
// leaves any old file as it was. The environment variable TOVI_WRITE_PAUSE_MS makes it wait
// that long halfway through the data, so that tests can kill a writer mid-write.
bool MibWriteFileAtomic(const QString& path, const QByteArray& data, QString* error = nullptr);
// Makes MibWriteFileAtomic fail as a full disk does after this many bytes; negative: no limit.
void MibSetWriteLimitForTesting(qint64 bytes);
