#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

// A workbook of one worksheet, written row after row to an .xlsx file with little memory
// whatever the number of rows: a row is on disk once the next one is started, so cells are
// written in row order. Everything else (columns, page set-up, breaks, print area) may be set
// at any time before Close.
class MibSheetWriter {
public:
    // How a cell looks. The first four have a thin border on all four sides; StyleWrapped
    // breaks its text into lines at the column's width; StyleTitle and StylePlain stand
    // outside the table, without a border.
    enum Style { StyleText, StyleCentered, StyleHeader, StyleWrapped, StyleTitle, StylePlain };
    static constexpr int kStyleCount = StylePlain + 1;

    struct PageSetup {
        bool a4Portrait = true;
        bool landscape = false;   // with a4Portrait: A4 turned on its side
        int scale = 100;          // print scale in percent, 10 to 400, when not fitted to the width
        bool fitToWidth = false;  // as small as makes the columns fit one page wide
        double marginLeft = 0.5, marginRight = 0.5, marginTop = 0.75, marginBottom = 0.75;  // in
    };

    // Starts a workbook at path whose one sheet is called sheetName; the library's scratch
    // files go into scratchFolder (which must exist). IsOpen tells whether it worked.
    MibSheetWriter(const QString& path, const QString& sheetName, const QString& scratchFolder);
    ~MibSheetWriter();
    MibSheetWriter(const MibSheetWriter&) = delete;
    MibSheetWriter& operator=(const MibSheetWriter&) = delete;

    bool IsOpen() const;
    // Width of a column in characters of the default font.
    bool SetColumnWidth(int column, double width);
    // The height in points of every row.
    void SetRowHeight(double points);
    void SetPageSetup(const PageSetup& setup);
    bool SetPrintArea(int firstRow, int firstColumn, int lastRow, int lastColumn);
    // Rows printed again at the top of every page (a table's header).
    bool SetRepeatRows(int firstRow, int lastRow);
    // Manual page breaks before each of rows (0-based, ascending, > 0). At most MaxRowBreaks
    // are kept, the format's own limit; the rest are dropped.
    bool SetRowBreaks(const std::vector<int>& rows);
    static int MaxRowBreaks();
    // Opens the sheet in page-break view.
    void SetPageBreakView(bool on) { pageBreakView = on; }
    // Rows are 0-based and must not go back to a row before the last one written.
    // The most characters a cell holds; WriteString cuts a longer text to it.
    static constexpr int kMaxCellCharacters = 32767;
    bool WriteString(int row, int column, const QString& text, Style style);
    bool WriteBlank(int row, int column, Style style);
    bool WriteNumber(int row, int column, double number, Style style);
    // Writes the file. False (with a reason in error) when it could not be written whole; the
    // file may then be missing or partial.
    bool Close(QString* error = nullptr);

private:
    struct Book;
    std::unique_ptr<Book> book;
    bool pageBreakView = false;
};

// Reads the entry called name (such as "xl/worksheets/sheet1.xml") of the zip file at path,
// uncompressed. False when the file is not a zip or holds no such entry.
bool MibReadZipEntry(const QString& path, const QString& name, QByteArray& data);
