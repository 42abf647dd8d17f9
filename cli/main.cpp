#include "cli/CliCommon.h"

#include "platform/ToviProfile.h"

#include <QCoreApplication>

int RunInfo(QStringList args);

namespace {

const char kUsage[] =
    "使い方: tovi [--profile FILE] COMMAND ...\n"
    "  tovi info DIR [--family N] [--json]   PHOTO.XML のあるフォルダを開き、読み込んだ内容を表示する\n"
    "    --family N   発注者区分: 0 国交省 (既定), 1 港湾, 2 農水省, 3 NEXCO\n"
    "    --json       結果を JSON で出力する\n"
    "  --profile FILE   設定をこの INI ファイルに読み書きする\n"
    "終了コード: 0 読み込めた, 1 読み込めなかった, 2 使い方の誤り\n";

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    if (args.size() >= 2 && args[0] == QLatin1String("--profile")) {
        ToviProfile::Instance().UseFile(args[1]);
        args = args.mid(2);
    }
    if (args.isEmpty() || args[0] == QLatin1String("--help") || args[0] == QLatin1String("-h")) {
        PrintOut(kUsage);
        return args.isEmpty() ? ExitUsage : ExitOk;
    }
    const QString command = args.takeFirst();
    if (command == QLatin1String("info")) {
        return RunInfo(args);
    }
    PrintError(QStringLiteral("tovi: 不明なコマンド %1 (tovi --help で使い方を表示)").arg(command));
    return ExitUsage;
}
