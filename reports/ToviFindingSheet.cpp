#include "reports/ToviFindingSheet.h"

#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "platform/DoxDocument.h"
#include "platform/MibFile.h"
#include "platform/MibSheet.h"
#include "reports/ToviCheckStatusFileOut.h"

#include <QDataStream>
#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

namespace {

const QString kSheetName = QStringLiteral("チェック結果");
const QString kTitle = QStringLiteral("電子納品チェック結果");

// A sheet has 1,048,576 rows; the table gets what is left below its header, less a row for
// saying how many findings did not fit.
constexpr int kMaxRows = 1048576;
constexpr qint64 kMaxFindingRows = kMaxRows - ToviFindingSheet::kHeaderRow - 2;

// Column widths in characters of the default font; the message wraps within its column.
constexpr double kWidths[ToviFindingSheet::kColumns] = {9, 12, 22, 16, 8, 22, 70};

// The first text of a tag directly under a group directly under the root, or empty.
QString IndexText(DoxDocument* xml, const QByteArray& group, const QByteArray& tag) {
    DoxIterator it(xml);
    if (!it.Root() || !it.Child()) {
        return {};
    }
    do {
        if (!it.IsTag(group) || !it.Child()) {
            continue;
        }
        do {
            if (it.IsTag(tag)) {
                return it.GetText().trimmed();
            }
        } while (it.NextSibling());
        return {};
    } while (it.NextSibling());
    return {};
}

}  // namespace

ToviFindingSheet::ToviFindingSheet(const ToviData& document) : document(document) {}

ToviFindingSheet::~ToviFindingSheet() = default;

void ToviFindingSheet::Add(ToviCheckFinding finding) {
    ++counts[finding.severity];
    ++total;
    if (spoolFailed) {
        return;
    }
    if (!spool) {
        spool = std::make_unique<QTemporaryFile>(QDir::tempPath() +
                                                 QStringLiteral("/tovi-findings-XXXXXX"));
        if (!spool->open()) {
            spoolFailed = true;
            return;
        }
    }
    QDataStream out(spool.get());
    out << QByteArray(finding.code) << qint32(finding.severity) << qint32(finding.index)
        << finding.file << finding.item << finding.message;
    spoolFailed = out.status() != QDataStream::Ok;
}

QString ToviFindingSheet::DeliveryName(const ToviData& document) {
    QString indexPath;
    QString stylesheet;
    document.GetItemDef()->GetPathAndName(indexPath, stylesheet);
    // Only an ordinary file is read: a FIFO in the index's place would never answer.
    if (!indexPath.isEmpty() && QFileInfo(indexPath).isFile()) {
        DoxDocument xml;
        if (xml.Load(indexPath)) {
            for (const auto& [group, tag] :
                 {std::pair{QByteArrayLiteral("工事件名等"), QByteArrayLiteral("工事名称")},
                  std::pair{QByteArrayLiteral("業務件名等"), QByteArrayLiteral("業務名称")}}) {
                const QString name = IndexText(&xml, group, tag);
                if (!name.isEmpty()) {
                    return name;
                }
            }
        }
    }
    // The delivery's own folder: the one above PHOTO.
    QDir folder(document.RootPath());
    const QString photo = folder.dirName();
    return folder.cdUp() && !folder.dirName().isEmpty() ? folder.dirName() : photo;
}

bool ToviFindingSheet::Write(const QString& output, QString* error) {
    const auto fail = [&](const QString& why) {
        if (error) {
            *error = QStringLiteral("%1 に書き込めません: %2").arg(output, why);
        }
        return false;
    };
    if (spoolFailed || (spool && !spool->flush())) {
        return fail(QStringLiteral("作業用の一時ファイルに書けません"));
    }
    const QFileInfo target(output);
    if (target.isDir()) {
        return fail(QStringLiteral("フォルダです"));
    }
    if (!target.absoluteDir().exists()) {
        return fail(QStringLiteral("フォルダがありません"));
    }
    // A folder or file marked read-only is respected by its mode, also when the run could
    // write there anyway (as the superuser).
    constexpr auto kWrite = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    if (!(QFileInfo(target.absolutePath()).permissions() & kWrite)) {
        return fail(QStringLiteral("フォルダへの書き込みが禁止されています"));
    }
    if (ToviCheckStatusFileOut::IsOutputLocked(target.absoluteFilePath())) {
        return fail(QStringLiteral("書き込みが禁止されているか、ほかのプログラムが開いています"));
    }
    // The book is made beside the output, so that the last step is a rename on one disc.
    QTemporaryFile book(target.absolutePath() +
                        QStringLiteral("/.%1-XXXXXX.xlsx").arg(target.completeBaseName()));
    if (!book.open()) {
        return fail(book.errorString());
    }
    book.close();

    MibSheetWriter sheet(book.fileName(), kSheetName, QDir::tempPath());
    if (!sheet.IsOpen()) {
        return fail(QStringLiteral("ブックを作れません"));
    }
    sheet.WriteString(0, 0, kTitle, MibSheetWriter::StyleTitle);
    const QString facts[3][2] = {
        {QStringLiteral("工事名"), DeliveryName(document)},
        {QStringLiteral("フォルダ"), QFileInfo(document.RootPath()).absoluteFilePath()},
        {QStringLiteral("チェック日"), QDate::currentDate().toString(Qt::ISODate)}};
    for (int row = 0; row < 3; ++row) {
        sheet.WriteString(row + 1, 0, facts[row][0], MibSheetWriter::StylePlain);
        sheet.WriteString(row + 1, 1, facts[row][1], MibSheetWriter::StylePlain);
    }
    int column = 0;
    for (const auto severity :
         {ToviCheckFinding::Error, ToviCheckFinding::Warning, ToviCheckFinding::Note}) {
        sheet.WriteString(4, column++, ToviCheckFinding::SeverityLabel(severity),
                          MibSheetWriter::StyleHeader);
        sheet.WriteNumber(4, column++, counts[severity], MibSheetWriter::StyleCentered);
    }
    static const QString kHeaders[kColumns] = {
        QStringLiteral("写真番号"), QStringLiteral("シリアル番号"), QStringLiteral("ファイル"),
        QStringLiteral("項目"),     QStringLiteral("重要度"),       QStringLiteral("コード"),
        QStringLiteral("内容")};
    for (int c = 0; c < kColumns; ++c) {
        sheet.WriteString(kHeaderRow, c, kHeaders[c], MibSheetWriter::StyleHeader);
        sheet.SetColumnWidth(c, kWidths[c]);
    }

    const int serialIndex =
        document.GetItemDef()->GetIndexFromTitle(QStringLiteral("シリアル番号"));
    int row = kHeaderRow + 1;
    if (spool) {
        spool->seek(0);
        QDataStream in(spool.get());
        QByteArray code;
        qint32 severity = 0;
        qint32 index = -1;
        QString file, item, message;
        for (qint64 n = 0; n < std::min(total, kMaxFindingRows); ++n, ++row) {
            in >> code >> severity >> index >> file >> item >> message;
            if (in.status() != QDataStream::Ok) {
                return fail(QStringLiteral("作業用の一時ファイルを読めません"));
            }
            const ToviPhoto* photo =
                index >= 0 ? document.GetPhotoActualPhotoArray(index) : nullptr;
            if (photo) {
                sheet.WriteNumber(row, 0, index + 1, MibSheetWriter::StyleCentered);
                sheet.WriteString(row, 1, photo->GetTitle(serialIndex),
                                  MibSheetWriter::StyleCentered);
            } else {
                sheet.WriteBlank(row, 0, MibSheetWriter::StyleCentered);
                sheet.WriteBlank(row, 1, MibSheetWriter::StyleCentered);
            }
            sheet.WriteString(row, 2, file, MibSheetWriter::StyleWrapped);
            sheet.WriteString(row, 3, item, MibSheetWriter::StyleWrapped);
            sheet.WriteString(
                row, 4,
                ToviCheckFinding::SeverityLabel(static_cast<ToviCheckFinding::Severity>(severity)),
                MibSheetWriter::StyleCentered);
            sheet.WriteString(row, 5, QString::fromLatin1(code), MibSheetWriter::StyleWrapped);
            sheet.WriteString(row, 6, message, MibSheetWriter::StyleWrapped);
        }
    }
    if (total > kMaxFindingRows) {
        sheet.WriteString(row, 0,
                          QStringLiteral("ほか %1 件はシートに入りきらないため省略しました")
                              .arg(total - kMaxFindingRows),
                          MibSheetWriter::StylePlain);
    }

    MibSheetWriter::PageSetup setup;
    setup.landscape = true;
    setup.fitToWidth = true;
    sheet.SetPageSetup(setup);
    sheet.SetRepeatRows(kHeaderRow, kHeaderRow);
    QString why;
    if (!sheet.Close(&why)) {
        return fail(why);
    }
    // The temporary file is private to its maker; the sheet keeps the mode of the file it
    // replaces, or is readable by all as a new file is.
    const QFile::Permissions mode = target.exists() ? target.permissions()
                                                    : QFile::ReadOwner | QFile::WriteOwner |
                                                          QFile::ReadGroup | QFile::ReadOther;
    QFile::setPermissions(book.fileName(), mode);
    if (!MibMoveFileReplacing(book.fileName(), target.absoluteFilePath())) {
        return fail(QStringLiteral("ファイルを置き換えられません"));
    }
    return true;
}
