// Units of time that every layer shares.
#pragma once

#include <cstdint>

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr std::int64_t kNanosecondsPerMicrosecond = 1000;
constexpr std::int64_t kMillisecondsPerDay = 86'400'000;
