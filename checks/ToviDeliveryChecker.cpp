#include "checks/ToviDeliveryChecker.h"

#include "checks/ToviCheckContext.h"
#include "checks/ToviFileChecks.h"
#include "checks/ToviValueChecks.h"
#include "document/ToviData.h"

#include <algorithm>

void ToviFindingCollector::Add(ToviCheckFinding finding) {
    ++counts[finding.severity];
    findings.push_back(std::move(finding));
}

void ToviFindingCollector::SortByPhotograph() {
    const auto key = [](const ToviCheckFinding& f) {
        return f.index < 0 ? std::numeric_limits<int>::max() : f.index;
    };
    std::stable_sort(
        findings.begin(), findings.end(),
        [&](const ToviCheckFinding& a, const ToviCheckFinding& b) { return key(a) < key(b); });
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
    checker->AddCheck(std::make_unique<ToviFileNameCheck>());
    checker->AddCheck(std::make_unique<ToviFilePresenceCheck>());
    checker->AddCheck(std::make_unique<ToviStrayFileCheck>());
    if (!withImages) {
        std::erase_if(checker->checks, [](const auto& check) { return check->ReadsImages(); });
    }
    return checker;
}

bool ToviDeliveryChecker::Run(const ToviData& document, ToviFindingCollector& findings) {
    ToviCheckContext context(document);
    const qint64 perCheck = std::max(1, context.PhotoCount());
    const qint64 total = perCheck * static_cast<qint64>(checks.size());
    qint64 start = 0;
    for (const auto& check : checks) {
        context.SetTick(
            [&](qint64 done) {
                if (progress) {
                    progress(done, total);
                }
                return !(cancel && cancel->load(std::memory_order_relaxed));
            },
            start);
        if (cancel && cancel->load(std::memory_order_relaxed)) {
            break;
        }
        check->Run(context, findings);
        if (context.Stopped()) {
            break;
        }
        start += perCheck;
        if (progress) {
            progress(start, total);
        }
    }
    findings.SortByPhotograph();
    return !context.Stopped() && !(cancel && cancel->load(std::memory_order_relaxed));
}
