// The one way to write a recording, whatever its format.
#pragma once

#include "traces/tracereader.h"

#include <vector>

// Something of the frames that the format cannot hold.
struct TraceLoss {
    QString what; // "error state indicator", in the current language
    std::uint64_t count = 0;
};

struct TraceWriterOptions {
    // The recording's start, nanoseconds since 1970 UTC: written where the format has a place for it.
    std::optional<std::int64_t> startUtc;
    bool nanoseconds = false;   // candump and ASC: nine decimals instead of six
    bool relativeTimes = false; // times as they are, from 0, in formats that otherwise write the date's time
};

class TraceWriter
{
public:
    virtual ~TraceWriter() = default;

    // Appends frames. false when the device refused (disk full) and none of these frames was taken: errorText() says
    // why; the file is whole up to the last frame that fitted, frames taken before that did not fit are kept, and
    // writing may be tried again. A file is best opened Unbuffered.
    virtual bool write(const RawFrame *frames, int count) = 0;
    // Hands everything to the device, so that what has been written so far can be read; false as above.
    virtual bool flush() = 0;
    // Completes the file (trailers, counts in the header where the device can seek); the writer is then done.
    virtual bool finish() = 0;
    virtual QString errorText() const = 0;
    // What was left out or changed so far, each kind once with its count; a frame of which nothing can be written
    // counts as lost whole.
    virtual std::vector<TraceLoss> losses() const = 0;
};

// The device is open for writing and outlives the writer.
std::unique_ptr<TraceWriter> createTrace(QIODevice *device, TraceFormat format, const TraceWriterOptions &options);

// By the name's ending (.log, .asc, .trc, .blf, .pcapng, .csv) or a format's name ("candump", "asc", ...).
std::optional<TraceFormat> traceFormatOfName(const QString &fileName);
std::optional<TraceFormat> traceFormatFromText(const QString &text);
QString traceFormatText(TraceFormat format);
// Of file names, without the dot.
QString traceFormatEnding(TraceFormat format);
