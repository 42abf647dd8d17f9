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

    // Lists are equal only entry by entry in the same order, with the same showTitle.
    void listEquality_data() {
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("equal");
        QTest::newRow("copy") << "none" << true;
        QTest::newRow("reordered") << "reorder" << false;
        QTest::newRow("showTitle off") << "showTitle" << false;
        QTest::newRow("one entry hidden") << "bold" << false;
        QTest::newRow("other index") << "index" << false;
        QTest::newRow("other grade") << "grade" << false;
        QTest::newRow("other kind") << "infoType" << false;
        QTest::newRow("title differs in case") << "title" << false;
        QTest::newRow("one entry more") << "append" << false;
    }
    void listEquality() {
        QFETCH(QString, change);
        ToviItemShowSettings a;
        a.Add(QStringLiteral("Exifバージョン"), true, 5, Definition::GradeOptional, InfoTypeExif);
        a.Add(QStringLiteral("写真タイトル"), true, 2, Definition::GradeRequired, InfoTypeItem);
        ToviItemShowSettings b = a;
        if (change == QLatin1String("reorder")) {
            b.swapItemsAt(0, 1);
        } else if (change == QLatin1String("showTitle")) {
            b.SetShowTitle(false);
        } else if (change == QLatin1String("bold")) {
            b[1].Bold(false);
        } else if (change == QLatin1String("index")) {
            b[1].index = 3;
        } else if (change == QLatin1String("grade")) {
            b[1].grade = Definition::GradeConditional;
        } else if (change == QLatin1String("infoType")) {
            b[0].infoType = InfoTypeFile;
        } else if (change == QLatin1String("title")) {
            b[0].title = QStringLiteral("EXIFバージョン");
        } else if (change == QLatin1String("append")) {
            b.Add(QStringLiteral("緯度"), true, 5, Definition::GradeOptional, InfoTypeExif);
        }
        QFETCH(bool, equal);
        QCOMPARE(a == b, equal);
        QCOMPARE(a != b, !equal);
        QCOMPARE(b == a, equal);
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
        ToviItemShowSettings grown;
        QCOMPARE(grown.Add(QStringLiteral("a"), true, 0, Definition::GradeOptional, InfoTypeFile),
                 0);
        QCOMPARE(grown.Add(QStringLiteral("b"), true, 0, Definition::GradeOptional, InfoTypeFile),
                 1);
        QVERIFY(grown.IsShowTitle());
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
        QTest::newRow("one") << "工種" << true << QStringList{pre, "工種"};
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
        QTest::newRow("empty list") << ""
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
