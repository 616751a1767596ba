// Reads recorded traffic in the log format of candump: "(seconds.fraction) interface identifier#data" a line.
#pragma once

#include "device/driver/simulated/bittiming.h"

#include <istream>
#include <string>
#include <vector>

struct LoggedFrame {
    BusTime time; // nanoseconds on the recorder's clock
    BusFrame frame;
};

struct CandumpLog {
    std::vector<LoggedFrame> frames; // in the order of the file
    std::size_t errorFrames = 0;     // lines left out: the bus's error frames
    std::size_t malformed = 0;       // lines left out: anything else that is no frame; empty lines do not count
    bool cut = false;                // the log holds more than kMaxLoggedFrames; the rest was not read
};

// A ceiling for the memory of a recorded log (about 180 MB).
constexpr std::size_t kMaxLoggedFrames = 2000000;

enum class LoggedLine { Frame, ErrorFrame, Malformed };

// One line without its line end; *frame is filled for Frame only.
LoggedLine parseLoggedLine(const std::string &line, LoggedFrame *frame);
// Everything in the stream, whatever it is made of.
CandumpLog readCandumpLog(std::istream &stream);
// false when the file cannot be read or holds no frame.
bool loadCandumpLog(const std::string &path, CandumpLog *log);
