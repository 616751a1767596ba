// The bytes of a recording as a window that moves over the device: the same for files and pipes, in memory that does
// not grow with what is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class QIODevice;

class ByteSource
{
public:
    // The device is open for reading and outlives the source, which reads on from where the device stands. A device
    // that waits until it has all it was asked for (a QFile on a descriptor does, on a FILE * it does not) delays a
    // live pipe.
    // begun: where that is in the recording, bytes.
    explicit ByteSource(QIODevice *device, std::uint64_t begun = 0);

    // What is at hand; valid until the next fill().
    const char *data() const { return buffer_.data() + begin_; }
    std::size_t size() const { return end_ - begin_; }
    // Where data() lies, in bytes of the recording.
    std::uint64_t offset() const { return offset_; }

    // Brings at least so many bytes to hand (at most kLargestFill). false when they cannot be had: ended() and failed()
    // tell why, and neither is set when a pipe has nothing now. What came is at hand all the same.
    bool fill(std::size_t atLeast);
    // Lets go of bytes from the front; at most size().
    void consume(std::size_t bytes)
    {
        begin_ += bytes;
        offset_ += bytes;
    }

    // A pipe or the like: fill() may wait, or have nothing now.
    bool sequential() const { return sequential_; }
    // Nothing comes behind what is at hand.
    bool ended() const { return ended_; }
    // It ended because the device could not be read.
    bool failed() const { return failed_; }

    static constexpr std::size_t kLargestFill = 128 * 1024;

private:
    bool readMore();

    QIODevice *device_;
    bool sequential_;
    bool zeroIsEnd_; // files answer 0 at their end, sockets and processes when they have nothing yet
    std::vector<char> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::uint64_t offset_ = 0;
    bool ended_ = false;
    bool failed_ = false;
};
