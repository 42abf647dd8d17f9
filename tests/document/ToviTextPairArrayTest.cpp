#include "document/ToviTextPairArray.h"

#include <QtTest>

class ToviTextPairArrayTest : public QObject {
    Q_OBJECT

private:
    static ToviTextPairArray Sample() {
        ToviTextPairArray pairs;
        for (const char* entry :
             {"撮影箇所=橋台", "工種=土工", "撮影箇所=橋脚", "Make=ORVANE", "備考="}) {
            const QString text = QString::fromUtf8(entry);
            pairs.append(ToviTextPair(text.section(QLatin1Char('='), 0, 0),
                                      text.section(QLatin1Char('='), 1)));
        }
        return pairs;
    }

private slots:
    // The single form copies the first match and leaves the caller's text alone without one;
    // the list form appends every match in array order to what the caller holds.
    void getValue_data() {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QStringList>("all");
        // clang-format off
        QTest::newRow("two matches") << "撮影箇所" << "橋台" << QStringList{"kept", "橋台", "橋脚"};
        QTest::newRow("empty value overwrites") << "備考" << "" << QStringList{"kept", ""};
        QTest::newRow("missing") << "撮影年月日" << "kept" << QStringList{"kept"};
        QTest::newRow("case sensitive") << "make" << "kept" << QStringList{"kept"};
        QTest::newRow("no prefix match") << "工" << "kept" << QStringList{"kept"};
        // clang-format on
    }
    void getValue() {
        QFETCH(QString, item);
        QFETCH(QStringList, all);
        QString value = QStringLiteral("kept");
        Sample().GetValue(item, value);
        QTEST(value, "first");
        QCOMPARE(Sample().IsExistItem(item), all.size() > 1);
        QStringList values{"kept"};
        Sample().GetValue(item, values);
        QCOMPARE(values, all);
    }

    // The whole-list reads replace what the caller held.
    void listsReplaceTheCallersContents() {
        QStringList items{"stale"};
        QStringList values{"stale", "stale"};
        Sample().ToArray(items, values);
        QCOMPARE(items, (QStringList{"撮影箇所", "工種", "撮影箇所", "Make", "備考"}));
        QCOMPARE(values, (QStringList{"橋台", "土工", "橋脚", "ORVANE", ""}));
        ToviTextPairArray().GetValues(values);
        QVERIFY(values.isEmpty());
    }
};

QTEST_GUILESS_MAIN(ToviTextPairArrayTest)
#include "ToviTextPairArrayTest.moc"
