// How far the identifiers of the two formats reach, and how texts write them.
#pragma once

#include <cstdint>

constexpr std::uint32_t kLargestStandardId = 0x7FF;
constexpr std::uint32_t kLargestExtendedId = 0x1FFFFFFF;
constexpr std::uint32_t kStandardIdLimit = kLargestStandardId + 1; // first value past the 11-bit identifiers
constexpr std::uint32_t kExtendedIdLimit = kLargestExtendedId + 1; // first value past the 29-bit identifiers

constexpr int kStandardIdDigits = 3;
constexpr int kExtendedIdDigits = 8;

constexpr std::uint32_t largestId(bool extended)
{
    return extended ? kLargestExtendedId : kLargestStandardId;
}

constexpr int idDigits(bool extended)
{
    return extended ? kExtendedIdDigits : kStandardIdDigits;
}
