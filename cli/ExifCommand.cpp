// tovi exif FILE [--json]: the Exif groups and the file facts of one image file, as the
// property dialog and the information lists see them.

#include "cli/CliCommon.h"
#include "cli/JsonWriter.h"

#include "document/ToviPhoto.h"
#include "imagefacts/ToviExifGroups.h"

#include <QFileInfo>

namespace {

void WriteExifJson(bool hasExif, const ToviExifInfo& exif, const ToviPhoto& photo) {
    JsonWriter json;
    json.BeginObject();
    json.Key("hasExif");
    json.Value(hasExif);
    json.Key("groups");
    json.BeginObject();
    for (const ToviExifGroup& group : kToviExifGroups) {
        json.Key(group.key);
        json.BeginArray();
        for (const ToviTextPair& pair : (exif.*group.pairs)()) {
            json.BeginArray();
            json.Value(pair.GetItem());
            json.Value(pair.GetValue());
            json.EndArray();
        }
        json.EndArray();
    }
    json.EndObject();
    json.Key("file");
    json.BeginObject();
    for (const char* title : kToviFileFactTitles) {
        QString value;
        photo.GetFileInfoFromTitle(QString::fromUtf8(title), value);
        json.Key(title);
        json.Value(value);
    }
    json.EndObject();
    json.EndObject();
    json.Finish();
}

QByteArray ExifText(const QString& path, bool hasExif, const ToviExifInfo& exif,
                    const ToviPhoto& photo) {
    QString out = path + QLatin1Char('\n');
    out += hasExif ? QStringLiteral("Exif あり\n") : QStringLiteral("Exif なし\n");
    for (const ToviExifGroup& group : kToviExifGroups) {
        out += QStringLiteral("[%1]\n").arg(QString::fromUtf8(group.heading));
        for (const ToviTextPair& pair : (exif.*group.pairs)()) {
            out += QStringLiteral("  %1: %2\n").arg(pair.GetItem(), pair.GetValue());
        }
    }
    out += QStringLiteral("[ファイル]\n");
    for (const char* title : kToviFileFactTitles) {
        QString value;
        photo.GetFileInfoFromTitle(QString::fromUtf8(title), value);
        out += QStringLiteral("  %1: %2\n").arg(QString::fromUtf8(title), value);
    }
    return out.toUtf8();
}

}  // namespace

int RunExif(QStringList args) {
    bool json = false;
    QStringList rest;
    for (const QString& a : args) {
        if (a == QLatin1String("--json")) {
            json = true;
        } else if (a.startsWith(QLatin1String("--"))) {
            PrintError(QStringLiteral("tovi exif: 不明なオプション %1").arg(a));
            return ExitUsage;
        } else {
            rest.append(a);
        }
    }
    if (rest.size() != 1) {
        PrintError(QStringLiteral("tovi exif: 画像ファイルを 1 つ指定してください"));
        return ExitUsage;
    }
    const QFileInfo info(rest.first());
    if (!info.isFile()) {
        PrintError(QStringLiteral("tovi exif: ファイル %1 がありません").arg(rest.first()));
        return ExitNotLoaded;
    }
    const QString path = info.absoluteFilePath();
    ToviPhoto photo(path);
    // Asked first, as the viewer does: an SVG photograph's main image is written out here.
    const bool hasExif = photo.CheckExif();
    const ToviExifInfo& exif = photo.GetExif();
    if (json) {
        WriteExifJson(hasExif, exif, photo);
    } else {
        PrintOut(ExifText(path, hasExif, exif, photo));
    }
    return ExitOk;
}
