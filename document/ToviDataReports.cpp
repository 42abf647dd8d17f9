// The reports of a document: the writers in reports/ do the work.

#include "document/ToviData.h"

#include "reports/ToviCheckStatusFileOut.h"

bool ToviData::FileOutCheckStatus(const QString& caption) {
    ToviCheckStatusFileOut writer(*this, *GetLabelManager());
    return writer.FileOut(caption);
}
