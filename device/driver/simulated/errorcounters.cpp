#include "device/driver/simulated/errorcounters.h"

#include <algorithm>

namespace
{

// ISO 11898-1.
constexpr unsigned kWarningFrom = 96;
constexpr unsigned kPassiveFrom = 128;
constexpr unsigned kOffFrom = 256;
constexpr unsigned kSendPenalty = 8;

} // namespace

void ErrorCounters::sent()
{
    transmit_ -= transmit_ > 0 ? 1 : 0;
}

void ErrorCounters::received()
{
    receive_ = receive_ >= kPassiveFrom ? kPassiveFrom - 1 : receive_ - (receive_ > 0 ? 1 : 0);
}

void ErrorCounters::sendFailed()
{
    transmit_ = std::min(transmit_ + kSendPenalty, kOffFrom);
}

void ErrorCounters::notAcknowledged()
{
    if (transmit_ < kPassiveFrom)
        sendFailed();
}

void ErrorCounters::receiveFailed()
{
    receive_ = std::min(receive_ + 1, kOffFrom - 1);
}

ControllerState ErrorCounters::state() const
{
    if (transmit_ >= kOffFrom)
        return ControllerState::BusOff;
    const unsigned higher = std::max(transmit_, receive_);
    if (higher >= kPassiveFrom)
        return ControllerState::ErrorPassive;
    return higher >= kWarningFrom ? ControllerState::ErrorWarning : ControllerState::ErrorActive;
}

std::uint8_t ErrorCounters::transmitErrors() const
{
    return static_cast<std::uint8_t>(std::min(transmit_, kOffFrom - 1));
}

std::uint8_t ErrorCounters::flags() const
{
    switch (state()) {
    case ControllerState::ErrorPassive:
        return (transmit_ >= kPassiveFrom ? buserror::kTransmitPassive : 0) |
               (receive_ >= kPassiveFrom ? buserror::kReceivePassive : 0);
    case ControllerState::ErrorWarning:
        return (transmit_ >= kWarningFrom ? buserror::kTransmitWarning : 0) |
               (receive_ >= kWarningFrom ? buserror::kReceiveWarning : 0);
    case ControllerState::ErrorActive:
        return buserror::kErrorActive;
    case ControllerState::BusOff:
    case ControllerState::Unknown:
        break;
    }
    return 0;
}
