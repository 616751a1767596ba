// Turns the kernel's time stamps, which follow the wall clock, into the time since the device was opened, which does
// not: setting the wall clock neither moves nor reorders frames.
#pragma once

#include <cstdint>

class FrameClock
{
public:
    // Nanoseconds of the monotonic clock now.
    static std::int64_t monotonicNow();

    explicit FrameClock(std::int64_t openedMonotonic) : opened_(openedMonotonic) {}

    // Compares the two clocks; once for every batch of frames, after it has been read.
    void look();
    // The same with clocks given, in nanoseconds.
    void look(std::int64_t monotonic, std::int64_t wall);
    // A kernel time stamp (nanoseconds of the wall clock) as microseconds since the opening; never before an earlier
    // answer, never after the last look.
    std::uint64_t microseconds(std::int64_t wallStamp);

private:
    std::int64_t opened_;
    std::int64_t monotonic_ = 0; // at the last look
    std::int64_t wall_ = 0;
    std::int64_t latest_ = 0; // the last answer, in nanoseconds since the opening
};
