// Sends rows of an open recording on the channels that are open, in a thread of its own: with their recorded times,
// faster or slower, one by one, from wherever one likes.
#pragma once

#include "frames/replay.h"
#include "frames/stopflag.h"
#include "traces/framefilter.h"
#include "traces/recordingindex.h"

#include <condition_variable>
#include <mutex>
#include <thread>

class RecordingReplay
{
public:
    struct Plan {
        std::shared_ptr<const RecordingIndex> index;
        FrameFilter filter;      // only what it lets through
        std::uint64_t first = 0; // row
        std::uint64_t end = 0;   // first row that is not sent
        ReplayChannels channels;
        double speed = 1;
        bool paused = false; // waits for step() or goOn()
    };
    enum class End : std::uint8_t { None, Done, Stopped, NoChannel, Unreadable };
    struct State {
        std::uint64_t row = 0; // that is sent next; the plan's end when nothing is left
        std::int64_t time = 0; // of the row sent last, nanoseconds
        bool paused = false;
        End end = End::None; // None while it runs
        SendCounts counts;
    };

    // Begins at once.
    explicit RecordingReplay(Plan plan);
    ~RecordingReplay(); // stops
    RecordingReplay(const RecordingReplay &) = delete;
    RecordingReplay &operator=(const RecordingReplay &) = delete;

    // All of these: any thread, and at once, whatever the frames' distances are.
    void pause();
    void goOn();
    // Sends the next row and pauses.
    void step();
    // Goes on from this row, which is due then, or the next one that the filter lets through.
    void goTo(std::uint64_t row);
    void setSpeed(double speed);
    // Nothing is sent any more, but for one frame that may be on its way to the driver.
    void stop();
    State state() const;

private:
    using Clock = ReplayClock::Clock;
    using Lock = std::unique_lock<std::mutex>;

    void run();
    bool fetch(Lock &lock);
    void hold(Lock &lock);
    bool isDue(Lock &lock);
    void send(Lock &lock);

    const Plan plan_;
    StopFlag stop_;

    mutable std::mutex guard_; // everything below
    std::condition_variable wake_;
    State state_;
    ReplayClock clock_;
    bool stepWanted_ = false;
    bool jumped_ = true; // the next frame is due at once
    std::uint64_t jumps_ = 0;
    std::optional<std::int64_t> held_; // the recording's time while paused

    // The thread's own.
    RecordingRows rows_;
    std::vector<RawFrame> chunk_;
    std::uint64_t chunkFirst_ = 0;
    std::thread thread_; // last: it uses the others
};
