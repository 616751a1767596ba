// BLF objects that are frames of a CAN bus, to and from raw frames.
#pragma once

#include "traces/blflayout.h"
#include "traces/rawframe.h"

#include <cstddef>
#include <cstdint>

namespace blf
{

constexpr std::size_t kMaxEncodedBytes = kObjectHeaderBytes + fderror::kData + kRawDataBytes;

// FD objects count channels in a byte; a channel above is written as this one.
constexpr unsigned kLargestFdChannel = 255;

bool isFrameType(std::uint32_t type);
// Comments, statistics and other objects that no bus has carried.
bool isNoTraffic(std::uint32_t type);

// Reads the object of so many bytes whose header is headerBytes long (at least 16, at most size). False when the object
// is too short for its type.
bool decode(const std::uint8_t *object, std::size_t size, std::size_t headerBytes, RawFrame *frame);

// Writes one frame as an object (at most kMaxEncodedBytes), its time moved by so many nanoseconds, padding not
// included; returns its size.
std::size_t encode(const RawFrame &frame, std::int64_t later, std::uint8_t *object);

} // namespace blf
