// The inspection record of 100,000 photographs (国交省-20, no images): SaveExamination and
// LoadExamination with the progress window's logic on (the command line's presenter), every
// photograph carrying labels and every third a comment. Reports the record's size against
// the bytes of its content (element texts and tags), which the indentation must not swell.

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"

#include "bench/BenchCommon.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace {

ToviData& Document() {
    static std::unique_ptr<ToviData> document = [] {
        DeliveryOptions options;
        options.photoCount = 100000;
        options.images = DeliveryOptions::Images::None;
        options.seed = 42;
        const QString photo = WriteBenchDelivery(QStringLiteral("d"), options);
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> loaded = factory.Create(nullptr, photo, PhotoXMLMlit);
        if (!loaded) {
            qFatal("the delivery did not load");
        }
        for (int i = 0; i < loaded->GetTotalCountPhoto(); ++i) {
            ToviPhoto* photo = loaded->GetPhotoActualPhotoArray(i);
            photo->PasteLabel(static_cast<unsigned>(i % ToviPhoto::kLabelCount));
            if (i % 3 == 0) {
                photo->SetComment(QStringLiteral("再撮影のこと %1").arg(i));
            }
        }
        return loaded;
    }();
    return *document;
}

QString RecordPath() {
    return Temp().filePath(QStringLiteral("record.xml"));
}

void BM_SaveExamination(benchmark::State& state) {
    ToviData& document = Document();
    for (auto _ : state) {
        int result = -1;
        if (!document.SaveExamination(RecordPath(), QString(), &result)) {
            state.SkipWithError("the record was not saved");
            return;
        }
    }
    const qint64 bytes = QFile(RecordPath()).size();
    // Content: per photograph the seven element names twice and their texts, as written.
    qint64 content = 0;
    QFile file(RecordPath());
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : file.readAll().split('\n')) {
            content += line.trimmed().size();
        }
    }
    state.counters["record_MB"] = static_cast<double>(bytes) / (1 << 20);
    state.counters["size_per_content"] = static_cast<double>(bytes) / static_cast<double>(content);
}
BENCHMARK(BM_SaveExamination)->Unit(benchmark::kMillisecond);

void BM_LoadExamination(benchmark::State& state) {
    ToviData& document = Document();
    int result = -1;
    if (!QFile::exists(RecordPath()) &&
        !document.SaveExamination(RecordPath(), QString(), &result)) {
        state.SkipWithError("the record was not saved");
        return;
    }
    for (auto _ : state) {
        if (!document.LoadExamination(RecordPath(), &result)) {
            state.SkipWithError("the record did not load");
            return;
        }
    }
}
BENCHMARK(BM_LoadExamination)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    ToviTuneAllocator();
    QCoreApplication app(argc, argv);
    ToviProfile::Instance().UseFile(Temp().filePath(QStringLiteral("profile.ini")));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
