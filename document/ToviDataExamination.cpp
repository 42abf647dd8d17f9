// The inspection record of a document: the managers in review/ do the work.

#include "document/ToviData.h"

#include "review/ToviXmlManager.h"

bool ToviData::SaveExamination(const QString& path, const QString& note, int* result) {
    if (path.isEmpty()) {
        return false;
    }
    ToviXmlSaveManager manager(path, note, RootPath());
    const bool saved = manager.Save(photoData, result);
    if (saved) {
        checkStatusChanged = false;
    }
    return saved;
}

bool ToviData::LoadExamination(const QString& path, int* result) {
    if (path.isEmpty()) {
        return false;
    }
    ToviXmlLoadManager manager(path, RootPath());
    const bool loaded = manager.Load(photoData, result);
    UpdateHasComment();
    return loaded;
}

bool ToviData::ReturnExam(const QString& path, int* result) {
    if (path.isEmpty()) {
        return false;
    }
    ToviXmlSaveManager manager(path, QString(), QString());
    manager.writePath = true;
    int own = 0;
    return manager.Save(photoData, result ? result : &own);
}
