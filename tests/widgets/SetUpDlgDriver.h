#pragma once

// What the setup-dialog tests share: finding controls by number, typing and clicking as a user
// does, and acting on a dialog that runs its own loop.

#include "dialogs/ToviSetUpDlg.h"

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <functional>

template <class T>
T* Control(const QWidget* dialog, int id) {
    return dialog->findChild<T*>(ToviSetUpDlg::ControlName(id));
}

inline QPushButton* Ok(const QWidget* dialog) {
    return dialog->findChild<QPushButton*>(QStringLiteral("ok"));
}

inline QPushButton* Cancel(const QWidget* dialog) {
    return dialog->findChild<QPushButton*>(QStringLiteral("cancel"));
}

// Acts on the next modal window of type T once it is up (a dialog's exec runs its own loop).
// A dialog still open after act (a failed check returned early) is cancelled, so that a
// failure doesn't hang the run.
template <class T>
void WhenModal(std::function<void(T*)> act) {
    QTimer::singleShot(10, [act] {
        if (auto* modal = qobject_cast<T*>(QApplication::activeModalWidget())) {
            act(modal);
            if (modal->isVisible()) {
                modal->reject();
            }
            return;
        }
        WhenModal<T>(act);
    });
}

// Replaces the text of an edit by typing, as a user does.
inline void Retype(QLineEdit* edit, const QString& text) {
    QTest::mouseClick(edit, Qt::LeftButton);
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(edit, Qt::Key_Delete);
    // Key by key with the text each key gives, as a keyboard or an input method sends it.
    for (const QChar c : text) {
        QTest::sendKeyEvent(QTest::Click, edit, Qt::Key_unknown, QString(c), Qt::NoModifier);
    }
}

inline void ClickRow(QListWidget* list, int row) {
    list->scrollToItem(list->item(row));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->item(row)).center());
}

inline QStringList Rows(const QListWidget* list) {
    QStringList rows;
    for (int row = 0; row < list->count(); ++row) {
        rows.append(list->item(row)->text());
    }
    return rows;
}

// Ctrl+, on the window, made active first: a closed dialog doesn't always hand the
// activation back on the offscreen platform.
inline void PressSetUpKey(QWidget* window) {
    QApplication::setActiveWindow(window);
    QTest::keyClick(window, Qt::Key_Comma, Qt::ControlModifier);
}
