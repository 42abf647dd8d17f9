// The document's side of the tamper check: one photograph through the verifier chain, and
// the reset of every result when the chain changes.

#include "document/ToviData.h"

#include "document/ToviPhoto.h"
#include "imagefacts/ToviImageCheckCommon.h"
#include "imagefacts/ToviRicohImageChecker.h"
#include "platform/ToviProgressDlg.h"
#include "platform/ToviVerifierLibrary.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
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

bool ToviData::CheckEditJPEGCurrent(std::array<int, 4>& counts, QWidget* owner) {
    counts.fill(0);
    if (!visualSetting->GetDoEditCheck() || visualSetting->GetEditCheckTypes().isEmpty()) {
        return true;
    }
    const int count = curPhotos.GetSize();
    // Not throttled by position: one photograph may take a while to verify and another none,
    // so the window moves by the clock instead, and at once after the first.
    ToviProgressDlg progress(false, owner);
    progress.SetCancelBtnEnabled(true);
    progress.Create(owner);
    progress.SetCaption(QString());
    progress.SetRange(0, count);
    progress.SetPos(0);
    progress.SetMessage(QStringLiteral("画像加工検知中　0 / %1").arg(count));
    QElapsedTimer clock;
    clock.start();
    for (int pos = 0; pos < count; ++pos) {
        ToviPhoto* photo = GetPhoto(pos);
        if (!photo) {
            continue;
        }
        CheckEditJPEG(photo);
        ++counts[std::clamp(static_cast<int>(photo->GetEditChkResult()), 0, 3)];
        if (pos == 0 || pos + 1 == count || clock.elapsed() >= kEditCheckUpdateMs) {
            clock.restart();
            progress.SetMessage(QStringLiteral("画像加工検知中　%1 / %2").arg(pos + 1).arg(count));
            progress.SetPos(pos + 1);
            if (progress.GetCancel() || !progress.IsWindow()) {
                return false;
            }
        }
    }
    return true;
}
