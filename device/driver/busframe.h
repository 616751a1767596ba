// A frame as it travels on a bus, and the ways between it and the driver's records.
#pragma once

#include "device/driver/wirerecords.h"

struct BusFrame {
    std::uint32_t id = 0;    // identifier word: identifier, kIdExtendedFlag, kIdRemoteFlag
    std::uint8_t length = 0; // data bytes; of a remote frame: the length it asks for
    bool fd = false;
    bool bitRateSwitch = false;
    bool errorStateIndicator = false; // FD: the sender is error passive
    std::uint8_t data[kFdDataBytes] = {};

    bool extended() const { return (id & kIdExtendedFlag) != 0; }
    bool remote() const { return (id & kIdRemoteFlag) != 0; }
    std::uint32_t identifier() const { return id & kIdMask; }
};

// The length an FD frame of so many bytes has on the wire (8, 12, 16, 20, 24, 32, 48, 64; up to 8 every length).
std::uint8_t fdWireLength(unsigned bytes);

// false when the record cannot be a frame: a standard identifier above 11 bits or an unknown transmit type. Lengths
// past the end of the data are cut; the padding of an FD frame is zero; an FD frame is never remote.
bool toBusFrame(const CanTransmitRecord &record, BusFrame *frame);
bool toBusFrame(const CanFdTransmitRecord &record, BusFrame *frame);

void fillRecord(const BusFrame &frame, std::uint64_t timeStamp, CanReceiveRecord *record);
void fillRecord(const BusFrame &frame, std::uint64_t timeStamp, CanFdReceiveRecord *record);

// The bits that nodes compete with, first bit in the highest place: the lower key wins the bus.
std::uint32_t arbitrationKey(const BusFrame &frame);
