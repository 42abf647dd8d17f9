// The viewer on a delivery of 100,000 photographs (国交省-20), on the offscreen platform.
// Every photograph has an image file: 60 distinct 1600 x 1200 JPEGs with a 160 x 120 Exif
// thumbnail, hard-linked under the 100,000 names, so each page decodes files it has not seen
// (the loader's cache is keyed by path) while the disk holds only 60 pictures.
//
//   BM_ProcessStartToPicture  tovi-viewer started as a process until it has written its
//                             picture: the first page's thumbnails, then its whole 1600 x 1200
//                             pictures, then the PNG (an upper bound of start to thumbnails)
//   BM_ProcessStartAndExit    tovi-viewer --version: what starting a process costs
//   BM_OpenToFirstPage/3, /5  in the process: a new main window opening the delivery until the
//                             first page's thumbnails are on screen and painted, kept in four-
//                             photograph mode (3) or the thumbnail list (5)
//   BM_PageChangeSix          the next page in six-photo mode until its thumbnails are on
//                             screen and painted
//   BM_SelectRootSorted       a click on the tree's root, with sorting by 撮影年月日 on,
//                             until the first page is on screen and painted
//   BM_PeakAfter500Pages      the process's peak memory after paging through 500 pages
//   BM_SwitchToManagementList from six-photo mode to the management list until its first
//                             rows are painted (their file facts follow, see the next)
//   BM_ScrollManagementList   one screen down the management list (PageDown) until it is
//                             painted; facts_ms counts on until the file and Exif facts of
//                             the new rows are in and painted
//   BM_SwitchToThumbList      from six-photo mode to the thumbnail list until its first tiles
//                             are painted (empty frames); pictures_ms until their pictures are
//   BM_PeakAfterThumbListEnd  the process's peak memory after scrolling the thumbnail list
//                             from its first screen to its last, screen by screen (run it on
//                             its own: the peak is the process's)

#include "app/ToviMainWindow.h"
#include "document/ToviData.h"
#include "extraction/ToviSortCondition.h"
#include "panels/ToviFolderTreePanel.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviPhotoListCtrl.h"
#include "panels/ToviPhotoListModels.h"
#include "platform/Cp932.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ExifJpegWriter.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/WorkArea.h"

#include "bench/BenchPictures.h"
#include "bench/BenchMainWindow.h"
#include "bench/BenchWindows.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QKeyEvent>
#include <QListView>
#include <QScrollBar>
#include <QPainter>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>

#include <functional>
#include <memory>

#include <unistd.h>

namespace {

constexpr int kPhotos = 100000;
constexpr int kDistinctImages = 60;

// The delivery's PHOTO folder, written once.
QString Delivery() {
    static const QString folder = [] {
        DeliveryOptions options;
        options.photoCount = kPhotos;
        options.images = DeliveryOptions::Images::None;
        options.seed = 7;
        const QString photo = WriteBenchDelivery(QStringLiteral("d"), options);
        QStringList pictures;
        for (int i = 0; i < kDistinctImages; ++i) {
            QImage image(1600, 1200, QImage::Format_RGB32);
            image.fill(QColor::fromHsv(i * 6, 120, 200));
            QPainter painter(&image);
            painter.setPen(Qt::black);
            painter.setFont(QFont(QStringLiteral("IPAGothic"), 120));
            painter.drawText(image.rect(), Qt::AlignCenter, QString::number(i));
            painter.end();
            ExifFacts facts;
            facts.dateTimeOriginal = QDateTime(QDate(2024, 4, 1), QTime(9, 0));
            const QString path = Temp().filePath(QStringLiteral("image%1.jpg").arg(i));
            if (!WriteExifJpeg(path, image, facts)) {
                qFatal("cannot write %s", qPrintable(path));
            }
            pictures.append(path);
        }
        LinkPictures(photo, pictures);
        return photo;
    }();
    return folder;
}

// One window on the delivery in six-photo mode, kept for the in-process benchmarks and
// closed before the application goes.
std::unique_ptr<ToviMainWindow> window;

ToviMainWindow& Window() {
    if (!window) {
        window = [] {
            const QString folder = Delivery();
            auto made = std::make_unique<ToviMainWindow>();
            made->resize(1366, 768);
            made->show();
            if (!made->OpenDelivery(folder, PhotoXMLMlit)) {
                qFatal("the delivery did not open");
            }
            made->SetDivideType(ToviPhotoCtrlVisualSetting::Divide6);
            WaitForPage(*made);
            return made;
        }();
    }
    return *window;
}

QProcessEnvironment ViewerEnvironment() {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    // Nothing of the user's: settings and work folder in the benchmark's own folder.
    const QString home = Temp().filePath(QStringLiteral("home"));
    QDir().mkpath(home);
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        env.insert(QString::fromLatin1(name), home);
    }
    return env;
}

void BM_ProcessStartToPicture(benchmark::State& state) {
    const QString folder = Delivery();
    const QString shot = Temp().filePath(QStringLiteral("shot.png"));
    for (auto _ : state) {
        QProcess viewer;
        viewer.setProcessEnvironment(ViewerEnvironment());
        viewer.start(QCoreApplication::applicationDirPath() + QStringLiteral("/tovi-viewer"),
                     {folder, QStringLiteral("--size"), QStringLiteral("1366x768"),
                      QStringLiteral("--screenshot"), shot, QStringLiteral("--profile"),
                      Temp().filePath(QStringLiteral("viewer.ini"))});
        if (!viewer.waitForFinished(120000) || viewer.exitCode() != 0) {
            state.SkipWithError("tovi-viewer did not write its picture");
            return;
        }
    }
}

void BM_ProcessStartAndExit(benchmark::State& state) {
    for (auto _ : state) {
        QProcess viewer;
        viewer.setProcessEnvironment(ViewerEnvironment());
        viewer.start(QCoreApplication::applicationDirPath() + QStringLiteral("/tovi-viewer"),
                     {QStringLiteral("--version")});
        if (!viewer.waitForFinished(60000) || viewer.exitCode() != 0) {
            state.SkipWithError("tovi-viewer did not start");
            return;
        }
    }
}

void BM_OpenToFirstPage(benchmark::State& state) {
    const QString folder = Delivery();
    for (auto _ : state) {
        // The display mode kept from the last run decides what the first page is: four
        // photographs (3) or the thumbnail list (5), the settings' default.
        state.PauseTiming();
        ToviProfile::Instance().WriteProfileInt(ToviPhotoCtrlVisualSetting::VisualSettingSection_,
                                                ToviPhotoCtrlVisualSetting::DivideTypeEntry_,
                                                static_cast<int>(state.range(0)) + 100);
        state.ResumeTiming();
        ToviMainWindow opened;
        opened.resize(1366, 768);
        opened.show();
        if (!opened.OpenDelivery(folder, PhotoXMLMlit) || !WaitForPage(opened)) {
            state.SkipWithError("the delivery did not open");
            return;
        }
        state.PauseTiming();
        opened.Document()->Close();
        state.ResumeTiming();
    }
}

void BM_PageChangeSix(benchmark::State& state) {
    ToviMainWindow& window = Window();
    ToviMpiPanel* panel = window.MpiPanel();
    for (auto _ : state) {
        if (panel->GetCurrentPage() >= panel->GetTotalPage()) {
            panel->OperateTopPage();
        } else {
            panel->OperateNextPage();
        }
        if (!WaitForPage(window)) {
            state.SkipWithError("the page's pictures did not come");
            return;
        }
    }
    state.counters["page"] = panel->GetCurrentPage();
}

void BM_SelectRootSorted(benchmark::State& state) {
    ToviMainWindow& window = Window();
    ToviData* data = window.Document()->Data();
    ToviSortCondition sort = data->GetSortCondition();
    sort.ExecSort(true);
    sort.SetKeyItem(QStringLiteral("撮影年月日"));
    data->SetSortCondition(sort);
    QTreeWidget* tree = window.FolderTree()->GetTreeCtrl();
    QTreeWidgetItem* root = tree->topLevelItem(0);
    QTreeWidgetItem* leaf = root;
    while (leaf->childCount() > 0) {
        leaf = leaf->child(0);
    }
    for (auto _ : state) {
        state.PauseTiming();
        tree->setCurrentItem(leaf);
        WaitForPage(window);
        state.ResumeTiming();
        tree->setCurrentItem(root);
        if (!WaitForPage(window)) {
            state.SkipWithError("the page's pictures did not come");
            return;
        }
    }
    state.counters["photos"] = data->GetCurrentPhotoCount();
}

void BM_PeakAfter500Pages(benchmark::State& state) {
    ToviMainWindow& window = Window();
    ToviMpiPanel* panel = window.MpiPanel();
    for (auto _ : state) {
        panel->OperateTopPage();
        WaitForPage(window);
        for (int i = 0; i < 500; ++i) {
            panel->OperateNextPage();
            if (!WaitForPage(window)) {
                state.SkipWithError("the page's pictures did not come");
                return;
            }
        }
    }
    state.counters["peak_MB"] = PeakMB();
}

// Runs the event loop until test holds or the time is up.
bool WaitFor(const std::function<bool()>& test, int ms = 20000) {
    QElapsedTimer clock;
    clock.start();
    while (!test()) {
        if (clock.elapsed() > ms) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

// The rows of the list whose items are in its viewport now.
QList<int> VisibleRows(const ToviPhotoListCtrl& list) {
    QList<int> rows;
    const QRect client = list.View()->viewport()->rect();
    const int top = std::max(0, list.View()->indexAt(QPoint(1, 1)).row() - 16);
    for (int row = top; row < list.GetItemCount(); ++row) {
        if (list.ItemRect(row).intersects(client)) {
            rows.append(row);
        } else if (!rows.isEmpty()) {
            break;
        }
    }
    return rows;
}

bool TilesIn(const ToviPhotoListCtrl& list) {
    for (int row : VisibleRows(list)) {
        const QModelIndex index = list.ThumbModel()->index(row);
        if (index.data(ToviThumbListModel::TileStateRole).toInt() ==
            ToviThumbListModel::TileWaiting) {
            return false;
        }
    }
    return true;
}

bool FactsIn(const ToviPhotoListCtrl& list) {
    for (int row : VisibleRows(list)) {
        if (!list.MngModel()->index(row, 0).data(ToviMngListModel::FactsReadRole).toBool()) {
            return false;
        }
    }
    return true;
}

// Switches the window to mode and paints it; the list, when the mode has one.
ToviPhotoListCtrl* Switch(ToviMainWindow& window, int mode) {
    window.SetDivideType(mode);
    window.repaint();
    return window.MpiPanel()->ListCtrl();
}

void BM_SwitchToManagementList(benchmark::State& state) {
    ToviMainWindow& window = Window();
    for (auto _ : state) {
        const ToviPhotoListCtrl* list =
            Switch(window, ToviPhotoCtrlVisualSetting::DivideManagementList);
        if (!list || list->GetItemCount() != kPhotos) {
            state.SkipWithError("no management list");
            return;
        }
        state.PauseTiming();
        WaitFor([list] { return FactsIn(*list); });
        Switch(window, ToviPhotoCtrlVisualSetting::Divide6);
        WaitForPage(window);
        state.ResumeTiming();
    }
}

void BM_ScrollManagementList(benchmark::State& state) {
    ToviMainWindow& window = Window();
    ToviPhotoListCtrl* list = Switch(window, ToviPhotoCtrlVisualSetting::DivideManagementList);
    if (!list) {
        state.SkipWithError("no management list");
        return;
    }
    QWidget* view = list->View();
    view->setFocus();
    WaitFor([list] { return FactsIn(*list); });
    double factsMs = 0;
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        QKeyEvent press(QEvent::KeyPress, Qt::Key_PageDown, Qt::NoModifier);
        QCoreApplication::sendEvent(view, &press);
        view->repaint();
        state.PauseTiming();
        WaitFor([list] { return FactsIn(*list); });
        view->repaint();
        factsMs += static_cast<double>(clock.nsecsElapsed()) / 1e6;
        state.ResumeTiming();
    }
    state.counters["facts_ms"] = factsMs / static_cast<double>(state.iterations());
    state.counters["row"] = list->GetSelectionMark();
    Switch(window, ToviPhotoCtrlVisualSetting::Divide6);
    WaitForPage(window);
}

void BM_SwitchToThumbList(benchmark::State& state) {
    ToviMainWindow& window = Window();
    double picturesMs = 0;
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        const ToviPhotoListCtrl* list = Switch(window, ToviPhotoCtrlVisualSetting::DivideThumbList);
        if (!list || list->GetItemCount() != kPhotos) {
            state.SkipWithError("no thumbnail list");
            return;
        }
        state.PauseTiming();
        if (!WaitFor([list] { return TilesIn(*list); })) {
            state.SkipWithError("the tiles' pictures did not come");
            return;
        }
        window.repaint();
        picturesMs += static_cast<double>(clock.nsecsElapsed()) / 1e6;
        Switch(window, ToviPhotoCtrlVisualSetting::Divide6);
        WaitForPage(window);
        state.ResumeTiming();
    }
    state.counters["pictures_ms"] = picturesMs / static_cast<double>(state.iterations());
}

void BM_PeakAfterThumbListEnd(benchmark::State& state) {
    ToviMainWindow& window = Window();
    int screens = 0;
    for (auto _ : state) {
        ToviPhotoListCtrl* list = Switch(window, ToviPhotoCtrlVisualSetting::DivideThumbList);
        if (!list) {
            state.SkipWithError("no thumbnail list");
            return;
        }
        QScrollBar* bar = list->View()->verticalScrollBar();
        for (int value = 0; value < bar->maximum(); value += bar->pageStep(), ++screens) {
            bar->setValue(value);
            list->View()->viewport()->repaint();
            QCoreApplication::processEvents();
        }
        bar->setValue(bar->maximum());
        if (!WaitFor([list] { return TilesIn(*list); })) {
            state.SkipWithError("the last tiles' pictures did not come");
            return;
        }
        window.repaint();
    }
    state.counters["peak_MB"] = PeakMB();
    state.counters["screens"] = screens;
    Switch(window, ToviPhotoCtrlVisualSetting::Divide6);
    WaitForPage(window);
}

}  // namespace

BENCHMARK(BM_ProcessStartToPicture)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ProcessStartAndExit)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_OpenToFirstPage)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->Arg(ToviPhotoCtrlVisualSetting::Divide4)
    ->Arg(ToviPhotoCtrlVisualSetting::DivideThumbList);
BENCHMARK(BM_PageChangeSix)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SelectRootSorted)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_PeakAfter500Pages)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_SwitchToManagementList)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_ScrollManagementList)->Unit(benchmark::kMillisecond)->Iterations(50);
BENCHMARK(BM_SwitchToThumbList)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_PeakAfterThumbListEnd)->Unit(benchmark::kMillisecond)->Iterations(1);

int main(int argc, char** argv) {
    return RunWindowBenchmarks(
        argc, argv, [] { return std::unique_ptr<ToviUi>(new ScriptedUi); }, [] { window.reset(); });
}
