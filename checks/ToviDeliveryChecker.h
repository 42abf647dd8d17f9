#pragma once

#include "checks/ToviCheckFinding.h"
#include "checks/ToviDeliveryCheck.h"

#include <QList>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

class ToviData;

// Keeps every finding and a count per severity.
class ToviFindingCollector : public ToviFindingSink {
public:
    void Add(ToviCheckFinding finding) override;
    const std::vector<ToviCheckFinding>& Findings() const { return findings; }
    int Count(ToviCheckFinding::Severity severity) const { return counts[severity]; }

private:
    std::vector<ToviCheckFinding> findings;
    std::array<int, ToviCheckFinding::kSeverityCount> counts{};
};

// Runs a list of checks over one delivery. The run only reads the document and the disc, so
// it may run off the thread that owns the document as long as nothing changes the document
// meanwhile (see Run).
class ToviDeliveryChecker {
public:
    // done out of total photographs; called now and then, and at the end, from the thread that
    // runs the checks.
    using Progress = std::function<void(qint64 done, qint64 total)>;

    ToviDeliveryChecker();
    ~ToviDeliveryChecker();
    ToviDeliveryChecker(const ToviDeliveryChecker&) = delete;
    ToviDeliveryChecker& operator=(const ToviDeliveryChecker&) = delete;

    void AddCheck(std::unique_ptr<ToviDeliveryCheck> check);
    // The value, file, load and structure checks; withImages adds those that read image files.
    static std::unique_ptr<ToviDeliveryChecker> Standard(bool withImages);
    int CheckCount() const { return static_cast<int>(checks.size()); }
    // Every code the checks can report, in the checks' order.
    QList<const char*> Codes() const;

    void SetProgress(Progress callback) { progress = std::move(callback); }
    // Set from any thread to stop the run at the next photograph.
    void SetCancelFlag(const std::atomic<bool>* flag) { cancel = flag; }

    // Walks the photographs once, each through every check, then lets each check end; answers
    // false when cancelled (sink has what was found so far). The findings reach the sink by
    // photograph, those about no photograph last. The document must not change during the
    // run: the caller keeps edits, reloads and label changes away meanwhile.
    bool Run(const ToviData& document, ToviFindingSink& sink);

private:
    std::vector<std::unique_ptr<ToviDeliveryCheck>> checks;
    Progress progress;
    const std::atomic<bool>* cancel = nullptr;
};
