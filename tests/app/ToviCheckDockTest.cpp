#include "app/ToviMainWindow.h"
#include "app/ToviViewerDocument.h"
#include "checks/ToviDeliveryChecker.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "panels/ToviCheckPane.h"
#include "panels/ToviFindingsModel.h"
#include "panels/ToviFolderTreePanel.h"
#include "panels/ToviMpiPanel.h"
#include "platform/Cp932.h"
#include "platform/ToviProfile.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/TreeItemPoint.h"
#include "tests/support/WorkArea.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QHeaderView>
#include <QPushButton>
#include <QStatusBar>
#include <QTableView>
#include <QTemporaryDir>
#include <QToolButton>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QtTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// Sets the text of element tag of the photograph at index in the Shift_JIS PHOTO.XML.
bool SetValue(const QString& photoFolder, int index, const QString& tag, const QString& text) {
    QFile file(photoFolder + u"/PHOTO.XML"_s);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    QByteArray xml = file.readAll();
    file.close();
    const QByteArray block = Cp932::FromUnicode(u"<写真情報>"_s);
    qsizetype at = -1;
    for (int i = 0; i <= index; ++i) {
        if ((at = xml.indexOf(block, at + 1)) < 0) {
            return false;
        }
    }
    const QByteArray open = Cp932::FromUnicode(u"<"_s + tag + u">"_s);
    const qsizetype from = xml.indexOf(open, at);
    const qsizetype to = xml.indexOf(Cp932::FromUnicode(u"</"_s + tag + u">"_s), from);
    if (from < 0 || to < 0 || to > xml.indexOf(Cp932::FromUnicode(u"</写真情報>"_s), at)) {
        return false;
    }
    xml.replace(from + open.size(), to - from - open.size(), Cp932::FromUnicode(text));
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(xml) == xml.size();
}

// A finding as the table and the checker both can tell it.
QString Key(int index, const QString& severity, const QString& code, const QString& file) {
    return u"%1 %2 %3 %4"_s.arg(index).arg(severity, code, file);
}

QStringList ModelKeys(const ToviFindingsModel* model) {
    QStringList keys;
    for (int row = 0; row < model->rowCount(); ++row) {
        const ToviCheckFinding& f = model->At(row).finding;
        keys.append(Key(f.index, ToviCheckFinding::SeverityLabel(f.severity),
                        QString::fromLatin1(f.code), f.file));
    }
    return keys;
}

// A column of the table as shown, top to bottom.
QStringList Column(QTableView* view, int column) {
    QStringList values;
    for (int row = 0; row < view->model()->rowCount(); ++row) {
        values.append(view->model()->index(row, column).data().toString());
    }
    return values;
}

QPoint RowPoint(QTableView* view, int row, int column = ToviFindingsModel::ColumnMessage) {
    const QModelIndex index = view->model()->index(row, column);
    view->scrollTo(index);
    return view->visualRect(index).center();
}

// ファイル → 閉じる, by the keyboard.
void CloseByMenu(QMainWindow& window) {
    QTest::keyClick(&window, Qt::Key_F, Qt::AltModifier);
    QWidget* popup = QApplication::activePopupWidget();
    QVERIFY(popup);
    QTest::keyClick(popup, Qt::Key_C);
}

// The page of four photographs that shows the photograph at index.
int PageOf(const ToviData* data, int index) {
    return data->CurrentArray().Position(index) / 4 + 1;
}

// A row picked, then double-clicked, as the inspector does.
void DoubleClickRow(QTableView* view, int row) {
    const QPoint point = RowPoint(view, row);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, point);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, point);
}

// The first row shown whose photograph is index.
int RowOfPhoto(QTableView* view, int index) {
    for (int row = 0; row < view->model()->rowCount(); ++row) {
        if (view->model()->index(row, 0).data(ToviFindingsModel::IndexRole).toInt() == index) {
            return row;
        }
    }
    return -1;
}

}  // namespace

// The dock of the delivery checks: the run after a delivery opens, its rows and counts, the
// sort and the filters by clicks, the way from a finding to its photograph, and runs cut off
// by a cancel or by the delivery closing.
class ToviCheckDockTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QString faulty;  // twelve photographs with four planted faults
    QString large;   // thirty thousand photographs without their files
    ScriptedUiSlot ui;

    // Opens folder in window, four photographs a page, waits for its checks to end and shows
    // their dock by its key.
    static void OpenAndCheck(ToviMainWindow& window, const QString& folder, bool showDock = true) {
        window.resize(1366, 768);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QVERIFY(window.OpenDelivery(folder, PhotoXMLMlit));
        window.SetDivideType(ToviPhotoCtrlVisualSetting::Divide4);
        QTreeWidget* tree = window.FolderTree()->GetTreeCtrl();
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                          TreeItemPoint(tree, tree->topLevelItem(0)));
        QCOMPARE(window.Document()->Data()->GetCurrentPhotoCount(), 12);
        QTRY_VERIFY_WITH_TIMEOUT(window.CheckPane()->GetState() == ToviCheckPane::Done, 20000);
        if (showDock) {
            QTest::keyClick(&window, Qt::Key_F8);
            QVERIFY(window.CheckDock()->isVisible());
            QTRY_VERIFY(window.CheckPane()->View()->viewport()->height() > 40);
        }
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
        QVERIFY2(WriteDelivery(temp.filePath(u"faulty"_s), options, &written, &error),
                 qPrintable(error));
        faulty = written.photoFolder;
        const QString pic = faulty + u"/PIC/"_s;
        QVERIFY(QFile::remove(pic + written.photos[3].fileName));
        QVERIFY(QFile::rename(pic + written.photos[5].fileName,
                              pic + written.photos[5].fileName.toLower()));
        QVERIFY(SetValue(faulty, 8, u"撮影年月日"_s, u"2019-02-30"_s));
        QFile stray(pic + u"Thumbs.db"_s);
        QVERIFY(stray.open(QIODevice::WriteOnly));

        DeliveryOptions many;
        many.photoCount = 30000;
        many.images = DeliveryOptions::Images::None;
        QVERIFY2(WriteDelivery(temp.filePath(u"large"_s), many, &written, &error),
                 qPrintable(error));
        large = written.photoFolder;
    }

    void init() { ui.Begin(); }

    void cleanup() { ui.End(); }

    void cleanupTestCase() { ReleaseTestStores(); }

    // The run starts by itself once the delivery is on screen; the table holds exactly what
    // the checker finds on the same delivery, the planted faults among them, with each
    // photograph's number and serial; the counts agree in the pane and the status bar.
    void rowsAndCounts() {
        ToviMainWindow window;
        OpenAndCheck(window, faulty, false);
        ToviCheckPane* pane = window.CheckPane();

        ToviViewerDocument reference;
        QCOMPARE(reference.Open(faulty, PhotoXMLMlit, nullptr), ToviViewerDocument::Opened);
        ToviFindingCollector expected;
        QVERIFY(ToviDeliveryChecker::Standard(true)->Run(*reference.Data(), expected));
        QStringList expectedKeys;
        for (const ToviCheckFinding& f : expected.Findings()) {
            expectedKeys.append(Key(f.index, ToviCheckFinding::SeverityLabel(f.severity),
                                    QString::fromLatin1(f.code), f.file));
        }
        QCOMPARE(ModelKeys(pane->Model()), expectedKeys);
        for (const QString& planted :
             {Key(3, u"エラー"_s, u"file.missing"_s, u"PIC/P0000004.JPG"_s),
              Key(5, u"警告"_s, u"file.case-mismatch"_s, u"PIC/P0000006.JPG"_s),
              Key(-1, u"エラー"_s, u"file.stray"_s, u"PIC/Thumbs.db"_s)}) {
            QVERIFY2(expectedKeys.contains(planted), qPrintable(planted));
        }
        QVERIFY(ModelKeys(pane->Model()).filter(u"8 エラー date."_s).size() == 1);

        QTableView* view = pane->View();
        const int row = RowOfPhoto(view, 8);
        QVERIFY(row >= 0);
        QCOMPARE(view->model()->index(row, ToviFindingsModel::ColumnNumber).data().toString(),
                 u"9"_s);
        QCOMPARE(view->model()->index(row, ToviFindingsModel::ColumnSerial).data().toString(),
                 reference.Data()->GetPhotoActualPhotoArray(8)->GetTitle(
                     reference.Data()->GetItemDef()->GetIndexFromTitle(u"シリアル番号"_s)));
        QCOMPARE(view->model()->index(row, ToviFindingsModel::ColumnItem).data().toString(),
                 u"撮影年月日"_s);
        const int stray = RowOfPhoto(view, -1);
        QVERIFY(view->model()->index(stray, 0).data().toString().isEmpty());

        const QString counts =
            u"エラー %1 / 警告 %2 / 注意 %3"_s.arg(expected.Count(ToviCheckFinding::Error))
                .arg(expected.Count(ToviCheckFinding::Warning))
                .arg(expected.Count(ToviCheckFinding::Note));
        auto* status = window.findChild<QToolButton*>(u"checkStatus"_s);
        QCOMPARE(status->text(), u"チェック: "_s + counts);
        QCOMPARE(pane->findChild<QCheckBox*>(u"severity0"_s)->text(),
                 u"エラー %1"_s.arg(expected.Count(ToviCheckFinding::Error)));

        // The dock waits to be asked for: the status bar brings it, F8 hides it again.
        QVERIFY(!window.CheckDock()->isVisible());
        QTest::mouseClick(status, Qt::LeftButton);
        QVERIFY(window.CheckDock()->isVisible());
        QTest::keyClick(&window, Qt::Key_F8);
        QVERIFY(!window.CheckDock()->isVisible());
        // Ctrl+Shift+V shows it and checks again, to the same rows.
        QTest::keyClick(&window, Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(window.CheckDock()->isVisible());
        QTRY_COMPARE(pane->GetState(), ToviCheckPane::Done);
        QCOMPARE(ModelKeys(pane->Model()), expectedKeys);

        // Closing the delivery empties the dock and the status bar.
        CloseByMenu(window);
        QCOMPARE(pane->Model()->rowCount(), 0);
        QVERIFY(status->isHidden());
    }

    // A click on a header sorts by that column, a second the other way; the severity boxes
    // and the code list narrow the rows.
    void sortAndFilter() {
        ToviMainWindow window;
        OpenAndCheck(window, faulty);
        QTableView* view = window.CheckPane()->View();
        QHeaderView* header = view->horizontalHeader();
        const auto clickHeader = [&](int column) {
            QTest::mouseClick(
                header->viewport(), Qt::LeftButton, {},
                QPoint(header->sectionViewportPosition(column) + 10, header->height() / 2));
        };

        // Arrived order is by photograph, those about no photograph last.
        QStringList numbers = Column(view, ToviFindingsModel::ColumnNumber);
        QCOMPARE(numbers.last(), QString());
        clickHeader(ToviFindingsModel::ColumnSeverity);
        QStringList severities = Column(view, ToviFindingsModel::ColumnSeverity);
        // The delivery has findings of every severity (a note at least for the missing tamper
        // verifiers): errors first, notes last, in rank order.
        const auto rank = [](const QString& label) {
            return QStringList{u"エラー"_s, u"警告"_s, u"注意"_s}.indexOf(label);
        };
        QCOMPARE(severities.first(), u"エラー"_s);
        QCOMPARE(severities.last(), u"注意"_s);
        QVERIFY(severities.contains(u"警告"_s));
        QVERIFY(
            std::is_sorted(severities.begin(), severities.end(),
                           [&](const QString& a, const QString& b) { return rank(a) < rank(b); }));
        clickHeader(ToviFindingsModel::ColumnSeverity);
        QCOMPARE(Column(view, ToviFindingsModel::ColumnSeverity).first(), u"注意"_s);
        clickHeader(ToviFindingsModel::ColumnNumber);
        clickHeader(ToviFindingsModel::ColumnNumber);
        numbers = Column(view, ToviFindingsModel::ColumnNumber);
        QCOMPARE(numbers.first(), QString());  // descending: those about no photograph first
        QList<int> values;
        for (const QString& n : numbers.mid(numbers.lastIndexOf(QString()) + 1)) {
            values.append(n.toInt());
        }
        QVERIFY(std::is_sorted(values.rbegin(), values.rend()));

        // エラー off: only warnings and notes are left; on again: all.
        const int all = view->model()->rowCount();
        QTest::mouseClick(window.CheckPane()->findChild<QCheckBox*>(u"severity0"_s),
                          Qt::LeftButton);
        const QStringList left = Column(view, ToviFindingsModel::ColumnSeverity);
        QCOMPARE(left.size(), window.CheckPane()->Count(ToviCheckFinding::Warning) +
                                  window.CheckPane()->Count(ToviCheckFinding::Note));
        QCOMPARE(left.count(u"エラー"_s), 0);
        QTest::mouseClick(window.CheckPane()->findChild<QCheckBox*>(u"severity0"_s),
                          Qt::LeftButton);
        QCOMPARE(view->model()->rowCount(), all);

        // The codes found are offered; one chosen by the keyboard leaves only its rows.
        auto* codes = window.CheckPane()->findChild<QComboBox*>(u"codeCombo"_s);
        QCOMPARE(codes->itemText(0), u"すべて"_s);
        const int stray = codes->findText(u"file.stray"_s);
        QVERIFY(stray > 0);
        codes->setFocus();
        for (int i = 0; i < stray; ++i) {
            QTest::keyClick(codes, Qt::Key_Down);
        }
        QCOMPARE(Column(view, ToviFindingsModel::ColumnCode), QStringList{u"file.stray"_s});
        QTest::keyClick(codes, Qt::Key_Home);
        QCOMPARE(view->model()->rowCount(), all);
    }

    // A double-click, or Enter, on a finding selects its photograph and turns the panel to
    // its page; one about no photograph does nothing.
    void goToPhoto() {
        ToviMainWindow window;
        OpenAndCheck(window, faulty);
        ToviData* data = window.Document()->Data();
        ToviMpiPanel* panel = window.MpiPanel();
        QTableView* view = window.CheckPane()->View();
        QCOMPARE(panel->GetCurrentPage(), 1);

        DoubleClickRow(view, RowOfPhoto(view, 8));
        QCOMPARE(data->GetSelectedPhoto(), data->GetPhotoActualPhotoArray(8));
        QCOMPARE(panel->GetCurrentPage(), PageOf(data, 8));
        QCOMPARE(panel->SelectedPhoto(), data->GetPhotoActualPhotoArray(8));

        QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                          RowPoint(view, RowOfPhoto(view, 3)));
        QCOMPARE(panel->GetCurrentPage(), PageOf(data, 8));
        QTest::keyClick(view, Qt::Key_Return);
        QCOMPARE(data->GetSelectedPhoto(), data->GetPhotoActualPhotoArray(3));
        QCOMPARE(panel->GetCurrentPage(), PageOf(data, 3));
        QVERIFY(PageOf(data, 3) != PageOf(data, 8));
        QVERIFY(view->hasFocus());  // Enter again on the next row, without reaching for it

        DoubleClickRow(view, RowOfPhoto(view, -1));
        QCOMPARE(data->GetSelectedPhoto(), data->GetPhotoActualPhotoArray(3));
        QVERIFY(ui->Questions().isEmpty());
    }

    // A photograph outside the photographs on show: declined, the selection stays and the
    // status bar says why; accepted, every photograph is shown and it is selected.
    void photoNotOnShow() {
        ToviMainWindow window;
        OpenAndCheck(window, faulty);
        ToviData* data = window.Document()->Data();
        QTreeWidget* tree = window.FolderTree()->GetTreeCtrl();
        QTreeWidgetItem* top = tree->topLevelItem(0);
        // A node of the tree without photograph 8.
        QTreeWidgetItem* narrow = nullptr;
        for (QTreeWidgetItemIterator it(top); *it && !narrow; ++it) {
            QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, TreeItemPoint(tree, *it));
            if (data->CurrentArray().Position(8) < 0 && data->GetCurrentPhotoCount() > 0) {
                narrow = *it;
            }
        }
        QVERIFY(narrow);
        ToviPhoto* before = data->GetSelectedPhoto();
        QTableView* view = window.CheckPane()->View();
        const int row = RowOfPhoto(view, 8);

        ui->QueueAnswer(ToviUi::AnswerNo);
        DoubleClickRow(view, row);
        QCOMPARE(ui->Questions().size(), 1);
        QVERIFY(ui->Questions()[0].text.contains(u"番号 9 の写真"_s));
        QCOMPARE(data->GetSelectedPhoto(), before);
        QCOMPARE(tree->currentItem(), narrow);
        QVERIFY(window.statusBar()->currentMessage().contains(u"含まれていません"_s));

        ui->QueueAnswer(ToviUi::AnswerYes);
        DoubleClickRow(view, row);
        QCOMPARE(data->GetCurrentPhotoCount(), 12);
        QCOMPARE(tree->currentItem(), top);
        QCOMPARE(data->GetSelectedPhoto(), data->GetPhotoActualPhotoArray(8));
        QCOMPARE(window.MpiPanel()->GetCurrentPage(), PageOf(data, 8));
    }

    // A run of a large delivery: the cancel button stops it with what was found so far;
    // closing the delivery, or opening another, in the middle of a run ends it before the
    // document goes.
    void cutOff() {
        ToviMainWindow window;
        window.resize(1366, 768);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        ToviCheckPane* pane = window.CheckPane();
        QVERIFY(window.OpenDelivery(large, PhotoXMLMlit));
        QTRY_VERIFY(pane->IsRunning());
        QTest::mouseClick(pane->findChild<QPushButton*>(u"cancelCheck"_s), Qt::LeftButton);
        QCOMPARE(pane->GetState(), ToviCheckPane::Cancelled);
        const int kept = pane->Model()->rowCount();
        QVERIFY(kept < 30000);
        QTest::qWait(3 * ToviCheckPane::kPollMs);
        QCOMPARE(pane->Model()->rowCount(), kept);  // nothing arrives after the cancel
        QVERIFY(window.findChild<QToolButton*>(u"checkStatus"_s)
                    ->text()
                    .startsWith(u"チェック中止: "_s));

        QTest::keyClick(&window, Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(pane->IsRunning());
        CloseByMenu(window);
        QVERIFY(!window.Document()->IsOpen());
        QCOMPARE(pane->GetState(), ToviCheckPane::Idle);
        QTest::qWait(3 * ToviCheckPane::kPollMs);  // the run is over: nothing more arrives
        QCOMPARE(pane->GetState(), ToviCheckPane::Idle);
        QCOMPARE(pane->Model()->rowCount(), 0);

        QVERIFY(window.OpenDelivery(large, PhotoXMLMlit));
        QTRY_VERIFY(pane->IsRunning());
        QVERIFY(window.OpenDelivery(faulty, PhotoXMLMlit));
        QTRY_COMPARE_WITH_TIMEOUT(pane->GetState(), ToviCheckPane::Done, 20000);
        for (int row = 0; row < pane->Model()->rowCount(); ++row) {
            QVERIFY(pane->Model()->At(row).finding.index < 12);
        }
    }
};

QTEST_MAIN(ToviCheckDockTest)
#include "ToviCheckDockTest.moc"
