// One channel of the simulated adapter: its settings, its filter and its queues.
#pragma once

#include "device/driver/acceptancefilter.h"
#include "device/driver/boundedqueue.h"
#include "device/driver/driver.h"
#include "device/driver/simulated/bittiming.h"
#include "device/driver/simulated/errorcounters.h"

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

    BusTime offUntil = 0;    // while off the bus
    BusTime attemptEnds = 0; // of the last transmission that nobody acknowledged

    bool acknowledges() const { return started && !listenOnly; }
    // A frame from the bus: filtered, queued, or counted as lost.
    void receive(const BusFrame &frame, BusTime time);
    // Stopped, everything passes, nothing queued; the settings stay.
    void initialise(bool onlyListening);
    std::uint64_t takeLost(); // frames lost since the last call

    // What happens to the controller at a time. Each counts; the failures are error frames that busReport tells, and so
    // is every change of state. A listener that only listens counts nothing.
    void sendSucceeded(BusTime time);
    void receiveSucceeded(BusTime time);
    void sendFailed(BusTime time);
    void notAcknowledged(BusTime time);
    void receiveFailed(std::uint8_t protocolFlags, BusTime time);
    // Back on the bus when its time has come.
    void settle(BusTime now);
    bool offBus() const { return errors_.state() == ControllerState::BusOff; }
    bool errorPassive() const { return errors_.state() == ControllerState::ErrorPassive; }
    BusReport report(BusQuestion question);

private:
    void tell(std::uint32_t classes, std::uint8_t protocolFlags, std::uint8_t place, BusTime time);
    void tellState(BusTime time);

    std::uint64_t lost_ = 0;
    ErrorCounters errors_;
    ControllerState toldState_ = ControllerState::ErrorActive;
    BoundedQueue<BusEvent> events_;
    std::uint64_t lostEvents_ = 0;
};
