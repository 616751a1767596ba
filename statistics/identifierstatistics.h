// What every identifier of a bus does: how often, how regularly, which bits move. Memory is bounded whatever the bus
// sends. One thread at a time.
#pragma once

#include "traces/rawframe.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// Who a frame is: its identifier on a channel, in a direction.
struct IdentifierKey {
    std::uint32_t id = 0;
    std::uint16_t channel = 1;
    Direction direction = Direction::Received;
    bool extended = false;
    bool remote = false;
    bool error = false;

    static IdentifierKey of(const RawFrame &frame);
    // All of it in one number; the order is channel, direction, kind, identifier.
    std::uint64_t packed() const;
};

inline bool operator==(const IdentifierKey &a, const IdentifierKey &b)
{
    return a.packed() == b.packed();
}

// Distances between a frame and the one before it, in nanoseconds.
struct PeriodStatistics {
    std::int64_t now = 0; // of the last two frames
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
    double mean = 0;
    double squares = 0; // sum of squared distances from the mean, kept up to date as B. P. Welford does
    std::uint64_t count = 0;

    void add(std::int64_t distance);
    double deviation() const; // standard deviation; 0 below two distances
};

struct IdentifierStatistics {
    IdentifierKey key;
    std::uint64_t count = 0;
    std::int64_t firstSeen = 0; // nanoseconds, as the frames have them
    std::int64_t lastSeen = 0;
    PeriodStatistics period;
    RawFrame last;
    std::array<std::uint8_t, kRawDataBytes> movedBits{}; // bits that ever differed from the frame before
    std::array<std::int64_t, kRawDataBytes> changedAt{}; // when a byte last changed; kNeverChanged
};

constexpr std::int64_t kNeverChanged = INT64_MIN;

class IdentifierTable
{
public:
    // Identifiers kept at most, 60 MiB; frames of later ones are counted by beyondCeiling() alone.
    static constexpr std::size_t kMaxIdentifiers = 65536;

    IdentifierTable();

    // The entry of the frame's identifier, brought up to date; null past the ceiling. Valid until the next add().
    const IdentifierStatistics *add(const RawFrame &frame);
    void clear();

    // In the order in which they were first seen.
    const std::vector<IdentifierStatistics> &entries() const { return entries_; }
    const IdentifierStatistics *find(const IdentifierKey &key) const;
    std::uint64_t beyondCeiling() const { return beyondCeiling_; }

private:
    std::size_t slotOf(std::uint64_t packed) const;
    void grow();

    struct Slot {
        std::uint64_t packed = 0;
        std::uint32_t entry = 0; // 1-based; 0: free
    };

    std::vector<Slot> slots_; // open addressing, a power of two, at most half full
    std::vector<IdentifierStatistics> entries_;
    std::uint64_t beyondCeiling_ = 0;
};
