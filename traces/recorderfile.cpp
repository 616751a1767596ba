#include "traces/recorderfile.h"

namespace
{

// Until a file has told how much its frames take: rather too many than too few.
constexpr std::uint64_t kFirstBytesPerFrame = 128;

} // namespace

bool RecorderFile::open(const QString &path, bool mayReplace, TraceFormat format, const TraceWriterOptions &options)
{
    file_.setFileName(path);
    frames_ = 0;
    safeFrames_ = 0;
    // The header of some formats is completed at the end, and their writers gather themselves.
    const QIODevice::OpenMode mode =
        QIODevice::WriteOnly | QIODevice::Unbuffered | (mayReplace ? QIODevice::Truncate : QIODevice::NewOnly);
    if (!file_.open(mode)) {
        errorText_ = file_.errorString();
        return false;
    }
    writer_ = createTrace(&file_, format, options);
    if (!writer_) {
        errorText_ = text3("该格式无法写入", "該格式無法寫入", "the format cannot be written");
        file_.close();
    }
    return writer_ != nullptr;
}

bool RecorderFile::write(const RawFrame *frames, int count)
{
    if (!writer_->write(frames, count)) {
        errorText_ = writer_->errorText();
        return false;
    }
    frames_ += static_cast<std::uint64_t>(count);
    return true;
}

bool RecorderFile::flush()
{
    if (!writer_->flush()) {
        errorText_ = writer_->errorText();
        return false;
    }
    safeFrames_ = frames_;
    return true;
}

bool RecorderFile::finish()
{
    const bool complete = flush() && writer_->finish();
    if (!complete)
        errorText_ = writer_->errorText();
    losses_ = writer_->losses();
    frames_ = safeFrames_;
    abandon();
    return complete;
}

void RecorderFile::abandon()
{
    writer_.reset();
    file_.close();
}

std::uint64_t RecorderFile::bytes() const
{
    const auto written = static_cast<std::uint64_t>(file_.pos());
    const std::uint64_t perFrame = safeFrames_ > 0 ? written / safeFrames_ : kFirstBytesPerFrame;
    return written + (frames_ - safeFrames_) * perFrame;
}
