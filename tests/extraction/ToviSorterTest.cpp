#include "extraction/ToviSorter.h"

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/Cp932.h"
#include "platform/ToviProfile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <numeric>
#include <memory>

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

        // The public comparisons agree with the sort, and descending mirrors them exactly.
        document->CurrentArray().Assign(actual);
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

private:
    QTemporaryDir temp;
};

QTEST_GUILESS_MAIN(ToviSorterTest)
#include "ToviSorterTest.moc"
