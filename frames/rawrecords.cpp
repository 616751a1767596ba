#include "frames/rawrecords.h"

#include "device/devicelayer.h"
#include "frames/adapterclock.h"

#include <algorithm>

namespace
{

template <typename Record> RawFrame convert(const Record &record, unsigned channel, Direction direction)
{
    RawFrame frame;
    frame.id = record.id & kIdMask;
    frame.channel = static_cast<std::uint16_t>(channel + 1);
    frame.direction = direction;
    frame.extended = (record.id & kIdExtendedFlag) != 0;
    frame.remote = (record.id & kIdRemoteFlag) != 0;
    frame.length = static_cast<std::uint8_t>(std::min<std::size_t>(record.length, sizeof record.data));
    if constexpr (sizeof record.data == kFdDataBytes) {
        frame.fd = true;
        frame.bitRateSwitch = record.flags == kFdBitRateSwitch;
    }
    if (!frame.remote)
        std::copy_n(record.data, frame.length, frame.data);
    return frame;
}

template <typename Record> RawFrame received(const Record &record, unsigned channel)
{
    RawFrame frame = convert(record, channel, Direction::Received);
    frame.time = nanoseconds(record.timeStamp);
    return frame;
}

template <typename Record> RawFrame sent(const Record &record, unsigned channel, std::int64_t time)
{
    RawFrame frame = convert(record, channel, Direction::Sent);
    frame.time = time;
    frame.comesBack = record.transmitType == static_cast<std::uint32_t>(TransmitType::SelfReceive) ||
                      record.transmitType == static_cast<std::uint32_t>(TransmitType::SingleSelfReceive);
    return frame;
}

template <typename Record> void fill(const RawFrame &frame, TransmitType type, Record &record)
{
    record = Record{};
    record.id = makeFrameId(frame.id, frame.extended, frame.remote, 0);
    record.length = frame.length;
    if (!frame.remote)
        std::copy_n(frame.data, std::min<std::size_t>(frame.length, sizeof record.data), record.data);
    record.transmitType = static_cast<std::uint32_t>(type);
}

} // namespace

RawFrame toRawFrame(const CanReceiveRecord &record, unsigned channel)
{
    return received(record, channel);
}

RawFrame toRawFrame(const CanFdReceiveRecord &record, unsigned channel)
{
    RawFrame frame = received(record, channel);
    frame.errorStateIndicator = record.errorStateIndicator != 0;
    return frame;
}

RawFrame toRawFrame(const CanTransmitRecord &record, unsigned channel, std::int64_t time)
{
    return sent(record, channel, time);
}

RawFrame toRawFrame(const CanFdTransmitRecord &record, unsigned channel, std::int64_t time)
{
    return sent(record, channel, time);
}

bool isSendable(const RawFrame &frame)
{
    const bool idFits = frame.id <= largestId(frame.extended);
    const bool lengthFits =
        frame.fd ? frame.length <= kFdDataBytes && lengthOfDlc(dlcOfLength(frame.length), true) == frame.length
                 : frame.length <= kClassicDataBytes;
    return idFits && lengthFits && !frame.error && !(frame.fd && frame.remote);
}

void toRecord(const RawFrame &frame, TransmitType type, CanTransmitRecord &record)
{
    fill(frame, type, record);
}

void toRecord(const RawFrame &frame, TransmitType type, CanFdTransmitRecord &record)
{
    fill(frame, type, record);
    record.flags = frame.bitRateSwitch ? kFdBitRateSwitch : 0;
}
