#pragma once

#include <QString>

#include <atomic>
#include <thread>

// A FIFO for tests of code that must never open one. Code that opened it all the same would
// wait for a writer for ever; the trap plays that writer (opens and closes the other end at
// once), so the test goes on and fails on Opened() instead of hanging.
class FifoTrap {
public:
    // Makes the FIFO at path and starts watching it.
    explicit FifoTrap(const QString& path);
    // Stops watching and removes the FIFO.
    ~FifoTrap();
    FifoTrap(const FifoTrap&) = delete;
    FifoTrap& operator=(const FifoTrap&) = delete;

    bool IsValid() const { return valid; }
    // Whether anything opened the FIFO for reading so far.
    bool Opened() const { return opened.load(); }

private:
    QString path;
    bool valid = false;
    std::atomic<bool> opened{false};
    std::atomic<bool> stop{false};
    std::thread watcher;
};
