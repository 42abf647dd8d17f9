#pragma once

#include "extraction/ToviExtractionConditions.h"

#include <QList>
#include <QStringList>

#include <array>

class ToviItemDef;
class ToviPhoto;

// Judges photographs against one set of extraction conditions, all of them (AND) or any of
// them (OR). The facts that don't depend on the photograph are looked up once, here.
class ToviExtractionJudge {
public:
    enum class Verdict {
        Add,
        Reject,
        EmptyDate,  // a shooting-date condition met a photograph without a date
    };

    ToviExtractionJudge(const ToviItemDef& def, const ToviExtractionConditions& conditions);

    Verdict Judge(ToviPhoto& photo, bool orMode);

private:
    bool HasEmptyRequired(const ToviPhoto& photo);
    bool ItemMatches(const ToviPhoto& photo, int index, const QString& text);
    Verdict JudgeDate(ToviPhoto& photo) const;
    Verdict JudgeAnd(ToviPhoto& photo);
    Verdict JudgeOr(ToviPhoto& photo);

    const ToviExtractionConditions& c;
    int keyPhoto = -1;
    int shootingDate = -1;
    std::array<int, ToviExtractionConditions::kItemCount> items{};
    QList<int> required;  // 必須 items shown in the main list or the zoom view
    QStringList values;   // scratch, kept to spare an allocation per photograph
};
