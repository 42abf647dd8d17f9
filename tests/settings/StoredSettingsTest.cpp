#include "extraction/ToviSortCondition.h"
#include "platform/ToviProfile.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviItemManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QFile>
#include <QHash>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

using Setting = ToviPhotoCtrlVisualSetting;

ToviProfile& Profile() {
    return ToviProfile::Instance();
}

QString Stored(const QString& section, const QString& entry) {
    return Profile().GetProfileString(section, entry, QStringLiteral("<absent>"));
}

// A setting in which every field differs from its default, so that a load that wrongly
// touches a field shows.
void MakeUnusual(Setting& setting) {
    setting.SetImageTextArrange(Setting::TextArrangeHidden);
    setting.SetTreeType(Setting::TreeKousyuOnly);
    setting.SetDivType(Setting::Divide3);
    setting.SetTitleShowType(Setting::TitleJapaneseName);
    setting.SetDoEditCheck(true);
    setting.SetVisibleDetail(false);
    setting.SetVisibleProperty(false);
    setting.SetVisibleComment(false);
    setting.SetVisibleControlValue(false);
    setting.SetEditCheckTypes(QStringLiteral("0,2"));
}

const QStringList kEntries = {"TextArrange",     "TreeType",       "DivideType",
                              "TitleShowType",   "DoEditCheck",    "VisibleDetail",
                              "VisibleProperty", "VisibleComment", "VisibleControlValue"};

// The field behind an entry, as a number (truth values 0 or 1).
int Field(const Setting& setting, const QString& entry) {
    const QList<int> fields = {setting.GetImageTextArrange(),
                               setting.GetTreeType(),
                               setting.GetDivType(),
                               setting.GetTitleShowType(),
                               setting.GetDoEditCheck(),
                               setting.GetVisibleDetail(),
                               setting.GetVisibleProperty(),
                               setting.GetVisibleComment(),
                               setting.GetVisibleControlValue()};
    return fields.value(kEntries.indexOf(entry), -99);
}

QStringList Names(const ToviLabelManager& manager) {
    QStringList names;
    for (int i = 0; i < ToviLabelManager::GetMaxCount(); ++i) {
        names << manager.GetLabelAttribute(i).GetName();
    }
    return names;
}

}  // namespace

// The settings that keep themselves in the profile: the view's visual setting, the sort
// condition and the label names. Numbers are stored as value + 100, so that anything below
// 100 reads as "never saved"; each of them writes itself when it ends.
class StoredSettingsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(temp.isValid()); }
    void init() { Profile().UseFile(temp.filePath(QStringLiteral("p%1.ini").arg(++run))); }
    void cleanupTestCase() { Profile().UseFile(temp.filePath(QStringLiteral("last.ini"))); }

    // Below 100 (or not a number) leaves the field; there is no range check above, and truth
    // values take any non-zero.
    void visualSettingLoad_data() {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("expected");  // -1: the field keeps its unusual value
        for (const char* entry : {"TreeType", "VisibleComment"}) {
            QTest::addRow("%s 99 is absent", entry) << entry << "99" << -1;
            QTest::addRow("%s 100 is 0", entry) << entry << "100" << 0;
            QTest::addRow("%s 101 is 1", entry) << entry << "101" << 1;
            QTest::addRow("%s text is absent", entry) << entry << "x" << -1;
        }
        QTest::newRow("DivideType 150 is mode 50") << "DivideType"
                                                   << "150" << 50;
    }
    void visualSettingLoad() {
        QFETCH(QString, entry);
        QFETCH(QString, stored);
        QFETCH(int, expected);
        Profile().WriteProfileString(QStringLiteral("VisualSetting"), entry, stored);
        Setting setting;
        MakeUnusual(setting);
        const int before = Field(setting, entry);
        QVERIFY(setting.Load());
        QCOMPARE(Field(setting, entry), expected < 0 ? before : expected);
        // The entries that weren't stored keep their values too.
        QCOMPARE(setting.GetEditCheckTypes(), QStringLiteral("1"));
        QVERIFY(!setting.GetVisibleDetail());
    }

    // Ending writes all ten entries and a new object reads the same state back; of copies,
    // the one that ends last is what the next start reads.
    void visualSettingSave() {
        {
            Setting setting;
            MakeUnusual(setting);
        }
        QStringList stored;
        for (const QString& entry : kEntries + QStringList{"EditCheckTypes"}) {
            stored << Stored(QStringLiteral("VisualSetting"), entry);
        }
        QCOMPARE(stored, (QStringList{"100", "102", "102", "101", "101", "100", "100", "100", "100",
                                      "0,2"}));
        Setting loaded;
        loaded.Load();
        Setting expected;
        MakeUnusual(expected);
        for (const QString& entry : kEntries) {
            QCOMPARE(Field(loaded, entry), Field(expected, entry));
        }

        auto owner = std::make_unique<Setting>();
        owner->SetDivType(Setting::Divide4);
        {
            Setting dialogCopy = *owner;
            dialogCopy.SetDivType(Setting::DivideManagementList);
        }
        QCOMPARE(Stored(QStringLiteral("VisualSetting"), "DivideType"), QStringLiteral("106"));
        owner.reset();
        Setting next;
        next.Load();
        QCOMPARE(next.GetDivType(), Setting::Divide4);
    }

    // With sorting off the direction is ascending: ExecSort(false) and assignment make it
    // so; Ascending() alone doesn't, and neither does Load.
    void sortCondition() {
        ToviSortCondition condition;
        condition.ExecSort(true);
        condition.Ascending(false);
        condition.SetKeyItem(QStringLiteral("写真タイトル"));
        ToviSortCondition copy;
        copy = condition;
        QVERIFY(copy.IsExecSort() && !copy.IsAscending());
        condition.ExecSort(false);
        QVERIFY(!condition.IsExecSort() && condition.IsAscending());
        condition.Ascending(false);
        copy = condition;
        QVERIFY(!copy.IsExecSort() && copy.IsAscending());
        QCOMPARE(copy.GetKeyItem(), QStringLiteral("写真タイトル"));

        {
            ToviSortCondition saved;
            saved.ExecSort(true);
            saved.Ascending(false);
            saved.SetKeyItem(QStringLiteral("工種"));
        }
        QCOMPARE(Stored(QStringLiteral("Sort"), "ExecSort"), QStringLiteral("101"));
        QCOMPARE(Stored(QStringLiteral("Sort"), "Ascending"), QStringLiteral("100"));
        Profile().WriteProfileString(QStringLiteral("Sort"), "ExecSort", QStringLiteral("100"));
        Profile().WriteProfileString(QStringLiteral("Sort"), "KeyItem", QStringLiteral("_未定義_"));
        ToviSortCondition loaded;
        loaded.SetKeyItem(QStringLiteral("撮影年月日"));
        QVERIFY(loaded.Load());
        QVERIFY(!loaded.IsExecSort() && !loaded.IsAscending());
        QCOMPARE(loaded.GetKeyItem(), QStringLiteral("撮影年月日"));
    }

    // Only a stored name that is neither empty nor "_未定義_" replaces the slot's name;
    // loading never touches colours. A manager writes its six names when it goes.
    void labelNames() {
        // The built-in names (a manager that ends writes its names: before the stored ones).
        QStringList expected = Names(ToviLabelManager());
        const QStringList stored{"良", "", "_未定義_", "a,b;c=d \"e\" [f]"};
        for (int i = 0; i < stored.size(); ++i) {
            Profile().WriteProfileString(QStringLiteral("Label"),
                                         QStringLiteral("Label%1").arg(i + 1), stored[i]);
        }
        expected[0] = stored[0];
        expected[3] = stored[3];
        {
            ToviLabelManager manager;
            manager.GetLabelAttribute(2).SetColor(QColor(0x56, 0x34, 0x12));  // kept as BGR
            manager.Load();
            QCOMPARE(Names(manager), expected);
            QCOMPARE(manager.GetLabelAttribute(2).GetColorValue(), quint32(0x123456));
            manager.GetLabelAttribute(5).SetName(QStringLiteral("再撮影"));
        }
        expected[5] = QStringLiteral("再撮影");
        ToviLabelManager next;
        next.Load();
        QCOMPARE(Names(next), expected);
    }

    // A store that refuses writes makes Save answer false; the objects still end quietly.
    void refusedSave() {
        const QString path = temp.filePath(QStringLiteral("broken.ini"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Sort\nExecSort=101\n");
        file.close();
        Profile().UseFile(path);
        QVERIFY(!Setting().Save());
        QVERIFY(!ToviSortCondition().Save());
    }

    // The hidden titles of the information list: cut at every comma, an empty piece between
    // two commas is a title of its own, a trailing comma adds none; what the caller held stays
    // in front.
    void hiddenTitles_data() {
        QTest::addColumn<QString>("stored");  // null: not stored
        QTest::addColumn<bool>("result");
        QTest::addColumn<QStringList>("hidden");
        QTest::newRow("nothing stored") << QString() << false << QStringList{"前"};
        QTest::newRow("two commas in a row")
            << "工種,,緯度" << true << QStringList{"前", "工種", "", "緯度"};
        QTest::newRow("trailing comma")
            << "工種,緯度," << true << QStringList{"前", "工種", "緯度"};
        QTest::newRow("a comma alone") << "," << true << QStringList{"前", ""};
    }
    void hiddenTitles() {
        QFETCH(QString, stored);
        if (!stored.isNull()) {
            Profile().WriteProfileString(QStringLiteral("ShowSetting"), "Items", stored);
        }
        QStringList hidden{QStringLiteral("前")};
        QTEST(ToviItemManager().Load(hidden), "result");
        QTEST(hidden, "hidden");
    }

private:
    QTemporaryDir temp;
    int run = 0;
};

QTEST_GUILESS_MAIN(StoredSettingsTest)
#include "StoredSettingsTest.moc"
