#include "traces/recordingexport.h"

#include "traces/tracereader.h"

#include <QSaveFile>

#include <algorithm>
#include <utility>

namespace
{
} // namespace

RecordingExport::RecordingExport(const RecordingIndex &index, const RecordingFilter *filter, std::uint64_t first,
                                 std::uint64_t end, QString fileName, TraceFormat format)
    : index_(index),
      filter_(filter),
      first_(filter ? filter->matchFrom(first) : first),
      end_(filter ? filter->matchFrom(end) : std::min(end, index.rows())),
      fileName_(std::move(fileName)),
      format_(format)
{
    state_.total = end_ - std::min(first_, end_);
    thread_ = std::thread(&RecordingExport::run, this);
}

RecordingExport::~RecordingExport()
{
    cancel();
    thread_.join();
}

RecordingExport::State RecordingExport::state() const
{
    const std::lock_guard<std::mutex> lock(guard_);
    return state_;
}

void RecordingExport::run()
{
    QSaveFile file(fileName_);
    QString error;
    if (file.open(QIODevice::WriteOnly))
        error = writeRows(&file);
    else
        error = file.errorString();
    const bool cancelled = stop_;
    if (!error.isEmpty() || cancelled)
        file.cancelWriting();
    else if (!file.commit())
        error = file.errorString();
    const std::lock_guard<std::mutex> lock(guard_);
    state_.error = error;
    state_.cancelled = cancelled;
    state_.finished = true;
}

// Answers why it could not go on; empty when all was written or it was cancelled.
QString RecordingExport::writeRows(QIODevice *device)
{
    TraceWriterOptions options;
    options.startUtc = index_.state().startUtc;
    options.nanoseconds = true;
    const std::unique_ptr<TraceWriter> writer = createTrace(device, format_, options);
    if (!writer)
        return text3("该格式无法写入", "該格式無法寫入", "the format cannot be written");
    RecordingRows source(index_);
    RawFrame frames[kFramesAtATime];
    for (std::uint64_t at = first_; at < end_ && !stop_;) {
        int count = static_cast<int>(std::min<std::uint64_t>(kFramesAtATime, end_ - at));
        int got = 0;
        if (!filter_)
            got = source.read(at, count, frames);
        else
            while (got < count &&
                   source.read(filter_->rowOf(at + static_cast<std::uint64_t>(got)), 1, &frames[got]) == 1)
                ++got;
        if (!writer->write(frames, got))
            return writer->errorText();
        if (got < count)
            return text3("记录已无法读取", "記錄已無法讀取", "the recording can no longer be read");
        at += static_cast<std::uint64_t>(got);
        const std::lock_guard<std::mutex> lock(guard_);
        state_.written = at - first_;
    }
    const bool whole = writer->finish();
    const std::lock_guard<std::mutex> lock(guard_);
    state_.losses = writer->losses();
    return whole ? QString() : writer->errorText();
}
