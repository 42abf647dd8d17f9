// The check report of 100,000 photographs (国交省-20, no images), every photograph carrying a
// label and every third a comment, written through the report's write step with the progress
// window's logic on (the command line's presenter). Reports the workbook's size and how far
// the process's peak memory rose while the report was written.

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"
#include "reports/ToviCheckStatusFileOut.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/WorkArea.h"

#include "bench/BenchCommon.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace {

ToviData& Document() {
    static NoViews host;
    static std::unique_ptr<ToviData> document = [] {
        DeliveryOptions options;
        options.photoCount = 100000;
        options.images = DeliveryOptions::Images::None;
        options.seed = 42;
        const QString photo = WriteBenchDelivery(QStringLiteral("d"), options);
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> loaded = factory.Create(&host, photo, PhotoXMLMlit);
        if (!loaded) {
            qFatal("the delivery did not load");
        }
        loaded->BuildTreeNode(0);
        loaded->SetSelected(loaded.get(), true);
        for (int i = 0; i < loaded->GetTotalCountPhoto(); ++i) {
            ToviPhoto* photo = loaded->GetPhotoActualPhotoArray(i);
            photo->PasteLabel(static_cast<unsigned>(i % 4));
            if (i % 3 == 0) {
                photo->SetComment(QStringLiteral("再撮影のこと %1").arg(i));
            }
        }
        return loaded;
    }();
    return *document;
}

void BM_CheckReport(benchmark::State& state) {
    ToviData& document = Document();
    const QString out = Temp().filePath(QStringLiteral("report.xlsx"));
    const double before = PeakMB();
    for (auto _ : state) {
        ToviCheckStatusFileOut report(document, *document.GetLabelManager());
        if (report.Write(QStringLiteral("検査結果出力"), out) != ToviCheckStatusFileOut::Written) {
            state.SkipWithError("the report was not written");
            return;
        }
    }
    state.counters["photos"] = document.GetCurrentPhotoCount();
    state.counters["workbook_MB"] = static_cast<double>(QFile(out).size()) / (1 << 20);
    state.counters["peak_MB"] = PeakMB();
    state.counters["peak_rise_MB"] = PeakMB() - before;
}
BENCHMARK(BM_CheckReport)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

int main(int argc, char** argv) {
    ToviTuneAllocator();
    QCoreApplication app(argc, argv);
    ToviProfile::Instance().UseFile(Temp().filePath(QStringLiteral("profile.ini")));
    UseWorkFolder(Temp().path());  // inside the benchmark's own temporary folder
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
    return 0;
}
