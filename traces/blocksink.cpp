#include "traces/blocksink.h"

#include <QFileDevice>

#include <algorithm>
#include <cstring>

std::uint8_t *BlockSink::room(std::size_t bytes)
{
    if (buffer_.size() - size_ < bytes)
        buffer_.resize(std::max(size_ + bytes, 2 * std::max(buffer_.size(), kMuch)));
    return buffer_.data() + size_;
}

void BlockSink::endBlock(std::size_t bytes)
{
    size_ += bytes;
    bytes_ += bytes;
    ends_.push_back(size_);
}

bool BlockSink::flush()
{
    if (!handOver())
        return false;
    auto *file = qobject_cast<QFileDevice *>(device_);
    if (!file || file->flush())
        return true;
    errorText_ = file->errorString();
    return false;
}

bool BlockSink::handOver()
{
    if (size_ == 0)
        return true;
    const qint64 got = device_->write(reinterpret_cast<const char *>(buffer_.data()), static_cast<qint64>(size_));
    auto written = static_cast<std::size_t>(std::max<qint64>(got, 0));
    if (written == size_) {
        size_ = 0;
        ends_.clear();
        return true;
    }
    errorText_ = device_->errorString();
    written = backToLastBlock(written);
    std::memmove(buffer_.data(), buffer_.data() + written, size_ - written);
    size_ -= written;
    ends_.erase(ends_.begin(), std::upper_bound(ends_.begin(), ends_.end(), written));
    for (std::size_t &end : ends_)
        end -= written;
    return false;
}

// A file is cut back to its last whole block, so that it can be read as it is; a pipe gets the rest when it takes more.
std::size_t BlockSink::backToLastBlock(std::size_t written)
{
    const auto next = std::upper_bound(ends_.begin(), ends_.end(), written);
    const std::size_t whole = next == ends_.begin() ? 0 : *(next - 1);
    auto *file = qobject_cast<QFileDevice *>(device_);
    if (!file || file->isSequential() || whole == written)
        return written;
    const qint64 end = file->pos() - static_cast<qint64>(written - whole);
    return file->resize(end) && file->seek(end) ? whole : written;
}
