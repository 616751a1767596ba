// Where a window's frames come from: the tap, or a part of a recording that is open.
#pragma once

#include "frames/recordingsource.h"

#include <memory>
#include <optional>

// A part of a recording; it keeps the index alive, so a window may outlast the one that opened the recording.
struct RecordingPart {
    std::shared_ptr<const RecordingIndex> index;
    std::uint64_t first = 0; // row
    std::uint64_t end = 0;   // first row that does not belong to it
};

class FrameFeed
{
public:
    // Begins at once. Without a part: live. The consumer outlives the feed.
    FrameFeed(FrameConsumer &consumer, const std::optional<RecordingPart> &part);

    bool isLive() const { return live_ != nullptr; }
    // Any thread. Of a recording, 0..1; live: 0.
    double progress() const;
    // Whether everything was taken (or the file could not be read on); live: never.
    bool finished() const { return recorded_ && recorded_->finished(); }

private:
    const std::shared_ptr<const RecordingIndex> index_;
    std::unique_ptr<LiveSource> live_;
    std::unique_ptr<RecordingSource> recorded_;
};
