#include "statistics/livestatistics.h"

#include "device/devicelayer.h"
#include "frames/adapterclock.h"

#include <algorithm>
#include <utility>

namespace
{

// Frames reach the statistics so much later than they came, at most; time goes on no faster without them.
constexpr std::int64_t kBehindNs = 250'000'000;

} // namespace

void LiveStatistics::consume(const RawFrame *frames, std::size_t count)
{
    const std::lock_guard<std::mutex> guard(lock_);
    followOpening();
    shifted_.assign(frames, frames + count);
    for (RawFrame &frame : shifted_) {
        frame.time += offset_;
        latest_ = std::max(latest_, frame.time);
    }
    statistics_.add(shifted_.data(), shifted_.size());
    if (!supervisor_)
        return;
    for (const RawFrame &frame : shifted_) {
        supervisor_->add(frame, &found_);
        if (!found_.empty())
            note();
    }
}

void LiveStatistics::framesLost(std::uint64_t count)
{
    const std::lock_guard<std::mutex> guard(lock_);
    lost_ += count;
}

void LiveStatistics::intervalEnded()
{
    if (!live_) {
        const std::lock_guard<std::mutex> guard(lock_);
        if (supervisor_) {
            supervisor_->advance(latest_, &found_);
            note();
        }
        return;
    }
    if (!isDeviceOpen())
        return;
    const std::int64_t now = adapterNow(0) - kBehindNs;
    const std::lock_guard<std::mutex> guard(lock_);
    followOpening();
    if (now < 0)
        return;
    latest_ = std::max(latest_, now + offset_);
    statistics_.advance(now + offset_);
    if (supervisor_) {
        supervisor_->advance(now + offset_, &found_);
        note();
    }
}

void LiveStatistics::followOpening()
{
    if (!live_)
        return;
    const std::int64_t opening = deviceOpenedAt();
    if (opening == opening_)
        return;
    if (std::exchange(opening_, opening) != 0) {
        offset_ = latest_;
        restartSupervision(); // what went on before has ended with the device
    }
}

void LiveStatistics::restartSupervision()
{
    supervisor_ = baseline_ ? std::make_unique<Supervisor>(*baseline_, tolerance_) : nullptr;
}

void LiveStatistics::note()
{
    for (const Violation &violation : found_) {
        SupervisionMark &mark = marks_[violation.key.packed()];
        ++mark.counts[static_cast<std::size_t>(violation.kind)];
        if (violation.kind == Violation::Kind::Missing)
            mark.missingAt = violation.time;
        if (waiting_.size() < kWaitingViolations)
            waiting_.push_back(violation);
        else
            ++moreViolations_;
    }
    found_.clear();
}

void LiveStatistics::setRates(unsigned channel, const BusRates &rates)
{
    const std::lock_guard<std::mutex> guard(lock_);
    statistics_.setRates(channel, rates);
}

void LiveStatistics::clear()
{
    const std::lock_guard<std::mutex> guard(lock_);
    statistics_.clear();
    if (!live_)
        latest_ = 0; // the recording begins anew
    lost_ = 0;
    ++generation_;
    marks_.clear();
    waiting_.clear();
    moreViolations_ = 0;
    restartSupervision();
}

void LiveStatistics::supervise(std::optional<Baseline> baseline, double tolerance)
{
    const std::lock_guard<std::mutex> guard(lock_);
    baseline_ = std::move(baseline);
    tolerance_ = tolerance;
    marks_.clear();
    waiting_.clear();
    moreViolations_ = 0;
    restartSupervision();
}

void LiveStatistics::snapshot(StatisticsSnapshot *into) const
{
    const std::lock_guard<std::mutex> guard(lock_);
    into->channels = statistics_.channels();
    into->identifiers = statistics_.identifiers().entries();
    into->absent.clear();
    if (baseline_)
        for (const BaselineMessage &message : baseline_->messages)
            if (!message.optional && !message.group && !statistics_.identifiers().find(message.key))
                into->absent.push_back(message.key);
    into->marks = marks_;
    into->time = latest_;
    into->lost = lost_;
    into->beyondCeiling = statistics_.beyondCeiling();
    into->generation = generation_;
    into->supervised = supervisor_ != nullptr;
}

Baseline LiveStatistics::learn() const
{
    const std::lock_guard<std::mutex> guard(lock_);
    return learnBaseline(statistics_.identifiers());
}

std::vector<Violation> LiveStatistics::takeViolations(std::uint64_t *more)
{
    const std::lock_guard<std::mutex> guard(lock_);
    *more = std::exchange(moreViolations_, 0);
    return std::exchange(waiting_, {});
}
