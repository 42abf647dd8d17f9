#pragma once

#include <QString>

// One tamper verifier in the chain of ToviImageCheckCommon. This base class is a verifier
// that is always there and can judge nothing; the real ones derive from it.
class ToviCheckProcessor {
public:
    // The result of one check. There is no 3: the numbers are kept as they always were.
    enum CheckStatus {
        StatusUnaltered = 0,
        StatusAltered = 1,
        StatusOutsideTarget = 2,
        StatusError = 4,
    };

    virtual ~ToviCheckProcessor() = default;

    // Whether the verifier's library can be found.
    virtual bool IsEnableDLL() { return true; }
    // Makes the verifier ready (loads its library); a processor joins the chain only when
    // this answers true.
    virtual bool Initiate() { return true; }
    virtual void Terminate() {}
    // Whether this verifier claims the file; the chain skips it otherwise.
    virtual bool IsTarget(const QString&) { return false; }
    // Whether the chain goes on to the next verifier after this one answered
    // StatusOutsideTarget.
    virtual bool IsContinueOutsideTarget() { return true; }
    virtual CheckStatus Check(const QString&) { return StatusError; }
};
