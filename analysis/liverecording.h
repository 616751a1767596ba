// A recorder that is fed by the tap, with a thread of its own; what it has to tell waits for the window.
#pragma once

#include "frames/livesource.h"
#include "traces/framefilter.h"
#include "traces/recorder.h"

#include <mutex>

class LiveRecording : public FrameConsumer
{
public:
    // Begins at once; frames that the filter does not let through are not recorded and trigger nothing. The settings'
    // start is made the moment from which the frames' times count.
    LiveRecording(const RecorderSettings &settings, FrameFilter filter);
    // Completes the file.
    ~LiveRecording() override;

    // GUI thread.
    std::vector<RecorderEvent> takeEvents(); // since the last call
    bool isRecording() const;                // false while a trigger is waited for
    bool isDone() const;                     // the last trigger was met
    std::uint64_t recordedFrames() const;
    std::uint64_t lostFrames() const; // found no room on their way or could not be written
    // Ends; takeEvents() then has the rest.
    void end();

    // The source's thread.
    void consume(const RawFrame *frames, std::size_t count) override;
    void framesLost(std::uint64_t count) override;
    void intervalEnded() override;

private:
    mutable std::mutex lock_; // guards what follows, the source apart
    const FrameFilter filter_;
    std::int64_t origin_ = 0;      // of the recording's times, on the clock of deviceOpenedAt()
    std::vector<RawFrame> chosen_; // of consume()
    std::vector<RecorderEvent> events_;
    std::uint64_t lost_ = 0;
    Recorder recorder_;
    std::unique_ptr<LiveSource> source_;
};
