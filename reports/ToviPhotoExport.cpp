#include "reports/ToviPhotoExport.h"

#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "platform/LumImage.h"
#include "platform/MibFile.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviUi.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>
#include <QVariantMap>

const QString ToviPhotoExport::SlideModeMessage_ =
    QStringLiteral("スライドモード中は写真の保存ができません。");
const QString ToviPhotoExport::NoPhotoMessage_ =
    QStringLiteral("出力可能な写真がありませんでした。");
const QString ToviPhotoExport::NothingToSaveMessage_ =
    QStringLiteral("保存可能な写真がありません。");
const QString ToviPhotoExport::SavedMessage_ = QStringLiteral("保存に成功しました。");
const QString ToviPhotoExport::SaveFailedMessage_ = QStringLiteral("保存に失敗しました。");
const QString ToviPhotoExport::ConflictMessage_ = QStringLiteral(
    "指定フォルダには出力ファイルと同名のファイルが存在します。\n別のフォルダを指定してください。");
const QString ToviPhotoExport::FolderTitle_ = QStringLiteral("フォルダの選択");
const QString ToviPhotoExport::ChoiceDialogName_ = QStringLiteral("ToviSelectOutputPhotoDlg");
const QString ToviPhotoExport::WorkedModeField_ = QStringLiteral("workedPhotoMode");

namespace {

QString& OutputFolder() {
    static QString folder;
    return folder;
}

const QString kViewerWorkFolder = QStringLiteral("QVフォトビューアー");

// Every occurrence of before in text becomes after; an empty before changes nothing.
void ReplaceAll(QString& text, const QString& before, const QString& after) {
    if (!before.isEmpty()) {
        text.replace(before, after);
    }
}

// The viewer's work folder, made when missing (its parent must exist); empty without one.
QString ViewerWorkFolder() {
    const QString suite = ToviEnvironment::SuiteFolder();
    if (suite.isEmpty()) {
        return QString();
    }
    const QString folder = suite + kViewerWorkFolder;
    QDir().mkdir(folder);
    return MibIsFolderExist(folder) ? folder : QString();
}

}  // namespace

QString GetOutputPhotoFolder() {
    return OutputFolder();
}

void SetOutputPhotoFolderPath(const QString& folder) {
    OutputFolder() = folder;
}

QString ToviPhotoExport::DoneMessage(int count, int copied, int failed) {
    return QStringLiteral(
               "処理を完了しました。\n\n対象枚数   ： %1枚\nコピー枚数： %2枚\n失敗枚数   ： %3枚")
        .arg(count)
        .arg(copied)
        .arg(failed);
}

ToviPhotoExport::ToviPhotoExport(ToviData& document, QWidget* parent)
    : document(document), parent(parent) {}

QString ToviPhotoExport::FileNameOf(const ToviPhoto& photo) const {
    return photo.GetTitle(
        document.GetItemDef()->GetIndexFromTitle(QStringLiteral("写真ファイル名")));
}

void ToviPhotoExport::OutputPhotos(bool slideMode) {
    if (slideMode) {
        ToviUi::Instance().MessageBox(parent, SlideModeMessage_, QString(), ToviUi::ButtonsOk,
                                      ToviUi::IconInformation);
        return;
    }
    if (document.GetCurrentPhotoCount() == 1) {
        OutputOnePhoto();
    } else {
        OutputAllPhoto();
    }
}

ToviPhotoExport::Counts ToviPhotoExport::OutputAllPhoto() {
    ToviUi& ui = ToviUi::Instance();
    Counts counts;
    counts.count = document.GetCurrentPhotoCount();
    const int n = counts.count;
    QStringList names;
    QStringList sources;
    for (int i = 0; i < n; ++i) {
        ToviPhoto* photo = document.GetPhoto(i);
        names.append(FileNameOf(*photo));
        sources.append(photo->GetImagePath());
    }
    // A value that is not a bare file name names no file: it is neither tested nor copied,
    // so nothing lands outside the chosen folder.
    QList<bool> usable;
    for (const QString& name : names) {
        usable.append(MibIsPlainFileName(name));
    }

    QString folder = GetOutputPhotoFolder();
    QString target;
    for (;;) {
        QString chosen = folder;
        if (!ui.BrowseForFolder(parent, FolderTitle_, chosen)) {
            return counts;
        }
        // The target of each photograph is the previous one's path with the previous name
        // replaced by the next, all through the path's text.
        target = MibNormalDir(chosen) + (n > 0 ? names[0] : QString());
        bool conflict = false;
        for (int i = 0; i < n && !conflict; ++i) {
            if (i > 0) {
                ReplaceAll(target, names[i - 1], names[i]);
            }
            conflict = usable[i] && QFileInfo::exists(target);
        }
        if (!conflict) {
            SetOutputPhotoFolderPath(chosen);
            break;
        }
        folder = chosen;
        ui.MessageBox(parent, ConflictMessage_, QString(), ToviUi::ButtonsOk,
                      ToviUi::IconInformation);
    }
    if (n > 0) {
        ReplaceAll(target, names[n - 1], names[0]);
    }
    for (int i = 0; i < n; ++i) {
        if (i > 0) {
            ReplaceAll(target, names[i - 1], names[i]);
        }
        if (usable[i] && MibCopyFileKeepStatus(sources[i], target)) {
            ++counts.copied;
        }
    }
    counts.failed = n - counts.copied;
    counts.done = true;
    ui.MessageBox(parent, DoneMessage(counts.count, counts.copied, counts.failed), QString(),
                  ToviUi::ButtonsOk, ToviUi::IconInformation);
    return counts;
}

QString ToviPhotoExport::AskFileName(const ToviPhoto& photo) const {
    const QString name = FileNameOf(photo);
    const bool svg = name.endsWith(QLatin1String(".SVG"));
    const QString filter =
        svg ? QStringLiteral("SVG(*.SVG *.svg)") : QStringLiteral("JPEG(*.JPG *.jpg)");
    const QString folder = GetOutputPhotoFolder();
    const QString proposed = folder.isEmpty() ? name : MibNormalDir(folder) + name;
    return ToviUi::Instance().GetSaveFileName(parent, QString(), proposed, filter);
}

bool ToviPhotoExport::Finish(const QString& path, bool saved) const {
    ToviUi::Instance().MessageBox(parent, saved ? SavedMessage_ : SaveFailedMessage_, QString(),
                                  ToviUi::ButtonsOk,
                                  saved ? ToviUi::IconInformation : ToviUi::IconError);
    SetOutputPhotoFolderPath(path.left(path.lastIndexOf(QLatin1Char('/'))));
    return saved;
}

bool ToviPhotoExport::OutputOnePhoto() {
    ToviPhoto* photo = document.GetCurrentPhotoCount() > 0 ? document.GetPhoto(0) : nullptr;
    if (!photo) {
        ToviUi::Instance().MessageBox(parent, NoPhotoMessage_, QString(), ToviUi::ButtonsOk,
                                      ToviUi::IconInformation);
        return false;
    }
    const QString path = AskFileName(*photo);
    if (path.isEmpty()) {
        return false;
    }
    return Finish(path, MibCopyFileKeepStatus(photo->GetImagePath(), path));
}

bool ToviPhotoExport::SaveFromCorrection(ToviPhoto* photo, const LumImage& corrected, bool changed,
                                         bool shown, bool slideMode, bool checkPhoto) {
    return SaveFromCorrection(
        photo, [&corrected] { return corrected; }, changed, shown, slideMode, checkPhoto);
}

bool ToviPhotoExport::SaveFromCorrection(ToviPhoto* photo,
                                         const std::function<LumImage()>& corrected, bool changed,
                                         bool shown, bool slideMode, bool checkPhoto) {
    ToviUi& ui = ToviUi::Instance();
    if (slideMode) {
        ui.MessageBox(parent, SlideModeMessage_, QString(), ToviUi::ButtonsOk,
                      ToviUi::IconInformation);
        return false;
    }
    if (!photo) {
        if (checkPhoto) {
            ui.MessageBox(parent, NothingToSaveMessage_, QString(), ToviUi::ButtonsOk,
                          ToviUi::IconInformation);
        }
        return false;
    }
    bool worked = false;
    if (changed && shown) {
        QVariantMap values{{WorkedModeField_, true}};
        if (!ui.RunDialog(parent, ChoiceDialogName_, values)) {
            return false;
        }
        worked = values.value(WorkedModeField_, true).toBool();
    }
    const QString path = AskFileName(*photo);
    if (path.isEmpty()) {
        return false;
    }
    const bool saved = worked ? corrected().Save(path, LumImageJpeg, 2)
                              : MibCopyFileKeepStatus(photo->GetImagePath(), path);
    return Finish(path, saved);
}

bool ToviSvgThumbnail(const QString& svgPath, QString& outPath) {
    const QString folder = ViewerWorkFolder();
    if (folder.isEmpty()) {
        return false;
    }
    outPath = folder + QLatin1Char('/') + MibGetFileTitle(svgPath) + QStringLiteral("_thumb.jpg");
    // A folder in the way goes when it is empty; a file there is a thumbnail of an earlier time.
    if (QFileInfo(outPath).isDir()) {
        QDir().rmdir(outPath);
    }
    if (QFileInfo::exists(outPath)) {
        return true;
    }
    return LumImage::SaveSvgAsJpeg(svgPath, outPath, 128, 128);
}

bool ToviSvgToHtml(const QString& svgPath, QString& htmlPath) {
    const QString folder = ViewerWorkFolder();
    if (folder.isEmpty()) {
        return false;
    }
    const QString title = MibGetFileTitle(svgPath);
    htmlPath = folder + QLatin1Char('/') + title + QStringLiteral(".htm");
    if (QFileInfo::exists(htmlPath)) {
        return true;
    }
    if (!MibIsFileExist(svgPath)) {
        return false;
    }
    const QString source =
        QUrl::fromLocalFile(QFileInfo(svgPath).absoluteFilePath()).toString(QUrl::FullyEncoded);
    const QString page =
        QStringLiteral(
            "<!DOCTYPE html>\n<html lang=\"ja\">\n<head>\n<meta charset=\"UTF-8\">\n"
            "<title>%1</title>\n<style>html,body{margin:0;background:#fff}"
            "img{display:block;max-width:100%;height:auto;margin:0 auto}</style>\n</head>\n"
            "<body>\n<img src=\"%2\" alt=\"%1\">\n</body>\n</html>\n")
            .arg(title.toHtmlEscaped(), source.toHtmlEscaped());
    return MibWriteFileAtomic(htmlPath, page.toUtf8());
}
