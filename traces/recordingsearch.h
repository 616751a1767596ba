// searchRecording() in a thread of its own.
#pragma once

#include "traces/recordingfilter.h"

class RecordingSearch
{
public:
    // The index outlives the search.
    RecordingSearch(const RecordingIndex &index, FrameFilter what, FrameFilter within, std::uint64_t from,
                    bool backwards)
        : thread_([this, &index, what = std::move(what), within = std::move(within), from, backwards] {
              found_ = searchRecording(index, what, within, from, backwards, stop_);
              finished_ = true;
          })
    {
    }
    ~RecordingSearch()
    {
        stop_ = true;
        thread_.join();
    }
    RecordingSearch(const RecordingSearch &) = delete;
    RecordingSearch &operator=(const RecordingSearch &) = delete;

    bool finished() const { return finished_; }
    // Once it has finished: the row, nothing when there is none.
    std::optional<std::uint64_t> found() const { return found_; }

private:
    std::atomic<bool> stop_{false};
    std::atomic<bool> finished_{false};
    std::optional<std::uint64_t> found_;
    std::thread thread_; // last: it uses the others
};
