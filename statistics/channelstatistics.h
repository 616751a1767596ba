// What a channel carries: frames and bytes by kind, the bus load of the last second and of the last minutes. One thread
// at a time.
#pragma once

#include "traces/rawframe.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

enum class FrameKind : std::uint8_t { Standard, Extended, Fd, FdSwitched, Remote, Error };
constexpr std::size_t kFrameKinds = 6;
FrameKind frameKind(const RawFrame &frame);

// Bit rates in bit/s; an arbitration rate of 0: not known, then there is no bus load.
struct BusRates {
    std::uint32_t arbitration = 0;
    std::uint32_t data = 0;
};

struct KindCount {
    std::uint64_t frames = 0;
    std::uint64_t bytes = 0; // of data
};

class ChannelStatistics
{
public:
    // The load curve's points: one for each tenth of a second, of the last ten minutes.
    static constexpr std::int64_t kPointNanoseconds = 100000000;
    static constexpr std::size_t kCurvePoints = 6000;
    static constexpr std::int64_t kPointsPerSecond = 10;

    explicit ChannelStatistics(const BusRates &rates = {});

    // Frames from now on are of these rates.
    void setRates(const BusRates &rates) { rates_ = rates; }
    const BusRates &rates() const { return rates_; }

    // Its time, where it goes back, counts as the latest seen; in the load the frame lies where it was.
    void add(const RawFrame &frame);
    // Time passes without a frame; nanoseconds on the frames' clock.
    void advance(std::int64_t time);

    const KindCount &counted(Direction direction, FrameKind kind) const;
    KindCount counted(Direction direction) const; // of every kind
    // Of the last whole second; frames a second and bytes a second.
    KindCount lastSecond(Direction direction, FrameKind kind) const;

    // Shares of the time, 0..1 and a little above where clocks differ; nothing while the rates are unknown or no time
    // has passed. Now: of the last whole second; peak: of the busiest second.
    std::optional<double> loadNow() const;
    std::optional<double> loadMean() const;
    std::optional<double> loadPeak() const;
    // The load of each point, the oldest first, the point under way left out.
    std::vector<float> loadCurve() const;
    // Nanoseconds during which the bus carried the frames counted.
    std::uint64_t busyTime() const { return busy_; }
    std::int64_t firstTime() const { return first_; }
    std::int64_t lastTime() const { return last_; }
    bool hasTime() const { return hasTime_; }

private:
    static constexpr std::size_t kCounters = 2 * kFrameKinds;
    static constexpr std::size_t kRecentPoints = 2 * kPointsPerSecond; // with the one under way, more than a second
    struct Counters {
        std::array<std::uint32_t, kCounters> frames{};
        std::array<std::uint32_t, kCounters> bytes{};
    };

    static std::size_t counter(Direction direction, FrameKind kind);
    std::uint64_t &busyAt(std::int64_t number) { return curve_[static_cast<std::size_t>(number) % curve_.size()]; }
    std::uint64_t busyAt(std::int64_t number) const { return curve_[static_cast<std::size_t>(number) % curve_.size()]; }
    Counters &countersAt(std::int64_t number) { return recent_[static_cast<std::size_t>(number) % kRecentPoints]; }
    const Counters &countersAt(std::int64_t number) const
    {
        return recent_[static_cast<std::size_t>(number) % kRecentPoints];
    }
    std::uint64_t busyOfSecondBefore(std::int64_t end) const; // number of a point
    // Spreads the time on the wire over the points in which it lies.
    void addBusy(std::int64_t end, std::uint64_t duration);

    BusRates rates_;
    std::vector<std::uint64_t> curve_; // busy nanoseconds of each point, by its number modulo the size
    std::array<Counters, kRecentPoints> recent_{};
    bool hasTime_ = false;
    std::int64_t first_ = 0;
    std::int64_t last_ = 0;
    std::int64_t current_ = 0; // number of the point under way, counted from the first time
    std::array<KindCount, kCounters> counted_{};
    std::uint64_t busy_ = 0;
    std::uint64_t peak_ = 0; // largest busyOfSecondBefore()
};
