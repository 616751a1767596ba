// A filter over a whole recording, on all processors, and searching with the same expressions.
#pragma once

#include "traces/framefilter.h"
#include "traces/recordingindex.h"

#include <map>

// The rows that a filter lets through: about a bit for each row of the recording at most. Runs in threads of its own
// from the beginning on; what was found can be asked for at once, and rows that the index gets later are looked at too.
class RecordingFilter
{
public:
    // The index outlives the filter. threads: 0 for one on each processor.
    RecordingFilter(const RecordingIndex &index, FrameFilter filter, unsigned threads = 0);
    ~RecordingFilter();
    RecordingFilter(const RecordingFilter &) = delete;
    RecordingFilter &operator=(const RecordingFilter &) = delete;

    // Ends the search; the rows found stay.
    void cancel();

    // All of these: any thread.
    // Found without a gap from the beginning on.
    std::uint64_t matches() const;
    // Rows looked at without a gap from the beginning on.
    std::uint64_t rowsDone() const;
    // Nothing is left to look at, or it was cancelled.
    bool finished() const;
    // The row of a match, below matches(), in the recording.
    std::uint64_t rowOf(std::uint64_t match) const;
    // The first match at or after a row; matches() when there is none.
    std::uint64_t matchFrom(std::uint64_t row) const;
    std::size_t bytesUsed() const;

private:
    // The matches of some rows: all, a list of offsets, or a bit for each.
    struct Part {
        std::uint64_t first = 0; // row
        std::uint64_t matchesBefore = 0;
        std::uint32_t rows = 0;
        std::uint32_t matches = 0;
        std::vector<std::uint16_t> list;
        std::vector<std::uint64_t> bits;
    };

    void work();
    bool claim(std::uint64_t *first, std::uint32_t *rows);
    Part look(RecordingRows *source, std::uint64_t first, std::uint32_t rows) const;
    void publish(Part part);
    static std::uint32_t offsetOf(const Part &part, std::uint32_t match);
    static std::uint32_t matchesBelow(const Part &part, std::uint32_t offset);

    const RecordingIndex &index_;
    const FrameFilter filter_;
    mutable std::mutex guard_;            // everything below
    std::vector<Part> parts_;             // in their order
    std::map<std::uint64_t, Part> early_; // waiting for those before them
    std::uint64_t claimed_ = 0;
    std::uint64_t done_ = 0;
    std::uint64_t matches_ = 0;
    std::atomic<bool> stop_{false};
    std::vector<std::thread> threads_;
};

// The nearest row from `from` on, itself included, forward or backwards, that both filters let through; nothing when
// there is none or *stop became true.
std::optional<std::uint64_t> searchRecording(const RecordingIndex &index, const FrameFilter &what,
                                             const FrameFilter &within, std::uint64_t from, bool backwards,
                                             const std::atomic<bool> &stop);
