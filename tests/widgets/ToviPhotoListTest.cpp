#include "document/ToviHostDocument.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "panels/ToviImageLoader.h"
#include "panels/ToviLabelTreePanel.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviPhotoListCtrl.h"
#include "panels/ToviPhotoListModels.h"
#include "panels/ToviSlideMode.h"
#include "platform/ToviProfile.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ScriptedUi.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QFile>
#include <QHeaderView>
#include <QListView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QtTest>

#include <memory>
#include <numeric>
#include <optional>

namespace {

class QuietHost : public ToviHostDocument {
public:
    void UpdateAllViews(QWidget*, int, QObject*) override {}
};

// Hands every hint to the panels, as the viewer's host does.
class PanelHost : public ToviHostDocument {
public:
    QList<ToviPanel*> panels;
    void UpdateAllViews(QWidget* sender, int hint, QObject* object) override {
        for (ToviPanel* panel : panels) {
            if (panel != sender) {
                panel->OnUpdate(sender, static_cast<ToviData::UpdateHint>(hint), object);
            }
        }
    }
};

QAction* FloatyButton(QToolBar* floaty, int label) {
    QList<QAction*> buttons;
    for (QAction* action : floaty->actions()) {
        if (!action->isSeparator()) {
            buttons.append(action);
        }
    }
    return buttons.value(label);
}

constexpr int kRows = 100000;
constexpr int kDistinct = 6;

using Mode = ToviPhotoListCtrl::Mode;

void ClickButton(QToolBar* bar, QAction* action) {
    QTest::mouseClick(bar->widgetForAction(action), Qt::LeftButton);
}

}  // namespace

class ToviPhotoListTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QuietHost host;
    QString folder;
    std::unique_ptr<ToviData> document;
    std::unique_ptr<ToviImageLoader> loader;
    // Ends in cleanupTestCase: a setting writes itself to the store as it ends, and that must
    // be the test's store, not the user's.
    std::optional<ToviPhotoCtrlVisualSetting> setting;
    int brokenPhoto = -1;  // the photo index whose image file is gone

    // A list of the mode over the document, shown at a fixed size, with row 0 selected.
    std::unique_ptr<ToviPhotoListCtrl> MakeList(Mode mode, QSize size = QSize(800, 600)) {
        auto list =
            std::make_unique<ToviPhotoListCtrl>(mode, document.get(), &*setting, loader.get());
        list->resize(size);
        list->show();
        if (!QTest::qWaitForWindowExposed(list.get())) {
            return nullptr;
        }
        list->Refill();
        list->SelectItem(0);
        return list;
    }

    // Every row whose item shows in the viewport now.
    static QPair<int, int> VisibleRows(const ToviPhotoListCtrl& list) {
        const QRect client = list.View()->viewport()->rect();
        int first = -1;
        int last = -1;
        const int top = list.View()->indexAt(QPoint(1, 1)).row();
        for (int row = std::max(0, top - 20); row < list.GetItemCount(); ++row) {
            if (list.ItemRect(row).intersects(client)) {
                first = first < 0 ? row : first;
                last = row;
            } else if (first >= 0) {
                break;
            }
        }
        return {first, last};
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("profile.ini")));
        DeliveryOptions options;
        options.photoCount = kDistinct;
        options.images = DeliveryOptions::Images::Tiny;
        options.drawingShare = 0.5;
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(QStringLiteral("d")), options, &written, &error),
                 qPrintable(error));
        folder = written.photoFolder;
        // One photograph cannot be shown.
        brokenPhoto = kDistinct - 1;
        QVERIFY(
            QFile::remove(folder + QStringLiteral("/PIC/") + written.photos[brokenPhoto].fileName));

        ToviEnouDataFactory factory;
        document = factory.Create(&host, folder, PhotoXMLMlit);
        QVERIFY(document);
        document->Load();
        document->BuildTreeNode(0);
        // 100,000 rows: the six photographs again and again, as far as the lists can tell.
        ToviPhotoArray* photos = document->GetPhotoDataArray();
        for (ToviPhoto* photo : *photos) {
            photo->Select(false);
        }
        photos->reserve(kRows);
        for (int i = kDistinct; i < kRows; ++i) {
            photos->append(std::make_unique<ToviPhoto>(*photos->at(i % kDistinct)));
        }
        QList<int> all(kRows);
        std::iota(all.begin(), all.end(), 0);
        document->CurrentArray().Assign(all);
        setting = document->GetVisualSetting();
        loader = std::make_unique<ToviImageLoader>();
    }

    // The panel in the list modes: a paste from the floaty, clicked, reaches the label tree's
    // count and the changed flag; the floaty toggles; the comment button asks for the comment,
    // which the management list's comment column then shows.
    void panelPastesFromFloaty_data() {
        QTest::addColumn<int>("mode");
        QTest::newRow("thumbnail list") << int(Mode::ThumbList);
        QTest::newRow("management list") << int(Mode::ManagementList);
    }
    void panelPastesFromFloaty() {
        QFETCH(int, mode);
        ScriptedUi ui;
        ToviUi::Install(&ui);
        PanelHost panelHost;
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> small = factory.Create(&panelHost, folder, PhotoXMLMlit);
        QVERIFY(small);
        small->Load();
        small->BuildTreeNode(0);
        small->SetSelected(small.get(), true);
        ToviPhotoCtrlVisualSetting chosen = small->GetVisualSetting();
        chosen.SetDivType(static_cast<ToviPhotoCtrlVisualSetting::DivideType>(mode));
        small->SetVisualSetting(chosen, false);
        QWidget frame;
        frame.resize(900, 600);
        auto* panel = new ToviMpiPanel(&panelHost, &frame);
        auto* labels = new ToviLabelTreePanel(&frame);
        panel->setGeometry(0, 0, 600, 600);
        labels->setGeometry(600, 0, 300, 600);
        frame.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frame));
        panelHost.panels = {panel, labels};
        panel->Attach(small.get());
        labels->Attach(small.get());
        small->Broadcast(nullptr, ToviData::HintInitialize);

        ToviPhotoListCtrl* list = panel->ListCtrl();
        QVERIFY(list);
        QCOMPARE(int(list->GetMode()), mode);
        QCOMPARE(list->GetItemCount(), small->GetCurrentPhotoCount());
        QCOMPARE(list->GetSelectedItem(), small->GetSelectCurIndex());
        QTRY_VERIFY(list->Floaty() && list->Floaty()->isVisible());
        QToolBar* floaty = list->Floaty();
        ToviPhoto* photo = small->GetSelectedPhoto();
        QVERIFY(photo);
        QTreeWidgetItem* ng1 = labels->GetTreeCtrl()->topLevelItem(0)->child(1);
        const QString name = small->GetLabelManager()->GetLabelAttribute(1).GetName();
        QCOMPARE(ng1->text(0), name);
        QVERIFY(!small->IsCheckStatusChanged());

        QTest::mouseClick(floaty->widgetForAction(FloatyButton(floaty, 1)), Qt::LeftButton);
        QVERIFY(photo->IsLabelPasted(1));
        QVERIFY(small->IsCheckStatusChanged());
        QCOMPARE(ng1->text(0), name + QStringLiteral(" <1>"));
        QVERIFY(FloatyButton(floaty, 1)->isChecked());
        // OK on top takes NG1 away; a second click takes OK away.
        QTest::mouseClick(floaty->widgetForAction(FloatyButton(floaty, 0)), Qt::LeftButton);
        QVERIFY(photo->IsLabelPasted(0) && !photo->IsLabelPasted(1));
        QCOMPARE(ng1->text(0), name);
        QTest::mouseClick(floaty->widgetForAction(FloatyButton(floaty, 0)), Qt::LeftButton);
        QVERIFY(!photo->IsLabelPasted(0));
        QVERIFY(!FloatyButton(floaty, 0)->isChecked());

        // The comment button opens the dialog, whatever the label says.
        ui.QueueDialog(true, {{QStringLiteral("comment"), QStringLiteral(" 手すり 確認 ")}});
        QTest::mouseClick(floaty->widgetForAction(FloatyButton(floaty, 4)), Qt::LeftButton);
        QCOMPARE(ui.DialogNames().size(), 1);
        QCOMPARE(photo->GetComment(), QStringLiteral(" 手すり 確認 "));
        QVERIFY(photo->IsLabelPasted(4));
        QVERIFY(!FloatyButton(floaty, 4)->isChecked());
        const int row = list->GetSelectedItem();
        if (ToviMngListModel* model = list->MngModel()) {
            QCOMPARE(model->index(row, model->CommentColumn()).data().toString(),
                     photo->GetComment());
        } else {
            QCOMPARE(list->ThumbModel()->index(row).data(ToviThumbListModel::CommentRole),
                     photo->GetComment());
        }
        ui.QueueDialog(false);
        QTest::mouseClick(floaty->widgetForAction(FloatyButton(floaty, 4)), Qt::LeftButton);
        QCOMPARE(ui.DialogNames().size(), 2);
        QVERIFY(photo->IsLabelPasted(4));

        // A right click in the list selects its item and opens the menu, in slide mode too.
        SetSlideMode(true);
        const int other = row == 0 ? 1 : 0;
        QWidget* viewport = list->View()->viewport();
        const QPoint at(list->ItemRect(other).left() + 40, list->ItemRect(other).center().y());
        viewport->setFocus(Qt::MouseFocusReason);  // as the click itself would
        bool menuShown = false;
        QTimer::singleShot(50, [&menuShown] {
            if (QWidget* menu = QApplication::activePopupWidget()) {
                menuShown = menu->objectName() == QStringLiteral("popUpMenu");
                menu->close();
            }
        });
        QContextMenuEvent menuEvent(QContextMenuEvent::Mouse, at, viewport->mapToGlobal(at));
        QApplication::sendEvent(viewport, &menuEvent);
        SetSlideMode(false);
        QVERIFY(menuShown);
        QCOMPARE(list->GetSelectedItem(), other);
        QCOMPARE(small->GetSelectCurIndex(), other);
        QVERIFY(ui.Questions().isEmpty());
        QTRY_VERIFY(floaty->isVisible());

        panel->Attach(nullptr);
        labels->Attach(nullptr);
        panelHost.panels.clear();
        ToviUi::Install(nullptr);
    }

    // In the thumbnail list Right at the end of a row of tiles, where the list itself cannot
    // move, goes on to the next photograph and Left back; a click selects the document's
    // photograph, and a refill by a new selection of the tree keeps it.
    void panelListKeys() {
        PanelHost panelHost;
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> small = factory.Create(&panelHost, folder, PhotoXMLMlit);
        QVERIFY(small);
        small->Load();
        small->BuildTreeNode(0);
        small->SetSelected(small.get(), true);
        ToviPhotoCtrlVisualSetting chosen = small->GetVisualSetting();
        chosen.SetDivType(ToviPhotoCtrlVisualSetting::DivideThumbList);
        small->SetVisualSetting(chosen, false);
        ToviMpiPanel panel(&panelHost);
        panel.resize(600, 600);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        panelHost.panels = {&panel};
        panel.Attach(small.get());
        small->Broadcast(nullptr, ToviData::HintInitialize);
        ToviPhotoListCtrl* list = panel.ListCtrl();
        QVERIFY(list);
        QWidget* viewport = list->View()->viewport();
        // Three tiles a row.
        QCOMPARE(list->ItemRect(2).top(), list->ItemRect(0).top());
        QVERIFY(list->ItemRect(3).top() > list->ItemRect(2).top());

        QTest::mouseClick(viewport, Qt::LeftButton, {}, list->ItemRect(2).center());
        QCOMPARE(small->GetSelectCurIndex(), 2);
        QTest::keyClick(list->View(), Qt::Key_Right);
        QCOMPARE(small->GetSelectCurIndex(), 3);
        QCOMPARE(list->GetSelectedItem(), 3);
        QCOMPARE(list->GetSelectionMark(), 3);
        QTest::keyClick(list->View(), Qt::Key_Left);
        QCOMPARE(small->GetSelectCurIndex(), 2);
        QCOMPARE(list->GetSelectedItem(), 2);
        QTest::keyClick(list->View(), Qt::Key_Down);
        QCOMPARE(small->GetSelectCurIndex(), 5);
        QTest::keyClick(list->View(), Qt::Key_Right);
        QCOMPARE(small->GetSelectCurIndex(), 5);
        QCOMPARE(list->GetSelectedItem(), 5);

        panel.OperatePrevPhoto();
        QCOMPARE(list->GetSelectedItem(), 4);
        QCOMPARE(small->GetSelectCurIndex(), 4);
        small->SetSelected(small.get(), true);  // hint 2: the list is filled anew
        QCOMPARE(list->GetItemCount(), small->GetCurrentPhotoCount());
        QCOMPARE(list->GetSelectedItem(), 4);
        panel.Attach(nullptr);
        QVERIFY(!panel.ListCtrl());
        panelHost.panels.clear();
    }

    void cleanupTestCase() {
        loader->WaitForDone();
        loader.reset();
        setting.reset();
        document.reset();
        ToviProfile::Instance().UseFile(QString());
    }

    void init() {
        setting = document->GetVisualSetting();
        setting->SetVisibleComment(true);
        setting->SetDoEditCheck(false);
    }

    // Paging down through both lists with the keyboard asks for the rows that come into
    // view and for no others: nothing near the end of 100,000 rows is read.
    void onlyVisibleRowsAsked_data() {
        QTest::addColumn<int>("mode");
        QTest::newRow("thumbnail list") << int(Mode::ThumbList);
        QTest::newRow("management list") << int(Mode::ManagementList);
    }
    void onlyVisibleRowsAsked() {
        QFETCH(int, mode);
        auto list = MakeList(Mode(mode));
        QVERIFY(list);
        QCOMPARE(list->GetItemCount(), kRows);
        QCoreApplication::processEvents();
        QSet<int> asked;
        const auto probe = [&asked](int row) { asked.insert(row); };
        if (list->ThumbModel()) {
            list->ThumbModel()->SetRowProbe(probe);
        } else {
            list->MngModel()->SetRowProbe(probe);
        }
        // A refill reads nothing beyond the rows on screen either.
        list->Refill();
        list->SelectItem(0);
        QCoreApplication::processEvents();
        const QPair<int, int> before = VisibleRows(*list);
        const int perScreen = before.second - before.first + 1;
        QVERIFY(perScreen > 1);
        QWidget* view = list->View();
        view->setFocus();
        constexpr int kPages = 12;
        int highestVisible = 0;
        for (int i = 0; i < kPages; ++i) {
            QTest::keyClick(view, Qt::Key_PageDown);
            QTest::qWait(5);
            highestVisible = std::max(highestVisible, VisibleRows(*list).second);
        }
        QVERIFY2(list->GetSelectionMark() > perScreen * (kPages / 2),
                 qPrintable(QString::number(list->GetSelectionMark())));
        QVERIFY(!asked.isEmpty());
        // Rows are asked for as they come into view: a screen's worth of margin at most.
        const int highestAsked = *std::max_element(asked.cbegin(), asked.cend());
        QVERIFY2(highestAsked <= highestVisible + perScreen,
                 qPrintable(QStringLiteral("asked %1, visible up to %2")
                                .arg(highestAsked)
                                .arg(highestVisible)));
        QVERIFY2(asked.size() <= (kPages + 2) * perScreen * 2,
                 qPrintable(QString::number(asked.size())));
    }

    // A tile starts as an empty frame, gets its picture from the loader, a broken file gives
    // the pale green tile, and the label marks stand at their places.
    void tilesArrive() {
        ToviPhoto* labelled = document->GetPhoto(1);
        labelled->PasteLabel(1);
        auto list = MakeList(Mode::ThumbList);
        QVERIFY(list);
        ToviThumbListModel* model = list->ThumbModel();
        const auto state = [model](int row) {
            return model->index(row).data(ToviThumbListModel::TileStateRole).toInt();
        };
        QTRY_COMPARE(state(0), int(ToviThumbListModel::TileBuilt));
        QTRY_COMPARE(state(brokenPhoto), int(ToviThumbListModel::TileFailed));
        const QImage broken =
            model->index(brokenPhoto).data(Qt::DecorationRole).value<QPixmap>().toImage();
        QCOMPARE(broken.pixelColor(broken.width() / 2, 12), QColor(230, 255, 230));
        // Label 1 has its place after label 0's, whose place stays empty.
        const QImage tile = model->index(1).data(Qt::DecorationRole).value<QPixmap>().toImage();
        const int x1 = 2 + (ToviThumbListModel::kOverlayWidth + 1) + 10;
        const int x0 = 2 + 10;
        const QImage plain = model->index(0).data(Qt::DecorationRole).value<QPixmap>().toImage();
        QVERIFY(tile.pixelColor(x1, 8) != plain.pixelColor(x1, 8));
        QCOMPARE(tile.pixelColor(x0, 8), plain.pixelColor(x0, 8));

        QTRY_VERIFY(list->IsViewFilled());
        // A label change on row 0 rebuilds its tile only; row 1 keeps its own.
        QSignalSpy changed(model, &QAbstractItemModel::dataChanged);
        document->GetPhoto(0)->PasteLabel(0);
        list->InvalidateItem(0);
        QCOMPARE(state(0), int(ToviThumbListModel::TileWaiting));
        QCOMPARE(state(1), int(ToviThumbListModel::TileBuilt));
        QTRY_COMPARE(state(0), int(ToviThumbListModel::TileBuilt));
        const QImage relabelled =
            model->index(0).data(Qt::DecorationRole).value<QPixmap>().toImage();
        QVERIFY(relabelled.pixelColor(x0, 8) != plain.pixelColor(x0, 8));
        for (const QList<QVariant>& signal : changed) {
            QCOMPARE(signal.at(0).value<QModelIndex>().row(), 0);
        }
        document->GetPhoto(0)->RemoveLabel(0);
        labelled->RemoveLabel(1);
    }

    // The floaty stands under the selected item after its delay, above it near the bottom,
    // inside the viewport on the right, and keeps away while the list scrolls.
    void floatyPlacement_data() {
        QTest::addColumn<int>("mode");
        QTest::newRow("thumbnail list") << int(Mode::ThumbList);
        QTest::newRow("management list") << int(Mode::ManagementList);
    }
    void floatyPlacement() {
        QFETCH(int, mode);
        auto list = MakeList(Mode(mode), QSize(700, 520));
        QVERIFY(list);
        QToolBar* floaty = nullptr;
        const QPoint origin = list->View()->viewport()->mapTo(list.get(), QPoint(0, 0));
        const QRect client = list->View()->viewport()->rect();

        list->ScheduleFloaty(true, 200);
        floaty = list->Floaty();
        QVERIFY(floaty && !floaty->isVisible());
        QTest::qWait(100);
        QVERIFY(!floaty->isVisible());
        QTRY_VERIFY(floaty->isVisible());
        QRect item = list->ItemRect(0).translated(origin);
        QCOMPARE(floaty->y(), item.bottom() + 1);
        if (list->ReportView()) {
            QTableView* table = list->ReportView();
            QCOMPARE(floaty->x(), origin.x() + table->columnWidth(0) + table->columnWidth(1));
        } else {
            QCOMPARE(floaty->x(), item.x());
        }

        // An item whose bottom is too near the viewport's for the floaty under it.
        int low = VisibleRows(*list).second;
        if (list->ThumbView()) {
            QScrollBar* bar = list->View()->verticalScrollBar();
            bar->setValue(bar->value() + list->ItemRect(low).bottom() - (client.bottom() - 5));
        }
        while (list->ItemRect(low).bottom() > client.bottom()) {
            --low;
        }
        QVERIFY(list->ItemRect(low).bottom() + floaty->height() > client.bottom());
        list->SelectItem(low);
        list->ScheduleFloaty(true, 10);
        QTRY_VERIFY(floaty->isVisible());
        item = list->ItemRect(low).translated(origin);
        QCOMPARE(floaty->geometry().bottom(), item.top() - 1);
        QVERIFY(floaty->geometry().right() <= origin.x() + client.right());

        // Scrolling sends it away; it comes back a second after the last move.
        QTest::keyClick(list->View(), Qt::Key_PageDown);
        QVERIFY(!floaty->isVisible());
        QTest::qWait(600);
        QVERIFY(!floaty->isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(floaty->isVisible(), 1500);

        if (QTableView* table = list->ReportView()) {
            // A column being dragged by its header keeps the floaty away until the drag ends.
            QWidget* header = table->horizontalHeader()->viewport();
            const QPoint edge(table->columnWidth(0) - 1, header->height() / 2);
            QTest::mousePress(header, Qt::LeftButton, {}, edge);
            QVERIFY(!floaty->isVisible());
            QTest::qWait(1100);
            QVERIFY(!floaty->isVisible());
            QTest::mouseRelease(header, Qt::LeftButton, {}, edge + QPoint(30, 0));
            QTRY_VERIFY_WITH_TIMEOUT(floaty->isVisible(), 1500);
        }

        // Scrolled out of view, the selected item has no floaty.
        list->SelectItem(0);
        list->View()->scrollToBottom();
        list->ScheduleFloaty(true, 10);
        QTest::qWait(100);
        QVERIFY(!floaty->isVisible());
    }

    // The floaty's buttons send their command and keep showing the photograph's labels; the
    // comment button never looks pressed.
    void floatyButtons() {
        auto list = MakeList(Mode::ThumbList);
        QVERIFY(list);
        list->ScheduleFloaty(true, 0);
        QToolBar* floaty = list->Floaty();
        QTRY_VERIFY(floaty->isVisible());
        const QList<QAction*> actions = floaty->actions();
        QList<QAction*> buttons;
        for (QAction* action : actions) {
            if (!action->isSeparator()) {
                buttons.append(action);
            }
        }
        QCOMPARE(buttons.size(), 6);
        QCOMPARE(buttons[4]->text(), QStringLiteral("コメント"));
        list->SetButtonState(1, true);
        list->SetButtonState(4, true);
        QVERIFY(buttons[1]->isChecked());
        QVERIFY(!buttons[4]->isChecked());
        QSignalSpy commands(list.get(), &ToviPhotoListCtrl::FusenCommand);
        for (int label : {1, 2, 4}) {
            ClickButton(floaty, buttons[label]);
        }
        QCOMPARE(commands.size(), 3);
        QCOMPARE(commands[0].at(0).toInt(), 101);
        QCOMPARE(commands[1].at(0).toInt(), 102);
        QCOMPARE(commands[2].at(0).toInt(), 104);
        // Nobody changed the labels: the buttons show what they showed.
        QVERIFY(buttons[1]->isChecked());
        QVERIFY(!buttons[2]->isChecked());
        QVERIFY(!buttons[4]->isChecked());
    }

    // Keys go to the panel after the list moved, with the mark from before; Right at the last
    // item is swallowed without a word.
    void keysReported() {
        auto list = MakeList(Mode::ThumbList);
        QVERIFY(list);
        QWidget* view = list->View();
        view->setFocus();
        QSignalSpy keys(list.get(), &ToviPhotoListCtrl::KeyPressed);
        QSignalSpy scrolled(list.get(), &ToviPhotoListCtrl::Scrolled);
        QTest::keyClick(view, Qt::Key_Right);
        QCOMPARE(keys.size(), 1);
        QCOMPARE(keys[0].at(0).toInt(), int(Qt::Key_Right));
        QCOMPARE(keys[0].at(1).toInt(), 0);
        QCOMPARE(list->GetSelectionMark(), 1);

        list->SelectItem(kRows - 1);
        QCoreApplication::processEvents();
        keys.clear();
        scrolled.clear();
        QTest::keyClick(view, Qt::Key_Right);
        QCOMPARE(keys.size(), 0);
        QCOMPARE(scrolled.size(), 0);
        QCOMPARE(list->GetSelectionMark(), kRows - 1);
        QCOMPARE(list->GetSelectedItem(), kRows - 1);
        QTest::keyClick(view, Qt::Key_Left);
        QCOMPARE(keys.size(), 1);
        QCOMPARE(keys[0].at(1).toInt(), kRows - 1);
        QCOMPARE(list->GetSelectionMark(), kRows - 2);
    }

    // A click on a comment strip selects its item; a double click on it asks for the comment
    // button, elsewhere on the item for the item.
    void commentStrip() {
        ToviPhoto* photo = document->GetPhoto(2);
        photo->SetComment(QStringLiteral("足場の手すりを確認"));
        auto list = MakeList(Mode::ThumbList);
        QVERIFY(list);
        QWidget* viewport = list->View()->viewport();
        QSignalSpy selected(list.get(), &ToviPhotoListCtrl::ItemSelected);
        QSignalSpy commands(list.get(), &ToviPhotoListCtrl::FusenCommand);
        QSignalSpy doubled(list.get(), &ToviPhotoListCtrl::ItemDoubleClicked);
        const QRect strip = list->StripRect(2);
        QVERIFY(strip.isValid() && viewport->rect().contains(strip));
        QTest::mouseClick(viewport, Qt::LeftButton, {}, strip.center());
        QCOMPARE(list->GetSelectedItem(), 2);
        QCOMPARE(selected.last().at(0).toInt(), 2);
        QTest::mouseDClick(viewport, Qt::LeftButton, {}, strip.center());
        QCOMPARE(commands.size(), 1);
        QCOMPARE(commands[0].at(0).toInt(), 104);
        QCOMPARE(doubled.size(), 0);
        // Row 3 has no comment: its strip's place is part of the item.
        QTest::mouseDClick(viewport, Qt::LeftButton, {}, list->StripRect(3).center());
        QCOMPARE(commands.size(), 1);
        QCOMPARE(doubled.size(), 1);
        QCOMPARE(doubled[0].at(0).toInt(), 3);
        photo->SetComment(QString());
    }

    // The management list's columns follow the shown items and the comment setting; its
    // shooting date reads with slashes; file facts come in while the row is on screen.
    void managementColumns_data() {
        QTest::addColumn<bool>("comments");
        QTest::newRow("comment column") << true;
        QTest::newRow("no comment column") << false;
    }
    void managementColumns() {
        QFETCH(bool, comments);
        setting->SetVisibleComment(comments);
        document->GetPhoto(0)->SetComment(QStringLiteral("要確認"));
        auto list = MakeList(Mode::ManagementList);
        QVERIFY(list);
        ToviMngListModel* model = list->MngModel();
        QStringList shown;
        for (const ToviItemShowSetting& entry : setting->GetItemShowSettings()) {
            if (entry.bold) {
                shown.append(entry.title);
            }
        }
        QVERIFY(shown.contains(QStringLiteral("撮影年月日")));
        QVERIFY(shown.contains(QStringLiteral("ファイルサイズ")));
        QCOMPARE(model->columnCount(), shown.size() + (comments ? 1 : 0));
        const int last = model->columnCount() - 1;
        QCOMPARE(model->headerData(last, Qt::Horizontal).toString(),
                 comments ? QStringLiteral("コメント") : shown.last());
        QCOMPARE(list->ReportView()->columnWidth(0), ToviMngListModel::kColumnWidth);
        if (comments) {
            QCOMPARE(model->index(0, last).data().toString(), QStringLiteral("要確認"));
            list->SetComment(0, QStringLiteral("再撮影"));
            QCOMPARE(model->index(0, last).data().toString(), QStringLiteral("再撮影"));
        } else {
            QVERIFY(model->index(0, last).data().toString() != QStringLiteral("要確認"));
        }

        const int date = shown.indexOf(QStringLiteral("撮影年月日"));
        const ToviPhoto* photo = document->GetPhoto(0);
        const QString raw = photo->GetTitle(
            document->GetItemDef()->GetIndexFromTitle(QStringLiteral("撮影年月日")));
        QVERIFY2(raw.contains(QLatin1Char('-')), qPrintable(raw));
        QCOMPARE(model->index(0, date).data().toString(),
                 QString(raw).replace(QLatin1Char('-'), QLatin1Char('/')));

        const int size = shown.indexOf(QStringLiteral("ファイルサイズ"));
        QTRY_VERIFY(model->index(0, 0).data(ToviMngListModel::FactsReadRole).toBool());
        QVERIFY2(model->index(0, size).data().toString().endsWith(QStringLiteral(" KB")),
                 qPrintable(model->index(0, size).data().toString()));
        // Far rows were never read, so their facts are not in.
        QVERIFY(!model->index(kRows - 1, 0).data(ToviMngListModel::FactsReadRole).toBool());
        document->GetPhoto(0)->SetComment(QString());
    }

    // Pictures whose every request was cancelled before their turn are not decoded, so a
    // list scrolled fast leaves no backlog; one asked for again is decoded after all.
    void loaderDropsCancelled() {
        QTemporaryDir pictures;
        QStringList paths;
        for (int i = 0; i < 40; ++i) {
            QImage picture(1200, 900, QImage::Format_RGB32);
            picture.fill(QColor(i * 6, 100, 160));
            paths.append(pictures.filePath(QStringLiteral("p%1.jpg").arg(i)));
            QVERIFY(picture.save(paths.last(), "JPG"));
        }
        ToviImageLoader fresh;
        QSignalSpy ready(&fresh, &ToviImageLoader::Ready);
        QList<quint64> tickets;
        for (const QString& path : paths) {
            tickets.append(fresh.Request(path, ToviImageLoader::Thumb, nullptr));
        }
        for (int i = 0; i < 38; ++i) {
            fresh.Cancel(tickets[i]);
        }
        // Wanted again before its turn: it comes.
        const quint64 again = fresh.Request(paths[20], ToviImageLoader::Thumb, nullptr);
        QTRY_COMPARE(ready.size(), 3);
        fresh.WaitForDone();
        QCoreApplication::processEvents();
        QList<quint64> answered;
        for (const QList<QVariant>& signal : ready) {
            answered.append(signal.at(0).toULongLong());
            QVERIFY(!signal.at(3).value<QImage>().isNull());
        }
        QVERIFY(answered.contains(again) && answered.contains(tickets[38]) &&
                answered.contains(tickets[39]));
        int decoded = 0;
        for (int i = 0; i < 38; ++i) {
            QImage cached;
            const quint64 ticket = fresh.Request(paths[i], ToviImageLoader::Thumb, &cached);
            decoded += ticket == 0 ? 1 : 0;
            fresh.Cancel(ticket);
        }
        // Only those a worker had already begun, and the one asked for again.
        QVERIFY2(decoded <= QThread::idealThreadCount() + 1, qPrintable(QString::number(decoded)));
        fresh.WaitForDone();
    }

    // An empty set: no items, and the floaty does not come.
    void emptySet_data() {
        QTest::addColumn<int>("mode");
        QTest::newRow("thumbnail list") << int(Mode::ThumbList);
        QTest::newRow("management list") << int(Mode::ManagementList);
    }
    void emptySet() {
        QFETCH(int, mode);
        const QList<int> all = document->CurrentArray().Indexes();
        document->CurrentArray().Assign({});
        auto list = MakeList(Mode(mode));
        QVERIFY(list);
        QCOMPARE(list->GetItemCount(), 0);
        QCOMPARE(list->GetSelectedItem(), -1);
        list->ScheduleFloaty(true, 10);
        QTest::qWait(60);
        QVERIFY(list->Floaty() && !list->Floaty()->isVisible());
        document->CurrentArray().Assign(all);
    }
};

QTEST_MAIN(ToviPhotoListTest)
#include "ToviPhotoListTest.moc"
