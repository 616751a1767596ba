// What TRC files are made of: the columns of each version and the numbers of their header.
#pragma once

#include "device/driver/timeunits.h"

#include <cstdint>
#include <string_view>

namespace trc
{

constexpr std::string_view kVersionKey = ";$FILEVERSION=";
constexpr std::string_view kStartKey = ";$STARTTIME=";
constexpr std::string_view kColumnsKey = ";$COLUMNS=";

// Columns, as $COLUMNS names them.
enum Column : char {
    kNumber = 'N',
    kOffset = 'O', // milliseconds from the start
    kType = 'T',
    kBus = 'B',
    kId = 'I',
    kDirection = 'd',
    kReserved = 'R',
    kLength = 'l', // bytes
    kCode = 'L',   // data length code
    kData = 'D',
};

// The columns of the versions that do not name them, or that leave the line out.
constexpr std::string_view kColumns10 = "NOILD"; // the code and not the length: both are the same up to 8
constexpr std::string_view kColumns11 = "NOTILD";
constexpr std::string_view kColumns12 = "NOBTILD";
constexpr std::string_view kColumns13 = "NOBTIRLD";
constexpr std::string_view kColumns20 = "NOTIdlD";
constexpr std::string_view kColumns21 = "NOTBIdRLD";

constexpr std::size_t kStandardDigits = 4;
constexpr std::size_t kExtendedDigits = 8;
constexpr std::string_view kStatusId = "FFFFFFFF"; // versions 1.x: a state of the bus and no frame
constexpr unsigned kLargestCode = 15;
constexpr unsigned kLargestBus = 0xFFFF;

constexpr std::int64_t kNanosecondsPerDay = 86'400'000'000'000;
constexpr unsigned kDaysTo1970 = 25569; // from 1899-12-30
constexpr unsigned kMostDays = 106'000; // whose nanoseconds fit 64 bits

} // namespace trc
