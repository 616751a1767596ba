#include "device/driver/simulated/simulatoroptions.h"

#include "device/driver/numbertext.h"

#include <cstdlib>

namespace
{

std::string environment(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

} // namespace

SimulatorOptions SimulatorOptions::fromEnvironment()
{
    SimulatorOptions options;
    const std::string trace = environment("OSTREL_SIM_TRACE");
    if (trace == "off") {
        options.traffic = Traffic::Off;
    } else if (trace == "flood") {
        options.traffic = Traffic::Flood;
    } else if (!trace.empty()) {
        options.traffic = Traffic::Trace;
        options.tracePath = trace;
    }
    std::uint32_t firmware = 0;
    if (parseHexadecimal(environment("OSTREL_SIM_FIRMWARE"), &firmware) && firmware <= UINT16_MAX)
        options.firmwareVersion = static_cast<std::uint16_t>(firmware);
    std::uint32_t oneIn = 0;
    if (parseUnsigned(environment("OSTREL_SIM_ERRORS"), &oneIn))
        options.errorOneIn = oneIn;
    return options;
}
