#pragma once

#include "platform/ToviUi.h"

#include <QHash>

#include <functional>
#include <memory>

class QCoreApplication;
class QMessageBox;
class ToviWaitWindow;

// The presenter of the viewer: message boxes, Qt's file and folder choosers, the named dialogs
// the model asks for, the progress and wait windows of long loops on the UI thread, and the
// desktop's default application for finished files.
class ToviQtUi : public ToviUi {
public:
    // Runs a named dialog with its fields in values, answering whether it ended with OK.
    using DialogRunner = std::function<bool(QWidget* parent, QVariantMap& values)>;

    // Knows the library's own dialogs ("LabelProcessSelectDlg", "OpenNextDataDlg",
    // "ToviInputCommentDlg").
    ToviQtUi();
    ~ToviQtUi() override;

    // Adds or replaces the dialog of that name.
    void RegisterDialog(const QString& name, DialogRunner runner);

    QString ApplicationName() const override;
    int MessageBox(QWidget* parent, const QString& text, const QString& caption, Buttons buttons,
                   Icon icon) override;
    // The box MessageBox shows, not yet shown: the caption defaults to the application's name,
    // the buttons carry the program's own words.
    std::unique_ptr<QMessageBox> CreateMessageBox(QWidget* parent, const QString& text,
                                                  const QString& caption, Buttons buttons,
                                                  Icon icon) const;
    // Loads Qt's own Japanese texts when the system has them; owned by app.
    static void InstallTranslations(QCoreApplication* app);
    // An unknown name answers false, as a dialog cancelled would.
    bool RunDialog(QWidget* parent, const QString& name, QVariantMap& values) override;
    bool BrowseForFolder(QWidget* parent, const QString& title, QString& folder) override;
    QString GetSaveFileName(QWidget* parent, const QString& title, const QString& proposed,
                            const QString& filter) override;
    QString GetOpenFileName(QWidget* parent, const QString& title, const QString& folder,
                            const QString& filter) override;
    void Pump() override;
    std::unique_ptr<ToviProgressView> CreateProgressView(QWidget* parent) override;
    void BeginWait(QWidget* parent, const QString& message, int animation) override;
    void EndWait() override;
    void OpenWithDefaultApplication(const QString& path) override;
    // In the status bar of parent's main window (the active one without a parent).
    void ShowStatus(QWidget* parent, const QString& text, int ms) override;

private:
    QHash<QString, DialogRunner> dialogs;
    std::unique_ptr<ToviWaitWindow> wait;
};
