#include "panels/ToviPhotoListModels.h"

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "document/ToviItemDef.h"
#include "panels/ToviImageLoader.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QElapsedTimer>
#include <QFont>
#include <QIcon>
#include <QPainter>
#include <QSvgRenderer>

#include <cmath>

namespace {

const char* const kLabelIcons[6] = {"ok", "ng1", "ng2", "ng3", "comment", "user"};
const QString kShootingDate = QStringLiteral("撮影年月日");

// An icon of ours drawn into a box of the overlay size, its proportions kept.
QImage Overlay(const QString& name) {
    QImage image(ToviThumbListModel::kOverlayWidth, ToviThumbListModel::kOverlayHeight,
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer renderer(QStringLiteral(":/tovi/icons/%1.svg").arg(name));
    QSizeF size = renderer.defaultSize();
    size.scale(image.size(), Qt::KeepAspectRatio);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(QPointF((image.width() - size.width()) / 2,
                                             (image.height() - size.height()) / 2),
                                     size));
    return image;
}

// The nine overlays: labels 0 to 5 pasted, reference drawings, tamper states 1 and 2.
const QList<QImage>& InfoIcons() {
    static const QList<QImage> icons = [] {
        QList<QImage> made;
        for (const char* label : kLabelIcons) {
            made.append(Overlay(QStringLiteral("label-%1-on").arg(QLatin1String(label))));
        }
        made.append(Overlay(QStringLiteral("drawing-1")));
        made.append(Overlay(QStringLiteral("check-1")));
        made.append(Overlay(QStringLiteral("check-2")));
        return made;
    }();
    return icons;
}

// The template every tile starts from: white, with a hairline around the photograph's
// square.
QImage Template() {
    QImage tile(ToviThumbListModel::kTileWidth, ToviThumbListModel::kTileHeight,
                QImage::Format_RGB32);
    tile.fill(Qt::white);
    QPainter painter(&tile);
    painter.setPen(QColor(200, 200, 200));
    const int s = ToviThumbListModel::kPhotoSquare;
    painter.drawRect((tile.width() - s) / 2 - 1, (tile.height() - s) / 2 - 1, s + 1, s + 1);
    return tile;
}

}  // namespace

// ---- the queue -----------------------------------------------------------------------------

ToviRowQueue::ToviRowQueue(QObject* parent) : QObject(parent) {
    timer.setSingleShot(true);
    timer.setInterval(0);
    connect(&timer, &QTimer::timeout, this, &ToviRowQueue::Run);
}

void ToviRowQueue::Add(int row) {
    rows.insert(row);
    if (!timer.isActive()) {
        timer.start();
    }
}

void ToviRowQueue::Clear() {
    rows.clear();
    timer.stop();
}

void ToviRowQueue::Run() {
    QElapsedTimer clock;
    clock.start();
    // Lowest rows first, so a screen fills from its top.
    QList<int> order(rows.cbegin(), rows.cend());
    std::sort(order.begin(), order.end());
    for (int row : order) {
        if (clock.elapsed() >= kSliceMs) {
            timer.start();  // the rest after the next paint
            return;
        }
        rows.remove(row);
        if (IsVisible(row) && serve) {
            serve(row);
        }
    }
}

// ---- the thumbnail list --------------------------------------------------------------------

ToviThumbListModel::ToviThumbListModel(ToviData* data, const ToviPhotoCtrlVisualSetting* setting,
                                       ToviImageLoader* loader, QObject* parent,
                                       qint64 tileCacheBytes)
    : QAbstractListModel(parent),
      document(data),
      visualSetting(setting),
      loader(loader),
      tiles(static_cast<int>(std::max<qint64>(tileCacheBytes >> 10, 1))) {
    queue.SetServe([this](int row) { Serve(row); });
    if (loader) {
        connect(loader, &ToviImageLoader::Ready, this, &ToviThumbListModel::OnReady);
    }
    Refill();
}

ToviThumbListModel::~ToviThumbListModel() {
    CancelRequests();
}

int ToviThumbListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count;
}

QVariant ToviThumbListModel::data(const QModelIndex& index, int role) const {
    const int row = index.row();
    if (!index.isValid() || row < 0 || row >= count || !document) {
        return QVariant();
    }
    if (probe) {
        probe(row);
    }
    switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
            if (const ToviPhoto* photo = document->GetPhoto(row)) {
                return photo->GetTitle(titleIndex);
            }
            return QVariant();
        case CommentRole:
            if (const ToviPhoto* photo = document->GetPhoto(row)) {
                return photo->GetComment();
            }
            return QVariant();
        case Qt::DecorationRole:
            if (const QPixmap* tile = tiles.object(row)) {
                return *tile;
            }
            if (!requested.contains(row)) {
                queue.Add(row);
            }
            return EmptyTile();
        case TileStateRole:
            if (tiles.contains(row)) {
                return failed.contains(row) ? TileFailed : TileBuilt;
            }
            return TileWaiting;
        default:
            return QVariant();
    }
}

void ToviThumbListModel::Refill() {
    beginResetModel();
    CancelRequests();
    queue.Clear();
    tiles.clear();
    failed.clear();
    count = document ? document->GetCurrentPhotoCount() : 0;
    titleIndex = document && visualSetting
                     ? document->GetItemDef()->GetIndexFromEnum(visualSetting->GetTitleShowType())
                     : -1;
    endResetModel();
}

void ToviThumbListModel::InvalidateTile(int row) {
    if (row < 0 || row >= count) {
        return;
    }
    tiles.remove(row);
    failed.remove(row);
    const QModelIndex at = index(row);
    emit dataChanged(at, at, {Qt::DecorationRole, TileStateRole});
}

void ToviThumbListModel::InvalidateAllTiles() {
    tiles.clear();
    failed.clear();
    if (count > 0) {
        emit dataChanged(index(0), index(count - 1), {Qt::DecorationRole, TileStateRole});
    }
}

void ToviThumbListModel::CommentChanged(int row) {
    if (row >= 0 && row < count) {
        const QModelIndex at = index(row);
        emit dataChanged(at, at, {CommentRole});
    }
}

void ToviThumbListModel::SetVisibleTest(std::function<bool(int)> test) {
    queue.SetVisibleTest(std::move(test));
}

void ToviThumbListModel::Serve(int row) {
    // Requests for rows that left the view make way; their decoding, once started, only
    // fills the loader's cache.
    for (auto it = requested.begin(); it != requested.end();) {
        if (!queue.IsVisible(it.key())) {
            loader->Cancel(it.value());
            tickets.remove(it.value());
            it = requested.erase(it);
        } else {
            ++it;
        }
    }
    ToviPhoto* photo = document ? document->GetPhoto(row) : nullptr;
    if (!photo || tiles.contains(row) || requested.contains(row)) {
        return;
    }
    document->CheckEditJPEG(photo);
    const QString path = photo->GetImagePath();
    if (path.isEmpty() || !loader) {
        Store(row, CreateThumbImage(*photo, QImage()), true);
        return;
    }
    QImage cached;
    const quint64 ticket = loader->Request(path, ToviImageLoader::Thumb, &cached);
    if (ticket == 0) {
        Store(row, CreateThumbImage(*photo, cached), cached.isNull());
        return;
    }
    tickets.insert(ticket, row);
    requested.insert(row, ticket);
}

void ToviThumbListModel::OnReady(quint64 ticket, const QString&, int, const QImage& image) {
    const auto it = tickets.find(ticket);
    if (it == tickets.end()) {
        return;  // a cell's, or a request of a refill gone by
    }
    const int row = it.value();
    tickets.erase(it);
    requested.remove(row);
    if (const ToviPhoto* photo = document ? document->GetPhoto(row) : nullptr) {
        Store(row, CreateThumbImage(*photo, image), image.isNull());
    }
}

void ToviThumbListModel::Store(int row, const QImage& tile, bool fail) {
    auto* pixmap = new QPixmap(QPixmap::fromImage(tile));
    const qint64 kilobytes = std::max<qint64>((qint64(tile.width()) * tile.height() * 4) >> 10, 1);
    tiles.insert(row, pixmap, static_cast<int>(kilobytes));
    if (fail) {
        failed.insert(row);
    } else {
        failed.remove(row);
    }
    const QModelIndex at = index(row);
    emit dataChanged(at, at, {Qt::DecorationRole, TileStateRole});
}

void ToviThumbListModel::CancelRequests() {
    if (loader) {
        for (quint64 ticket : std::as_const(requested)) {
            loader->Cancel(ticket);
        }
    }
    tickets.clear();
    requested.clear();
}

QImage ToviThumbListModel::CreateThumbImage(const ToviPhoto& photo, const QImage& picture) {
    QImage tile = Template();
    const int s = kPhotoSquare;
    const QRect square((tile.width() - s) / 2, (tile.height() - s) / 2, s, s);
    QPainter painter(&tile);
    if (picture.isNull()) {
        painter.fillRect(square, QColor(230, 255, 230));
        QFont font(QStringLiteral("IPAMincho"));
        font.setPixelSize(12);
        painter.setFont(font);
        painter.setPen(Qt::black);
        painter.drawText(square, Qt::AlignCenter | Qt::TextSingleLine,
                         QStringLiteral("表示できません"));
        painter.end();
        AddInfoBmp(tile, photo);
        return tile;
    }
    const double scale = std::min(double(s) / picture.width(), double(s) / picture.height());
    const int w = static_cast<int>(std::floor(picture.width() * scale + 0.5));
    const int h = static_cast<int>(std::floor(picture.height() * scale + 0.5));
    if (w <= 0 || h <= 0) {
        return tile;  // nothing to draw: no marks either
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRect((tile.width() - w) / 2, (tile.height() - h) / 2, w, h), picture);
    painter.end();
    AddInfoBmp(tile, photo);
    return tile;
}

void ToviThumbListModel::AddInfoBmp(QImage& tile, const ToviPhoto& photo) {
    const QList<QImage>& icons = InfoIcons();
    const int iw = kOverlayWidth;
    const int ih = kOverlayHeight;
    QPainter painter(&tile);
    // Each label has its place, so a gap tells which one is missing.
    for (int label = 0; label < 6; ++label) {
        if (photo.IsLabelPasted(static_cast<unsigned>(label))) {
            painter.drawImage(2 + label * (iw + 1), 0, icons[label]);
        }
    }
    if (photo.GetPictureCount() > 0) {
        painter.drawImage(tile.width() - iw - 22, tile.height() - ih - 3, icons[6]);
    }
    const int state = photo.GetEditChkResult();
    if (state == ToviPhoto::EditCheckUnaltered || state == ToviPhoto::EditCheckAltered) {
        painter.drawImage(tile.width() - iw - 2, tile.height() - ih - 3, icons[6 + state]);
    }
}

const QPixmap& ToviThumbListModel::EmptyTile() {
    static const QPixmap empty = QPixmap::fromImage(Template());
    return empty;
}

// ---- the management list -------------------------------------------------------------------

ToviMngListModel::ToviMngListModel(ToviData* data, const ToviPhotoCtrlVisualSetting* setting,
                                   QObject* parent)
    : QAbstractTableModel(parent), document(data), visualSetting(setting), rows(4000) {
    queue.SetServe([this](int row) { Serve(row); });
    Refill();
}

int ToviMngListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count;
}

int ToviMngListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns.size()) + (commentColumn ? 1 : 0);
}

void ToviMngListModel::Refill() {
    beginResetModel();
    queue.Clear();
    rows.clear();
    columns.clear();
    if (visualSetting) {
        for (const ToviItemShowSetting& entry : visualSetting->GetItemShowSettings()) {
            if (entry.bold) {
                columns.append({entry.title, static_cast<int>(entry.infoType), entry.index});
            }
        }
    }
    commentColumn = visualSetting && visualSetting->GetVisibleComment();
    count = document ? document->GetCurrentPhotoCount() : 0;
    endResetModel();
}

bool ToviMngListModel::NeedsFacts() const {
    if (visualSetting && visualSetting->GetDoEditCheck()) {
        return true;
    }
    for (const Column& column : columns) {
        if (column.infoType != InfoTypeItem) {
            return true;
        }
    }
    return false;
}

ToviMngListModel::RowTexts* ToviMngListModel::Row(int row) const {
    if (RowTexts* known = rows.object(row)) {
        return known;
    }
    const ToviPhoto* photo = document ? document->GetPhoto(row) : nullptr;
    if (!photo) {
        return nullptr;
    }
    auto* texts = new RowTexts;
    for (const Column& column : columns) {
        QString text;
        if (column.infoType == InfoTypeItem) {
            text = photo->GetTitle(column.index);
            if (column.title == kShootingDate) {
                text.replace(QLatin1Char('-'), QLatin1Char('/'));
            }
        }
        texts->texts.append(text);  // file and Exif facts come with the queue
    }
    if (commentColumn) {
        texts->texts.append(photo->GetComment());
    }
    texts->factsRead = !NeedsFacts();
    rows.insert(row, texts, 1);
    if (!texts->factsRead) {
        queue.Add(row);
    }
    return texts;
}

QVariant ToviMngListModel::data(const QModelIndex& index, int role) const {
    const int row = index.row();
    const int column = index.column();
    if (!index.isValid() || row < 0 || row >= count || column < 0 || column >= columnCount()) {
        return QVariant();
    }
    if (probe) {
        probe(row);
    }
    switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
            if (const RowTexts* texts = Row(row)) {
                return texts->texts.value(column);
            }
            return QVariant();
        case Qt::DecorationRole:
            if (column == 0) {
                // The first column always has its state picture's room, blank without a state.
                static const QIcon states[3] = {QIcon(QStringLiteral(":/tovi/icons/check-0.svg")),
                                                QIcon(QStringLiteral(":/tovi/icons/check-1.svg")),
                                                QIcon(QStringLiteral(":/tovi/icons/check-2.svg"))};
                const RowTexts* texts = Row(row);
                return states[texts ? texts->state : 0];
            }
            return QVariant();
        case FactsReadRole:
            if (const RowTexts* texts = Row(row)) {
                return texts->factsRead;
            }
            return false;
        default:
            return QVariant();
    }
}

QVariant ToviMngListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) {
        return QVariant();
    }
    if (role == Qt::DisplayRole) {
        if (section >= 0 && section < columns.size()) {
            return columns[section].title;
        }
        if (commentColumn && section == columns.size()) {
            return QStringLiteral("コメント");
        }
    }
    if (role == Qt::TextAlignmentRole) {
        return QVariant::fromValue(Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter));
    }
    return QVariant();
}

void ToviMngListModel::Serve(int row) {
    RowTexts* texts = rows.object(row);
    ToviPhoto* photo = document ? document->GetPhoto(row) : nullptr;
    if (!texts || texts->factsRead || !photo) {
        return;
    }
    bool exifAsked = false;
    for (int i = 0; i < columns.size(); ++i) {
        const Column& column = columns[i];
        if (column.infoType == InfoTypeItem) {
            continue;
        }
        if (!exifAsked) {
            exifAsked = true;
            if (photo->CheckExif()) {
                photo->LoadExif();
            }
        }
        QString text;
        if (column.infoType == InfoTypeFile) {
            photo->GetFileInfoFromTitle(column.title, text);
        } else {
            photo->GetExifInfoFromTitle(column.title, text);
        }
        texts->texts[i] = text;
    }
    if (visualSetting && visualSetting->GetDoEditCheck()) {
        document->CheckEditJPEG(photo);
        const int state = photo->GetEditChkResult();
        texts->state = state == 1 || state == 2 ? state : 0;
    }
    texts->factsRead = true;
    emit dataChanged(index(row, 0), index(row, columnCount() - 1));
}

void ToviMngListModel::SetComment(int row, const QString& text) {
    RowTexts* texts = rows.object(row);
    const int column = CommentColumn();
    if (column < 0 || row < 0 || row >= count) {
        return;
    }
    if (texts && column < texts->texts.size()) {
        texts->texts[column] = text;
    }
    emit dataChanged(index(row, column), index(row, column));
}

void ToviMngListModel::InvalidateRow(int row) {
    if (row < 0 || row >= count) {
        return;
    }
    rows.remove(row);
    emit dataChanged(index(row, 0), index(row, columnCount() - 1));
}

void ToviMngListModel::InvalidateAll() {
    rows.clear();
    if (count > 0 && columnCount() > 0) {
        emit dataChanged(index(0, 0), index(count - 1, columnCount() - 1));
    }
}

void ToviMngListModel::SetVisibleTest(std::function<bool(int)> test) {
    queue.SetVisibleTest(std::move(test));
}
