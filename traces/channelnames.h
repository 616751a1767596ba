// The channels that the interface names of a log stand for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// A name that ends in a number n is channel n + 1 (can0 is channel 1), unless another name has it already; it and a
// name without a number get the lowest channel that is free when they first appear.
class ChannelNames
{
public:
    static constexpr std::size_t kMostNames = 255;

    // 0 when kMostNames are known already.
    std::uint16_t channelOf(std::string_view name)
    {
        return name == lastName_ && lastChannel_ > 0 ? lastChannel_ : lookUp(name);
    }
    // Names met so far.
    std::size_t count() const { return known_.size(); }

private:
    std::uint16_t lookUp(std::string_view name);
    bool taken(unsigned channel) const;

    struct Named {
        std::string name;
        std::uint16_t channel;
    };
    std::vector<Named> known_;
    std::string lastName_;
    std::uint16_t lastChannel_ = 0;
};
