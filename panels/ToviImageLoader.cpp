#include "panels/ToviImageLoader.h"

#include "platform/LumImage.h"

#include <QPointer>

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
        return ticket;
    }
    waiting.insert(key, {ticket});
    pool.start([this, key, path, kind] {
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
            this, [this, key, decoded] { Deliver(key, decoded); }, Qt::QueuedConnection);
    });
    return ticket;
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
        // The decode still runs when it has started; its result then only fills the cache.
    }
}

void ToviImageLoader::ClearCache() {
    cache.clear();
}

void ToviImageLoader::WaitForDone() {
    pool.waitForDone();
}

void ToviImageLoader::Deliver(const QString& key, const QImage& image) {
    if (!image.isNull()) {
        const qint64 kilobytes = std::max<qint64>(image.sizeInBytes() >> 10, 1);
        cache.insert(key, new QImage(image),
                     static_cast<int>(std::min<qint64>(kilobytes, INT_MAX)));
    }
    const QList<quint64> answered = waiting.take(key);
    const QString path = key.mid(key.indexOf(QLatin1Char(':')) + 1);
    const int kind = key.left(key.indexOf(QLatin1Char(':'))).toInt();
    for (quint64 ticket : answered) {
        tickets.remove(ticket);
        emit Ready(ticket, path, kind, image);
    }
}
