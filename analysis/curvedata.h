// The points of one curve, with a pyramid of minima and maxima over them, so that drawing costs what the screen shows
// and not what was recorded. One thread, but for snapshot().
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <memory>

struct CurvePoint {
    std::int64_t time; // nanoseconds
    double value;      // not a number: the curve is interrupted here
};

struct ValueRange {
    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -std::numeric_limits<double>::infinity();

    bool isEmpty() const { return !(minimum <= maximum); }
    void add(double value)
    {
        if (value < minimum)
            minimum = value;
        if (value > maximum)
            maximum = value;
    }
    void add(const CurvePoint &point) { add(point.value); }
    void add(const ValueRange &other)
    {
        if (other.minimum < minimum)
            minimum = other.minimum;
        if (other.maximum > maximum)
            maximum = other.maximum;
    }
};

class CurveData
{
public:
    // The oldest points make room, some thousands at a time, before there are more than the limit.
    explicit CurveData(std::size_t limit = kDefaultLimit) : limit_(limit) {}
    CurveData(CurveData &&) = default;
    CurveData &operator=(CurveData &&) = default;

    // The points as they are now, sharing their memory: another thread may call at(), firstAt() and size() of it while
    // this one goes on.
    std::shared_ptr<const CurveData> snapshot() const { return std::shared_ptr<const CurveData>(new CurveData(*this)); }

    // A time before the last one's counts as the last one's.
    void append(CurvePoint point);
    void clear() { chunks_.clear(), size_ = dropped_ = 0; }

    std::size_t size() const { return size_; }
    bool isEmpty() const { return size_ == 0; }
    std::size_t dropped() const { return dropped_; } // points that made room
    const CurvePoint &at(std::size_t index) const { return chunks_[index / kChunk]->points[index % kChunk]; }
    // Index of the first point at or after this time; size() when there is none.
    std::size_t firstAt(std::int64_t time) const;
    // The same, soon found when it is near this index.
    std::size_t firstAt(std::int64_t time, std::size_t near) const;
    // Of the points [begin, end), interruptions left out.
    ValueRange range(std::size_t begin, std::size_t end) const;
    std::size_t bytes() const { return chunks_.size() * (sizeof(Chunk) + sizeof(chunks_.front())); }

private:
    CurveData(const CurveData &) = default;

    static constexpr std::size_t kStep = 16; // points or ranges under one range of the pyramid
    static constexpr std::size_t kMiddle = kStep * kStep;
    static constexpr std::size_t kChunk = kMiddle * kStep;
    static constexpr std::size_t kDefaultLimit = 10'000'000;

    struct Chunk {
        std::array<CurvePoint, kChunk> points;
        std::array<ValueRange, kChunk / kStep> fine;
        std::array<ValueRange, kChunk / kMiddle> coarse;
        ValueRange whole;
    };

    std::deque<std::shared_ptr<Chunk>> chunks_; // all full but the last
    std::size_t size_ = 0;
    std::size_t dropped_ = 0;
    std::size_t limit_;
};
