// The simulated adapter with faults: what the hook answers happens to the call that asks it.
#pragma once

#include "bench/countingdriver.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

enum class Fault {
    None,
    Refuse,       // the call answers 0 and does nothing
    AbsurdCount,  // a receive or transmit call answers far more than it was asked for
    AbsurdLength, // a receive call answers one frame with the largest length and identifier there can be
};

class FaultyDriver : public CountingDriver
{
public:
    using Hook = std::function<Fault(const char *operation)>; // any thread; may unplug() or sleep

    FaultyDriver(const SimulatorOptions &options, Hook hook) : CountingDriver(options), hook_(std::move(hook)) {}

    Handle OpenDevice(std::uint32_t type, std::uint32_t index, std::uint32_t reserved) override
    {
        return refused("OpenDevice") ? 0 : CountingDriver::OpenDevice(type, index, reserved);
    }
    std::uint32_t CloseDevice(Handle device) override
    {
        // A refused close must not leave the simulator open: the program has no way to try again.
        const std::uint32_t answer = CountingDriver::CloseDevice(device);
        return refused("CloseDevice") ? 0 : answer;
    }
    std::uint32_t GetDeviceInfo(Handle device, DeviceInfoRecord *record) override
    {
        return refused("GetDeviceInfo") ? 0 : CountingDriver::GetDeviceInfo(device, record);
    }
    std::uint32_t GetDeviceStatus(Handle device) override
    {
        return refused("GetDeviceStatus") ? 0 : CountingDriver::GetDeviceStatus(device);
    }
    Handle InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record) override
    {
        return refused("InitChannel") ? 0 : CountingDriver::InitChannel(device, channel, record);
    }
    std::uint32_t StartChannel(Handle channel) override
    {
        return refused("StartChannel") ? 0 : CountingDriver::StartChannel(channel);
    }
    std::uint32_t ResetChannel(Handle channel) override
    {
        return refused("ResetChannel") ? 0 : CountingDriver::ResetChannel(channel);
    }
    std::uint32_t TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count) override
    {
        const Fault fault = hook_("TransmitCan");
        return fault == Fault::None ? CountingDriver::TransmitCan(channel, records, count) : absurd(fault);
    }
    std::uint32_t TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count) override
    {
        const Fault fault = hook_("TransmitCanFd");
        return fault == Fault::None ? CountingDriver::TransmitCanFd(channel, records, count) : absurd(fault);
    }
    std::uint32_t ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                             std::uint32_t waitMs) override
    {
        const Fault fault = hook_("ReceiveCan");
        return fault == Fault::None ? CountingDriver::ReceiveCan(channel, records, capacity, waitMs)
                                    : absurd(fault, records);
    }
    std::uint32_t ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                               std::uint32_t waitMs) override
    {
        const Fault fault = hook_("ReceiveCanFd");
        return fault == Fault::None ? CountingDriver::ReceiveCanFd(channel, records, capacity, waitMs)
                                    : absurd(fault, records);
    }
    const PropertyInterface *GetPropertyInterface(Handle device) override
    {
        return refused("GetPropertyInterface") ? nullptr : CountingDriver::GetPropertyInterface(device);
    }
    std::uint32_t SetArbitrationBaud(Handle device, std::uint32_t channel, std::uint32_t value) override
    {
        return refused("SetArbitrationBaud") ? 0 : CountingDriver::SetArbitrationBaud(device, channel, value);
    }
    std::uint32_t SetDataBaud(Handle device, std::uint32_t channel, std::uint32_t value) override
    {
        return refused("SetDataBaud") ? 0 : CountingDriver::SetDataBaud(device, channel, value);
    }
    std::uint32_t SetCanFdStandard(Handle device, std::uint32_t channel, std::uint32_t value) override
    {
        return refused("SetCanFdStandard") ? 0 : CountingDriver::SetCanFdStandard(device, channel, value);
    }
    std::uint32_t setProperty(const char *path, const char *value) override
    {
        return refused("SetValue") ? 0 : CountingDriver::setProperty(path, value);
    }

private:
    bool refused(const char *operation) { return hook_(operation) == Fault::Refuse; }
    static std::uint32_t absurd(Fault fault)
    {
        return fault == Fault::AbsurdCount ? std::numeric_limits<std::uint32_t>::max() : 0;
    }
    template <typename Record> static std::uint32_t absurd(Fault fault, Record *records)
    {
        if (fault != Fault::AbsurdLength)
            return absurd(fault);
        auto *bytes = reinterpret_cast<unsigned char *>(records);
        std::fill_n(bytes, sizeof(Record), static_cast<unsigned char>(0xFF));
        return 1;
    }

    const Hook hook_;
};
