#pragma once

// What the benchmarks of the main window share.

#include "app/ToviMainWindow.h"
#include "panels/ToviMpiPanel.h"

#include <QEventLoop>
#include <QObject>
#include <QTimer>

// Runs the event loop until the panel's page has its pictures (20 s at most), then paints the
// window; answers whether the page came.
inline bool WaitForPage(ToviMainWindow& window) {
    ToviMpiPanel* panel = window.MpiPanel();
    if (!panel->IsPageShown()) {
        QEventLoop loop;
        QObject::connect(panel, &ToviMpiPanel::PageShown, &loop, &QEventLoop::quit);
        QTimer::singleShot(20000, &loop, &QEventLoop::quit);
        loop.exec();
    }
    window.repaint();
    return panel->IsPageShown();
}
