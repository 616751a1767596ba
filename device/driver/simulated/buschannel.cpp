#include "device/driver/simulated/buschannel.h"

#include "device/driver/framelength.h"
#include "device/driver/timeunits.h"

#include <utility>

namespace
{

constexpr std::size_t kMostEvents = 4096; // that wait to be taken
// ISO 11898-1: a node that is off the bus is back after so many times eleven recessive bits.
constexpr unsigned kRecoveryBits = 128 * 11;

template <typename Record> bool store(const BusFrame &frame, BusTime time, BoundedQueue<Record> *queue)
{
    Record *record = queue->push();
    if (record)
        fillRecord(frame, time / kNanosecondsPerMicrosecond, record);
    return record != nullptr;
}

} // namespace

BusChannel::BusChannel(std::size_t transmitCapacity, std::size_t receiveCapacity)
    : transmissions(transmitCapacity), classic(receiveCapacity), fd(receiveCapacity), events_(kMostEvents)
{
}

void BusChannel::receive(const BusFrame &frame, BusTime time)
{
    if (!filter.passes(frame))
        return;
    if (!(frame.fd ? store(frame, time, &fd) : store(frame, time, &classic)))
        ++lost_;
}

void BusChannel::initialise(bool onlyListening)
{
    started = false;
    listenOnly = onlyListening;
    filter.reset();
    transmissions.clear();
    classic.clear();
    fd.clear();
    offUntil = attemptEnds = 0;
    errors_.restart();
    toldState_ = ControllerState::ErrorActive;
    events_.clear();
    lostEvents_ = 0;
}

std::uint64_t BusChannel::takeLost()
{
    return std::exchange(lost_, 0);
}

void BusChannel::tell(std::uint32_t classes, std::uint8_t protocolFlags, std::uint8_t place, BusTime time)
{
    BusEvent *event = events_.push();
    if (!event) {
        ++lostEvents_;
        return;
    }
    *event = BusEvent();
    event->timeStamp = time / kNanosecondsPerMicrosecond;
    event->classes = classes | buserror::kCounters;
    if ((classes & buserror::kController) != 0)
        event->data[buserror::ControllerFlags] = errors_.flags();
    event->data[buserror::ProtocolFlags] = protocolFlags;
    event->data[buserror::ProtocolPlace] = place;
    event->data[buserror::TransmitErrors] = errors_.transmitErrors();
    event->data[buserror::ReceiveErrors] = errors_.receiveErrors();
}

void BusChannel::tellState(BusTime time)
{
    if (errors_.state() == toldState_)
        return;
    toldState_ = errors_.state();
    if (!offBus()) {
        tell(buserror::kController, 0, 0, time);
        return;
    }
    tell(buserror::kBusOff, 0, 0, time);
    offUntil = time + wireTime({kRecoveryBits, 0}, settings.arbitrationRate, settings.dataRate);
}

void BusChannel::settle(BusTime now)
{
    if (!offBus() || now < offUntil)
        return;
    errors_.restart();
    toldState_ = errors_.state();
    tell(buserror::kRestarted, 0, 0, offUntil);
}

void BusChannel::sendSucceeded(BusTime time)
{
    errors_.sent();
    tellState(time);
}

void BusChannel::receiveSucceeded(BusTime time)
{
    if (listenOnly)
        return;
    errors_.received();
    tellState(time);
}

void BusChannel::sendFailed(BusTime time)
{
    errors_.sendFailed();
    tell(buserror::kProtocol | buserror::kBusError, buserror::kSingleBit | buserror::kOnTransmission, 0, time);
    tellState(time);
}

void BusChannel::notAcknowledged(BusTime time)
{
    errors_.notAcknowledged();
    tell(buserror::kProtocol | buserror::kBusError | buserror::kNoAcknowledge, buserror::kOnTransmission,
         buserror::kAcknowledgeSlot, time);
    tellState(time);
}

void BusChannel::receiveFailed(std::uint8_t protocolFlags, BusTime time)
{
    if (!listenOnly)
        errors_.receiveFailed();
    tell(buserror::kProtocol | buserror::kBusError, protocolFlags, 0, time);
    tellState(time);
}

BusReport BusChannel::report(BusQuestion question)
{
    BusReport report;
    report.state = {errors_.state(), true, errors_.transmitErrors(), errors_.receiveErrors()};
    if (question == BusQuestion::StateAndEvents) {
        report.events.resize(events_.size());
        events_.take(report.events.data(), report.events.size());
        report.lost = std::exchange(lostEvents_, 0);
    }
    return report;
}
