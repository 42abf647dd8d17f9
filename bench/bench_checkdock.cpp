// The delivery checks in the viewer, on a delivery of 100,000 photographs (国交省-20) none of
// whose image files exist: every photograph gives a finding, so the dock takes 100,000 rows.
//
//   BM_OpenToFirstPage    a new main window opening the delivery until the first page is on
//                         screen and painted; started_before counts the runs in which the
//                         checks had started by then (they wait for the page: 0)
//   BM_RunInWindow        the checks from their start until the last finding is in the dock;
//                         max_gap_ms is the longest the UI thread's 5 ms timer waited
//                         meanwhile, findings the rows taken
//   BM_SortColumn/N       a click's worth of sorting the 100,000 rows by column N (0 番号,
//                         2 重要度, 6 内容), each time the other way
//   BM_FilterSeverity     エラー off and on again (two filterings of 100,000 rows)

#include "app/ToviMainWindow.h"
#include "document/ToviData.h"
#include "panels/ToviCheckPane.h"
#include "panels/ToviFindingsModel.h"
#include "panels/ToviMpiPanel.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ScriptedUi.h"

#include "bench/BenchMainWindow.h"
#include "bench/BenchWindows.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTableView>
#include <QTimer>

#include <algorithm>
#include <memory>

namespace {

constexpr int kPhotos = 100000;

QString Delivery() {
    static const QString folder = [] {
        DeliveryOptions options;
        options.photoCount = kPhotos;
        options.images = DeliveryOptions::Images::None;
        options.seed = 7;
        return WriteBenchDelivery(QStringLiteral("d"), options);
    }();
    return folder;
}

// Runs the event loop until the window's checks have ended; answers the longest gap between
// two ticks of a 5 ms timer meanwhile.
qint64 WaitForChecks(ToviMainWindow& window) {
    QElapsedTimer clock;
    clock.start();
    qint64 last = 0;
    qint64 worst = 0;
    QEventLoop loop;
    QTimer tick;
    tick.setInterval(5);
    QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
        const qint64 now = clock.elapsed();
        worst = std::max(worst, now - last);
        last = now;
        if (!window.CheckPane()->IsRunning()) {
            loop.quit();
        }
    });
    tick.start();
    QTimer::singleShot(120000, &loop, &QEventLoop::quit);
    loop.exec();
    return worst;
}

std::unique_ptr<ToviMainWindow> window;

// A window on the delivery with its checks done and the dock shown, kept for the benchmarks
// on the table.
ToviMainWindow& Window() {
    if (!window) {
        window = std::make_unique<ToviMainWindow>();
        window->resize(1366, 768);
        window->show();
        if (!window->OpenDelivery(Delivery(), PhotoXMLMlit) || !WaitForPage(*window)) {
            qFatal("the delivery did not open");
        }
        window->RunChecks();
        WaitForChecks(*window);
    }
    return *window;
}

void BM_OpenToFirstPage(benchmark::State& state) {
    const QString folder = Delivery();
    int startedBefore = 0;
    for (auto _ : state) {
        ToviMainWindow opened;
        opened.resize(1366, 768);
        opened.show();
        if (!opened.OpenDelivery(folder, PhotoXMLMlit) || !WaitForPage(opened)) {
            state.SkipWithError("the delivery did not open");
            return;
        }
        state.PauseTiming();
        startedBefore += opened.CheckPane()->GetState() != ToviCheckPane::Idle;
        opened.Document()->Close();
        state.ResumeTiming();
    }
    state.counters["started_before"] = startedBefore;
}

void BM_RunInWindow(benchmark::State& state) {
    ToviMainWindow& shown = Window();
    qint64 worst = 0;
    for (auto _ : state) {
        shown.RunChecks();
        worst = std::max(worst, WaitForChecks(shown));
    }
    state.counters["max_gap_ms"] = static_cast<double>(worst);
    state.counters["findings"] = shown.CheckPane()->Model()->rowCount();
}

void BM_SortColumn(benchmark::State& state) {
    QTableView* view = Window().CheckPane()->View();
    const int column = static_cast<int>(state.range(0));
    bool ascending = false;
    for (auto _ : state) {
        view->sortByColumn(column, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
        ascending = !ascending;
    }
    state.counters["rows"] = view->model()->rowCount();
}

void BM_FilterSeverity(benchmark::State& state) {
    ToviFindingsFilter* filter = Window().CheckPane()->Filter();
    for (auto _ : state) {
        filter->SetSeverityShown(ToviCheckFinding::Error, false);
        filter->SetSeverityShown(ToviCheckFinding::Error, true);
    }
    state.counters["rows"] = filter->rowCount();
}

BENCHMARK(BM_OpenToFirstPage)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_RunInWindow)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_SortColumn)
    ->Arg(ToviFindingsModel::ColumnNumber)
    ->Arg(ToviFindingsModel::ColumnSeverity)
    ->Arg(ToviFindingsModel::ColumnMessage)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(4);
BENCHMARK(BM_FilterSeverity)->Unit(benchmark::kMillisecond)->Iterations(4);

}  // namespace

int main(int argc, char** argv) {
    return RunWindowBenchmarks(
        argc, argv, [] { return std::make_unique<ScriptedUi>(); }, [] { window.reset(); });
}
