// What formats cannot hold of a frame: the kinds that every writer counts, each with one text.
#pragma once

#include "traces/tracewriter.h"

#include <array>

enum class Loss : std::uint8_t {
    ErrorFrame, // lost whole
    ErrorDetails,
    ErrorDirection,
    ErrorFd,
    Direction,
    Channel,
    Fd, // lost whole
    BitRateSwitch,
    ErrorStateIndicator,
    RemoteFd,
    RemoteLength,
    RawDlc,
    FdLength, // filled up
    TimeBeforeStart,
    Count
};

QString lossText(Loss loss); // in the current language

class LossCounts
{
public:
    void add(Loss loss) { ++counts_[static_cast<std::size_t>(loss)]; }
    // The kinds that occurred.
    std::vector<TraceLoss> list() const;

private:
    std::array<std::uint64_t, static_cast<std::size_t>(Loss::Count)> counts_{};
};
