#pragma once

#include "platform/LumJpegFacts.h"
#include "platform/MibPathResolver.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>

#include <map>
#include <optional>

class ToviData;
class ToviPhoto;

// What the checks read: the document, the photo folder with its listings, and the work
// period of the delivery's index file. Made on the thread that runs the checks; it only reads
// the document (no lazy look-up of a photograph's paths, which would store them).
class ToviCheckContext {
public:
    struct Period {
        QDate start;
        QDate end;
    };
    explicit ToviCheckContext(const ToviData& document);

    const ToviData& Document() const { return document; }
    int PhotoCount() const { return photoCount; }
    const ToviPhoto& Photo(int index) const;
    // The folder that holds PHOTO.XML, ending in '/'.
    const QString& PhotoFolder() const { return photoFolder; }
    // Every definition index with this title (an element may stand in several places).
    QList<int> DefinitionsTitled(const QString& title) const;
    QString DefinitionTitle(int defIndex) const;
    // 工期開始日 to 工期終了日 under 工事件名等 of the index file, when both are real dates.
    const std::optional<Period>& WorkPeriod() const { return period; }

    // The entries of a sub-folder of the photo folder ("PIC", "DRA"), found regardless of
    // case and listed once; an empty listing when it is missing. folderName receives the
    // sub-folder's name as on the disc.
    const MibPathResolver::Listing& Folder(const QString& name, QString* folderName = nullptr);

    // LumReadJpegHeader of path with its header bytes, read once however many checks of the
    // photograph ask: the last file read is kept until another is asked for.
    bool JpegHeader(const QString& path, LumJpegFacts* facts, QByteArray* header = nullptr);

private:
    void ReadWorkPeriod();

    const ToviData& document;
    int photoCount = 0;
    QString photoFolder;
    std::optional<Period> period;
    struct FolderListing {
        QString name;
        MibPathResolver::Listing listing;
    };
    std::map<QString, FolderListing> folders;  // stable: Folder hands out references
    struct JpegRead {
        QString path;
        bool ok = false;
        LumJpegFacts facts;
        QByteArray header;
    };
    JpegRead lastJpeg;
};
