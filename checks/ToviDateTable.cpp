#include "checks/ToviDateTable.h"

#include "checks/ToviCheckContext.h"
#include "checks/ToviFileChecks.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "platform/LumImage.h"

#include <QFileInfo>

#include <cstdlib>

namespace {

// "2024/05/01 09:30:00", as the Exif reader gives it.
QDateTime ExifText(const QString& text) {
    return QDateTime::fromString(text, QStringLiteral("yyyy/MM/dd HH:mm:ss"));
}

}  // namespace

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
    if (row.shotText.size() == 10) {
        row.shot = QDate::fromString(row.shotText, Qt::ISODate);
    }
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
    QString text;
    if (LumImage::GetComment(path, LumCmntDateTimeOriginal, text)) {
        row.exif = ExifText(text);
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
    return {QString::number(row.index),
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
