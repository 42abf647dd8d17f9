#pragma once

#include "loading/ToviDataFactory.h"

#include <QSet>
#include <QString>

class DoxIterator;
class ToviItemArray;
class ToviItemDef;
class ToviPhotoArray;

// Reads an electronic delivery: walks PHOTO.XML against the item definitions of its kind
// into the document's management items and photographs.
class ToviEnouDataFactory : public ToviDataFactory {
public:
    ToviEnouDataFactory() = default;

    // Why the last load returned no document, in one Japanese sentence; empty after a load
    // that succeeded. The host words its own messages; the command line prints this one.
    const QString& GetLoadError() const { return loadError; }

protected:
    std::unique_ptr<ToviData> OnNewDocumentInstance(ToviHostDocument* hostDocument) override;
    bool OnLoad(ToviLoadCallback callback, void* arg) override;

private:
    bool Walk(ToviItemDef* def, DoxIterator& it, ToviLoadCallback callback, void* arg);
    bool LoadPhotoItem(ToviItemDef* def, ToviPhotoArray* photos, DoxIterator& it, int& index,
                       ToviLoadCallback callback, void* arg);
    bool LoadBlockPuralData(ToviItemDef* def, ToviItemArray& items, DoxIterator& it, int& index,
                            ToviLoadCallback callback, void* arg);
    void StoreElement(const ToviItemDef* def, int i, ToviItemArray& items, DoxIterator& it);
    QString Intern(const QString& text);

    QString loadError;
    QSet<QString> values;  // item texts shared between photographs during one load
};
