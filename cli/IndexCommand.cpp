// tovi index: makes the copy of the delivery's index file that points at its stylesheet, and
// the page the stylesheet makes of it.

#include "cli/CliCommon.h"
#include "cli/JsonWriter.h"

#include "document/ToviData.h"
#include "platform/MibFile.h"
#include "platform/MibXslt.h"

int RunIndex(QStringList args) {
    QString htmlPath;
    const qsizetype at = args.indexOf(QStringLiteral("--html"));
    if (at >= 0) {
        if (at + 1 >= args.size()) {
            PrintError(QStringLiteral("tovi index: --html に書き出す HTML ファイルを指定してください"));
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
    QString indexPath;
    QString stylesheetPath;
    document->GetItemDef()->GetPathAndName(indexPath, stylesheetPath);
    if (indexPath.isEmpty()) {
        PrintError(QStringLiteral("フォルダ %1 に管理ファイル (INDEX_*.XML, PHOTO_*.XML) がありません")
                       .arg(document->GetItemDef()->ParentPath()));
        return ExitNotLoaded;
    }
    if (stylesheetPath.isEmpty()) {
        PrintError(QStringLiteral("%1 に工事 (constdata) または業務 (gyomudata) の DOCTYPE がありません")
                       .arg(indexPath));
        return ExitNotLoaded;
    }
    const QString copyPath = document->GetIndexPath();
    if (copyPath.isEmpty()) {
        PrintError(QStringLiteral("%1 の写しを作業フォルダに作れません").arg(indexPath));
        return ExitNotLoaded;
    }
    // Without a row for the file in the tables the stylesheet path is the program folder.
    const bool hasStylesheet = MibIsFileExist(stylesheetPath);
    if (options.json) {
        JsonWriter json;
        json.BeginObject();
        json.Key("indexPath");
        json.Value(indexPath);
        json.Key("stylesheetPath");
        json.Value(stylesheetPath);
        json.Key("copyPath");
        json.Value(copyPath);
        json.EndObject();
        json.Finish();
    } else {
        PrintOut(QStringLiteral("管理ファイル    %1\nスタイルシート  %2\n写し            %3\n")
                     .arg(indexPath, hasStylesheet ? stylesheetPath : QStringLiteral("(なし)"),
                          copyPath)
                     .toUtf8());
    }
    if (htmlPath.isEmpty()) {
        return ExitOk;
    }
    if (!hasStylesheet) {
        PrintError(QStringLiteral("tovi index: この管理ファイルに合うスタイルシートがないため HTML を作れません"));
        return ExitNotLoaded;
    }
    // The copy's stylesheet stands beside it, as its href names it.
    const QString copied = MibParentDir(copyPath) + stylesheetPath.mid(stylesheetPath.lastIndexOf(QLatin1Char('/')) + 1);
    QByteArray html;
    QString error;
    if (!MibTransformXslt(copyPath, copied, html, &error)) {
        PrintError(QStringLiteral("tovi index: ") + error);
        return ExitNotLoaded;
    }
    if (!MibWriteFileAtomic(htmlPath, html, &error)) {
        PrintError(QStringLiteral("tovi index: %1 に書き込めません").arg(htmlPath));
        return ExitNotLoaded;
    }
    return ExitOk;
}
