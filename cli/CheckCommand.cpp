// tovi check DIR [--family N] [--types 0,2,1] [--json]: the tamper check of every photograph
// of a delivery, through the verifier libraries found beside the program.

#include "cli/CliCommon.h"
#include "cli/JsonWriter.h"

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "imagefacts/ToviImageCheckCommon.h"
#include "imagefacts/ToviJacicImageChecker.h"
#include "imagefacts/ToviRicohImageChecker.h"
#include "platform/ToviVerifierLibrary.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace {

const char* const kResultNames[] = {"未判定", "加工なし", "加工あり", "不明"};

struct Verifier {
    QString baseName;
    QList<int> types;  // the chosen types this library serves
    QString path;      // empty when it isn't in the program folder
    bool loads = false;
    QString error;
};

bool ParseTypes(QStringList& args, QString& types) {
    const qsizetype at = args.indexOf(QStringLiteral("--types"));
    if (at < 0) {
        return true;
    }
    // At most ten types: the document reads no more than 19 characters of the setting.
    static const QRegularExpression kTypes(QStringLiteral("^[0-2](,[0-2]){0,9}$"));
    if (at + 1 >= args.size() || !kTypes.match(args[at + 1]).hasMatch()) {
        PrintError(QStringLiteral(
            "tovi check: --types には 0, 1, 2 を「,」で区切って指定してください (例 0,2,1)"));
        return false;
    }
    types = args[at + 1];
    args.remove(at, 2);
    return true;
}

// The libraries the chosen types need, in the order first needed, and whether each is there
// and loads.
QList<Verifier> ProbeVerifiers(const QList<int>& types) {
    QList<Verifier> verifiers;
    for (const int type : types) {
        const QString baseName = type == ToviImageCheckCommon::CameraRicohG600
                                     ? ToviRicohImageChecker::LibraryName_
                                     : ToviJacicImageChecker::LibraryName_;
        auto it = std::find_if(verifiers.begin(), verifiers.end(),
                               [&](const Verifier& v) { return v.baseName == baseName; });
        if (it == verifiers.end()) {
            Verifier verifier;
            verifier.baseName = baseName;
            verifier.path = ToviVerifierLibrary::Find(baseName);
            if (!verifier.path.isEmpty()) {
                ToviVerifierLibrary library;
                verifier.loads = library.Load(verifier.path);
                verifier.error = library.ErrorString();
            }
            verifiers.append(verifier);
            it = verifiers.end() - 1;
        }
        if (!it->types.contains(type)) {
            it->types.append(type);
        }
    }
    return verifiers;
}

QString TypeList(const QList<int>& types) {
    QStringList words;
    for (const int type : types) {
        words.append(QString::number(type));
    }
    return words.join(QLatin1Char(','));
}

void ReportVerifiers(const QList<Verifier>& verifiers) {
    const QString folder = ToviVerifierLibrary::ProgramPath();
    for (const Verifier& verifier : verifiers) {
        const QString file = ToviVerifierLibrary::FileName(verifier.baseName);
        if (verifier.path.isEmpty()) {
            PrintError(QStringLiteral("tovi check: 検証ライブラリ %1 がプログラムのフォルダ %2 に"
                                      "ないため、種類 %3 の検知は行いません")
                           .arg(file, folder, TypeList(verifier.types)));
        } else if (!verifier.loads) {
            PrintError(QStringLiteral("tovi check: 検証ライブラリ %1 を読み込めないため、種類 %2 の"
                                      "検知は行いません (%3)")
                           .arg(verifier.path, TypeList(verifier.types), verifier.error));
        }
    }
}

struct Result {
    int index;
    QString imagePath;
    int result;
};

void WriteResultsJson(const QList<int>& types, const QList<Verifier>& verifiers,
                      const QList<Result>& results, const std::array<int, 4>& counts) {
    JsonWriter json;
    json.BeginObject();
    json.Key("types");
    json.BeginArray();
    for (const int type : types) {
        json.Value(type);
    }
    json.EndArray();
    json.Key("verifiers");
    json.BeginArray();
    for (const Verifier& verifier : verifiers) {
        json.BeginObject();
        json.Key("library");
        json.Value(ToviVerifierLibrary::FileName(verifier.baseName));
        json.Key("types");
        json.BeginArray();
        for (const int type : verifier.types) {
            json.Value(type);
        }
        json.EndArray();
        json.Key("state");
        json.Value(verifier.path.isEmpty() ? QStringLiteral("missing")
                   : verifier.loads        ? QStringLiteral("loaded")
                                           : QStringLiteral("unloadable"));
        json.Key("path");
        json.Value(verifier.path);
        json.EndObject();
    }
    json.EndArray();
    json.Key("results");
    json.BeginArray();
    for (const Result& result : results) {
        json.BeginObject();
        json.Key("index");
        json.Value(result.index);
        json.Key("imagePath");
        json.Value(result.imagePath);
        json.Key("result");
        json.Value(result.result);
        json.EndObject();
    }
    json.EndArray();
    json.Key("counts");
    json.BeginObject();
    for (int result = 0; result < 4; ++result) {
        json.Key(QByteArray::number(result).constData());
        json.Value(counts[result]);
    }
    json.EndObject();
    json.EndObject();
    json.Finish();
}

QByteArray ResultsText(const QList<Result>& results, const std::array<int, 4>& counts) {
    QString out;
    for (const Result& result : results) {
        out += QStringLiteral("%1\t%2 %3\t%4\n")
                   .arg(result.index)
                   .arg(result.result)
                   .arg(QString::fromUtf8(kResultNames[result.result]), result.imagePath);
    }
    QStringList parts;
    for (int result = 0; result < 4; ++result) {
        parts.append(QStringLiteral("%1 %2: %3 枚")
                         .arg(result)
                         .arg(QString::fromUtf8(kResultNames[result]))
                         .arg(counts[result]));
    }
    out += QStringLiteral("結果: ") + parts.join(QStringLiteral(", ")) + QLatin1Char('\n');
    return out.toUtf8();
}

}  // namespace

int RunCheck(QStringList args) {
    OpenOptions options;
    QString chosenTypes;
    if (!ParseTypes(args, chosenTypes) || !ParseOpenOptions(args, options, "check")) {
        return ExitUsage;
    }
    if (!args.isEmpty()) {
        PrintError(QStringLiteral("tovi check: 不明な引数 %1").arg(args.first()));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }

    // The settings write themselves back to the profile when they end: the check runs on a
    // changed copy and the user's own setting is put back before anything ends.
    const ToviPhotoCtrlVisualSetting saved = document->GetVisualSetting();
    {
        ToviPhotoCtrlVisualSetting checking = saved;
        checking.SetDoEditCheck(true);
        if (!chosenTypes.isEmpty()) {
            checking.SetEditCheckTypes(chosenTypes);
        }
        document->SetVisualSetting(checking, true);
    }
    const QList<int> types =
        ToviData::ParseEditCheckTypes(document->GetVisualSetting().GetEditCheckTypes());
    const QList<Verifier> verifiers = ProbeVerifiers(types);
    ReportVerifiers(verifiers);
    const bool anyVerifier = document->GetImageCheck()->GetProcessorCount() > 0;

    QList<Result> results;
    std::array<int, 4> counts{};
    for (int index = 0; index < document->GetTotalCountPhoto(); ++index) {
        ToviPhoto* photo = document->GetPhotoActualPhotoArray(index);
        document->CheckEditJPEG(photo);
        const int result = photo->GetEditChkResult();
        ++counts[result];
        results.append({index, photo->GetImagePath(), result});
    }
    document->SetVisualSetting(saved, false);

    if (options.json) {
        WriteResultsJson(types, verifiers, results, counts);
    } else {
        PrintOut(ResultsText(results, counts));
    }
    if (!anyVerifier) {
        // The check ran and its answer is "unknown" for every photograph; the results say so,
        // and this line says why.
        PrintError(
            QStringLiteral("tovi check: 使える検証ライブラリがないため、どの写真も判定"
                           "できません (結果はすべて 3 不明)"));
    }
    return ExitOk;
}
