#include "tests/support/FifoTrap.h"

#include <QFile>

#include <chrono>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

FifoTrap::FifoTrap(const QString& fifoPath) : path(fifoPath) {
    const QByteArray local = QFile::encodeName(path);
    valid = ::mkfifo(local.constData(), 0600) == 0;
    if (!valid) {
        return;
    }
    watcher = std::thread([this, local] {
        while (!stop.load()) {
            // Without a reader this open fails at once (ENXIO); with one, the reader's open
            // returns and its reads see the end of the file when this end closes.
            const int fd = ::open(local.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
            if (fd >= 0) {
                opened.store(true);
                ::close(fd);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
}

FifoTrap::~FifoTrap() {
    stop.store(true);
    if (watcher.joinable()) {
        watcher.join();
    }
    if (valid) {
        QFile::remove(path);
    }
}
