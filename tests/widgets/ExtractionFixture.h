#pragma once

// What the tests of the extraction window and its detail dialog share: two deliveries, a viewer
// on one of them, and the user's hands on the dialogs.

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

// Acts on the next modal window once it is up; a dialog that the action leaves open is
// cancelled, so that a failing test ends instead of waiting.
inline void WhenModal(std::function<void(QWidget*)> act) {
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
inline void Click(QWidget* widget) {
    const bool boxed = qobject_cast<QCheckBox*>(widget) || qobject_cast<QRadioButton*>(widget);
    QTest::mouseClick(widget, Qt::LeftButton, {},
                      boxed ? QPoint(8, widget->height() / 2) : widget->rect().center());
}

// Text as an input method hands it over once the user has converted it.
inline void Type(QWidget* widget, const QString& text) {
    QInputMethodEvent commit;
    commit.setCommitString(text);
    QApplication::sendEvent(widget, &commit);
}

// Replaces the text of an editable list from the keyboard.
inline void Retype(QComboBox* combo, const QString& text) {
    QLineEdit* edit = combo->lineEdit();
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(edit, Qt::Key_Backspace);
    if (!text.isEmpty()) {
        Type(edit, text);
    }
}

// Chooses an entry of a drop-down list from the keyboard, as the user would step to it.
inline void Choose(QComboBox* combo, const QString& text) {
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Home);
    const int at = combo->findText(text);
    for (int i = 0; i < at; ++i) {
        QTest::keyClick(combo, Qt::Key_Down);
    }
}

inline void Press(QWidget* widget, Qt::Key key, int times) {
    for (int i = 0; i < times; ++i) {
        QTest::keyClick(widget, key);
    }
}

// Steps the field under the cursor by delta, as the arrow keys do.
inline void Step(QWidget* widget, int delta) {
    Press(widget, delta < 0 ? Qt::Key_Down : Qt::Key_Up, std::abs(delta));
}

// Sets a date picker from the keyboard, field by field (shown as yyyy/MM/dd): the day goes to
// 1 first, so that no month is too short for it on the way.
inline void TypeDate(QDateEdit* edit, const QDate& date) {
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

inline QPushButton* Button(QWidget* dialog, const char* name) {
    return dialog->findChild<QPushButton*>(QString::fromLatin1(name));
}

// The first value of tag in each photograph as written; null where it has none.
inline QStringList Written(const WrittenDelivery& delivery, const QString& tag) {
    QStringList out;
    for (const WrittenPhoto& photo : delivery.photos) {
        QString first;
        for (const auto& [name, value] : photo.elements) {
            if (name == tag && first.isNull()) {
                first = value;
            }
        }
        out.append(first);
    }
    return out;
}

inline QStringList DistinctInOrder(const QStringList& values) {
    QStringList out;
    for (const QString& v : values) {
        if (!v.isEmpty() && !out.contains(v)) {
            out.append(v);
        }
    }
    return out;
}

// The deliveries: one of 国交省-20 whose 代表写真 the check finds, three 撮影箇所 stored blank
// and ten image files last changed in 2020; and a small one of 国交省-14, without 代表写真.
class ExtractionFixture {
protected:
    QTemporaryDir temp;
    QString withKey;     // 国交省-20: has 代表写真; some 撮影箇所 stored blank
    QString withoutKey;  // 国交省-14: no 代表写真
    WrittenDelivery written;
    QStringList places;   // 撮影箇所 of each photograph as stored ("" blank, null when absent)
    QStringList kousyu;   // 工種 likewise
    QStringList keyFlag;  // 代表写真 likewise
    QString commonKousyu;
    QString commonPlace;
    ScriptedUiSlot ui;

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

    void WriteDeliveries() {
        QVERIFY(temp.isValid());
        QApplication::setApplicationDisplayName(QStringLiteral("ToviCore"));
        UseTestStores(temp.path());
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
        places = Written(written, QStringLiteral("撮影箇所"));
        for (qsizetype i = 0, blanked = 0; blanked < 3; ++i) {
            if (!places[i].isNull()) {
                places[i] = QStringLiteral("");
                ++blanked;
            }
        }
        kousyu = Written(written, QStringLiteral("工種"));
        keyFlag = Written(written, QStringLiteral("代表写真"));
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

    void StartUi() {
        ui.Begin();
        SetSlideMode(false);
    }

    void StopUi() { ui.End(); }

    static void Finish() { ReleaseTestStores(); }
};
