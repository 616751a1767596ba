#include "traces/blfreader.h"

#include "traces/blfobjects.h"
#include "traces/blftime.h"
#include "traces/inflate.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <utility>

using namespace blf;

namespace
{

constexpr std::size_t kLargestFileHeader = 64 * 1024;
// A frame's object takes some hundred bytes at most; one that says more is damage.
constexpr std::size_t kLargestFrameObject = 64 * 1024;
// Usual containers hold 128 KiB. What is unpacked lies in memory as a whole.
constexpr std::uint32_t kLargestUnpacked = 16 * 1024 * 1024;
// Between two objects there are up to three bytes of padding; some files pad up to eight.
constexpr std::size_t kLargestPadding = 7;

template <typename T> T at(const void *bytes, std::size_t offset)
{
    return qFromLittleEndian<T>(static_cast<const std::uint8_t *>(bytes) + offset);
}

bool isObject(const void *bytes)
{
    return std::memcmp(bytes, "LOBJ", kSignatureBytes) == 0;
}

// How much padding lies before the next object; nothing when none begins within size bytes.
std::optional<std::size_t> paddingBefore(const void *bytes, std::size_t size)
{
    const auto *begin = static_cast<const std::uint8_t *>(bytes);
    for (std::size_t padding = 0; padding <= kLargestPadding && padding + kSignatureBytes <= size; ++padding) {
        if (isObject(begin + padding))
            return padding;
    }
    return std::nullopt;
}

// Nothing packs into more than itself but for some bytes, or into less than a thousandth.
bool canUnpackTo(std::uint64_t packed, std::uint64_t unpacked)
{
    constexpr std::uint64_t kOverhead = 1024;
    constexpr std::uint64_t kBestRatio = 1032;
    return packed <= unpacked + unpacked / 8 + kOverhead && unpacked <= packed * kBestRatio;
}

} // namespace

BlfReader::BlfReader(ByteSource source) : source_(std::move(source)) {}

int BlfReader::read(RawFrame *frames, int capacity)
{
    int count = 0;
    while (count < capacity && !ended_) {
        const Step step = nextFrame(frames + count);
        if (step == Step::Frame)
            ++count;
        else if (step == Step::Stop || (count > 0 && !atHand()) || !advance())
            break;
    }
    return count;
}

// The present stage can go on without waiting for a pipe.
bool BlfReader::atHand() const
{
    if (!source_.sequential() || source_.ended())
        return true;
    switch (stage_) {
    case Stage::FileHeader:
        return source_.size() >= kFileHeaderBytes;
    case Stage::Object:
        return source_.size() >= kLargestPadding + container::kData;
    case Stage::Packed:
        return source_.size() >= left_;
    default:
        return source_.size() > 0 || left_ == 0;
    }
}

// Takes the next frame out of what has been unpacked. More: something has to be unpacked first.
BlfReader::Step BlfReader::nextFrame(RawFrame *frame)
{
    for (;;) {
        std::size_t size = objects_.size() - begin_;
        const auto passed = static_cast<std::size_t>(std::min<std::uint64_t>(passOver_, size));
        begin_ += passed;
        size -= passed;
        passOver_ -= passed;
        if (size < kSignatureBytes)
            return Step::More;
        const std::optional<std::size_t> padding = paddingBefore(objects_.data() + begin_, size);
        if (!padding && size < kLargestPadding + kSignatureBytes)
            return Step::More;
        if (!padding) {
            fail({"第 %1 个对象应开始之处没有对象",
                  "第 %1 個物件應開始之處沒有物件",
                  "no object where object %1 must begin",
                  {QString::number(objectNumber_ + 1)}});
            return Step::Stop;
        }
        begin_ += *padding;
        size -= *padding;
        if (size < kObjectBaseBytes)
            return Step::More;
        const std::uint8_t *const object = objects_.data() + begin_;
        const auto bytes = at<std::uint32_t>(object, objectheader::kObjectBytes);
        const auto headerBytes = at<std::uint16_t>(object, objectheader::kHeaderBytes);
        const auto type = at<std::uint32_t>(object, objectheader::kType);
        if (bytes < kObjectBaseBytes || headerBytes < kObjectBaseBytes || headerBytes > bytes) {
            fail({"第 %1 个对象（类型 %2）自称有 %3 字节，其中头部 %4 字节",
                  "第 %1 個物件（類型 %2）自稱有 %3 位元組，其中標頭 %4 位元組",
                  "object %1 of type %2 says it has %3 bytes, %4 of them header",
                  {QString::number(objectNumber_ + 1), QString::number(type), QString::number(bytes),
                   QString::number(headerBytes)}});
            return Step::Stop;
        }
        if (!isFrameType(type)) {
            ++objectNumber_;
            passOver_ = bytes;
            if (!isNoTraffic(type))
                ++skipped_;
            continue;
        }
        if (bytes <= kLargestFrameObject && size < bytes)
            return Step::More;
        ++objectNumber_;
        if (bytes > kLargestFrameObject || !decode(object, bytes, headerBytes, frame)) {
            fail({"第 %1 个对象（类型 %2）不可能有 %3 字节",
                  "第 %1 個物件（類型 %2）不可能有 %3 位元組",
                  "object %1 of type %2 cannot have %3 bytes",
                  {QString::number(objectNumber_), QString::number(type), QString::number(bytes)}});
            return Step::Stop;
        }
        begin_ += bytes;
        return Step::Frame;
    }
}

// Goes on in the file. False when there is nothing more, or nothing now.
bool BlfReader::advance()
{
    switch (stage_) {
    case Stage::FileHeader:
        return readFileHeader();
    case Stage::RestOfFileHeader:
        while (left_ > 0) {
            if (!source_.fill(1))
                return waitOrEnd(false);
            const std::size_t step = std::min<std::size_t>(static_cast<std::size_t>(left_), source_.size());
            source_.consume(step);
            left_ -= step;
        }
        stage_ = Stage::Object;
        return true;
    case Stage::Object:
        return beginObject();
    case Stage::Plain:
        return movePlain();
    case Stage::Packed:
        return gatherPacked();
    case Stage::Cut:
        break;
    }
    return waitOrEnd(false);
}

bool BlfReader::readFileHeader()
{
    if (!source_.fill(kFileHeaderBytes))
        return waitOrEnd(false);
    const char *const header = source_.data();
    const auto bytes = at<std::uint32_t>(header, fileheader::kSize);
    if (std::memcmp(header, "LOGG", kSignatureBytes) != 0 || bytes < kFileHeaderBytes || bytes > kLargestFileHeader) {
        fail({"没有 BLF 文件头", "沒有 BLF 檔案標頭", "no header of a BLF file"});
        return false;
    }
    start_ = utcFromSystemTime(reinterpret_cast<const std::uint8_t *>(header) + fileheader::kStart);
    source_.consume(kFileHeaderBytes);
    left_ = bytes - kFileHeaderBytes;
    stage_ = Stage::RestOfFileHeader;
    return true;
}

bool BlfReader::beginObject()
{
    if (!source_.fill(kLargestPadding + container::kData) && !source_.ended())
        return false;
    const std::size_t size = source_.size();
    const std::optional<std::size_t> padding = paddingBefore(source_.data(), size);
    if (!padding) {
        place_ = source_.offset();
        if (source_.ended() && size <= kLargestPadding)
            return waitOrEnd(passOver_ == 0 && objects_.size() - begin_ <= kLargestPadding &&
                             std::all_of(source_.data(), source_.data() + size, [](char byte) { return byte == 0; }));
        fail({"对象应开始之处没有对象", "物件應開始之處沒有物件", "no object where one must begin"});
        return false;
    }
    source_.consume(*padding);
    place_ = source_.offset();
    if (source_.size() < kObjectBaseBytes)
        return waitOrEnd(false);
    const auto bytes = at<std::uint32_t>(source_.data(), objectheader::kObjectBytes);
    if (bytes < kObjectBaseBytes) {
        fail(
            {"对象自称有 %1 字节", "物件自稱有 %1 位元組", "an object says it has %1 bytes", {QString::number(bytes)}});
        return false;
    }
    if (at<std::uint32_t>(source_.data(), objectheader::kType) == LogContainer)
        return beginContainer(bytes);
    left_ = bytes;
    stage_ = Stage::Plain;
    return true;
}

bool BlfReader::beginContainer(std::uint32_t objectBytes)
{
    if (objectBytes < container::kData) {
        fail({"容器自称有 %1 字节",
              "容器自稱有 %1 位元組",
              "a container says it has %1 bytes",
              {QString::number(objectBytes)}});
        return false;
    }
    if (source_.size() < container::kData)
        return waitOrEnd(false);
    const auto method = at<std::uint16_t>(source_.data(), container::kMethod);
    unpackedBytes_ = at<std::uint32_t>(source_.data(), container::kUnpackedBytes);
    left_ = objectBytes - container::kData;
    if (method == kStored) {
        stage_ = Stage::Plain;
    } else if (method != kZlib) {
        fail({"容器的压缩方法 %1 未知",
              "容器的壓縮方法 %1 未知",
              "a container packed with method %1, which is not known",
              {QString::number(method)}});
        return false;
    } else if (unpackedBytes_ > kLargestUnpacked || !canUnpackTo(left_, unpackedBytes_)) {
        fail({"容器自称其 %1 字节解压后为 %2 字节",
              "容器自稱其 %1 位元組解壓縮後為 %2 位元組",
              "a container says that its %1 bytes unpack to %2",
              {QString::number(left_), QString::number(unpackedBytes_)}});
        return false;
    } else {
        stage_ = Stage::Packed;
        packed_.clear();
    }
    source_.consume(container::kData);
    return true;
}

// Moves what is at hand of a stored container, or of an object outside of containers, to the other objects.
bool BlfReader::movePlain()
{
    if (left_ == 0) {
        stage_ = Stage::Object;
        return true;
    }
    if (!source_.fill(1))
        return waitOrEnd(false);
    makeRoom();
    notePart();
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left_, source_.size()));
    objects_.insert(objects_.end(), source_.data(), source_.data() + count);
    source_.consume(count);
    left_ -= count;
    return true;
}

bool BlfReader::gatherPacked()
{
    while (left_ > 0 && source_.fill(1)) {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left_, source_.size()));
        packed_.insert(packed_.end(), source_.data(), source_.data() + count);
        source_.consume(count);
        left_ -= count;
    }
    if (left_ > 0 && !source_.ended())
        return false;
    // Of a container that has been cut the first part is as good as any other.
    stage_ = left_ > 0 ? Stage::Cut : Stage::Object;
    return unpack();
}

bool BlfReader::unpack()
{
    makeRoom();
    notePart();
    const std::size_t before = objects_.size();
    objects_.resize(before + unpackedBytes_);
    std::size_t bytes = 0;
    const Inflated result = inflate(packed_.data(), packed_.size(), objects_.data() + before, unpackedBytes_, &bytes);
    const bool good =
        stage_ == Stage::Cut ? result == Inflated::Cut : result == Inflated::Whole && bytes == unpackedBytes_;
    objects_.resize(before + (good ? bytes : 0));
    if (!good && stage_ != Stage::Cut)
        fail({"容器无法解压", "容器無法解壓縮", "a container that cannot be unpacked"});
    return stage_ == Stage::Cut || good;
}

void BlfReader::makeRoom()
{
    objects_.erase(objects_.begin(), objects_.begin() + static_cast<std::ptrdiff_t>(begin_));
    for (Part &part : parts_)
        part.begin -= static_cast<std::ptrdiff_t>(begin_);
    begin_ = 0;
    const auto behind = std::find_if(parts_.begin(), parts_.end(), [](const Part &part) { return part.begin > 0; });
    if (behind - parts_.begin() > 1)
        parts_.erase(parts_.begin(), behind - 1);
}

// What comes next into objects_ is of the container, or the object, at place_.
void BlfReader::notePart()
{
    if (parts_.empty() || parts_.back().place != place_)
        parts_.push_back({place_, static_cast<std::ptrdiff_t>(objects_.size())});
}

TraceCheckpoint BlfReader::checkpoint()
{
    const auto at = static_cast<std::ptrdiff_t>(begin_);
    const auto behind = std::find_if(parts_.begin(), parts_.end(), [at](const Part &part) { return part.begin > at; });
    if (behind == parts_.begin())
        return {stage_ == Stage::FileHeader ? 0 : source_.offset(), 0, objectNumber_, start_, nullptr};
    const Part &part = *(behind - 1);
    return {part.place, static_cast<std::uint64_t>(at - part.begin) + passOver_, objectNumber_, start_, nullptr};
}

void BlfReader::resume(const TraceCheckpoint &checkpoint)
{
    stage_ = Stage::Object;
    place_ = checkpoint.offset;
    passOver_ = checkpoint.passOver;
    objectNumber_ = checkpoint.number;
    start_ = checkpoint.startUtc;
}

// Nothing more can be had: now, or ever, and then it matters whether what came is complete. Always false.
bool BlfReader::waitOrEnd(bool complete)
{
    if (!source_.ended())
        return false;
    if (source_.failed())
        fail({"文件无法继续读取", "檔案無法繼續讀取", "the file cannot be read on"});
    else if (!complete)
        fail({"文件在对象中间结束", "檔案在物件中間結束", "the file ends in the middle of an object"});
    ended_ = true;
    return false;
}

void BlfReader::fail(const Text3 &reason)
{
    error_ = TraceError{{"偏移量 0x%1", "偏移量 0x%1", "offset 0x%1", {QString::number(place_, 16)}}, reason};
    ended_ = true;
}
