// Opening a delivery: ToviEnouDataFactory::Create on generated 国交省-20 deliveries of
// 1,000 / 10,000 / 100,000 photographs (PHOTO.XML only; the load touches no image),
// against the floor: the same PHOTO.XML in UTF-8, read into one buffer and parsed in place
// by pugixml (BM_Floor), and that plus the conversion from Shift_JIS (BM_FloorShiftJis).
// The ratios of the load to the floor are what the goals are set in. BM_FirstUse is the
// first use of every path after a load (the load itself asks nothing of the disc).
//
//   bench_load --floor FILE [--convert]   parses FILE as BM_Floor does, once, and exits:
//                                         the floor as a whole process, for
//                                         bench/load_ratios.sh
// Reports "peak_MB", the process's resident high-water mark during the first load of the
// size (reset just before it), and "rss_before_MB", what was resident before that load.
// Later iterations reuse memory the allocator kept, so only the first one says what a
// fresh process needs; run one size alone (--benchmark_filter=/100000) for that figure.

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/Cp932.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"

#include "bench/BenchCommon.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMap>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

QString DeliveryOf(int count) {
    static QMap<int, QString> folders;
    if (!folders.contains(count)) {
        DeliveryOptions options;
        options.photoCount = count;
        options.images = DeliveryOptions::Images::None;
        options.seed = 42;
        folders.insert(count, WriteBenchDelivery(QString::number(count), options));
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

// The 10,000-photograph delivery with an empty file in PIC/ for each photograph, named as
// written, or all in lower case as a Windows disc may have them.
QString FilesDeliveryOf(bool lowerCase) {
    static QMap<bool, QString> folders;
    if (!folders.contains(lowerCase)) {
        const QString folder =
            Temp().filePath(lowerCase ? QStringLiteral("files-lower") : QStringLiteral("files"));
        QDir().mkpath(folder + QStringLiteral("/PIC"));
        QFile::copy(DeliveryOf(10000) + QStringLiteral("/PHOTO.XML"),
                    folder + QStringLiteral("/PHOTO.XML"));
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> document(factory.Create(nullptr, folder, PhotoXMLMlit));
        if (!document) {
            qFatal("the delivery did not load");
        }
        const int title =
            document->GetItemDef()->GetIndexFromTitle(QStringLiteral("写真ファイル名"));
        for (const ToviPhoto* photo : *document->GetPhotoDataArray()) {
            const QString name = photo->GetTitle(title);
            QFile file(folder + QStringLiteral("/PIC/") + (lowerCase ? name.toLower() : name));
            if (!file.open(QIODevice::WriteOnly)) {
                qFatal("cannot write %s", qPrintable(file.fileName()));
            }
        }
        folders.insert(lowerCase, folder);
    }
    return folders.value(lowerCase);
}

// Every photograph's image path asked for once after a fresh load: 0 names as written (one
// look per file), 1 names in another case (the folder listed once, then one look per file).
void BM_FirstUse(benchmark::State& state) {
    const QString folder = FilesDeliveryOf(state.range(0) != 0);
    for (auto _ : state) {
        state.PauseTiming();
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> document(factory.Create(nullptr, folder, PhotoXMLMlit));
        QStringList paths;
        paths.reserve(10000);
        state.ResumeTiming();
        for (ToviPhoto* photo : *document->GetPhotoDataArray()) {
            paths.append(photo->GetImagePath());
        }
        state.PauseTiming();
        if (paths.size() != 10000 || !QFile::exists(paths.first()) ||
            !QFile::exists(paths.last())) {
            state.SkipWithError("the files were not found");
            return;
        }
        document.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}
BENCHMARK(BM_FirstUse)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The floor: read the file whole, convert it from Shift_JIS when asked (through the same
// table as the load), and parse the UTF-8 in place. Answers the number of elements under
// the root's children, so that the parse can't be optimised away.
size_t ParseFloor(const QByteArray& path, bool convert) {
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    QByteArray bytes = file.readAll();
    if (convert) {
        QByteArray utf8;
        Cp932::DecodeToUtf8(bytes.constData(), bytes.size(), utf8);
        bytes = std::move(utf8);
    }
    pugi::xml_document doc;
    if (!doc.load_buffer_inplace(bytes.data(), static_cast<size_t>(bytes.size()))) {
        return 0;
    }
    size_t count = 0;
    for (pugi::xml_node n : doc.document_element().children()) {
        count += static_cast<size_t>(std::distance(n.begin(), n.end()));
    }
    return count;
}

// The same delivery's PHOTO.XML in UTF-8 (the declaration rewritten), beside the original.
QByteArray Utf8CopyOf(int count) {
    const QString original = DeliveryOf(count) + QStringLiteral("/PHOTO.XML");
    const QString copy = DeliveryOf(count) + QStringLiteral("/PHOTO-UTF8.XML");
    if (!QFile::exists(copy)) {
        QFile in(original);
        QFile out(copy);
        if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly)) {
            qFatal("cannot write the UTF-8 copy");
        }
        QByteArray utf8;
        Cp932::DecodeToUtf8(in.readAll().constData(), in.size(), utf8);
        utf8.replace("encoding=\"Shift_JIS\"", "encoding=\"UTF-8\"");
        out.write(utf8);
    }
    return QFile::encodeName(copy);
}

void RunFloor(benchmark::State& state, bool convert) {
    const QByteArray path = convert
                                ? QFile::encodeName(DeliveryOf(static_cast<int>(state.range(0))) +
                                                    QStringLiteral("/PHOTO.XML"))
                                : Utf8CopyOf(static_cast<int>(state.range(0)));
    ResetPeak();
    const long before = StatusKb("VmRSS:");
    long peak = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(ParseFloor(path, convert));
        if (peak == 0) {
            peak = StatusKb("VmHWM:");
        }
    }
    state.counters["peak_MB"] = static_cast<double>(peak) / 1024.0;
    state.counters["rss_before_MB"] = static_cast<double>(before) / 1024.0;
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Floor(benchmark::State& state) {
    RunFloor(state, false);
}
BENCHMARK(BM_Floor)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_FloorShiftJis(benchmark::State& state) {
    RunFloor(state, true);
}
BENCHMARK(BM_FloorShiftJis)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    ToviTuneAllocator();
    if (argc >= 3 && std::strcmp(argv[1], "--floor") == 0) {
        const bool convert = argc >= 4 && std::strcmp(argv[3], "--convert") == 0;
        const size_t count = ParseFloor(argv[2], convert);
        std::printf("%zu\n", count);
        return count > 0 ? 0 : 1;
    }
    QCoreApplication app(argc, argv);
    ToviProfile::Instance().UseFile(Temp().filePath(QStringLiteral("profile.ini")));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
