// Changes of an entry's data from one sending to the next, as one line of text:
//   counter 0:4; toggle 7:1; ramp 16:12 100..2000 step 50; crc8-sae-j1850 7
//   counter BITS [step N]           adds N (1) to what the data have there, modulo the field
//   toggle BITS                     inverts the field with every second frame
//   ramp BITS FROM..TO [step N]     FROM, FROM + N, ... as long as it is not above TO, then again; raw numbers
//   NAME BYTE [FIRST..LAST]         a checksum into this byte, over these bytes without it (all of them)
// BITS is START:COUNT. START counts from bit 0 of byte 0; with "be" behind it the field is big-endian (Motorola) and
// START names its most significant bit. Checksums are made last, in their order.
#pragma once

#include "traces/rawframe.h"
#include "transmit/checksums.h"

#include <QString>
#include <QStringList>

#include <vector>

struct ByteChange {
    enum class Kind : std::uint8_t { Counter, Toggle, Ramp, Check };

    Kind kind = Kind::Counter;
    bool bigEndian = false;
    unsigned startBit = 0;
    unsigned bitCount = 1; // 1..64
    std::uint64_t from = 0;
    std::uint64_t to = 0;   // not below from
    std::uint64_t step = 1; // not 0
    Checksum checksum = Checksum::Sum;
    unsigned byte = 0; // of the checksum; 0..63
    unsigned first = 0;
    unsigned last = kRawDataBytes - 1; // cut to the frame's length
};

struct ByteChanges {
    std::vector<ByteChange> list;
    QString error; // in the current language, with the part that is wrong; empty: none
};
ByteChanges parseByteChanges(const QString &text);
// Whether every bit and byte that is changed lies within a frame of so many bytes.
bool changesFit(const std::vector<ByteChange> &changes, unsigned length);

// Makes the data of the frame with this number (from 0). What does not fit is left as it is.
void applyChanges(const std::vector<ByteChange> &changes, std::uint64_t number, RawFrame &frame);
