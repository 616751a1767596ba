#include "analysis/signalstore.h"

#include "device/driver/timeunits.h"

#include <algorithm>

namespace
{
constexpr std::size_t kFramesPerLock = 512;                // a window that reads waits for no more
constexpr std::size_t kMostWaiting = std::size_t(1) << 20; // points of one feed that nobody takes
constexpr int kMostIds = 1 << 16;                          // unknown ones included
constexpr double kInterruption = std::numeric_limits<double>::quiet_NaN();
} // namespace

void SignalStore::consume(const RawFrame *frames, std::size_t count)
{
    while (count > 0) {
        const std::size_t part = std::min(count, kFramesPerLock);
        const std::lock_guard<std::mutex> guard(lock_);
        for (std::size_t i = 0; i < part; ++i)
            consumeOne(frames[i]);
        frames += part;
        count -= part;
    }
}

// What a channel receives is in order, and so is what it sends; the one may come long after the other when a machine is
// busy. Where the times of one of these go back, the adapter has been opened again.
std::int64_t SignalStore::storeTime(const RawFrame &frame)
{
    std::int64_t time = frame.time + offset_;
    if (!started_) {
        started_ = true;
        now_ = time;
    }
    const unsigned source = unsigned(frame.channel) << 1 | unsigned(frame.direction == Direction::Sent);
    auto last = lastOf_.find(source);
    if (last == lastOf_.end())
        last = lastOf_.insert(source, now_);
    if (time < *last - kNanosecondsPerSecond) {
        interruptCurves(now_);
        offset_ = now_ + kNanosecondsPerSecond - frame.time;
        time = frame.time + offset_;
    }
    *last = std::max(*last, time);
    now_ = std::max(now_, time);
    return time;
}

void SignalStore::consumeOne(const RawFrame &frame)
{
    const std::int64_t time = storeTime(frame);
    if (frame.error || frame.remote)
        return;
    const quint64 key = quint64(frame.channel) << 32 | quint64(frame.extended) << 31 | frame.id;
    auto found = slotsOfIds_.constFind(key);
    if (found == slotsOfIds_.constEnd()) {
        if (slotsOfIds_.size() >= kMostIds)
            slotsOfIds_.clear();
        const KnownMessage *message = lookup_->find(frame);
        Slot *slot = message ? slotOf(frame.channel, message) : nullptr;
        const bool wanted = slot && (use_ == StoreUse::Values || !slot->feeds.empty());
        found = slotsOfIds_.insert(key, wanted ? slot : nullptr);
    }
    Slot *slot = found.value();
    if (!slot)
        return;
    MessageRecord &record = slot->record;
    ++record.count;
    record.length = frame.length;
    values_.resize(record.values.size());
    slot->message->decoder.decode(frame, values_.data());
    for (std::size_t i = 0; i < values_.size(); ++i) {
        SignalRecord &signal = record.values[i];
        const SignalValue &value = values_[i];
        signal.state = value.state;
        if (value.state != SignalState::Valid)
            continue;
        if (!signal.seen || signal.value.raw != value.raw)
            signal.changed = time;
        signal.seen = true;
        signal.value = value;
        signal.range.add(value.physical);
    }
    for (const auto &[index, feed] : slot->feeds)
        if (values_[std::size_t(index)].state == SignalState::Valid)
            push(feed, {time, values_[std::size_t(index)].physical});
}

void SignalStore::push(CurveFeed *feed, CurvePoint point) const
{
    if (use_ == StoreUse::Curves || feed->waiting_.size() < kMostWaiting)
        feed->waiting_.push_back(point);
    else
        feed->waiting_.back() = {point.time, kInterruption}; // what is lost shows as an interruption
}

void SignalStore::interruptCurves(std::int64_t time)
{
    for (const auto &feed : feeds_)
        push(feed.get(), {time, kInterruption});
}

void SignalStore::framesLost(std::uint64_t count)
{
    const std::lock_guard<std::mutex> guard(lock_);
    lost_ += count;
    interruptCurves(now_);
}

SignalStore::Slot *SignalStore::slotOf(unsigned channel, const KnownMessage *message)
{
    std::unique_ptr<Slot> &slot = slots_[{channel, message}];
    if (!slot) {
        slot = std::make_unique<Slot>();
        slot->message = message;
        slot->record.values.resize(std::size_t(message->decoder.signalCount()));
    }
    return slot.get();
}

void SignalStore::bindFeeds()
{
    slotsOfIds_.clear();
    for (const auto &[key, slot] : slots_)
        slot->feeds.clear();
    for (const auto &feed : feeds_) {
        const SignalId &id = feed->id_;
        const KnownMessage *message = lookup_->find(id.channel, id.message, id.extended);
        const int index = message ? message->definition->indexOf(id.signal) : -1;
        if (index >= 0)
            slotOf(id.channel, message)->feeds.emplace_back(index, feed.get());
    }
}

void SignalStore::setLookup(std::shared_ptr<const MessageLookup> lookup)
{
    const std::lock_guard<std::mutex> guard(lock_);
    slots_.clear();
    lookup_ = std::move(lookup);
    bindFeeds();
}

void SignalStore::beginAnew()
{
    const std::lock_guard<std::mutex> guard(lock_);
    slots_.clear();
    bindFeeds();
    started_ = false;
    offset_ = now_ = 0;
    lastOf_.clear();
    lost_ = 0;
}

bool SignalStore::read(unsigned channel, const KnownMessage *message, MessageRecord *record) const
{
    const std::lock_guard<std::mutex> guard(lock_);
    const auto found = slots_.find({channel, message});
    if (found == slots_.end() || found->second->record.count == 0)
        return false;
    *record = found->second->record;
    return true;
}

std::int64_t SignalStore::now() const
{
    const std::lock_guard<std::mutex> guard(lock_);
    return now_;
}

std::uint64_t SignalStore::lost() const
{
    const std::lock_guard<std::mutex> guard(lock_);
    return lost_;
}

void SignalStore::resetRanges()
{
    const std::lock_guard<std::mutex> guard(lock_);
    for (const auto &[key, slot] : slots_)
        for (SignalRecord &signal : slot->record.values) {
            signal.range = ValueRange();
            if (signal.seen)
                signal.range.add(signal.value.physical);
        }
}

std::shared_ptr<CurveFeed> SignalStore::feed(const SignalId &id)
{
    const std::lock_guard<std::mutex> guard(lock_);
    auto made = std::make_shared<CurveFeed>();
    made->id_ = id;
    feeds_.push_back(made);
    bindFeeds();
    return made;
}

void SignalStore::endFeed(const std::shared_ptr<CurveFeed> &feed)
{
    const std::lock_guard<std::mutex> guard(lock_);
    feeds_.erase(std::remove(feeds_.begin(), feeds_.end(), feed), feeds_.end());
    bindFeeds();
}

void SignalStore::take(CurveFeed &feed, std::vector<CurvePoint> *points)
{
    points->clear();
    const std::lock_guard<std::mutex> guard(lock_);
    points->swap(feed.waiting_);
}
