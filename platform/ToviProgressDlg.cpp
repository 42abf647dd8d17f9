#include "platform/ToviProgressDlg.h"

#include "platform/ToviUi.h"

#include <algorithm>

namespace {

// A throttled dialog acts about this many times over its range.
constexpr qint64 kUpdatesPerRange = 100;

}  // namespace

ToviProgressDlg::ToviProgressDlg(bool throttled, QWidget* parent)
    : parent(parent), throttled(throttled), pollPending(throttled) {}

ToviProgressDlg::~ToviProgressDlg() {
    if (IsWindow() && view) {
        EnableParentWindow(true);
        view->Close();
    }
}

bool ToviProgressDlg::IsWindow() const {
    return created && (!view || view->IsAlive());
}

bool ToviProgressDlg::Create(QWidget* owner) {
    if (IsWindow()) {
        return false;
    }
    if (owner) {
        parent = owner;
    }
    view = ToviUi::Instance().CreateProgressView(parent);
    created = true;
    cancelled = false;
    if (caption.isEmpty()) {
        caption = ToviUi::Instance().ApplicationName();
    }
    if (view) {
        view->SetCancelHandler([this] { OnCancel(); });
        view->ShowCancelButton(cancelEnabled);
        view->SetCaption(caption);
        view->SetRange(barLower, barUpper);
        view->SetPos(barPos);
        view->SetPercentText(percent);
        if (!message.isEmpty()) {
            view->SetMessage(message);
        }
        EnableParentWindow(false);
        view->Show();
    }
    return true;
}

void ToviProgressDlg::SetCaption(const QString& text) {
    caption = text.isEmpty() ? ToviUi::Instance().ApplicationName() : text;
    if (IsWindow() && view) {
        view->SetCaption(caption);
    }
}

void ToviProgressDlg::SetCancelBtnEnabled(bool enabled) {
    cancelEnabled = enabled;
    if (IsWindow() && view) {
        view->ShowCancelButton(enabled);
    }
}

void ToviProgressDlg::SetRange(int lower, int upper) {
    if (throttled) {
        const qint64 span = static_cast<qint64>(upper) - lower;
        interval = 0;
        if (span > kUpdatesPerRange) {
            interval = static_cast<int>(span / kUpdatesPerRange);
        }
        // One update per position is no throttling at all; it is given up for this dialog.
        if (interval < 2) {
            throttled = false;
        }
    }
    nextUpdate = lower;
    position = lower;
    barLower = lower;
    barUpper = upper;
    barPos = ClampToBar(barPos);
    if (IsWindow() && view) {
        view->SetRange(lower, upper);
    }
}

int ToviProgressDlg::SetStep(int step) {
    const int previous = barStep;
    barStep = step;
    return previous;
}

int ToviProgressDlg::SetPos(int pos) {
    if (throttled && interval > 0) {
        if (pos < nextUpdate) {
            return barPos;
        }
        nextUpdate =
            static_cast<int>(std::min<qint64>(static_cast<qint64>(pos) + interval, barUpper));
        pollPending = true;
    }
    const int previous = barPos;
    if (IsWindow()) {
        DisposeOfMessages();
    }
    MoveBar(pos);
    SetPercent();
    return previous;
}

int ToviProgressDlg::StepIt() {
    if (throttled) {
        ++position;
        return SetPos(position);
    }
    const int previous = barPos;
    if (IsWindow()) {
        DisposeOfMessages();
    }
    MoveBar(static_cast<qint64>(barPos) + barStep);
    SetPercent();
    return previous;
}

void ToviProgressDlg::SetMessage(const QString& text) {
    if (text.isEmpty() || text == message) {
        return;
    }
    message = text;
    if (IsWindow() && view) {
        view->SetMessage(message);
    }
}

bool ToviProgressDlg::GetCancel() {
    if (throttled) {
        if (!pollPending) {
            return false;
        }
        pollPending = false;
    }
    DisposeOfMessages();
    const bool answer = cancelled;
    cancelled = false;
    return answer;
}

bool ToviProgressDlg::DestroyWindow() {
    const bool existed = IsWindow();
    if (existed && view) {
        EnableParentWindow(true);
        view->Close();
    }
    // The view object stays until the dialog goes: this may run inside one of its own
    // callbacks during a pump.
    created = false;
    return existed;
}

void ToviProgressDlg::DisposeOfMessages() {
    ToviUi::Instance().Pump();
}

void ToviProgressDlg::EnableParentWindow(bool enable) {
    if (IsWindow() && view) {
        view->EnableOwner(enable);
    }
}

void ToviProgressDlg::SetPercent() {
    const qint64 span = static_cast<qint64>(barUpper) - barLower;
    qint64 value = 0;
    if (span != 0) {
        value = std::clamp<qint64>((static_cast<qint64>(barPos) - barLower) * 100 / span, 0, 100);
    }
    const QString text = QString::asprintf("%u%%", static_cast<unsigned>(value));
    if (text == percent) {
        return;
    }
    percent = text;
    if (IsWindow() && view) {
        view->SetPercentText(percent);
    }
}

int ToviProgressDlg::ClampToBar(qint64 pos) const {
    // Like any bar, the position stays inside the range, whichever way round it was given.
    const qint64 low = std::min(barLower, barUpper);
    const qint64 high = std::max(barLower, barUpper);
    return static_cast<int>(std::clamp(pos, low, high));
}

void ToviProgressDlg::MoveBar(qint64 pos) {
    barPos = ClampToBar(pos);
    if (IsWindow() && view) {
        view->SetPos(barPos);
    }
}

void ToviProgressDlg::OnCancel() {
    if (cancelEnabled) {
        cancelled = true;
    }
}

void ToviProgressDlg::OpenForLoop(int count, bool cancelEnabled) {
    SetCancelBtnEnabled(cancelEnabled);
    Create(nullptr);
    SetCaption(QString());
    SetRange(0, count);
    SetStep(1);
    SetPos(0);
}
