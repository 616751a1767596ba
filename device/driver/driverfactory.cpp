#include "device/driver/driverfactory.h"

#include "device/driver/driverlist.h"
#include "device/driver/platformdrivers.h"
#include "device/driver/simulated/simulateddriver.h"

#include <utility>

DriverKind simulatedKind(bool offeredUnasked)
{
    const auto make = [](const std::string &) -> std::unique_ptr<Driver> {
        return std::make_unique<SimulatedDriver>();
    };
    return {"simulated", offeredUnasked, make};
}

std::unique_ptr<Driver> makeDriver(const std::string &choice)
{
    const std::size_t colon = choice.find(':');
    const std::string name = choice.substr(0, colon);
    const std::string argument = colon == std::string::npos ? std::string() : choice.substr(colon + 1);
    const std::vector<DriverKind> kinds = platformDrivers();
    for (const DriverKind &kind : kinds)
        if (name == kind.name)
            if (std::unique_ptr<Driver> chosen = kind.make(argument))
                return chosen;

    std::vector<std::unique_ptr<Driver>> drivers;
    for (const DriverKind &kind : kinds)
        if (kind.offeredUnasked)
            if (std::unique_ptr<Driver> driver = kind.make({}))
                drivers.push_back(std::move(driver));
    if (drivers.size() == 1)
        return std::move(drivers.front());
    return std::make_unique<DriverList>(std::move(drivers));
}
