#include "device/driver/simulated/trafficsource.h"

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

constexpr BusTime kNanosecondsPerMs = 1000000;
constexpr double kMostLoad = 0.4;         // of the bus's time
constexpr std::uint8_t kLeastChecked = 4; // data bytes from which on the last one is a checksum

BusFrame emptyFrame(const Message &message)
{
    BusFrame frame;
    frame.id = message.id | (message.kind == Kind::Remote ? kIdRemoteFlag : 0);
    frame.length = message.length;
    frame.fd = message.kind == Kind::Fd || message.kind == Kind::FdSwitched;
    frame.bitRateSwitch = message.kind == Kind::FdSwitched;
    return frame;
}

// Rises from 0 to 0xFFFF and falls again.
std::uint16_t ramp(std::uint32_t position)
{
    const std::uint32_t phase = position & 0x1FFFF;
    return static_cast<std::uint16_t>(phase <= 0xFFFF ? phase : 0x1FFFF - phase);
}

// Byte 0 counts, bytes 1 and 2 are a ramp, byte 3 a slower one, the last is the exclusive or of the others; the rest
// stays as it is.
void fillData(BusFrame *frame, std::uint32_t count)
{
    if (frame->remote())
        return;
    const std::uint16_t fast = ramp(count * 257);
    const std::uint8_t signals[] = {static_cast<std::uint8_t>(count), static_cast<std::uint8_t>(fast >> 8),
                                    static_cast<std::uint8_t>(fast), static_cast<std::uint8_t>(ramp(count * 31) >> 8)};
    for (std::uint8_t i = 0; i < frame->length; ++i)
        frame->data[i] = i < std::size(signals) ? signals[i] : static_cast<std::uint8_t>(frame->identifier() + i);
    if (frame->length < kLeastChecked)
        return;
    std::uint8_t &checksum = frame->data[frame->length - 1];
    checksum = 0;
    for (std::uint8_t i = 0; i + 1 < frame->length; ++i)
        checksum ^= frame->data[i];
}

class BuiltInVehicle : public TrafficSource
{
public:
    void restart(BusTime start, const BusSettings &settings) override
    {
        double load = 0;
        for (const Message &message : kMessages)
            load += static_cast<double>(frameDuration(emptyFrame(message), settings)) /
                    (message.periodMs * static_cast<double>(kNanosecondsPerMs));
        const double stretch = std::max(1.0, load / kMostLoad);
        for (std::size_t i = 0; i < std::size(kMessages); ++i) {
            state_[i].period = static_cast<BusTime>(stretch * kMessages[i].periodMs * kNanosecondsPerMs);
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
        fillData(&frame_, state_[next_].count);
    }

    State state_[std::size(kMessages)] = {};
    std::size_t next_ = 0;
    BusFrame frame_;
};

} // namespace

std::unique_ptr<TrafficSource> makeBuiltInVehicle()
{
    return std::make_unique<BuiltInVehicle>();
}
