// What two recordings have in common and where they differ, identifier by identifier, from a row of each on.
#pragma once

#include "statistics/identifierstatistics.h"
#include "traces/recordingindex.h"

#include <memory>
#include <unordered_map>

// What one recording has of an identifier.
struct ComparedSide {
    std::uint64_t count = 0;
    PeriodStatistics period;
    std::int64_t lastTime = 0; // of its last frame, nanoseconds
    std::uint64_t row = 0;     // where the first difference is
    RawFrame frame;            // of that row
};

struct ComparedIdentifier {
    IdentifierKey key; // its direction does not count
    ComparedSide sides[2];
    // Of the frames of this identifier, counted from the rows where the comparison begins, the first one (from 1) whose
    // length or data are not those of the other recording's frame with the same number; 0: there is none as long as
    // both have frames.
    std::uint64_t difference = 0;

    bool isInBoth() const { return sides[0].count > 0 && sides[1].count > 0; }
};

class RecordingComparison
{
public:
    struct Side {
        std::shared_ptr<const RecordingIndex> index;
        std::uint64_t row = 0; // the first that counts
    };
    struct State {
        std::uint64_t done = 0; // rows read
        std::uint64_t total = 0;
        bool finished = false;
        bool unreadable = false; // a file is no longer what was indexed
        std::uint64_t beyondCeiling = 0;
    };
    static constexpr std::size_t kMaxIdentifiers = 65536;
    // Frames kept at most until the other recording comes to theirs.
    static constexpr std::size_t kMostWaiting = 65536;

    // Begins at once, in a thread of its own, with the rows that the indexes have now. sameChannels: frames of
    // different channels are of different identifiers. Error frames are left out.
    RecordingComparison(Side left, Side right, bool sameChannels, std::size_t mostWaiting = kMostWaiting);
    ~RecordingComparison(); // cancels
    RecordingComparison(const RecordingComparison &) = delete;
    RecordingComparison &operator=(const RecordingComparison &) = delete;

    void cancel() { stop_ = true; }
    // Any thread.
    State state() const;
    // Once it has finished, by channel and identifier.
    std::vector<ComparedIdentifier> result() const;

private:
    struct Waiting {
        std::uint64_t row;
        RawFrame frame;
    };
    struct Entry {
        ComparedIdentifier compared;
        bool open = true;   // looking for its difference
        bool later = false; // in the next round
        int ahead = 0;      // whose frames are waiting
        std::vector<Waiting> waiting;
        std::size_t head = 0;    // of waiting
        std::uint64_t pairs = 0; // compared

        std::size_t size() const { return waiting.size() - head; }
        void drop();
    };

    void run();
    void readRound(bool first);
    Entry *entryOf(const RawFrame &frame);
    void take(int side, std::uint64_t row, const RawFrame &frame, bool first);
    void compare(Entry *entry, int side, std::uint64_t row, const RawFrame &frame);
    void postponeLongest();

    const Side sides_[2];
    std::uint64_t ends_[2];
    const bool sameChannels_;
    const std::size_t mostWaiting_;
    std::atomic<bool> stop_{false};
    mutable std::mutex guard_; // state_; entries_ belong to the thread until it has finished
    State state_;
    std::vector<Entry> entries_;
    std::unordered_map<std::uint64_t, std::size_t> places_; // by packed key
    std::size_t waiting_[2] = {};
    bool ended_[2] = {};
    std::thread thread_; // last: it uses the others
};
