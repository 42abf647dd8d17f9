#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "extraction/ToviExtractionConditions.h"
#include "extraction/ToviSorter.h"
#include "platform/ToviProfile.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/document/ReviewFixture.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ExifJpegWriter.h"
#include "tests/support/ScriptedUi.h"

#include <QDateTime>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>

using review::NodeAt;
using review::RecordingHost;

namespace {

// Six photographs. By work type the root shows them as [4, 0, 2, 1, 3, 5]:
// 土工{4}[掘削{0}, 盛土{2}], 舗装工{1}, 擁壁工{3}, abc{5}.
// Labels: 1 NG1, 2 OK, 3 NG3, 4 NG2; 0 and 5 not checked.
// Exif: 0, 2, 4; 1 and 3 plain JPEGs; 5 has no file at all.
// File dates: 01-15, 02-01, 02-29, 03-01, 02-10 (2024).
const QStringList kPhotos{
    "工種=土工;種別=掘削;撮影年月日=2024-04-01;代表写真=1;工種区分予備=x;工種区分予備=y",
    "工種=舗装工;撮影年月日=2024-04-10;付加情報予備=z",
    "工種=土工;種別=盛土;撮影年月日=2024-04-30;代表写真=1;参考図タイトル=",
    "工種=擁壁工;撮影年月日=2024-05-01",
    "工種=土工;撮影年月日=;工種区分予備=y",
    "工種=abc;撮影年月日=2024-03-31",
};
const QStringList kLabels{"", "1", "0", "3", "2", ""};
const QList<int> kRootOrder{4, 0, 2, 1, 3, 5};

// A source that remembers what it was told.
class RecordingSource : public ToviExtractionSource {
public:
    ToviExtractionConditions conditions;
    QList<int> told;
    const ToviExtractionConditions& Conditions() const override { return conditions; }
    void CancelExtraction(CancelExt value) override { told.append(value); }
};

// "ng;工種=土工;2024-04-01..2024-04-30;or" and so on: key, ng, notcheck, noexif, required, or,
// title=text (up to three), from..to for the shooting date, file:from..to for the file date.
ToviExtractionConditions Conditions(const QString& text) {
    ToviExtractionConditions c;
    const QHash<QString, bool*> flags{{"key", &c.keyPhoto},
                                      {"ng", &c.ngPhoto},
                                      {"notcheck", &c.notcheckPhoto},
                                      {"noexif", &c.notExifinfo},
                                      {"required", &c.neceNotwrite}};
    int item = 0;
    for (QString token : text.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        if (flags.contains(token)) {
            *flags[token] = true;
        } else if (token == QLatin1String("or")) {
            c.orMode = 1;
        } else if (token.contains(QLatin1String(".."))) {
            c.dateOn = true;
            c.dateKind = token.startsWith(QLatin1String("file:")) ? 1 : 0;
            c.dateFrom = token.remove(QLatin1String("file:")).section(QStringLiteral(".."), 0, 0);
            c.dateTo = token.section(QStringLiteral(".."), 1);
        } else {
            c.itemOn[item] = true;
            c.itemTitle[item] = token.section(QLatin1Char('='), 0, 0);
            c.itemText[item++] = token.section(QLatin1Char('='), 1);
        }
    }
    return c;
}

QList<int> InOrder(const QList<int>& order, const QList<int>& members) {
    QList<int> kept;
    for (int index : order) {
        if (members.contains(index)) {
            kept.append(index);
        }
    }
    return kept;
}

QList<int> Reversed(QList<int> list) {
    std::reverse(list.begin(), list.end());
    return list;
}

QList<int> Sorted(ToviData& document, const QString& key, bool ascending, const QList<int>& start) {
    document.CurrentArray().Assign(start);
    ToviSorter sorter(&document);
    sorter.PrepareSort(key, document.CurrentArray());
    sorter.QuickSort(ascending, document.CurrentArray());
    return document.CurrentArray().Indexes();
}

QString Message(int n, int count) {
    return QStringLiteral("写真データ抽出中　%1 / %2").arg(n).arg(count);
}

}  // namespace

// What the current array shows after an extraction or a sort.
class ToviDataExtractionTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QString folder;
    RecordingHost host;

    // The delivery with its labels, the work-type tree built and the root on show.
    std::unique_ptr<ToviData> Open() {
        std::unique_ptr<ToviData> doc = review::Open(&host, folder);
        if (doc) {
            for (int k = 0; k < kLabels.size(); ++k) {
                review::SetLabels(*doc->GetPhotoActualPhotoArray(k), kLabels[k]);
            }
            doc->BuildTreeNode(ToviPhotoCtrlVisualSetting::TreeKousyuOnly);
        }
        host.hints.clear();
        return doc;
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("p.ini")));
        folder = temp.filePath(QStringLiteral("delivery"));
        QVERIFY(review::WritePhotoXml(folder, kPhotos));
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        const QList<int> fileDays{15, 32, 60, 61, 41};  // days since 2023-12-31
        for (int k = 0; k < fileDays.size(); ++k) {
            const QString path = folder + QStringLiteral("/PIC/") + review::ImageName(k);
            if (k == 1 || k == 3) {
                QVERIFY(image.save(path, "JPG"));  // Qt writes no Exif
            } else {
                QVERIFY(WriteExifJpeg(path, image, ExifFacts()));
            }
            QFile file(path);
            QVERIFY(
                file.open(QIODevice::ReadWrite) &&
                file.setFileTime(QDateTime(QDate(2023, 12, 31).addDays(fileDays[k]), QTime(12, 0)),
                                 QFileDevice::FileModificationTime));
        }
    }

    // Each row's result is a subset of the root's content, in the root's order.
    void conditions_data() {
        QTest::addColumn<QString>("conditions");
        QTest::addColumn<QList<int>>("found");
        QTest::newRow("AND with nothing on") << "" << kRootOrder;
        QTest::newRow("OR with nothing on") << "or" << QList<int>{};
        QTest::newRow("key photograph") << "key" << QList<int>{0, 2};
        QTest::newRow("NG") << "ng" << QList<int>{1, 3, 4};
        QTest::newRow("NG or not checked") << "ng;notcheck;or" << QList<int>{0, 1, 3, 4, 5};
        QTest::newRow("no Exif, missing file included") << "noexif" << QList<int>{1, 3, 5};
        QTest::newRow("required item stored empty") << "required" << QList<int>{2, 4};
        QTest::newRow("item equal") << "工種=土工" << QList<int>{0, 2, 4};
        QTest::newRow("item case matters") << "工種=ABC" << QList<int>{};
        QTest::newRow("item is no substring search") << "工種=土" << QList<int>{};
        QTest::newRow("repeated item, any value") << "工種区分予備=y" << QList<int>{0, 4};
        QTest::newRow("marker on stored empty values")
            << "種別=【未記入】" << QList<int>{1, 3, 4, 5};
        QTest::newRow("marker needs the item") << "付加情報予備=【未記入】" << QList<int>{2};
        QTest::newRow("unknown title rejects in AND")
            << "施工者=x;2024-04-01..2024-04-30" << QList<int>{};
        QTest::newRow("unknown title passes on in OR")
            << "施工者=x;2024-04-01..2024-04-30;or" << QList<int>{0, 1, 2};
        QTest::newRow("three items AND") << "工種=土工;種別=盛土;代表写真=1" << QList<int>{2};
        QTest::newRow("date range includes both ends")
            << "2024-04-01..2024-04-30" << QList<int>{0, 1, 2};
        QTest::newRow("file date") << "file:2024-02-01..2024-02-29" << QList<int>{1, 2, 4};
        QTest::newRow("NG, item and file date")
            << "ng;工種=土工;file:2024-02-01..2024-02-29" << QList<int>{4};
    }
    void conditions() {
        QFETCH(QString, conditions);
        QFETCH(QList<int>, found);
        ScriptedUi ui;
        ScopedUi scope(ui);
        std::unique_ptr<ToviData> doc = Open();
        QVERIFY(doc);
        RecordingSource source;
        source.conditions = Conditions(conditions);
        doc->SetExtractionData(&source);

        doc->ExecExtraction();
        QCOMPARE(doc->CurrentArray().Indexes(), InOrder(kRootOrder, found));
        QVERIFY(doc->IsExtractionOn());  // nothing found still ends normally
        QCOMPARE(host.hints, QList<int>{ToviData::HintSelectionChanged});
        QVERIFY(source.told.isEmpty());
        // Filtering only: the photographs themselves are as they were.
        QCOMPARE(review::AllLabels(*doc), kLabels);
    }

    // The 代表写真 condition on a delivery that doesn't define that item never decides: AND
    // lets the photographs through to the NG test, OR finds nothing with it.
    void keyPhotoWithoutDefinition_data() {
        QTest::addColumn<QString>("conditions");
        QTest::newRow("AND") << "key;ng";
        QTest::newRow("OR") << "key;ng;or";
    }
    void keyPhotoWithoutDefinition() {
        QFETCH(QString, conditions);
        const QString root = temp.filePath(QStringLiteral("mlit11"));
        DeliveryOptions options;
        options.generation = Generation::Mlit11;
        options.photoCount = 8;
        options.images = DeliveryOptions::Images::None;
        QString error;
        QVERIFY2(QFile::exists(root) || WriteDelivery(root, options, nullptr, &error),
                 qPrintable(error));
        std::unique_ptr<ToviData> doc =
            review::Open(&host, root + QStringLiteral("/INDEX_C/PHOTO"));
        QVERIFY(doc);
        QVERIFY(doc->GetItemDef()->GetIndexFromTitle(QStringLiteral("代表写真")) < 0);
        doc->GetPhotoActualPhotoArray(1)->PasteLabel(2);
        doc->GetPhotoActualPhotoArray(5)->PasteLabel(3);
        doc->BuildTreeNode(ToviPhotoCtrlVisualSetting::TreeKousyuOnly);
        const QList<int> before = doc->CurrentArray().Indexes();
        QCOMPARE(before.size(), 8);
        ToviExtractionHolder holder;
        holder.conditions = Conditions(conditions);
        doc->SetExtractionData(&holder);
        doc->ExecExtraction();
        QCOMPARE(doc->CurrentArray().Indexes(), InOrder(before, {1, 5}));
    }

    // A photograph without a shooting date is passed over at once when the date decides: no
    // progress text, no cancel test, no step for it. The root shows it first.
    void emptyShootingDateSkipsProgress_data() {
        QTest::addColumn<QString>("conditions");
        QTest::addColumn<bool>("skipped");
        QTest::newRow("the date decides") << "2024-01-01..2024-12-31" << true;
        QTest::newRow("file date") << "file:2024-01-01..2024-12-31" << false;
    }
    void emptyShootingDateSkipsProgress() {
        QFETCH(QString, conditions);
        QFETCH(bool, skipped);
        ScriptedUi ui;
        ScopedUi scope(ui);
        std::unique_ptr<ToviData> doc = Open();
        QVERIFY(doc);
        QCOMPARE(doc->CurrentArray().GetAt(0), 4);
        ToviExtractionHolder holder;
        holder.conditions = Conditions(conditions);
        doc->SetExtractionData(&holder);
        doc->ExecExtraction();
        const int count = static_cast<int>(kRootOrder.size());
        QStringList messages;
        for (int n = skipped ? 2 : 1; n <= count; ++n) {
            messages.append(Message(n, count));
        }
        QCOMPARE(ui.LastProgress()->messages, messages);
        QCOMPARE(ui.LastProgress()->positions.last(), static_cast<int>(messages.size()));
    }

    // Cancel in the progress window at the first photograph: the node's whole content stays
    // on show in node order, extraction is off, the source is told with 0, and the next
    // selection is not filtered.
    void cancelOnFirstPhotograph() {
        ScriptedUi ui;
        ScopedUi scope(ui);
        std::unique_ptr<ToviData> doc = Open();
        QVERIFY(doc);
        ToviNode* earthwork = NodeAt(doc.get(), QStringLiteral("土工"));
        doc->SetSelected(earthwork, false);
        QCOMPARE(doc->CurrentArray().Indexes(), (QList<int>{4, 0, 2}));
        RecordingSource source;
        source.conditions = Conditions(QStringLiteral("ng"));
        doc->SetExtractionData(&source);
        host.hints.clear();
        ui.PressCancelAtPump(ui.Pumps() + 1);

        doc->ExecExtraction();
        QCOMPARE(ui.LastProgress()->messages, QStringList{Message(1, 3)});
        QCOMPARE(ui.LastProgress()->closeCount, 1);
        QCOMPARE(doc->CurrentArray().Indexes(), (QList<int>{4, 0, 2}));
        QVERIFY(!doc->IsExtractionOn());
        QCOMPARE(source.told, QList<int>{ToviExtractionSource::CancelButtonOnly});
        QCOMPARE(host.hints, QList<int>{ToviData::HintSelectionChanged});

        doc->SetSelected(doc.get(), false);
        QCOMPARE(doc->CurrentArray().Indexes(), kRootOrder);
        QCOMPARE(ui.ProgressViews().size(), 1);
        QCOMPARE(source.told.size(), 1);
        // Off already: a cancel with a value tells the source nothing.
        doc->CancelExtraction(ToviExtractionSource::CancelButtonOnly);
        QCOMPARE(source.told.size(), 1);
    }

    // Extraction always starts from a node's whole content: on every node selection, on a
    // rebuilt tree and on a second run; a label selection and a changed photograph don't
    // filter.
    void extractionFollowsRebuilds() {
        ScriptedUi ui;
        ScopedUi scope(ui);
        std::unique_ptr<ToviData> doc = Open();
        QVERIFY(doc);
        ToviExtractionHolder holder;
        holder.conditions = Conditions(QStringLiteral("ng"));
        doc->SetExtractionData(&holder);
        doc->ExecExtraction();
        QCOMPARE(doc->CurrentArray().Indexes(), (QList<int>{4, 1, 3}));

        doc->SetSelected(NodeAt(doc.get(), QStringLiteral("土工")), false);
        QCOMPARE(doc->CurrentArray().Indexes(), QList<int>{4});

        holder.conditions = Conditions(QStringLiteral("notcheck"));
        doc->ExecExtraction();
        QCOMPARE(doc->CurrentArray().Indexes(), QList<int>{0});

        // The shooting-place tree puts everything under 【未記入】, in file order.
        doc->BuildTreeNode(ToviPhotoCtrlVisualSetting::TreeSatsueikasyo);
        QCOMPARE(doc->CurrentArray().Indexes(), (QList<int>{0, 5}));

        doc->GetPhotoActualPhotoArray(0)->PasteLabel(0);
        QCOMPARE(doc->CurrentArray().Indexes(), (QList<int>{0, 5}));
        doc->SetSelected(doc->GetSelectedNode(), true);
        QCOMPARE(doc->CurrentArray().Indexes(), QList<int>{5});

        doc->SetSelected(0);
        QCOMPARE(doc->CurrentArray().Indexes(), (QList<int>{0, 2}));
        QVERIFY(doc->IsExtractionOn());
    }

    // Every row runs both ways from two starting orders: descending is the exact reverse of
    // ascending, and the order the array had before doesn't matter.
    void order_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QList<int>>("ascending");
        // Code page 932, bytes unsigned: "a" 61 < "Ａ" 82 60 < "あ" 82 A0 < "あい" < "ｱ" B1.
        QTest::newRow("text in code page 932 order")
            << QStringLiteral("写真タイトル") << QStringList{"あ", "ｱ", "a", "Ａ", "あい", ""}
            << QList<int>{5, 2, 3, 0, 4, 1};
        // Longer than 16 bytes with a common start, and prefixes: the shorter first.
        QTest::newRow("long keys with a common start")
            << QStringLiteral("写真タイトル")
            << QStringList{"あいうえおかきくけ", "あいうえおかきく",    "あいうえおかきくこ",
                           "あいうえおかきくけ", "あいうえおかきくけa", "あいうえおかきか",
                           "あいうえおかき"}
            << QList<int>{6, 5, 1, 0, 3, 4, 2};
        // Like atoi: sign and leading digits count, anything else is 0, beyond int is largest.
        QTest::newRow("serial number read like atoi")
            << QStringLiteral("シリアル番号")
            << QStringList{"12", "+3", "-4", "abc", "", "５", "99999999999", "0012x", " 8", "7a"}
            << QList<int>{2, 3, 4, 5, 1, 9, 8, 0, 7, 6};
        QTest::newRow("equal dates keep the actual order, empty first")
            << QStringLiteral("撮影年月日")
            << QStringList{"2023-04-02", "2023-04-01", "2023-04-02", "", "2023-04-01"}
            << QList<int>{3, 1, 4, 0, 2};
    }
    void order() {
        QFETCH(QString, key);
        QFETCH(QStringList, values);
        QFETCH(QList<int>, ascending);
        const QString folder = temp.filePath(QString::fromUtf8(QTest::currentDataTag()));
        QStringList photos;
        for (const QString& value : values) {
            photos.append(key + QLatin1Char('=') + value);
        }
        QVERIFY(review::WritePhotoXml(folder, photos));
        std::unique_ptr<ToviData> document = review::Open(nullptr, folder);
        QVERIFY(document);
        QList<int> actual;
        for (int i = 0; i < values.size(); ++i) {
            actual.append(i);
        }
        for (const QList<int>& start : {actual, Reversed(actual)}) {
            QCOMPARE(Sorted(*document, key, true, start), ascending);
            QCOMPARE(Sorted(*document, key, false, start), Reversed(ascending));
        }
        // The public comparisons agree with the sort, and descending mirrors them exactly.
        ToviSorter sorter(document.get());
        sorter.PrepareSort(key, document->CurrentArray());
        for (const ToviSorter::Data& a : sorter.Entries()) {
            for (const ToviSorter::Data& b : sorter.Entries()) {
                if (a.index != b.index) {
                    const int up = ToviSorter::CompareUp(a, b);
                    QCOMPARE(up < 0, ascending.indexOf(a.index) < ascending.indexOf(b.index));
                    QCOMPARE(ToviSorter::CompareDown(a, b) < 0, up > 0);
                }
            }
        }
    }
};

QTEST_GUILESS_MAIN(ToviDataExtractionTest)
#include "ToviDataExtractionTest.moc"
