#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "extraction/ToviExtractionConditions.h"
#include "platform/ToviProfile.h"
#include "platform/ToviUi.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/document/ReviewFixture.h"
#include "tests/support/ScriptedUi.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using review::Labels;

class ToviDataLabelsTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QString folder;
    review::RecordingHost host;

    // Five photographs, A A B B C by work type, with the labels given.
    std::unique_ptr<ToviData> Open(const QStringList& labels = {}) {
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

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("p.ini")));
        folder = temp.filePath(QStringLiteral("delivery"));
        QVERIFY(review::WritePhotoXml(folder, {"工種=A", "工種=A", "工種=B", "工種=B", "工種=C"}));
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
        std::unique_ptr<ToviData> doc = Open();
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

    // A search of the whole actual array in actual order, whatever is on show; out is emptied
    // first.
    void collectionLabel_data() {
        QTest::addColumn<int>("label");
        QTest::addColumn<QList<int>>("found");
        QTest::newRow("NG1") << 1 << QList<int>{0, 2, 4};
        QTest::newRow("nobody") << 0 << QList<int>{};
        QTest::newRow("no such slot") << 6 << QList<int>{};
    }
    void collectionLabel() {
        QFETCH(int, label);
        QFETCH(QList<int>, found);
        std::unique_ptr<ToviData> doc = Open({"1", "", "14c", "5", "1"});
        QVERIFY(doc);
        doc->CurrentArray().Assign({4, 2, 0});
        ToviPhotoRef out;
        out.Assign({3, 1});
        QCOMPARE(doc->CollectionLabel(label, out), found.size());
        QCOMPARE(out.Indexes(), found);
        QCOMPARE(doc->CountLabel(label), found.size());
        QCOMPARE(doc->CurrentArray().Indexes(), (QList<int>{4, 2, 0}));

        ToviData empty(nullptr, QString(), PhotoXMLMlit);
        out.Assign({1});
        QCOMPARE(empty.CollectionLabel(label, out), 0);
        QVERIFY(out.IsEmpty());
        QCOMPARE(empty.CountLabel(label), 0);
        QCOMPARE(empty.IsLabeled(), 0);
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
        std::unique_ptr<ToviData> doc = Open({"", "c", "", "4", ""});
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
        std::unique_ptr<ToviData> doc = Open({"", "0", "15", "4c", "2"});
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

QTEST_GUILESS_MAIN(ToviDataLabelsTest)
#include "ToviDataLabelsTest.moc"
