#include "dialogs/LabelProcessSelectDlg.h"
#include "dialogs/OpenNextDataDlg.h"
#include "dialogs/ToviInputCommentDlg.h"
#include "dialogs/ToviQtUi.h"
#include "loading/OpenNextDataTexts.h"
#include "platform/ToviProgressDlg.h"
#include "platform/widgets/ToviWaitWindow.h"
#include "review/LabelProcessSelectTexts.h"
#include "tests/support/ScriptedUi.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QAbstractButton>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <functional>

namespace {

// Acts on the next modal window once it is up (message boxes and dialogs run their own loop).
void WhenModal(std::function<void(QWidget*)> act, QWidget* notThis = nullptr) {
    QTimer::singleShot(10, [act, notThis] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || modal == notThis) {
            WhenModal(act, notThis);
            return;
        }
        act(modal);
    });
}

QPushButton* ButtonOf(QWidget* dialog, const QString& text) {
    for (QPushButton* button : dialog->findChildren<QPushButton*>()) {
        if (button->text() == text) {
            return button;
        }
    }
    return nullptr;
}

}  // namespace

class ToviQtUiTest : public QObject {
    Q_OBJECT

    ToviQtUi ui;

private slots:
    void initTestCase() {
        QApplication::setApplicationDisplayName(QStringLiteral("ToviCore テスト"));
        ToviUi::Install(&ui);
    }
    void cleanupTestCase() { ToviUi::Install(nullptr); }

    // The answer by the button pressed, Escape giving the safe one; the caption defaults to
    // the application's name and the icon follows the model's.
    void messageBox_data() {
        QTest::addColumn<int>("buttons");
        QTest::addColumn<int>("press");  // a QMessageBox::StandardButton, or 0 for Escape
        QTest::addColumn<int>("answer");
        QTest::newRow("OK") << int(ToviUi::ButtonsOk) << int(QMessageBox::Ok)
                            << int(ToviUi::AnswerOk);
        QTest::newRow("Cancel") << int(ToviUi::ButtonsOkCancel) << int(QMessageBox::Cancel)
                                << int(ToviUi::AnswerCancel);
        QTest::newRow("Yes") << int(ToviUi::ButtonsYesNoCancel) << int(QMessageBox::Yes)
                             << int(ToviUi::AnswerYes);
        QTest::newRow("Escape on yes/no")
            << int(ToviUi::ButtonsYesNo) << 0 << int(ToviUi::AnswerNo);
        QTest::newRow("Escape on yes/no/cancel")
            << int(ToviUi::ButtonsYesNoCancel) << 0 << int(ToviUi::AnswerCancel);
    }
    void messageBox() {
        QFETCH(int, buttons);
        QFETCH(int, press);
        QFETCH(int, answer);
        QString caption;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QStringList texts;
        WhenModal([&](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            QVERIFY(box);
            caption = box->windowTitle();
            icon = box->icon();
            for (QAbstractButton* button : box->buttons()) {
                texts.append(button->text());
            }
            if (press) {
                QTest::mouseClick(box->button(QMessageBox::StandardButton(press)), Qt::LeftButton);
            } else {
                QTest::keyClick(box, Qt::Key_Escape);
            }
        });
        QCOMPARE(ui.MessageBox(nullptr, QStringLiteral("保存しますか？"), QString(),
                               ToviUi::Buttons(buttons), ToviUi::IconQuestion),
                 answer);
        QCOMPARE(caption, QStringLiteral("ToviCore テスト"));
        QCOMPARE(icon, QMessageBox::Question);
        // The buttons in the program's words, not the desktop's.
        for (const QString& text : texts) {
            QVERIFY2(QStringList({QStringLiteral("OK"), QStringLiteral("キャンセル"),
                                  QStringLiteral("はい(&Y)"), QStringLiteral("いいえ(&N)")})
                         .contains(text),
                     qPrintable(text));
        }
        QVERIFY(!texts.isEmpty());
    }

    // The progress window disables its owner but not itself, shows the loop's message and
    // percentage, cancels by its button, and gives the owner back when the loop ends, also
    // when the owner went first.
    void progressWindow() {
        auto owner = std::make_unique<QWidget>();
        owner->show();
        ToviProgressDlg progress(false, owner.get());
        progress.SetCancelBtnEnabled(true);
        QVERIFY(progress.Create());
        progress.SetRange(0, 4);
        progress.SetMessage(QStringLiteral("Excelデータ出力中　1 / 4"));
        progress.SetPos(1);
        auto* window = owner->findChild<QDialog*>(QStringLiteral("ToviProgressDlg"));
        QVERIFY(window && window->isVisible());
        QVERIFY(!owner->isEnabled());
        QVERIFY(window->isEnabled());
        QCOMPARE(window->findChild<QLabel*>(QStringLiteral("message"))->text(),
                 QStringLiteral("Excelデータ出力中　1 / 4"));
        QCOMPARE(window->findChild<QLabel*>(QStringLiteral("percent"))->text(),
                 QStringLiteral("25%"));
        QCOMPARE(window->findChild<QProgressBar*>()->value(), 1);
        QTest::mouseClick(window->findChild<QPushButton*>(QStringLiteral("cancel")),
                          Qt::LeftButton);
        QVERIFY(progress.GetCancel());
        QVERIFY(progress.DestroyWindow());
        QVERIFY(owner->isEnabled());
        QVERIFY(!window->isVisible());

        // Without cancel: no button, and the close box does nothing.
        ToviProgressDlg quiet(false, owner.get());
        quiet.SetCancelBtnEnabled(false);
        QVERIFY(quiet.Create());
        window = owner->findChildren<QDialog*>(QStringLiteral("ToviProgressDlg")).last();
        QVERIFY(!window->findChild<QPushButton*>(QStringLiteral("cancel"))->isVisible());
        window->close();
        QVERIFY(!quiet.GetCancel());
        owner.reset();  // the owner goes during the loop
        QVERIFY(!quiet.IsWindow());
        quiet.StepIt();
        quiet.DestroyWindow();
    }

    // The next-data dialog lists what is missing, keeps a folder without PHOTO.XML out with a
    // warning, and hands back the folder that has one.
    void openNextData() {
        QTemporaryDir temp;
        QVERIFY(temp.isValid());
        QFile xml(temp.filePath(QStringLiteral("disc2/photo.xml")));
        QVERIFY(QDir().mkpath(temp.filePath(QStringLiteral("disc2"))));
        QVERIFY(xml.open(QIODevice::WriteOnly));
        xml.close();
        QVariantMap values{
            {OpenNextDataTexts::FolderField(), temp.filePath(QStringLiteral("disc1"))},
            {OpenNextDataTexts::ListLabelField(), OpenNextDataTexts::ListLabel(2)},
            {OpenNextDataTexts::MissingField(), QStringList{"P0000002.JPG", "D0000001.JPG"}}};
        QString warning;
        int listed = 0;
        QString listLabel;
        WhenModal([&](QWidget* dialog) {
            listed = dialog->findChild<QListWidget*>(QStringLiteral("missing"))->count();
            listLabel = dialog->findChild<QLabel*>(QStringLiteral("listLabel"))->text();
            QPushButton* ok = ButtonOf(dialog, QStringLiteral("OK"));
            WhenModal(
                [&, dialog, ok](QWidget* box) {
                    warning = qobject_cast<QMessageBox*>(box)->text();
                    QTest::keyClick(box, Qt::Key_Return);
                    // Still open: the right folder now, typed, and OK.
                    QTimer::singleShot(10, [&, dialog, ok] {
                        auto* folder = dialog->findChild<QLineEdit*>(QStringLiteral("folder"));
                        folder->clear();
                        QTest::keyClicks(folder, temp.filePath(QStringLiteral("disc2")));
                        QTest::mouseClick(ok, Qt::LeftButton);
                    });
                },
                dialog);
            QTest::mouseClick(ok, Qt::LeftButton);
        });
        QVERIFY(ui.RunDialog(nullptr, OpenNextDataDlg::Name(), values));
        QCOMPARE(listed, 2);
        QCOMPARE(listLabel, OpenNextDataTexts::ListLabel(2));
        QCOMPARE(warning, OpenNextDataTexts::NoPhotoXml());
        QCOMPARE(values.value(OpenNextDataTexts::FolderField()).toString(),
                 temp.filePath(QStringLiteral("disc2")));
    }

    // Enter cancels the batch correction (キャンセル is the default); a chosen action comes
    // back on OK.
    void labelProcessSelect() {
        QVariantMap values{{QStringLiteral("action"), 0}};
        WhenModal([](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Return); });
        QVERIFY(!ui.RunDialog(nullptr, LabelProcessSelectDlg::Name(), values));
        WhenModal([](QWidget* dialog) {
            auto* radio = dialog->findChild<QRadioButton*>(QStringLiteral("action2"));
            QTest::mouseClick(radio, Qt::LeftButton, {}, QPoint(6, radio->height() / 2));
            QTest::mouseClick(ButtonOf(dialog, QStringLiteral("OK")), Qt::LeftButton);
        });
        QVERIFY(ui.RunDialog(nullptr, LabelProcessSelectDlg::Name(), values));
        QCOMPARE(values.value(QStringLiteral("action")).toInt(), 2);
        QVERIFY(!ui.RunDialog(nullptr, QStringLiteral("NoSuchDlg"), values));
    }

    // The comment dialog starts with the comment; OK hands back what was typed, half-width
    // blanks alone as no comment (full-width ones are the caller's to judge); Cancel nothing.
    void inputComment_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("comment");
        QTest::newRow("words among blanks")
            << QStringLiteral(" 黒板 不鮮明 ") << true << QStringLiteral(" 黒板 不鮮明 ");
        QTest::newRow("half-width blanks") << QStringLiteral("   ") << true << QString();
        QTest::newRow("full-width blank") << QStringLiteral("　") << true << QStringLiteral("　");
        QTest::newRow("cancelled") << QStringLiteral("新しい") << false << QStringLiteral("前の");
    }
    void inputComment() {
        QFETCH(QString, typed);
        QFETCH(bool, ok);
        QFETCH(QString, comment);
        QVariantMap values{{QStringLiteral("comment"), QStringLiteral("前の")}};
        QString title;
        QString shown;
        WhenModal([&](QWidget* dialog) {
            title = dialog->windowTitle();
            auto* edit = dialog->findChild<QPlainTextEdit*>(QStringLiteral("comment"));
            shown = edit->toPlainText();
            edit->selectAll();
            QTest::keyClick(edit, Qt::Key_Delete);
            for (const QChar ch : typed) {
                // keyClicks knows ASCII only: a key event carrying the character, as an input
                // method hands over a committed one.
                QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(ch));
                QApplication::sendEvent(edit, &press);
            }
            QTest::mouseClick(
                ButtonOf(dialog, ok ? QStringLiteral("OK") : QStringLiteral("キャンセル")),
                Qt::LeftButton);
        });
        QCOMPARE(ui.RunDialog(nullptr, ToviInputCommentDlg::Name(), values), ok);
        QCOMPARE(title, QStringLiteral("コメントの記入"));
        QCOMPARE(shown, QStringLiteral("前の"));
        QCOMPARE(values.value(QStringLiteral("comment")).toString(), comment);
    }

    // A comment the Shift_JIS record cannot hold is not taken: the user is told which
    // characters, and the dialog stays open with everything typed until they are replaced.
    void inputCommentOutsideShiftJis() {
        ScriptedUi scripted;
        ScopedUi scope(scripted);
        ToviInputCommentDlg dialog(nullptr, {});
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        auto* edit = dialog.Edit();
        edit->setPlainText(QStringLiteral("黒板😀不鮮明\n①番 ㈱"));
        QTest::mouseClick(ButtonOf(&dialog, QStringLiteral("OK")), Qt::LeftButton);
        QVERIFY(dialog.isVisible());
        QCOMPARE(scripted.Questions().size(), 1);
        QVERIFY(scripted.Questions().first().text.contains(QStringLiteral("😀")));
        QVERIFY(!scripted.Questions().first().text.contains(QStringLiteral("①")));
        QCOMPARE(edit->toPlainText(), QStringLiteral("黒板😀不鮮明\n①番 ㈱"));
        edit->setPlainText(QStringLiteral("黒板不鮮明\n①番 ㈱"));
        QTest::mouseClick(ButtonOf(&dialog, QStringLiteral("OK")), Qt::LeftButton);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.Comment(), QStringLiteral("黒板不鮮明\n①番 ㈱"));
    }

    // The wait window is up with its text until the work ends, and Escape does not close it.
    void waitWindow() {
        QWidget owner;
        owner.show();
        ui.BeginWait(&owner, OpenNextDataTexts::Copying(), OpenNextDataTexts::kCopyAnimation);
        auto* wait = owner.findChild<ToviWaitWindow*>();
        QVERIFY(wait && wait->isVisible());
        QCOMPARE(wait->Message(), OpenNextDataTexts::Copying());
        QTest::keyClick(wait, Qt::Key_Escape);
        QVERIFY(wait->isVisible());
        ui.EndWait();
        QVERIFY(!owner.findChild<ToviWaitWindow*>());
    }
};

QTEST_MAIN(ToviQtUiTest)
#include "ToviQtUiTest.moc"
