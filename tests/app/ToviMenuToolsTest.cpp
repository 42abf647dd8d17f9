#include "app/ToviMainWindow.h"
#include "app/ToviViewerDocument.h"
#include "dialogs/ToviDateTableDlg.h"
#include "dialogs/ToviIndexPageDlg.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "extraction/ToviSortCondition.h"
#include "panels/ToviFolderTreePanel.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviNamePlate.h"
#include "panels/ToviSpiCtrl.h"
#include "platform/ToviProfile.h"
#include "platform/ToviVerifierLibrary.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/TreeItemPoint.h"
#include "tests/support/WorkArea.h"
#include "tests/widgets/SetUpDlgDriver.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QTextBrowser>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QtTest>

namespace {

// Every photograph's six labels and comment, in actual order.
QStringList LabelState(ToviData* data) {
    QStringList rows;
    for (int i = 0; i < data->GetTotalCountPhoto(); ++i) {
        const ToviPhoto* photo = data->GetPhotoActualPhotoArray(i);
        QString row;
        for (unsigned label = 0; label < 6; ++label) {
            row += photo->IsLabelPasted(label) ? QLatin1Char('1') : QLatin1Char('0');
        }
        rows.append(row + QLatin1Char(' ') + photo->GetComment());
    }
    return rows;
}

// The same labels on the photographs of both documents: an NG with the free label, an OK, a
// free label with a comment, and the rest bare.
void SeedLabels(ToviData* data) {
    data->GetPhotoActualPhotoArray(0)->PasteLabel(1);
    data->GetPhotoActualPhotoArray(0)->PasteLabel(5);
    data->GetPhotoActualPhotoArray(1)->PasteLabel(0);
    data->GetPhotoActualPhotoArray(2)->PasteLabel(5);
    data->GetPhotoActualPhotoArray(2)->PasteLabel(4);
    data->GetPhotoActualPhotoArray(2)->SetComment(QStringLiteral("再撮影"));
}

QList<int> CurrentOrder(ToviData* data) {
    QList<int> order;
    for (int pos = 0; pos < data->GetCurrentPhotoCount(); ++pos) {
        order.append(data->GetPhotoIndex(pos));
    }
    return order;
}

// Opens a menu of the bar by its accelerator and walks down it by the given accelerators, as
// a user does with the keyboard.
void KeyThroughMenus(QMainWindow* window, Qt::Key menu, const QList<Qt::Key>& keys) {
    QTest::keyClick(window, menu, Qt::AltModifier);
    for (Qt::Key key : keys) {
        QWidget* popup = QApplication::activePopupWidget();
        QVERIFY(popup);
        QTest::keyClick(popup, key);
    }
}

}  // namespace

// The operations on every photograph on show, reached from the menus and their keys: the
// batch correction of labels, the tamper check and the sort.
class ToviMenuToolsTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QString pictures;
    ScriptedUiSlot ui;

    QString Path(const QString& name) const { return temp.filePath(name); }

    // A window on the delivery with all its photographs on show, four to a page.
    void OpenAll(ToviMainWindow& window) {
        window.resize(1366, 768);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QVERIFY(window.OpenDelivery(pictures, PhotoXMLMlit));
        window.SetDivideType(ToviPhotoCtrlVisualSetting::Divide4);
        QTreeWidget* tree = window.FolderTree()->GetTreeCtrl();
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                          TreeItemPoint(tree, tree->topLevelItem(0)));
        QCOMPARE(window.Document()->Data()->GetCurrentPhotoCount(), 12);
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        UseTestStores(temp.path());
        DeliveryOptions options;
        options.photoCount = 12;
        options.images = DeliveryOptions::Images::Tiny;
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(Path(QStringLiteral("d")), options, &written, &error),
                 qPrintable(error));
        pictures = written.photoFolder;
        // The hash verifier's stand-in, in a program folder of the test's own.
        const QString program = Path(QStringLiteral("program"));
        QDir().mkpath(program);
        const QString name = ToviVerifierLibrary::FileName(QStringLiteral("JACICCHS"));
        QVERIFY(QFile::copy(QStringLiteral(TOVI_STANDIN_DIR "/full/") + name,
                            program + QLatin1Char('/') + name));
        ToviVerifierLibrary::SetProgramPathOverride(program);
    }

    void init() { ui.Begin(); }

    void cleanup() { ui.End(); }

    void cleanupTestCase() {
        ToviVerifierLibrary::SetProgramPathOverride(QString());
        ReleaseTestStores();
    }

    // Ctrl+Shift+B gives the labels the model's own call gives on the same photographs, and a
    // cancel in the dialog or the question changes nothing.
    void batchCorrection_data() {
        QTest::addColumn<int>("action");
        QTest::addColumn<bool>("dialogOk");
        QTest::addColumn<bool>("confirmed");
        QTest::newRow("OK labels") << 0 << true << true;
        QTest::newRow("remove OK and NG") << 1 << true << true;
        QTest::newRow("remove all") << 2 << true << true;
        QTest::newRow("dialog cancelled") << 2 << false << true;
        QTest::newRow("question cancelled") << 2 << true << false;
    }

    void batchCorrection() {
        QFETCH(int, action);
        QFETCH(bool, dialogOk);
        QFETCH(bool, confirmed);
        const auto script = [&](ScriptedUi& scripted) {
            scripted.QueueDialog(dialogOk, {{QStringLiteral("action"), action}});
            scripted.QueueAnswer(confirmed ? ToviUi::AnswerOk : ToviUi::AnswerCancel);
        };

        ToviViewerDocument reference;
        QCOMPARE(reference.Open(pictures, PhotoXMLMlit, nullptr), ToviViewerDocument::Opened);
        ToviData* model = reference.Data();
        SeedLabels(model);
        model->SetSelected(model, true);
        const QStringList before = LabelState(model);
        {
            ScriptedUi modelUi;
            ScopedUi modelScope(modelUi);
            script(modelUi);
            model->AllLabelCorrection();
        }

        ToviMainWindow window;
        OpenAll(window);
        ToviData* data = window.Document()->Data();
        SeedLabels(data);
        QCOMPARE(LabelState(data), before);
        script(*ui);
        QTest::keyClick(&window, Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(ui->DialogNames().size(), 1);
        QCOMPARE(LabelState(data), LabelState(model));
        QCOMPARE(data->IsCheckStatusChanged(), dialogOk && confirmed);
        if (dialogOk && confirmed) {
            QVERIFY(LabelState(data) != before);
        }
        data->SetCheckStatusChanged(false);
    }

    // Ctrl+Shift+C checks every photograph on show, shows each result on its name plate and
    // counts them in the status bar; a cancel keeps what was checked; with the check off the
    // user is told how to turn it on.
    void editCheck() {
        ToviMainWindow window;
        OpenAll(window);
        ToviData* data = window.Document()->Data();
        auto* status = window.findChild<QLabel*>(QStringLiteral("checkLabel"));
        QVERIFY(status);

        // With the check off the user is offered the settings: declined, nothing runs; taken,
        // the check turned on there runs at once.
        QTest::keyClick(&window, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(ui->Questions().last().text.startsWith(
            QStringLiteral("画像加工検知が設定されていません")));
        QVERIFY(status->text().isEmpty());
        ui->QueueAnswer(ToviUi::AnswerYes);
        WhenModal<ToviSetUpDlg>([](ToviSetUpDlg* dialog) {
            QTest::mouseClick(Control<QCheckBox>(dialog, 1050), Qt::LeftButton);
            QTest::mouseClick(Ok(dialog), Qt::LeftButton);
        });
        QTest::keyClick(&window, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(data->GetVisualSetting().GetDoEditCheck());
        QCOMPARE(status->text(),
                 QStringLiteral("画像加工検知: 加工なし 0 枚 / 加工あり 0 枚 / 判定不能 12 枚"));
        QApplication::setActiveWindow(&window);

        // The first two cells' files get verdicts only now, so that what the plates show
        // comes from the run below, not from the cells' own look when they were filled.
        const auto& cells = window.MpiPanel()->Cells();
        QVERIFY(cells.size() >= 2);
        const QByteArray markers[] = {"@JCOMSIA=1@", "@JCOMSIA=0@"};
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(cells[i]->NamePlate()->CheckStatus(), 0);
            QFile file(data->GetPhoto(cells[i]->PhotoIndex())->GetImagePath());
            QVERIFY(file.open(QIODevice::Append));
            file.write(markers[i]);
        }

        QTest::keyClick(&window, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(status->text(),
                 QStringLiteral("画像加工検知: 加工なし 1 枚 / 加工あり 1 枚 / 判定不能 10 枚"));
        QCOMPARE(cells[0]->NamePlate()->CheckStatus(), 1);
        QCOMPARE(cells[1]->NamePlate()->CheckStatus(), 2);
        QCOMPARE(ui->LastProgress()->messages.last(), QStringLiteral("画像加工検知中　12 / 12"));

        // Cancelled at the window's first move: one photograph checked, and said so.
        data->SetVisualSetting(data->GetVisualSetting(), true);
        ui->PressCancelAtPump(ui->Pumps() + 2);
        QTest::keyClick(&window, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(
            status->text(),
            QStringLiteral("画像加工検知（中断）: 加工なし 1 枚 / 加工あり 0 枚 / 判定不能 0 枚"));
        int checked = 0;
        for (int i = 0; i < data->GetTotalCountPhoto(); ++i) {
            checked += data->GetPhotoActualPhotoArray(i)->GetEditChkResult() != 0;
        }
        QCOMPARE(checked, 1);
        window.Document()->Close(&window);
        QVERIFY(status->text().isEmpty());
    }

    // Ctrl+I shows the page the index file's stylesheet makes; a delivery without an index file
    // gets one message and no window.
    void indexPage() {
        ToviMainWindow window;
        OpenAll(window);
        QTest::keyClick(&window, Qt::Key_I, Qt::ControlModifier);
        auto* dialog = window.findChild<ToviIndexPageDlg*>();
        QVERIFY(dialog && dialog->isVisible());
        QVERIFY(dialog->Browser()->toPlainText().contains(
            QStringLiteral("緑ヶ丘県緑ヶ丘市本町一丁目")));
        // It goes with its delivery. The tree stays as it was, its items no longer pointing
        // into the document, and draws on.
        window.Document()->Close(&window);
        QTreeWidget* tree = window.FolderTree()->GetTreeCtrl();
        QVERIFY(tree->topLevelItemCount() > 0);
        for (QTreeWidgetItemIterator it(tree); *it; ++it) {
            QVERIFY(!(*it)->data(0, Qt::UserRole).value<void*>());
        }
        tree->viewport()->repaint();
        QTRY_VERIFY(!window.findChild<ToviIndexPageDlg*>());

        DeliveryOptions options;
        options.photoCount = 3;
        options.images = DeliveryOptions::Images::None;
        WrittenDelivery written;
        QVERIFY(WriteDelivery(Path(QStringLiteral("noindex")), options, &written, nullptr));
        QVERIFY(QFile::remove(QFileInfo(written.photoFolder).absolutePath() +
                              QStringLiteral("/INDEX_C.XML")));
        QVERIFY(window.OpenDelivery(written.photoFolder, PhotoXMLMlit));
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const qsizetype questions = ui->Questions().size();
        QTest::keyClick(&window, Qt::Key_I, Qt::ControlModifier);
        QCOMPARE(ui->Questions().size(), questions + 1);
        QVERIFY(ui->Questions().last().text.contains(QStringLiteral("管理ファイル")));
        QVERIFY(!window.findChild<ToviIndexPageDlg*>());
    }

    // The record that names each photograph's file, from the File menu: written, and the
    // question of unsaved work left as it was.
    void recordWithPaths() {
        ToviMainWindow window;
        OpenAll(window);
        QTest::keyClick(&window, Qt::Key_2, Qt::ControlModifier);
        QVERIFY(window.Document()->Data()->IsCheckStatusChanged());
        const QString path = Path(QStringLiteral("paths.xml"));
        ui->QueueFileName(path);
        KeyThroughMenus(&window, Qt::Key_F, {Qt::Key_W});
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromLocal8Bit(file.readAll());
        QVERIFY(file.size() > 0);
        QVERIFY(window.Document()->Data()->IsCheckStatusChanged());
        // The record is Shift_JIS; its path elements hold the image files' names in ASCII.
        const QString image =
            QFileInfo(window.Document()->Data()->GetPhoto(0)->GetImagePath()).fileName();
        QVERIFY2(text.contains(image), qPrintable(image));
        window.Document()->Data()->SetCheckStatusChanged(false);
    }

    // The sort from the View menu by keyboard: by serial number, descending, and off again,
    // which brings back the tree's order.
    void sortFromMenu() {
        ToviMainWindow window;
        OpenAll(window);
        ToviData* data = window.Document()->Data();
        const QList<int> treeOrder = CurrentOrder(data);
        const int serial = data->GetItemDef()->GetIndexFromTitle(QStringLiteral("シリアル番号"));
        QVERIFY(serial >= 0);

        KeyThroughMenus(&window, Qt::Key_V, {Qt::Key_O, Qt::Key_S});
        QVERIFY(data->GetSortCondition().IsExecSort());
        QCOMPARE(data->GetSortCondition().GetKeyItem(), QStringLiteral("シリアル番号"));
        KeyThroughMenus(&window, Qt::Key_V, {Qt::Key_O, Qt::Key_E});
        QVERIFY(!data->GetSortCondition().IsAscending());
        const QList<int> sorted = CurrentOrder(data);
        QCOMPARE(sorted.size(), treeOrder.size());
        for (int pos = 1; pos < sorted.size(); ++pos) {
            QVERIFY(data->GetPhoto(pos - 1)->GetTitle(serial).toInt() >=
                    data->GetPhoto(pos)->GetTitle(serial).toInt());
        }
        QVERIFY(sorted != treeOrder);

        KeyThroughMenus(&window, Qt::Key_V, {Qt::Key_O, Qt::Key_N});
        QVERIFY(!data->GetSortCondition().IsExecSort());
        QVERIFY(data->GetSortCondition().IsAscending());
        QCOMPARE(CurrentOrder(data), treeOrder);
    }

    // 撮影日の照合 from the Tools menu by keyboard: a row per photograph on show, the one whose
    // file time is three days off coloured and kept by the filter; a double-click on it turns
    // the panel to that photograph; the header sorts; the rows shown save as CSV; the size
    // stays for the next time.
    void dateTable() {
        ToviMainWindow window;
        OpenAll(window);
        ToviData* data = window.Document()->Data();
        const int far = 9;  // on the third page of four
        // Every file dated its 撮影年月日 (other tests rewrite files), but one three days before.
        const int dateItem = data->GetItemDef()->GetIndexFromTitle(QStringLiteral("撮影年月日"));
        for (int i = 0; i < data->GetTotalCountPhoto(); ++i) {
            ToviPhoto* photo = data->GetPhotoActualPhotoArray(i);
            const QDate date = QDate::fromString(photo->GetTitle(dateItem), Qt::ISODate);
            QVERIFY(date.isValid());
            QFile file(photo->GetImagePath());
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(QDateTime(date.addDays(i == far ? -3 : 0), QTime(12, 0)),
                                     QFileDevice::FileModificationTime));
        }

        // Cancelled at the progress window's first pump: no table.
        ui->PressCancelAtPump(ui->Pumps() + 1);
        KeyThroughMenus(&window, Qt::Key_T, {Qt::Key_D});
        QVERIFY(!ui->ProgressViews().isEmpty());
        QVERIFY(!window.findChild<ToviDateTableDlg*>());

        KeyThroughMenus(&window, Qt::Key_T, {Qt::Key_D});
        auto* dialog = window.findChild<ToviDateTableDlg*>();
        QVERIFY(dialog);
        QVERIFY(QTest::qWaitForWindowExposed(dialog));
        QTableView* view = dialog->View();
        QCOMPARE(view->model()->rowCount(), 12);
        for (int r = 0; r < 12; ++r) {
            const QModelIndex index = view->model()->index(r, 0);
            const bool differs = index.data().toInt() == far + 1;  // numbered from 1
            QCOMPARE(index.data(ToviDateTableModel::DiffersRole).toBool(), differs);
            QCOMPARE(index.data(Qt::BackgroundRole).isValid(), differs);
        }

        // The header sorts: 番号 descending, then back.
        QHeaderView* header = view->horizontalHeader();
        const QPoint numberSection(header->sectionViewportPosition(0) + 5, header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, numberSection);
        QCOMPARE(view->model()->index(0, 0).data().toInt(), 12);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, numberSection);
        QCOMPARE(view->model()->index(0, 0).data().toInt(), 1);

        QCheckBox* differsOnly = dialog->DiffersOnlyBox();
        QTest::mouseClick(differsOnly, Qt::LeftButton, {}, QPoint(4, differsOnly->height() / 2));
        QVERIFY(differsOnly->isChecked());
        QCOMPARE(view->model()->rowCount(), 1);
        QCOMPARE(view->model()->index(0, 0).data().toInt(), far + 1);
        QCOMPARE(view->model()->index(0, 7).data().toString(), QStringLiteral("-3"));

        const QRect cell = view->visualRect(view->model()->index(0, 2));
        // A double click as it reaches a widget: a click, then the second press.
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, cell.center());
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, cell.center());
        QCOMPARE(data->GetSelectedPhoto(), data->GetPhotoActualPhotoArray(far));
        QCOMPARE(window.MpiPanel()->GetCurrentPage(), far / 4 + 1);

        // Enter on the row does the same, after another photograph was chosen.
        QVERIFY(window.SelectPhotoOnShow(0));
        QCOMPARE(window.MpiPanel()->GetCurrentPage(), 1);
        view->setFocus();
        view->setCurrentIndex(view->model()->index(0, 0));
        QTest::keyClick(view, Qt::Key_Return);
        QCOMPARE(data->GetSelectedPhoto(), data->GetPhotoActualPhotoArray(far));
        QVERIFY(dialog->isVisible());

        const QString csv = Path(QStringLiteral("dates.csv"));
        ui->QueueFileName(csv);
        QTest::mouseClick(dialog->SaveButton(), Qt::LeftButton);
        QFile saved(csv);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = saved.readAll().split('\n');
        QCOMPARE(lines.size(), 3);  // the header, the row shown, nothing after the last line
        QVERIFY(lines[1].startsWith(QByteArray::number(far + 1) + ','));

        dialog->resize(700, 400);
        QTest::keyClick(dialog, Qt::Key_Escape);
        QTRY_VERIFY(!window.findChild<ToviDateTableDlg*>());
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        KeyThroughMenus(&window, Qt::Key_T, {Qt::Key_D});
        dialog = window.findChild<ToviDateTableDlg*>();
        QVERIFY(dialog);
        QCOMPARE(dialog->size(), QSize(700, 400));
        dialog->close();
    }
};

QTEST_MAIN(ToviMenuToolsTest)
#include "ToviMenuToolsTest.moc"
