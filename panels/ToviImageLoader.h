#pragma once

#include <QCache>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <memory>

// Decodes pictures off the UI thread: a request names a file (its path taken from the model
// on the UI thread beforehand) and whether the thumbnail or the whole picture is wanted; the
// decoding runs on a pool of worker threads that never touch the model, and the result comes
// back through the event loop as Ready. Recent results are kept in a cache bounded by bytes,
// so that paging back answers at once. A request that was cancelled, or replaced by the
// caller, is simply not answered, and is not decoded at all when no one else asked for the
// same picture before its turn came.
class ToviImageLoader : public QObject {
    Q_OBJECT
public:
    // The whole picture of a cell is decoded no larger than needed to fill a large screen:
    // a 50-megapixel photograph costs a quarter of its pixels, and a hostile 30,000-pixel
    // one an eighth, instead of failing the decoder's allocation limit.
    static constexpr int kFullLongSide = 2560;

    enum Kind { Thumb = 0, Full = 1 };

    explicit ToviImageLoader(QObject* parent = nullptr, qint64 cacheBytes = qint64(256) << 20);
    ~ToviImageLoader() override;

    // A cached picture is put in cached and 0 answered; otherwise the ticket whose Ready will
    // carry the picture. The same file and kind asked again while it is being decoded joins
    // the first request.
    quint64 Request(const QString& path, Kind kind, QImage* cached);
    // The ticket's Ready will not come.
    void Cancel(quint64 ticket);
    // Forgets every cached picture (files changed on disc).
    void ClearCache();
    int PendingCount() const { return static_cast<int>(tickets.size()); }
    // Waits until no decoding runs (tests, shutting down).
    void WaitForDone();

signals:
    // The picture of the ticket's request; a null image when the file could not be decoded.
    void Ready(quint64 ticket, const QString& path, int kind, const QImage& image);

private:
    void Start(const QString& key, const QString& path, Kind kind);
    // skipped: the job found every ticket cancelled and decoded nothing.
    void Deliver(const QString& key, const QImage& image, bool skipped);

    QThreadPool pool;
    QCache<QString, QImage> cache;           // cost in kilobytes
    QHash<quint64, QString> tickets;         // outstanding ticket -> key
    QHash<QString, QList<quint64>> waiting;  // key being decoded -> its tickets
    // key being decoded -> set when no ticket wants it any more; read by its job
    QHash<QString, std::shared_ptr<std::atomic<bool>>> drops;
    quint64 nextTicket = 1;
};
