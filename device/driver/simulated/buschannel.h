// One channel of the simulated adapter: its settings, its filter and its queues.
#pragma once

#include "device/driver/acceptancefilter.h"
#include "device/driver/boundedqueue.h"
#include "device/driver/simulated/bittiming.h"

struct Transmission {
    BusFrame frame;
    TransmitType type = TransmitType::Normal;
    BusTime ready = 0; // from when it wants the bus

    bool single() const { return type == TransmitType::Single || type == TransmitType::SingleSelfReceive; }
    bool selfReceived() const { return type == TransmitType::SelfReceive || type == TransmitType::SingleSelfReceive; }
};

class BusChannel
{
public:
    BusChannel(std::size_t transmitCapacity, std::size_t receiveCapacity);

    BusSettings settings = defaultBusSettings();
    AcceptanceFilter filter;
    bool listenOnly = false;
    bool started = false;
    BoundedQueue<Transmission> transmissions;
    BoundedQueue<CanReceiveRecord> classic;
    BoundedQueue<CanFdReceiveRecord> fd;

    bool acknowledges() const { return started && !listenOnly; }
    // A frame from the bus: filtered, queued, or counted as lost.
    void receive(const BusFrame &frame, BusTime time);
    // Stopped, everything passes, nothing queued; the settings stay.
    void initialise(bool onlyListening);
    std::uint64_t takeLost(); // frames lost since the last call

private:
    std::uint64_t lost_ = 0;
};
