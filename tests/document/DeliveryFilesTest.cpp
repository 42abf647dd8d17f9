#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/ToviProfile.h"
#include "platform/ToviVerifierLibrary.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ExifJpegWriter.h"
#include "tests/support/FifoTrap.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

// The code the stand-in hash verifier answers for a file: 1, unaltered.
const QByteArray kUnaltered = "@JCOMSIA=1@";

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool WriteAll(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

// Everything the program tells about a photograph's file: what list (--no-exif, date kind 1),
// the information list, the image views, and check would use.
struct Reported {
    bool exists, exif, thumb;
    QString renewalDate, fileSize, model;
    int check;
};

Reported Report(ToviData& document, ToviPhoto& photo) {
    Reported r;
    photo.UpdateImagePath();
    r.exists = photo.IsExistFile();
    r.exif = photo.CheckExif();
    r.renewalDate = photo.GetFileRenewalDate();
    photo.GetFileInfoFromTitle(QStringLiteral("ファイルサイズ"), r.fileSize);
    photo.LoadExif();
    photo.GetExifInfoFromTitle(QStringLiteral("画像入力機器のモデル名"), r.model);
    r.thumb = photo.LoadThumb();
    document.CheckEditJPEG(&photo);
    r.check = photo.GetEditChkResult();
    return r;
}

// Writes a delivery of count tiny photographs under folder, each image marked unaltered.
bool Write(const QString& folder, int count, double drawings, WrittenDelivery& written) {
    DeliveryOptions options;
    options.photoCount = count;
    options.images = DeliveryOptions::Images::Tiny;
    options.drawingShare = drawings;
    QString error;
    bool ok = WriteDelivery(folder, options, &written, &error);
    for (const WrittenPhoto& photo : written.photos) {
        const QString path = written.photoFolder + QStringLiteral("/PIC/") + photo.fileName;
        ok = ok && WriteAll(path, ReadAll(path) + kUnaltered);
    }
    return ok;
}

// Opened as the check command opens it, with the hash check on.
std::unique_ptr<ToviData> Open(const QString& photoFolder) {
    std::unique_ptr<ToviData> document =
        ToviEnouDataFactory().Create(nullptr, photoFolder, PhotoXMLMlit);
    if (document) {
        ToviPhotoCtrlVisualSetting setting = document->GetVisualSetting();
        setting.SetDoEditCheck(true);
        setting.SetEditCheckTypes(QStringLiteral("1"));
        document->SetVisualSetting(setting, false);
    }
    return document;
}

}  // namespace

// The files of a delivery opened from its folder: never one outside the folder, whatever
// PHOTO.XML or the disc holds, and found when a Windows disc spells the names in another case.
class DeliveryFilesTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QString outside;  // a real photograph beside the deliveries, with a model of its own
    WrittenDelivery hostile;
    std::unique_ptr<ToviData> hostileDocument;
    std::unique_ptr<FifoTrap> fifo;

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("profile.ini")));
        const QString program = temp.filePath(QStringLiteral("program"));
        QVERIFY(QDir().mkpath(program));
        const QString readItem = QStringLiteral("/READITEM.XML");
        QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + readItem, program + readItem));
        const QString hash =
            QLatin1Char('/') + ToviVerifierLibrary::FileName(QStringLiteral("JACICCHS"));
        QVERIFY(QFile::copy(QStringLiteral(TOVI_STANDIN_DIR "/full") + hash, program + hash));
        ToviItemDef::SetProgramPathOverride(program);
        ToviVerifierLibrary::SetProgramPathOverride(program);

        // The file every hostile value aims at: readable, with Exif, marked unaltered.
        outside = temp.filePath(QStringLiteral("outside/O.JPG"));
        QVERIFY(QDir().mkpath(temp.filePath(QStringLiteral("outside"))));
        ExifFacts facts;
        facts.model = QStringLiteral("OUTSIDE-CAM");
        QImage picture(64, 48, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QVERIFY(WriteAll(outside, MakeExifJpeg(picture, facts) + kUnaltered));

        // One photograph per way of reaching out; the last two are fair and must be reported.
        QVERIFY(Write(temp.filePath(QStringLiteral("hostile")), 7, 0.0, hostile));
        const QString pic = hostile.photoFolder + QStringLiteral("/PIC/");
        const QString up = QDir(pic).relativeFilePath(outside);
        QVERIFY(up.startsWith(QLatin1String("../")));
        QString backslashed = up;
        backslashed.replace(QLatin1Char('/'), QLatin1Char('\\'));
        QVERIFY(QFile::copy(outside, pic + backslashed));  // a legal name on this system
        const QStringList values{up, outside, backslashed};
        const QString xmlPath = hostile.photoFolder + QStringLiteral("/PHOTO.XML");
        QByteArray xml = ReadAll(xmlPath);
        for (qsizetype i = 0; i < values.size(); ++i) {
            const QByteArray from = '>' + hostile.photos[i].fileName.toLatin1() + '<';
            QVERIFY(xml.contains(from));
            xml.replace(from, '>' + values[i].toLatin1() + '<');
        }
        QVERIFY(WriteAll(xmlPath, xml));
        const auto replace = [&](int index) {
            const QString path = pic + hostile.photos[index].fileName;
            return QFile::remove(path) ? path : QString();
        };
        QVERIFY(QFile::link(outside, replace(3)));
        fifo = std::make_unique<FifoTrap>(replace(4));
        QVERIFY(fifo->IsValid());
        QVERIFY(QFile::link(hostile.photos[6].fileName, replace(5)));  // P6 -> P7, inside PIC/

        hostileDocument = Open(hostile.photoFolder);
        QVERIFY(hostileDocument);
        QCOMPARE(hostileDocument->GetTotalCountPhoto(), 7);
    }
    void cleanupTestCase() {
        hostileDocument.reset();
        fifo.reset();
        ToviItemDef::SetProgramPathOverride(QString());
        ToviVerifierLibrary::SetProgramPathOverride(QString());
    }

    void nothingOutsideIsReported_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("modelOf");  // the photograph whose file it is; -1 none
        QTest::newRow("parent folders") << 0 << -1;
        QTest::newRow("absolute path") << 1 << -1;
        QTest::newRow("backslashes, a file of that name in PIC/") << 2 << -1;
        QTest::newRow("link out of PIC/") << 3 << -1;
        QTest::newRow("FIFO") << 4 << -1;
        QTest::newRow("link to another photograph in PIC/") << 5 << 6;
        QTest::newRow("plain") << 6 << 6;
    }
    void nothingOutsideIsReported() {
        QFETCH(int, index);
        QFETCH(int, modelOf);
        ToviPhoto* photo = hostileDocument->GetPhotoActualPhotoArray(index);  // 7 of them
        const Reported r = Report(*hostileDocument, *photo);
        const bool fair = modelOf >= 0;
        QCOMPARE(r.exists, fair);
        QCOMPARE(r.exif, fair);
        QCOMPARE(r.thumb, fair);
        QCOMPARE(r.renewalDate.isEmpty(), !fair);
        QCOMPARE(r.fileSize.isEmpty(), !fair);
        QCOMPARE(r.model, fair ? hostile.photos[modelOf].exif.model : QString());
        QCOMPARE(r.check,
                 fair ? int(ToviPhoto::EditCheckUnaltered) : int(ToviPhoto::EditCheckUnknown));
        const QString real = QFileInfo(photo->GetImagePath()).canonicalFilePath();
        QVERIFY2(real != QFileInfo(outside).canonicalFilePath(), qPrintable(real));
        QVERIFY(!fifo->Opened());
    }

    // A delivery copied from a Windows disc, every name in lower case. The photographs' files
    // are renamed only after the load: the load itself must not look for them.
    void namesInAnotherCaseAreFound() {
        WrittenDelivery written;
        QVERIFY(Write(temp.filePath(QStringLiteral("windows")), 4, 1.0, written));
        QDir photo(written.photoFolder);
        for (const char* name : {"PHOTO.XML", "PIC", "DRA"}) {
            QVERIFY(photo.rename(name, QString::fromLatin1(name).toLower()));
        }
        QDir dra(photo.filePath(QStringLiteral("dra")));
        QVERIFY(!dra.isEmpty(QDir::Files));
        for (const QString& name : dra.entryList(QDir::Files)) {
            QVERIFY(dra.rename(name, name.toLower()));
        }
        std::unique_ptr<ToviData> document = Open(written.photoFolder);
        QVERIFY(document);
        QCOMPARE(document->GetTotalCountPhoto(), int(written.photos.size()));
        QDir pic(photo.filePath(QStringLiteral("pic")));
        for (const WrittenPhoto& w : written.photos) {
            QVERIFY(pic.rename(w.fileName, w.fileName.toLower()));
        }
        for (int i = 0; i < written.photos.size(); ++i) {
            ToviPhoto* p = document->GetPhotoActualPhotoArray(i);
            const Reported r = Report(*document, *p);
            QVERIFY2(r.exists && r.exif && r.thumb, qPrintable(p->GetImagePath()));
            QCOMPARE(p->GetImagePath(), pic.filePath(written.photos[i].fileName.toLower()));
            QCOMPARE(p->GetPictureCount(), int(written.photos[i].drawings.size()));
            QCOMPARE(r.model, written.photos[i].exif.model);
            QCOMPARE(r.check, int(ToviPhoto::EditCheckUnaltered));
            QVERIFY(!r.renewalDate.isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(DeliveryFilesTest)
#include "DeliveryFilesTest.moc"
