// SYSTEMTIME, in which BLF files tell when a recording began and ended: UTC here, whole milliseconds.
#pragma once

#include <cstdint>
#include <optional>

namespace blf
{

constexpr std::int64_t kStartResolution = 1'000'000; // nanoseconds

// Nanoseconds since 1970; nothing when the 16 bytes are no date (a file without one has zeros).
std::optional<std::int64_t> utcFromSystemTime(const std::uint8_t *bytes);
void putSystemTime(std::int64_t utc, std::uint8_t *bytes);

} // namespace blf
