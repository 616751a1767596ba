// Numbers that stand in ASC text.
#pragma once

#include <cstdint>

namespace asc
{
// Flags of an FD frame's line.
constexpr std::uint32_t kRemote = 0x10;
constexpr std::uint32_t kFd = 0x1000;
constexpr std::uint32_t kBitRateSwitch = 0x2000;
constexpr std::uint32_t kErrorState = 0x4000;
} // namespace asc
