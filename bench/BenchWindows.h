#pragma once

// What the benchmarks of windows share: the offscreen platform, the run's own folder holding
// its work folder and profile, a presenter installed for the run, and everything put back and
// removed at the end.

#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"
#include "platform/ToviUi.h"
#include "tests/support/WorkArea.h"

#include "bench/BenchCommon.h"

#include <benchmark/benchmark.h>

#include <QApplication>

#include <functional>
#include <memory>

// Runs the registered benchmarks under the presenter makeUi makes once the application is
// there; release lets go of the windows the benchmarks kept, before the presenter goes.
inline int RunWindowBenchmarks(int argc, char** argv,
                               const std::function<std::unique_ptr<ToviUi>()>& makeUi,
                               const std::function<void()>& release) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setApplicationDisplayName(QStringLiteral("ToviCore"));
    if (!Temp().isValid()) {
        return 1;
    }
    UseWorkFolder(Temp().path());
    ToviProfile::Instance().UseFile(Temp().filePath(QStringLiteral("profile.ini")));
    const std::unique_ptr<ToviUi> ui = makeUi();
    ToviUi::Install(ui.get());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    release();
    ToviUi::Install(nullptr);
    ToviProfile::Instance().UseFile(QString());
    ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
    Temp().remove();
    return 0;
}
