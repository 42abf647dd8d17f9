// Browsing and reviewing a large delivery: one generated 国交省-20 delivery of 100,000
// photographs (PHOTO.XML only), opened once with a host that ignores its hints, so that the
// document keeps its current array as the viewer's would.
//
//   BM_BuildTreeNode       BuildTreeNode(0), which also refills the current array (no sort)
//   BM_SelectRootSorted    SetSelected(root, true) with sorting on by 撮影年月日
//   BM_ExtractionAnd       ExecExtractionAND on the full current array: NG + 工種 + a date range
//   BM_CountLabel          CountLabel(1)
//
// Budgets: 150 ms, 150 ms, 100 ms and 5 ms. Both wall and CPU time are reported; on a machine
// busy with builds the wall time is the less trustworthy of the two.

#include "document/ToviData.h"
#include "document/ToviHostDocument.h"
#include "document/ToviPhoto.h"
#include "extraction/ToviExtractionConditions.h"
#include "extraction/ToviSortCondition.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/ToviProfile.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"

#include "bench/BenchCommon.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QHash>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>
#include <numeric>

namespace {

constexpr int kPhotoCount = 100000;
constexpr int kNgEvery = 5;  // every fifth photograph carries NG1

class SilentHost : public ToviHostDocument {
public:
    void UpdateAllViews(QWidget*, int, QObject*) override {}
};

SilentHost& Host() {
    static SilentHost host;
    return host;
}

std::unique_ptr<ToviData>& DocumentSlot() {
    static std::unique_ptr<ToviData> document;
    return document;
}

// Written, opened and labelled on first use; closed before the application ends.
ToviData* Document() {
    std::unique_ptr<ToviData>& document = DocumentSlot();
    if (document) {
        return document.get();
    }
    DeliveryOptions options;
    options.photoCount = kPhotoCount;
    options.images = DeliveryOptions::Images::None;
    options.seed = 42;
    const QString photo = WriteBenchDelivery(QStringLiteral("review"), options);
    ToviEnouDataFactory factory;
    document = factory.Create(&Host(), photo, PhotoXMLMlit);
    if (!document || document->GetTotalCountPhoto() != kPhotoCount) {
        qFatal("the delivery of %d photographs did not load", kPhotoCount);
    }
    for (int k = 0; k < kPhotoCount; k += kNgEvery) {
        document->GetPhotoActualPhotoArray(k)->PasteLabel(1);
    }
    document->GetSortConditionObject()->ExecSort(false);
    document->BuildTreeNode(ToviPhotoCtrlVisualSetting::TreeKousyu);
    return document.get();
}

QList<int> AllPhotographs() {
    QList<int> all(kPhotoCount);
    std::iota(all.begin(), all.end(), 0);
    return all;
}

// The most frequent value of an item, and the middle half of the sorted shooting dates, so
// that each condition of the AND keeps a fair share.
ToviExtractionConditions ReviewConditions(ToviData& document) {
    const ToviItemDef& def = *document.GetItemDef();
    const int work = def.GetIndexFromTitle(QStringLiteral("工種"));
    const int date = def.GetIndexFromTitle(QStringLiteral("撮影年月日"));
    QHash<QString, int> workCounts;
    QStringList dates;
    for (int k = 0; k < kPhotoCount; ++k) {
        const ToviPhoto& photo = *document.GetPhotoActualPhotoArray(k);
        const QString value = photo.GetTitle(work);
        if (!value.isEmpty()) {
            ++workCounts[value];
        }
        const QString shot = photo.GetTitle(date);
        if (!shot.isEmpty()) {
            dates.append(shot);
        }
    }
    QString commonest;
    for (auto it = workCounts.cbegin(); it != workCounts.cend(); ++it) {
        if (commonest.isEmpty() || it.value() > workCounts.value(commonest)) {
            commonest = it.key();
        }
    }
    std::sort(dates.begin(), dates.end());
    ToviExtractionConditions c;
    c.ngPhoto = true;
    c.itemOn[0] = true;
    c.itemTitle[0] = QStringLiteral("工種");
    c.itemText[0] = commonest;
    c.dateOn = true;
    c.dateKind = 0;
    c.dateFrom = dates.value(dates.size() / 4);
    c.dateTo = dates.value(dates.size() * 3 / 4);
    return c;
}

void Budget(benchmark::State& state, double milliseconds) {
    state.counters["budget_ms"] = milliseconds;
}

void BM_BuildTreeNode(benchmark::State& state) {
    ToviData* document = Document();
    document->GetSortConditionObject()->ExecSort(false);
    for (auto _ : state) {
        document->BuildTreeNode(ToviPhotoCtrlVisualSetting::TreeKousyu);
        benchmark::DoNotOptimize(document->GetCurrentPhotoCount());
    }
    if (document->GetCurrentPhotoCount() != kPhotoCount) {
        state.SkipWithError("the tree lost photographs");
    }
    state.counters["nodes"] = static_cast<double>(document->NodeCount());
    Budget(state, 150);
}

void BM_SelectRootSorted(benchmark::State& state) {
    ToviData* document = Document();
    ToviSortCondition* sort = document->GetSortConditionObject();
    sort->ExecSort(true);
    sort->SetKeyItem(QStringLiteral("撮影年月日"));
    sort->Ascending(true);
    for (auto _ : state) {
        document->SetSelected(document, true);
        benchmark::DoNotOptimize(document->GetCurrentPhotoCount());
    }
    if (document->GetCurrentPhotoCount() != kPhotoCount) {
        state.SkipWithError("the selection lost photographs");
    }
    sort->ExecSort(false);
    Budget(state, 150);
}

void BM_ExtractionAnd(benchmark::State& state) {
    ToviData* document = Document();
    ToviExtractionHolder holder;
    holder.conditions = ReviewConditions(*document);
    document->SetExtractionData(&holder);
    const QList<int> all = AllPhotographs();
    int found = 0;
    for (auto _ : state) {
        state.PauseTiming();
        document->CurrentArray().Assign(all);
        state.ResumeTiming();
        document->ExecExtractionAND();
        found = document->GetCurrentPhotoCount();
    }
    document->SetExtractionData(nullptr);
    if (found == 0 || found == kPhotoCount) {
        state.SkipWithError("the conditions don't narrow the photographs");
    }
    state.counters["found"] = found;
    Budget(state, 100);
}

void BM_CountLabel(benchmark::State& state) {
    ToviData* document = Document();
    int count = 0;
    for (auto _ : state) {
        count = document->CountLabel(1);
        benchmark::DoNotOptimize(count);
    }
    if (count != kPhotoCount / kNgEvery) {
        state.SkipWithError("wrong count");
    }
    Budget(state, 5);
}

BENCHMARK(BM_BuildTreeNode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SelectRootSorted)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExtractionAnd)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CountLabel)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ToviProfile::Instance().UseFile(Temp().filePath(QStringLiteral("p.ini")));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    DocumentSlot().reset();
    return 0;
}
