// Parsing 施工管理値 texts, as the single-photo control does for every photograph it shows:
// ParseControlValues on a text of 10 parts in the usual form, the same with words written
// without a blank (so every part goes through the longer prefix search), and a text of 10
// parts whose fifth fails (the rest still parsed).

#include "imagefacts/ToviControlValueParser.h"
#include "imagefacts/ToviControlValues.h"

#include <benchmark/benchmark.h>

#include <QString>
#include <QStringList>

namespace {

QString TenParts(const QString& pattern, int failing = -1) {
    const QStringList names = {"幅",   "高さ",   "厚さ", "延長", "基準高",
                               "法長", "天端幅", "敷幅", "深さ", "のり勾配"};
    QStringList parts;
    for (int i = 0; i < names.size(); ++i) {
        const int design = 300 + 100 * i;
        const int diff = (i % 5) - 2;
        parts << (i == failing
                      ? QStringLiteral("%1:%2・%3").arg(names[i]).arg(design).arg(design + diff)
                      : pattern.arg(names[i])
                            .arg(design)
                            .arg(design + diff)
                            .arg(diff > 0 ? QStringLiteral("+%1").arg(diff)
                                          : QString::number(diff)));
    }
    return parts.join(QStringLiteral("、"));
}

void Parse(benchmark::State& state, const QString& text, bool valid) {
    for (auto _ : state) {
        ToviControlValues values;
        ParseControlValues(text, values);
        benchmark::DoNotOptimize(values.data());
        if (values.IsValid() != valid) {
            state.SkipWithError("unexpected validity");
            break;
        }
    }
    state.SetLabel(QStringLiteral("%1 chars").arg(text.size()).toStdString());
}

void BM_ParseTenParts(benchmark::State& state) {
    Parse(state, TenParts(QStringLiteral("%1:設計値 %2・実測値 %3・差 %4")), true);
}
void BM_ParseTenPartsNoBlank(benchmark::State& state) {
    Parse(state, TenParts(QStringLiteral("%1:設計値%2・実測値%3・差%4")), true);
}
void BM_ParseTenPartsOneFailing(benchmark::State& state) {
    Parse(state, TenParts(QStringLiteral("%1:設計値 %2・実測値 %3・差 %4"), 4), false);
}

BENCHMARK(BM_ParseTenParts);
BENCHMARK(BM_ParseTenPartsNoBlank);
BENCHMARK(BM_ParseTenPartsOneFailing);

}  // namespace

BENCHMARK_MAIN();
