#include "traces/blfobjects.h"

#include "device/driver/identifiers.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>

namespace blf
{

namespace
{

constexpr std::int64_t kTenMicroseconds = 10'000;

template <typename T> T at(const std::uint8_t *bytes, std::size_t offset)
{
    return qFromLittleEndian<T>(bytes + offset);
}

template <typename T> void put(std::uint8_t *bytes, std::size_t offset, T value)
{
    qToLittleEndian<T>(value, bytes + offset);
}

void setId(std::uint32_t raw, RawFrame *frame)
{
    frame->id = raw & kLargestExtendedId;
    frame->extended = (raw & kExtendedBit) != 0;
}

std::uint32_t rawId(const RawFrame &frame)
{
    return (frame.id & kLargestExtendedId) | (frame.extended ? kExtendedBit : 0);
}

// Channels are counted from 1; a file's 0 means the first.
std::uint16_t channelFrom1(unsigned raw)
{
    return static_cast<std::uint16_t>(std::max(raw, 1U));
}

std::uint8_t shortChannel(const RawFrame &frame)
{
    return static_cast<std::uint8_t>(std::min<unsigned>(frame.channel, kLargestFdChannel));
}

void setDlc(unsigned dlc, RawFrame *frame)
{
    frame->length = lengthOfDlc(dlc, false);
    frame->rawDlc = dlc > kClassicBytes && dlc <= 15 ? static_cast<std::uint8_t>(dlc) : 0;
}

// Takes the data of which the object says how many are valid, and really holds so many.
void setData(const std::uint8_t *data, std::size_t valid, std::size_t held, RawFrame *frame)
{
    const std::size_t count = std::min({valid, held, std::size_t{kRawDataBytes}});
    std::memcpy(frame->data, data, count);
    frame->length = static_cast<std::uint8_t>(count);
    if (count != kClassicBytes)
        frame->rawDlc = 0;
}

// What classic and FD objects begin with.
void decodeHead(const std::uint8_t *body, RawFrame *frame)
{
    frame->channel = channelFrom1(at<std::uint16_t>(body, can::kChannel));
    const std::uint8_t flags = body[can::kFlags];
    frame->direction = (flags & kFlagSent) != 0 ? Direction::Sent : Direction::Received;
    frame->remote = (flags & kFlagRemote) != 0;
    setId(at<std::uint32_t>(body, can::kId), frame);
}

bool decodeClassic(const std::uint8_t *body, std::size_t size, RawFrame *frame)
{
    if (size < can::kBytes)
        return false;
    decodeHead(body, frame);
    setDlc(body[can::kDlc], frame);
    if (!frame->remote)
        std::memcpy(frame->data, body + can::kData, frame->length);
    return true;
}

bool decodeFd(const std::uint8_t *body, std::size_t size, RawFrame *frame)
{
    if (size < canfd::kData)
        return false;
    decodeHead(body, frame);
    const std::uint8_t fdFlags = body[canfd::kFdFlags];
    frame->fd = (fdFlags & canfd::kFd) != 0;
    frame->bitRateSwitch = frame->fd && (fdFlags & canfd::kBitRateSwitch) != 0;
    frame->errorStateIndicator = frame->fd && (fdFlags & canfd::kErrorState) != 0;
    if (!frame->fd)
        setDlc(body[can::kDlc], frame);
    else if (frame->remote)
        frame->length = lengthOfDlc(body[can::kDlc], true);
    if (!frame->remote)
        setData(body + canfd::kData, frame->fd ? body[canfd::kValid] : frame->length, size - canfd::kData, frame);
    return true;
}

bool decodeFd64(const std::uint8_t *body, std::size_t size, RawFrame *frame)
{
    if (size < canfd64::kData)
        return false;
    frame->channel = channelFrom1(body[canfd64::kChannel]);
    frame->direction = body[canfd64::kDirection] != 0 ? Direction::Sent : Direction::Received;
    setId(at<std::uint32_t>(body, canfd64::kId), frame);
    const auto flags = at<std::uint32_t>(body, canfd64::kFlags);
    frame->remote = (flags & canfd64::kRemote) != 0;
    frame->fd = (flags & canfd64::kFd) != 0;
    frame->bitRateSwitch = frame->fd && (flags & canfd64::kBitRateSwitch) != 0;
    frame->errorStateIndicator = frame->fd && (flags & canfd64::kErrorState) != 0;
    if (!frame->fd)
        setDlc(body[canfd64::kDlc], frame);
    if (frame->remote && frame->fd)
        frame->length = lengthOfDlc(body[canfd64::kDlc], true);
    if (!frame->remote)
        setData(body + canfd64::kData, frame->fd ? body[canfd64::kValid] : frame->length, size - canfd64::kData, frame);
    return true;
}

bool decodeError(std::uint32_t type, const std::uint8_t *body, std::size_t size, RawFrame *frame)
{
    if (size < (type == CanError ? error::kShortBytes : error::kBytes))
        return false;
    frame->error = true;
    frame->channel = channelFrom1(at<std::uint16_t>(body, error::kChannel));
    if (type == CanError)
        return true;
    setId(at<std::uint32_t>(body, error::kId), frame);
    setData(body + error::kData, lengthOfDlc(body[error::kDlc], false), kClassicBytes, frame);
    return true;
}

bool decodeFdError(const std::uint8_t *body, std::size_t size, RawFrame *frame)
{
    if (size < fderror::kData)
        return false;
    frame->error = true;
    frame->fd = true;
    frame->channel = channelFrom1(body[fderror::kChannel]);
    const auto flags = at<std::uint16_t>(body, fderror::kFlags);
    frame->bitRateSwitch = (flags & canfd64::kBitRateSwitch) != 0;
    frame->errorStateIndicator = (flags & canfd64::kErrorState) != 0;
    setId(at<std::uint32_t>(body, fderror::kId), frame);
    setData(body + fderror::kData, body[fderror::kValid], size - fderror::kData, frame);
    return true;
}

std::int64_t timeOf(const std::uint8_t *object)
{
    constexpr std::uint64_t kLatest = std::numeric_limits<std::int64_t>::max();
    const auto raw = at<std::uint64_t>(object, objectheader::kTime);
    if (at<std::uint32_t>(object, objectheader::kFlags) == kTimeIsTenMicroseconds)
        return static_cast<std::int64_t>(std::min(raw, kLatest / kTenMicroseconds) * kTenMicroseconds);
    return static_cast<std::int64_t>(std::min(raw, kLatest));
}

std::size_t encodeClassic(const RawFrame &frame, std::uint8_t *body)
{
    put<std::uint16_t>(body, can::kChannel, frame.channel);
    body[can::kFlags] = static_cast<std::uint8_t>((frame.direction == Direction::Sent ? kFlagSent : 0) |
                                                  (frame.remote ? kFlagRemote : 0));
    const unsigned length = std::min<unsigned>(frame.length, kClassicBytes);
    body[can::kDlc] =
        length == kClassicBytes && frame.rawDlc > kClassicBytes ? frame.rawDlc : static_cast<std::uint8_t>(length);
    put<std::uint32_t>(body, can::kId, rawId(frame));
    if (!frame.remote)
        std::memcpy(body + can::kData, frame.data, length);
    return can::kBytes;
}

std::size_t encodeFd64(const RawFrame &frame, std::uint8_t *body)
{
    const unsigned length = std::min<unsigned>(frame.length, kRawDataBytes);
    body[canfd64::kChannel] = shortChannel(frame);
    body[canfd64::kDlc] = dlcOfLength(length);
    body[canfd64::kValid] = static_cast<std::uint8_t>(frame.remote ? 0 : length);
    put<std::uint32_t>(body, canfd64::kId, rawId(frame));
    put<std::uint32_t>(body, canfd64::kFlags,
                       canfd64::kFd | (frame.remote ? canfd64::kRemote : 0) |
                           (frame.bitRateSwitch ? canfd64::kBitRateSwitch : 0) |
                           (frame.errorStateIndicator ? canfd64::kErrorState : 0));
    body[canfd64::kDirection] = frame.direction == Direction::Sent ? 1 : 0;
    if (frame.remote)
        return canfd64::kData;
    std::memcpy(body + canfd64::kData, frame.data, length);
    return canfd64::kData + length;
}

std::size_t encodeError(const RawFrame &frame, std::uint8_t *body)
{
    const unsigned length = std::min<unsigned>(frame.length, kClassicBytes);
    put<std::uint16_t>(body, error::kChannel, frame.channel);
    body[error::kDlc] = static_cast<std::uint8_t>(length);
    put<std::uint32_t>(body, error::kId, rawId(frame));
    std::memcpy(body + error::kData, frame.data, length);
    return error::kBytes;
}

std::size_t encodeFdError(const RawFrame &frame, std::uint8_t *body)
{
    const unsigned length = std::min<unsigned>(frame.length, kRawDataBytes);
    body[fderror::kChannel] = static_cast<std::uint8_t>(frame.channel);
    body[fderror::kChannel] = shortChannel(frame);
    body[fderror::kDlc] = dlcOfLength(length);
    body[fderror::kValid] = static_cast<std::uint8_t>(length);
    put<std::uint16_t>(body, fderror::kFlags,
                       static_cast<std::uint16_t>(canfd64::kFd | (frame.bitRateSwitch ? canfd64::kBitRateSwitch : 0) |
                                                  (frame.errorStateIndicator ? canfd64::kErrorState : 0)));
    put<std::uint32_t>(body, fderror::kId, rawId(frame));
    std::memcpy(body + fderror::kData, frame.data, length);
    return fderror::kData + length;
}

std::uint32_t typeOf(const RawFrame &frame)
{
    if (frame.error)
        return frame.fd ? CanFdError64 : CanErrorExt;
    return frame.fd ? CanFdMessage64 : CanMessage;
}

} // namespace

bool isFrameType(std::uint32_t type)
{
    switch (type) {
    case CanMessage:
    case CanMessage2:
    case CanError:
    case CanErrorExt:
    case CanFdMessage:
    case CanFdMessage64:
    case CanFdError64:
        return true;
    default:
        return false;
    }
}

bool isNoTraffic(std::uint32_t type)
{
    return type == CanStatistic || type == AppTrigger || (type >= EnvironmentFirst && type <= EnvironmentLast) ||
           type == AppText || type == EventComment || type == GlobalMarker || type == ContainerEnd;
}

bool decode(const std::uint8_t *object, std::size_t size, std::size_t headerBytes, RawFrame *frame)
{
    if (headerBytes < kObjectHeaderBytes || headerBytes > size)
        return false;
    *frame = RawFrame();
    frame->time = timeOf(object);
    const std::uint8_t *body = object + headerBytes;
    const std::size_t bytes = size - headerBytes;
    const auto type = at<std::uint32_t>(object, objectheader::kType);
    switch (type) {
    case CanMessage:
    case CanMessage2:
        return decodeClassic(body, bytes, frame);
    case CanFdMessage:
        return decodeFd(body, bytes, frame);
    case CanFdMessage64:
        return decodeFd64(body, bytes, frame);
    case CanFdError64:
        return decodeFdError(body, bytes, frame);
    default:
        return decodeError(type, body, bytes, frame);
    }
}

std::size_t encode(const RawFrame &frame, std::int64_t later, std::uint8_t *object)
{
    const std::int64_t latest = std::numeric_limits<std::int64_t>::max() - later;
    std::memset(object, 0, kMaxEncodedBytes);
    std::uint8_t *const body = object + kObjectHeaderBytes;
    const std::uint32_t type = typeOf(frame);
    std::size_t size = kObjectHeaderBytes;
    if (type == CanMessage)
        size += encodeClassic(frame, body);
    else if (type == CanFdMessage64)
        size += encodeFd64(frame, body);
    else
        size += type == CanErrorExt ? encodeError(frame, body) : encodeFdError(frame, body);

    std::memcpy(object, "LOBJ", kSignatureBytes);
    put<std::uint16_t>(object, objectheader::kHeaderBytes, kObjectHeaderBytes);
    put<std::uint16_t>(object, objectheader::kVersion, 1);
    put<std::uint32_t>(object, objectheader::kObjectBytes, static_cast<std::uint32_t>(size));
    put<std::uint32_t>(object, objectheader::kType, type);
    put<std::uint32_t>(object, objectheader::kFlags, kTimeIsNanoseconds);
    put<std::uint64_t>(object, objectheader::kTime,
                       static_cast<std::uint64_t>(std::max<std::int64_t>(std::min(frame.time, latest) + later, 0)));
    return size;
}

} // namespace blf
