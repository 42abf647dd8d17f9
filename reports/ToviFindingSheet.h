#pragma once

#include "checks/ToviDeliveryCheck.h"

#include <QString>

#include <array>
#include <memory>

class QTemporaryFile;
class ToviData;

// The findings of a delivery check as a print-ready sheet: a title, the delivery's name and
// folder, the date of the check and the count per severity above a table of one row per
// finding (photograph number, シリアル番号, file, item, severity, code, message), on A4
// landscape fitted to the width, the table's header printed on every page. Findings are
// kept in a scratch file until Write, so that a run that finds something in every one of a
// hundred thousand photographs does not hold them all in memory.
class ToviFindingSheet : public ToviFindingSink {
public:
    static constexpr int kColumns = 7;
    // The sheet's first rows: title, 工事名, フォルダ, チェック日, counts, a blank, then the
    // table's header.
    static constexpr int kHeaderRow = 6;

    // document is read at Write for the photographs' シリアル番号 and the delivery's name.
    explicit ToviFindingSheet(const ToviData& document);
    ~ToviFindingSheet() override;
    ToviFindingSheet(const ToviFindingSheet&) = delete;
    ToviFindingSheet& operator=(const ToviFindingSheet&) = delete;

    void Add(ToviCheckFinding finding) override;
    int Count(ToviCheckFinding::Severity severity) const { return counts[severity]; }

    // Writes the workbook to output through a temporary file beside it, renamed into place
    // once it is whole; an existing output is replaced only then. False with a sentence in
    // error when it could not be written: nothing is left at output but what was there.
    bool Write(const QString& output, QString* error);

    // The delivery's name: 工事名称 (or 業務名称) of its index file, else its folder's name.
    static QString DeliveryName(const ToviData& document);

private:
    const ToviData& document;
    std::unique_ptr<QTemporaryFile> spool;
    bool spoolFailed = false;
    qint64 total = 0;
    std::array<int, ToviCheckFinding::kSeverityCount> counts{};
};
