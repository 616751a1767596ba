// The words and numbers of the statistics window, in the current language.
#pragma once

#include "device/driver/busevent.h"
#include "statistics/livestatistics.h"

#include <QString>

QString kindText(FrameKind kind);
// Of an identifier: standard, extended, remote or error.
QString kindText(const IdentifierKey &key);
QString directionText(Direction direction); // "Rx", "Tx"
// "0x123", "0x18FF50E5": as many digits as its kind has.
QString idText(const IdentifierKey &key);
QString dataText(const RawFrame &frame); // "01 02 AB"; nothing of a remote frame
QString unknownText();
QString percentText(std::optional<double> share); // "23.4 %" or "unknown"
QString rateText(std::uint32_t bitsPerSecond);    // "500 kbit/s", "2 Mbit/s" or "unknown"
QString stateText(const ChannelState &state);     // with the error counters
QString millisecondsText(double nanoseconds);     // "10.000"
QString secondsText(std::int64_t nanoseconds);    // "12.345"
QString violationName(Violation::Kind kind);
// A line for the operation log.
QString violationLine(const Violation &violation);
