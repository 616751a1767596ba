#include "traces/pcapngtrace.h"

#include "device/driver/identifiers.h"

#include <QByteArray>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>

namespace
{

// Blocks; all are little-endian, as the section header says.
constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kByteOrder = 0x1A2B3C4D;
constexpr std::uint32_t kInterface = 1;
constexpr std::uint32_t kPacket = 6;
constexpr std::size_t kLargestBlock = 256;

// Options.
constexpr std::uint16_t kInterfaceName = 2;
constexpr std::uint16_t kTimeResolution = 9;
constexpr std::uint8_t kNanoseconds = 9; // the power of ten
constexpr std::uint16_t kPacketFlags = 2;
constexpr std::uint32_t kInbound = 1;
constexpr std::uint32_t kOutbound = 2;
constexpr std::uint16_t kEndOfOptions = 0;

// Packets of link type 227: the identifier big-endian with its flags, length, FD flags, two zero bytes, data.
constexpr std::uint16_t kLinkSocketCan = 227;
constexpr std::size_t kFrameHeader = 8;
constexpr std::uint32_t kSnapLength = kFrameHeader + kRawDataBytes;
constexpr std::uint32_t kExtended = 0x80000000U;
constexpr std::uint32_t kRemote = 0x40000000U;
constexpr std::uint32_t kError = 0x20000000U;
constexpr std::uint8_t kBitRateSwitch = 1;
constexpr std::uint8_t kErrorState = 2;
constexpr std::uint8_t kFd = 4;
constexpr unsigned kErrorBytes = 8; // an error frame has all of them

// Fills one block from its front.
class Block
{
public:
    Block(std::uint8_t *bytes, std::uint32_t type) : bytes_(bytes)
    {
        put<std::uint32_t>(type);
        put<std::uint32_t>(0); // the length, known at the end
    }

    template <typename T> void put(T value)
    {
        qToLittleEndian<T>(value, bytes_ + size_);
        size_ += sizeof(T);
    }
    void put(const void *bytes, std::size_t count)
    {
        if (count > 0)
            std::memcpy(bytes_ + size_, bytes, count);
        size_ += count;
        while (size_ % 4 != 0)
            bytes_[size_++] = 0;
    }
    void option(std::uint16_t code, const void *value, std::uint16_t bytes)
    {
        put<std::uint16_t>(code);
        put<std::uint16_t>(bytes);
        put(value, bytes);
    }
    // Closes the block; answers its size.
    std::size_t end()
    {
        const auto total = static_cast<std::uint32_t>(size_ + sizeof(std::uint32_t));
        qToLittleEndian<std::uint32_t>(total, bytes_ + sizeof(std::uint32_t));
        put<std::uint32_t>(total);
        return size_;
    }

private:
    std::uint8_t *const bytes_;
    std::size_t size_ = 0;
};

} // namespace

PcapngWriter::PcapngWriter(QIODevice *device, const TraceWriterOptions &options)
    : sink_(device), start_(std::max<std::int64_t>(options.startUtc.value_or(0), 0))
{
}

bool PcapngWriter::write(const RawFrame *frames, int count)
{
    begin();
    if (!sink_.drain())
        return false;
    for (int index = 0; index < count; ++index)
        append(frames[index]);
    return true;
}

bool PcapngWriter::flush()
{
    begin();
    return sink_.flush();
}

void PcapngWriter::begin()
{
    if (begun_)
        return;
    begun_ = true;
    Block block(sink_.room(kLargestBlock), kSectionHeader);
    block.put<std::uint32_t>(kByteOrder);
    block.put<std::uint16_t>(1); // version 1.0
    block.put<std::uint16_t>(0);
    block.put<std::int64_t>(-1); // as long as the file
    sink_.endBlock(block.end());
}

// Describes a channel's interface before the first packet on it.
std::uint32_t PcapngWriter::interfaceOf(std::uint16_t channel)
{
    if (channel >= interfaces_.size())
        interfaces_.resize(channel + std::size_t{1}, -1);
    if (interfaces_[channel] < 0) {
        const QByteArray name = "can" + QByteArray::number(channel > 0 ? channel - 1 : 0);
        Block block(sink_.room(kLargestBlock), kInterface);
        block.put<std::uint16_t>(kLinkSocketCan);
        block.put<std::uint16_t>(0);
        block.put<std::uint32_t>(kSnapLength);
        block.option(kInterfaceName, name.constData(), static_cast<std::uint16_t>(name.size()));
        block.option(kTimeResolution, &kNanoseconds, sizeof kNanoseconds);
        block.option(kEndOfOptions, nullptr, 0);
        sink_.endBlock(block.end());
        interfaces_[channel] = interfaceCount_++;
    }
    return static_cast<std::uint32_t>(interfaces_[channel]);
}

void PcapngWriter::append(const RawFrame &frame)
{
    const std::uint32_t interface = interfaceOf(frame.channel);
    const std::int64_t room = std::numeric_limits<std::int64_t>::max() - start_;
    const std::int64_t absolute = start_ + std::min(frame.time, room);
    const auto time = static_cast<std::uint64_t>(std::max<std::int64_t>(absolute, 0));
    if (absolute < 0)
        losses_.add(Loss::TimeBeforeStart);
    const bool fd = frame.fd && !frame.remote && !frame.error;
    if (frame.fd && frame.remote)
        losses_.add(Loss::RemoteFd);
    if (frame.error && (frame.fd || frame.length > kErrorBytes))
        losses_.add(Loss::ErrorFd);
    if (frame.rawDlc > kClassicBytes)
        losses_.add(Loss::RawDlc);
    const unsigned length = std::min<unsigned>(frame.length, fd ? kRawDataBytes : kClassicBytes);

    std::uint8_t packet[kFrameHeader + kRawDataBytes] = {};
    qToBigEndian<std::uint32_t>((frame.id & kLargestExtendedId) | (frame.extended && !frame.error ? kExtended : 0) |
                                    (frame.remote ? kRemote : 0) | (frame.error ? kError : 0),
                                packet);
    packet[4] = static_cast<std::uint8_t>(frame.error ? kErrorBytes : length);
    packet[5] = static_cast<std::uint8_t>(
        !fd ? 0 : kFd | (frame.bitRateSwitch ? kBitRateSwitch : 0) | (frame.errorStateIndicator ? kErrorState : 0));
    if (!frame.remote)
        std::memcpy(packet + kFrameHeader, frame.data, length);
    const std::size_t captured = kFrameHeader + (frame.remote ? 0 : packet[4]);

    Block block(sink_.room(kLargestBlock), kPacket);
    block.put<std::uint32_t>(interface);
    block.put<std::uint32_t>(static_cast<std::uint32_t>(time >> 32));
    block.put<std::uint32_t>(static_cast<std::uint32_t>(time));
    block.put<std::uint32_t>(static_cast<std::uint32_t>(captured));
    block.put<std::uint32_t>(static_cast<std::uint32_t>(captured));
    block.put(packet, captured);
    std::uint8_t flags[sizeof(std::uint32_t)];
    qToLittleEndian<std::uint32_t>(frame.direction == Direction::Sent ? kOutbound : kInbound, flags);
    block.option(kPacketFlags, flags, sizeof flags);
    block.option(kEndOfOptions, nullptr, 0);
    sink_.endBlock(block.end());
}

std::unique_ptr<TraceWriter> writePcapng(QIODevice *device, const TraceWriterOptions &options)
{
    return std::make_unique<PcapngWriter>(device, options);
}
