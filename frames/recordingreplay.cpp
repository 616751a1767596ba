#include "frames/recordingreplay.h"

#include "device/devicelayer.h"
#include "frames/finetimers.h"
#include "frames/pendingframes.h"
#include "traces/tracereader.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr std::chrono::milliseconds kChannelLook{100};

bool anyChannelOpen()
{
    for (unsigned channel = 0; channel < kChannelCount; ++channel)
        if (isChannelOpen(channel))
            return true;
    return false;
}

RecordingReplay::Plan fitted(RecordingReplay::Plan plan)
{
    plan.end = std::min(plan.end, plan.index->rows());
    plan.first = std::min(plan.first, plan.end);
    return plan;
}

} // namespace

RecordingReplay::RecordingReplay(Plan plan) : plan_(fitted(std::move(plan))), clock_(plan_.speed), rows_(*plan_.index)
{
    state_.row = plan_.first;
    state_.paused = plan_.paused;
    thread_ = std::thread(&RecordingReplay::run, this);
}

RecordingReplay::~RecordingReplay()
{
    stop();
    thread_.join();
}

void RecordingReplay::pause()
{
    const std::lock_guard<std::mutex> lock(guard_);
    state_.paused = true;
    wake_.notify_all();
}

void RecordingReplay::goOn()
{
    const std::lock_guard<std::mutex> lock(guard_);
    state_.paused = false;
    wake_.notify_all();
}

void RecordingReplay::step()
{
    const std::lock_guard<std::mutex> lock(guard_);
    state_.paused = true;
    stepWanted_ = true;
    wake_.notify_all();
}

void RecordingReplay::goTo(std::uint64_t row)
{
    const std::lock_guard<std::mutex> lock(guard_);
    state_.row = std::clamp(row, plan_.first, plan_.end);
    jumped_ = true;
    ++jumps_;
    wake_.notify_all();
}

void RecordingReplay::setSpeed(double speed)
{
    const std::lock_guard<std::mutex> lock(guard_);
    clock_.setSpeed(speed, Clock::now());
    wake_.notify_all();
}

void RecordingReplay::stop()
{
    stop_.set();
    const std::lock_guard<std::mutex> lock(guard_); // so that no wake-up is lost
    wake_.notify_all();
}

RecordingReplay::State RecordingReplay::state() const
{
    const std::lock_guard<std::mutex> lock(guard_);
    return state_;
}

void RecordingReplay::run()
{
    const FineTimers fine;
    Lock lock(guard_);
    while (state_.end == End::None) {
        if (stop_.isSet())
            state_.end = End::Stopped;
        else if (!anyChannelOpen())
            state_.end = End::NoChannel;
        else if (!fetch(lock))
            continue;
        else if (state_.paused && !stepWanted_)
            hold(lock);
        else if (isDue(lock))
            send(lock);
    }
}

// Makes state_.row a row that the filter lets through and whose frame is in the chunk. false when something else must
// be looked at first. The lock is given back while the file is read.
bool RecordingReplay::fetch(Lock &lock)
{
    const std::uint64_t jumps = jumps_;
    std::uint64_t row = state_.row;
    lock.unlock();
    bool found = false;
    bool readable = true;
    for (; !found && row < plan_.end && !stop_.isSet(); row += !found) {
        if (row < chunkFirst_ || row >= chunkFirst_ + chunk_.size()) {
            chunk_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kFramesAtATime, plan_.end - row)));
            const int got = rows_.read(row, static_cast<int>(chunk_.size()), chunk_.data());
            chunk_.resize(static_cast<std::size_t>(got));
            chunkFirst_ = row;
            readable = got > 0;
            if (!readable)
                break;
            lock.lock();
            const bool other = jumps != jumps_;
            lock.unlock();
            if (other)
                break;
        }
        found = plan_.filter.matches(chunk_[static_cast<std::size_t>(row - chunkFirst_)]);
    }
    lock.lock();
    if (jumps != jumps_)
        return false;
    state_.row = row;
    if (!readable)
        state_.end = End::Unreadable;
    else if (!found && row == plan_.end)
        state_.end = End::Done;
    return found;
}

// Paused: until something is asked for, or a channel may have been closed.
void RecordingReplay::hold(Lock &lock)
{
    const RawFrame &frame = chunk_[static_cast<std::size_t>(state_.row - chunkFirst_)];
    if (jumped_)
        held_ = frame.time;
    else if (!held_)
        held_ = std::min(clock_.timeAt(Clock::now()).value_or(frame.time), frame.time);
    wake_.wait_for(lock, kChannelLook);
}

// Whether the row is due; waits for a part of the time when it is not.
bool RecordingReplay::isDue(Lock &lock)
{
    const RawFrame &frame = chunk_[static_cast<std::size_t>(state_.row - chunkFirst_)];
    const auto now = Clock::now();
    const bool jumped = std::exchange(jumped_, false);
    const bool stepped = std::exchange(stepWanted_, false);
    if (jumped || stepped)
        clock_.setTime(frame.time, now);
    else if (held_)
        clock_.setTime(*held_, now);
    held_.reset();
    const auto due = clock_.due(frame);
    if (due <= now)
        return true;
    wake_.wait_until(lock, std::min(due, now + kChannelLook));
    return false;
}

void RecordingReplay::send(Lock &lock)
{
    const std::uint64_t jumps = jumps_;
    const RawFrame frame = chunk_[static_cast<std::size_t>(state_.row - chunkFirst_)];
    lock.unlock();
    const bool room = waitForPendingRoom(stop_, anyChannelOpen);
    const std::optional<SendResult> result = room ? std::optional(sendReplayed(frame, plan_.channels)) : std::nullopt;
    lock.lock();
    if (!result)
        return;
    state_.counts.count(*result);
    state_.time = frame.time;
    if (jumps == jumps_)
        ++state_.row;
}
