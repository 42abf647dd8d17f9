#pragma once

#include "imagefacts/ToviCheckProcessor.h"
#include "platform/ToviVerifierLibrary.h"

// The camera maker's JPEG verifier (RVRFYJPG, function RVJ_Verify). It judges only the
// photographs of the camera models that carry its signature, and its "outside target" is
// final: no other verifier is asked after it.
class ToviRicohImageChecker : public ToviCheckProcessor {
public:
    static const QString LibraryName_;         // "RVRFYJPG"
    static const char* const VerifyFunction_;  // "RVJ_Verify"

    // The maker's verifier is loaded at run time here, so like the hash checker it joins the
    // chain only when its library is there and loads.
    bool IsEnableDLL() override;
    bool Initiate() override;
    void Terminate() override;
    // True when the Exif model name, without ASCII and full-width blanks around it, is one of
    // "G600", "G700", "G700 SE", "G800", "G800 SE".
    bool IsTarget(const QString& path) override;
    bool IsContinueOutsideTarget() override { return false; }
    // Hands the whole file, mapped read-only, to RVJ_Verify: 0 unaltered, 1 altered, 2 outside
    // target, anything else (or a file that can't be mapped) an error.
    CheckStatus Check(const QString& path) override;

    // The status of one RVJ_Verify return code.
    static CheckStatus StatusOfCode(int code);
    // Calls RVJ_Verify of library on the bytes; the raw return code, or nothing (false) when
    // the library lacks the function.
    static bool CallVerify(const ToviVerifierLibrary& library, const uchar* bytes,
                           unsigned long size, int& code);

private:
    ToviVerifierLibrary library;
};
