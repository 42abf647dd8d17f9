#include "extraction/ToviSortCondition.h"

#include "platform/ToviProfile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

const QString kSection = QStringLiteral("Sort");
const QString kDate = QStringLiteral("撮影年月日");

ToviProfile& Profile() {
    return ToviProfile::Instance();
}

// A stored entry; a null text leaves the entry out.
void Store(const QString& entry, const QString& value) {
    if (!value.isNull()) {
        Profile().WriteProfileString(kSection, entry, value);
    }
}

}  // namespace

class ToviSortConditionTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(temp.isValid()); }

    // Every row starts from an empty store of its own.
    void init() { Profile().UseFile(temp.filePath(QStringLiteral("p%1.ini").arg(++run))); }

    // With sorting off the direction is ascending: ExecSort(false) and assignment make it
    // so; Ascending() alone doesn't.
    void invariant() {
        ToviSortCondition condition;
        condition.ExecSort(true);
        condition.Ascending(false);
        condition.SetKeyItem(QStringLiteral("写真タイトル"));
        ToviSortCondition copy;
        copy = condition;
        QVERIFY(copy.IsExecSort() && !copy.IsAscending());
        condition.ExecSort(true);
        QVERIFY(!condition.IsAscending());
        condition.ExecSort(false);
        QVERIFY(!condition.IsExecSort() && condition.IsAscending());
        condition.Ascending(false);
        QVERIFY(!condition.IsAscending());
        copy = condition;
        QVERIFY(!copy.IsExecSort() && copy.IsAscending());
        QCOMPARE(copy.GetKeyItem(), QStringLiteral("写真タイトル"));
    }

    // Integers are stored + 100 and anything below 100 counts as never saved, so the field
    // keeps what it had. Load itself doesn't force the invariant.
    void load_data() {
        QTest::addColumn<QString>("storedExecSort");  // null: not stored
        QTest::addColumn<QString>("storedAscending");
        QTest::addColumn<QString>("storedKey");
        QTest::addColumn<bool>("startExecSort");
        QTest::addColumn<bool>("startAscending");
        QTest::addColumn<bool>("execSort");
        QTest::addColumn<bool>("ascending");
        QTest::addColumn<QString>("key");
        const QString none;
        // clang-format off
        QTest::newRow("nothing saved keeps the fields")
            << none << none << none << true << false << true << false << kDate;
        QTest::newRow("100 and 100 load as off and descending")
            << "100" << "100" << none << false << true << false << false << kDate;
        QTest::newRow("99 is ignored")
            << "99" << "99" << none << false << false << false << false << kDate;
        QTest::newRow("above 100 reads as true, 0 is ignored")
            << "150" << "0" << none << false << false << true << false << kDate;
        QTest::newRow("not a number is ignored")
            << "abc" << " " << none << true << false << true << false << kDate;
        QTest::newRow("key taken")
            << none << none << "写真タイトル" << false << true << false << true << "写真タイトル";
        QTest::newRow("empty key keeps the date")
            << none << none << "" << false << true << false << true << kDate;
        QTest::newRow("undefined marker keeps the date")
            << none << none << "_未定義_" << false << true << false << true << kDate;
        // clang-format on
    }
    void load() {
        QFETCH(QString, storedExecSort);
        QFETCH(QString, storedAscending);
        QFETCH(QString, storedKey);
        QFETCH(bool, startExecSort);
        QFETCH(bool, startAscending);
        Store(QStringLiteral("ExecSort"), storedExecSort);
        Store(QStringLiteral("Ascending"), storedAscending);
        Store(QStringLiteral("KeyItem"), storedKey);

        ToviSortCondition condition;
        condition.ExecSort(startExecSort);
        condition.Ascending(startAscending);
        QVERIFY(condition.Load());
        QTEST(condition.IsExecSort(), "execSort");
        QTEST(condition.IsAscending(), "ascending");
        QTEST(condition.GetKeyItem(), "key");
    }

    // The condition writes itself when it ends, as value + 100, and reads back the same.
    void savedOnDestruction_data() {
        QTest::addColumn<bool>("execSort");
        QTest::addColumn<bool>("ascending");
        QTest::addColumn<QString>("storedExecSort");
        QTest::addColumn<QString>("storedAscending");
        QTest::newRow("on, descending") << true << false << "101"
                                        << "100";
        QTest::newRow("off, ascending") << false << true << "100"
                                        << "101";
    }
    void savedOnDestruction() {
        QFETCH(bool, execSort);
        QFETCH(bool, ascending);
        {
            auto condition = std::make_unique<ToviSortCondition>();
            condition->ExecSort(execSort);
            condition->Ascending(ascending);
            condition->SetKeyItem(QStringLiteral("工種"));
        }
        const auto stored = [](const char* entry) {
            return Profile().GetProfileString(kSection, QString::fromUtf8(entry), {});
        };
        QTEST(stored("ExecSort"), "storedExecSort");
        QTEST(stored("Ascending"), "storedAscending");
        QCOMPARE(stored("KeyItem"), QStringLiteral("工種"));

        ToviSortCondition loaded;
        loaded.Load();
        QCOMPARE(loaded.IsExecSort(), execSort);
        QCOMPARE(loaded.IsAscending(), ascending);
        QCOMPARE(loaded.GetKeyItem(), QStringLiteral("工種"));
    }

    // A store that refuses writes makes Save answer false, and the end of the object is
    // still quiet.
    void refusedSave() {
        const QString path = temp.filePath(QStringLiteral("broken.ini"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Sort\nExecSort=101\n");
        file.close();
        Profile().UseFile(path);
        ToviSortCondition condition;
        condition.ExecSort(true);
        QVERIFY(!condition.Save());
        QVERIFY(condition.Load());
        QVERIFY(condition.IsExecSort());
    }

private:
    QTemporaryDir temp;
    int run = 0;
};

QTEST_GUILESS_MAIN(ToviSortConditionTest)
#include "ToviSortConditionTest.moc"
