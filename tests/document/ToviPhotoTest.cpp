#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "document/ToviPhotoRef.h"
#include "document/ToviTextPairArray.h"
#include "platform/ToviProfile.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <stdexcept>

namespace {

// "a;b;c" as a list; empty parts are left out, so "" is the empty list.
QStringList List(const QString& text) {
    return text.split(QLatin1Char(';'), Qt::SkipEmptyParts);
}

bool WriteFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// A READITEM.XML of optional items. 国交省-20 defines every title the paths use; 国交省-18 lacks
// the photograph's file name and 参考図ファイル名; 農水省-23 defines 参考図1, which it ignores.
bool WriteReadItem(const QString& programFolder) {
    const QList<QPair<QString, QString>> sections{
        {"国交省-20",
         "写真ファイル名;写真ファイルパス;参考図1;参考図2;参考図3;参考図ファイル名;"
         "参考図ファイルパス1;"
         "参考図ファイルパス2;参考図ファイルパス3;参考図ファイルパス;写真タイトル;撮影年月日;工種;"
         "備考"},
        {"国交省-18", "写真タイトル;参考図1"},
        {"農水省-23",
         "写真ファイル名;写真ファイルパス;参考図1;参考図ファイル名;参考図ファイルパス1;"
         "参考図ファイルパス"}};
    QString xml = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<information>");
    for (const auto& [name, titles] : sections) {
        xml += QStringLiteral("<%1>").arg(name);
        for (const QString& title : List(titles)) {
            xml += QStringLiteral(
                       "<管理項目><タイトル>%1</タイトル><必要度>任意</必要度><表示>Not</表示>"
                       "<データ数>0+</データ数><操作>Next</操作></管理項目>")
                       .arg(title);
        }
        xml += QStringLiteral("</%1>").arg(name);
    }
    return WriteFile(programFolder + QStringLiteral("/READITEM.XML"),
                     (xml + QStringLiteral("</information>\n")).toUtf8());
}

// Items from "title=value" texts, in the given order.
ToviItemArray MakeItems(const ToviItemDef& def, const QStringList& entries) {
    ToviItemArray items;
    for (const QString& entry : entries) {
        const qsizetype eq = entry.indexOf(QLatin1Char('='));
        const int index = def.GetIndexFromTitle(entry.left(eq));
        if (index < 0) {
            qFatal("no definition titled %s", qPrintable(entry.left(eq)));
        }
        items.append(ToviItem(index, entry.mid(eq + 1)));
    }
    return items;
}

// Replaces "{root}/" (and "{old}/") by the given folders.
QStringList Expand(QStringList texts, const QString& root, const QString& old = {}) {
    for (QString& text : texts) {
        text.replace(QStringLiteral("{root}"), root + '/')
            .replace(QStringLiteral("{old}"), old + '/');
    }
    return texts;
}

}  // namespace

// Where a photograph's files are, and the document's look-ups over photographs the test makes.
class ToviPhotoTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    int serial = 0;

    // A fresh folder, without a trailing separator as a host may pass it.
    QString NewFolder() {
        const QString folder = temp.filePath(QStringLiteral("d%1").arg(++serial));
        QDir().mkpath(folder);
        return folder;
    }
    static void CreateFiles(const QString& folder, const QString& files) {
        for (const QString& file : List(files)) {
            QVERIFY(WriteFile(folder + '/' + file, "x"));
        }
    }
    // family 0 with PHOTO05.DTD reads 国交省-20, with PHOTO04.DTD 国交省-18; family 2 with
    // PHOTO05.DTD reads 農水省-23. The photographs are made from "title=value;..." texts.
    static std::unique_ptr<ToviData> Open(const QString& folder, const QStringList& photos = {},
                                          PhotoXMLType family = PhotoXMLMlit,
                                          const QByteArray& dtd = "PHOTO05.DTD") {
        WriteFile(folder + QStringLiteral("/PHOTO.XML"),
                  "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n<!DOCTYPE photodata SYSTEM \"" +
                      dtd + "\">\n");
        auto doc = std::make_unique<ToviData>(nullptr, folder, family);
        for (const QString& items : photos) {
            doc->GetPhotoDataArray()->append(
                std::make_unique<ToviPhoto>(doc.get(), MakeItems(*doc->GetItemDef(), List(items))));
        }
        return doc;
    }
    static ToviPhoto& Only(ToviData& doc) { return *doc.GetPhotoActualPhotoArray(0); }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("profile.ini")));
        const QString program = temp.filePath(QStringLiteral("program"));
        QVERIFY(WriteReadItem(program));
        ToviItemDef::SetProgramPathOverride(program);
    }
    void cleanupTestCase() { ToviItemDef::SetProgramPathOverride(QString()); }

    // The titles depend on the family and the stand-alone flag; paths follow file order.
    void makePath_data() {
        QTest::addColumn<int>("family");  // 4: family 0 with PHOTO04.DTD
        QTest::addColumn<bool>("standAlone");
        QTest::addColumn<QString>("items");
        QTest::addColumn<QString>("image");
        QTest::addColumn<QString>("drawings");
        // clang-format off
        QTest::newRow("mlit relative, in file order") << 0 << true
            << "参考図ファイル名=D4.JPG;参考図3=D3.JPG;写真ファイル名=P1.JPG;参考図1=D1.JPG;参考図2=;"
               "写真ファイルパス=/m/p.jpg;参考図ファイルパス1=/m/d1.jpg"
            << "{root}PIC/P1.JPG" << "{root}DRA/D4.JPG;{root}DRA/D3.JPG;{root}DRA/D1.JPG";
        QTest::newRow("maff: repeating drawing element, 参考図1 ignored") << 2 << true
            << "参考図ファイル名=A.JPG;写真ファイル名=P.JPG;参考図1=D1.JPG;参考図ファイル名=B.JPG"
            << "{root}PIC/P.JPG" << "{root}DRA/A.JPG;{root}DRA/B.JPG";
        QTest::newRow("photograph title undefined") << 4 << true
            << "写真タイトル=T;参考図1=D1.JPG" << "" << "{root}DRA/D1.JPG";
        QTest::newRow("mlit full paths") << 0 << false
            << "写真ファイル名=P1.JPG;写真ファイルパス=/m/PIC/P1.JPG;参考図1=D1.JPG;"
               "参考図ファイルパス1=/m/DRA/D1.JPG;参考図ファイルパス2=;"
               "参考図ファイルパス=/m/DRA/D4.JPG"
            << "/m/PIC/P1.JPG" << "/m/DRA/D1.JPG;/m/DRA/D4.JPG";
        QTest::newRow("maff full paths ignore 参考図ファイルパス1") << 2 << false
            << "写真ファイルパス=/m/P.JPG;参考図ファイルパス1=/m/D1.JPG;参考図ファイルパス=/m/D.JPG"
            << "/m/P.JPG" << "/m/D.JPG";
        // clang-format on
    }
    void makePath() {
        QFETCH(int, family);
        QFETCH(bool, standAlone);
        QFETCH(QString, items);
        QFETCH(QString, image);
        QFETCH(QString, drawings);
        const QString folder = NewFolder();
        auto doc = Open(folder, {}, static_cast<PhotoXMLType>(family % 4),
                        family == 4 ? "PHOTO04.DTD" : "PHOTO05.DTD");
        QCOMPARE(doc->GetErrorType(), ReadErrNone);
        doc->SetStandAlone(standAlone);
        ToviPhoto photo(doc.get(), MakeItems(*doc->GetItemDef(), List(items)));
        QCOMPARE(photo.GetImagePath(), Expand({image}, folder).first());
        QCOMPARE(photo.PicturePaths(), Expand(List(drawings), folder));
        // A plain walk after a change of root keeps nothing of the old paths.
        doc->RootPath(temp.filePath(QStringLiteral("elsewhere")));
        photo.MakePath();
        const QString moved = standAlone ? temp.filePath(QStringLiteral("elsewhere")) : folder;
        QCOMPARE(photo.GetImagePath(), Expand({image}, moved).first());
        QCOMPARE(photo.PicturePaths(), Expand(List(drawings), moved));
    }

    // A value that could reach outside PIC/ or DRA/ names no file, even when the file it
    // points at exists; a plain name beside it is still found.
    void valueOutsideFolderNamesNoFile_data() {
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("exists");
        QTest::newRow("plain name") << "P.JPG" << true;
        QTest::newRow("parent") << "../../outside.jpg" << false;
        QTest::newRow("parent, backslash") << "..\\..\\outside.jpg" << false;
        QTest::newRow("sub-folder") << "sub/P.JPG" << false;
        QTest::newRow("absolute") << "{outside}" << false;
        QTest::newRow("drive letter") << "C:P.JPG" << false;
    }
    void valueOutsideFolderNamesNoFile() {
        QFETCH(QString, value);
        QFETCH(bool, exists);
        const QString folder = NewFolder();
        const QString outside = temp.filePath(QStringLiteral("outside.jpg"));
        QVERIFY(WriteFile(outside, "x"));
        CreateFiles(folder,
                    "PIC/P.JPG;DRA/P.JPG;PIC/sub/P.JPG;DRA/sub/P.JPG;PIC/C:P.JPG;DRA/C:P.JPG");
        value.replace(QStringLiteral("{outside}"), outside);
        auto doc = Open(folder, {QStringLiteral("写真ファイル名=%1;参考図1=%1").arg(value)});
        ToviPhoto& photo = Only(*doc);
        photo.UpdateImagePath();
        QCOMPARE(photo.IsExistFile(), exists);
        QCOMPARE(photo.GetImagePath().isEmpty(), !exists);
        QCOMPARE(photo.PicturePaths().size(), 1);
        QCOMPARE(photo.PicturePaths().first().isEmpty(), !exists);
    }

    // After a change of media, a file found under the old root keeps its path; one not found
    // moves under the new root. {old} and {root} stand for the two roots.
    void updateWalkAfterRootChange_data() {
        QTest::addColumn<QString>("items");
        QTest::addColumn<QString>("oldFiles");
        QTest::addColumn<QString>("newFiles");
        QTest::addColumn<QString>("image");
        QTest::addColumn<QString>("drawings");
        QTest::addColumn<bool>("exists");
        const QString disc =
            "写真ファイル名=P1.JPG;参考図1=D1.JPG;参考図2=D2.JPG;参考図3=;参考図ファイル名=D4.JPG";
        // clang-format off
        QTest::newRow("found drawing stays")
            << disc << "PIC/P1.JPG;DRA/D1.JPG" << "DRA/D2.JPG;DRA/D4.JPG"
            << "{old}PIC/P1.JPG" << "{old}DRA/D1.JPG;{root}DRA/D2.JPG;{root}DRA/D4.JPG" << true;
        QTest::newRow("a drawing missing everywhere")
            << disc << "PIC/P1.JPG;DRA/D1.JPG;DRA/D2.JPG" << ""
            << "{old}PIC/P1.JPG" << "{old}DRA/D1.JPG;{old}DRA/D2.JPG;{root}DRA/D4.JPG" << false;
        QTest::newRow("image missing everywhere")
            << "写真ファイル名=P1.JPG;参考図1=D1.JPG" << "DRA/D1.JPG" << ""
            << "{root}PIC/P1.JPG" << "{old}DRA/D1.JPG" << false;
        // D1.JPG is missing, but the kept XD1.JPG holds it as a substring: intended.
        QTest::newRow("longer kept name counts as found")
            << "写真ファイル名=P1.JPG;参考図1=D1.JPG;参考図2=XD1.JPG" << "DRA/XD1.JPG"
            << "PIC/P1.JPG;DRA/D1.JPG" << "{root}PIC/P1.JPG" << "{old}DRA/XD1.JPG;{old}DRA/XD1.JPG"
            << true;
        // clang-format on
    }
    void updateWalkAfterRootChange() {
        QFETCH(QString, items);
        QFETCH(QString, oldFiles);
        QFETCH(QString, newFiles);
        QFETCH(QString, image);
        QFETCH(QString, drawings);
        const QString oldFolder = NewFolder();
        const QString newFolder = NewFolder();
        CreateFiles(oldFolder, oldFiles);
        CreateFiles(newFolder, newFiles);
        auto doc = Open(oldFolder, {items});
        ToviPhoto& photo = Only(*doc);
        QVERIFY(!photo.IsExistFile());  // nothing has been tested yet
        doc->RootPath(newFolder);
        photo.UpdateImagePath();
        QCOMPARE(photo.GetImagePath(), Expand({image}, newFolder, oldFolder).first());
        QCOMPARE(photo.PicturePaths(), Expand(List(drawings), newFolder, oldFolder));
        QTEST(photo.IsExistFile(), "exists");
    }

    // The names the user still has to bring, always by file name. Once any drawing of the
    // photograph exists, none of its drawing names is reported.
    void outputFilename_data() {
        QTest::addColumn<QString>("items");
        QTest::addColumn<QString>("files");
        QTest::addColumn<QString>("expected");
        const QString mixed =
            "写真ファイル名=P1.JPG;参考図1=D1.JPG;参考図2=;参考図ファイル名=D4.JPG";
        QTest::newRow("nothing exists") << mixed << ""
                                        << "P1.JPG;D1.JPG;D4.JPG";
        QTest::newRow("one drawing hides the others") << mixed << "DRA/D1.JPG"
                                                      << "P1.JPG";
        QTest::newRow("empty photograph value") << "写真ファイル名=;参考図1=D1.JPG"
                                                << ""
                                                << "D1.JPG";
    }
    void outputFilename() {
        QFETCH(QString, items);
        QFETCH(QString, files);
        QFETCH(QString, expected);
        const QString folder = NewFolder();
        CreateFiles(folder, files);
        auto doc = Open(folder, {items});
        QStringList names{"kept"};
        Only(*doc).GetOutputFilename(names);
        QCOMPARE(names, QStringList{"kept"} + List(expected));
    }

    // The first value of each index that has an item, in the order asked; a failed thumbnail
    // is tried once per release, while the full picture is tried anew.
    void titlesAndImageLoading() {
        const QString folder = NewFolder();
        auto doc = Open(folder, {"工種=土工;備考=first;備考=second;写真ファイル名=LATE.JPG"});
        ToviPhoto& photo = Only(*doc);
        const ToviItemDef& def = *doc->GetItemDef();
        QStringList values{"stale"};
        photo.GetTitleFromIndex({def.GetIndexFromTitle(QStringLiteral("備考")),
                                 def.GetIndexFromTitle(QStringLiteral("参考図3")),
                                 def.GetIndexFromTitle(QStringLiteral("工種"))},
                                values);
        QCOMPARE(values, (QStringList{"first", "土工"}));

        QVERIFY(!photo.LoadThumb());
        QImage picture(320, 240, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/PIC")));
        QVERIFY(picture.save(folder + QStringLiteral("/PIC/LATE.JPG"), "JPG"));
        QVERIFY(photo.LoadThumb());  // already tried: not read again
        QVERIFY(!photo.GetImage().IsValid());
        QVERIFY(photo.LoadImage());
        photo.ReleaseImage();
        QVERIFY(photo.LoadThumb() && photo.GetImage().IsValid());
    }

    // Positions speak of the current array, photo indexes of the actual array. Outside the
    // current array GetPhotoIndex fails (gives -1 when it is empty); the others give -1 or null.
    void positionsAndPhotoIndexes() {
        auto doc = Open(NewFolder(),
                        {"写真ファイル名=A.JPG", "写真ファイル名=B.JPG", "写真ファイル名=C.JPG"});
        const ToviPhotoArray& actual = *doc->GetPhotoDataArray();
        QVERIFY(doc->IsPhotoArrayEmpty());
        QCOMPARE(doc->GetPhotoIndex(0), -1);
        doc->CurrentArray().Assign({2, 0});
        QCOMPARE(doc->GetTotalCountPhoto(), 3);
        QCOMPARE(doc->GetCurrentPhotoCount(), 2);
        QCOMPARE(doc->GetPhotoIndex(1), 0);
        QCOMPARE(doc->GetIndexPhotoArray(0), 2);
        QCOMPARE(doc->GetPhoto(1), actual[0]);
        QCOMPARE(doc->GetPhotoActualPhotoArray(1), actual[1]);
        for (int outside : {-1, 2}) {
            QVERIFY_THROWS_EXCEPTION(std::out_of_range, doc->GetPhotoIndex(outside));
            QCOMPARE(doc->GetIndexPhotoArray(outside), -1);
            QCOMPARE(doc->GetPhoto(outside), nullptr);
        }
        QCOMPARE(doc->GetPhotoActualPhotoArray(-1), nullptr);
        QCOMPARE(doc->GetPhotoActualPhotoArray(3), nullptr);
    }

    // Distinct non-empty values over all photographs, appended to what the caller holds; the
    // answer says whether an empty value was met.
    void photoItemValues_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QStringList>("after");
        QTest::addColumn<bool>("metEmpty");
        QTest::newRow("additions only")
            << "工種" << QStringList{"舗装工", "other"}
            << QStringList{"舗装工", "other", "土工", "擁壁工"} << false;
        QTest::newRow("empty value met") << "備考" << QStringList{} << QStringList{"a"} << true;
        QTest::newRow("defined, never used")
            << "参考図3" << QStringList{"x"} << QStringList{"x"} << false;
        QTest::newRow("unknown title") << "施工者" << QStringList{"x"} << QStringList{"x"} << false;
    }
    void photoItemValues() {
        QFETCH(QString, title);
        QFETCH(QStringList, before);
        auto doc = Open(NewFolder(), {"工種=土工;工種=擁壁工;備考=a", "工種=擁壁工;備考=",
                                      "工種=土工;工種=舗装工;備考=a", "写真ファイル名=P.JPG"});
        QStringList values = before;
        QTEST(doc->GetPhotoItemValue(title, values), "metEmpty");
        QTEST(values, "after");
    }

    // A photo reference is an ordered set; a text pair's single value is the first match; the
    // actual array finds a photograph by its image path in any case.
    void lookUps() {
        ToviPhotoRef ref;
        QList<int> positions;
        for (int index : {5, 3, 5, 3, 0}) {
            positions.append(ref.Add(index));
        }
        QCOMPARE(positions, (QList<int>{0, 1, 0, 1, 2}));
        ToviPhotoRef other;
        other.Assign({3, 9});
        QCOMPARE(ref.Append(other), 1);
        QCOMPARE(ref.Indexes(), (QList<int>{5, 3, 0, 9}));

        const ToviTextPairArray pairs{
            ToviTextPair(QStringLiteral("撮影箇所"), QStringLiteral("橋台")),
            ToviTextPair(QStringLiteral("撮影箇所"), QStringLiteral("橋脚"))};
        QString value = QStringLiteral("kept");
        pairs.GetValue(QStringLiteral("撮影箇所"), value);
        QCOMPARE(value, QStringLiteral("橋台"));
        QStringList values{"kept"};
        pairs.GetValue(QStringLiteral("撮影箇所"), values);
        QCOMPARE(values, (QStringList{"kept", "橋台", "橋脚"}));

        auto doc = Open(NewFolder(), {"写真ファイル名=A.JPG", "写真ファイル名=B.JPG"});
        ToviPhotoArray& actual = *doc->GetPhotoDataArray();
        QCOMPARE(actual.GetData(doc->RootPath() + QStringLiteral("/pic/b.jpg")), actual[1]);
        QCOMPARE(actual.GetData(QStringLiteral("B.JPG")), nullptr);
    }
};

QTEST_GUILESS_MAIN(ToviPhotoTest)
#include "ToviPhotoTest.moc"
