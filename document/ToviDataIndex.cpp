// The delivery's index file: the item definitions' tables find it and its stylesheet and
// make the copy that points at it.

#include "document/ToviData.h"

QString ToviData::GetIndexPath() {
    if (!indexPath.isEmpty()) {
        return indexPath;
    }
    QString index;
    QString stylesheet;
    itemDef.GetPathAndName(index, stylesheet);
    if (index.isEmpty() || stylesheet.isEmpty()) {
        return QString();
    }
    indexPath = ToviItemDef::MakeIndexCopy(index, stylesheet);
    return indexPath;
}
