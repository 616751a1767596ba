// Gathers what a writer makes and hands it to a device in large pieces; a device that refuses is tried again later.
// What a file has taken in part is cut back to its last whole line or block, so that the file can be read as it is; a
// pipe gets the rest when it takes more.
#pragma once

#include <QString>

#include <cstddef>
#include <vector>

class QIODevice;

// How many bytes the device takes. When these are not all, its errorString() tells why: a file that takes a part keeps
// the reason to itself until it is asked again.
qint64 writeWhatFits(QIODevice *device, const char *bytes, qint64 size);

class GatheredOutput
{
public:
    // The device is open for writing and outlives this. A file is best opened Unbuffered: gathering is done here.
    explicit GatheredOutput(QIODevice *device) : device_(device) {}
    virtual ~GatheredOutput() = default;
    GatheredOutput(const GatheredOutput &) = delete;
    GatheredOutput &operator=(const GatheredOutput &) = delete;

    // Hands over what has become much; false when that was refused.
    bool drain() { return size_ < kMuch || handOver(); }
    // Hands over everything, the device's own buffer included.
    bool flush();

    QString errorText() const { return errorText_; }

protected:
    // Room for so many bytes behind what is gathered; valid until the next call.
    char *roomFor(std::size_t bytes)
    {
        if (buffer_.size() - size_ < bytes)
            grow(bytes);
        return buffer_.data() + size_;
    }
    const char *gathered() const { return buffer_.data(); }
    std::size_t size() const { return size_; }
    void setSize(std::size_t bytes) { size_ = bytes; }

    // How many of the first so many gathered bytes are whole lines or blocks.
    virtual std::size_t wholeWithin(std::size_t bytes) const = 0;
    // The first so many gathered bytes have been handed over.
    virtual void handedOver(std::size_t) {}

private:
    static constexpr std::size_t kMuch = 64 * 1024;

    void grow(std::size_t bytes);
    bool handOver();
    std::size_t backToWhole(std::size_t written);

    QIODevice *device_;
    std::vector<char> buffer_;
    std::size_t size_ = 0;
    QString errorText_;
};
