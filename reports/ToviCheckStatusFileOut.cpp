#include "reports/ToviCheckStatusFileOut.h"

#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "platform/MibFile.h"
#include "platform/MibSheet.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProgressDlg.h"
#include "platform/ToviUi.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <cmath>

const QString ToviCheckStatusFileOut::WrittenMessage_ =
    QStringLiteral("EXCELファイルへの書き込みが正常に終了しました。");
const QString ToviCheckStatusFileOut::FailedMessage_ =
    QStringLiteral("EXCELファイルへの書き込みに失敗しました。");
const QString ToviCheckStatusFileOut::CancelledMessage_ =
    QStringLiteral("EXCELファイルへの書き込みをキャンセルしました。");
const QString ToviCheckStatusFileOut::NotCreatedMessage_ = QStringLiteral(
    "EXCELが起動できません。インストールされていないか、正しくセットアップされていない可能性があ"
    "ります。");
const QString ToviCheckStatusFileOut::ProposedName_ = QStringLiteral("検査結果");
const QString ToviCheckStatusFileOut::Filter_ = QStringLiteral("EXCELファイル(*.xlsx)");
const QString ToviCheckStatusFileOut::WorkFolderName_ = QStringLiteral("QV-ExcelData");

namespace {

const QString kFindingSeparator = QStringLiteral("、");
const QString kWorkBook = QStringLiteral("CHKPHOTO.xlsx");
const QString kSheetName = QStringLiteral("検査結果");

// A sheet has 1,048,576 rows: so many page blocks fit.
constexpr int kMaxPages = 1048576 / ToviCheckStatusFileOut::kRowsPerPage;

// The printable part of an A4 portrait page inside the form's margins.
constexpr double kMarginSide = 0.5;    // inches
constexpr double kMarginEdge = 0.75;   // inches, top and bottom
constexpr double kPrintableWidthPx = (8.27 - 2 * kMarginSide) * 96;
constexpr double kPrintableHeightPt = (11.69 - 2 * kMarginEdge) * 72;

// Column widths in characters: a column is as wide as its longest text within these bounds.
constexpr double kMinWidth[ToviCheckStatusFileOut::kColumns] = {8, 16, 16, 8, 24};
constexpr double kMaxWidth[ToviCheckStatusFileOut::kColumns] = {20, 40, 40, 10, 60};

// The width of text in characters of the sheet's default font, a wide (Japanese) character
// counting two.
int TextWidth(const QString& text) {
    int width = 0;
    for (QChar c : text) {
        width += c.unicode() < 0x0100 || (c.unicode() >= 0xFF61 && c.unicode() <= 0xFF9F) ? 1 : 2;
    }
    return width;
}

// Removes the work folder when the report ends, whatever the way.
class WorkFolderGuard {
public:
    explicit WorkFolderGuard(const QString& folder) : folder(folder) {}
    ~WorkFolderGuard() {
        if (!folder.isEmpty() && MibIsFolderExist(folder)) {
            MibRemoveDirectory(folder);
        }
    }
    WorkFolderGuard(const WorkFolderGuard&) = delete;
    WorkFolderGuard& operator=(const WorkFolderGuard&) = delete;

private:
    QString folder;
};

}  // namespace

ToviCheckStatusFileOut::ToviCheckStatusFileOut(ToviData& document, const ToviLabelManager& labels)
    : document(document), labels(labels) {}

QList<qint16> ToviCheckStatusFileOut::PageSizes(int count) {
    const int full = std::max(count, 0) / kPhotosPerPage;
    QList<qint16> sizes(full, static_cast<qint16>(kPhotosPerPage));
    sizes.append(static_cast<qint16>(std::max(count, 0) % kPhotosPerPage));
    return sizes;
}

bool ToviCheckStatusFileOut::IsOutputLocked(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) {
        return false;
    }
    if (!(info.permissions() & (QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther))) {
        return true;
    }
    // The lock files office programs keep beside a document they have open.
    const QString folder = info.absolutePath() + QLatin1Char('/');
    return QFileInfo::exists(folder + QStringLiteral(".~lock.") + info.fileName() +
                             QLatin1Char('#')) ||
           QFileInfo::exists(folder + QStringLiteral("~$") + info.fileName());
}

QString ToviCheckStatusFileOut::WorkFolder() {
    const QString suite = ToviEnvironment::SuiteFolder();
    return suite.isEmpty() ? QString() : suite + WorkFolderName_;
}

QString ToviCheckStatusFileOut::ResultText(WriteResult result) {
    switch (result) {
        case Written:
            return WrittenMessage_;
        case Cancelled:
            return CancelledMessage_;
        case NotCreated:
            return NotCreatedMessage_;
        default:
            return FailedMessage_;
    }
}

bool ToviCheckStatusFileOut::FileOut(const QString& caption, QWidget* parent) {
    ToviUi& ui = ToviUi::Instance();
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString output = ui.GetSaveFileName(
        parent, caption, QDir(documents).filePath(ProposedName_ + QStringLiteral(".xlsx")),
        Filter_);
    if (output.isEmpty()) {
        return false;
    }
    const WriteResult result = Write(caption, output);
    const ToviUi::Icon icon = result == Written || result == Cancelled || result == NotCreated
                                  ? ToviUi::IconInformation
                                  : ToviUi::IconWarning;
    ui.MessageBox(parent, ResultText(result), caption, ToviUi::ButtonsOk, icon);
    if (result != Written) {
        return false;
    }
    ui.OpenWithDefaultApplication(output);
    return true;
}

ToviCheckStatusFileOut::WriteResult ToviCheckStatusFileOut::Write(const QString& caption,
                                                                  const QString& output) {
    // What the report shows is fixed at its start: a change during the run has no effect.
    QString ngNames[3];
    for (int label = 1; label <= 3; ++label) {
        ngNames[label - 1] = labels.GetLabelAttribute(static_cast<unsigned long>(label)).GetName();
    }
    const int titleShowType = document.GetVisualSetting().GetTitleShowType();
    const ToviItemDef& def = *document.GetItemDef();
    const int serialIndex = def.GetIndexFromTitle(QStringLiteral("シリアル番号"));
    const int placeIndex = def.GetIndexFromTitle(QStringLiteral("撮影箇所"));
    static const QString kNameTitles[] = {QStringLiteral("写真ファイル名"),
                                          QStringLiteral("写真ファイル日本語名"),
                                          QStringLiteral("写真タイトル")};
    const bool nameShown = titleShowType >= 0 && titleShowType <= 2;
    const int nameIndex = nameShown ? def.GetIndexFromTitle(kNameTitles[titleShowType]) : -1;

    const QString work = WorkFolder();
    if (work.isEmpty() || (MibIsFolderExist(work) && !MibRemoveDirectory(work))) {
        return Failed;
    }
    WorkFolderGuard guard(work);
    if (!MibCreateDirectory(work)) {
        return Failed;
    }
    const int count = document.GetCurrentPhotoCount();
    const QList<qint16> pages = PageSizes(count);
    if (pages.size() > kMaxPages || IsOutputLocked(output)) {
        return Failed;
    }

    ToviProgressDlg progress(true, nullptr);
    progress.SetCancelBtnEnabled(true);
    progress.Create();
    progress.SetCaption(caption);
    progress.SetRange(0, count);
    progress.SetStep(1);
    progress.SetPos(0);

    const QString book = work + QLatin1Char('/') + kWorkBook;
    MibSheetWriter sheet(book, kSheetName, work);
    if (!sheet.IsOpen()) {
        return NotCreated;
    }
    const QString headers[kColumns] = {
        QStringLiteral("シリアル番号"), nameShown ? kNameTitles[titleShowType] : QStringLiteral("写真"),
        QStringLiteral("撮影箇所"), QStringLiteral("検査結果"), QStringLiteral("指摘事項・コメント")};
    int widths[kColumns];
    for (int column = 0; column < kColumns; ++column) {
        widths[column] = TextWidth(headers[column]);
    }
    const auto writeHeader = [&](int page) {
        for (int column = 0; column < kColumns; ++column) {
            sheet.WriteString(page * kRowsPerPage, column, headers[column],
                              MibSheetWriter::StyleHeader);
        }
    };

    // Page and row-in-page counters are 16-bit as the form's arithmetic has them; the sheet
    // row is worked out from them.
    qint16 page = 0;
    qint16 rowsOnPage = 0;
    writeHeader(0);
    const QString messageHead = QStringLiteral("Excelデータ出力中　");
    const QString messageTail = QStringLiteral(" / ") + QString::number(count);
    QString cells[kColumns];
    for (int i = 0; i < count; ++i) {
        if (rowsOnPage == pages[page]) {
            ++page;
            rowsOnPage = 0;
            writeHeader(page);
        }
        const ToviPhoto* photo = document.GetPhoto(i);
        cells[0] = photo->GetTitle(serialIndex);
        cells[1] = nameShown ? photo->GetTitle(nameIndex) : QString();
        cells[2] = photo->GetTitle(placeIndex);
        cells[3] = photo->IsOK()          ? QStringLiteral("ＯＫ")
                   : photo->HasNGLabel()  ? QStringLiteral("ＮＧ")
                   : photo->IsNotCheck()  ? QStringLiteral("未検査")
                                          : QString();
        cells[4].clear();
        for (unsigned label = 1; label <= 3; ++label) {
            if (photo->IsLabelPasted(label)) {
                if (!cells[4].isEmpty()) {
                    cells[4] += kFindingSeparator;
                }
                cells[4] += ngNames[label - 1];
            }
        }
        const QString comment = photo->GetComment();
        if (!comment.isEmpty()) {
            if (!cells[4].isEmpty()) {
                cells[4] += kFindingSeparator;
            }
            cells[4] += comment;
        }
        const int row = page * kRowsPerPage + 1 + rowsOnPage;
        for (int column = 0; column < kColumns; ++column) {
            sheet.WriteString(row, column, cells[column],
                              column == 3 ? MibSheetWriter::StyleCentered
                                          : MibSheetWriter::StyleText);
            widths[column] = std::max(widths[column], TextWidth(cells[column]));
        }
        progress.SetMessage(messageHead + QString::number(i + 1) + messageTail);
        if (progress.GetCancel()) {
            return Cancelled;
        }
        progress.StepIt();
        ++rowsOnPage;
    }
    // The rest of the form: the last block's empty rows and any block still to come.
    for (qint16 rest = page; rest < pages.size(); ++rest) {
        if (rest != page) {
            writeHeader(rest);
        }
        const int firstEmpty = rest == page ? rowsOnPage : 0;
        for (int r = firstEmpty; r < kPhotosPerPage; ++r) {
            for (int column = 0; column < kColumns; ++column) {
                sheet.WriteBlank(rest * kRowsPerPage + 1 + r, column,
                                 column == 3 ? MibSheetWriter::StyleCentered
                                             : MibSheetWriter::StyleText);
            }
        }
    }
    progress.DestroyWindow();

    // Columns as wide as their texts, fitted to one page wide, and rows as high as makes one
    // block fill a page at the scale that fitting takes with the sheet's default font: an
    // office program that lays pages out by itself then breaks them where the manual breaks
    // are, also past the number of manual breaks a sheet can hold.
    double widthPx = 0;
    for (int column = 0; column < kColumns; ++column) {
        const double width =
            std::clamp(static_cast<double>(widths[column] + 2), kMinWidth[column], kMaxWidth[column]);
        sheet.SetColumnWidth(column, width);
        widthPx += std::floor(width * 7 + 0.5) + 5;
    }
    MibSheetWriter::PageSetup setup;
    setup.scale = std::clamp(static_cast<int>(kPrintableWidthPx * 100 / widthPx), 10, 100);
    setup.fitToWidth = true;
    setup.marginLeft = setup.marginRight = kMarginSide;
    setup.marginTop = setup.marginBottom = kMarginEdge;
    sheet.SetPageSetup(setup);
    const double pageHeightPt = kPrintableHeightPt * 100 / setup.scale;
    sheet.SetRowHeight(std::floor(pageHeightPt / (kRowsPerPage + 0.5) * 4) / 4);
    std::vector<int> breaks;
    for (int p = 1; p < pages.size(); ++p) {
        breaks.push_back(p * kRowsPerPage);
    }
    sheet.SetRowBreaks(breaks);
    sheet.SetPrintArea(0, 0, static_cast<int>(pages.size()) * kRowsPerPage - 1, kColumns - 1);
    sheet.SetPageBreakView(true);
    if (!sheet.Close()) {
        return Failed;
    }
    return MibMoveFileReplacing(book, output) ? Written : Failed;
}
