#include "device/driver/simulated/buschannel.h"

#include <utility>

namespace
{

constexpr BusTime kNanosecondsPerMicrosecond = 1000;

template <typename Record> bool store(const BusFrame &frame, BusTime time, BoundedQueue<Record> *queue)
{
    Record *record = queue->push();
    if (record)
        fillRecord(frame, time / kNanosecondsPerMicrosecond, record);
    return record != nullptr;
}

} // namespace

BusChannel::BusChannel(std::size_t transmitCapacity, std::size_t receiveCapacity)
    : transmissions(transmitCapacity), classic(receiveCapacity), fd(receiveCapacity)
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
}

std::uint64_t BusChannel::takeLost()
{
    return std::exchange(lost_, 0);
}
