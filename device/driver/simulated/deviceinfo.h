// What the simulated adapter says about itself.
#pragma once

#include "device/driver/wirerecords.h"

constexpr char kSimulatedName[] = "Halden-D2 (simulated)";

// Every field filled.
DeviceInfoRecord simulatedDeviceInfo(std::uint16_t firmwareVersion);
