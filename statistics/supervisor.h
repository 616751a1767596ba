// Holds traffic against a baseline: what comes late, early, not at all, or was never there before. One thread at a
// time.
#pragma once

#include "statistics/baseline.h"

#include <unordered_map>
#include <unordered_set>

struct Violation {
    enum class Kind { Late, Early, Missing, New };
    Kind kind;
    IdentifierKey key;
    std::int64_t time = 0;     // nanoseconds on the frames' clock
    std::int64_t distance = 0; // since the message's last frame; of Missing: since then or since the beginning
    std::int64_t limit = 0;    // what the distance should have kept to
};

class Supervisor
{
public:
    // A distance may leave the baseline's range by this share of it.
    static constexpr double kDefaultTolerance = 0.2;
    // A message counts as missing, not as late, after so many times its longest distance.
    static constexpr int kMissingFactor = 3;

    explicit Supervisor(const Baseline &baseline, double tolerance = kDefaultTolerance);

    // Messages that are expected from now on as well, such as those of a channel that has turned up.
    void expect(const Baseline &baseline);

    // Appends what is wrong. A message that was told missing and comes again is not told late as well. A new message is
    // told once. Remote and error frames are not looked at.
    void add(const RawFrame &frame, std::vector<Violation> *violations);
    // Time passes: appends the periodic messages that have become missing, each once until it comes again. Costs a look
    // at every message: call it a few times a second.
    void advance(std::int64_t time, std::vector<Violation> *violations);
    // The end: appends the messages that never came, periodic or not, unless they were told missing already.
    void finish(std::vector<Violation> *violations);

private:
    struct Watched {
        BaselineMessage message;
        std::int64_t earliest; // allowed distances, tolerance included
        std::int64_t latest;
        std::int64_t last = 0; // when it came, or when it began to be expected
        bool seen = false;
        bool missing = false;
    };

    bool periodic(const Watched &watched) const { return watched.message.mean > 0; }
    Watched *find(const IdentifierKey &key);

    const double tolerance_;
    bool receivedOnly_ = false;
    std::vector<Watched> watched_;
    std::unordered_map<std::uint64_t, std::size_t> places_; // packed key to place in watched_
    std::unordered_map<std::uint64_t, std::size_t> groups_; // the same by parameter group
    std::unordered_set<std::uint64_t> newOnes_;
    bool begun_ = false;
    std::int64_t now_ = 0;
};
