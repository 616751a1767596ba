// The exports of the simulated Kestrix.dll: each hands its call to one simulated adapter.
#include "device/driver/kestrix/kestrixordinals.h"
#include "device/driver/simulated/simulateddriver.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

// The calling convention of the exports; the build makes one library of each.
#ifndef OSTREL_SIM_CALL
#define OSTREL_SIM_CALL __stdcall
#endif

namespace
{

// Keeps the library mapped until the process ends: the adapter's threads run its code, and unloading could only wait
// for them under the loader's lock, which ending threads need too.
void stayLoaded()
{
    static const wchar_t anchor = 0;
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN, &anchor, &self);
}

// Made by the first call and never destroyed, for the same reason: CloseDevice ends its threads, and at the end of the
// process the system has ended them before any destructor could.
SimulatedDriver &adapter()
{
    static SimulatedDriver *const theAdapter = [] {
        stayLoaded();
        return new SimulatedDriver;
    }();
    return *theAdapter;
}

std::uint32_t OSTREL_SIM_CALL setValue(const char *path, const char *value)
{
    return adapter().setProperty(path, value);
}

// The adapter's own table has the compiler's convention.
struct ExportedProperties {
    std::uint32_t(OSTREL_SIM_CALL *SetValue)(const char *path, const char *value);
};
constexpr ExportedProperties kProperties{&setValue};

} // namespace

extern "C" {

// A definition below that does not fit the table does not compile.
#define OSTREL_DECLARE(ordinal, name, result, parameters) result OSTREL_SIM_CALL name parameters;
OSTREL_KESTRIX_OPERATIONS(OSTREL_DECLARE)
#undef OSTREL_DECLARE

Driver::Handle OSTREL_SIM_CALL OpenDevice(std::uint32_t deviceType, std::uint32_t deviceIndex, std::uint32_t reserved)
{
    return adapter().OpenDevice(deviceType, deviceIndex, reserved);
}

std::uint32_t OSTREL_SIM_CALL CloseDevice(Driver::Handle device)
{
    return adapter().CloseDevice(device);
}

std::uint32_t OSTREL_SIM_CALL GetDeviceInfo(Driver::Handle device, DeviceInfoRecord *record)
{
    return adapter().GetDeviceInfo(device, record);
}

std::uint32_t OSTREL_SIM_CALL GetDeviceStatus(Driver::Handle device)
{
    return adapter().GetDeviceStatus(device);
}

Driver::Handle OSTREL_SIM_CALL InitChannel(Driver::Handle device, std::uint32_t channel,
                                           const ChannelInitRecord *record)
{
    return adapter().InitChannel(device, channel, record);
}

std::uint32_t OSTREL_SIM_CALL StartChannel(Driver::Handle channel)
{
    return adapter().StartChannel(channel);
}

std::uint32_t OSTREL_SIM_CALL ResetChannel(Driver::Handle channel)
{
    return adapter().ResetChannel(channel);
}

std::uint32_t OSTREL_SIM_CALL TransmitCan(Driver::Handle channel, const CanTransmitRecord *records, std::uint32_t count)
{
    return adapter().TransmitCan(channel, records, count);
}

std::uint32_t OSTREL_SIM_CALL ReceiveCan(Driver::Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                                         std::uint32_t waitMs)
{
    return adapter().ReceiveCan(channel, records, capacity, waitMs);
}

std::uint32_t OSTREL_SIM_CALL TransmitCanFd(Driver::Handle channel, const CanFdTransmitRecord *records,
                                            std::uint32_t count)
{
    return adapter().TransmitCanFd(channel, records, count);
}

std::uint32_t OSTREL_SIM_CALL ReceiveCanFd(Driver::Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                                           std::uint32_t waitMs)
{
    return adapter().ReceiveCanFd(channel, records, capacity, waitMs);
}

const PropertyInterface *OSTREL_SIM_CALL GetPropertyInterface(Driver::Handle device)
{
    return adapter().GetPropertyInterface(device) ? reinterpret_cast<const PropertyInterface *>(&kProperties) : nullptr;
}

std::uint32_t OSTREL_SIM_CALL UpdateDevice(Driver::Handle device)
{
    return adapter().UpdateDevice(device);
}

std::uint32_t OSTREL_SIM_CALL SetArbitrationBaud(Driver::Handle device, std::uint32_t channel, std::uint32_t value)
{
    return adapter().SetArbitrationBaud(device, channel, value);
}

std::uint32_t OSTREL_SIM_CALL SetDataBaud(Driver::Handle device, std::uint32_t channel, std::uint32_t value)
{
    return adapter().SetDataBaud(device, channel, value);
}

std::uint32_t OSTREL_SIM_CALL SetCanFdStandard(Driver::Handle device, std::uint32_t channel, std::uint32_t value)
{
    return adapter().SetCanFdStandard(device, channel, value);
}

std::uint32_t OSTREL_SIM_CALL ResetDriver()
{
    return adapter().ResetDriver();
}

} // extern "C"
