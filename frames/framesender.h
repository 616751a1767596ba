// The one way of a frame out: to the driver, and what it took to the tap.
#pragma once

#include "traces/rawframe.h"

#include "device/driver/wirerecords.h"

// Any thread; senders of one channel (0 or 1) take turns. true when the driver took the records, which then have passed
// the tap, all with the moment before the call as their time. Waits as long as the driver does; closing the channel
// ends that.
bool sendRecords(unsigned channel, const CanTransmitRecord *records, unsigned count);
bool sendRecords(unsigned channel, const CanFdTransmitRecord *records, unsigned count);

// While it holds, no frame is on its way to the driver, and senders wait. Taken at once or, while a sender is in the
// driver, not at all; any thread.
class SendersHalted
{
public:
    SendersHalted();
    ~SendersHalted();
    SendersHalted(const SendersHalted &) = delete;
    SendersHalted &operator=(const SendersHalted &) = delete;

    explicit operator bool() const { return halted_; }

private:
    const bool halted_;
};

// Rows of records for the frame list, in one batch; nothing when there is no window to take them. Any thread.
void showSent(unsigned channel, const CanTransmitRecord *records, unsigned count);
void showSent(unsigned channel, const CanFdTransmitRecord *records, unsigned count);

enum class SendResult {
    Taken,
    Refused,    // the channel is closed, or the driver did not take it: listen-only, nobody acknowledges
    Unsendable, // see isSendable()
};
// Sends one raw frame on a channel, whatever channel and time it carries, and shows it in the frame list. Any thread.
// While pendingFramesHaveRoom() is false, wait before calling.
SendResult sendRaw(unsigned channel, const RawFrame &frame, TransmitType type);
