#include "dialogs/ToviItemSetUpDlg.h"
#include "dialogs/ToviSelectImageTypeDlg.h"
#include "dialogs/ToviSetUpDlg.h"
#include "imagefacts/ToviImageCheckCommon.h"
#include "imagefacts/ToviJacicImageChecker.h"
#include "platform/ToviProfile.h"
#include "tests/support/ScriptedUi.h"
#include "tests/widgets/SetUpDlgDriver.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QRadioButton>
#include <QTemporaryDir>

#include <memory>

namespace {

ToviItemManager SampleItems() {
    ToviItemManager manager;
    ToviItemShowSettings& list = manager.GetItemShowSettings();
    list.Add(QStringLiteral("写真タイトル"), true, 3, Definition::GradeRequired, InfoTypeItem);
    list.Add(QStringLiteral("工種"), false, 5, Definition::GradeOptional, InfoTypeItem);
    list.Add(QStringLiteral("施工管理値"), true, 9, Definition::GradeOptional, InfoTypeItem);
    list.Add(QStringLiteral("ファイルサイズ"), false, 20, Definition::GradeOptional, InfoTypeFile);
    list.Add(QStringLiteral("撮影日時"), true, 20, Definition::GradeOptional, InfoTypeExif);
    list.SetShowTitle(false);
    return manager;
}

}  // namespace

class ToviSetUpDlgTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    ScriptedUiSlot ui;

    QString Path(const QString& name) const { return temp.filePath(name); }

    std::unique_ptr<ToviSetUpDlg> Open(const ToviLabelManager& labels = ToviLabelManager(),
                                       const ToviPhotoCtrlVisualSetting& visual = {},
                                       const ToviSortCondition& sort = {},
                                       const ToviItemManager& items = SampleItems()) {
        auto dialog = std::make_unique<ToviSetUpDlg>(labels, visual, sort, items);
        dialog->show();
        QApplication::setActiveWindow(dialog.get());
        return dialog;
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(Path(QStringLiteral("profile.ini")));
    }

    void init() { ui.Begin(); }

    void cleanup() { ui.End(); }

    void cleanupTestCase() { ToviProfile::Instance().UseFile(QString()); }

    // ---- label names -----------------------------------------------------------------------

    void labelNameLimits_data() {
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("taken");
        QTest::addColumn<QString>("message");
        const QString tooLong =
            QStringLiteral("付箋名が長すぎます。(半角)32文字以下に再設定してください。");
        QTest::newRow("32 bytes") << 1064 << QString(32, QLatin1Char('a')) << true << QString();
        QTest::newRow("33 bytes") << 1064 << QString(33, QLatin1Char('a')) << false << tooLong;
        QTest::newRow("16 full-width") << 1065 << QString(16, QChar(0x3042)) << true << QString();
        QTest::newRow("17 full-width") << 1065 << QString(17, QChar(0x3042)) << false << tooLong;
        QTest::newRow("31 + one full-width")
            << 1083 << QString(31, QLatin1Char('b')) + QChar(0x3042) << false << tooLong;
        QTest::newRow("half-width katakana count 1")
            << 1066 << QString(32, QChar(0xFF71)) << true << QString();
        QTest::newRow("outside Shift_JIS")
            << 1083 << QStringLiteral("한글") << false << QStringLiteral("Shift_JIS");
    }

    // A name is taken up to 32 bytes of Shift_JIS; a refused one keeps the dialog open with
    // the edit focused and its text selected, and nothing goes into the returned names.
    void labelNameLimits() {
        QFETCH(int, id);
        QFETCH(QString, name);
        QFETCH(bool, taken);
        QFETCH(QString, message);
        auto dialog = Open();
        auto* edit = Control<QLineEdit>(dialog.get(), id);
        QVERIFY(edit);
        Retype(edit, name);
        QCOMPARE(edit->text(), name);
        QTest::mouseClick(Ok(dialog.get()), Qt::LeftButton);
        if (taken) {
            QCOMPARE(dialog->result(), int(QDialog::Accepted));
            QVERIFY(ui->Questions().isEmpty());
            const int slot = id == 1083 ? 5 : id - 1063;
            QCOMPARE(dialog->GetLabelMngr().GetLabelAttribute(slot).GetName(), name);
            return;
        }
        QVERIFY(dialog->isVisible());
        QCOMPARE(ui->Questions().size(), 1);
        QVERIFY2(ui->Questions()[0].text.contains(message), qPrintable(ui->Questions()[0].text));
        QCOMPARE(ui->Questions()[0].icon, ToviUi::IconWarning);
        QCOMPARE(dialog->focusWidget(), edit);
        QCOMPARE(edit->selectedText(), name);
        QCOMPARE(dialog->GetLabelMngr().GetLabelAttribute(1).GetName(), QStringLiteral("追記"));
    }

    // Of several names that can't be kept, the first in slot order is named; the read-only
    // names count as well.
    void firstBadNameReported_data() {
        QTest::addColumn<QString>("okName");
        QTest::addColumn<int>("expected");
        QTest::newRow("editable names") << QStringLiteral("OK") << 1065;
        QTest::newRow("stored OK name too long") << QString(20, QChar(0x3042)) << 1063;
    }
    void firstBadNameReported() {
        QFETCH(QString, okName);
        QFETCH(int, expected);
        ToviLabelManager labels;
        labels.GetLabelAttribute(0).SetName(okName);
        auto dialog = Open(labels);
        Retype(Control<QLineEdit>(dialog.get(), 1083), QString(40, QLatin1Char('x')));
        Retype(Control<QLineEdit>(dialog.get(), 1065), QString(17, QChar(0x6F22)));
        QTest::mouseClick(Ok(dialog.get()), Qt::LeftButton);
        QVERIFY(dialog->isVisible());
        QCOMPARE(ui->Questions().size(), 1);
        auto* edit = Control<QLineEdit>(dialog.get(), expected);
        QCOMPARE(dialog->focusWidget(), edit);
        QCOMPARE(edit->selectedText(), edit->text());
    }

    // ---- sort ------------------------------------------------------------------------------

    void sortCondition_data() {
        QTest::addColumn<bool>("execSort");
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("ascending");
        QTest::addColumn<int>("shownKey");   // the combo's index at opening
        QTest::addColumn<int>("sortClick");  // 1069, 1070 or 0
        QTest::addColumn<int>("keyDowns");   // Down keys in the combo after that
        QTest::addColumn<int>("directionClick");
        QTest::addColumn<bool>("outExec");
        QTest::addColumn<QString>("outKey");
        QTest::addColumn<bool>("outAscending");
        const QString date = QStringLiteral("撮影年月日");
        const QString serial = QStringLiteral("シリアル番号");
        const QString title = QStringLiteral("写真タイトル");
        QTest::newRow("switched on, second key, descending")
            << false << date << true << -1 << 1070 << 1 << 1073 << true << serial << false;
        QTest::newRow("switched on as it opens")
            << false << date << true << -1 << 1070 << 0 << 0 << true << date << true;
        QTest::newRow("switched off")
            << true << title << false << 2 << 1069 << 0 << 0 << false << QString() << true;
        QTest::newRow("unknown key kept") << true << QStringLiteral("工種") << false << -1 << 0 << 0
                                          << 0 << true << QStringLiteral("工種") << false;
    }
    void sortCondition() {
        QFETCH(bool, execSort);
        QFETCH(QString, key);
        QFETCH(bool, ascending);
        QFETCH(int, shownKey);
        QFETCH(int, sortClick);
        QFETCH(int, keyDowns);
        QFETCH(int, directionClick);
        ToviSortCondition sort;
        sort.ExecSort(execSort);
        sort.SetKeyItem(key);
        sort.Ascending(ascending);
        auto dialog = Open(ToviLabelManager(), {}, sort);
        auto* combo = Control<QComboBox>(dialog.get(), 1071);
        auto* up = Control<QRadioButton>(dialog.get(), 1072);
        auto* down = Control<QRadioButton>(dialog.get(), 1073);
        QCOMPARE(combo->count(), 3);
        QCOMPARE(combo->currentIndex(), shownKey);
        QCOMPARE(combo->isEnabled(), execSort);
        QCOMPARE(up->isEnabled(), execSort);
        QCOMPARE(down->isChecked(), execSort && !ascending);
        QVERIFY(execSort || (!up->isChecked() && !down->isChecked()));
        if (sortClick) {
            QTest::mouseClick(Control<QRadioButton>(dialog.get(), sortClick), Qt::LeftButton);
            const bool on = sortClick == 1070;
            QCOMPARE(combo->isEnabled(), on);
            QCOMPARE(combo->currentIndex(), on ? 0 : -1);
            QCOMPARE(up->isChecked(), on);
            QCOMPARE(down->isEnabled(), on);
        }
        combo->setFocus();
        for (int i = 0; i < keyDowns; ++i) {
            QTest::keyClick(combo, Qt::Key_Down);
        }
        if (directionClick) {
            QTest::mouseClick(Control<QRadioButton>(dialog.get(), directionClick), Qt::LeftButton);
        }
        QTest::mouseClick(Ok(dialog.get()), Qt::LeftButton);
        QCOMPARE(dialog->result(), int(QDialog::Accepted));
        const ToviSortCondition& out = dialog->GetSortCondition();
        QTEST(out.IsExecSort(), "outExec");
        QTEST(out.GetKeyItem(), "outKey");
        QTEST(out.IsAscending(), "outAscending");
    }

    // ---- display ---------------------------------------------------------------------------

    void displayMode_data() {
        QTest::addColumn<int>("mode");
        for (int mode = 0; mode < 7; ++mode) {
            QTest::addRow("mode %d", mode) << mode;
        }
    }
    // Each mode has its own preview; the two list modes have no information list to place.
    void displayMode() {
        QFETCH(int, mode);
        ToviPhotoCtrlVisualSetting visual;
        visual.SetDivType(static_cast<ToviPhotoCtrlVisualSetting::DivideType>(50));
        auto dialog = Open(ToviLabelManager(), visual);
        QVERIFY(Control<QRadioButton>(dialog.get(), 1078)->isChecked());  // shown as six
        auto* preview = Control<QLabel>(dialog.get(), 1087);
        const QImage before = preview->pixmap().toImage();
        QTest::mouseClick(Control<QRadioButton>(dialog.get(), 1074 + mode), Qt::LeftButton);
        QCOMPARE(preview->pixmap().toImage() == before, mode == 4);
        const bool list = mode >= 5;
        QCOMPARE(Control<QRadioButton>(dialog.get(), 1085)->isEnabled(), !list);
        QCOMPARE(Control<QRadioButton>(dialog.get(), 1086)->isEnabled(), !list);
        QTest::mouseClick(Ok(dialog.get()), Qt::LeftButton);
        QCOMPARE(int(dialog->GetVisualSetting().GetDivType()), mode);
    }

    // The other choices of the visual setting, read back after OK; the control-value flag
    // follows the display of 施工管理値.
    void visualChoices() {
        ToviPhotoCtrlVisualSetting visual;
        visual.SetDivType(ToviPhotoCtrlVisualSetting::Divide4);
        visual.SetTitleShowType(static_cast<ToviPhotoCtrlVisualSetting::TitleShowType>(7));
        visual.SetVisibleControlValue(false);
        auto dialog = Open(ToviLabelManager(), visual);
        QVERIFY(Control<QRadioButton>(dialog.get(), 1084)->isChecked());
        QVERIFY(Control<QRadioButton>(dialog.get(), 1086)->isChecked());
        QVERIFY(!Control<QPushButton>(dialog.get(), 1147)->isEnabled());
        auto* infoPreview = Control<QLabel>(dialog.get(), 1088);
        const QImage beside = infoPreview->pixmap().toImage();
        QTest::mouseClick(Control<QRadioButton>(dialog.get(), 1085), Qt::LeftButton);
        QVERIFY(infoPreview->pixmap().toImage() != beside);
        QTest::mouseClick(Control<QRadioButton>(dialog.get(), 1082), Qt::LeftButton);
        QTest::mouseClick(Control<QRadioButton>(dialog.get(), 1130), Qt::LeftButton);
        QTest::mouseClick(Control<QCheckBox>(dialog.get(), 1050), Qt::LeftButton);
        QVERIFY(Control<QPushButton>(dialog.get(), 1147)->isEnabled());
        QCOMPARE(Rows(Control<QListWidget>(dialog.get(), 1056)),
                 QStringList({QStringLiteral("写真タイトル"), QStringLiteral("施工管理値"),
                              QStringLiteral("撮影日時")}));
        QTest::mouseClick(Ok(dialog.get()), Qt::LeftButton);
        const ToviPhotoCtrlVisualSetting& out = dialog->GetVisualSetting();
        QCOMPARE(int(out.GetImageTextArrange()), 0);
        QCOMPARE(int(out.GetTitleShowType()), 1);
        QVERIFY(!out.GetVisibleComment());
        QVERIFY(out.GetDoEditCheck());
        QVERIFY(out.GetVisibleControlValue());
        QCOMPARE(out.GetItemShowSettings(), SampleItems().GetItemShowSettings());
    }

    // ---- the item dialog -------------------------------------------------------------------

    // Rows move between the lists and within the shown one; OK is refused with nothing shown
    // and writes the shown rows first, then the hidden ones by kind.
    void itemDialog() {
        ToviItemManager manager = SampleItems();
        ToviItemSetUpDlg dialog(&manager);
        dialog.show();
        const auto list = [&](int id) {
            return dialog.findChild<QListWidget*>(ToviItemSetUpDlg::ControlName(id));
        };
        const auto button = [&](int id) {
            return dialog.findChild<QPushButton*>(ToviItemSetUpDlg::ControlName(id));
        };
        QListWidget* shown = list(1090);
        QCOMPARE(Rows(shown),
                 QStringList({QStringLiteral("写真タイトル"), QStringLiteral("施工管理値"),
                              QStringLiteral("撮影日時")}));
        QCOMPARE(Rows(list(1095)), QStringList({QStringLiteral("工種")}));
        QCOMPARE(Rows(list(1096)), QStringList({QStringLiteral("ファイルサイズ")}));
        QVERIFY(list(1095)->isVisible() && !list(1096)->isVisible());
        for (int id : {1091, 1092, 1093, 1094}) {
            QVERIFY2(!button(id)->isEnabled(), qPrintable(QString::number(id)));
        }

        // 施工管理値 down to the bottom: 下へ then goes dark.
        ClickRow(shown, 1);
        QVERIFY(button(1093)->isEnabled() && button(1094)->isEnabled());
        QTest::mouseClick(button(1094), Qt::LeftButton);
        QCOMPARE(shown->currentRow(), 2);
        QVERIFY(!button(1094)->isEnabled());
        QTest::mouseClick(button(1093), Qt::LeftButton);
        QTest::mouseClick(button(1093), Qt::LeftButton);
        QCOMPARE(Rows(shown).first(), QStringLiteral("施工管理値"));
        QVERIFY(!button(1093)->isEnabled());

        // An Exif row goes back to its own kind, which comes to the front.
        ClickRow(shown, 2);
        QCOMPARE(shown->currentItem()->text(), QStringLiteral("撮影日時"));
        QTest::mouseClick(button(1092), Qt::LeftButton);
        QVERIFY(list(1097)->isVisible());
        QCOMPARE(Rows(list(1097)), QStringList({QStringLiteral("撮影日時")}));
        QCOMPARE(shown->currentRow(), 1);  // the last row went: the new last one is chosen

        // Emptied, the list can't be confirmed until a row comes back.
        QTest::mouseClick(button(1092), Qt::LeftButton);
        QTest::mouseClick(button(1092), Qt::LeftButton);
        QCOMPARE(shown->count(), 0);
        QVERIFY(!Ok(&dialog)->isEnabled());
        QVERIFY(!button(1092)->isEnabled());
        auto* category = dialog.findChild<QComboBox*>(ToviItemSetUpDlg::ControlName(1144));
        category->setFocus();
        QTest::keyClick(category, Qt::Key_Up);
        QTest::keyClick(category, Qt::Key_Up);
        QVERIFY(list(1095)->isVisible());
        // Each row went in after the one selected before it.
        QCOMPARE(Rows(list(1095)),
                 QStringList({QStringLiteral("写真タイトル"), QStringLiteral("施工管理値"),
                              QStringLiteral("工種")}));
        ClickRow(list(1095), 2);
        QTest::mouseClick(button(1091), Qt::LeftButton);
        QVERIFY(Ok(&dialog)->isEnabled());
        QCOMPARE(list(1095)->currentRow(), 1);
        QTest::mouseClick(button(1091), Qt::LeftButton);  // after the selected shown row
        QCOMPARE(Rows(shown), QStringList({QStringLiteral("工種"), QStringLiteral("施工管理値")}));

        QTest::mouseClick(Ok(&dialog), Qt::LeftButton);
        const ToviItemShowSettings& out = manager.GetItemShowSettings();
        QStringList titles;
        QList<bool> shownFlags;
        for (const ToviItemShowSetting& entry : out) {
            titles.append(entry.title);
            shownFlags.append(entry.bold);
        }
        QCOMPARE(titles,
                 QStringList({QStringLiteral("工種"), QStringLiteral("施工管理値"),
                              QStringLiteral("写真タイトル"), QStringLiteral("ファイルサイズ"),
                              QStringLiteral("撮影日時")}));
        QCOMPARE(shownFlags, QList<bool>({true, true, false, false, false}));
        QCOMPARE(out[2].index, 3);
        QCOMPARE(int(out[2].grade), int(Definition::GradeRequired));
        QCOMPARE(int(out[4].infoType), int(InfoTypeExif));
        QVERIFY(out.IsShowTitle());
    }

    // Cancel in the item dialog leaves the setup dialog's copy and its list as they were;
    // OK there refreshes the list of shown titles.
    void itemDialogFromSetUp() {
        auto dialog = Open();
        for (bool accept : {false, true}) {
            WhenModal<ToviItemSetUpDlg>([accept](ToviItemSetUpDlg* items) {
                auto* shown = items->findChild<QListWidget*>(ToviItemSetUpDlg::ControlName(1090));
                ClickRow(shown, 1);
                QTest::mouseClick(
                    items->findChild<QPushButton*>(ToviItemSetUpDlg::ControlName(1092)),
                    Qt::LeftButton);
                QTest::mouseClick(accept ? Ok(items) : Cancel(items), Qt::LeftButton);
            });
            QTest::mouseClick(Control<QPushButton>(dialog.get(), 1057), Qt::LeftButton);
            QCOMPARE(dialog->GetItemManager().GetItemShowSettings() ==
                         SampleItems().GetItemShowSettings(),
                     !accept);
        }
        QCOMPARE(Rows(Control<QListWidget>(dialog.get(), 1056)),
                 QStringList({QStringLiteral("写真タイトル"), QStringLiteral("撮影日時")}));
        QTest::mouseClick(Ok(dialog.get()), Qt::LeftButton);
        QVERIFY(!dialog->GetVisualSetting().GetVisibleControlValue());
    }

    // ---- the tamper-check types ------------------------------------------------------------

    // The rows in selection order, ticked as the setting says; the text stored is in list
    // order whatever order it came in; none ticked is refused; Cancel keeps the text.
    void checkTypes() {
        const bool blackboard = ToviJacicImageChecker().IsEnableDLL();
        QList<int> rowTypes{0, 2};
        if (blackboard) {
            rowTypes.append(1);
        }
        ToviPhotoCtrlVisualSetting visual;
        visual.SetDoEditCheck(true);
        visual.SetEditCheckTypes(QStringLiteral("2,0"));
        auto dialog = Open(ToviLabelManager(), visual);
        auto* typeButton = Control<QPushButton>(dialog.get(), 1147);
        QVERIFY(typeButton->isEnabled());

        // Nothing ticked: refused, the dialog stays; then Cancel.
        WhenModal<ToviSelectImageTypeDlg>([&](ToviSelectImageTypeDlg* types) {
            QListWidget* list = types->List();
            QCOMPARE(list->count(), rowTypes.size());
            for (int row = 0; row < list->count(); ++row) {
                QCOMPARE(list->item(row)->data(Qt::UserRole).toInt(), rowTypes[row]);
                QCOMPARE(list->item(row)->text(),
                         ToviImageCheckCommon::QueryCameraName(
                             static_cast<ToviImageCheckCommon::CameraType>(rowTypes[row])));
                QCOMPARE(list->item(row)->checkState() == Qt::Checked, rowTypes[row] != 1);
            }
            QCOMPARE(types->Description()->text(), ToviSelectImageTypeDlg::NoSelectionText());
            for (int row : {0, 1}) {
                ClickRow(list, row);
                QTest::keyClick(list, Qt::Key_Space);
            }
            QCOMPARE(types->Description()->text(), ToviSelectImageTypeDlg::DescriptionOf(2));
            QTest::mouseClick(Ok(types), Qt::LeftButton);
            QVERIFY(types->isVisible());
            QCOMPARE(ui->Questions().size(), 1);
            QCOMPARE(ui->Questions()[0].text, QStringLiteral("一つ以上チェックを付けてください。"));
            QTest::mouseClick(Cancel(types), Qt::LeftButton);
        });
        QTest::mouseClick(typeButton, Qt::LeftButton);

        // Ticked in reverse order, stored in list order.
        WhenModal<ToviSelectImageTypeDlg>([&](ToviSelectImageTypeDlg* types) {
            QListWidget* list = types->List();
            QCOMPARE(list->item(0)->checkState(), Qt::Checked);  // Cancel changed nothing
            ClickRow(list, 0);
            QCOMPARE(types->Description()->text(), ToviSelectImageTypeDlg::DescriptionOf(0));
            QTest::keyClick(list, Qt::Key_Space);
            QTest::mouseClick(Ok(types), Qt::LeftButton);
        });
        QTest::mouseClick(typeButton, Qt::LeftButton);
        QTest::mouseClick(Ok(dialog.get()), Qt::LeftButton);
        QCOMPARE(dialog->GetVisualSetting().GetEditCheckTypes(), QStringLiteral("2"));

        auto again = Open(ToviLabelManager(), visual);
        WhenModal<ToviSelectImageTypeDlg>([&](ToviSelectImageTypeDlg* types) {
            ClickRow(types->List(), 0);
            QTest::keyClick(types->List(), Qt::Key_Space);  // 0 off
            QTest::keyClick(types->List(), Qt::Key_Space);  // 0 on again
            QTest::mouseClick(Ok(types), Qt::LeftButton);
        });
        QTest::mouseClick(Control<QPushButton>(again.get(), 1147), Qt::LeftButton);
        QTest::mouseClick(Ok(again.get()), Qt::LeftButton);
        QCOMPARE(again->GetVisualSetting().GetEditCheckTypes(), QStringLiteral("0,2"));
    }
};

QTEST_MAIN(ToviSetUpDlgTest)
#include "ToviSetUpDlgTest.moc"
