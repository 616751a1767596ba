// The third node of the virtual bus: whatever plays the vehicle that the adapter is plugged into.
#pragma once

#include "device/driver/simulated/bittiming.h"

#include <memory>
#include <vector>

// A sequence of frames, each with the time from which it wants the bus. Frames go out in the sequence's order; one that
// finds the bus taken waits, and so does everything behind it.
class TrafficSource
{
public:
    TrafficSource() = default;
    TrafficSource(const TrafficSource &) = delete;
    TrafficSource &operator=(const TrafficSource &) = delete;
    virtual ~TrafficSource() = default;

    // From the beginning again: no frame wants the bus before `start`. `settings`: the rates it will be sent at.
    virtual void restart(BusTime start, const BusSettings &settings) = 0;
    virtual BusTime due() const = 0;
    virtual const BusFrame &frame() const = 0;
    // The frame left the bus at `end`; on to the next one.
    virtual void sent(BusTime end) = 0;
};

// The built-in vehicle: periodic identifiers of every kind of frame, whose data are what databases/vehicle.dbc says:
// speed, revolutions, doors and more of a drive of one minute, over and over. The same at every run. On a slow bus all
// periods stretch, so that others get their turn.
std::unique_ptr<TrafficSource> makeBuiltInVehicle();
// Sends the frames in turn whenever the bus is free. Where a frame has at least four data bytes, they hold its number,
// counted from 0, least significant byte first. No frames: the shortest FD frame with bit-rate switch.
std::unique_ptr<TrafficSource> makeFlood(std::vector<BusFrame> frames);
