#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviItemDef.h"
#include "platform/ToviProfile.h"
#include "tests/document/DocumentFixture.h"

#include <QTemporaryDir>
#include <QtTest>

#include <stdexcept>

using fixture::Expand;
using fixture::List;
using fixture::MakeItems;

namespace {

const QString kDiscItems =
    "写真ファイル名=P1.JPG;参考図1=D1.JPG;参考図2=D2.JPG;参考図3=;参考図ファイル名=D4.JPG";

}  // namespace

class ToviPhotoTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir temp;
    int serial = 0;

    // A fresh folder; without a trailing separator, as a host may pass it.
    QString NewFolder(const char* name) {
        const QString folder = temp.filePath(QStringLiteral("%1-%2").arg(name).arg(++serial));
        QDir().mkpath(folder);
        return folder;
    }
    static void CreateFiles(const QString& root, const QString& files) {
        for (const QString& file : List(files)) {
            QVERIFY(fixture::WriteFile(root + file, "x"));
        }
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("profile.ini")));
        const QString program = temp.filePath(QStringLiteral("program"));
        QVERIFY(fixture::WriteReadItem(program));
        ToviItemDef::SetProgramPathOverride(program);
    }
    void cleanupTestCase() { ToviItemDef::SetProgramPathOverride(QString()); }

    // The titles depend on the family and the stand-alone flag; paths follow file order.
    void makePath_data() {
        QTest::addColumn<int>("family");
        QTest::addColumn<QByteArray>("dtd");
        QTest::addColumn<bool>("standAlone");
        QTest::addColumn<QString>("items");
        QTest::addColumn<QString>("image");
        QTest::addColumn<QString>("drawings");
        const QByteArray v5 = "PHOTO05.DTD";
        // clang-format off
        QTest::newRow("mlit relative") << 0 << v5 << true
            << "写真ファイル名=P1.JPG;参考図1=D1.JPG;参考図2=;参考図ファイル名=D4.JPG;"
               "写真ファイルパス=/m/p.jpg;参考図ファイルパス1=/m/d1.jpg"
            << "{root}PIC/P1.JPG" << "{root}DRA/D1.JPG;{root}DRA/D4.JPG";
        QTest::newRow("file order, not title order") << 0 << v5 << true
            << "参考図ファイル名=D4.JPG;参考図3=D3.JPG;写真ファイル名=P1.JPG;参考図1=D1.JPG"
            << "{root}PIC/P1.JPG" << "{root}DRA/D4.JPG;{root}DRA/D3.JPG;{root}DRA/D1.JPG";
        QTest::newRow("repeating drawing element") << 2 << v5 << true
            << "参考図ファイル名=A.JPG;写真ファイル名=P.JPG;参考図ファイル名=B.JPG"
            << "{root}PIC/P.JPG" << "{root}DRA/A.JPG;{root}DRA/B.JPG";
        QTest::newRow("maff ignores 参考図1") << 2 << v5 << true
            << "写真ファイル名=P1.JPG;参考図1=D1.JPG;参考図ファイル名=D4.JPG"
            << "{root}PIC/P1.JPG" << "{root}DRA/D4.JPG";
        QTest::newRow("photograph title undefined") << 0 << QByteArray("PHOTO04.DTD") << true
            << "写真タイトル=T;参考図1=D1.JPG" << "" << "{root}DRA/D1.JPG";
        QTest::newRow("mlit full paths") << 0 << v5 << false
            << "写真ファイル名=P1.JPG;写真ファイルパス=/m/PIC/P1.JPG;参考図1=D1.JPG;"
               "参考図ファイルパス1=/m/DRA/D1.JPG;参考図ファイルパス2=;"
               "参考図ファイルパス=/m/DRA/D4.JPG"
            << "/m/PIC/P1.JPG" << "/m/DRA/D1.JPG;/m/DRA/D4.JPG";
        QTest::newRow("maff full paths ignore 参考図ファイルパス1") << 2 << v5 << false
            << "写真ファイルパス=/m/P.JPG;参考図ファイルパス1=/m/D1.JPG;参考図ファイルパス=/m/D.JPG"
            << "/m/P.JPG" << "/m/D.JPG";
        // clang-format on
    }
    void makePath() {
        QFETCH(int, family);
        QFETCH(QByteArray, dtd);
        QFETCH(bool, standAlone);
        QFETCH(QString, items);
        QFETCH(QString, image);
        QFETCH(QString, drawings);
        const QString folder = NewFolder("paths");
        auto doc = fixture::OpenDocument(folder, static_cast<PhotoXMLType>(family), dtd);
        QCOMPARE(doc->GetErrorType(), ReadErrNone);
        doc->SetStandAlone(standAlone);
        ToviPhoto photo(doc.get(), MakeItems(*doc->GetItemDef(), List(items)));
        const QString root = folder + QLatin1Char('/');
        QCOMPARE(photo.GetImagePath(), Expand({image}, root).first());
        QCOMPARE(photo.PicturePaths(), Expand(List(drawings), root));

        // A plain walk after a change of root keeps nothing of the old paths.
        doc->RootPath(temp.filePath(QStringLiteral("elsewhere")));
        photo.MakePath();
        const QString moved = standAlone ? temp.filePath(QStringLiteral("elsewhere/")) : root;
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
        const QString folder = NewFolder("confine");
        const QString root = folder + QLatin1Char('/');
        const QString outside = temp.filePath(QStringLiteral("outside.jpg"));
        QVERIFY(fixture::WriteJpeg(outside));
        CreateFiles(root,
                    "PIC/P.JPG;DRA/P.JPG;PIC/sub/P.JPG;DRA/sub/P.JPG;PIC/C:P.JPG;DRA/C:P.JPG");
        value.replace(QStringLiteral("{outside}"), outside);
        auto doc = fixture::OpenDocument(folder, PhotoXMLMlit);
        ToviPhoto photo(doc.get(),
                        MakeItems(*doc->GetItemDef(), {QStringLiteral("写真ファイル名=") + value,
                                                       QStringLiteral("参考図1=") + value}));
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
        // clang-format off
        QTest::newRow("found drawing stays")
            << kDiscItems << "PIC/P1.JPG;DRA/D1.JPG" << "DRA/D2.JPG;DRA/D4.JPG"
            << "{old}PIC/P1.JPG" << "{old}DRA/D1.JPG;{root}DRA/D2.JPG;{root}DRA/D4.JPG" << true;
        QTest::newRow("a drawing missing everywhere")
            << kDiscItems << "PIC/P1.JPG;DRA/D1.JPG;DRA/D2.JPG" << ""
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
        const QString oldFolder = NewFolder("disc1");
        const QString newFolder = NewFolder("disc2");
        const QString oldRoot = oldFolder + QLatin1Char('/');
        const QString newRoot = newFolder + QLatin1Char('/');
        CreateFiles(oldRoot, oldFiles);
        CreateFiles(newRoot, newFiles);
        auto doc = fixture::OpenDocument(oldFolder, PhotoXMLMlit);
        ToviPhoto photo(doc.get(), MakeItems(*doc->GetItemDef(), List(items)));
        QVERIFY(!photo.IsExistFile());  // nothing has been tested yet
        doc->RootPath(newFolder);
        photo.UpdateImagePath();
        QCOMPARE(photo.GetImagePath(), Expand({image}, newRoot, oldRoot).first());
        QCOMPARE(photo.PicturePaths(), Expand(List(drawings), newRoot, oldRoot));
        QTEST(photo.IsExistFile(), "exists");
    }

    // The first value of each index that has an item, in the order asked.
    void titlesFromIndexes() {
        auto doc = fixture::OpenDocument(NewFolder("items"), PhotoXMLMlit);
        const ToviItemDef& def = *doc->GetItemDef();
        ToviPhoto photo(doc.get(), MakeItems(def, {"工種=土工", "備考=first", "備考=second"}));
        const QList<int> wanted{def.GetIndexFromTitle(QStringLiteral("備考")),
                                def.GetIndexFromTitle(QStringLiteral("参考図3")),
                                def.GetIndexFromTitle(QStringLiteral("工種"))};
        QStringList values{"stale"};
        photo.GetTitleFromIndex(wanted, values);
        QCOMPARE(values, (QStringList{"first", "土工"}));
    }

    // A failed thumbnail is tried once per release, while the full picture is tried anew.
    void imageLoadingState() {
        const QString folder = NewFolder("images");
        auto doc = fixture::OpenDocument(folder, PhotoXMLMlit);
        ToviPhoto late(doc.get(), MakeItems(*doc->GetItemDef(), {"写真ファイル名=LATE.JPG"}));
        QVERIFY(!late.LoadThumb());
        QImage picture(320, 240, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/PIC")));
        QVERIFY(picture.save(folder + QStringLiteral("/PIC/LATE.JPG"), "JPG"));
        QVERIFY(late.LoadThumb());  // already tried: not read again
        QVERIFY(!late.GetImage().IsValid());
        QVERIFY(late.LoadImage());
        late.ReleaseImage();
        QVERIFY(late.LoadThumb() && late.GetImage().IsValid());
    }

    // The names the user still has to bring, always by file name. Once any drawing of the
    // photograph exists, none of its drawing names is reported.
    void outputFilename_data() {
        QTest::addColumn<bool>("standAlone");
        QTest::addColumn<QString>("items");
        QTest::addColumn<QString>("files");
        QTest::addColumn<QString>("expected");
        const QString mixed =
            "写真ファイル名=P1.JPG;参考図1=D1.JPG;参考図2=;参考図ファイル名=D4.JPG";
        const QString full =
            "写真ファイル名=P1.JPG;写真ファイルパス={root}PIC/P1.JPG;参考図1=D1.JPG;"
            "参考図ファイルパス1={root}DRA/D1.JPG";
        // clang-format off
        QTest::newRow("nothing exists") << true << mixed << "" << "P1.JPG;D1.JPG;D4.JPG";
        QTest::newRow("one drawing hides the others") << true << mixed << "DRA/D1.JPG" << "P1.JPG";
        QTest::newRow("empty photograph value")
            << true << "写真ファイル名=;参考図1=D1.JPG" << "" << "D1.JPG";
        // clang-format on
    }
    void outputFilename() {
        QFETCH(bool, standAlone);
        QFETCH(QString, items);
        QFETCH(QString, files);
        QFETCH(QString, expected);
        const QString folder = NewFolder("output");
        const QString root = folder + QLatin1Char('/');
        CreateFiles(root, files);
        auto doc = fixture::OpenDocument(folder, PhotoXMLMlit);
        doc->SetStandAlone(standAlone);
        ToviPhoto photo(doc.get(), MakeItems(*doc->GetItemDef(), Expand(List(items), root)));
        QStringList names{"kept"};
        photo.GetOutputFilename(names);
        QCOMPARE(names, QStringList{"kept"} + List(expected));
    }
};

QTEST_GUILESS_MAIN(ToviPhotoTest)
#include "ToviPhotoTest.moc"
