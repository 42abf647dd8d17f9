// Sorting the current array: ToviSorter over generated 国交省-20 deliveries of 1,000 / 10,000 /
// 100,000 photographs with every photograph in the current array, the way ToviData::Sort runs
// it (keys taken once, then the sort and the rebuild of the array). Keys: 撮影年月日 (ASCII
// dates, up and down), シリアル番号 (by number) and 写真タイトル (Japanese text, so every key
// goes through the code page 932 conversion).

#include "document/ToviData.h"
#include "extraction/ToviSorter.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"

#include "bench/BenchCommon.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QMap>
#include <QTemporaryDir>

#include <memory>
#include <numeric>

namespace {

// One loaded document per size, kept for the whole run and closed before the application.
QMap<int, std::shared_ptr<ToviData>>& Documents() {
    static QMap<int, std::shared_ptr<ToviData>> documents;
    return documents;
}

ToviData* DocumentOf(int count) {
    QMap<int, std::shared_ptr<ToviData>>& documents = Documents();
    if (!documents.contains(count)) {
        DeliveryOptions options;
        options.photoCount = count;
        options.images = DeliveryOptions::Images::None;
        options.seed = 42;
        const QString photo = WriteBenchDelivery(QString::number(count), options);
        ToviEnouDataFactory factory;
        std::shared_ptr<ToviData> document(factory.Create(nullptr, photo, PhotoXMLMlit));
        if (!document || document->GetTotalCountPhoto() != count) {
            qFatal("the delivery of %d photographs did not load", count);
        }
        documents.insert(count, document);
    }
    return documents.value(count).get();
}

void RunSort(benchmark::State& state, const QString& key, bool ascending) {
    const int count = static_cast<int>(state.range(0));
    ToviData* document = DocumentOf(count);
    QList<int> all(count);
    std::iota(all.begin(), all.end(), 0);
    for (auto _ : state) {
        state.PauseTiming();
        document->CurrentArray().Assign(all);
        state.ResumeTiming();
        ToviSorter sorter(document);
        sorter.PrepareSort(key, document->CurrentArray());
        sorter.QuickSort(ascending, document->CurrentArray());
        benchmark::DoNotOptimize(document->CurrentArray().GetSize());
    }
    if (document->CurrentArray().GetSize() != count) {
        state.SkipWithError("the sort lost photographs");
    }
    state.SetItemsProcessed(state.iterations() * count);
}

void BM_SortByDateAscending(benchmark::State& state) {
    RunSort(state, QStringLiteral("撮影年月日"), true);
}
void BM_SortByDateDescending(benchmark::State& state) {
    RunSort(state, QStringLiteral("撮影年月日"), false);
}
void BM_SortBySerialNumber(benchmark::State& state) {
    RunSort(state, QStringLiteral("シリアル番号"), true);
}
void BM_SortByTitle(benchmark::State& state) {
    RunSort(state, QStringLiteral("写真タイトル"), true);
}

BENCHMARK(BM_SortByDateAscending)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortByDateDescending)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortBySerialNumber)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortByTitle)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ToviProfile::Instance().UseFile(Temp().filePath(QStringLiteral("profile.ini")));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    Documents().clear();
    return 0;
}
