#include "frames/framesender.h"

#include "device/devicelayer.h"
#include "frames/adapterclock.h"
#include "frames/framebuilder.h"
#include "frames/pendingframes.h"
#include "frames/rawrecords.h"
#include "frames/tap.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

namespace
{

// The driver takes one sender a channel at a time.
std::mutex senderLocks[kChannelCount];

bool transmit(unsigned channel, const CanTransmitRecord *records, unsigned count)
{
    return sendCan(channel, records, count);
}

bool transmit(unsigned channel, const CanFdTransmitRecord *records, unsigned count)
{
    return sendCanFd(channel, records, count);
}

template <typename Record> void feedTap(unsigned channel, const Record *records, unsigned count, std::int64_t time)
{
    constexpr unsigned kAtOnce = 64;
    std::array<RawFrame, kAtOnce> frames;
    for (unsigned i = 0; i < count; i += kAtOnce) {
        const unsigned size = std::min(kAtOnce, count - i);
        std::transform(records + i, records + i + size, frames.begin(),
                       [&](const Record &record) { return toRawFrame(record, channel, time); });
        publishToTap(frames.data(), size);
    }
}

template <typename Record> bool send(unsigned channel, const Record *records, unsigned count)
{
    const std::lock_guard<std::mutex> turn(senderLocks[channel != 0 ? 1 : 0]);
    const bool tapped = tapHasReaders();
    const std::int64_t time = tapped ? adapterNow(channel) : 0;
    const bool taken = transmit(channel, records, count);
    if (tapped && taken)
        feedTap(channel, records, count, time);
    return taken;
}

template <typename Record> void show(unsigned channel, const Record *records, unsigned count)
{
    if (!pendingFramesTaken())
        return;
    QList<ModelItem> batch;
    batch.reserve(static_cast<int>(count));
    for (const Record *record = records; record != records + count; ++record)
        appendItem(batch, *record, channel);
    appendPendingFrames(std::move(batch));
}

template <typename Record> SendResult sendAs(unsigned channel, const RawFrame &frame, TransmitType type)
{
    Record record;
    toRecord(frame, type, record);
    if (!send(channel, &record, 1))
        return SendResult::Refused;
    show(channel, &record, 1);
    return SendResult::Taken;
}

} // namespace

bool sendRecords(unsigned channel, const CanTransmitRecord *records, unsigned count)
{
    return send(channel, records, count);
}

bool sendRecords(unsigned channel, const CanFdTransmitRecord *records, unsigned count)
{
    return send(channel, records, count);
}

SendersHalted::SendersHalted() : halted_(std::try_lock(senderLocks[0], senderLocks[1]) == -1) {}

SendersHalted::~SendersHalted()
{
    if (!halted_)
        return;
    for (std::mutex &lock : senderLocks)
        lock.unlock();
}

void showSent(unsigned channel, const CanTransmitRecord *records, unsigned count)
{
    show(channel, records, count);
}

void showSent(unsigned channel, const CanFdTransmitRecord *records, unsigned count)
{
    show(channel, records, count);
}

SendResult sendRaw(unsigned channel, const RawFrame &frame, TransmitType type)
{
    if (channel >= kChannelCount || !isSendable(frame))
        return SendResult::Unsendable;
    return frame.fd ? sendAs<CanFdTransmitRecord>(channel, frame, type)
                    : sendAs<CanTransmitRecord>(channel, frame, type);
}
