#include "cli/livesender.h"

#include "cli/arguments.h"
#include "cli/inputfiles.h"
#include "cli/messages.h"
#include "cli/platform.h"
#include "cli/recordoptions.h"

#include <algorithm>
#include <thread>

namespace
{

constexpr std::chrono::milliseconds kPollEvery{10};
constexpr std::chrono::milliseconds kLastFrames{200}; // in which they reach the bus, after an interrupt, too
constexpr double kDefaultLinger = 0.2;                // seconds
constexpr double kLongestLinger = 86400;

} // namespace

// The tap's frames on their way into a recording, in a thread of their own.
class LiveSender::Recording : public FrameConsumer
{
public:
    explicit Recording(const RecorderSettings &settings) : target_(settings) {}

    bool begin(std::int64_t startUtc)
    {
        if (!target_.begin(startUtc))
            return false;
        source_ = std::make_unique<LiveSource>(*this);
        return true;
    }
    bool end()
    {
        source_.reset();
        return target_.end() && lost_ == 0;
    }
    void consume(const RawFrame *frames, std::size_t count) override { target_.write(frames, static_cast<int>(count)); }
    void intervalEnded() override { target_.write(nullptr, 0); }
    void framesLost(std::uint64_t count) override
    {
        lost_ += count;
        target_.markLost(count);
        tell(QStringLiteral("%1 frames came faster than they could be recorded and are lost").arg(count));
    }

private:
    RecordTarget target_;
    std::unique_ptr<LiveSource> source_;
    std::uint64_t lost_ = 0;
};

LiveSender::LiveSender() = default;

LiveSender::~LiveSender() = default;

void LiveSender::addOptions(Arguments &arguments)
{
    arguments.add("record", "Record meanwhile what the channels receive and send.", "OUTPUT");
    arguments.add("record-format", "The format of that; without it the output's name tells.", "FORMAT");
    arguments.add("linger", "Keep the channels open so long after the last frame; 0.2 when not given.", "SECONDS");
}

void LiveSender::readOptions(Arguments &arguments, const QStringList &read)
{
    const double linger = arguments.number("linger", 0, kLongestLinger).value_or(kDefaultLinger);
    linger_ = std::chrono::milliseconds(static_cast<std::int64_t>(linger * 1e3));
    if (!arguments.isSet("record"))
        return;
    recordSettings_ = readRecordSettings(arguments, arguments.text("record"), "record-format");
    refuseInput(arguments, arguments.text("record"), read);
}

bool LiveSender::open(const AdapterSetup &setup)
{
    if (!adapter_.open(setup))
        return false;
    if (!recordSettings_)
        return true;
    recording_ = std::make_unique<Recording>(*recordSettings_);
    if (recording_->begin(adapter_.startUtc()))
        return true;
    recording_.reset();
    return false;
}

bool LiveSender::goesOn()
{
    const auto now = Clock::now();
    if (now >= nextPoll_) {
        nextPoll_ = now + kPollEvery;
        adapter_.poll();
    }
    return !interrupted() && !adapter_.gone();
}

bool LiveSender::waitUntil(Clock::time_point due)
{
    while (goesOn()) {
        if (Clock::now() >= due)
            return true;
        std::this_thread::sleep_until(std::min(due, nextPoll_));
    }
    return false;
}

void LiveSender::send(unsigned channel, const RawFrame &frame)
{
    counts_.count(sendRaw(channel, frame, TransmitType::Normal));
}

bool LiveSender::close()
{
    auto until = Clock::now() + linger_;
    bool hurried = false;
    while (Clock::now() < until && !adapter_.gone()) {
        adapter_.poll();
        if (interrupted() && !hurried) {
            hurried = true;
            until = std::min(until, Clock::now() + kLastFrames);
        }
        std::this_thread::sleep_until(std::min(until, Clock::now() + kPollEvery));
    }
    adapter_.close();
    const bool recorded = !recording_ || recording_->end();
    tell(QStringLiteral("%1 frames sent").arg(counts_.sent));
    if (counts_.refused > 0)
        tell(QStringLiteral("%1 frames were not taken (listen-only, nobody acknowledges, or the channel is not open)")
                 .arg(counts_.refused));
    if (counts_.unsendable > 0)
        tell(QStringLiteral("%1 frames cannot be sent: error frames, or of no valid length or identifier")
                 .arg(counts_.unsendable));
    return recorded && counts_.refused == 0 && counts_.unsendable == 0 && adapter_.lost() == 0 && !adapter_.gone();
}
