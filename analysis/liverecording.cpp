#include "analysis/liverecording.h"

#include "device/devicelayer.h"
#include "device/driver/timeunits.h"
#include "frames/adapterclock.h"

#include <QDateTime>

#include <chrono>
#include <utility>

namespace
{

// The recording's times are those of the device that is open now, else they count from now.
RecorderSettings dated(RecorderSettings settings, std::int64_t *origin)
{
    const std::int64_t date = QDateTime::currentMSecsSinceEpoch() * kNanosecondsPerMillisecond;
    const std::chrono::nanoseconds now = std::chrono::steady_clock::now().time_since_epoch();
    *origin = isDeviceOpen() ? deviceOpenedAt() : now.count();
    settings.options.startUtc = isDeviceOpen() ? date - adapterNow(0) : date;
    return settings;
}

} // namespace

LiveRecording::LiveRecording(const RecorderSettings &settings, FrameFilter filter)
    : filter_(std::move(filter)),
      recorder_(dated(settings, &origin_), [this](const RecorderEvent &event) { events_.push_back(event); })
{
    recorder_.begin();
    source_ = std::make_unique<LiveSource>(*this);
}

LiveRecording::~LiveRecording()
{
    end();
}

void LiveRecording::end()
{
    source_.reset(); // hands over what has come
    const std::lock_guard<std::mutex> guard(lock_);
    recorder_.end();
}

void LiveRecording::consume(const RawFrame *frames, std::size_t count)
{
    const std::lock_guard<std::mutex> guard(lock_);
    // The adapter's clock begins again with every opening of the device; the recording's does not.
    const std::int64_t opening = deviceOpenedAt();
    chosen_.clear();
    for (std::size_t i = 0; i < count; ++i) {
        if (!filter_.matches(frames[i]))
            continue;
        chosen_.push_back(frames[i]);
        chosen_.back().time += opening - origin_;
    }
    recorder_.write(chosen_.data(), static_cast<int>(chosen_.size()));
}

void LiveRecording::framesLost(std::uint64_t count)
{
    const std::lock_guard<std::mutex> guard(lock_);
    lost_ += count;
    recorder_.markLost(count);
}

void LiveRecording::intervalEnded()
{
    const std::lock_guard<std::mutex> guard(lock_);
    recorder_.tick();
}

std::vector<RecorderEvent> LiveRecording::takeEvents()
{
    const std::lock_guard<std::mutex> guard(lock_);
    return std::exchange(events_, {});
}

bool LiveRecording::isRecording() const
{
    const std::lock_guard<std::mutex> guard(lock_);
    return recorder_.recording();
}

bool LiveRecording::isDone() const
{
    const std::lock_guard<std::mutex> guard(lock_);
    return recorder_.done();
}

std::uint64_t LiveRecording::recordedFrames() const
{
    const std::lock_guard<std::mutex> guard(lock_);
    return recorder_.recordedFrames();
}

std::uint64_t LiveRecording::lostFrames() const
{
    const std::lock_guard<std::mutex> guard(lock_);
    return lost_ + recorder_.lostFrames();
}
