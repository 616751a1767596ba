// Frames that nobody recorded: counted, incrementing or random.
#pragma once

#include "traces/rawframe.h"

#include <QByteArray>

#include <cstdint>
#include <random>

struct GeneratorSettings {
    enum class Way : std::uint8_t { Fixed, Increment, Random };

    Way idWay = Way::Fixed;
    std::uint32_t firstId = 0x123; // Increment goes round from the last to the first one; Random stays between them
    std::uint32_t lastId = 0x123;
    bool extended = false;
    bool remote = false;
    bool fd = false;
    bool bitRateSwitch = false;
    Way lengthWay = Way::Fixed; // Increment and Random: every length that the kind has
    std::uint8_t length = 8;
    Way dataWay = Way::Increment; // Increment: a number from 0 on, its lowest byte first
    QByteArray data;              // Fixed; what is missing is zero
    std::uint32_t seed = 0;
};

class FrameGenerator
{
public:
    explicit FrameGenerator(const GeneratorSettings &settings) : settings_(settings), random_(settings.seed) {}

    RawFrame next();

private:
    std::uint32_t nextId();
    std::uint8_t nextLength();
    void fillData(RawFrame *frame);
    // Both ends included; the same on every system.
    std::uint32_t randomFrom(std::uint32_t first, std::uint32_t last);

    const GeneratorSettings settings_;
    std::mt19937 random_;
    std::uint64_t number_ = 0;
};
