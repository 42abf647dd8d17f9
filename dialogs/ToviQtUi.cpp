#include "dialogs/ToviQtUi.h"

#include "dialogs/LabelProcessSelectDlg.h"
#include "dialogs/OpenNextDataDlg.h"
#include "dialogs/ToviInputCommentDlg.h"
#include "dialogs/ToviSelectOutputPhotoDlg.h"
#include "platform/widgets/ToviProgressWindow.h"
#include "platform/widgets/ToviWaitWindow.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QMainWindow>
#include <QMessageBox>
#include <QStatusBar>
#include <QUrl>

ToviQtUi::ToviQtUi() {
    RegisterDialog(LabelProcessSelectDlg::Name(), LabelProcessSelectDlg::Run);
    RegisterDialog(OpenNextDataDlg::Name(), OpenNextDataDlg::Run);
    RegisterDialog(ToviInputCommentDlg::Name(), ToviInputCommentDlg::Run);
    RegisterDialog(ToviSelectOutputPhotoDlg::Name(), ToviSelectOutputPhotoDlg::Run);
}

ToviQtUi::~ToviQtUi() = default;

void ToviQtUi::RegisterDialog(const QString& name, DialogRunner runner) {
    dialogs.insert(name, std::move(runner));
}

QString ToviQtUi::ApplicationName() const {
    const QString name = QGuiApplication::applicationDisplayName();
    return name.isEmpty() ? ToviUi::ApplicationName() : name;
}

int ToviQtUi::MessageBox(QWidget* parent, const QString& text, const QString& caption,
                         Buttons buttons, Icon icon) {
    QMessageBox::Icon shown = QMessageBox::NoIcon;
    switch (icon) {
        case IconError:
            shown = QMessageBox::Critical;
            break;
        case IconQuestion:
            shown = QMessageBox::Question;
            break;
        case IconWarning:
            shown = QMessageBox::Warning;
            break;
        case IconInformation:
            shown = QMessageBox::Information;
            break;
        default:
            break;
    }
    QMessageBox::StandardButtons standard = QMessageBox::Ok;
    switch (buttons) {
        case ButtonsOkCancel:
            standard = QMessageBox::Ok | QMessageBox::Cancel;
            break;
        case ButtonsYesNoCancel:
            standard = QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
            break;
        case ButtonsYesNo:
            standard = QMessageBox::Yes | QMessageBox::No;
            break;
        default:
            break;
    }
    QMessageBox box(shown, caption.isEmpty() ? ApplicationName() : caption, text, standard, parent);
    box.setObjectName(QStringLiteral("ToviMessageBox"));
    switch (box.exec()) {
        case QMessageBox::Ok:
            return AnswerOk;
        case QMessageBox::Yes:
            return AnswerYes;
        case QMessageBox::No:
            return AnswerNo;
        default:
            // Escape or the close box: No where there is no Cancel, as the desktop has it.
            return buttons == ButtonsYesNo ? AnswerNo
                   : buttons == ButtonsOk  ? AnswerOk
                                           : AnswerCancel;
    }
}

bool ToviQtUi::RunDialog(QWidget* parent, const QString& name, QVariantMap& values) {
    const auto it = dialogs.constFind(name);
    return it != dialogs.constEnd() && (*it)(parent, values);
}

bool ToviQtUi::BrowseForFolder(QWidget* parent, const QString& title, QString& folder) {
    const QString chosen = QFileDialog::getExistingDirectory(parent, title, folder);
    if (chosen.isEmpty()) {
        return false;
    }
    folder = chosen;
    return true;
}

QString ToviQtUi::GetSaveFileName(QWidget* parent, const QString& title, const QString& proposed,
                                  const QString& filter) {
    return QFileDialog::getSaveFileName(parent, title, proposed, filter);
}

QString ToviQtUi::GetOpenFileName(QWidget* parent, const QString& title, const QString& folder,
                                  const QString& filter) {
    return QFileDialog::getOpenFileName(parent, title, folder, filter);
}

void ToviQtUi::Pump() {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

std::unique_ptr<ToviProgressView> ToviQtUi::CreateProgressView(QWidget* parent) {
    if (!parent) {
        parent = QApplication::activeWindow();
    }
    return std::make_unique<ToviProgressWindowView>(parent);
}

void ToviQtUi::BeginWait(QWidget* parent, const QString& message, int animation) {
    wait = std::make_unique<ToviWaitWindow>(parent ? parent : QApplication::activeWindow(), message,
                                            animation);
    wait->setWindowTitle(ApplicationName());
    wait->show();
    // The work that follows blocks the thread: the window is drawn before it starts.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void ToviQtUi::EndWait() {
    wait.reset();
}

void ToviQtUi::OpenWithDefaultApplication(const QString& path) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

void ToviQtUi::ShowStatus(QWidget* parent, const QString& text, int ms) {
    QWidget* window = parent ? parent->window() : QApplication::activeWindow();
    if (auto* main = qobject_cast<QMainWindow*>(window)) {
        main->statusBar()->showMessage(text, ms);
    }
}
