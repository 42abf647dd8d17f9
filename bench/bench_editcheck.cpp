// The tamper check over every photograph on show, as the viewer's menu runs it, through the
// stand-in hash verifier (which reads the whole file, as the real one does). What matters to
// the user is that the progress window keeps moving, so each run reports, beside its time, the
// longest wait between two moves of the bar (max_gap_ms) and how many moves there were.
//
//   BM_EditCheckMany/100000   100,000 photographs whose files are missing: the loop's own cost
//   BM_EditCheckLarge/40      40 photographs of 24 MB each: slow verifications
//
// Budget: max_gap_ms at most 200 in both.

#include "document/ToviData.h"
#include "document/ToviHostDocument.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/ToviProfile.h"
#include "platform/ToviProgressDlg.h"
#include "platform/ToviUi.h"
#include "platform/ToviVerifierLibrary.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"

#include "bench/BenchCommon.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <array>
#include <chrono>
#include <memory>

namespace {

using Clock = std::chrono::steady_clock;

class SilentHost : public ToviHostDocument {
public:
    void UpdateAllViews(QWidget*, int, QObject*) override {}
};

// A progress window that notes when its bar moves.
struct Moves {
    std::vector<Clock::time_point> times;
};

class TimingView : public ToviProgressView {
public:
    explicit TimingView(Moves& moves) : moves(moves) {}
    bool IsAlive() const override { return true; }
    void SetCaption(const QString&) override {}
    void SetRange(int, int) override {}
    void SetPos(int) override { moves.times.push_back(Clock::now()); }
    void SetMessage(const QString&) override {}
    void SetPercentText(const QString&) override {}
    void ShowCancelButton(bool) override {}
    void EnableOwner(bool) override {}
    void Show() override { moves.times.push_back(Clock::now()); }
    void Close() override { moves.times.push_back(Clock::now()); }
    void SetCancelHandler(std::function<void()>) override {}

private:
    Moves& moves;
};

class TimingUi : public ToviNonInteractiveUi {
public:
    Moves moves;
    std::unique_ptr<ToviProgressView> CreateProgressView(QWidget*) override {
        return std::make_unique<TimingView>(moves);
    }
};

SilentHost& Host() {
    static SilentHost host;
    return host;
}

// A delivery of count photographs, opened with the check on for the hash verifier and every
// photograph on show; with bytes > 0 each image file is padded to that size.
std::unique_ptr<ToviData> Open(int count, qint64 bytes) {
    const QString root = Temp().filePath(QStringLiteral("check%1").arg(count));
    if (!QFileInfo::exists(root)) {
        DeliveryOptions options;
        options.photoCount = count;
        options.images = bytes > 0 ? DeliveryOptions::Images::Tiny : DeliveryOptions::Images::None;
        QString error;
        WrittenDelivery written;
        if (!WriteDelivery(root, options, &written, &error)) {
            qFatal("cannot write the delivery: %s", qPrintable(error));
        }
    }
    ToviEnouDataFactory factory;
    std::unique_ptr<ToviData> document =
        factory.Create(&Host(), root + QStringLiteral("/INDEX_C/PHOTO"), PhotoXMLMlit);
    if (!document || document->GetTotalCountPhoto() != count) {
        qFatal("the delivery of %d photographs did not load", count);
    }
    if (bytes > 0) {
        const QByteArray padding(1 << 20, '\0');
        for (int i = 0; i < count; ++i) {
            QFile file(document->GetPhotoActualPhotoArray(i)->GetImagePath());
            if (file.size() < bytes && file.open(QIODevice::Append)) {
                while (file.size() < bytes) {
                    file.write(padding);
                }
            }
        }
    }
    ToviPhotoCtrlVisualSetting setting = document->GetVisualSetting();
    setting.SetDoEditCheck(true);
    setting.SetEditCheckTypes(QStringLiteral("1"));
    document->SetVisualSetting(setting, false);
    document->BuildTreeNode(ToviPhotoCtrlVisualSetting::TreeKousyu);
    document->SetSelected(document.get(), true);
    return document;
}

void RunCheck(benchmark::State& state, qint64 bytes) {
    const int count = static_cast<int>(state.range(0));
    std::unique_ptr<ToviData> document = Open(count, bytes);
    TimingUi ui;
    ToviUi* previous = &ToviUi::Instance();
    ToviUi::Install(&ui);
    double maxGap = 0;
    std::array<int, 4> counts{};
    for (auto _ : state) {
        ui.moves.times.clear();
        document->CheckEditJPEGCurrent(counts);
        for (size_t i = 1; i < ui.moves.times.size(); ++i) {
            maxGap = std::max(maxGap, std::chrono::duration<double, std::milli>(
                                          ui.moves.times[i] - ui.moves.times[i - 1])
                                          .count());
        }
        state.counters["moves"] = static_cast<double>(ui.moves.times.size());
    }
    ToviUi::Install(previous);
    if (counts[1] + counts[2] + counts[3] != count) {
        state.SkipWithError(qPrintable(QStringLiteral("checked %1 %2 %3 %4 of %5, on show %6")
                                           .arg(counts[0])
                                           .arg(counts[1])
                                           .arg(counts[2])
                                           .arg(counts[3])
                                           .arg(count)
                                           .arg(document->GetCurrentPhotoCount())));
    }
    state.counters["max_gap_ms"] = maxGap;
    state.counters["photos_per_s"] = benchmark::Counter(
        static_cast<double>(count), benchmark::Counter::kIsIterationInvariantRate);
}

void BM_EditCheckMany(benchmark::State& state) {
    RunCheck(state, 0);
}

void BM_EditCheckLarge(benchmark::State& state) {
    RunCheck(state, qint64(24) << 20);
}

}  // namespace

BENCHMARK(BM_EditCheckMany)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_EditCheckLarge)->Arg(40)->Unit(benchmark::kMillisecond)->Iterations(2);

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTemporaryDir profile;
    ToviProfile::Instance().UseFile(profile.filePath(QStringLiteral("bench.ini")));
    // The stand-in hash verifier, in a program folder of the run's own.
    const QString program = Temp().filePath(QStringLiteral("program"));
    QDir().mkpath(program);
    const QString name = ToviVerifierLibrary::FileName(QStringLiteral("JACICCHS"));
    if (!QFile::copy(QStringLiteral(TOVI_STANDIN_DIR "/full/") + name,
                     program + QLatin1Char('/') + name)) {
        qFatal("the stand-in verifier is not built");
    }
    ToviVerifierLibrary::SetProgramPathOverride(program);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    ToviProfile::Instance().UseFile(QString());
    return 0;
}
