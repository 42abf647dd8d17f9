#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "document/ToviPhotoRef.h"
#include "document/ToviTextPairArray.h"
#include "loading/ToviItemDef.h"
#include "platform/ToviProfile.h"
#include "tests/document/DocumentFixture.h"

#include <QTemporaryDir>
#include <QtTest>

#include <stdexcept>

using fixture::MakeItems;

class ToviDataTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir temp;
    int serial = 0;

    // A document whose actual array holds one photograph per entry, each "title=value;...".
    std::unique_ptr<ToviData> Document(const QStringList& photos) {
        const QString folder = temp.filePath(QStringLiteral("data-%1").arg(++serial));
        auto doc = fixture::OpenDocument(folder, PhotoXMLMlit);
        for (const QString& items : photos) {
            doc->GetPhotoDataArray()->append(std::make_unique<ToviPhoto>(
                doc.get(), MakeItems(*doc->GetItemDef(), fixture::List(items))));
        }
        return doc;
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

    // Positions speak of the current array, photo indexes of the actual array. GetPhotoIndex
    // gives -1 on an empty current array and fails outside a non-empty one; the others give -1
    // or null for any position outside.
    void positionsAndPhotoIndexes_data() {
        QTest::addColumn<QList<int>>("current");
        QTest::addColumn<int>("pos");
        QTest::addColumn<int>("photoIndex");  // -2: GetPhotoIndex throws
        QTest::addColumn<int>("indexPhotoArray");
        QTest::newRow("empty, 0") << QList<int>{} << 0 << -1 << -1;
        QTest::newRow("inside") << QList<int>{2, 0, 1} << 0 << 2 << 2;
        QTest::newRow("last") << QList<int>{2, 0, 1} << 2 << 1 << 1;
        QTest::newRow("one past the end") << QList<int>{2, 0} << 2 << -2 << -1;
        QTest::newRow("negative") << QList<int>{2, 0, 1} << -1 << -2 << -1;
    }
    void positionsAndPhotoIndexes() {
        QFETCH(QList<int>, current);
        QFETCH(int, pos);
        QFETCH(int, photoIndex);
        QFETCH(int, indexPhotoArray);
        auto doc =
            Document({"写真ファイル名=A.JPG", "写真ファイル名=B.JPG", "写真ファイル名=C.JPG"});
        const ToviPhotoArray& actual = *doc->GetPhotoDataArray();
        doc->CurrentArray().Assign(current);
        QCOMPARE(doc->GetTotalCountPhoto(), 3);
        QCOMPARE(doc->GetCurrentPhotoCount(), current.size());
        QCOMPARE(doc->IsPhotoArrayEmpty(), current.isEmpty());
        if (photoIndex == -2) {
            QVERIFY_THROWS_EXCEPTION(std::out_of_range, doc->GetPhotoIndex(pos));
        } else {
            QCOMPARE(doc->GetPhotoIndex(pos), photoIndex);
        }
        QCOMPARE(doc->GetIndexPhotoArray(pos), indexPhotoArray);
        QCOMPARE(doc->GetPhoto(pos), indexPhotoArray < 0 ? nullptr : actual[indexPhotoArray]);
        const bool inActual = pos >= 0 && pos < 3;
        QCOMPARE(doc->GetPhotoActualPhotoArray(pos), inActual ? actual[pos] : nullptr);
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
        auto doc =
            Document({"工種=土工;工種=擁壁工;備考=a",
                      "工種=擁壁工;備考=", "工種=土工;工種=舗装工;備考=a", "写真ファイル名=P.JPG"});
        QStringList values = before;
        QTEST(doc->GetPhotoItemValue(title, values), "metEmpty");
        QTEST(values, "after");
    }

    // The small look-ups the views lean on: a photo reference is an ordered set whose Add
    // answers the position; a text pair's single value is the first match; the actual array
    // finds a photograph by its image path in any case.
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

        auto doc = Document({"写真ファイル名=A.JPG", "写真ファイル名=B.JPG"});
        ToviPhotoArray& actual = *doc->GetPhotoDataArray();
        QCOMPARE(actual.GetData(doc->RootPath() + QStringLiteral("/pic/b.jpg")), actual[1]);
        QCOMPARE(actual.GetData(QStringLiteral("B.JPG")), nullptr);
    }
};

QTEST_GUILESS_MAIN(ToviDataTest)
#include "ToviDataTest.moc"
