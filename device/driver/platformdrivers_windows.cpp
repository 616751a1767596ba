// Windows: the adapter's library is the platform's own list; the simulated adapter has to be asked for once it is
#include "device/driver/platformdrivers.h"

std::vector<DriverKind> platformDrivers()
{
    return {
        simulatedKind(true),
    };
}
