// The delivery checks that read no image (tovi validate --no-images) on generated 国交省-20
// deliveries of 1,000 / 10,000 / 100,000 photographs, PHOTO.XML and INDEX_C.XML only: every
// photograph and drawing is then a missing file, so the run also shows what a delivery
// faulty in every photograph costs. The load is outside the timing.
//
// BM_Checks keeps every finding (ToviFindingCollector, as a viewer would); BM_ChecksPassedOn
// hands each to a sink that only counts it, as tovi validate writes each one out at once.
// BM_ChecksStructureFaulty is BM_ChecksPassedOn on a delivery whose every 写真情報 also holds
// an element the generation does not define, so that the second, streamed read of PHOTO.XML
// by the structure check finds something in every photograph as well.
// Reports "findings", "peak_MB" (the process's resident high-water mark during the first run
// of the size, reset just before it, the loaded document included) and "loaded_MB" (what was
// resident before that run). Run one size alone (--benchmark_filter=/100000) for a fresh
// process's figure.

#include "checks/ToviDeliveryChecker.h"
#include "document/ToviData.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/Cp932.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"

#include "bench/BenchCommon.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QFile>
#include <QMap>

#include <cstring>
#include <memory>

namespace {

// PHOTO.XML with an unknown element at the end of every 写真ファイル情報.
void AddUnknownElements(const QString& photoFolder) {
    QFile file(photoFolder + QStringLiteral("/PHOTO.XML"));
    if (!file.open(QIODevice::ReadWrite)) {
        qFatal("cannot open PHOTO.XML");
    }
    const QByteArray close = Cp932::FromUnicode(QStringLiteral("</メディア番号>"));
    QByteArray xml = file.readAll();
    xml.replace(close, close + Cp932::FromUnicode(QStringLiteral("<撮影者>山田</撮影者>")));
    file.seek(0);
    file.write(xml);
}

ToviData& DocumentOf(int count, bool structureFaulty = false) {
    static QMap<int, std::shared_ptr<ToviData>> documents;
    const int key = structureFaulty ? -count : count;
    if (!documents.contains(key)) {
        DeliveryOptions options;
        options.photoCount = count;
        options.images = DeliveryOptions::Images::None;
        options.seed = 42;
        const QString photo = WriteBenchDelivery(QString::number(key), options);
        if (structureFaulty) {
            AddUnknownElements(photo);
        }
        std::shared_ptr<ToviData> document =
            ToviEnouDataFactory().Create(nullptr, photo, PhotoXMLMlit);
        if (!document || document->GetTotalCountPhoto() != count) {
            qFatal("the delivery did not load");
        }
        documents.insert(key, document);
    }
    return *documents.value(key);
}

// A field of /proc/self/status in kB.
long StatusKb(const char* field) {
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly)) {
        return -1;
    }
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(field)) {
            return line.mid(static_cast<qsizetype>(strlen(field))).trimmed().split(' ')[0].toLong();
        }
    }
    return -1;
}

void ResetPeak() {
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (file.open(QIODevice::WriteOnly)) {
        file.write("5");
    }
}

// Counts findings and lets them go, as a sink that writes them out does.
class CountingSink : public ToviFindingSink {
public:
    void Add(ToviCheckFinding) override { ++count; }
    size_t count = 0;
};

template <bool keep, bool structureFaulty = false>
void RunChecks(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    ToviData& document = DocumentOf(count, structureFaulty);
    static QMap<int, QPair<long, long>> measured;  // size -> (loaded, peak), per kind
    bool first = !measured.contains(count);
    size_t findings = 0;
    for (auto _ : state) {
        state.PauseTiming();
        long loaded = 0;
        if (first) {
            ResetPeak();
            loaded = StatusKb("VmRSS:");
        }
        const std::unique_ptr<ToviDeliveryChecker> checker = ToviDeliveryChecker::Standard(false);
        auto collector = std::make_unique<ToviFindingCollector>();
        CountingSink counter;
        state.ResumeTiming();
        if constexpr (keep) {
            checker->Run(document, *collector);
        } else {
            checker->Run(document, counter);
        }
        state.PauseTiming();
        findings = keep ? collector->Findings().size() : counter.count;
        if (structureFaulty && findings < 2 * static_cast<size_t>(count)) {
            qFatal("the structure faults were not all found");
        }
        if (first) {
            measured.insert(count, {loaded, StatusKb("VmHWM:")});
            first = false;
        }
        collector.reset();
        state.ResumeTiming();
    }
    state.counters["findings"] = static_cast<double>(findings);
    state.counters["loaded_MB"] = static_cast<double>(measured.value(count).first) / 1024.0;
    state.counters["peak_MB"] = static_cast<double>(measured.value(count).second) / 1024.0;
    state.SetItemsProcessed(state.iterations() * count);
}
void BM_Checks(benchmark::State& state) {
    RunChecks<true>(state);
}
void BM_ChecksPassedOn(benchmark::State& state) {
    RunChecks<false>(state);
}
void BM_ChecksStructureFaulty(benchmark::State& state) {
    RunChecks<false, true>(state);
}
BENCHMARK(BM_Checks)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ChecksPassedOn)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ChecksStructureFaulty)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ToviProfile::Instance().UseFile(Temp().filePath(QStringLiteral("profile.ini")));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
