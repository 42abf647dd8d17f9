// The label queries and the batch label correction of ToviData.

#include "document/ToviData.h"

#include "document/ToviPhoto.h"
#include "platform/ToviUi.h"
#include "review/LabelProcessSelectTexts.h"

#include <QVariantMap>

int ToviData::CollectionLabel(unsigned long label, ToviPhotoRef& out) const {
    QList<int> found;
    if (label < static_cast<unsigned long>(ToviPhoto::kLabelCount)) {
        for (qsizetype k = 0; k < photoData.size(); ++k) {
            if (photoData[k]->IsLabelPasted(static_cast<unsigned int>(label))) {
                found.append(static_cast<int>(k));
            }
        }
    }
    out.Assign(found);
    return static_cast<int>(found.size());
}

int ToviData::CountLabel(unsigned long label) const {
    if (label >= static_cast<unsigned long>(ToviPhoto::kLabelCount)) {
        return 0;
    }
    int count = 0;
    for (const ToviPhoto* photo : photoData) {
        count += photo->IsLabelPasted(static_cast<unsigned int>(label)) ? 1 : 0;
    }
    return count;
}

void ToviData::UpdateHasComment() {
    if (curPhotos.IsEmpty()) {
        return;
    }
    hasComment = false;
    for (int index : curPhotos) {
        const ToviPhoto* photo = GetPhotoActualPhotoArray(index);
        if (photo && !photo->GetComment().isEmpty()) {
            hasComment = true;
            return;
        }
    }
}

bool ToviData::AllLabelCorrection() {
    ToviUi& ui = ToviUi::Instance();
    QVariantMap values{{QStringLiteral("action"), 0},
                       {QStringLiteral("title"), LabelProcessSelectTexts::Title()},
                       {QStringLiteral("lead"), LabelProcessSelectTexts::Lead()},
                       {QStringLiteral("choices"), LabelProcessSelectTexts::Choices()},
                       {QStringLiteral("explanations"), LabelProcessSelectTexts::Explanations()}};
    if (!ui.RunDialog(nullptr, LabelProcessSelectTexts::DialogName(), values)) {
        return false;
    }
    if (ui.MessageBox(nullptr, LabelProcessSelectTexts::Confirmation(), QString(),
                      ToviUi::ButtonsOkCancel, ToviUi::IconQuestion) != ToviUi::AnswerOk) {
        return false;
    }
    bool result = false;
    switch (values.value(QStringLiteral("action")).toInt()) {
        case 0:
            result = AllOKLabel();
            break;
        case 1:
            result = AllRemoveCheckLabel();
            break;
        case 2:
            AllRemoveLabel();
            result = true;
            break;
        default:
            break;
    }
    // Set even when an empty current array made the action answer false.
    checkStatusChanged = true;
    Broadcast(nullptr, HintLabelsChanged);
    return result;
}

bool ToviData::AllOKLabel() {
    if (curPhotos.IsEmpty()) {
        return false;
    }
    for (int index : curPhotos) {
        ToviPhoto* photo = PhotoAt(index);
        if (!photo->HasNGLabel()) {
            photo->PasteLabel(0);
        }
    }
    return true;
}

bool ToviData::AllRemoveCheckLabel() {
    if (curPhotos.IsEmpty()) {
        return false;
    }
    for (int index : curPhotos) {
        PhotoAt(index)->CorrectAllNotCheck();
    }
    return true;
}

void ToviData::AllRemoveLabel() {
    if (photoData.isEmpty() || curPhotos.IsEmpty()) {
        return;
    }
    for (int index : curPhotos) {
        PhotoAt(index)->RemoveAllLabel();
    }
}
