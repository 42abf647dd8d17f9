#include "document/ToviTextPairArray.h"

#include <QtTest>

namespace {

// "item=value" texts to pairs.
ToviTextPairArray Pairs(const QStringList& entries) {
    ToviTextPairArray pairs;
    for (const QString& entry : entries) {
        const qsizetype eq = entry.indexOf(QLatin1Char('='));
        pairs.append(ToviTextPair(entry.left(eq), entry.mid(eq + 1)));
    }
    return pairs;
}

const QStringList kSample{"撮影箇所=橋台", "工種=土工", "撮影箇所=橋脚", "Make=ORVANE", "備考="};

}  // namespace

class ToviTextPairArrayTest : public QObject {
    Q_OBJECT

  private slots:
    // The single form copies the first match and leaves the caller's text alone without one.
    void getValueOfTheFirstPair_data() {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("exists");
        // clang-format off
        QTest::newRow("first of two") << "撮影箇所" << "橋台" << true;
        QTest::newRow("empty value overwrites") << "備考" << "" << true;
        QTest::newRow("missing") << "撮影年月日" << "untouched" << false;
        QTest::newRow("case sensitive") << "make" << "untouched" << false;
        QTest::newRow("no trimming") << "工種 " << "untouched" << false;
        QTest::newRow("no prefix match") << "工" << "untouched" << false;
        // clang-format on
    }
    void getValueOfTheFirstPair() {
        QFETCH(QString, item);
        QFETCH(QString, expected);
        QFETCH(bool, exists);
        const ToviTextPairArray pairs = Pairs(kSample);
        QString value = QStringLiteral("untouched");
        pairs.GetValue(item, value);
        QCOMPARE(value, expected);
        QCOMPARE(pairs.IsExistItem(item), exists);
    }

    // The list form appends every match in array order to what the caller already holds.
    void getValuesAppends_data() {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("two matches") << "撮影箇所" << QStringList{"kept", "橋台", "橋脚"};
        QTest::newRow("empty value") << "備考" << QStringList{"kept", ""};
        QTest::newRow("none") << "MAKE" << QStringList{"kept"};
    }
    void getValuesAppends() {
        QFETCH(QString, item);
        QFETCH(QStringList, expected);
        QStringList values{"kept"};
        Pairs(kSample).GetValue(item, values);
        QCOMPARE(values, expected);
    }

    // The whole-list reads replace what the caller held.
    void listsReplaceTheCallersContents() {
        QStringList items{"stale"};
        QStringList values{"stale", "stale"};
        Pairs(kSample).ToArray(items, values);
        QCOMPARE(items, (QStringList{"撮影箇所", "工種", "撮影箇所", "Make", "備考"}));
        QCOMPARE(values, (QStringList{"橋台", "土工", "橋脚", "ORVANE", ""}));
        ToviTextPairArray().GetValues(values);
        QVERIFY(values.isEmpty());
    }
};

QTEST_GUILESS_MAIN(ToviTextPairArrayTest)
#include "ToviTextPairArrayTest.moc"
