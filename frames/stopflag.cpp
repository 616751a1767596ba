#include "frames/stopflag.h"

#include <algorithm>

void StopFlag::set()
{
    {
        const std::lock_guard<std::mutex> guard(lock_);
        set_.store(true, std::memory_order_release);
    }
    wake_.notify_all();
}

void StopFlag::clear()
{
    set_.store(false, std::memory_order_release);
}

bool StopFlag::sleepUntil(Clock::time_point due, const std::function<bool()> &goOn)
{
    std::unique_lock<std::mutex> guard(lock_);
    for (;;) {
        if (isSet() || !goOn())
            return false;
        const Clock::time_point now = Clock::now();
        if (now >= due)
            return true;
        wake_.wait_until(guard, std::min(due, now + kSlice));
    }
}

bool StopFlag::sleepFor(unsigned milliseconds, const std::function<bool()> &goOn)
{
    if (milliseconds == 0)
        return !isSet();
    return sleepUntil(Clock::now() + std::chrono::milliseconds(milliseconds), goOn);
}
