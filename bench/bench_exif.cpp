// Exif facts of camera-sized JPEGs (4000 x 3000, full Exif with GPS and a thumbnail).
//   build/bin/bench_exif [--benchmark_filter=Title]
// Budgets on the 2-core reference machine: CheckExif plus LoadExif of a photograph at most
// 1 ms (metadata only, the picture is never decoded); GetExifInfoFromTitle on loaded values
// under 1 µs, since the list view asks it per cell.

#include "document/ToviPhoto.h"
#include "tests/support/ExifJpegWriter.h"
#include "tests/support/FixturePainter.h"

#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdlib>

namespace {

struct Fixtures {
    QTemporaryDir dir;
    QStringList photos;  // two, so that each read finds the other file in the reader's cache
};

bool Make(Fixtures& f) {
    BoardContent board;
    board.workName = QStringLiteral("○○川護岸工事");
    board.kousyu = QStringLiteral("護岸工");
    board.place = QStringLiteral("No.12+5.0");
    board.title = QStringLiteral("基礎工 完了");
    board.date = QDate(2024, 5, 20);
    const QImage photo = DrawSitePhoto(board, QSize(4000, 3000));
    for (int i = 0; i < 2; ++i) {
        ExifFacts facts;
        facts.dateTimeOriginal = QDateTime(QDate(2024, 5, 20), QTime(10, 15, i));
        facts.software = QStringLiteral("FIELD-CAM Firmware 1.02");
        facts.artist = QStringLiteral("山田 太郎");
        facts.copyright = QStringLiteral("Orvane Construction");
        facts.hasGps = true;
        facts.latitude = 35.6581;
        facts.longitude = 139.74135;
        facts.altitude = 12.3;
        const QString path = f.dir.filePath(QStringLiteral("P%1.JPG").arg(i));
        if (!WriteExifJpeg(path, photo, facts, 90)) {
            return false;
        }
        f.photos.append(path);
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

// A fresh photograph each time, as when a page of the panel shows a photograph first.
void BM_CheckExifAndLoadExif(benchmark::State& state) {
    const QStringList& photos = Files().photos;
    state.counters["MB"] = static_cast<double>(QFile(photos[0]).size()) / 1e6;
    int next = 0;
    for (auto _ : state) {
        ToviPhoto photo(photos[next]);
        next ^= 1;
        const bool has = photo.CheckExif();
        photo.LoadExif();
        if (!has || photo.GetExif().GetShoot().size() != 9) {
            state.SkipWithError("the photograph's Exif was not read");
            break;
        }
        benchmark::DoNotOptimize(photo.GetExif().GetGPS());
    }
}
BENCHMARK(BM_CheckExifAndLoadExif)->Unit(benchmark::kMicrosecond);

void BM_GetExifInfoFromTitle(benchmark::State& state) {
    ToviPhoto photo(Files().photos[0]);
    photo.LoadExif();
    const QStringList titles{QStringLiteral("撮影日時"), QStringLiteral("緯度"),
                             QStringLiteral("画像入力機器のモデル名"), QStringLiteral("Fナンバー")};
    QString value;
    qsizetype i = 0;
    for (auto _ : state) {
        photo.GetExifInfoFromTitle(titles[i], value);
        i = (i + 1) % titles.size();
        benchmark::DoNotOptimize(value);
    }
    if (value.isEmpty()) {
        state.SkipWithError("no value");
    }
}
BENCHMARK(BM_GetExifInfoFromTitle)->Unit(benchmark::kNanosecond);

// For comparison: the file facts read the file's status on every call, by design.
void BM_GetFileInfoFromTitle(benchmark::State& state) {
    const ToviPhoto photo(Files().photos[0]);
    QString value;
    for (auto _ : state) {
        photo.GetFileInfoFromTitle(QStringLiteral("ファイルサイズ"), value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_GetFileInfoFromTitle)->Unit(benchmark::kNanosecond);

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
