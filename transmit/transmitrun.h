// What the engine knows of one entry while it lives in the list.
#pragma once

#include "transmit/transmitentry.h"

#include <chrono>
#include <deque>

using TransmitClock = std::chrono::steady_clock;

// What a window shows of an entry.
struct TransmitCounts {
    unsigned serial = 0;
    std::uint64_t sent = 0;    // taken by the driver since the start
    std::uint64_t refused = 0; // not taken: the channel is closed, listen-only, nobody acknowledges
    std::uint64_t skipped = 0; // moments that were over by more than a second, or answers beyond those that may wait
    std::int64_t lastSent = 0; // milliseconds since 1970; 0: never
    TransmitClock::time_point lastDue; // of the last frame that had its moment
};

class TransmitRun
{
public:
    // A moment to send at. Planned ones are followed by the next; others come from a request or a received frame.
    struct Due {
        TransmitClock::time_point at;
        bool planned;
    };
    enum class State { Ready, ChannelClosed, Halted }; // Halted: its channel was closed and it does not go on by itself

    // Answers that may wait for their delay at once.
    static constexpr std::size_t kMostWaiting = 1000;
    // Moments that are over for longer are passed over.
    static constexpr std::chrono::seconds kLatest{1};

    explicit TransmitRun(TransmitEntryPointer entry);

    const TransmitEntry &entry() const { return *entry_; }
    // Counts and number go on; `running`: what is new in its timing takes effect at once.
    void replaceEntry(const TransmitEntryPointer &entry, TransmitClock::time_point now, bool running);

    // Forgets the counts, begins anew and plans the first moment.
    void start(TransmitClock::time_point now);
    void stop() { dues_.clear(); }
    // false when the entry has no part in the run, now that the channel is closed.
    bool channelClosed();
    // Whether it waited for that.
    bool channelOpened(TransmitClock::time_point now);

    // false when too many wait already.
    bool ask(TransmitClock::time_point at);
    const std::deque<Due> &dues() const { return dues_; }
    // Takes this moment out; whether another one is planned in its place.
    bool pass(Due due, TransmitClock::time_point now);
    // The frame to send next.
    RawFrame frame() const;
    void sent(bool taken, std::int64_t time);

    bool takesPart() const { return entry_->on && state_ == State::Ready && sendable_; }
    bool canGoOn() const; // whether it may yet send, without a request
    bool sendable() const { return sendable_; }
    const TransmitCounts &counts() const { return counts_; }

private:
    bool isTimed() const { return entry_->mode == TransmitMode::Periodic || entry_->mode == TransmitMode::Counted; }
    std::chrono::milliseconds interval() const { return std::chrono::milliseconds(entry_->interval); }
    bool isLast() const { return entry_->mode == TransmitMode::Counted && attempts_ >= entry_->count; }
    void plan(TransmitClock::time_point at);
    void begin(TransmitClock::time_point now);

    TransmitEntryPointer entry_;
    bool sendable_ = true;
    State state_ = State::Ready;
    std::uint64_t number_ = 0;   // frames taken, what changes over time count
    std::uint64_t attempts_ = 0; // of a counted entry
    TransmitClock::time_point lastPlanned_;
    std::deque<Due> dues_;
    TransmitCounts counts_;
};
