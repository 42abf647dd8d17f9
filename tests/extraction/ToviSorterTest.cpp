#include "extraction/ToviSorter.h"

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/Cp932.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <numeric>
#include <random>

namespace {

// A 国交省-20 PHOTO.XML with one photograph per value, the value written under the element
// named key (シリアル番号, 写真タイトル or 撮影年月日); the other two get plain fillers.
QByteArray PhotoXml(const QString& key, const QStringList& values) {
    QString xml = QStringLiteral(
        "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
        "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">\n"
        "<photodata DTD_version=\"05\"><基礎情報><写真フォルダ名>PHOTO/PIC</写真フォルダ名>"
        "<適用要領基準>土木202303-01</適用要領基準></基礎情報>");
    for (int i = 0; i < values.size(); ++i) {
        auto value = [&](const QString& tag, const QString& filler) {
            return key == tag ? values[i] : filler;
        };
        xml += QStringLiteral(
                   "<写真情報><写真ファイル情報><シリアル番号>%1</シリアル番号>"
                   "<写真ファイル名>P%2.JPG</写真ファイル名><メディア番号>1</メディア番号>"
                   "</写真ファイル情報><撮影工種区分><写真-大分類>工事</写真-大分類>"
                   "<写真区分>施工状況写真</写真区分><工種>舗装工</工種>"
                   "<写真タイトル>%3</写真タイトル></撮影工種区分>"
                   "<撮影情報><撮影年月日>%4</撮影年月日></撮影情報></写真情報>")
                   .arg(value(QStringLiteral("シリアル番号"), QString::number(i + 1)))
                   .arg(i + 1)
                   .arg(value(QStringLiteral("写真タイトル"), QStringLiteral("施工状況")),
                        value(QStringLiteral("撮影年月日"), QStringLiteral("2023-04-01")));
    }
    return Cp932::FromUnicode(xml + QStringLiteral("</photodata>\n"));
}

std::unique_ptr<ToviData> Open(const QString& folder) {
    ToviEnouDataFactory factory;
    return std::unique_ptr<ToviData>(factory.Create(nullptr, folder, PhotoXMLMlit));
}

// The delivery of PhotoXml(key, values) in folder.
std::unique_ptr<ToviData> Open(const QString& folder, const QString& key,
                               const QStringList& values) {
    QDir().mkpath(folder);
    QFile file(folder + QStringLiteral("/PHOTO.XML"));
    if (!file.open(QIODevice::WriteOnly) || file.write(PhotoXml(key, values)) < 0) {
        return nullptr;
    }
    file.close();
    return Open(folder);
}

QList<int> Sorted(ToviData& document, const QString& key, bool ascending, const QList<int>& start) {
    document.CurrentArray().Assign(start);
    ToviSorter sorter(&document);
    sorter.PrepareSort(key, document.CurrentArray());
    sorter.QuickSort(ascending, document.CurrentArray());
    return document.CurrentArray().Indexes();
}

QList<int> Reversed(QList<int> list) {
    std::reverse(list.begin(), list.end());
    return list;
}

QList<int> Range(int count) {
    QList<int> list(count);
    std::iota(list.begin(), list.end(), 0);
    return list;
}

}  // namespace

class ToviSorterTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("p.ini")));
    }

    // Exact orders on hand-written values. Every row runs in both directions and from two
    // starting orders: descending must be the exact reverse of ascending, and the order the
    // array had before must not matter.
    void order_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QList<int>>("ascending");

        // Code page 932 order, bytes unsigned: "a" 61 < "Ａ" 82 60 < "あ" 82 A0 < "あい" <
        // half-width "ｱ" B1. Unicode order or signed bytes would give other orders.
        QTest::newRow("text in code page 932 order")
            << QStringLiteral("写真タイトル") << QStringList{"あ", "ｱ", "a", "Ａ", "あい", ""}
            << QList<int>{5, 2, 3, 0, 4, 1};
        // Keys longer than 16 bytes that share their start, and keys that are a prefix of
        // others: the shorter first, equal keys by index.
        QTest::newRow("long keys with a common start")
            << QStringLiteral("写真タイトル")
            << QStringList{"あいうえおかきくけ", "あいうえおかきく",    "あいうえおかきくこ",
                           "あいうえおかきくけ", "あいうえおかきくけa", "あいうえおかきか",
                           "あいうえおかき"}
            << QList<int>{6, 5, 1, 0, 3, 4, 2};
        QTest::newRow("serial number by number")
            << QStringLiteral("シリアル番号") << QStringList{"10", "9", "7a", "7"}
            << QList<int>{2, 3, 1, 0};
        QTest::newRow("the same values under another key as text")
            << QStringLiteral("写真タイトル") << QStringList{"10", "9", "7a", "7"}
            << QList<int>{0, 3, 2, 1};
        // Sign and leading digits count; letters, full-width digits and nothing read as 0;
        // a number beyond int stays the largest.
        QTest::newRow("serial number read like atoi")
            << QStringLiteral("シリアル番号")
            << QStringList{"12", "+3", "-4", "abc", "", "５", "99999999999", "0012x", " 8"}
            << QList<int>{2, 3, 4, 5, 1, 8, 0, 7, 6};
        QTest::newRow("equal dates keep the actual order, empty first")
            << QStringLiteral("撮影年月日")
            << QStringList{"2023-04-02", "2023-04-01", "2023-04-02", "", "2023-04-01"}
            << QList<int>{3, 1, 4, 0, 2};
        QTest::newRow("key the definitions lack")
            << QStringLiteral("存在しない項目") << QStringList{"c", "b", "a", "", "d"}
            << QList<int>{0, 1, 2, 3, 4};
    }
    void order() {
        QFETCH(QString, key);
        QFETCH(QStringList, values);
        QFETCH(QList<int>, ascending);
        std::unique_ptr<ToviData> document =
            Open(temp.filePath(QString::fromUtf8(QTest::currentDataTag())), key, values);
        QVERIFY(document);
        QCOMPARE(document->GetTotalCountPhoto(), values.size());

        const QList<int> actual = Range(static_cast<int>(values.size()));
        for (const QList<int>& start : {actual, Reversed(actual)}) {
            QCOMPARE(Sorted(*document, key, true, start), ascending);
            QCOMPARE(Sorted(*document, key, false, start), Reversed(ascending));
        }
    }

    // Nothing to sort is no failure: an empty current array stays empty, and a sorter without
    // a document orders by index.
    void emptyArrayAndNoDocument() {
        std::unique_ptr<ToviData> document = Open(temp.filePath(QStringLiteral("small")),
                                                  QStringLiteral("撮影年月日"), {"2023-04-02", ""});
        QVERIFY(document);
        for (bool ascending : {true, false}) {
            QVERIFY(Sorted(*document, QStringLiteral("撮影年月日"), ascending, {}).isEmpty());
        }

        ToviPhotoRef ref;
        ref.Assign({3, 1, 2});
        ToviSorter sorter;
        sorter.PrepareSort(QStringLiteral("撮影年月日"), ref);
        sorter.QuickSort(false, ref);
        QCOMPARE(ref.Indexes(), (QList<int>{3, 2, 1}));
        QVERIFY(!sorter.EndSort());
    }

    // A generated delivery, a shuffled part of it as the current array: the result holds the
    // same photographs, each neighbour pair is in key order (code page 932 text, or the
    // number for シリアル番号) with the photo index breaking ties, and descending is the
    // reverse of ascending.
    void generatedDelivery_data() {
        QTest::addColumn<QString>("key");
        for (const char* key : {"撮影年月日", "写真タイトル", "シリアル番号"}) {
            QTest::newRow(key) << QString::fromUtf8(key);
        }
    }
    void generatedDelivery() {
        QFETCH(QString, key);
        if (!delivery) {
            DeliveryOptions options;
            options.photoCount = 400;
            options.seed = 7;
            options.images = DeliveryOptions::Images::None;
            WrittenDelivery written;
            QString error;
            QVERIFY2(WriteDelivery(temp.filePath(QStringLiteral("generated")), options, &written,
                                   &error),
                     qPrintable(error));
            delivery = Open(written.photoFolder);
            QVERIFY(delivery);
        }
        const int item = delivery->GetItemDef()->GetIndexFromTitle(key);
        QVERIFY(item >= 0);
        QList<int> start;
        for (int i = 0; i < delivery->GetTotalCountPhoto(); i += 3) {
            start.append(i);
        }
        std::mt19937 rng(11);
        std::shuffle(start.begin(), start.end(), rng);

        const QList<int> up = Sorted(*delivery, key, true, start);
        QVERIFY(std::is_permutation(up.begin(), up.end(), start.begin(), start.end()));

        const bool numeric = key == QStringLiteral("シリアル番号");
        int distinct = 1;
        for (int k = 1; k < up.size(); ++k) {
            const QString a = delivery->GetPhotoActualPhotoArray(up[k - 1])->GetTitle(item);
            const QString b = delivery->GetPhotoActualPhotoArray(up[k])->GetTitle(item);
            const int order =
                numeric ? (a.toInt() > b.toInt()) - (a.toInt() < b.toInt()) : Cp932::Compare(a, b);
            QVERIFY2(order < 0 || (order == 0 && up[k - 1] < up[k]),
                     qPrintable(QStringLiteral("%1 before %2").arg(a, b)));
            distinct += order != 0;
        }
        QVERIFY2(distinct > 1, "the key should tell some photographs apart");

        // The public comparisons agree with the sort, and descending mirrors them exactly.
        delivery->CurrentArray().Assign(start);
        ToviSorter sorter(delivery.get());
        sorter.PrepareSort(key, delivery->CurrentArray());
        const QList<ToviSorter::Data>& entries = sorter.Entries();
        QCOMPARE(entries.size(), start.size());
        for (qsizetype i = 0; i < std::min<qsizetype>(entries.size(), 60); ++i) {
            for (qsizetype j = 0; j < std::min<qsizetype>(entries.size(), 60); ++j) {
                if (i == j) {
                    continue;
                }
                const int order = ToviSorter::CompareUp(entries[i], entries[j]);
                QCOMPARE(order < 0, up.indexOf(entries[i].index) < up.indexOf(entries[j].index));
                QCOMPARE(ToviSorter::CompareDown(entries[i], entries[j]) < 0, order > 0);
            }
        }

        std::shuffle(start.begin(), start.end(), rng);
        QCOMPARE(Sorted(*delivery, key, false, start), Reversed(up));
    }

    void cleanupTestCase() { delivery.reset(); }

private:
    QTemporaryDir temp;
    std::unique_ptr<ToviData> delivery;
};

QTEST_GUILESS_MAIN(ToviSorterTest)
#include "ToviSorterTest.moc"
