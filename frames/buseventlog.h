// Error frames and changes of a controller's state as lines of the operation log: a line for a burst, a line for a
// change, and never so many that the log is of nothing else. One thread at a time.
#pragma once

#include "device/driver/busevent.h"
#include "frames/logtext.h"

class BusEventLog
{
public:
    // Error frames that come no further apart than this are one burst, and so long after its first one it is told.
    static constexpr std::int64_t kBurstMs = 1000;
    // A burst that does not end is told again after so long.
    static constexpr std::int64_t kAgainMs = 10000;
    // Changes of the state told in a second; of further ones only what they come to.
    static constexpr int kChangesPerSecond = 3;

    // channel: from 0, told from 1.
    BusEventLog(unsigned channel, LogSink sink);

    // What was asked at a moment, in milliseconds of a clock that never goes back.
    void add(const BusReport &report, std::int64_t now);
    // Tells what is not told yet; the next report begins anew.
    void end();

private:
    void count(const BusEvent &event);
    void follow(ControllerState state, const ChannelState &counters, std::int64_t now);
    void tellBurst();
    void tellState(ControllerState state, const ChannelState &counters) const;

    const unsigned channel_;
    const LogSink sink_;
    std::uint64_t frames_ = 0; // of the burst, not told yet
    std::uint32_t kinds_ = 0;  // of these, a bit for each
    bool inBurst_ = false;
    std::int64_t latest_ = 0; // when the burst last had a frame
    std::int64_t due_ = 0;    // when it is to be told
    ChannelState state_;      // after the events seen
    ControllerState told_ = ControllerState::ErrorActive;
    std::int64_t second_ = 0; // since when changes are counted
    int changes_ = 0;
};
