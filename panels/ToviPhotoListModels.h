#pragma once

#include <QAbstractListModel>
#include <QAbstractTableModel>
#include <QCache>
#include <QHash>
#include <QImage>
#include <QList>
#include <QPixmap>
#include <QSet>
#include <QString>
#include <QTimer>

#include <functional>

class ToviData;
class ToviImageLoader;
class ToviPhoto;
class ToviPhotoCtrlVisualSetting;

// Rows a view asked for whose slow part (a thumbnail to request, file facts to read) is
// served after the view has painted, a slice at a time, and only while the row is still in
// view: rows scrolled past before their turn cost nothing.
class ToviRowQueue : public QObject {
    Q_OBJECT
public:
    // One slice of serving stops after this long and lets the event loop run.
    static constexpr int kSliceMs = 8;

    explicit ToviRowQueue(QObject* parent = nullptr);

    void SetVisibleTest(std::function<bool(int row)> test) { visible = std::move(test); }
    void SetServe(std::function<void(int row)> serve) { this->serve = std::move(serve); }
    bool IsVisible(int row) const { return !visible || visible(row); }
    void Add(int row);
    bool Contains(int row) const { return rows.contains(row); }
    void Clear();
    int Size() const { return static_cast<int>(rows.size()); }

private:
    void Run();

    QSet<int> rows;
    QTimer timer;
    std::function<bool(int)> visible;
    std::function<void(int)> serve;
};

// The thumbnail list: one row per position of the document's current array, its text the
// title the settings choose, its decoration a tile with the photograph in a square, the
// label overlays at their fixed places and the drawing and tamper marks. Nothing is read
// for a row before the view asks for it; the picture comes from the off-thread loader, and
// until it does the tile is an empty frame. Tiles are kept in a cache bounded by bytes.
class ToviThumbListModel : public QAbstractListModel {
    Q_OBJECT
public:
    static constexpr int kTileWidth = 142;
    static constexpr int kTileHeight = 142;
    static constexpr int kPhotoSquare = 130;
    static constexpr int kOverlayWidth = 20;
    static constexpr int kOverlayHeight = 16;
    enum Roles {
        CommentRole = Qt::UserRole + 1,  // the photograph's comment (QString)
        TileStateRole,                   // a TileState (int)
    };
    enum TileState { TileWaiting = 0, TileBuilt = 1, TileFailed = 2 };

    // setting is the panel's copy and loader the panel's, neither owned.
    ToviThumbListModel(ToviData* data, const ToviPhotoCtrlVisualSetting* setting,
                       ToviImageLoader* loader, QObject* parent = nullptr,
                       qint64 tileCacheBytes = qint64(48) << 20);
    ~ToviThumbListModel() override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    // The current array changed: new rows, every tile and request forgotten.
    void Refill();
    // The row's labels changed: its tile is built anew when it is next shown.
    void InvalidateTile(int row);
    void InvalidateAllTiles();
    // The row's comment changed: its strip is painted anew.
    void CommentChanged(int row);
    // Rows out of view are skipped when their turn comes.
    void SetVisibleTest(std::function<bool(int row)> test);
    // Called with the row of every data() request (diagnostics and tests).
    void SetRowProbe(std::function<void(int row)> probe) { this->probe = std::move(probe); }
    int PendingRequests() const { return static_cast<int>(requested.size()); }

    // The tile of a photograph from its decoded picture; a null picture gives the pale green
    // "表示できません" tile.
    static QImage CreateThumbImage(const ToviPhoto& photo, const QImage& picture);
    // The label, drawing and tamper marks onto a tile.
    static void AddInfoBmp(QImage& tile, const ToviPhoto& photo);
    // The tile shown while the picture is on its way.
    static const QPixmap& EmptyTile();

private:
    void Serve(int row);
    void OnReady(quint64 ticket, const QString& path, int kind, const QImage& image);
    void Store(int row, const QImage& tile, bool failed);
    void CancelRequests();

    ToviData* document;
    const ToviPhotoCtrlVisualSetting* visualSetting;
    ToviImageLoader* loader;
    int count = 0;
    int titleIndex = -1;
    mutable QCache<int, QPixmap> tiles;  // cost in kilobytes
    QSet<int> failed;                    // rows whose tile is the fail tile
    QHash<quint64, int> tickets;         // loader ticket -> row
    QHash<int, quint64> requested;       // row -> loader ticket
    mutable ToviRowQueue queue;
    std::function<void(int)> probe;
};

// The management list: one row per position of the current array, a column for each item
// the show settings display, then the comment when comments are shown. Texts are read when
// the view asks for a row; file and Exif facts and the tamper state, which read the image
// file, are filled in right after the row is first painted, while it stays in view.
class ToviMngListModel : public QAbstractTableModel {
    Q_OBJECT
public:
    static constexpr int kColumnWidth = 80;
    enum Roles { FactsReadRole = Qt::UserRole + 1 };  // the row's slow facts are in (bool)

    ToviMngListModel(ToviData* data, const ToviPhotoCtrlVisualSetting* setting,
                     QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // Columns from the settings and rows from the current array, all texts forgotten.
    void Refill();
    // The comment column of the row shows text.
    void SetComment(int row, const QString& text);
    // The row's texts are read anew when next shown.
    void InvalidateRow(int row);
    void InvalidateAll();
    // The column of the comment; -1 when comments are not shown.
    int CommentColumn() const { return commentColumn ? static_cast<int>(columns.size()) : -1; }
    void SetVisibleTest(std::function<bool(int row)> test);
    void SetRowProbe(std::function<void(int row)> probe) { this->probe = std::move(probe); }

private:
    struct Column {
        QString title;
        int infoType = 0;
        int index = -1;
    };
    struct RowTexts {
        QStringList texts;
        int state = 0;  // tamper state: 0 none, 1 unaltered, 2 altered
        bool factsRead = false;
    };
    RowTexts* Row(int row) const;
    void Serve(int row);
    bool NeedsFacts() const;

    ToviData* document;
    const ToviPhotoCtrlVisualSetting* visualSetting;
    QList<Column> columns;
    bool commentColumn = false;
    int count = 0;
    mutable QCache<int, RowTexts> rows;
    mutable ToviRowQueue queue;
    std::function<void(int)> probe;
};
