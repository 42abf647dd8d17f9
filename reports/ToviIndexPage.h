#pragma once

#include <QByteArray>
#include <QString>

class ToviData;

// The page a delivery's index file (INDEX_*.XML) makes through its stylesheet: the summary of
// the work and the media, for the viewer to show and the command line to write out.
class ToviIndexPage {
public:
    enum Result {
        Made,
        NoIndexFile,   // no INDEX_*.XML or PHOTO_*.XML above the photograph folder
        NoDoctype,     // the file names neither 工事 nor 業務 data
        NoCopy,        // the copy could not be made in the work folder
        NoStylesheet,  // the delivery tables have no stylesheet for its DTD
        TransformFailed
    };

    // Makes the copy of the index file (kept by the document) and the page of it.
    Result Make(ToviData& document);

    const QString& IndexPath() const { return indexPath; }
    const QString& StylesheetPath() const { return stylesheetPath; }
    const QString& CopyPath() const { return copyPath; }
    const QByteArray& Html() const { return html; }
    // One sentence saying why no page was made, for the user; empty after Made.
    QString Message(Result result) const;

private:
    QString indexPath;
    QString stylesheetPath;
    QString copyPath;
    QString parentPath;
    QString transformError;
    QByteArray html;
};
