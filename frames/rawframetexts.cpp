#include "frames/rawframetexts.h"

#include "device/language.h"
#include "frames/framebuilder.h"

#include <algorithm>

namespace
{
template <typename Record> ModelItem itemOf(const RawFrame &frame)
{
    Record record{};
    record.id = frame.id | (frame.extended ? kIdExtendedFlag : 0) | (frame.remote ? kIdRemoteFlag : 0);
    record.length = static_cast<decltype(record.length)>(std::min<std::size_t>(frame.length, sizeof record.data));
    if constexpr (sizeof record.data == kFdDataBytes)
        record.flags = frame.bitRateSwitch ? kFdBitRateSwitch : 0;
    std::copy_n(frame.data, record.length, record.data);
    QList<ModelItem> items;
    appendItem(items, record, frame.channel - 1U);
    return items.takeFirst();
}
} // namespace

ModelItem textsOf(const RawFrame &frame)
{
    const bool sent = frame.direction == Direction::Sent;
    ModelItem item = frame.fd ? (sent ? itemOf<CanFdTransmitRecord>(frame) : itemOf<CanFdReceiveRecord>(frame))
                              : (sent ? itemOf<CanTransmitRecord>(frame) : itemOf<CanReceiveRecord>(frame));
    item.timeStamp.clear();
    if (frame.error)
        item.typeText = text3("错误帧", "錯誤幀", "Error Frame");
    return item;
}
