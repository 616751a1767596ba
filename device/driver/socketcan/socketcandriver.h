// The kernel's CAN interfaces as devices: two interfaces make one, their bit rates are taken as they are. Linux only.
#pragma once

#include "device/driver/propertyroute.h"
#include "device/driver/socketcan/socketcanchannel.h"

class SocketCanDriver : public Driver, public PropertyTarget
{
public:
    // interfaceNames: the one or two interfaces of the only device on offer, there or not. Empty: all that the kernel
    // has, in pairs, "can0 + can1"; of an odd number the last one gives a device with channel 1 alone.
    explicit SocketCanDriver(std::vector<std::string> interfaceNames = {});
    ~SocketCanDriver() override;

    std::vector<std::string> deviceNames() override;
    std::vector<DriverNotice> takeNotices() override;
    BusReport busReport(Handle channel, BusQuestion question) override;

    // Only type kDeviceType and one device at a time.
    Handle OpenDevice(std::uint32_t deviceType, std::uint32_t deviceIndex, std::uint32_t reserved) override;
    std::uint32_t CloseDevice(Handle device) override;
    std::uint32_t GetDeviceInfo(Handle device, DeviceInfoRecord *record) override;
    // Gone: the interface of a channel that runs was removed or renamed or is down, or all of the device's interfaces
    // are removed.
    std::uint32_t GetDeviceStatus(Handle device) override;
    // A channel that is initialised already loses its old handle. Everything passes its filter then.
    Handle InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record) override;
    // An interface that takes classic frames only starts with a notice and refuses FD frames.
    std::uint32_t StartChannel(Handle channel) override;
    std::uint32_t ResetChannel(Handle channel) override;
    // Wait for room in the kernel, a second at most altogether; resetting and closing end the wait. The single-shot
    // types are sent as the others: whether a frame is repeated is the interface's setting.
    std::uint32_t TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count) override;
    std::uint32_t ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                             std::uint32_t waitMs) override;
    std::uint32_t TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count) override;
    std::uint32_t ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                               std::uint32_t waitMs) override;
    // The table serves the driver that handed it out last.
    const PropertyInterface *GetPropertyInterface(Handle device) override;
    std::uint32_t UpdateDevice(Handle device) override; // refused: there is no boot loader
    // Accepted and left to the interface.
    std::uint32_t SetArbitrationBaud(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t SetDataBaud(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t SetCanFdStandard(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t ResetDriver() override; // closes whatever is open

    // The paths: those of the filter and baud_rate_custom (taken whatever it says); the termination is the interface's.
    std::uint32_t setProperty(const char *path, const char *value) override;

private:
    using ChannelPointer = std::shared_ptr<SocketCanChannel>; // kept by a call under way while another one closes
    struct Slot {
        Handle handle = 0;
        ChannelPointer channel;
        AcceptanceFilter filter;
    };

    void offer(const std::vector<CanInterface> &all);
    Handle newHandle();
    bool isOpen(Handle device) const { return device != 0 && device == device_; }
    bool isPresent(Handle device, const std::vector<CanInterface> &own) const;
    std::vector<CanInterface> ownAmong(const std::vector<CanInterface> &all) const;
    ChannelPointer channelOf(Handle handle) const;
    void tellLost(SocketCanChannel &channel, unsigned index);
    void retire(const ChannelPointer &channel, unsigned index);
    void close();
    std::uint32_t accept(Handle device, std::uint32_t channel) const;

    const std::vector<std::string> chosen_;
    NoticeBox notices_;
    mutable std::mutex guard_; // everything below; never held while a channel stops
    std::vector<std::vector<std::string>> offered_;
    std::vector<std::string> names_; // the open device's interfaces
    std::int64_t opened_ = 0;        // monotonic, nanoseconds
    Handle lastHandle_ = 0;
    Handle device_ = 0;
    Slot slots_[kChannelCount];
};
