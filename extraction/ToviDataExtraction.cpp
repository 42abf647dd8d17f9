// Sorting and the extraction engine of ToviData.

#include "document/ToviData.h"

#include "document/ToviPhoto.h"
#include "extraction/ToviSortCondition.h"
#include "extraction/ToviSorter.h"
#include "reports/ToviProgressDlg.h"

namespace {

// The facts the conditions need that don't depend on the photograph.
struct Probe {
    int keyPhoto = -1;
    int shootingDate = -1;
    std::array<int, ToviExtractionConditions::kItemCount> items{};
    QList<int> required;  // 必須 items shown in the main list or the zoom view
};

Probe MakeProbe(const ToviItemDef& def, const ToviExtractionConditions& c) {
    Probe probe;
    probe.keyPhoto = def.GetIndexFromTitle(QStringLiteral("代表写真"));
    probe.shootingDate = def.GetIndexFromTitle(QStringLiteral("撮影年月日"));
    for (int j = 0; j < ToviExtractionConditions::kItemCount; ++j) {
        probe.items[j] = def.GetIndexFromTitle(c.itemTitle[j]);
    }
    for (int i = 0; i < def.GetCount(); ++i) {
        const Definition& d = def.GetDef(i);
        if (d.grade == Definition::GradeRequired &&
            (d.show == Definition::ShowMainList || d.show == Definition::ShowZoomDlg)) {
            probe.required.append(i);
        }
    }
    return probe;
}

// A required item with a stored empty value; an item that is missing altogether doesn't count.
bool HasEmptyRequired(const ToviPhoto& photo, const Probe& probe, QStringList& values) {
    for (int index : probe.required) {
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
bool ItemMatches(const ToviPhoto& photo, int index, const QString& text, QStringList& values) {
    photo.GetTitleFromIndex(index, values);
    const bool marker = text == ToviNode::kUnfilledTitle;
    for (const QString& v : values) {
        if (v == text || (marker && v.isEmpty())) {
            return true;
        }
    }
    return false;
}

enum class Verdict { Add, Reject, EmptyDate };

Verdict JudgeDate(ToviPhoto& photo, const ToviExtractionConditions& c, const Probe& probe) {
    const QString date =
        c.dateKind != 0 ? photo.GetFileRenewalDate() : photo.GetTitle(probe.shootingDate);
    if (c.dateKind == 0 && date.isEmpty()) {
        return Verdict::EmptyDate;
    }
    return c.dateFrom <= date && date <= c.dateTo ? Verdict::Add : Verdict::Reject;
}

// AND: the first condition that fails rejects. A 代表写真 condition on a delivery without
// that item lets everything through, and an item condition with no value rejects.
Verdict JudgeAnd(ToviPhoto& photo, const ToviExtractionConditions& c, const Probe& probe,
                 QStringList& values) {
    if (c.keyPhoto && probe.keyPhoto >= 0 && photo.GetTitle(probe.keyPhoto) != QLatin1String("1")) {
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
    if (c.neceNotwrite && !HasEmptyRequired(photo, probe, values)) {
        return Verdict::Reject;
    }
    for (int j = 0; j < ToviExtractionConditions::kItemCount; ++j) {
        if (c.itemOn[j] && !ItemMatches(photo, probe.items[j], c.itemText[j], values)) {
            return Verdict::Reject;
        }
    }
    if (c.dateOn) {
        return JudgeDate(photo, c, probe);
    }
    return Verdict::Add;
}

// OR: the first condition that holds adds; one that doesn't, for whatever reason, passes on.
// A 代表写真 condition on a delivery without that item matches nothing.
Verdict JudgeOr(ToviPhoto& photo, const ToviExtractionConditions& c, const Probe& probe,
                QStringList& values) {
    if (c.keyPhoto && probe.keyPhoto >= 0 && photo.GetTitle(probe.keyPhoto) == QLatin1String("1")) {
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
    if (c.neceNotwrite && HasEmptyRequired(photo, probe, values)) {
        return Verdict::Add;
    }
    for (int j = 0; j < ToviExtractionConditions::kItemCount; ++j) {
        if (c.itemOn[j] && ItemMatches(photo, probe.items[j], c.itemText[j], values)) {
            return Verdict::Add;
        }
    }
    if (c.dateOn) {
        return JudgeDate(photo, c, probe);
    }
    return Verdict::Reject;
}

}  // namespace

void ToviData::Sort() {
    ToviSorter sorter(this);
    sorter.PrepareSort(sortCondition->GetKeyItem(), curPhotos);
    sorter.QuickSort(sortCondition->IsAscending(), curPhotos);
}

void ToviData::SetSortCondition(const ToviSortCondition& condition) {
    *sortCondition = condition;
}

void ToviData::ExecExtraction() {
    extractionOn = true;
    SetSelected(selectedNode, true);
}

void ToviData::CancelExtraction() {
    extractionOn = false;
    SetSelected(selectedNode, true);
}

void ToviData::CancelExtraction(ToviExtractionSource::CancelExt value) {
    if (!extractionOn) {
        return;
    }
    if (extraction) {
        extraction->CancelExtraction(value);
    }
    extractionOn = false;
}

void ToviData::ExtractionProcess() {
    if (!extractionOn || !extraction) {
        return;
    }
    if (extraction->Conditions().orMode != 0) {
        ExecExtractionOR();
    } else {
        ExecExtractionAND();
    }
}

bool ToviData::ExecExtractionAND() {
    return RunExtraction(false);
}

bool ToviData::ExecExtractionOR() {
    return RunExtraction(true);
}

// The frame both modes share: judge each photograph of the current array in order under a
// progress window; on Cancel the current array is left whole and extraction switches off.
bool ToviData::RunExtraction(bool orMode) {
    if (!extraction) {
        return false;
    }
    const ToviExtractionConditions& c = extraction->Conditions();
    const Probe probe = MakeProbe(itemDef, c);
    const int count = curPhotos.GetSize();

    ToviProgressDlg progress(true, nullptr);
    progress.SetCancelBtnEnabled(true);
    progress.Create(nullptr);
    progress.SetCaption(QString());
    progress.SetRange(0, count);
    progress.SetStep(1);
    progress.SetPos(0);

    const QString messageHead = QStringLiteral("写真データ抽出中　");
    const QString messageTail = QStringLiteral(" / ") + QString::number(count);
    ToviPhotoRef result;
    QStringList values;
    for (int i = 0; i < count; ++i) {
        ToviPhoto* photo = PhotoAt(curPhotos.GetAt(i));
        if (!photo) {
            return false;  // the current array stays as it was
        }
        const Verdict verdict =
            orMode ? JudgeOr(*photo, c, probe, values) : JudgeAnd(*photo, c, probe, values);
        if (verdict == Verdict::Add) {
            result.Add(curPhotos.GetAt(i));
        } else if (verdict == Verdict::EmptyDate) {
            // Not added, and on to the next at once: no message, no cancel test, no step.
            continue;
        }
        progress.SetMessage(messageHead + QString::number(i + 1) + messageTail);
        if (progress.GetCancel()) {
            if (extractionOn) {
                extraction->CancelExtraction(ToviExtractionSource::CancelButtonOnly);
                extractionOn = false;
            }
            return false;
        }
        progress.StepIt();
    }
    curPhotos.Assign(result.Indexes());
    return true;
}

void ToviData::SetCurPhotoArray(bool, bool update) {
    curPhotos.RemoveAll();
    if (sortCondition && sortCondition->IsExecSort()) {
        Sort();
    }
    if (update) {
        Broadcast(nullptr, HintCurrentArrayChanged);
    }
}
