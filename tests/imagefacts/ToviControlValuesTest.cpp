#include "document/ToviData.h"
#include "document/ToviItemArray.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "imagefacts/ToviControlValueArray.h"
#include "imagefacts/ToviControlValueParser.h"
#include "imagefacts/ToviControlValues.h"
#include "platform/ToviProfile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

// Values as "name|design|actual|difference", so that a row of expectations reads like the text.
QStringList Rows(const ToviControlValueArray& array) {
    QStringList rows;
    for (const ToviControlValueRow& row : array) {
        rows << QStringList{row.name, row.design, row.actual, row.difference}.join('|');
    }
    return rows;
}

QStringList Rows(const ToviControlValues& values) {
    ToviControlValueArray array;
    for (const std::unique_ptr<ToviControlValue>& v : values) {
        array.append({v->Name(), v->Design(), v->Actual(), v->Difference()});
    }
    return Rows(array);
}

// A current-generation document with no photographs of its own: the item definitions are the
// real READITEM.XML beside the test, so the title 施工管理値 is looked up as in a delivery.
std::unique_ptr<ToviData> OpenDocument(const QString& folder) {
    QDir().mkpath(folder);
    QFile file(folder + QStringLiteral("/PHOTO.XML"));
    if (!file.open(QIODevice::WriteOnly) ||
        file.write("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
                   "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">\n") < 0) {
        return nullptr;
    }
    file.close();
    return std::make_unique<ToviData>(nullptr, folder, PhotoXMLMlit);
}

}  // namespace

class ToviControlValuesTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir temp;

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("p.ini")));
    }

    // valid tells whether every part parsed; rows are the values kept, in text order.
    void parse_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<QStringList>("rows");

        // The examples the parser was written against.
        QTest::newRow("one part") << "A:設計値 100・実測値 98・差 -2" << true
                                  << QStringList{"A|100|98|-2"};
        QTest::newRow("two parts") << "A:設計 100・実測 98、B:設計 50・実測 51" << true
                                   << QStringList{"A|100|98|", "B|50|51|"};
        QTest::newRow("value holding the dot")
            << "A:設計寸法 1・2" << true << QStringList{"A|1・2||"};
        QTest::newRow("first token without a word") << "A:1・2" << false << QStringList{};
        QTest::newRow("差 inside another entry")
            << "A:設計値 差1・実測 2・差 3" << false << QStringList{};

        // A failed part is left out and the rest are kept.
        QTest::newRow("empty part in the middle")
            << "A:設計値 1、、B:実測 2" << false << QStringList{"A|1||", "B||2|"};

        // The words decide the field, not the position, and only at the start of an entry.
        QTest::newRow("fields in any order")
            << "A:差 +5・実測値 505・設計値 500" << true << QStringList{"A|500|505|+5"};
        QTest::newRow("half-width dot doesn't separate")
            << "A:設計値 1･実測値 2" << true << QStringList{"A|1･実測値 2||"};
        QTest::newRow("empty token continues the entry")
            << "A:設計値 1・・実測 2" << true << QStringList{"A|1・|2|"};

        // Trimming: ASCII blanks, tabs and line ends go; a full-width space stays.
        QTest::newRow("blanks around everything") << "  A  :\t設計値  100 ・ 実測値 98\r\n"
                                                  << true << QStringList{"A|100|98|"};
        QTest::newRow("full-width space before a word")
            << "A:　設計値 100" << false << QStringList{};
    }
    void parse() {
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QFETCH(QStringList, rows);
        ToviControlValues values;
        ParseControlValues(text, values);
        QCOMPARE(Rows(values), rows);
        QCOMPARE(values.IsValid(), valid);
    }

    // Parts are cut at every separator; a trailing empty part is dropped, no other.
    void split_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("parts");
        QTest::newRow("empty in the middle") << "a、、b" << QStringList{"a", "", "b"};
        QTest::newRow("empty first") << "、a" << QStringList{"", "a"};
        QTest::newRow("only the last empty is dropped") << "a、、" << QStringList{"a", ""};
    }
    void split() {
        QFETCH(QString, text);
        QStringList out{QStringLiteral("stale")};
        ToviControlValueParser::Split(text, QStringLiteral("、"), out);
        QTEST(out, "parts");
    }

    // The photograph reads its own 施工管理値 item; an absent item reads as an empty text.
    void photoArray_data() {
        QTest::addColumn<QString>("text");  // "-" for a photograph without the item
        QTest::addColumn<bool>("answer");
        QTest::addColumn<QStringList>("rows");
        QTest::newRow("two parts") << "幅:設計値 500・実測値 505・差 +5、高さ:設計 300" << true
                                   << QStringList{"幅|500|505|+5", "高さ|300||"};
        QTest::newRow("invalid") << "幅:設計値 500、高さ:300" << false << QStringList{};
        QTest::newRow("no item") << "-" << true << QStringList{};
    }
    void photoArray() {
        QFETCH(QString, text);
        QFETCH(bool, answer);
        QFETCH(QStringList, rows);
        const QString folder = temp.filePath(QString::fromLatin1(QTest::currentDataTag()));
        std::unique_ptr<ToviData> document = OpenDocument(folder);
        QVERIFY(document);
        const ToviItemDef* def = document->GetItemDef();
        const int titleIndex = def->GetIndexFromTitle(QStringLiteral("写真タイトル"));
        QVERIFY(titleIndex >= 0);
        ToviItemArray items;
        items.append(ToviItem(titleIndex, QStringLiteral("出来形測定状況")));
        if (text != QLatin1String("-")) {
            const int index = def->GetIndexFromTitle(QStringLiteral("施工管理値"));
            QVERIFY(index >= 0);
            items.append(ToviItem(index, text));
        }
        const ToviPhoto photo(document.get(), items);

        ToviControlValueArray out{{"stale", "1", "2", "3"}};
        QCOMPARE(photo.GetControlValueArray(out), answer);
        QCOMPARE(Rows(out), rows);
    }
};

QTEST_GUILESS_MAIN(ToviControlValuesTest)
#include "ToviControlValuesTest.moc"
