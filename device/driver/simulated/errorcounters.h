// The error counters of one controller and the state that follows from them.
#pragma once

#include "device/driver/busevent.h"

// After ISO 11898-1, fault confinement, simplified: what it leaves to a node's place among the others (who raised the
// flag first, dominant bits after it) is left out, and a counter stops at 255 but for the step to bus-off.
class ErrorCounters
{
public:
    void sent();            // transmit counter -1
    void received();        // receive counter -1; from the passive range to its edge
    void sendFailed();      // transmit counter +8; past 255 the controller is off the bus
    void notAcknowledged(); // the same, but an error passive sender's counter stays: alone on the bus it never goes off
    void receiveFailed();   // receive counter +1
    void restart() { *this = ErrorCounters(); }

    ControllerState state() const;
    std::uint8_t transmitErrors() const;
    std::uint8_t receiveErrors() const { return static_cast<std::uint8_t>(receive_); }
    // The controller flags of a frame that tells the state.
    std::uint8_t flags() const;

private:
    unsigned transmit_ = 0;
    unsigned receive_ = 0;
};
