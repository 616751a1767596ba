#include "cli/framegenerator.h"

#include <algorithm>

namespace
{

constexpr unsigned kClassicLengths = 9; // 0 to 8
constexpr unsigned kFdLengths = 16;
constexpr unsigned kCounterBytes = 8;

} // namespace

RawFrame FrameGenerator::next()
{
    RawFrame frame;
    frame.id = nextId();
    frame.extended = settings_.extended;
    frame.remote = settings_.remote;
    frame.fd = settings_.fd;
    frame.bitRateSwitch = settings_.bitRateSwitch;
    frame.length = nextLength();
    fillData(&frame);
    ++number_;
    return frame;
}

std::uint32_t FrameGenerator::nextId()
{
    const std::uint64_t span = std::uint64_t(settings_.lastId) - settings_.firstId + 1;
    switch (settings_.idWay) {
    case GeneratorSettings::Way::Increment:
        return settings_.firstId + static_cast<std::uint32_t>(number_ % span);
    case GeneratorSettings::Way::Random:
        return randomFrom(settings_.firstId, settings_.lastId);
    case GeneratorSettings::Way::Fixed:
        break;
    }
    return settings_.firstId;
}

std::uint8_t FrameGenerator::nextLength()
{
    const unsigned lengths = settings_.fd ? kFdLengths : kClassicLengths;
    switch (settings_.lengthWay) {
    case GeneratorSettings::Way::Increment:
        return lengthOfDlc(static_cast<unsigned>(number_ % lengths), settings_.fd);
    case GeneratorSettings::Way::Random:
        return lengthOfDlc(randomFrom(0, lengths - 1), settings_.fd);
    case GeneratorSettings::Way::Fixed:
        break;
    }
    return settings_.length;
}

void FrameGenerator::fillData(RawFrame *frame)
{
    if (frame->remote)
        return;
    for (unsigned i = 0; i < frame->length; ++i) {
        switch (settings_.dataWay) {
        case GeneratorSettings::Way::Increment:
            frame->data[i] = i < kCounterBytes ? static_cast<std::uint8_t>(number_ >> (8 * i)) : 0;
            break;
        case GeneratorSettings::Way::Random:
            frame->data[i] = static_cast<std::uint8_t>(randomFrom(0, 0xFF));
            break;
        case GeneratorSettings::Way::Fixed:
            if (static_cast<int>(i) < settings_.data.size())
                frame->data[i] = static_cast<std::uint8_t>(settings_.data[static_cast<int>(i)]);
            break;
        }
    }
}

std::uint32_t FrameGenerator::randomFrom(std::uint32_t first, std::uint32_t last)
{
    const std::uint64_t span = std::uint64_t(last) - first + 1;
    return first + static_cast<std::uint32_t>((std::uint64_t(random_()) * span) >> 32);
}
