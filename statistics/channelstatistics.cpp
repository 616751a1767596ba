#include "statistics/channelstatistics.h"

#include "device/driver/busevent.h"
#include "device/driver/framelength.h"
#include "device/driver/timeunits.h"

#include <algorithm>

namespace
{

std::uint64_t timeOnWire(const RawFrame &frame, const BusRates &rates)
{
    const std::uint32_t dataRate = rates.data == 0 ? rates.arbitration : rates.data;
    if (frame.comesBack)
        return 0;
    // Of changes of the controller's state, told like error frames, the bus carries nothing.
    constexpr std::uint32_t kStateOnly = buserror::kController | buserror::kBusOff | buserror::kRestarted |
                                         buserror::kCounters | buserror::kTransmitTimeout;
    if (frame.error && frame.id != 0 && (frame.id & ~kStateOnly) == 0)
        return 0;
    if (frame.error)
        return wireTime({kErrorFrameBits, 0}, rates.arbitration, dataRate);
    FrameOnWire wire;
    wire.id = frame.id | (frame.extended ? kIdExtendedFlag : 0) | (frame.remote ? kIdRemoteFlag : 0);
    wire.fd = frame.fd;
    wire.bitRateSwitch = frame.bitRateSwitch;
    wire.errorStateIndicator = frame.errorStateIndicator;
    wire.length = frame.length;
    wire.rawDlc = frame.rawDlc;
    wire.data = frame.data;
    return wireTime(frameBits(wire), rates.arbitration, dataRate);
}

} // namespace

FrameKind frameKind(const RawFrame &frame)
{
    if (frame.error)
        return FrameKind::Error;
    if (frame.remote)
        return FrameKind::Remote;
    if (frame.fd)
        return frame.bitRateSwitch ? FrameKind::FdSwitched : FrameKind::Fd;
    return frame.extended ? FrameKind::Extended : FrameKind::Standard;
}

ChannelStatistics::ChannelStatistics(const BusRates &rates) : rates_(rates), curve_(kCurvePoints) {}

std::size_t ChannelStatistics::counter(Direction direction, FrameKind kind)
{
    return (direction == Direction::Sent ? kFrameKinds : 0) + static_cast<std::size_t>(kind);
}

void ChannelStatistics::advance(std::int64_t time)
{
    if (!hasTime_) {
        hasTime_ = true;
        first_ = last_ = time;
        return;
    }
    if (time <= last_)
        return;
    last_ = time;
    const std::int64_t number = (time - first_) / kPointNanoseconds;
    const auto ring = static_cast<std::int64_t>(curve_.size());
    // After a long silence only what the curve still shows is emptied.
    for (std::int64_t fresh = std::max(current_ + 1, number - ring + 1); fresh <= number; ++fresh) {
        peak_ = std::max(peak_, busyOfSecondBefore(current_)); // frames of the point that ends now may still come
        current_ = fresh;
        busyAt(fresh) = 0;
        countersAt(fresh) = Counters();
    }
    current_ = number;
}

void ChannelStatistics::add(const RawFrame &frame)
{
    advance(frame.time);
    const std::size_t index = counter(frame.direction, frameKind(frame));
    const std::uint32_t bytes = frame.remote || frame.error ? 0 : frame.length;
    Counters &now = countersAt(current_);
    ++now.frames[index];
    now.bytes[index] += bytes;
    ++counted_[index].frames;
    counted_[index].bytes += bytes;
    if (rates_.arbitration != 0)
        addBusy(std::clamp(frame.time, first_, last_), timeOnWire(frame, rates_));
}

void ChannelStatistics::addBusy(std::int64_t end, std::uint64_t duration)
{
    busy_ += duration;
    std::uint64_t left = duration;
    const std::int64_t oldestKept = std::max<std::int64_t>(0, current_ + 1 - static_cast<std::int64_t>(curve_.size()));
    std::int64_t number = std::max(oldestKept, (end - first_) / kPointNanoseconds);
    // A frame is stamped at its end; slow ones began in an earlier point.
    for (std::int64_t begin = first_ + number * kPointNanoseconds; left > 0; --number, begin -= kPointNanoseconds) {
        const bool oldest = number == oldestKept;
        const std::uint64_t here = oldest ? left : std::min(left, static_cast<std::uint64_t>(end - begin));
        busyAt(number) += here;
        left -= here;
        end = begin;
    }
}

const KindCount &ChannelStatistics::counted(Direction direction, FrameKind kind) const
{
    return counted_[counter(direction, kind)];
}

KindCount ChannelStatistics::counted(Direction direction) const
{
    KindCount sum;
    for (std::size_t kind = 0; kind < kFrameKinds; ++kind) {
        sum.frames += counted(direction, static_cast<FrameKind>(kind)).frames;
        sum.bytes += counted(direction, static_cast<FrameKind>(kind)).bytes;
    }
    return sum;
}

KindCount ChannelStatistics::lastSecond(Direction direction, FrameKind kind) const
{
    const std::size_t index = counter(direction, kind);
    KindCount sum;
    for (std::int64_t number = std::max<std::int64_t>(0, current_ - kPointsPerSecond); number < current_; ++number) {
        sum.frames += countersAt(number).frames[index];
        sum.bytes += countersAt(number).bytes[index];
    }
    return sum;
}

std::uint64_t ChannelStatistics::busyOfSecondBefore(std::int64_t end) const
{
    std::uint64_t sum = 0;
    for (std::int64_t number = std::max<std::int64_t>(0, end - kPointsPerSecond); number < end; ++number)
        sum += busyAt(number);
    return sum;
}

std::optional<double> ChannelStatistics::loadNow() const
{
    if (rates_.arbitration == 0 || current_ == 0)
        return std::nullopt;
    const std::int64_t points = std::min(current_, kPointsPerSecond);
    return static_cast<double>(busyOfSecondBefore(current_)) / static_cast<double>(points * kPointNanoseconds);
}

std::optional<double> ChannelStatistics::loadMean() const
{
    if (rates_.arbitration == 0 || last_ == first_)
        return std::nullopt;
    return static_cast<double>(busy_) / static_cast<double>(last_ - first_);
}

std::optional<double> ChannelStatistics::loadPeak() const
{
    if (rates_.arbitration == 0 || last_ == first_)
        return std::nullopt;
    // Of a recording shorter than a second there is only the mean.
    if (current_ < kPointsPerSecond)
        return loadMean();
    return static_cast<double>(std::max(peak_, busyOfSecondBefore(current_))) /
           static_cast<double>(kNanosecondsPerSecond);
}

std::vector<float> ChannelStatistics::loadCurve() const
{
    const std::int64_t shown = std::min<std::int64_t>(current_, static_cast<std::int64_t>(curve_.size()) - 1);
    std::vector<float> curve;
    curve.reserve(static_cast<std::size_t>(shown));
    for (std::int64_t number = current_ - shown; number < current_; ++number)
        curve.push_back(static_cast<float>(static_cast<double>(busyAt(number)) / kPointNanoseconds));
    return curve;
}
