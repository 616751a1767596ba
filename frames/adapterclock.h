// The adapter's clock as the host can know it: so that what the host sends can be given times that fit those of what it
// receives.
#pragma once

#include <atomic>
#include <cstdint>

// One channel's clock, from pairs of moments: of the host when a frame was read, and of the adapter when it came. A
// frame is never read before it came, so the smallest difference is the best one; it is looked for among the last ten
// to twenty seconds, so that two clocks of unlike speed do not drift apart. Times of the host: steady nanoseconds.
class AdapterClock
{
public:
    // The channel's receiver only. Another opening of the device forgets what earlier ones taught.
    void observe(std::int64_t opening, std::int64_t host, std::int64_t adapter);
    // Whether anything was observed since that opening. Any thread.
    bool isKnown(std::int64_t opening) const;
    // The adapter's time at a moment of the host; after isKnown(). Any thread.
    std::int64_t adapterTime(std::int64_t host) const { return host - difference_; }

private:
    std::int64_t windowBegin_ = 0;
    std::int64_t smallest_ = 0;       // of the window
    std::int64_t smallestBefore_ = 0; // of the one before
    std::atomic<std::int64_t> opening_{0};
    std::atomic<std::int64_t> difference_{0}; // written before opening_
};

// An adapter's time stamp in nanoseconds, or the largest number.
std::int64_t nanoseconds(std::uint64_t microseconds);
// A frame with this time stamp has just been read. The channel's receiver only; channel 0 or 1.
void noteAdapterTime(unsigned channel, std::uint64_t microseconds);
// The adapter's clock at this moment, in nanoseconds: by the channel's own frames, else by the other one's, else since
// the device was opened. Any thread.
std::int64_t adapterNow(unsigned channel);
