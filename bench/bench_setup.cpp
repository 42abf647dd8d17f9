// The 設定 dialog of the viewer, on the offscreen platform, over a delivery of 1,000
// photographs (国交省-20) whose definitions fill the information-list candidates.
//
//   BM_SetUpDialogOpen  constructing the dialog on the open delivery's settings, showing it,
//                       and running the event loop until it has painted once

#include "app/ToviMainWindow.h"
#include "dialogs/ToviSetUpDlg.h"
#include "document/ToviData.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/WorkArea.h"

#include "bench/BenchWindows.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QEvent>

#include <memory>

namespace {

std::unique_ptr<ToviMainWindow> window;

ToviMainWindow* Window() {
    if (!window) {
        DeliveryOptions options;
        options.photoCount = 1000;
        options.images = DeliveryOptions::Images::None;
        WrittenDelivery written;
        QString error;
        if (!WriteDelivery(Temp().filePath(QStringLiteral("d")), options, &written, &error)) {
            return nullptr;
        }
        window = std::make_unique<ToviMainWindow>();
        if (!window->OpenDelivery(written.photoFolder, PhotoXMLMlit)) {
            window.reset();
        }
    }
    return window.get();
}

// Counts the paint events a widget receives.
class PaintCounter : public QObject {
public:
    int paints = 0;
    bool eventFilter(QObject*, QEvent* event) override {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

void BM_SetUpDialogOpen(benchmark::State& state) {
    ToviMainWindow* host = Window();
    if (!host) {
        state.SkipWithError("the delivery could not be opened");
        return;
    }
    ToviData* data = host->Document()->Data();
    for (auto _ : state) {
        ToviSetUpDlg dialog(*data->GetLabelManager(), data->GetVisualSetting(),
                            data->GetSortCondition(), *data->GetItemManager(), host);
        PaintCounter counter;
        dialog.installEventFilter(&counter);
        dialog.show();
        while (counter.paints == 0) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        }
        state.PauseTiming();
        dialog.reject();
        dialog.removeEventFilter(&counter);
        state.ResumeTiming();
    }
}

}  // namespace

BENCHMARK(BM_SetUpDialogOpen)->Unit(benchmark::kMillisecond)->Iterations(20);

int main(int argc, char** argv) {
    return RunWindowBenchmarks(
        argc, argv, [] { return std::unique_ptr<ToviUi>(new ScriptedUi); }, [] { window.reset(); });
}
