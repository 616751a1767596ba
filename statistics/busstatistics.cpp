#include "statistics/busstatistics.h"

ChannelStatistics *BusStatistics::channel(unsigned number)
{
    const auto found = channels_.find(number);
    if (found != channels_.end())
        return &found->second;
    return channels_.size() < kMaxChannels ? &channels_[number] : nullptr;
}

void BusStatistics::setRates(unsigned channel, const BusRates &rates)
{
    if (ChannelStatistics *statistics = this->channel(channel))
        statistics->setRates(rates);
}

void BusStatistics::add(const RawFrame *frames, std::size_t count)
{
    unsigned number = 0; // no channel's
    ChannelStatistics *statistics = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
        if (frames[i].channel != number || i == 0) {
            number = frames[i].channel;
            statistics = channel(number);
        }
        if (!statistics) {
            ++beyondChannels_;
            continue;
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
    beyondChannels_ = 0;
}
