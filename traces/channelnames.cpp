#include "traces/channelnames.h"

#include <algorithm>

namespace
{

constexpr unsigned kLastChannel = 0xFFFF;

// 0 when there is none, or one above what channels are numbered with.
unsigned channelOfNumber(std::string_view name)
{
    const std::size_t digits = name.find_last_not_of("0123456789") + 1; // 0 when all are
    if (digits == name.size())
        return 0;
    unsigned number = 0;
    for (const char c : name.substr(digits)) {
        number = number * 10 + static_cast<unsigned>(c - '0');
        if (number >= kLastChannel)
            return 0;
    }
    return number + 1;
}

} // namespace

std::uint16_t ChannelNames::lookUp(std::string_view name)
{
    auto found = std::find_if(known_.begin(), known_.end(), [name](const Named &named) { return named.name == name; });
    if (found == known_.end()) {
        unsigned channel = channelOfNumber(name);
        if (known_.size() == kMostNames)
            return 0;
        if (channel == 0 || taken(channel))
            for (channel = 1; taken(channel);)
                ++channel;
        known_.push_back({std::string(name), static_cast<std::uint16_t>(channel)});
        found = known_.end() - 1;
    }
    lastName_ = found->name;
    lastChannel_ = found->channel;
    return lastChannel_;
}

bool ChannelNames::taken(unsigned channel) const
{
    return std::any_of(known_.begin(), known_.end(),
                       [channel](const Named &named) { return named.channel == channel; });
}
