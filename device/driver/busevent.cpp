#include "device/driver/busevent.h"

ChannelState stateAfter(const ChannelState &state, const BusEvent &event)
{
    using namespace buserror;
    ChannelState after = state;
    const std::uint8_t flags = (event.classes & kController) != 0 ? event.data[ControllerFlags] : 0;
    if ((event.classes & kBusOff) != 0)
        after.controller = ControllerState::BusOff;
    else if ((flags & (kReceivePassive | kTransmitPassive)) != 0)
        after.controller = ControllerState::ErrorPassive;
    else if ((flags & (kReceiveWarning | kTransmitWarning)) != 0)
        after.controller = ControllerState::ErrorWarning;
    else if ((flags & kErrorActive) != 0 || (event.classes & kRestarted) != 0)
        after.controller = ControllerState::ErrorActive;
    if ((event.classes & kCounters) != 0) {
        after.countersKnown = true;
        after.transmitErrors = event.data[TransmitErrors];
        after.receiveErrors = event.data[ReceiveErrors];
    }
    return after;
}
