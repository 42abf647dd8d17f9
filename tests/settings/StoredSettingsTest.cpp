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

using namespace Qt::StringLiterals;

namespace {

using Setting = ToviPhotoCtrlVisualSetting;

ToviProfile& Profile() {
    return ToviProfile::Instance();
}

QString Stored(const QString& section, const QString& entry) {
    return Profile().GetProfileString(section, entry, u"<absent>"_s);
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
    setting.SetEditCheckTypes(u"0,2"_s);
}

const QStringList kEntries = {"TextArrange",     "TreeType",       "DivideType",
                              "TitleShowType",   "DoEditCheck",    "VisibleDetail",
                              "VisibleProperty", "VisibleComment", "VisibleControlValue"};

// The fields behind kEntries, as numbers (truth values 0 or 1), and the check types.
QStringList Fields(const Setting& s) {
    QStringList fields;
    for (const int field : {int(s.GetImageTextArrange()), int(s.GetTreeType()), int(s.GetDivType()),
                            int(s.GetTitleShowType()), int(s.GetDoEditCheck()),
                            int(s.GetVisibleDetail()), int(s.GetVisibleProperty()),
                            int(s.GetVisibleComment()), int(s.GetVisibleControlValue())}) {
        fields << QString::number(field);
    }
    return fields << s.GetEditCheckTypes();
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
    void init() { Profile().UseFile(temp.filePath(u"p%1.ini"_s.arg(++run))); }
    void cleanupTestCase() { Profile().UseFile(temp.filePath(u"last.ini"_s)); }

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
        Profile().WriteProfileString(u"VisualSetting"_s, entry, stored);
        Setting setting;
        MakeUnusual(setting);
        QStringList fields = Fields(setting);
        if (expected >= 0) {
            fields[kEntries.indexOf(entry)] = QString::number(expected);
        }
        QVERIFY(setting.Load());
        // The entries that weren't stored keep their values; the check types were never saved.
        fields.last() = u"1"_s;
        QCOMPARE(Fields(setting), fields);
    }

    // Ending writes all ten entries and a new object reads the same state back; of copies,
    // the one that ends last is what the next start reads.
    void visualSettingSave() {
        Setting expected;
        MakeUnusual(expected);
        {
            Setting setting;
            MakeUnusual(setting);
        }
        Setting loaded;
        loaded.Load();
        QCOMPARE(Fields(loaded), Fields(expected));

        auto owner = std::make_unique<Setting>();
        owner->SetDivType(Setting::Divide4);
        {
            Setting dialogCopy = *owner;
            dialogCopy.SetDivType(Setting::DivideManagementList);
        }
        QCOMPARE(Stored(u"VisualSetting"_s, "DivideType"), u"106"_s);
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
        condition.SetKeyItem(u"写真タイトル"_s);
        ToviSortCondition copy;
        copy = condition;
        QVERIFY(copy.IsExecSort() && !copy.IsAscending());
        condition.ExecSort(false);
        QVERIFY(!condition.IsExecSort() && condition.IsAscending());
        condition.Ascending(false);
        copy = condition;
        QVERIFY(!copy.IsExecSort() && copy.IsAscending());
        QCOMPARE(copy.GetKeyItem(), u"写真タイトル"_s);

        {
            ToviSortCondition saved;
            saved.ExecSort(true);
            saved.Ascending(false);
            saved.SetKeyItem(u"工種"_s);
        }
        QCOMPARE(Stored(u"Sort"_s, "ExecSort"), u"101"_s);
        QCOMPARE(Stored(u"Sort"_s, "Ascending"), u"100"_s);
        Profile().WriteProfileString(u"Sort"_s, "ExecSort", u"100"_s);
        Profile().WriteProfileString(u"Sort"_s, "KeyItem", u"_未定義_"_s);
        ToviSortCondition loaded;
        loaded.SetKeyItem(u"撮影年月日"_s);
        QVERIFY(loaded.Load());
        QVERIFY(!loaded.IsExecSort() && !loaded.IsAscending());
        QCOMPARE(loaded.GetKeyItem(), u"撮影年月日"_s);
    }

    // Only a stored name that is neither empty nor "_未定義_" replaces the slot's name;
    // loading never touches colours. A manager writes its six names when it goes.
    void labelNames() {
        // The built-in names (a manager that ends writes its names: before the stored ones).
        QStringList expected = Names(ToviLabelManager());
        const QStringList stored{"良", "", "_未定義_", "a,b;c=d \"e\" [f]"};
        for (int i = 0; i < stored.size(); ++i) {
            Profile().WriteProfileString(u"Label"_s, u"Label%1"_s.arg(i + 1), stored[i]);
        }
        expected[0] = stored[0];
        expected[3] = stored[3];
        {
            ToviLabelManager manager;
            manager.GetLabelAttribute(2).SetColor(QColor(0x56, 0x34, 0x12));  // kept as BGR
            manager.Load();
            QCOMPARE(Names(manager), expected);
            QCOMPARE(manager.GetLabelAttribute(2).GetColorValue(), quint32(0x123456));
            manager.GetLabelAttribute(5).SetName(u"再撮影"_s);
        }
        expected[5] = u"再撮影"_s;
        ToviLabelManager next;
        next.Load();
        QCOMPARE(Names(next), expected);
    }

    // A store that refuses writes makes Save answer false; the objects still end quietly.
    void refusedSave() {
        const QString path = temp.filePath(u"broken.ini"_s);
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
            Profile().WriteProfileString(u"ShowSetting"_s, "Items", stored);
        }
        QStringList hidden{u"前"_s};
        QTEST(ToviItemManager().Load(hidden), "result");
        QTEST(hidden, "hidden");
    }

private:
    QTemporaryDir temp;
    int run = 0;
};

QTEST_GUILESS_MAIN(StoredSettingsTest)
#include "StoredSettingsTest.moc"
