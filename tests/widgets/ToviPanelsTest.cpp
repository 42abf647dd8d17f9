#include "document/ToviHostDocument.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "panels/ToviFolderTreePanel.h"
#include "panels/ToviImageLoader.h"
#include "panels/ToviLabelTreePanel.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviNamePlate.h"
#include "panels/ToviSpiCtrl.h"
#include "panels/ToviSpiListCtrl.h"
#include "platform/widgets/LumImgWnd.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/TreeItemPoint.h"
#include "platform/ToviProfile.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ExifJpegWriter.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>

#include <memory>

namespace {

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

// Counts the attach callbacks.
class CountingPanel : public ToviPanel {
public:
    int pre = 0;
    int post = 0;
    void OnPreDetachData() override { ++pre; }
    void OnPostAttachData() override { ++post; }
};

void Click(QTreeWidget* tree, QTreeWidgetItem* item, Qt::MouseButton button = Qt::LeftButton) {
    tree->scrollToItem(item);
    QTest::mouseClick(tree->viewport(), button, {}, TreeItemPoint(tree, item));
}

QStringList Texts(QTreeWidgetItem* item) {
    QStringList texts;
    for (int i = 0; i < item->childCount(); ++i) {
        texts.append(item->child(i)->text(0));
    }
    return texts;
}

}  // namespace

class ToviPanelsTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    PanelHost host;
    QString folder;
    QString pictures;  // a delivery with small JPEGs

    std::unique_ptr<ToviData> Open() {
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> document = factory.Create(&host, folder, PhotoXMLMlit);
        if (document) {
            document->Load();
            document->BuildTreeNode(document->GetVisualSetting().GetTreeType());
        }
        return document;
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("profile.ini")));
        DeliveryOptions options;
        options.photoCount = 40;
        options.images = DeliveryOptions::Images::None;
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(QStringLiteral("d")), options, &written, &error),
                 qPrintable(error));
        folder = written.photoFolder;
        options.photoCount = 6;
        options.images = DeliveryOptions::Images::Tiny;
        QVERIFY(WriteDelivery(temp.filePath(QStringLiteral("p")), options, &written, &error));
        pictures = written.photoFolder;
    }

    // Attaching and detaching call the panel's hooks as the frame promises, hint 9 included.
    void attachAndDetach() {
        std::unique_ptr<ToviData> document = Open();
        CountingPanel panel;
        QCOMPARE(panel.Attach(document.get()), nullptr);
        QCOMPARE(panel.Attach(document.get()), document.get());
        QCOMPARE(panel.pre, 0);
        QCOMPARE(panel.post, 2);
        QCOMPARE(panel.Attach(nullptr), document.get());
        QCOMPARE(panel.pre, 1);
        QCOMPARE(panel.Detach(), nullptr);
        QCOMPARE(panel.pre, 1);
        QCOMPARE(panel.post, 4);
        panel.Attach(document.get());
        panel.OnUpdate(nullptr, ToviData::HintDetach, nullptr);
        QCOMPARE(panel.GetData(), nullptr);
        QCOMPARE(panel.pre, 2);
        panel.OnUpdate(nullptr, ToviData::HintDetach, nullptr);
        QCOMPARE(panel.post, 7);
    }

    // The folder tree: built open on hint 0, a click selects the node's photographs, a
    // settings hint keeps the tree unless the tree type changed, and a refresh empties it.
    void folderTree() {
        std::unique_ptr<ToviData> document = Open();
        ToviFolderTreePanel panel;
        panel.resize(320, 600);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));  // the tree has its size before a click
        host.panels = {&panel};
        panel.Attach(document.get());
        document->SetSelected(document.get(), true);
        panel.OnUpdate(nullptr, ToviData::HintInitialize, nullptr);
        QTreeWidget* tree = panel.GetTreeCtrl();
        QTreeWidgetItem* root = tree->topLevelItem(0);
        QVERIFY(root && root->isExpanded());
        QCOMPARE(root->childCount(), static_cast<ToviNode*>(document.get())->GetChildNodeCount());
        QCOMPARE(tree->currentItem(), root);

        QTreeWidgetItem* branch = root->child(0);
        QTreeWidgetItem* leaf = branch;
        while (leaf->childCount() > 0) {
            QVERIFY(leaf->isExpanded());
            leaf = leaf->child(0);
        }
        Click(tree, leaf);
        ToviNode* node = document->GetSelectedNode();
        QCOMPARE(node->Title(), leaf->text(0));
        QCOMPARE(document->GetCurrentPhotoCount(), node->GetImageCount());

        // Closing all under the first branch from its context menu: the branch and its
        // descendants close, its siblings stay open, and the selection climbs to the branch.
        QTimer::singleShot(50, [] {
            QWidget* menu = QApplication::activePopupWidget();
            QVERIFY(menu);
            QTest::keyClick(menu, Qt::Key_Down);
            QTest::keyClick(menu, Qt::Key_Return);
        });
        tree->scrollToItem(branch);
        const QPoint at = TreeItemPoint(tree, branch);
        QContextMenuEvent menuEvent(QContextMenuEvent::Mouse, tree->viewport()->mapTo(&panel, at),
                                    tree->viewport()->mapToGlobal(at));
        QApplication::sendEvent(&panel, &menuEvent);
        QCOMPARE(panel.MenuItem(), branch);
        QVERIFY(!branch->isExpanded());
        for (QTreeWidgetItem* below = branch->child(0); below; below = below->child(0)) {
            QVERIFY(!below->isExpanded() || below->childCount() == 0);
        }
        if (root->childCount() > 1 && root->child(1)->childCount() > 0) {
            QVERIFY(root->child(1)->isExpanded());
        }
        QCOMPARE(tree->currentItem(), branch);
        QCOMPARE(document->GetSelectedNode()->Title(), branch->text(0));

        // The same tree type keeps the tree as it is; another builds it anew, selection kept.
        ToviPhotoCtrlVisualSetting setting = document->GetVisualSetting();
        setting.SetTitleShowType(ToviPhotoCtrlVisualSetting::TitleFileName);
        document->SetVisualSetting(setting, false);
        panel.OnUpdate(nullptr, ToviData::HintSettingsChanged, nullptr);
        QCOMPARE(tree->topLevelItem(0), root);
        QVERIFY(!branch->isExpanded());
        setting.SetTreeType(ToviPhotoCtrlVisualSetting::TreeSatsueikasyo);
        document->SetVisualSetting(setting, false);
        document->BuildTreeNode(setting.GetTreeType());
        document->SetSelected(document.get(), true);
        panel.OnUpdate(nullptr, ToviData::HintSettingsChanged, nullptr);
        QVERIFY(tree->topLevelItem(0) != nullptr);
        QCOMPARE(tree->currentItem(), tree->topLevelItem(0));
        QCOMPARE(tree->topLevelItem(0)->childCount(),
                 static_cast<ToviNode*>(document.get())->GetChildNodeCount());

        panel.OnUpdate(nullptr, ToviData::HintRefresh1, nullptr);
        QCOMPARE(tree->topLevelItemCount(), 0);
        host.panels.clear();
    }

    // The label tree: six labels under 付箋, each counted once photographs carry it; a click
    // selects those photographs, the root selects none.
    void labelTree() {
        std::unique_ptr<ToviData> document = Open();
        ToviLabelTreePanel panel;
        panel.resize(320, 400);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        host.panels = {&panel};
        panel.Attach(document.get());
        panel.OnUpdate(nullptr, ToviData::HintInitialize, nullptr);
        QTreeWidget* tree = panel.GetTreeCtrl();
        QTreeWidgetItem* root = tree->topLevelItem(0);
        QCOMPARE(root->text(0), QStringLiteral("付箋"));
        const ToviLabelManager& labels = *document->GetLabelManager();
        QCOMPARE(Texts(root).first(), labels.GetLabelAttribute(0).GetName());

        for (int i = 0; i < 12; ++i) {
            document->GetPhotoActualPhotoArray(i)->PasteLabel(1);
        }
        panel.OnUpdate(nullptr, ToviData::HintLabelsChanged, nullptr);
        QCOMPARE(root->child(1)->text(0),
                 labels.GetLabelAttribute(1).GetName() + QStringLiteral(" <12>"));
        QCOMPARE(root->child(2)->text(0), labels.GetLabelAttribute(2).GetName());

        root->setExpanded(true);
        Click(tree, root->child(1));
        QCOMPARE(document->GetSelectedIndex(), 1);
        QCOMPARE(document->GetCurrentPhotoCount(), 12);
        QVERIFY(!panel.IsSelectTreeRoot());
        Click(tree, root);
        QVERIFY(panel.IsSelectTreeRoot());
        QCOMPARE(document->GetCurrentPhotoCount(), 0);
        host.panels.clear();
    }

    // Pictures come back on the UI thread, a broken file as a null image; a second request is
    // answered from the cache at once, two requests for one file share one decode, and a
    // cancelled ticket gets no answer.
    void imageLoader() {
        QStringList paths;
        for (int i = 0; i < 3; ++i) {
            QImage picture(800 + i, 600, QImage::Format_RGB32);
            picture.fill(QColor(40 * i, 120, 200));
            paths.append(temp.filePath(QStringLiteral("p%1.jpg").arg(i)));
            QVERIFY(picture.save(paths.last(), "JPG"));
        }
        paths.append(temp.filePath(QStringLiteral("broken.jpg")));
        QFile broken(paths.last());
        QVERIFY(broken.open(QIODevice::WriteOnly) &&
                broken.write("\xff\xd8\xff not a picture") > 0);
        broken.close();

        ToviImageLoader loader;
        QSignalSpy ready(&loader, &ToviImageLoader::Ready);
        QHash<quint64, QString> asked;
        QThread* answeredOn = nullptr;
        connect(&loader, &ToviImageLoader::Ready, this,
                [&answeredOn] { answeredOn = QThread::currentThread(); });
        for (const QString& path : paths) {
            QImage cached;
            const quint64 ticket = loader.Request(path, ToviImageLoader::Full, &cached);
            QVERIFY(ticket != 0);
            asked.insert(ticket, path);
        }
        const quint64 joined = loader.Request(paths[0], ToviImageLoader::Full, nullptr);
        const quint64 cancelled = loader.Request(paths[1], ToviImageLoader::Full, nullptr);
        loader.Cancel(cancelled);
        QTRY_COMPARE(loader.PendingCount(), 0);
        QCOMPARE(ready.size(), 5);
        QCOMPARE(answeredOn, QThread::currentThread());
        for (const QList<QVariant>& answer : ready) {
            const quint64 ticket = answer[0].toULongLong();
            QVERIFY(ticket != cancelled);
            const QString path = answer[1].toString();
            QCOMPARE(path, ticket == joined ? paths[0] : asked.value(ticket));
            QCOMPARE(answer[3].value<QImage>().isNull(), path == paths[3]);
        }
        QImage cached;
        QCOMPARE(loader.Request(paths[2], ToviImageLoader::Full, &cached), quint64(0));
        QCOMPARE(cached.size(), QSize(802, 600));
        QVERIFY(loader.Request(paths[2], ToviImageLoader::Thumb, &cached) != 0);
        QVERIFY(loader.Request(paths[3], ToviImageLoader::Full, &cached) != 0);  // not cached
        loader.WaitForDone();
    }

    // The name plate reports clicks only with a photograph on show, hands every key on, flips
    // a label button as it is pressed, and names its buttons by the labels.
    void namePlate() {
        std::unique_ptr<ToviData> document = Open();
        ToviNamePlate plate;
        plate.resize(600, ToviNamePlate::kHeight);
        plate.show();
        plate.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&plate));
        QSignalSpy clicked(&plate, &ToviNamePlate::Clicked);
        QSignalSpy keys(&plate, &ToviNamePlate::KeyPressed);
        QSignalSpy labels(&plate, &ToviNamePlate::LabelClicked);
        QTest::mouseClick(&plate, Qt::LeftButton, {}, QPoint(20, 10));
        QCOMPARE(clicked.size(), 0);
        plate.SetActive(true);
        QTest::mouseClick(&plate, Qt::LeftButton, {}, QPoint(20, 10));
        QCOMPARE(clicked.size(), 1);
        QVERIFY(plate.hasFocus());
        QTest::keyClick(&plate, Qt::Key_PageDown);
        QCOMPARE(keys.size(), 1);
        QCOMPARE(keys[0][0].toInt(), int(Qt::Key_PageDown));

        QTest::mouseClick(plate.Button(2), Qt::LeftButton);
        QCOMPARE(labels.size(), 1);
        QCOMPARE(labels[0][0].toInt(), 2);
        QVERIFY(plate.Button(2)->IsPressed());
        QVERIFY(plate.Button(2)->geometry().right() < plate.width() - 2 * 16);

        plate.ApplyLabelNames(*document->GetLabelManager());
        QCOMPARE(plate.Button(1)->toolTip(),
                 document->GetLabelManager()->GetLabelAttribute(1).GetName());
        plate.SetCommentTip(QString());
        QCOMPARE(plate.Button(4)->toolTip(), QStringLiteral("コメント未記入"));
        const QString longTitle(80, QChar(u'写'));
        plate.SetTitle(longTitle);
        QCOMPARE(plate.toolTip(), longTitle);
        plate.SetTitle(QString());
        QVERIFY(plate.toolTip().isEmpty());
        plate.SetCheckStatus(7);
        QCOMPARE(plate.CheckStatus(), 0);
        plate.SetCheckStatus(2);
        QCOMPARE(plate.CheckStatus(), 2);
    }

    // A cell shows a photograph's thumbnail first and the whole picture after its timer, the
    // fail plate for a file that is not there, its title and information; its label buttons
    // send the label moves the panel carries out, and Ctrl with a paging key goes to the panel.
    void cell() {
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> document = factory.Create(&host, pictures, PhotoXMLMlit);
        QVERIFY(document);
        document->Load();
        document->BuildTreeNode(0);
        host.panels.clear();
        document->SetSelected(document.get(), true);
        ToviPhotoCtrlVisualSetting setting = document->GetVisualSetting();
        setting.SetImageTextArrange(ToviPhotoCtrlVisualSetting::TextArrangeBeside);
        ToviImageLoader loader;
        QSignalSpy ready(&loader, &ToviImageLoader::Ready);
        ToviSpiCtrl cell(document.get(), &setting, &loader, 100);
        cell.resize(640, 400);
        cell.show();

        cell.SetPhoto(0);
        ToviPhoto* photo = document->GetPhoto(0);
        QCOMPARE(
            cell.NamePlate()->Title(),
            photo->GetTitle(document->GetItemDef()->GetIndexFromEnum(setting.GetTitleShowType())));
        QVERIFY(cell.InfoList()->topLevelItemCount() > 0);
        QCOMPARE(cell.NamePlate()->geometry(), QRect(0, 400 - 27, 640, 27));
        QCOMPARE(cell.ImageWnd()->width(), 35 * 640 / 60);
        QTRY_COMPARE(ready.size(), 2);
        QCOMPARE(ready[0][2].toInt(), int(ToviImageLoader::Thumb));
        QCOMPARE(ready[1][2].toInt(), int(ToviImageLoader::Full));
        QVERIFY(cell.ImageWnd()->IsEnableImage() && cell.IsImageOk());

        QVERIFY(QFile::remove(document->GetPhoto(1)->GetImagePath()));
        cell.SetPhoto(1);
        QTRY_VERIFY(!cell.IsImageOk());
        QVERIFY(cell.FailPlate()->isVisible());
        QCOMPARE(cell.FailPlate()->text(), QStringLiteral("表示できません"));

        // OK on a photograph with NG1 and NG2 takes every NG off; NG2 on a bare one takes OK off.
        cell.SetPhoto(2);
        photo = document->GetPhoto(2);
        photo->PasteLabel(1);
        photo->PasteLabel(2);
        QSignalSpy pasted(&cell, &ToviSpiCtrl::PasteLabel);
        QSignalSpy removed(&cell, &ToviSpiCtrl::RemoveLabel);
        QSignalSpy clicked(&cell, &ToviSpiCtrl::Clicked);
        document->SetCheckStatusChanged(false);
        QTest::mouseClick(cell.NamePlate()->Button(0), Qt::LeftButton);
        QCOMPARE(pasted.size(), 1);
        QCOMPARE(pasted[0][0].toInt(), 0);
        QCOMPARE(removed.size(), 3);
        QVERIFY(document->IsCheckStatusChanged());
        QCOMPARE(clicked.size(), 1);
        cell.SetPhoto(3);
        pasted.clear();
        removed.clear();
        QTest::mouseClick(cell.NamePlate()->Button(2), Qt::LeftButton);
        QCOMPARE(pasted.size(), 1);
        QCOMPARE(removed.size(), 1);
        QCOMPARE(removed[0][0].toInt(), 0);

        // The comment: blanks alone leave it empty and the label off; a text pastes it.
        ScriptedUi ui;
        ToviUi::Install(&ui);
        ui.QueueDialog(true, {{QStringLiteral("comment"), QStringLiteral(" 　 ")}});
        pasted.clear();
        QTest::mouseClick(cell.NamePlate()->Button(4), Qt::LeftButton);
        QCOMPARE(document->GetPhoto(3)->GetComment(), QString());
        QVERIFY(!cell.NamePlate()->Button(4)->IsPressed());
        ui.QueueDialog(true, {{QStringLiteral("comment"), QStringLiteral("再撮影 要")}});
        QTest::mouseClick(cell.NamePlate()->Button(4), Qt::LeftButton);
        QCOMPARE(document->GetPhoto(3)->GetComment(), QStringLiteral("再撮影 要"));
        QCOMPARE(pasted.size(), 1);
        QCOMPARE(pasted[0][0].toInt(), 4);
        ToviUi::Install(nullptr);

        QSignalSpy keys(&cell, &ToviSpiCtrl::KeyPressed);
        QTest::keyClick(cell.InfoList(), Qt::Key_PageDown, Qt::ControlModifier);
        QCOMPARE(keys.size(), 1);

        cell.ClearPhoto();
        QCOMPARE(cell.PhotoIndex(), -1);
        QVERIFY(cell.NamePlate()->Title().isEmpty());
        QVERIFY(!cell.NamePlate()->Button(0)->isVisible());
        loader.WaitForDone();
    }

    // The information list of a cell shows the Exif facts of its picture, read from the file.
    void cellExif_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("expected");
        QTest::newRow("size") << QStringLiteral("幅×高さ(Exif)") << QStringLiteral("320 x 240");
        QTest::newRow("pixels") << QStringLiteral("総画素数(Exif)") << QStringLiteral("76800");
        QTest::newRow("taken") << QStringLiteral("撮影日時")
                               << QStringLiteral("2024/05/01 09:30:15");
        QTest::newRow("maker") << QStringLiteral("画像入力機器のメーカー名")
                               << QStringLiteral("ORVANE");
        QTest::newRow("model") << QStringLiteral("画像入力機器のモデル名")
                               << QStringLiteral("FIELD-CAM G7");
        QTest::newRow("latitude") << QStringLiteral("緯度") << QStringLiteral("S 33°52'07.68\"");
        QTest::newRow("longitude") << QStringLiteral("経度") << QStringLiteral("W 70°30'00.00\"");
    }

    void cellExif() {
        QFETCH(QString, title);
        QFETCH(QString, expected);
        ToviEnouDataFactory factory;
        std::unique_ptr<ToviData> document = factory.Create(&host, pictures, PhotoXMLMlit);
        QVERIFY(document);
        document->Load();
        document->BuildTreeNode(0);
        document->SetSelected(document.get(), true);
        ExifFacts facts;
        facts.dateTimeOriginal = QDateTime(QDate(2024, 5, 1), QTime(9, 30, 15));
        facts.hasGps = true;
        facts.latitude = -33.8688;
        facts.longitude = -70.5;
        QImage image(320, 240, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        QVERIFY(WriteExifJpeg(document->GetPhoto(0)->GetImagePath(), image, facts));

        ToviPhotoCtrlVisualSetting setting = document->GetVisualSetting();
        setting.SetImageTextArrange(ToviPhotoCtrlVisualSetting::TextArrangeBeside);
        ToviImageLoader loader;
        ToviSpiCtrl cell(document.get(), &setting, &loader, 100);
        cell.resize(640, 400);
        cell.show();
        cell.SetPhoto(0);
        const QList<QTreeWidgetItem*> rows = cell.InfoList()->findItems(title, Qt::MatchExactly, 0);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows[0]->text(1), expected);
        loader.WaitForDone();
    }

    // A panel over the first count photographs of the 40 (those carrying label 5), in mode.
    std::unique_ptr<ToviData> OpenPaged(int count) {
        std::unique_ptr<ToviData> document = Open();
        for (int i = 0; i < count; ++i) {
            document->GetPhotoActualPhotoArray(i)->PasteLabel(5);
        }
        document->SetSelected(5);
        return document;
    }
    void Show(ToviMpiPanel& panel, ToviData& document, int mode) {
        ToviPhotoCtrlVisualSetting setting = document.GetVisualSetting();
        setting.SetDivType(static_cast<ToviPhotoCtrlVisualSetting::DivideType>(mode));
        document.SetVisualSetting(setting, false);
        host.panels = {&panel};
        panel.resize(802, 402);
        panel.show();
        panel.Attach(&document);
        panel.OnUpdate(nullptr, ToviData::HintInitialize, nullptr);
    }
    QList<int> Shown(const ToviMpiPanel& panel) {
        QList<int> shown;
        for (const ToviSpiCtrl* cell : panel.Cells()) {
            shown.append(cell->PhotoIndex());
        }
        return shown;
    }
    void Key(ToviMpiPanel& panel, Qt::Key key) {
        QTest::keyClick(panel.GetSelSpiCtrl()->NamePlate(), key);
    }

    // Pages of n cells: the count of pages, what the last page shows, and an empty set.
    void pages_data() {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("totalPage");
        QTest::addColumn<QList<int>>("lastPage");
        QTest::newRow("none") << 0 << 0 << 0 << QList<int>{-1};
        QTest::newRow("one in mode 0") << 0 << 1 << 1 << QList<int>{0};
        QTest::newRow("n-1 in mode 2") << 2 << 2 << 1 << QList<int>{0, 1, -1};
        QTest::newRow("n in mode 4") << 4 << 6 << 1 << QList<int>{0, 1, 2, 3, 4, 5};
        QTest::newRow("n+1 in mode 1") << 1 << 3 << 2 << QList<int>{2, -1};
        QTest::newRow("7 in mode 3") << 3 << 7 << 2 << QList<int>{4, 5, 6, -1};
    }
    void pages() {
        QFETCH(int, mode);
        QFETCH(int, count);
        QFETCH(int, totalPage);
        QFETCH(QList<int>, lastPage);
        std::unique_ptr<ToviData> document = OpenPaged(count);
        ToviMpiPanel panel(&host);
        Show(panel, *document, mode);
        QCOMPARE(panel.GetCurrentPage(), 1);
        QCOMPARE(panel.GetTotalPage(), totalPage);
        if (totalPage > 1) {
            panel.OperateLastPage();
        }
        QCOMPARE(Shown(panel), lastPage);
        QCOMPARE(panel.GetCountInPage(), int(lastPage.count()) - int(lastPage.count(-1)));
        host.panels.clear();
    }

    // Walking with the keys: next and previous photograph across a page boundary, and the
    // two-column moves of modes 3 and 4.
    void keys() {
        std::unique_ptr<ToviData> document = OpenPaged(10);
        ToviMpiPanel panel(&host);
        Show(panel, *document, 1);  // two a page
        Key(panel, Qt::Key_Down);
        Key(panel, Qt::Key_Down);
        QCOMPARE(panel.GetCurrentPage(), 2);
        QCOMPARE(panel.GetTopPosIndex(), 2);
        Key(panel, Qt::Key_Up);
        QCOMPARE(panel.GetCurrentPage(), 1);
        QCOMPARE(panel.GetTopPosIndex(), 1);
        Key(panel, Qt::Key_PageDown);
        QCOMPARE(panel.GetCurrentPage(), 2);
        QCOMPARE(panel.GetTopPosIndex(), 2);

        // Mode 4, six a page, last page 4 photographs: Right from cell 1 falls to cell 2, and
        // from cell 2 stays.
        Show(panel, *document, 4);
        panel.OperateLastPage();
        QVERIFY(panel.OnSelect(panel.Cells()[1]->PhotoIndex()));
        Key(panel, Qt::Key_Right);
        QCOMPARE(panel.GetSelectIndexInPage(), 2);
        Key(panel, Qt::Key_Right);
        QCOMPARE(panel.GetSelectIndexInPage(), 2);
        // Mode 4, first page, cell 0: Left does nothing.
        panel.OperateTopPage();
        Key(panel, Qt::Key_Left);
        QCOMPARE(panel.GetCurrentPage(), 1);
        QCOMPARE(panel.GetSelectIndexInPage(), 0);
        // Mode 3, page 2, cell 0: Left goes to cell 3 of page 1.
        Show(panel, *document, 3);
        panel.OperateNextPage();
        QCOMPARE(panel.GetSelectIndexInPage(), 0);
        Key(panel, Qt::Key_Left);
        QCOMPARE(panel.GetCurrentPage(), 1);
        QCOMPARE(panel.GetSelectIndexInPage(), 3);
        host.panels.clear();
    }

    // Cells fill the panel column by column with a gap of 2, the rest to the later cells; a
    // click on a cell selects its photograph; a selection on page 3 survives a new set.
    void layoutAndSelection() {
        std::unique_ptr<ToviData> document = OpenPaged(20);
        ToviMpiPanel panel(&host);
        Show(panel, *document, 3);
        QCOMPARE(panel.Cells()[0]->geometry(), QRect(0, 0, 401, 201));
        QCOMPARE(panel.Cells()[1]->geometry(), QRect(0, 203, 401, 199));
        QCOMPARE(panel.Cells()[2]->geometry(), QRect(403, 0, 399, 201));
        QTest::mouseClick(panel.Cells()[2]->NamePlate(), Qt::LeftButton, {}, QPoint(20, 10));
        QCOMPARE(panel.GetTopPosIndex(), 2);
        QVERIFY(panel.Cells()[2]->NamePlate()->IsSelected());
        QVERIFY(!panel.Cells()[0]->NamePlate()->IsSelected());

        panel.OperateNextPage();
        panel.OperateNextPage();
        QVERIFY(panel.OnSelect(9));
        document->SetSelected(5);  // the same set again: hint 2
        QCOMPARE(panel.GetCurrentPage(), 3);
        QCOMPARE(panel.GetTopPosIndex(), 9);
        host.panels.clear();
    }

    // The dialogs' sizes are kept as value + 100; a stored value below 100 is ignored.
    void persistence() {
        ToviProfile& profile = ToviProfile::Instance();
        profile.WriteProfileInt(ToviMpiPanel::MultiDialogSection_, ToviMpiPanel::MultiDlgWEntry_,
                                99);
        profile.WriteProfileInt(ToviMpiPanel::MultiDialogSection_, ToviMpiPanel::MultiDlgHEntry_,
                                420);
        {
            ToviMpiPanel panel(&host);
            QCOMPARE(panel.DialogWidth(), 0);
            QCOMPARE(panel.DialogHeight(), 320);
            QCOMPARE(panel.DialogSplitterPos(), 180);
        }
        QCOMPARE(profile.GetProfileInt(ToviMpiPanel::MultiDialogSection_,
                                       ToviMpiPanel::MultiDlgSplPosEntry_, 0),
                 280);
    }
};

QTEST_MAIN(ToviPanelsTest)
#include "ToviPanelsTest.moc"
