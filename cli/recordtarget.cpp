#include "cli/recordtarget.h"

#include "cli/messages.h"

#include <algorithm>

bool RecordTarget::begin(std::int64_t startUtc)
{
    settings_.options.startUtc = startUtc;
    if (settings_.path == QLatin1String("-")) {
        output_.setOptions(settings_.options);
        return output_.open(settings_.path, settings_.format) && output_.flush();
    }
    recorder_ = std::make_unique<Recorder>(settings_, [this](const RecorderEvent &event) { tellEvent(event); });
    recorder_->begin();
    return !trouble_;
}

bool RecordTarget::write(const RawFrame *frames, int count)
{
    if (!recorder_) {
        const std::uint64_t left = settings_.mostFrames > 0 ? settings_.mostFrames - output_.frames() : UINT64_MAX;
        const int wanted = static_cast<int>(std::min<std::uint64_t>(static_cast<std::uint64_t>(count), left));
        return (wanted == 0 || (output_.write(frames, wanted) && output_.flush())) &&
               static_cast<std::uint64_t>(wanted) < left;
    }
    recorder_->write(frames, count);
    return !recorder_->done();
}

void RecordTarget::markLost(std::uint64_t count)
{
    if (recorder_)
        recorder_->markLost(count);
}

void RecordTarget::tellEvent(const RecorderEvent &event)
{
    switch (event.kind) {
    case RecorderEvent::Kind::FileBegun:
        tell(QStringLiteral("recording to ") + event.path);
        break;
    case RecorderEvent::Kind::FileEnded:
        tell(QStringLiteral("%1 frames in ").arg(event.frames) + event.path);
        for (const TraceLoss &loss : event.losses)
            tell(event.path + QStringLiteral(": lost in this format: %1 × ").arg(loss.count) + loss.what);
        lossy_ = lossy_ || !event.losses.empty();
        break;
    case RecorderEvent::Kind::Trouble:
        trouble_ = true;
        tell(event.path + QStringLiteral(" cannot be written: ") + event.reason +
             QStringLiteral("; %1 frames lost so far").arg(event.lost));
        break;
    case RecorderEvent::Kind::Recovered:
        tell(event.path + QStringLiteral(" can be written again; %1 frames lost").arg(event.lost));
        break;
    }
}

bool RecordTarget::end()
{
    if (!recorder_) {
        const bool complete = output_.finish();
        tell(QStringLiteral("%1 frames in ").arg(output_.frames()) + output_.name());
        return complete;
    }
    recorder_->end();
    if (recorder_->lostFrames() > 0)
        tell(QStringLiteral("%1 frames could not be recorded").arg(recorder_->lostFrames()));
    return !trouble_ && !lossy_ && recorder_->lostFrames() == 0;
}
