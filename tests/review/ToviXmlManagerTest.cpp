#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/Cp932.h"
#include "platform/MibFile.h"
#include "platform/ToviProfile.h"
#include "review/ToviXmlManager.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScriptedUi.h"

#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

qint64 freeBytes = -1;  // what the free-space probe answers; negative: the real volume

// Labels as six 0/1 digits and the comment of every photograph, to compare documents.
QStringList Review(ToviData& document) {
    QStringList out;
    for (int i = 0; i < document.GetTotalCountPhoto(); ++i) {
        const ToviPhoto* photo = document.GetPhotoActualPhotoArray(i);
        QString labels;
        for (int label = 0; label < ToviPhoto::kLabelCount; ++label) {
            labels += QLatin1Char(photo->IsLabelPasted(static_cast<unsigned>(label)) ? '1' : '0');
        }
        out.append(labels + QLatin1Char(':') + photo->GetComment());
    }
    return out;
}

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool WriteAll(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// One photograph's element with the comment ("<none>" leaves it out) and the flags given
// (a null one leaves that element out).
QString PhotoElement(const QString& comment, const QStringList& flags) {
    QString xml = QStringLiteral("<写真>");
    if (comment != QLatin1String("<none>")) {
        xml += QStringLiteral("<コメント>%1</コメント>").arg(comment);
    }
    for (int label = 0; label < flags.size(); ++label) {
        if (!flags[label].isNull()) {
            xml += QStringLiteral("<%1>%2</%1>").arg(ToviXmlManager::LabelTag(label), flags[label]);
        }
    }
    return xml + QStringLiteral("</写真>");
}

std::unique_ptr<ToviData> Open(const QString& folder) {
    std::unique_ptr<ToviData> document =
        ToviEnouDataFactory().Create(nullptr, folder, PhotoXMLMlit);
    if (document) {
        document->Load();
    }
    return document;
}

}  // namespace

class ToviXmlManagerTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QString big;    // 10,000 photographs
    QString small;  // 3
    ScriptedUi ui;

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("profile.ini")));
        DeliveryOptions options;
        options.images = DeliveryOptions::Images::None;
        WrittenDelivery written;
        QString error;
        for (const int count : {10000, 3}) {
            options.photoCount = count;
            QVERIFY2(
                WriteDelivery(temp.filePath(QString::number(count)), options, &written, &error),
                qPrintable(error));
            (count == 3 ? small : big) = written.photoFolder;
        }
        ToviXmlSaveManager::SetFreeSpaceProbeForTesting([](const QString&) { return freeBytes; });
    }
    void init() {
        freeBytes = -1;
        ToviUi::Install(&ui);
    }
    void cleanup() { ToviUi::Install(nullptr); }

    // Labels and comments of 10,000 photographs come back as they were saved, through both
    // writers, and the changed flag follows the save and not the path variant.
    void roundTrip() {
        std::unique_ptr<ToviData> document = Open(big);
        QVERIFY(document);
        QRandomGenerator random(7);
        for (int i = 0; i < document->GetTotalCountPhoto(); ++i) {
            ToviPhoto* photo = document->GetPhotoActualPhotoArray(i);
            for (int label = 0; label < ToviPhoto::kLabelCount; ++label) {
                if (random.bounded(4) == 0) {
                    photo->PasteLabel(static_cast<unsigned>(label));
                }
            }
            if (random.bounded(3) == 0) {
                photo->SetComment(QStringLiteral("指摘 %1 <&>\"'\n\t末尾").arg(i));
            }
        }
        document->GetPhotoActualPhotoArray(5)->SetComment(QString(1 << 20, QChar(u'検')));
        document->SetCheckStatusChanged(true);
        const QStringList saved = Review(*document);

        const QString record = temp.filePath(QStringLiteral("round.xml"));
        const QString withPaths = temp.filePath(QStringLiteral("round-paths.xml"));
        int result = -1;
        QVERIFY(document->ReturnExam(withPaths, &result));
        QVERIFY(document->IsCheckStatusChanged());
        QVERIFY(document->SaveExamination(record, QString(), &result));
        QVERIFY(!document->IsCheckStatusChanged());
        const QByteArray bytes = ReadAll(record);
        QVERIFY(
            bytes.startsWith("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
                             "<!DOCTYPE examinationdata SYSTEM \"\">\n"));
        QCOMPARE(bytes.count("<?xml"), 1);
        QVERIFY(ReadAll(withPaths).contains(
            "<" + Cp932::FromUnicode(QStringLiteral("写真ファイルパス")) + ">"));
        for (const QString& path : {record, withPaths}) {
            std::unique_ptr<ToviData> again = Open(big);
            QVERIFY(again->LoadExamination(path, &result));
            QCOMPARE(Review(*again), saved);
            QVERIFY(!again->IsCheckStatusChanged());
        }
    }

    // Save failures leave the target as it was and say why; an empty document saves a frame
    // that loads back as "no status", and an empty path saves nothing.
    void saveFailures_data() {
        QTest::addColumn<QString>("situation");
        QTest::addColumn<int>("expected");
        QTest::newRow("read-only target") << "read-only" << int(ExamReadOnly);
        QTest::newRow("free space exactly the estimate") << "exact space" << int(ExamNoSpace);
        QTest::newRow("cancel at the last photograph") << "cancel" << int(ExamCancelled);
        QTest::newRow("folder gone") << "no folder" << int(ExamSaveFailed);
        QTest::newRow("disk full while writing") << "disk full" << int(ExamSaveFailed);
    }
    void saveFailures() {
        QFETCH(QString, situation);
        std::unique_ptr<ToviData> document = Open(small);
        QVERIFY(document);
        document->GetPhotoActualPhotoArray(0)->PasteLabel(2);
        document->SetCheckStatusChanged(true);
        const QString target = temp.filePath(QStringLiteral("fail.xml"));
        QString path = target;
        const QByteArray old = "old record";
        QFile::remove(path);
        QVERIFY(WriteAll(path, old));
        if (situation == QLatin1String("read-only")) {
            QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup));
        } else if (situation == QLatin1String("exact space")) {
            freeBytes = 500 + 300 * 3 - old.size();  // needed beyond what the old file frees
        } else if (situation == QLatin1String("cancel")) {
            ui.PressCancelAtPump(ui.Pumps() + 3);
        } else if (situation == QLatin1String("no folder")) {
            path = temp.filePath(QStringLiteral("gone/fail.xml"));
        } else if (situation == QLatin1String("disk full")) {
            MibSetWriteLimitForTesting(100);
        }
        int result = -1;
        const bool saved = document->SaveExamination(path, QString(), &result);
        MibSetWriteLimitForTesting(-1);
        QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner);
        QVERIFY(!saved);
        QTEST(result, "expected");
        QCOMPARE(ReadAll(target), old);
        QVERIFY(document->IsCheckStatusChanged());
        QCOMPARE(QDir(temp.path()).entryList({QStringLiteral("fail.xml*")}, QDir::Files).size(), 1);
        if (situation == QLatin1String("exact space")) {
            freeBytes += 1;  // one byte more is enough
            QVERIFY(document->SaveExamination(path, QString(), &result));
        }
    }
    void emptyDocument() {
        QDir().mkpath(temp.filePath(QStringLiteral("empty")));
        ToviData document(nullptr, temp.filePath(QStringLiteral("empty")), PhotoXMLMlit);
        const QString path = temp.filePath(QStringLiteral("empty.xml"));
        int result = -1;
        QVERIFY(document.SaveExamination(path, QString(), &result));
        QVERIFY(
            ReadAll(path).contains(Cp932::FromUnicode(QStringLiteral("<写真枚数>0</写真枚数>"))));
        QVERIFY(!document.LoadExamination(path, &result));
        QCOMPARE(result, int(ExamNoStatus));
        QVERIFY(!document.SaveExamination(QString(), QString(), &result));
    }

    // Loading checks the frame before touching any photograph, then merges: a value the
    // file lacks, or a flag other than "0" and "1", stays as it was.
    void loadAndMerge_data() {
        QTest::addColumn<QString>("body");  // empty: no file at all
        QTest::addColumn<int>("expected");  // -1: loads
        QTest::addColumn<QStringList>("review");
        const QStringList before{"100000:前", "010000:", "000000:"};
        const QString frame = QStringLiteral(
            "<検査状況><情報><写真枚数>%1</写真枚数></情報><状況>%2</状況></検査状況>");
        const QString three = PhotoElement("新", {"0", "1", "", "2", QString(), "1"}) +
                              PhotoElement("<none>", {"1"}) + PhotoElement(QString(), {}) +
                              QStringLiteral("<謎/>");
        const int countWrong = ExamCountWrong;
        QTest::newRow("merge rules")
            << frame.arg(3).arg(three) << -1 << QStringList{"010001:新", "110000:", "000000:"};
        QTest::newRow("another count") << frame.arg(4).arg(three) << countWrong << before;
        QTest::newRow("count without digits") << frame.arg("三").arg(three) << countWrong << before;
        QTest::newRow("no file") << QString() << countWrong << before;
        QTest::newRow("not XML") << QStringLiteral("写真枚数 3") << countWrong << before;
        QTest::newRow("truncated") << frame.arg(3).arg(three).left(60) << countWrong << before;
        QTest::newRow("empty status") << frame.arg(3).arg(QString()) << int(ExamNoStatus) << before;
        QTest::newRow("no status")
            << QStringLiteral("<検査状況><情報><写真枚数>3</写真枚数></情報></検査状況>")
            << int(ExamNoStatus) << before;
    }
    void loadAndMerge() {
        QFETCH(QString, body);
        QFETCH(int, expected);
        std::unique_ptr<ToviData> document = Open(small);
        QVERIFY(document);
        document->GetPhotoActualPhotoArray(0)->PasteLabel(0);
        document->GetPhotoActualPhotoArray(0)->SetComment(QStringLiteral("前"));
        document->GetPhotoActualPhotoArray(1)->PasteLabel(1);
        const QString path = temp.filePath(QStringLiteral("load.xml"));
        QFile::remove(path);
        QVERIFY(body.isEmpty() ||
                WriteAll(path, Cp932::FromUnicode(
                                   "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n" + body)));
        int result = -1;
        QCOMPARE(document->LoadExamination(path, &result), expected < 0);
        QCOMPARE(result, expected < 0 ? result : expected);
        QTEST(Review(*document), "review");
    }

    // A save killed while it writes leaves the previous record byte for byte.
    void killDuringSave() {
        const QString tovi = QCoreApplication::applicationDirPath() + QStringLiteral("/tovi");
        const QString path = temp.filePath(QStringLiteral("killed.xml"));
        const QStringList save{
            "--profile", temp.filePath(QStringLiteral("kill.ini")), "label", big, "--record", path,
            "--paste"};
        QCOMPARE(RunProgram(tovi, save + QStringList{"0:1"}).exitCode, 0);
        const QByteArray old = ReadAll(path);
        QVERIFY(old.size() > 1000000);

        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TOVI_WRITE_PAUSE_MS"), QStringLiteral("20000"));
        process.setProcessEnvironment(environment);
        process.start(tovi, save + QStringList{"1:2"});
        QVERIFY(process.waitForStarted());
        // The load takes a fraction of a second; then half the new record sits in the
        // writer's temporary file (unnamed where the system allows) for 20 s.
        QTest::qWait(3000);
        QCOMPARE(process.state(), QProcess::Running);
        process.kill();
        QVERIFY(process.waitForFinished());
        QCOMPARE(ReadAll(path), old);
        QCOMPARE(QDir(temp.path()).entryList({QStringLiteral("killed.xml*")}, QDir::Files),
                 QStringList{QStringLiteral("killed.xml")});
    }
};

QTEST_GUILESS_MAIN(ToviXmlManagerTest)
#include "ToviXmlManagerTest.moc"
