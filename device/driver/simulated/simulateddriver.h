// A Halden-D2 that is not there: two channels on one virtual bus, and a vehicle.
#pragma once

#include "device/driver/driver.h"
#include "device/driver/propertyroute.h"
#include "device/driver/simulated/simulatoroptions.h"
#include "device/driver/simulated/virtualbus.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

class SimulatedDriver : public Driver, public PropertyTarget
{
public:
    explicit SimulatedDriver(SimulatorOptions options = SimulatorOptions::fromEnvironment());
    ~SimulatedDriver() override;

    // Pulls the adapter out: an open device is gone from now on, also after replug(), until it is closed and opened
    // again. Any thread.
    void unplug();
    void replug();
    // What the vehicle has sent since the driver was made, by identifier word. Any thread.
    FrameCounts vehicleCounts() const;
    // How long the bus has carried frames since the driver was made, nanoseconds. Any thread.
    BusTime carriedTime() const;

    std::vector<std::string> deviceNames() override;
    std::vector<DriverNotice> takeNotices() override;
    BusReport busReport(Handle channel, BusQuestion question) override;

    // Only type kDeviceType, index 0, and one device at a time.
    Handle OpenDevice(std::uint32_t deviceType, std::uint32_t deviceIndex, std::uint32_t reserved) override;
    std::uint32_t CloseDevice(Handle device) override;
    std::uint32_t GetDeviceInfo(Handle device, DeviceInfoRecord *record) override;
    std::uint32_t GetDeviceStatus(Handle device) override;
    // A channel that is initialised already loses its old handle. Everything passes its filter then.
    Handle InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record) override;
    std::uint32_t StartChannel(Handle channel) override;
    std::uint32_t ResetChannel(Handle channel) override;
    // Wait for room in the transmit queue, options' patience at most altogether; closing, resetting and unplugging end
    // the wait.
    std::uint32_t TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count) override;
    std::uint32_t ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                             std::uint32_t waitMs) override;
    std::uint32_t TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count) override;
    std::uint32_t ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                               std::uint32_t waitMs) override;
    // The table serves the driver that handed it out last.
    const PropertyInterface *GetPropertyInterface(Handle device) override;
    // The adapter leaves for its boot loader; it is back when the device is closed and opened again.
    std::uint32_t UpdateDevice(Handle device) override;
    std::uint32_t SetArbitrationBaud(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t SetDataBaud(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t SetCanFdStandard(Handle device, std::uint32_t channel, std::uint32_t value) override;
    std::uint32_t ResetDriver() override; // closes whatever is open

    std::uint32_t setProperty(const char *path, const char *value) override;

private:
    using Clock = std::chrono::steady_clock;
    using Lock = std::unique_lock<std::mutex>;

    BusTime now() const;
    Handle newHandle();
    bool answers(Handle device) const { return device != 0 && device == device_ && !gone_; }
    // The index of a channel's handle, kChannelCount for a stale or foreign one, or while the adapter is gone.
    unsigned channelOf(Handle channel) const;
    unsigned startedChannelOf(Handle channel);
    void notice(DriverNotice::Kind kind, const std::string &detail);
    std::unique_ptr<TrafficSource> makeTraffic();
    void leave();
    void close(); // with control_ held, state_ not
    void run();
    void wakeBusThread(BusTime at);
    template <typename Record> std::uint32_t transmit(Handle handle, const Record *records, std::uint32_t count);
    template <typename Record>
    std::uint32_t receive(Handle handle, BoundedQueue<Record> BusChannel::*queue, Record *records,
                          std::uint32_t capacity, std::uint32_t waitMs);
    bool waitForChange(Lock *lock, Clock::time_point deadline);
    template <typename Change>
    std::uint32_t changeSettings(Handle device, std::uint32_t channel, std::uint32_t value, Change change);

    const SimulatorOptions options_;
    std::mutex control_;            // one opening or closing at a time
    mutable std::mutex state_;      // everything below
    std::condition_variable work_;  // the bus thread has something to do earlier than it thinks
    std::condition_variable moved_; // frames went over the bus, or handles died
    unsigned waiting_ = 0;          // threads that wait for moved_
    VirtualBus bus_;
    std::vector<DriverNotice> notices_;
    Handle lastHandle_ = 0;
    Handle device_ = 0;
    Handle channel_[kChannelCount] = {};
    bool plugged_ = true;
    bool gone_ = false; // the open device left
    bool stop_ = false;
    Clock::time_point opened_;
    BusTime wake_ = kNever; // when the bus thread looks again by itself
    std::thread busThread_; // control_'s
};
