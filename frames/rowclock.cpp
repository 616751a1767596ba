#include "frames/rowclock.h"

#include "device/driver/timeunits.h"

#include <atomic>

namespace
{
std::atomic<quint64> previousRowTime{0}; // milliseconds since the first row's midnight, 0 = none
} // namespace

void RowClock::clear()
{
    previousRowTime = 0;
}

RowClock::Clock::time_point RowClock::nextDue(quint64 timeOfDay)
{
    const quint64 previous = previousRowTime;
    quint64 time = timeOfDay;
    if (time < previous)
        time += (previous - time + kMillisecondsPerDay - 1) / kMillisecondsPerDay * kMillisecondsPerDay;
    previousRowTime = time;
    if (previous == 0 || time < firstTime_) {
        firstTime_ = time;
        firstMoment_ = Clock::now();
    }
    return firstMoment_ + std::chrono::milliseconds(time - firstTime_);
}
