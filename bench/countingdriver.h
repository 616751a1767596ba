// The simulated adapter with an account of the frames that the program took from it and gave to it.
#pragma once

#include "device/driver/simulated/simulateddriver.h"

#include <array>
#include <atomic>

class CountingDriver : public SimulatedDriver
{
public:
    using SimulatedDriver::SimulatedDriver;

    // Since the driver was made, all openings together. Any thread.
    std::uint64_t received(unsigned channel) const { return received_[channel]; }
    std::uint64_t transmitted(unsigned channel) const { return transmitted_[channel]; }
    // Frames that the notices handed out so far told as lost.
    std::uint64_t lost() const { return lost_; }

    std::vector<DriverNotice> takeNotices() override
    {
        std::vector<DriverNotice> notices = SimulatedDriver::takeNotices();
        for (const DriverNotice &notice : notices)
            lost_ += notice.count;
        return notices;
    }
    Handle InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record) override
    {
        const Handle handle = SimulatedDriver::InitChannel(device, channel, record);
        if (channel < kChannelCount && handle != 0)
            handles_[channel] = handle;
        return handle;
    }
    std::uint32_t TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count) override
    {
        return note(transmitted_, channel, SimulatedDriver::TransmitCan(channel, records, count));
    }
    std::uint32_t TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count) override
    {
        return note(transmitted_, channel, SimulatedDriver::TransmitCanFd(channel, records, count));
    }
    std::uint32_t ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                             std::uint32_t waitMs) override
    {
        return note(received_, channel, SimulatedDriver::ReceiveCan(channel, records, capacity, waitMs));
    }
    std::uint32_t ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                               std::uint32_t waitMs) override
    {
        return note(received_, channel, SimulatedDriver::ReceiveCanFd(channel, records, capacity, waitMs));
    }

private:
    using Counts = std::array<std::atomic<std::uint64_t>, kChannelCount>;

    std::uint32_t note(Counts &counts, Handle channel, std::uint32_t frames)
    {
        if (frames != 0)
            counts[channel == handles_[0] ? 0 : 1] += frames;
        return frames;
    }

    std::array<std::atomic<Handle>, kChannelCount> handles_{};
    Counts received_{};
    Counts transmitted_{};
    std::uint64_t lost_ = 0;
};
