#include "dialogs/ToviDateTableDlg.h"

#include "platform/ToviProfile.h"
#include "platform/ToviUi.h"

#include <QCheckBox>
#include <QColor>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPalette>
#include <QPushButton>
#include <QSaveFile>
#include <QTableView>
#include <QVBoxLayout>

#include <limits>

namespace {

const QString kGeometry = QStringLiteral("Geometry");

enum Column {
    ColumnIndex = 0,
    ColumnSerial = 1,
    ColumnExif = 4,
    ColumnModified = 5,
    ColumnExifDays = 6,
    ColumnFileDays = 7,
};

// Missing days sort before any number.
QVariant Days(std::optional<qint64> days) {
    return days ? QVariant(*days) : QVariant(std::numeric_limits<qint64>::min());
}

}  // namespace

// ---- model ------------------------------------------------------------------------------------

void ToviDateTableModel::SetRows(std::vector<ToviDateRow> newRows) {
    beginResetModel();
    rows = std::move(newRows);
    cells.clear();
    cells.reserve(rows.size());
    for (const ToviDateRow& row : rows) {
        cells.push_back(ToviDateTable::Cells(row));
    }
    endResetModel();
}

int ToviDateTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows.size());
}

int ToviDateTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(ToviDateTable::Headers().size());
}

QVariant ToviDateTableModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= static_cast<int>(rows.size())) {
        return QVariant();
    }
    const ToviDateRow& row = rows[static_cast<size_t>(index.row())];
    switch (role) {
        case Qt::DisplayRole:
            return cells[static_cast<size_t>(index.row())].value(index.column());
        case SortRole:
            switch (index.column()) {
                case ColumnIndex:
                    return row.index;
                case ColumnSerial: {
                    bool ok = false;
                    const qlonglong number = row.serial.toLongLong(&ok);
                    return ok ? QVariant(number) : QVariant(row.serial);
                }
                case ColumnExif:
                    return row.exif;
                case ColumnModified:
                    return row.modified;
                case ColumnExifDays:
                    return Days(row.ExifDays());
                case ColumnFileDays:
                    return Days(row.FileDays());
                default:
                    return cells[static_cast<size_t>(index.row())].value(index.column());
            }
        case DiffersRole:
            return row.Differs();
        case Qt::BackgroundRole:
            // A soft red that keeps black text readable in light and dark themes alike.
            return row.Differs() ? QVariant(QColor(255, 214, 214)) : QVariant();
        case Qt::ForegroundRole:
            return row.Differs() ? QVariant(QColor(Qt::black)) : QVariant();
        case Qt::TextAlignmentRole:
            return index.column() == ColumnIndex || index.column() == ColumnExifDays ||
                           index.column() == ColumnFileDays
                       ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                       : QVariant();
        default:
            return QVariant();
    }
}

QVariant ToviDateTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole) {
        return ToviDateTable::Headers().value(section);
    }
    return QAbstractTableModel::headerData(section, orientation, role);
}

void ToviDateTableFilter::SetDiffersOnly(bool on) {
    if (on == differsOnly) {
        return;
    }
    differsOnly = on;
    invalidateRowsFilter();
}

bool ToviDateTableFilter::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const {
    return !differsOnly || sourceModel()
                               ->index(sourceRow, 0, sourceParent)
                               .data(ToviDateTableModel::DiffersRole)
                               .toBool();
}

// ---- dialog -----------------------------------------------------------------------------------

const QString ToviDateTableDlg::Section_ = QStringLiteral("DateTable");

ToviDateTableDlg::ToviDateTableDlg(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("ToviDateTableDlg"));
    setWindowTitle(QStringLiteral("撮影日の照合"));
    model = new ToviDateTableModel(this);
    filter = new ToviDateTableFilter(this);
    filter->setSourceModel(model);
    filter->setSortRole(ToviDateTableModel::SortRole);

    view = new QTableView(this);
    view->setObjectName(QStringLiteral("dateTable"));
    view->setModel(filter);
    view->setSortingEnabled(true);
    view->sortByColumn(ColumnIndex, Qt::AscendingOrder);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->verticalHeader()->hide();
    view->horizontalHeader()->setStretchLastSection(true);
    view->setWordWrap(false);
    view->installEventFilter(this);
    connect(view, &QTableView::doubleClicked, this, &ToviDateTableDlg::RequestRow);

    differsOnly = new QCheckBox(QStringLiteral("差のある行のみ(&D)"), this);
    differsOnly->setObjectName(QStringLiteral("differsOnly"));
    connect(differsOnly, &QCheckBox::toggled, this, [this](bool on) {
        filter->SetDiffersOnly(on);
        UpdateCount();
    });
    count = new QLabel(this);
    count->setObjectName(QStringLiteral("rowCount"));
    auto* note = new QLabel(QStringLiteral("1 日を超える差のある行に色を付けています。"
                                           "行をダブルクリックするとその写真を選びます。"),
                            this);
    note->setWordWrap(true);

    auto* buttons = new QDialogButtonBox(this);
    saveButton =
        buttons->addButton(QStringLiteral("CSV で保存(&S)..."), QDialogButtonBox::ActionRole);
    saveButton->setObjectName(QStringLiteral("saveCsv"));
    saveButton->setAutoDefault(false);
    QPushButton* close = buttons->addButton(QDialogButtonBox::Close);
    close->setText(QStringLiteral("閉じる"));
    close->setAutoDefault(false);
    connect(saveButton, &QPushButton::clicked, this, &ToviDateTableDlg::OnSave);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* top = new QHBoxLayout;
    top->addWidget(differsOnly);
    top->addStretch(1);
    top->addWidget(count);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(view, 1);
    layout->addWidget(note);
    layout->addWidget(buttons);

    const QByteArray geometry = QByteArray::fromBase64(
        ToviProfile::Instance().GetProfileString(Section_, kGeometry, QString()).toLatin1());
    if (geometry.isEmpty() || !restoreGeometry(geometry)) {
        resize(1080, 600);
    }
}

void ToviDateTableDlg::SetRows(std::vector<ToviDateRow> rows) {
    model->SetRows(std::move(rows));
    view->resizeColumnsToContents();
    UpdateCount();
}

void ToviDateTableDlg::UpdateCount() {
    int differing = 0;
    for (const ToviDateRow& row : model->Rows()) {
        differing += row.Differs() ? 1 : 0;
    }
    count->setText(QStringLiteral("%1 枚中 差のある写真 %2 枚 (表示 %3 行)")
                       .arg(model->rowCount())
                       .arg(differing)
                       .arg(filter->rowCount()));
}

void ToviDateTableDlg::RequestRow(const QModelIndex& proxyIndex) {
    const QModelIndex source = filter->mapToSource(proxyIndex);
    if (source.isValid()) {
        emit PhotoRequested(model->Rows()[static_cast<size_t>(source.row())].index);
    }
}

bool ToviDateTableDlg::eventFilter(QObject* watched, QEvent* event) {
    // Enter on a row does what a double-click does, rather than closing the dialog.
    if (watched == view && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) && view->currentIndex().isValid()) {
            RequestRow(view->currentIndex());
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

bool ToviDateTableDlg::SaveCsv(const QString& path) {
    std::vector<ToviDateRow> shown;
    shown.reserve(static_cast<size_t>(filter->rowCount()));
    for (int r = 0; r < filter->rowCount(); ++r) {
        const QModelIndex source = filter->mapToSource(filter->index(r, 0));
        shown.push_back(model->Rows()[static_cast<size_t>(source.row())]);
    }
    QSaveFile file(path);
    const QByteArray csv = ToviDateTable::Csv(shown);
    if (file.open(QIODevice::WriteOnly) && file.write(csv) == csv.size() && file.commit()) {
        return true;
    }
    ToviUi::Instance().MessageBox(this, QStringLiteral("%1 に書き込めませんでした。").arg(path),
                                  QString(), ToviUi::ButtonsOk, ToviUi::IconWarning);
    return false;
}

void ToviDateTableDlg::OnSave() {
    const QString path = ToviUi::Instance().GetSaveFileName(
        this, QStringLiteral("撮影日の照合を CSV で保存"), QStringLiteral("撮影日の照合.csv"),
        QStringLiteral("CSV ファイル (*.csv)"));
    if (!path.isEmpty()) {
        SaveCsv(path);
    }
}

void ToviDateTableDlg::done(int result) {
    ToviProfile::Instance().WriteProfileString(Section_, kGeometry,
                                               QString::fromLatin1(saveGeometry().toBase64()));
    QDialog::done(result);
}
