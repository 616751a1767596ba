// The adapter through its maker's library: Kestrix.dll beside the executable. Windows only.
#pragma once

#include "device/driver/kestrix/kestrixlibrary.h"
#include "device/driver/propertyroute.h"

class KestrixDriver : public Driver, public PropertyTarget
{
public:
    // folder: where Kestrix.dll is. It is looked for at OpenDevice, and again at every one until it is loaded.
    explicit KestrixDriver(std::wstring folder = executableFolder());
    ~KestrixDriver() override;

    std::vector<std::string> deviceNames() override;
    std::vector<DriverNotice> takeNotices() override;

    // Without a usable library: 0 and one notice, however often it is called before the notice is taken. The first
    // GetDeviceInfo after it gives a notice when the library turns out to be the simulated one.
    Handle OpenDevice(std::uint32_t deviceType, std::uint32_t deviceIndex, std::uint32_t reserved) override;
    // All others answer 0 until the library is loaded.
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
    // A table of our own, whose calls reach the library's as every operation does. Serves the driver that handed it out
    // last, until the device is closed.
    const PropertyInterface *GetPropertyInterface(Handle device) override;
    std::uint32_t UpdateDevice(Handle device) override;
    std::uint32_t SetArbitrationBaud(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t SetDataBaud(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t SetCanFdStandard(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t ResetDriver() override;

    std::uint32_t setProperty(const char *path, const char *value) override;

private:
    const KestrixOperations &library() const { return library_.operations(); }
    void notify(DriverNotice notice);

    std::wstring folder_;
    KestrixLibrary library_;
    const PropertyInterface *properties_ = nullptr; // the library's
    bool recognised_ = false;                       // what was opened has told what it is
    std::vector<DriverNotice> notices_;
};
