// Gathers the blocks of a binary recording and hands them to a device in large pieces; a device that refuses is tried
// again later.
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <vector>

class QIODevice;

class BlockSink
{
public:
    // The device is open for writing and outlives the sink. A file is best opened Unbuffered: the sink gathers itself.
    explicit BlockSink(QIODevice *device) : device_(device) {}

    // Room for one block of at most so many bytes; valid until the next call.
    std::uint8_t *room(std::size_t bytes);
    // The block that the room holds has so many bytes.
    void endBlock(std::size_t bytes);

    // Hands over what has become much; false when that was refused.
    bool drain() { return size_ < kMuch || handOver(); }
    // Hands over everything, the device's own buffer included.
    bool flush();

    // Bytes of all blocks so far, handed over or not.
    std::uint64_t bytes() const { return bytes_; }
    QString errorText() const { return errorText_; }

private:
    static constexpr std::size_t kMuch = 64 * 1024;

    bool handOver();
    std::size_t backToLastBlock(std::size_t written);

    QIODevice *device_;
    std::vector<std::uint8_t> buffer_;
    std::vector<std::size_t> ends_; // of the blocks in the buffer
    std::size_t size_ = 0;
    std::uint64_t bytes_ = 0;
    QString errorText_;
};
