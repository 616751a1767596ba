// The tap: received and sent frames as they went over the bus, before their texts are made, for whoever subscribes.
// Their times are nanoseconds of the adapter's clock (frames/adapterclock.h). They come as they were read and sent, not
// sorted: from one channel, kind or direction to another, and between sent frames, times may go back by the few
// milliseconds that one poll comes after another.
#pragma once

#include "traces/rawframe.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

// Frames that wait for one reader at most: more than four seconds of two full channels, 23 MiB.
constexpr std::size_t kTapCapacity = std::size_t(1) << 18;

// What a reader finds.
struct TapBatch {
    std::vector<RawFrame> frames;
    std::uint64_t lost = 0; // frames that came after these and found no room
};

// A subscription, from construction to destruction; both in any thread. take() belongs to one thread at a time.
class TapReader
{
public:
    explicit TapReader(std::size_t capacity = kTapCapacity); // at least 1
    ~TapReader();
    TapReader(const TapReader &) = delete;
    TapReader &operator=(const TapReader &) = delete;

    // Waits until `enough` frames (at most the capacity) are there, the time is up or interrupt() was called, and hands
    // over all there are, in the place of what the batch held: pass the same batch again and nothing is allocated. A
    // reader that asks for many is woken seldom. false once interrupted; the batch is then the last one.
    bool take(TapBatch &batch, std::chrono::milliseconds timeout, std::size_t enough = 1);
    // Ends the wait under way and every later one. Any thread.
    void interrupt();

private:
    friend void publishToTap(const RawFrame *frames, std::size_t count);
    void offer(const RawFrame *frames, std::size_t count);

    const std::size_t capacity_;
    std::mutex lock_; // guards what follows
    std::condition_variable wake_;
    TapBatch waiting_;
    std::size_t enough_ = 0; // the waiting reader's; 0: nobody waits
    bool interrupted_ = false;
};

// Whether anybody reads. Any thread; one atomic load.
bool tapHasReaders();
// Hands every reader a copy of the frames, whose times are of the adapter's clock: received or sent ones, error frames,
// whatever the bus had to tell. Waits for no reader. Any thread.
void publishToTap(const RawFrame *frames, std::size_t count);
