#include "cli/traceoutput.h"

#include "cli/messages.h"

#include <cstdio>

bool openStandardOutput(QFile *file)
{
    constexpr int descriptor = 1;
    // The writers gather themselves, and a pipe gets everything at once.
    return file->open(descriptor, QIODevice::WriteOnly | QIODevice::Unbuffered);
}

bool TraceOutput::open(const QString &path, TraceFormat format)
{
    format_ = format;
    const bool standard = path == QLatin1String("-");
    name_ = standard ? QStringLiteral("standard output") : path;
    if (!standard)
        file_.setFileName(path);
    if (standard ? openStandardOutput(&file_)
                 : file_.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        return true;
    tell(name_ + QStringLiteral(": ") + file_.errorString());
    failed_ = true;
    return false;
}

bool TraceOutput::begin()
{
    if (!writer_)
        writer_ = createTrace(&file_, format_, options_);
    return !failed_;
}

bool TraceOutput::fail()
{
    if (!failed_)
        tell(name_ + QStringLiteral(" cannot be written: ") + writer_->errorText());
    failed_ = true;
    return false;
}

bool TraceOutput::write(const RawFrame *frames, int count)
{
    if (!begin())
        return false;
    if (!writer_->write(frames, count))
        return fail();
    frames_ += static_cast<std::uint64_t>(count);
    return true;
}

bool TraceOutput::flush()
{
    return begin() && (writer_->flush() || fail());
}

bool TraceOutput::finish()
{
    if (!begin() || !writer_->finish())
        return writer_ && !failed_ ? fail() : false;
    file_.close();
    const std::vector<TraceLoss> losses = writer_->losses();
    for (const TraceLoss &loss : losses)
        tell(name_ + QStringLiteral(": lost in this format: %1 × ").arg(loss.count) + loss.what);
    return losses.empty();
}
