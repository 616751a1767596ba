// Writes rows of a recording to a file of any format, in a thread of its own.
#pragma once

#include "traces/recordingfilter.h"
#include "traces/tracewriter.h"

class RecordingExport
{
public:
    struct State {
        std::uint64_t written = 0; // frames
        std::uint64_t total = 0;   // that shall be written
        bool finished = false;
        bool cancelled = false;
        QString error; // empty while all is well; in the current language, or the system's words
        std::vector<TraceLoss> losses;
    };

    // Rows first up to, without, end; of these the ones that filter, when there is one, has found. Index and filter
    // outlive the export. The file comes into being, or takes an older one's place, only when all has been written.
    RecordingExport(const RecordingIndex &index, const RecordingFilter *filter, std::uint64_t first, std::uint64_t end,
                    QString fileName, TraceFormat format);
    ~RecordingExport();
    RecordingExport(const RecordingExport &) = delete;
    RecordingExport &operator=(const RecordingExport &) = delete;

    void cancel() { stop_ = true; }
    State state() const; // any thread

private:
    void run();
    QString writeRows(QIODevice *device);

    const RecordingIndex &index_;
    const RecordingFilter *const filter_;
    const std::uint64_t first_; // rows; with a filter: matches
    const std::uint64_t end_;
    const QString fileName_;
    const TraceFormat format_;
    mutable std::mutex guard_;
    State state_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};
