#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "imagefacts/ToviControlValueArray.h"
#include "imagefacts/ToviControlValueParser.h"
#include "imagefacts/ToviControlValues.h"

bool ToviPhoto::GetControlValueArray(ToviControlValueArray& out) const {
    out.clear();
    // A photograph without the item, or a delivery whose generation lacks it, reads as an
    // empty text: no values, and valid.
    const int defIndex =
        document ? document->GetItemDef()->GetIndexFromTitle(QStringLiteral("施工管理値")) : -1;
    ToviControlValues values;
    ParseControlValues(defIndex >= 0 ? GetTitle(defIndex) : QString(), values);
    if (!values.IsValid()) {
        return false;
    }
    out.reserve(static_cast<qsizetype>(values.size()));
    for (const std::unique_ptr<ToviControlValue>& value : values) {
        out.append({value->Name(), value->Design(), value->Actual(), value->Difference()});
    }
    return true;
}
