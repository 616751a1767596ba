// A store and what fills it: live frames, or a pass over a part of a recording.
#pragma once

#include "analysis/signalstore.h"
#include "frames/framefeed.h"

class SignalReading
{
public:
    // Without a part: live.
    SignalReading(const std::optional<RecordingPart> &part, StoreUse use);

    SignalStore &store() { return store_; }
    // Of a recording: from its beginning, also when a pass is under way.
    void start();
    void stop() { feed_.reset(); }
    // Values begin anew, and so does a pass over a recording that has been started.
    void setLookup(const std::shared_ptr<const MessageLookup> &lookup);

    // Whether a recording is being read.
    bool isReading() const { return part_ && feed_ && !feed_->finished(); }
    // 0..1, of a recording.
    double progress() const { return feed_ ? feed_->progress() : 0; }
    // The recording ended early: its file is no longer what it was.
    bool isCutShort() const { return part_ && feed_ && feed_->finished() && feed_->progress() < 1; }

private:
    const std::optional<RecordingPart> part_;
    SignalStore store_;
    std::unique_ptr<FrameFeed> feed_; // ends before the store
};
