#include "traces/bytesource.h"

#include <QFileDevice>

#include <algorithm>
#include <cstring>

namespace
{

constexpr std::size_t kCapacity = 2 * ByteSource::kLargestFill;

} // namespace

ByteSource::ByteSource(QIODevice *device, std::uint64_t begun)
    : device_(device),
      sequential_(device->isSequential()),
      zeroIsEnd_(!sequential_ || qobject_cast<QFileDevice *>(device)),
      buffer_(kCapacity),
      offset_(begun)
{
}

bool ByteSource::fill(std::size_t atLeast)
{
    while (size() < atLeast)
        if (ended_ || !readMore())
            return false;
    return true;
}

bool ByteSource::readMore()
{
    if (begin_ > 0) {
        std::memmove(buffer_.data(), data(), size());
        end_ -= begin_;
        begin_ = 0;
    }
    qint64 wanted = static_cast<qint64>(buffer_.size() - end_);
    // What a device has already taken in comes without waiting for more.
    const qint64 waiting = sequential_ ? device_->bytesAvailable() : 0;
    if (waiting > 0)
        wanted = std::min(wanted, waiting);
    const qint64 got = device_->read(buffer_.data() + end_, wanted);
    if (got > 0) {
        end_ += static_cast<std::size_t>(got);
        return true;
    }
    ended_ = got < 0 || zeroIsEnd_;
    failed_ = got < 0 && zeroIsEnd_;
    return false;
}
