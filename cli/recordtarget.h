// Where a recording of live frames goes: files, or the standard output, which gets every frame at once.
#pragma once

#include "cli/traceoutput.h"
#include "traces/recorder.h"

class RecordTarget
{
public:
    explicit RecordTarget(RecorderSettings settings) : settings_(std::move(settings)) {}

    // startUtc: what time 0 of the frames is, nanoseconds since 1970. false, and told, when nothing can be recorded.
    bool begin(std::int64_t startUtc);
    // false: nothing more will be recorded.
    bool write(const RawFrame *frames, int count);
    void markLost(std::uint64_t count);
    // Completes what is written and tells of it; false when anything was lost.
    bool end();
    std::uint64_t frames() const { return recorder_ ? recorder_->recordedFrames() : output_.frames(); }

private:
    void tellEvent(const RecorderEvent &event);

    RecorderSettings settings_;
    std::unique_ptr<Recorder> recorder_; // of files
    TraceOutput output_;
    bool trouble_ = false;
    bool lossy_ = false;
};
