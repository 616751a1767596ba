#include "device/driver/busframe.h"

#include <algorithm>
#include <cstring>

namespace
{

template <typename Record> bool isFrame(const Record &record)
{
    const bool extended = (record.id & kIdExtendedFlag) != 0;
    return (extended || (record.id & kIdMask) < kStandardIdLimit) &&
           record.transmitType <= static_cast<std::uint32_t>(TransmitType::SingleSelfReceive);
}

} // namespace

std::uint8_t fdWireLength(unsigned bytes)
{
    constexpr std::uint8_t kLengths[] = {12, 16, 20, 24, 32, 48};
    if (bytes <= kClassicDataBytes)
        return static_cast<std::uint8_t>(bytes);
    for (const std::uint8_t length : kLengths)
        if (bytes <= length)
            return length;
    return kFdDataBytes;
}

bool toBusFrame(const CanTransmitRecord &record, BusFrame *frame)
{
    if (!isFrame(record))
        return false;
    *frame = BusFrame();
    frame->id = record.id & ~kIdThirdFlag;
    frame->length = std::min<std::uint8_t>(record.length, kClassicDataBytes);
    if (!frame->remote())
        std::memcpy(frame->data, record.data, frame->length);
    return true;
}

bool toBusFrame(const CanFdTransmitRecord &record, BusFrame *frame)
{
    if (!isFrame(record))
        return false;
    *frame = BusFrame();
    frame->fd = true;
    frame->bitRateSwitch = (record.flags & kFdBitRateSwitch) != 0;
    frame->id = record.id & ~(kIdThirdFlag | kIdRemoteFlag);
    std::memcpy(frame->data, record.data, std::min<std::size_t>(record.length, kFdDataBytes));
    frame->length = fdWireLength(record.length);
    return true;
}

void fillRecord(const BusFrame &frame, std::uint64_t timeStamp, CanReceiveRecord *record)
{
    *record = CanReceiveRecord();
    record->id = frame.id;
    record->length = frame.length;
    std::memcpy(record->data, frame.data, kClassicDataBytes);
    record->timeStamp = timeStamp;
}

void fillRecord(const BusFrame &frame, std::uint64_t timeStamp, CanFdReceiveRecord *record)
{
    record->id = frame.id;
    record->length = frame.length;
    record->flags = frame.bitRateSwitch ? kFdBitRateSwitch : 0;
    record->errorStateIndicator = frame.errorStateIndicator ? 1 : 0;
    record->reserved = 0;
    std::memcpy(record->data, frame.data, kFdDataBytes);
    record->timeStamp = timeStamp;
}

std::uint32_t arbitrationKey(const BusFrame &frame)
{
    // 11 base bits; RTR (standard) or the recessive SRR (extended); IDE; 18 more identifier bits; RTR (extended).
    const std::uint32_t remote = frame.remote() ? 1 : 0;
    if (!frame.extended())
        return frame.identifier() << 21 | remote << 20;
    const std::uint32_t base = frame.identifier() >> 18;
    const std::uint32_t rest = frame.identifier() & 0x3FFFF;
    return base << 21 | 1u << 20 | 1u << 19 | rest << 1 | remote;
}
