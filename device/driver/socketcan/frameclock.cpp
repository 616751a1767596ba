#include "device/driver/socketcan/frameclock.h"

#include "device/driver/timeunits.h"

#include <algorithm>
#include <ctime>

namespace
{
// Reading both clocks takes less than this unless the thread is interrupted in between.
constexpr std::int64_t kUninterrupted = 5000;
constexpr int kTries = 4;

std::int64_t nanoseconds(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

} // namespace

std::int64_t FrameClock::monotonicNow()
{
    return nanoseconds(CLOCK_MONOTONIC);
}

void FrameClock::look()
{
    std::int64_t shortest = INT64_MAX;
    for (int i = 0; i < kTries && shortest > kUninterrupted; ++i) {
        const std::int64_t before = monotonicNow();
        const std::int64_t wall = nanoseconds(CLOCK_REALTIME);
        const std::int64_t taken = monotonicNow() - before;
        if (taken < shortest) {
            shortest = taken;
            look(before + taken / 2, wall);
        }
    }
}

void FrameClock::look(std::int64_t monotonic, std::int64_t wall)
{
    monotonic_ = monotonic;
    wall_ = wall;
}

std::uint64_t FrameClock::microseconds(std::int64_t wallStamp)
{
    const std::int64_t age = std::max<std::int64_t>(wall_ - wallStamp, 0);
    latest_ = std::max(latest_, monotonic_ - opened_ - age);
    return static_cast<std::uint64_t>(latest_ / kNanosecondsPerMicrosecond);
}
