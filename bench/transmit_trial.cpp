// ostrel_transmit_trial [SECONDS]: 200 entries of 5 to 1,000 ms on the simulated adapter, without a window. Prints how
// far the driver was called from the due times, whether the counts are those of the plan, and the processor time.
#include "countingdriver.h"
#include "device/devicelayer.h"
#include "frames/pendingframes.h"
#include "processusage.h"
#include "transmit/transmitengine.h"

#include <QThread>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace
{
constexpr int kEntries = 200;
constexpr unsigned kShortestMs = 5;
constexpr unsigned kLongestMs = 1000;

// Notes the moment of every frame by its identifier.
class StampingDriver : public CountingDriver
{
public:
    std::uint32_t TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count) override
    {
        const auto now = TransmitClock::now();
        {
            const std::lock_guard<std::mutex> guard(lock_);
            stamps[records->id].push_back(now);
        }
        return CountingDriver::TransmitCan(channel, records, count);
    }

    std::vector<TransmitClock::time_point> stamps[kEntries];

private:
    std::mutex lock_;
};

unsigned intervalOf(int entry)
{
    return kShortestMs + static_cast<unsigned>(entry) * (kLongestMs - kShortestMs) / (kEntries - 1);
}
} // namespace

int main(int argc, char *argv[])
{
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 20;
    auto owned = std::make_unique<StampingDriver>();
    StampingDriver *driver = owned.get();
    setDriver(std::move(owned));
    setPendingFramesTaken(false);
    if (!openDevice(kDeviceType, 0, 0) || !initChannel(0, 0) || !startChannel(0))
        return 1;
    TransmitEngine engine([](const QString &) {});
    TransmitList list;
    for (int number = 0; number < kEntries; ++number) {
        auto entry = std::make_shared<TransmitEntry>();
        entry->serial = newTransmitSerial();
        entry->frame.id = static_cast<std::uint32_t>(number);
        entry->frame.length = kClassicDataBytes;
        entry->interval = intervalOf(number);
        list << entry;
    }
    engine.setEntries(list);
    const double before = ProcessUsage::now().cpuSeconds;
    engine.start();
    QThread::sleep(static_cast<unsigned long>(seconds));
    engine.stop();
    QThread::msleep(20);
    const double used = ProcessUsage::now().cpuSeconds - before;

    std::vector<double> late; // milliseconds
    int offCount = 0;
    double drift = 0;
    const std::vector<TransmitCounts> counts = engine.counts();
    for (int number = 0; number < kEntries; ++number) {
        const auto &stamps = driver->stamps[number];
        const std::chrono::milliseconds interval(intervalOf(number));
        for (std::size_t k = 0; k < stamps.size(); ++k) {
            const auto plan = engine.startedAt() + interval * static_cast<int>(k);
            late.push_back(std::chrono::duration<double, std::milli>(stamps[k] - plan).count());
        }
        const auto planned = std::size_t(seconds * 1000 / interval.count() + 1);
        offCount += stamps.size() + 1 < planned || stamps.size() > planned + 1 ? 1 : 0;
        const auto last = engine.startedAt() + interval * static_cast<int>(stamps.size() - 1);
        drift = std::max(
            drift,
            std::abs(std::chrono::duration<double, std::milli>(counts[std::size_t(number)].lastDue - last).count()));
    }
    std::sort(late.begin(), late.end());
    std::printf("frames %zu, late: median %.3f ms, 99 %% %.3f ms, most %.3f ms; counts off by more than one: %d; "
                "last due time off the plan by %.3f ms; %.1f %% of a core\n",
                late.size(), late[late.size() / 2], late[late.size() * 99 / 100], late.back(), offCount, drift,
                100 * used / seconds);
    closeDevice();
    setDriver(nullptr);
    return 0;
}
