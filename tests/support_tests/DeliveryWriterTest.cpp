#include <QtTest>

#include <exiv2/exiv2.hpp>

#include <memory>

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"

// Keeps the delivery writer honest: what it says it wrote is what the loader reads, its images
// carry the Exif it reports (read back through exiv2, not through the writer), and the same
// seed writes the same bytes.
class DeliveryWriterTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("profile.ini")));
    }

    void roundTrip_data() {
        QTest::addColumn<int>("generation");
        for (Generation g :
             {Generation::Mlit11, Generation::Mlit20, Generation::Maff15, Generation::Nexco24}) {
            QTest::newRow(SectionName(g).toUtf8()) << static_cast<int>(g);
        }
    }
    void roundTrip() {
        QFETCH(int, generation);
        DeliveryOptions options;
        options.generation = static_cast<Generation>(generation);
        options.photoCount = 12;
        options.seed = 7;
        options.images = DeliveryOptions::Images::Boards;
        options.imageSize = QSize(96, 72);
        options.drawingShare = 0.5;
        const QString root = temp.filePath(QStringLiteral("g%1").arg(generation));
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(root, options, &written, &error), qPrintable(error));
        QCOMPARE(written.family, FamilyOf(options.generation));

        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> document(factory.Create(
            nullptr, written.photoFolder, static_cast<PhotoXMLType>(written.family)));
        QVERIFY2(document, qPrintable(factory.GetLoadError()));
        QCOMPARE(document->GetItemDef()->NewType(), SectionName(options.generation));
        QCOMPARE(document->GetTotalCountPhoto(), written.photos.size());
        for (int i = 0; i < written.photos.size(); ++i) {
            const WrittenPhoto& expected = written.photos[i];
            const QString path = document->GetPhotoActualPhotoArray(i)->GetImagePath();
            QCOMPARE(QFileInfo(path).fileName(), expected.fileName);
            QVERIFY2(QFileInfo::exists(path), qPrintable(path));
            auto image = Exiv2::ImageFactory::open(path.toStdString());
            image->readMetadata();
            const auto date =
                image->exifData().findKey(Exiv2::ExifKey("Exif.Photo.DateTimeOriginal"));
            const QString read = date == image->exifData().end()
                                     ? QString()
                                     : QString::fromStdString(date->toString());
            QCOMPARE(read, expected.exif.dateTimeOriginal.isValid()
                               ? expected.exif.dateTimeOriginal.toString("yyyy:MM:dd HH:mm:ss")
                               : QString());
        }

        // The same seed again: every file byte for byte.
        QVERIFY(WriteDelivery(root + QStringLiteral("-again"), options, nullptr, &error));
        QDirIterator files(written.photoFolder, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            QVERIFY2(ReadAll(path) == ReadAll(QString(path).replace(root, root + "-again")),
                     qPrintable(path));
        }
    }

private:
    static QByteArray ReadAll(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QTemporaryDir temp;
};

QTEST_MAIN(DeliveryWriterTest)
#include "DeliveryWriterTest.moc"
