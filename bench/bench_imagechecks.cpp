// The delivery checks that read image files, on generated 国交省-20 deliveries of 1,000 /
// 10,000 / 100,000 photographs whose files are hard links to eight camera-like JPEGs of
// 1280 x 960 with Exif (see BenchPictures.h), on a warm cache (one untimed run first).
//   build/bin/bench_imagechecks [--benchmark_filter=Header/100000]
//
// BM_ImageHeaderChecks: the format from the first bytes, the JPEG's header walked to its end,
// the pixel guidance, the Exif and file dates, and the tamper chain (no verifier installed):
// budget 10 s for 100,000 files on the 2-core reference machine.
// BM_ImageDecode: the same file check with the decode at an eighth added, alone, to show what
// that costs per file.
// Findings are counted and let go, as tovi validate writes them out.

#include "checks/ToviDeliveryChecker.h"
#include "checks/ToviImageChecks.h"
#include "document/ToviData.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/ToviProfile.h"
#include "platform/ToviVerifierLibrary.h"
#include "tests/support/DeliveryWriter.h"

#include "bench/BenchCommon.h"
#include "bench/BenchPictures.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QMap>
#include <QPainter>
#include <QRandomGenerator>

#include <memory>

namespace {

constexpr int kDistinctImages = 8;

QStringList Pictures() {
    static QStringList pictures;
    if (pictures.isEmpty()) {
        QRandomGenerator rng(7);
        for (int i = 0; i < kDistinctImages; ++i) {
            const QString path = Temp().filePath(QStringLiteral("picture%1.jpg").arg(i));
            // Noise compresses as a photograph does, so the files have a camera's weight.
            QImage image(1280, 960, QImage::Format_RGB32);
            for (int y = 0; y < image.height(); ++y) {
                auto* line = reinterpret_cast<quint32*>(image.scanLine(y));
                for (int x = 0; x < image.width(); ++x) {
                    line[x] = 0xFF000000u | (rng.generate() & 0x3F3F3Fu) | 0x406080u;
                }
            }
            ExifFacts facts;
            facts.dateTimeOriginal = QDateTime(QDate(2024, 4, 1), QTime(9, i));
            if (!WriteExifJpeg(path, image, facts)) {
                qFatal("cannot write %s", qPrintable(path));
            }
            pictures << path;
        }
    }
    return pictures;
}

ToviData& DocumentOf(int count) {
    static QMap<int, std::shared_ptr<ToviData>> documents;
    if (!documents.contains(count)) {
        DeliveryOptions options;
        options.photoCount = count;
        options.images = DeliveryOptions::Images::None;
        options.drawingShare = 0;
        options.seed = 42;
        const QString photo = WriteBenchDelivery(QString::number(count), options);
        LinkPictures(photo, Pictures());
        std::shared_ptr<ToviData> document =
            ToviEnouDataFactory().Create(nullptr, photo, PhotoXMLMlit);
        if (!document || document->GetTotalCountPhoto() != count) {
            qFatal("the delivery did not load");
        }
        documents.insert(count, document);
    }
    return *documents.value(count);
}

class CountingSink : public ToviFindingSink {
public:
    void Add(ToviCheckFinding) override { ++count; }
    size_t count = 0;
};

std::unique_ptr<ToviDeliveryChecker> HeaderChecks() {
    auto checker = std::make_unique<ToviDeliveryChecker>();
    checker->AddCheck(std::make_unique<ToviImageFileCheck>(false));
    checker->AddCheck(std::make_unique<ToviShotDateCheck>());
    checker->AddCheck(std::make_unique<ToviTamperCheck>());
    return checker;
}

// The parts of the header checks alone.
std::unique_ptr<ToviDeliveryChecker> FileCheck() {
    auto checker = std::make_unique<ToviDeliveryChecker>();
    checker->AddCheck(std::make_unique<ToviImageFileCheck>(false));
    return checker;
}
std::unique_ptr<ToviDeliveryChecker> DateCheck() {
    auto checker = std::make_unique<ToviDeliveryChecker>();
    checker->AddCheck(std::make_unique<ToviShotDateCheck>());
    return checker;
}

std::unique_ptr<ToviDeliveryChecker> DecodeCheck() {
    auto checker = std::make_unique<ToviDeliveryChecker>();
    checker->AddCheck(std::make_unique<ToviImageFileCheck>(true));
    return checker;
}

template <std::unique_ptr<ToviDeliveryChecker> (*make)()>
void Run(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    ToviData& document = DocumentOf(count);
    static QMap<int, bool> warmed;
    if (!warmed.value(count)) {
        CountingSink sink;
        make()->Run(document, sink);  // the cache warm, the links' directory entries read
        warmed[count] = true;
    }
    size_t findings = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const std::unique_ptr<ToviDeliveryChecker> checker = make();
        CountingSink sink;
        state.ResumeTiming();
        checker->Run(document, sink);
        findings = sink.count;
    }
    state.counters["findings"] = static_cast<double>(findings);
    state.SetItemsProcessed(state.iterations() * count);
}

void BM_ImageHeaderChecks(benchmark::State& state) {
    Run<&HeaderChecks>(state);
}
void BM_ImageFileHeaders(benchmark::State& state) {
    Run<&FileCheck>(state);
}
void BM_ImageDates(benchmark::State& state) {
    Run<&DateCheck>(state);
}
void BM_ImageDecode(benchmark::State& state) {
    Run<&DecodeCheck>(state);
}
BENCHMARK(BM_ImageHeaderChecks)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);
BENCHMARK(BM_ImageFileHeaders)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_ImageDates)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_ImageDecode)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    ToviProfile::Instance().UseFile(Temp().filePath(QStringLiteral("profile.ini")));
    // No tamper verifier: the chain is built and finds nothing, as on most machines.
    QDir().mkpath(Temp().filePath(QStringLiteral("no-verifiers")));
    ToviVerifierLibrary::SetProgramPathOverride(Temp().filePath(QStringLiteral("no-verifiers")));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
