// The delivery's index file and the stylesheet that shows it; the copy of the index that
// points at the stylesheet.

#include "document/ToviItemDef.h"
#include "platform/MibFile.h"
#include "platform/ToviEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

// One row of a table: the DTD name looked for in the DOCTYPE line, and the stylesheet of each
// family (null: none).
struct StylesheetRow {
    const char* dtd;
    const char* byFamily[4];
};

// Index files of works ("constdata SYSTEM").
constexpr StylesheetRow kWorksTable[] = {
    {"INDE_C01.DTD", {"MLIT_E/INDEX_C.XSL", nullptr, nullptr, nullptr}},
    {"INDE_C02.DTD", {"MLIT/INDEX_C.XSL", nullptr, nullptr, nullptr}},
    {"INDE_C03.DTD", {"MLIT/INDE_C03.XSL", "KOWAN/INDE_C03.XSL", "MAFF/INDE_C03.XSL", nullptr}},
    {"INDE_C04.DTD", {"MLIT/INDE_C04.XSL", "KOWAN/INDE_C04.XSL", "MAFF/INDE_C04.XSL", nullptr}},
    {"INDE_C05.DTD", {"MLIT/INDE_C05.XSL", "KOWAN/INDE_C05.XSL", "MAFF/INDE_C05.XSL", nullptr}},
    {"INDE_C06.DTD", {"MLIT/INDE_C06.XSL", "KOWAN/INDE_C06.XSL", nullptr, nullptr}},
    {"INDE_C07.DTD", {"MLIT/INDE_C07.XSL", "KOWAN/INDE_C07.XSL", nullptr, nullptr}},
    {"INDEC02N.DTD", {nullptr, nullptr, "MAFF/INDEX_CN.XSL", nullptr}},
    {"IND_EC03.DTD", {"MLIT_E/INDEX_EC.XSL", "KOWAN_E/INDEX_EC.XSL", "MAFF_E/INDEX_EC.XSL", nullptr}},
    {"IND_EC05.DTD", {"MLIT_E/IND_EC05.XSL", "KOWAN_E/IND_EC05.XSL", "MAFF_E/IND_EC05.XSL", nullptr}},
    {"IND_MC01.DTD", {"MLIT_M/IND_MC01.XSL", nullptr, "MAFF_M/IND_MC01.XSL", nullptr}},
    {"IND_MC02.DTD", {"MLIT_M/IND_MC02.XSL", "KOWAN_M/IND_MC02.XSL", "MAFF_M/IND_MC02.XSL", nullptr}},
    {"IND_MC03.DTD", {"MLIT_M/IND_MC03.XSL", "KOWAN_M/IND_MC03.XSL", "MAFF_M/IND_MC03.XSL", nullptr}},
    {"PHOT_JH1.DTD", {nullptr, nullptr, nullptr, "MLIT/PHOT_JH1.XSL"}},
    {"PHOT_JH4.DTD", {nullptr, nullptr, nullptr, "NEXCO/PHOT_JH4.XSL"}},
};

// Index files of services ("gyomudata SYSTEM"). Family 3 borrows two of family 0.
constexpr StylesheetRow kServicesTable[] = {
    {"INDE_D02.DTD", {"MLIT/INDEX_D.XSL", nullptr, nullptr, "MLIT/INDEX_D.XSL"}},
    {"INDE_D03.DTD", {"MLIT/INDE_D03.XSL", "KOWAN/INDE_D03.XSL", "MAFF/INDE_D03.XSL", "NEXCO/INDE_D03.XSL"}},
    {"INDE_D04.DTD", {"MLIT/INDE_D04.XSL", "KOWAN/INDE_D04.XSL", "MAFF/INDE_D04.XSL", nullptr}},
    {"INDE_D05.DTD", {"MLIT/INDE_D05.XSL", "KOWAN/INDE_D05.XSL", nullptr, nullptr}},
    {"INDE_D06.DTD", {"MLIT/INDE_D06.XSL", "KOWAN/INDE_D06.XSL", nullptr, nullptr}},
    {"INDED02N.DTD", {nullptr, nullptr, "MAFF/INDEX_DN.XSL", nullptr}},
    {"IND_ED03.DTD", {"MLIT_E/INDEX_ED.XSL", "KOWAN_E/INDEX_ED.XSL", "MAFF_E/INDEX_ED.XSL", nullptr}},
    {"IND_ED04.DTD", {"MLIT_E/IND_ED04.XSL", "KOWAN_E/IND_ED04.XSL", "MAFF_E/IND_ED04.XSL", nullptr}},
    {"IND_MD01.DTD", {"MLIT_M/IND_MD01.XSL", nullptr, "MAFF_M/IND_MD01.XSL", nullptr}},
    {"IND_MD02.DTD", {"MLIT_M/IND_MD02.XSL", "KOWAN_M/IND_MD02.XSL", "MAFF_M/IND_MD02.XSL", nullptr}},
    {"IND_MD03.DTD", {"MLIT_M/IND_MD03.XSL", "KOWAN_M/IND_MD03.XSL", "MAFF_M/IND_MD03.XSL", nullptr}},
};

// The family's list names it, but its test repeats "INDEC02N.DTD", which an earlier row
// takes: installed all the same.
constexpr const char* kUnreachedStylesheet = "MAFF_E/INDEX_C.XSL";

const QString kCopyFolder = QStringLiteral("IndexCopy");

// The last file in folder matching pattern (by name, case aside, as media written on Windows
// list them), when it is a regular file inside the folder; empty otherwise.
QString LastMatch(const QString& folder, const QString& pattern) {
    QDir dir(folder);
    QStringList names = dir.entryList(QStringList{pattern}, QDir::Files | QDir::Hidden,
                                      QDir::Name | QDir::IgnoreCase);
    const QString inside = QFileInfo(folder).canonicalFilePath() + QLatin1Char('/');
    while (!names.isEmpty()) {
        const QString path = dir.filePath(names.takeLast());
        // A link that leads out of the delivery names no file of it.
        if (MibIsFileExist(path) && QFileInfo(path).canonicalFilePath().startsWith(inside)) {
            return path;
        }
    }
    return QString();
}

QString FileNameOf(const QString& path) {
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

}  // namespace

QString ToviItemDef::StylesheetFor(const QByteArray& line, PhotoXMLType family) {
    const int column = static_cast<int>(family);
    if (column < 0 || column > 3) {
        return QString();
    }
    const auto lookUp = [&](const auto& table) {
        for (const StylesheetRow& row : table) {
            if (row.byFamily[column] && line.contains(row.dtd)) {
                return QString::fromLatin1(row.byFamily[column]);
            }
        }
        return QString();
    };
    if (line.contains("gyomudata SYSTEM")) {
        return lookUp(kServicesTable);
    }
    if (line.contains("constdata SYSTEM")) {
        return lookUp(kWorksTable);
    }
    return QString();
}

QStringList ToviItemDef::AllStylesheets() {
    QStringList paths;
    const auto add = [&](const auto& table) {
        for (const StylesheetRow& row : table) {
            for (const char* path : row.byFamily) {
                if (path && !paths.contains(QLatin1String(path))) {
                    paths.append(QString::fromLatin1(path));
                }
            }
        }
    };
    add(kWorksTable);
    add(kServicesTable);
    paths.append(QString::fromLatin1(kUnreachedStylesheet));
    return paths;
}

void ToviItemDef::GetPathAndName(QString& indexPath, QString& stylesheetPath) const {
    indexPath = LastMatch(parentPath, QStringLiteral("INDEX_*.XML"));
    if (indexPath.isEmpty()) {
        indexPath = LastMatch(parentPath, QStringLiteral("PHOTO_*.XML"));
    }
    QFile file;
    if (indexPath.isEmpty() || !MibOpenRegularFile(file, indexPath)) {
        return;
    }
    // The DOCTYPE stands near the top; a file without one within its first lines is no index.
    for (int lines = 0; lines < 1000 && !file.atEnd(); ++lines) {
        const QByteArray line = file.readLine(64 * 1024);
        if (line.contains("gyomudata SYSTEM") || line.contains("constdata SYSTEM")) {
            stylesheetPath = MibNormalDir(programPath);
            const QString relative = StylesheetFor(line, type);
            if (!relative.isEmpty()) {
                stylesheetPath += QStringLiteral("XSLPLATE/") + relative;
            }
            return;
        }
    }
}

QString ToviItemDef::MakeIndexCopy(const QString& indexPath, const QString& stylesheetPath) {
    const QString suite = ToviEnvironment::SuiteFolder();
    if (suite.isEmpty()) {
        return QString();
    }
    const QString copyFolder = MibNormalDir(suite) + kCopyFolder;
    if (!MibCreateDirectory(copyFolder)) {
        return QString();
    }
    const QString newPath = MibNormalDir(copyFolder) + FileNameOf(indexPath);
    QFile in;
    if (!MibOpenRegularFile(in, indexPath)) {
        return QString();
    }
    if (!stylesheetPath.contains(QLatin1Char('/'))) {
        return QString();
    }
    const QByteArray stylesheetLine = "<?xml-stylesheet type=\"text/xsl\" href=\"" +
                                      FileNameOf(stylesheetPath).toUtf8() + "\"?>\n";
    QByteArray out;
    bool rewritten = false;
    while (!in.atEnd()) {
        QByteArray line = in.readLine();
        if (line.endsWith('\n')) {
            line.chop(1);
        }
        if (line.endsWith('\r')) {
            line.chop(1);
        }
        if (!rewritten && line.contains("xml-stylesheet")) {
            out += stylesheetLine;
            rewritten = true;
            continue;
        }
        if (!rewritten && line.contains("DTD_version")) {
            out += stylesheetLine;
            rewritten = true;
        }
        out += line + '\n';
    }
    if (!MibWriteFileAtomic(newPath, out)) {
        return QString();
    }
    const QString indexFolder = indexPath.left(indexPath.lastIndexOf(QLatin1Char('/')));
    const QString dtd = LastMatch(indexFolder, QStringLiteral("*.DTD"));
    if (!dtd.isEmpty()) {
        MibCopyFileEx(dtd, MibNormalDir(copyFolder) + FileNameOf(dtd), true);
    }
    if (MibIsFileExist(stylesheetPath)) {
        MibCopyFileEx(stylesheetPath, MibNormalDir(copyFolder) + FileNameOf(stylesheetPath), true);
    }
    return newPath;
}
