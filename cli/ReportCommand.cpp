// tovi report: writes the check report of the chosen photographs.

#include "cli/CliCommon.h"
#include "cli/CliSelection.h"

#include "document/ToviData.h"
#include "reports/ToviCheckStatusFileOut.h"

int RunReport(QStringList args) {
    QString output;
    const qsizetype at = args.indexOf(QStringLiteral("--out"));
    if (at < 0 || at + 1 >= args.size()) {
        PrintError(QStringLiteral("tovi report: --out に出力する .xlsx ファイルを指定してください"));
        return ExitUsage;
    }
    output = args[at + 1];
    args.remove(at, 2);
    SelectionOptions selection;
    OpenOptions options;
    if (!ParseTreeType(args, selection.type, "report") ||
        !ParseSelectionOptions(args, selection, "report", true) ||
        !ParseOpenOptions(args, options, "report")) {
        return ExitUsage;
    }
    if (!args.isEmpty()) {
        PrintError(QStringLiteral("tovi report: 不明な引数 %1").arg(args.first()));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }
    if (const int exit = ApplySelection(*document, selection, "report"); exit != ExitOk) {
        return exit;
    }
    // The message of the outcome goes to standard error, as a message box would show it.
    CliUi ui(output);
    ToviCheckStatusFileOut report(*document, *document->GetLabelManager());
    return report.FileOut(QStringLiteral("検査結果出力")) ? ExitOk : ExitNotLoaded;
}
