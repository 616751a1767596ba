#include "device/driver/driverlist.h"

#include <cassert>
#include <utility>

DriverList::DriverList(std::vector<std::unique_ptr<Driver>> drivers) : drivers_(std::move(drivers))
{
    assert(!drivers_.empty());
    active_ = drivers_.front().get();
}

void DriverList::listDevices()
{
    offers_.clear();
    for (const auto &driver : drivers_) {
        std::uint32_t localIndex = 0;
        for (std::string &name : driver->deviceNames())
            offers_.push_back({driver.get(), localIndex++, std::move(name)});
    }
}

std::vector<std::string> DriverList::deviceNames()
{
    if (open_ == 0)
        listDevices();
    std::vector<std::string> names;
    for (const Offer &offer : offers_)
        names.push_back(offer.name);
    return names;
}

std::vector<DriverNotice> DriverList::takeNotices()
{
    std::vector<DriverNotice> all;
    for (const auto &driver : drivers_)
        for (DriverNotice &notice : driver->takeNotices())
            all.push_back(std::move(notice));
    return all;
}

BusReport DriverList::busReport(Handle channel, BusQuestion question)
{
    return active_->busReport(channel, question);
}

Driver::Handle DriverList::OpenDevice(std::uint32_t deviceType, std::uint32_t deviceIndex, std::uint32_t reserved)
{
    if (offers_.empty())
        listDevices();
    if (deviceIndex >= offers_.size())
        return 0;
    active_ = offers_[deviceIndex].driver;
    open_ = active_->OpenDevice(deviceType, offers_[deviceIndex].localIndex, reserved);
    return open_;
}

std::uint32_t DriverList::CloseDevice(Handle device)
{
    open_ = 0;
    return active_->CloseDevice(device);
}

std::uint32_t DriverList::GetDeviceInfo(Handle device, DeviceInfoRecord *record)
{
    return active_->GetDeviceInfo(device, record);
}

std::uint32_t DriverList::GetDeviceStatus(Handle device)
{
    return active_->GetDeviceStatus(device);
}

Driver::Handle DriverList::InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record)
{
    return active_->InitChannel(device, channel, record);
}

std::uint32_t DriverList::StartChannel(Handle channel)
{
    return active_->StartChannel(channel);
}

std::uint32_t DriverList::ResetChannel(Handle channel)
{
    return active_->ResetChannel(channel);
}

std::uint32_t DriverList::TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count)
{
    return active_->TransmitCan(channel, records, count);
}

std::uint32_t DriverList::ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                                     std::uint32_t waitMs)
{
    return active_->ReceiveCan(channel, records, capacity, waitMs);
}

std::uint32_t DriverList::TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count)
{
    return active_->TransmitCanFd(channel, records, count);
}

std::uint32_t DriverList::ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                                       std::uint32_t waitMs)
{
    return active_->ReceiveCanFd(channel, records, capacity, waitMs);
}

const PropertyInterface *DriverList::GetPropertyInterface(Handle device)
{
    return active_->GetPropertyInterface(device);
}

std::uint32_t DriverList::UpdateDevice(Handle device)
{
    return active_->UpdateDevice(device);
}

std::uint32_t DriverList::SetArbitrationBaud(Handle device, std::uint32_t channel, std::uint32_t value)
{
    return active_->SetArbitrationBaud(device, channel, value);
}

std::uint32_t DriverList::SetDataBaud(Handle device, std::uint32_t channel, std::uint32_t value)
{
    return active_->SetDataBaud(device, channel, value);
}

std::uint32_t DriverList::SetCanFdStandard(Handle device, std::uint32_t channel, std::uint32_t value)
{
    return active_->SetCanFdStandard(device, channel, value);
}

std::uint32_t DriverList::ResetDriver()
{
    return active_->ResetDriver();
}
