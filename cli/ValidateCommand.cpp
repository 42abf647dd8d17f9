// tovi validate DIR [--family N] [--json] [--no-images]: the delivery checks, their findings
// grouped by photograph and a count per severity.

#include "cli/CliCommon.h"
#include "cli/JsonWriter.h"

#include "checks/ToviDeliveryChecker.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"

#include <array>

namespace {

void WriteJson(const ToviFindingCollector& findings) {
    JsonWriter json;
    json.BeginObject();
    json.Key("findings");
    json.BeginArray();
    for (const ToviCheckFinding& f : findings.Findings()) {
        json.BeginObject();
        json.Key("code");
        json.Value(f.code);
        json.Key("severity");
        json.Value(ToviCheckFinding::SeverityName(f.severity));
        json.Key("index");
        if (f.index >= 0) {
            json.Value(f.index);
        } else {
            json.Null();
        }
        json.Key("file");
        if (!f.file.isEmpty()) {
            json.Value(f.file);
        } else {
            json.Null();
        }
        json.Key("item");
        if (!f.item.isEmpty()) {
            json.Value(f.item);
        } else {
            json.Null();
        }
        json.Key("message");
        json.Value(f.message);
        json.EndObject();
    }
    json.EndArray();
    json.Key("counts");
    json.BeginObject();
    for (const auto severity :
         {ToviCheckFinding::Error, ToviCheckFinding::Warning, ToviCheckFinding::Note}) {
        json.Key(ToviCheckFinding::SeverityName(severity));
        json.Value(findings.Count(severity));
    }
    json.EndObject();
    json.EndObject();
    json.Finish();
}

// One heading per photograph with findings, its findings below it; those about no photograph
// last. Written out in pieces, so that a long list is never held whole as text.
void WriteText(const ToviData& document, const ToviFindingCollector& findings) {
    const int fileTitle =
        document.GetItemDef()->GetIndexFromTitle(QStringLiteral("写真ファイル名"));
    QString out;
    int heading = -2;
    for (const ToviCheckFinding& f : findings.Findings()) {
        if (f.index != heading) {
            heading = f.index;
            if (f.index < 0) {
                out += QStringLiteral("写真以外\n");
            } else {
                const ToviPhoto* photo = document.GetPhotoActualPhotoArray(f.index);
                const QString name = photo ? photo->GetTitle(fileTitle) : QString();
                out += QStringLiteral("写真 %1%2\n")
                           .arg(f.index)
                           .arg(name.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(name));
            }
        }
        QString where = f.item;
        if (!f.file.isEmpty()) {
            where = where.isEmpty() ? f.file : where + QLatin1Char(' ') + f.file;
        }
        out += QStringLiteral("  %1 %2%3: %4\n")
                   .arg(ToviCheckFinding::SeverityLabel(f.severity), QLatin1String(f.code),
                        where.isEmpty() ? QString() : QLatin1Char(' ') + where, f.message);
        if (out.size() > 1 << 15) {
            PrintOut(out.toUtf8());
            out.clear();
        }
    }
    out += QStringLiteral("結果: エラー %1 件, 警告 %2 件, 注意 %3 件\n")
               .arg(findings.Count(ToviCheckFinding::Error))
               .arg(findings.Count(ToviCheckFinding::Warning))
               .arg(findings.Count(ToviCheckFinding::Note));
    PrintOut(out.toUtf8());
}

}  // namespace

int RunValidate(QStringList args) {
    OpenOptions options;
    const bool noImages = args.removeAll(QStringLiteral("--no-images")) > 0;
    if (!ParseOpenOptions(args, options, "validate")) {
        return ExitUsage;
    }
    if (!args.isEmpty()) {
        PrintError(QStringLiteral("tovi validate: 不明な引数 %1").arg(args.first()));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }
    const std::unique_ptr<ToviDeliveryChecker> checker = ToviDeliveryChecker::Standard(!noImages);
    ToviFindingCollector findings;
    checker->Run(*document, findings);
    if (options.json) {
        WriteJson(findings);
    } else {
        WriteText(*document, findings);
    }
    return findings.Count(ToviCheckFinding::Error) > 0 ? ExitNotLoaded : ExitOk;
}
