#pragma once

#include "document/ToviHostDocument.h"

// The document's host without views: the readers under test broadcast nothing anyone sees.
class SilentHost final : public ToviHostDocument {
public:
    void UpdateAllViews(QWidget*, int, QObject*) override {}
};
