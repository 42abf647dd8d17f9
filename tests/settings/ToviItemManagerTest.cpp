#include "settings/ToviItemManager.h"

#include "platform/ToviProfile.h"

#include <QTemporaryDir>
#include <QtTest>

#include <stdexcept>

namespace {

const QString kSection = QStringLiteral("ShowSetting");
const QString kEntry = QStringLiteral("Items");

ToviProfile& Profile() {
    return ToviProfile::Instance();
}

// A list from "title:shown;..." rows ("+" shown, "-" hidden), as delivery items with their
// position as index.
ToviItemShowSettings MakeList(const QString& rows) {
    ToviItemShowSettings list;
    int index = 0;
    for (const QString& row : rows.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const qsizetype colon = row.lastIndexOf(QLatin1Char(':'));
        list.Add(row.left(colon), row.mid(colon + 1) == QLatin1String("+"), index++,
                 Definition::GradeOptional, InfoTypeItem);
    }
    return list;
}

}  // namespace

class ToviItemManagerTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(temp.isValid()); }
    void init() { Profile().UseFile(temp.filePath(QStringLiteral("p%1.ini").arg(++run))); }

    // Lists are equal only entry by entry in the same order, with the same showTitle; any
    // one difference in a field makes them unequal both ways.
    void listEquality() {
        ToviItemShowSettings a;
        a.Add(QStringLiteral("Exifバージョン"), true, 5, Definition::GradeOptional, InfoTypeExif);
        a.Add(QStringLiteral("写真タイトル"), true, 2, Definition::GradeRequired, InfoTypeItem);
        const ToviItemShowSettings copy = a;
        QVERIFY(a == copy && !(a != copy));
        QList<ToviItemShowSettings> changed(8, a);
        changed[0].swapItemsAt(0, 1);
        changed[1].SetShowTitle(false);
        changed[2][1].Bold(false);
        changed[3][1].index = 3;
        changed[4][1].grade = Definition::GradeConditional;
        changed[5][0].infoType = InfoTypeFile;
        changed[6][0].title = QStringLiteral("EXIFバージョン");
        changed[7].Add(QStringLiteral("緯度"), true, 5, Definition::GradeOptional, InfoTypeExif);
        for (int i = 0; i < changed.size(); ++i) {
            QVERIFY2(!(a == changed[i]) && a != changed[i] && !(changed[i] == a),
                     qPrintable(QString::number(i)));
        }
    }

    void lookUps() {
        const ToviItemShowSettings list = MakeList("工種:+;撮影箇所:-;工種:-");
        QCOMPARE(list.Find(QStringLiteral("撮影箇所")), 1);
        QCOMPARE(list.Find(QStringLiteral("工種")), 0);
        QCOMPARE(list.Find(QStringLiteral("無い項目")), -1);
        QVERIFY(list.IsBold(QStringLiteral("工種")));  // the first of the two counts
        QVERIFY(!list.IsBold(QStringLiteral("撮影箇所")));
        QVERIFY(!list.IsBold(QStringLiteral("無い項目")));
        QVERIFY(!list.IsBold(2));
        QCOMPARE(list.Title(1), QStringLiteral("撮影箇所"));
        QVERIFY_THROWS_EXCEPTION(std::out_of_range, list.IsBold(3));
        QVERIFY_THROWS_EXCEPTION(std::out_of_range, list.IsBold(-1));
        QVERIFY_THROWS_EXCEPTION(std::out_of_range, list.Title(3));
    }

    // The stored text is cut at every comma; an empty piece between two commas is a title of
    // its own, a trailing comma adds none. What was in the list before stays in front.
    void loadHiddenTitles_data() {
        QTest::addColumn<QString>("stored");  // null: not stored
        QTest::addColumn<bool>("result");
        QTest::addColumn<QStringList>("hidden");
        const QString pre = QStringLiteral("前から");
        QTest::newRow("nothing stored") << QString() << false << QStringList{pre};
        QTest::newRow("empty") << "" << false << QStringList{pre};
        QTest::newRow("two") << "工種,緯度" << true << QStringList{pre, "工種", "緯度"};
        QTest::newRow("two commas in a row")
            << "工種,,緯度" << true << QStringList{pre, "工種", "", "緯度"};
        QTest::newRow("trailing comma") << "工種,緯度," << true << QStringList{pre, "工種", "緯度"};
        QTest::newRow("leading comma") << ",緯度" << true << QStringList{pre, "", "緯度"};
        QTest::newRow("a comma alone") << "," << true << QStringList{pre, ""};
    }
    void loadHiddenTitles() {
        QFETCH(QString, stored);
        if (!stored.isNull()) {
            QVERIFY(Profile().WriteProfileString(kSection, kEntry, stored));
        }
        ToviItemManager manager;
        manager.SetItemShowSettings(MakeList("工種:+"));
        QStringList hidden{QStringLiteral("前から")};
        QTEST(manager.Load(hidden), "result");
        QTEST(hidden, "hidden");
        QVERIFY(manager.GetItemShowSettings() == MakeList("工種:+"));
    }

    // Save stores the hidden titles in list order; Load gives them back.
    void saveRoundTrip_data() {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("loadResult");
        QTest::addColumn<QStringList>("hidden");
        QTest::newRow("everything shown") << "工種:+;緯度:+"
                                          << "" << false << QStringList{};
        QTest::newRow("two hidden") << "工種:-;撮影箇所:+;緯度:-"
                                    << "工種,緯度" << true << QStringList{"工種", "緯度"};
        QTest::newRow("titles with blanks and slashes")
            << "撮影著作権者/編集著作権者:-;幅×高さ(Exif):-"
            << "撮影著作権者/編集著作権者,幅×高さ(Exif)" << true
            << QStringList{"撮影著作権者/編集著作権者", "幅×高さ(Exif)"};
    }
    void saveRoundTrip() {
        QFETCH(QString, list);
        Profile().WriteProfileString(kSection, kEntry, QStringLiteral("前の値"));
        ToviItemManager manager;
        manager.SetItemShowSettings(MakeList(list));
        QVERIFY(manager.Save());
        QTEST(Profile().GetProfileString(kSection, kEntry, QStringLiteral("<absent>")), "stored");
        QStringList hidden;
        QTEST(ToviItemManager().Load(hidden), "loadResult");
        QTEST(hidden, "hidden");
    }

    // Unlike the other settings, the manager leaves the store alone when it ends, and so do
    // its copies.
    void noSaveOnDestruction() {
        Profile().WriteProfileString(kSection, kEntry, QStringLiteral("工種"));
        {
            ToviItemManager manager;
            manager.SetItemShowSettings(MakeList("緯度:-"));
            ToviItemManager copy(manager);
            ToviItemManager assigned;
            assigned = manager;
            QVERIFY(assigned.GetItemShowSettings() == manager.GetItemShowSettings());
        }
        QCOMPARE(Profile().GetProfileString(kSection, kEntry, QString()), QStringLiteral("工種"));
    }

private:
    QTemporaryDir temp;
    int run = 0;
};

QTEST_GUILESS_MAIN(ToviItemManagerTest)
#include "ToviItemManagerTest.moc"
