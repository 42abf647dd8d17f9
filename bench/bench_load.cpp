// Opening a delivery: ToviEnouDataFactory::Create on generated 国交省-20 deliveries of
// 1,000 / 10,000 / 100,000 photographs (PHOTO.XML only; the load touches no image).
// Reports "peak_MB", the process's resident high-water mark during the first load of the
// size (reset just before it), and "rss_before_MB", what was resident before that load.
// Later iterations reuse memory the allocator kept, so only the first one says what a
// fresh process needs; run one size alone (--benchmark_filter=/100000) for that figure.

#include "document/ToviData.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QFile>
#include <QMap>
#include <QTemporaryDir>

#include <memory>

namespace {

QTemporaryDir& Temp() {
    static QTemporaryDir dir;
    return dir;
}

QString DeliveryOf(int count) {
    static QMap<int, QString> folders;
    if (!folders.contains(count)) {
        DeliveryOptions options;
        options.photoCount = count;
        options.images = DeliveryOptions::Images::None;
        options.seed = 42;
        WrittenDelivery written;
        QString error;
        if (!WriteDelivery(Temp().filePath(QString::number(count)), options, nullptr, &error)) {
            qFatal("cannot write the delivery: %s", qPrintable(error));
        }
        folders.insert(count,
                       Temp().filePath(QString::number(count)) + QStringLiteral("/INDEX_C/PHOTO"));
    }
    return folders.value(count);
}

// A field of /proc/self/status in kB.
long StatusKb(const char* field) {
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly)) {
        return -1;
    }
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(field)) {
            return line.mid(static_cast<qsizetype>(strlen(field)))
                .trimmed()
                .split(' ')
                .first()
                .toLong();
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

void BM_OpenDelivery(benchmark::State& state) {
    const QString folder = DeliveryOf(static_cast<int>(state.range(0)));
    // The framework calls this function more than once per size; only the process's first
    // load of the size is measured for memory.
    static QMap<qint64, QPair<long, long>> measured;  // size -> (before, peak)
    long before = -1;
    long peak = 0;
    bool first = !measured.contains(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        if (first) {
            ResetPeak();
            before = StatusKb("VmRSS:");
        }
        state.ResumeTiming();
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> document(factory.Create(nullptr, folder, PhotoXMLMlit));
        if (!document || document->GetTotalCountPhoto() != state.range(0)) {
            state.SkipWithError("the delivery did not load");
            return;
        }
        state.PauseTiming();
        if (first) {
            peak = StatusKb("VmHWM:");
            measured.insert(state.range(0), {before, peak});
            first = false;
        }
        document.reset();
        state.ResumeTiming();
    }
    before = measured.value(state.range(0)).first;
    peak = measured.value(state.range(0)).second;
    state.counters["peak_MB"] = static_cast<double>(peak) / 1024.0;
    state.counters["rss_before_MB"] = static_cast<double>(before) / 1024.0;
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_OpenDelivery)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ToviProfile::Instance().UseFile(Temp().filePath(QStringLiteral("profile.ini")));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
