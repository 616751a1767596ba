#include "cli/traceinput.h"

#include "cli/messages.h"
#include "cli/platform.h"
#include "traces/tracewriter.h"

#include <algorithm>
#include <vector>

namespace
{

// After an interrupt: how long a pipe's writer may say nothing, and how long it may go on at most.
constexpr int kSilenceMs = 1000;
constexpr int kLongestRestMs = 10000;

} // namespace

bool TraceInput::open(const QString &path, std::optional<TraceFormat> format)
{
    QString trouble;
    if (open(path, format, &trouble))
        return true;
    tell(trouble);
    return false;
}

bool TraceInput::open(const QString &path, std::optional<TraceFormat> format, QString *trouble)
{
    told_ = 0;
    if (path == QLatin1String("-")) {
        name_ = QStringLiteral("standard input");
        device_ = &pipe_;
    } else {
        name_ = path;
        device_ = &file_;
        file_.close();
        file_.setFileName(path);
        if (!file_.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            *trouble = name_ + QStringLiteral(": ") + file_.errorString();
            return false;
        }
        if (file_.isSequential()) {
            device_ = &pipe_;
            pipe_.setDescriptor(file_.handle());
        }
    }
    if (isLive()) {
        allowSecondInterrupt();
        pipe_.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    // A log without frames has nothing in it at all.
    if (!format && !isLive() && file_.size() == 0 && traceFormatOfName(path) == TraceFormat::Candump)
        format = TraceFormat::Candump;
    QString error;
    if (format) {
        reader_ = openTrace(device_, *format, &error);
    } else {
        // The beginning, by which the format is known, may come late.
        while (isLive() && goesOn() && pipe_.peek(1).isEmpty() && !pipe_.ended()) {
        }
        reader_ = openTrace(device_, path, &error);
    }
    if (reader_)
        return true;
    *trouble = name_ + QStringLiteral(": ") + (pipe_.failed() ? QStringLiteral("cannot be read") : error);
    return false;
}

bool TraceInput::readThrough(const std::function<bool(RawFrame *frames, int count)> &take,
                             const std::function<bool()> &pause)
{
    std::vector<RawFrame> frames(kFramesAtATime);
    while (goesOn()) {
        const int count = reader_->read(frames.data(), kFramesAtATime);
        if (count > 0)
            sinceFrames_.start();
        if (reader_->format() == TraceFormat::Csv)
            rebase(frames.data(), count);
        if (!take(frames.data(), count))
            return false;
        if (count == kFramesAtATime)
            continue;
        if (atEnd())
            return true;
        if (isLive() && !pause())
            return false;
    }
    return isLive() && !interruptedTwice() && sinceFrames_.hasExpired(kSilenceMs);
}

void TraceInput::rebase(RawFrame *frames, int count)
{
    if (!base_ && count > 0)
        base_ = frames[0].time;
    for (int i = 0; i < count; ++i)
        frames[i].time -= base();
}

bool TraceInput::goesOn()
{
    if (!interrupted())
        return true;
    if (!isLive() || interruptedTwice())
        return false;
    if (!sinceInterrupt_.isValid()) {
        sinceInterrupt_.start();
        sinceFrames_.start();
    }
    return !sinceFrames_.hasExpired(kSilenceMs) && !sinceInterrupt_.hasExpired(kLongestRestMs);
}

std::uint64_t TraceInput::newBytes()
{
    const qint64 before = told_;
    if (device_ == &file_)
        told_ = file_.pos();
    return static_cast<std::uint64_t>(std::max<qint64>(told_ - before, 0));
}

bool TraceInput::tellTrouble() const
{
    const std::uint64_t skipped = reader_->skipped();
    if (skipped > 0)
        tell(name_ + QStringLiteral(": %1 parts are no frames and were passed over").arg(skipped));
    if (const auto error = reader_->error())
        tell(name_ + QStringLiteral(", ") + error->place.toString() + QStringLiteral(": ") + error->reason.toString());
    if (pipe_.failed())
        tell(name_ + QStringLiteral(" cannot be read on"));
    return skipped == 0 && !reader_->error() && !pipe_.failed();
}
