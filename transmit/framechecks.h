// What may be sent and what its fields let the user type: the same for the send panels and the transmit list.
#pragma once

#include <QString>

// Patterns of the fields. The identifier is hexadecimal, with or without "0x".
constexpr char kIdentifierPattern[] = "^(0[xX])?[0-9a-fA-F]{1,8}$";
constexpr char kIntervalPattern[] = "^[0-9]{1,9}$"; // milliseconds

constexpr unsigned kLongestInterval = 999'999'999; // milliseconds; what the pattern lets through
constexpr unsigned kLongestClassicFrame = 8;       // data bytes

// The choices of a frame, in the order in which both show them.
enum FrameFormat { StandardFormat = 0, ExtendedFormat = 1 };
enum FrameType { DataFrame = 0, RemoteFrame = 1 };
enum FrameProtocol { ClassicCan = 0, CanFd = 1, CanFdBitRateSwitch = 2 };

// The identifier of the text when it is within the format's range; text that is no number reads as 0.
bool identifierFits(const QString &text, bool extended, unsigned *identifier);
// Tells the range, in the current language and in the words of the panel of this channel (from 0).
QString identifierRangeText(bool extended, unsigned channel);
