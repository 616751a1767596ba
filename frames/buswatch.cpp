#include "frames/buswatch.h"

#include "device/devicelayer.h"
#include "frames/adapterclock.h"
#include "frames/tap.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace
{

struct Kept {
    std::mutex lock;
    BusReport reports[kChannelCount]; // without events
};

Kept &kept()
{
    static Kept theKept;
    return theKept;
}

void keep(unsigned channel, BusReport report)
{
    report.events.clear();
    const std::lock_guard<std::mutex> guard(kept().lock);
    kept().reports[channel != 0 ? 1 : 0] = std::move(report);
}

} // namespace

BusReport lastBusReport(unsigned channel)
{
    const std::lock_guard<std::mutex> guard(kept().lock);
    return kept().reports[channel != 0 ? 1 : 0];
}

RawFrame toRawFrame(const BusEvent &event, unsigned channel)
{
    RawFrame frame;
    frame.time = nanoseconds(event.timeStamp);
    frame.id = event.classes;
    frame.channel = static_cast<std::uint16_t>(channel + 1);
    frame.error = true;
    frame.length = kBusEventBytes;
    std::copy_n(event.data, kBusEventBytes, frame.data);
    return frame;
}

BusWatch::BusWatch(unsigned channel, LogSink sink) : channel_(channel), log_(channel, std::move(sink))
{
    clock_.start();
}

void BusWatch::begin()
{
    passes_ = 0;
    lost_ = 0;
    ask();
}

void BusWatch::pass()
{
    if (++passes_ < kPassesBetween)
        return;
    passes_ = 0;
    ask();
}

void BusWatch::end()
{
    ask();
    log_.end();
    keep(channel_, {});
}

void BusWatch::ask()
{
    BusReport report = takeBusEvents(channel_);
    if (!report.events.empty() && tapHasReaders()) {
        frames_.clear();
        for (const BusEvent &event : report.events)
            frames_.push_back(toRawFrame(event, channel_));
        publishToTap(frames_.data(), frames_.size());
    }
    lost_ += report.lost;
    log_.add(report, clock_.elapsed());
    keep(channel_, std::move(report));
}
