// tovi index: makes the copy of the delivery's index file that points at its stylesheet, and
// the page the stylesheet makes of it.

#include "cli/CliCommon.h"
#include "cli/JsonWriter.h"

#include "document/ToviData.h"
#include "platform/MibFile.h"
#include "reports/ToviIndexPage.h"

int RunIndex(QStringList args) {
    QString htmlPath;
    const qsizetype at = args.indexOf(QStringLiteral("--html"));
    if (at >= 0) {
        if (at + 1 >= args.size()) {
            PrintError(
                QStringLiteral("tovi index: --html に書き出す HTML ファイルを指定してください"));
            return ExitUsage;
        }
        htmlPath = args[at + 1];
        args.remove(at, 2);
    }
    OpenOptions options;
    if (!ParseOpenOptions(args, options, "index")) {
        return ExitUsage;
    }
    if (!args.isEmpty()) {
        PrintError(QStringLiteral("tovi index: 不明な引数 %1").arg(args.first()));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }
    ToviIndexPage page;
    const ToviIndexPage::Result result = page.Make(*document);
    if (result == ToviIndexPage::NoIndexFile || result == ToviIndexPage::NoDoctype ||
        result == ToviIndexPage::NoCopy) {
        PrintError(page.Message(result));
        return ExitNotLoaded;
    }
    const bool hasStylesheet = result != ToviIndexPage::NoStylesheet;
    if (options.json) {
        JsonWriter json;
        json.BeginObject();
        json.Key("indexPath");
        json.Value(page.IndexPath());
        json.Key("stylesheetPath");
        json.Value(page.StylesheetPath());
        json.Key("copyPath");
        json.Value(page.CopyPath());
        json.EndObject();
        json.Finish();
    } else {
        PrintOut(QStringLiteral("管理ファイル    %1\nスタイルシート  %2\n写し            %3\n")
                     .arg(page.IndexPath(),
                          hasStylesheet ? page.StylesheetPath() : QStringLiteral("(なし)"),
                          page.CopyPath())
                     .toUtf8());
    }
    if (htmlPath.isEmpty()) {
        return ExitOk;
    }
    if (!hasStylesheet) {
        PrintError(QStringLiteral(
            "tovi index: この管理ファイルに合うスタイルシートがないため HTML を作れません"));
        return ExitNotLoaded;
    }
    if (result != ToviIndexPage::Made) {
        PrintError(QStringLiteral("tovi index: ") + page.Message(result));
        return ExitNotLoaded;
    }
    const QByteArray& html = page.Html();
    QString error;
    if (!MibWriteFileAtomic(htmlPath, html, &error)) {
        PrintError(QStringLiteral("tovi index: %1 に書き込めません").arg(htmlPath));
        return ExitNotLoaded;
    }
    return ExitOk;
}
