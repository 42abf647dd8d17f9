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

    // Once a range has turned throttling off, a later wide range doesn't bring it back.
    void throttlingOffForGood() {
        ToviProgressDlg narrowFirst(true);
        narrowFirst.SetRange(0, 150);
        narrowFirst.SetRange(0, 10000);
        QVERIFY(!narrowFirst.IsThrottled());
        ToviProgressDlg wideFirst(true);
        wideFirst.SetRange(0, 500);
        wideFirst.SetRange(0, 10000);
        QVERIFY(wideFirst.IsThrottled());
    }

    // Below the next update position a throttled SetPos neither pumps nor moves the bar.
    void throttledSetPosAnswersAtOnce() {
        ToviProgressDlg dlg(true);
        QVERIFY(dlg.Create());
        dlg.SetRange(0, 1000);
        QCOMPARE(dlg.SetPos(0), 0);
        QCOMPARE(ui->Pumps(), 1);
        QCOMPARE(dlg.SetPos(9), 0);
        QCOMPARE(dlg.SetPos(5), 0);
        QCOMPARE(ui->Pumps(), 1);
        QCOMPARE(dlg.Position(), 0);
        QCOMPARE(dlg.SetPos(10), 0);
        QCOMPARE(ui->Pumps(), 2);
        QCOMPARE(dlg.Position(), 10);
        QCOMPARE(dlg.Percent(), QStringLiteral("1%"));
        // A jump far ahead updates, and the next update is an interval past it.
        QCOMPARE(dlg.SetPos(500), 10);
        QCOMPARE(dlg.SetPos(509), 500);
        QCOMPARE(ui->Pumps(), 3);
        QCOMPARE(dlg.SetPos(510), 500);
        QCOMPARE(ui->Pumps(), 4);
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

    // The percentage and the message reach the window only when they change.
    void textsAreSetOnlyWhenTheyChange() {
        ToviProgressDlg dlg(false);
        QVERIFY(dlg.Create());
        dlg.SetRange(0, 1000);
        dlg.SetStep(1);
        for (int i = 0; i < 1000; ++i) {
            dlg.StepIt();
        }
        const auto view = ui->LastProgress();
        QCOMPARE(view->positions.size(), 1001);  // the one given at Create, then each step
        QStringList percents;
        for (int i = 0; i <= 100; ++i) {
            percents << QStringLiteral("%1%").arg(i);
        }
        QCOMPARE(view->percents, percents);

        dlg.SetMessage(QStringLiteral("写真を抽出しています"));
        dlg.SetMessage(QStringLiteral("写真を抽出しています"));
        dlg.SetMessage(QString());
        QCOMPARE(dlg.Message(), QStringLiteral("写真を抽出しています"));
        dlg.SetMessage(QStringLiteral("並べ替えています"));
        QCOMPARE(view->messages, QStringList({QStringLiteral("写真を抽出しています"),
                                              QStringLiteral("並べ替えています")}));
    }

    // Unthrottled, StepIt moves by the step and stops at the upper end.
    void stepItUsesTheStep() {
        ToviProgressDlg dlg(false);
        QVERIFY(dlg.Create());
        dlg.SetRange(0, 100);
        QCOMPARE(dlg.SetStep(7), 10);
        QCOMPARE(dlg.StepIt(), 0);
        QCOMPARE(dlg.StepIt(), 7);
        QCOMPARE(dlg.Position(), 14);
        for (int i = 0; i < 20; ++i) {
            dlg.StepIt();
        }
        QCOMPARE(dlg.Position(), 100);
        QCOMPARE(dlg.Percent(), QStringLiteral("100%"));
    }

    // A click at position `clickAt` is reported once, at the first update position from
    // there on; unthrottled it is reported at once.
    void cancelIsNoticedAtTheNextUpdate_data() {
        QTest::addColumn<bool>("throttled");
        QTest::addColumn<int>("upper");
        QTest::addColumn<int>("clickAt");
        QTest::addColumn<int>("reportedAt");
        QTest::newRow("throttled, between updates") << true << 1000 << 5 << 11;
        QTest::newRow("throttled, just after an update") << true << 1000 << 12 << 21;
        QTest::newRow("throttled, after the last interval") << true << 1000 << 995 << 1000;
        QTest::newRow("unthrottled") << false << 1000 << 5 << 5;
        QTest::newRow("throttling turned off by the range") << true << 199 << 5 << 5;
    }
    void cancelIsNoticedAtTheNextUpdate() {
        QFETCH(bool, throttled);
        QFETCH(int, upper);
        QFETCH(int, clickAt);
        QFETCH(int, reportedAt);
        ToviProgressDlg dlg(throttled);
        QVERIFY(dlg.Create());
        dlg.SetRange(0, upper);
        dlg.SetStep(1);
        const auto view = ui->LastProgress();
        QVERIFY(view->cancelHandler);
        int reported = -1;
        for (int i = 1; i <= upper; ++i) {
            dlg.StepIt();
            if (i == clickAt) {
                view->cancelHandler();  // a click handled while something else pumped
            }
            if (dlg.GetCancel()) {
                reported = i;
                break;
            }
        }
        QCOMPARE(reported, reportedAt);
        for (int i = 0; i < 30; ++i) {
            dlg.StepIt();
            QVERIFY(!dlg.GetCancel());
        }
    }

    // A click during the pump of GetCancel is answered by that same GetCancel, and once only.
    void cancelIsReportedOnce() {
        ToviProgressDlg dlg(false);
        QVERIFY(dlg.Create());
        ui->PressCancelAtPump(1);
        QVERIFY(dlg.GetCancel());
        QVERIFY(!dlg.GetCancel());
        QVERIFY(!dlg.GetCancel());
        QCOMPARE(ui->Pumps(), 3);
    }

    // Without cancel the button is hidden and neither it nor the close box cancels.
    void cancelCanBeDisabled_data() {
        QTest::addColumn<bool>("enabled");
        QTest::newRow("enabled") << true;
        QTest::newRow("disabled") << false;
    }
    void cancelCanBeDisabled() {
        QFETCH(bool, enabled);
        ToviProgressDlg dlg(false);
        dlg.SetCancelBtnEnabled(enabled);
        QVERIFY(dlg.Create());
        const auto view = ui->LastProgress();
        QCOMPARE(view->IsCancelButtonShown(), enabled);
        ui->PressCancelAtPump(1);
        ui->PressCancelAtPump(3);
        dlg.SetPos(10);
        QCOMPARE(dlg.GetCancel(), enabled);
        QCOMPARE(dlg.GetCancel(), enabled);
    }

    // A window lost during a pump is never touched again; the loop runs on to its end
    // and keeps its positions and percentage.
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

    // The owner is disabled while the window is up and enabled again however it closes.
    void ownerIsEnabledAgainOnClose_data() {
        QTest::addColumn<bool>("byDestroyWindow");
        QTest::newRow("DestroyWindow") << true;
        QTest::newRow("destructor") << false;
    }
    void ownerIsEnabledAgainOnClose() {
        QFETCH(bool, byDestroyWindow);
        std::shared_ptr<ScriptedProgressRecord> view;
        {
            ToviProgressDlg dlg(true);
            QVERIFY(dlg.Create());
            view = ui->LastProgress();
            QVERIFY(view->IsShown());
            QVERIFY(!view->ownerEnabled);
            QVERIFY(!dlg.Create());
            if (byDestroyWindow) {
                QVERIFY(dlg.DestroyWindow());
                QVERIFY(!dlg.DestroyWindow());
                QVERIFY(!dlg.IsWindow());
                // A closed dialog still answers, without a window to talk to.
                dlg.SetRange(0, 10);
                dlg.SetPos(5);
                dlg.SetMessage(QStringLiteral("終了"));
                QCOMPARE(dlg.Percent(), QStringLiteral("50%"));
            }
        }
        QCOMPARE(ui->ProgressViews().size(), 1);
        QCOMPARE(view->ownerStates, (QList<bool>{false, true}));
        QCOMPARE(view->closeCount, 1);
        QCOMPARE(view->callsAfterClose, 0);
        QVERIFY(!view->cancelHandler);  // the view went with the dialog
    }

    // A presenter that shows nothing still gets a working loop.
    void withoutAView() {
        ui->SetCreatesProgressViews(false);
        ToviProgressDlg dlg(true);
        QVERIFY(dlg.Create());
        QVERIFY(dlg.IsWindow());
        dlg.SetRange(0, 400);
        dlg.SetMessage(QStringLiteral("出力しています"));
        for (int i = 0; i < 100; ++i) {
            dlg.StepIt();
            QVERIFY(!dlg.GetCancel());
        }
        QCOMPARE(dlg.Position(), 97);  // the last update position: 1, 5, ..., 97
        QCOMPARE(dlg.Percent(), QStringLiteral("24%"));
        QCOMPARE(dlg.Message(), QStringLiteral("出力しています"));
        QVERIFY(ui->ProgressViews().isEmpty());
        QVERIFY(dlg.DestroyWindow());
    }

    // Texts given before Create are shown when the window opens; an empty caption is the
    // application's name.
    void captionAndEarlySettings() {
        ui->SetApplicationName(QStringLiteral("検査ビューア"));
        ToviProgressDlg dlg(false);
        dlg.SetMessage(QStringLiteral("準備しています"));
        dlg.SetRange(0, 50);
        dlg.SetPos(25);
        QVERIFY(dlg.Create());
        const auto view = ui->LastProgress();
        QCOMPARE(view->captions, QStringList{QStringLiteral("検査ビューア")});
        QCOMPARE(view->messages, QStringList{QStringLiteral("準備しています")});
        QCOMPARE(view->ranges.last(), (QPair<int, int>(0, 50)));
        QCOMPARE(view->positions.last(), 25);
        QCOMPARE(view->percents.last(), QStringLiteral("50%"));
        dlg.SetCaption(QStringLiteral("写真の出力"));
        dlg.SetCaption(QString());
        QCOMPARE(view->captions.mid(1),
                 (QStringList{QStringLiteral("写真の出力"), QStringLiteral("検査ビューア")}));
    }

private:
    std::unique_ptr<ScriptedUi> ui;
    std::unique_ptr<ScopedUi> installed;
};

QTEST_GUILESS_MAIN(ToviProgressDlgTest)
#include "ToviProgressDlgTest.moc"
