#pragma once

#include "checks/ToviCheckFinding.h"

#include <QAbstractTableModel>
#include <QByteArray>
#include <QIcon>
#include <QSortFilterProxyModel>
#include <QStringList>

#include <array>
#include <vector>

// The findings of a delivery check as a table: one row per finding, in the order they
// arrived (by photograph, those about the delivery as a whole after them). The photograph's
// シリアル番号 is taken when the finding is added, so that sorting by it reads no document.
class ToviFindingsModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column {
        ColumnNumber,  // the photograph's 1-based position in PHOTO.XML; blank for none
        ColumnSerial,
        ColumnSeverity,
        ColumnCode,
        ColumnItem,
        ColumnFile,
        ColumnMessage,
        kColumnCount
    };
    // The photograph's 0-based position (-1 for none), for whoever acts on a row.
    static constexpr int IndexRole = Qt::UserRole + 1;

    struct Row {
        ToviCheckFinding finding;
        QString serial;
        qint64 serialValue = -1;  // the serial as a number when it is all digits (set by Append)
    };

    explicit ToviFindingsModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // Adds a batch at the end in one insertion.
    void Append(std::vector<Row> batch);
    void Clear();
    const Row& At(int row) const { return rows[static_cast<size_t>(row)]; }
    int Count(ToviCheckFinding::Severity severity) const { return counts[severity]; }
    // The codes found so far, in ASCII order.
    const QStringList& Codes() const { return codes; }

    static QIcon SeverityIcon(ToviCheckFinding::Severity severity);

signals:
    // A code not seen before arrived (or the list was cleared).
    void CodesChanged();

private:
    std::vector<Row> rows;
    std::array<int, ToviCheckFinding::kSeverityCount> counts{};
    QStringList codes;
};

// What the table shows of the findings: the severities ticked and one code or all, sorted
// by any column. Sorting compares the findings themselves (no text is made for it), and ties
// keep the order the findings arrived in.
class ToviFindingsFilter : public QSortFilterProxyModel {
    Q_OBJECT
public:
    explicit ToviFindingsFilter(QObject* parent = nullptr);

    void SetSeverityShown(ToviCheckFinding::Severity severity, bool shown);
    bool IsSeverityShown(ToviCheckFinding::Severity severity) const { return shown[severity]; }
    // An empty code shows every code.
    void SetCode(const QString& code);
    const QString& Code() const { return code; }

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    const ToviFindingsModel* Findings() const;

    std::array<bool, ToviCheckFinding::kSeverityCount> shown{true, true, true};
    QString code;
    QByteArray codeBytes;
};
