// Bit rates of the virtual bus and the time frames take on it.
#pragma once

#include "device/driver/busframe.h"

#include <cstdint>
#include <string>

using BusTime = std::uint64_t; // nanoseconds since the device was opened

struct BusSettings {
    std::uint32_t arbitrationRate; // bit/s
    std::uint32_t dataRate;        // bit/s
    std::uint32_t fdStandard;      // 0 ISO, 1 Bosch
};

constexpr std::uint32_t kFdStandardCount = 2;

// The rates behind the indexes of the parameter dialog, in bit/s; 0 for an index past the table.
std::uint32_t arbitrationRateAt(std::uint32_t index);
std::uint32_t dataRateAt(std::uint32_t index);
// What a channel has before anything was set: the first entry of each table, ISO.
BusSettings defaultBusSettings();

// Reads a custom bit-rate text: "RATE" or "RATE RATE ...", arbitration before data. A RATE is a decimal number, then
// "k" or "M" (any case; without it bit/s), "bps" or "bit/s" as wished, and a sample point in parentheses as wished:
// "500k", "500kbps(80%) 2Mbps(80%)", "250000/1000000". Rates are parted by blanks, "/", "," or "+"; what follows the
// second is taken for timing details and is not looked at. With one rate the data rate is the same. false when a rate
// cannot be read or lies outside 5 kbit/s to 1 Mbit/s (arbitration) or 8 Mbit/s (data); *settings stays then.
bool parseCustomRates(const std::string &text, BusSettings *settings);

// Whether a node with settings `listener` understands frames of a node with settings `sender`. Rates agree within half
// a percent, as oscillators do.
bool understands(const BusSettings &listener, const BusSettings &sender, const BusFrame &frame);

// Exact time on the wire, stuff bits and interframe space included.
BusTime frameDuration(const BusFrame &frame, const BusSettings &settings);
