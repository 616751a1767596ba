#include "frames/replay.h"

#include "device/driver/driver.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace
{
constexpr double kNanoseconds = 1e9;
constexpr double kMilliseconds = 1e3;
constexpr double kLongest = 1e9;        // seconds, some thirty years: what recordings of broken clocks ask for is cut
constexpr double kLargestTime = 9.2e18; // nanoseconds that 64 bits hold

ReplayClock::Clock::duration clockTime(double seconds)
{
    const double cut = std::clamp(seconds, -kLongest, kLongest);
    return std::chrono::duration_cast<ReplayClock::Clock::duration>(std::chrono::duration<double>(cut));
}

double secondsBetween(std::int64_t from, std::int64_t to)
{
    std::int64_t difference = 0;
    if (__builtin_sub_overflow(to, from, &difference))
        return to > from ? kLongest : -kLongest;
    return static_cast<double>(difference) / kNanoseconds;
}
} // namespace

std::optional<ReplayChannels> replayChannelsFromText(const QString &text)
{
    ReplayChannels channels;
    for (const QString &pair : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        bool fromIsNumber = false;
        bool toIsNumber = false;
        const uint from = pair.section(QLatin1Char('='), 0, 0).toUInt(&fromIsNumber);
        const uint to = pair.section(QLatin1Char('='), 1).toUInt(&toIsNumber);
        if (!fromIsNumber || !toIsNumber || from < 1 || to < 1 || to > kChannelCount)
            return std::nullopt;
        channels[from] = to;
    }
    return channels;
}

ReplayClock::Clock::time_point ReplayClock::due(const RawFrame &frame)
{
    if (!begun_)
        last_ = Clock::now();
    const bool isFirst = !std::exchange(begun_, true);
    if (intervalMs_)
        return last_ = isFirst ? last_ : last_ + clockTime(*intervalMs_ / kMilliseconds);
    if (!first_) {
        first_ = frame.time;
        begin_ = last_;
    }
    const auto moment = begin_ + clockTime(secondsBetween(*first_, frame.time) / speed_);
    last_ = std::max(last_, moment);
    return moment;
}

void ReplayClock::setTime(std::int64_t time, Clock::time_point moment)
{
    begun_ = true;
    first_ = time;
    begin_ = moment;
    last_ = moment;
}

std::optional<std::int64_t> ReplayClock::timeAt(Clock::time_point moment) const
{
    if (!first_ || intervalMs_)
        return std::nullopt;
    const double seconds = std::chrono::duration<double>(moment - begin_).count();
    const double time = static_cast<double>(*first_) + seconds * speed_ * kNanoseconds;
    return static_cast<std::int64_t>(std::clamp(time, -kLargestTime, kLargestTime));
}

void ReplayClock::setSpeed(double speed, Clock::time_point moment)
{
    if (const auto time = timeAt(moment))
        setTime(*time, moment);
    speed_ = speed;
}

void SendCounts::count(SendResult result)
{
    switch (result) {
    case SendResult::Taken:
        ++sent;
        break;
    case SendResult::Refused:
        ++refused;
        break;
    case SendResult::Unsendable:
        ++unsendable;
        break;
    }
}

SendResult sendReplayed(const RawFrame &frame, const ReplayChannels &channels)
{
    const auto mapped = channels.find(frame.channel);
    const unsigned channel = mapped == channels.end() ? frame.channel : mapped->second;
    const bool exists = channel >= 1 && channel <= kChannelCount;
    return exists ? sendRaw(channel - 1, frame, TransmitType::Normal) : SendResult::Refused;
}
