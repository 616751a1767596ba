#include "device/driver/socketcan/socketcaninfo.h"

#include <sys/utsname.h>

#include <algorithm>
#include <cstdio>

namespace
{

// A version is shown by its lowest twelve bits and compared by all sixteen.
constexpr std::uint16_t kNewerThanAnyImage = 0xF000;
constexpr unsigned kLargestMajor = 15;
constexpr unsigned kLargestMinor = 99;

template <std::size_t Size> void fill(char (&field)[Size], const std::string &text, std::size_t longest)
{
    std::copy_n(text.begin(), std::min(text.size(), longest), field);
}

std::string joinedNames(const std::vector<std::string> &names, const char *separator)
{
    std::string joined;
    for (const std::string &name : names)
        joined += (joined.empty() ? "" : separator) + name;
    return joined;
}

std::string serialText(const std::vector<CanInterface> &interfaces)
{
    std::vector<std::string> names;
    names.reserve(interfaces.size());
    for (const CanInterface &interface : interfaces)
        names.push_back(interface.name);
    return joinedNames(names, "+");
}

std::string kernelRelease()
{
    utsname system{};
    return uname(&system) == 0 ? system.release : "";
}

} // namespace

std::string deviceName(const std::vector<std::string> &interfaceNames)
{
    return joinedNames(interfaceNames, " + ");
}

std::string hardwareText(const std::vector<CanInterface> &interfaces)
{
    if (interfaces.empty())
        return {};
    CanInterface all = interfaces.front();
    all.name = serialText(interfaces);
    std::string each;
    bool alike = true;
    for (CanInterface interface : interfaces) {
        each += (each.empty() ? "" : ", ") + description(interface);
        interface.name = all.name;
        alike = alike && description(interface) == description(all);
    }
    return alike ? description(all) : each;
}

std::uint16_t kernelVersionWord(const std::string &release)
{
    unsigned major = 0;
    unsigned minor = 0;
    // NOLINTNEXTLINE(cert-err34-c): a number too large only gives a wrong version
    if (std::sscanf(release.c_str(), "%3u.%3u", &major, &minor) != 2)
        return 0;
    major = std::min(major, kLargestMajor);
    minor = std::min(minor, kLargestMinor);
    return static_cast<std::uint16_t>(major << 8 | minor / 10 << 4 | minor % 10);
}

DeviceInfoRecord socketCanDeviceInfo(const std::vector<CanInterface> &interfaces)
{
    DeviceInfoRecord record{};
    const std::uint16_t kernel = kernelVersionWord(kernelRelease());
    record.hardwareVersion = kernel;
    record.firmwareVersion = kNewerThanAnyImage | kernel;
    record.driverVersion = kernel;
    record.interfaceVersion = kernel;
    record.irqNumber = interfaces.empty() ? std::uint16_t(0) : interfaces.front().irq;
    record.channelCount = static_cast<std::uint8_t>(interfaces.size());
    fill(record.serialNumber, serialText(interfaces), sizeof record.serialNumber);
    fill(record.hardwareType, hardwareText(interfaces), sizeof record.hardwareType - 1);
    return record;
}
