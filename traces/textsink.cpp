#include "traces/textsink.h"

#include <QFileDevice>

#include <algorithm>
#include <cstring>

void TextSink::grow(std::size_t bytes)
{
    buffer_.resize(std::max(size_ + bytes, 2 * std::max(buffer_.size(), kMuch)));
}

bool TextSink::flush()
{
    if (!handOver())
        return false;
    auto *file = qobject_cast<QFileDevice *>(device_);
    if (!file || file->flush())
        return true;
    errorText_ = file->errorString();
    return false;
}

bool TextSink::handOver()
{
    if (size_ == 0)
        return true;
    const qint64 got = device_->write(buffer_.data(), static_cast<qint64>(size_));
    std::size_t written = static_cast<std::size_t>(std::max<qint64>(got, 0));
    if (written == size_) {
        size_ = 0;
        return true;
    }
    errorText_ = device_->errorString();
    written = backToLastLine(written);
    std::memmove(buffer_.data(), buffer_.data() + written, size_ - written);
    size_ -= written;
    return false;
}

// A file is cut back to its last whole line, so that it can be read as it is; a pipe gets the rest when it takes more.
std::size_t TextSink::backToLastLine(std::size_t written)
{
    std::size_t whole = written;
    while (whole > 0 && buffer_[whole - 1] != '\n')
        --whole;
    auto *file = qobject_cast<QFileDevice *>(device_);
    if (!file || file->isSequential() || whole == written)
        return written;
    const qint64 end = file->pos() - static_cast<qint64>(written - whole);
    return file->resize(end) && file->seek(end) ? whole : written;
}
