#include "panels/ToviFindingsModel.h"

#include <QApplication>
#include <QBrush>
#include <QColor>
#include <QStyle>

#include <algorithm>
#include <cstring>

namespace {

// A serial number as written: digits only, of a length a qint64 holds; else -1.
qint64 SerialValue(const QString& text) {
    if (text.isEmpty() || text.size() > 18) {
        return -1;
    }
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9')) {
            return -1;
        }
    }
    return text.toLongLong();
}

}  // namespace

ToviFindingsModel::ToviFindingsModel(QObject* parent) : QAbstractTableModel(parent) {}

int ToviFindingsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows.size());
}

int ToviFindingsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

QIcon ToviFindingsModel::SeverityIcon(ToviCheckFinding::Severity severity) {
    static const QStyle::StandardPixmap pixmaps[] = {QStyle::SP_MessageBoxCritical,
                                                     QStyle::SP_MessageBoxWarning,
                                                     QStyle::SP_MessageBoxInformation};
    return QApplication::style()->standardIcon(pixmaps[severity]);
}

QVariant ToviFindingsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= static_cast<int>(rows.size())) {
        return QVariant();
    }
    const Row& row = rows[static_cast<size_t>(index.row())];
    const ToviCheckFinding& f = row.finding;
    if (role == IndexRole) {
        return f.index;
    }
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) {
        switch (index.column()) {
            case ColumnNumber:
                return f.index >= 0 ? QVariant(f.index + 1) : QVariant(QString());
            case ColumnSerial:
                return row.serial;
            case ColumnSeverity:
                return ToviCheckFinding::SeverityLabel(f.severity);
            case ColumnCode:
                return QString::fromLatin1(f.code);
            case ColumnItem:
                return f.item;
            case ColumnFile:
                return f.file;
            case ColumnMessage:
                return f.message;
            default:
                return QVariant();
        }
    }
    if (role == Qt::DecorationRole && index.column() == ColumnSeverity) {
        // One icon per severity, made once: a view asks for it on every paint.
        static const std::array<QIcon, ToviCheckFinding::kSeverityCount> icons{
            SeverityIcon(ToviCheckFinding::Error), SeverityIcon(ToviCheckFinding::Warning),
            SeverityIcon(ToviCheckFinding::Note)};
        return icons[f.severity];
    }
    if (role == Qt::ForegroundRole && index.column() == ColumnSeverity &&
        f.severity == ToviCheckFinding::Error) {
        return QBrush(QColor(0xB0, 0x00, 0x20));
    }
    if (role == Qt::TextAlignmentRole &&
        (index.column() == ColumnNumber || index.column() == ColumnSerial)) {
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    }
    return QVariant();
}

QVariant ToviFindingsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    static const char* const titles[] = {"番号", "シリアル番号", "重要度", "コード",
                                         "項目", "ファイル",     "内容"};
    return section >= 0 && section < kColumnCount ? QString::fromUtf8(titles[section]) : QVariant();
}

void ToviFindingsModel::Append(std::vector<Row> batch) {
    if (batch.empty()) {
        return;
    }
    bool newCode = false;
    for (Row& row : batch) {
        row.serialValue = SerialValue(row.serial);
        ++counts[row.finding.severity];
        const QString code = QString::fromLatin1(row.finding.code);
        const auto at = std::lower_bound(codes.begin(), codes.end(), code);
        if (at == codes.end() || *at != code) {
            codes.insert(at, code);
            newCode = true;
        }
    }
    const int first = static_cast<int>(rows.size());
    beginInsertRows(QModelIndex(), first, first + static_cast<int>(batch.size()) - 1);
    rows.insert(rows.end(), std::make_move_iterator(batch.begin()),
                std::make_move_iterator(batch.end()));
    endInsertRows();
    if (newCode) {
        emit CodesChanged();
    }
}

void ToviFindingsModel::Clear() {
    beginResetModel();
    rows.clear();
    rows.shrink_to_fit();
    counts.fill(0);
    codes.clear();
    endResetModel();
    emit CodesChanged();
}

// ---- the filter ------------------------------------------------------------------------------

ToviFindingsFilter::ToviFindingsFilter(QObject* parent) : QSortFilterProxyModel(parent) {}

const ToviFindingsModel* ToviFindingsFilter::Findings() const {
    return static_cast<const ToviFindingsModel*>(sourceModel());
}

void ToviFindingsFilter::SetSeverityShown(ToviCheckFinding::Severity severity, bool on) {
    if (shown[severity] == on) {
        return;
    }
    shown[severity] = on;
    invalidateRowsFilter();
}

void ToviFindingsFilter::SetCode(const QString& text) {
    if (code == text) {
        return;
    }
    code = text;
    codeBytes = text.toLatin1();
    invalidateRowsFilter();
}

bool ToviFindingsFilter::filterAcceptsRow(int sourceRow, const QModelIndex&) const {
    const ToviCheckFinding& f = Findings()->At(sourceRow).finding;
    return shown[f.severity] &&
           (codeBytes.isEmpty() || std::strcmp(f.code, codeBytes.constData()) == 0);
}

bool ToviFindingsFilter::lessThan(const QModelIndex& left, const QModelIndex& right) const {
    const ToviFindingsModel::Row& a = Findings()->At(left.row());
    const ToviFindingsModel::Row& b = Findings()->At(right.row());
    switch (left.column()) {
        case ToviFindingsModel::ColumnNumber: {
            // Findings about no photograph come after every photograph's.
            const unsigned x = static_cast<unsigned>(a.finding.index);
            const unsigned y = static_cast<unsigned>(b.finding.index);
            return x < y;
        }
        case ToviFindingsModel::ColumnSerial:
            if (a.serialValue >= 0 && b.serialValue >= 0) {
                return a.serialValue < b.serialValue;
            }
            // Numbers before texts, and texts (and blanks last) by their characters.
            if ((a.serialValue >= 0) != (b.serialValue >= 0)) {
                return a.serialValue >= 0;
            }
            if (a.serial.isEmpty() != b.serial.isEmpty()) {
                return !a.serial.isEmpty();
            }
            return a.serial < b.serial;
        case ToviFindingsModel::ColumnSeverity:
            return a.finding.severity < b.finding.severity;
        case ToviFindingsModel::ColumnCode:
            return std::strcmp(a.finding.code, b.finding.code) < 0;
        case ToviFindingsModel::ColumnItem:
            return a.finding.item < b.finding.item;
        case ToviFindingsModel::ColumnFile:
            return a.finding.file < b.finding.file;
        case ToviFindingsModel::ColumnMessage:
            return a.finding.message < b.finding.message;
        default:
            return false;
    }
}
