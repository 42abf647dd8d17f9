// 撮影日の照合 of the main window: the date table of the photographs on show, read on a worker
// thread while the progress window keeps the window alive, and the way from a row back to its
// photograph.

#include "app/ToviMainWindow.h"

#include "checks/ToviDateTable.h"
#include "dialogs/ToviDateTableDlg.h"
#include "document/ToviData.h"
#include "platform/ToviProgressDlg.h"

#include <QAction>
#include <QThread>

#include <atomic>
#include <thread>

void ToviMainWindow::CreateDateTableAction() {
    dateTableAction = new QAction(QStringLiteral("撮影日の照合(&D)..."), this);
    dateTableAction->setObjectName(QStringLiteral("dateTableAction"));
    dateTableAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D));
    dateTableAction->setToolTip(QStringLiteral(
        "表示中の写真の撮影年月日、Exif の撮影日時、ファイルの更新日時を並べて照合する"));
    connect(dateTableAction, &QAction::triggered, this, [this] { ShowDateTable(); });
}

bool ToviMainWindow::ShowDateTable() {
    ToviData* data = document->Data();
    if (!data || slideShow || data->GetCurrentPhotoCount() == 0) {
        return false;
    }
    const QList<int> indices = data->CurrentArray().Indexes();
    const int total = static_cast<int>(indices.size());

    // The worker only reads the document and the files' headers; the progress window keeps
    // the window disabled, so nothing changes the document meanwhile.
    ToviDateTable table;
    std::atomic<bool> cancel{false};
    std::atomic<bool> finished{false};
    std::atomic<qint64> done{0};
    bool complete = false;
    std::thread worker([&] {
        complete = table.Build(*data, indices, &cancel,
                               [&](qint64 n, qint64) { done.store(n, std::memory_order_relaxed); });
        finished.store(true, std::memory_order_release);
    });
    bool stopped = false;  // the user's cancel, which holds even when the reading had ended
    {
        ToviProgressDlg progress(false, this);
        progress.SetCancelBtnEnabled(true);
        progress.Create(this);
        progress.SetCaption(QString());
        progress.SetRange(0, total);
        do {
            const qint64 n = done.load(std::memory_order_relaxed);
            progress.SetMessage(
                QStringLiteral("撮影日を照合しています　%1 / %2").arg(n).arg(total));
            progress.SetPos(static_cast<int>(n));
            if (progress.GetCancel() || !progress.IsWindow()) {
                stopped = true;
                cancel.store(true);
                break;
            }
            QThread::msleep(15);
        } while (!finished.load(std::memory_order_acquire));
    }
    worker.join();
    if (stopped || !complete) {
        return false;
    }

    auto* dialog = new ToviDateTableDlg(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(QStringLiteral("撮影日の照合 - %1").arg(CurrentSetText()));
    dialog->SetRows(std::vector<ToviDateRow>(table.Rows()));
    connect(dialog, &ToviDateTableDlg::PhotoRequested, this,
            [this](int photoIndex) { SelectPhotoOnShow(photoIndex); });
    // The table belongs to the set it was read from: it goes when the delivery does.
    connect(document, &ToviViewerDocument::DeliveryClosed, dialog, &QDialog::reject);
    dialog->show();
    return true;
}

bool ToviMainWindow::SelectPhotoOnShow(int photoIndex) {
    ToviData* data = document->Data();
    if (!data || !data->CurrentArray().Contains(photoIndex) ||
        !data->PhotoSelectSetting(photoIndex)) {
        return false;
    }
    // The panel turns to the page of the selection, or marks it in a list.
    document->UpdateAllViews(nullptr, ToviData::HintSelectionChanged, nullptr);
    return true;
}
