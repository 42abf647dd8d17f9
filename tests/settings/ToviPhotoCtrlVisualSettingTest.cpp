#include "settings/ToviPhotoCtrlVisualSetting.h"

#include "platform/ToviProfile.h"

#include <QFile>
#include <QHash>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

using Setting = ToviPhotoCtrlVisualSetting;

const QString kSection = QStringLiteral("VisualSetting");

ToviProfile& Profile() {
    return ToviProfile::Instance();
}

QString Stored(const QString& entry) {
    return Profile().GetProfileString(kSection, entry, QStringLiteral("<absent>"));
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

// The field behind an entry, as a number (truth values 0 or 1).
int Field(const Setting& setting, const QString& entry) {
    const QHash<QString, int> fields = {
        {"TextArrange", setting.GetImageTextArrange()},
        {"TreeType", setting.GetTreeType()},
        {"DivideType", setting.GetDivType()},
        {"TitleShowType", setting.GetTitleShowType()},
        {"DoEditCheck", setting.GetDoEditCheck()},
        {"VisibleDetail", setting.GetVisibleDetail()},
        {"VisibleProperty", setting.GetVisibleProperty()},
        {"VisibleComment", setting.GetVisibleComment()},
        {"VisibleControlValue", setting.GetVisibleControlValue()},
    };
    if (fields.contains(entry)) {
        return fields.value(entry);
    }
    qFatal("no field for %s", qPrintable(entry));
}

}  // namespace

class ToviPhotoCtrlVisualSettingTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(temp.isValid()); }
    void init() { Profile().UseFile(temp.filePath(QStringLiteral("p%1.ini").arg(++run))); }

    // Nothing saved: the thumbnail list, captions from 写真タイトル, the check off with type 1.
    void emptyStoreGivesDefaults() {
        Setting setting;
        QVERIFY(setting.Load());
        QCOMPARE(setting.GetImageTextArrange(), Setting::TextArrangeBeside);
        QCOMPARE(setting.GetTreeType(), Setting::TreeKousyu);
        QCOMPARE(setting.GetDivType(), Setting::DivideThumbList);
        QCOMPARE(setting.GetTitleShowType(), Setting::TitlePhotoTitle);
        QVERIFY(!setting.GetDoEditCheck());
        QVERIFY(setting.GetVisibleDetail() && setting.GetVisibleProperty() &&
                setting.GetVisibleComment() && setting.GetVisibleControlValue());
        QCOMPARE(setting.GetEditCheckTypes(), QStringLiteral("1"));
    }

    // Stored numbers are value + 100: below 100 (or not a number) is "never saved" and
    // leaves the field; there is no range check above. Truth values take any non-zero.
    void loadNumbers_data() {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("expected");  // -1: the field keeps its unusual value
        for (const char* entry : {"TreeType", "VisibleComment"}) {
            QTest::addRow("%s 99 is absent", entry) << entry << "99" << -1;
            QTest::addRow("%s 100 is 0", entry) << entry << "100" << 0;
            QTest::addRow("%s 101 is 1", entry) << entry << "101" << 1;
            QTest::addRow("%s text is absent", entry) << entry << "x" << -1;
        }
        QTest::newRow("VisibleDetail 102 is true") << "VisibleDetail"
                                                   << "102" << 1;
        QTest::newRow("DivideType 150 is mode 50") << "DivideType"
                                                   << "150" << 50;
    }
    void loadNumbers() {
        QFETCH(QString, entry);
        QFETCH(QString, stored);
        QFETCH(int, expected);
        Profile().WriteProfileString(kSection, entry, stored);
        Setting setting;
        MakeUnusual(setting);
        const int before = Field(setting, entry);
        QVERIFY(setting.Load());
        QCOMPARE(Field(setting, entry), expected < 0 ? before : expected);
        // The entries that weren't stored keep their values too.
        QCOMPARE(setting.GetEditCheckTypes(), QStringLiteral("1"));
        if (entry != QLatin1String("VisibleDetail")) {
            QVERIFY(!setting.GetVisibleDetail());
        }
    }

    // EditCheckTypes is read as it stands; only an empty (or absent) text becomes "1".
    void loadEditCheckTypes_data() {
        QTest::addColumn<QString>("stored");  // null: not stored
        QTest::addColumn<QString>("expected");
        QTest::newRow("absent") << QString() << "1";
        QTest::newRow("empty") << ""
                               << "1";
        QTest::newRow("two types") << "2,1"
                                   << "2,1";
    }
    void loadEditCheckTypes() {
        QFETCH(QString, stored);
        if (!stored.isNull()) {
            Profile().WriteProfileString(kSection, QStringLiteral("EditCheckTypes"), stored);
        }
        Setting setting;
        setting.SetEditCheckTypes(QStringLiteral("0,2,1"));
        setting.Load();
        QTEST(setting.GetEditCheckTypes(), "expected");
    }

    void counts_data() {
        QTest::addColumn<int>("divType");
        QTest::addColumn<int>("cols");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("set");
        QTest::addColumn<QString>("style");  // preview, thumb, list or none
        QTest::newRow("1枚") << 0 << 1 << 1 << 1 << "preview";
        QTest::newRow("2枚") << 1 << 1 << 2 << 2 << "preview";
        QTest::newRow("4枚") << 3 << 2 << 2 << 4 << "preview";
        QTest::newRow("6枚") << 4 << 2 << 3 << 6 << "preview";
        QTest::newRow("サムネイル") << 5 << 0 << 0 << 0 << "thumb";
        QTest::newRow("リスト") << 6 << 0 << 0 << 0 << "list";
        QTest::newRow("7 counts like 6枚") << 7 << 2 << 3 << 6 << "none";
        QTest::newRow("-1 counts like 6枚") << -1 << 2 << 3 << 6 << "none";
    }
    void counts() {
        QFETCH(int, divType);
        QFETCH(QString, style);
        Setting setting;
        setting.SetDivType(static_cast<Setting::DivideType>(divType));
        QTEST(static_cast<int>(setting.GetColCount()), "cols");
        QTEST(static_cast<int>(setting.GetRowCount()), "rows");
        QTEST(static_cast<int>(setting.GetCountOfSet()), "set");
        QCOMPARE(setting.GetCountOfSet(), setting.GetRowCount() * setting.GetColCount());
        QCOMPARE(setting.IsPreviewStyle(), style == QLatin1String("preview"));
        QCOMPARE(setting.IsThumbListStyle(), style == QLatin1String("thumb"));
        QCOMPARE(setting.IsManagementListStyle(), style == QLatin1String("list"));
    }

    void isChangeEditCheckTerm_data() {
        QTest::addColumn<bool>("check");
        QTest::addColumn<QString>("types");
        QTest::addColumn<bool>("otherCheck");
        QTest::addColumn<QString>("otherTypes");
        QTest::addColumn<bool>("changed");
        QTest::newRow("off, types differ") << false << "1" << false << "2" << false;
        QTest::newRow("on, types differ") << true << "1" << true << "2" << true;
        QTest::newRow("on, same types") << true << "2,1" << true << "2,1" << false;
        QTest::newRow("on, order differs") << true << "2,1" << true << "1,2" << true;
        QTest::newRow("switched off, same types") << true << "1" << false << "1" << true;
    }
    void isChangeEditCheckTerm() {
        QFETCH(bool, check);
        QFETCH(QString, types);
        QFETCH(bool, otherCheck);
        QFETCH(QString, otherTypes);
        QFETCH(bool, changed);
        Setting a;
        a.SetDoEditCheck(check);
        a.SetEditCheckTypes(types);
        Setting b;
        b.SetDoEditCheck(otherCheck);
        b.SetEditCheckTypes(otherTypes);
        // Nothing else takes part.
        b.SetDivType(Setting::Divide1);
        b.SetVisibleComment(false);
        QCOMPARE(a.IsChangeEditCheckTerm(b), changed);
        QCOMPARE(b.IsChangeEditCheckTerm(a), changed);
    }

    // Ending writes all ten entries, + 100, and a new object reads the same state back.
    void savedOnDestructionAndReadBack() {
        {
            Setting setting;
            MakeUnusual(setting);
        }
        const QStringList entries = {"TextArrange",     "TreeType",       "DivideType",
                                     "TitleShowType",   "DoEditCheck",    "VisibleDetail",
                                     "VisibleProperty", "VisibleComment", "VisibleControlValue"};
        QStringList stored;
        for (const QString& entry : entries + QStringList{"EditCheckTypes", "EditCheckType"}) {
            stored << Stored(entry);
        }
        QCOMPARE(stored, (QStringList{"100", "102", "102", "101", "101", "100", "100", "100", "100",
                                      "0,2", "<absent>"}));

        Setting loaded;
        loaded.Load();
        Setting expected;
        MakeUnusual(expected);
        for (const QString& entry : entries) {
            QCOMPARE(Field(loaded, entry), Field(expected, entry));
        }
        QCOMPARE(loaded.GetEditCheckTypes(), expected.GetEditCheckTypes());
    }

    // Copies save too: the one that ends last is what the next start reads.
    void lastCopyToEndDecides() {
        auto owner = std::make_unique<Setting>();
        owner->SetDivType(Setting::Divide4);
        {
            Setting dialogCopy = *owner;
            dialogCopy.SetDivType(Setting::DivideManagementList);
        }
        QCOMPARE(Stored("DivideType"), QStringLiteral("106"));
        owner->SetTreeType(Setting::TreeSatsueikasyo);
        owner.reset();
        Setting next;
        next.Load();
        QCOMPARE(next.GetDivType(), Setting::Divide4);
        QCOMPARE(next.GetTreeType(), Setting::TreeSatsueikasyo);
    }

    // Copying carries the information-list entries; they are not stored by this class.
    void copyCarriesItemList() {
        ToviItemShowSettings list;
        list.Add(QStringLiteral("緯度"), false, 20, Definition::GradeOptional, InfoTypeExif);
        list.SetShowTitle(false);
        Setting source;
        source.SetItemShowSettings(list);
        Setting assigned;
        assigned = source;
        QVERIFY(Setting(source).GetItemShowSettings() == list);
        QVERIFY(assigned.GetItemShowSettings() == list);
        source.Save();
        Setting loaded;
        loaded.Load();
        QVERIFY(loaded.GetItemShowSettings().isEmpty());
    }

    // A store that refuses writes makes Save answer false; the object still ends quietly.
    void refusedSave() {
        const QString path = temp.filePath(QStringLiteral("broken.ini"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[VisualSetting\nDivideType=101\n");
        file.close();
        Profile().UseFile(path);
        auto setting = std::make_unique<Setting>();
        QVERIFY(!setting->Save());
        QVERIFY(setting->Load());
        QCOMPARE(setting->GetDivType(), Setting::DivideThumbList);
        setting.reset();
    }

private:
    QTemporaryDir temp;
    int run = 0;
};

QTEST_GUILESS_MAIN(ToviPhotoCtrlVisualSettingTest)
#include "ToviPhotoCtrlVisualSettingTest.moc"
