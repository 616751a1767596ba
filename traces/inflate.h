// Unpacks zlib data (RFC 1950, RFC 1951) into a buffer that is already there: whatever the data hold, no more is
// written and nothing is allocated, and of data that were cut the first part comes out.
#pragma once

#include <cstddef>
#include <cstdint>

enum class Inflated : std::uint8_t {
    Whole,   // everything, and the checksum is right
    Cut,     // the data end too early; what came out is what they begin with
    TooMuch, // more than the buffer takes
    Damaged, // not to be used
};

// *bytes: how many came out.
Inflated inflate(const std::uint8_t *packed, std::size_t size, std::uint8_t *out, std::size_t capacity,
                 std::size_t *bytes);
