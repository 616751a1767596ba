// The simulated vehicle's state in the bytes of its messages. databases/vehicle.dbc says the same to whoever reads
// them.
#pragma once

#include "device/driver/busframe.h"

// Fills the data of one of the built-in vehicle's frames. `count`: how often it was sent before.
void fillVehicleData(BusFrame *frame, double seconds, std::uint32_t count);
