// tovi validate DIR [--family N] [--json] [--xlsx FILE] [--no-images]: the delivery checks,
// their findings grouped by photograph and a count per severity, and with --xlsx the same
// findings as a print-ready sheet. Findings are written as the checks make them, so that a
// delivery faulty in every photograph is reported in bounded memory.
// tovi validate DIR --dates: the date table of every photograph as CSV instead.

#include "cli/CliCommon.h"
#include "cli/JsonWriter.h"

#include "checks/ToviDateTable.h"
#include "checks/ToviDeliveryChecker.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "reports/ToviFindingSheet.h"

#include <array>
#include <numeric>
#include <optional>

namespace {

// Writes each finding on at once and counts them by severity.
class WritingSink : public ToviFindingSink {
public:
    WritingSink(const ToviData& document, bool json) : document(document) {
        if (json) {
            this->json.emplace();
            this->json->BeginObject();
            this->json->Key("findings");
            this->json->BeginArray();
        }
        fileTitle = document.GetItemDef()->GetIndexFromTitle(QStringLiteral("写真ファイル名"));
    }

    void Add(ToviCheckFinding finding) override {
        ++counts[finding.severity];
        if (json) {
            WriteJson(finding);
        } else {
            WriteText(finding);
        }
    }

    void Finish() {
        if (json) {
            json->EndArray();
            json->Key("counts");
            json->BeginObject();
            for (const auto severity :
                 {ToviCheckFinding::Error, ToviCheckFinding::Warning, ToviCheckFinding::Note}) {
                json->Key(ToviCheckFinding::SeverityName(severity));
                json->Value(counts[severity]);
            }
            json->EndObject();
            json->EndObject();
            json->Finish();
            return;
        }
        text += QStringLiteral("結果: エラー %1 件, 警告 %2 件, 注意 %3 件\n")
                    .arg(counts[ToviCheckFinding::Error])
                    .arg(counts[ToviCheckFinding::Warning])
                    .arg(counts[ToviCheckFinding::Note]);
        PrintOut(text.toUtf8());
        text.clear();
    }

    int Errors() const { return counts[ToviCheckFinding::Error]; }

private:
    void WriteJson(const ToviCheckFinding& f) {
        json->BeginObject();
        json->Key("code");
        json->Value(f.code);
        json->Key("severity");
        json->Value(ToviCheckFinding::SeverityName(f.severity));
        json->Key("index");
        if (f.index >= 0) {
            json->Value(f.index);
        } else {
            json->Null();
        }
        for (const auto& [key, value] : {std::pair{"file", &f.file}, std::pair{"item", &f.item}}) {
            json->Key(key);
            if (!value->isEmpty()) {
                json->Value(*value);
            } else {
                json->Null();
            }
        }
        json->Key("message");
        json->Value(f.message);
        json->EndObject();
    }

    // One heading per photograph with findings, its findings below it; those about no
    // photograph come last from the checker, under a heading of their own.
    void WriteText(const ToviCheckFinding& f) {
        if (f.index != heading) {
            heading = f.index;
            if (f.index < 0) {
                text += QStringLiteral("写真以外\n");
            } else {
                const ToviPhoto* photo = document.GetPhotoActualPhotoArray(f.index);
                const QString name = photo ? photo->GetTitle(fileTitle) : QString();
                text += QStringLiteral("写真 %1%2\n")
                            .arg(f.index)
                            .arg(name.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(name));
            }
        }
        QString where = f.item;
        if (!f.file.isEmpty()) {
            where = where.isEmpty() ? f.file : where + QLatin1Char(' ') + f.file;
        }
        text += QStringLiteral("  %1 %2%3: %4\n")
                    .arg(ToviCheckFinding::SeverityLabel(f.severity), QLatin1String(f.code),
                         where.isEmpty() ? QString() : QLatin1Char(' ') + where, f.message);
        if (text.size() > 1 << 15) {
            PrintOut(text.toUtf8());
            text.clear();
        }
    }

    const ToviData& document;
    std::optional<JsonWriter> json;
    QString text;
    int heading = -2;
    int fileTitle = -1;
    std::array<int, ToviCheckFinding::kSeverityCount> counts{};
};

// Hands each finding to the output and to the sheet.
class TeeSink : public ToviFindingSink {
public:
    TeeSink(ToviFindingSink& first, ToviFindingSink& second) : first(first), second(second) {}
    void Add(ToviCheckFinding finding) override {
        second.Add(finding);
        first.Add(std::move(finding));
    }

private:
    ToviFindingSink& first;
    ToviFindingSink& second;
};

}  // namespace

int RunValidate(QStringList args) {
    OpenOptions options;
    const bool noImages = args.removeAll(QStringLiteral("--no-images")) > 0;
    QString xlsx;
    if (const qsizetype at = args.indexOf(QStringLiteral("--xlsx")); at >= 0) {
        if (at + 1 >= args.size() || args[at + 1].isEmpty() ||
            args[at + 1].startsWith(QLatin1String("--"))) {
            PrintError(QStringLiteral(
                "tovi validate: --xlsx に書き出す .xlsx ファイルを指定してください"));
            return ExitUsage;
        }
        xlsx = args[at + 1];
        args.remove(at, 2);
    }
    const bool dates = args.removeAll(QStringLiteral("--dates")) > 0;
    if (!ParseOpenOptions(args, options, "validate")) {
        return ExitUsage;
    }
    if (!args.isEmpty()) {
        PrintError(QStringLiteral("tovi validate: 不明な引数 %1").arg(args.first()));
        return ExitUsage;
    }
    if (dates && (options.json || noImages || !xlsx.isEmpty())) {
        PrintError(
            QStringLiteral("tovi validate: --dates は --json、--xlsx、--no-images と"
                           "一緒に使えません"));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }
    if (dates) {
        QList<int> all(document->GetTotalCountPhoto());
        std::iota(all.begin(), all.end(), 0);
        ToviDateTable table;
        table.Build(*document, all);
        PrintOut(ToviDateTable::Csv(table.Rows()));
        return ExitOk;
    }
    const std::unique_ptr<ToviDeliveryChecker> checker = ToviDeliveryChecker::Standard(!noImages);
    WritingSink sink(*document, options.json);
    ToviFindingSheet sheet(*document);
    TeeSink both(sink, sheet);
    checker->Run(*document, xlsx.isEmpty() ? static_cast<ToviFindingSink&>(sink) : both);
    sink.Finish();
    if (QString error; !xlsx.isEmpty() && !sheet.Write(xlsx, &error)) {
        PrintError(QStringLiteral("tovi validate: ") + error);
        return ExitNotLoaded;
    }
    return sink.Errors() > 0 ? ExitNotLoaded : ExitOk;
}
