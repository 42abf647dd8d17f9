#pragma once

#include "document/ToviData.h"
#include "document/ToviItemArray.h"
#include "loading/ToviItemDef.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>

#include <memory>

// Small deliveries for the document tests: a READITEM.XML of our own with just the titles the
// path code looks for, and PHOTO.XML files that hold only the prolog.
namespace fixture {

// "a;b;c" as a list; empty parts are left out, so "" is the empty list.
inline QStringList List(const QString& text) {
    return text.split(QLatin1Char(';'), Qt::SkipEmptyParts);
}

inline bool WriteFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// One section of READITEM.XML from "title:表示;...".
inline QString SectionXml(const QString& name, const QString& rows) {
    QString xml = QStringLiteral("<%1>").arg(name);
    for (const QString& row : List(rows)) {
        const QStringList parts = row.split(QLatin1Char(':'));
        xml += QStringLiteral(
                   "<管理項目><タイトル>%1</タイトル><必要度>任意</必要度><表示>%2</表示>"
                   "<データ数>0+</データ数><操作>Next</操作></管理項目>")
                   .arg(parts[0], parts[1]);
    }
    return xml + QStringLiteral("</%1>").arg(name);
}

// 国交省-20 defines every title the paths use; 国交省-18 lacks the photograph's file name and
// 参考図ファイル名; 農水省-23 defines 参考図1 too, which that family must ignore.
inline bool WriteReadItem(const QString& programFolder) {
    const QString xml =
        SectionXml(
            "国交省-20",
            "写真ファイル名:MainList;写真ファイルパス:Not;参考図1:Not;参考図2:Not;"
            "参考図3:Not;参考図ファイル名:Not;参考図ファイルパス1:Not;参考図ファイルパス2:Not;"
            "参考図ファイルパス3:Not;参考図ファイルパス:Not;写真タイトル:MainList;"
            "撮影年月日:ZoomDlg;工種:InfoDlg;備考:Not") +
        SectionXml("国交省-18", "写真タイトル:MainList;参考図1:Not") +
        SectionXml("農水省-23",
                   "写真ファイル名:MainList;写真ファイルパス:Not;参考図1:Not;参考図ファイル名:Not;"
                   "参考図ファイルパス1:Not;参考図ファイルパス:Not");
    return WriteFile(programFolder + QStringLiteral("/READITEM.XML"),
                     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<information>" + xml.toUtf8() +
                         "</information>\n");
}

// family 0 with PHOTO05.DTD reads 国交省-20, with PHOTO04.DTD 国交省-18; family 2 with
// PHOTO05.DTD reads 農水省-23.
inline std::unique_ptr<ToviData> OpenDocument(const QString& folder, PhotoXMLType family,
                                              const char* dtd = "PHOTO05.DTD") {
    WriteFile(folder + QStringLiteral("/PHOTO.XML"),
              QByteArray("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
                         "<!DOCTYPE photodata SYSTEM \"") +
                  dtd + "\">\n");
    return std::make_unique<ToviData>(nullptr, folder, family);
}

// Items from "title=value" texts, in the given order. A title the section doesn't define is a
// mistake in the test itself.
inline ToviItemArray MakeItems(const ToviItemDef& def, const QStringList& entries) {
    ToviItemArray items;
    for (const QString& entry : entries) {
        const qsizetype eq = entry.indexOf(QLatin1Char('='));
        const int index = def.GetIndexFromTitle(entry.left(eq));
        if (index < 0) {
            qFatal("fixture: no definition titled %s", qPrintable(entry.left(eq)));
        }
        items.append(ToviItem(index, entry.mid(eq + 1)));
    }
    return items;
}

// Replaces "{root}" (and "{old}") by the given folders, each ending in '/'.
inline QStringList Expand(QStringList texts, const QString& root, const QString& old = {}) {
    for (QString& text : texts) {
        text.replace(QStringLiteral("{root}"), root).replace(QStringLiteral("{old}"), old);
    }
    return texts;
}

}  // namespace fixture
