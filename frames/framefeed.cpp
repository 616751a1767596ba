#include "frames/framefeed.h"

FrameFeed::FrameFeed(FrameConsumer &consumer, const std::optional<RecordingPart> &part)
    : index_(part ? part->index : nullptr)
{
    if (part)
        recorded_ = std::make_unique<RecordingSource>(*index_, consumer, part->first, part->end);
    else
        live_ = std::make_unique<LiveSource>(consumer);
}

double FrameFeed::progress() const
{
    if (!recorded_ || recorded_->total() == 0)
        return finished() ? 1 : 0;
    return static_cast<double>(recorded_->done()) / static_cast<double>(recorded_->total());
}
