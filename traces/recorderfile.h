// One file of a recorder: what has been written, and what of it is safe on the disk.
#pragma once

#include "traces/tracewriter.h"

#include <QFile>

class RecorderFile
{
public:
    // A new file; an existing one of this name is replaced only when mayReplace is set.
    bool open(const QString &path, bool mayReplace, TraceFormat format, const TraceWriterOptions &options);

    // false: none of the frames was taken, errorText() says why; it may be tried again.
    bool write(const RawFrame *frames, int count);
    // Brings everything to the disk. false: errorText() says why; what was taken is kept and may be tried again.
    bool flush();
    // Completes and closes; false when not everything could be written, frames() then being what is safe.
    bool finish();
    // Closes a file that nobody will find any more.
    void abandon();

    bool isOpen() const { return writer_ != nullptr; }
    // Somebody has removed the file, or the folder it was in.
    bool vanished() const { return !QFile::exists(file_.fileName()); }
    QString path() const { return file_.fileName(); }
    std::uint64_t frames() const { return frames_; }
    std::uint64_t safeFrames() const { return safeFrames_; }
    // What the file will have at least, what is not written yet estimated.
    std::uint64_t bytes() const;
    QString errorText() const { return errorText_; }
    // What the format of a finished file could not hold.
    const std::vector<TraceLoss> &losses() const { return losses_; }

private:
    QFile file_;
    std::unique_ptr<TraceWriter> writer_;
    std::uint64_t frames_ = 0;
    std::uint64_t safeFrames_ = 0;
    QString errorText_;
    std::vector<TraceLoss> losses_;
};
