#include "document/ToviItemDef.h"

#include "platform/DoxDocument.h"
#include "platform/MibFile.h"
#include "platform/ToviCheck.h"
#include "platform/ToviProfile.h"

#include <QFile>

#include <array>

const QString ToviItemDef::PhotoFileTypeSection_ = QStringLiteral("PhotoFileType");
const QString ToviItemDef::TypeEntry_ = QStringLiteral("Type");

namespace {

QString& ProgramPathOverride() {
    static QString folder;
    return folder;
}

struct DtdRow {
    int family;  // 0 stands for families 0 and 1
    const char* dtd;
    const char* section;
    bool keyPhoto;
};

// Searched in this order within a family; each row is a substring test on the DOCTYPE line.
const std::array<DtdRow, 11> kDtdTable{{
    {0, "PHOTO.DTD", "国交省-11", false},
    {0, "PHOTO02.DTD", "国交省-14", false},
    {0, "PHOTO03.DTD", "国交省-16", true},
    {0, "PHOTO04.DTD", "国交省-18", true},
    {0, "PHOTO05.DTD", "国交省-20", true},
    {2, "PHOTO02N.DTD", "農水省-15", false},
    {2, "PHOTO03.DTD", "農水省-17", true},
    {2, "PHOTO05.DTD", "農水省-23", true},
    {3, "PHOTO02.DTD", "NEXCO-14", false},
    {3, "PHOTO03.DTD", "NEXCO-18", false},
    {3, "PHOTO04.DTD", "NEXCO-24", false},
}};

template <size_t N>
bool Lookup(const QString& text, const std::array<const char*, N>& words, int& value) {
    for (size_t i = 0; i < N; ++i) {
        if (text == QString::fromUtf8(words[i])) {
            value = static_cast<int>(i);
            return true;
        }
    }
    return false;
}

const std::array<const char*, 5> kGrades{"不要", "必須", "条件付き必須", "任意", "連携"};
const std::array<const char*, 4> kShows{"Not", "MainList", "InfoDlg", "ZoomDlg"};
const std::array<const char*, 5> kCounts{"0", "1", "0/1", "0+", "1+"};
const std::array<const char*, 3> kSteps{"Child", "Next", "Parent"};
const std::array<const char*, 3> kReadKinds{"NotItem", "MngItem", "PhotoItem"};

// Sets the field of the working record that tag names; a text outside the vocabulary
// leaves the field as it stood.
void SetField(Definition& d, const QString& tag, const QString& text) {
    if (tag == QStringLiteral("タイトル")) {
        d.title = text;
    } else if (tag == QStringLiteral("必要度")) {
        Lookup(text, kGrades, d.grade);
    } else if (tag == QStringLiteral("表示")) {
        Lookup(text, kShows, d.show);
    } else if (tag == QStringLiteral("データ数")) {
        Lookup(text, kCounts, d.count);
    } else if (tag == QStringLiteral("操作")) {
        Lookup(text, kSteps, d.operation);
    } else if (tag == QStringLiteral("ブロック複数")) {
        if (text == QStringLiteral("○")) {
            d.blockPlural = true;
        } else if (text == QStringLiteral("×")) {
            d.blockPlural = false;
        }
    } else if (tag == QStringLiteral("読込種別")) {
        Lookup(text, kReadKinds, d.readType);
    }
}

}  // namespace

void ToviItemDef::SetProgramPathOverride(const QString& folder) {
    ProgramPathOverride() = folder.isEmpty() ? QString() : MibNormalDir(folder);
}

PhotoXMLReadErr ToviItemDef::Load(const QString& dataPath, PhotoXMLType familyType) {
    if (!InitializeData(dataPath, familyType)) {
        return ReadErrDefinition;
    }
    if (!MibIsFileExist(readItemPath)) {
        return ReadErrNoItemFile;
    }
    return ReadPhotoDef(dataPath);
}

bool ToviItemDef::InitializeData(const QString& dataPath, PhotoXMLType familyType) {
    type = familyType;
    parentPath = MibParentDir(dataPath);
    programPath = ProgramPathOverride().isEmpty() ? MibProgramFolder(MibProgramFiles::Data)
                                                  : ProgramPathOverride();
    if (programPath.isEmpty()) {
        return false;
    }
    readItemPath = programPath + QStringLiteral("READITEM.XML");
    definitions.clear();
    spareDefinitions.clear();
    titleIndex.clear();
    return true;
}

PhotoXMLReadErr ToviItemDef::ReadPhotoDef(const QString& dataPath) {
    const QString section = GetRootTagNamePhoto(dataPath);
    if (section.isEmpty()) {
        return ReadErrUnknownPhotoXml;
    }
    return ReadDef(section, definitions) ? ReadErrNone : ReadErrDefinition;
}

QString ToviItemDef::GetRootTagNamePhoto(const QString& dataPath) {
    const QString xmlPath = MibResolveCase(dataPath, QStringLiteral("PHOTO.XML"));
    QFile file;
    if (!MibOpenRegularFile(file, xmlPath)) {
        return QString();
    }
    // The DOCTYPE line is plain ASCII in every encoding a delivery uses, so the bytes are
    // searched as they stand. Only the prolog is read: a huge file isn't read twice.
    QByteArray line;
    bool found = false;
    qint64 readSoFar = 0;
    constexpr qint64 kPrologLimit = 1 << 20;
    while (!file.atEnd() && readSoFar < kPrologLimit) {
        line = file.readLine(64 * 1024);
        readSoFar += line.size();
        if (line.contains("photodata SYSTEM")) {
            found = true;
            break;
        }
        if (line.contains("<photodata")) {
            break;  // the root element has begun: no DOCTYPE will follow
        }
    }
    file.close();
    Load();

    hasKeyPhoto = false;
    QString section;
    const int family = type == PhotoXMLKowan ? 0 : static_cast<int>(type);
    if (found && type >= 0 && type <= 3) {
        for (const DtdRow& row : kDtdTable) {
            if (row.family == family && line.contains(row.dtd)) {
                section = QString::fromUtf8(row.section);
                hasKeyPhoto = row.keyPhoto;
                break;
            }
        }
    }
    Save(section);
    return section;
}

bool ToviItemDef::Load() {
    oldType =
        ToviProfile::Instance().GetProfileString(PhotoFileTypeSection_, TypeEntry_, QString());
    return true;
}

bool ToviItemDef::Save(const QString& section) {
    newType = section;
    return ToviProfile::Instance().WriteProfileString(PhotoFileTypeSection_, TypeEntry_, section);
}

bool ToviItemDef::ReadDef(const QString& section, QList<Definition>& out) {
    DoxDocument doc;
    if (!doc.Initiate() || !doc.Load(readItemPath, false, nullptr)) {
        return false;
    }
    DoxIterator it(&doc);
    it.Root();
    if (it.GetTagName() == QStringLiteral("information")) {
        it.Child();
    }
    // One working record for the whole read: a record lacking a field inherits it from the
    // record before. That is how the file format is defined, so it is kept.
    Definition working;
    working.operation = Definition::StepNext;
    do {
        if (it.GetTagName() != section) {
            continue;
        }
        if (!it.Child()) {
            break;
        }
        do {
            if (it.GetTagName() != QStringLiteral("管理項目")) {
                continue;
            }
            if (it.Child()) {
                do {
                    SetField(working, it.GetTagName(), it.GetText());
                } while (it.NextSibling());
                it.Parent();
            }
            working.titleUtf8 = working.title.toUtf8();
            out.append(working);
        } while (it.NextSibling());
        it.Parent();
    } while (it.NextSibling());
    doc.Terminate();
    IndexTitles();
    return true;
}

void ToviItemDef::IndexTitles() {
    titleIndex.clear();
    titleIndex.reserve(definitions.size());
    for (qsizetype i = 0; i < definitions.size(); ++i) {
        if (!titleIndex.contains(definitions[i].title)) {
            titleIndex.insert(definitions[i].title, static_cast<int>(i));
        }
    }
}

const Definition& ToviItemDef::GetDef(int index) const {
    ToviCheckIndex(index, definitions.size(), "ToviItemDef::GetDef");
    return definitions[index];
}

int ToviItemDef::GetIndexFromTitle(const QString& title) const {
    return titleIndex.value(title, -1);
}

int ToviItemDef::GetIndexFromEnum(int titleShowType) const {
    switch (titleShowType) {
        case 1:
            return GetIndexFromTitle(QStringLiteral("写真ファイル日本語名"));
        case 2:
            return GetIndexFromTitle(QStringLiteral("写真タイトル"));
        default:
            return GetIndexFromTitle(QStringLiteral("写真ファイル名"));
    }
}

QString ToviItemDef::GetTitleFromIndex(int index) const {
    return GetDef(index).title;
}

Definition::ShowSituation ToviItemDef::GetShowSituationFromIndex(int index) const {
    return static_cast<Definition::ShowSituation>(GetDef(index).show);
}

void ToviItemDef::SetRootPath(const QString& dataPath) {
    parentPath = MibParentDir(dataPath);
}
