#include "platform/LumImage.h"
#include "tests/support/ExifJpegWriter.h"

#include <QFile>
#include <QPainter>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

// Quadrants in four colours, so that where each corner went tells the turn that was applied.
QImage Quadrants(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    const int w = size.width() / 2;
    const int h = size.height() / 2;
    QPainter painter(&image);
    painter.fillRect(0, 0, w, h, Qt::red);
    painter.fillRect(w, 0, size.width() - w, h, Qt::green);
    painter.fillRect(0, h, w, size.height() - h, Qt::blue);
    painter.fillRect(w, h, size.width() - w, size.height() - h, Qt::yellow);
    return image;
}

bool Near(QRgb a, QColor b) {
    return qAbs(qRed(a) - b.red()) < 48 && qAbs(qGreen(a) - b.green()) < 48 &&
           qAbs(qBlue(a) - b.blue()) < 48;
}

void WriteBytes(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

const char kSvg[] =
    "<?xml version=\"1.0\"?>\n"
    "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"800\" height=\"400\" "
    "viewBox=\"0 0 800 400\">\n"
    "  <rect x=\"0\" y=\"0\" width=\"400\" height=\"400\" fill=\"#ff0000\"/>\n"
    "</svg>\n";

// Load, or LoadThumb when thumb is set.
bool LoadWay(LumImage& image, bool thumb, const QString& path) {
    return thumb ? image.LoadThumb(path) : image.Load(path);
}

}  // namespace

class LumImageTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        dir = std::make_unique<QTemporaryDir>();
        QVERIFY(dir->isValid());
        // Unreadable files are an ordinary outcome: nothing may be printed for them.
        QTest::failOnWarning(QRegularExpression(u".*"_s));
    }
    // The thumbnail comes from the Exif block, else from a reduced decode; some cameras append
    // their own records after the picture, which is no cut file.
    void thumbnailSource_data() {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("writeExif");
        QTest::addColumn<bool>("embed");
        QTest::addColumn<QByteArray>("trailer");
        QTest::addColumn<QSize>("thumb");
        const QByteArray none;
        QTest::newRow("Exif thumbnail")
            << QSize(2400, 1800) << true << true << none << QSize(160, 120);
        QTest::newRow("no thumbnail: 1/8")
            << QSize(2400, 1800) << true << false << none << QSize(300, 225);
        QTest::newRow("no Exif: 1/4 keeps 256")
            << QSize(1024, 768) << false << false << none << QSize(256, 192);
        QTest::newRow("small: whole")
            << QSize(300, 200) << false << false << none << QSize(300, 200);
        QTest::newRow("uneven size")
            << QSize(2401, 1799) << true << false << none << QSize(300, 224);
        QTest::newRow("data after the end of the image")
            << QSize(800, 600) << true << false << QByteArray(70000, '\0') + "MAKER TRAILER"
            << QSize(400, 300);
    }
    void thumbnailSource() {
        QFETCH(QSize, size);
        QFETCH(bool, writeExif);
        QFETCH(bool, embed);
        QFETCH(QByteArray, trailer);
        QFETCH(QSize, thumb);

        ExifFacts facts;
        facts.writeExif = writeExif;
        facts.embedThumbnail = embed;
        const QString path = dir->filePath(u"P0000001.JPG"_s);
        WriteBytes(path, MakeExifJpeg(Quadrants(size), facts) + trailer);

        LumImage image;
        QVERIFY(image.LoadThumb(path));
        QCOMPARE(QSize(image.Width(), image.Height()), thumb);
        QVERIFY(Near(image.Image().pixel(2, 2), Qt::red));
        QVERIFY(Near(image.Image().pixel(image.Width() - 3, image.Height() - 3), Qt::yellow));

        QVERIFY(image.Load(path));
        QCOMPARE(image.Image().size(), size);
    }
    void orientation_data() {
        QTest::addColumn<bool>("thumb");
        QTest::addColumn<bool>("embed");
        QTest::addColumn<int>("orientation");
        // The colours seen at the top-left, top-right and bottom-left of the upright picture.
        QTest::addColumn<QColor>("topLeft");
        QTest::addColumn<QColor>("topRight");
        QTest::addColumn<QColor>("bottomLeft");

        const struct {
            int orientation;
            QColor topLeft, topRight, bottomLeft;
        } rows[] = {
            {1, Qt::red, Qt::green, Qt::blue},    {2, Qt::green, Qt::red, Qt::yellow},
            {3, Qt::yellow, Qt::blue, Qt::green}, {4, Qt::blue, Qt::yellow, Qt::red},
            {5, Qt::red, Qt::blue, Qt::green},    {6, Qt::blue, Qt::red, Qt::yellow},
            {7, Qt::yellow, Qt::green, Qt::blue}, {8, Qt::green, Qt::yellow, Qt::red},
        };
        // Every turn through Load; the thumbnail paths share the turning, so one each.
        for (const auto& row : rows) {
            QTest::addRow("%d, Load", row.orientation)
                << false << true << row.orientation << row.topLeft << row.topRight
                << row.bottomLeft;
        }
        QTest::newRow("6, Exif thumbnail")
            << true << true << 6 << QColor(Qt::blue) << QColor(Qt::red) << QColor(Qt::yellow);
        QTest::newRow("7, decoded thumbnail")
            << true << false << 7 << QColor(Qt::yellow) << QColor(Qt::green) << QColor(Qt::blue);
    }
    void orientation() {
        QFETCH(bool, thumb);
        QFETCH(bool, embed);
        QFETCH(int, orientation);
        QFETCH(QColor, topLeft);
        QFETCH(QColor, topRight);
        QFETCH(QColor, bottomLeft);

        ExifFacts facts;
        facts.orientation = orientation;
        facts.embedThumbnail = embed;
        facts.thumbnailSize = QSize(160, 80);
        const QString path = dir->filePath(u"turned.jpg"_s);
        QVERIFY(WriteExifJpeg(path, Quadrants(QSize(640, 320)), facts));

        LumImage image;
        QVERIFY(LoadWay(image, thumb, path));
        const QImage& picture = image.Image();
        const bool upright = orientation >= 5;
        QCOMPARE(picture.width() > picture.height(), !upright);
        const int right = picture.width() - 3;
        const int bottom = picture.height() - 3;
        QVERIFY2(Near(picture.pixel(2, 2), topLeft), "top left");
        QVERIFY2(Near(picture.pixel(right, 2), topRight), "top right");
        QVERIFY2(Near(picture.pixel(2, bottom), bottomLeft), "bottom left");
    }
    void unreadableFiles_data() {
        QTest::addColumn<bool>("thumb");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");  // null: the file is not written at all

        ExifFacts withThumb;
        const QByteArray jpeg = MakeExifJpeg(Quadrants(QSize(640, 480)), withThumb);
        QVERIFY(!jpeg.isEmpty());

        const struct {
            const char* row;
            QString name;
            QByteArray bytes;
        } files[] = {
            {"missing file", u"none.JPG"_s, QByteArray()},
            {"empty file", u"empty.JPG"_s, QByteArray("")},
            {"cut in the scan, Exif thumbnail intact", u"cut.JPG"_s,
             jpeg.left(jpeg.size() * 2 / 3)},
            {"cut inside the Exif block", u"cut3.JPG"_s, jpeg.left(300)},
            {"cut SVG", u"cut.svg"_s, QByteArray(kSvg).left(120)},
        };
        for (const auto& file : files) {
            for (bool thumb : {false, true}) {
                QTest::addRow("%s, %s", file.row, thumb ? "LoadThumb" : "Load")
                    << thumb << file.name << file.bytes;
            }
        }
    }
    void unreadableFiles() {
        QFETCH(bool, thumb);
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);

        const QString good = dir->filePath(u"good.JPG"_s);
        QVERIFY(WriteExifJpeg(good, Quadrants(QSize(64, 48)), ExifFacts()));
        const QString path = dir->filePath(name);
        if (!bytes.isNull()) {
            WriteBytes(path, bytes);
        }

        LumImage image;
        QVERIFY(image.Load(good));
        QVERIFY(!LoadWay(image, thumb, path));
        QVERIFY(!image.IsValid());
        QCOMPARE(image.Width(), 0);
        QVERIFY(!image.ConvGrayScaleFromMono());
    }
    // A one-bit drawing becomes grey levels, pixel for pixel; anything else is left alone.
    void monoBecomesGrey() {
        QImage mono(40, 20, QImage::Format_Mono);
        mono.fill(1);
        mono.setPixel(0, 5, 0);
        const QString path = dir->filePath(u"LINE.TIF"_s);
        QVERIFY(mono.save(path, "TIFF"));
        LumImage image;
        QVERIFY(image.Load(path));
        QVERIFY(image.ConvGrayScaleFromMono());
        QCOMPARE(image.Image().format(), QImage::Format_Grayscale8);
        QCOMPARE(qGray(image.Image().pixel(0, 5)), qGray(mono.pixel(0, 5)));
        QCOMPARE(qGray(image.Image().pixel(1, 5)), qGray(mono.pixel(1, 5)));
        QVERIFY(!image.ConvGrayScaleFromMono());  // already grey
    }

private:
    std::unique_ptr<QTemporaryDir> dir;
};

QTEST_MAIN(LumImageTest)
#include "LumImageTest.moc"
