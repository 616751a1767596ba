#include "device/driver/simulated/deviceinfo.h"

#include "device/driver/driver.h"

#include <cstring>

namespace
{

constexpr std::uint16_t kHardwareVersion = 0x0120;
constexpr std::uint16_t kDriverVersion = 0x0117;
constexpr std::uint16_t kInterfaceVersion = 0x0102;
constexpr std::uint16_t kIrqNumber = 7;
constexpr char kSerialNumber[] = "SIM-D2-000000000041";

static_assert(sizeof kSerialNumber <= sizeof DeviceInfoRecord::serialNumber);
static_assert(sizeof kSimulatedName <= sizeof DeviceInfoRecord::hardwareType);

} // namespace

DeviceInfoRecord simulatedDeviceInfo(std::uint16_t firmwareVersion)
{
    DeviceInfoRecord record{};
    record.hardwareVersion = kHardwareVersion;
    record.firmwareVersion = firmwareVersion;
    record.driverVersion = kDriverVersion;
    record.interfaceVersion = kInterfaceVersion;
    record.irqNumber = kIrqNumber;
    record.channelCount = kChannelCount;
    std::memcpy(record.serialNumber, kSerialNumber, sizeof kSerialNumber);
    std::memcpy(record.hardwareType, kSimulatedName, sizeof kSimulatedName);
    return record;
}
