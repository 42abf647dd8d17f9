#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/Cp932.h"
#include "platform/DoxDocument.h"
#include "platform/ToviProfile.h"
#include "review/ToviXmlManager.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/FifoTrap.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

using Pairs = QList<QPair<QString, QString>>;

// The loaded items as (title, value), without the empty items the reader adds.
Pairs FilledItems(const ToviItemDef* def, const ToviItemArray& items) {
    Pairs pairs;
    for (const ToviItem& item : items) {
        if (!item.Value().isEmpty()) {
            pairs.append({def->GetTitleFromIndex(item.GetDefIndex()), item.Value()});
        }
    }
    return pairs;
}

Pairs Filled(const Pairs& written) {
    Pairs pairs;
    for (const auto& pair : written) {
        if (!pair.second.isEmpty()) {
            pairs.append(pair);
        }
    }
    return pairs;
}

// Records each progress text; its answer asks the load to stop, which a load ignores.
bool RecordProgress(const ToviDataFactory*, const ToviData*, const QString& text, void* arg) {
    static_cast<QStringList*>(arg)->append(text);
    return false;
}

void WriteFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// "{junk}" stands for bytes no Shift_JIS decoder takes (0xFF; 0x85 0x40 is unassigned).
void WritePhotoXml(const QString& folder, const QByteArray& utf8Body,
                   const char* encoding = "Shift_JIS") {
    QByteArray bytes =
        QByteArray("<?xml version=\"1.0\" encoding=\"") + encoding + "\"?>\n" + utf8Body;
    if (QByteArray(encoding) == "Shift_JIS") {
        bytes = Cp932::FromUnicode(QString::fromUtf8(bytes)).replace("{junk}", "\xFF\x85\x40");
    }
    WriteFile(folder + u"/PHOTO.XML"_s, bytes);
}

// A PHOTO.XML holding only its prolog: enough for recognising the kind of delivery.
void WriteDoctype(const QString& folder, const QByteArray& doctypeLine) {
    WritePhotoXml(folder, doctypeLine + "\n<photodata></photodata>\n");
}

// A photograph's value of the given title.
QString Value(const ToviData& document, int photo, const char* title) {
    return document.GetPhotoActualPhotoArray(photo)->GetTitle(
        document.GetItemDef()->GetIndexFromTitle(QString::fromUtf8(title)));
}

}  // namespace

// Reading PHOTO.XML and READITEM.XML: the kind of delivery, the definitions, the photographs.
class ToviEnouDataFactoryTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        // Small slices: every walk here crosses from slice to slice many times.
        DoxDocument::SetSliceSizeForTesting(64);
    }
    void init() {
        // A fresh profile for each case: the last delivery's kind is kept there.
        ToviProfile::Instance().UseFile(temp.filePath(u"profile-%1.ini"_s.arg(++profileNumber)));
        ToviItemDef::SetProgramPathOverride(QString());
    }
    void cleanupTestCase() { ToviItemDef::SetProgramPathOverride(QString()); }

    // Every generation loads every written value onto the item of its title. Progress comes
    // every 50 photographs and can't stop a load; an asynchronous Create only opens.
    void everyGenerationRoundTrips_data() {
        QTest::addColumn<int>("generation");
        QTest::addColumn<double>("optionalShare");
        QTest::addColumn<int>("maxRepeats");
        for (Generation g : AllGenerations()) {
            const QByteArray name = SectionName(g).toUtf8();
            QTest::newRow(name + " all optional") << static_cast<int>(g) << 1.0 << 3;
            QTest::newRow(name + " no optional") << static_cast<int>(g) << 0.0 << 1;
            QTest::newRow(name + " mixed") << static_cast<int>(g) << 0.5 << 2;
        }
    }
    void everyGenerationRoundTrips() {
        QFETCH(int, generation);
        QFETCH(double, optionalShare);
        QFETCH(int, maxRepeats);
        DeliveryOptions options;
        options.generation = static_cast<Generation>(generation);
        options.photoCount = 60;
        options.seed = 11;
        options.images = DeliveryOptions::Images::None;
        options.optionalShare = optionalShare;
        options.maxRepeats = maxRepeats;
        options.drawingShare = 0.5;
        const QString root =
            temp.filePath(u"rt-%1-%2-%3"_s.arg(generation).arg(optionalShare).arg(maxRepeats));
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(root, options, &written, &error), qPrintable(error));

        const auto family = static_cast<PhotoXMLType>(written.family);
        ToviEnouDataFactory async;
        async.Async(true);
        std::unique_ptr<ToviData> document(async.Create(nullptr, written.photoFolder, family));
        QVERIFY2(document && document->GetTotalCountPhoto() == 0, qPrintable(async.GetLoadError()));
        QVERIFY(async.Load(nullptr, nullptr));
        QCOMPARE(document->GetTotalCountPhoto(), written.photos.size());

        QStringList texts;
        ToviEnouDataFactory factory;
        document = factory.Create(nullptr, written.photoFolder, family, RecordProgress, &texts);
        QVERIFY2(document, qPrintable(factory.GetLoadError()));
        QCOMPARE(texts, QStringList{u"写真データの読み込み　50枚完了"_s});
        QVERIFY(!factory.Load(RecordProgress, &texts));  // only an asynchronous factory loads
        QCOMPARE(document->GetErrorType(), ReadErrNone);
        const ToviItemDef* def = document->GetItemDef();
        QCOMPARE(def->NewType(), SectionName(options.generation));

        QCOMPARE(FilledItems(def, *document->GetMngItemPhoto()),
                 Filled(written.managementElements));
        QCOMPARE(document->GetTotalCountPhoto(), written.photos.size());
        const QString folder = QDir(written.photoFolder).absolutePath() + QLatin1Char('/');
        for (int i = 0; i < written.photos.size(); ++i) {
            ToviPhoto* photo = document->GetPhotoActualPhotoArray(i);
            const WrittenPhoto& expected = written.photos[i];
            QCOMPARE(FilledItems(def, photo->GetItems()), Filled(expected.elements));
            // Absent elements still give an empty item, so photographs line up by definition.
            QVERIFY(optionalShare > 0 ||
                    photo->GetItems().size() > Filled(expected.elements).size());
            QCOMPARE(photo->GetImagePath(), folder + u"PIC/"_s + expected.fileName);
            QStringList drawings;
            for (const QString& name : expected.drawings) {
                drawings.append(folder + u"DRA/"_s + name);
            }
            QCOMPARE(photo->PicturePaths(), drawings);
        }
    }

    // Missing, broken or hostile PHOTO.XML (a null body writes none): a null document or an
    // error type, never a crash or a hang.
    void badPhotoXml_data() {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("encoding");
        QTest::addColumn<int>("outcome");  // -1 null document, else the error type
        const QByteArray head = "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">\n";
        const QByteArray good =
            "<photodata DTD_version=\"05\"><基礎情報><写真フォルダ名>PHOTO/PIC</写真フォルダ名>"
            "<適用要領基準>土木202303-01</適用要領基準></基礎情報>";
        QTest::newRow("not well formed")
            << head + good + "<写真情報><写真ファイル情報>" << QByteArray("Shift_JIS") << -1;
        QTest::newRow("no PHOTO.XML")
            << QByteArray() << QByteArray("Shift_JIS") << int(ReadErrUnknownPhotoXml);
        QTest::newRow("undecodable encoding")
            << head + good + "</photodata>" << QByteArray("X-NO-SUCH-CODE") << -1;
        QTest::newRow("kilobytes of encoding name with terminal codes")
            << head + good + "</photodata>"
            << "\x1b]0;owned\x07" + QByteArray(4000, 'X') << -1;
        QTest::newRow("no photographs") << head + good + "</photodata>" << QByteArray("Shift_JIS")
                                        << static_cast<int>(ReadErrNoPhotos);
        QTest::newRow("deeply nested") << head + "<photodata>" + QByteArray("<a>").repeated(20000) +
                                              QByteArray("</a>").repeated(20000) + "</photodata>"
                                       << QByteArray("Shift_JIS") << -1;
        QTest::newRow("entity expansion")
            << QByteArray(
                   "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\" [<!ENTITY a \"aaaaaaaaaa\">"
                   "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">]>\n") +
                   good +
                   "<写真情報><写真ファイル情報><シリアル番号>&b;</シリアル番号>"
                   "<写真ファイル名>P1.JPG</写真ファイル名></写真ファイル情報></写真情報>"
                   "</photodata>"
            << QByteArray("Shift_JIS") << static_cast<int>(ReadErrNone);
        // 250,000 empty photographs in 2.8 MB would take some 150 MB: the load stops at
        // its budget from the file's size instead.
        QTest::newRow("empty photographs past the memory budget")
            << head + good + QByteArray("<写真情報/>").repeated(250000) + "</photodata>"
            << QByteArray("Shift_JIS") << -1;
        QTest::newRow("over 1 GB") << head + good + "</photodata>" << QByteArray("Shift_JIS") << -1;
        // The unknown element ahead of 写真ファイル情報 hides the first photograph's file name,
        // and the second has none: both are left out, and the load says there are none.
        QTest::newRow("unknown elements inside a photograph")
            << head + good +
                   "<写真情報><謎の要素>?</謎の要素><写真ファイル情報><シリアル番号>1</"
                   "シリアル番号>"
                   "<写真ファイル名>P1.JPG</写真ファイル名><メディア番号>1</メディア番号>"
                   "</写真ファイル情報><謎><謎>x</謎></謎></写真情報><写真情報><謎/></写真情報></"
                   "photodata>"
            << QByteArray("Shift_JIS") << static_cast<int>(ReadErrNoPhotos);
    }
    void badPhotoXml() {
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, encoding);
        QFETCH(int, outcome);
        const QString folder = temp.filePath(u"bad-%1"_s.arg(QTest::currentDataTag()));
        QVERIFY(QDir().mkpath(folder));
        if (!body.isNull()) {
            WritePhotoXml(folder, body, encoding.constData());
        }
        if (QTest::currentDataTag() == QByteArrayLiteral("over 1 GB")) {
            // Sparse: the load must refuse it from its size, before reading.
            QVERIFY(QFile::resize(folder + u"/PHOTO.XML"_s, (qint64(1) << 30) + 1));
        }
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> document(factory.Create(nullptr, folder, PhotoXMLMlit));
        if (outcome < 0) {
            QVERIFY(!document);
            // One readable line: what it quotes of the file is cut short and has no controls.
            const QString error = factory.GetLoadError();
            QVERIFY(!error.isEmpty());
            QVERIFY2(error.size() < 120, qPrintable(error));
            QVERIFY(std::none_of(error.cbegin(), error.cend(),
                                 [](QChar c) { return c.unicode() < 0x20; }));
            // It names an unknown encoding, and which of the two bounds stopped the load.
            const QByteArray tag = QTest::currentDataTag();
            const QString why = tag == "over 1 GB"          ? u"1024 MB"_s
                                : tag.contains("budget")    ? u"メモリ"_s
                                : encoding.startsWith("X-") ? QString::fromLatin1(encoding)
                                                            : QString();
            QVERIFY2(error.contains(why), qPrintable(error));
        } else {
            QVERIFY(document);
            QCOMPARE(static_cast<int>(document->GetErrorType()), outcome);
            QCOMPARE(document->GetTotalCountPhoto() > 0, outcome == ReadErrNone);
        }
    }

    // What the load mends instead of failing, listed for the delivery checks: bytes that are
    // not Shift_JIS spoil only their value (U+FFFD); a photograph without an element of data
    // count "0" is left out and the next one comes in its place; an occurrence of a repeating
    // block without one is left out of its photograph. An empty group (all children optional)
    // is passed over. A record written without the photograph left out loads onto the others.
    void loadLeavesOutAndListsFaults() {
        const QString program = temp.filePath(u"prog-strict"_s);
        const auto item = [](const char* title, const char* count, const char* step,
                             const char* grade = "必須", const char* block = "×") {
            return QByteArray("<管理項目><タイトル>") + title + "</タイトル><必要度>" + grade +
                   "</必要度><表示>MainList</表示><データ数>" + count + "</データ数><操作>" + step +
                   "</操作><ブロック複数>" + block +
                   "</ブロック複数><読込種別>PhotoItem</読込種別></管理項目>";
        };
        WriteFile(program + u"/READITEM.XML"_s,
                  "<?xml version=\"1.0\" encoding=\"UTF-8\"?><information><国交省-20>" +
                      item("写真情報", "1", "Child", "不要") + item("シリアル番号", "1", "Next") +
                      item("写真ファイル名", "1", "Next") + item("写真タイトル", "0", "Next") +
                      item("付加情報", "0+", "Child", "不要", "○") +
                      item("参考図ファイル名", "0", "Next") +
                      item("参考図タイトル", "0/1", "Parent", "任意") +
                      item("撮影情報", "1", "Child", "不要") +
                      item("撮影箇所", "0/1", "Parent", "任意") +
                      item("撮影年月日", "0/1", "Parent") + "</国交省-20></information>");
        ToviItemDef::SetProgramPathOverride(program);

        // 1 has an empty group; 2 lacks its title; the first 付加情報 of 3 lacks its file;
        // 3 and 4 have stray bytes.
        const QString folder = temp.filePath(u"mended"_s);
        QByteArray body = "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">\n<photodata>";
        for (const QByteArray n : {"1", "2", "3", "4"}) {
            body += "<写真情報><シリアル番号>" + n + "</シリアル番号><写真ファイル名>P" + n +
                    ".JPG</写真ファイル名>" +
                    (n == "2" ? ""
                              : "<写真タイトル>題" + n + (n == "3" ? "{junk}" : "") +
                                    "</写真タイトル>") +
                    (n == "3" ? "<付加情報><参考図タイトル>図3a</参考図タイトル></付加情報>"
                                "<付加情報><参考図ファイル名>D3b.JPG</参考図ファイル名>"
                                "<参考図タイトル>図3b</参考図タイトル></付加情報>"
                              : "") +
                    (n == "1" ? "<撮影情報/>"
                              : "<撮影情報><撮影箇所>No." + n + "</撮影箇所></撮影情報>") +
                    "<撮影年月日>2024-01" + (n == "4" ? "{junk}" : "-") + "0" + n +
                    "</撮影年月日></写真情報>";
        }
        WritePhotoXml(folder, body + "</photodata>");
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> document(factory.Create(nullptr, folder, PhotoXMLMlit));
        QVERIFY2(document, qPrintable(factory.GetLoadError()));
        QCOMPARE(document->GetTotalCountPhoto(), 3);
        QCOMPARE(Value(*document, 0, "撮影箇所"), QString());
        QCOMPARE(Value(*document, 0, "撮影年月日"), u"2024-01-01"_s);
        QCOMPARE(Value(*document, 1, "写真ファイル名"), u"P3.JPG"_s);
        QCOMPARE(Value(*document, 1, "写真タイトル"), u"題3\uFFFD\uFFFD@"_s);
        QCOMPARE(Value(*document, 1, "撮影箇所"), u"No.3"_s);
        QCOMPARE(
            FilledItems(document->GetItemDef(), document->GetPhotoActualPhotoArray(1)->GetItems())
                .mid(3, 2),
            (Pairs{{u"参考図ファイル名"_s, u"D3b.JPG"_s}, {u"参考図タイトル"_s, u"図3b"_s}}));
        QCOMPARE(Value(*document, 2, "撮影年月日"), u"2024-01\uFFFD\uFFFD@04"_s);
        QCOMPARE(Value(*document, 2, "写真タイトル"), u"題4"_s);

        const ToviData::LoadFaults& faults = document->GetLoadFaults();
        QCOMPARE(faults.undecodableValues, 2);
        QCOMPARE(faults.droppedPhotoCount, 1);
        QCOMPARE(faults.droppedBlockCount, 1);
        QCOMPARE(faults.photoBlocks, 4);
        QVERIFY(!faults.incompleteManagement);
        QStringList dropped;
        for (const ToviData::LoadFaults::Dropped& d : faults.dropped) {
            dropped << u"%1 %2 %3 %4 %5"_s.arg(d.ordinal).arg(d.index).arg(d.serial, d.missing,
                                                                           d.block);
        }
        QCOMPARE(dropped,
                 (QStringList{u"2 -1 2 写真タイトル "_s, u"3 1 3 参考図ファイル名 付加情報"_s}));
        QList<int> indexes;
        for (int ordinal = 0; ordinal <= 5; ++ordinal) {
            indexes << faults.IndexOfOrdinal(ordinal);
        }
        QCOMPARE(indexes, (QList<int>{-1, 0, -1, 1, 2, -1}));

        // A record of the three photographs read; the count of all four no longer fits.
        const QString record = temp.filePath(u"mended-record.xml"_s);
        const auto writeRecord = [&](int count) {
            WriteFile(record,
                      Cp932::FromUnicode(
                          u"<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
                          "<検査状況><情報><写真枚数>%1</写真枚数></情報><状況>"
                          "<写真><コメント>一</コメント></写真><写真><コメント>三</コメント></写真>"
                          "<写真><コメント>四</コメント></写真></状況></検査状況>"_s.arg(count)));
        };
        int result = -1;
        writeRecord(4);
        QVERIFY(!document->LoadExamination(record, &result));
        QCOMPARE(result, int(ExamCountWrong));
        writeRecord(3);
        QVERIFY(document->LoadExamination(record, &result));
        QCOMPARE(document->GetPhotoActualPhotoArray(0)->GetComment(), u"一"_s);
        QCOMPARE(document->GetPhotoActualPhotoArray(1)->GetComment(), u"三"_s);
        QCOMPARE(document->GetPhotoActualPhotoArray(2)->GetComment(), u"四"_s);
    }

    // The section comes from the DOCTYPE line's whole DTD name within the family.
    void recognisesTheKindOfDelivery_data() {
        QTest::addColumn<QByteArray>("doctype");
        QTest::addColumn<int>("family");
        QTest::addColumn<QString>("section");
        QTest::addColumn<bool>("keyPhoto");
        const auto line = [](const char* dtd) {
            return QByteArray("<!DOCTYPE photodata SYSTEM \"") + dtd + "\">";
        };
        QTest::newRow("kowan shares the mlit table")
            << line("PHOTO05.DTD") << 1 << "国交省-20" << true;
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
        const QString folder = temp.filePath(u"kind-%1"_s.arg(QTest::currentDataTag()));
        WriteDoctype(folder, doctype);
        ToviItemDef def;
        const PhotoXMLReadErr result = def.Load(folder, static_cast<PhotoXMLType>(family));
        QCOMPARE(def.NewType(), section);
        QCOMPARE(def.HasKeyPhoto(), keyPhoto);
        QCOMPARE(result, section.isEmpty() ? ReadErrUnknownPhotoXml : ReadErrNone);
        QCOMPARE(def.GetIndexFromTitle(u"写真ファイル名"_s) >= 0, !section.isEmpty());
        // Even an unknown file overwrites the memory of the last delivery's kind.
        QCOMPARE(
            ToviProfile::Instance().GetProfileString(u"PhotoFileType"_s, u"Type"_s, u"_未定義_"_s),
            section);
    }

    // A FIFO would block the first open for ever: it is refused unopened.
    void fifoIsRefusedUnopened_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("result");
        QTest::newRow("PHOTO.XML") << u"PHOTO.XML"_s << int(ReadErrUnknownPhotoXml);
        QTest::newRow("lower case") << u"photo.xml"_s << int(ReadErrUnknownPhotoXml);
        QTest::newRow("READITEM.XML") << u"READITEM.XML"_s << int(ReadErrNoItemFile);
    }
    void fifoIsRefusedUnopened() {
        QFETCH(QString, name);
        QFETCH(int, result);
        const QString folder = temp.filePath(u"fifo-"_s + name);
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

    // READITEM.XML missing, malformed, or without the section. A record inherits the fields it
    // lacks, or whose word is unknown, from the record before: the file format defines it so.
    void definitionFile_data() {
        QTest::addColumn<QByteArray>("readItem");  // empty: no file at all
        QTest::addColumn<int>("result");
        QTest::addColumn<int>("count");
        const QByteArray head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
        QTest::newRow("missing") << QByteArray() << int(ReadErrNoItemFile) << 0;
        QTest::newRow("malformed")
            << QByteArray("<information><国交省-20><管理項目>") << int(ReadErrDefinition) << 0;
        QTest::newRow("section absent")
            << head + "<information><国交省-18/></information>" << int(ReadErrNone) << 0;
        QTest::newRow("no information root")
            << head + "<国交省-20><管理項目><タイトル>X</タイトル></管理項目></国交省-20>"
            << int(ReadErrNone) << 1;
        QTest::newRow("records inherit") << head + R"(<information>
  <国交省-18><管理項目><タイトル>その他</タイトル></管理項目></国交省-18>
  <国交省-20>
    <管理項目><タイトル>A</タイトル><必要度>必須</必要度><表示>InfoDlg</表示><データ数>0+</データ数>
      <操作>Child</操作><ブロック複数>○</ブロック複数><読込種別>PhotoItem</読込種別><余計>x</余計></管理項目>
    <メモ>ignored</メモ>
    <管理項目><タイトル>B</タイトル><必要度>すごく必須</必要度><操作>Parent</操作></管理項目>
  </国交省-20>
</information>)" << int(ReadErrNone) << 2;
    }
    void definitionFile() {
        QFETCH(QByteArray, readItem);
        QFETCH(int, result);
        QFETCH(int, count);
        const QString program = temp.filePath(u"prog-%1"_s.arg(QTest::currentDataTag()));
        QDir().mkpath(program);
        if (!readItem.isEmpty()) {
            WriteFile(program + u"/READITEM.XML"_s, readItem);
        }
        ToviItemDef::SetProgramPathOverride(program);
        const QString data = temp.filePath(u"data-%1"_s.arg(QTest::currentDataTag()));
        WriteDoctype(data, "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">");
        ToviData document(nullptr, data, PhotoXMLMlit);
        QCOMPARE(static_cast<int>(document.GetErrorType()), result);
        const ToviItemDef& def = *document.GetItemDef();
        QCOMPARE(def.GetCount(), count);
        QCOMPARE(def.GetIndexFromTitle(u"その他"_s), -1);
        QVERIFY_THROWS_EXCEPTION(std::out_of_range, def.GetDef(count));
        if (count == 2) {
            const Definition& b = def.GetDef(def.GetIndexFromTitle(u"B"_s));
            QCOMPARE((QList<int>{b.grade, b.show, b.count, b.operation, b.blockPlural, b.readType}),
                     (QList<int>{Definition::GradeRequired, Definition::ShowInfoDlg,
                                 Definition::CountZeroOrMore, Definition::StepParent, true,
                                 Definition::ReadPhotoItem}));
        }
    }

private:
    QTemporaryDir temp;
    int profileNumber = 0;
};

QTEST_GUILESS_MAIN(ToviEnouDataFactoryTest)
#include "ToviEnouDataFactoryTest.moc"
