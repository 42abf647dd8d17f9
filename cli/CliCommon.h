#pragma once

#include "document/ToviItemDef.h"
#include "platform/ToviUi.h"

#include <QString>
#include <QStringList>

#include <memory>

class ToviData;

// Exit codes of every command.
enum CliExit { ExitOk = 0, ExitNotLoaded = 1, ExitUsage = 2 };

// Options every command that opens a delivery shares.
struct OpenOptions {
    QString folder;
    PhotoXMLType family = PhotoXMLMlit;
    bool json = false;
};

// Prints one line to standard error (UTF-8).
void PrintError(const QString& line);
// Prints text to standard output (UTF-8).
void PrintOut(const QByteArray& utf8);

// Parses "--family N" and "--json" out of args (removing them), and the folder argument.
// On a usage error prints one line naming the option and returns false.
bool ParseOpenOptions(QStringList& args, OpenOptions& options, const char* command);

// Parses a whole number option value in [low, high]; prints one line naming the option and
// returns false otherwise.
bool ParseIntOption(const QString& command, const QString& option, const QString& text, int low,
                    int high, int& value);

// Opens the delivery and reads its settings. Returns null after printing the one line that
// says why when no document came back or its error type is other than none or "no
// photographs" (an empty delivery opens).
std::unique_ptr<ToviData> OpenDelivery(const OpenOptions& options);

// What the model asks of a user, answered from a command's options: a file name to save to is
// the one given, a folder is the one given the first time it is asked and refused after
// (a question asked again would loop), the text of a message box is printed on standard
// error, and every other question gets the non-interactive answer. Installed for as long as
// it lives.
class CliUi : public ToviNonInteractiveUi {
public:
    explicit CliUi(const QString& saveFileName = QString(), const QString& folder = QString());
    ~CliUi() override;
    CliUi(const CliUi&) = delete;
    CliUi& operator=(const CliUi&) = delete;

    int MessageBox(QWidget* parent, const QString& text, const QString& caption, Buttons buttons,
                   Icon icon) override;
    QString GetSaveFileName(QWidget*, const QString&, const QString&, const QString&) override {
        return saveFileName;
    }
    bool BrowseForFolder(QWidget*, const QString&, QString& chosen) override;

private:
    QString saveFileName;
    QString folder;
    bool folderGiven = false;
};
