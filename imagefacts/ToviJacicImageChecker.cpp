#include "imagefacts/ToviJacicImageChecker.h"

#include "platform/MibFile.h"

#include <QFile>

#include <mutex>

const QString ToviJacicImageChecker::LibraryName_ = QStringLiteral("JACICCHS");
const char* const ToviJacicImageChecker::JpegFunction_ = "JCOMSIA_CheckHashValue";
const char* const ToviJacicImageChecker::SvgFunction_ = "JCOMSIA_SVG_CheckHashValue";

QString ToviJacicImageChecker::pathDllS;

namespace {

using HashFunction = int (*)(const char* path);

// The delivery checks verify on a worker thread while the viewer may verify the photographs
// it shows: the path kept for every checker is guarded, and the outside library, which
// promises nothing about threads, is called by one thread at a time.
std::mutex pathMutex;
std::mutex callMutex;

}  // namespace

ToviJacicImageChecker::~ToviJacicImageChecker() {
    Terminate();
}

bool ToviJacicImageChecker::IsEnableDLL() {
    const std::lock_guard<std::mutex> lock(pathMutex);
    // The program folder only ever moves under tests; a path found in another folder is
    // searched again.
    if (!pathDllS.isEmpty() && MibIsFileExist(pathDllS) &&
        MibParentDir(pathDllS) == ToviVerifierLibrary::ProgramPath()) {
        return true;
    }
    const QString found = ToviVerifierLibrary::Find(LibraryName_);
    if (found.isEmpty()) {
        return false;
    }
    pathDllS = found;
    return true;
}

bool ToviJacicImageChecker::Initiate() {
    if (library.IsLoaded()) {
        return true;
    }
    if (!IsEnableDLL()) {
        return false;
    }
    QString path;
    {
        const std::lock_guard<std::mutex> lock(pathMutex);
        path = pathDllS;
    }
    return library.Load(path);
}

void ToviJacicImageChecker::Terminate() {
    library.Unload();
}

ToviCheckProcessor::CheckStatus ToviJacicImageChecker::Check(const QString& path) {
    // The library opens the file itself: a FIFO or device must not reach it.
    if (!MibIsFileExist(path) || !Initiate()) {
        return StatusError;
    }
    if (MibGetExt(path).compare(QStringLiteral("svg"), Qt::CaseInsensitive) == 0) {
        return CheckS(path);
    }
    return CheckJ(path);
}

ToviCheckProcessor::CheckStatus ToviJacicImageChecker::CheckJ(const QString& path) {
    return CallHashCheck(JpegFunction_, path, &StatusOfJpegCode);
}

ToviCheckProcessor::CheckStatus ToviJacicImageChecker::CheckS(const QString& path) {
    return CallHashCheck(SvgFunction_, path, &StatusOfSvgCode);
}

ToviCheckProcessor::CheckStatus ToviJacicImageChecker::CallHashCheck(const char* function,
                                                                     const QString& path,
                                                                     CheckStatus (*statusOf)(int)) {
    const auto check = reinterpret_cast<HashFunction>(library.Resolve(function));
    if (!check) {
        return StatusError;
    }
    const QByteArray localPath = QFile::encodeName(path);
    const std::lock_guard<std::mutex> lock(callMutex);
    return statusOf(check(localPath.constData()));
}

ToviCheckProcessor::CheckStatus ToviJacicImageChecker::StatusOfJpegCode(int code) {
    switch (code) {
        case 1:
            return StatusUnaltered;
        case 0:
        case -1:
        case -2:
        case -307:
            return StatusAltered;
        case -303:
        case -304:
        case -305:
            return StatusOutsideTarget;
        default:
            return StatusError;
    }
}

ToviCheckProcessor::CheckStatus ToviJacicImageChecker::StatusOfSvgCode(int code) {
    switch (code) {
        case 1:
            return StatusUnaltered;
        case 0:
        case -1:
        case -2:
        case -3:
        case -23:
        case -24:
        case -25:
        case -43:
        case -44:
        case -45:
            return StatusAltered;
        case -21:
        case -22:
        case -41:
        case -42:
        case -61:
        case -81:
        case -82:
        case -83:
        case -84:
        case -85:
        case -86:
        case -301:
        case -303:
        case -304:
        case -305:
        case -307:
            return StatusOutsideTarget;
        default:
            return StatusError;
    }
}
