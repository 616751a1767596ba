// A driver that does what the test says and remembers every call in order.
#pragma once

#include "device/driver/driver.h"

#include <QMutex>
#include <QMutexLocker>
#include <QStringList>

#include <algorithm>
#include <atomic>
#include <functional>
#include <initializer_list>
#include <memory>
#include <vector>

class FakeDriver : public Driver
{
public:
    FakeDriver();
    ~FakeDriver() override;

    // Installs a new fake behind the device layer and returns it; the layer owns it.
    static FakeDriver *install();

    // Calls so far as "Name(argument,...)", receives left out; thread-safe. takeCalls also forgets them.
    QStringList calls() const { return copy(calls_); }
    QStringList takeCalls();

    // Answers, free to change at any time from the test's thread while no worker runs.
    std::vector<Handle> openAnswers; // one per OpenDevice, then deviceHandle
    Handle deviceHandle = 7;
    std::uint32_t status = kStatusPresent;
    std::uint32_t infoAnswer = kDriverSuccess;
    DeviceInfoRecord info{};
    bool hasProperties = true;
    QStringList failing; // operation names, or property paths, that answer failure
    std::uint32_t failure = 0;
    std::function<std::uint32_t(unsigned channel, const CanTransmitRecord *, std::uint32_t)> onTransmitCan;
    std::function<std::uint32_t(unsigned channel, const CanFdTransmitRecord *, std::uint32_t)> onTransmitCanFd;
    std::vector<std::string> names{"Fake 0"};
    std::vector<DriverNotice> notices;
    BusReport report[kChannelCount]; // the events are handed out whenever they are asked for

    // Frames that the next receive calls of a channel hand out, at most `capacity` per call; thread-safe.
    void feed(unsigned channel, const std::vector<CanReceiveRecord> &records) { append(queue_[channel], records); }
    void feedFd(unsigned channel, const std::vector<CanFdReceiveRecord> &records)
    {
        append(queueFd_[channel], records);
    }
    // Receive calls so far, and the longest wait that one asked for.
    std::atomic<int> receiveCalls{0};
    std::atomic<std::uint32_t> longestWaitMs{0};
    // Every record ever transmitted, per channel; thread-safe copies.
    std::vector<CanTransmitRecord> sentCan(unsigned channel) const { return copy(sent_[channel]); }
    std::vector<CanFdTransmitRecord> sentFd(unsigned channel) const { return copy(sentFd_[channel]); }
    // The init record of the last InitChannel.
    ChannelInitRecord lastInit{};

    static constexpr Handle channelHandle(unsigned channel) { return 101 + channel; }

    std::vector<std::string> deviceNames() override { return names; }
    std::vector<DriverNotice> takeNotices() override { return std::exchange(notices, {}); }
    BusReport busReport(Handle channel, BusQuestion question) override;
    Handle OpenDevice(std::uint32_t type, std::uint32_t index, std::uint32_t reserved) override;
    std::uint32_t CloseDevice(Handle device) override { return answer("CloseDevice", {device}); }
    std::uint32_t GetDeviceInfo(Handle device, DeviceInfoRecord *record) override;
    std::uint32_t GetDeviceStatus(Handle) override { return status; }
    Handle InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record) override;
    std::uint32_t StartChannel(Handle channel) override { return answer("StartChannel", {channel}); }
    std::uint32_t ResetChannel(Handle channel) override { return answer("ResetChannel", {channel}); }
    std::uint32_t TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count) override;
    std::uint32_t TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count) override;
    std::uint32_t ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                             std::uint32_t waitMs) override
    {
        return take(queue_[channelOf(channel)], records, capacity, waitMs);
    }
    std::uint32_t ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                               std::uint32_t waitMs) override
    {
        return take(queueFd_[channelOf(channel)], records, capacity, waitMs);
    }
    const PropertyInterface *GetPropertyInterface(Handle device) override;
    std::uint32_t UpdateDevice(Handle device) override { return answer("UpdateDevice", {device}); }
    std::uint32_t SetArbitrationBaud(Handle device, std::uint32_t channel, std::uint32_t value) override
    {
        return answer("SetArbitrationBaud", {device, channel, value});
    }
    std::uint32_t SetDataBaud(Handle device, std::uint32_t channel, std::uint32_t value) override
    {
        return answer("SetDataBaud", {device, channel, value});
    }
    std::uint32_t SetCanFdStandard(Handle device, std::uint32_t channel, std::uint32_t value) override
    {
        return answer("SetCanFdStandard", {device, channel, value});
    }
    std::uint32_t ResetDriver() override { return answer("ResetDriver", {}); }

private:
    static std::uint32_t setValue(const char *path, const char *value);
    void note(const char *name, const QStringList &arguments);
    void note(const char *name, std::initializer_list<std::uint32_t> arguments);
    std::uint32_t answer(const char *name, std::initializer_list<std::uint32_t> arguments); // notes the call as well
    std::uint32_t answer(const char *name) const
    {
        return failing.contains(QLatin1String(name)) ? failure : kDriverSuccess;
    }
    template <typename Record> void append(std::vector<Record> &all, const std::vector<Record> &records)
    {
        const QMutexLocker lock(&lock_);
        all.insert(all.end(), records.begin(), records.end());
    }
    template <typename List> List copy(const List &all) const
    {
        const QMutexLocker lock(&lock_);
        return all;
    }
    template <typename Record>
    std::uint32_t take(std::vector<Record> &queue, Record *records, std::uint32_t capacity, std::uint32_t waitMs)
    {
        ++receiveCalls;
        longestWaitMs = std::max(longestWaitMs.load(), waitMs);
        const QMutexLocker lock(&lock_);
        const auto end = queue.begin() + std::min<std::ptrdiff_t>(std::ptrdiff_t(queue.size()), capacity);
        const auto filled = std::uint32_t(std::copy(queue.begin(), end, records) - records);
        queue.erase(queue.begin(), end);
        return filled;
    }
    static unsigned channelOf(Handle handle) { return handle - channelHandle(0); }

    mutable QMutex lock_;
    QStringList calls_;
    std::size_t opened_ = 0;
    std::vector<CanReceiveRecord> queue_[kChannelCount];
    std::vector<CanFdReceiveRecord> queueFd_[kChannelCount];
    std::vector<CanTransmitRecord> sent_[kChannelCount];
    std::vector<CanFdTransmitRecord> sentFd_[kChannelCount];
    PropertyInterface properties_{};
};
