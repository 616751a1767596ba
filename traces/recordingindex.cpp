#include "traces/recordingindex.h"

#include "traces/tracereader.h"

#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <utility>

namespace
{

constexpr std::chrono::milliseconds kLook{150}; // between two looks at a file that is followed

} // namespace

RecordingIndex::RecordingIndex(QString path) : path_(std::move(path)), file_(path_) {}

RecordingIndex::~RecordingIndex()
{
    {
        const std::lock_guard<std::mutex> lock(guard_);
        stop_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable())
        thread_.join();
}

bool RecordingIndex::open(QString *error)
{
    if (!file_.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        *error = file_.errorString();
        return false;
    }
    if (file_.isSequential()) {
        *error = text3("不是普通文件", "不是一般檔案", "not a regular file");
        return false;
    }
    opened_ = openTrace(&file_, path_, error);
    if (!opened_)
        return false;
    format_ = opened_->format();
    state_.bytes = static_cast<std::uint64_t>(file_.size());
    thread_ = std::thread(&RecordingIndex::run, this);
    return true;
}

void RecordingIndex::cancel()
{
    const std::lock_guard<std::mutex> lock(guard_);
    if (state_.complete)
        return;
    cancelled_ = true;
    follow_ = false;
    changed_.notify_all();
}

void RecordingIndex::setFollow(bool on)
{
    const std::lock_guard<std::mutex> lock(guard_);
    follow_ = on;
    if (on && cancelled_) {
        cancelled_ = false;
        state_.cancelled = false;
        state_.bytes = 0; // there is more
    }
    changed_.notify_all();
}

RecordingIndex::State RecordingIndex::state() const
{
    const std::lock_guard<std::mutex> lock(guard_);
    State state = state_;
    state.rows = rows();
    return state;
}

bool RecordingIndex::settled() const
{
    const std::lock_guard<std::mutex> lock(guard_);
    return state_.complete;
}

void RecordingIndex::waitForMore(std::uint64_t rows, std::chrono::milliseconds most) const
{
    std::unique_lock<std::mutex> lock(guard_);
    changed_.wait_for(lock, most, [this, rows] { return this->rows() > rows || state_.complete || stop_; });
}

RecordingIndex::Block RecordingIndex::block(std::uint64_t number) const
{
    const std::lock_guard<std::mutex> lock(guard_);
    return blocks_.at(number);
}

std::size_t RecordingIndex::bytesUsed() const
{
    const std::lock_guard<std::mutex> lock(guard_);
    return blocks_.capacity() * sizeof(Block);
}

std::uint64_t RecordingIndex::rowAtTime(std::int64_t time) const
{
    std::uint64_t number = 0;
    {
        const std::lock_guard<std::mutex> lock(guard_);
        const auto found = std::lower_bound(blocks_.begin(), blocks_.end(), time,
                                            [](const Block &block, std::int64_t t) { return block.latest < t; });
        number = static_cast<std::uint64_t>(found - blocks_.begin());
    }
    std::vector<RawFrame> frames(kBlockRows);
    RecordingRows rows(*this);
    const int count = rows.read(number * kBlockRows, static_cast<int>(kBlockRows), frames.data());
    const auto end = frames.begin() + count;
    const auto found = std::find_if(frames.begin(), end, [time](const RawFrame &frame) { return frame.time >= time; });
    return std::min(number * kBlockRows + static_cast<std::uint64_t>(found - frames.begin()), this->rows());
}

void RecordingIndex::run()
{
    readOn(true);
    while (waitForGrowth())
        readOn(false);
}

void RecordingIndex::readOn(bool first)
{
    const auto size = static_cast<std::uint64_t>(file_.size());
    std::unique_ptr<TraceReader> reader = std::move(opened_);
    QString why;
    if (!first) {
        reader = openTraceAt(&file_, format_, block(blocks_.size() - 1).begin, &why);
        if (!reader)
            return;
    }
    {
        const std::lock_guard<std::mutex> lock(guard_);
        state_.bytes = size;
        state_.complete = false;
        state_.error.reset();
        if (first)
            blocks_.push_back({TraceCheckpoint(), std::numeric_limits<std::int64_t>::min()});
    }
    std::vector<RawFrame> chunk(kFramesAtATime);
    while (!stop_ && !cancelled_ && fillBlock(*reader, &chunk)) {
    }
    const std::lock_guard<std::mutex> lock(guard_);
    state_.bytesDone = cancelled_ ? state_.bytesDone : size;
    state_.cancelled = cancelled_;
    state_.error = reader->error();
    state_.skipped = reader->skipped();
    state_.complete = true;
    changed_.notify_all();
}

// Reads the rest of the block under way and publishes it. False when the recording has come to its end.
bool RecordingIndex::fillBlock(TraceReader &reader, std::vector<RawFrame> *chunk)
{
    const std::uint64_t number = blocks_.size() - 1; // only this thread adds blocks
    std::int64_t latest = number == 0 ? std::numeric_limits<std::int64_t>::min() : blocks_[number - 1].latest;
    int count = 0;
    while (count < static_cast<int>(kBlockRows) && !reader.atEnd() && !stop_ && !cancelled_) {
        const int got = reader.read(chunk->data(), std::min(kFramesAtATime, static_cast<int>(kBlockRows) - count));
        for (int i = 0; i < got; ++i)
            latest = std::max(latest, (*chunk)[static_cast<std::size_t>(i)].time);
        count += got;
    }
    const bool full = count == static_cast<int>(kBlockRows);
    const TraceCheckpoint end = reader.checkpoint();
    const std::lock_guard<std::mutex> lock(guard_);
    blocks_[number].latest = std::max(latest, blocks_[number].latest);
    if (full)
        blocks_.push_back({end, latest});
    state_.startUtc = reader.startUtc();
    state_.bytesDone = end.offset;
    const std::uint64_t rows = number * kBlockRows + static_cast<std::uint64_t>(count);
    rows_.store(std::max(rows, this->rows()), std::memory_order_release);
    changed_.notify_all();
    return full && !reader.atEnd();
}

// Until the file is longer than what was read; false when the index ends.
bool RecordingIndex::waitForGrowth()
{
    for (;;) {
        {
            std::unique_lock<std::mutex> lock(guard_);
            changed_.wait_for(lock, kLook, [this] { return stop_.load(); });
            if (stop_)
                return false;
        }
        const auto size = static_cast<std::uint64_t>(file_.size());
        const bool gone = !QFileInfo::exists(path_);
        const std::lock_guard<std::mutex> lock(guard_);
        const Change change = size < state_.bytesDone ? Change::Shorter : gone ? Change::Gone : Change::None;
        if (state_.change != Change::Shorter) // what was cut off once does not come back by growing
            state_.change = change;
        if (follow_ && state_.change != Change::Shorter && size > state_.bytes)
            return true;
    }
}

RecordingRows::RecordingRows(const RecordingIndex &index) : index_(index), file_(index.path())
{
    file_.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

int RecordingRows::read(std::uint64_t first, int count, RawFrame *frames)
{
    const std::uint64_t rows = index_.rows();
    if (first >= rows || !file_.isOpen())
        return 0;
    const int wanted = static_cast<int>(std::min<std::uint64_t>(static_cast<std::uint64_t>(count), rows - first));
    int got = 0;
    if (reader_ && next_ == first)
        got = take(wanted, frames);
    // A reader that met the end does not see what the file has got since.
    if (got < wanted && goTo(first + static_cast<std::uint64_t>(got)))
        got += take(wanted - got, frames + got);
    return got;
}

bool RecordingRows::goTo(std::uint64_t row)
{
    const std::uint64_t block = row / RecordingIndex::kBlockRows;
    const bool ahead = reader_ && next_ <= row && next_ / RecordingIndex::kBlockRows == block && !reader_->atEnd();
    if (!ahead) {
        QString error;
        reader_ = openTraceAt(&file_, index_.format(), index_.block(block).begin, &error);
        next_ = block * RecordingIndex::kBlockRows;
    }
    RawFrame passed[kFramesAtATime];
    while (reader_ && next_ < row)
        if (take(static_cast<int>(std::min<std::uint64_t>(kFramesAtATime, row - next_)), passed) == 0)
            return false;
    return reader_ != nullptr;
}

int RecordingRows::take(int count, RawFrame *frames)
{
    int got = 0;
    while (got < count) {
        const int more = reader_->read(frames + got, count - got);
        if (more == 0)
            break;
        got += more;
    }
    next_ += static_cast<std::uint64_t>(got);
    return got;
}
