#include "device/driver/propertyroute.h"

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

struct Route {
    std::mutex guard;
    PropertyTarget *target = nullptr;
};

Route &route()
{
    static Route theRoute;
    return theRoute;
}

std::uint32_t setValue(const char *path, const char *value)
{
    const std::lock_guard<std::mutex> lock(route().guard);
    return route().target ? route().target->setProperty(path, value) : 0;
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

bool applyFilterProperty(const PropertyWrite &write, AcceptanceFilter *filter)
{
    for (const FilterProperty &property : kFilterProperties)
        if (write.name == property.name)
            return (filter->*property.set)(write.value);
    return false;
}

const PropertyInterface *beginPropertyRoute(PropertyTarget *target)
{
    const std::lock_guard<std::mutex> lock(route().guard);
    route().target = target;
    return &kTable;
}

void endPropertyRoute(const PropertyTarget *target)
{
    const std::lock_guard<std::mutex> lock(route().guard);
    if (route().target == target)
        route().target = nullptr;
}
