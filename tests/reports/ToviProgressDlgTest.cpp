#include "reports/ToviProgressDlg.h"
#include "tests/support/ScriptedUi.h"

#include <QtTest>

#include <climits>
#include <memory>

// Each case runs against a fresh scripted presenter, so pump numbers start at 1.
class ToviProgressDlgTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        ui = std::make_unique<ScriptedUi>();
        installed = std::make_unique<ScopedUi>(*ui);
    }
    void cleanup() {
        installed.reset();
        ui.reset();
    }

    // A loop that steps through its whole range: throttling cuts the pumps to about one per
    // percent, and only for spans that leave at least two positions between updates.
    void throttlingFollowsTheSpan_data() {
        QTest::addColumn<int>("lower");
        QTest::addColumn<int>("upper");
        QTest::addColumn<bool>("throttled");
        QTest::addColumn<int>("pumps");
        QTest::newRow("span 100") << 0 << 100 << false << 100;
        QTest::newRow("span 101, interval 1") << 0 << 101 << false << 101;
        // Updates at 1, 3, ..., 199, and at the upper end.
        QTest::newRow("span 200, interval 2") << 0 << 200 << true << 101;
        QTest::newRow("span 250, interval 2") << 0 << 250 << true << 126;
        QTest::newRow("span 1000, interval 10") << 0 << 1000 << true << 101;
        QTest::newRow("negative span 200") << -300 << -100 << true << 101;
    }
    void throttlingFollowsTheSpan() {
        QFETCH(int, lower);
        QFETCH(int, upper);
        QFETCH(bool, throttled);
        QFETCH(int, pumps);

        ToviProgressDlg dlg(true);
        QVERIFY(dlg.Create());
        dlg.SetRange(lower, upper);
        dlg.SetStep(1);
        QCOMPARE(dlg.IsThrottled(), throttled);
        for (int i = lower; i < upper; ++i) {
            dlg.StepIt();
        }
        QCOMPARE(ui->Pumps(), pumps);
        QCOMPARE(dlg.Position(), upper);
        QCOMPARE(dlg.Percent(), QStringLiteral("100%"));
        const auto view = ui->LastProgress();
        QCOMPARE(view->positions.last(), upper);
        QCOMPARE(view->percents.last(), QStringLiteral("100%"));
    }

    // Unthrottled, StepIt moves by the step and stops at the upper end.
    void stepItUsesTheStep() {
        ToviProgressDlg dlg(false);
        QVERIFY(dlg.Create());
        dlg.SetRange(0, 100);
        dlg.SetStep(7);
        for (int i = 0; i < 2; ++i) {
            dlg.StepIt();
        }
        QCOMPARE(dlg.Position(), 14);
        for (int i = 0; i < 20; ++i) {
            dlg.StepIt();
        }
        QCOMPARE(dlg.Position(), 100);
    }

    void percentage_data() {
        QTest::addColumn<int>("lower");
        QTest::addColumn<int>("upper");
        QTest::addColumn<int>("pos");
        QTest::addColumn<QString>("percent");
        QTest::newRow("empty range") << 0 << 0 << 0 << "0%";
        QTest::newRow("a third rounds down") << 0 << 3 << 1 << "33%";
        QTest::newRow("offset range") << 10 << 20 << 15 << "50%";
        QTest::newRow("negative range") << -100 << 100 << 0 << "50%";
        QTest::newRow("past the end") << 0 << 100 << 150 << "100%";
        QTest::newRow("before the start") << 10 << 100 << -5 << "0%";
        QTest::newRow("range given backwards") << 20 << 10 << 15 << "50%";
        QTest::newRow("from INT_MIN") << INT_MIN << INT_MAX << 0 << "50%";
    }
    void percentage() {
        QFETCH(int, lower);
        QFETCH(int, upper);
        QFETCH(int, pos);
        QFETCH(QString, percent);
        ToviProgressDlg dlg(false);
        QVERIFY(dlg.Create());
        dlg.SetRange(lower, upper);
        dlg.SetPos(pos);
        QCOMPARE(dlg.Percent(), percent);
        QCOMPARE(ui->LastProgress()->percents.last(), percent);
    }

    // A click during the pump of GetCancel is answered by that same GetCancel, and once only.
    void cancelIsReportedOnce() {
        ToviProgressDlg dlg(false);
        QVERIFY(dlg.Create());
        ui->PressCancelAtPump(1);
        QVERIFY(dlg.GetCancel());
        QVERIFY(!dlg.GetCancel());
    }

    // The message reaches the window only when it changes; an empty one is ignored.
    void messageOnlyWhenItChanges() {
        ToviProgressDlg dlg(false);
        QVERIFY(dlg.Create());
        for (const char* text : {"抽出", "抽出", "", "並べ替え"}) {
            dlg.SetMessage(QString::fromUtf8(text));
        }
        QCOMPARE(ui->LastProgress()->messages, (QStringList{"抽出", "並べ替え"}));
    }

    // Without cancel neither the button nor the close box cancels.
    void cancelCanBeDisabled() {
        ToviProgressDlg dlg(false);
        dlg.SetCancelBtnEnabled(false);
        QVERIFY(dlg.Create());
        ui->PressCancelAtPump(1);
        QVERIFY(!dlg.GetCancel());
    }

    // An empty caption is the application's name, also when the window opens.
    void captionDefaultsToTheApplicationName() {
        ToviProgressDlg dlg(false);
        QVERIFY(dlg.Create());
        dlg.SetCaption(QStringLiteral("写真の出力"));
        dlg.SetCaption(QString());
        const QString name = ui->ApplicationName();
        QCOMPARE(ui->LastProgress()->captions, (QStringList{name, "写真の出力", name}));
    }

    // A window lost during a pump is never touched again; the loop runs on to its end
    // and keeps its positions and percentage.
    // The owner is disabled while the window is up and enabled again when it closes.
    void ownerIsEnabledAgainOnClose() {
        std::shared_ptr<ScriptedProgressRecord> view;
        {
            ToviProgressDlg dlg(true);
            QVERIFY(dlg.Create());
            view = ui->LastProgress();
            QVERIFY(dlg.DestroyWindow());
            QVERIFY(!dlg.DestroyWindow());
        }
        QCOMPARE(view->ownerStates, (QList<bool>{false, true}));
        QCOMPARE(view->closeCount, 1);
    }

    void viewDyingMidLoop_data() {
        QTest::addColumn<bool>("throttled");
        QTest::addColumn<int>("deathPump");
        QTest::newRow("unthrottled, early") << false << 3;
        QTest::newRow("throttled") << true << 20;
    }
    void viewDyingMidLoop() {
        QFETCH(bool, throttled);
        QFETCH(int, deathPump);
        ui->DieAtPump(deathPump);
        std::shared_ptr<ScriptedProgressRecord> view;
        {
            ToviProgressDlg dlg(throttled);
            QVERIFY(dlg.Create());
            view = ui->LastProgress();
            dlg.SetRange(0, 1000);
            dlg.SetStep(1);
            for (int i = 0; i < 1000; ++i) {
                dlg.StepIt();
                QVERIFY(!dlg.GetCancel());
                dlg.SetMessage(QStringLiteral("写真 %1").arg(i));
            }
            QVERIFY(!view->alive);
            QVERIFY(!dlg.IsWindow());
            QCOMPARE(dlg.Position(), 1000);
            QCOMPARE(dlg.Percent(), QStringLiteral("100%"));
            QCOMPARE(dlg.Message(), QStringLiteral("写真 999"));
            // With the window gone, stepping no longer pumps; polling still does.
            const int pumps = ui->Pumps();
            dlg.SetRange(0, 100);
            dlg.StepIt();
            QCOMPARE(ui->Pumps(), pumps);
            QVERIFY(!dlg.DestroyWindow());
        }
        QCOMPARE(view->callsAfterDeath, 0);
        QCOMPARE(view->closeCount, 0);
        QCOMPARE(view->ownerStates, QList<bool>{false});
    }

private:
    std::unique_ptr<ScriptedUi> ui;
    std::unique_ptr<ScopedUi> installed;
};

QTEST_GUILESS_MAIN(ToviProgressDlgTest)
#include "ToviProgressDlgTest.moc"
