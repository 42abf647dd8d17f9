#include "imagefacts/ToviRicohImageChecker.h"

#include "platform/LumImage.h"
#include "platform/MibFile.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <mutex>

const QString ToviRicohImageChecker::LibraryName_ = QStringLiteral("RVRFYJPG");
const char* const ToviRicohImageChecker::VerifyFunction_ = "RVJ_Verify";

namespace {

using VerifyFunction = int (*)(const void* fileBytes, unsigned long size);

// The outside library promises nothing about threads, and the delivery checks verify on a
// worker thread while the viewer may verify what it shows: one call at a time.
std::mutex callMutex;

bool IsBlank(QChar c) {
    return c == QChar(u' ') || c == QChar(u'\u3000');
}

// Trimmed by character, so that only whole ASCII or full-width spaces go.
QString TrimBlanks(const QString& text) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && IsBlank(text[begin])) {
        ++begin;
    }
    while (end > begin && IsBlank(text[end - 1])) {
        --end;
    }
    return text.mid(begin, end - begin);
}

}  // namespace

bool ToviRicohImageChecker::IsEnableDLL() {
    return !ToviVerifierLibrary::Find(LibraryName_).isEmpty();
}

bool ToviRicohImageChecker::Initiate() {
    if (library.IsLoaded()) {
        return true;
    }
    const QString path = ToviVerifierLibrary::Find(LibraryName_);
    return !path.isEmpty() && library.Load(path);
}

void ToviRicohImageChecker::Terminate() {
    library.Unload();
}

bool ToviRicohImageChecker::IsTarget(const QString& path) {
    if (path.isEmpty()) {
        return false;
    }
    QString model;
    if (!LumImage::GetComment(path, LumCmntModel, model)) {
        return false;
    }
    model = TrimBlanks(model);
    if (model.isEmpty()) {
        return false;
    }
    static const std::array<QString, 5> kModels{QStringLiteral("G600"), QStringLiteral("G700"),
                                                QStringLiteral("G700 SE"), QStringLiteral("G800"),
                                                QStringLiteral("G800 SE")};
    return std::find(kModels.begin(), kModels.end(), model) != kModels.end();
}

ToviCheckProcessor::CheckStatus ToviRicohImageChecker::Check(const QString& path) {
    if (path.isEmpty() || !Initiate()) {
        return StatusError;
    }
    // Other readers keep their access: the file is only read.
    QFile file;
    if (!MibOpenRegularFile(file, path)) {
        return StatusError;
    }
    const qint64 size = file.size();
    uchar* view = size > 0 ? file.map(0, size) : nullptr;
    if (!view) {
        return StatusError;
    }
    int code = 0;
    const bool called = CallVerify(library, view, static_cast<unsigned long>(size), code);
    file.unmap(view);
    return called ? StatusOfCode(code) : StatusError;
}

ToviCheckProcessor::CheckStatus ToviRicohImageChecker::StatusOfCode(int code) {
    switch (code) {
        case 0:
            return StatusUnaltered;
        case 1:
            return StatusAltered;
        case 2:
            return StatusOutsideTarget;
        default:
            return StatusError;
    }
}

bool ToviRicohImageChecker::CallVerify(const ToviVerifierLibrary& library, const uchar* bytes,
                                       unsigned long size, int& code) {
    const auto verify = reinterpret_cast<VerifyFunction>(library.Resolve(VerifyFunction_));
    if (!verify) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(callMutex);
    code = verify(bytes, size);
    return true;
}
