#include "tests/widgets/ExtractionFixture.h"

// The extraction window docked in the viewer, driven by mouse and keys.

class ToviExtractionDlgTest : public QObject, public ExtractionFixture {
    Q_OBJECT

private slots:
    void initTestCase() { WriteDeliveries(); }
    void init() { StartUi(); }
    void cleanup() { StopUi(); }
    void cleanupTestCase() { Finish(); }

    // Every check alone makes 抽出実行 available and takes it away again; nothing is on at
    // first. Without a delivery nothing can be touched, and 代表写真 only where the delivery
    // kind has the item: a delivery without it arrives with the check cleared.
    void enablingRules_data() {
        QTest::addColumn<QString>("check");
        for (const char* name :
             {"keyPhoto", "ngPhoto", "notcheckPhoto", "notExifinfo", "neceNotwrite"}) {
            QTest::newRow(name) << QString::fromLatin1(name);
        }
    }
    void enablingRules() {
        QFETCH(QString, check);
        ToviMainWindow empty;
        ToviExtractionDlg* idle = empty.ExtractionDlg();
        for (QWidget* control : idle->findChildren<QWidget*>()) {
            if (qobject_cast<QCheckBox*>(control) || qobject_cast<QPushButton*>(control)) {
                QVERIFY2(!control->isEnabled(), qPrintable(control->objectName()));
            }
        }

        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        QPushButton* execute = dlg->ExecuteButton();
        QVERIFY(dlg->DetailsButton()->isEnabled());
        QVERIFY(dlg->OutputButton()->isEnabled());
        QVERIFY(!execute->isEnabled());
        QCheckBox* box = Check(dlg, check);
        QVERIFY(box->isEnabled());
        Click(box);
        QVERIFY(box->isChecked());
        QVERIFY(execute->isEnabled());
        QVERIFY(!execute->isChecked());
        Click(box);
        QVERIFY(!execute->isEnabled());

        Click(Check(dlg, QStringLiteral("keyPhoto")));
        QVERIFY(window->OpenDelivery(withoutKey, PhotoXMLMlit));
        QVERIFY(!Check(dlg, QStringLiteral("keyPhoto"))->isChecked());
        QVERIFY(!Check(dlg, QStringLiteral("keyPhoto"))->isEnabled());
        QVERIFY(!execute->isEnabled());
        QVERIFY(Check(dlg, check)->isEnabled() == (check != QStringLiteral("keyPhoto")));
    }

    // The toggle: pressed it narrows to the condition and stays down as 抽出実行中; pressed
    // again the delivery is whole. Taking the last condition away while it runs does the same.
    void executeAndCancel() {
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        QPushButton* execute = dlg->ExecuteButton();
        const QList<int> whole = Current(*window);
        QCOMPARE(whole.size(), written.photos.size());
        QList<int> keyPhotos;
        for (int index : whole) {
            if (keyFlag[index] == QStringLiteral("1")) {
                keyPhotos.append(index);
            }
        }
        QVERIFY(!keyPhotos.isEmpty() && keyPhotos.size() < whole.size());

        Click(Check(dlg, QStringLiteral("keyPhoto")));
        Click(execute);
        QVERIFY(execute->isChecked());
        QCOMPARE(execute->text(), QStringLiteral("抽出実行中"));
        QCOMPARE(Current(*window), keyPhotos);
        QVERIFY(ui->Questions().isEmpty());

        Click(execute);
        QVERIFY(!execute->isChecked());
        QCOMPARE(execute->text(), QStringLiteral("抽出実行"));
        QCOMPARE(Current(*window), whole);

        Click(execute);
        QCOMPARE(Current(*window), keyPhotos);
        Click(Check(dlg, QStringLiteral("keyPhoto")));
        QVERIFY(!dlg->IsRunning());
        QVERIFY(!execute->isChecked());
        QVERIFY(!execute->isEnabled());
        QVERIFY(!window->Document()->Data()->IsExtractionOn());
        QCOMPARE(Current(*window), whole);
    }

    // Nothing found: the button tells so once; a further check that reruns says nothing, and
    // extraction stays on over an empty display until it is switched off.
    void emptyResultMessage() {
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        Click(Check(dlg, QStringLiteral("ngPhoto")));  // no photograph carries an NG label
        Click(dlg->ExecuteButton());
        QCOMPARE(ui->Questions().size(), 1);
        const ScriptedUi::Question asked = ui->Questions().first();
        QCOMPARE(asked.text, QStringLiteral("この条件で抽出される写真は1枚もありませんでした。"));
        QCOMPARE(asked.icon, ToviUi::IconInformation);
        QVERIFY(asked.caption.isEmpty());
        QVERIFY(dlg->ExecuteButton()->isChecked());
        QCOMPARE(Current(*window), QList<int>());
        QVERIFY(!dlg->OutputButton()->isEnabled());

        // In OR the second check brings every photograph back, silently; off again, and the
        // rerun that finds nothing is just as silent.
        Details(dlg, [](ToviExtDetailDlg* detail) {
            Click(detail->findChild<QRadioButton*>(QStringLiteral("orMode")));
            Click(Button(detail, "ok"));
        });
        QCOMPARE(dlg->Conditions().orMode, 1);
        QCOMPARE(Current(*window), QList<int>());
        Click(Check(dlg, QStringLiteral("notcheckPhoto")));
        QCOMPARE(Current(*window).size(), written.photos.size());
        QVERIFY(dlg->OutputButton()->isEnabled());
        Click(Check(dlg, QStringLiteral("notcheckPhoto")));
        QCOMPARE(Current(*window), QList<int>());
        QCOMPARE(ui->Questions().size(), 1);
        QVERIFY(dlg->IsRunning());
    }

    // Cancel in the progress window: the button comes up, nothing is said, and the node's
    // whole content stays shown with extraction off.
    void cancelInProgress() {
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        Click(Check(dlg, QStringLiteral("ngPhoto")));
        ui->PressCancelAtPump(ui->Pumps() + 1);
        Click(dlg->ExecuteButton());
        QVERIFY(ui->LastProgress());
        QVERIFY(!dlg->IsRunning());
        QVERIFY(!dlg->ExecuteButton()->isChecked());
        QCOMPARE(dlg->ExecuteButton()->text(), QStringLiteral("抽出実行"));
        QVERIFY(ui->Questions().isEmpty());
        QVERIFY(!window->Document()->Data()->IsExtractionOn());
        QCOMPARE(Current(*window).size(), written.photos.size());
        // The condition is kept: the button starts it again.
        QVERIFY(dlg->ExecuteButton()->isEnabled());
        Click(dlg->ExecuteButton());
        QVERIFY(dlg->IsRunning());
    }

    // 表示写真を保存 is refused during a slide show; otherwise the shown photographs go into the
    // folder chosen.
    void outputAllPhoto() {
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        Click(Check(dlg, QStringLiteral("keyPhoto")));
        Click(dlg->ExecuteButton());
        const int shown = window->Document()->Data()->GetCurrentPhotoCount();
        QVERIFY(shown > 1);
        SetSlideMode(true);
        Click(dlg->OutputButton());
        SetSlideMode(false);
        QCOMPARE(ui->Questions().size(), 1);
        QCOMPARE(ui->Questions()[0].text,
                 QStringLiteral("スライドモード中は写真の保存ができません。"));
        QCOMPARE(ui->Questions()[0].icon, ToviUi::IconInformation);

        const QString folder = Path(QStringLiteral("out"));
        QVERIFY(QDir().mkpath(folder));
        ui->QueueFolder(folder);
        Click(dlg->OutputButton());
        QCOMPARE(ui->Questions().size(), 2);
        QCOMPARE(ui->Questions()[1].text, ToviPhotoExport::DoneMessage(shown, shown, 0));
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), shown);
        QVERIFY(QDir(folder).removeRecursively());
    }

    // Enter and Escape inside the docked window neither close it nor press its buttons; Ctrl+F
    // brings the hidden window back with the keyboard in it; closing the delivery while it runs
    // resets it.
    void keysAndHost() {
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        QDockWidget* dock = window->ExtractionDock();
        QVERIFY(dock->isVisible());
        QVERIFY(dlg->isVisible() && !dlg->isWindow());
        Click(Check(dlg, QStringLiteral("ngPhoto")));
        dlg->ExecuteButton()->setFocus();
        for (Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
            QTest::keyClick(dlg->ExecuteButton(), key);
        }
        QVERIFY(dlg->isVisible());
        QVERIFY(!dlg->IsRunning());
        QVERIFY(ui->Questions().isEmpty());

        dock->hide();
        QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier);
        QVERIFY(dock->isVisible());
        QVERIFY(dlg->isAncestorOf(QApplication::focusWidget()));

        Click(dlg->ExecuteButton());
        QVERIFY(dlg->IsRunning());
        window->Document()->Close(window.get());
        QVERIFY(!dlg->IsRunning());
        QVERIFY(!dlg->ExecuteButton()->isChecked());
        QVERIFY(!Check(dlg, QStringLiteral("ngPhoto"))->isChecked());
        QVERIFY(!Check(dlg, QStringLiteral("ngPhoto"))->isEnabled());
        QVERIFY(!dlg->OutputButton()->isEnabled());
        QVERIFY(!dlg->Conditions().AnyOn());
        QVERIFY(window->OpenDelivery(withKey, PhotoXMLMlit));
        QVERIFY(Check(dlg, QStringLiteral("ngPhoto"))->isEnabled());
        QCOMPARE(window->Document()->Data()->GetExtractionData(),
                 static_cast<ToviExtractionSource*>(dlg));
        QVERIFY(!window->Document()->Data()->IsExtractionOn());

        // The same without the main window, whose own Escape ends a slide show.
        QWidget holder;
        auto* bare = new ToviExtractionDlg(&holder);
        holder.show();
        QVERIFY(QTest::qWaitForWindowExposed(&holder));
        for (QWidget* target : {static_cast<QWidget*>(Check(bare, QStringLiteral("ngPhoto"))),
                                static_cast<QWidget*>(bare)}) {
            target->setFocus();
            for (Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
                QTest::keyClick(target, key);
            }
        }
        QVERIFY(bare->isVisible());
    }

    // The dock's visibility is kept with the window's layout.
    void dockPersists() {
        {
            ToviMainWindow window;
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            QVERIFY(window.ExtractionDock()->isVisible());
            window.ExtractionDock()->hide();
            QVERIFY(window.close());
        }
        {
            ToviMainWindow window;
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            QVERIFY(!window.ExtractionDock()->isVisible());
            window.ShowExtraction();
            QVERIFY(window.close());
        }
        ToviMainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(window.ExtractionDock()->isVisible());
    }
};

QTEST_MAIN(ToviExtractionDlgTest)
#include "ToviExtractionDlgTest.moc"
