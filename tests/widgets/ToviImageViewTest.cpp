#include "dialogs/ToviImageWnd.h"
#include "dialogs/ToviSelectOutputPhotoDlg.h"
#include "dialogs/ToviSvgView.h"
#include "document/ToviHostDocument.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/LumImage.h"
#include "platform/ToviProfile.h"
#include "platform/widgets/LumImgWnd.h"
#include "reports/ToviPhotoExport.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/WorkArea.h"

#include <QAction>
#include <QBuffer>
#include <QPainter>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

class SilentHost : public ToviHostDocument {
public:
    void UpdateAllViews(QWidget*, int, QObject*) override {}
};

// Vertical stripes one pixel wide on the left half (they blur to grey when reduced), and
// a solid colour per quarter below, so that a view shows whether it holds the picture at
// full resolution and where.
QImage Stripes(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    for (int y = 0; y < size.height() / 2; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width() / 2; ++x) {
            line[x] = x % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0);
        }
    }
    QPainter painter(&image);
    painter.fillRect(QRect(0, size.height() / 2, size.width() / 2, size.height() / 2), Qt::red);
    painter.fillRect(
        QRect(size.width() / 2, size.height() / 2, size.width() / 2, size.height() / 2), Qt::blue);
    return image;
}

// The spread of grey between neighbouring pixels of a row of the window's picture.
int Contrast(const QImage& shot, QPoint at, int span) {
    int low = 255;
    int high = 0;
    for (int x = at.x(); x < at.x() + span; ++x) {
        const int grey = qGray(shot.pixel(x, at.y()));
        low = std::min(low, grey);
        high = std::max(high, grey);
    }
    return high - low;
}

QByteArray Digest(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly)
               ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256)
               : QByteArray();
}

bool Near(QRgb a, QRgb b, int tolerance = 40) {
    return std::abs(qRed(a) - qRed(b)) < tolerance && std::abs(qGreen(a) - qGreen(b)) < tolerance &&
           std::abs(qBlue(a) - qBlue(b)) < tolerance;
}

void ClickTool(QToolBar* bar, QAction* action) {
    QWidget* button = bar->widgetForAction(action);
    QVERIFY(button);
    QVERIFY(button->isEnabled());
    QTest::mouseClick(button, Qt::LeftButton);
}

}  // namespace

class ToviImageViewTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    ScriptedUi ui;
    SilentHost host;
    QString folder;
    std::unique_ptr<ToviData> document;

    bool WaitLoaded(QObject* sender, const char* signal) {
        QSignalSpy loaded(sender, signal);
        return loaded.count() > 0 || loaded.wait(10000);
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(u"profile.ini"_s));
        UseWorkFolder(temp.path());
        ToviUi::Install(&ui);
        DeliveryOptions options;
        options.photoCount = 3;
        options.images = DeliveryOptions::Images::Boards;
        options.imageSize = QSize(320, 240);
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(u"d"_s), options, &written, &error),
                 qPrintable(error));
        folder = written.photoFolder;
        ToviEnouDataFactory factory;
        document = factory.Create(&host, folder, PhotoXMLMlit);
        QVERIFY(document);
        document->Load();
    }
    void cleanupTestCase() {
        document.reset();
        ToviUi::Install(nullptr);
        ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
    }

    // The window decodes a reduction first and, zoomed in, the part on show at the zoom's
    // resolution; the wheel keeps the point under the cursor, a drag pans, Ctrl+0 fits.
    void zoomAndPan() {
        const QString path = temp.filePath(u"stripes.jpg"_s);
        QVERIFY(Stripes(QSize(3200, 2400)).save(path, "JPEG", 98));
        LumImgWnd view;
        view.SetZoomable(true);
        view.resize(800, 600);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QSignalSpy loaded(&view, &LumImgWnd::Loaded);
        view.OpenFile(path);
        QVERIFY(loaded.wait(10000));
        QCOMPARE(loaded.first().first().toBool(), true);
        QCOMPARE(view.Image().size(), QSize(1600, 1200));  // a half covers the base side
        QCOMPARE(view.PictureSize(), QSize(3200, 2400));
        QVERIFY(view.IsFitted());
        QCOMPARE(view.Zoom(), 0.25);

        view.setFocus();
        QTest::keyClick(&view, Qt::Key_Plus, Qt::ControlModifier);
        QVERIFY(!view.IsFitted());
        QCOMPARE(view.Zoom(), 0.3125);

        // The wheel zooms about the cursor: the picture point under it stays put.
        const QPointF cursor(200, 150);
        const auto pointUnder = [&view](QPointF at) {
            return (at - QPointF(view.ImageRect().topLeft())) / view.Zoom();
        };
        const QPointF before = pointUnder(cursor);
        QWheelEvent wheel(cursor, view.mapToGlobal(cursor), QPoint(), QPoint(0, 240), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view, &wheel);
        QVERIFY(std::abs(view.Zoom() - 0.3125 * 1.5625) < 1e-9);
        const QPointF after = pointUnder(cursor);
        QVERIFY2(std::abs(after.x() - before.x()) < 2 && std::abs(after.y() - before.y()) < 2,
                 "the point under the cursor moved");

        // A double click shows 100 % at that point; the stripes come out sharp once the
        // finer part is decoded, and were grey before.
        QSignalSpy detail(&view, &LumImgWnd::DetailShown);
        QTest::mouseDClick(&view, Qt::LeftButton, Qt::NoModifier, QPoint(100, 100));
        QCOMPARE(view.Zoom(), 1.0);
        QVERIFY(detail.wait(10000));
        QCOMPARE(view.DetailLevel(), 0);
        QVERIFY(view.DetailRect().contains(view.VisiblePictureRect().toAlignedRect()));
        const QRectF visible = view.VisiblePictureRect();
        QVERIFY(visible.left() < 1500 && visible.top() < 1100);  // in the striped quarter
        QVERIFY2(Contrast(view.grab().toImage(), QPoint(100, 100), 6) > 150, "not sharp");

        // A drag moves the picture with the mouse.
        const QPointF start = view.VisiblePictureRect().topLeft();
        QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, QPoint(400, 300));
        QMouseEvent move(QEvent::MouseMove, QPointF(300, 250), view.mapToGlobal(QPointF(300, 250)),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&view, &move);
        QTest::mouseRelease(&view, Qt::LeftButton, Qt::NoModifier, QPoint(300, 250));
        const QPointF moved = view.VisiblePictureRect().topLeft() - start;
        QVERIFY2(std::abs(moved.x() - 100) < 1 && std::abs(moved.y() - 50) < 1,
                 qPrintable(u"%1,%2"_s.arg(moved.x()).arg(moved.y())));

        QTest::keyClick(&view, Qt::Key_0, Qt::ControlModifier);
        QVERIFY(view.IsFitted());
    }
    // A picture in another format than JPEG is decoded whole once, as its reader cannot do
    // less, and no part of it is decoded again for a zoom (a wide BMP found by the fuzzer
    // cost seconds a decode when it was reduced and cut on every request).
    void otherFormatsWhole() {
        const QString path = temp.filePath(u"wide.png"_s);
        QVERIFY(Stripes(QSize(3000, 400)).save(path, "PNG"));
        LumImgWnd view;
        view.SetZoomable(true);
        view.resize(800, 600);
        view.show();
        QSignalSpy loaded(&view, &LumImgWnd::Loaded);
        view.OpenFile(path);
        QVERIFY(loaded.wait(10000));
        QCOMPARE(view.Image().size(), QSize(3000, 400));
        view.ZoomToActual();
        QTest::qWait(200);
        QVERIFY(!view.IsDetailPending());
        QCOMPARE(view.DetailLevel(), -1);
    }
    // A file that cannot be shown blanks the window; a file gone while shown keeps the
    // picture already on screen, and zooming in on it shows that picture enlarged.
    void unreadableFiles() {
        LumImgWnd view;
        view.SetZoomable(true);
        view.resize(400, 300);
        view.show();
        const QString cut = temp.filePath(u"cut.jpg"_s);
        QByteArray bytes;
        {
            QBuffer buffer(&bytes);
            buffer.open(QIODevice::WriteOnly);
            QVERIFY(Stripes(QSize(400, 300)).save(&buffer, "JPEG"));
        }
        QFile file(cut);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes.left(bytes.size() / 2));
        file.close();
        // A PNG whose header claims 60,000 x 60,000 pixels (gigabytes once inflated) is refused
        // by the reader's allocation limit, not decoded.
        const QString bomb = temp.filePath(u"bomb.png"_s);
        {
            QByteArray png;
            QBuffer buffer(&png);
            buffer.open(QIODevice::WriteOnly);
            QVERIFY(Stripes(QSize(16, 16)).save(&buffer, "PNG"));
            const qsizetype ihdr = png.indexOf("IHDR");
            QVERIFY(ihdr > 0);
            for (int i = 0; i < 2; ++i) {  // width and height, big-endian
                png[ihdr + 4 + 4 * i] = 0;
                png[ihdr + 5 + 4 * i] = 0;
                png[ihdr + 6 + 4 * i] = char(0xEA);
                png[ihdr + 7 + 4 * i] = char(0x60);
            }
            QFile out(bomb);
            QVERIFY(out.open(QIODevice::WriteOnly));
            out.write(png);
        }
        for (const QString& path : {temp.filePath(u"missing.jpg"_s), cut, bomb}) {
            QSignalSpy loaded(&view, &LumImgWnd::Loaded);
            view.OpenFile(path);
            QVERIFY(loaded.wait(10000));
            QCOMPARE(loaded.first().first().toBool(), false);
            QVERIFY(!view.IsEnableImage());
        }

        const QString gone = temp.filePath(u"gone.jpg"_s);
        QVERIFY(Stripes(QSize(4000, 3000)).save(gone, "JPEG", 90));
        QSignalSpy loaded(&view, &LumImgWnd::Loaded);
        view.OpenFile(gone);
        QVERIFY(loaded.wait(10000));
        QVERIFY(QFile::remove(gone));
        view.ZoomToActual();
        QTRY_VERIFY(!view.IsDetailPending());
        QVERIFY(view.IsEnableImage());
        QCOMPARE(view.DetailLevel(), -1);
    }
    // The save-choice dialog starts on the corrected picture and answers what was clicked.
    void choiceDialog() {
        ToviSelectOutputPhotoDlg dialog;
        QVERIFY(dialog.IsSelectedWorkedPhotoMode());
        QTimer::singleShot(0, &dialog, [&dialog] {
            QVERIFY(QTest::qWaitForWindowExposed(&dialog));
            QTest::mouseClick(dialog.OriginalChoice(), Qt::LeftButton, Qt::NoModifier,
                              QPoint(8, dialog.OriginalChoice()->height() / 2));
            QTest::mouseClick(dialog.findChild<QPushButton*>(u"save"_s), Qt::LeftButton);
        });
        QCOMPARE(dialog.exec(), int(QDialog::Accepted));
        QVERIFY(!dialog.IsSelectedWorkedPhotoMode());
    }
    // A turned picture saved from the image window is a JPEG turned pixel for pixel; a
    // cancelled choice writes nothing; an unchanged picture is the delivered file copied;
    // the delivered file never changes.
    void imageWindowSave() {
        ToviImageWnd window;
        window.SetData(document.get());
        window.resize(700, 500);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        ToviPhoto* photo = document->GetPhotoActualPhotoArray(0);
        const QString delivered = photo->GetImagePath();
        const QByteArray original = Digest(delivered);
        QSignalSpy loaded(&window, &ToviImageWnd::Loaded);
        window.SetPhoto(photo);
        QVERIFY(loaded.wait(10000));
        QVERIFY(!window.Action(ToviImageWnd::kReset)->isEnabled());

        ClickTool(window.ToolBar(), window.Action(ToviImageWnd::kRotateRight));
        QCOMPARE(window.Rotation(), 90);
        QVERIFY(window.Action(ToviImageWnd::kReset)->isEnabled());
        QCOMPARE(window.ImageWnd()->PictureSize(), QSize(240, 320));

        const QString out = temp.filePath(u"turned.jpg"_s);
        ui.QueueDialog(false);  // the choice is cancelled: nothing is asked after it
        ClickTool(window.ToolBar(), window.Action(ToviImageWnd::kSave));
        QCOMPARE(ui.DialogNames().last(), ToviPhotoExport::ChoiceDialogName_);
        QVERIFY(!QFile::exists(out));

        ui.QueueDialog(true, {{ToviPhotoExport::WorkedModeField_, true}});
        ui.QueueFileName(out);
        ClickTool(window.ToolBar(), window.Action(ToviImageWnd::kSave));
        QCOMPARE(ui.Questions().last().text, ToviPhotoExport::SavedMessage_);
        QImage saved(out);
        QImage source(delivered);
        QCOMPARE(saved.size(), QSize(240, 320));
        const QImage turned = source.transformed(QTransform().rotate(90));
        for (QPoint at : {QPoint(5, 5), QPoint(230, 10), QPoint(10, 300), QPoint(120, 160)}) {
            QVERIFY2(Near(saved.pixel(at), turned.pixel(at)),
                     qPrintable(u"%1,%2"_s.arg(at.x()).arg(at.y())));
        }

        // Four turns are no change: the delivered file is copied, unasked.
        for (int i = 0; i < 3; ++i) {
            ClickTool(window.ToolBar(), window.Action(ToviImageWnd::kRotateRight));
        }
        QCOMPARE(window.Rotation(), 0);
        QVERIFY(window.Action(ToviImageWnd::kReset)->isEnabled());
        const int dialogs = ui.DialogNames().size();
        const QString copy = temp.filePath(u"copy.jpg"_s);
        ui.QueueFileName(copy);
        ClickTool(window.ToolBar(), window.Action(ToviImageWnd::kSave));
        QCOMPARE(ui.DialogNames().size(), dialogs);
        QCOMPARE(Digest(copy), original);

        // A save into a place that cannot be written says so and leaves nothing there.
        ClickTool(window.ToolBar(), window.Action(ToviImageWnd::kRotateLeft));
        const QString blocked = temp.filePath(u"copy.jpg/inside.jpg"_s);
        ui.QueueDialog(true, {{ToviPhotoExport::WorkedModeField_, true}});
        ui.QueueFileName(blocked);
        ClickTool(window.ToolBar(), window.Action(ToviImageWnd::kSave));
        QCOMPARE(ui.Questions().last().text, ToviPhotoExport::SaveFailedMessage_);
        QCOMPARE(Digest(copy), original);
        QCOMPARE(Digest(delivered), original);
    }
    // The brightness follows the slider in steps of 200, a darkening acting only in whole
    // steps of 1000; it stays for the next photograph, which then counts as changed, and the
    // turn does not. Reset brings all back.
    void imageWindowBrightness() {
        ToviImageWnd window;
        window.SetData(document.get());
        window.resize(700, 500);
        window.show();
        QSignalSpy loaded(&window, &ToviImageWnd::Loaded);
        window.SetPhoto(document->GetPhotoActualPhotoArray(0));
        QVERIFY(loaded.wait(10000));
        const QImage plain = window.ImageWnd()->Image();
        window.Slider()->setFocus();
        QTest::keyClick(window.Slider(), Qt::Key_Right);
        QCOMPARE(window.Brightness(), 200);
        QVERIFY(window.IsChanged());
        QVERIFY(qGray(window.ImageWnd()->Image().pixel(160, 120)) > qGray(plain.pixel(160, 120)));
        QTest::keyClick(window.Slider(), Qt::Key_Left);
        QTest::keyClick(window.Slider(), Qt::Key_Left);
        QTest::keyClick(window.Slider(), Qt::Key_Left);
        QTest::keyClick(window.Slider(), Qt::Key_Left);
        QCOMPARE(window.Brightness(), -600);
        QCOMPARE(window.ImageWnd()->Image(), plain);  // no whole step: unchanged, as ever

        ClickTool(window.ToolBar(), window.Action(ToviImageWnd::kRotateLeft));
        QCOMPARE(window.Rotation(), -90);
        loaded.clear();
        window.SetPhoto(document->GetPhotoActualPhotoArray(1));
        QVERIFY(loaded.wait(10000));
        QCOMPARE(window.Rotation(), 0);
        QCOMPARE(window.Brightness(), -600);
        QVERIFY(window.IsChanged());
        QVERIFY(window.Action(ToviImageWnd::kReset)->isEnabled());
        ClickTool(window.ToolBar(), window.Action(ToviImageWnd::kReset));
        QCOMPARE(window.Slider()->value(), 0);
        QCOMPARE(window.Brightness(), 0);
        QVERIFY(!window.IsChanged());
        QVERIFY(!window.Action(ToviImageWnd::kReset)->isEnabled());
    }
    // An SVG photograph is drawn as it stands: no turns, no brightness, but it can be saved.
    void svgPhotograph() {
        DeliveryOptions options;
        options.photoCount = 1;
        options.images = DeliveryOptions::Images::Tiny;
        options.drawingShare = 0;
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(u"s"_s), options, &written, &error),
                 qPrintable(error));
        // The delivery's photograph becomes an SVG drawing of the same name.
        QFile xml(written.photoFolder + u"/PHOTO.XML"_s);
        QVERIFY(xml.open(QIODevice::ReadOnly));
        QByteArray bytes = xml.readAll();
        xml.close();
        bytes.replace("P0000001.JPG", "P0000001.SVG");
        QVERIFY(xml.open(QIODevice::WriteOnly | QIODevice::Truncate));
        xml.write(bytes);
        xml.close();
        QFile svg(written.photoFolder + u"/PIC/P0000001.SVG"_s);
        QVERIFY(svg.open(QIODevice::WriteOnly));
        svg.write(
            "<svg xmlns='http://www.w3.org/2000/svg' width='200' height='100'>"
            "<rect width='200' height='100' fill='green'/></svg>");
        svg.close();
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> drawn = factory.Create(&host, written.photoFolder, PhotoXMLMlit);
        QVERIFY(drawn);

        ToviImageWnd window;
        window.SetData(drawn.get());
        window.resize(500, 400);
        window.show();
        window.SetPhoto(drawn->GetPhotoActualPhotoArray(0));
        QVERIFY(window.SvgView()->isVisible());
        QVERIFY(window.SvgView()->IsLoaded());
        QVERIFY(!window.Slider()->isEnabled());
        QVERIFY(!window.Action(ToviImageWnd::kRotateLeft)->isEnabled());
        QVERIFY(window.Action(ToviImageWnd::kSave)->isEnabled());
    }
};

QTEST_MAIN(ToviImageViewTest)
#include "ToviImageViewTest.moc"
