// A stop flag that ends sleeps.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

class StopFlag
{
public:
    using Clock = std::chrono::steady_clock;

    void set(); // wakes the sleeper
    void clear();
    bool isSet() const { return set_.load(std::memory_order_acquire); }

    // Sleeps until the moment comes: true. false as soon as the flag is set, and within kSlice after goOn() has become
    // false. One sleeper.
    bool sleepUntil(Clock::time_point due, const std::function<bool()> &goOn);
    // The same from now on. 0: does not sleep, and only the flag counts.
    bool sleepFor(unsigned milliseconds, const std::function<bool()> &goOn);

    static constexpr std::chrono::milliseconds kSlice{100};

private:
    std::atomic<bool> set_{false};
    std::mutex lock_; // so that no wake-up is lost between the look at the flag and the wait
    std::condition_variable wake_;
};
