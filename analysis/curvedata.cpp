#include "analysis/curvedata.h"

#include <algorithm>

void CurveData::append(CurvePoint point)
{
    if (size_ > 0)
        point.time = std::max(point.time, at(size_ - 1).time);
    if (size_ % kChunk == 0) {
        if (size_ > 0 && size_ + kChunk > limit_) {
            chunks_.pop_front();
            size_ -= kChunk;
            dropped_ += kChunk;
        }
        chunks_.push_back(std::make_shared<Chunk>());
    }
    Chunk &chunk = *chunks_.back();
    const std::size_t index = size_++ % kChunk;
    chunk.points[index] = point;
    // Comparisons with "not a number" are false, so an interruption changes no range.
    chunk.fine[index / kStep].add(point.value);
    chunk.coarse[index / kMiddle].add(point.value);
    chunk.whole.add(point.value);
}

std::size_t CurveData::firstAt(std::int64_t time) const
{
    const auto chunk =
        std::partition_point(chunks_.begin(), chunks_.end(), [&](const auto &it) { return it->points[0].time < time; });
    if (chunk == chunks_.begin())
        return 0;
    const std::size_t number = std::size_t(chunk - chunks_.begin()) - 1;
    const auto *points = chunks_[number]->points.data();
    const auto *end = points + std::min(kChunk, size_ - number * kChunk);
    const auto *found = std::partition_point(points, end, [&](const CurvePoint &point) { return point.time < time; });
    return number * kChunk + std::size_t(found - points);
}

std::size_t CurveData::firstAt(std::int64_t time, std::size_t near) const
{
    std::size_t low = 0; // every point before it is earlier
    std::size_t high = size_;
    std::size_t probe = std::min(near, size_);
    // Steps that double, away from the guess, until the place is between two of them.
    if (probe < size_ && at(probe).time < time) {
        for (std::size_t step = 1; probe < size_ && at(probe).time < time; step *= 2) {
            low = probe + 1;
            probe += step;
        }
        high = std::min(probe, size_);
    } else {
        for (std::size_t step = 1; probe > 0; step *= 2) {
            high = probe;
            probe -= std::min(step, probe);
            if (at(probe).time < time) {
                low = probe + 1;
                break;
            }
        }
    }
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        if (at(middle).time < time)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

namespace
{
// In variables of its own, which the compiler keeps in registers.
template <typename Item> void addAll(ValueRange *range, const Item *item, const Item *end)
{
    ValueRange all = *range;
    for (; item != end; ++item)
        all.add(*item);
    *range = all;
}
} // namespace

ValueRange CurveData::range(std::size_t begin, std::size_t end) const
{
    ValueRange range;
    end = std::min(end, size_);
    while (begin < end) {
        const Chunk &chunk = *chunks_[begin / kChunk];
        const std::size_t index = begin % kChunk;
        const std::size_t room = end - begin;
        std::size_t count = 0;
        if (index == 0 && room >= kChunk) {
            range.add(chunk.whole);
            count = kChunk;
        } else if (index % kMiddle == 0 && room >= kMiddle) {
            const std::size_t ranges = std::min(kChunk - index, room) / kMiddle;
            addAll(&range, chunk.coarse.data() + index / kMiddle, chunk.coarse.data() + index / kMiddle + ranges);
            count = ranges * kMiddle;
        } else if (index % kStep == 0 && room >= kStep) {
            const std::size_t ranges = std::min(kMiddle - index % kMiddle, room) / kStep;
            addAll(&range, chunk.fine.data() + index / kStep, chunk.fine.data() + index / kStep + ranges);
            count = ranges * kStep;
        } else {
            count = std::min(kStep - index % kStep, room);
            addAll(&range, chunk.points.data() + index, chunk.points.data() + index + count);
        }
        begin += count;
    }
    return range;
}
