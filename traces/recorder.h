// Writes live frames to files: one or many in a row, all the time or between triggers. It has no thread of its own; one
// thread at a time feeds it.
#pragma once

#include "traces/recorderfile.h"
#include "traces/recordertrigger.h"

#include <QStringList>

#include <functional>

struct RecorderSettings {
    QString path; // of the file; in a row of files a number goes before the ending: drive_0001.blf
    TraceFormat format = TraceFormat::Blf;
    TraceWriterOptions options;
    std::uint64_t rotateBytes = 0;      // a file that has so many is followed by the next; 0: files may grow
    int rotateSeconds = 0;              // by the frames' own time; 0: however long
    int keepFiles = 0;                  // of the row, the newest, earlier recordings' files included; 0: all
    std::uint64_t mostFrames = 0;       // the recording is done with so many; 0: however many
    std::vector<RecorderTrigger> start; // any of them; none: at once. Every start begins a file
    std::vector<RecorderTrigger> stop;  // any of them; the frame that stops is still recorded
    int preTriggerFrames = 0;           // kept from before a start, see PreTriggerBuffer
    int preTriggerMilliseconds = 0;

    // They get numbers then, behind the highest that is there.
    bool hasManyFiles() const { return rotateBytes > 0 || rotateSeconds > 0 || !start.empty(); }
};

struct RecorderEvent {
    enum class Kind : std::uint8_t {
        FileBegun,
        FileEnded, // with the frames it holds
        Trouble,   // nothing can be written now; told once until it is over. lost: what a vanished file held
        Recovered, // it is over; lost: all frames since it began, those of Trouble included
    };
    Kind kind;
    QString path;
    std::uint64_t frames = 0;
    std::uint64_t lost = 0;
    QString reason;                     // of trouble, in the current language or the system's words
    std::vector<TraceLoss> losses = {}; // of an ended file: what its format could not hold
};

class Recorder
{
public:
    using Listener = std::function<void(const RecorderEvent &)>;
    // Milliseconds that never go back.
    using Clock = std::function<std::int64_t()>;

    // The listener is called in the feeding thread, from within begin(), write(), tick() and end().
    Recorder(RecorderSettings settings, Listener listener, Clock clock = {});
    // Ends the recording.
    ~Recorder();
    Recorder(const Recorder &) = delete;
    Recorder &operator=(const Recorder &) = delete;

    // Opens the first file unless a trigger has to come first.
    void begin();
    void write(const RawFrame *frames, int count);
    // So many frames were lost before they reached the recorder.
    void markLost(std::uint64_t count);
    // To be called at least once a second when no frames come: brings what was written to the disk, tries again when
    // there was trouble.
    void tick();
    // Completes the present file. Nothing is recorded any more.
    void end();

    bool recording() const { return state_ == State::Recording; }
    // Nothing will be recorded any more: end() was called, the last trigger was met, or there are as many as wanted.
    bool done() const { return state_ == State::Done; }
    std::uint64_t recordedFrames() const { return ended_ + (file_.isOpen() ? file_.frames() : 0); }
    // That should have been recorded and could not.
    std::uint64_t lostFrames() const { return lost_; }

private:
    enum class State : std::uint8_t { Idle, Waiting, Recording, Done };

    void startRecording();
    void stopRecording();
    void record(const RawFrame *frames, int count);
    void recordPart(const RawFrame *frames, int count);
    void recordSlice(const RawFrame *frames, int count);
    bool openFile();
    void endFile();
    void lose(std::uint64_t count);
    void beginTrouble(const QString &path, const QString &reason, std::uint64_t lost);
    void tryAgain();
    void flushWhenDue();
    void keepNewest();

    const RecorderSettings settings_;
    const Listener listener_;
    const Clock clock_;
    PreTriggerBuffer before_;
    State state_ = State::Idle;
    RecorderFile file_;
    std::optional<std::int64_t> fileTime_; // of the file's first frame
    QStringList row_;                      // the files of the row, the oldest first
    int number_ = 0;                       // of the newest file
    std::uint64_t ended_ = 0;              // frames in files that are complete
    std::uint64_t lost_ = 0;
    std::uint64_t troubleLost_ = 0; // since the trouble began
    bool trouble_ = false;
    std::int64_t lastFlush_ = 0; // or attempt
};
