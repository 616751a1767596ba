// A recording for a consumer of live frames: the same statistics, signals and plots on what was recorded.
#pragma once

#include "frames/livesource.h"
#include "traces/recordingindex.h"

class RecordingSource
{
public:
    // Feeds rows first up to, without, end (fewer when the index has fewer) as fast as the consumer takes them, in a
    // thread of its own; intervalEnded() comes at least every LiveSource::kInterval of the recording's or the wall
    // clock's time, and once more at the end. Index and consumer outlive the source.
    RecordingSource(const RecordingIndex &index, FrameConsumer &consumer, std::uint64_t first, std::uint64_t end);
    ~RecordingSource(); // cancels
    RecordingSource(const RecordingSource &) = delete;
    RecordingSource &operator=(const RecordingSource &) = delete;

    void cancel() { stop_ = true; }
    // Any thread.
    std::uint64_t total() const { return end_ - first_; }
    std::uint64_t done() const { return done_; } // rows
    bool finished() const { return finished_; }  // all rows, a file that cannot be read on, or cancelled

private:
    void run();

    const RecordingIndex &index_;
    FrameConsumer &consumer_;
    const std::uint64_t end_;
    const std::uint64_t first_;
    std::atomic<std::uint64_t> done_{0};
    std::atomic<bool> finished_{false};
    std::atomic<bool> stop_{false};
    std::thread thread_;
};
