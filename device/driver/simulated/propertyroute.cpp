#include "device/driver/simulated/propertyroute.h"

#include "device/driver/simulated/numbertext.h"
#include "device/driver/simulated/simulateddriver.h"

#include <iterator>
#include <mutex>

namespace
{

struct FilterProperty {
    const char *name;
    bool (AcceptanceFilter::*set)(const std::string &value);
};

constexpr FilterProperty kFilterProperties[] = {
    {"filter_clear", &AcceptanceFilter::clear},     {"filter_mode", &AcceptanceFilter::setMode},
    {"filter_start", &AcceptanceFilter::setStart},  {"filter_end", &AcceptanceFilter::setEnd},
    {"filter_ack", &AcceptanceFilter::acknowledge},
};

// The names are the library's own, spelling included.
constexpr char kCustomRates[] = "baud_rate_custom";
constexpr char kTerminalResistance[] = "initenal_resistance";

struct Route {
    std::mutex guard;
    SimulatedDriver *driver = nullptr;
};

Route &route()
{
    static Route theRoute;
    return theRoute;
}

std::uint32_t OSTREL_PROPERTY_CALL setValue(const char *path, const char *value)
{
    const std::lock_guard<std::mutex> lock(route().guard);
    return route().driver ? route().driver->setProperty(path, value) : 0;
}

constexpr PropertyInterface kTable{&setValue};

} // namespace

bool parsePropertyWrite(const char *path, const char *value, PropertyWrite *write)
{
    if (!path || !value || path[0] < '0' || path[0] >= static_cast<char>('0' + kChannelCount) || path[1] != '/')
        return false;
    write->channel = static_cast<unsigned>(path[0] - '0');
    write->name = path + 2;
    write->value = value;
    return true;
}

bool applyProperty(const PropertyWrite &write, AcceptanceFilter *filter, BusSettings *settings)
{
    for (const FilterProperty &property : kFilterProperties)
        if (write.name == property.name)
            return (filter->*property.set)(write.value);
    if (write.name == kCustomRates)
        return parseCustomRates(write.value, settings);
    std::uint32_t resistance = 0;
    return write.name == kTerminalResistance && parseUnsigned(write.value, &resistance);
}

const PropertyInterface *beginPropertyRoute(SimulatedDriver *driver)
{
    const std::lock_guard<std::mutex> lock(route().guard);
    route().driver = driver;
    return &kTable;
}

void endPropertyRoute(const SimulatedDriver *driver)
{
    const std::lock_guard<std::mutex> lock(route().guard);
    if (route().driver == driver)
        route().driver = nullptr;
}
