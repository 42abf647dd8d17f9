#pragma once

#include "imagefacts/ToviCheckProcessor.h"
#include "platform/ToviVerifierLibrary.h"

// The public-works hash checker (JACICCHS, functions JCOMSIA_CheckHashValue for JPEG and
// JCOMSIA_SVG_CheckHashValue for SVG photographs). It takes every file, and its "outside
// target" lets the next verifier in the chain try.
class ToviJacicImageChecker : public ToviCheckProcessor {
public:
    static const QString LibraryName_;       // "JACICCHS"
    static const char* const JpegFunction_;  // "JCOMSIA_CheckHashValue"
    static const char* const SvgFunction_;   // "JCOMSIA_SVG_CheckHashValue"

    // Frees the library when it is loaded.
    ~ToviJacicImageChecker() override;

    // True when the library is in the program folder; the path found is kept for every
    // checker.
    bool IsEnableDLL() override;
    // Loads the library found by IsEnableDLL; true at once when it is loaded already.
    bool Initiate() override;
    void Terminate() override;
    bool IsTarget(const QString&) override { return true; }
    // SVG photographs (by extension, case ignored) go to the SVG function, everything else to
    // the JPEG one; each is looked up anew on every call, and a missing one is an error.
    CheckStatus Check(const QString& path) override;

    // The status of a return code of the JPEG function, and of the SVG function. The tables
    // differ (-307 above all), and are kept apart on purpose.
    static CheckStatus StatusOfJpegCode(int code);
    static CheckStatus StatusOfSvgCode(int code);

protected:
    CheckStatus CheckJ(const QString& path);
    CheckStatus CheckS(const QString& path);

private:
    CheckStatus CallHashCheck(const char* function, const QString& path,
                              CheckStatus (*statusOf)(int));

    ToviVerifierLibrary library;
    // The library's full path once found, shared by every checker.
    static QString pathDllS;
};
