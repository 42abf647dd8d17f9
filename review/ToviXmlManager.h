#pragma once

#include "platform/DoxDocument.h"

#include <QString>

#include <memory>

class ToviPhotoArray;

// The inspection record (検査状況): for every photograph of the actual array, in its order,
// the comment and the six labels, in a Shift_JIS XML file:
//
//   <?xml version="1.0" encoding="Shift_JIS"?>
//   <!DOCTYPE examinationdata SYSTEM "">
//   <検査状況><情報><写真枚数>N</写真枚数></情報>
//     <状況><写真>[<写真ファイルパス>…</写真ファイルパス>]<コメント>…</コメント>
//           <付箋1-OK>0|1</付箋1-OK> … <付箋6-任意>0|1</付箋6-任意></写真>…</状況></検査状況>
//
// Photographs are matched by position; 写真枚数 is the only guard that a record belongs to
// the document. A manager lives for one operation.

// Why a record operation answered false.
enum ToviExamResult {
    ExamReadOnly = 0,    // save: the target has no write permission
    ExamNoSpace = 1,     // save: not enough free space for the estimate
    ExamSaveFailed = 2,  // save: no tree to write into, or the file could not be written
    ExamCancelled = 3,   // save: Cancel in the progress window
    ExamCountWrong = 4,  // load: 写真枚数 missing (or no readable file), or another count
    ExamNoStatus = 5,    // load: 状況 missing or empty
};

// The words for a result code, for the messages of the viewer and the command line.
QString ToviExamResultText(int result);

class ToviXmlManager {
public:
    ToviXmlManager(const QString& path, const QString& rootPath);
    virtual ~ToviXmlManager();
    ToviXmlManager(const ToviXmlManager&) = delete;
    ToviXmlManager& operator=(const ToviXmlManager&) = delete;

    // The tags of the six labels, in label order.
    static const QString& LabelTag(int label);

protected:
    // From the root along document order to the first element named tag.
    static bool FindElement(DoxIterator& it, const QByteArray& tag);

    QString path;
    QString rootPath;
    DoxIterator* iterator = nullptr;  // not owned here
};

// The tree a record is written from, seeded with the declaration, the document type line
// and the root element.
class ToviXmlHeaderManager {
public:
    ToviXmlHeaderManager();
    // False when the tree could not be made.
    bool IsReady() const { return iterator != nullptr; }

    DoxDocument document;
    std::unique_ptr<DoxIterator> iterator;
};

class ToviXmlSaveManager : public ToviXmlManager {
public:
    ToviXmlSaveManager(const QString& path, const QString& note, const QString& rootPath);

    // Writes the record of photos; false with *result set (ExamReadOnly, ExamNoSpace,
    // ExamSaveFailed, ExamCancelled), the target then as it was.
    bool Save(ToviPhotoArray& photos, int* result);

    // Also names each photograph's image file (写真ファイルパス), first in its element.
    bool writePath = false;

    // The free bytes of the volume of folder; replaced by tests. Negative: unknown.
    using FreeSpaceProbe = qint64 (*)(const QString& folder);
    static void SetFreeSpaceProbeForTesting(FreeSpaceProbe probe);

private:
    ToviXmlHeaderManager header;
    QString note;
};

class ToviXmlLoadManager : public ToviXmlManager {
public:
    ToviXmlLoadManager(const QString& path, const QString& rootPath);

    // Merges the record into photos: a flag or comment the file has no element for keeps
    // its value. False with *result set (ExamCountWrong, ExamNoStatus) before any photograph
    // is touched.
    bool Load(ToviPhotoArray& photos, int* result);

private:
    DoxDocument document;
    std::unique_ptr<DoxIterator> owned;
};
