#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "extraction/ToviExtractionConditions.h"
#include "extraction/ToviSortCondition.h"
#include "platform/ToviProfile.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/document/ReviewFixture.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <stdexcept>

using review::NodeAt;
using review::RecordingHost;

namespace {

// Work type tree [A{0}[B{1}],C{2}]; shooting dates 04-03, 04-01, 04-02.
const QStringList kPhotos{"工種=A;撮影年月日=2024-04-03", "工種=A;種別=B;撮影年月日=2024-04-01",
                          "工種=C;撮影年月日=2024-04-02"};

}  // namespace

class ToviDataSelectionTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir temp;
    QString folder;
    RecordingHost host;
    ToviExtractionHolder nothingMatches;

    std::unique_ptr<ToviData> OpenBuilt(ToviHostDocument* documentHost) {
        std::unique_ptr<ToviData> doc = review::Open(documentHost, folder);
        if (doc) {
            doc->BuildTreeNode(ToviPhotoCtrlVisualSetting::TreeKousyuOnly);
        }
        host.hints.clear();
        return doc;
    }

    void SortByDate(ToviData& doc, bool on) {
        doc.GetSortConditionObject()->ExecSort(on);
        doc.GetSortConditionObject()->SetKeyItem(QStringLiteral("撮影年月日"));
        doc.GetSortConditionObject()->Ascending(true);
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("p.ini")));
        folder = temp.filePath(QStringLiteral("delivery"));
        QVERIFY(review::WritePhotoXml(folder, kPhotos));
        nothingMatches.conditions.itemOn[0] = true;
        nothingMatches.conditions.itemTitle[0] = QStringLiteral("工種");
        nothingMatches.conditions.itemText[0] = QStringLiteral("Z");
    }

    // The current array is disturbed before each selection, so that a rebuild shows.
    void selectNode_data() {
        QTest::addColumn<QString>("before");  // node selected first; "-" keeps the root
        QTest::addColumn<QString>("node");
        QTest::addColumn<bool>("force");
        QTest::addColumn<bool>("sort");
        QTest::addColumn<QList<int>>("current");
        QTest::addColumn<QList<int>>("hints");
        const QList<int> none;
        const QList<int> selection{ToviData::HintSelectionChanged};
        // clang-format off
        QTest::newRow("same node, not forced")
            << "A" << "A" << false << false << QList<int>{2} << none;
        QTest::newRow("same node, forced")
            << "A" << "A" << true << false << QList<int>{0, 1} << selection;
        QTest::newRow("the root, in tree order")
            << "A" << "" << false << false << QList<int>{0, 1, 2} << selection;
        QTest::newRow("the root, sorted")
            << "A" << "" << false << true << QList<int>{1, 2, 0} << selection;
        // clang-format on
    }
    void selectNode() {
        QFETCH(QString, before);
        QFETCH(QString, node);
        QFETCH(bool, force);
        QFETCH(bool, sort);
        QFETCH(QList<int>, hints);
        std::unique_ptr<ToviData> doc = OpenBuilt(&host);
        QVERIFY(doc);
        SortByDate(*doc, sort);
        ToviNode* first = before == QLatin1String("-") ? doc.get() : NodeAt(doc.get(), before);
        ToviNode* target = NodeAt(doc.get(), node);
        QVERIFY(first && target);
        doc->SetSelected(first, true);
        doc->CurrentArray().Assign({2});
        host.hints.clear();

        QCOMPARE(doc->SetSelected(target, force), first);
        QCOMPARE(doc->GetSelectedNode(), target);
        QTEST(doc->CurrentArray().Indexes(), "current");
        QCOMPARE(host.hints, hints);
    }

    // A label shows every photograph carrying it, whatever node is selected and although
    // extraction is on; a negative label empties the current array. Hint 2 either way.
    void selectLabel_data() {
        QTest::addColumn<int>("label");
        QTest::addColumn<bool>("sort");
        QTest::addColumn<QList<int>>("current");
        QTest::newRow("NG1") << 1 << false << QList<int>{0, 2};
        QTest::newRow("NG1 sorted") << 1 << true << QList<int>{2, 0};
        QTest::newRow("none") << -1 << false << QList<int>{};
    }
    void selectLabel() {
        QFETCH(int, label);
        QFETCH(bool, sort);
        QFETCH(QList<int>, current);
        std::unique_ptr<ToviData> doc = OpenBuilt(&host);
        QVERIFY(doc);
        doc->GetPhotoActualPhotoArray(0)->PasteLabel(1);
        doc->GetPhotoActualPhotoArray(2)->PasteLabel(1);
        SortByDate(*doc, sort);
        ToviNode* c = NodeAt(doc.get(), QStringLiteral("C"));
        doc->SetSelected(c, false);
        doc->SetExtractionData(&nothingMatches);
        doc->ExecExtraction();
        QVERIFY(doc->CurrentArray().IsEmpty());
        host.hints.clear();

        doc->SetSelected(label);
        QCOMPARE(doc->GetSelectedIndex(), label);
        QCOMPARE(doc->CurrentArray().Indexes(), current);
        QCOMPARE(host.hints, QList<int>{ToviData::HintSelectionChanged});
        QCOMPARE(doc->GetSelectedNode(), c);
        QVERIFY(doc->IsExtractionOn());
        int pos = 7;
        doc->GetIndexSelected(pos);
        QCOMPARE(pos, current.isEmpty() ? 7 : -1);  // an empty array leaves pos alone
    }

    // Without a host document the selected node changes, but nothing fills the current array.
    void selectWithoutHost() {
        std::unique_ptr<ToviData> doc = OpenBuilt(nullptr);
        QVERIFY(doc);
        ToviNode* a = NodeAt(doc.get(), QStringLiteral("A"));
        doc->SetSelected(a, true);
        QCOMPARE(doc->GetSelectedNode(), a);
        QVERIFY(doc->CurrentArray().IsEmpty());
    }

    // Selecting the selected photograph again tells no one.
    void photoSelectedAgain() {
        std::unique_ptr<ToviData> doc = OpenBuilt(&host);
        QVERIFY(doc);
        QVERIFY(doc->PhotoSelectSetting(1));
        host.hints.clear();
        QVERIFY(doc->PhotoSelectSetting(1));
        QVERIFY(host.hints.isEmpty());
        QVERIFY(doc->GetPhotoActualPhotoArray(1)->IsSelected());
    }

    // SetSelected(): the node holding the selected photograph, else the root and the first
    // photograph on show; with nothing on show that is an invalid-argument failure.
    void selectFromPhotograph_data() {
        QTest::addColumn<QString>("nodeBefore");
        QTest::addColumn<int>("photoBefore");
        QTest::addColumn<bool>("extractNothing");
        QTest::addColumn<QString>("nodeAfter");  // "!" for the failure
        QTest::addColumn<int>("photoAfter");
        QTest::addColumn<QList<int>>("hints");
        QTest::newRow("photograph on a node")
            << "C" << 1 << false << "A/B" << 1 << QList<int>{ToviData::HintSelectionChanged};
        QTest::newRow("its node already selected")
            << "A/B" << 1 << false << "A/B" << 1 << QList<int>{};
        QTest::newRow("nothing selected")
            << "C" << -1 << false << "" << 0
            << QList<int>{ToviData::HintSelectionChanged, ToviData::HintPhotoSelected};
        QTest::newRow("nothing on show") << "C" << -1 << true << "!" << -1 << QList<int>{};
    }
    void selectFromPhotograph() {
        QFETCH(QString, nodeBefore);
        QFETCH(int, photoBefore);
        QFETCH(bool, extractNothing);
        QFETCH(QString, nodeAfter);
        QFETCH(int, photoAfter);
        QFETCH(QList<int>, hints);
        std::unique_ptr<ToviData> doc = OpenBuilt(&host);
        QVERIFY(doc);
        if (photoBefore >= 0) {
            QVERIFY(doc->PhotoSelectSetting(photoBefore));
        }
        doc->SetSelected(NodeAt(doc.get(), nodeBefore), false);
        if (extractNothing) {
            doc->SetExtractionData(&nothingMatches);
            doc->ExecExtraction();
        }
        host.hints.clear();

        if (nodeAfter == QLatin1String("!")) {
            QVERIFY_THROWS_EXCEPTION(std::out_of_range, doc->SetSelected());
            return;
        }
        doc->SetSelected();
        QCOMPARE(doc->GetSelectedNode(), NodeAt(doc.get(), nodeAfter));
        QCOMPARE(doc->GetSelectedPhoto(), doc->GetPhotoActualPhotoArray(photoAfter));
        QCOMPARE(host.hints, hints);
    }
};

QTEST_GUILESS_MAIN(ToviDataSelectionTest)
#include "ToviDataSelectionTest.moc"
