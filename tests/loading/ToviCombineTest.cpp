#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/OpenNextDataTexts.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/MibFile.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/WorkArea.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

namespace Texts = OpenNextDataTexts;

// Records the wait windows as "animation:text" and closes as "end".
class CombineUi : public ScriptedUi {
public:
    QStringList waits;
    void BeginWait(QWidget*, const QString& message, int animation) override {
        waits.append(QString::number(animation) + QLatin1Char(':') + message);
    }
    void EndWait() override { waits.append(QStringLiteral("end")); }
};

}  // namespace

class ToviCombineTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    CombineUi ui;
    QString full;  // the whole delivery's photo folder
    std::unique_ptr<ToviData> document;

    QString Path(const QString& name) const { return temp.filePath(name); }

    // The photo folder of disc n: PHOTO.XML, the index beside it, and of PIC/ and DRA/ only
    // the files whose position in the sorted listing gives n modulo discs.
    QString Disc(int n, int discs) {
        const QString root = Path(QStringLiteral("disc%1/INDEX_C/PHOTO").arg(n));
        for (const QString& sub : {QStringLiteral("PIC"), QStringLiteral("DRA")}) {
            QDir().mkpath(root + QLatin1Char('/') + sub);
            const QStringList names =
                QDir(full + QLatin1Char('/') + sub).entryList(QDir::Files, QDir::Name);
            for (int i = 0; i < names.size(); ++i) {
                if (i % discs == n) {
                    QFile::copy(full + QLatin1Char('/') + sub + QLatin1Char('/') + names[i],
                                root + QLatin1Char('/') + sub + QLatin1Char('/') + names[i]);
                }
            }
        }
        QFile::copy(full + QStringLiteral("/PHOTO.XML"), root + QStringLiteral("/PHOTO.XML"));
        QFile::copy(MibParentDir(full) + QStringLiteral("INDEX_C.XML"),
                    MibParentDir(root) + QStringLiteral("INDEX_C.XML"));
        return root;
    }

    // The mount table: the discs are optical, everything else a fixed disk.
    void Mounts(const QStringList& optical) {
        QByteArray table = "/dev/sda1 / ext4 rw 0 0\n";
        for (const QString& point : optical) {
            table += "/dev/sr0 " + QFile::encodeName(point) + " iso9660 ro 0 0\n";
        }
        QFile file(Path(QStringLiteral("mounts")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(table);
        file.close();
        ToviEnvironment::SetMountTableForTesting(file.fileName());
    }

    void Open(const QString& photoFolder) {
        ToviEnouDataFactory factory;
        document = factory.Create(nullptr, photoFolder, PhotoXMLMlit);
        QVERIFY(document);
        document->Load();
    }

    int Missing() {
        int missing = 0;
        for (int i = 0; i < document->GetTotalCountPhoto(); ++i) {
            ToviPhoto* photo = document->GetPhotoActualPhotoArray(i);
            photo->UpdateImagePath();
            missing += photo->IsExistFile() ? 0 : 1;
        }
        return missing;
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(Path(QStringLiteral("profile.ini")));
        UseWorkFolder(temp.path());
        QVERIFY(QDir().mkpath(ToviEnvironment::SuiteFolder()));
        DeliveryOptions options;
        options.photoCount = 9;
        options.images = DeliveryOptions::Images::Tiny;
        options.drawingShare = 0.5;
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(Path(QStringLiteral("full")), options, &written, &error),
                 qPrintable(error));
        full = written.photoFolder;
    }
    void init() {
        ui = CombineUi();
        ToviUi::Install(&ui);
    }
    void cleanup() {
        ToviUi::Install(nullptr);
        document.reset();
        ToviEnvironment::SetMountTableForTesting(QString());
        ToviEnouDataFactory().DeleteTempData();
        for (int n = 0; n < 3; ++n) {
            QDir(Path(QStringLiteral("disc%1").arg(n))).removeRecursively();
        }
    }
    void cleanupTestCase() { ToviEnvironment::SetSettingsPathsForTesting(QString(), QString()); }

    // Three discs: each copied into the work area after the other, the dialog asked twice
    // with fewer files missing the second time, and everything found in the end.
    void threeDiscs() {
        const QStringList discs{Disc(0, 3), Disc(1, 3), Disc(2, 3)};
        Mounts({Path(QStringLiteral("disc0")), Path(QStringLiteral("disc1")),
                Path(QStringLiteral("disc2"))});
        Open(discs[0]);
        QVERIFY(Missing() > 0);
        ui.QueueDialog(true, {{Texts::FolderField(), discs[1]}});
        ui.QueueDialog(true, {{Texts::FolderField(), discs[2]}});
        ToviEnouDataFactory factory;
        QVERIFY(factory.StartCombineProc(discs[0], document.get(), true));

        QCOMPARE(ui.DialogNames(), QStringList(2, Texts::DialogName()));
        const QVariantMap first = ui.DialogInputs()[0];
        const QVariantMap second = ui.DialogInputs()[1];
        QCOMPARE(first.value(Texts::FolderField()).toString(), discs[0]);
        QCOMPARE(first.value(Texts::MessageField()).toString(), Texts::Message());
        const QStringList firstMissing = first.value(Texts::MissingField()).toStringList();
        const QStringList secondMissing = second.value(Texts::MissingField()).toStringList();
        QCOMPARE(first.value(Texts::ListLabelField()).toString(),
                 Texts::ListLabel(static_cast<int>(firstMissing.size())));
        QVERIFY(secondMissing.size() < firstMissing.size());
        QVERIFY(!secondMissing.isEmpty());

        const QString photos = factory.CombinePhotoFolder();
        QCOMPARE(factory.GetDataFolderPath(), photos);
        QCOMPARE(document->RootPath(), MibNormalDir(photos));
        QCOMPARE(document->Title(), photos);
        QCOMPARE(Missing(), 0);
        for (int i = 0; i < document->GetTotalCountPhoto(); ++i) {
            QVERIFY(document->GetPhotoActualPhotoArray(i)->GetImagePath().startsWith(photos));
        }
        QVERIFY(MibIsFileExist(factory.CombineFolder() + QStringLiteral("/INDEX_C.XML")));
        QCOMPARE(ui.waits, (QStringList{"1:" + Texts::Copying(), "end", "1:" + Texts::Copying(),
                                        "end", "1:" + Texts::Copying(), "end"}));
        QCOMPARE(ui.Questions().size(), 1);
        QCOMPARE(ui.Questions()[0].text, Texts::Complete());

        factory.DeleteTempData();
        QVERIFY(!QFileInfo::exists(factory.CombineFolder()));
        QCOMPARE(ui.waits.mid(6), (QStringList{"3:" + Texts::Deleting(), "end"}));
    }

    // A delivery on a fixed disk is opened in place: complete, it only says so in passing,
    // with no box to close; incomplete,
    // the dialog comes up, refuses a folder without PHOTO.XML, and a cancel ends the run with
    // the files still missing.
    void fixedDisk() {
        Mounts({});
        Open(full);
        ToviEnouDataFactory factory;
        QVERIFY(factory.StartCombineProc(full, document.get(), true));
        QCOMPARE(factory.GetDataFolderPath(), full);
        QVERIFY(ui.DialogNames().isEmpty());
        QVERIFY(ui.Questions().isEmpty());
        QCOMPARE(ui.Statuses(), QStringList{Texts::Complete().replace(u'\n', u' ')});
        QVERIFY(ui.waits.isEmpty());
        QVERIFY(!QFileInfo::exists(factory.CombineFolder()));

        ui = CombineUi();
        const QString half = Disc(0, 2);
        Open(half);
        ui.QueueDialog(true, {{Texts::FolderField(), Path(QStringLiteral("work"))}});
        ui.QueueDialog(false);
        QVERIFY(factory.StartCombineProc(half, document.get(), true));
        QCOMPARE(ui.DialogNames().size(), 2);
        QCOMPARE(ui.DialogInputs()[1].value(Texts::FolderField()).toString(),
                 Path(QStringLiteral("work")));
        QCOMPARE(ui.Questions().size(), 1);
        QCOMPARE(ui.Questions()[0].text, Texts::NoPhotoXml());
        QVERIFY(Missing() > 0);
        QVERIFY(!QFileInfo::exists(factory.CombineFolder()));
    }

    // A folder of no usable kind is refused; a disc that cannot be copied leaves no work area.
    void failures() {
        Mounts({Path(QStringLiteral("disc0"))});
        Open(full);
        const QString root = document->RootPath();
        ToviEnouDataFactory factory;
        QVERIFY(!factory.StartCombineProc(QStringLiteral("relative/PHOTO"), document.get(), true));
        QCOMPARE(ui.Questions().last().text, Texts::BadFolder());
        QCOMPARE(document->RootPath(), root);

        QVERIFY(!factory.StartCombineProc(Path(QStringLiteral("disc0/INDEX_C/PHOTO")),
                                          document.get(), true));
        QCOMPARE(ui.Questions().last().text, Texts::CopyFailed());
        QVERIFY(!QFileInfo::exists(factory.CombineFolder()));
        QCOMPARE(document->RootPath(), root);
    }

    // What the combine takes for a file of a delivery opened in place: a regular file, also
    // through a link or spelled in another case; not a folder of that name, a link that
    // leads nowhere or nothing. A photograph still missing brings up the dialog with the
    // names to bring.
    void entryKinds_data() {
        QTest::addColumn<bool>("drawing");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("found");
        for (const bool drawing : {false, true}) {
            const char* what = drawing ? "drawing" : "photo";
            QTest::addRow("%s file", what) << drawing << QStringLiteral("file") << true;
            QTest::addRow("%s link", what) << drawing << QStringLiteral("link") << true;
            QTest::addRow("%s other case", what) << drawing << QStringLiteral("case") << true;
            QTest::addRow("%s folder", what) << drawing << QStringLiteral("folder") << false;
            QTest::addRow("%s dangling link", what)
                << drawing << QStringLiteral("dangling") << false;
            QTest::addRow("%s removed", what) << drawing << QStringLiteral("removed") << false;
            QTest::addRow("%s folder gone", what) << drawing << QStringLiteral("gone") << false;
        }
    }
    void entryKinds() {
        QFETCH(bool, drawing);
        QFETCH(QString, kind);
        QFETCH(bool, found);
        Mounts({});
        const QString root = Disc(0, 1);
        Open(root);
        // The last photograph with exactly one drawing, or the last photograph.
        int index = document->GetTotalCountPhoto() - 1;
        if (drawing) {
            while (index >= 0 &&
                   document->GetPhotoActualPhotoArray(index)->GetPictureCount() != 1) {
                --index;
            }
            QVERIFY(index >= 0);
        }
        ToviPhoto* photo = document->GetPhotoActualPhotoArray(index);
        QStringList paths;
        photo->GetPicturePath(paths, 0);
        const QString path = drawing ? paths.value(0) : photo->GetImagePath();
        QVERIFY(MibIsFileExist(path));
        const QFileInfo info(path);
        const QString name = info.fileName();
        const QString other = info.absolutePath() + QStringLiteral("/other.bin");
        QVERIFY(QFile::rename(path, other));
        if (kind == QStringLiteral("file")) {
            QVERIFY(QFile::rename(other, path));
        } else if (kind == QStringLiteral("link")) {
            QVERIFY(QFile::link(QStringLiteral("other.bin"), path));
        } else if (kind == QStringLiteral("case")) {
            const QString spelled = name.toLower() != name ? name.toLower() : name.toUpper();
            QVERIFY(QFile::rename(other, info.absolutePath() + QLatin1Char('/') + spelled));
        } else if (kind == QStringLiteral("folder")) {
            QVERIFY(QDir().mkdir(path));
        } else if (kind == QStringLiteral("dangling")) {
            QVERIFY(QFile::link(QStringLiteral("gone.bin"), path));
        } else if (kind == QStringLiteral("gone")) {
            QVERIFY(QDir(info.absolutePath()).removeRecursively());
        }

        Open(root);
        ui.QueueDialog(false);
        ToviEnouDataFactory factory;
        QVERIFY(factory.StartCombineProc(root, document.get(), true));
        QCOMPARE(document->GetPhotoActualPhotoArray(index)->IsExistFile(), found);
        // Without the folder every photograph with a file in it is missing.
        const bool gone = kind == QStringLiteral("gone");
        for (int i = 0; i < document->GetTotalCountPhoto(); ++i) {
            ToviPhoto* other = document->GetPhotoActualPhotoArray(i);
            const bool inFolder = !drawing || other->GetPictureCount() > 0;
            QCOMPARE(other->IsExistFile(), i == index ? found : !(gone && inFolder));
        }
        if (gone) {
            QCOMPARE(ui.DialogNames(), QStringList{Texts::DialogName()});
            QVERIFY(
                ui.DialogInputs()[0].value(Texts::MissingField()).toStringList().contains(name));
        } else if (found) {
            QVERIFY(ui.DialogNames().isEmpty());
            QCOMPARE(ui.Statuses(), QStringList{Texts::Complete().replace(u'\n', u' ')});
        } else {
            QCOMPARE(ui.DialogNames(), QStringList{Texts::DialogName()});
            QCOMPARE(ui.DialogInputs()[0].value(Texts::MissingField()).toStringList(),
                     QStringList{name});
        }
    }
};

QTEST_MAIN(ToviCombineTest)
#include "ToviCombineTest.moc"
