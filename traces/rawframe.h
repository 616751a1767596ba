// A frame as it went over a bus, with its time: what recordings, statistics and signals work on. Texts are the frame
// list's own affair.
#pragma once

#include <cstdint>

constexpr unsigned kClassicBytes = 8;
constexpr unsigned kRawDataBytes = 64;

enum class Direction : std::uint8_t { Received, Sent };

struct RawFrame {
    std::int64_t time = 0; // nanoseconds since the recording's start; may go back in a damaged or merged recording
    std::uint32_t id = 0;  // 11 or 29 bits without flags; of an error frame: SocketCAN's error classes, 0 if unknown
    std::uint16_t channel = 1; // from 1, as users and recordings count
    Direction direction = Direction::Received;
    bool extended = false;
    bool remote = false;
    bool fd = false;
    bool bitRateSwitch = false;
    bool errorStateIndicator = false;
    bool error = false;      // an error frame; its data are laid out as SocketCAN's when length is 8
    bool comesBack = false;  // sent, and received by its own sender as well
    std::uint8_t length = 0; // data bytes, 0..8 or 0..64; of a remote frame: the length it asks for
    std::uint8_t rawDlc = 0; // 9..15: the DLC with which a classic frame of 8 bytes was sent; else 0
    std::uint8_t data[kRawDataBytes] = {};
};

// Equal in everything but the time; data beyond the length do not count, and a remote frame has none.
bool sameFrame(const RawFrame &a, const RawFrame &b);

// The data length code of so many bytes (0..15), rounded up to the next length that FD has.
std::uint8_t dlcOfLength(unsigned length);
// The bytes behind a data length code; codes above 8 mean 8 bytes in a classic frame.
std::uint8_t lengthOfDlc(unsigned dlc, bool fd);
