// The image window on very large photographs: the first fitted view of a 40-megapixel JPEG, a
// zoom step after it, 100 % with the part on show decoded, and the peak memory of opening a
// 30,000 x 30,000 JPEG. Run with --benchmark_filter to measure the last one in a process of
// its own (its peak is the process's).

#include "bench/BenchCommon.h"
#include "platform/widgets/LumImgWnd.h"

#include <QApplication>
#include <QEventLoop>
#include <QImage>
#include <QPainter>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <sys/wait.h>
#include <unistd.h>

namespace {

// A photograph-like picture: gradients, fine lines and text, so that the JPEG is of a
// realistic size. Written by a child process, so that its pixels never count in this one.
QString Picture(int width, int height) {
    const QString path = Temp().filePath(QStringLiteral("big_%1x%2.jpg").arg(width).arg(height));
    if (QFile::exists(path)) {
        return path;
    }
    const pid_t child = fork();
    if (child == 0) {
        QImage image(width, height, QImage::Format_RGB888);
        for (int y = 0; y < height; ++y) {
            uchar* line = image.scanLine(y);
            for (int x = 0; x < width; ++x) {
                line[3 * x] = static_cast<uchar>((x * 7 + y) & 255);
                line[3 * x + 1] = static_cast<uchar>((x ^ y) & 255);
                line[3 * x + 2] = static_cast<uchar>(((x / 40 + y / 40) & 1) * 200);
            }
        }
        QPainter painter(&image);
        QFont font;
        font.setPixelSize(height / 30);
        painter.setFont(font);
        painter.drawText(image.rect(), Qt::AlignCenter, QStringLiteral("工事名 測点 No.12+5.0"));
        painter.end();
        _exit(image.save(path, "JPEG", 85) ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return path;
}

bool Wait(QObject* sender, const char* signal, int ms = 60000) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, [&loop] { loop.exit(1); });
    QObject::connect(sender, signal, &loop, SLOT(quit()));
    return loop.exec() == 0;
}

// A zoomable view of 1200 x 800 on show with path decoded for it; false when it was not.
bool OpenView(LumImgWnd& view, const QString& path) {
    view.SetZoomable(true);
    view.resize(1200, 800);
    view.show();
    view.OpenFile(path);
    return Wait(&view, SIGNAL(Loaded(bool)));
}

void BM_FitView40MP(benchmark::State& state) {
    const QString path = Picture(7300, 5480);
    for (auto _ : state) {
        LumImgWnd view;
        if (!OpenView(view, path)) {
            state.SkipWithError("not loaded");
            return;
        }
        view.repaint();
    }
}

void BM_ZoomStep40MP(benchmark::State& state) {
    const QString path = Picture(7300, 5480);
    LumImgWnd view;
    if (!OpenView(view, path)) {
        state.SkipWithError("not loaded");
        return;
    }
    view.repaint();
    bool in = true;
    int steps = 0;
    for (auto _ : state) {
        // In and out between the fitted view and about 60 %: each step redraws what is on
        // screen from what is decoded; the finer part follows off the UI thread.
        if (in) {
            view.ZoomIn();
        } else {
            view.ZoomOut();
        }
        view.repaint();
        if (++steps == 8) {
            steps = 0;
            in = !in;
        }
    }
}

void BM_ActualSize40MP(benchmark::State& state) {
    const QString path = Picture(7300, 5480);
    for (auto _ : state) {
        LumImgWnd view;
        if (!OpenView(view, path)) {
            state.SkipWithError("not loaded");
            return;
        }
        view.ZoomToActual();
        if (!Wait(&view, SIGNAL(DetailShown()))) {
            state.SkipWithError("no detail");
            return;
        }
        view.repaint();
    }
}

void BM_Open30000(benchmark::State& state) {
    const QString path = Picture(30000, 30000);
    for (auto _ : state) {
        LumImgWnd view;
        if (!OpenView(view, path)) {
            state.SkipWithError("not loaded");
            return;
        }
        view.repaint();
        view.ZoomToActual();
        if (!Wait(&view, SIGNAL(DetailShown()))) {
            state.SkipWithError("no detail");
            return;
        }
        view.repaint();
    }
    state.counters["peakMB"] = PeakMB();
}

}  // namespace

BENCHMARK(BM_FitView40MP)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_ZoomStep40MP)->Unit(benchmark::kMillisecond)->Iterations(32);
BENCHMARK(BM_ActualSize40MP)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Open30000)->Unit(benchmark::kMillisecond)->Iterations(1);

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
