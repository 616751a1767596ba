// Several drivers offered as one: their devices in a row, and every operation handed to the driver whose device is
// open.
#pragma once

#include "device/driver/driver.h"

#include <memory>

class DriverList : public Driver
{
public:
    explicit DriverList(std::vector<std::unique_ptr<Driver>> drivers);

    std::vector<std::string> deviceNames() override;
    std::vector<DriverNotice> takeNotices() override;

    BusReport busReport(Handle channel, BusQuestion question) override;

    Handle OpenDevice(std::uint32_t deviceType, std::uint32_t deviceIndex, std::uint32_t reserved) override;
    std::uint32_t CloseDevice(Handle device) override;
    std::uint32_t GetDeviceInfo(Handle device, DeviceInfoRecord *record) override;
    std::uint32_t GetDeviceStatus(Handle device) override;
    Handle InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record) override;
    std::uint32_t StartChannel(Handle channel) override;
    std::uint32_t ResetChannel(Handle channel) override;
    std::uint32_t TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count) override;
    std::uint32_t ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                             std::uint32_t waitMs) override;
    std::uint32_t TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count) override;
    std::uint32_t ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                               std::uint32_t waitMs) override;
    const PropertyInterface *GetPropertyInterface(Handle device) override;
    std::uint32_t UpdateDevice(Handle device) override;
    std::uint32_t SetArbitrationBaud(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t SetDataBaud(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t SetCanFdStandard(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t ResetDriver() override;

private:
    // The device list as the user last saw it, so that an index keeps its meaning when an interface comes or goes. It
    // stays as it is while a device is open.
    struct Offer {
        Driver *driver;
        std::uint32_t localIndex;
        std::string name;
    };
    void listDevices();

    std::vector<std::unique_ptr<Driver>> drivers_;
    std::vector<Offer> offers_;
    Handle open_ = 0;
    Driver *active_; // never null: the driver of the last OpenDevice; changed only while no device is open
};
