// The gallery of the viewer's windows: every picture it promises is written, and none is blank.

#include <QCoreApplication>
#include <QHash>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QString Gallery() {
    return QCoreApplication::applicationDirPath() + QStringLiteral("/tovi-gallery");
}

// Why the picture looks blank, or empty when it does not: too few colours (a window that drew
// nothing, or one flat colour with a frame), or one colour over 97 % of it.
QString Blankness(const QImage& picture) {
    if (picture.isNull()) {
        return QStringLiteral("not a picture");
    }
    const QImage image = picture.convertToFormat(QImage::Format_RGB32);
    QHash<QRgb, qint64> counts;
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            ++counts[line[x]];
        }
    }
    qint64 most = 0;
    for (const qint64 count : counts) {
        most = std::max(most, count);
    }
    const qint64 pixels = qint64(image.width()) * image.height();
    if (counts.size() < 64) {
        return QStringLiteral("%1 colours").arg(counts.size());
    }
    if (most * 100 > pixels * 97) {
        return QStringLiteral("one colour on %1 %").arg(most * 100 / pixels);
    }
    return QString();
}

}  // namespace

class GalleryTest : public QObject {
    Q_OBJECT

private slots:
    // The judge itself: a flat picture, a framed one and a two-colour one are blank; a
    // picture with a gradient is not.
    void blankness_data() {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<bool>("blank");
        QImage flat(200, 100, QImage::Format_RGB32);
        flat.fill(QColor(240, 240, 240));
        QTest::newRow("one colour") << flat << true;
        QImage framed = flat;
        for (int x = 0; x < 200; ++x) {
            framed.setPixel(x, 0, qRgb(0, 0, 0));
            framed.setPixel(x, 99, qRgb(0, 0, 0));
        }
        QTest::newRow("frame only") << framed << true;
        QImage ramp = flat;
        for (int y = 0; y < 100; ++y) {
            for (int x = 0; x < 200; ++x) {
                ramp.setPixel(x, y, qRgb(x, y, 128));
            }
        }
        QTest::newRow("gradient") << ramp << false;
        // Many colours in one corner, the rest one colour: still blank.
        QImage corner = flat;
        for (int i = 0; i < 100; ++i) {
            corner.setPixel(i % 10, i / 10, qRgb(i, 255 - i, i * 2));
        }
        QTest::newRow("a speck") << corner << true;
    }
    void blankness() {
        QFETCH(QImage, image);
        QFETCH(bool, blank);
        QCOMPARE(!Blankness(image).isEmpty(), blank);
    }

    void everyWindow() {
        QProcess list;
        list.start(Gallery(), {QStringLiteral("--list")});
        QVERIFY(list.waitForFinished(30000));
        QCOMPARE(list.exitCode(), 0);
        const QStringList names = QString::fromUtf8(list.readAllStandardOutput())
                                      .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        // The windows the gallery is there for; more may be added.
        const QStringList required = {QStringLiteral("main-1.png"),
                                      QStringLiteral("main-2.png"),
                                      QStringLiteral("main-3.png"),
                                      QStringLiteral("main-4.png"),
                                      QStringLiteral("main-6.png"),
                                      QStringLiteral("main-thumbnails.png"),
                                      QStringLiteral("main-list.png"),
                                      QStringLiteral("main-4-1920x1080.png"),
                                      QStringLiteral("tree-classification.png"),
                                      QStringLiteral("tree-labels.png"),
                                      QStringLiteral("detail-panel.png"),
                                      QStringLiteral("zoom-window.png"),
                                      QStringLiteral("property-dialog.png"),
                                      QStringLiteral("confirm-dialog.png"),
                                      QStringLiteral("image-window.png"),
                                      QStringLiteral("comment-dialog.png"),
                                      QStringLiteral("label-batch-dialog.png"),
                                      QStringLiteral("save-choice-dialog.png"),
                                      QStringLiteral("extraction-dock.png"),
                                      QStringLiteral("check-dock.png"),
                                      QStringLiteral("check-dock-1920x1080.png"),
                                      QStringLiteral("extraction-detail-dialog.png"),
                                      QStringLiteral("setup-dialog.png"),
                                      QStringLiteral("setup-items-dialog.png"),
                                      QStringLiteral("setup-type-dialog.png"),
                                      QStringLiteral("index-page.png"),
                                      QStringLiteral("date-table-dialog.png"),
                                      QStringLiteral("progress-window.png"),
                                      QStringLiteral("message-information.png"),
                                      QStringLiteral("message-warning.png"),
                                      QStringLiteral("message-question.png")};
        for (const QString& name : required) {
            QVERIFY2(names.contains(name), qPrintable(name));
        }

        QTemporaryDir out;
        QVERIFY(out.isValid());
        QProcess gallery;
        gallery.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        gallery.start(Gallery(), {QStringLiteral(TOVI_SAMPLE_DIR "/INDEX_C"), out.path()});
        QVERIFY(gallery.waitForFinished(300000));
        QCOMPARE(gallery.exitCode(), 0);
        for (const QString& name : names) {
            const QImage picture(out.filePath(name));
            QVERIFY2(!picture.isNull(), qPrintable(name + QStringLiteral(" is missing")));
            const QString blank = Blankness(picture);
            QVERIFY2(blank.isEmpty(), qPrintable(name + QStringLiteral(" looks blank: ") + blank));
        }
        const QImage large(out.filePath(QStringLiteral("main-4-1920x1080.png")));
        QCOMPARE(large.size() / large.devicePixelRatio(), QSize(1920, 1080));
        const QImage main(out.filePath(QStringLiteral("main-4.png")));
        QCOMPARE(main.size() / main.devicePixelRatio(), QSize(1366, 768));
    }
};

QTEST_GUILESS_MAIN(GalleryTest)
#include "GalleryTest.moc"
