#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "extraction/ToviSortCondition.h"
#include "platform/ToviProfile.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviItemManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/ExifJpegWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString kShowSection = u"ShowSetting"_s;
const QString kItems = u"Items"_s;
using Setting = ToviPhotoCtrlVisualSetting;

ToviProfile& Profile() {
    return ToviProfile::Instance();
}

bool WriteFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// One section of READITEM.XML from "title:表示:必要度;..." rows.
QString Section(const QString& name, const QString& rows) {
    QString xml = u"<%1>"_s.arg(name);
    for (const QString& row : rows.split(QLatin1Char(';'))) {
        const QStringList parts = row.split(QLatin1Char(':'));
        xml += QStringLiteral(
                   "<管理項目><タイトル>%1</タイトル><必要度>%3</必要度><表示>%2</表示>"
                   "<データ数>0+</データ数><操作>Next</操作></管理項目>")
                   .arg(parts[0], parts[1], parts[2]);
    }
    return xml + u"</%1>"_s.arg(name);
}

// 国交省-20 offers six items to the information list (not MainList, or untitled, are left out).
bool WriteReadItem(const QString& programFolder) {
    const QString xml =
        Section("国交省-20",
                "写真ファイル名:MainList:必須;写真ファイルパス:Not:任意;写真タイトル:MainList:必須;"
                ":MainList:任意;工種:MainList:任意;撮影箇所:ZoomDlg:任意;"
                "施工管理値:MainList:任意;撮影年月日:MainList:必須;"
                "写真区分:MainList:条件付き必須;請負者説明文:MainList:任意") +
        Section("国交省-18", "写真ファイル名:MainList:必須;撮影箇所:MainList:任意");
    return WriteFile(programFolder + u"/READITEM.XML"_s,
                     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<information>" + xml.toUtf8() +
                         "</information>\n");
}

// A list as "title=+|-/index/grade/kind" texts.
QStringList Describe(const ToviItemShowSettings& list) {
    QStringList out;
    for (const ToviItemShowSetting& s : list) {
        out.append(u"%1=%2/%3/%4/%5"_s.arg(s.title, s.bold ? u"+"_s : u"-"_s)
                       .arg(s.index)
                       .arg(static_cast<int>(s.grade))
                       .arg(static_cast<int>(s.infoType)));
    }
    return out;
}

QStringList Hidden(const ToviItemShowSettings& list) {
    QStringList out;
    for (const ToviItemShowSetting& s : list) {
        if (!s.bold) {
            out.append(s.title);
        }
    }
    return out;
}

QString Stored(const QString& section, const QString& entry) {
    return Profile().GetProfileString(section, entry, u"<absent>"_s);
}

// Every field differs from its default, so that a load that wrongly touches one shows.
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

// The profile store and the settings kept in it. Numbers are stored as value + 100 (below 100:
// never saved); each setting writes itself when it ends.
class StoredSettingsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        program = temp.filePath(u"program"_s);
        QVERIFY(WriteReadItem(program));
        ToviItemDef::SetProgramPathOverride(program);
        mlit20 = temp.filePath(u"mlit20"_s);
        mlit18 = temp.filePath(u"mlit18"_s);
        for (const auto& [folder, dtd] :
             {std::pair(mlit20, "PHOTO05"), std::pair(mlit18, "PHOTO04")}) {
            QVERIFY(WriteFile(folder + u"/PHOTO.XML"_s,
                              QByteArray("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
                                         "<!DOCTYPE photodata SYSTEM \"") +
                                  dtd + ".DTD\">\n<photodata></photodata>\n"));
        }
    }
    void cleanupTestCase() {
        ToviItemDef::SetProgramPathOverride(QString());
        Profile().UseFile(temp.filePath(u"last.ini"_s));
    }
    void init() { Profile().UseFile(temp.filePath(u"p%1.ini"_s.arg(++run))); }

    // Values reach the file on Flush and read back; a folder removed under the store stays gone.
    void valuesReachTheFileAndReadBack() {
        QString gone;
        QTemporaryDir other;
        {
            QTemporaryDir temp;
            const QString path = temp.filePath(u"sub/p.ini"_s);
            Profile().UseFile(path);
            QVERIFY(QFileInfo(temp.filePath(u"sub"_s)).isDir());
            QVERIFY(Profile().WriteProfileInt(u"Sort"_s, u"Key"_s, 105));
            QVERIFY(Profile().WriteProfileString(u"Label"_s, u"Name0"_s, u"確認済, 要再提出"_s));
            QVERIFY(!QFile::exists(path));
            Profile().Flush();
            QCOMPARE(QSettings(path, QSettings::IniFormat).value(u"Sort/Key"_s).toInt(), 105);

            Profile().UseFile(other.filePath(u"other.ini"_s));
            Profile().UseFile(path);
            QCOMPARE(Profile().GetProfileInt(u"Sort"_s, u"Key"_s, 0), 105);
            QCOMPARE(Profile().GetProfileString(u"Label"_s, u"Name0"_s, {}), u"確認済, 要再提出"_s);
            QCOMPARE(Profile().GetProfileInt(u"Label"_s, u"Name0"_s, 7), 7);
            Profile().WriteProfileInt(u"Sort"_s, u"Key"_s, 1);
            gone = temp.path();
        }
        QVERIFY(Profile().WriteProfileInt(u"Sort"_s, u"Key"_s, 2));
        Profile().Flush();
        QVERIFY(!QFileInfo::exists(gone));
        Profile().UseFile(other.filePath(u"other.ini"_s));
        QVERIFY(!QFileInfo::exists(gone));
    }

    // Below 100 (or not a number) leaves the field; no range check above; truth is non-zero.
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

    // Ending writes all entries; of copies, the one that ends last is what the next start reads.
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

    // Sorting off means ascending after ExecSort(false) or assignment, not after Ascending/Load.
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

    // Only a name neither empty nor "_未定義_" is loaded; colours never; names saved at the end.
    void labelNames() {
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

    // Hidden titles: cut at commas, "" between two commas counts, a trailing comma doesn't.
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

    // A new kind of delivery gets the default flags, the same kind the saved hidden list.
    void loadByKindOfDelivery() {
        // Hidden items of an earlier delivery; Load reads labels, visual setting, sort too.
        Profile().WriteProfileString(kShowSection, kItems, u"写真タイトル"_s);
        Profile().WriteProfileString(u"VisualSetting"_s, u"VisibleControlValue"_s, u"100"_s);
        Profile().WriteProfileString(u"Label"_s, u"Label2"_s, u"要確認"_s);
        Profile().WriteProfileString(u"VisualSetting"_s, u"DivideType"_s, u"103"_s);
        Profile().WriteProfileString(u"Sort"_s, u"KeyItem"_s, u"工種"_s);
        QStringList firstList;
        QString firstHidden;
        {
            ToviData doc(nullptr, mlit20, PhotoXMLMlit);
            QCOMPARE(doc.GetErrorType(), ReadErrNone);
            QVERIFY(!doc.GetItemDef()->TypeIsCorresponding());
            QCOMPARE(doc.GetVisualSetting().GetDivType(), Setting::DivideThumbList);
            QVERIFY(doc.Load());
            QCOMPARE(doc.GetLabelManager()->GetLabelAttribute(1).GetName(), u"要確認"_s);
            QCOMPARE(doc.GetVisualSetting().GetDivType(), Setting::Divide4);
            QCOMPARE(doc.GetSortCondition().GetKeyItem(), u"工種"_s);
            firstList = Describe(doc.GetItemManager()->GetItemShowSettings());
            // Only MainList records with a title, in file order, then the facts.
            QCOMPARE(firstList.mid(0, 7),
                     (QStringList{"写真ファイル名=-/0/1/0", "写真タイトル=+/2/1/0", "工種=-/4/3/0",
                                  "施工管理値=+/6/3/0", "撮影年月日=+/7/1/0", "写真区分=-/8/2/0",
                                  "請負者説明文=+/9/3/0"}));
            QCOMPARE(firstList.at(7), u"ファイルサイズ=+/10/3/1"_s);  // the facts follow
            QCOMPARE(firstList.last(), u"Fナンバー=-/10/3/2"_s);
            QVERIFY(doc.GetVisualSetting().GetItemShowSettings() ==
                    doc.GetItemManager()->GetItemShowSettings());
            // The default list holds 施工管理値, which switches its panel on.
            QVERIFY(doc.GetVisualSetting().GetVisibleControlValue());
            firstHidden = Hidden(doc.GetItemManager()->GetItemShowSettings()).join(u',');
        }
        QCOMPARE(Profile().GetProfileString(kShowSection, kItems, QString()), firstHidden);

        // Same kind again, nothing changed: the same list.
        {
            ToviData doc(nullptr, mlit20, PhotoXMLMlit);
            QVERIFY(doc.GetItemDef()->TypeIsCorresponding());
            doc.Load();
            QCOMPARE(Describe(doc.GetItemManager()->GetItemShowSettings()), firstList);

            // The settings dialog's OK: the changed list goes through SetManager and is saved;
            // the labels always go, the items only when asked.
            ToviItemManager changed = *doc.GetItemManager();
            ToviItemShowSettings& list = changed.GetItemShowSettings();
            list[list.Find(u"写真タイトル"_s)].Bold(false);
            list[list.Find(u"高度"_s)].Bold(true);
            ToviLabelManager labels;
            labels.GetLabelAttribute(0).SetName(u"合格"_s);
            doc.SetManager(labels, ToviItemManager(), false);
            QCOMPARE(doc.GetLabelManager()->GetLabelAttribute(0).GetName(), u"合格"_s);
            QCOMPARE(Describe(doc.GetItemManager()->GetItemShowSettings()), firstList);
            doc.SetManager(labels, changed, true);
            QVERIFY(doc.GetItemManager()->Save());
            doc.GetVisualSetting().SetVisibleControlValue(false);
        }
        // Titles compare without regard to case; an unknown title simply drops out.
        QString stored = Profile().GetProfileString(kShowSection, kItems, QString());
        stored.replace(u"Exifバージョン"_s, u"EXIFバージョン"_s);
        Profile().WriteProfileString(kShowSection, kItems, stored + u",消えた項目"_s);
        QStringList hidden = stored.split(QLatin1Char(','));
        hidden.replaceInStrings(u"EXIFバージョン"_s, u"Exifバージョン"_s);
        {
            ToviData doc(nullptr, mlit20, PhotoXMLMlit);
            doc.Load();
            const ToviItemShowSettings& list = doc.GetItemManager()->GetItemShowSettings();
            QCOMPARE(Hidden(list), hidden);
            QCOMPARE(Describe(list).replaceInStrings(u"=-/"_s, u"=+/"_s),
                     firstList.replaceInStrings(u"=-/"_s, u"=+/"_s));
            // A saved list doesn't touch the control-value panel.
            QVERIFY(!doc.GetVisualSetting().GetVisibleControlValue());
        }
        QVERIFY(
            !Profile().GetProfileString(kShowSection, kItems, QString()).contains(u"消えた項目"_s));

        // Another kind: defaults, and the saved list is overwritten.
        {
            ToviData doc(nullptr, mlit18, PhotoXMLMlit);
            QVERIFY(!doc.GetItemDef()->TypeIsCorresponding());
            doc.Load();
            const ToviItemShowSettings& list = doc.GetItemManager()->GetItemShowSettings();
            QCOMPARE(Describe(list).mid(0, 3),
                     (QStringList{"写真ファイル名=-/0/1/0", "撮影箇所=+/1/3/0",
                                  "ファイルサイズ=+/2/3/1"}));
            QVERIFY(!list.IsBold(u"高度"_s));
        }
        QVERIFY(!Profile()
                     .GetProfileString(kShowSection, kItems, QString())
                     .contains(u"写真タイトル"_s));
    }

    // The first 19 characters, cut at commas, each read like atoi and kept to eight bits.
    void parseEditCheckTypes_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<int>>("types");
        QTest::newRow("chain order kept") << "0,2,1" << QList<int>{0, 2, 1};
        QTest::newRow("low eight bits") << "258,256" << QList<int>{2, 0};
        QTest::newRow("negative wraps") << "-1" << QList<int>{255};
        QTest::newRow("cut after 19 characters")
            << "1,1,1,1,1,1,1,1,1,1,2" << QList<int>{1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    }
    void parseEditCheckTypes() {
        QFETCH(QString, text);
        QTEST(ToviData::ParseEditCheckTypes(text), "types");
    }

    // Rows follow the settings' order, not the file's; hidden entries give none; a repeating
    // item gives one per value; 撮影年月日 shows "/" for "-"; an unknown fact shows empty.
    void textPairs() {
        ToviData doc(nullptr, mlit20, PhotoXMLMlit);
        ExifFacts facts;
        facts.model = u"G800 SE"_s;
        facts.artist = u"現場 太郎"_s;
        facts.dateTimeOriginal = QDateTime(QDate(2024, 5, 1), QTime(9, 30, 15));
        QImage image(640, 480, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        QVERIFY(QDir().mkpath(mlit20 + u"/PIC"_s));
        QVERIFY(WriteExifJpeg(mlit20 + u"/PIC/P0000001.JPG"_s, image, facts));

        ToviPhoto photo(&doc, {ToviItem(0, u"P0000001.JPG"_s), ToviItem(4, u"道路土工"_s),
                               ToviItem(2, u"掘削状況"_s), ToviItem(4, u"舗装工"_s),
                               ToviItem(7, u"2024-05-01"_s), ToviItem(9, u"No.1-2 測点"_s)});
        photo.LoadExif();

        ToviItemShowSettings list;
        for (
            const QString& row :
            u"工種:0:4:+;請負者説明文:0:9:-;幅×高さ:1:10:+;写真タイトル:0:2:+;撮影年月日:0:7:+;"
            "総画素数:1:10:+;未知:1:10:+;画像入力機器のモデル名:2:10:+;作者名:2:10:+;撮影日時:2:10:+"_s
                .split(QLatin1Char(';'))) {
            const QStringList p = row.split(QLatin1Char(':'));
            list.Add(p[0], p[3] == "+"_L1, p[2].toInt(), Definition::GradeOptional,
                     static_cast<InfoType>(p[1].toInt()));
        }
        ToviTextPairArray pairs{ToviTextPair(u"前"_s, u"残り"_s)};
        QVERIFY(photo.GetTextPairs(doc.GetItemDef(), list, pairs));
        QStringList got;
        for (const ToviTextPair& pair : pairs) {
            got.append(pair.GetItem() + QLatin1Char('=') + pair.GetValue());
        }
        QCOMPARE(got, (QStringList{"工種=道路土工", "工種=舗装工", "幅×高さ=640×480",
                                   "写真タイトル=掘削状況", "撮影年月日=2024/05/01",
                                   "総画素数=31万画素", "未知=", "画像入力機器のモデル名=G800 SE",
                                   "作者名=", "撮影日時=2024/05/01 09:30:15"}));
        // Without definitions there is nothing to show, and nothing is left of the old rows.
        QVERIFY(!photo.GetTextPairs(nullptr, list, pairs));
        QVERIFY(pairs.isEmpty());
    }

private:
    QTemporaryDir temp;
    QString program;
    QString mlit20;
    QString mlit18;
    int run = 0;
};

QTEST_GUILESS_MAIN(StoredSettingsTest)
#include "StoredSettingsTest.moc"
