#include "app/ToviMainWindow.h"
#include "app/ToviViewerDocument.h"
#include "dialogs/ToviSetUpDlg.h"
#include "document/ToviData.h"
#include "document/ToviNode.h"
#include "document/ToviPhoto.h"
#include "panels/ToviFolderTreePanel.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviNamePlate.h"
#include "panels/ToviSpiCtrl.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/WorkArea.h"
#include "tests/widgets/SetUpDlgDriver.h"

#include <QComboBox>
#include <QDir>
#include <QRadioButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <algorithm>
#include <memory>

namespace {

// Records the hints that reach a panel.
class RecordingPanel : public ToviPanel {
public:
    QList<int> hints;
    void OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object) override {
        hints.append(hint);
        ToviPanel::OnUpdate(sender, hint, object);
    }
};

QList<int> CurrentOrder(const ToviData* data) {
    QList<int> order;
    for (int pos = 0; pos < data->CurrentArray().GetSize(); ++pos) {
        order.append(data->CurrentArray().GetAt(pos));
    }
    return order;
}

}  // namespace

// The 設定 command of the main window: what OK and Cancel do to an open delivery, and to the
// stored settings with none open.
class ToviSetUpHostTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QString delivery;
    ScriptedUiSlot ui;

    QString Path(const QString& name) const { return temp.filePath(name); }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        UseTestStores(temp.path());
        DeliveryOptions options;
        options.photoCount = 24;
        options.images = DeliveryOptions::Images::Tiny;
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(Path(QStringLiteral("d")), options, &written, &error),
                 qPrintable(error));
        delivery = written.photoFolder;
    }

    void init() { ui.Begin(); }

    void cleanup() { ui.End(); }

    void cleanupTestCase() { ReleaseTestStores(); }

    // Ctrl+, opens the dialog on the delivery's settings; OK applies them and the views hear
    // one hint 7; the profile holds the new names.
    void hostAppliesOnOk() {
        ToviMainWindow window;
        RecordingPanel panel;
        window.Document()->AddPanel(&panel);
        QVERIFY(window.OpenDelivery(delivery, PhotoXMLMlit));
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        ToviData* data = window.Document()->Data();
        const QList<int> treeOrder = CurrentOrder(data);
        panel.hints.clear();
        WhenModal<ToviSetUpDlg>([](ToviSetUpDlg* dialog) {
            Retype(Control<QLineEdit>(dialog, 1064), QStringLiteral("要修正"));
            QTest::mouseClick(Control<QRadioButton>(dialog, 1075), Qt::LeftButton);
            QTest::mouseClick(Control<QRadioButton>(dialog, 1070), Qt::LeftButton);
            auto* combo = Control<QComboBox>(dialog, 1071);
            combo->setFocus();
            QTest::keyClick(combo, Qt::Key_Down);  // シリアル番号
            QTest::mouseClick(Control<QRadioButton>(dialog, 1073), Qt::LeftButton);
            QTest::mouseClick(Ok(dialog), Qt::LeftButton);
        });
        PressSetUpKey(&window);
        QCOMPARE(panel.hints, QList<int>({ToviData::HintSettingsChanged}));
        QCOMPARE(data->GetLabelManager()->GetLabelAttribute(1).GetName(), QStringLiteral("要修正"));
        QCOMPARE(int(data->GetVisualSetting().GetDivType()), 1);
        QVERIFY(data->GetSortCondition().IsExecSort());
        QVERIFY(!data->GetSortCondition().IsAscending());
        // Sorted by serial number, descending: the numbers never rise.
        const int serial = data->GetItemDef()->GetIndexFromTitle(QStringLiteral("シリアル番号"));
        QList<int> numbers;
        for (int index : CurrentOrder(data)) {
            numbers.append(data->GetPhotoActualPhotoArray(index)->GetTitle(serial).toInt());
        }
        QVERIFY(std::is_sorted(numbers.rbegin(), numbers.rend()));
        QVERIFY(CurrentOrder(data) != treeOrder);
        QCOMPARE(ToviProfile::Instance().GetProfileString(QStringLiteral("Label"),
                                                          QStringLiteral("Label2"), QString()),
                 QStringLiteral("要修正"));

        // Sorting off again gives back the tree's order.
        panel.hints.clear();
        WhenModal<ToviSetUpDlg>([](ToviSetUpDlg* dialog) {
            QTest::mouseClick(Control<QRadioButton>(dialog, 1069), Qt::LeftButton);
            QTest::mouseClick(Ok(dialog), Qt::LeftButton);
        });
        PressSetUpKey(&window);
        QCOMPARE(panel.hints, QList<int>({ToviData::HintSettingsChanged}));
        QCOMPARE(CurrentOrder(data), treeOrder);
        window.Document()->RemovePanel(&panel);
    }

    // A new order shows on the page also when the same OK changes how comments are shown.
    void hostReordersPage() {
        ToviMainWindow window;
        QVERIFY(window.OpenDelivery(delivery, PhotoXMLMlit));
        window.SetDivideType(ToviPhotoCtrlVisualSetting::Divide4);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        ToviData* data = window.Document()->Data();
        const bool comments = data->GetVisualSetting().GetVisibleComment();
        WhenModal<ToviSetUpDlg>([comments](ToviSetUpDlg* dialog) {
            QTest::mouseClick(Control<QRadioButton>(dialog, comments ? 1130 : 1131),
                              Qt::LeftButton);
            QTest::mouseClick(Control<QRadioButton>(dialog, 1070), Qt::LeftButton);
            QTest::mouseClick(Control<QRadioButton>(dialog, 1073), Qt::LeftButton);
            QTest::mouseClick(Ok(dialog), Qt::LeftButton);
        });
        PressSetUpKey(&window);
        QVERIFY(data->GetSortCondition().IsExecSort());
        // Each cell's caption is the title of the photograph now at its place.
        const int title = data->GetItemDef()->GetIndexFromTitle(QStringLiteral("写真タイトル"));
        int cells = 0;
        for (const ToviSpiCtrl* cell : window.MpiPanel()->findChildren<ToviSpiCtrl*>()) {
            if (cell->isVisible() && cell->PhotoIndex() >= 0) {
                ++cells;
                QCOMPARE(cell->NamePlate()->Title(),
                         data->GetPhoto(cell->PhotoIndex())->GetTitle(title));
            }
        }
        QCOMPARE(cells, 4);
    }

    // Cancel applies nothing and tells nobody.
    void hostCancelChangesNothing() {
        ToviMainWindow window;
        RecordingPanel panel;
        window.Document()->AddPanel(&panel);
        QVERIFY(window.OpenDelivery(delivery, PhotoXMLMlit));
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        ToviData* data = window.Document()->Data();
        const QString name = data->GetLabelManager()->GetLabelAttribute(2).GetName();
        const int mode = data->GetVisualSetting().GetDivType();
        panel.hints.clear();
        WhenModal<ToviSetUpDlg>([](ToviSetUpDlg* dialog) {
            Retype(Control<QLineEdit>(dialog, 1065), QStringLiteral("取消"));
            QTest::mouseClick(Control<QRadioButton>(dialog, 1074), Qt::LeftButton);
            QTest::mouseClick(Cancel(dialog), Qt::LeftButton);
        });
        PressSetUpKey(&window);
        QVERIFY(panel.hints.isEmpty());
        QCOMPARE(data->GetLabelManager()->GetLabelAttribute(2).GetName(), name);
        QCOMPARE(int(data->GetVisualSetting().GetDivType()), mode);
        QCOMPARE(ToviProfile::Instance().GetProfileString(QStringLiteral("Label"),
                                                          QStringLiteral("Label3"), QString()),
                 name);
        window.Document()->RemovePanel(&panel);
    }

    // Another tree kind rebuilds the document's tree, which the tree panel then shows.
    void hostTreeTypeRebuildsTree() {
        ToviMainWindow window;
        RecordingPanel panel;
        window.Document()->AddPanel(&panel);
        QVERIFY(window.OpenDelivery(delivery, PhotoXMLMlit));
        ToviData* data = window.Document()->Data();
        QTreeWidget* tree = window.FolderTree()->GetTreeCtrl();
        QVERIFY(tree);
        const auto topTitles = [&] {
            QStringList titles;
            QTreeWidgetItem* root = tree->topLevelItem(0);
            for (int i = 0; root && i < root->childCount(); ++i) {
                titles.append(root->child(i)->text(0));
            }
            return titles;
        };
        const QStringList before = topTitles();
        QStringList places;
        for (const ToviNode* child : data->Items()) {
            places.append(child->Title());
        }
        ToviPhotoCtrlVisualSetting visual = data->GetVisualSetting();
        const int oldTree = visual.GetTreeType();
        visual.SetTreeType(oldTree == 1 ? ToviPhotoCtrlVisualSetting::TreeKousyu
                                        : ToviPhotoCtrlVisualSetting::TreeSatsueikasyo);
        panel.hints.clear();
        window.ApplySetUp(*data->GetLabelManager(), visual, data->GetSortCondition(),
                          *data->GetItemManager());
        QCOMPARE(panel.hints, QList<int>({ToviData::HintSettingsChanged}));
        QStringList rebuilt;
        for (const ToviNode* child : data->Items()) {
            rebuilt.append(child->Title());
        }
        QVERIFY(rebuilt != places);
        QVERIFY(topTitles() != before);
        QCOMPARE(topTitles(), rebuilt);
        window.Document()->RemovePanel(&panel);
        visual.SetTreeType(static_cast<ToviPhotoCtrlVisualSetting::TreeType>(oldTree));
        data->SetVisualSetting(visual, false);
    }

    // With nothing open the dialog edits the stored settings; a store that can't be written
    // is named in one message, and the settings stay in force.
    void hostWithoutDeliveryAndUnwritableStore() {
        ToviProfile::Instance().Flush();
        QTemporaryDir store;
        const QString ini = store.filePath(QStringLiteral("sub/profile.ini"));
        ToviProfile::Instance().UseFile(ini);
        ToviProfile::Instance().WriteProfileString(
            QStringLiteral("Label"), QStringLiteral("Label6"), QStringLiteral("保存済み"));
        {
            ToviMainWindow window;
            window.show();
            QVERIFY(QTest::qWaitForWindowActive(&window));
            QString shown;
            WhenModal<ToviSetUpDlg>([&shown](ToviSetUpDlg* dialog) {
                shown = Control<QLineEdit>(dialog, 1083)->text();
                QVERIFY(!Control<QPushButton>(dialog, 1057)->isEnabled());
                Retype(Control<QLineEdit>(dialog, 1083), QStringLiteral("再印刷"));
                QTest::mouseClick(Ok(dialog), Qt::LeftButton);
            });
            PressSetUpKey(&window);
            QCOMPARE(shown, QStringLiteral("保存済み"));
            QVERIFY(ui->Questions().isEmpty());
            QSettings written(ini, QSettings::IniFormat);
            QCOMPARE(written.value(QStringLiteral("Label/Label6")).toString(),
                     QStringLiteral("再印刷"));

            // The store's folder goes away: OK says so once, naming the file.
            QVERIFY(QDir(store.filePath(QStringLiteral("sub"))).removeRecursively());
            WhenModal<ToviSetUpDlg>([](ToviSetUpDlg* dialog) {
                Retype(Control<QLineEdit>(dialog, 1083), QStringLiteral("一時"));
                QTest::mouseClick(Ok(dialog), Qt::LeftButton);
            });
            PressSetUpKey(&window);
            QCOMPARE(ui->Questions().size(), 1);
            QVERIFY(
                ui->Questions()[0].text.startsWith(QStringLiteral("設定を保存できませんでした")));
            QVERIFY(ui->Questions()[0].text.contains(ini));
            QCOMPARE(ToviProfile::Instance().GetProfileString(QStringLiteral("Label"),
                                                              QStringLiteral("Label6"), QString()),
                     QStringLiteral("一時"));
        }
        ToviProfile::Instance().UseFile(Path(QStringLiteral("profile.ini")));
        QVERIFY(!QFileInfo::exists(store.filePath(QStringLiteral("sub"))));
    }
};

QTEST_MAIN(ToviSetUpHostTest)
#include "ToviSetUpHostTest.moc"
