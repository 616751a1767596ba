#include "device/driver/simulated/virtualbus.h"

#include "device/driver/framelength.h"
#include "device/driver/timeunits.h"

#include <algorithm>
#include <iterator>

namespace
{

// Without bus time the senders wait while a receiver has so many frames to fetch.
constexpr std::size_t kMostBehind = 8192;
constexpr BusTime kBehindPause = kNanosecondsPerMillisecond;

} // namespace

VirtualBus::VirtualBus(const SimulatorOptions &options)
    : channels_{{options.transmitCapacity, options.receiveCapacity},
                {options.transmitCapacity, options.receiveCapacity}},
      busTime_(options.busTime),
      errorOneIn_(options.errorOneIn),
      vehicleDelay_(options.vehicleDelayMs * kNanosecondsPerMillisecond)
{
}

bool VirtualBus::anyStarted() const
{
    return std::any_of(std::begin(channels_), std::end(channels_), [](const BusChannel &c) { return c.started; });
}

void VirtualBus::settleVehicle(BusTime now)
{
    vehiclePresent_ = vehiclePresent_ && anyStarted();
    const bool heard =
        vehiclePresent_ && std::any_of(std::begin(channels_), std::end(channels_), [this](const BusChannel &channel) {
            return channel.started && understands(channel.settings, vehicleSettings_, BusFrame());
        });
    if (heard && !vehicleHeard_)
        traffic_->restart(now + vehicleDelay_, vehicleSettings_);
    vehicleHeard_ = heard;
}

void VirtualBus::start(unsigned index, BusTime now)
{
    if (channels_[index].started)
        return;
    if (traffic_ && !anyStarted()) {
        vehiclePresent_ = true;
        vehicleSettings_ = channels_[index].settings;
    }
    channels_[index].started = true;
    settleVehicle(now);
}

void VirtualBus::initialise(unsigned index, bool listenOnly, BusTime now)
{
    channels_[index].initialise(listenOnly);
    settleVehicle(now);
}

void VirtualBus::setSettings(unsigned index, const BusSettings &settings, BusTime now)
{
    channels_[index].settings = settings;
    settleVehicle(now);
}

void VirtualBus::reset()
{
    for (BusChannel &channel : channels_) {
        channel.initialise(false);
        channel.settings = defaultBusSettings();
    }
    settleVehicle(0);
    free_ = 0;
    chance_.seed();
    drawn_ = fails_ = false;
}

bool VirtualBus::accepts(unsigned index, const BusFrame &frame) const
{
    const BusChannel &sender = channels_[index];
    if (!sender.acknowledges())
        return false;
    if (vehiclePresent_ && understands(vehicleSettings_, sender.settings, frame))
        return true;
    return std::any_of(std::begin(channels_), std::end(channels_), [&](const BusChannel &other) {
        return &other != &sender && other.acknowledges() && understands(other.settings, sender.settings, frame);
    });
}

// What a started channel makes of a frame that it does not understand. (On a real bus its error flag would destroy the
// frame for the others too.)
void VirtualBus::misunderstood(const BusSettings &sender, const BusFrame &frame, BusTime end)
{
    BusFrame classic;
    for (BusChannel &channel : channels_) {
        if (!channel.started || channel.offBus() || understands(channel.settings, sender, frame))
            continue;
        const bool sameArbitration = understands(channel.settings, sender, classic);
        channel.receiveFailed(sameArbitration ? buserror::kForm : buserror::kStuff, end);
    }
}

void VirtualBus::tryInVain(unsigned index, const BusFrame &frame, BusTime now)
{
    BusChannel &sender = channels_[index];
    sender.settle(now);
    if (!sender.acknowledges() || sender.offBus() || now < sender.attemptEnds)
        return;
    sender.attemptEnds = now + frameDuration(frame, sender.settings) +
                         wireTime({kErrorFrameBits, 0}, sender.settings.arbitrationRate, sender.settings.dataRate);
    misunderstood(sender.settings, frame, now);
    sender.notAcknowledged(now);
}

bool VirtualBus::enqueue(unsigned index, const BusFrame &frame, TransmitType type, BusTime now)
{
    Transmission *transmission = channels_[index].transmissions.push();
    if (!transmission)
        return false;
    *transmission = {frame, type, now};
    return true;
}

// A frame in the queue that has lost those who acknowledged it waits for them; a single-shot one is given up.
void VirtualBus::dropHopeless(unsigned index)
{
    auto &queue = channels_[index].transmissions;
    while (!queue.empty() && queue.front().single() && !accepts(index, queue.front().frame))
        queue.pop();
}

BusTime VirtualBus::readyTime(unsigned node) const
{
    if (node == kVehicle)
        return vehicleHeard_ ? traffic_->due() : kNever;
    const auto &queue = channels_[node].transmissions;
    if (queue.empty() || !accepts(node, queue.front().frame))
        return kNever;
    return channels_[node].offBus() ? std::max(queue.front().ready, channels_[node].offUntil) : queue.front().ready;
}

const BusFrame &VirtualBus::nextFrame(unsigned node) const
{
    return node == kVehicle ? traffic_->frame() : channels_[node].transmissions.front().frame;
}

const BusSettings &VirtualBus::settingsOf(unsigned node) const
{
    return node == kVehicle ? vehicleSettings_ : channels_[node].settings;
}

// Whoever is ready when the bus gets free competes; the lowest key wins. Nodes with equal ones take turns: a real bus
// could not tell them apart, and none of them may be kept from sending for good.
VirtualBus::Contest VirtualBus::arbitrate() const
{
    BusTime ready[kVehicle + 1];
    BusTime earliest = kNever;
    for (unsigned node = 0; node <= kVehicle; ++node) {
        ready[node] = readyTime(node);
        earliest = std::min(earliest, ready[node]);
    }
    Contest contest{kNobody, std::max(free_, earliest)};
    if (earliest == kNever)
        return contest;
    std::uint32_t lowestKey = 0;
    for (unsigned node = 0; node <= kVehicle; ++node) {
        if (ready[node] > contest.start)
            continue;
        const std::uint32_t key = arbitrationKey(nextFrame(node));
        if (contest.winner == kNobody || key < lowestKey || (key == lowestKey && contest.winner == lastSender_)) {
            contest.winner = node;
            lowestKey = key;
        }
    }
    return contest;
}

bool VirtualBus::receiversAreBehind() const
{
    return std::any_of(std::begin(channels_), std::end(channels_), [](const BusChannel &channel) {
        return channel.classic.size() >= kMostBehind || channel.classic.full() || channel.fd.size() >= kMostBehind ||
               channel.fd.full();
    });
}

BusFrame VirtualBus::frameOnWire(unsigned node) const
{
    BusFrame frame = nextFrame(node);
    frame.errorStateIndicator = frame.fd && node != kVehicle && channels_[node].errorPassive();
    return frame;
}

void VirtualBus::complete(unsigned node, const BusFrame &frame, BusTime end)
{
    const BusSettings sender = settingsOf(node);
    for (unsigned index = 0; index < kChannelCount; ++index) {
        BusChannel &channel = channels_[index];
        if (index != node && channel.started && !channel.offBus() && understands(channel.settings, sender, frame))
            channel.receiveSucceeded(end);
        const bool addressed =
            index == node ? channel.transmissions.front().selfReceived() : channel.started && !channel.offBus();
        if (addressed && understands(channel.settings, sender, frame))
            channel.receive(frame, end);
    }
    misunderstood(sender, frame, end);
    if (node == kVehicle) {
        ++vehicleCounts_[frame.id];
        traffic_->sent(end);
    } else {
        channels_[node].sendSucceeded(end);
        channels_[node].transmissions.pop();
    }
    lastSender_ = node;
}

// An error frame ends it. The sender tries again, as the bus lets it.
void VirtualBus::destroy(unsigned node, const BusFrame &frame, BusTime end)
{
    const BusSettings sender = settingsOf(node);
    for (unsigned index = 0; index < kChannelCount; ++index)
        if (index != node && channels_[index].started && !channels_[index].offBus() &&
            understands(channels_[index].settings, sender, frame))
            channels_[index].receiveFailed(buserror::kStuff, end);
    misunderstood(sender, frame, end);
    if (node == kVehicle)
        return;
    channels_[node].sendFailed(end);
    if (channels_[node].transmissions.front().single())
        channels_[node].transmissions.pop();
}

// Whether the frame on the wire fails is drawn once, however often the bus is carried on until its end.
void VirtualBus::drawFate()
{
    if (errorOneIn_ == 0 || drawn_)
        return;
    drawn_ = true;
    fails_ = std::uniform_int_distribution<std::uint32_t>(1, errorOneIn_)(chance_) == 1;
    failsAt_ = std::uniform_real_distribution<double>(0, 1)(chance_);
}

// How long the frame of `node` takes, or what is left of it and the error frame that ends it.
BusTime VirtualBus::timeOnWire(unsigned node) const
{
    const BusSettings &settings = settingsOf(node);
    const BusTime whole = frameDuration(frameOnWire(node), settings);
    if (!fails_)
        return whole;
    return static_cast<BusTime>(failsAt_ * static_cast<double>(whole)) +
           wireTime({kErrorFrameBits, 0}, settings.arbitrationRate, settings.dataRate);
}

BusTime VirtualBus::advance(BusTime now, std::size_t budget)
{
    for (; budget > 0; --budget) {
        if (!busTime_ && receiversAreBehind())
            return now + kBehindPause;
        for (unsigned index = 0; index < kChannelCount; ++index)
            dropHopeless(index);
        const Contest contest = arbitrate();
        if (contest.winner == kNobody)
            return kNever;
        if (contest.start > now)
            return contest.start;
        drawFate();
        const BusTime end = busTime_ ? contest.start + timeOnWire(contest.winner) : now;
        if (end > now)
            return end;
        for (BusChannel &channel : channels_)
            channel.settle(contest.start);
        const BusFrame frame = frameOnWire(contest.winner);
        if (fails_)
            destroy(contest.winner, frame, end);
        else
            complete(contest.winner, frame, end);
        drawn_ = fails_ = false;
        carried_ += end - std::min(contest.start, end);
        free_ = end;
    }
    return now;
}
