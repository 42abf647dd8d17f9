// The delivery's index file: the tables in loading/ find it and its stylesheet, the factory
// makes the copy.

#include "document/ToviData.h"

#include "loading/ToviEnouDataFactory.h"

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
    ToviEnouDataFactory factory;
    indexPath = factory.GetNewIndexPath(index, stylesheet);
    return indexPath;
}
