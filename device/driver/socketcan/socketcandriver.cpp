#include "device/driver/socketcan/socketcandriver.h"

#include "device/driver/socketcan/socketcaninfo.h"

#include <algorithm>
#include <iterator>

namespace
{

bool isStillThere(const CanInterface &interface, const std::vector<CanInterface> &now)
{
    return std::any_of(now.begin(), now.end(), [&interface](const CanInterface &each) {
        return each.index == interface.index && each.name == interface.name && each.up;
    });
}

} // namespace

SocketCanDriver::SocketCanDriver(std::vector<std::string> interfaceNames) : chosen_(std::move(interfaceNames)) {}

SocketCanDriver::~SocketCanDriver()
{
    endPropertyRoute(this);
    close();
}

Driver::Handle SocketCanDriver::newHandle()
{
    if (++lastHandle_ == 0)
        ++lastHandle_;
    return lastHandle_;
}

SocketCanDriver::ChannelPointer SocketCanDriver::channelOf(Handle handle) const
{
    const std::lock_guard<std::mutex> lock(guard_);
    for (const Slot &slot : slots_)
        if (handle != 0 && slot.handle == handle)
            return slot.channel;
    return nullptr;
}

// --- devices ----------------------------------------------------------------------------------------------------

void SocketCanDriver::offer(const std::vector<CanInterface> &all)
{
    offered_.clear();
    if (!chosen_.empty()) {
        offered_.push_back(chosen_);
        return;
    }
    for (const CanInterface &interface : all) {
        if (offered_.empty() || offered_.back().size() == kChannelCount)
            offered_.emplace_back();
        offered_.back().push_back(interface.name);
    }
}

std::vector<std::string> SocketCanDriver::deviceNames()
{
    const std::vector<CanInterface> all = canInterfaces();
    const std::lock_guard<std::mutex> lock(guard_);
    offer(all);
    std::vector<std::string> names;
    for (const std::vector<std::string> &interfaceNames : offered_)
        names.push_back(deviceName(interfaceNames));
    return names;
}

void SocketCanDriver::tellLost(SocketCanChannel &channel, unsigned index)
{
    if (const std::uint64_t lost = channel.takeLost())
        notices_.put({DriverNotice::Kind::FramesLost, {}, index, lost});
}

std::vector<DriverNotice> SocketCanDriver::takeNotices()
{
    {
        const std::lock_guard<std::mutex> lock(guard_);
        for (unsigned index = 0; index < kChannelCount; ++index)
            if (slots_[index].channel)
                tellLost(*slots_[index].channel, index);
    }
    return notices_.take();
}

BusReport SocketCanDriver::busReport(Handle channel, BusQuestion question)
{
    const ChannelPointer found = channelOf(channel);
    return found ? found->report(question) : BusReport();
}

// The open device's interfaces among all, in channel order.
std::vector<CanInterface> SocketCanDriver::ownAmong(const std::vector<CanInterface> &all) const
{
    std::vector<CanInterface> own;
    for (const std::string &name : names_)
        std::copy_if(all.begin(), all.end(), std::back_inserter(own),
                     [&name](const CanInterface &interface) { return interface.name == name; });
    return own;
}

bool SocketCanDriver::isPresent(Handle device, const std::vector<CanInterface> &own) const
{
    return isOpen(device) && !own.empty() &&
           std::all_of(std::begin(slots_), std::end(slots_), [&own](const Slot &slot) {
               return !slot.channel || !slot.channel->running() || isStillThere(slot.channel->interface(), own);
           });
}

Driver::Handle SocketCanDriver::OpenDevice(std::uint32_t deviceType, std::uint32_t deviceIndex, std::uint32_t)
{
    const std::vector<CanInterface> all = canInterfaces();
    const std::lock_guard<std::mutex> lock(guard_);
    if (offered_.empty())
        offer(all);
    if (deviceType != kDeviceType || deviceIndex >= offered_.size() || device_ != 0)
        return 0;
    names_ = offered_[deviceIndex];
    const std::vector<CanInterface> interfaces = ownAmong(all);
    if (interfaces.empty()) {
        notices_.put(DriverNotice::Kind::InterfaceMissing, deviceName(names_));
        return 0;
    }
    notices_.put(DriverNotice::Kind::NotHardware, "SocketCAN " + hardwareText(interfaces));
    opened_ = FrameClock::monotonicNow();
    device_ = newHandle();
    return device_;
}

// channel: no slot's any more, or null.
void SocketCanDriver::retire(const ChannelPointer &channel, unsigned index)
{
    if (!channel)
        return;
    channel->stop();
    tellLost(*channel, index);
}

void SocketCanDriver::close()
{
    ChannelPointer stopping[kChannelCount];
    {
        const std::lock_guard<std::mutex> lock(guard_);
        device_ = 0;
        for (unsigned index = 0; index < kChannelCount; ++index) {
            stopping[index] = std::move(slots_[index].channel);
            slots_[index] = Slot();
        }
    }
    for (unsigned index = 0; index < kChannelCount; ++index)
        retire(stopping[index], index);
}

std::uint32_t SocketCanDriver::CloseDevice(Handle device)
{
    {
        const std::lock_guard<std::mutex> lock(guard_);
        if (!isOpen(device))
            return kDriverRefused;
    }
    close();
    return kDriverSuccess;
}

std::uint32_t SocketCanDriver::ResetDriver()
{
    close();
    return kDriverSuccess;
}

std::uint32_t SocketCanDriver::GetDeviceStatus(Handle device)
{
    const std::vector<CanInterface> all = canInterfaces(); // not under the lock: the workers need it
    const std::lock_guard<std::mutex> lock(guard_);
    return isPresent(device, ownAmong(all)) ? kStatusPresent : kStatusGone;
}

std::uint32_t SocketCanDriver::GetDeviceInfo(Handle device, DeviceInfoRecord *record)
{
    const std::vector<CanInterface> all = canInterfaces();
    const std::lock_guard<std::mutex> lock(guard_);
    const std::vector<CanInterface> own = ownAmong(all);
    if (!record || !isPresent(device, own))
        return kDriverRefused;
    *record = socketCanDeviceInfo(own);
    return kDriverSuccess;
}

std::uint32_t SocketCanDriver::UpdateDevice(Handle)
{
    return kDriverRefused;
}

// --- channels ---------------------------------------------------------------------------------------------------

Driver::Handle SocketCanDriver::InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record)
{
    ChannelPointer replaced;
    Handle handle = 0;
    {
        const std::lock_guard<std::mutex> lock(guard_);
        if (!isOpen(device) || channel >= kChannelCount || !record || record->channelType != kChannelTypeCanFd ||
            record->workMode1 != record->workMode2 ||
            (record->workMode1 != kWorkModeNormal && record->workMode1 != kWorkModeListenOnly))
            return 0;
        CanInterface interface;
        if (channel >= names_.size()) {
            notices_.put(DriverNotice::Kind::InterfaceMissing,
                         deviceName(names_) + ", #" + std::to_string(channel + 1));
            return 0;
        }
        if (!findCanInterface(names_[channel], &interface)) {
            notices_.put(DriverNotice::Kind::InterfaceMissing, names_[channel]);
            return 0;
        }
        Slot &slot = slots_[channel];
        replaced = std::move(slot.channel);
        slot = Slot();
        slot.channel = std::make_shared<SocketCanChannel>(std::move(interface),
                                                          record->workMode1 == kWorkModeListenOnly, opened_, &notices_);
        handle = slot.handle = newHandle();
    }
    retire(replaced, channel);
    return handle;
}

std::uint32_t SocketCanDriver::StartChannel(Handle channel)
{
    const ChannelPointer found = channelOf(channel);
    return found && found->start() ? kDriverSuccess : kDriverRefused;
}

std::uint32_t SocketCanDriver::ResetChannel(Handle channel)
{
    ChannelPointer found;
    unsigned index = 0;
    {
        const std::lock_guard<std::mutex> lock(guard_);
        while (index < kChannelCount && (channel == 0 || slots_[index].handle != channel))
            ++index;
        if (index == kChannelCount)
            return kDriverRefused;
        found = std::move(slots_[index].channel);
        slots_[index] = Slot();
    }
    retire(found, index);
    return kDriverSuccess;
}

std::uint32_t SocketCanDriver::accept(Handle device, std::uint32_t channel) const
{
    const std::lock_guard<std::mutex> lock(guard_);
    return isOpen(device) && channel < kChannelCount ? kDriverSuccess : kDriverRefused;
}

std::uint32_t SocketCanDriver::SetArbitrationBaud(Handle device, std::uint32_t channel, std::uint32_t)
{
    return accept(device, channel);
}

std::uint32_t SocketCanDriver::SetDataBaud(Handle device, std::uint32_t channel, std::uint32_t)
{
    return accept(device, channel);
}

std::uint32_t SocketCanDriver::SetCanFdStandard(Handle device, std::uint32_t channel, std::uint32_t)
{
    return accept(device, channel);
}

const PropertyInterface *SocketCanDriver::GetPropertyInterface(Handle device)
{
    {
        const std::lock_guard<std::mutex> lock(guard_);
        if (!isOpen(device))
            return nullptr;
    }
    return beginPropertyRoute(this);
}

std::uint32_t SocketCanDriver::setProperty(const char *path, const char *value)
{
    const std::lock_guard<std::mutex> lock(guard_);
    PropertyWrite write;
    if (device_ == 0 || !parsePropertyWrite(path, value, &write))
        return kDriverRefused;
    if (write.name == kCustomRatesProperty)
        return kDriverSuccess;
    Slot &slot = slots_[write.channel];
    if (!applyFilterProperty(write, &slot.filter))
        return kDriverRefused;
    if (slot.channel)
        slot.channel->setFilter(slot.filter);
    return kDriverSuccess;
}

// --- frames -----------------------------------------------------------------------------------------------------

std::uint32_t SocketCanDriver::TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count)
{
    const ChannelPointer found = channelOf(channel);
    return found ? found->transmit(records, count) : 0;
}

std::uint32_t SocketCanDriver::TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count)
{
    const ChannelPointer found = channelOf(channel);
    return found ? found->transmit(records, count) : 0;
}

std::uint32_t SocketCanDriver::ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                                          std::uint32_t waitMs)
{
    const ChannelPointer found = channelOf(channel);
    return found ? found->receive(records, capacity, waitMs) : 0;
}

std::uint32_t SocketCanDriver::ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                                            std::uint32_t waitMs)
{
    const ChannelPointer found = channelOf(channel);
    return found ? found->receive(records, capacity, waitMs) : 0;
}
