// What the writers and readers of text formats have in common.
#pragma once

#include "traces/linesource.h"
#include "traces/losses.h"
#include "traces/textsink.h"

#include <algorithm>
#include <tuple>

// The data bytes of a frame of its kind; a remote frame has none.
inline unsigned lengthOnFile(const RawFrame &frame)
{
    return frame.remote ? 0 : std::min<unsigned>(frame.length, frame.fd ? kRawDataBytes : kClassicBytes);
}

// A writer that makes lines of frames.
class TextTraceWriter : public TraceWriter
{
public:
    TextTraceWriter(QIODevice *device, const TraceWriterOptions &options)
        : TextTraceWriter(device, options, options.relativeTimes ? 0 : options.startUtc.value_or(0))
    {
    }
    // origin: what is added to every time that is written, nanoseconds.
    TextTraceWriter(QIODevice *device, const TraceWriterOptions &options, std::int64_t origin)
        : sink_(device), options_(options), origin_(origin)
    {
    }
    bool write(const RawFrame *frames, int count) final;
    bool flush() final;
    bool finish() final;
    QString errorText() const final { return sink_.errorText(); }
    std::vector<TraceLoss> losses() const final { return losses_.list(); }

protected:
    // The lines before the first frame and after the last one.
    virtual void writeHead() {}
    virtual void writeTail() {}
    // The lines of the frames, into the sink.
    virtual void writeLines(const RawFrame *frames, int count) = 0;

    // The time to write, not negative: without an origin of its own it counts from 1970, or from the recording's start
    // when that is unknown or not wanted.
    std::int64_t timeOnFile(std::int64_t time)
    {
        if (!__builtin_add_overflow(time, origin_, &time) && time >= 0)
            return time;
        losses_.add(Loss::TimeBeforeStart);
        return 0;
    }

    TextSink sink_;
    LossCounts losses_;
    const TraceWriterOptions options_;

private:
    void begin();

    const std::int64_t origin_;
    bool begun_ = false;
    bool finished_ = false;
};

// The values that a reader of lines keeps from line to line.
template <typename... Values> class KeptValues : public TraceState
{
public:
    explicit KeptValues(const Values &...values) : values(values...) {}
    const std::tuple<Values...> values;
};

template <typename... Values> std::shared_ptr<const TraceState> keepValues(const Values &...values)
{
    return std::make_shared<KeptValues<Values...>>(values...);
}

// state: made by keepValues() of variables of the same types.
template <typename... Values> void restoreValues(const TraceState &state, Values &...values)
{
    std::tie(values...) = static_cast<const KeptValues<Values...> &>(state).values;
}

// A reader that makes frames of lines.
class TextTraceReader : public TraceReader
{
public:
    explicit TextTraceReader(ByteSource source) : lines_(std::move(source)) {}
    std::optional<std::int64_t> startUtc() const override { return startUtc_; }
    int read(RawFrame *frames, int capacity) final;
    bool atEnd() const final { return ended_; }
    std::optional<TraceError> error() const final { return error_; }
    std::uint64_t skipped() const final { return skipped_; }
    TraceCheckpoint checkpoint() final;
    void resume(const TraceCheckpoint &checkpoint) final;

protected:
    // What the format keeps from line to line.
    virtual std::shared_ptr<const TraceState> state() = 0;
    virtual void restore(const TraceState &state) = 0;

    enum class LineKind : std::uint8_t {
        Frame,
        Other,   // a comment, a statistic, a header
        Unknown, // nothing of the format
        Damaged, // begins as a frame and is none
    };
    // What a line is; *frame is new, and filled for Frame only.
    virtual LineKind readLine(std::string_view line, RawFrame *frame) = 0;
    // Whether a last line that lacks its end is complete all the same.
    virtual bool completeWithoutEnd(std::string_view line) const;

    LineSource lines_;
    std::optional<std::int64_t> startUtc_;

private:
    // Takes the line at hand; answers how many frames it was, 0 or 1.
    int take(RawFrame *frame);
    void stop(const Text3 &reason);

    std::optional<TraceError> error_;
    std::uint64_t skipped_ = 0;
    bool understood_ = false; // some line was of the format
    bool ended_ = false;
};
