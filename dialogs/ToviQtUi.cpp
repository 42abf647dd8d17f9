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
#include <QAbstractButton>
#include <QLibraryInfo>
#include <QMessageBox>
#include <QTranslator>
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

std::unique_ptr<QMessageBox> ToviQtUi::CreateMessageBox(QWidget* parent, const QString& text,
                                                        const QString& caption, Buttons buttons,
                                                        Icon icon) const {
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
    auto box = std::make_unique<QMessageBox>(shown, caption.isEmpty() ? ApplicationName() : caption,
                                             text, standard, parent);
    box->setObjectName(QStringLiteral("ToviMessageBox"));
    // The buttons speak the program's language whatever the desktop's is.
    const std::pair<QMessageBox::StandardButton, const char*> texts[] = {
        {QMessageBox::Ok, "OK"},
        {QMessageBox::Cancel, "キャンセル"},
        {QMessageBox::Yes, "はい(&Y)"},
        {QMessageBox::No, "いいえ(&N)"}};
    for (const auto& [button, label] : texts) {
        if (QAbstractButton* b = box->button(button)) {
            b->setText(QString::fromUtf8(label));
        }
    }
    return box;
}

int ToviQtUi::MessageBox(QWidget* parent, const QString& text, const QString& caption,
                         Buttons buttons, Icon icon) {
    const std::unique_ptr<QMessageBox> owned =
        CreateMessageBox(parent, text, caption, buttons, icon);
    QMessageBox& box = *owned;
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

void ToviQtUi::InstallTranslations(QCoreApplication* app) {
    // Qt's own words (file dialogs, the edit menus of text fields, standard buttons) in the
    // language of the program's, where the translations are installed.
    auto* translator = new QTranslator(app);
    if (translator->load(QStringLiteral("qtbase_ja"),
                         QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(translator);
    } else {
        delete translator;
    }
}
