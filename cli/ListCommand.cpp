#include "cli/CliCommon.h"
#include "cli/CliSelection.h"
#include "cli/JsonWriter.h"

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

int RunList(QStringList args) {
    SelectionOptions list;
    OpenOptions options;
    if (!ParseTreeType(args, list.type, "list") || !ParseSelectionOptions(args, list, "list") ||
        !ParseOpenOptions(args, options, "list")) {
        return ExitUsage;
    }
    if (!args.isEmpty()) {
        PrintError(QStringLiteral("tovi list: 不明な引数 %1").arg(args.first()));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }
    if (const int exit = ApplySelection(*document, list, "list"); exit != ExitOk) {
        return exit;
    }

    const int titleIndex =
        document->GetItemDef()->GetIndexFromEnum(ToviPhotoCtrlVisualSetting::TitlePhotoTitle);
    const ToviPhotoRef& current = document->CurrentArray();
    if (options.json) {
        JsonWriter json;
        json.BeginObject();
        json.Key("current");
        json.BeginArray();
        for (int index : current) {
            json.Value(index);
        }
        json.EndArray();
        json.Key("titles");
        json.BeginArray();
        for (int index : current) {
            json.Value(document->GetPhotoActualPhotoArray(index)->GetTitle(titleIndex));
        }
        json.EndArray();
        json.EndObject();
        json.Finish();
    } else {
        QString text = QStringLiteral("%1枚\n").arg(current.size());
        for (int index : current) {
            ToviPhoto* photo = document->GetPhotoActualPhotoArray(index);
            text += QStringLiteral("%1  %2  %3\n")
                        .arg(index, 6)
                        .arg(photo->GetImagePath().section(QLatin1Char('/'), -1),
                             photo->GetTitle(titleIndex));
        }
        PrintOut(text.toUtf8());
    }
    return ExitOk;
}
