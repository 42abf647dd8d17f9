#pragma once

#include "checks/ToviCheckFinding.h"

#include <QList>

class ToviCheckContext;

// Where checks put what they find.
class ToviFindingSink {
public:
    virtual ~ToviFindingSink() = default;
    virtual void Add(ToviCheckFinding finding) = 0;
};

// One check of a delivery. A check reads the document and the files through the context and
// never changes either; it opens no photograph file unless it says so in ReadsImages.
class ToviDeliveryCheck {
public:
    virtual ~ToviDeliveryCheck() = default;
    // Every code this check can report.
    virtual QList<const char*> Codes() const = 0;
    // Whether the check decodes or reads image files (left out with --no-images).
    virtual bool ReadsImages() const { return false; }
    // Adds the findings to sink; stops early when context.Continue answers false.
    virtual void Run(ToviCheckContext& context, ToviFindingSink& sink) = 0;
};
