#include "traces/recordingfilter.h"

#include "traces/tracereader.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr std::uint32_t kRunRows = 32 * RecordingIndex::kBlockRows; // what a thread takes at a time; fits 16 bits
constexpr unsigned kRowsPerWord = 64;
constexpr std::uint32_t kListShare = 16; // of more than one row in so many a bit for each takes less than a list
constexpr std::chrono::milliseconds kWait{50};

unsigned onesOf(std::uint64_t word)
{
    return static_cast<unsigned>(__builtin_popcountll(word));
}

} // namespace

RecordingFilter::RecordingFilter(const RecordingIndex &index, FrameFilter filter, unsigned threads)
    : index_(index), filter_(std::move(filter))
{
    const unsigned count = threads > 0 ? threads : std::max(1u, std::thread::hardware_concurrency());
    for (unsigned i = 0; i < count; ++i)
        threads_.emplace_back(&RecordingFilter::work, this);
}

RecordingFilter::~RecordingFilter()
{
    cancel();
    for (std::thread &thread : threads_)
        thread.join();
}

void RecordingFilter::cancel()
{
    stop_ = true;
}

std::uint64_t RecordingFilter::matches() const
{
    const std::lock_guard<std::mutex> lock(guard_);
    return matches_;
}

std::uint64_t RecordingFilter::rowsDone() const
{
    const std::lock_guard<std::mutex> lock(guard_);
    return done_;
}

bool RecordingFilter::finished() const
{
    return stop_ || (index_.settled() && rowsDone() == index_.rows());
}

std::size_t RecordingFilter::bytesUsed() const
{
    const std::lock_guard<std::mutex> lock(guard_);
    std::size_t bytes = parts_.capacity() * sizeof(Part);
    for (const Part &part : parts_)
        bytes += part.list.capacity() * sizeof part.list[0] + part.bits.capacity() * sizeof part.bits[0];
    return bytes;
}

void RecordingFilter::work()
{
    RecordingRows source(index_);
    std::uint64_t first = 0;
    std::uint32_t rows = 0;
    while (!stop_) {
        if (claim(&first, &rows)) {
            publish(look(&source, first, rows));
        } else if (index_.settled()) {
            std::this_thread::sleep_for(kWait); // for a file that grows
        } else {
            index_.waitForMore(index_.rows(), kWait);
        }
    }
}

// While the index is being made only whole runs are taken, or the parts would be as small as its steps.
bool RecordingFilter::claim(std::uint64_t *first, std::uint32_t *rows)
{
    const bool settled = index_.settled();
    const std::uint64_t there = index_.rows();
    const std::lock_guard<std::mutex> lock(guard_);
    const std::uint64_t open = there - std::min(there, claimed_);
    const std::uint64_t least = settled ? 1 : claimed_ == 0 ? RecordingIndex::kBlockRows : kRunRows;
    if (open < least)
        return false;
    *first = claimed_;
    *rows = static_cast<std::uint32_t>(std::min<std::uint64_t>(open, kRunRows));
    claimed_ += *rows;
    return true;
}

RecordingFilter::Part RecordingFilter::look(RecordingRows *source, std::uint64_t first, std::uint32_t rows) const
{
    RawFrame frames[kFramesAtATime];
    std::vector<std::uint16_t> found;
    for (std::uint32_t at = 0; at < rows && !stop_;) {
        const int wanted = static_cast<int>(std::min<std::uint32_t>(kFramesAtATime, rows - at));
        const int got = source->read(first + at, wanted, frames);
        for (int i = 0; i < got; ++i)
            if (filter_.matches(frames[i]))
                found.push_back(static_cast<std::uint16_t>(at + static_cast<std::uint32_t>(i)));
        if (got < wanted)
            break; // the file is no longer what it was
        at += static_cast<std::uint32_t>(got);
    }
    Part part;
    part.first = first;
    part.rows = rows;
    part.matches = static_cast<std::uint32_t>(found.size());
    if (part.matches == rows)
        return part;
    if (part.matches <= rows / kListShare) {
        part.list.assign(found.begin(), found.end());
        return part;
    }
    part.bits.assign((rows + kRowsPerWord - 1) / kRowsPerWord, 0);
    for (const std::uint16_t offset : found)
        part.bits[offset / kRowsPerWord] |= std::uint64_t(1) << (offset % kRowsPerWord);
    return part;
}

void RecordingFilter::publish(Part part)
{
    const std::lock_guard<std::mutex> lock(guard_);
    if (stop_)
        return; // it may not be whole
    early_.emplace(part.first, std::move(part));
    while (!early_.empty() && early_.begin()->first == done_) {
        Part next = std::move(early_.begin()->second);
        early_.erase(early_.begin());
        next.matchesBefore = matches_;
        matches_ += next.matches;
        done_ += next.rows;
        if (next.matches > 0)
            parts_.push_back(std::move(next));
    }
}

std::uint32_t RecordingFilter::offsetOf(const Part &part, std::uint32_t match)
{
    if (!part.list.empty())
        return part.list[match];
    if (part.bits.empty())
        return match;
    std::size_t word = 0;
    for (unsigned ones = onesOf(part.bits[0]); ones <= match; ones = onesOf(part.bits[++word]))
        match -= ones;
    std::uint64_t bits = part.bits[word];
    for (; match > 0; --match)
        bits &= bits - 1;
    return static_cast<std::uint32_t>(word * kRowsPerWord) + static_cast<std::uint32_t>(__builtin_ctzll(bits));
}

std::uint32_t RecordingFilter::matchesBelow(const Part &part, std::uint32_t offset)
{
    if (offset >= part.rows)
        return part.matches;
    if (!part.list.empty())
        return static_cast<std::uint32_t>(std::lower_bound(part.list.begin(), part.list.end(), offset) -
                                          part.list.begin());
    if (part.bits.empty())
        return offset;
    std::uint32_t count = 0;
    for (std::size_t word = 0; word < offset / kRowsPerWord; ++word)
        count += onesOf(part.bits[word]);
    const std::uint64_t below = (std::uint64_t(1) << (offset % kRowsPerWord)) - 1;
    return count + onesOf(part.bits[offset / kRowsPerWord] & below);
}

std::uint64_t RecordingFilter::rowOf(std::uint64_t match) const
{
    const std::lock_guard<std::mutex> lock(guard_);
    const auto behind =
        std::upper_bound(parts_.begin(), parts_.end(), match,
                         [](std::uint64_t wanted, const Part &part) { return wanted < part.matchesBefore; });
    const Part &part = *(behind - 1);
    return part.first + offsetOf(part, static_cast<std::uint32_t>(match - part.matchesBefore));
}

std::uint64_t RecordingFilter::matchFrom(std::uint64_t row) const
{
    const std::lock_guard<std::mutex> lock(guard_);
    const auto behind = std::upper_bound(parts_.begin(), parts_.end(), row,
                                         [](std::uint64_t wanted, const Part &part) { return wanted < part.first; });
    if (behind == parts_.begin())
        return 0;
    const Part &part = *(behind - 1);
    const std::uint64_t offset = std::min<std::uint64_t>(row - part.first, part.rows);
    return part.matchesBefore + matchesBelow(part, static_cast<std::uint32_t>(offset));
}

std::optional<std::uint64_t> searchRecording(const RecordingIndex &index, const FrameFilter &what,
                                             const FrameFilter &within, std::uint64_t from, bool backwards,
                                             const std::atomic<bool> &stop)
{
    constexpr std::uint64_t block = RecordingIndex::kBlockRows;
    RecordingRows source(index);
    std::vector<RawFrame> frames(block);
    const auto matches = [&](const RawFrame &frame) { return what.matches(frame) && within.matches(frame); };
    const std::uint64_t rows = index.rows();
    if (rows == 0 || (!backwards && from >= rows))
        return std::nullopt;
    from = std::min(from, rows - 1);
    for (std::uint64_t number = from / block; !stop;) {
        const std::uint64_t begin = number * block;
        const int got = source.read(begin, static_cast<int>(block), frames.data());
        if (backwards) {
            for (int i = std::min<int>(got, static_cast<int>(from - begin + 1)) - 1; i >= 0; --i)
                if (matches(frames[static_cast<std::size_t>(i)]))
                    return begin + static_cast<std::uint64_t>(i);
            if (number-- == 0)
                return std::nullopt;
            from = begin - 1;
        } else {
            for (int i = static_cast<int>(from - begin); i < got; ++i)
                if (matches(frames[static_cast<std::size_t>(i)]))
                    return begin + static_cast<std::uint64_t>(i);
            from = ++number * block;
            if (from >= rows)
                return std::nullopt;
        }
    }
    return std::nullopt;
}
