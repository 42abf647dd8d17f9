#include "cli/CliCommon.h"
#include "cli/JsonWriter.h"

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "imagefacts/ToviControlValueArray.h"

namespace {

// Items as {def, title, value}; titles holds each definition's title in UTF-8, encoded once.
void WriteItems(JsonWriter& json, const QList<QByteArray>& titles, const ToviItemArray& items) {
    json.BeginArray();
    for (const ToviItem& item : items) {
        const int index = item.GetDefIndex();
        json.BeginObject();
        json.Key("def");
        json.Value(index);
        json.Key("title");
        json.Value(index >= 0 && index < titles.size() ? QByteArrayView(titles[index])
                                                       : QByteArrayView());
        json.Key("value");
        json.Value(item.Value());
        json.EndObject();
    }
    json.EndArray();
}

// [[name, design, actual, difference], ...]; null when the text does not parse, so that a
// script tells a text to be shown as it stands from one without values.
void WriteControlValues(JsonWriter& json, const ToviPhoto& photo) {
    ToviControlValueArray rows;
    if (!photo.GetControlValueArray(rows)) {
        json.Null();
        return;
    }
    json.BeginArray();
    for (const ToviControlValueRow& row : rows) {
        json.BeginArray();
        json.Value(row.name);
        json.Value(row.design);
        json.Value(row.actual);
        json.Value(row.difference);
        json.EndArray();
    }
    json.EndArray();
}

void WriteInfoJson(const OpenOptions& options, ToviData& document) {
    const ToviItemDef* def = document.GetItemDef();
    QList<QByteArray> titles;
    for (int i = 0; i < def->GetCount(); ++i) {
        titles.append(def->GetDef(i).title.toUtf8());
    }
    JsonWriter json;
    json.BeginObject();
    json.Key("folder");
    json.Value(options.folder);
    json.Key("family");
    json.Value(static_cast<int>(options.family));
    json.Key("errorType");
    json.Value(static_cast<int>(document.GetErrorType()));
    json.Key("section");
    json.Value(def->NewType());
    json.Key("hasKeyPhoto");
    json.Value(def->HasKeyPhoto());
    json.Key("definitions");
    json.BeginArray();
    for (int i = 0; i < def->GetCount(); ++i) {
        const Definition& d = def->GetDef(i);
        json.BeginObject();
        json.Key("title");
        json.Value(d.title);
        json.Key("grade");
        json.Value(d.grade);
        json.Key("show");
        json.Value(d.show);
        json.Key("count");
        json.Value(d.count);
        json.Key("operation");
        json.Value(d.operation);
        json.Key("blockPlural");
        json.Value(d.blockPlural);
        json.Key("readType");
        json.Value(d.readType);
        json.EndObject();
    }
    json.EndArray();
    json.Key("managementItems");
    WriteItems(json, titles, *document.GetMngItemPhoto());
    json.Key("photos");
    json.BeginArray();
    const ToviPhotoArray& photos = *document.GetPhotoDataArray();
    for (qsizetype index = 0; index < photos.size(); ++index) {
        ToviPhoto* photo = photos[index];
        json.BeginObject();
        json.Key("index");
        json.Value(static_cast<int>(index));
        json.Key("imagePath");
        json.Value(photo->GetImagePath());
        json.Key("picturePaths");
        json.BeginArray();
        for (const QString& path : photo->PicturePaths()) {
            json.Value(path);
        }
        json.EndArray();
        json.Key("items");
        WriteItems(json, titles, photo->GetItems());
        json.Key("controlValues");
        WriteControlValues(json, *photo);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    json.Finish();
}

QByteArray InfoText(ToviData& document) {
    const ToviItemDef* def = document.GetItemDef();
    const ToviPhotoArray& photos = *document.GetPhotoDataArray();
    int drawings = 0;
    for (const ToviPhoto* photo : photos) {
        drawings += photo->GetPictureCount();
    }
    QString text;
    text += QStringLiteral("PHOTO.XML: %1\n").arg(document.Title());
    text += QStringLiteral("基準: %1%2\n")
                .arg(def->NewType(),
                     def->HasKeyPhoto() ? QStringLiteral(" (代表写真あり)") : QString());
    text += QStringLiteral("写真: %1枚  参考図: %2件  項目定義: %3件  管理項目: %4件\n")
                .arg(photos.size())
                .arg(drawings)
                .arg(def->GetCount())
                .arg(document.GetMngItemPhoto()->size());
    if (photos.isEmpty()) {
        text += QStringLiteral("写真がありません\n");
    }
    const int titleIndex = def->GetIndexFromTitle(QStringLiteral("写真タイトル"));
    const int workIndex = def->GetIndexFromTitle(QStringLiteral("工種"));
    const int dateIndex = def->GetIndexFromTitle(QStringLiteral("撮影年月日"));
    const qsizetype shown = std::min<qsizetype>(photos.size(), 10);
    for (qsizetype i = 0; i < shown; ++i) {
        ToviPhoto* photo = photos[i];
        const QString name = photo->GetImagePath().section(QLatin1Char('/'), -1);
        text += QStringLiteral("  %1  %2  %3  %4  %5\n")
                    .arg(i, 5)
                    .arg(name, photo->GetTitle(dateIndex), photo->GetTitle(workIndex),
                         photo->GetTitle(titleIndex));
    }
    if (photos.size() > shown) {
        text += QStringLiteral("  … ほか %1枚\n").arg(photos.size() - shown);
    }
    return text.toUtf8();
}

}  // namespace

int RunInfo(QStringList args) {
    OpenOptions options;
    if (!ParseOpenOptions(args, options, "info")) {
        return ExitUsage;
    }
    if (!args.isEmpty()) {
        PrintError(QStringLiteral("tovi info: 不明な引数 %1").arg(args.first()));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }
    if (options.json) {
        WriteInfoJson(options, *document);
    } else {
        PrintOut(InfoText(*document));
    }
    return ExitOk;
}
