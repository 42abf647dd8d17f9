#pragma once

#include "checks/ToviCheckFinding.h"

#include <QList>

class ToviCheckContext;

// Where checks put what they find: a list (ToviFindingCollector), or a writer that passes each
// finding on at once, so that a delivery faulty in every photograph is reported in bounded
// memory.
class ToviFindingSink {
public:
    virtual ~ToviFindingSink() = default;
    virtual void Add(ToviCheckFinding finding) = 0;
};

// One check of a delivery. The checker walks the photographs once, in PHOTO.XML order, and
// hands each to every check; a check keeps what it needs across photographs (numbers seen, file
// names) from Begin to Finish. A check reads the document and the files through the context
// and never changes either; it opens no photograph file unless it says so in ReadsImages.
class ToviDeliveryCheck {
public:
    virtual ~ToviDeliveryCheck() = default;
    // Every code this check can report.
    virtual QList<const char*> Codes() const = 0;
    // Whether the check decodes or reads image files (left out with --no-images).
    virtual bool ReadsImages() const { return false; }
    // Before the first photograph of a run: forgets the last run.
    virtual void Begin(ToviCheckContext&) {}
    // One photograph; its findings carry its index.
    virtual void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) = 0;
    // After the last photograph (not after a cancel): findings about the delivery as a whole,
    // which come after every photograph's.
    virtual void Finish(ToviCheckContext&, ToviFindingSink&) {}
};
