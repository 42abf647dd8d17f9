#include "document/ToviData.h"
#include "loading/ToviItemDef.h"
#include "platform/MibFile.h"
#include "platform/ToviProfile.h"
#include "tests/support/FifoTrap.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

namespace {

void WriteFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// A PHOTO.XML holding only its prolog: enough for recognising the kind of delivery.
void WriteDoctype(const QString& folder, const QByteArray& doctypeLine) {
    WriteFile(folder + QStringLiteral("/PHOTO.XML"),
              "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n" + doctypeLine +
                  "\n<photodata></photodata>\n");
}

}  // namespace

class ToviItemDefTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        QVERIFY(temp.isValid());
        // A fresh profile for each case: the last delivery's kind is kept there.
        ToviProfile::Instance().UseFile(
            temp.filePath(QStringLiteral("profile-%1.ini").arg(++profileNumber)));
        ToviItemDef::SetProgramPathOverride(QString());
    }

    // The section comes from the DOCTYPE line and the family together; each row is a
    // substring test for the whole DTD name within the family.
    void recognisesTheKindOfDelivery_data() {
        QTest::addColumn<QByteArray>("doctype");
        QTest::addColumn<int>("family");
        QTest::addColumn<QString>("section");
        QTest::addColumn<bool>("keyPhoto");
        const auto line = [](const char* dtd) {
            return QByteArray("<!DOCTYPE photodata SYSTEM \"") + dtd + "\">";
        };
        QTest::newRow("mlit 16") << line("PHOTO03.DTD") << 0 << "国交省-16" << true;
        QTest::newRow("mlit 20") << line("PHOTO05.DTD") << 0 << "国交省-20" << true;
        QTest::newRow("kowan shares the mlit table")
            << line("PHOTO05.DTD") << 1 << "国交省-20" << true;
        QTest::newRow("maff 23") << line("PHOTO05.DTD") << 2 << "農水省-23" << true;
        QTest::newRow("maff without the N") << line("PHOTO02.DTD") << 2 << "" << false;
        QTest::newRow("nexco 24") << line("PHOTO04.DTD") << 3 << "NEXCO-24" << false;
        QTest::newRow("nexco 05 unknown") << line("PHOTO05.DTD") << 3 << "" << false;
        QTest::newRow("DTD on the next line")
            << QByteArray("<!DOCTYPE photodata SYSTEM\n \"PHOTO05.DTD\">") << 0 << "" << false;
    }
    void recognisesTheKindOfDelivery() {
        QFETCH(QByteArray, doctype);
        QFETCH(int, family);
        QFETCH(QString, section);
        QFETCH(bool, keyPhoto);
        const QString folder =
            temp.filePath(QStringLiteral("kind-%1").arg(QTest::currentDataTag()));
        WriteDoctype(folder, doctype);
        ToviItemDef def;
        const PhotoXMLReadErr result = def.Load(folder, static_cast<PhotoXMLType>(family));
        QCOMPARE(def.NewType(), section);
        QCOMPARE(def.HasKeyPhoto(), keyPhoto);
        if (section.isEmpty()) {
            QCOMPARE(result, ReadErrUnknownPhotoXml);
            QVERIFY(def.IsEmpty());
        } else {
            QCOMPARE(result, ReadErrNone);
            QVERIFY(def.GetCount() > 5);
            QVERIFY(def.GetIndexFromTitle(QStringLiteral("写真ファイル名")) >= 0);
        }
        // Even an unknown file overwrites the memory of the last delivery's kind.
        QCOMPARE(ToviProfile::Instance().GetProfileString(QStringLiteral("PhotoFileType"),
                                                          QStringLiteral("Type"),
                                                          QStringLiteral("_未定義_")),
                 section);
    }

    // A FIFO named PHOTO.XML (or photo.xml) or READITEM.XML would block the first open for
    // ever: it is refused unopened.
    void fifoIsRefusedUnopened_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("result");
        QTest::newRow("PHOTO.XML") << QStringLiteral("PHOTO.XML") << int(ReadErrUnknownPhotoXml);
        QTest::newRow("lower case") << QStringLiteral("photo.xml") << int(ReadErrUnknownPhotoXml);
        QTest::newRow("READITEM.XML") << QStringLiteral("READITEM.XML") << int(ReadErrNoItemFile);
    }
    void fifoIsRefusedUnopened() {
        QFETCH(QString, name);
        QFETCH(int, result);
        const QString folder = temp.filePath(QStringLiteral("fifo-") + name);
        QVERIFY(QDir().mkpath(folder));
        const bool definitions = result == ReadErrNoItemFile;
        if (definitions) {
            WriteDoctype(folder, "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">");
            ToviItemDef::SetProgramPathOverride(folder);
        }
        const FifoTrap fifo(folder + QLatin1Char('/') + name);
        QVERIFY(fifo.IsValid());
        ToviItemDef def;
        QCOMPARE(int(def.Load(folder, PhotoXMLMlit)), result);
        QVERIFY(!fifo.Opened());
    }

    // A record that lacks a field inherits the record before it, and a word outside the
    // vocabulary leaves the field as it stood: the file format defines it so.
    void recordsInheritMissingFields() {
        const QString program = temp.filePath(QStringLiteral("prog-inherit"));
        WriteFile(program + QStringLiteral("/READITEM.XML"),
                  R"(<?xml version="1.0" encoding="UTF-8"?>
<information>
  <国交省-18><管理項目><タイトル>その他</タイトル></管理項目></国交省-18>
  <国交省-20>
    <管理項目><タイトル>A</タイトル><必要度>必須</必要度><表示>InfoDlg</表示><データ数>0+</データ数>
      <操作>Child</操作><ブロック複数>○</ブロック複数><読込種別>PhotoItem</読込種別><余計>x</余計></管理項目>
    <メモ>ignored</メモ>
    <管理項目><タイトル>B</タイトル><必要度>すごく必須</必要度><操作>Parent</操作></管理項目>
  </国交省-20>
</information>)");
        ToviItemDef::SetProgramPathOverride(program);
        const QString data = temp.filePath(QStringLiteral("data-inherit"));
        WriteDoctype(data, "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">");
        ToviItemDef def;
        QCOMPARE(def.Load(data, PhotoXMLMlit), ReadErrNone);
        QCOMPARE(def.GetCount(), 2);
        const Definition& b = def.GetDef(1);
        QCOMPARE(b.title, QStringLiteral("B"));
        QCOMPARE(b.grade, static_cast<int>(Definition::GradeRequired));
        QCOMPARE(b.show, static_cast<int>(Definition::ShowInfoDlg));
        QCOMPARE(b.count, static_cast<int>(Definition::CountZeroOrMore));
        QCOMPARE(b.operation, static_cast<int>(Definition::StepParent));
        QVERIFY(b.blockPlural);
        QCOMPARE(b.readType, static_cast<int>(Definition::ReadPhotoItem));
        QCOMPARE(def.GetIndexFromTitle(QStringLiteral("B")), 1);
        QCOMPARE(def.GetIndexFromTitle(QStringLiteral("その他")), -1);
        QVERIFY_THROWS_EXCEPTION(std::out_of_range, def.GetDef(2));
    }

    // READITEM.XML missing, malformed, or without the section.
    void definitionFileProblems_data() {
        QTest::addColumn<QByteArray>("readItem");  // empty: no file at all
        QTest::addColumn<int>("result");
        QTest::addColumn<int>("count");
        QTest::newRow("missing") << QByteArray() << static_cast<int>(ReadErrNoItemFile) << 0;
        QTest::newRow("malformed") << QByteArray("<information><国交省-20><管理項目>")
                                   << static_cast<int>(ReadErrDefinition) << 0;
        QTest::newRow("not XML at all")
            << QByteArray("\x89PNG\r\n\x1a\n garbage") << static_cast<int>(ReadErrDefinition) << 0;
        QTest::newRow("section absent")
            << QByteArray(
                   "<?xml version=\"1.0\" "
                   "encoding=\"UTF-8\"?><information><国交省-18/></information>")
            << static_cast<int>(ReadErrNone) << 0;
        QTest::newRow("no information root")
            << QByteArray(
                   "<?xml version=\"1.0\" "
                   "encoding=\"UTF-8\"?><国交省-20><管理項目><タイトル>X</タイトル>"
                   "</管理項目></国交省-20>")
            << static_cast<int>(ReadErrNone) << 1;
    }
    void definitionFileProblems() {
        QFETCH(QByteArray, readItem);
        QFETCH(int, result);
        QFETCH(int, count);
        const QString program =
            temp.filePath(QStringLiteral("prog-%1").arg(QTest::currentDataTag()));
        QDir().mkpath(program);
        if (!readItem.isEmpty()) {
            WriteFile(program + QStringLiteral("/READITEM.XML"), readItem);
        }
        ToviItemDef::SetProgramPathOverride(program);
        const QString data = temp.filePath(QStringLiteral("data-%1").arg(QTest::currentDataTag()));
        WriteDoctype(data, "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">");
        ToviData document(nullptr, data, PhotoXMLMlit);
        QCOMPARE(static_cast<int>(document.GetErrorType()), result);
        QCOMPARE(document.GetItemDef()->GetCount(), count);
    }

    void cleanupTestCase() { ToviItemDef::SetProgramPathOverride(QString()); }

private:
    QTemporaryDir temp;
    int profileNumber = 0;
};

QTEST_GUILESS_MAIN(ToviItemDefTest)
#include "ToviItemDefTest.moc"
