#include "checks/ToviDeliveryChecker.h"

#include "checks/ToviCheckContext.h"
#include "checks/ToviFileChecks.h"
#include "checks/ToviItemChecks.h"
#include "checks/ToviLoadFaultCheck.h"
#include "checks/ToviStructureCheck.h"
#include "checks/ToviImageChecks.h"
#include "checks/ToviValueChecks.h"
#include "document/ToviData.h"

#include <algorithm>

void ToviFindingCollector::Add(ToviCheckFinding finding) {
    ++counts[finding.severity];
    findings.push_back(std::move(finding));
}

ToviDeliveryChecker::ToviDeliveryChecker() = default;
ToviDeliveryChecker::~ToviDeliveryChecker() = default;

void ToviDeliveryChecker::AddCheck(std::unique_ptr<ToviDeliveryCheck> check) {
    checks.push_back(std::move(check));
}

std::unique_ptr<ToviDeliveryChecker> ToviDeliveryChecker::Standard(bool withImages) {
    auto checker = std::make_unique<ToviDeliveryChecker>();
    checker->AddCheck(std::make_unique<ToviDateCheck>());
    checker->AddCheck(std::make_unique<ToviFlagCheck>());
    checker->AddCheck(std::make_unique<ToviSerialCheck>());
    checker->AddCheck(std::make_unique<ToviTextCheck>());
    checker->AddCheck(std::make_unique<ToviRequiredItemCheck>());
    checker->AddCheck(std::make_unique<ToviLengthCheck>());
    checker->AddCheck(std::make_unique<ToviFileNameCheck>());
    checker->AddCheck(std::make_unique<ToviFilePresenceCheck>());
    checker->AddCheck(std::make_unique<ToviStrayFileCheck>());
    checker->AddCheck(std::make_unique<ToviLoadFaultCheck>());
    checker->AddCheck(std::make_unique<ToviStructureCheck>());
    checker->AddCheck(std::make_unique<ToviImageFileCheck>());
    checker->AddCheck(std::make_unique<ToviShotDateCheck>());
    checker->AddCheck(std::make_unique<ToviTamperCheck>());
    if (!withImages) {
        std::erase_if(checker->checks, [](const auto& check) { return check->ReadsImages(); });
    }
    return checker;
}

QList<const char*> ToviDeliveryChecker::Codes() const {
    QList<const char*> codes;
    for (const auto& check : checks) {
        codes += check->Codes();
    }
    return codes;
}

bool ToviDeliveryChecker::Run(const ToviData& document, ToviFindingSink& sink) {
    ToviCheckContext context(document);
    const int total = context.PhotoCount();
    const auto cancelled = [&] { return cancel && cancel->load(std::memory_order_relaxed); };
    // A photograph whose files are read and decoded takes milliseconds, not microseconds: the
    // cancel and the progress then come every 32 photographs rather than every 1024.
    const bool readsImages = std::any_of(checks.begin(), checks.end(),
                                         [](const auto& check) { return check->ReadsImages(); });
    const int every = readsImages ? 31 : 1023;
    for (const auto& check : checks) {
        check->Begin(context);
    }
    for (int index = 0; index < total; ++index) {
        if ((index & every) == 0) {
            if (cancelled()) {
                return false;
            }
            if (progress && index > 0) {
                progress(index, total);
            }
        }
        for (const auto& check : checks) {
            check->CheckPhoto(context, index, sink);
        }
    }
    if (cancelled()) {
        return false;
    }
    for (const auto& check : checks) {
        check->Finish(context, sink);
    }
    if (progress) {
        progress(total, total);
    }
    return true;
}
