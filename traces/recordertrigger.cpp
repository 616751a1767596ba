#include "traces/recordertrigger.h"

#include "device/driver/timeunits.h"

#include <algorithm>

namespace
{

constexpr std::size_t kFirstSize = 64;

int mostFrames(int frames, int milliseconds)
{
    if (frames <= 0)
        return milliseconds > 0 ? PreTriggerBuffer::kMostFrames : 0;
    return std::min(frames, PreTriggerBuffer::kMostFrames);
}

} // namespace

bool RecorderTrigger::matches(const RawFrame &frame) const
{
    if (kind == Kind::LostFrames || frame.error != (kind == Kind::ErrorFrame))
        return false;
    if (channel != 0 && frame.channel != channel)
        return false;
    if (kind == Kind::ErrorFrame)
        return true;
    if (frame.id < firstId || frame.id > lastId || (extended && *extended != frame.extended))
        return false;
    if (kind == Kind::Identifier)
        return true;
    if (frame.remote || mask.size() > frame.length)
        return false;
    for (int index = 0; index < mask.size(); ++index) {
        const int wanted = index < value.size() ? value[index] : 0;
        if (((frame.data[index] ^ wanted) & mask[index] & 0xFF) != 0)
            return false;
    }
    return true;
}

bool anyMatches(const std::vector<RecorderTrigger> &triggers, const RawFrame &frame)
{
    return std::any_of(triggers.begin(), triggers.end(),
                       [&frame](const RecorderTrigger &trigger) { return trigger.matches(frame); });
}

bool anyMatchesLost(const std::vector<RecorderTrigger> &triggers)
{
    return std::any_of(triggers.begin(), triggers.end(), [](const RecorderTrigger &trigger) {
        return trigger.kind == RecorderTrigger::Kind::LostFrames;
    });
}

PreTriggerBuffer::PreTriggerBuffer(int frames, int milliseconds)
    : most_(mostFrames(frames, milliseconds)), span_(std::max(milliseconds, 0) * kNanosecondsPerMillisecond)
{
}

void PreTriggerBuffer::add(const RawFrame &frame)
{
    if (most_ == 0)
        return;
    dropOld(frame.time);
    if (count_ == most_) {
        first_ = place(1);
        --count_;
    }
    if (static_cast<std::size_t>(count_) == ring_.size())
        grow();
    ring_[place(count_)] = frame;
    ++count_;
}

void PreTriggerBuffer::dropOld(std::int64_t now)
{
    while (span_ > 0 && count_ > 0 && now - at(0).time > span_) {
        first_ = place(1);
        --count_;
    }
}

void PreTriggerBuffer::grow()
{
    std::rotate(ring_.begin(), ring_.begin() + static_cast<std::ptrdiff_t>(first_), ring_.end());
    first_ = 0;
    ring_.resize(std::min(std::max(kFirstSize, 2 * ring_.size()), static_cast<std::size_t>(most_)));
}
