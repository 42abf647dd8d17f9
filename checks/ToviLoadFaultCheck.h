#pragma once

#include "checks/ToviDeliveryCheck.h"

// What the load left out or mended, so that nothing disappears without a word: each
// photograph not read for want of an element of data count "0" (an error about no
// photograph, since it has no place among the photographs), each occurrence of a repeating
// block left out of a photograph, and the values in which undecodable bytes were replaced.
class ToviLoadFaultCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void CheckPhoto(ToviCheckContext&, int, ToviFindingSink&) override {}
    void Finish(ToviCheckContext& context, ToviFindingSink& sink) override;
};
