#include "platform/MibFile.h"

#include "platform/MibPathResolver.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QThread>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

QString MibNormalDir(const QString& path) {
    if (path.isEmpty() || path.endsWith(QLatin1Char('/'))) {
        return path;
    }
    return path + QLatin1Char('/');
}

QString MibParentDir(const QString& path) {
    QString p = path;
    while (p.size() > 1 && p.endsWith(QLatin1Char('/'))) {
        p.chop(1);
    }
    const qsizetype slash = p.lastIndexOf(QLatin1Char('/'));
    if (slash < 0) {
        return QString();
    }
    return p.left(slash + 1);
}

bool MibIsFileExist(const QString& path) {
    if (path.isEmpty()) {
        return false;
    }
    const QFileInfo info(path);
    return info.exists() && info.isFile();
}

bool MibOpenRegularFile(QFile& file, const QString& path) {
    if (file.isOpen()) {
        file.close();
    }
    if (!MibIsFileExist(path)) {
        return false;
    }
    // Opened without waiting, and asked again through the handle: a file swapped for a FIFO
    // between the look and the open is still turned away, not waited on.
    const QByteArray local = QFile::encodeName(path);
    const int fd = ::open(local.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        return false;
    }
    struct stat st {};
    const int flags = ::fcntl(fd, F_GETFL);
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || flags < 0 ||
        ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) != 0 ||
        !file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return false;
    }
    return true;
}

bool MibIsPlainFileName(const QString& value) {
    if (value.isEmpty() || value == QLatin1String(".") || value.contains(QLatin1Char('/')) ||
        value.contains(QLatin1Char('\\')) || value.contains(QLatin1String("..")) ||
        value.contains(QChar(0))) {
        return false;
    }
    const bool drive = value.size() >= 2 && value[1] == QLatin1Char(':') && value[0].isLetter();
    return !drive;
}

QString MibResolveCase(const QString& folder, const QString& name) {
    const QString dir = MibNormalDir(folder);
    if (name.isEmpty() || QFileInfo::exists(dir + name)) {
        return dir + name;
    }
    const QString found = MibListFoldedNames(dir).value(name.toCaseFolded());
    return dir + (found.isEmpty() ? name : found);
}

bool MibIsFolderExist(const QString& path) {
    return !path.isEmpty() && QFileInfo(path).isDir();
}

bool MibCreateDirectory(const QString& path) {
    return !path.isEmpty() && QDir().mkpath(path);
}

bool MibRemoveDirectory(const QString& path) {
    if (!MibIsFolderExist(path)) {
        return false;
    }
    return QDir(path).removeRecursively();
}

bool MibCopyFileEx(const QString& from, const QString& to, bool overwrite) {
    if (!overwrite && QFileInfo::exists(to)) {
        return false;
    }
    QFile source;
    if (!MibOpenRegularFile(source, from)) {
        return false;
    }
    QSaveFile target(to);
    if (!target.open(QIODevice::WriteOnly)) {
        return false;
    }
    char buffer[1 << 16];
    for (;;) {
        const qint64 n = source.read(buffer, sizeof buffer);
        if (n < 0) {
            target.cancelWriting();
            return false;
        }
        if (n == 0) {
            break;
        }
        if (target.write(buffer, n) != n) {
            target.cancelWriting();
            return false;
        }
    }
    return target.commit();
}

bool MibCopyFileKeepStatus(const QString& from, const QString& to) {
    if (!MibCopyFileEx(from, to, true)) {
        return false;
    }
    struct stat source{};
    const QByteArray target = QFile::encodeName(to);
    if (::stat(QFile::encodeName(from).constData(), &source) != 0) {
        return true;
    }
    // Writable first, as a copy over a read-only file would need, then the source's own.
    ::chmod(target.constData(), (source.st_mode & 07777) | S_IWUSR);
    const struct timespec times[2] = {source.st_atim, source.st_mtim};
    ::utimensat(AT_FDCWD, target.constData(), times, 0);
    ::chmod(target.constData(), source.st_mode & 07777);
    return true;
}

bool MibMoveFileReplacing(const QString& from, const QString& to) {
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0) {
        return true;
    }
    if (errno != EXDEV || !MibCopyFileEx(from, to, true)) {
        return false;
    }
    QFile::remove(from);
    return true;
}

bool MibCopyDirectoryTree(const QString& from, const QString& to) {
    if (!MibCreateDirectory(to)) {
        return false;
    }
    const QDir source(from);
    bool ok = source.exists();
    const QFileInfoList entries = source.entryInfoList(
        QDir::Files | QDir::Dirs | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        if (entry.isSymLink()) {
            continue;
        }
        const QString target = MibNormalDir(to) + entry.fileName();
        if (entry.isDir()) {
            ok = MibCopyDirectoryTree(entry.filePath(), target) && ok;
        } else if (entry.isFile()) {
            ok = MibCopyFileEx(entry.filePath(), target, true) && ok;
        }
    }
    return ok;
}

QString MibGetExt(const QString& path) {
    const QString name = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? QString() : name.mid(dot + 1);
}

QString MibGetFileTitle(const QString& path) {
    const QString name = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? name : name.left(dot);
}

QString MibProgramPath() {
    // Without an application object Qt can't tell; /proc answers on Linux all the same.
    QString exe = QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget();
    if (exe.isEmpty() && QCoreApplication::instance()) {
        exe = QCoreApplication::applicationFilePath();
    }
    if (exe.isEmpty()) {
        return QString();
    }
    return MibNormalDir(QFileInfo(exe).absolutePath());
}

QString MibProgramFolderOf(const QString& programFolder, MibProgramFiles kind) {
    const QString program = MibNormalDir(programFolder);
    if (program.isEmpty() || MibIsFileExist(program + QStringLiteral("READITEM.XML"))) {
        return program;
    }
    const QString prefix = MibNormalDir(QDir::cleanPath(program + QStringLiteral("..")));
    const QString data = prefix + QStringLiteral("share/tovicore/");
    if (!MibIsFolderExist(data)) {
        return program;
    }
    return kind == MibProgramFiles::Data ? data : prefix + QStringLiteral("lib/tovicore/");
}

QString MibProgramFolder(MibProgramFiles kind) {
    return MibProgramFolderOf(MibProgramPath(), kind);
}

namespace {

qint64& WriteLimit() {
    static qint64 limit = -1;
    return limit;
}

}  // namespace

void MibSetWriteLimitForTesting(qint64 bytes) {
    WriteLimit() = bytes;
}

bool MibWriteFileAtomic(const QString& path, const QByteArray& data, QString* error) {
    QSaveFile file(path);
    const auto fail = [&](const QString& why) {
        if (error) {
            *error = why;
        }
        file.cancelWriting();
        return false;
    };
    if (!file.open(QIODevice::WriteOnly)) {
        return fail(file.errorString());
    }
    const qint64 limit = WriteLimit();
    const qsizetype half = data.size() / 2;
    if (file.write(data.constData(), half) != half) {
        return fail(file.errorString());
    }
    bool paused = false;
    const int pause = qEnvironmentVariableIntValue("TOVI_WRITE_PAUSE_MS", &paused);
    if (paused && pause > 0) {
        file.flush();
        QThread::msleep(static_cast<unsigned long>(pause));
    }
    if (limit >= 0 && data.size() > limit) {
        return fail(QStringLiteral("No space left on device"));
    }
    if (file.write(data.constData() + half, data.size() - half) != data.size() - half) {
        return fail(file.errorString());
    }
    if (!file.commit()) {
        if (error) {
            *error = file.errorString();
        }
        return false;
    }
    return true;
}
