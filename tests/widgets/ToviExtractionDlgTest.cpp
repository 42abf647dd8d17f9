#include "app/ToviMainWindow.h"
#include "app/ToviViewerDocument.h"
#include "dialogs/ToviExtDetailDlg.h"
#include "dialogs/ToviExtractionDlg.h"
#include "document/ToviData.h"
#include "document/ToviNode.h"
#include "panels/ToviFolderTreePanel.h"
#include "panels/ToviSlideMode.h"
#include "platform/Cp932.h"
#include "platform/ToviProfile.h"
#include "reports/ToviPhotoExport.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/TreeItemPoint.h"
#include "tests/support/WorkArea.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDockWidget>
#include <QFile>
#include <QInputMethodEvent>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>

#include <functional>
#include <memory>

namespace {

// Acts on the next modal window once it is up; a dialog that the action leaves open is
// cancelled, so that a failing test ends instead of waiting.
void WhenModal(std::function<void(QWidget*)> act) {
    QTimer::singleShot(10, [act] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal) {
            WhenModal(act);
            return;
        }
        act(modal);
        if (auto* dialog = qobject_cast<QDialog*>(modal); dialog && dialog->isVisible()) {
            dialog->reject();
        }
    });
}

// A click where the user aims: a check or a radio button on its box (the control may be wider
// than its text), anything else in its middle.
void Click(QWidget* widget) {
    const bool boxed = qobject_cast<QCheckBox*>(widget) || qobject_cast<QRadioButton*>(widget);
    QTest::mouseClick(widget, Qt::LeftButton, {},
                      boxed ? QPoint(8, widget->height() / 2) : widget->rect().center());
}

// Text as an input method hands it over once the user has converted it.
void Type(QWidget* widget, const QString& text) {
    QInputMethodEvent commit;
    commit.setCommitString(text);
    QApplication::sendEvent(widget, &commit);
}

// Replaces the text of an editable list from the keyboard.
void Retype(QComboBox* combo, const QString& text) {
    QLineEdit* edit = combo->lineEdit();
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(edit, Qt::Key_Backspace);
    if (!text.isEmpty()) {
        Type(edit, text);
    }
}

// Chooses an entry of a drop-down list from the keyboard, as the user would step to it.
void Choose(QComboBox* combo, const QString& text) {
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Home);
    const int at = combo->findText(text);
    for (int i = 0; i < at; ++i) {
        QTest::keyClick(combo, Qt::Key_Down);
    }
}

void Press(QWidget* widget, Qt::Key key, int times) {
    for (int i = 0; i < times; ++i) {
        QTest::keyClick(widget, key);
    }
}

// Steps the field under the cursor by delta, as the arrow keys do.
void Step(QWidget* widget, int delta) {
    Press(widget, delta < 0 ? Qt::Key_Down : Qt::Key_Up, std::abs(delta));
}

// Sets a date picker from the keyboard, field by field (shown as yyyy/MM/dd): the day goes to
// 1 first, so that no month is too short for it on the way.
void TypeDate(QDateEdit* edit, const QDate& date) {
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_End);
    Step(edit, 1 - edit->date().day());
    QTest::keyClick(edit, Qt::Key_Home);
    Step(edit, date.year() - edit->date().year());
    Press(edit, Qt::Key_Right, 5);
    Step(edit, date.month() - edit->date().month());
    QTest::keyClick(edit, Qt::Key_End);
    Step(edit, date.day() - edit->date().day());
}

QPushButton* Button(QWidget* dialog, const char* name) {
    return dialog->findChild<QPushButton*>(QString::fromLatin1(name));
}

QStringList DistinctInOrder(const QStringList& values) {
    QStringList out;
    for (const QString& v : values) {
        if (!v.isEmpty() && !out.contains(v)) {
            out.append(v);
        }
    }
    return out;
}

}  // namespace

class ToviExtractionDlgTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    QString withKey;     // 国交省-20: has 代表写真; some 撮影箇所 stored blank
    QString withoutKey;  // 国交省-14: no 代表写真
    WrittenDelivery written;
    QStringList places;   // 撮影箇所 of each photograph as stored ("" blank, null when absent)
    QStringList kousyu;   // 工種 likewise
    QStringList keyFlag;  // 代表写真 likewise
    QString commonKousyu;
    QString commonPlace;
    ScriptedUi* ui = nullptr;
    std::unique_ptr<ScopedUi> scoped;

    QString Path(const QString& name) const { return temp.filePath(name); }

    // A viewer on folder, showing the whole delivery (the tree's root clicked).
    std::unique_ptr<ToviMainWindow> OpenViewer(const QString& folder) {
        auto window = std::make_unique<ToviMainWindow>();
        window->resize(1366, 768);
        window->show();
        if (!QTest::qWaitForWindowExposed(window.get()) ||
            !window->OpenDelivery(folder, PhotoXMLMlit)) {
            return nullptr;
        }
        QTreeWidget* tree = window->FolderTree()->GetTreeCtrl();
        QTreeWidgetItem* root = tree->topLevelItem(0);
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, TreeItemPoint(tree, root));
        return window;
    }

    static QCheckBox* Check(ToviExtractionDlg* dlg, const QString& name) {
        return dlg->findChild<QCheckBox*>(name);
    }

    // Opens 詳細設定... from the window, lets act work in it, and waits until it is closed.
    static void Details(ToviExtractionDlg* dlg, std::function<void(ToviExtDetailDlg*)> act) {
        WhenModal([act](QWidget* modal) {
            if (auto* detail = qobject_cast<ToviExtDetailDlg*>(modal)) {
                act(detail);
            }
        });
        Click(dlg->DetailsButton());
    }

    QList<int> Current(ToviMainWindow& window) const {
        QList<int> out;
        for (int index : window.Document()->Data()->CurrentArray()) {
            out.append(index);
        }
        return out;
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        QApplication::setApplicationDisplayName(QStringLiteral("ToviCore"));
        UseWorkFolder(temp.path());
        ToviProfile::Instance().UseFile(Path(QStringLiteral("profile.ini")));
        DeliveryOptions options;
        options.photoCount = 40;
        options.seed = 3;
        options.images = DeliveryOptions::Images::Tiny;
        QString error;
        QVERIFY2(WriteDelivery(Path(QStringLiteral("a")), options, &written, &error),
                 qPrintable(error));
        withKey = written.photoFolder;
        // The writer leaves an empty value out; three 撮影箇所 are blanked here, as a site's
        // software stores a value nobody filled in.
        QFile xml(withKey + QStringLiteral("/PHOTO.XML"));
        QVERIFY(xml.open(QIODevice::ReadOnly));
        QString text = Cp932::ToUnicode(xml.readAll());
        xml.close();
        static const QRegularExpression place(QStringLiteral("<撮影箇所>[^<]+</撮影箇所>"));
        for (int n = 0; n < 3; ++n) {
            const QRegularExpressionMatch m = place.match(text);  // a blank one matches no more
            QVERIFY(m.hasMatch());
            text.replace(m.capturedStart(), m.capturedLength(),
                         QStringLiteral("<撮影箇所></撮影箇所>"));
        }
        QVERIFY(xml.open(QIODevice::WriteOnly | QIODevice::Truncate));
        xml.write(Cp932::FromUnicode(text));
        xml.close();
        int blanked = 0;
        for (const WrittenPhoto& photo : written.photos) {
            QString p, k, key;
            for (const auto& [tag, value] : photo.elements) {
                if (tag == QStringLiteral("撮影箇所")) {
                    p = blanked < 3 ? QStringLiteral("") : value;
                    blanked += p.isEmpty() ? 1 : 0;
                } else if (tag == QStringLiteral("工種") && k.isNull()) {
                    k = value;
                } else if (tag == QStringLiteral("代表写真")) {
                    key = value;
                }
            }
            places.append(p);
            kousyu.append(k);
            keyFlag.append(key);
        }
        QCOMPARE(blanked, 3);
        // Ten image files were last changed long ago, for the file-date condition.
        for (int i = 5; i < 15; ++i) {
            QFile image(withKey + QStringLiteral("/PIC/") + written.photos[i].fileName);
            QVERIFY(image.open(QIODevice::ReadWrite));
            QVERIFY(image.setFileTime(QDateTime(QDate(2020, 1, 15), QTime(12, 0)),
                                      QFileDevice::FileModificationTime));
        }
        // The values the item conditions look for: the most frequent of each.
        for (auto [values, out] : {std::pair{&kousyu, &commonKousyu}, {&places, &commonPlace}}) {
            int best = 0;
            for (const QString& v : DistinctInOrder(*values)) {
                if (values->count(v) > best) {
                    best = static_cast<int>(values->count(v));
                    *out = v;
                }
            }
        }
        QVERIFY(!commonKousyu.isEmpty() && !commonPlace.isEmpty());

        options.generation = Generation::Mlit14;
        options.photoCount = 8;
        WrittenDelivery old;
        QVERIFY(WriteDelivery(Path(QStringLiteral("b")), options, &old, &error));
        withoutKey = old.photoFolder;
    }

    void init() {
        ui = new ScriptedUi;
        scoped = std::make_unique<ScopedUi>(*ui);
        SetSlideMode(false);
    }

    void cleanup() {
        scoped.reset();
        delete ui;
        ui = nullptr;
    }

    void cleanupTestCase() {
        ToviProfile::Instance().UseFile(QString());
        ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
    }

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

    // OK refuses an item without a text and a range that ends before it starts, in a warning
    // titled 設定エラー, and leaves what was entered as it was; a range of one day passes.
    void detailValidation() {
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        const QDate day(2024, 6, 2);
        bool openAfterEmpty = false, openAfterRange = false, keptInput = false;
        Details(dlg, [&](ToviExtDetailDlg* detail) {
            Click(detail->ItemCheck(0));
            Choose(detail->ItemList(0), QStringLiteral("工種"));
            Retype(detail->ValueList(0), QString());
            Click(Button(detail, "ok"));
            openAfterEmpty = detail->isVisible();
            Retype(detail->ValueList(0), commonKousyu);
            Click(detail->DateCheck());
            TypeDate(detail->DateFrom(), day);
            TypeDate(detail->DateTo(), day.addDays(-1));
            Click(Button(detail, "ok"));
            openAfterRange = detail->isVisible();
            keptInput = detail->ItemCheck(0)->isChecked() &&
                        detail->ItemList(0)->currentText() == QStringLiteral("工種") &&
                        detail->ValueList(0)->currentText() == commonKousyu &&
                        detail->DateCheck()->isChecked() && detail->DateFrom()->date() == day &&
                        detail->DateTo()->date() == day.addDays(-1);
            TypeDate(detail->DateTo(), day);
            Click(Button(detail, "ok"));
        });
        QVERIFY(openAfterEmpty);
        QVERIFY(openAfterRange);
        QVERIFY(keptInput);
        QCOMPARE(ui->Questions().size(), 2);
        QCOMPARE(ui->Questions()[0].text,
                 QStringLiteral("抽出文字列が未入力です。抽出したい内容を記入してください。"));
        QCOMPARE(ui->Questions()[1].text,
                 QStringLiteral("日付の設定に誤りがあります。\n左側の日付は右側の日付を超えない"
                                "ように設定してください。"));
        for (const ScriptedUi::Question& q : ui->Questions()) {
            QCOMPARE(q.caption, QStringLiteral("設定エラー"));
            QCOMPARE(q.icon, ToviUi::IconWarning);
        }
        const ToviExtractionConditions& c = dlg->Conditions();
        QVERIFY(c.itemOn[0] && !c.itemOn[1] && !c.itemOn[2]);
        QCOMPARE(c.itemTitle[0], QStringLiteral("工種"));
        QCOMPARE(c.itemText[0], commonKousyu);
        QVERIFY(c.dateOn);
        QCOMPARE(c.dateKind, 0);
        QCOMPARE(c.dateFrom, QStringLiteral("2024-06-02"));
        QCOMPARE(c.dateTo, QStringLiteral("2024-06-02"));
        QVERIFY(dlg->ExecuteButton()->isEnabled());
    }

    // A text that no photograph has is kept as typed and comes back in the edit part; Cancel
    // leaves the conditions and the display as they were.
    void detailFreeTextAndCancel() {
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        const QString free = QStringLiteral("存在しない撮影箇所");
        Details(dlg, [&](ToviExtDetailDlg* detail) {
            Click(detail->ItemCheck(1));
            Choose(detail->ItemList(1), QStringLiteral("撮影箇所"));
            Retype(detail->ValueList(1), free);
            Click(Button(detail, "ok"));
        });
        QCOMPARE(dlg->Conditions().itemText[1], free);
        Click(dlg->ExecuteButton());
        QCOMPARE(Current(*window), QList<int>());
        const ToviExtractionConditions before = dlg->Conditions();

        QString shownTitle, shownText;
        Details(dlg, [&](ToviExtDetailDlg* detail) {
            shownTitle = detail->ItemList(1)->currentText();
            shownText = detail->ValueList(1)->currentText();
            Click(detail->ItemCheck(1));  // off
            Click(detail->ItemCheck(2));
            Click(detail->findChild<QRadioButton*>(QStringLiteral("orMode")));
            Click(Button(detail, "cancel"));
        });
        QCOMPARE(shownTitle, QStringLiteral("撮影箇所"));
        QCOMPARE(shownText, free);
        const ToviExtractionConditions& after = dlg->Conditions();
        QCOMPARE(after.itemOn, before.itemOn);
        QCOMPARE(after.itemTitle, before.itemTitle);
        QCOMPARE(after.itemText, before.itemText);
        QCOMPARE(after.orMode, 0);
        QVERIFY(dlg->IsRunning());
        QCOMPARE(Current(*window), QList<int>());
    }

    // The lists: titles of the items shown in the main list or the zoom view, in table order;
    // values distinct in first-seen order, with 【未記入】 last where a blank is stored. A row
    // whose title has gone opens on the first title; a row that is off has nothing chosen.
    void detailLists() {
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviData* data = window->Document()->Data();
        ToviExtDetailDlg detail;
        detail.SetData(data);
        detail.conditions.itemOn = {true, true, false};
        detail.conditions.itemTitle = {QStringLiteral("撮影箇所"), QStringLiteral("消えた項目")};
        detail.conditions.itemText = {commonPlace, QStringLiteral("何か")};
        detail.show();
        QVERIFY(QTest::qWaitForWindowExposed(&detail));

        const QComboBox* titles = detail.ItemList(0);
        QStringList shown;
        for (int i = 0; i < titles->count(); ++i) {
            shown.append(titles->itemText(i));
        }
        QVERIFY(shown.contains(QStringLiteral("撮影箇所")));
        QVERIFY(shown.contains(QStringLiteral("工種")));
        QVERIFY(!shown.contains(QStringLiteral("写真情報")));  // a block, not an item
        QCOMPARE(titles->currentText(), QStringLiteral("撮影箇所"));

        QStringList values;
        for (int i = 0; i < detail.ValueList(0)->count(); ++i) {
            values.append(detail.ValueList(0)->itemText(i));
        }
        QCOMPARE(values, DistinctInOrder(places) << ToviNode::kUnfilledTitle);
        QCOMPARE(detail.ValueList(0)->currentText(), commonPlace);

        QCOMPARE(detail.ItemList(1)->currentIndex(), 0);
        QCOMPARE(detail.ValueList(1)->currentText(), QStringLiteral("何か"));
        QCOMPARE(detail.ItemList(2)->currentIndex(), -1);
        QVERIFY(!detail.ItemList(2)->isEnabled() && !detail.ValueList(2)->isEnabled());
        QVERIFY(!detail.DateFrom()->isEnabled());

        // Every photograph has a title: no marker. Turning a row on picks the first title, and
        // choosing another fills its values and picks the first.
        QStringList titleValues;
        for (const WrittenPhoto& photo : written.photos) {
            for (const auto& [tag, value] : photo.elements) {
                titleValues.append(tag == QStringLiteral("写真タイトル") ? value : QString());
            }
        }
        titleValues = DistinctInOrder(titleValues);
        Click(detail.ItemCheck(2));
        QCOMPARE(detail.ItemList(2)->currentIndex(), 0);
        Choose(detail.ItemList(2), QStringLiteral("写真タイトル"));
        const QComboBox* title = detail.ValueList(2);
        QStringList listed;
        for (int i = 0; i < title->count(); ++i) {
            listed.append(title->itemText(i));
        }
        QCOMPARE(listed, titleValues);
        QCOMPARE(title->currentText(), titleValues.first());
        detail.reject();
    }

    // The window's conditions narrow the current array exactly as tovi list does with the
    // same options, photograph for photograph and in the same order.
    void matchesCommandLine_data() {
        QTest::addColumn<QStringList>("checks");
        QTest::addColumn<QStringList>("items");  // title=value
        QTest::addColumn<QString>("dates");      // FROM..TO, or empty
        QTest::addColumn<int>("dateKind");
        QTest::addColumn<bool>("orMode");
        QString firstDate, midDate;
        for (const auto& [tag, value] : written.photos[2].elements) {
            if (tag == QStringLiteral("撮影年月日")) {
                firstDate = value;
            }
        }
        for (const auto& [tag, value] : written.photos[25].elements) {
            if (tag == QStringLiteral("撮影年月日")) {
                midDate = value;
            }
        }
        QVERIFY(!firstDate.isEmpty() && !midDate.isEmpty());
        const QString range =
            std::min(firstDate, midDate) + QStringLiteral("..") + std::max(firstDate, midDate);
        const QString place = QStringLiteral("撮影箇所=") + commonPlace;
        const QString work = QStringLiteral("工種=") + commonKousyu;
        QTest::newRow("two items, and")
            << QStringList() << QStringList{place, work} << QString() << 0 << false;
        QTest::newRow("blank place")
            << QStringList() << QStringList{QStringLiteral("撮影箇所=【未記入】")} << QString() << 0
            << false;
        QTest::newRow("item or date") << QStringList() << QStringList{work} << range << 0 << true;
        QTest::newRow("key photo and date")
            << QStringList{QStringLiteral("keyPhoto")} << QStringList() << range << 0 << false;
        QTest::newRow("not checked and item") << QStringList{QStringLiteral("notcheckPhoto")}
                                              << QStringList{place} << QString() << 0 << false;
        QTest::newRow("key photo or three items")
            << QStringList{QStringLiteral("keyPhoto")}
            << QStringList{work, place, QStringLiteral("写真区分=施工状況写真")} << QString() << 0
            << true;
        QTest::newRow("file date") << QStringList() << QStringList()
                                   << QStringLiteral("2020-01-01..2020-12-31") << 1 << false;
    }
    void matchesCommandLine() {
        QFETCH(QStringList, checks);
        QFETCH(QStringList, items);
        QFETCH(QString, dates);
        QFETCH(int, dateKind);
        QFETCH(bool, orMode);
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        ToviData* data = window->Document()->Data();
        QCOMPARE(data->GetSelectedNode(), static_cast<ToviNode*>(data));

        QStringList args{QStringLiteral("--profile"),
                         Path(QStringLiteral("cli.ini")),
                         QStringLiteral("list"),
                         withKey,
                         QStringLiteral("--json"),
                         QStringLiteral("--type"),
                         QString::number(data->GetVisualSetting().GetTreeType())};
        for (const QString& check : checks) {
            Click(Check(dlg, check));
            static const QHash<QString, QString> kOptions{
                {QStringLiteral("keyPhoto"), QStringLiteral("--key-photo")},
                {QStringLiteral("ngPhoto"), QStringLiteral("--ng")},
                {QStringLiteral("notcheckPhoto"), QStringLiteral("--not-checked")},
                {QStringLiteral("notExifinfo"), QStringLiteral("--no-exif")},
                {QStringLiteral("neceNotwrite"), QStringLiteral("--required-missing")}};
            args << kOptions.value(check);
        }
        for (const QString& item : items) {
            args << QStringLiteral("--item") << item;
        }
        if (!dates.isEmpty()) {
            args << QStringLiteral("--date") << dates << QStringLiteral("--date-kind")
                 << QString::number(dateKind);
        }
        if (orMode) {
            args << QStringLiteral("--or");
        }
        if (!items.isEmpty() || !dates.isEmpty() || orMode) {
            Details(dlg, [&](ToviExtDetailDlg* detail) {
                for (int j = 0; j < items.size(); ++j) {
                    const qsizetype eq = items[j].indexOf(QLatin1Char('='));
                    Click(detail->ItemCheck(j));
                    Choose(detail->ItemList(j), items[j].left(eq));
                    Retype(detail->ValueList(j), items[j].mid(eq + 1));
                }
                if (!dates.isEmpty()) {
                    Click(detail->DateCheck());
                    Click(detail->findChild<QRadioButton*>(
                        dateKind != 0 ? QStringLiteral("fileDate") : QStringLiteral("shotDate")));
                    const QStringList range = dates.split(QStringLiteral(".."));
                    TypeDate(detail->DateFrom(),
                             QDate::fromString(range[0], QStringLiteral("yyyy-MM-dd")));
                    TypeDate(detail->DateTo(),
                             QDate::fromString(range[1], QStringLiteral("yyyy-MM-dd")));
                }
                if (orMode) {
                    Click(detail->findChild<QRadioButton*>(QStringLiteral("orMode")));
                }
                Click(Button(detail, "ok"));
            });
        }
        // What reached the conditions is what the command line is given.
        const ToviExtractionConditions& c = dlg->Conditions();
        for (int j = 0; j < items.size(); ++j) {
            QCOMPARE(c.itemTitle[j] + QLatin1Char('=') + c.itemText[j], items[j]);
        }
        QCOMPARE(c.dateOn ? c.dateFrom + QStringLiteral("..") + c.dateTo : QString(), dates);
        QCOMPARE(c.orMode != 0, orMode);
        Click(dlg->ExecuteButton());

        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), Path(QStringLiteral("home")));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), Path(QStringLiteral("home")));
        environment.insert(QStringLiteral("XDG_CACHE_HOME"), Path(QStringLiteral("home")));
        const ProgramRun run = RunProgram(
            QCoreApplication::applicationDirPath() + QStringLiteral("/tovi"), args, environment);
        QVERIFY2(run.exitCode == 0, qPrintable(run.err));
        QList<int> expected;
        for (const QJsonValue& v :
             QJsonDocument::fromJson(run.out).object().value(QStringLiteral("current")).toArray()) {
            expected.append(v.toInt());
        }
        QCOMPARE(Current(*window), expected);
        // Not a trivial agreement: every row narrows to some photographs.
        QVERIFY(!expected.isEmpty() && expected.size() < written.photos.size());
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
