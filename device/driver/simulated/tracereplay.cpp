#include "device/driver/simulated/tracereplay.h"

#include <algorithm>
#include <utility>

namespace
{

// Between two loops of a log whose own spacing cannot be told.
constexpr BusTime kDefaultPause = 100000000;

} // namespace

TraceReplay::TraceReplay(std::vector<LoggedFrame> frames) : frames_(std::move(frames))
{
    // A recorder of several interfaces may write lines slightly out of order: the order of the file counts.
    const BusTime first = frames_.front().time;
    BusTime last = 0;
    for (LoggedFrame &frame : frames_) {
        last = std::max(last, frame.time > first ? frame.time - first : 0);
        frame.time = last;
    }
    pause_ = last > 0 ? std::max<BusTime>(last / (frames_.size() - 1), 1) : kDefaultPause;
}

void TraceReplay::restart(BusTime start, const BusSettings &)
{
    loopStart_ = start;
    next_ = 0;
}

void TraceReplay::sent(BusTime end)
{
    if (++next_ < frames_.size())
        return;
    // A bus that is slower than the recorded one delays the next loop instead of owing it ever more.
    loopStart_ = std::max(loopStart_ + frames_.back().time, end) + pause_;
    next_ = 0;
}
