#include "statistics/busstatistics.h"

void BusStatistics::setRates(unsigned channel, const BusRates &rates)
{
    channels_[channel].setRates(rates);
}

void BusStatistics::add(const RawFrame *frames, std::size_t count)
{
    unsigned channel = 0;
    ChannelStatistics *statistics = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
        if (!statistics || frames[i].channel != channel) {
            channel = frames[i].channel;
            statistics = &channels_[channel];
        }
        statistics->add(frames[i]);
        identifiers_.add(frames[i]);
    }
}

void BusStatistics::advance(std::int64_t time)
{
    for (auto &channel : channels_)
        channel.second.advance(time);
}

void BusStatistics::clear()
{
    for (auto &channel : channels_)
        channel.second = ChannelStatistics(channel.second.rates());
    identifiers_.clear();
}
