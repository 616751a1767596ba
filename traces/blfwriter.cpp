#include "traces/blfwriter.h"

#include "traces/blfobjects.h"
#include "traces/blftime.h"

#include <QByteArray>
#include <QIODevice>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>

using namespace blf;

namespace
{

constexpr std::size_t kContainerBytes = 128 * 1024;
constexpr int kCompression = 1;  // packs live traffic nearly as well as the highest, in a fraction of the time
constexpr int kLengthPrefix = 4; // before what qCompress() gives

template <typename T> void put(std::uint8_t *bytes, std::size_t offset, T value)
{
    qToLittleEndian<T>(value, bytes + offset);
}

} // namespace

BlfWriter::BlfWriter(QIODevice *device, const TraceWriterOptions &options)
    : device_(device),
      sink_(device),
      start_(std::max<std::int64_t>(options.startUtc.value_or(0), 0)),
      startRest_(start_ % kStartResolution),
      objects_(kContainerBytes + kMaxEncodedBytes + 3),
      unpackedBytes_(kFileHeaderBytes)
{
}

bool BlfWriter::write(const RawFrame *frames, int count)
{
    begin();
    if (!sink_.drain())
        return false;
    for (int index = 0; index < count; ++index)
        append(frames[index]);
    return true;
}

bool BlfWriter::flush()
{
    begin();
    closeContainer();
    return sink_.flush();
}

bool BlfWriter::finish()
{
    return flush() && completeHeader();
}

void BlfWriter::begin()
{
    if (begun_)
        return;
    begun_ = true;
    headerAt_ = device_->isSequential() ? 0 : device_->pos();
    fillHeader(sink_.room(kFileHeaderBytes));
    sink_.endBlock(kFileHeaderBytes);
}

void BlfWriter::fillHeader(std::uint8_t *header) const
{
    std::memset(header, 0, kFileHeaderBytes);
    std::memcpy(header, "LOGG", kSignatureBytes);
    put<std::uint32_t>(header, fileheader::kSize, kFileHeaderBytes);
    put<std::uint32_t>(header, fileheader::kApi, kApiNumber);
    put<std::uint64_t>(header, fileheader::kFileBytes, std::max<std::uint64_t>(sink_.bytes(), kFileHeaderBytes));
    put<std::uint64_t>(header, fileheader::kUnpackedBytes, unpackedBytes_);
    put<std::uint32_t>(header, fileheader::kObjectCount, objectCount_);
    put<std::uint32_t>(header, fileheader::kObjectsRead, objectCount_);
    if (start_ == 0)
        return;
    putSystemTime(start_, header + fileheader::kStart);
    putSystemTime(start_ + std::min(last_, std::numeric_limits<std::int64_t>::max() - start_),
                  header + fileheader::kLast);
}

void BlfWriter::append(const RawFrame &frame)
{
    if (frame.time < 0)
        losses_.add(Loss::TimeBeforeStart);
    if (frame.error && frame.direction == Direction::Sent)
        losses_.add(Loss::ErrorDirection);
    if (frame.fd && frame.channel > kLargestFdChannel)
        losses_.add(Loss::Channel);
    std::uint8_t *const object = objects_.data() + objectBytes_;
    const std::size_t bytes = encode(frame, startRest_, object);
    const std::size_t padding = paddingAfter(bytes);
    std::memset(object + bytes, 0, padding);
    objectBytes_ += bytes + padding;
    ++objectCount_;
    last_ = std::max(last_, frame.time);
    if (objectBytes_ >= kContainerBytes)
        closeContainer();
}

void BlfWriter::closeContainer()
{
    if (objectBytes_ == 0)
        return;
    const QByteArray packed =
        qCompress(reinterpret_cast<const uchar *>(objects_.data()), static_cast<int>(objectBytes_), kCompression);
    const auto data = static_cast<std::size_t>(packed.size() - kLengthPrefix);
    const std::size_t bytes = container::kData + data;
    std::uint8_t *const object = sink_.room(bytes + paddingAfter(bytes));
    std::memset(object, 0, container::kData);
    std::memcpy(object, "LOBJ", kSignatureBytes);
    put<std::uint16_t>(object, objectheader::kHeaderBytes, kObjectBaseBytes);
    put<std::uint16_t>(object, objectheader::kVersion, 1);
    put<std::uint32_t>(object, objectheader::kObjectBytes, static_cast<std::uint32_t>(bytes));
    put<std::uint32_t>(object, objectheader::kType, LogContainer);
    put<std::uint16_t>(object, container::kMethod, kZlib);
    put<std::uint32_t>(object, container::kUnpackedBytes, static_cast<std::uint32_t>(objectBytes_));
    std::memcpy(object + container::kData, packed.constData() + kLengthPrefix, data);
    std::memset(object + bytes, 0, paddingAfter(bytes));
    sink_.endBlock(bytes + paddingAfter(bytes));
    unpackedBytes_ += container::kData + objectBytes_;
    objectBytes_ = 0;
}

bool BlfWriter::completeHeader()
{
    if (device_->isSequential())
        return true;
    std::uint8_t header[kFileHeaderBytes];
    fillHeader(header);
    const qint64 end = device_->pos();
    const bool written = device_->seek(headerAt_) &&
                         device_->write(reinterpret_cast<const char *>(header), sizeof header) == sizeof header;
    errorText_ = written ? QString() : device_->errorString();
    return device_->seek(end) && written && sink_.flush();
}
