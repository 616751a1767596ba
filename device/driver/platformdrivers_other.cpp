// Platforms that have no CAN of their own.
#include "device/driver/platformdrivers.h"

std::vector<DriverKind> platformDrivers()
{
    return {
        simulatedKind(true),
    };
}
