#pragma once

#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <optional>
#include <vector>

class ToviCheckContext;
class ToviData;
class ToviReadableFiles;

// One photograph's dates side by side: 撮影年月日 as PHOTO.XML gives it, the Exif original
// date of its file and the file's modification time.
struct ToviDateRow {
    int index = -1;         // position in PHOTO.XML
    QString serial;         // シリアル番号 as written
    QString file;           // "PIC/" and 写真ファイル名 as written; empty when none is named
    QString shotText;       // 撮影年月日 as written
    QDate shot;             // invalid when the text is no CCYY-MM-DD date
    bool readable = false;  // the file was there to read (an ordinary file inside PIC/)
    QDateTime exif;         // invalid when the file carries no Exif original date
    QDateTime modified;     // invalid when the file was not readable

    // Calendar days from 撮影年月日 to the Exif date and to the file time; nothing when either
    // side is missing.
    std::optional<qint64> ExifDays() const;
    std::optional<qint64> FileDays() const;
    // More than a day apart on either side.
    bool Differs() const;
};

// The elements a date row is read from.
struct ToviDateItems {
    QSet<int> serial, file, date;  // definition indexes
    void Find(const ToviCheckContext& context);
};

// The dates of a list of photographs, for the viewer's current set or, from the command line,
// the whole delivery. Built on any thread (it only reads the document and the files' headers),
// with progress and a cancel flag.
class ToviDateTable {
public:
    // A difference of more than this many days is flagged (and warned about by the checks).
    static constexpr qint64 kToleranceDays = 1;
    using Progress = std::function<void(qint64 done, qint64 total)>;

    // The row of the photograph at index; opens nothing but its file's header.
    static ToviDateRow ReadRow(ToviCheckContext& context, const ToviReadableFiles& files,
                               const ToviDateItems& items, int index);

    // Reads the rows of indices (positions in PHOTO.XML; those out of range are skipped);
    // false when cancelled, with the rows read so far.
    bool Build(const ToviData& document, const QList<int>& indices,
               const std::atomic<bool>* cancel = nullptr, const Progress& progress = {});
    const std::vector<ToviDateRow>& Rows() const { return rows; }

    // 撮影年月日 written CCYY-MM-DD as a date; invalid for any other form (Qt's own ISO
    // reading would take "2024/04/01" too).
    static QDate ShotDate(const QString& text);
    // The Exif original date (DateTimeOriginal) in the header bytes of a JPEG (from its start
    // to its first scan); invalid when there is none, it is blank or zero, or the block is
    // broken. Read here rather than through the Exif library: this one field of a hundred
    // thousand files is wanted, and the library parses every field of each.
    static QDateTime ExifOriginalDate(const QByteArray& header);

    // The column titles, in the order of ToCsv and the viewer's table.
    static QStringList Headers();
    // The texts of a row's columns.
    static QStringList Cells(const ToviDateRow& row);
    // A date and time as the table writes it ("2024-04-01 10:15:00"); empty when invalid.
    static QString DateTimeText(const QDateTime& time);
    // A signed day count ("+2", "0", "-3"); empty for nothing.
    static QString DaysText(std::optional<qint64> days);

    // The table as CSV: UTF-8 with a byte-order mark (so that a spreadsheet on a Japanese
    // system does not take it for Shift_JIS), CRLF line ends, fields quoted where RFC 4180
    // asks for it.
    static QByteArray Csv(const std::vector<ToviDateRow>& rows);
    static QString CsvField(const QString& text);

private:
    std::vector<ToviDateRow> rows;
};
