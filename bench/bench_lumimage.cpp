// Thumbnail and full loads of 4000 x 3000 camera-sized JPEGs.
//   build/bin/bench_lumimage [--benchmark_filter=Thumb]
// Budgets on the 2-core reference machine: LoadThumb at most 2 ms with an Exif thumbnail,
// at most 25 ms without. Without one, the time follows the file size (the decoder has to
// read every coefficient even at 1/8 scale), so the fixtures come in three grain levels.

#include "platform/LumImage.h"
#include "tests/support/ExifJpegWriter.h"
#include "tests/support/FixturePainter.h"

#include <QFile>
#include <QGuiApplication>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <map>

namespace {

constexpr QSize kPhotoSize(4000, 3000);

// A site photograph with sensor-like grain: flat fixture colours alone compress far better
// than a real photograph, which would flatter the decoder.
QImage GrainyPhoto(int grain) {
    BoardContent board;
    board.workName = QStringLiteral("○○川護岸工事");
    board.kousyu = QStringLiteral("護岸工");
    board.place = QStringLiteral("No.12+5.0");
    board.title = QStringLiteral("基礎工 完了");
    board.date = QDate(2024, 5, 20);
    QImage photo = DrawSitePhoto(board, kPhotoSize).convertToFormat(QImage::Format_RGB32);
    if (grain > 0) {
        QRandomGenerator random(grain);
        for (int y = 0; y < photo.height(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(photo.scanLine(y));
            for (int x = 0; x < photo.width(); ++x) {
                const int n = random.bounded(2 * grain + 1) - grain;
                line[x] =
                    qRgb(qBound(0, qRed(line[x]) + n, 255), qBound(0, qGreen(line[x]) + n, 255),
                         qBound(0, qBlue(line[x]) + n, 255));
            }
        }
    }
    return photo;
}

struct Fixtures {
    QTemporaryDir dir;
    std::map<int, QString> plain;  // by grain
    QString withThumbnail;
};

bool Make(Fixtures& f) {
    for (int grain : {0, 6, 12}) {
        ExifFacts facts;
        facts.embedThumbnail = false;
        const QString path = f.dir.filePath(QStringLiteral("grain%1.jpg").arg(grain));
        const QImage photo = GrainyPhoto(grain);
        if (!WriteExifJpeg(path, photo, facts, 92)) {
            return false;
        }
        f.plain[grain] = path;
        if (grain == 6) {
            facts.embedThumbnail = true;
            f.withThumbnail = f.dir.filePath(QStringLiteral("thumb.jpg"));
            if (!WriteExifJpeg(f.withThumbnail, photo, facts, 92)) {
                return false;
            }
        }
    }
    return true;
}

Fixtures& Files() {
    static Fixtures fixtures;
    static const bool made = Make(fixtures);
    if (!made) {
        std::abort();
    }
    return fixtures;
}

void Run(benchmark::State& state, const QString& path, bool thumb) {
    state.counters["MB"] = static_cast<double>(QFile(path).size()) / 1e6;
    LumImage image;
    for (auto _ : state) {
        const bool ok = thumb ? image.LoadThumb(path) : image.Load(path);
        if (!ok) {
            state.SkipWithError("load failed");
            break;
        }
        benchmark::DoNotOptimize(image.Image().constBits());
    }
    state.counters["width"] = image.Width();
}

void BM_LoadThumb_ExifThumbnail(benchmark::State& state) {
    Run(state, Files().withThumbnail, true);
}
BENCHMARK(BM_LoadThumb_ExifThumbnail)->Unit(benchmark::kMillisecond);

void BM_LoadThumb_Decoded(benchmark::State& state) {
    Run(state, Files().plain.at(static_cast<int>(state.range(0))), true);
}
BENCHMARK(BM_LoadThumb_Decoded)
    ->ArgName("grain")
    ->Arg(0)
    ->Arg(6)
    ->Arg(12)
    ->Unit(benchmark::kMillisecond);

void BM_Load_Full(benchmark::State& state) {
    Run(state, Files().plain.at(6), false);
}
BENCHMARK(BM_Load_Full)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    // The fixtures draw text, which needs a GUI application but no screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    Files();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
