#include "frames/adapterclock.h"

#include "device/devicelayer.h"
#include "device/driver/timeunits.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace
{

constexpr std::int64_t kWindowNs = 10'000'000'000;

AdapterClock &clockOf(unsigned channel)
{
    static AdapterClock clocks[kChannelCount];
    return clocks[channel != 0 ? 1 : 0];
}

std::int64_t hostNow()
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace

void AdapterClock::observe(std::int64_t opening, std::int64_t host, std::int64_t adapter)
{
    const std::int64_t difference = host - adapter;
    if (opening != opening_ || host - windowBegin_ >= 2 * kWindowNs) {
        windowBegin_ = host;
        smallest_ = smallestBefore_ = difference;
    } else if (host - windowBegin_ >= kWindowNs) {
        windowBegin_ += kWindowNs;
        smallestBefore_ = smallest_;
        smallest_ = difference;
    }
    smallest_ = std::min(smallest_, difference);
    difference_ = std::min(smallest_, smallestBefore_);
    opening_ = opening;
}

bool AdapterClock::isKnown(std::int64_t opening) const
{
    return opening_ == opening;
}

std::int64_t nanoseconds(std::uint64_t microseconds)
{
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    return microseconds > std::uint64_t(largest / kNanosecondsPerMicrosecond)
               ? largest
               : static_cast<std::int64_t>(microseconds) * kNanosecondsPerMicrosecond;
}

void noteAdapterTime(unsigned channel, std::uint64_t microseconds)
{
    clockOf(channel).observe(deviceOpenedAt(), hostNow(), nanoseconds(microseconds));
}

std::int64_t adapterNow(unsigned channel)
{
    const std::int64_t opening = deviceOpenedAt();
    const std::int64_t host = hostNow();
    for (const AdapterClock *clock : {&clockOf(channel), &clockOf(channel == 0 ? 1 : 0)})
        if (clock->isKnown(opening))
            return clock->adapterTime(host);
    return host - opening;
}
