// Plays recorded traffic with its own timing, in a loop.
#pragma once

#include "device/driver/simulated/candumplog.h"
#include "device/driver/simulated/trafficsource.h"

class TraceReplay : public TrafficSource
{
public:
    explicit TraceReplay(std::vector<LoggedFrame> frames); // not empty

    void restart(BusTime start, const BusSettings &settings) override;
    BusTime due() const override { return loopStart_ + frames_[next_].time; }
    const BusFrame &frame() const override { return frames_[next_].frame; }
    void sent(BusTime end) override;

private:
    std::vector<LoggedFrame> frames_; // times from the loop's start, never falling
    BusTime pause_;                   // between the last frame and the first of the next loop
    BusTime loopStart_ = 0;
    std::size_t next_ = 0;
};
