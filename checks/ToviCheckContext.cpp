#include "checks/ToviCheckContext.h"

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "platform/DoxDocument.h"
#include "platform/MibFile.h"

#include <QFileInfo>

namespace {

// A date of the index file as written there: CCYY-MM-DD, a real day.
QDate IndexDate(const QString& text) {
    const QString trimmed = text.trimmed();
    return trimmed.size() == 10 ? QDate::fromString(trimmed, Qt::ISODate) : QDate();
}

}  // namespace

ToviCheckContext::ToviCheckContext(const ToviData& document)
    : document(document),
      photoCount(document.GetTotalCountPhoto()),
      photoFolder(MibNormalDir(document.RootPath())) {
    if (!photoFolder.isEmpty() && !photoFolder.endsWith(QLatin1Char('/'))) {
        photoFolder += QLatin1Char('/');
    }
    ReadWorkPeriod();
}

const ToviPhoto& ToviCheckContext::Photo(int index) const {
    return *document.GetPhotoActualPhotoArray(index);
}

QList<int> ToviCheckContext::DefinitionsTitled(const QString& title) const {
    QList<int> indexes;
    const ToviItemDef& def = *document.GetItemDef();
    for (int i = 0; i < def.GetCount(); ++i) {
        if (def.GetDef(i).title == title) {
            indexes.append(i);
        }
    }
    return indexes;
}

QString ToviCheckContext::DefinitionTitle(int defIndex) const {
    const ToviItemDef& def = *document.GetItemDef();
    return defIndex >= 0 && defIndex < def.GetCount() ? def.GetDef(defIndex).title : QString();
}

void ToviCheckContext::ReadWorkPeriod() {
    QString indexPath;
    QString stylesheet;
    document.GetItemDef()->GetPathAndName(indexPath, stylesheet);
    // Only an ordinary file is read: a FIFO in the delivery's place would never answer.
    if (indexPath.isEmpty() || !QFileInfo(indexPath).isFile()) {
        return;
    }
    DoxDocument xml;
    if (!xml.Load(indexPath)) {
        return;
    }
    DoxIterator it(&xml);
    if (!it.Root()) {
        return;
    }
    // The period belongs to 工事件名等 directly under the root; a date of the same name
    // anywhere else is not the work's.
    if (!it.Child()) {
        return;
    }
    do {
        if (!it.IsTag(QByteArrayLiteral("工事件名等"))) {
            continue;
        }
        QDate start;
        QDate end;
        if (it.Child()) {
            do {
                if (it.IsTag(QByteArrayLiteral("工期開始日"))) {
                    start = IndexDate(it.GetText());
                } else if (it.IsTag(QByteArrayLiteral("工期終了日"))) {
                    end = IndexDate(it.GetText());
                }
            } while (it.NextSibling());
        }
        if (start.isValid() && end.isValid() && start <= end) {
            period = Period{start, end};
        }
        return;
    } while (it.NextSibling());
}

const MibPathResolver::Listing& ToviCheckContext::Folder(const QString& name, QString* folderName) {
    auto it = folders.find(name);
    if (it == folders.end()) {
        FolderListing found;
        found.name = name;
        // Media written on Windows may spell the folder in any case.
        if (!QFileInfo(photoFolder + name).isDir()) {
            const QHash<QString, QString> names = MibListFoldedNames(photoFolder);
            found.name = names.value(name.toCaseFolded(), name);
        }
        const QFileInfo info(photoFolder + found.name);
        // A folder that is a link is listed only when it stays inside the photo folder.
        const QString real = info.canonicalFilePath();
        const QString root = QFileInfo(photoFolder).canonicalFilePath();
        if (info.isDir() && !root.isEmpty() && real.startsWith(root + QLatin1Char('/'))) {
            found.listing = MibPathResolver::List(photoFolder + found.name);
        }
        it = folders.emplace(name, std::move(found)).first;
    }
    if (folderName) {
        *folderName = it->second.name;
    }
    return it->second.listing;
}

bool ToviCheckContext::JpegHeader(const QString& path, LumJpegFacts* facts, QByteArray* header) {
    if (lastJpeg.path != path) {
        lastJpeg.path = path;
        lastJpeg.facts = LumJpegFacts();
        lastJpeg.header.clear();
        lastJpeg.ok = LumReadJpegHeader(path, &lastJpeg.facts, &lastJpeg.header);
    }
    if (facts) {
        *facts = lastJpeg.facts;
    }
    if (header) {
        *header = lastJpeg.header;
    }
    return lastJpeg.ok;
}
