#include "device/driver/kestrix/kestrixdriver.h"

#include "device/driver/simulated/deviceinfo.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace
{

constexpr unsigned kDevicesOffered = 4; // the library has no operation that counts them

} // namespace

KestrixDriver::KestrixDriver(std::wstring folder) : folder_(std::move(folder)) {}

KestrixDriver::~KestrixDriver()
{
    endPropertyRoute(this);
}

std::vector<std::string> KestrixDriver::deviceNames()
{
    std::vector<std::string> names;
    for (unsigned index = 0; index < kDevicesOffered; ++index)
        names.push_back("Halden-D2 #" + std::to_string(index));
    return names;
}

std::vector<DriverNotice> KestrixDriver::takeNotices()
{
    return std::exchange(notices_, {});
}

void KestrixDriver::notify(DriverNotice notice)
{
    const bool known = std::any_of(notices_.begin(), notices_.end(), [&](const DriverNotice &other) {
        return other.kind == notice.kind && other.detail == notice.detail;
    });
    if (!known)
        notices_.push_back(std::move(notice));
}

Driver::Handle KestrixDriver::OpenDevice(std::uint32_t deviceType, std::uint32_t deviceIndex, std::uint32_t reserved)
{
    if (auto failure = library_.load(folder_)) {
        notify(std::move(*failure));
        return 0;
    }
    recognised_ = false;
    return library().OpenDevice(deviceType, deviceIndex, reserved);
}

std::uint32_t KestrixDriver::CloseDevice(Handle device)
{
    endPropertyRoute(this);
    properties_ = nullptr;
    return library().CloseDevice(device);
}

std::uint32_t KestrixDriver::GetDeviceInfo(Handle device, DeviceInfoRecord *record)
{
    const std::uint32_t answer = library().GetDeviceInfo(device, record);
    if (answer == kDriverSuccess && !recognised_) {
        recognised_ = true;
        const auto end = std::find(std::begin(record->hardwareType), std::end(record->hardwareType), '\0');
        if (std::string(std::begin(record->hardwareType), end) == kSimulatedName)
            notify({DriverNotice::Kind::NotHardware, kSimulatedName});
    }
    return answer;
}

std::uint32_t KestrixDriver::GetDeviceStatus(Handle device)
{
    return library().GetDeviceStatus(device);
}

Driver::Handle KestrixDriver::InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record)
{
    return library().InitChannel(device, channel, record);
}

std::uint32_t KestrixDriver::StartChannel(Handle channel)
{
    return library().StartChannel(channel);
}

std::uint32_t KestrixDriver::ResetChannel(Handle channel)
{
    return library().ResetChannel(channel);
}

std::uint32_t KestrixDriver::TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count)
{
    return library().TransmitCan(channel, records, count);
}

std::uint32_t KestrixDriver::ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                                        std::uint32_t waitMs)
{
    return library().ReceiveCan(channel, records, capacity, waitMs);
}

std::uint32_t KestrixDriver::TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count)
{
    return library().TransmitCanFd(channel, records, count);
}

std::uint32_t KestrixDriver::ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                                          std::uint32_t waitMs)
{
    const std::uint32_t filled = library().ReceiveCanFd(channel, records, capacity, waitMs);
    for (std::uint32_t i = 0; i < filled && i < capacity; ++i)
        records[i].errorStateIndicator = 0; // the library does not tell it: what stands there means nothing
    return filled;
}

const PropertyInterface *KestrixDriver::GetPropertyInterface(Handle device)
{
    properties_ = library().GetPropertyInterface(device);
    return properties_ ? beginPropertyRoute(this) : nullptr;
}

std::uint32_t KestrixDriver::setProperty(const char *path, const char *value)
{
    if (!properties_)
        return 0;
    const LibraryFunction<std::uint32_t(const char *, const char *)> setValue(
        reinterpret_cast<void *>(properties_->SetValue));
    return setValue(path, value);
}

std::uint32_t KestrixDriver::UpdateDevice(Handle device)
{
    return library().UpdateDevice(device);
}

std::uint32_t KestrixDriver::SetArbitrationBaud(Handle device, std::uint32_t channel, std::uint32_t value)
{
    return library().SetArbitrationBaud(device, channel, value);
}

std::uint32_t KestrixDriver::SetDataBaud(Handle device, std::uint32_t channel, std::uint32_t value)
{
    return library().SetDataBaud(device, channel, value);
}

std::uint32_t KestrixDriver::SetCanFdStandard(Handle device, std::uint32_t channel, std::uint32_t value)
{
    return library().SetCanFdStandard(device, channel, value);
}

std::uint32_t KestrixDriver::ResetDriver()
{
    return library().ResetDriver();
}
