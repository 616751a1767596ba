// Live frames for a consumer of its own: a thread that reads the tap. Statistics, signals and recorders stand behind
// it; a recording can feed the same consumers.
#pragma once

#include "frames/tap.h"

#include <chrono>
#include <thread>

// Takes raw frames in the order in which they come. The source's thread calls; what a window reads is guarded by the
// consumer.
class FrameConsumer
{
public:
    virtual ~FrameConsumer() = default;
    virtual void consume(const RawFrame *frames, std::size_t count) = 0;
    // Frames that came here and found no room.
    virtual void framesLost(std::uint64_t count) { (void)count; }
    // Called once in each interval, whether frames came or not.
    virtual void intervalEnded() {}
};

class LiveSource
{
public:
    static constexpr std::chrono::milliseconds kInterval{50};

    // Runs until it is destroyed. The consumer outlives it.
    explicit LiveSource(FrameConsumer &consumer);
    ~LiveSource();
    LiveSource(const LiveSource &) = delete;
    LiveSource &operator=(const LiveSource &) = delete;

private:
    void run();

    FrameConsumer &consumer_;
    TapReader reader_;
    std::thread thread_;
};
