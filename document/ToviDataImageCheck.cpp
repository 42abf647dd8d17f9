// The document's side of the tamper check: one photograph through the verifier chain, and
// the reset of every result when the chain changes.

#include "document/ToviData.h"

#include "document/ToviPhoto.h"
#include "imagefacts/ToviImageCheckCommon.h"
#include "imagefacts/ToviRicohImageChecker.h"
#include "platform/ToviVerifierLibrary.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QFile>

#include <new>

void ToviData::CheckEditJPEG(ToviPhoto* photo) {
    if (!photo || !visualSetting->GetDoEditCheck() ||
        visualSetting->GetEditCheckTypes().isEmpty()) {
        return;
    }
    // The file may have changed since the last look, so the stored result is never reused.
    imageCheck->SetFile(photo->GetImagePath());
    switch (imageCheck->CheckProcessedImage()) {
        case ToviCheckProcessor::StatusUnaltered:
            photo->SetEditChkResult(ToviPhoto::EditCheckUnaltered);
            break;
        case ToviCheckProcessor::StatusAltered:
            photo->SetEditChkResult(ToviPhoto::EditCheckAltered);
            break;
        default:
            photo->SetEditChkResult(ToviPhoto::EditCheckUnknown);
            break;
    }
}

void ToviData::Initialize_CheckEditJPEG() {
    for (ToviPhoto* photo : photoData) {
        photo->SetEditChkResult(ToviPhoto::EditCheckNone);
    }
}
