#include "panels/ToviImageLoader.h"

#include "platform/LumImage.h"

#include <QPointer>

#include <atomic>
#include <memory>

namespace {

QString KeyOf(const QString& path, ToviImageLoader::Kind kind) {
    return QString::number(kind) + QLatin1Char(':') + path;
}

}  // namespace

ToviImageLoader::ToviImageLoader(QObject* parent, qint64 cacheBytes)
    : QObject(parent), cache(static_cast<int>(std::max<qint64>(cacheBytes >> 10, 1))) {
    // Leave a core to the UI thread.
    pool.setMaxThreadCount(std::max(1, QThread::idealThreadCount() - 1));
}

ToviImageLoader::~ToviImageLoader() {
    pool.clear();
    pool.waitForDone();
}

quint64 ToviImageLoader::Request(const QString& path, Kind kind, QImage* cached) {
    const QString key = KeyOf(path, kind);
    if (const QImage* hit = cache.object(key)) {
        if (cached) {
            *cached = *hit;
        }
        return 0;
    }
    const quint64 ticket = nextTicket++;
    tickets.insert(ticket, key);
    auto it = waiting.find(key);
    if (it != waiting.end()) {
        it->append(ticket);
        if (const auto dropped = drops.value(key)) {
            dropped->store(false);  // wanted again before its turn
        }
        return ticket;
    }
    waiting.insert(key, {ticket});
    Start(key, path, kind);
    return ticket;
}

void ToviImageLoader::Start(const QString& key, const QString& path, Kind kind) {
    auto dropped = std::make_shared<std::atomic<bool>>(false);
    drops.insert(key, dropped);
    pool.start([this, key, path, kind, dropped] {
        // Every ticket of the request was cancelled before its turn: nothing is decoded, so a
        // list scrolled fast leaves no backlog behind it.
        if (dropped->load()) {
            QMetaObject::invokeMethod(
                this, [this, key] { Deliver(key, QImage(), true); }, Qt::QueuedConnection);
            return;
        }
        LumImage image;
        if (kind == Thumb) {
            image.LoadThumb(path);
        } else {
            image.LoadForDisplay(path, kFullLongSide);
        }
        const QImage decoded = image.Image();
        // Queued to the loader's thread; the destructor waits for the pool, so the loader
        // outlives this call.
        QMetaObject::invokeMethod(
            this, [this, key, decoded] { Deliver(key, decoded, false); }, Qt::QueuedConnection);
    });
}

void ToviImageLoader::Cancel(quint64 ticket) {
    const auto it = tickets.find(ticket);
    if (it == tickets.end()) {
        return;
    }
    const QString key = it.value();
    tickets.erase(it);
    auto wait = waiting.find(key);
    if (wait != waiting.end()) {
        wait->removeAll(ticket);
        // A decode that has started still runs; its result then only fills the cache.
        if (wait->isEmpty()) {
            if (const auto dropped = drops.value(key)) {
                dropped->store(true);
            }
        }
    }
}

void ToviImageLoader::ClearCache() {
    cache.clear();
}

void ToviImageLoader::WaitForDone() {
    pool.waitForDone();
}

void ToviImageLoader::Deliver(const QString& key, const QImage& image, bool skipped) {
    const int colon = key.indexOf(QLatin1Char(':'));
    if (skipped) {
        drops.remove(key);
        if (waiting.value(key).isEmpty()) {
            waiting.remove(key);
        } else {
            // Asked for again after the job had already passed on it: decode after all.
            Start(key, key.mid(colon + 1), static_cast<Kind>(key.left(colon).toInt()));
        }
        return;
    }
    drops.remove(key);
    if (!image.isNull()) {
        const qint64 kilobytes = std::max<qint64>(image.sizeInBytes() >> 10, 1);
        cache.insert(key, new QImage(image),
                     static_cast<int>(std::min<qint64>(kilobytes, INT_MAX)));
    }
    const QList<quint64> answered = waiting.take(key);
    const QString path = key.mid(colon + 1);
    const int kind = key.left(colon).toInt();
    for (quint64 ticket : answered) {
        tickets.remove(ticket);
        emit Ready(ticket, path, kind, image);
    }
}
