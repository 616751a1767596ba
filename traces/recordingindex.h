// Random access to a recording of any size: a place to go on from every kBlockRows frames, found by one pass over the
// file in a thread of its own. Rows can be had as soon as the pass has seen them; the file may grow meanwhile.
#pragma once

#include "traces/tracereader.h"

#include <QFile>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

class RecordingIndex
{
public:
    static constexpr std::uint64_t kBlockRows = 1024;

    enum class Change : std::uint8_t { None, Shorter, Gone }; // what has happened to the file under the index

    struct State {
        std::uint64_t rows = 0;      // that can be read
        std::uint64_t bytesDone = 0; // of the file
        std::uint64_t bytes = 0;
        bool complete = false;  // the pass has reached the end, as it was then, or an error
        bool cancelled = false; // by the user; the rows until then stay
        Change change = Change::None;
        std::uint64_t skipped = 0; // parts that are no frames
        std::optional<std::int64_t> startUtc;
        std::optional<TraceError> error; // where the recording is damaged; rows before it stay
    };

    explicit RecordingIndex(QString path);
    ~RecordingIndex();
    RecordingIndex(const RecordingIndex &) = delete;
    RecordingIndex &operator=(const RecordingIndex &) = delete;

    // Begins the pass; once. false with the reason in *error when the file is no recording that can be read.
    bool open(QString *error);
    // Ends the pass where it is.
    void cancel();
    // Whether the index goes on when the file grows. A last line that was cut when it was met is read again.
    void setFollow(bool on);

    // All of these: any thread.
    State state() const;
    std::uint64_t rows() const { return rows_.load(std::memory_order_acquire); }
    // No more rows will come unless the file is followed.
    bool settled() const;
    // Until there are more rows than these, the pass ends, or the time is over.
    void waitForMore(std::uint64_t rows, std::chrono::milliseconds most) const;
    // The first row at or after a time; rows() when there is none. nanoseconds since the recording's start.
    std::uint64_t rowAtTime(std::int64_t time) const;
    const QString &path() const { return path_; }
    TraceFormat format() const { return format_; }
    // Memory of the index itself, bytes.
    std::size_t bytesUsed() const;

private:
    friend class RecordingRows;
    struct Block {
        TraceCheckpoint begin;
        std::int64_t latest; // time of this block and all before it
    };

    void run();
    // One pass from the last block's beginning to the file's end.
    void readOn(bool first);
    bool fillBlock(TraceReader &reader, std::vector<RawFrame> *chunk);
    bool waitForGrowth();
    Block block(std::uint64_t number) const;

    const QString path_;
    TraceFormat format_ = TraceFormat::Candump;
    QFile file_;                          // the pass's
    std::unique_ptr<TraceReader> opened_; // for the first pass
    mutable std::mutex guard_;            // blocks_, state_
    mutable std::condition_variable changed_;
    std::vector<Block> blocks_;
    State state_;
    std::atomic<std::uint64_t> rows_{0};
    std::atomic<bool> stop_{false};
    std::atomic<bool> cancelled_{false};
    std::atomic<bool> follow_{false};
    std::thread thread_;
};

// One thread's way to the rows of an index; cheap for rows in their order.
class RecordingRows
{
public:
    explicit RecordingRows(const RecordingIndex &index);

    // Reads up to count rows from the given one on. Fewer when the index has no more, or the file is no longer what was
    // indexed.
    int read(std::uint64_t first, int count, RawFrame *frames);

private:
    bool goTo(std::uint64_t row);
    int take(int count, RawFrame *frames);

    const RecordingIndex &index_;
    QFile file_;
    std::unique_ptr<TraceReader> reader_;
    std::uint64_t next_ = 0; // the row that the reader is at
};
