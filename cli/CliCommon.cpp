#include "cli/CliCommon.h"

#include "document/ToviData.h"
#include "document/ToviHostDocument.h"
#include "loading/ToviEnouDataFactory.h"

#include <cstdio>
#include <stdexcept>

void PrintError(const QString& line) {
    const QByteArray utf8 = line.toUtf8() + '\n';
    std::fwrite(utf8.constData(), 1, static_cast<size_t>(utf8.size()), stderr);
}

void PrintOut(const QByteArray& utf8) {
    std::fwrite(utf8.constData(), 1, static_cast<size_t>(utf8.size()), stdout);
}

bool ParseOpenOptions(QStringList& args, OpenOptions& options, const char* command) {
    QStringList rest;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == QLatin1String("--json")) {
            options.json = true;
        } else if (a == QLatin1String("--family")) {
            bool ok = false;
            const int family = i + 1 < args.size() ? args[i + 1].toInt(&ok) : -1;
            if (!ok || family < 0 || family > 3) {
                PrintError(QStringLiteral("tovi %1: --family には 0 から 3 の数を指定してください")
                               .arg(QString::fromUtf8(command)));
                return false;
            }
            options.family = static_cast<PhotoXMLType>(family);
            ++i;
        } else {
            rest.append(a);
        }
    }
    args = rest;
    if (args.isEmpty()) {
        PrintError(QStringLiteral("tovi %1: PHOTO.XML のあるフォルダを指定してください")
                       .arg(QString::fromUtf8(command)));
        return false;
    }
    options.folder = args.takeFirst();
    return true;
}

bool ParseIntOption(const QString& command, const QString& option, const QString& text, int low,
                    int high, int& value) {
    bool ok = false;
    const int number = text.toInt(&ok);
    if (!ok || number < low || number > high) {
        PrintError(QStringLiteral("tovi %1: %2 には %3 から %4 の数を指定してください")
                       .arg(command, option)
                       .arg(low)
                       .arg(high));
        return false;
    }
    value = number;
    return true;
}

namespace {

// The command line has no views, but the document only rebuilds its current array for a
// host that shows it: this host shows nothing.
class SilentHost : public ToviHostDocument {
public:
    void UpdateAllViews(QWidget*, int, QObject*) override {}
};

SilentHost silentHost;

}  // namespace

std::unique_ptr<ToviData> OpenDelivery(const OpenOptions& options) {
    ToviEnouDataFactory factory;
    std::unique_ptr<ToviData> document;
    try {
        document = factory.Create(&silentHost, options.folder, options.family);
    } catch (const std::out_of_range&) {
        // Only a READITEM.XML whose steps don't balance walks off the end of its list.
        PrintError(
            QStringLiteral("項目定義ファイル READITEM.XML の構造が正しくないため読み込めません"));
        return nullptr;
    }
    if (!document) {
        PrintError(factory.GetLoadError().isEmpty() ? QStringLiteral("PHOTO.XML を読み込めません")
                                                    : factory.GetLoadError());
        return nullptr;
    }
    const PhotoXMLReadErr error = document->GetErrorType();
    if (error != ReadErrNone && error != ReadErrNoPhotos) {
        PrintError(factory.GetErrorTypeText(*document));
        return nullptr;
    }
    // The settings write themselves back to the profile when the document goes: read them
    // first, so that what goes back is what was there.
    document->Load();
    return document;
}

CliUi::CliUi(const QString& saveFileName, const QString& folder)
    : saveFileName(saveFileName), folder(folder) {
    ToviUi::Install(this);
}

CliUi::~CliUi() {
    ToviUi::Install(nullptr);
}

int CliUi::MessageBox(QWidget* parent, const QString& text, const QString& caption, Buttons buttons,
                      Icon icon) {
    PrintError(text);
    return ToviNonInteractiveUi::MessageBox(parent, text, caption, buttons, icon);
}

bool CliUi::BrowseForFolder(QWidget*, const QString&, QString& chosen) {
    if (folderGiven || folder.isEmpty()) {
        return false;
    }
    folderGiven = true;
    chosen = folder;
    return true;
}
