// One line of a candump log: "(seconds.fraction) interface identifier#data".
#pragma once

#include <cstdint>
#include <string_view>

struct CandumpLine {
    std::uint64_t time = 0;         // nanoseconds on the recorder's clock
    std::string_view interfaceName; // within the line
    std::uint32_t id = 0;           // without flags; of an error frame: the error classes
    bool extended = false;
    bool remote = false;
    bool error = false; // the controller's error report
    bool fd = false;
    std::uint8_t fdFlags = 0; // kCandumpBitRateSwitch, kCandumpErrorState
    std::uint8_t length = 0;  // a length that frames of its kind have; data that the line lacks for it are 0
    std::uint8_t rawDlc = 0;  // 9..15 where a classic frame of 8 bytes tells its DLC, else 0
    std::string_view rest;    // what follows the frame, blanks included: recorders add " R" or " T"
};

constexpr std::uint8_t kCandumpBitRateSwitch = 1;
constexpr std::uint8_t kCandumpErrorState = 2;

// One line without its line end; data has room for 64 bytes and is written up to the length. false when the
// line is no frame.
bool parseCandumpLine(std::string_view line, CandumpLine *parsed, std::uint8_t *data);
