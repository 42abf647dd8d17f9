// Sorting and extraction of ToviData; the judging is ToviExtractionJudge's.

#include "document/ToviData.h"

#include "document/ToviPhoto.h"
#include "extraction/ToviExtractionJudge.h"
#include "extraction/ToviSortCondition.h"
#include "extraction/ToviSorter.h"
#include "platform/ToviProgressDlg.h"

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
    ToviExtractionJudge judge(itemDef, c);
    const int count = curPhotos.GetSize();

    ToviProgressDlg progress(true, nullptr);
    progress.OpenForLoop(count, true);

    const QString messageHead = QStringLiteral("写真データ抽出中　");
    const QString messageTail = QStringLiteral(" / ") + QString::number(count);
    ToviPhotoRef result;
    for (int i = 0; i < count; ++i) {
        ToviPhoto* photo = PhotoAt(curPhotos.GetAt(i));
        if (!photo) {
            return false;  // the current array stays as it was
        }
        const ToviExtractionJudge::Verdict verdict = judge.Judge(*photo, orMode);
        if (verdict == ToviExtractionJudge::Verdict::Add) {
            result.Add(curPhotos.GetAt(i));
        } else if (verdict == ToviExtractionJudge::Verdict::EmptyDate) {
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
