// The one way to read a recording, whatever its format. A reader streams: its memory does not grow with the file.
#pragma once

#include "device/language.h"
#include "traces/rawframe.h"

#include <cstdint>
#include <memory>
#include <optional>

class QIODevice;

constexpr int kFramesAtATime = 512; // few enough to stay in a processor\'s cache

enum class TraceFormat { Candump, Asc, Trc, Blf, Pcapng, Csv };

// Where and why reading ended before the end of the file.
struct TraceError {
    Text3 place;  // "line 12", "offset 0x90"
    Text3 reason; // what was found there
};

// What a format has to know to go on in the middle of a recording.
class TraceState
{
public:
    virtual ~TraceState() = default;
};

// A place between two frames at which a reader of the same recording can go on.
struct TraceCheckpoint {
    std::uint64_t offset = 0;   // bytes of the file before what has to be read
    std::uint64_t passOver = 0; // of what is unpacked from there on
    std::uint64_t number = 0;   // lines or objects before it, for the places of errors
    std::optional<std::int64_t> startUtc;
    std::shared_ptr<const TraceState> state; // null where the format needs none, or at the file's beginning
};

class TraceReader
{
public:
    virtual ~TraceReader() = default;

    virtual TraceFormat format() const = 0;
    // The recording's start, nanoseconds since 1970 UTC, where the file has one; known once the first frame was read.
    virtual std::optional<std::int64_t> startUtc() const = 0;
    // Fills up to capacity (at least 1) frames in the file's order. Fewer than capacity, 0 included, only when nothing
    // more can be had without waiting (a pipe) or at the end: atEnd() tells which.
    virtual int read(RawFrame *frames, int capacity) = 0;
    virtual bool atEnd() const = 0;
    // Set once reading has met damage; everything before it has been delivered.
    virtual std::optional<TraceError> error() const = 0;
    // Parts that are no frames of a bus and were passed over (comments and statistics do not count).
    virtual std::uint64_t skipped() const = 0;
    // The place behind the last frame that was read.
    virtual TraceCheckpoint checkpoint() = 0;
    // Goes on at a checkpoint instead of the beginning; for openTraceAt().
    virtual void resume(const TraceCheckpoint &checkpoint) = 0;
};

// Opens what the device (open for reading, sequential or not; outlives the reader) holds: by content first, by the
// name's ending second. Null with *error set, in the current language, when it is no recording this program knows, or
// empty.
std::unique_ptr<TraceReader> openTrace(QIODevice *device, const QString &name, QString *error);
// The same when the format is known (pipes).
std::unique_ptr<TraceReader> openTrace(QIODevice *device, TraceFormat format, QString *error);
// Goes on where a reader of the same recording was. Null with *error set when the device cannot be put there.
std::unique_ptr<TraceReader> openTraceAt(QIODevice *device, TraceFormat format, const TraceCheckpoint &checkpoint,
                                         QString *error);
