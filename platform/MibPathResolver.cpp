#include "platform/MibPathResolver.h"

#include "platform/MibFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <dirent.h>
#include <sys/stat.h>

QHash<QString, QString> MibListFoldedNames(const QString& folder) {
    return MibPathResolver::List(folder).Folded();
}

MibPathResolver::Listing MibPathResolver::List(const QString& folder) {
    Listing listing;
    const QByteArray local = QFile::encodeName(folder.isEmpty() ? QStringLiteral(".") : folder);
    DIR* dir = ::opendir(local.constData());
    if (!dir) {
        return listing;
    }
    listing.read = true;
    // The directory's own records tell links and regular files from the rest; an entry is
    // looked at on its own only when the file system does not say what it is.
    const QByteArray prefix = local.endsWith('/') ? local : local + '/';
    while (const dirent* entry = ::readdir(dir)) {
        const char* raw = entry->d_name;
        if (raw[0] == '.' && (raw[1] == '\0' || (raw[1] == '.' && raw[2] == '\0'))) {
            continue;
        }
        bool link = entry->d_type == DT_LNK;
        bool file = entry->d_type == DT_REG;
        if (entry->d_type == DT_UNKNOWN) {
            struct stat st {};
            if (::lstat((prefix + raw).constData(), &st) != 0) {
                continue;  // gone since the directory was read
            }
            link = S_ISLNK(st.st_mode);
            file = S_ISREG(st.st_mode);
        }
        listing.entries.insert(QFile::decodeName(raw), link   ? Listing::Link
                                                       : file ? Listing::File
                                                              : Listing::Other);
    }
    ::closedir(dir);
    return listing;
}

const QHash<QString, QString>& MibPathResolver::Listing::Folded() const {
    if (!foldedMade) {
        foldedMade = true;
        folded.reserve(entries.size());
        for (auto it = entries.cbegin(); it != entries.cend(); ++it) {
            QString& kept = folded[it.key().toCaseFolded()];
            if (kept.isEmpty() || it.key() < kept) {
                kept = it.key();
            }
        }
    }
    return folded;
}

const MibPathResolver::Listing& MibPathResolver::ListingOf(const QString& folder) const {
    const auto found = listings.constFind(folder);
    if (found != listings.cend()) {
        return *found;
    }
    return *listings.insert(folder, List(folder));
}

void MibPathResolver::SetRoot(const QString& path) {
    root = MibNormalDir(path);
    Clear();
}

void MibPathResolver::Clear() {
    canonicalRoot.clear();
    rootKnown = false;
    areas.clear();
    listings.clear();
}

const QString& MibPathResolver::CanonicalRoot() const {
    if (!rootKnown) {
        rootKnown = true;
        const QString canonical = QFileInfo(root).canonicalFilePath();
        canonicalRoot = canonical.isEmpty() ? QString() : MibNormalDir(canonical);
    }
    return canonicalRoot;
}

const QString& MibPathResolver::AreaOf(const QString& folder) const {
    const auto found = areas.constFind(folder);
    if (found != areas.cend()) {
        return *found;
    }
    // A sub-folder that is a link to somewhere else takes its files outside with it.
    QString canonical = QFileInfo(folder).canonicalFilePath();
    const QString& rootCanonical = CanonicalRoot();
    if (canonical.isEmpty() || rootCanonical.isEmpty() || !canonical.startsWith(rootCanonical)) {
        canonical.clear();
    } else {
        canonical = MibNormalDir(canonical);
    }
    return *areas.insert(folder, canonical);
}

bool MibPathResolver::IsFile(const QString& path) const {
    if (!root.isEmpty() && path.startsWith(root)) {
        const QStringView rest = QStringView(path).mid(root.size());
        const qsizetype slash = rest.indexOf(QLatin1Char('/'));
        if (slash > 0 && slash + 1 < rest.size() && rest.indexOf(QLatin1Char('/'), slash + 1) < 0) {
            const QString folder = rest.left(slash).toString();
            const Listing& top = ListingOf(root);
            const auto sub = top.entries.constFind(folder);
            if (!top.read) {
                // A folder that could not be read says nothing: the disc is asked.
            } else if (sub == top.entries.cend()) {
                // No sub-folder of that name in any spelling: nothing under it.
                if (!top.Folded().contains(folder.toCaseFolded())) {
                    return false;
                }
            } else if (sub.value() == Listing::Other) {
                // A name not listed as written is missing: the paths asked about have been
                // resolved, so another spelling on the disc would have been taken already.
                const Listing& files = ListingOf(root + folder + QLatin1Char('/'));
                const auto file = files.entries.constFind(rest.mid(slash + 1).toString());
                if (files.read && (file == files.entries.cend() || file.value() != Listing::Link)) {
                    return file != files.entries.cend() && file.value() == Listing::File;
                }
            }
        }
    }
    return MibIsFileExist(path);
}

QString MibPathResolver::Resolve(const QString& path) const {
    if (root.isEmpty() || !path.startsWith(root)) {
        return QString();
    }
    const QStringList parts = path.mid(root.size()).split(QLatin1Char('/'));
    if (parts.size() < 2) {
        return QString();  // a file straight in the root belongs to no sub-folder
    }
    for (const QString& part : parts) {
        if (!MibIsPlainFileName(part)) {
            return QString();
        }
    }
    // The sub-folder's and then the file's entry in listings made once per folder: a name
    // found as written that is no link lies where its sub-folder really is, without asking
    // the disc again. Links, other spellings and deeper paths have their real place worked
    // out. A sub-folder missing in every spelling has nothing under it.
    const Listing& top = ListingOf(root);
    const auto sub = top.entries.constFind(parts[0]);
    if (sub == top.entries.cend() && !top.Folded().contains(parts[0].toCaseFolded())) {
        return path;
    }
    if (parts.size() == 2 && sub != top.entries.cend() && sub.value() != Listing::Link) {
        const QString& area = AreaOf(root + parts[0]);
        const Listing& files = ListingOf(root + parts[0] + QLatin1Char('/'));
        const auto file = files.entries.constFind(parts[1]);
        if (!area.isEmpty() && file != files.entries.cend() && file.value() != Listing::Link) {
            return path;
        }
    }
    QString actual = path;
    QString canonical = QFileInfo(path).canonicalFilePath();
    if (canonical.isEmpty()) {
        actual = root;
        for (qsizetype i = 0; i < parts.size(); ++i) {
            const QString found = ListingOf(actual).Folded().value(parts[i].toCaseFolded());
            if (found.isEmpty()) {
                return path;
            }
            actual += found;
            if (i + 1 < parts.size()) {
                actual += QLatin1Char('/');
            }
        }
        canonical = QFileInfo(actual).canonicalFilePath();
        if (canonical.isEmpty()) {
            return path;  // a link that leads nowhere
        }
    }
    const QString& actualArea =
        AreaOf(root + actual.mid(root.size()).section(QLatin1Char('/'), 0, 0));
    if (actualArea.isEmpty() || !canonical.startsWith(actualArea)) {
        return QString();
    }
    return actual;
}
