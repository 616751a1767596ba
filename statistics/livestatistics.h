// The statistics of what passes the tap or of a recording, held against a baseline as wished; kept up to date by a
// source's thread and read by a window as snapshots.
#pragma once

#include "frames/livesource.h"
#include "statistics/busstatistics.h"
#include "statistics/supervisor.h"

#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

// What supervision has found of an identifier, since it began or since the last reset.
struct SupervisionMark {
    std::array<std::uint32_t, 4> counts{}; // by Violation::Kind
    std::int64_t missingAt = INT64_MIN;    // when it was last found missing; it is back when seen later than that

    std::uint32_t count(Violation::Kind kind) const { return counts[static_cast<std::size_t>(kind)]; }
};

// Everything a window shows, of one moment. Passed again, it is filled without allocating.
struct StatisticsSnapshot {
    std::map<unsigned, ChannelStatistics> channels;
    std::vector<IdentifierStatistics> identifiers;            // in the order in which they were first seen
    std::vector<IdentifierKey> absent;                        // messages of the baseline that were never seen
    std::unordered_map<std::uint64_t, SupervisionMark> marks; // by packed key
    std::int64_t time = 0;                                    // nanoseconds on the statistics' clock
    std::uint64_t lost = 0;                                   // frames that found no room on their way here
    std::uint64_t beyondCeiling = 0;                          // frames of identifiers that there was no room for
    std::uint64_t generation = 0;                             // another one: the statistics were cleared in between
    bool supervised = false;
};

class LiveStatistics : public FrameConsumer
{
public:
    // Violations that wait for takeViolations() at most.
    static constexpr std::size_t kWaitingViolations = 64;

    // Live: the frames' times are the open adapter's, and time goes on without frames. Else they are a recording's.
    explicit LiveStatistics(bool live = true) : live_(live) {}

    // The source's thread.
    void consume(const RawFrame *frames, std::size_t count) override;
    void framesLost(std::uint64_t count) override;
    void intervalEnded() override;

    // Any thread.
    void setRates(unsigned channel, const BusRates &rates); // channel from 1
    void clear();                                           // supervision begins anew as well
    // From now on; nothing: no supervision.
    void supervise(std::optional<Baseline> baseline, double tolerance = Supervisor::kDefaultTolerance);
    void snapshot(StatisticsSnapshot *into) const;
    Baseline learn() const;
    // The violations since the last call, *more counting those that found no room.
    std::vector<Violation> takeViolations(std::uint64_t *more);

private:
    void followOpening();
    void restartSupervision();
    void note(); // moves found_ to marks and waiting violations

    const bool live_;
    mutable std::mutex lock_; // guards everything below
    BusStatistics statistics_;
    std::uint64_t lost_ = 0;
    std::uint64_t generation_ = 0;
    // The adapter's clock begins again with every opening; the statistics' goes on where it was.
    std::int64_t opening_ = 0;
    std::int64_t offset_ = 0;
    std::int64_t latest_ = 0;
    std::vector<RawFrame> shifted_; // of consume()
    std::optional<Baseline> baseline_;
    double tolerance_ = Supervisor::kDefaultTolerance;
    std::unique_ptr<Supervisor> supervisor_;
    std::unordered_map<std::uint64_t, SupervisionMark> marks_;
    std::vector<Violation> found_;
    std::vector<Violation> waiting_;
    std::uint64_t moreViolations_ = 0;
};
