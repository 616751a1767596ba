#include "transmit/transmitrun.h"

#include <algorithm>

TransmitRun::TransmitRun(TransmitEntryPointer entry)
    : entry_(std::move(entry)), sendable_(transmitProblem(*entry_).isEmpty())
{
    counts_.serial = entry_->serial;
}

void TransmitRun::replaceEntry(const TransmitEntryPointer &entry, TransmitClock::time_point now, bool running)
{
    if (entry == entry_)
        return;
    const TransmitEntryPointer before = entry_;
    entry_ = entry;
    sendable_ = transmitProblem(*entry_).isEmpty();
    if (entry_->changesText != before->changesText)
        number_ = 0;
    if (!running)
        return;
    const bool begins = !before->on || entry_->mode != before->mode || entry_->channel != before->channel ||
                        entry_->count != before->count;
    if (!entry_->on || !sendable_) {
        dues_.clear();
    } else if (begins || (dues_.empty() && isTimed() && !isLast() && state_ == State::Ready)) {
        state_ = State::Ready;
        begin(now);
    } else if (entry_->interval != before->interval && isTimed() && !dues_.empty()) {
        dues_.clear();
        plan(std::max(lastPlanned_ + interval(), now));
    }
}

void TransmitRun::begin(TransmitClock::time_point now)
{
    dues_.clear();
    attempts_ = 0;
    plan(now);
}

void TransmitRun::plan(TransmitClock::time_point at)
{
    if (takesPart() && isTimed())
        dues_.push_back({at, true});
}

void TransmitRun::start(TransmitClock::time_point now)
{
    state_ = State::Ready;
    sendable_ = transmitProblem(*entry_).isEmpty();
    number_ = 0;
    counts_ = TransmitCounts();
    counts_.serial = entry_->serial;
    begin(now);
}

bool TransmitRun::channelClosed()
{
    const bool tookPart = takesPart() && canGoOn();
    dues_.clear();
    if (tookPart)
        state_ = entry_->resumes ? State::ChannelClosed : State::Halted;
    return tookPart;
}

bool TransmitRun::channelOpened(TransmitClock::time_point now)
{
    if (state_ != State::ChannelClosed)
        return false;
    state_ = State::Ready;
    plan(now);
    return true;
}

bool TransmitRun::ask(TransmitClock::time_point at)
{
    if (dues_.size() >= kMostWaiting) {
        ++counts_.skipped;
        return false;
    }
    dues_.push_back({at, false});
    return true;
}

bool TransmitRun::pass(Due due, TransmitClock::time_point now)
{
    const auto passed = std::find_if(dues_.begin(), dues_.end(), [due](const Due &other) {
        return other.at == due.at && other.planned == due.planned;
    });
    if (passed != dues_.end())
        dues_.erase(passed);
    if (!due.planned)
        return false;
    ++attempts_;
    lastPlanned_ = counts_.lastDue = due.at;
    if (isLast())
        return false;
    TransmitClock::time_point next = due.at + interval();
    if (next + kLatest < now) { // the machine slept, or the driver did: on with the same grid
        const auto behind = (now - next) / interval() + 1;
        counts_.skipped += static_cast<std::uint64_t>(behind);
        next += behind * interval();
    }
    plan(next);
    return !dues_.empty() && dues_.back().planned;
}

RawFrame TransmitRun::frame() const
{
    RawFrame frame = entry_->frame;
    applyChanges(entry_->changes, number_, frame);
    return frame;
}

void TransmitRun::sent(bool taken, std::int64_t time)
{
    if (!taken) {
        ++counts_.refused;
        return;
    }
    ++number_;
    ++counts_.sent;
    counts_.lastSent = time;
}

bool TransmitRun::canGoOn() const
{
    if (!entry_->on || !sendable_ || state_ == State::Halted)
        return false;
    return state_ == State::ChannelClosed || !dues_.empty() || entry_->mode == TransmitMode::Response;
}
