// The statistics of a recording or of live traffic: every channel, every identifier. One thread at a time.
#pragma once

#include "statistics/channelstatistics.h"
#include "statistics/identifierstatistics.h"

#include <map>

class BusStatistics
{
public:
    // Rates of a channel (from 1), from its next frame on.
    void setRates(unsigned channel, const BusRates &rates);

    void add(const RawFrame *frames, std::size_t count);
    // Time passes without frames, nanoseconds on the frames' clock: the loads of every channel fall.
    void advance(std::int64_t time);
    // Forgets everything counted; the rates stay.
    void clear();

    // Channels that had a frame or were given rates, by number.
    const std::map<unsigned, ChannelStatistics> &channels() const { return channels_; }
    const IdentifierTable &identifiers() const { return identifiers_; }

private:
    std::map<unsigned, ChannelStatistics> channels_;
    IdentifierTable identifiers_;
};
