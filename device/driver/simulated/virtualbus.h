// The medium between the two channels of the simulated adapter and the vehicle. It knows no clock and no thread: its
// owner tells it how late it is, and it does everything that has happened on the wire until then.
#pragma once

#include "device/driver/simulated/buschannel.h"
#include "device/driver/simulated/simulatoroptions.h"
#include "device/driver/simulated/trafficsource.h"

#include "device/driver/driver.h"

#include <limits>
#include <map>
#include <memory>
#include <random>

constexpr BusTime kNever = std::numeric_limits<BusTime>::max();

// Frames sent so far by identifier word (with the extended and the remote bit).
using FrameCounts = std::map<std::uint32_t, std::uint64_t>;

class VirtualBus
{
public:
    explicit VirtualBus(const SimulatorOptions &options);

    // Who plays the vehicle; null for nobody. Only while no channel is started.
    void setTraffic(std::unique_ptr<TrafficSource> traffic) { traffic_ = std::move(traffic); }

    BusChannel &channel(unsigned index) { return channels_[index]; }
    void start(unsigned index, BusTime now);
    // Stops the channel and empties it. It may be started again.
    void initialise(unsigned index, bool listenOnly, BusTime now);
    void setSettings(unsigned index, const BusSettings &settings, BusTime now);
    // Both channels as they come out of the factory, the time at 0 again.
    void reset();

    // Whether anybody would acknowledge the frame on behalf of the channel, which may send at all.
    bool accepts(unsigned index, const BusFrame &frame) const;
    // A transmission that nobody acknowledges: tried once, unless the channel's last one is still on the wire. Those
    // who do not understand it find errors in it.
    void tryInVain(unsigned index, const BusFrame &frame, BusTime now);
    // false when the transmit queue has no room.
    bool enqueue(unsigned index, const BusFrame &frame, TransmitType type, BusTime now);

    // Carries the bus on to `now`, at most `budget` frames. Answers when there is something to do next: `now` when the
    // budget has ended it, kNever when nobody has anything to send.
    BusTime advance(BusTime now, std::size_t budget);

    const FrameCounts &vehicleCounts() const { return vehicleCounts_; }
    // How long it has carried frames, those that were destroyed and their error frames included; also across reset().
    BusTime carriedTime() const { return carried_; }

private:
    static constexpr unsigned kVehicle = kChannelCount; // the node after the channels
    static constexpr unsigned kNobody = kVehicle + 1;

    struct Contest {
        unsigned winner;
        BusTime start;
    };

    bool anyStarted() const;
    void settleVehicle(BusTime now);
    void dropHopeless(unsigned index);
    BusTime readyTime(unsigned node) const;
    const BusFrame &nextFrame(unsigned node) const;
    const BusSettings &settingsOf(unsigned node) const;
    Contest arbitrate() const;
    bool receiversAreBehind() const;
    BusFrame frameOnWire(unsigned node) const;
    void misunderstood(const BusSettings &sender, const BusFrame &frame, BusTime end);
    void drawFate();
    BusTime timeOnWire(unsigned node) const;
    void complete(unsigned node, const BusFrame &frame, BusTime end);
    void destroy(unsigned node, const BusFrame &frame, BusTime end);

    BusChannel channels_[kChannelCount];
    std::unique_ptr<TrafficSource> traffic_;
    const bool busTime_;
    const std::uint32_t errorOneIn_;
    const BusTime vehicleDelay_;
    bool vehiclePresent_ = false; // from the first channel's start to the last one's end
    bool vehicleHeard_ = false;   // it speaks only while a channel understands it
    BusSettings vehicleSettings_ = defaultBusSettings();
    FrameCounts vehicleCounts_;
    BusTime free_ = 0; // the end of the last frame
    BusTime carried_ = 0;
    unsigned lastSender_ = kNobody; // node
    std::minstd_rand chance_;       // the same at every run
    bool drawn_ = false;            // whether the frame on the wire is to fail, and at which part of it
    bool fails_ = false;
    double failsAt_ = 0;
};
