// No adapter at all: nothing on offer, and every operation fails.
#pragma once

#include "device/driver/driver.h"

class NullDriver : public Driver
{
public:
    std::vector<std::string> deviceNames() override { return {}; }
    std::vector<DriverNotice> takeNotices() override { return {}; }

    Handle OpenDevice(std::uint32_t, std::uint32_t, std::uint32_t) override { return 0; }
    std::uint32_t CloseDevice(Handle) override { return 0; }
    std::uint32_t GetDeviceInfo(Handle, DeviceInfoRecord *) override { return 0; }
    std::uint32_t GetDeviceStatus(Handle) override { return 0; }
    Handle InitChannel(Handle, std::uint32_t, const ChannelInitRecord *) override { return 0; }
    std::uint32_t StartChannel(Handle) override { return 0; }
    std::uint32_t ResetChannel(Handle) override { return 0; }
    std::uint32_t TransmitCan(Handle, const CanTransmitRecord *, std::uint32_t) override { return 0; }
    std::uint32_t ReceiveCan(Handle, CanReceiveRecord *, std::uint32_t, std::uint32_t) override { return 0; }
    std::uint32_t TransmitCanFd(Handle, const CanFdTransmitRecord *, std::uint32_t) override { return 0; }
    std::uint32_t ReceiveCanFd(Handle, CanFdReceiveRecord *, std::uint32_t, std::uint32_t) override { return 0; }
    const PropertyInterface *GetPropertyInterface(Handle) override { return nullptr; }
    std::uint32_t UpdateDevice(Handle) override { return 0; }
    std::uint32_t SetArbitrationBaud(Handle, std::uint32_t, std::uint32_t) override { return 0; }
    std::uint32_t SetDataBaud(Handle, std::uint32_t, std::uint32_t) override { return 0; }
    std::uint32_t SetCanFdStandard(Handle, std::uint32_t, std::uint32_t) override { return 0; }
    std::uint32_t ResetDriver() override { return 0; }
};
