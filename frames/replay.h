// Sending recorded frames: when each is due, on which channel it goes, and what came of it. The same for a file that
// the command line replays and for a recording in its window.
#pragma once

#include "frames/framesender.h"

#include <QString>

#include <chrono>
#include <map>
#include <optional>

constexpr double kLargestReplaySpeed = 1e6; // and its inverse the smallest

// The adapter's channel for a channel of the recording, both from 1; others stay as they are.
using ReplayChannels = std::map<unsigned, unsigned>;
// Of "1=2,2=1"; nothing when the text is no mapping. Empty: all stay as they are.
std::optional<ReplayChannels> replayChannelsFromText(const QString &text);

// When each frame is due: at its recorded time after the first one, or one interval after the frame before. Absolute,
// so that what sending costs does not add up. One thread.
class ReplayClock
{
public:
    using Clock = std::chrono::steady_clock;

    // intervalMs: between frames, in the place of their times.
    explicit ReplayClock(double speed = 1, std::optional<double> intervalMs = {})
        : speed_(speed), intervalMs_(intervalMs)
    {
    }

    // Frames that follow begin anew, behind what was due last.
    void beginPass() { first_.reset(); }
    Clock::time_point due(const RawFrame &frame);

    // From this moment on, which is the recording's time `time`: after a pause, a jump or a step.
    void setTime(std::int64_t time, Clock::time_point moment);
    // The recording's time at a moment, nanoseconds; nothing before the first frame and with intervals.
    std::optional<std::int64_t> timeAt(Clock::time_point moment) const;
    void setSpeed(double speed, Clock::time_point moment);

private:
    double speed_;
    std::optional<double> intervalMs_;
    Clock::time_point begin_{}; // of the pass
    Clock::time_point last_{};  // due so far
    std::optional<std::int64_t> first_;
    bool begun_ = false;
};

// What came of frames that were to be sent.
struct SendCounts {
    std::uint64_t sent = 0;
    std::uint64_t refused = 0;    // closed channel, listen-only, nobody acknowledges
    std::uint64_t unsendable = 0; // error frames, or of no valid length or identifier

    void count(SendResult result);
};

// Sends a frame on the channel that the mapping gives it; one that the adapter does not have is refused. Waits as long
// as the driver does. Any thread.
SendResult sendReplayed(const RawFrame &frame, const ReplayChannels &channels);
