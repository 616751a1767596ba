// One recording to write, a file or the standard output.
#pragma once

#include "traces/tracewriter.h"

#include <QFile>

class TraceOutput
{
public:
    // "-": the standard output. false, and told, when it cannot be opened. A file that exists is replaced.
    bool open(const QString &path, TraceFormat format);
    // What write() and finish() are to begin with, once the recording's start is known.
    void setOptions(const TraceWriterOptions &options) { options_ = options; }

    // false, and told once, when the output refuses: nothing more can be written.
    bool write(const RawFrame *frames, int count);
    bool flush();
    // Completes the recording and tells what its format could not hold; false when anything was lost.
    bool finish();

    std::uint64_t frames() const { return frames_; }
    QString name() const { return name_; }

private:
    bool begin();
    bool fail();

    QString name_;
    QFile file_;
    TraceFormat format_ = TraceFormat::Candump;
    TraceWriterOptions options_;
    std::unique_ptr<TraceWriter> writer_;
    std::uint64_t frames_ = 0;
    bool failed_ = false;
};

// Opens the standard output as a file; for texts.
bool openStandardOutput(QFile *file);
