// Windows: the adapter's library is the platform's own list; the simulated adapter has to be asked for.
#include "device/driver/platformdrivers.h"

#include "device/driver/kestrix/kestrixdriver.h"
#include "device/driver/simulated/simulateddriver.h"

namespace
{

std::unique_ptr<Driver> makeKestrix(const std::string &)
{
    return std::make_unique<KestrixDriver>();
}

std::unique_ptr<Driver> makeSimulated(const std::string &)
{
    return std::make_unique<SimulatedDriver>();
}

} // namespace

std::vector<DriverKind> platformDrivers()
{
    return {
        {"kestrix", true, &makeKestrix},
        {"simulated", false, &makeSimulated},
    };
}
