// The extraction window of the viewer on deliveries of 10,000 and 100,000 photographs
// (国交省-20), on the offscreen platform. Every photograph has an image file: 60 distinct
// 640 x 480 JPEGs hard-linked under the photographs' names.
//
//   BM_DetailOkToFirstPage/N  extraction running on one 工種; in 詳細設定 another 工種 is chosen,
//                             and the time runs from the click on OK (the conditions copied back
//                             and the extraction run afresh over the whole delivery) until the
//                             first page of the result is on screen and painted
//   BM_ExecuteToFirstPage/N   the same condition switched on by a click on 抽出実行, until the
//                             first page is on screen and painted (then off again, untimed)
//   BM_OpenDetails/N          a click on 詳細設定... with one item condition set (工種), until
//                             the dialog is up with that item's values listed

#include "app/ToviMainWindow.h"
#include "dialogs/ToviExtDetailDlg.h"
#include "dialogs/ToviExtractionDlg.h"
#include "dialogs/ToviQtUi.h"
#include "document/ToviData.h"
#include "panels/ToviMpiPanel.h"
#include "platform/Cp932.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ExifJpegWriter.h"
#include "tests/support/WorkArea.h"

#include "bench/BenchPictures.h"
#include "bench/BenchMainWindow.h"
#include "bench/BenchWindows.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

#include <functional>
#include <map>
#include <memory>

#include <unistd.h>

namespace {

constexpr int kDistinctImages = 60;

// The viewer's own presenter, so that the progress window is shown and pumped as in use; the
// questions nobody would answer (a message, a named dialog such as the next disc's) get their
// safe answers at once.
class BenchUi : public ToviQtUi {
public:
    int MessageBox(QWidget*, const QString& text, const QString& caption, Buttons buttons,
                   Icon icon) override {
        return ToviNonInteractiveUi().MessageBox(nullptr, text, caption, buttons, icon);
    }
    bool RunDialog(QWidget*, const QString&, QVariantMap&) override { return false; }
    bool BrowseForFolder(QWidget*, const QString&, QString&) override { return false; }
};

// The PHOTO folder of a delivery of count photographs, written once per count.
QString Delivery(int count) {
    static std::map<int, QString> folders;
    if (const auto it = folders.find(count); it != folders.end()) {
        return it->second;
    }
    DeliveryOptions options;
    options.photoCount = count;
    options.images = DeliveryOptions::Images::None;
    options.seed = 11;
    const QString photo = WriteBenchDelivery(QStringLiteral("d%1").arg(count), options);
    QStringList pictures;
    for (int i = 0; i < kDistinctImages; ++i) {
        const QString path = Temp().filePath(QStringLiteral("image%1.jpg").arg(i));
        if (!QFile::exists(path)) {
            QImage image(640, 480, QImage::Format_RGB32);
            image.fill(QColor::fromHsv(i * 6, 120, 200));
            QPainter painter(&image);
            painter.drawText(image.rect(), Qt::AlignCenter, QString::number(i));
            painter.end();
            ExifFacts facts;
            facts.dateTimeOriginal = QDateTime(QDate(2024, 4, 1), QTime(9, 0));
            if (!WriteExifJpeg(path, image, facts)) {
                qFatal("cannot write %s", qPrintable(path));
            }
        }
        pictures.append(path);
    }
    LinkPictures(photo, pictures);
    folders[count] = photo;
    return photo;
}

// One window per delivery size, kept for the runs over it, in four-photograph mode.
std::map<int, std::unique_ptr<ToviMainWindow>> windows;

ToviMainWindow& Window(int count) {
    std::unique_ptr<ToviMainWindow>& window = windows[count];
    if (!window) {
        for (auto& [size, other] : windows) {
            if (other) {
                other->Document()->Close();
            }
        }
        window = std::make_unique<ToviMainWindow>();
        window->resize(1366, 768);
        window->show();
        if (!window->OpenDelivery(Delivery(count), PhotoXMLMlit)) {
            qFatal("the delivery did not open");
        }
        window->SetDivideType(ToviPhotoCtrlVisualSetting::Divide4);
        WaitForPage(*window);
    } else if (!window->Document()->IsOpen()) {
        window->OpenDelivery(Delivery(count), PhotoXMLMlit);
        WaitForPage(*window);
    }
    return *window;
}

// The distinct values of 工種, the most frequent first.
QStringList WorkValues(ToviData& data) {
    QStringList values;
    data.GetPhotoItemValue(QStringLiteral("工種"), values);
    return values;
}

// Runs 詳細設定 with item row 1 on title = text and clicks OK; the time from the click to the
// first page drawn is added to seconds.
bool DetailOk(ToviMainWindow& window, const QString& title, const QString& text, double& seconds) {
    ToviExtractionDlg* dlg = window.ExtractionDlg();
    QElapsedTimer clock;
    bool clicked = false;
    std::function<void()> act;
    act = [&] {
        auto* detail = qobject_cast<ToviExtDetailDlg*>(QApplication::activeModalWidget());
        if (!detail) {
            QTimer::singleShot(5, act);  // not up yet
            return;
        }
        if (!detail->ItemCheck(0)->isChecked()) {
            QTest::mouseClick(detail->ItemCheck(0), Qt::LeftButton);
        }
        QComboBox* titles = detail->ItemList(0);
        titles->setFocus();
        QTest::keyClick(titles, Qt::Key_Home);
        for (int i = titles->findText(title); i > 0; --i) {
            QTest::keyClick(titles, Qt::Key_Down);
        }
        QComboBox* values = detail->ValueList(0);
        values->setCurrentIndex(values->findText(text));
        clicked = true;
        clock.start();
        QTest::mouseClick(detail->findChild<QPushButton*>(QStringLiteral("ok")), Qt::LeftButton);
        if (detail->isVisible()) {
            detail->reject();  // refused: the run reports it rather than waiting for ever
        }
    };
    QTimer::singleShot(0, act);
    QTest::mouseClick(dlg->DetailsButton(), Qt::LeftButton);
    const bool shown = clicked && WaitForPage(window);
    seconds += static_cast<double>(clock.nsecsElapsed()) / 1e9;
    return shown;
}

void BM_DetailOkToFirstPage(benchmark::State& state) {
    ToviMainWindow& window = Window(static_cast<int>(state.range(0)));
    ToviData& data = *window.Document()->Data();
    ToviExtractionDlg* dlg = window.ExtractionDlg();
    const QStringList works = WorkValues(data);
    double ignored = 0;
    if (works.size() < 2 || !DetailOk(window, QStringLiteral("工種"), works[0], ignored)) {
        state.SkipWithError("no 工種 to extract by");
        return;
    }
    if (!dlg->IsRunning()) {
        QTest::mouseClick(dlg->ExecuteButton(), Qt::LeftButton);
        WaitForPage(window);
    }
    int next = 1;
    for (auto _ : state) {
        double seconds = 0;
        if (!DetailOk(window, QStringLiteral("工種"), works[next % works.size()], seconds)) {
            state.SkipWithError("the page did not come");
            return;
        }
        state.SetIterationTime(seconds);
        ++next;
    }
    state.counters["shown"] = data.GetCurrentPhotoCount();
    QTest::mouseClick(dlg->ExecuteButton(), Qt::LeftButton);
    WaitForPage(window);
}

void BM_ExecuteToFirstPage(benchmark::State& state) {
    ToviMainWindow& window = Window(static_cast<int>(state.range(0)));
    ToviData& data = *window.Document()->Data();
    ToviExtractionDlg* dlg = window.ExtractionDlg();
    const QStringList works = WorkValues(data);
    double ignored = 0;
    if (works.isEmpty() || !DetailOk(window, QStringLiteral("工種"), works[0], ignored)) {
        state.SkipWithError("no 工種 to extract by");
        return;
    }
    if (dlg->IsRunning()) {
        QTest::mouseClick(dlg->ExecuteButton(), Qt::LeftButton);
        WaitForPage(window);
    }
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        QTest::mouseClick(dlg->ExecuteButton(), Qt::LeftButton);
        if (!dlg->IsRunning() || !WaitForPage(window)) {
            state.SkipWithError("the page did not come");
            return;
        }
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        state.counters["shown"] = data.GetCurrentPhotoCount();
        QTest::mouseClick(dlg->ExecuteButton(), Qt::LeftButton);
        WaitForPage(window);
    }
}

void BM_OpenDetails(benchmark::State& state) {
    ToviMainWindow& window = Window(static_cast<int>(state.range(0)));
    ToviData& data = *window.Document()->Data();
    ToviExtractionDlg* dlg = window.ExtractionDlg();
    const QStringList works = WorkValues(data);
    double ignored = 0;
    if (works.isEmpty() || !DetailOk(window, QStringLiteral("工種"), works[0], ignored)) {
        state.SkipWithError("no 工種 to extract by");
        return;
    }
    for (auto _ : state) {
        QElapsedTimer clock;
        double seconds = -1;
        std::function<void()> close;
        close = [&] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal) {
                QTimer::singleShot(1, close);
                return;
            }
            seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
            static_cast<QDialog*>(modal)->reject();
        };
        QTimer::singleShot(0, close);
        clock.start();
        QTest::mouseClick(dlg->DetailsButton(), Qt::LeftButton);
        if (seconds < 0) {
            state.SkipWithError("the dialog did not come");
            return;
        }
        state.SetIterationTime(seconds);
    }
    state.counters["values"] = static_cast<double>(works.size());
}

}  // namespace

BENCHMARK(BM_DetailOkToFirstPage)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(10)
    ->Arg(10000)
    ->Arg(100000);
BENCHMARK(BM_ExecuteToFirstPage)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(10)
    ->Arg(10000)
    ->Arg(100000);

BENCHMARK(BM_OpenDetails)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(10)
    ->Arg(10000)
    ->Arg(100000);

int main(int argc, char** argv) {
    return RunWindowBenchmarks(
        argc, argv, [] { return std::unique_ptr<ToviUi>(new BenchUi); }, [] { windows.clear(); });
}
