#include "platform/MibSheet.h"

#include <QFile>

#include <unzip.h>
#include <xlsxwriter.h>
#include <zip.h>

#include <cstdio>
#include <cstring>

namespace {

const char kSheetEntry[] = "xl/worksheets/sheet1.xml";

// The workbook is written with the page-layout view, whose attribute is then swapped for the
// page-break view, which the library cannot write itself.
const QByteArray kLayoutView = QByteArrayLiteral(" view=\"pageLayout\"");
const QByteArray kBreakView = QByteArrayLiteral(" view=\"pageBreakPreview\"");

struct UnzipCloser {
    void operator()(void* file) const { unzClose(file); }
};
struct ZipCloser {
    void operator()(void* file) const { zipClose(file, nullptr); }
};
using UnzipFile = std::unique_ptr<void, UnzipCloser>;
using ZipFile = std::unique_ptr<void, ZipCloser>;

bool Fail(QString* error, const QString& text) {
    if (error) {
        *error = text;
    }
    return false;
}

// Copies every entry of the zip at path into a new zip beside it, the sheet's entry with its
// view attribute changed and the others as they stand (still compressed), and renames the
// new zip over the old one.
bool SwapSheetView(const QString& path, QString* error) {
    const QString swapped = path + QStringLiteral(".view");
    const QByteArray outName = QFile::encodeName(swapped);
    bool written = false;
    {
        UnzipFile in(unzOpen64(QFile::encodeName(path).constData()));
        ZipFile out(zipOpen64(outName.constData(), APPEND_STATUS_CREATE));
        if (!in || !out) {
            return Fail(error, QStringLiteral("ブックを開き直せません"));
        }
        std::vector<char> buffer(1 << 16);
        int rc = unzGoToFirstFile(in.get());
        for (; rc == UNZ_OK; rc = unzGoToNextFile(in.get())) {
            unz_file_info64 info;
            char name[256];
            if (unzGetCurrentFileInfo64(in.get(), &info, name, sizeof name, nullptr, 0, nullptr,
                                        0) != UNZ_OK) {
                break;
            }
            const bool patch = std::strcmp(name, kSheetEntry) == 0;
            const int raw = patch ? 0 : 1;
            int method = 0;
            int level = 0;
            if (unzOpenCurrentFile2(in.get(), &method, &level, raw) != UNZ_OK) {
                break;
            }
            zip_fileinfo zi{};
            zi.dosDate = info.dosDate;
            zi.internal_fa = info.internal_fa;
            zi.external_fa = info.external_fa;
            if (zipOpenNewFileInZip2_64(out.get(), name, &zi, nullptr, 0, nullptr, 0, nullptr,
                                        patch ? Z_DEFLATED : method,
                                        patch ? Z_DEFAULT_COMPRESSION : level, raw,
                                        info.uncompressed_size >= 0xffffffffu) != ZIP_OK) {
                unzCloseCurrentFile(in.get());
                break;
            }
            bool ok = true;
            QByteArray head;  // the sheet's opening, gathered until its view is swapped
            bool headDone = !patch;
            for (;;) {
                const int got = unzReadCurrentFile(in.get(), buffer.data(),
                                                   static_cast<unsigned>(buffer.size()));
                if (got < 0) {
                    ok = false;
                    break;
                }
                if (!headDone) {
                    head.append(buffer.data(), got);
                    const qsizetype viewEnd = head.indexOf("<sheetData");
                    if (got > 0 && viewEnd < 0 && head.size() < (1 << 20)) {
                        continue;
                    }
                    head.replace(kLayoutView, kBreakView);
                    headDone = true;
                    ok = zipWriteInFileInZip(out.get(), head.constData(),
                                             static_cast<unsigned>(head.size())) == ZIP_OK;
                } else if (got > 0) {
                    ok = zipWriteInFileInZip(out.get(), buffer.data(),
                                             static_cast<unsigned>(got)) == ZIP_OK;
                }
                if (!ok || got == 0) {
                    break;
                }
            }
            ok = unzCloseCurrentFile(in.get()) == UNZ_OK && ok;
            const int closed =
                patch ? zipCloseFileInZip(out.get())
                      : zipCloseFileInZipRaw64(out.get(), info.uncompressed_size, info.crc);
            if (!ok || closed != ZIP_OK) {
                break;
            }
        }
        written = rc == UNZ_END_OF_LIST_OF_FILE;
        written = zipClose(out.release(), nullptr) == ZIP_OK && written;
    }
    if (!written || std::rename(outName.constData(), QFile::encodeName(path).constData()) != 0) {
        QFile::remove(swapped);
        return Fail(error, QStringLiteral("ブックを書き終えられません"));
    }
    return true;
}

}  // namespace

struct MibSheetWriter::Book {
    lxw_workbook* workbook = nullptr;
    lxw_worksheet* sheet = nullptr;
    lxw_format* formats[MibSheetWriter::kStyleCount] = {};
    QByteArray path;
    QByteArray scratch;
    std::vector<lxw_row_t> breaks;
};

MibSheetWriter::MibSheetWriter(const QString& path, const QString& sheetName,
                               const QString& scratchFolder)
    : book(std::make_unique<Book>()) {
    book->path = QFile::encodeName(path);
    book->scratch = QFile::encodeName(scratchFolder);
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    options.tmpdir = book->scratch.data();
    book->workbook = workbook_new_opt(book->path.constData(), &options);
    if (!book->workbook) {
        return;
    }
    book->sheet = workbook_add_worksheet(book->workbook, sheetName.toUtf8().constData());
    if (!book->sheet) {
        return;
    }
    for (int style = StyleText; style < kStyleCount; ++style) {
        lxw_format* format = workbook_add_format(book->workbook);
        if (style != StyleTitle && style != StylePlain) {
            format_set_border(format, LXW_BORDER_THIN);
        }
        format_set_align(
            format, style == StyleWrapped ? LXW_ALIGN_VERTICAL_TOP : LXW_ALIGN_VERTICAL_CENTER);
        format_set_num_format(format, "@");
        if (style == StyleCentered || style == StyleHeader) {
            format_set_align(format, LXW_ALIGN_CENTER);
        }
        if (style == StyleHeader) {
            format_set_bold(format);
            format_set_bg_color(format, 0xD9D9D9);
        }
        if (style == StyleWrapped) {
            format_set_text_wrap(format);
        }
        if (style == StyleTitle) {
            format_set_bold(format);
            format_set_font_size(format, 14);
        }
        book->formats[style] = format;
    }
}

MibSheetWriter::~MibSheetWriter() {
    if (book->workbook) {
        // Never closed: nothing was written to path, and the library's scratch files were
        // unlinked as soon as they were made.
        lxw_workbook_free(book->workbook);
    }
}

bool MibSheetWriter::IsOpen() const {
    return book->workbook && book->sheet;
}

bool MibSheetWriter::SetColumnWidth(int column, double width) {
    const auto col = static_cast<lxw_col_t>(column);
    return IsOpen() && worksheet_set_column(book->sheet, col, col, width, nullptr) == LXW_NO_ERROR;
}

void MibSheetWriter::SetRowHeight(double points) {
    if (IsOpen()) {
        worksheet_set_default_row(book->sheet, points, LXW_FALSE);
    }
}

void MibSheetWriter::SetPageSetup(const PageSetup& setup) {
    if (!IsOpen()) {
        return;
    }
    if (setup.a4Portrait) {
        worksheet_set_paper(book->sheet, 9);
        if (setup.landscape) {
            worksheet_set_landscape(book->sheet);
        } else {
            worksheet_set_portrait(book->sheet);
        }
    }
    worksheet_set_print_scale(book->sheet, static_cast<uint16_t>(setup.scale));
    if (setup.fitToWidth) {
        worksheet_fit_to_pages(book->sheet, 1, 0);
    }
    worksheet_set_margins(book->sheet, setup.marginLeft, setup.marginRight, setup.marginTop,
                          setup.marginBottom);
}

bool MibSheetWriter::SetPrintArea(int firstRow, int firstColumn, int lastRow, int lastColumn) {
    return IsOpen() && worksheet_print_area(book->sheet, static_cast<lxw_row_t>(firstRow),
                                            static_cast<lxw_col_t>(firstColumn),
                                            static_cast<lxw_row_t>(lastRow),
                                            static_cast<lxw_col_t>(lastColumn)) == LXW_NO_ERROR;
}

bool MibSheetWriter::SetRepeatRows(int firstRow, int lastRow) {
    return IsOpen() && worksheet_repeat_rows(book->sheet, static_cast<lxw_row_t>(firstRow),
                                             static_cast<lxw_row_t>(lastRow)) == LXW_NO_ERROR;
}

int MibSheetWriter::MaxRowBreaks() {
    return LXW_BREAKS_MAX;
}

bool MibSheetWriter::SetRowBreaks(const std::vector<int>& rows) {
    if (!IsOpen()) {
        return false;
    }
    // The library reads the list up to a 0 and keeps a copy.
    book->breaks.clear();
    for (int row : rows) {
        if (row > 0 && static_cast<int>(book->breaks.size()) < LXW_BREAKS_MAX) {
            book->breaks.push_back(static_cast<lxw_row_t>(row));
        }
    }
    book->breaks.push_back(0);
    return book->breaks.size() == 1 ||
           worksheet_set_h_pagebreaks(book->sheet, book->breaks.data()) == LXW_NO_ERROR;
}

bool MibSheetWriter::WriteString(int row, int column, const QString& text, Style style) {
    if (text.isEmpty()) {
        return WriteBlank(row, column, style);
    }
    // A cell holds at most 32,767 characters: a longer text (a comment of pages) is cut to
    // that with an ellipsis at the end rather than left out of the sheet.
    QString shown = text;
    const QList<uint> points = text.toUcs4();
    if (points.size() > kMaxCellCharacters) {
        shown = QString::fromUcs4(reinterpret_cast<const char32_t*>(points.constData()),
                                  kMaxCellCharacters - 1) +
                QChar(0x2026);
    }
    return IsOpen() && worksheet_write_string(
                           book->sheet, static_cast<lxw_row_t>(row), static_cast<lxw_col_t>(column),
                           shown.toUtf8().constData(), book->formats[style]) == LXW_NO_ERROR;
}

bool MibSheetWriter::WriteBlank(int row, int column, Style style) {
    return IsOpen() && worksheet_write_blank(book->sheet, static_cast<lxw_row_t>(row),
                                             static_cast<lxw_col_t>(column),
                                             book->formats[style]) == LXW_NO_ERROR;
}

bool MibSheetWriter::WriteNumber(int row, int column, double number, Style style) {
    return IsOpen() && worksheet_write_number(book->sheet, static_cast<lxw_row_t>(row),
                                              static_cast<lxw_col_t>(column), number,
                                              book->formats[style]) == LXW_NO_ERROR;
}

bool MibSheetWriter::Close(QString* error) {
    if (!IsOpen()) {
        return Fail(error, QStringLiteral("ブックを作れません"));
    }
    if (pageBreakView) {
        worksheet_set_page_view(book->sheet);
    }
    const lxw_error result = workbook_close(book->workbook);
    book->workbook = nullptr;
    book->sheet = nullptr;
    if (result != LXW_NO_ERROR) {
        QFile::remove(QFile::decodeName(book->path));
        return Fail(error, QString::fromUtf8(lxw_strerror(result)));
    }
    return !pageBreakView || SwapSheetView(QFile::decodeName(book->path), error);
}

bool MibReadZipEntry(const QString& path, const QString& name, QByteArray& data) {
    data.clear();
    UnzipFile in(unzOpen64(QFile::encodeName(path).constData()));
    if (!in || unzLocateFile(in.get(), name.toUtf8().constData(), 1) != UNZ_OK ||
        unzOpenCurrentFile(in.get()) != UNZ_OK) {
        return false;
    }
    char buffer[1 << 14];
    int got = 0;
    while ((got = unzReadCurrentFile(in.get(), buffer, sizeof buffer)) > 0) {
        data.append(buffer, got);
    }
    return unzCloseCurrentFile(in.get()) == UNZ_OK && got == 0;
}
