#include "cli/CliCommon.h"

#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"

#include <QCoreApplication>

int RunInfo(QStringList args);
int RunTree(QStringList args);
int RunList(QStringList args);
int RunExif(QStringList args);
int RunCheck(QStringList args);
int RunExam(QStringList args);
int RunLabel(QStringList args);
int RunReport(QStringList args);
int RunExport(QStringList args);
int RunIndex(QStringList args);
int RunValidate(QStringList args);

namespace {

const char kUsage[] =
    "使い方: tovi [--profile FILE] COMMAND ...\n"
    "  tovi info DIR [--family N] [--json]   PHOTO.XML "
    "のあるフォルダを開き、読み込んだ内容を表示する\n"
    "    --family N   発注者区分: 0 国交省 (既定), 1 港湾, 2 農水省, 3 NEXCO\n"
    "    --json       結果を JSON で出力する\n"
    "  tovi tree DIR [--family N] [--type 0|1|2] [--json]   分類ツリーを表示する\n"
    "    --type   0 工種 (写真-大分類・写真区分つき, 既定), 1 撮影箇所, 2 工種のみ\n"
    "  tovi list DIR [--family N] [--type T] [--node P | --label N] [抽出条件...] [--sort KEY "
    "[--desc]] [--json]\n"
    "    --node P          子の位置 (例 0/2/1) のノードを選ぶ (既定はルート)\n"
    "    --label N         付箋 N (0 OK, 1-3 NG, 4 コメント, 5 任意) の写真を選ぶ\n"
    "    抽出条件: --key-photo --ng --not-checked --no-exif --required-missing\n"
    "              --item 項目名=値 (3 つまで; 値 【未記入】 は空の値) --date FROM..TO\n"
    "              --date-kind 0|1 (0 撮影年月日, 1 ファイル更新日) --or (いずれかに合う写真)\n"
    "  tovi exif FILE [--json]   画像ファイルの Exif 情報とファイル情報を表示する\n"
    "  tovi check DIR [--family N] [--types 0,2,1] [--json]   すべての写真の画像加工検知を行い、\n"
    "    写真ごとの結果 (0 未判定, 1 加工なし, 2 加工あり, 3 不明) と結果ごとの枚数を表示する\n"
    "    --types T   検知タイプを並べた順に試す: 0 RICOH G800/G700/G600, 2 RICOH G900,\n"
    "                1 小黒板電子化 (既定は保存された設定)。検証ライブラリ RVRFYJPG / JACICCHS は\n"
    "                プログラムのフォルダから読み込む\n"
    "    --json      {\"types\", \"verifiers\": [{\"library\", \"types\", \"state\", \"path\"}],\n"
    "                 \"results\": [{\"index\", \"imagePath\", \"result\"}], \"counts\": {\"0\".. "
    "\"3\"}}\n"
    "    使える検証ライブラリが一つもないときは、すべて 3 を表示し、終了コード 0 で終わる\n"
    "  tovi exam DIR --record FILE [--family N] [--json]   検査状況ファイルを読み込み、写真ごとの\n"
    "    付箋とコメントを表示する (--json: {\"photos\": [{\"index\", \"comment\", \"labels\"}]})\n"
    "  tovi label DIR --record FILE [--paste I:L]... [--remove I:L]... [--comment I=TEXT]...\n"
    "             [--with-paths] [--family N]   検査状況ファイルがあれば読み込み、写真番号 I に\n"
    "    付箋 L (0-5) を貼る・はがす、コメントを設定して保存する (--with-paths: "
    "写真ファイルパスも書く)\n"
    "  tovi report DIR --out FILE.xlsx [--record FILE] [--type T] [--node P | --label N]\n"
    "             [抽出条件...] [--sort KEY [--desc]] [--family N]   選んだ写真の検査結果を\n"
    "    印刷用の EXCEL ファイルに書き出す (--record: 付箋とコメントを検査状況ファイルから読む)。\n"
    "    書き出せなかったときは既存のファイルをそのまま残し、終了コード 1 で終わる\n"
    "  tovi export DIR --out FOLDER [--record FILE] [選択と抽出の指定...] [--json]   選んだ写真を\n"
    "    ファイルの日時と属性ごとフォルダにコピーし、対象・コピー・失敗の枚数を表示する\n"
    "    (--json: {\"count\", \"copied\", \"failed\"})。同名のファイルがフォルダにあれば何も\n"
    "    コピーせず、終了コード 1 で終わる\n"
    "  tovi index DIR [--family N] [--html FILE] [--json]   管理ファイル (INDEX_*.XML) と\n"
    "    そのスタイルシート、スタイルシートを指すように書き換えた写しのパスを表示する\n"
    "    (--json: {\"indexPath\", \"stylesheetPath\", \"copyPath\"})。--html: 写しを\n"
    "    スタイルシートで変換したページを FILE に書き出す\n"
    "  tovi validate DIR [--family N] [--json] [--xlsx FILE] [--no-images]\n"
    "    納品データを検査し、指摘を写真ごとにまとめ、重大度ごとの件数とともに表示する\n"
    "    (撮影年月日、代表写真、提出頻度写真、シリアル番号、JIS X 0208 にない文字、\n"
    "    写真区分ごとに必要な項目、項目の文字数、PHOTO.XML の構造、写真・参考図ファイルの\n"
    "    有無と名前、指定のないファイル、画像の形式・破損・画素数、撮影日と Exif・ファイル\n"
    "    日時の照合、改ざん検知)。エラーがなければ終了コード 0、あれば 1\n"
    "    --json       {\"findings\": [{\"code\", \"severity\", \"index\", \"file\", \"item\",\n"
    "                 \"message\"}], \"counts\": {\"error\", \"warning\", \"note\"}}\n"
    "    --xlsx FILE  指摘を印刷用の EXCEL ファイルにも書き出す (テキストや --json の表示は\n"
    "                 そのまま)。書き出せなかったときは既存のファイルをそのまま残し、\n"
    "                 終了コード 1 で終わる\n"
    "    --no-images  画像を読む検査を行わない\n"
    "  tovi validate DIR --dates [--family N]   全写真の撮影年月日、Exif の撮影日時、\n"
    "    ファイルの更新日時を並べ、1 日を超える差に印を付けた表を CSV (UTF-8、BOM 付き)\n"
    "    で書き出す\n"
    "  --profile FILE   設定をこの INI ファイルに読み書きする\n"
    "終了コード: 0 読み込めた, 1 読み込めなかった, 2 使い方の誤り\n";

}  // namespace

int main(int argc, char** argv) {
    ToviTuneAllocator();
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
    if (command == QLatin1String("tree")) {
        return RunTree(args);
    }
    if (command == QLatin1String("list")) {
        return RunList(args);
    }
    if (command == QLatin1String("exif")) {
        return RunExif(args);
    }
    if (command == QLatin1String("check")) {
        return RunCheck(args);
    }
    if (command == QLatin1String("exam")) {
        return RunExam(args);
    }
    if (command == QLatin1String("label")) {
        return RunLabel(args);
    }
    if (command == QLatin1String("report")) {
        return RunReport(args);
    }
    if (command == QLatin1String("export")) {
        return RunExport(args);
    }
    if (command == QLatin1String("index")) {
        return RunIndex(args);
    }
    if (command == QLatin1String("validate")) {
        return RunValidate(args);
    }
    PrintError(QStringLiteral("tovi: 不明なコマンド %1 (tovi --help で使い方を表示)").arg(command));
    return ExitUsage;
}
