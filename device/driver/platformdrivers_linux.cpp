// Linux: the kernel's CAN interfaces come before the simulated adapter, so that real devices are listed first.
#include "device/driver/platformdrivers.h"
#include "device/driver/socketcan/socketcandriver.h"

#include <algorithm>

namespace
{

// argument: "", "can0" or "can0,can1"; null when it names more interfaces than there are channels.
std::unique_ptr<Driver> makeSocketCan(const std::string &argument)
{
    std::vector<std::string> names;
    for (std::size_t begin = 0; begin < argument.size();) {
        const std::size_t end = std::min(argument.find(',', begin), argument.size());
        if (end > begin)
            names.push_back(argument.substr(begin, end - begin));
        begin = end + 1;
    }
    if (names.size() > kChannelCount)
        return nullptr;
    return std::make_unique<SocketCanDriver>(std::move(names));
}

} // namespace

std::vector<DriverKind> platformDrivers()
{
    return {
        {"socketcan", true, &makeSocketCan},
        simulatedKind(true),
    };
}
