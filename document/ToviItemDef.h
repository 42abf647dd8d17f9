#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

// The delivery family the host names when it opens a delivery. The underlying type is fixed
// so that a number from outside (a profile, a caller's int) outside 0..3 is still a value
// the reader can refuse, not undefined behaviour.
enum PhotoXMLType : int {
    PhotoXMLMlit = 0,   // 国交省
    PhotoXMLKowan = 1,  // KOWAN: the 国交省 tables, stylesheets of its own
    PhotoXMLMaff = 2,   // 農水省
    PhotoXMLNexco = 3,  // NEXCO
};

// The document's error type: what reading the definitions and the load found.
enum PhotoXMLReadErr {
    ReadErrNoItemFile = 0,       // READITEM.XML isn't beside the program
    ReadErrUnknownPhotoXml = 1,  // PHOTO.XML can't be opened or its DOCTYPE isn't known
    ReadErrNoPhotos = 2,         // the load found no photograph
    ReadErrDefinition = 3,       // the program path is unknown or READITEM.XML unreadable
    ReadErrNone = 4,
};

// One element of a delivery kind's list in READITEM.XML.
struct Definition {
    enum Grade {
        GradeNone = 0,
        GradeRequired = 1,
        GradeConditional = 2,
        GradeOptional = 3,
        GradeLinked = 4
    };
    enum ShowSituation { ShowNot = 0, ShowMainList = 1, ShowInfoDlg = 2, ShowZoomDlg = 3 };
    enum DataCount {
        CountZero = 0,
        CountOne = 1,
        CountZeroOrOne = 2,
        CountZeroOrMore = 3,
        CountOneOrMore = 4
    };
    enum TreeStep { StepChild = 0, StepNext = 1, StepParent = 2 };
    enum ReadKind { ReadNotItem = 0, ReadMngItem = 1, ReadPhotoItem = 2 };

    QString title;
    int grade = GradeNone;
    int show = ShowNot;
    int count = CountZero;
    int operation = StepNext;
    bool blockPlural = false;
    int readType = ReadNotItem;
    QByteArray titleUtf8;  // the title as the XML tree spells tag names, for fast matching
};

// Which kind of delivery a PHOTO.XML is, and that kind's list of definitions read from
// READITEM.XML in the program's data folder (beside the program in a build).
class ToviItemDef {
public:
    static const QString PhotoFileTypeSection_;  // "PhotoFileType"
    static const QString TypeEntry_;             // "Type"

    ToviItemDef() = default;

    // The whole read: finds READITEM.XML, recognises PHOTO.XML in dataPath (the folder that
    // holds it) and reads the matching section.
    PhotoXMLReadErr Load(const QString& dataPath, PhotoXMLType type);
    PhotoXMLReadErr ReadPhotoDef(const QString& dataPath);

    int GetCount() const { return static_cast<int>(definitions.size()); }
    bool IsEmpty() const { return definitions.isEmpty(); }
    const Definition& GetDef(int index) const;
    const Definition& operator[](int index) const { return GetDef(index); }
    // The first definition with exactly this title, or -1.
    int GetIndexFromTitle(const QString& title) const;
    // The caption item of a photograph: 1 "写真ファイル日本語名", 2 "写真タイトル",
    // anything else "写真ファイル名".
    int GetIndexFromEnum(int titleShowType) const;
    QString GetTitleFromIndex(int index) const;
    Definition::ShowSituation GetShowSituationFromIndex(int index) const;
    PhotoXMLType GetXMLType() const { return type; }
    bool HasKeyPhoto() const { return hasKeyPhoto; }
    void SetRootPath(const QString& dataPath);
    // True when this delivery is of the same kind as the one opened before it.
    bool TypeIsCorresponding() const { return newType == oldType; }

    QString ReadItemPath() const { return readItemPath; }
    QString ParentPath() const { return parentPath; }
    // The data folder READITEM.XML and XSLPLATE/ are read from (MibProgramFolder).
    QString ProgramPath() const { return programPath; }
    QString NewType() const { return newType; }
    QString OldType() const { return oldType; }

    // Where READITEM.XML is looked for instead of the program's folder (tests, tools);
    // empty returns to the program's folder.
    static void SetProgramPathOverride(const QString& folder);

    // ---- the index file and its stylesheet (ToviItemDefIndex.cpp) ----
    // Finds the delivery's index file in the parent folder (the last "INDEX_*.XML" by name,
    // else the last "PHOTO_*.XML") and the stylesheet for its DOCTYPE line and this family:
    // the program folder's "XSLPLATE/" and the table's path, or the program folder alone when
    // the tables have no row for it. A file that cannot be read, or has no DOCTYPE line of an
    // index, leaves stylesheetPath as it was.
    void GetPathAndName(QString& indexPath, QString& stylesheetPath) const;
    // The table path (such as "MLIT/INDE_C05.XSL") for a DOCTYPE line and a family; empty
    // when the line is no index DOCTYPE or the tables have no row for it.
    static QString StylesheetFor(const QByteArray& doctypeLine, PhotoXMLType family);
    // Every path the tables name, and the one path of the families' lists that no DTD reaches.
    static QStringList AllStylesheets();
    // Copies the index file into the suite folder's "IndexCopy" with its stylesheet line
    // pointing at stylesheetPath's file name, beside which the stylesheet and the index's DTD
    // are copied too. Answers the copy's path, or empty when it could not be made.
    static QString MakeIndexCopy(const QString& indexPath, const QString& stylesheetPath);

private:
    bool InitializeData(const QString& dataPath, PhotoXMLType type);
    bool Load();
    bool Save(const QString& section);
    bool ReadDef(const QString& section, QList<Definition>& out);
    QString GetRootTagNamePhoto(const QString& dataPath);
    void IndexTitles();

    PhotoXMLType type = PhotoXMLMlit;
    QString readItemPath;
    QString parentPath;
    QList<Definition> definitions;
    QList<Definition> spareDefinitions;  // emptied with the first list; nothing fills it
    QString programPath;
    bool hasKeyPhoto = false;
    QString newType;
    QString oldType;
    QHash<QString, int> titleIndex;  // title -> first definition index
};
