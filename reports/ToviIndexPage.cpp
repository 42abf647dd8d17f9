// The index file's page: the document's copy of INDEX_*.XML next to its stylesheet, turned
// into HTML.

#include "reports/ToviIndexPage.h"

#include "document/ToviData.h"
#include "platform/MibFile.h"
#include "platform/MibXslt.h"

ToviIndexPage::Result ToviIndexPage::Make(ToviData& document) {
    html.clear();
    transformError.clear();
    copyPath.clear();
    parentPath = document.GetItemDef()->ParentPath();
    document.GetItemDef()->GetPathAndName(indexPath, stylesheetPath);
    if (indexPath.isEmpty()) {
        return NoIndexFile;
    }
    if (stylesheetPath.isEmpty()) {
        return NoDoctype;
    }
    copyPath = document.GetIndexPath();
    if (copyPath.isEmpty()) {
        return NoCopy;
    }
    // Without a row for the file in the tables the stylesheet path is the program folder.
    if (!MibIsFileExist(stylesheetPath)) {
        return NoStylesheet;
    }
    // The copy's stylesheet stands beside it, as its href names it.
    const QString copied = MibParentDir(copyPath) +
                           stylesheetPath.mid(stylesheetPath.lastIndexOf(QLatin1Char('/')) + 1);
    if (!MibTransformXslt(copyPath, copied, html, &transformError)) {
        html.clear();
        return TransformFailed;
    }
    return Made;
}

QString ToviIndexPage::Message(Result result) const {
    switch (result) {
        case Made:
            return QString();
        case NoIndexFile:
            return QStringLiteral(
                       "フォルダ %1 に管理ファイル (INDEX_*.XML, PHOTO_*.XML) がありません")
                .arg(parentPath);
        case NoDoctype:
            return QStringLiteral(
                       "%1 に工事 (constdata) または業務 (gyomudata) の DOCTYPE がありません")
                .arg(indexPath);
        case NoCopy:
            return QStringLiteral("%1 の写しを作業フォルダに作れません").arg(indexPath);
        case NoStylesheet:
            return QStringLiteral("%1 に合うスタイルシートがないため表示できません").arg(indexPath);
        case TransformFailed:
            return transformError;
    }
    return QString();
}
