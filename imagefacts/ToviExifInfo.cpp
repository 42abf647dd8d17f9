#include "imagefacts/ToviExifInfo.h"

#include "platform/LumImage.h"
#include "platform/MibFile.h"
#include "platform/ToviEnvironment.h"

#include <QFile>

namespace {

const QString kUnknown = QStringLiteral("(不明)");

struct Row {
    int code;
    const char* title;  // UTF-8
};

// The rows of each group in reading order. Their positions are what the look-ups by title
// go by, so a row is never added in the middle.
constexpr Row kDateRows[] = {
    {LumCmntDateTime, "ファイル変更日時"},
    {LumCmntDateTimeOriginal, "撮影日時"},
    {LumCmntDateTimeDigitized, "ディジタルデータの作成日時"},
};
constexpr Row kImageRows[] = {
    {LumCmntImageSize, "大きさ"},
    {LumCmntPixelCount, "総画素数"},
};
// clang-format off
constexpr Row kMakerRows[] = {
    {LumCmntMake, "画像入力機器のメーカー名"},
    {LumCmntModel, "画像入力機器のモデル名"},
    {LumCmntSoftware, "使用ソフトウェア名"},
    {LumCmntArtist, "作者名"},
    {LumCmntCopyright, "撮影著作権者/編集著作権者"},
};
// clang-format on
constexpr Row kFormatRows[] = {
    {LumCmntExifVersion, "Exifバージョン"},
};
constexpr Row kShootRows[] = {
    {LumCmntExposureTime, "露出時間"},
    {LumCmntShutterSpeedValue, "シャッタースピード"},
    {LumCmntApertureValue, "絞り値"},
    {LumCmntExposureBiasValue, "露光補正値"},
    {LumCmntMaxApertureValue, "レンズ最小F値"},
    {LumCmntMeteringMode, "測光方式"},
    {LumCmntFlash, "フラッシュ"},
    {LumCmntFocalLength, "レンズの焦点距離"},
    {LumCmntFNumber, "Fナンバー"},
};
constexpr Row kGpsRows[] = {
    {LumCmntGPSLatitude, "緯度"},
    {LumCmntGPSLongitude, "経度"},
    {LumCmntGPSAltitude, "高度"},
};

// The extension is compared case included: a lower-case ".svg" photograph is read as it
// stands and so has no Exif here. Intended; the tamper check is the one that ignores case.
bool IsSvg(const QString& path) {
    return MibGetExt(path) == QLatin1String("SVG");
}

}  // namespace

void ToviExifInfo::Clear() {
    // The image group stays as it is. Intended.
    path.clear();
    loaded = false;
    date.clear();
    maker.clear();
    format.clear();
    shoot.clear();
    gps.clear();
    mainImagePath.clear();
}

void ToviExifInfo::Load(const QString& file) {
    Clear();
    if (IsSvg(file)) {
        SetMainImagePath(file);
        path = mainImagePath;
    } else {
        path = file;
    }
    if (path.isEmpty()) {
        return;  // not loaded, so the next call tries again
    }
    const auto read = [this](const auto& rows, ToviTextPairArray& out) {
        Packs packs;
        for (const Row& row : rows) {
            packs.push_back(std::make_unique<Pack>(row.code, QString::fromUtf8(row.title)));
        }
        Load(path, packs, out);
    };
    read(kDateRows, date);
    read(kImageRows, *image);
    read(kMakerRows, maker);
    read(kFormatRows, format);
    read(kShootRows, shoot);
    read(kGpsRows, gps);
    loaded = true;
}

void ToviExifInfo::Load(const QString& path, const Packs& packs, ToviTextPairArray& out) {
    out.clear();
    out.reserve(static_cast<qsizetype>(packs.size()));
    for (const auto& pack : packs) {
        QString text;
        if (!LumImage::GetComment(path, pack->code, text)) {
            text = kUnknown;
        }
        out.append(ToviTextPair(pack->title, text));
    }
}

void ToviExifInfo::SetMainImagePath(const QString& svgPath) {
    if (!IsSvg(svgPath)) {
        return;
    }
    mainImagePath.clear();
    const QString suite = ToviEnvironment::SuiteFolder();
    if (suite.isEmpty()) {
        return;
    }
    const QString folder = MibNormalDir(suite + QStringLiteral("QVフォトビューアー"));
    // The work folder may not exist yet on a fresh machine; a folder that cannot be made
    // shows up later as a missing work file, so as "(不明)" values.
    if (!MibIsFolderExist(folder)) {
        MibCreateDirectory(folder);
    }
    // Photographs of one file title share the work file; each overwrites it when its Exif
    // is asked for.
    mainImagePath = folder + MibGetFileTitle(svgPath) + QStringLiteral("_Exif.JPEG");
}

void ToviExifInfo::MakeMainImageFromSvg(const QString& svgPath) {
    if (!IsSvg(svgPath)) {
        return;
    }
    SetMainImagePath(svgPath);
    if (mainImagePath.isEmpty()) {
        return;
    }
    // An SVG without a main image must not be answered from another photograph's work file.
    QFile::remove(mainImagePath);
    LumImage::GetMainImageFromSvg(svgPath, mainImagePath);
}
