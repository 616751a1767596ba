// What every format of recordings must do: shared by the contract suite, and the one table of what each must lose.
#pragma once

#include "traces/losses.h"

#include <QByteArray>
#include <QIODevice>

#include <vector>

struct TraceLimits {
    TraceFormat format;
    std::int64_t resolution; // of times, nanoseconds
    bool dated;              // holds the recording's start
    bool text;               // a line per frame, on the device after flush()
    std::vector<Loss> lost;
};

// Every format that is registered and can be written must have its row here.
const std::vector<TraceLimits> &traceLimits();
const TraceLimits &limitsOf(TraceFormat format);

// Frames of every kind, in a fixed order: 0 to 64 bytes, both identifier kinds, flags, directions, channels 1 to 3, a
// time that goes back.
std::vector<RawFrame> everyKindOfFrame();
// What a format makes of frames by its row; the losses that it must tell, by their texts, in the order of the kinds.
std::vector<RawFrame> heldBy(const TraceLimits &limits, const std::vector<RawFrame> &frames,
                             std::vector<TraceLoss> *losses = nullptr);

struct WrittenTrace {
    QByteArray bytes;
    std::vector<TraceLoss> losses;
    std::vector<int> sizes; // of the file before the first and after each frame, where they were flushed one by one
};
WrittenTrace writeTrace(TraceFormat format, const std::vector<RawFrame> &frames, const TraceWriterOptions &options = {},
                        bool flushEach = false);

struct ReadTrace {
    bool opened = false;
    QString openError;
    std::vector<RawFrame> frames;
    std::optional<std::int64_t> start;
    std::optional<TraceError> error;
    std::uint64_t skipped = 0;
    TraceFormat format = TraceFormat::Candump;
};
// Found by content, or read as the given format.
ReadTrace readTrace(const QByteArray &bytes, std::optional<TraceFormat> format = {});
ReadTrace readTrace(QIODevice *device, std::optional<TraceFormat> format = {}, const QString &name = {});

// Empty when both hold the same frames and their times, counted from the first, differ by less than the tolerance; else
// what differs first.
QString difference(const std::vector<RawFrame> &actual, const std::vector<RawFrame> &expected, std::int64_t tolerance);
// A frame in a line, as the tables of the tests have it: "1 rx 123 8 0011..", "2 tx 1F334455x r 4", "1 rx error".
QString frameText(const RawFrame &frame);

// What was read, a frame a line, and the place of an error at the end.
QString textsOf(const ReadTrace &read);
// "error frames 3, remote FD frames 1"
QString lossTexts(const std::vector<TraceLoss> &losses);
