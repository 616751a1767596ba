#include "device/driver/simulated/trafficsource.h"

#include <utility>

namespace
{

// The least important identifier that needs no stuff bit: others get their turn, and no frame is shorter.
constexpr std::uint32_t kShortestFrameId = 0x7BD;
constexpr std::uint8_t kNumberBytes = 4;

class Flood : public TrafficSource
{
public:
    explicit Flood(std::vector<BusFrame> frames) : frames_(std::move(frames))
    {
        if (!frames_.empty())
            return;
        BusFrame shortest;
        shortest.id = kShortestFrameId;
        shortest.fd = true;
        shortest.bitRateSwitch = true;
        frames_.push_back(shortest);
    }

    void restart(BusTime start, const BusSettings &) override
    {
        start_ = start;
        number_ = 0;
        choose();
    }

    BusTime due() const override { return start_; }
    const BusFrame &frame() const override { return frames_[next_]; }

    void sent(BusTime) override
    {
        ++number_;
        choose();
    }

private:
    void choose()
    {
        next_ = number_ % frames_.size();
        BusFrame &frame = frames_[next_];
        if (frame.length < kNumberBytes || frame.remote())
            return;
        for (unsigned i = 0; i < kNumberBytes; ++i)
            frame.data[i] = static_cast<std::uint8_t>(number_ >> (8 * i));
    }

    std::vector<BusFrame> frames_;
    BusTime start_ = 0;
    std::uint32_t number_ = 0;
    std::size_t next_ = 0;
};

} // namespace

std::unique_ptr<TrafficSource> makeFlood(std::vector<BusFrame> frames)
{
    return std::make_unique<Flood>(std::move(frames));
}
