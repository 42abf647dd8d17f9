#include "platform/ToviEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace {

const QString kOrganisation = QStringLiteral("Orvane Systems");
const QString kSuiteKey = QStringLiteral("QVHomeKey");
const QString kScratchValue = QStringLiteral("QVScratch");
const QString kScratchFolder = QStringLiteral("QVScratch");
const QString kSuiteFolder = QStringLiteral("QV-SUITE");

// Sibling products whose program folder, less the given number of levels, is a suitable place
// for the work folder when the suite names none. Their settings live in the same files, under
// "Software/Orvane Systems/<product>/<version>/Common/Path", value "Program".
struct Product {
    const char* key;
    int levels;
};
constexpr Product kProducts[] = {
    {"QVPhotoViewer", 2},
    {"QVPhotoManager", 2},
    {"QVSuite", 3},
};

struct Overrides {
    QString userIni;
    QString systemIni;
    QString mountTable;
    QString blockDevices;
};

Overrides& Paths() {
    static Overrides overrides;
    return overrides;
}

std::unique_ptr<QSettings> OpenScope(bool user) {
    const QString& file = user ? Paths().userIni : Paths().systemIni;
    std::unique_ptr<QSettings> settings;
    if (file.isEmpty()) {
        settings = std::make_unique<QSettings>(QSettings::IniFormat,
                                               user ? QSettings::UserScope : QSettings::SystemScope,
                                               kOrganisation, kSuiteKey);
    } else {
        settings = std::make_unique<QSettings>(file, QSettings::IniFormat);
    }
    // Each scope is asked on its own: the user's file must not answer with the system's values.
    settings->setFallbacksEnabled(false);
    return settings;
}

QString WithoutTrailingSeparator(QString path) {
    if (path.size() > 1 && path.endsWith(QLatin1Char('/'))) {
        path.chop(1);
    }
    return path;
}

QString Expand(QString text) {
    const auto folder = [](QStandardPaths::StandardLocation location) {
        return WithoutTrailingSeparator(QStandardPaths::writableLocation(location));
    };
    text.replace(QLatin1String("$(PersonalDocument)"), folder(QStandardPaths::DocumentsLocation),
                 Qt::CaseSensitive);
    text.replace(QLatin1String("$(PersonalDeskTop)"), folder(QStandardPaths::DesktopLocation),
                 Qt::CaseSensitive);
    text.replace(QLatin1String("$(PersonalTemp)"), WithoutTrailingSeparator(QDir::tempPath()),
                 Qt::CaseSensitive);
    // No drive letters here: the macro stands for nothing, leaving the path that follows it.
    text.replace(QLatin1String("$(WinDrive)"), QString(), Qt::CaseSensitive);
    return text;
}

// The raw "QVScratch" text of one scope, when it holds a plain text.
std::optional<QString> ReadRaw(QSettings& settings) {
    if (settings.status() != QSettings::NoError) {
        return std::nullopt;
    }
    const QVariant value = settings.value(kScratchValue);
    if (value.typeId() != QMetaType::QString) {
        return std::nullopt;  // absent, or a list (an INI value with unquoted commas)
    }
    return value.toString();
}

// The expanded location a scope names; shorter than two characters counts as not found.
std::optional<QString> ReadLocation(QSettings& settings) {
    const std::optional<QString> raw = ReadRaw(settings);
    if (!raw) {
        return std::nullopt;
    }
    QString location = Expand(*raw);
    if (location.endsWith(QLatin1Char('/'))) {
        location.chop(1);
    }
    if (location.size() < 2) {
        return std::nullopt;
    }
    return location;
}

bool IsUsableFolder(const QString& location) {
    // One level only: a location whose parent is missing is a mistake, not something to build.
    return QFileInfo(location).isDir() || QDir().mkdir(location);
}

QString StripLevels(QString path, int levels) {
    for (int i = 0; i < levels; ++i) {
        const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
        if (slash <= 0) {
            return QString();
        }
        path.truncate(slash);
    }
    return path;
}

QString ProductLocation() {
    for (const Product& product : kProducts) {
        for (bool user : {false, true}) {
            const std::unique_ptr<QSettings> settings = OpenScope(user);
            settings->beginGroup(QStringLiteral("Software/") + kOrganisation + QLatin1Char('/') +
                                 QLatin1String(product.key));
            QStringList versions = settings->childGroups();
            std::sort(versions.begin(), versions.end(), std::greater<QString>());
            for (const QString& version : versions) {
                QString program =
                    settings->value(version + QStringLiteral("/Common/Path/Program")).toString();
                while (program.size() > 1 && program.endsWith(QLatin1Char('/'))) {
                    program.chop(1);
                }
                if (!program.isEmpty() && QFileInfo(program).isDir()) {
                    return StripLevels(program, product.levels);
                }
            }
        }
    }
    return QString();
}

std::optional<QString> WorkLocation() {
    std::optional<QString> location;
    {
        const std::unique_ptr<QSettings> user = OpenScope(true);
        location = ReadLocation(*user);
    }
    if (!location) {
        const std::unique_ptr<QSettings> system = OpenScope(false);
        location = ReadLocation(*system);
        if (location) {
            // The user's copy is the unexpanded text, so the macros follow the user later on.
            const std::unique_ptr<QSettings> user = OpenScope(true);
            user->setValue(kScratchValue, *ReadRaw(*system));
            user->sync();
            // A user file that cannot be written still leaves the system's answer in hand.
            if (const std::optional<QString> again = ReadLocation(*user)) {
                location = again;
            }
        }
    }
    // A location that cannot be used falls back below whichever file named it: once copied,
    // a system value is the user's, and every later look-up would fall back anyway.
    if (location && IsUsableFolder(*location)) {
        return location;
    }
    QString fallback = ProductLocation();
    if (fallback.isEmpty()) {
        // Work files are a cache: they go where the desktop keeps caches, one folder shared by
        // the viewer and the command line, and never among the user's own documents.
        const QString cache = WithoutTrailingSeparator(
            QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation));
        if (!cache.isEmpty()) {
            fallback = cache + QStringLiteral("/tovicore");
            if (!QDir().mkpath(fallback)) {
                fallback.clear();
            }
        }
    }
    if (fallback.isEmpty()) {
        return std::nullopt;
    }
    return fallback;
}

// ---- the mount table ---------------------------------------------------------------------

// Undoes the octal escapes (\040 for a space and so on) of the mount table's fields.
QString DecodeMountField(const QByteArray& field) {
    QByteArray decoded;
    decoded.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() && field[i + 1] >= '0' &&
            field[i + 1] <= '3' && field[i + 2] >= '0' && field[i + 2] <= '7' &&
            field[i + 3] >= '0' && field[i + 3] <= '7') {
            decoded += static_cast<char>(((field[i + 1] - '0') << 6) | ((field[i + 2] - '0') << 3) |
                                         (field[i + 3] - '0'));
            i += 3;
        } else {
            decoded += field[i];
        }
    }
    return QString::fromUtf8(decoded);
}

bool IsUnder(const QString& path, const QString& mountPoint) {
    if (mountPoint == QLatin1String("/")) {
        return true;
    }
    return path == mountPoint ||
           (path.startsWith(mountPoint) && path.at(mountPoint.size()) == QLatin1Char('/'));
}

bool IsRemovableDevice(const QString& source) {
    if (!source.startsWith(QLatin1String("/dev/"))) {
        return false;
    }
    // /dev/disk/by-label/... and the like are links to the device node itself.
    const QString node = QFileInfo(source).canonicalFilePath();
    const QString name = QFileInfo(node.isEmpty() ? source : node).fileName();
    const QString root =
        Paths().blockDevices.isEmpty() ? QStringLiteral("/sys/class/block") : Paths().blockDevices;
    const QString device = root + QLatin1Char('/') + name;
    QString flag = device + QStringLiteral("/removable");
    if (!QFileInfo::exists(flag) && QFileInfo::exists(device + QStringLiteral("/partition"))) {
        // A partition's entry sits inside its disk's folder, which carries the flag.
        const QString disk = QFileInfo(QFileInfo(device).canonicalFilePath()).path();
        flag = disk + QStringLiteral("/removable");
    }
    QFile file(flag);
    return file.open(QIODevice::ReadOnly) && file.read(1) == "1";
}

}  // namespace

bool ToviEnvironment::GetWorkFolder(QString& folder) {
    std::optional<QString> location = WorkLocation();
    if (!location) {
        return false;
    }
    QString path = *location;
    if (!path.endsWith(QLatin1Char('/'))) {
        path += QLatin1Char('/');
    }
    folder = path + kScratchFolder;
    return true;
}

QString ToviEnvironment::SuiteFolder() {
    QString work;
    if (!GetWorkFolder(work)) {
        return QString();
    }
    return work + QLatin1Char('/') + kSuiteFolder + QLatin1Char('/');
}

int ToviEnvironment::GetSuiteFolder(int size, char* buffer) {
    const QString suite = SuiteFolder();
    if (suite.isEmpty()) {
        return 0;
    }
    const QByteArray text = suite.toUtf8();
    const int needed = static_cast<int>(text.size()) + 1;
    if (size < needed) {
        return needed;
    }
    if (!buffer) {
        return 0;
    }
    std::memcpy(buffer, text.constData(), static_cast<size_t>(needed));
    return needed - 1;
}

void ToviEnvironment::SetSettingsPathsForTesting(const QString& userIni, const QString& systemIni) {
    Paths().userIni = userIni;
    Paths().systemIni = systemIni;
}

void ToviEnvironment::SetMountTableForTesting(const QString& path) {
    Paths().mountTable = path;
}

void ToviEnvironment::SetBlockDevicesForTesting(const QString& folder) {
    Paths().blockDevices = folder;
}

unsigned int ToviGetDriveType(const QString& path) {
    if (!path.startsWith(QLatin1Char('/'))) {
        return 0;
    }
    QString target = QFileInfo(path).canonicalFilePath();
    if (target.isEmpty()) {
        target = QDir::cleanPath(path);
    }
    QFile table(Paths().mountTable.isEmpty() ? QStringLiteral("/proc/self/mounts")
                                             : Paths().mountTable);
    if (!table.open(QIODevice::ReadOnly)) {
        return 0;
    }
    QString bestPoint;
    QString bestSource;
    QString bestType;
    bool matched = false;
    // /proc files report a size of 0, so atEnd() can't be trusted; readAll() reads to EOF.
    const QList<QByteArray> lines = table.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> fields = line.trimmed().split(' ');
        if (fields.size() < 3) {
            continue;
        }
        const QString point = DecodeMountField(fields[1]);
        // Later lines are mounted over earlier ones at the same point, so they win ties.
        if (IsUnder(target, point) && (!matched || point.size() >= bestPoint.size())) {
            matched = true;
            bestPoint = point;
            bestSource = DecodeMountField(fields[0]);
            bestType = QString::fromUtf8(fields[2]);
        }
    }
    if (!matched) {
        return 1;
    }
    static const QStringList optical = {QStringLiteral("iso9660"), QStringLiteral("udf")};
    static const QStringList remote = {QStringLiteral("nfs"),   QStringLiteral("nfs4"),
                                       QStringLiteral("cifs"),  QStringLiteral("smb"),
                                       QStringLiteral("smb3"),  QStringLiteral("smbfs"),
                                       QStringLiteral("sshfs"), QStringLiteral("fuse.sshfs")};
    static const QStringList ram = {QStringLiteral("tmpfs"), QStringLiteral("ramfs")};
    if (optical.contains(bestType)) {
        return 5;
    }
    if (remote.contains(bestType)) {
        return 4;
    }
    if (ram.contains(bestType)) {
        return 6;
    }
    if (IsRemovableDevice(bestSource)) {
        return 2;
    }
    return 3;
}

int ToviGetUniversalName(const QString& /*path*/, QString& /*out*/, bool /*upper*/) {
    // Linux mounts shares at folders, not drive letters: there is no mapping to look up.
    return 0;
}

void ToviTuneAllocator() {
#if defined(__GLIBC__)
    mallopt(M_MXFAST, 0);
#endif
}
