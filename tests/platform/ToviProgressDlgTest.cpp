#include "platform/ToviProgressDlg.h"
#include "tests/support/ScriptedUi.h"

#include <QtTest>

#include <climits>
#include <memory>

using namespace Qt::StringLiterals;

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

    // A loop that steps through its whole range: StepIt moves by the step and stops at the
    // upper end; throttling cuts the pumps to about one per percent, and only for spans that
    // leave at least two positions between updates.
    void steppingThroughTheRange_data() {
        QTest::addColumn<int>("lower");
        QTest::addColumn<int>("upper");
        QTest::addColumn<int>("step");
        QTest::addColumn<bool>("throttled");
        QTest::addColumn<int>("pumps");
        QTest::newRow("unthrottled, step 7") << 0 << 100 << 7 << false << 100;
        QTest::newRow("span 100") << 0 << 100 << 1 << false << 100;
        QTest::newRow("span 101, interval 1") << 0 << 101 << 1 << false << 101;
        // Updates at 1, 3, ..., 199, and at the upper end.
        QTest::newRow("span 200, interval 2") << 0 << 200 << 1 << true << 101;
        QTest::newRow("span 250, interval 2") << 0 << 250 << 1 << true << 126;
        QTest::newRow("span 1000, interval 10") << 0 << 1000 << 1 << true << 101;
        QTest::newRow("negative span 200") << -300 << -100 << 1 << true << 101;
    }
    void steppingThroughTheRange() {
        QFETCH(int, lower);
        QFETCH(int, upper);
        QFETCH(int, step);
        QFETCH(bool, throttled);
        QFETCH(int, pumps);
        ToviProgressDlg dlg(step == 1);
        QVERIFY(dlg.Create());
        dlg.SetRange(lower, upper);
        dlg.SetStep(step);
        QCOMPARE(dlg.IsThrottled(), throttled);
        dlg.StepIt();
        dlg.StepIt();
        QVERIFY(throttled || dlg.Position() == lower + 2 * step);
        for (int i = lower + 2; i < upper; ++i) {
            dlg.StepIt();
        }
        QCOMPARE(ui->Pumps(), pumps);
        QCOMPARE(dlg.Position(), upper);
        QCOMPARE(dlg.Percent(), u"100%"_s);
        QCOMPARE(ui->LastProgress()->positions.last(), upper);
        QCOMPARE(ui->LastProgress()->percents.last(), u"100%"_s);
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

    // A click during the pump of GetCancel is answered by that same GetCancel, and once only;
    // without cancel neither the button nor the close box cancels.
    void cancel_data() {
        QTest::addColumn<bool>("enabled");
        QTest::newRow("enabled") << true;
        QTest::newRow("disabled") << false;
    }
    void cancel() {
        QFETCH(bool, enabled);
        ToviProgressDlg dlg(false);
        dlg.SetCancelBtnEnabled(enabled);
        QVERIFY(dlg.Create());
        ui->PressCancelAtPump(1);
        QCOMPARE(dlg.GetCancel(), enabled);
        QVERIFY(!dlg.GetCancel());
    }

    // The message reaches the window only when it changes, an empty one is ignored; an empty
    // caption is the application's name, also when the window opens.
    void textsReachTheWindow() {
        ToviProgressDlg dlg(false);
        QVERIFY(dlg.Create());
        for (const char* text : {"抽出", "抽出", "", "並べ替え"}) {
            dlg.SetMessage(QString::fromUtf8(text));
        }
        dlg.SetCaption(u"写真の出力"_s);
        dlg.SetCaption(QString());
        const QString name = ui->ApplicationName();
        QCOMPARE(ui->LastProgress()->messages, (QStringList{"抽出", "並べ替え"}));
        QCOMPARE(ui->LastProgress()->captions, (QStringList{name, "写真の出力", name}));
    }

    // The owner is disabled while the window is up and enabled again when it closes. A window
    // lost during a pump is never touched again; the loop runs on to its end and keeps its
    // positions and percentage.
    void viewClosingOrDying_data() {
        QTest::addColumn<bool>("throttled");
        QTest::addColumn<int>("deathPump");  // 0: closed by DestroyWindow
        QTest::newRow("closed") << true << 0;
        QTest::newRow("unthrottled, early") << false << 3;
        QTest::newRow("throttled") << true << 20;
    }
    void viewClosingOrDying() {
        QFETCH(bool, throttled);
        QFETCH(int, deathPump);
        const bool dies = deathPump > 0;
        if (dies) {
            ui->DieAtPump(deathPump);
        }
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
                dlg.SetMessage(u"写真 %1"_s.arg(i));
            }
            QCOMPARE(view->alive, !dies);
            QCOMPARE(dlg.IsWindow(), !dies);
            QCOMPARE(dlg.Position(), 1000);
            QCOMPARE(dlg.Percent(), u"100%"_s);
            QCOMPARE(dlg.Message(), u"写真 999"_s);
            // With the window gone, stepping no longer pumps.
            QCOMPARE(dlg.DestroyWindow(), !dies);
            const int pumps = ui->Pumps();
            dlg.SetRange(0, 100);
            dlg.StepIt();
            QCOMPARE(ui->Pumps(), pumps);
            QVERIFY(!dlg.DestroyWindow());
        }
        QCOMPARE(view->callsAfterDeath, 0);
        QCOMPARE(view->closeCount, dies ? 0 : 1);
        QCOMPARE(view->ownerStates, dies ? QList<bool>({false}) : QList<bool>({false, true}));
    }

private:
    std::unique_ptr<ScriptedUi> ui;
    std::unique_ptr<ScopedUi> installed;
};

QTEST_GUILESS_MAIN(ToviProgressDlgTest)
#include "ToviProgressDlgTest.moc"
