#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviItemDef.h"
#include "platform/ToviProfile.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/document/ReviewFixture.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using review::Dump;
using review::NodeAt;
using review::RecordingHost;

class ToviDataTreeTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir temp;
    int serial = 0;

    QString NewFolder() { return temp.filePath(QStringLiteral("d%1").arg(++serial)); }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("p.ini")));
    }

    // Where each photograph lands, and the current array BuildTreeNode leaves with a host and
    // nothing selected: the root's own photographs, then each subtree in order.
    void placements_data() {
        QTest::addColumn<int>("treeType");
        QTest::addColumn<QStringList>("photos");
        QTest::addColumn<QString>("tree");
        QTest::addColumn<QList<int>>("current");
        QTest::newRow("'',B under 【未記入】")
            << 2 << QStringList{"種別=B"} << "[【未記入】[B{0}]]" << QList<int>{0};
        QTest::newRow("A,'',C; absent and empty elements alike")
            << 2 << QStringList{"工種=A;細別=C", "工種=A;種別=;細別=C"} << "[A[【未記入】[C{0,1}]]]"
            << QList<int>{0, 1};
        QTest::newRow("all empty on the root")
            << 2 << QStringList{"", "工種=A", "工種=;種別=;細別="} << "{0,2}[A{1}]"
            << QList<int>{0, 2, 1};
        QTest::newRow("【未記入】 stays last")
            << 2 << QStringList{"種別=B", "工種=Z", "工種=A", "工種=Z;種別=B"}
            << "[Z{1}[B{3}],A{2},【未記入】[B{0}]]" << QList<int>{1, 3, 2, 0};
        QTest::newRow("a value spelled 【未記入】 joins that node")
            << 2 << QStringList{"種別=B", "工種=【未記入】"} << "[【未記入】{1}[B{0}]]"
            << QList<int>{1, 0};
        QTest::newRow("type 0 adds the class levels")
            << 0
            << QStringList{"写真区分=施工状況写真;工種=A", "工種=A", "写真-大分類=;工種=A", "工種="}
            << "[工事{3}[施工状況写真[A{0}],【未記入】[A{1}]],【未記入】[【未記入】[A{2}]]]"
            << QList<int>{3, 0, 1, 2};
        QTest::newRow("type 1 by shooting place, blank at once")
            << 1 << QStringList{"撮影箇所=X;工種=A", "工種=B", "撮影箇所=X", "撮影箇所=Y"}
            << "[X{0,2},Y{3},【未記入】{1}]" << QList<int>{0, 2, 3, 1};
    }
    void placements() {
        QFETCH(int, treeType);
        QFETCH(QStringList, photos);
        QFETCH(QString, tree);
        const QString folder = NewFolder();
        QVERIFY(review::WritePhotoXml(folder, photos));
        RecordingHost host;
        std::unique_ptr<ToviData> doc = review::Open(&host, folder);
        QVERIFY(doc);
        QCOMPARE(doc->GetTotalCountPhoto(), photos.size());

        doc->BuildTreeNode(treeType);
        QCOMPARE(Dump(*doc), tree);
        QCOMPARE(doc->GetSelectedNode(), static_cast<ToviNode*>(doc.get()));
        QTEST(doc->CurrentArray().Indexes(), "current");
        QVERIFY(host.hints.isEmpty());  // the host tells the panels itself

        // A rebuild starts afresh rather than adding to the old tree.
        doc->BuildTreeNode(treeType);
        QCOMPARE(Dump(*doc), tree);
    }

    // Switching the classification keeps the selected photograph: the new selected node is the
    // one holding it in the new tree, else the root; the current array follows, unannounced.
    void switchingKeepsSelectedPhoto_data() {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<int>("selected");
        QTest::addColumn<QString>("node");  // path of titles; empty for the root
        QTest::addColumn<QList<int>>("current");
        QTest::newRow("work type to place") << 2 << 1 << 1 << "Y" << QList<int>{1, 3};
        QTest::newRow("blank place") << 2 << 1 << 2 << "【未記入】" << QList<int>{2};
        QTest::newRow("held by the root itself") << 1 << 2 << 3 << "" << QList<int>{3, 0, 2, 1};
        QTest::newRow("in no node") << 2 << 1 << 4 << "" << QList<int>{0, 1, 3, 2};
    }
    void switchingKeepsSelectedPhoto() {
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(int, selected);
        QFETCH(QString, node);
        QFETCH(QList<int>, current);
        const QString folder = NewFolder();
        QVERIFY(review::WritePhotoXml(
            folder, {"工種=A;撮影箇所=X", "工種=B;種別=C;撮影箇所=Y", "工種=B", "撮影箇所=Y"}));
        RecordingHost host;
        std::unique_ptr<ToviData> doc = review::Open(&host, folder);
        QVERIFY(doc);
        review::AppendBarePhoto(*doc);

        doc->BuildTreeNode(from);
        if (selected >= 0) {
            QVERIFY(doc->PhotoSelectSetting(selected));
        }
        host.hints.clear();

        doc->BuildTreeNode(to);
        ToviNode* expected = NodeAt(doc.get(), node);
        QVERIFY(expected);
        QCOMPARE(doc->GetSelectedNode(), expected);
        QCOMPARE(doc->CurrentArray().Indexes(), current);
        if (selected >= 0) {
            QCOMPARE(doc->GetSelectedPhoto(), doc->GetPhotoActualPhotoArray(selected));
            QVERIFY(doc->GetSelectedPhoto()->IsSelected());
            QCOMPARE(doc->GetSelectCurIndex(), static_cast<int>(current.indexOf(selected)));
        }
        QVERIFY(host.hints.isEmpty());
    }
};

QTEST_GUILESS_MAIN(ToviDataTreeTest)
#include "ToviDataTreeTest.moc"
