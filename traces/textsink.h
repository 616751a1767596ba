// Gathers lines and hands them to a device in large pieces; a device that refuses is tried again later.
#pragma once

#include <QString>

#include <cstddef>
#include <vector>

class QIODevice;

class TextSink
{
public:
    // The device is open for writing and outlives the sink. A file is best opened Unbuffered: the sink gathers itself.
    explicit TextSink(QIODevice *device) : device_(device) {}

    // Room for so many bytes behind what is gathered; valid until the next call.
    char *room(std::size_t bytes)
    {
        if (buffer_.size() - size_ < bytes)
            grow(bytes);
        return buffer_.data() + size_;
    }
    // The room is filled up to here; every line ends with a line feed.
    void filledTo(const char *end) { size_ = static_cast<std::size_t>(end - buffer_.data()); }

    // Hands over what has become much; false when that was refused.
    bool drain() { return size_ < kMuch || handOver(); }
    // Hands over everything, the device's own buffer included.
    bool flush();

    QString errorText() const { return errorText_; }

private:
    static constexpr std::size_t kMuch = 64 * 1024;

    void grow(std::size_t bytes);
    bool handOver();
    std::size_t backToLastLine(std::size_t written);

    QIODevice *device_;
    std::vector<char> buffer_;
    std::size_t size_ = 0;
    QString errorText_;
};
