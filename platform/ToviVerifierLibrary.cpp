#include "platform/ToviVerifierLibrary.h"

#include "platform/MibFile.h"

#include <QDir>
#include <QLibrary>

namespace {

QString& ProgramPathOverride() {
    static QString folder;
    return folder;
}

}  // namespace

ToviVerifierLibrary::ToviVerifierLibrary() = default;

ToviVerifierLibrary::~ToviVerifierLibrary() {
    Unload();
}

QString ToviVerifierLibrary::FileName(const QString& baseName) {
#if defined(Q_OS_WIN)
    return baseName + QStringLiteral(".dll");
#elif defined(Q_OS_DARWIN)
    return baseName + QStringLiteral(".dylib");
#else
    return baseName + QStringLiteral(".so");
#endif
}

QString ToviVerifierLibrary::ProgramPath() {
    return ProgramPathOverride().isEmpty() ? MibProgramFolder(MibProgramFiles::Libraries)
                                           : ProgramPathOverride();
}

void ToviVerifierLibrary::SetProgramPathOverride(const QString& folder) {
    ProgramPathOverride() = folder.isEmpty() ? QString() : MibNormalDir(folder);
}

QString ToviVerifierLibrary::Find(const QString& baseName) {
    const QString folder = ProgramPath();
    if (folder.isEmpty() || baseName.isEmpty()) {
        return QString();
    }
    const QString name = FileName(baseName);
    if (MibIsFileExist(folder + name)) {
        return folder + name;
    }
    // The verifiers come from a platform whose file names ignore case ("JACICCHS.DLL").
    const QStringList found =
        QDir(folder).entryList(QStringList{name}, QDir::Files | QDir::Readable, QDir::Name);
    return found.isEmpty() ? QString() : folder + found.first();
}

bool ToviVerifierLibrary::Load(const QString& path) {
    if (IsLoaded()) {
        return true;
    }
    error.clear();
    if (path.isEmpty() || !MibIsFileExist(path)) {
        error = QStringLiteral("no such file: %1").arg(path);
        return false;
    }
    auto candidate = std::make_unique<QLibrary>(path);
    if (!candidate->load()) {
        error = candidate->errorString();
        return false;
    }
    library = std::move(candidate);
    return true;
}

bool ToviVerifierLibrary::IsLoaded() const {
    return library && library->isLoaded();
}

void ToviVerifierLibrary::Unload() {
    if (library) {
        // QLibrary keeps a library loaded past its own end unless asked.
        library->unload();
        library.reset();
    }
}

ToviVerifierLibrary::Function ToviVerifierLibrary::Resolve(const char* name) const {
    if (!IsLoaded() || !name) {
        return nullptr;
    }
    return library->resolve(name);
}

QString ToviVerifierLibrary::ErrorString() const {
    return error;
}
