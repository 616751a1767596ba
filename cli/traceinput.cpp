#include "cli/traceinput.h"

#include "cli/messages.h"
#include "cli/platform.h"

#include <algorithm>
#include <vector>

bool TraceInput::open(const QString &path, std::optional<TraceFormat> format)
{
    told_ = 0;
    if (path == QLatin1String("-")) {
        name_ = QStringLiteral("standard input");
        device_ = &standardInput_;
        standardInput_.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    } else {
        name_ = path;
        device_ = &file_;
        file_.close();
        file_.setFileName(path);
        if (!file_.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            tell(name_ + QStringLiteral(": ") + file_.errorString());
            return false;
        }
    }
    QString error;
    if (format) {
        reader_ = openTrace(device_, *format, &error);
    } else {
        // The beginning, by which the format is known, may come late.
        while (isLive() && !interrupted() && standardInput_.peek(1).isEmpty() && !standardInput_.ended()) {
        }
        reader_ = openTrace(device_, path, &error);
    }
    if (reader_)
        return true;
    tell(name_ + QStringLiteral(": ") + error);
    return false;
}

bool TraceInput::readThrough(const std::function<bool(RawFrame *frames, int count)> &take,
                             const std::function<bool()> &pause)
{
    std::vector<RawFrame> frames(kFramesAtATime);
    while (!interrupted()) {
        const int count = reader_->read(frames.data(), kFramesAtATime);
        if (!take(frames.data(), count))
            return false;
        if (count == kFramesAtATime)
            continue;
        if (atEnd())
            return true;
        if (isLive() && !pause())
            return false;
    }
    return false;
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
    if (standardInput_.failed())
        tell(name_ + QStringLiteral(" cannot be read on"));
    return skipped == 0 && !reader_->error() && !standardInput_.failed();
}
