#include "checks/ToviDateTable.h"

#include "checks/ToviCheckContext.h"
#include "checks/ToviFileChecks.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "platform/LumJpegFacts.h"

#include <QFileInfo>

#include <cstdlib>
#include <cstring>

namespace {

// A TIFF structure's numbers in its own byte order, bounds checked.
struct TiffReader {
    const uchar* bytes;
    qint64 size;
    bool little;

    bool U16(qint64 at, quint32* out) const {
        if (at < 0 || at + 2 > size) {
            return false;
        }
        *out = little ? bytes[at] | (bytes[at + 1] << 8) : (bytes[at] << 8) | bytes[at + 1];
        return true;
    }
    bool U32(qint64 at, quint32* out) const {
        quint32 a = 0;
        quint32 b = 0;
        if (!U16(at, &a) || !U16(at + 2, &b)) {
            return false;
        }
        *out = little ? a | (b << 16) : (a << 16) | b;
        return true;
    }
    // The entry of tag in the directory at offset; its position, or -1.
    qint64 Find(qint64 offset, quint32 tag) const {
        quint32 count = 0;
        if (!U16(offset, &count)) {
            return -1;
        }
        for (quint32 i = 0; i < count; ++i) {
            const qint64 entry = offset + 2 + 12 * qint64(i);
            quint32 found = 0;
            if (!U16(entry, &found)) {
                return -1;
            }
            if (found == tag) {
                return entry;
            }
        }
        return -1;
    }
};

// The Exif block's TIFF structure in a JPEG header: its start, or -1.
qint64 ExifBlock(const QByteArray& header, qint64* length) {
    const auto* bytes = reinterpret_cast<const uchar*>(header.constData());
    const qint64 size = header.size();
    qint64 pos = 2;
    while (pos + 4 <= size && bytes[pos] == 0xFF) {
        const uchar marker = bytes[pos + 1];
        if (marker == 0xFF) {
            ++pos;
            continue;
        }
        if (marker == 0xDA || marker == 0xD9) {
            break;
        }
        const qint64 segment = (bytes[pos + 2] << 8) | bytes[pos + 3];
        if (segment < 2) {
            break;
        }
        if (marker == 0xE1 && segment >= 8 && pos + 2 + segment <= size &&
            std::memcmp(bytes + pos + 4, "Exif\0\0", 6) == 0) {
            *length = segment - 8;
            return pos + 10;
        }
        pos += 2 + segment;
    }
    return -1;
}

}  // namespace

QDate ToviDateTable::ShotDate(const QString& text) {
    if (text.size() != 10 || text[4] != QLatin1Char('-') || text[7] != QLatin1Char('-')) {
        return QDate();
    }
    for (const int at : {0, 1, 2, 3, 5, 6, 8, 9}) {
        if (text[at] < QLatin1Char('0') || text[at] > QLatin1Char('9')) {
            return QDate();
        }
    }
    return QDate::fromString(text, QStringLiteral("yyyy-MM-dd"));
}

QDateTime ToviDateTable::ExifOriginalDate(const QByteArray& header) {
    qint64 length = 0;
    const qint64 start = ExifBlock(header, &length);
    if (start < 0 || length < 8) {
        return QDateTime();
    }
    const auto* tiff = reinterpret_cast<const uchar*>(header.constData()) + start;
    if (std::memcmp(tiff, "II", 2) != 0 && std::memcmp(tiff, "MM", 2) != 0) {
        return QDateTime();
    }
    const TiffReader reader{tiff, length, tiff[0] == 'I'};
    quint32 magic = 0;
    quint32 ifd0 = 0;
    quint32 exifIfd = 0;
    quint32 type = 0;
    quint32 count = 0;
    quint32 offset = 0;
    if (!reader.U16(2, &magic) || magic != 42 || !reader.U32(4, &ifd0)) {
        return QDateTime();
    }
    const qint64 pointer = reader.Find(ifd0, 0x8769);  // the Exif directory
    if (pointer < 0 || !reader.U32(pointer + 8, &exifIfd)) {
        return QDateTime();
    }
    const qint64 entry = reader.Find(exifIfd, 0x9003);  // DateTimeOriginal
    if (entry < 0 || !reader.U16(entry + 2, &type) || !reader.U32(entry + 4, &count) || type != 2 ||
        count < 19 || !reader.U32(entry + 8, &offset) || offset + 19 > length) {
        return QDateTime();
    }
    QByteArray text(reinterpret_cast<const char*>(tiff) + offset, 19);
    // Some writers put '-' or '/' between the parts of the date.
    for (const int at : {4, 7}) {
        if (text[at] == '-' || text[at] == '/') {
            text[at] = ':';
        }
    }
    return QDateTime::fromString(QString::fromLatin1(text), QStringLiteral("yyyy:MM:dd HH:mm:ss"));
}

std::optional<qint64> ToviDateRow::ExifDays() const {
    if (!shot.isValid() || !exif.isValid()) {
        return std::nullopt;
    }
    return shot.daysTo(exif.date());
}

std::optional<qint64> ToviDateRow::FileDays() const {
    if (!shot.isValid() || !modified.isValid()) {
        return std::nullopt;
    }
    return shot.daysTo(modified.date());
}

bool ToviDateRow::Differs() const {
    const auto far = [](std::optional<qint64> days) {
        return days && std::llabs(*days) > ToviDateTable::kToleranceDays;
    };
    return far(ExifDays()) || far(FileDays());
}

void ToviDateItems::Find(const ToviCheckContext& context) {
    const auto set = [&](const char* title) {
        QSet<int> indexes;
        for (const int i : context.DefinitionsTitled(QString::fromUtf8(title))) {
            indexes.insert(i);
        }
        return indexes;
    };
    serial = set("シリアル番号");
    file = set("写真ファイル名");
    date = set("撮影年月日");
}

ToviDateRow ToviDateTable::ReadRow(ToviCheckContext& context, const ToviReadableFiles& files,
                                   const ToviDateItems& items, int index) {
    ToviDateRow row;
    row.index = index;
    QString name;
    // The first of each element counts, as the viewer shows it.
    for (const ToviItem& it : context.Photo(index).GetItems()) {
        const int def = it.GetDefIndex();
        if (row.serial.isEmpty() && items.serial.contains(def)) {
            row.serial = it.Value();
        } else if (name.isEmpty() && items.file.contains(def)) {
            name = it.Value();
        } else if (row.shotText.isEmpty() && items.date.contains(def)) {
            row.shotText = it.Value();
        }
    }
    row.shot = ShotDate(row.shotText);
    if (name.isEmpty()) {
        return row;
    }
    row.file = QStringLiteral("PIC/") + name;
    const QString path = files.PathOf(context, true, name);
    if (path.isEmpty()) {
        return row;
    }
    const QFileInfo info(path);
    row.readable = true;
    row.modified = info.lastModified();
    LumJpegFacts facts;
    QByteArray header;
    if (context.JpegHeader(path, &facts, &header)) {
        row.exif = ExifOriginalDate(header);
    }
    return row;
}

bool ToviDateTable::Build(const ToviData& document, const QList<int>& indices,
                          const std::atomic<bool>* cancel, const Progress& progress) {
    rows.clear();
    rows.reserve(static_cast<size_t>(indices.size()));
    ToviCheckContext context(document);
    ToviReadableFiles files;
    files.Begin(context);
    ToviDateItems items;
    items.Find(context);
    const qint64 total = indices.size();
    for (qint64 done = 0; done < total; ++done) {
        if ((done & 63) == 0) {
            if (cancel && cancel->load(std::memory_order_relaxed)) {
                return false;
            }
            if (progress && done > 0) {
                progress(done, total);
            }
        }
        const int index = indices[done];
        if (index >= 0 && index < context.PhotoCount()) {
            rows.push_back(ReadRow(context, files, items, index));
        }
    }
    if (cancel && cancel->load(std::memory_order_relaxed)) {
        return false;
    }
    if (progress) {
        progress(total, total);
    }
    return true;
}

QStringList ToviDateTable::Headers() {
    return {QStringLiteral("番号"),
            QStringLiteral("シリアル番号"),
            QStringLiteral("写真ファイル"),
            QStringLiteral("撮影年月日"),
            QStringLiteral("Exif撮影日時"),
            QStringLiteral("ファイル更新日時"),
            QStringLiteral("Exifとの差(日)"),
            QStringLiteral("更新日時との差(日)"),
            QStringLiteral("差")};
}

QString ToviDateTable::DateTimeText(const QDateTime& time) {
    return time.isValid() ? time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : QString();
}

QString ToviDateTable::DaysText(std::optional<qint64> days) {
    if (!days) {
        return QString();
    }
    return *days > 0 ? QStringLiteral("+%1").arg(*days) : QString::number(*days);
}

QStringList ToviDateTable::Cells(const ToviDateRow& row) {
    QString exif = DateTimeText(row.exif);
    if (row.readable && !row.exif.isValid()) {
        exif = QStringLiteral("(なし)");
    }
    QString modified = DateTimeText(row.modified);
    if (!row.file.isEmpty() && !row.readable) {
        modified = exif = QStringLiteral("(読めません)");
    }
    // Photographs are numbered from 1 for people, as in the check results and their sheet.
    return {QString::number(row.index + 1),
            row.serial,
            row.file,
            row.shotText,
            exif,
            modified,
            DaysText(row.ExifDays()),
            DaysText(row.FileDays()),
            row.Differs() ? QStringLiteral("あり") : QString()};
}

QString ToviDateTable::CsvField(const QString& text) {
    static const QString special = QStringLiteral(",\"\r\n");
    bool quote = false;
    for (const QChar c : text) {
        if (special.contains(c)) {
            quote = true;
            break;
        }
    }
    if (!quote) {
        return text;
    }
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QByteArray ToviDateTable::Csv(const std::vector<ToviDateRow>& rows) {
    const auto line = [](const QStringList& cells) {
        QStringList fields;
        fields.reserve(cells.size());
        for (const QString& cell : cells) {
            fields << CsvField(cell);
        }
        return fields.join(QLatin1Char(',')) + QStringLiteral("\r\n");
    };
    QString text = line(Headers());
    for (const ToviDateRow& row : rows) {
        text += line(Cells(row));
    }
    return QByteArrayLiteral("\xEF\xBB\xBF") + text.toUtf8();
}
