#include "dialogs/ToviConfirmDlg.h"
#include "dialogs/ToviConfirmTreeCtrl.h"
#include "document/ToviHostDocument.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "panels/ToviCommentWindow.h"
#include "panels/ToviMpiPanel.h"
#include "panels/ToviNamePlate.h"
#include "panels/ToviSlideMode.h"
#include "panels/ToviSpiCtrl.h"
#include "platform/ToviProfile.h"
#include "platform/widgets/LumImgWnd.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/TreeItemPoint.h"

#include <QApplication>
#include <QMenu>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>

#include <memory>

namespace {

// Hands every hint to the panel, as the viewer's host does, and counts them.
class RecordingHost : public ToviHostDocument {
public:
    ToviPanel* panel = nullptr;
    QList<int> hints;
    void UpdateAllViews(QWidget* sender, int hint, QObject* object) override {
        hints.append(hint);
        if (panel && panel != sender) {
            panel->OnUpdate(sender, static_cast<ToviData::UpdateHint>(hint), object);
        }
    }
    int Count(int hint) const { return static_cast<int>(hints.count(hint)); }
};

QList<int> Labels(const ToviPhoto* photo) {
    QList<int> labels;
    for (unsigned label = 0; label < 6; ++label) {
        if (photo->IsLabelPasted(label)) {
            labels.append(static_cast<int>(label));
        }
    }
    return labels;
}

QString Text(const QList<int>& values) {
    QStringList texts;
    for (int value : values) {
        texts.append(QString::number(value));
    }
    return texts.join(QLatin1Char(','));
}

}  // namespace

class ToviReviewWidgetsTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    RecordingHost host;
    QString folder;  // six photographs with small pictures
    std::unique_ptr<ToviData> document;
    std::unique_ptr<ToviMpiPanel> panel;
    ScriptedUi ui;

    // A fresh document of all six photographs, bare of labels, on a panel of two cells a
    // page with the comment strips on.
    void Open() {
        host.panel = nullptr;
        panel.reset();
        document.reset();
        ToviEnouDataFactory factory;
        document = factory.Create(&host, folder, PhotoXMLMlit);
        QVERIFY(document);
        document->Load();
        ToviPhotoCtrlVisualSetting setting = document->GetVisualSetting();
        setting.SetDivType(ToviPhotoCtrlVisualSetting::Divide2);
        setting.SetVisibleComment(true);
        setting.SetTreeType(ToviPhotoCtrlVisualSetting::TreeKousyu);
        document->SetVisualSetting(setting, false);
        document->BuildTreeNode(setting.GetTreeType());
        for (int i = 0; i < 6; ++i) {
            document->GetPhotoActualPhotoArray(i)->RemoveAllLabel();
        }
        document->SetSelected(document.get(), true);
        panel = std::make_unique<ToviMpiPanel>(&host);
        host.panel = panel.get();
        panel->resize(800, 600);
        panel->show();
        panel->Attach(document.get());
        panel->OnUpdate(nullptr, ToviData::HintInitialize, nullptr);
        panel->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(panel.get()));
        document->SetCheckStatusChanged(false);
        host.hints.clear();
    }
    ToviSpiCtrl* Cell(int i) const { return panel->Cells()[static_cast<size_t>(i)]; }
    ToviCommentWindow* Strip(int i) const {
        return panel->CommentWindows()[static_cast<size_t>(i)].data();
    }
    // Right-clicks a cell's picture and hands the open menu to act.
    void RightClick(int cell, std::function<void(QMenu*)> act) {
        QTimer::singleShot(50, [act] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            QVERIFY(menu);
            act(menu);
            menu->close();
        });
        QTest::mouseClick(Cell(cell)->ImageWnd(), Qt::RightButton);
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("profile.ini")));
        ToviUi::Install(&ui);
        DeliveryOptions options;
        options.photoCount = 6;
        options.images = DeliveryOptions::Images::Tiny;
        WrittenDelivery written;
        QString error;
        QVERIFY2(WriteDelivery(temp.filePath(QStringLiteral("d")), options, &written, &error),
                 qPrintable(error));
        folder = written.photoFolder;
    }
    void cleanupTestCase() {
        host.panel = nullptr;
        panel.reset();
        document.reset();
        ToviUi::Install(nullptr);
    }

    // A click on a label button writes the photograph's labels, OK and NG excluding each
    // other, and tells the views once per label moved.
    void labelButtons_data() {
        QTest::addColumn<QList<int>>("before");
        QTest::addColumn<int>("button");
        QTest::addColumn<QList<int>>("after");
        QTest::addColumn<int>("hints");
        QTest::newRow("OK over NG1 and NG2")
            << QList<int>{1, 2, 4, 5} << 0 << QList<int>{0, 4, 5} << 4;
        QTest::newRow("NG3 over OK") << QList<int>{0, 4} << 3 << QList<int>{3, 4} << 2;
        QTest::newRow("NG2 beside NG1") << QList<int>{1} << 2 << QList<int>{1, 2} << 2;
        QTest::newRow("user label off") << QList<int>{5} << 5 << QList<int>{} << 1;
    }
    void labelButtons() {
        QFETCH(QList<int>, before);
        QFETCH(int, button);
        QFETCH(QList<int>, after);
        QFETCH(int, hints);
        Open();
        ToviPhoto* photo = document->GetPhoto(1);
        for (int label : before) {
            photo->PasteLabel(static_cast<unsigned>(label));
        }
        Cell(1)->UpdateLabelButtons();
        QTest::mouseClick(Cell(1)->NamePlate()->Button(button), Qt::LeftButton);
        QCOMPARE(Text(Labels(photo)), Text(after));
        for (int label = 0; label < 6; ++label) {
            QCOMPARE(Cell(1)->NamePlate()->Button(label)->IsPressed(), after.contains(label));
        }
        QCOMPARE(host.Count(ToviData::HintPhotoInfoChanged), hints);
        QVERIFY(document->IsCheckStatusChanged());
        QCOMPARE(panel->GetSelectIndexInPage(), 1);
    }

    // The comment button and a double click on the strip open the comment dialog with the
    // comment; blanks of either width alone remove comment and label; a cancel changes
    // nothing but still counts as a change.
    void comment_data() {
        QTest::addColumn<QString>("before");
        QTest::addColumn<bool>("viaStrip");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("after");
        const QString old = QStringLiteral("再撮影 要");
        QTest::newRow("new comment")
            << QString() << false << true << QStringLiteral(" 黒板 不鮮明 ")
            << QStringLiteral(" 黒板 不鮮明 ");
        QTest::newRow("blanks only") << old << false << true << QStringLiteral(" 　 ") << QString();
        QTest::newRow("cancelled") << old << false << false << QString() << old;
        QTest::newRow("strip, blanks only")
            << old << true << true << QStringLiteral("　") << QString();
        QTest::newRow("strip, changed")
            << old << true << true << QStringLiteral("済") << QStringLiteral("済");
    }
    void comment() {
        QFETCH(QString, before);
        QFETCH(bool, viaStrip);
        QFETCH(bool, ok);
        QFETCH(QString, typed);
        QFETCH(QString, after);
        Open();
        ToviPhoto* photo = document->GetPhoto(0);
        photo->SetComment(before);
        if (!before.isEmpty()) {
            photo->PasteLabel(4);
        }
        panel->OperateTopPage();  // the strips are made anew for the page
        host.hints.clear();
        QCOMPARE(Strip(0)->isVisible(), !before.isEmpty());
        const int asked = static_cast<int>(ui.DialogNames().size());
        ui.QueueDialog(ok, {{QStringLiteral("comment"), typed}});
        if (viaStrip) {
            QTest::mouseDClick(Strip(0), Qt::LeftButton);
        } else {
            QTest::mouseClick(Cell(0)->NamePlate()->Button(4), Qt::LeftButton);
        }
        QCOMPARE(ui.DialogNames().size(), asked + 1);
        QCOMPARE(ui.DialogNames().last(), QStringLiteral("ToviInputCommentDlg"));
        QCOMPARE(ui.DialogInputs().last().value(QStringLiteral("comment")).toString(), before);
        QCOMPARE(photo->GetComment(), after);
        QCOMPARE(photo->IsLabelPasted(4), !after.isEmpty());
        QCOMPARE(Cell(0)->NamePlate()->Button(4)->IsPressed(), !after.isEmpty());
        QVERIFY(document->IsCheckStatusChanged());
        QVERIFY(host.Count(ToviData::HintPhotoInfoChanged) >= 1);
        // The strip follows the comment, and the picture makes or gives back its room.
        QCOMPARE(Strip(0)->Comment(), after);
        QCOMPARE(Strip(0)->isVisible(), !after.isEmpty());
        QCOMPARE(Cell(0)->ImageWnd()->y(), after.isEmpty() ? 0 : ToviCommentWindow::kHeight);
    }

    // The strip's text: whole behind a full-width blank when it fits, else cut before the
    // first character that does not fit and ended by "..."; never half a surrogate pair;
    // nothing without width. The tool tip always has the whole comment.
    void fitText_data() {
        QTest::addColumn<QString>("comment");
        QTest::addColumn<int>("share");  // the strip's width in percent of the whole text's
        QTest::addColumn<bool>("whole");
        QTest::newRow("fits") << QStringLiteral("法面 仕上がり 確認") << 120 << true;
        QTest::newRow("too long") << QStringLiteral("法面 仕上がり 確認 出来形 寸法 不足") << 50
                                  << false;
        QTest::newRow("just too long") << QStringLiteral("法面仕上がり確認") << 97 << false;
        QTest::newRow("surrogate pairs")
            << QString(QStringLiteral("𠀋𡈽𡌛").repeated(6)) << 50 << false;
        QTest::newRow("no width") << QStringLiteral("確認") << 0 << false;
    }
    void fitText() {
        QFETCH(QString, comment);
        QFETCH(int, share);
        QFETCH(bool, whole);
        ToviCommentWindow strip(QString(), 0);
        strip.resize(100, ToviCommentWindow::kHeight);
        strip.show();
        const int frame = strip.width() - strip.contentsRect().width();
        const QString display = QStringLiteral("　") + comment;
        const int full = QFontMetrics(strip.font()).horizontalAdvance(display);
        strip.resize(share == 0 ? frame : full * share / 100 + frame, ToviCommentWindow::kHeight);
        strip.SetComment(comment);
        const QString shown = strip.text();
        QCOMPARE(strip.toolTip(), comment);
        QCOMPARE(strip.Comment(), comment);
        if (share == 0) {
            QCOMPARE(shown, QString());
            return;
        }
        if (whole) {
            QCOMPARE(shown, display);
        } else {
            QVERIFY2(shown.endsWith(QStringLiteral("...")), qPrintable(shown));
            const QString kept = shown.chopped(3);
            QVERIFY(display.startsWith(kept));
            QVERIFY(kept.size() > 1 && kept.size() < display.size());
            QVERIFY(!kept.back().isHighSurrogate());
            QVERIFY(QFontMetrics(strip.font()).horizontalAdvance(shown) <=
                    strip.contentsRect().width());
        }
        // Widening gives the whole text back.
        strip.resize(full + frame + 4, ToviCommentWindow::kHeight);
        QCOMPARE(strip.text(), display);
    }

    // The strips of a page: over the picture of each cell with a comment, as wide as the
    // picture; none shown for an empty comment; a click selects the cell; a new page brings
    // new strips; switched off, they all hide.
    void strips() {
        Open();
        document->GetPhoto(0)->SetComment(QStringLiteral("一枚目"));
        document->GetPhoto(3)->SetComment(QStringLiteral("四枚目"));
        panel->OperateTopPage();
        QCOMPARE(panel->CommentWindows().size(), size_t(2));
        QVERIFY(Strip(0)->isVisible());
        QCOMPARE(Strip(0)->parentWidget(), Cell(0));
        QCOMPARE(Strip(0)->geometry(),
                 QRect(0, 0, Cell(0)->GetImageSize().width(), ToviCommentWindow::kHeight));
        QCOMPARE(Strip(0)->text(), QStringLiteral("　一枚目"));
        QVERIFY(!Strip(1) || !Strip(1)->isVisible());
        QCOMPARE(Cell(1)->ImageWnd()->y(), 0);

        QTest::mouseClick(Cell(1)->NamePlate(), Qt::LeftButton, {}, QPoint(20, 10));
        QCOMPARE(panel->GetSelectIndexInPage(), 1);
        QTest::mouseClick(Strip(0), Qt::LeftButton);
        QCOMPARE(panel->GetSelectIndexInPage(), 0);
        QVERIFY(Strip(0)->hasFocus());

        QPointer<ToviCommentWindow> old = Strip(0);
        panel->OperateNextPage();
        QVERIFY(old.isNull());
        QCOMPARE(Strip(0)->GetPhotoPosition(), 2);
        QVERIFY(!Strip(0)->isVisible());
        QCOMPARE(Strip(1)->text(), QStringLiteral("　四枚目"));

        ToviPhotoCtrlVisualSetting setting = document->GetVisualSetting();
        setting.SetVisibleComment(false);
        panel->SetVisualSetting(setting, false);
        QVERIFY(!Strip(1)->isVisible());
        QCOMPARE(Cell(1)->ImageWnd()->y(), 0);
    }

    // The right-click menu: the label names, paste items off and remove items on for the
    // labels pasted, "全て" when any is; removing label 4 from it empties the comment.
    void menu() {
        Open();
        ToviPhoto* photo = document->GetPhoto(1);
        photo->SetComment(QStringLiteral("確認"));
        for (unsigned label : {1u, 4u}) {
            photo->PasteLabel(label);
        }
        panel->OperateTopPage();
        QStringList states;
        RightClick(1, [&states](QMenu* menu) {
            for (int id = 32772; id <= 32784; ++id) {
                if (id == 32778 || id == 32784) {
                    states.append(QStringLiteral("|"));
                }
                auto* action = menu->findChild<QAction*>(QStringLiteral("command%1").arg(id));
                QVERIFY(action);
                states.append(action->isEnabled() ? action->text() : QStringLiteral("-"));
            }
        });
        QCOMPARE(panel->GetSelectIndexInPage(), 1);
        QCOMPARE(states.join(QLatin1Char(' ')),
                 QStringLiteral("- 追記 - - コメント - | OK - 誤記 不鮮明 - 印刷 | 全て"));

        RightClick(1, [](QMenu* menu) {
            menu->findChild<QAction*>(QStringLiteral("command32776"))->trigger();
        });
        QCOMPARE(photo->GetComment(), QString());
        QCOMPARE(Text(Labels(photo)), QStringLiteral("1"));
        QVERIFY(!Strip(1)->isVisible());
        QVERIFY(!Cell(1)->NamePlate()->Button(4)->IsPressed());

        RightClick(1, [](QMenu* menu) {
            menu->findChild<QAction*>(QStringLiteral("command32784"))->trigger();
        });
        QVERIFY(Labels(photo).isEmpty());
        QVERIFY(!Cell(1)->NamePlate()->Button(1)->IsPressed());
    }

    // Slide mode refuses the right click, the comment button, the strip's double click and
    // the removal of label 4, each with its message and without a dialog.
    void slideMode() {
        Open();
        ToviPhoto* photo = document->GetPhoto(0);
        photo->SetComment(QStringLiteral("確認"));
        photo->PasteLabel(4);
        panel->OperateTopPage();
        const int asked = static_cast<int>(ui.Questions().size());
        const int dialogs = static_cast<int>(ui.DialogNames().size());
        SetSlideMode(true);
        QTimer::singleShot(100, [] {  // a menu that opens all the same must not hang the test
            if (QWidget* menu = QApplication::activePopupWidget()) {
                menu->close();
            }
        });
        QTest::mouseClick(Cell(0)->ImageWnd(), Qt::RightButton);
        QTest::mouseDClick(Strip(0), Qt::LeftButton);
        QTest::mouseClick(Cell(0)->NamePlate()->Button(4), Qt::LeftButton);
        SetSlideMode(false);
        QCOMPARE(ui.DialogNames().size(), dialogs);
        QCOMPARE(ui.Questions().size(), asked + 3);
        QCOMPARE(ui.Questions()[asked].text,
                 QStringLiteral("スライドモード中は右クリック操作はできません。"));
        QCOMPARE(ui.Questions()[asked + 1].text,
                 QStringLiteral("スライドモード中はコメントの編集ができません。"));
        QCOMPARE(ui.Questions()[asked + 2].icon, ToviUi::IconInformation);
        QVERIFY(Cell(0)->NamePlate()->Button(4)->IsPressed());
        QCOMPARE(photo->GetComment(), QStringLiteral("確認"));
    }

    // The confirm dialog: a stored size too small becomes 200 x 300; the mark follows the
    // selected photograph; a photograph with no place leaves it; a title twice is found
    // first depth first; clicks and Escape do nothing; its place is kept on close.
    void confirmDialog() {
        ToviProfile::Instance().WriteProfileInt(ToviMpiPanel::ConfirmDialogSection_,
                                                ToviMpiPanel::ConfirmDlgWEntry_, 200);
        ToviProfile::Instance().WriteProfileInt(ToviMpiPanel::ConfirmDialogSection_,
                                                ToviMpiPanel::ConfirmDlgHEntry_, 600);
        Open();
        // Without a maker from the host there is no window to open.
        panel->ShowConfirmDlg();
        QCOMPARE(panel->ConfirmDlg(), nullptr);
        struct Makers {
            Makers() {
                ToviPanelWindows windows;
                windows.createConfirm = [](ToviMpiPanel* owner) {
                    return new ToviConfirmDlg(owner);
                };
                SetPanelWindows(windows);
            }
            ~Makers() { SetPanelWindows({}); }
        } makers;
        panel->ShowConfirmDlg();
        auto* dialog = dynamic_cast<ToviConfirmDlg*>(panel->ConfirmDlg());
        QVERIFY(dialog && dialog->isVisible());
        QCOMPARE(dialog->windowTitle(), QStringLiteral("写真格納位置の確認"));
        QCOMPARE(dialog->size(), QSize(200, 300));
        QCOMPARE(dialog->pos(), QPoint(0, 0));
        QTreeWidget* tree = dialog->Tree();
        QVERIFY(tree->currentItem());

        // The path of each photograph of type 0 ends in its deepest filled item.
        const ToviItemDef& def = *document->GetItemDef();
        const auto deepest = [&def](const ToviPhoto* photo) {
            QString last;
            for (const QString& title :
                 {QStringLiteral("写真-大分類"), QStringLiteral("写真区分"), QStringLiteral("工種"),
                  QStringLiteral("種別"), QStringLiteral("細別")}) {
                const QString value = photo->GetTitle(def.GetIndexFromTitle(title));
                if (value.isEmpty()) {
                    break;
                }
                last = value;
            }
            return last;
        };
        QCOMPARE(tree->currentItem()->text(0), deepest(document->GetPhoto(0)));
        QTest::mouseClick(Cell(1)->NamePlate(), Qt::LeftButton, {}, QPoint(20, 10));
        QCOMPARE(tree->currentItem()->text(0), deepest(document->GetPhoto(1)));
        panel->OperateNextPage();
        QCOMPARE(tree->currentItem()->text(0), deepest(document->GetPhoto(2)));

        // No place: every path item empty.
        QTreeWidgetItem* mark = tree->currentItem();
        for (ToviItem& item : document->GetPhoto(3)->GetItems()) {
            item.SetValue(QString());
        }
        QTest::mouseClick(Cell(1)->NamePlate(), Qt::LeftButton, {}, QPoint(20, 10));
        QCOMPARE(panel->GetTopPosIndex(), 3);
        QCOMPARE(tree->currentItem(), mark);

        // Type 0 with 写真区分 empty: 写真-大分類 alone is looked for, and the first item of
        // that title depth first is marked, even below an earlier branch.
        ToviPhoto* photo = document->GetPhoto(2);
        const int division = def.GetIndexFromTitle(QStringLiteral("写真区分"));
        for (ToviItem& item : photo->GetItems()) {
            if (item.GetDefIndex() == division) {
                item.SetValue(QString());
            }
        }
        const QString bigClass =
            photo->GetTitle(def.GetIndexFromTitle(QStringLiteral("写真-大分類")));
        QTreeWidgetItem* root = tree->topLevelItem(0);
        QVERIFY(dialog->OnSelect(document.get(), photo));
        QCOMPARE(tree->currentItem()->text(0), bigClass);
        QCOMPARE(tree->currentItem()->parent(), root);
        auto* earlier = new QTreeWidgetItem(QStringList{QStringLiteral("前")});
        root->insertChild(0, earlier);
        auto* decoy = new QTreeWidgetItem(earlier, QStringList{bigClass});
        QVERIFY(dialog->OnSelect(document.get(), photo));
        QCOMPARE(tree->currentItem(), decoy);

        // Clicks and Escape do nothing.
        mark = tree->currentItem();
        QTreeWidgetItem* other = root;
        tree->scrollToItem(other);
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, TreeItemPoint(tree, other));
        QCOMPARE(tree->currentItem(), mark);
        QTest::keyClick(dialog, Qt::Key_Escape);
        QTest::keyClick(dialog, Qt::Key_Return);
        QVERIFY(dialog->isVisible());

        dialog->move(30, 20);
        dialog->resize(260, 330);
        QVERIFY(dialog->close());
        QCOMPARE(panel->ConfirmDlg(), nullptr);
        host.panel = nullptr;
        panel.reset();
        QCOMPARE(ToviProfile::Instance().GetProfileInt(ToviMpiPanel::ConfirmDialogSection_,
                                                       ToviMpiPanel::ConfirmDlgWEntry_, 0),
                 360);
        QCOMPARE(ToviProfile::Instance().GetProfileInt(ToviMpiPanel::ConfirmDialogSection_,
                                                       ToviMpiPanel::ConfirmDlgPosYEntry_, 0),
                 120);
    }
};

QTEST_MAIN(ToviReviewWidgetsTest)
#include "ToviReviewWidgetsTest.moc"
