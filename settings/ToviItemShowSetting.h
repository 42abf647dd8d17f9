#pragma once

#include "document/ToviItemDef.h"

#include <QString>

// What kind of fact an information-list entry shows.
enum InfoType {
    InfoTypeItem = 0,  // a management item of the delivery (管理項目)
    InfoTypeFile = 1,  // a fact of the image file (ファイル情報)
    InfoTypeExif = 2,  // an Exif fact (Exif情報)
};

// One candidate entry of a photograph's information list.
struct ToviItemShowSetting {
    using Grade = Definition::Grade;

    ToviItemShowSetting() = default;
    explicit ToviItemShowSetting(const QString& title) : title(title) {}
    ToviItemShowSetting(const ToviItemShowSetting&) = default;
    ToviItemShowSetting& operator=(const ToviItemShowSetting&) = default;
    virtual ~ToviItemShowSetting() = default;

    // Compares all five fields; the title exactly.
    virtual bool operator==(const ToviItemShowSetting& other) const;
    virtual bool operator!=(const ToviItemShowSetting& other) const { return !(*this == other); }
    // Shows (true) or hides the entry.
    virtual void Bold(bool on) { bold = on; }

    QString title;
    // Whether the entry is shown. The name is historical: it has nothing to do with a typeface.
    bool bold = false;
    // The definition index for a delivery item; the number of definitions for file and Exif
    // facts.
    int index = -1;
    Grade grade = Definition::GradeOptional;
    InfoType infoType = InfoTypeItem;
};
