#include "dialogs/ToviDetailPanel.h"
#include "dialogs/ToviExifPage.h"
#include "dialogs/ToviImageWnd.h"
#include "dialogs/ToviMultiDlg.h"
#include "dialogs/ToviPropertyDlg.h"
#include "dialogs/ToviTabBaseWnd.h"
#include "document/ToviHostDocument.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviNamePlate.h"
#include "panels/ToviPanelWindows.h"
#include "panels/ToviSlideMode.h"
#include "panels/ToviSpiCtrl.h"
#include "panels/ToviSpiListCtrl.h"
#include "panels/ToviZoomDialogs.h"
#include "platform/ToviProfile.h"
#include "platform/widgets/LumImgWnd.h"
#include "reports/ToviPhotoExport.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/WorkArea.h"

#include <QAction>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabBar>
#include <QSlider>
#include <QSplitter>
#include <QTemporaryDir>
#include <QToolBar>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Hands every hint to the panel, as the viewer's host does.
class Host : public ToviHostDocument {
public:
    ToviPanel* panel = nullptr;
    void UpdateAllViews(QWidget* sender, int hint, QObject* object) override {
        if (panel && panel != sender) {
            panel->OnUpdate(sender, static_cast<ToviData::UpdateHint>(hint), object);
        }
    }
};

// Records what a zoom window asks of its owner.
class Owner : public ToviZoomOwner {
public:
    QStringList calls;
    void OnDestroyDlg(ToviZoomView*) override { calls.append(u"destroy"_s); }
    void OnDestroyAllDlg() override { calls.append(u"destroyAll"_s); }
    void OnFixAllDlg() override { calls.append(u"arrange"_s); }
    void OnChangeDlgState(ToviZoomView*) override { calls.append(u"info"_s); }
};

void ClickTool(QWidget* window, QAction* action) {
    QToolBar* bar = nullptr;
    for (QToolBar* candidate : window->findChildren<QToolBar*>()) {
        if (candidate->actions().contains(action)) {
            bar = candidate;
        }
    }
    QVERIFY(bar);
    QWidget* button = bar->widgetForAction(action);
    QVERIFY(button && button->isEnabled());
    QTest::mouseClick(button, Qt::LeftButton);
}

}  // namespace

class ToviZoomWindowsTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    ScriptedUi ui;
    Host host;
    std::unique_ptr<ToviData> document;

    ToviPhoto* Photo(int i) const { return document->GetPhotoActualPhotoArray(i); }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(u"profile.ini"_s));
        UseWorkFolder(temp.path());
        ToviUi::Install(&ui);
        DeliveryOptions options;
        options.photoCount = 6;
        options.images = DeliveryOptions::Images::Boards;
        options.imageSize = QSize(320, 240);
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(u"d"_s), options, &written, &error),
                 qPrintable(error));
        QVERIFY(QFile::remove(written.photoFolder + u"/PIC/"_s + written.photos[5].fileName));
        ToviEnouDataFactory factory;
        document = factory.Create(&host, written.photoFolder, PhotoXMLMlit);
        QVERIFY(document);
        document->Load();
        document->BuildTreeNode(document->GetVisualSetting().GetTreeType());
        document->SetSelected(document.get(), true);
    }
    void cleanupTestCase() {
        host.panel = nullptr;
        document.reset();
        ToviUi::Install(nullptr);
        ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
    }

    // The zoom window's tools: turns bring back 戻す even when they add up to nothing; the
    // slider darkens only in whole steps (+30 below the middle changes nothing, -30 above it
    // lightens); 固定 and 情報 flip, the latter telling the owner; Enter closes nothing, Escape
    // asks the owner to close the window.
    void zoomWindowTools() {
        Owner owner;
        ToviMultiDlg dialog(&owner, nullptr, Photo(0), document->GetItemDef(), document.get(),
                            true);
        dialog.resize(800, 600);
        QSignalSpy loaded(dialog.ImageWnd(), &LumImgWnd::Loaded);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QVERIFY(loaded.count() > 0 || loaded.wait(10000));
        QVERIFY(dialog.windowTitle() != ToviMultiDlg::NoPhotoTitle_);
        QVERIFY(!dialog.Action(ToviMultiDlg::kRestore)->isEnabled());
        const QImage plain = dialog.ImageWnd()->Image();

        for (int i = 0; i < 4; ++i) {
            ClickTool(&dialog, dialog.Action(ToviMultiDlg::kRotateRight));
        }
        QCOMPARE(dialog.Rotation(), 0);
        QVERIFY(dialog.Action(ToviMultiDlg::kRestore)->isEnabled());

        dialog.Slider()->setFocus();
        dialog.Slider()->setValue(-30);  // 30 below the middle
        QCOMPARE(dialog.SliderPos(), 30);
        QCOMPARE(dialog.Brightness(), -600);
        QCOMPARE(dialog.ImageWnd()->Image(), plain);
        QTest::keyClick(dialog.Slider(), Qt::Key_PageUp);  // toward the light end
        QTest::keyClick(dialog.Slider(), Qt::Key_PageUp);
        QTest::keyClick(dialog.Slider(), Qt::Key_PageUp);
        QTest::keyClick(dialog.Slider(), Qt::Key_PageUp);
        QTest::keyClick(dialog.Slider(), Qt::Key_PageUp);
        QTest::keyClick(dialog.Slider(), Qt::Key_PageUp);
        QCOMPARE(dialog.SliderPos(), -30);
        QCOMPARE(dialog.Brightness(), 600);
        QVERIFY(qGray(dialog.ImageWnd()->Image().pixel(160, 120)) > qGray(plain.pixel(160, 120)));
        ClickTool(&dialog, dialog.Action(ToviMultiDlg::kRestore));
        QCOMPARE(dialog.Brightness(), 0);
        QCOMPARE(dialog.Slider()->value(), 0);
        QCOMPARE(dialog.ImageWnd()->Image(), plain);

        // Saving is refused during a slide show, in words.
        SetSlideMode(true);
        ClickTool(&dialog, dialog.Action(ToviMultiDlg::kSave));
        SetSlideMode(false);
        QCOMPARE(ui.Questions().last().text, ToviPhotoExport::SlideModeMessage_);

        ClickTool(&dialog, dialog.Action(ToviMultiDlg::kFix));
        QVERIFY(dialog.IsFixed());
        ClickTool(&dialog, dialog.Action(ToviMultiDlg::kInformation));
        QVERIFY(!dialog.IsInfoVisible());
        QVERIFY(dialog.TabWnd()->isHidden());
        QCOMPARE(owner.calls, QStringList{u"info"_s});
        ClickTool(&dialog, dialog.Action(ToviMultiDlg::kArrange));
        ClickTool(&dialog, dialog.Action(ToviMultiDlg::kCloseAll));

        QTest::keyClick(&dialog, Qt::Key_Return);
        QVERIFY(dialog.isVisible());
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QCOMPARE(owner.calls,
                 (QStringList{u"info"_s, u"arrange"_s, u"destroyAll"_s, u"destroy"_s}));
    }
    // A photograph without a file clears the picture but keeps its information; a cleared
    // window shows nothing and offers no tool but the window's own.
    void zoomWindowWithoutPicture() {
        Owner owner;
        ToviMultiDlg dialog(&owner, nullptr, Photo(5), document->GetItemDef(), document.get(),
                            true);
        dialog.resize(700, 500);
        dialog.show();
        QVERIFY(!dialog.ImageWnd()->IsEnableImage());
        QVERIFY(dialog.TabWnd()->GetPropertyDlg()->ItemList()->topLevelItemCount() > 0);
        QVERIFY(dialog.IsSamePhoto(Photo(5)->GetImagePath().toLower()));
        dialog.ClearPhoto();
        QCOMPARE(dialog.windowTitle(), ToviMultiDlg::NoPhotoTitle_);
        QVERIFY(!dialog.IsSamePhoto(Photo(5)->GetImagePath()));
        for (int command : {ToviMultiDlg::kRotateLeft, ToviMultiDlg::kRotateRight,
                            ToviMultiDlg::kRestore, ToviMultiDlg::kSave, ToviMultiDlg::kFix}) {
            QVERIFY(!dialog.Action(command)->isEnabled());
        }
        QVERIFY(!dialog.Slider()->isEnabled());
        QCOMPARE(dialog.TabWnd()->GetPropertyDlg()->ItemList()->topLevelItemCount(), 0);
        QVERIFY(dialog.Action(ToviMultiDlg::kClose)->isEnabled());
    }
    // The detail panel reads nothing while hidden: five selections later, showing it reads
    // the last one. The right pane's button flips the setting and the pane.
    void detailPanel() {
        ToviDetailPanel panel(&host);
        host.panel = &panel;
        panel.resize(900, 500);
        panel.show();
        ToviPhotoCtrlVisualSetting setting = document->GetVisualSetting();
        setting.SetVisibleDetail(false);
        setting.SetVisibleProperty(true);
        document->SetVisualSetting(setting, false);
        panel.Attach(document.get());
        QVERIFY(!panel.Visible());
        QVERIFY(!panel.ImageWnd()->Photo());
        for (int i = 0; i < 5; ++i) {
            document->PhotoSelectSetting(i);
            panel.OnUpdate(nullptr, ToviData::HintPhotoSelected, nullptr);
        }
        QVERIFY(panel.IsStale());
        QVERIFY(!panel.ImageWnd()->Photo());
        QSignalSpy shown(&panel, &ToviDetailPanel::VisibleChanged);
        setting.SetVisibleDetail(true);
        document->SetVisualSetting(setting, false);
        panel.OnUpdate(nullptr, ToviData::HintSettingsChanged, nullptr);
        QCOMPARE(shown.count(), 1);
        QCOMPARE(panel.ImageWnd()->Photo(), Photo(4));
        QVERIFY(!panel.IsStale());
        document->PhotoSelectSetting(2);
        panel.OnUpdate(nullptr, ToviData::HintPhotoSelected, nullptr);
        QCOMPARE(panel.ImageWnd()->Photo(), Photo(2));

        // With no width kept, the bar stands at half the panel and one.
        panel.AdjustSplitter();
        QCOMPARE(panel.Splitter()->sizes().first(), panel.width() / 2 + 1);
        QVERIFY(!panel.TabWnd()->isHidden());
        QAction* information = panel.ImageWnd()->Action(ToviImageWnd::kInformation);
        QVERIFY(information->isChecked());
        ClickTool(panel.ImageWnd(), information);
        QVERIFY(!document->GetVisualSetting().GetVisibleProperty());
        QVERIFY(panel.TabWnd()->isHidden());
        QVERIFY(!information->isChecked());
        ClickTool(panel.ImageWnd(), information);
        QVERIFY(!panel.TabWnd()->isHidden());

        // In a pane too narrow for the drawing page's rows, its controls stand one under the
        // other: each inside the page, none over another.
        panel.Splitter()->setSizes({600, 250});
        panel.TabWnd()->SetSelectedPage(1);
        ToviPropertyDlg* page = panel.TabWnd()->GetPropertyDlg();
        QTRY_VERIFY(page->width() > 0 && page->width() < ToviPropertyDlg::kCompactWidth);
        const QList<QWidget*> controls{static_cast<QWidget*>(page->PreviousButton()),
                                       page->NextButton(), page->PositionText(), page->OpenButton(),
                                       page->FileNameText()};
        for (int i = 0; i < controls.size(); ++i) {
            QVERIFY(page->rect().contains(controls[i]->geometry()));
            for (int j = i + 1; j < controls.size(); ++j) {
                QVERIFY(!controls[i]->geometry().intersects(controls[j]->geometry()));
            }
        }
        // The texts have the room their words need.
        const QFontMetrics metrics(page->PositionText()->font());
        QVERIFY(page->PositionText()->width() > metrics.horizontalAdvance(u"10/10 枚目を表示"_s));
        QVERIFY(page->FileNameText()->width() > metrics.horizontalAdvance(u"D0000001.JPG"_s));
        panel.TabWnd()->SetSelectedPage(0);

        // A narrow panel leaves the right pane its least width and the picture the rest.
        panel.resize(100, 300);
        QCOMPARE(panel.Splitter()->sizes().last(), ToviDetailPanel::kMinPane);
        panel.Detach();
        host.panel = nullptr;
        QVERIFY(!panel.ImageWnd()->Photo());
    }
    // The panel's zoom windows: a double click opens one on the photograph, a loose one
    // follows the selection and a fixed one keeps its photograph, Enter on a photograph does
    // what the double click does, a seventh is refused, and the windows arrange in two
    // columns of three. Closing them all keeps the last one's size for the next.
    void panelZoomWindows() {
        DeliveryOptions options;
        options.photoCount = 8;
        options.images = DeliveryOptions::Images::Tiny;
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(u"z"_s), options, &written, &error),
                 qPrintable(error));
        Host zoomHost;
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> data =
            factory.Create(&zoomHost, written.photoFolder, PhotoXMLMlit);
        QVERIFY(data);
        data->Load();
        ToviPhotoCtrlVisualSetting setting = data->GetVisualSetting();
        setting.SetDivType(ToviPhotoCtrlVisualSetting::Divide4);
        data->SetVisualSetting(setting, false);
        data->BuildTreeNode(setting.GetTreeType());
        data->SetSelected(data.get(), true);
        ToviPanelWindows windows;
        windows.createZoom = &ToviMultiDlg::Make;
        SetPanelWindows(windows);
        struct Remove {
            ~Remove() { SetPanelWindows({}); }
        } remove;

        QWidget top;
        top.resize(900, 700);
        auto* panel = new ToviMpiPanel(&zoomHost);
        panel->Create(&top, 1);
        panel->resize(900, 700);
        zoomHost.panel = panel;
        top.show();
        QVERIFY(QTest::qWaitForWindowExposed(&top));
        panel->Attach(data.get());
        panel->OnUpdate(nullptr, ToviData::HintInitialize, nullptr);
        ToviZoomDialogs* zoom = panel->ZoomDialogs();
        const auto cell = [panel](int i) { return panel->Cells()[static_cast<size_t>(i)]; };
        const auto path = [&data](int i) { return data->GetPhoto(i)->GetImagePath(); };

        QTest::mouseDClick(cell(0)->ImageWnd(), Qt::LeftButton);
        QCOMPARE(zoom->Count(), 1);
        QVERIFY(zoom->Dialog(0)->IsSamePhoto(path(0)));
        QVERIFY(zoom->Dialog(0)->Window()->isVisible());
        QTest::mouseClick(cell(1)->ImageWnd(), Qt::LeftButton);
        QVERIFY(zoom->Dialog(0)->IsSamePhoto(path(1)));

        auto* first = dynamic_cast<ToviMultiDlg*>(zoom->Dialog(0));
        QVERIFY(first);
        ClickTool(first, first->Action(ToviMultiDlg::kFix));
        QTest::mouseClick(cell(2)->ImageWnd(), Qt::LeftButton);
        QVERIFY(zoom->Dialog(0)->IsSamePhoto(path(1)));
        cell(2)->NamePlate()->setFocus();
        QTest::keyClick(cell(2)->NamePlate(), Qt::Key_Return);
        QCOMPARE(zoom->Count(), 2);
        QVERIFY(zoom->Dialog(1)->IsSamePhoto(path(2)));
        // Asking again for a photograph on show raises its window; nothing new is made.
        QTest::mouseDClick(cell(2)->ImageWnd(), Qt::LeftButton);
        QCOMPARE(zoom->Count(), 2);

        // Six fixed windows, then the seventh is refused in words.
        for (int i = 2; i < 7; ++i) {
            panel->OnSelect(i);
            panel->ShowMultiDlg();
            auto* dialog = dynamic_cast<ToviMultiDlg*>(zoom->Dialog(zoom->Count() - 1));
            if (!dialog->IsFixed()) {
                ClickTool(dialog, dialog->Action(ToviMultiDlg::kFix));
            }
        }
        QCOMPARE(zoom->Count(), 6);
        const int asked = ui.Questions().size();
        panel->OnSelect(7);
        panel->ShowMultiDlg();
        QCOMPARE(zoom->Count(), 6);
        QCOMPARE(ui.Questions().size(), asked + 1);
        QCOMPARE(ui.Questions().last().text, ToviZoomDialogs::LimitMessage_);

        // 整列 on any of them: two columns of three, down the first column first.
        auto* last = dynamic_cast<ToviMultiDlg*>(zoom->Dialog(5));
        ClickTool(last, last->Action(ToviMultiDlg::kArrange));
        const QRect area = top.screen()->availableGeometry();
        const QRect placed = zoom->Dialog(4)->Window()->geometry();
        // (no smaller than the window allows, on the small offscreen screen)
        QCOMPARE(placed.size(), QSize(area.width() / 2, area.height() / 3)
                                    .expandedTo(zoom->Dialog(4)->Window()->minimumSize()));
        QCOMPARE(zoom->Dialog(2)->Window()->geometry().topLeft(),
                 QPoint(0, 2 * (area.height() / 3)));
        QCOMPARE(placed.topLeft(), QPoint(area.width() / 2, area.height() / 3));

        // 閉じる takes one away; 全閉 all, keeping the last one's size.
        ClickTool(last, last->Action(ToviMultiDlg::kClose));
        QCOMPARE(zoom->Count(), 5);
        zoom->Dialog(4)->Window()->resize(820, 640);
        auto* any = dynamic_cast<ToviMultiDlg*>(zoom->Dialog(0));
        ClickTool(any, any->Action(ToviMultiDlg::kCloseAll));
        QCOMPARE(zoom->Count(), 0);
        QCOMPARE(panel->DialogWidth(), 820);
        QCOMPARE(panel->DialogHeight(), 640);
        QCOMPARE(zoom->GetDlgSize(), QSize(820, 640));
        zoomHost.panel = nullptr;
        panel->Detach();
    }
    // A remembered size too small to use gives the next window 800 by 600.
    void zoomWindowSize_data() {
        QTest::addColumn<QSize>("stored");
        QTest::addColumn<QSize>("expected");
        QTest::newRow("usable") << QSize(247, 101) << QSize(247, 101);
        QTest::newRow("narrow") << QSize(246, 500) << QSize(800, 600);
        QTest::newRow("low") << QSize(500, 100) << QSize(800, 600);
    }
    void zoomWindowSize() {
        QFETCH(QSize, stored);
        QFETCH(QSize, expected);
        ToviProfile::Instance().WriteProfileInt(
            ToviMpiPanel::MultiDialogSection_, ToviMpiPanel::MultiDlgWEntry_, stored.width() + 100);
        ToviProfile::Instance().WriteProfileInt(ToviMpiPanel::MultiDialogSection_,
                                                ToviMpiPanel::MultiDlgHEntry_,
                                                stored.height() + 100);
        ToviMpiPanel panel(&host);
        QCOMPARE(panel.ZoomDialogs()->GetDlgSize(), expected);
    }
    // The Exif tab, clicked, shows the six groups and the file's facts of a JPEG whose Exif
    // is known, and nothing is read for it while another tab is in front.
    void exifPage() {
        DeliveryOptions options;
        options.photoCount = 2;
        options.images = DeliveryOptions::Images::Boards;
        options.imageSize = QSize(320, 240);
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(u"e"_s), options, &written, &error),
                 qPrintable(error));
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> data = factory.Create(&host, written.photoFolder, PhotoXMLMlit);
        QVERIFY(data);
        const ExifFacts& facts = written.photos[0].exif;
        QVERIFY(facts.writeExif);

        ToviTabBaseWnd tabs(nullptr);
        tabs.resize(420, 600);
        tabs.show();
        QVERIFY(QTest::qWaitForWindowExposed(&tabs));
        tabs.SetContent(data->GetPhotoActualPhotoArray(0), data->GetItemDef(),
                        data->GetVisualSetting().GetItemShowSettings());
        QCOMPARE(tabs.ExifPage()->topLevelItemCount(), 0);  // not read while not in front
        QTabBar* bar = tabs.TabBar();
        QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier,
                          bar->tabRect(ToviTabBaseWnd::kExifPage).center());
        QVERIFY(tabs.ExifPage()->isVisible());
        QVERIFY(!tabs.GetPropertyDlg()->isVisible());
        const ToviExifPage* page = tabs.ExifPage();
        QCOMPARE(page->Value(u"機器と作者"_s, u"画像入力機器のメーカー名"_s), facts.make);
        QCOMPARE(page->Value(u"機器と作者"_s, u"画像入力機器のモデル名"_s), facts.model);
        QCOMPARE(page->Value(u"画像"_s, u"大きさ"_s), u"320 x 240"_s);
        if (facts.dateTimeOriginal.isValid()) {
            QCOMPARE(page->Value(u"日時"_s, u"撮影日時"_s),
                     facts.dateTimeOriginal.toString(u"yyyy/MM/dd HH:mm:ss"_s));
        }
        QCOMPARE(page->Value(u"撮影条件"_s, u"Fナンバー"_s), u"F%1"_s.arg(facts.fNumber));
        QCOMPARE(page->Value(ToviExifPage::FileHeading_, u"幅×高さ"_s), u"320×240"_s);
        QVERIFY(page->Value(ToviExifPage::FileHeading_, u"ファイルサイズ"_s).endsWith(u" KB"_s));
        // The next photograph while the page is in front is shown at once.
        tabs.SetContent(data->GetPhotoActualPhotoArray(1), data->GetItemDef(),
                        data->GetVisualSetting().GetItemShowSettings());
        QCOMPARE(page->Value(u"機器と作者"_s, u"画像入力機器のメーカー名"_s),
                 written.photos[1].exif.make);
        tabs.ClearContent();
        QCOMPARE(page->topLevelItemCount(), 0);
    }
};

QTEST_MAIN(ToviZoomWindowsTest)
#include "ToviZoomWindowsTest.moc"
