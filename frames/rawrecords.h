// Driver records as raw frames, and back.
#pragma once

#include "traces/rawframe.h"

#include "device/driver/wirerecords.h"

// The frame of a record; channel is 0-based. A byte count above what the record can hold is cut to it. A received frame
// has its time stamp as its time, a sent one has the time given: nanoseconds of the adapter's clock.
RawFrame toRawFrame(const CanReceiveRecord &record, unsigned channel);
RawFrame toRawFrame(const CanFdReceiveRecord &record, unsigned channel);
RawFrame toRawFrame(const CanTransmitRecord &record, unsigned channel, std::int64_t time);
RawFrame toRawFrame(const CanFdTransmitRecord &record, unsigned channel, std::int64_t time);

// Whether a frame can be sent at all: no error frame, no FD remote frame, an identifier within its kind's range and a
// length that its kind has.
bool isSendable(const RawFrame &frame);
// The record that sends a frame for which isSendable() holds and whose kind (frame.fd) the record has.
void toRecord(const RawFrame &frame, TransmitType type, CanTransmitRecord &record);
void toRecord(const RawFrame &frame, TransmitType type, CanFdTransmitRecord &record);
