#include "panels/ToviPhotoListCtrl.h"

#include "panels/ToviPhotoListModels.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QAction>
#include <QHeaderView>
#include <QKeyEvent>
#include <QListView>
#include <QMouseEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QSvgRenderer>
#include <QTableView>
#include <QToolBar>
#include <QVBoxLayout>

namespace {

const char* const kLabelIcons[6] = {"ok", "ng1", "ng2", "ng3", "comment", "user"};
const QStringList kFusenNames =
    QStringLiteral("OK|NG1|NG2|NG3|コメント|ユーザー").split(QLatin1Char('|'));
constexpr int kTileTop = 4;
constexpr int kTitleHeight = 20;

QIcon LabelIcon(int label, bool on) {
    QPixmap pixmap(QSize(32, 20) * 2);
    pixmap.fill(Qt::transparent);
    QSvgRenderer renderer(QStringLiteral(":/tovi/icons/label-%1-%2.svg")
                              .arg(QLatin1String(kLabelIcons[label]),
                                   on ? QLatin1String("on") : QLatin1String("off")));
    QPainter painter(&pixmap);
    renderer.render(&painter);
    painter.end();
    pixmap.setDevicePixelRatio(2);
    return QIcon(pixmap);
}

// The parts of an item of the thumbnail list: the tile at the top, the title under it, and
// under that the comment strip when comments are shown.
QRect TileRect(const QRect& item) {
    return QRect(item.x() + (item.width() - ToviThumbListModel::kTileWidth) / 2,
                 item.y() + kTileTop, ToviThumbListModel::kTileWidth,
                 ToviThumbListModel::kTileHeight);
}

QRect TitleRect(const QRect& item) {
    return QRect(item.x() + 2, TileRect(item).bottom() + 3, item.width() - 4, kTitleHeight);
}

QRect StripIn(const QRect& item) {
    return QRect(item.x() + (item.width() - ToviPhotoListCtrl::kStripWidth) / 2,
                 TitleRect(item).bottom() + 3, ToviPhotoListCtrl::kStripWidth,
                 ToviPhotoListCtrl::kStripHeight);
}

// Paints an item of the thumbnail list.
class ThumbDelegate : public QStyledItemDelegate {
public:
    ThumbDelegate(const ToviPhotoCtrlVisualSetting* setting, QListView* view)
        : QStyledItemDelegate(view), visualSetting(setting), view(view) {}

    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override {
        return view->gridSize();
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const QRect item = option.rect;
        const bool selected = option.state & QStyle::State_Selected;
        const QPalette& palette = option.palette;
        const QRect tile = TileRect(item);
        painter->save();
        painter->drawPixmap(tile.topLeft(), index.data(Qt::DecorationRole).value<QPixmap>());
        if (selected) {
            painter->setPen(QPen(palette.color(QPalette::Highlight), 2));
            painter->drawRect(tile.adjusted(-1, -1, 0, 0));
        }
        const QString comment = index.data(ToviThumbListModel::CommentRole).toString();
        if (visualSetting && visualSetting->GetVisibleComment() && !comment.isEmpty()) {
            const QRect strip = StripIn(item);
            painter->fillRect(strip, Qt::white);
            painter->setPen(Qt::black);
            painter->drawRect(strip.adjusted(0, 0, -1, -1));
            const QRect text = strip.adjusted(3, 0, -3, 0);
            painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                              option.fontMetrics.elidedText(QStringLiteral("　") + comment,
                                                            Qt::ElideRight, text.width()));
        }
        const QRect title = TitleRect(item);
        if (selected) {
            painter->fillRect(title, palette.color(QPalette::Highlight));
            painter->setPen(palette.color(QPalette::HighlightedText));
        } else {
            painter->setPen(palette.color(QPalette::Text));
        }
        painter->drawText(title.adjusted(2, 0, -2, 0),
                          Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextSingleLine,
                          option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight,
                                                        title.width() - 4));
        if (option.state & QStyle::State_HasFocus) {
            painter->setPen(QPen(palette.color(QPalette::Text), 1, Qt::DotLine));
            painter->drawRect(title.adjusted(0, 0, -1, -1));
        }
        painter->restore();
    }

private:
    const ToviPhotoCtrlVisualSetting* visualSetting;
    QListView* view;
};

}  // namespace

// A list or table view that lets its control see keys before and after its own handling,
// and double clicks with their place.
template <class Base>
class ToviReportingView : public Base {
public:
    explicit ToviReportingView(ToviPhotoListCtrl* owner) : Base(owner), owner(owner) {}

protected:
    void keyPressEvent(QKeyEvent* event) override {
        const int markBefore = owner->GetSelectionMark();
        if (owner->KeyDown(event, markBefore)) {
            return;
        }
        Base::keyPressEvent(event);
        owner->KeyDone(event->key(), markBefore);
    }
    QModelIndex moveCursor(QAbstractItemView::CursorAction action,
                           Qt::KeyboardModifiers modifiers) override {
        const bool page = action == Base::MovePageDown || action == Base::MovePageUp;
        const QModelIndex paged =
            page ? owner->PageMove(action == Base::MovePageDown) : QModelIndex();
        return paged.isValid() ? paged : Base::moveCursor(action, modifiers);
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override {
        Base::mouseDoubleClickEvent(event);
        owner->DoubleClicked(event->position().toPoint());
    }

private:
    ToviPhotoListCtrl* owner;
};

ToviPhotoListCtrl::ToviPhotoListCtrl(Mode mode, ToviData* data,
                                     const ToviPhotoCtrlVisualSetting* setting,
                                     ToviImageLoader* loader, QWidget* parent)
    : QWidget(parent), mode(mode), visualSetting(setting) {
    setObjectName(QStringLiteral("listCtrl131"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    QAbstractItemView* view = nullptr;
    if (mode == ThumbList) {
        listView = new ToviReportingView<QListView>(this);
        listView->setObjectName(QStringLiteral("thumbList"));
        // List mode with a grid and uniform sizes: the layout is arithmetic, whatever the
        // count, where the icon mode would place every item one by one.
        listView->setViewMode(QListView::ListMode);
        listView->setFlow(QListView::LeftToRight);
        listView->setWrapping(true);
        listView->setUniformItemSizes(true);
        listView->setResizeMode(QListView::Adjust);
        listView->setMovement(QListView::Static);
        listView->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
        listView->setItemDelegate(new ThumbDelegate(setting, listView));
        thumbModel = new ToviThumbListModel(data, setting, loader, this);
        listView->setModel(thumbModel);
        thumbModel->SetVisibleTest([this](int row) { return IsRowVisible(row); });
        view = listView;
        ApplySettings();
    } else {
        tableView = new ToviReportingView<QTableView>(this);
        tableView->setObjectName(QStringLiteral("managementList"));
        tableView->setSelectionBehavior(QAbstractItemView::SelectRows);
        tableView->setShowGrid(true);
        tableView->setWordWrap(false);
        tableView->setSortingEnabled(false);
        tableView->setIconSize(QSize(16, 16));
        tableView->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
        QHeaderView* rowsHeader = tableView->verticalHeader();
        rowsHeader->hide();
        // Fixed rows: the table never measures a row, whatever the count.
        rowsHeader->setSectionResizeMode(QHeaderView::Fixed);
        rowsHeader->setMinimumSectionSize(1);
        rowsHeader->setDefaultSectionSize(fontMetrics().height() + 6);
        QHeaderView* header = tableView->horizontalHeader();
        header->setDefaultSectionSize(ToviMngListModel::kColumnWidth);
        header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        header->setHighlightSections(false);
        header->setStretchLastSection(false);
        header->viewport()->installEventFilter(this);
        mngModel = new ToviMngListModel(data, setting, this);
        tableView->setModel(mngModel);
        mngModel->SetVisibleTest([this](int row) { return IsRowVisible(row); });
        view = tableView;
    }
    connect(view->model(), &QAbstractItemModel::dataChanged, this, &ToviPhotoListCtrl::RowsChanged);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    view->setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(view);
    layout->addWidget(view);
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ToviPhotoListCtrl::OnSelectionChanged);
    connect(view->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &ToviPhotoListCtrl::OnScroll);
    connect(view->horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &ToviPhotoListCtrl::OnScroll);
    connect(view, &QAbstractItemView::customContextMenuRequested, this, [this](const QPoint& at) {
        const QModelIndex index = View()->indexAt(at);
        if (!index.isValid()) {
            return;
        }
        if (GetSelectedItem() != index.row()) {
            View()->selectionModel()->setCurrentIndex(
                index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        }
        emit ItemRightClicked(index.row());
    });
    floatyTimer.setSingleShot(true);
    connect(&floatyTimer, &QTimer::timeout, this, &ToviPhotoListCtrl::OnFloatyTimer);
}

ToviPhotoListCtrl::~ToviPhotoListCtrl() {
    floatyTimer.stop();
    delete floaty;  // the floaty goes first
    floaty = nullptr;
}

QAbstractItemView* ToviPhotoListCtrl::View() const {
    return listView ? static_cast<QAbstractItemView*>(listView) : tableView;
}

void ToviPhotoListCtrl::ApplySettings() {
    if (!listView) {
        return;
    }
    const bool comments = visualSetting && visualSetting->GetVisibleComment();
    listView->setGridSize(
        QSize(ToviThumbListModel::kTileWidth + 24,
              ToviThumbListModel::kTileHeight + 32 + (comments ? kStripHeight + 4 : 0)));
    listView->doItemsLayout();
}

void ToviPhotoListCtrl::Refill() {
    floatyTimer.stop();
    if (floaty) {
        floaty->hide();
    }
    View()->setUpdatesEnabled(false);
    quiet = true;
    if (thumbModel) {
        thumbModel->Refill();
    } else {
        mngModel->Refill();
    }
    quiet = false;
    View()->setUpdatesEnabled(true);
}

int ToviPhotoListCtrl::GetItemCount() const {
    return View()->model()->rowCount();
}

int ToviPhotoListCtrl::GetSelectionMark() const {
    const QModelIndex current = View()->selectionModel()->currentIndex();
    return current.isValid() ? current.row() : -1;
}

int ToviPhotoListCtrl::GetSelectedItem() const {
    const QModelIndexList rows = View()->selectionModel()->selectedIndexes();
    return rows.isEmpty() ? -1 : rows.front().row();
}

void ToviPhotoListCtrl::SelectItem(int row) {
    QAbstractItemModel* model = View()->model();
    if (row < 0 || row >= model->rowCount()) {
        return;
    }
    const QModelIndex index = model->index(row, 0);
    quiet = true;
    View()->selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    quiet = false;
    // A list without its size yet scrolls when it gets one.
    scrollPending = View()->viewport()->height() <= 1;
    View()->scrollTo(index);
}

void ToviPhotoListCtrl::EnsureMarkVisible() {
    const QModelIndex current = View()->selectionModel()->currentIndex();
    if (current.isValid()) {
        View()->scrollTo(current);
    }
}

bool ToviPhotoListCtrl::IsViewFilled() const {
    const QRect client = View()->viewport()->rect();
    const QModelIndex top = View()->indexAt(QPoint(1, 1));
    for (int row = std::max(0, top.row()); row < GetItemCount(); ++row) {
        if (!ItemRect(row).intersects(client)) {
            break;
        }
        const bool filled =
            thumbModel ? thumbModel->index(row).data(ToviThumbListModel::TileStateRole).toInt() !=
                             ToviThumbListModel::TileWaiting
                       : mngModel->index(row, 0).data(ToviMngListModel::FactsReadRole).toBool();
        if (!filled) {
            return false;
        }
    }
    return true;
}

QRect ToviPhotoListCtrl::ItemRect(int row) const {
    QAbstractItemModel* model = View()->model();
    if (row < 0 || row >= model->rowCount()) {
        return QRect();
    }
    if (listView) {
        return listView->visualRect(model->index(row, 0));
    }
    const QRect first = tableView->visualRect(model->index(row, 0));
    const int columns = model->columnCount();
    const QRect last = tableView->visualRect(model->index(row, std::max(0, columns - 1)));
    return QRect(QPoint(first.left(), first.top()), QPoint(last.right(), first.bottom()));
}

QRect ToviPhotoListCtrl::StripRect(int row) const {
    return listView ? StripIn(ItemRect(row)) : QRect();
}

bool ToviPhotoListCtrl::IsRowVisible(int row) const {
    const QRect item = ItemRect(row);
    return item.isValid() && item.intersects(View()->viewport()->rect());
}

void ToviPhotoListCtrl::InvalidateItem(int row) {
    if (thumbModel) {
        thumbModel->InvalidateTile(row);
    } else {
        mngModel->InvalidateRow(row);
    }
}

void ToviPhotoListCtrl::InvalidateAllItems() {
    if (thumbModel) {
        thumbModel->InvalidateAllTiles();
    } else {
        mngModel->InvalidateAll();
    }
}

void ToviPhotoListCtrl::SetComment(int row, const QString& text) {
    if (thumbModel) {
        thumbModel->CommentChanged(row);
    } else {
        mngModel->SetComment(row, text);
    }
}

// ---- the floaty ----------------------------------------------------------------------------

void ToviPhotoListCtrl::CreateFloaty() {
    floaty = new QToolBar(this);
    floaty->setObjectName(QStringLiteral("floaty"));
    floaty->setIconSize(QSize(32, 20));
    floaty->setToolButtonStyle(Qt::ToolButtonIconOnly);
    floaty->setAutoFillBackground(true);
    floaty->setStyleSheet(
        QStringLiteral("QToolBar#floaty { border: 1px solid #8c8c8c; background: #f4f4f4; }"));
    floaty->addSeparator();
    for (int label = 0; label < 6; ++label) {
        QAction* button = floaty->addAction(LabelIcon(label, false), kFusenNames[label]);
        button->setObjectName(QStringLiteral("fusen%1").arg(1105 + label));
        button->setToolTip(kFusenNames[label]);
        button->setCheckable(label != 4);
        connect(button, &QAction::triggered, this, [this, label, button] {
            // The look follows the photograph's labels, set back by the panel: the click
            // itself flips nothing.
            button->setChecked(!button->isChecked());
            emit FusenCommand(kFusenCommand + label);
        });
        buttons[label] = button;
    }
    floaty->adjustSize();
    floaty->hide();
}

void ToviPhotoListCtrl::SetButtonState(int label, bool pasted) {
    if (label < 0 || label > 5) {
        return;
    }
    if (!floaty) {
        CreateFloaty();
    }
    buttons[label]->setIcon(LabelIcon(label, pasted));
    buttons[label]->setChecked(label != 4 && pasted);
}

void ToviPhotoListCtrl::ScheduleFloaty(bool show, unsigned delay) {
    floatyTimer.stop();
    if (floaty) {
        floaty->hide();
    }
    floatyOn = show;
    if (!show) {
        return;
    }
    if (!floaty) {
        CreateFloaty();
    }
    floatyTimer.start(static_cast<int>(delay));
}

void ToviPhotoListCtrl::OnFloatyTimer() {
    floatyTimer.stop();
    const int row = GetSelectedItem();
    if (!floaty) {
        return;
    }
    if (row < 0) {
        floaty->hide();
        return;
    }
    const QRect item = ItemRect(row);
    int left = std::max(0, item.left());
    if (tableView) {
        // In the table the floaty stands after the first two columns.
        for (int column = 0; column < std::min(2, tableView->model()->columnCount()); ++column) {
            left += tableView->columnWidth(column);
        }
    }
    const QSize size = floaty->sizeHint();
    const QRect client = View()->viewport()->rect();
    QRect place(QPoint(left, item.bottom() + 1), size);
    if (place.right() > client.right()) {
        place.moveLeft(client.right() + 1 - size.width());
    }
    if (!client.contains(place.bottomLeft())) {
        place.moveBottom(item.top() - 1);
    }
    const bool inside = client.contains(place.topLeft());
    place.translate(View()->viewport()->mapTo(this, QPoint(0, 0)));
    floaty->setGeometry(place);
    if (inside) {
        floaty->show();
        floaty->raise();
    } else {
        floaty->hide();
    }
    emit Scrolled();
}

// ---- events --------------------------------------------------------------------------------

bool ToviPhotoListCtrl::KeyDown(QKeyEvent* event, int markBefore) {
    // Right at the last item goes nowhere and is not reported.
    if (event->key() == Qt::Key_Right && markBefore >= 0 && markBefore == GetItemCount() - 1) {
        event->accept();
        return true;
    }
    if (floatyOn) {
        ScheduleFloaty(true, 1000);
    }
    return false;
}

void ToviPhotoListCtrl::KeyDone(int key, int markBefore) {
    emit KeyPressed(key, markBefore);
    emit Scrolled();
}

QModelIndex ToviPhotoListCtrl::PageMove(bool down) const {
    if (!listView) {
        return QModelIndex();
    }
    // A page of tiles is the whole rows that fit the viewport: the list's own page step
    // would move by a single row of tiles.
    const QSize grid = listView->gridSize();
    const QSize client = listView->viewport()->size();
    const int step =
        std::max(1, client.width() / grid.width()) * std::max(1, client.height() / grid.height());
    const int count = GetItemCount();
    if (count == 0) {
        return QModelIndex();
    }
    const int mark = std::max(0, GetSelectionMark());
    const int target = down ? std::min(count - 1, mark + step) : std::max(0, mark - step);
    return thumbModel->index(target);
}

void ToviPhotoListCtrl::DoubleClicked(const QPoint& pos) {
    const QModelIndex index = View()->indexAt(pos);
    if (!index.isValid()) {
        return;
    }
    if (listView && visualSetting && visualSetting->GetVisibleComment() &&
        !index.data(ToviThumbListModel::CommentRole).toString().isEmpty() &&
        StripRect(index.row()).contains(pos)) {
        emit FusenCommand(kFusenCommand + 4);  // the strip works as the comment button
        return;
    }
    emit ItemDoubleClicked(index.row());
}

void ToviPhotoListCtrl::OnScroll() {
    if (floatyOn) {
        ScheduleFloaty(true, 1000);
    }
    emit Scrolled();
}

void ToviPhotoListCtrl::OnSelectionChanged() {
    if (!quiet) {
        emit ItemSelected(GetSelectedItem());
    }
}

void ToviPhotoListCtrl::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (scrollPending && !event->size().isEmpty()) {
        scrollPending = false;
        QTimer::singleShot(0, this, [this] { EnsureMarkVisible(); });
    }
    if (floatyOn) {
        ScheduleFloaty(true, 500);
    }
}

void ToviPhotoListCtrl::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange && tableView) {
        tableView->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    }
}

bool ToviPhotoListCtrl::eventFilter(QObject* watched, QEvent* event) {
    if (tableView && watched == tableView->horizontalHeader()->viewport()) {
        if (event->type() == QEvent::MouseButtonPress) {
            // A column being dragged: the floaty stays away until the drag ends.
            floatyTimer.stop();
            if (floaty) {
                floaty->hide();
            }
        } else if (event->type() == QEvent::MouseButtonRelease && floatyOn) {
            ScheduleFloaty(true, 1000);
        }
    }
    return QWidget::eventFilter(watched, event);
}
