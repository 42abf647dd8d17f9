#include "extraction/ToviSorter.h"

#include "document/ToviData.h"
#include "platform/ToviProfile.h"
#include "tests/document/ReviewFixture.h"

#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

namespace {

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

}  // namespace

class ToviSorterTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("p.ini")));
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

QTEST_GUILESS_MAIN(ToviSorterTest)
#include "ToviSorterTest.moc"
