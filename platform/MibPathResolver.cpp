#include "platform/MibPathResolver.h"

#include "platform/MibFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <QStringList>

QHash<QString, QString> MibListFoldedNames(const QString& folder) {
    QHash<QString, QString> names;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        it.next();
        const QString name = it.fileName();
        QString& kept = names[name.toCaseFolded()];
        if (kept.isEmpty() || name < kept) {
            kept = name;
        }
    }
    return names;
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
    // The path as written costs one look at the disc; only a miss lists folders. A file that
    // is no link, straight in its sub-folder, lies where that sub-folder really is; anything
    // else has its real place worked out.
    const QString& area = AreaOf(root + parts[0]);
    QString actual = path;
    QString canonical;
    struct stat status;
    if (::lstat(QFile::encodeName(path).constData(), &status) == 0) {
        canonical = !S_ISLNK(status.st_mode) && parts.size() == 2 && !area.isEmpty()
                        ? area + parts[1]
                        : QFileInfo(path).canonicalFilePath();
    }
    if (canonical.isEmpty()) {
        actual = root;
        for (qsizetype i = 0; i < parts.size(); ++i) {
            auto listing = listings.find(actual);
            if (listing == listings.end()) {
                listing = listings.insert(actual, MibListFoldedNames(actual));
            }
            const QString found = listing->value(parts[i].toCaseFolded());
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
