// The bit rates behind a channel's stored parameters.
#pragma once

#include <cstdint>

struct ChannelRates {
    std::uint32_t arbitration = 0; // bit/s; 0: a custom text that names no rate
    std::uint32_t data = 0;        // bit/s
};

// Channel 0 or 1. Any thread.
ChannelRates channelRates(unsigned channel);
