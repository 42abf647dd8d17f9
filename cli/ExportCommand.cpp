// tovi export: copies the chosen photographs into a folder, as the save button does for many.

#include "cli/CliCommon.h"
#include "cli/CliSelection.h"
#include "cli/JsonWriter.h"

#include "document/ToviData.h"
#include "reports/ToviPhotoExport.h"

#include <QDir>
#include <QFileInfo>

int RunExport(QStringList args) {
    const qsizetype at = args.indexOf(QStringLiteral("--out"));
    if (at < 0 || at + 1 >= args.size()) {
        PrintError(QStringLiteral("tovi export: --out に出力先のフォルダを指定してください"));
        return ExitUsage;
    }
    const QString folder = QDir(args[at + 1]).absolutePath();
    args.remove(at, 2);
    SelectionOptions selection;
    OpenOptions options;
    if (!ParseTreeType(args, selection.type, "export") ||
        !ParseSelectionOptions(args, selection, "export", true) ||
        !ParseOpenOptions(args, options, "export")) {
        return ExitUsage;
    }
    if (!args.isEmpty()) {
        PrintError(QStringLiteral("tovi export: 不明な引数 %1").arg(args.first()));
        return ExitUsage;
    }
    if (!QFileInfo(folder).isDir()) {
        PrintError(QStringLiteral("tovi export: フォルダ %1 がありません").arg(folder));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }
    if (const int exit = ApplySelection(*document, selection, "export"); exit != ExitOk) {
        return exit;
    }
    ToviPhotoExport::Counts counts;
    {
        // Messages go to standard error; a folder refused for a name already there is not
        // asked for again, and nothing is copied.
        CliUi ui(QString(), folder);
        counts = ToviPhotoExport(*document).OutputAllPhoto();
    }
    if (!counts.done) {
        return ExitNotLoaded;
    }
    if (options.json) {
        JsonWriter json;
        json.BeginObject();
        json.Key("count");
        json.Value(counts.count);
        json.Key("copied");
        json.Value(counts.copied);
        json.Key("failed");
        json.Value(counts.failed);
        json.EndObject();
        json.Finish();
    } else {
        PrintOut(QStringLiteral("対象 %1 枚、コピー %2 枚、失敗 %3 枚\n")
                     .arg(counts.count)
                     .arg(counts.copied)
                     .arg(counts.failed)
                     .toUtf8());
    }
    return ExitOk;
}
