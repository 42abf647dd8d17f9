#pragma once

#include <QList>
#include <QString>
#include <QtGlobal>

class QWidget;
class ToviData;
class ToviLabelManager;

// The check report: one row per photograph of the current view, in its order, with the
// inspection's result, on a print-ready form of page blocks of 32 rows (a header row and 31
// photographs), written as a spreadsheet workbook. Lives for one report.
class ToviCheckStatusFileOut {
public:
    // Answers of the write step.
    enum WriteResult { Written = 0, Failed = 1, Cancelled = 2, NotCreated = 3 };

    static constexpr int kRowsPerPage = 32;
    static constexpr int kPhotosPerPage = kRowsPerPage - 1;
    static constexpr int kColumns = 5;

    // The messages of the front step.
    static const QString WrittenMessage_;      // 35001
    static const QString FailedMessage_;       // 35002
    static const QString CancelledMessage_;    // 35003
    static const QString NotCreatedMessage_;   // 35004
    static const QString ProposedName_;        // "検査結果"
    static const QString Filter_;              // "EXCELファイル(*.xlsx)"
    static const QString WorkFolderName_;      // "QV-ExcelData"

    ToviCheckStatusFileOut(ToviData& document, const ToviLabelManager& labels);

    // The front step: asks the installed ToviUi for the output's name (proposing "検査結果" in
    // the user's documents folder), runs the write step, tells the outcome in a message box
    // captioned caption and, after success, has the file opened. True exactly after success;
    // a cancelled file dialog answers false with no message.
    bool FileOut(const QString& caption, QWidget* parent = nullptr);
    // The write step: writes the report of the current view to output with a cancellable
    // progress window captioned caption. Whatever the answer, an existing output is replaced
    // only by a complete report and the work folder is gone afterwards.
    WriteResult Write(const QString& caption, const QString& output);
    // The message box text of a write step's answer.
    static QString ResultText(WriteResult result);

    // The photographs on each page block for count photographs: count / 31 blocks of 31 and
    // one last block of count % 31, present even when empty.
    static QList<qint16> PageSizes(int count);
    // True when an existing file at path must not be replaced: its mode has no write
    // permission, or an office program holds it open (its lock file stands beside it).
    static bool IsOutputLocked(const QString& path);
    // The folder the workbook is written in before it is moved onto the output; empty when
    // there is no work folder.
    static QString WorkFolder();

private:
    ToviData& document;
    const ToviLabelManager& labels;
};
