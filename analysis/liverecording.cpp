#include "analysis/liverecording.h"

#include "device/devicelayer.h"

#include <utility>

LiveRecording::LiveRecording(const RecorderSettings &settings, FrameFilter filter)
    : filter_(std::move(filter)),
      opening_(isDeviceOpen() ? deviceOpenedAt() : 0),
      recorder_(settings, [this](const RecorderEvent &event) { events_.push_back(event); })
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
    if (opening_ == 0)
        opening_ = opening;
    chosen_.clear();
    for (std::size_t i = 0; i < count; ++i) {
        if (!filter_.matches(frames[i]))
            continue;
        chosen_.push_back(frames[i]);
        chosen_.back().time += opening - opening_;
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
