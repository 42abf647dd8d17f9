#include "platform/LumImage.h"
#include "platform/LumImageSource.h"
#include "tests/support/ExifJpegWriter.h"

#include <QBuffer>
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

// A grid of cells in colours that differ from each neighbour, so that a part cut from the
// wrong place, turned or mirrored, shows other colours than the whole picture has there.
QImage Cells(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    const int cell = 80;
    for (int y = 0; y < size.height(); y += cell) {
        for (int x = 0; x < size.width(); x += cell) {
            const int i = x / cell + 7 * (y / cell);
            painter.fillRect(x, y, cell, cell,
                             QColor((i * 97) % 256, (i * 57 + 80) % 256, (i * 151 + 30) % 256));
        }
    }
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
    // Every turn through Load and LoadThumb; even turns take the Exif thumbnail, odd ones the
    // decoded picture. The colours are those at the upright picture's top-left, top-right and
    // bottom-left.
    void orientation_data() {
        QTest::addColumn<int>("orientation");
        QTest::addColumn<QList<QColor>>("corners");
        const QList<QList<QColor>> corners{
            {Qt::red, Qt::green, Qt::blue},    {Qt::green, Qt::red, Qt::yellow},
            {Qt::yellow, Qt::blue, Qt::green}, {Qt::blue, Qt::yellow, Qt::red},
            {Qt::red, Qt::blue, Qt::green},    {Qt::blue, Qt::red, Qt::yellow},
            {Qt::yellow, Qt::green, Qt::blue}, {Qt::green, Qt::yellow, Qt::red}};
        for (int i = 0; i < corners.size(); ++i) {
            QTest::addRow("%d", i + 1) << i + 1 << corners[i];
        }
    }
    void orientation() {
        QFETCH(int, orientation);
        QFETCH(QList<QColor>, corners);
        ExifFacts facts;
        facts.orientation = orientation;
        facts.embedThumbnail = orientation % 2 == 0;
        facts.thumbnailSize = QSize(160, 80);
        const QString path = dir->filePath(u"turned.jpg"_s);
        QVERIFY(WriteExifJpeg(path, Quadrants(QSize(640, 320)), facts));
        for (const bool thumb : {false, true}) {
            LumImage image;
            QVERIFY(thumb ? image.LoadThumb(path) : image.Load(path));
            const QImage& picture = image.Image();
            QCOMPARE(picture.width() > picture.height(), orientation < 5);
            const int right = picture.width() - 3;
            const int bottom = picture.height() - 3;
            QVERIFY2(Near(picture.pixel(2, 2), corners[0]), "top left");
            QVERIFY2(Near(picture.pixel(right, 2), corners[1]), "top right");
            QVERIFY2(Near(picture.pixel(2, bottom), corners[2]), "bottom left");
        }
    }
    // Load and LoadThumb fail alike, and leave no picture of the file before.
    void unreadableFiles_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");  // null: the file is not written at all
        const QByteArray jpeg = MakeExifJpeg(Quadrants(QSize(640, 480)), ExifFacts());
        QTest::newRow("missing file") << u"none.JPG"_s << QByteArray();
        QTest::newRow("empty file") << u"empty.JPG"_s << QByteArray("");
        QTest::newRow("cut in the scan, Exif thumbnail intact")
            << u"cut.JPG"_s << jpeg.left(jpeg.size() * 2 / 3);
        QTest::newRow("cut inside the Exif block") << u"cut3.JPG"_s << jpeg.left(300);
        QTest::newRow("cut SVG") << u"cut.svg"_s
                                 << QByteArray(
                                        "<?xml version=\"1.0\"?>\n<svg xmlns=\"http://www.w3.org/"
                                        "2000/svg\" width=\"800\" height=\"400\">\n  <rect x=");
    }
    void unreadableFiles() {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        const QString good = dir->filePath(u"good.JPG"_s);
        QVERIFY(WriteExifJpeg(good, Quadrants(QSize(64, 48)), ExifFacts()));
        const QString path = dir->filePath(name);
        if (!bytes.isNull()) {
            WriteBytes(path, bytes);
        }
        for (const bool thumb : {false, true}) {
            LumImage image;
            QVERIFY(image.Load(good));
            QVERIFY(!(thumb ? image.LoadThumb(path) : image.Load(path)));
            QVERIFY(!image.IsValid());
            QCOMPARE(image.Width(), 0);
            QVERIFY(!image.ConvGrayScaleFromMono());
        }
    }
    // A picture for the screen is decoded at a DCT scale that still covers the side asked
    // for; one too large for the decoder's allocation limit whole still opens that way.
    void displaySize() {
        const QString big = dir->filePath(u"BIG.JPG"_s);
        {
            QImage image(6000, 6000, QImage::Format_RGB32);
            image.fill(Qt::darkCyan);
            QVERIFY(image.save(big, "JPEG", 50));
        }
        LumImage image;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"allocation limit"_s));
        QVERIFY(!image.Load(big));  // 144 MB decoded: over the limit
        QVERIFY(image.LoadForDisplay(big, 2560));
        QCOMPARE(image.Image().size(), QSize(3000, 3000));
        QVERIFY(image.LoadForDisplay(big, 500));
        QCOMPARE(image.Image().size(), QSize(750, 750));  // an eighth, though more than 500
        // No scale keeps 2560 pixels: whole.
        const QString small = dir->filePath(u"SMALL.JPG"_s);
        QVERIFY(Quadrants(QSize(3000, 2000)).save(small, "JPEG"));
        QVERIFY(image.LoadForDisplay(small, 2560));
        QCOMPARE(image.Image().size(), QSize(3000, 2000));
    }
    // An SVG drawing is drawn from what its file holds: a picture that an <image> names by a
    // path is not read (Qt Svg would read it), one carried inside the file is drawn.
    void svgOwnContent_data() {
        QTest::addColumn<QString>("link");  // {red}: the path of a red picture
        QTest::addColumn<QColor>("middle");
        QTest::newRow("absolute path") << u"{red}"_s << QColor(Qt::white);
        QTest::newRow("beside the drawing") << u"red.png"_s << QColor(Qt::white);
        QTest::newRow("carried inside") << u"{blue}"_s << QColor(Qt::blue);
    }
    void svgOwnContent() {
        QFETCH(QString, link);
        QFETCH(QColor, middle);
        QImage red(20, 10, QImage::Format_RGB32);
        red.fill(Qt::red);
        QVERIFY(red.save(dir->filePath(u"red.png"_s)));
        QImage blue = red;
        blue.fill(Qt::blue);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        blue.save(&buffer, "PNG");
        link.replace(u"{red}"_s, dir->filePath(u"red.png"_s))
            .replace(u"{blue}"_s,
                     u"data:image/png;base64,"_s + QString::fromLatin1(bytes.toBase64()));
        const QString path = dir->filePath(u"drawing.svg"_s);
        WriteBytes(path,
                   QStringLiteral("<svg xmlns=\"http://www.w3.org/2000/svg\" "
                                  "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"200\" "
                                  "height=\"100\"><image width=\"200\" height=\"100\" "
                                  "xlink:href=\"%1\"/></svg>")
                       .arg(link)
                       .toUtf8());
        for (const bool thumb : {false, true}) {
            LumImage image;
            QVERIFY(thumb ? image.LoadThumb(path) : image.Load(path));
            const QImage& picture = image.Image();
            QVERIFY(Near(picture.pixel(picture.width() / 2, picture.height() / 2), middle));
        }
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

    // A part of the picture as seen, at every reduction and orientation, holds what the whole
    // picture holds at that place: the part is found in the stored picture through the
    // orientation, cut and reduced by the decoder, and turned back.
    void sourceParts_data() {
        QTest::addColumn<int>("orientation");
        QTest::addColumn<int>("level");
        for (int orientation = 1; orientation <= 8; ++orientation) {
            for (int level : {0, 1, 2}) {
                QTest::addRow("orientation %d level %d", orientation, level)
                    << orientation << level;
            }
        }
    }
    void sourceParts() {
        QFETCH(int, orientation);
        QFETCH(int, level);
        ExifFacts facts;
        facts.orientation = orientation;
        facts.embedThumbnail = false;
        const QString path = dir->filePath(u"cells.jpg"_s);
        QVERIFY(WriteExifJpeg(path, Cells(QSize(1280, 960)), facts, 95));

        LumImageSource source;
        QVERIFY(source.Open(path));
        QVERIFY(source.IsJpeg());
        const QSize seen = orientation < 5 ? QSize(1280, 960) : QSize(960, 1280);
        QCOMPARE(source.Size(), seen);
        const QImage whole = source.Decode(level);
        QCOMPARE(whole.size(), source.LevelSize(level));
        const QRect part(328, 168, 400, 320);  // across cell borders, off the centre
        const QImage cut = source.Decode(level, part);
        const int scale = 1 << level;
        QCOMPARE(cut.size(), QSize(part.width() / scale, part.height() / scale));
        for (int y = 20; y < part.height(); y += 40) {
            for (int x = 20; x < part.width(); x += 40) {
                const QRgb inCut = cut.pixel(x / scale, y / scale);
                const QRgb inWhole = whole.pixel((part.x() + x) / scale, (part.y() + y) / scale);
                QVERIFY2(Near(inCut, QColor(inWhole)),
                         qPrintable(u"at %1,%2"_s.arg(part.x() + x).arg(part.y() + y)));
            }
        }
    }
    // The reduction a zoom needs, and what one buffer may hold: a picture whose header claims
    // 65,535 pixels a side gives no buffer at all rather than gigabytes.
    void sourceLimits() {
        QCOMPARE(LumImageSource::LevelFor(1.0), 0);
        QCOMPARE(LumImageSource::LevelFor(0.6), 0);
        QCOMPARE(LumImageSource::LevelFor(0.5), 1);
        QCOMPARE(LumImageSource::LevelFor(0.3), 1);
        QCOMPARE(LumImageSource::LevelFor(0.2), 2);
        QCOMPARE(LumImageSource::LevelFor(0.01), 3);

        ExifFacts plain;
        plain.embedThumbnail = false;
        QByteArray bytes = MakeExifJpeg(Cells(QSize(64, 48)), plain);
        const int sof = bytes.indexOf("\xFF\xC0");
        QVERIFY(sof > 0);
        bytes[sof + 5] = bytes[sof + 6] = bytes[sof + 7] = bytes[sof + 8] = char(0xFF);
        const QString huge = dir->filePath(u"HUGE.JPG"_s);
        WriteBytes(huge, bytes);
        LumImageSource source;
        QVERIFY(source.Open(huge));
        QCOMPARE(source.Size(), QSize(65535, 65535));
        for (int level = 0; level <= LumImageSource::kMaxLevel; ++level) {
            QVERIFY(!source.FitsWhole(level));
            QVERIFY(source.Decode(level).isNull());
        }
        // A cut file and an SVG drawing are not sources.
        WriteBytes(huge, MakeExifJpeg(Cells(QSize(64, 48)), ExifFacts{}).left(300));
        QVERIFY(!source.Open(huge));
        QVERIFY(!source.Open(dir->filePath(u"drawing.svg"_s)));
    }
    // Turns and tone steps of the corrections: quarter turns are exact, the tone keeps black
    // and white and moves the mid tones the way its sign says, and steps of one sign add up.
    void corrections() {
        LumImage image;
        QVERIFY(!image.Rotate(90, 0xFFFFFF, false, true));
        QVERIFY(!image.SetContrast(500));
        image.SetImage(Quadrants(QSize(200, 100)));
        QVERIFY(image.Rotate(90, 0xFFFFFF, false, true));
        QCOMPARE(image.Image().size(), QSize(100, 200));
        QVERIFY(Near(image.Image().pixel(97, 2), Qt::red));  // top left went top right
        QVERIFY(image.Rotate(-90, 0xFFFFFF, false, true));
        QVERIFY(Near(image.Image().pixel(2, 2), Qt::red));
        QVERIFY(image.Rotate(45, 0xFFFFFF, false, true));
        QVERIFY(image.Image().width() > 200);
        QCOMPARE(QColor(image.Image().pixel(0, 0)), QColor(Qt::white));

        QImage grey(3, 1, QImage::Format_RGB32);
        grey.setPixel(0, 0, qRgb(0, 0, 0));
        grey.setPixel(1, 0, qRgb(128, 128, 128));
        grey.setPixel(2, 0, qRgb(255, 255, 255));
        const auto mid = [](const LumImage& picture) { return qGray(picture.Image().pixel(1, 0)); };
        LumImage lighter;
        lighter.SetImage(grey);
        QVERIFY(lighter.SetContrast(1000));
        QVERIFY(mid(lighter) > 170 && mid(lighter) < 190);
        QCOMPARE(qGray(lighter.Image().pixel(0, 0)), 0);
        QCOMPARE(qGray(lighter.Image().pixel(2, 0)), 255);
        const int once = mid(lighter);
        QVERIFY(lighter.SetContrast(400));
        QVERIFY(mid(lighter) > once);
        LumImage darker;
        darker.SetImage(grey.convertToFormat(QImage::Format_Grayscale8));
        QVERIFY(darker.SetContrast(-1000));
        QVERIFY(mid(darker) > 55 && mid(darker) < 75);
        QVERIFY(darker.SetContrast(-5000));  // bounded to one step
        QVERIFY(mid(darker) > 10 && mid(darker) < 25);
    }

private:
    std::unique_ptr<QTemporaryDir> dir;
};

QTEST_MAIN(LumImageTest)
#include "LumImageTest.moc"
