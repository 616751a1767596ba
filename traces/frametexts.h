// The words that the texts of a frame are made of: written by the builders, recognised when rows are read back.
#pragma once

#include "device/language.h"

#include <QString>

#include <cstdint>

struct FrameWords {
    QString standardFrame;
    QString extendedFrame;
    QString dataFrame;
    QString remoteFrame;
    QString fdWithSwitch; // protocol of an FD frame with bit-rate switch
};

// The words of a language; a code above English has no words for format and type, and the bare FD protocol.
const FrameWords &frameWords(unsigned code);

// Hexadecimal in capitals, with as many digits as its format has: "07F", "0000007F".
QString identifierText(std::uint32_t id, bool extended);

// Decimal text of a small number (up to 64), shared instead of made anew.
const QString &smallNumberText(unsigned number);
constexpr unsigned kLargestSmallNumber = 64;
