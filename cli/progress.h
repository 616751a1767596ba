// A bar with rate and remaining time on the standard error, when it is a terminal; nothing when it is not.
#pragma once

#include <QElapsedTimer>

#include <atomic>
#include <cstdint>
#include <mutex>

class Progress
{
public:
    // total: what is to be done, bytes of all inputs or another measure; 0: not known, then there is a rate but no bar.
    explicit Progress(std::uint64_t total);
    ~Progress(); // takes the bar away

    // So much more has been done. Any thread.
    void add(std::uint64_t done, std::uint64_t frames);

private:
    void show();

    const std::uint64_t total_;
    std::atomic<std::uint64_t> done_{0};
    std::atomic<std::uint64_t> frames_{0};
    QElapsedTimer timer_;
    std::atomic<std::int64_t> nextShown_;
    std::mutex showing_;
};
