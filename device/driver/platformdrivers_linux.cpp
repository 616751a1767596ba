// Linux: the kernel's CAN interfaces come before the simulated adapter, so that real devices are listed first.
#include "device/driver/platformdrivers.h"

std::vector<DriverKind> platformDrivers()
{
    return {
        simulatedKind(true),
    };
}
