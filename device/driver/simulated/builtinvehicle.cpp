#include "device/driver/simulated/trafficsource.h"
#include "device/driver/simulated/vehiclesignals.h"
#include "device/driver/timeunits.h"

#include <algorithm>
#include <iterator>

namespace
{
enum class Kind { Classic, Remote, Fd, FdSwitched };

struct Message {
    std::uint32_t id; // identifier, or kIdExtendedFlag and identifier
    Kind kind;
    std::uint8_t length;
    std::uint16_t periodMs;
};

constexpr std::uint32_t extended(std::uint32_t id)
{
    return id | kIdExtendedFlag;
}

constexpr Message kMessages[] = {
    {0x0C4, Kind::Classic, 8, 10},
    {0x0D1, Kind::Classic, 6, 10},
    {0x128, Kind::Classic, 8, 20},
    {0x1A6, Kind::Classic, 7, 20},
    {0x284, Kind::FdSwitched, 16, 20},
    {0x2A8, Kind::Fd, 12, 50},
    {0x2B0, Kind::FdSwitched, 32, 50},
    {0x316, Kind::Classic, 8, 50},
    {0x3C0, Kind::Classic, 2, 100},
    {0x3E8, Kind::Remote, 8, 500},
    {0x43A, Kind::Classic, 5, 100},
    {0x4F1, Kind::Classic, 0, 1000},
    {0x545, Kind::Fd, 8, 100},
    {0x5A2, Kind::Classic, 3, 500},
    {0x6B4, Kind::FdSwitched, 64, 100},
    {0x7A0, Kind::FdSwitched, 0, 500},
    {extended(0x0CF03D10), Kind::Classic, 8, 20},
    {extended(0x10A4E021), Kind::FdSwitched, 48, 100},
    {extended(0x14F21C33), Kind::Fd, 24, 200},
    {extended(0x18FA4210), Kind::Classic, 8, 100},
    {extended(0x18FF0033), Kind::Classic, 1, 250},
    {extended(0x1CE80021), Kind::Remote, 4, 1000},
    {extended(0x1D30FF21), Kind::FdSwitched, 64, 200},
};

constexpr double kMostLoad = 0.4; // of the bus's time

BusFrame emptyFrame(const Message &message)
{
    BusFrame frame;
    frame.id = message.id | (message.kind == Kind::Remote ? kIdRemoteFlag : 0);
    frame.length = message.length;
    frame.fd = message.kind == Kind::Fd || message.kind == Kind::FdSwitched;
    frame.bitRateSwitch = message.kind == Kind::FdSwitched;
    return frame;
}

class BuiltInVehicle : public TrafficSource
{
public:
    void restart(BusTime start, const BusSettings &settings) override
    {
        double load = 0;
        for (const Message &message : kMessages)
            load += static_cast<double>(frameDuration(emptyFrame(message), settings)) /
                    (message.periodMs * static_cast<double>(kNanosecondsPerMillisecond));
        start_ = start;
        const double stretch = std::max(1.0, load / kMostLoad);
        for (std::size_t i = 0; i < std::size(kMessages); ++i) {
            state_[i].period = static_cast<BusTime>(stretch * kMessages[i].periodMs * kNanosecondsPerMillisecond);
            state_[i].due = start + state_[i].period * i / std::size(kMessages); // not all at once
            state_[i].count = 0;
        }
        choose();
    }

    BusTime due() const override { return state_[next_].due; }
    const BusFrame &frame() const override { return frame_; }

    void sent(BusTime) override
    {
        state_[next_].due += state_[next_].period;
        ++state_[next_].count;
        choose();
    }

private:
    struct State {
        BusTime period;
        BusTime due;
        std::uint32_t count;
    };

    void choose()
    {
        const auto earliest = std::min_element(std::begin(state_), std::end(state_),
                                               [](const State &a, const State &b) { return a.due < b.due; });
        next_ = static_cast<std::size_t>(earliest - std::begin(state_));
        frame_ = emptyFrame(kMessages[next_]);
        const BusTime played = state_[next_].due - start_;
        fillVehicleData(&frame_, static_cast<double>(played) / kNanosecondsPerSecond, state_[next_].count);
    }

    State state_[std::size(kMessages)] = {};
    BusTime start_ = 0;
    std::size_t next_ = 0;
    BusFrame frame_;
};

} // namespace

std::unique_ptr<TrafficSource> makeBuiltInVehicle()
{
    return std::make_unique<BuiltInVehicle>();
}
