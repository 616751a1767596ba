#include "device/driver/simulated/simulateddriver.h"

#include "device/driver/numbertext.h"
#include "device/driver/simulated/deviceinfo.h"
#include "device/driver/simulated/tracereplay.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace
{

// The bus thread looks at most so often; every frame still gets its own time.
constexpr BusTime kSlice = 1000000;
constexpr std::size_t kFramesPerTurn = 256; // others get at the state after so many
constexpr std::size_t kMostNotices = 64;    // that wait for somebody to ask

// The paths: those of the filter, baud_rate_custom (parseCustomRates), initenal_resistance (a number; the virtual bus
// needs no termination). Answers false, with nothing changed, for any other path and for values that cannot be read.
bool applyProperty(const PropertyWrite &write, AcceptanceFilter *filter, BusSettings *settings)
{
    if (write.name == kCustomRatesProperty)
        return parseCustomRates(write.value, settings);
    std::uint32_t resistance = 0;
    if (write.name == kTerminalResistanceProperty)
        return parseUnsigned(write.value, &resistance);
    return applyFilterProperty(write, filter);
}

} // namespace

SimulatedDriver::SimulatedDriver(SimulatorOptions options) : options_(std::move(options)), bus_(options_) {}

SimulatedDriver::~SimulatedDriver()
{
    endPropertyRoute(this);
    const std::lock_guard<std::mutex> control(control_);
    close();
}

BusTime SimulatedDriver::now() const
{
    return static_cast<BusTime>(std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - opened_).count());
}

Driver::Handle SimulatedDriver::newHandle()
{
    if (++lastHandle_ == 0)
        ++lastHandle_;
    return lastHandle_;
}

unsigned SimulatedDriver::channelOf(Handle channel) const
{
    const auto found = std::find(std::begin(channel_), std::end(channel_), channel);
    return channel == 0 || gone_ ? kChannelCount : static_cast<unsigned>(found - std::begin(channel_));
}

unsigned SimulatedDriver::startedChannelOf(Handle channel)
{
    const unsigned index = channelOf(channel);
    return index < kChannelCount && bus_.channel(index).started ? index : kChannelCount;
}

void SimulatedDriver::notice(DriverNotice::Kind kind, const std::string &detail)
{
    if (notices_.size() < kMostNotices)
        notices_.push_back({kind, detail});
}

std::vector<std::string> SimulatedDriver::deviceNames()
{
    return {kSimulatedName};
}

std::vector<DriverNotice> SimulatedDriver::takeNotices()
{
    const Lock lock(state_);
    std::vector<DriverNotice> taken = std::exchange(notices_, {});
    for (unsigned index = 0; index < kChannelCount; ++index)
        if (const std::uint64_t lost = bus_.channel(index).takeLost())
            taken.push_back({DriverNotice::Kind::FramesLost, {}, index, lost});
    return taken;
}

BusReport SimulatedDriver::busReport(Handle channel, BusQuestion question)
{
    const Lock lock(state_);
    const unsigned index = startedChannelOf(channel);
    if (index == kChannelCount)
        return {};
    bus_.channel(index).settle(now());
    return bus_.channel(index).report(question);
}

// --- device -----------------------------------------------------------------------------------------------------

std::unique_ptr<TrafficSource> SimulatedDriver::makeTraffic()
{
    using Traffic = SimulatorOptions::Traffic;
    if (options_.traffic == Traffic::Off)
        return nullptr;
    if (options_.traffic == Traffic::Flood)
        return makeFlood(options_.flood);
    if (options_.traffic == Traffic::Trace) {
        CandumpLog log;
        if (loadCandumpLog(options_.tracePath, &log))
            return std::make_unique<TraceReplay>(std::move(log.frames));
        notice(DriverNotice::Kind::TraceUnreadable, options_.tracePath);
    }
    return makeBuiltInVehicle();
}

Driver::Handle SimulatedDriver::OpenDevice(std::uint32_t deviceType, std::uint32_t deviceIndex, std::uint32_t)
{
    const std::lock_guard<std::mutex> control(control_);
    const Lock lock(state_);
    if (deviceType != kDeviceType || deviceIndex != 0 || device_ != 0 || !plugged_)
        return 0;
    bus_.setTraffic(makeTraffic());
    notice(DriverNotice::Kind::NotHardware, kSimulatedName);
    if (options_.traffic == SimulatorOptions::Traffic::BuiltIn)
        notice(DriverNotice::Kind::BuiltInVehicle, {});
    device_ = newHandle();
    gone_ = false;
    stop_ = false;
    opened_ = Clock::now();
    busThread_ = std::thread(&SimulatedDriver::run, this);
    return device_;
}

void SimulatedDriver::close()
{
    {
        const Lock lock(state_);
        leave();
        device_ = 0;
        std::fill(std::begin(channel_), std::end(channel_), 0);
        stop_ = true;
    }
    work_.notify_all();
    if (busThread_.joinable())
        busThread_.join();
}

// The channels fall silent and whoever waits for them is told.
void SimulatedDriver::leave()
{
    gone_ = true;
    bus_.reset();
    moved_.notify_all();
}

std::uint32_t SimulatedDriver::CloseDevice(Handle device)
{
    const std::lock_guard<std::mutex> control(control_);
    {
        const Lock lock(state_);
        if (device == 0 || device != device_)
            return kDriverRefused;
    }
    close();
    return kDriverSuccess;
}

std::uint32_t SimulatedDriver::ResetDriver()
{
    const std::lock_guard<std::mutex> control(control_);
    close();
    return kDriverSuccess;
}

void SimulatedDriver::unplug()
{
    const Lock lock(state_);
    plugged_ = false;
    leave();
}

void SimulatedDriver::replug()
{
    const Lock lock(state_);
    plugged_ = true;
}

FrameCounts SimulatedDriver::vehicleCounts() const
{
    const Lock lock(state_);
    return bus_.vehicleCounts();
}

BusTime SimulatedDriver::carriedTime() const
{
    const Lock lock(state_);
    return bus_.carriedTime();
}

std::uint32_t SimulatedDriver::GetDeviceInfo(Handle device, DeviceInfoRecord *record)
{
    const Lock lock(state_);
    if (!answers(device) || !record)
        return kDriverRefused;
    *record = simulatedDeviceInfo(options_.firmwareVersion);
    return kDriverSuccess;
}

std::uint32_t SimulatedDriver::GetDeviceStatus(Handle device)
{
    const Lock lock(state_);
    return answers(device) ? kStatusPresent : kStatusGone;
}

std::uint32_t SimulatedDriver::UpdateDevice(Handle device)
{
    const Lock lock(state_);
    if (!answers(device))
        return kDriverRefused;
    leave();
    return kDriverSuccess;
}

// --- channel configuration --------------------------------------------------------------------------------------

Driver::Handle SimulatedDriver::InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record)
{
    const Lock lock(state_);
    if (!answers(device) || channel >= kChannelCount || !record || record->channelType != kChannelTypeCanFd ||
        record->workMode1 != record->workMode2 ||
        (record->workMode1 != kWorkModeNormal && record->workMode1 != kWorkModeListenOnly))
        return 0;
    bus_.initialise(channel, record->workMode1 == kWorkModeListenOnly, now());
    channel_[channel] = newHandle();
    moved_.notify_all();
    return channel_[channel];
}

std::uint32_t SimulatedDriver::StartChannel(Handle channel)
{
    const Lock lock(state_);
    const unsigned index = channelOf(channel);
    if (index == kChannelCount)
        return kDriverRefused;
    bus_.start(index, now());
    wakeBusThread(0);
    return kDriverSuccess;
}

std::uint32_t SimulatedDriver::ResetChannel(Handle channel)
{
    const Lock lock(state_);
    const unsigned index = channelOf(channel);
    if (index == kChannelCount)
        return kDriverRefused;
    bus_.initialise(index, false, now());
    channel_[index] = 0;
    moved_.notify_all();
    return kDriverSuccess;
}

// change(settings, value) answers false when the value means nothing.
template <typename Change>
std::uint32_t SimulatedDriver::changeSettings(Handle device, std::uint32_t channel, std::uint32_t value, Change change)
{
    const Lock lock(state_);
    if (!answers(device) || channel >= kChannelCount)
        return kDriverRefused;
    BusSettings settings = bus_.channel(channel).settings;
    if (!change(&settings, value))
        return kDriverRefused;
    bus_.setSettings(channel, settings, now());
    wakeBusThread(0);
    return kDriverSuccess;
}

std::uint32_t SimulatedDriver::SetArbitrationBaud(Handle device, std::uint32_t channel, std::uint32_t value)
{
    return changeSettings(device, channel, value, [](BusSettings *settings, std::uint32_t index) {
        settings->arbitrationRate = arbitrationRateAt(index);
        return settings->arbitrationRate != 0;
    });
}

std::uint32_t SimulatedDriver::SetDataBaud(Handle device, std::uint32_t channel, std::uint32_t value)
{
    return changeSettings(device, channel, value, [](BusSettings *settings, std::uint32_t index) {
        settings->dataRate = dataRateAt(index);
        return settings->dataRate != 0;
    });
}

std::uint32_t SimulatedDriver::SetCanFdStandard(Handle device, std::uint32_t channel, std::uint32_t value)
{
    return changeSettings(device, channel, value, [](BusSettings *settings, std::uint32_t standard) {
        settings->fdStandard = standard;
        return standard < kFdStandardCount;
    });
}

const PropertyInterface *SimulatedDriver::GetPropertyInterface(Handle device)
{
    {
        const Lock lock(state_);
        if (!answers(device))
            return nullptr;
    }
    return beginPropertyRoute(this);
}

std::uint32_t SimulatedDriver::setProperty(const char *path, const char *value)
{
    const Lock lock(state_);
    PropertyWrite write;
    if (!answers(device_) || !parsePropertyWrite(path, value, &write))
        return kDriverRefused;
    BusSettings settings = bus_.channel(write.channel).settings;
    if (!applyProperty(write, &bus_.channel(write.channel).filter, &settings))
        return kDriverRefused;
    bus_.setSettings(write.channel, settings, now());
    wakeBusThread(0);
    return kDriverSuccess;
}

// --- frames -----------------------------------------------------------------------------------------------------

bool SimulatedDriver::waitForChange(Lock *lock, Clock::time_point deadline)
{
    ++waiting_;
    const bool inTime = moved_.wait_until(*lock, deadline) == std::cv_status::no_timeout;
    --waiting_;
    return inTime;
}

template <typename Record>
std::uint32_t SimulatedDriver::transmit(Handle handle, const Record *records, std::uint32_t count)
{
    if (!records)
        return 0;
    Lock lock(state_);
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(options_.transmitPatienceMs);
    std::uint32_t taken = 0;
    BusFrame frame;
    while (taken < count && toBusFrame(records[taken], &frame)) {
        const unsigned index = startedChannelOf(handle);
        if (index == kChannelCount)
            break;
        const BusTime time = now();
        if (!bus_.accepts(index, frame)) {
            bus_.tryInVain(index, frame, time);
            break;
        }
        const bool room = bus_.enqueue(index, frame, static_cast<TransmitType>(records[taken].transmitType), time);
        taken += room ? 1 : 0;
        if (!options_.busTime) {
            bus_.advance(time, kFramesPerTurn); // no need for the bus thread: the frame is over already
            if (waiting_ > 0)
                moved_.notify_all();
        }
        wakeBusThread(time);
        if (!room && !waitForChange(&lock, deadline))
            break;
    }
    return taken;
}

std::uint32_t SimulatedDriver::TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count)
{
    return transmit(channel, records, count);
}

std::uint32_t SimulatedDriver::TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count)
{
    return transmit(channel, records, count);
}

template <typename Record>
std::uint32_t SimulatedDriver::receive(Handle handle, BoundedQueue<Record> BusChannel::*queue, Record *records,
                                       std::uint32_t capacity, std::uint32_t waitMs)
{
    if (!records || capacity == 0)
        return 0;
    Lock lock(state_);
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(waitMs);
    for (;;) {
        const unsigned index = startedChannelOf(handle);
        if (index == kChannelCount)
            return 0;
        auto &waitingFrames = bus_.channel(index).*queue;
        if (!waitingFrames.empty())
            return static_cast<std::uint32_t>(waitingFrames.take(records, capacity));
        if (waitMs == 0 || !waitForChange(&lock, deadline))
            return 0;
    }
}

std::uint32_t SimulatedDriver::ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity,
                                          std::uint32_t waitMs)
{
    return receive(channel, &BusChannel::classic, records, capacity, waitMs);
}

std::uint32_t SimulatedDriver::ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                                            std::uint32_t waitMs)
{
    return receive(channel, &BusChannel::fd, records, capacity, waitMs);
}

// --- the bus thread ---------------------------------------------------------------------------------------------

// There may be something to do from `at` on.
void SimulatedDriver::wakeBusThread(BusTime at)
{
    if (wake_ > at && wake_ - at > kSlice)
        work_.notify_one();
}

void SimulatedDriver::run()
{
    Lock lock(state_);
    while (!stop_) {
        const BusTime time = now();
        const BusTime next = bus_.advance(time, kFramesPerTurn);
        if (waiting_ > 0)
            moved_.notify_all();
        if (next == kNever) {
            wake_ = kNever;
            work_.wait(lock);
        } else if (next > time) {
            wake_ = std::max(next, time + kSlice);
            work_.wait_until(lock, opened_ + std::chrono::nanoseconds(wake_));
        } else {
            lock.unlock();
            std::this_thread::yield();
            lock.lock();
        }
        wake_ = 0;
    }
}
