#include "transmit/transmitengine.h"

#include "device/devicelayer.h"
#include "frames/finetimers.h"
#include "frames/framesender.h"
#include "frames/pendingframes.h"
#include "transmit/transmitlistener.h"

#include <QDateTime>

#include <algorithm>
#include <optional>

namespace
{
constexpr std::chrono::milliseconds kChannelLook{50};

constexpr LogText kClosed = {"列表发送：通道%1已关闭，停止%2项", "列表發送：通道%1已關閉，停止%2項",
                             "List send: channel %1 is closed, entries stopped: %2"};
constexpr LogText kOpened = {"列表发送：通道%1已打开，继续%2项", "列表發送：通道%1已打開，繼續%2項",
                             "List send: channel %1 is open again, entries going on: %2"};
} // namespace

TransmitEngine::TransmitEngine(LogSink log) : log_(std::move(log)), thread_([this] { run(); }) {}

TransmitEngine::~TransmitEngine()
{
    stop();
    {
        const std::lock_guard<std::mutex> guard(lock_);
        quit_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void TransmitEngine::setEntries(const TransmitList &entries)
{
    {
        const std::lock_guard<std::mutex> guard(lock_);
        const auto now = TransmitClock::now();
        std::vector<TransmitRun> before = std::move(runs_);
        const std::unordered_map<unsigned, std::size_t> placesBefore = std::move(places_);
        runs_.clear();
        places_.clear();
        runs_.reserve(static_cast<std::size_t>(entries.size()));
        for (const TransmitEntryPointer &entry : entries) {
            places_[entry->serial] = runs_.size();
            const auto known = placesBefore.find(entry->serial);
            if (known != placesBefore.end()) {
                runs_.push_back(std::move(before[known->second]));
                runs_.back().replaceEntry(entry, now, running_);
            } else {
                runs_.emplace_back(entry);
                if (running_)
                    runs_.back().start(now);
            }
            if (running_ && !open_[entry->channel])
                runs_.back().channelClosed();
        }
        fillHeap();
    }
    wake_.notify_all();
    listenIfNeeded();
}

void TransmitEngine::start(const TransmitLimits &limits)
{
    {
        const std::lock_guard<std::mutex> guard(lock_);
        if (running_)
            return;
        stop_.clear();
        running_ = true;
        limits_ = limits;
        taken_ = 0;
        startedAt_ = TransmitClock::now();
        nextLook_ = startedAt_;
        std::fill(std::begin(open_), std::end(open_), true); // the first look finds those that are not
        for (TransmitRun &run : runs_)
            run.start(startedAt_);
        fillHeap();
    }
    wake_.notify_all();
    listenIfNeeded();
}

void TransmitEngine::stop()
{
    {
        const std::lock_guard<std::mutex> guard(lock_);
        running_ = false;
        for (TransmitRun &run : runs_)
            run.stop();
        heap_.clear();
    }
    stop_.set();
    wake_.notify_all();
    listenIfNeeded();
}

bool TransmitEngine::hasWork() const
{
    const std::lock_guard<std::mutex> guard(lock_);
    if (sending_)
        return true;
    return running_ && !isThrough() &&
           std::any_of(runs_.begin(), runs_.end(), [](const TransmitRun &run) { return run.canGoOn(); });
}

// Under the lock. Moments before the end are sent at, however late.
bool TransmitEngine::isThrough() const
{
    if (limits_.frames != 0 && taken_ >= limits_.frames)
        return true;
    const auto end = startedAt_ + limits_.duration;
    return limits_.duration.count() != 0 && TransmitClock::now() >= end &&
           (heap_.empty() || heap_.front().due.at >= end);
}

void TransmitEngine::request(unsigned serial)
{
    {
        const std::lock_guard<std::mutex> guard(lock_);
        const auto place = places_.find(serial);
        if (place == places_.end() || !runs_[place->second].sendable())
            return;
        if (!runs_[place->second].ask(TransmitClock::now()))
            return;
        push(place->second);
    }
    wake_.notify_all();
}

std::vector<TransmitCounts> TransmitEngine::counts() const
{
    const std::lock_guard<std::mutex> guard(lock_);
    std::vector<TransmitCounts> all(runs_.size());
    std::transform(runs_.begin(), runs_.end(), all.begin(), [](const TransmitRun &run) { return run.counts(); });
    return all;
}

TransmitClock::time_point TransmitEngine::startedAt() const
{
    const std::lock_guard<std::mutex> guard(lock_);
    return startedAt_;
}

// --- the heap: under the lock -----------------------------------------------------------------------------------

void TransmitEngine::fillHeap()
{
    heap_.clear();
    answering_.clear();
    for (std::size_t index = 0; index < runs_.size(); ++index) {
        for (const TransmitRun::Due &due : runs_[index].dues())
            heap_.push_back({due, index});
        if (runs_[index].entry().mode == TransmitMode::Response)
            answering_.push_back(index);
    }
    std::make_heap(heap_.begin(), heap_.end());
}

// The newest moment of an entry.
void TransmitEngine::push(std::size_t index)
{
    heap_.push_back({runs_[index].dues().back(), index});
    std::push_heap(heap_.begin(), heap_.end());
}

// --- the thread -------------------------------------------------------------------------------------------------

void TransmitEngine::run()
{
    std::optional<FineTimers> fine;
    Lock lock(lock_);
    while (!quit_) {
        if (running_ && !fine)
            fine.emplace();
        else if (!running_)
            fine.reset();
        const auto now = TransmitClock::now();
        if (running_ && now >= nextLook_)
            lookAtChannels(lock, now);
        else if (running_ && isThrough())
            wake_.wait_until(lock, nextLook_);
        else if (!heap_.empty() && heap_.front().due.at <= now)
            sendFirst(lock, now);
        else if (running_)
            wake_.wait_until(lock, heap_.empty() ? nextLook_ : std::min(nextLook_, heap_.front().due.at));
        else
            wake_.wait(lock);
    }
}

void TransmitEngine::lookAtChannels(Lock &lock, TransmitClock::time_point now)
{
    nextLook_ = now + kChannelLook;
    for (unsigned channel = 0; channel < kChannelCount; ++channel) {
        const bool open = isChannelOpen(channel);
        if (open == open_[channel])
            continue;
        open_[channel] = open;
        int changed = 0;
        for (TransmitRun &run : runs_)
            if (run.entry().channel == channel && (open ? run.channelOpened(now) : run.channelClosed()))
                ++changed;
        fillHeap();
        if (changed == 0)
            continue;
        lock.unlock();
        say(log_, open ? kOpened : kClosed, channel + 1, changed);
        lock.lock();
    }
}

void TransmitEngine::sendFirst(Lock &lock, TransmitClock::time_point now)
{
    const Moment moment = heap_.front();
    const unsigned channel = runs_[moment.index].entry().channel;
    if (moment.due.planned && !isChannelOpen(channel) && open_[channel]) {
        lookAtChannels(lock, now); // drops the moment
        return;
    }
    std::pop_heap(heap_.begin(), heap_.end());
    heap_.pop_back();
    TransmitRun &run = runs_[moment.index];
    if (run.pass(moment.due, now))
        push(moment.index);
    const RawFrame frame = run.frame();
    const TransmitType type = run.entry().type;
    const unsigned serial = run.entry().serial;

    sending_ = true;
    lock.unlock(); // a driver may let its sender wait
    const bool room = pendingFramesHaveRoom() || waitForPendingRoom(stop_, [this] { return running_.load(); });
    const bool taken = room && sendRaw(channel, frame, type) == SendResult::Taken;
    const std::int64_t time = QDateTime::currentMSecsSinceEpoch();
    lock.lock();

    sending_ = false;
    taken_ += taken ? 1 : 0;
    const auto place = places_.find(serial);
    if (place != places_.end() && (room || running_))
        runs_[place->second].sent(taken, time);
}

// --- entries that answer ----------------------------------------------------------------------------------------

void TransmitEngine::heard(const RawFrame *frames, std::size_t count)
{
    bool asked = false;
    {
        const std::lock_guard<std::mutex> guard(lock_);
        if (!running_)
            return;
        const auto now = TransmitClock::now();
        for (const RawFrame *frame = frames; frame != frames + count; ++frame)
            for (const std::size_t index : answering_) {
                TransmitRun &run = runs_[index];
                if (!run.takesPart() || !isAwaited(run.entry(), *frame))
                    continue;
                if (!run.ask(now + std::chrono::milliseconds(run.entry().interval)))
                    continue;
                push(index);
                asked = true;
            }
    }
    if (asked)
        wake_.notify_all();
}

void TransmitEngine::listenIfNeeded()
{
    bool needed = false;
    {
        const std::lock_guard<std::mutex> guard(lock_);
        needed = running_ && !answering_.empty();
    }
    if (!needed)
        listener_.reset();
    else if (!listener_)
        listener_ = std::make_unique<TransmitListener>(
            [this](const RawFrame *frames, std::size_t count) { heard(frames, count); });
}
