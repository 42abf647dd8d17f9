// The Exif and file facts of a photograph: the presence test, the cached Exif groups and the
// two look-ups by display title that feed the information lists.

#include "document/ToviPhoto.h"

#include "platform/LumImage.h"
#include "platform/MibFile.h"

#include <QDateTime>
#include <QFileInfo>
#include <QHash>

#include <chrono>
#include <optional>

namespace {

const QString kUnknown = QStringLiteral("(不明)");

using Group = const ToviTextPairArray& (ToviExifInfo::*)() const;

struct Place {
    Group group = nullptr;
    int row = 0;
};

// The Exif titles the item display settings offer, each with the group row it reads. They
// differ in wording from the group titles on purpose: the look-up goes by position. The
// settings offer "作者名" while this list says "作成者", so that item always shows empty;
// intended, as is "レンズ最少F値" here against "レンズ最小F値" in the group.
const QHash<QString, Place>& ExifTitles() {
    static const QHash<QString, Place> titles = [] {
        QHash<QString, Place> t;
        const auto add = [&t](const char* title, Group group, int row) {
            t.insert(QString::fromUtf8(title), Place{group, row});
        };
        add("ファイル変更日時", &ToviExifInfo::GetDate, 0);
        add("撮影日時", &ToviExifInfo::GetDate, 1);
        add("ディジタルデータの作成日時", &ToviExifInfo::GetDate, 2);
        add("幅×高さ(Exif)", &ToviExifInfo::GetImage, 0);
        add("総画素数(Exif)", &ToviExifInfo::GetImage, 1);
        add("画像入力機器のメーカー名", &ToviExifInfo::GetMaker, 0);
        add("画像入力機器のモデル名", &ToviExifInfo::GetMaker, 1);
        add("使用ソフトウェア名", &ToviExifInfo::GetMaker, 2);
        add("作成者", &ToviExifInfo::GetMaker, 3);
        add("撮影著作権者/編集著作権者", &ToviExifInfo::GetMaker, 4);
        add("Exifバージョン", &ToviExifInfo::GetFormat, 0);
        add("露出時間", &ToviExifInfo::GetShoot, 0);
        add("シャッタースピード", &ToviExifInfo::GetShoot, 1);
        add("絞り値", &ToviExifInfo::GetShoot, 2);
        add("露光補正値", &ToviExifInfo::GetShoot, 3);
        add("レンズ最少F値", &ToviExifInfo::GetShoot, 4);
        add("測光方式", &ToviExifInfo::GetShoot, 5);
        add("フラッシュ", &ToviExifInfo::GetShoot, 6);
        add("レンズの焦点距離", &ToviExifInfo::GetShoot, 7);
        add("Fナンバー", &ToviExifInfo::GetShoot, 8);
        add("緯度", &ToviExifInfo::GetGPS, 0);
        add("経度", &ToviExifInfo::GetGPS, 1);
        add("高度", &ToviExifInfo::GetGPS, 2);
        return t;
    }();
    return titles;
}

// The list view asks for every Exif cell of its rows in turn, and a look-up must stay a table
// look-up. The file system is asked whether the file still exists at most once per interval
// for the same path, so a file that goes away (a disc taken out) still empties its cells at
// the next redraw.
bool StillExists(const QString& path) {
    using Clock = std::chrono::steady_clock;
    constexpr auto kInterval = std::chrono::milliseconds(250);
    struct Memo {
        QString path;
        bool exists = false;
        Clock::time_point checked;
    };
    thread_local std::optional<Memo> memo;
    const Clock::time_point now = Clock::now();
    if (!memo || memo->path != path || now - memo->checked >= kInterval) {
        memo = Memo{path, MibIsFileExist(path), now};
    }
    return memo->exists;
}

QString LocalTime(const QDateTime& when) {
    return when.toLocalTime().toString(QStringLiteral("yyyy/MM/dd HH:mm:ss"));
}

// Pixel counts in units of 10,000 (万), rounded half up; smaller counts as they are.
QString PixelCount(qint64 pixels) {
    if (pixels >= 10000) {
        const qint64 units = pixels / 10000 + (pixels % 10000 >= 5000 ? 1 : 0);
        return QStringLiteral("%1万画素").arg(units);
    }
    return QStringLiteral("%1画素").arg(pixels);
}

// Read-only as the delivery's home system marks it: a read-only file that is also hidden
// (a dot file here) does not count. No owner write permission stands for the read-only mark.
bool IsPlainReadOnly(const QFileInfo& info) {
    const bool readOnly = !info.permission(QFileDevice::WriteOwner);
    const bool hidden = info.fileName().startsWith(QLatin1Char('.'));
    return readOnly && !hidden;
}

}  // namespace

bool ToviPhoto::CheckExif() {
    if (exifState != -1) {
        return exifState == 1;
    }
    const QString& path = GetImagePath();
    QString file = path;
    if (MibGetExt(path) == QLatin1String("SVG")) {
        exif->MakeMainImageFromSvg(path);
        file = exif->GetMainImagePath();
    }
    QString version;
    exifState = LumImage::GetComment(file, LumCmntExifVersion, version) ? 1 : 0;
    return exifState == 1;
}

void ToviPhoto::LoadExif() {
    const QString& path = GetImagePath();
    if (!exif->IsLoaded()) {
        exif->Load(path);
    }
}

const ToviExifInfo& ToviPhoto::GetExif() {
    if (!exif->IsLoaded()) {
        exif->Load(GetImagePath());
    }
    return *exif;
}

void ToviPhoto::GetExifInfoFromTitle(const QString& title, QString& value) const {
    value.clear();
    // No loading: the caller has called LoadExif.
    if (!StillExists(ImageFile())) {
        return;
    }
    const QHash<QString, Place>& titles = ExifTitles();
    const auto found = titles.constFind(title);
    if (found == titles.cend()) {
        return;
    }
    const ToviTextPairArray& group = ((*exif).*(found->group))();
    if (found->row >= group.size()) {
        return;  // not loaded
    }
    const QString& text = group[found->row].GetValue();
    if (text != kUnknown) {
        value = text;
    }
}

void ToviPhoto::GetFileInfoFromTitle(const QString& title, QString& value) const {
    value.clear();
    const QString file = ImageFile();
    if (file.isEmpty()) {
        return;
    }
    const QFileInfo info(file);
    if (!info.isFile()) {
        return;
    }
    if (title == QStringLiteral("幅×高さ")) {
        int width = 0;
        int height = 0;
        if (LumImage::GetCommentImageSize(file, width, height)) {
            value = QStringLiteral("%1×%2").arg(width).arg(height);
        }
    } else if (title == QStringLiteral("総画素数")) {
        int width = 0;
        int height = 0;
        if (LumImage::GetCommentImageSize(file, width, height)) {
            value = PixelCount(static_cast<qint64>(width) * height);
        }
    } else if (title == QStringLiteral("作成日時")) {
        // Not every file system keeps a birth time; the last status change comes nearest.
        const QDateTime born = info.birthTime();
        value = LocalTime(born.isValid() ? born : info.metadataChangeTime());
    } else if (title == QStringLiteral("最終更新日時")) {
        value = LocalTime(info.lastModified());
    } else if (title == QStringLiteral("ファイルサイズ")) {
        value = QString::number(static_cast<quint64>(info.size()) >> 10) + QStringLiteral(" KB");
    } else if (title == QStringLiteral("読み取り専用")) {
        value = IsPlainReadOnly(info) ? QStringLiteral("Yes") : QStringLiteral("No");
    }
}
