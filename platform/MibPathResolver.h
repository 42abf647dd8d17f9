#pragma once

#include <QHash>
#include <QSet>
#include <QString>

// Finds the files a delivery names under its folder as they lie on the disc, and keeps them
// inside it. A path that is not there as written is looked up again without regard to case
// (media written on Windows), one listing per folder, kept until the root changes. A path
// whose real place, symbolic links followed, is not inside the sub-folder of the root it
// names (PIC/, DRA/) names no file. Nothing is asked of the file system before the first
// Resolve.
class MibPathResolver {
public:
    MibPathResolver() = default;
    explicit MibPathResolver(const QString& root) { SetRoot(root); }

    // The delivery's folder; forgets every listing.
    void SetRoot(const QString& root);
    const QString& Root() const { return root; }
    // Forgets every listing (the disc may have changed).
    void Clear();

    // For root + "PIC/name" and the like: the path on the disc when the file is found inside
    // its sub-folder; the path as given when nothing matches (a missing file); empty when the
    // path leads outside, or does not lie under the root at all.
    QString Resolve(const QString& path) const;

    // Whether path names a regular file, links followed, as MibIsFileExist answers. A path
    // straight in a sub-folder of the root that is no link is answered from the listings:
    // found as written and a regular file, or not; a sub-folder missing in every spelling
    // holds nothing. Links, folders that cannot be read and anything else are asked of the
    // disc. Meant for paths as Resolve gives them, whose spelling is already the disc's;
    // like every answer here it holds until the root is set again or Clear is called.
    bool IsFile(const QString& path) const;

    // A folder's entries: each name as written with its kind (a regular file that is no
    // link, a symbolic link, anything else), and on first need the names by case-folded
    // form; of names that fold alike, the first in code order.
    struct Listing {
        enum Kind : unsigned char { Other, File, Link };
        QHash<QString, Kind> entries;
        bool read = false;  // whether the folder could be opened at all
        const QHash<QString, QString>& Folded() const;

    private:
        mutable QHash<QString, QString> folded;
        mutable bool foldedMade = false;
    };
    static Listing List(const QString& folder);

private:
    const QString& CanonicalRoot() const;
    // The real place of a sub-folder of the root, ending in '/'; empty when it is missing or
    // lies outside the root.
    const QString& AreaOf(const QString& folder) const;

    QString root;  // ends in '/'
    mutable QString canonicalRoot;
    mutable bool rootKnown = false;
    mutable QHash<QString, QString> areas;
    const Listing& ListingOf(const QString& folder) const;
    mutable QHash<QString, Listing> listings;  // by folder as resolved, ending in '/'
};

// Every entry of folder by its case-folded name; of names that fold alike, the first in code
// order, so that the choice does not depend on the order the file system lists them in.
QHash<QString, QString> MibListFoldedNames(const QString& folder);
