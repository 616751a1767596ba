#include "frames/recordingsource.h"

#include "traces/tracereader.h"

#include <algorithm>

namespace
{
constexpr std::int64_t kIntervalNs = std::chrono::nanoseconds(LiveSource::kInterval).count();
} // namespace

RecordingSource::RecordingSource(const RecordingIndex &index, FrameConsumer &consumer, std::uint64_t first,
                                 std::uint64_t end)
    : index_(index), consumer_(consumer), end_(std::min(end, index.rows())), first_(std::min(first, end_))
{
    thread_ = std::thread(&RecordingSource::run, this);
}

RecordingSource::~RecordingSource()
{
    cancel();
    thread_.join();
}

void RecordingSource::run()
{
    RecordingRows rows(index_);
    RawFrame frames[kFramesAtATime];
    std::optional<std::int64_t> interval; // its end
    auto wall = std::chrono::steady_clock::now() + LiveSource::kInterval;
    for (std::uint64_t row = first_; row < end_ && !stop_;) {
        const int count = rows.read(row, static_cast<int>(std::min<std::uint64_t>(kFramesAtATime, end_ - row)), frames);
        if (count == 0)
            break; // the file is no longer what it was
        for (int begin = 0, i = 0; i <= count; ++i) {
            const bool over = i < count && interval && frames[i].time >= *interval;
            if (i > begin && (i == count || over)) {
                consumer_.consume(frames + begin, static_cast<std::size_t>(i - begin));
                begin = i;
            }
            if (over)
                consumer_.intervalEnded();
            if (i < count && (over || !interval))
                interval = frames[i].time + kIntervalNs;
        }
        row += static_cast<std::uint64_t>(count);
        done_ = row - first_;
        if (const auto now = std::chrono::steady_clock::now(); now >= wall) {
            wall = now + LiveSource::kInterval;
            consumer_.intervalEnded();
        }
    }
    consumer_.intervalEnded();
    finished_ = true;
}
