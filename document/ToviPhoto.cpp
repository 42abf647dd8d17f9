#include "document/ToviPhoto.h"

#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "platform/MibFile.h"
#include "platform/MibPathResolver.h"
#include "platform/ToviCheck.h"

#include <QDateTime>
#include <QFileInfo>

namespace {

const QString kPicFolder = QStringLiteral("PIC/");
const QString kDraFolder = QStringLiteral("DRA/");

// A file-name value joined to its folder; a value that could reach outside the folder
// names no file (an empty path), so nothing outside the delivery is ever opened.
QString InsideFolder(const QString& folder, const QString& value) {
    return MibIsPlainFileName(value) ? folder + value : QString();
}

}  // namespace

ToviPhoto::ToviPhoto(const QString& path) : imagePath(path) {}

ToviPhoto::ToviPhoto(ToviData* document, const ToviItemArray& items)
    : items(items), document(document) {
    MakePath();
}

const ToviPhoto::PathTitles& ToviPhoto::TitlesForPaths(bool standAlone) const {
    static const PathTitles none;
    return document ? document->GetPathTitles(standAlone) : none;
}

void ToviPhoto::MakePath() {
    if (!document) {
        return;  // a loose image keeps the path it was made with
    }
    const bool standAlone = document->IsStandAlone();
    const PathTitles& titles = TitlesForPaths(standAlone);
    if (!standAlone) {
        FullPathWalk(titles);
        return;
    }
    const QString root = MibNormalDir(document->RootPath());
    if (rebuilding) {
        UpdateWalk(titles, root);
    } else {
        RelativeWalk(titles, root);
    }
}

void ToviPhoto::FullPathWalk(const PathTitles& titles) {
    imagePath.clear();
    picturePaths.clear();
    pathsResolved = true;  // the host's paths are the host's business
    for (const ToviItem& item : items) {
        const int defIndex = item.GetDefIndex();
        if (titles.drawings.contains(defIndex) && !item.Value().isEmpty()) {
            picturePaths.append(item.Value());
        }
        if (titles.photo >= 0 && defIndex == titles.photo) {
            imagePath = item.Value();
        }
    }
}

// Runs for every photograph during the load: text only, the disc is asked on first use.
void ToviPhoto::RelativeWalk(const PathTitles& titles, const QString& root) {
    imagePath.clear();
    picturePaths.clear();
    pathsResolved = false;
    for (const ToviItem& item : items) {
        const int defIndex = item.GetDefIndex();
        if (titles.drawings.contains(defIndex) && !item.Value().isEmpty()) {
            picturePaths.append(InsideFolder(root + kDraFolder, item.Value()));
        }
        if (titles.photo >= 0 && defIndex == titles.photo) {
            imagePath = InsideFolder(root + kPicFolder, item.Value());
        }
    }
}

// After a media change: files already found on an earlier disc keep their paths; the
// others move under the new root. A kept path that holds the value inside a longer name
// counts as found; that loose match is intended.
void ToviPhoto::UpdateWalk(const PathTitles& titles, const QString& root) {
    ResolvePaths();  // a path is kept only when its file is inside its own delivery
    if (!FileExists(imagePath)) {
        imagePath.clear();
    }
    QStringList kept;
    for (const QString& path : picturePaths) {
        if (FileExists(path)) {
            kept.append(path);
        }
    }
    picturePaths.clear();
    for (const ToviItem& item : items) {
        const int defIndex = item.GetDefIndex();
        const QString& value = item.Value();
        for (int drawing : titles.drawings) {
            if (drawing != defIndex) {
                continue;
            }
            if (value.isEmpty()) {
                break;
            }
            QString found;
            for (const QString& path : kept) {
                if (path.contains(value)) {
                    found = path;
                    break;
                }
            }
            picturePaths.append(
                found.isEmpty() ? ResolvedPath(InsideFolder(root + kDraFolder, value)) : found);
        }
        if (imagePath.isEmpty() && titles.photo >= 0 && defIndex == titles.photo) {
            imagePath = ResolvedPath(InsideFolder(root + kPicFolder, value));
        }
    }
}

bool ToviPhoto::FileExists(const QString& path) const {
    if (document && document->IsStandAlone()) {
        return document->GetPathResolver().IsFile(path);
    }
    return MibIsFileExist(path);
}

QString ToviPhoto::ResolvedPath(const QString& path) const {
    if (path.isEmpty() || !document || !document->IsStandAlone()) {
        return path;
    }
    const MibPathResolver& resolver = document->GetPathResolver();
    if (path.startsWith(resolver.Root())) {
        return resolver.Resolve(path);
    }
    // Built under an earlier root, a disc since changed: held to that delivery's folder,
    // two levels above the file (root, PIC/ or DRA/, name).
    return MibPathResolver(MibParentDir(MibParentDir(path))).Resolve(path);
}

void ToviPhoto::ResolvePaths() {
    if (pathsResolved) {
        return;
    }
    pathsResolved = true;
    imagePath = ResolvedPath(imagePath);
    for (QString& path : picturePaths) {
        path = ResolvedPath(path);
    }
}

QString ToviPhoto::ImageFile() const {
    return pathsResolved ? imagePath : ResolvedPath(imagePath);
}

const QString& ToviPhoto::GetImagePath() {
    if (imagePath.isEmpty() && !pathsResolved) {
        MakePath();
    }
    ResolvePaths();
    return imagePath;
}

void ToviPhoto::GetImagePath(QString& path) {
    path = GetImagePath();
}

void ToviPhoto::UpdateImagePath() {
    rebuilding = true;
    MakePath();
    rebuilding = false;
    *fileExists = FileExists(imagePath);
    if (*fileExists) {
        for (const QString& path : picturePaths) {
            if (!FileExists(path)) {
                *fileExists = false;
                break;
            }
        }
    }
}

void ToviPhoto::GetPicturePath(QStringList& out, int index) {
    out.clear();
    GetImagePath();
    if (!picturePaths.isEmpty() && index >= 0) {
        ToviCheckIndex(index, picturePaths.size(), "ToviPhoto::GetPicturePath");
        out.append(picturePaths[index]);
    }
}

void ToviPhoto::GetOutputFilename(QStringList& names) {
    if (!document) {
        return;
    }
    // Always the stand-alone titles: the question is which file names are missing.
    const PathTitles& titles = TitlesForPaths(true);
    ResolvePaths();
    QStringList collected;
    for (const QString& path : picturePaths) {
        if (FileExists(path)) {
            collected.append(path);
        }
    }
    for (const ToviItem& item : items) {
        const int defIndex = item.GetDefIndex();
        const QString& value = item.Value();
        for (int drawing : titles.drawings) {
            if (drawing != defIndex) {
                continue;
            }
            if (value.isEmpty()) {
                break;
            }
            // Not a substring test as in the update walk: a found drawing whose path doesn't
            // begin with the value ends the test, so when any drawing of the photograph
            // exists none of its drawing names is reported. Intended.
            bool report = true;
            for (const QString& path : collected) {
                if (path.indexOf(value) != 0) {
                    report = false;
                    break;
                }
            }
            if (report) {
                names.append(value);
            }
        }
        if (titles.photo >= 0 && defIndex == titles.photo && !value.isEmpty() &&
            !FileExists(imagePath)) {
            names.append(value);
        }
    }
}

QString ToviPhoto::GetTitle(int defIndex) const {
    for (const ToviItem& item : items) {
        if (item.GetDefIndex() == defIndex) {
            return item.Value();
        }
    }
    return QString();
}

bool ToviPhoto::GetTitle(int defIndex, QString& value) const {
    value = GetTitle(defIndex);
    return true;
}

void ToviPhoto::GetTitleFromIndex(int defIndex, QStringList& values) const {
    values.clear();
    for (const ToviItem& item : items) {
        if (item.GetDefIndex() == defIndex) {
            values.append(item.Value());
        }
    }
}

void ToviPhoto::GetTitleFromIndex(const QList<int>& defIndexes, QStringList& values) const {
    values.clear();
    for (int defIndex : defIndexes) {
        for (const ToviItem& item : items) {
            if (item.GetDefIndex() == defIndex) {
                values.append(item.Value());
                break;
            }
        }
    }
}

bool ToviPhoto::GetTextPairs(const ToviItemDef* def, ToviTextPairArray& pairs) const {
    pairs.clear();
    if (!def) {
        return false;
    }
    for (const ToviItem& item : items) {
        const Definition& d = def->GetDef(item.GetDefIndex());
        if (d.show == Definition::ShowMainList || d.show == Definition::ShowZoomDlg) {
            pairs.append(ToviTextPair(d.title, item.Value()));
        }
    }
    return !pairs.isEmpty();
}

bool ToviPhoto::LoadThumb() {
    if (loaded->thumbLoaded && !loaded->imageLoaded) {
        return true;  // in place, or tried once already since the last release
    }
    loaded->thumbLoaded = true;
    loaded->image.Clear();
    loaded->imageLoaded = false;
    return loaded->image.LoadThumb(GetImagePath());
}

bool ToviPhoto::LoadImage() {
    if (loaded->imageLoaded) {
        return true;
    }
    loaded->imageLoaded = loaded->image.Load(GetImagePath());
    return loaded->imageLoaded;
}

void ToviPhoto::ReleaseImage() {
    loaded->image.Clear();
    loaded->thumbLoaded = false;
    loaded->imageLoaded = false;
}

QString ToviPhoto::GetFileRenewalDate() {
    const QFileInfo info(GetImagePath());
    if (!info.isFile()) {
        return QString();
    }
    const QDate date = info.lastModified().toLocalTime().date();
    return QString::asprintf("%04d-%02d-%02d", date.year(), date.month(), date.day());
}

void ToviPhoto::PasteLabel(unsigned int label) {
    if (label < static_cast<unsigned int>(kLabelCount)) {
        labels[label] = true;
    }
}

void ToviPhoto::RemoveLabel(unsigned int label) {
    if (label < static_cast<unsigned int>(kLabelCount)) {
        labels[label] = false;
    }
}

void ToviPhoto::RemoveAllLabel() {
    labels.fill(false);
    comment.clear();
}

void ToviPhoto::CorrectAllOK() {
    labels[0] = true;
    labels[1] = labels[2] = labels[3] = false;
}

void ToviPhoto::CorrectAllNotCheck() {
    labels[0] = labels[1] = labels[2] = labels[3] = false;
}
