#pragma once

#include "checks/ToviDateTable.h"

#include <QAbstractTableModel>
#include <QDialog>
#include <QSortFilterProxyModel>

#include <vector>

class QCheckBox;
class QLabel;
class QPushButton;
class QTableView;

// The rows of a date table for a view: one column per title of ToviDateTable::Headers, the
// numbers sorted as numbers, the rows that differ by more than a day marked.
class ToviDateTableModel : public QAbstractTableModel {
    Q_OBJECT
public:
    // What the sort reads (numbers and times for the columns that hold them).
    static constexpr int SortRole = Qt::UserRole + 1;
    // Whether the row differs.
    static constexpr int DiffersRole = Qt::UserRole + 2;

    explicit ToviDateTableModel(QObject* parent = nullptr) : QAbstractTableModel(parent) {}
    void SetRows(std::vector<ToviDateRow> rows);
    const std::vector<ToviDateRow>& Rows() const { return rows; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    std::vector<ToviDateRow> rows;
    std::vector<QStringList> cells;
};

// Keeps every row, or only those that differ.
class ToviDateTableFilter : public QSortFilterProxyModel {
    Q_OBJECT
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;
    void SetDiffersOnly(bool on);
    bool DiffersOnly() const { return differsOnly; }

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    bool differsOnly = false;
};

// 撮影日の照合: 撮影年月日, the Exif date and the file time of the photographs on show, side
// by side. The table sorts by any column, shows only the rows that differ when asked, and
// saves what it shows as CSV; a double-click (or Enter) on a row asks for its photograph
// (PhotoRequested), which the host selects in the multi-photo panel. Its size is kept.
class ToviDateTableDlg : public QDialog {
    Q_OBJECT
public:
    static const QString Section_;  // "DateTable"

    explicit ToviDateTableDlg(QWidget* parent = nullptr);
    void SetRows(std::vector<ToviDateRow> rows);

    QTableView* View() const { return view; }
    QCheckBox* DiffersOnlyBox() const { return differsOnly; }
    QPushButton* SaveButton() const { return saveButton; }
    ToviDateTableModel* Model() const { return model; }
    ToviDateTableFilter* Filter() const { return filter; }

    // The rows as shown (filtered and sorted) in CSV; false, after a message, when the file
    // could not be written.
    bool SaveCsv(const QString& path);

signals:
    void PhotoRequested(int photoIndex);

protected:
    void done(int result) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void RequestRow(const QModelIndex& proxyIndex);
    void UpdateCount();
    void OnSave();

    ToviDateTableModel* model;
    ToviDateTableFilter* filter;
    QTableView* view;
    QCheckBox* differsOnly;
    QLabel* count;
    QPushButton* saveButton;
};
