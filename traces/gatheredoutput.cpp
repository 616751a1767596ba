#include "traces/gatheredoutput.h"

#include <QFileDevice>

#include <algorithm>
#include <cstring>

qint64 writeWhatFits(QIODevice *device, const char *bytes, qint64 size)
{
    qint64 written = 0;
    while (written < size) {
        const qint64 got = device->write(bytes + written, size - written);
        if (got <= 0)
            break;
        written += got;
    }
    return written;
}

void GatheredOutput::grow(std::size_t bytes)
{
    buffer_.resize(std::max(size_ + bytes, 2 * std::max(buffer_.size(), kMuch)));
}

bool GatheredOutput::flush()
{
    if (!handOver())
        return false;
    auto *file = qobject_cast<QFileDevice *>(device_);
    if (!file || file->flush())
        return true;
    errorText_ = file->errorString();
    return false;
}

bool GatheredOutput::handOver()
{
    if (size_ == 0)
        return true;
    auto written = static_cast<std::size_t>(writeWhatFits(device_, buffer_.data(), static_cast<qint64>(size_)));
    const bool all = written == size_;
    if (!all) {
        errorText_ = device_->errorString();
        written = backToWhole(written);
        std::memmove(buffer_.data(), buffer_.data() + written, size_ - written);
    }
    size_ -= written;
    handedOver(written);
    return all;
}

std::size_t GatheredOutput::backToWhole(std::size_t written)
{
    const std::size_t whole = wholeWithin(written);
    auto *file = qobject_cast<QFileDevice *>(device_);
    if (!file || file->isSequential() || whole == written)
        return written;
    const qint64 end = file->pos() - static_cast<qint64>(written - whole);
    return file->resize(end) && file->seek(end) ? whole : written;
}
