// The statistics of a recording or of live traffic: every channel, every identifier. One thread at a time.
#pragma once

#include "statistics/channelstatistics.h"
#include "statistics/identifierstatistics.h"

#include <map>

class BusStatistics
{
public:
    // Channels kept at most; frames of later ones are counted by beyondCeiling() alone.
    static constexpr std::size_t kMaxChannels = 64;

    // Rates of a channel (from 1), from its next frame on; nothing happens past the ceiling.
    void setRates(unsigned channel, const BusRates &rates);

    void add(const RawFrame *frames, std::size_t count);
    // Time passes without frames, nanoseconds on the frames' clock: the loads of every channel fall.
    void advance(std::int64_t time);
    // Forgets everything counted; the rates stay.
    void clear();

    // Channels that had a frame or were given rates, by number.
    const std::map<unsigned, ChannelStatistics> &channels() const { return channels_; }
    const IdentifierTable &identifiers() const { return identifiers_; }
    // Frames that no identifier or no channel could be kept for.
    std::uint64_t beyondCeiling() const { return beyondChannels_ + identifiers_.beyondCeiling(); }

private:
    ChannelStatistics *channel(unsigned number);

    std::map<unsigned, ChannelStatistics> channels_;
    IdentifierTable identifiers_;
    std::uint64_t beyondChannels_ = 0;
};
