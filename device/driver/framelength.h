// How many bits a frame has on the wire, every stuff bit and the interframe space included.
#pragma once

#include "device/driver/busframe.h"

// All that the bits of a frame depend on.
struct FrameOnWire {
    std::uint32_t id = 0; // identifier word: identifier, kIdExtendedFlag, kIdRemoteFlag
    bool fd = false;      // ISO; never remote
    bool bitRateSwitch = false;
    bool errorStateIndicator = false;
    std::uint8_t length = 0; // data bytes; of a remote frame: the length it asks for. FD lengths are rounded up
    std::uint8_t rawDlc = 0; // 9..15: the DLC with which a classic frame of 8 bytes is sent; else 0
    const std::uint8_t *data = nullptr; // so many bytes, at most 8 or 64; not looked at without any
};

struct FrameBits {
    unsigned arbitration = 0; // bits at the arbitration rate; all of them where the rate is not switched
    unsigned data = 0;        // bits at the data rate

    unsigned total() const { return arbitration + data; }
};

// Exact; ISO 11898-1. Classic frames: dynamic stuff bits from the start of frame to the end of the computed CRC. FD:
// dynamic ones to the end of the data field, fixed ones from there on. The rate is taken to switch between bits: after
// the bit-rate switch bit, and after the CRC delimiter.
FrameBits frameBits(const FrameOnWire &frame);
FrameBits frameBits(const BusFrame &frame);

// Nanoseconds; rates in bit/s, not 0.
std::uint64_t wireTime(const FrameBits &bits, std::uint32_t arbitrationRate, std::uint32_t dataRate);

// What an error frame adds after the part of the frame that it destroys, interframe space included: the flag, eight
// bits of delimiter, three of interframe space. The flag has six bits when all nodes find the error in the same bit; at
// most twelve, when others answer the first one's. All at the arbitration rate.
constexpr unsigned kErrorFrameBits = 6 + 8 + 3;
constexpr unsigned kLongestErrorFrameBits = 12 + 8 + 3;
