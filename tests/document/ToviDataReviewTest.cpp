#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "extraction/ToviExtractionConditions.h"
#include "extraction/ToviSortCondition.h"
#include "platform/ToviProfile.h"
#include "platform/ToviUi.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/document/ReviewFixture.h"
#include "tests/support/ScriptedUi.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <stdexcept>

using review::Dump;
using review::Labels;
using review::NodeAt;
using review::RecordingHost;

namespace {

// Counts destructions, so that a test can tell deleted children from dropped ones.
class CountedNode : public ToviNode {
public:
    CountedNode(const QString& title, int* deaths) : ToviNode(title), deaths(deaths) {}
    ~CountedNode() override { ++*deaths; }

private:
    int* deaths;
};

// A photograph that has an item for none of the tree's levels: the reader never makes one
// (it gives every single element an item), but a document may hold it all the same.
void AppendBarePhoto(ToviData& document) {
    ToviItemArray items;
    items.append(ToviItem(document.GetItemDef()->GetIndexFromTitle(QStringLiteral("写真タイトル")),
                          QStringLiteral("bare")));
    document.GetPhotoDataArray()->append(std::make_unique<ToviPhoto>(&document, items));
}

// Work type tree [A{0}[B{1}],C{2}]; shooting dates 04-03, 04-01, 04-02.
const QStringList kPhotos{"工種=A;撮影年月日=2024-04-03", "工種=A;種別=B;撮影年月日=2024-04-01",
                          "工種=C;撮影年月日=2024-04-02"};

}  // namespace

// The classification tree, what selecting a node, a label or a photograph shows, and the
// labels themselves.
class ToviDataReviewTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    int serial = 0;
    QString selection;  // the delivery of kPhotos
    QString labelled;   // five photographs, A A B B C by work type
    RecordingHost host;
    ToviExtractionHolder nothingMatches;

    std::unique_ptr<ToviData> Open(const QStringList& photos) {
        const QString folder = temp.filePath(QStringLiteral("d%1").arg(++serial));
        return review::WritePhotoXml(folder, photos) ? review::Open(&host, folder) : nullptr;
    }
    // The delivery in folder with the labels given and the work type tree built.
    std::unique_ptr<ToviData> OpenBuilt(const QString& folder, const QStringList& labels = {}) {
        std::unique_ptr<ToviData> doc = review::Open(&host, folder);
        if (doc) {
            for (int k = 0; k < labels.size(); ++k) {
                review::SetLabels(*doc->GetPhotoActualPhotoArray(k), labels[k]);
            }
            doc->BuildTreeNode(ToviPhotoCtrlVisualSetting::TreeKousyuOnly);
        }
        host.hints.clear();
        return doc;
    }
    static void SortByDate(ToviData& doc, bool on) {
        doc.GetSortConditionObject()->ExecSort(on);
        doc.GetSortConditionObject()->SetKeyItem(QStringLiteral("撮影年月日"));
        doc.GetSortConditionObject()->Ascending(true);
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("p.ini")));
        selection = temp.filePath(QStringLiteral("selection"));
        QVERIFY(review::WritePhotoXml(selection, kPhotos));
        labelled = temp.filePath(QStringLiteral("labelled"));
        QVERIFY(
            review::WritePhotoXml(labelled, {"工種=A", "工種=A", "工種=B", "工種=B", "工種=C"}));
        nothingMatches.conditions.itemOn[0] = true;
        nothingMatches.conditions.itemTitle[0] = QStringLiteral("工種");
        nothingMatches.conditions.itemText[0] = QStringLiteral("Z");
    }

    // A copy carries titles and valid flags to any depth, wired to its own nodes, and no
    // photo indexes; assignment first deletes the target's children. A title path leaves
    // empty titles out.
    void nodeCopyAndTitlePath() {
        std::unique_ptr<ToviData> doc = OpenBuilt(selection);
        QVERIFY(doc);
        ToviNode* b = NodeAt(doc.get(), QStringLiteral("A/B"));
        b->Valid(true);
        int deaths = 0;
        ToviNode target(QStringLiteral("T"));
        target.Add(std::make_unique<CountedNode>(QStringLiteral("X"), &deaths));
        target.Add(std::make_unique<CountedNode>(QStringLiteral("Y"), &deaths));
        target = *doc;
        QCOMPARE(deaths, 2);
        QCOMPARE(Dump(target), QStringLiteral("[A[B],C]"));
        ToviNode* copied = NodeAt(&target, QStringLiteral("A/B"));
        QVERIFY(copied != b && copied->IsValid() && !target.GetNode(1)->IsValid());
        QCOMPARE(copied->Parent(), target.GetNode(0));
        QCOMPARE(target.GetNode(0)->Parent(), &target);
        ToviNode& alias = target;
        target = alias;
        QCOMPARE(target.DescendantCount(), 3ul);
        const std::unique_ptr<ToviNode> clone = NodeAt(doc.get(), QStringLiteral("A"))->Clone();
        QCOMPARE(clone->Parent(), nullptr);
        QCOMPARE(clone->Title() + Dump(*clone), QStringLiteral("A[B]"));
        doc->Title(QString());
        QCOMPARE(b->GetFullTitlePath(QStringLiteral(" > ")), QStringLiteral("A > B > "));
    }

    // Where each photograph lands, and the current array BuildTreeNode leaves with a host and
    // nothing selected: the root's own photographs, then each subtree in order.
    void placements_data() {
        QTest::addColumn<int>("treeType");
        QTest::addColumn<QStringList>("photos");
        QTest::addColumn<QString>("tree");
        QTest::addColumn<QList<int>>("current");
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
        std::unique_ptr<ToviData> doc = Open(photos);
        QVERIFY(doc);
        QCOMPARE(doc->GetTotalCountPhoto(), photos.size());
        host.hints.clear();
        doc->BuildTreeNode(treeType);
        QCOMPARE(Dump(*doc), tree);
        QCOMPARE(doc->GetSelectedNode(), static_cast<ToviNode*>(doc.get()));
        QTEST(doc->CurrentArray().Indexes(), "current");
        QVERIFY(host.hints.isEmpty());  // the host tells the panels itself
        doc->BuildTreeNode(treeType);   // a rebuild starts afresh
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
        std::unique_ptr<ToviData> doc =
            Open({"工種=A;撮影箇所=X", "工種=B;種別=C;撮影箇所=Y", "工種=B", "撮影箇所=Y"});
        QVERIFY(doc);
        AppendBarePhoto(*doc);
        doc->BuildTreeNode(from);
        QVERIFY(doc->PhotoSelectSetting(selected));
        host.hints.clear();

        doc->BuildTreeNode(to);
        ToviNode* expected = NodeAt(doc.get(), node);
        QVERIFY(expected);
        QCOMPARE(doc->GetSelectedNode(), expected);
        QCOMPARE(doc->CurrentArray().Indexes(), current);
        QCOMPARE(doc->GetSelectedPhoto(), doc->GetPhotoActualPhotoArray(selected));
        QVERIFY(doc->GetSelectedPhoto()->IsSelected());
        QCOMPARE(doc->GetSelectCurIndex(), static_cast<int>(current.indexOf(selected)));
        QVERIFY(host.hints.isEmpty());
    }

    // The current array is disturbed before each selection, so that a rebuild shows.
    void selectNode_data() {
        QTest::addColumn<QString>("node");
        QTest::addColumn<bool>("force");
        QTest::addColumn<bool>("sort");
        QTest::addColumn<QList<int>>("current");
        QTest::addColumn<QList<int>>("hints");
        const QList<int> selected{ToviData::HintSelectionChanged};
        QTest::newRow("same node, not forced")
            << "A" << false << false << QList<int>{2} << QList<int>{};
        QTest::newRow("same node, forced") << "A" << true << false << QList<int>{0, 1} << selected;
        QTest::newRow("the root, in tree order")
            << "" << false << false << QList<int>{0, 1, 2} << selected;
        QTest::newRow("the root, sorted") << "" << false << true << QList<int>{1, 2, 0} << selected;
    }
    void selectNode() {
        QFETCH(QString, node);
        QFETCH(bool, force);
        QFETCH(bool, sort);
        std::unique_ptr<ToviData> doc = OpenBuilt(selection);
        QVERIFY(doc);
        SortByDate(*doc, sort);
        ToviNode* first = NodeAt(doc.get(), QStringLiteral("A"));
        ToviNode* target = NodeAt(doc.get(), node);
        QVERIFY(first && target);
        doc->SetSelected(first, true);
        doc->CurrentArray().Assign({2});
        host.hints.clear();
        QCOMPARE(doc->SetSelected(target, force), first);
        QCOMPARE(doc->GetSelectedNode(), target);
        QTEST(doc->CurrentArray().Indexes(), "current");
        QTEST(host.hints, "hints");
    }

    // A label shows every photograph carrying it in actual order, whatever was on show, which
    // node is selected and although extraction is on; a negative label or one without a slot
    // empties the current array. Hint 2 either way.
    void selectLabel_data() {
        QTest::addColumn<int>("label");
        QTest::addColumn<bool>("sort");
        QTest::addColumn<QList<int>>("current");
        QTest::newRow("NG1") << 1 << false << QList<int>{0, 2};
        QTest::newRow("NG1 sorted") << 1 << true << QList<int>{2, 0};
        QTest::newRow("nobody") << 0 << false << QList<int>{};
        QTest::newRow("no such slot") << 6 << false << QList<int>{};
        QTest::newRow("none") << -1 << false << QList<int>{};
    }
    void selectLabel() {
        QFETCH(int, label);
        QFETCH(bool, sort);
        QFETCH(QList<int>, current);
        std::unique_ptr<ToviData> doc = OpenBuilt(selection, {"1", "", "1"});
        QVERIFY(doc);
        SortByDate(*doc, sort);
        ToviNode* c = NodeAt(doc.get(), QStringLiteral("C"));
        doc->SetSelected(c, false);
        doc->SetExtractionData(&nothingMatches);
        doc->ExecExtraction();
        QVERIFY(doc->CurrentArray().IsEmpty());
        doc->CurrentArray().Assign({1});
        host.hints.clear();

        doc->SetSelected(label);
        QCOMPARE(doc->GetSelectedIndex(), label);
        QCOMPARE(doc->CurrentArray().Indexes(), current);
        QCOMPARE(doc->CountLabel(static_cast<unsigned long>(label)), current.size());
        QCOMPARE(host.hints, QList<int>{ToviData::HintSelectionChanged});
        QCOMPARE(doc->GetSelectedNode(), c);
        QVERIFY(doc->IsExtractionOn());
        int pos = 7;
        doc->GetIndexSelected(pos);
        QCOMPARE(pos, current.isEmpty() ? 7 : -1);  // an empty array leaves pos alone
    }

    // Without a host document the selected node changes, but nothing fills the current array;
    // selecting the selected photograph again tells no one.
    void selectQuietly() {
        std::unique_ptr<ToviData> doc = OpenBuilt(selection);
        QVERIFY(doc && doc->PhotoSelectSetting(1));
        host.hints.clear();
        QVERIFY(doc->PhotoSelectSetting(1));
        QVERIFY(host.hints.isEmpty());
        QVERIFY(doc->GetPhotoActualPhotoArray(1)->IsSelected());
        doc = review::Open(nullptr, selection);
        QVERIFY(doc);
        doc->BuildTreeNode(ToviPhotoCtrlVisualSetting::TreeKousyuOnly);
        ToviNode* a = NodeAt(doc.get(), QStringLiteral("A"));
        doc->SetSelected(a, true);
        QCOMPARE(doc->GetSelectedNode(), a);
        QVERIFY(doc->CurrentArray().IsEmpty());
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
        const int selected = ToviData::HintSelectionChanged;
        QTest::newRow("photograph on a node")
            << "C" << 1 << false << "A/B" << 1 << QList<int>{selected};
        QTest::newRow("its node already selected")
            << "A/B" << 1 << false << "A/B" << 1 << QList<int>{};
        QTest::newRow("nothing selected")
            << "C" << -1 << false << "" << 0 << QList<int>{selected, ToviData::HintPhotoSelected};
        QTest::newRow("nothing on show") << "C" << -1 << true << "!" << -1 << QList<int>{};
    }
    void selectFromPhotograph() {
        QFETCH(QString, nodeBefore);
        QFETCH(int, photoBefore);
        QFETCH(bool, extractNothing);
        QFETCH(QString, nodeAfter);
        QFETCH(int, photoAfter);
        std::unique_ptr<ToviData> doc = OpenBuilt(selection);
        QVERIFY(doc);
        QVERIFY(photoBefore < 0 || doc->PhotoSelectSetting(photoBefore));
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
        QTEST(host.hints, "hints");
    }

    // The photograph takes any combination of labels: keeping OK and NG apart and the comment
    // label in step with the comment is left to whoever pastes them. Steps: +n pastes, -n
    // removes, c sets a comment, x RemoveAllLabel, k CorrectAllNotCheck, o CorrectAllOK.
    void photographLabels_data() {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("labels");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<bool>("ng");
        QTest::addColumn<bool>("notChecked");
        // clang-format off
        QTest::newRow("OK pasted over NG") << "+1 +0" << "01" << true << true << false;
        QTest::newRow("comment label alone") << "+4" << "4" << false << false << true;
        QTest::newRow("slot 6 removed") << "+3 -6" << "3" << false << true << false;
        QTest::newRow("remove all empties the comment") << "+0 +1 +4 +5 c x" << "" << false << false << true;
        QTest::newRow("not checked keeps 4, 5 and the comment") << "+0 +3 +4 +5 c k" << "45c" << false << false << true;
        QTest::newRow("all OK keeps 4 and the comment") << "+2 +3 +4 c o" << "04c" << true << false << false;
        // clang-format on
    }
    void photographLabels() {
        QFETCH(QString, steps);
        QFETCH(QString, labels);
        std::unique_ptr<ToviData> doc = OpenBuilt(labelled);
        QVERIFY(doc);
        ToviPhoto& photo = *doc->GetPhotoActualPhotoArray(3);
        for (const QString& step : steps.split(QLatin1Char(' '))) {
            const auto slot = static_cast<unsigned int>(step.mid(1).toInt());
            if (step.startsWith(QLatin1Char('+'))) {
                photo.PasteLabel(slot);
            } else if (step.startsWith(QLatin1Char('-'))) {
                photo.RemoveLabel(slot);
            } else if (step == QLatin1String("c")) {
                photo.SetComment(QStringLiteral("再撮影"));
            } else if (step == QLatin1String("x")) {
                photo.RemoveAllLabel();
            } else if (step == QLatin1String("k")) {
                photo.CorrectAllNotCheck();
            } else {
                photo.CorrectAllOK();
            }
        }
        QCOMPARE(Labels(photo), labels);
        QTEST(photo.IsOK(), "ok");
        QTEST(photo.HasNGLabel(), "ng");
        QTEST(photo.IsNotCheck(), "notChecked");
        QVERIFY(!photo.IsLabelPasted(6));
        // Only flags count, not a comment.
        QCOMPARE(doc->IsLabeled(), labels.contains(QRegularExpression("[0-5]")) ? 1 : 0);
    }

    // HasComment looks at comment text in the current array only; an empty current array
    // leaves it as it was. Every change of the current array looks again.
    void updateHasComment_data() {
        QTest::addColumn<QList<QList<int>>>("views");  // current arrays, each followed by an update
        QTest::addColumn<bool>("hasComment");
        QTest::newRow("comment label without text") << QList<QList<int>>{{0, 3}} << false;
        QTest::newRow("comment last in view") << QList<QList<int>>{{0, 2, 1}} << true;
        QTest::newRow("comment only outside the view") << QList<QList<int>>{{0, 2, 3, 4}} << false;
        QTest::newRow("nothing after a comment") << QList<QList<int>>{{1}, {}} << true;
    }
    void updateHasComment() {
        QFETCH(QList<QList<int>>, views);
        std::unique_ptr<ToviData> doc = OpenBuilt(labelled, {"", "c", "", "4", ""});
        QVERIFY(doc);
        for (const QList<int>& view : views) {
            doc->CurrentArray().Assign(view);
            doc->UpdateHasComment();
        }
        QTEST(doc->HasComment(), "hasComment");
        doc->SetSelected(4);
        QVERIFY(!doc->HasComment());
        doc->SetSelected(review::NodeAt(doc.get(), QStringLiteral("A")), false);
        QVERIFY(doc->HasComment());
    }

    // The batch correction over the current array, the dialog's answer scripted. Labels
    // before: "", "0", "15", "4c", "2".
    void batchCorrection_data() {
        QTest::addColumn<bool>("dialogOk");
        QTest::addColumn<int>("action");
        QTest::addColumn<QString>("view");  // all, nothing, or ng (extraction of NG photographs)
        QTest::addColumn<bool>("result");
        QTest::addColumn<bool>("changed");  // check status flag set and hint 6 sent
        QTest::addColumn<QStringList>("after");
        const QStringList before{"", "0", "15", "4c", "2"};
        // clang-format off
        QTest::newRow("cancel in the dialog") << false << 2 << "all" << false << false << before;
        QTest::newRow("OK labels") << true << 0 << "all" << true << true << QStringList{"0", "0", "15", "04c", "2"};
        QTest::newRow("remove everything") << true << 2 << "all" << true << true << QStringList{"", "", "", "", ""};
        QTest::newRow("OK labels, nothing on show") << true << 0 << "nothing" << false << true << before;
        QTest::newRow("remove everything, nothing on show") << true << 2 << "nothing" << true << true << before;
        QTest::newRow("not checked on the NG extraction") << true << 1 << "ng" << true << true << QStringList{"", "0", "5", "4c", ""};
        // clang-format on
    }
    void batchCorrection() {
        QFETCH(bool, dialogOk);
        QFETCH(int, action);
        QFETCH(QString, view);
        QFETCH(bool, changed);
        ScriptedUi ui;
        ScopedUi scope(ui);
        std::unique_ptr<ToviData> doc = OpenBuilt(labelled, {"", "0", "15", "4c", "2"});
        QVERIFY(doc);
        ToviExtractionHolder ng;
        ng.conditions.ngPhoto = true;
        if (view == QLatin1String("nothing")) {
            doc->SetSelected(-1);
        } else if (view == QLatin1String("ng")) {
            doc->SetExtractionData(&ng);
            doc->ExecExtraction();
            QCOMPARE(doc->CurrentArray().Indexes(), (QList<int>{2, 4}));
        } else {
            doc->SetSelected(doc.get(), true);
        }
        const bool hadComment = doc->HasComment();
        host.hints.clear();
        ui.QueueDialog(dialogOk, {{QStringLiteral("action"), action}});
        ui.QueueAnswer(ToviUi::AnswerOk);

        QTEST(doc->AllLabelCorrection(), "result");
        QTEST(review::AllLabels(*doc), "after");
        QCOMPARE(doc->IsCheckStatusChanged(), changed);
        QCOMPARE(host.hints, changed ? QList<int>{ToviData::HintLabelsChanged} : QList<int>{});
        QCOMPARE(ui.DialogNames(), QStringList{QStringLiteral("LabelProcessSelectDlg")});
        QCOMPARE(ui.DialogInputs().first().value(QStringLiteral("action")).toInt(), 0);
        QCOMPARE(ui.Questions().size(), dialogOk ? 1 : 0);
        QVERIFY(!dialogOk || ui.Questions().first().buttons == ToviUi::ButtonsOkCancel);
        // The comment flag waits for the next look at the current array.
        QCOMPARE(doc->HasComment(), hadComment);
    }
};

QTEST_GUILESS_MAIN(ToviDataReviewTest)
#include "ToviDataReviewTest.moc"
