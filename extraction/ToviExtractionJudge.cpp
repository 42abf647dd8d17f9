#include "extraction/ToviExtractionJudge.h"

#include "document/ToviItemDef.h"
#include "document/ToviNode.h"
#include "document/ToviPhoto.h"

ToviExtractionJudge::ToviExtractionJudge(const ToviItemDef& def,
                                         const ToviExtractionConditions& conditions)
    : c(conditions) {
    keyPhoto = def.GetIndexFromTitle(QStringLiteral("代表写真"));
    shootingDate = def.GetIndexFromTitle(QStringLiteral("撮影年月日"));
    for (int j = 0; j < ToviExtractionConditions::kItemCount; ++j) {
        items[j] = def.GetIndexFromTitle(c.itemTitle[j]);
    }
    for (int i = 0; i < def.GetCount(); ++i) {
        const Definition& d = def.GetDef(i);
        if (d.grade == Definition::GradeRequired &&
            (d.show == Definition::ShowMainList || d.show == Definition::ShowZoomDlg)) {
            required.append(i);
        }
    }
}

ToviExtractionJudge::Verdict ToviExtractionJudge::Judge(ToviPhoto& photo, bool orMode) {
    return orMode ? JudgeOr(photo) : JudgeAnd(photo);
}

// A required item with a stored empty value; an item that is missing altogether doesn't count.
bool ToviExtractionJudge::HasEmptyRequired(const ToviPhoto& photo) {
    for (int index : required) {
        photo.GetTitleFromIndex(index, values);
        for (const QString& v : values) {
            if (v.isEmpty()) {
                return true;
            }
        }
    }
    return false;
}

// Some value equals text exactly, or text is the marker and some value is empty.
bool ToviExtractionJudge::ItemMatches(const ToviPhoto& photo, int index, const QString& text) {
    photo.GetTitleFromIndex(index, values);
    const bool marker = text == ToviNode::kUnfilledTitle;
    for (const QString& v : values) {
        if (v == text || (marker && v.isEmpty())) {
            return true;
        }
    }
    return false;
}

ToviExtractionJudge::Verdict ToviExtractionJudge::JudgeDate(ToviPhoto& photo) const {
    const QString date =
        c.dateKind != 0 ? photo.GetFileRenewalDate() : photo.GetTitle(shootingDate);
    if (c.dateKind == 0 && date.isEmpty()) {
        return Verdict::EmptyDate;
    }
    return c.dateFrom <= date && date <= c.dateTo ? Verdict::Add : Verdict::Reject;
}

// AND: the first condition that fails rejects. A 代表写真 condition on a delivery without
// that item lets everything through, and an item condition with no value rejects.
ToviExtractionJudge::Verdict ToviExtractionJudge::JudgeAnd(ToviPhoto& photo) {
    if (c.keyPhoto && keyPhoto >= 0 && photo.GetTitle(keyPhoto) != QLatin1String("1")) {
        return Verdict::Reject;
    }
    if (c.ngPhoto && !photo.HasNGLabel()) {
        return Verdict::Reject;
    }
    if (c.notcheckPhoto && !photo.IsNotCheck()) {
        return Verdict::Reject;
    }
    if (c.notExifinfo && photo.CheckExif()) {
        return Verdict::Reject;
    }
    if (c.neceNotwrite && !HasEmptyRequired(photo)) {
        return Verdict::Reject;
    }
    for (int j = 0; j < ToviExtractionConditions::kItemCount; ++j) {
        if (c.itemOn[j] && !ItemMatches(photo, items[j], c.itemText[j])) {
            return Verdict::Reject;
        }
    }
    if (c.dateOn) {
        return JudgeDate(photo);
    }
    return Verdict::Add;
}

// OR: the first condition that holds adds; one that doesn't, for whatever reason, passes on.
// A 代表写真 condition on a delivery without that item matches nothing.
ToviExtractionJudge::Verdict ToviExtractionJudge::JudgeOr(ToviPhoto& photo) {
    if (c.keyPhoto && keyPhoto >= 0 && photo.GetTitle(keyPhoto) == QLatin1String("1")) {
        return Verdict::Add;
    }
    if (c.ngPhoto && photo.HasNGLabel()) {
        return Verdict::Add;
    }
    if (c.notcheckPhoto && photo.IsNotCheck()) {
        return Verdict::Add;
    }
    if (c.notExifinfo && !photo.CheckExif()) {
        return Verdict::Add;
    }
    if (c.neceNotwrite && HasEmptyRequired(photo)) {
        return Verdict::Add;
    }
    for (int j = 0; j < ToviExtractionConditions::kItemCount; ++j) {
        if (c.itemOn[j] && ItemMatches(photo, items[j], c.itemText[j])) {
            return Verdict::Add;
        }
    }
    if (c.dateOn) {
        return JudgeDate(photo);
    }
    return Verdict::Reject;
}
