#include "fakedriver.h"

#include "device/devicelayer.h"

#include <QMutexLocker>

#include <algorithm>

namespace
{
FakeDriver *current = nullptr; // the property interface carries no context

template <typename Record> std::uint32_t takeFront(std::vector<Record> &queue, Record *records, std::uint32_t capacity)
{
    const auto count = std::min<std::size_t>(queue.size(), capacity);
    std::copy_n(queue.begin(), count, records);
    queue.erase(queue.begin(), queue.begin() + static_cast<std::ptrdiff_t>(count));
    return static_cast<std::uint32_t>(count);
}
} // namespace

FakeDriver::FakeDriver()
{
    current = this;
    properties_.SetValue = &FakeDriver::setValue;
}

FakeDriver::~FakeDriver()
{
    if (current == this)
        current = nullptr;
}

FakeDriver *FakeDriver::install()
{
    auto fake = std::make_unique<FakeDriver>();
    FakeDriver *raw = fake.get();
    setDriver(std::move(fake));
    return raw;
}

void FakeDriver::note(const char *name, const QStringList &arguments)
{
    const QString call = QLatin1String(name) + QLatin1Char('(') + arguments.join(QLatin1Char(',')) + QLatin1Char(')');
    const QMutexLocker lock(&lock_);
    calls_.append(call);
}

void FakeDriver::note(const char *name, std::initializer_list<std::uint32_t> arguments)
{
    QStringList texts;
    for (const std::uint32_t argument : arguments)
        texts << QString::number(argument);
    note(name, texts);
}

std::uint32_t FakeDriver::answer(const char *name, std::initializer_list<std::uint32_t> arguments)
{
    note(name, arguments);
    return answer(name);
}

QStringList FakeDriver::calls() const
{
    const QMutexLocker lock(&lock_);
    return calls_;
}

QStringList FakeDriver::takeCalls()
{
    const QMutexLocker lock(&lock_);
    return std::exchange(calls_, {});
}

std::uint32_t OSTREL_PROPERTY_CALL FakeDriver::setValue(const char *path, const char *value)
{
    current->note("SetValue", QStringList{QString::fromUtf8(path), QString::fromUtf8(value)});
    return current->answer(path);
}

Driver::Handle FakeDriver::OpenDevice(std::uint32_t type, std::uint32_t index, std::uint32_t reserved)
{
    note("OpenDevice", {type, index, reserved});
    return opened_ < openAnswers.size() ? openAnswers[opened_++] : deviceHandle;
}

std::uint32_t FakeDriver::GetDeviceInfo(Handle device, DeviceInfoRecord *record)
{
    note("GetDeviceInfo", {device});
    *record = info;
    return infoAnswer;
}

Driver::Handle FakeDriver::InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record)
{
    lastInit = *record;
    return answer("InitChannel", {device, channel}) == kDriverSuccess ? channelHandle(channel) : 0;
}

void FakeDriver::feed(unsigned channel, const std::vector<CanReceiveRecord> &records)
{
    const QMutexLocker lock(&lock_);
    queue_[channel].insert(queue_[channel].end(), records.begin(), records.end());
}

void FakeDriver::feedFd(unsigned channel, const std::vector<CanFdReceiveRecord> &records)
{
    const QMutexLocker lock(&lock_);
    queueFd_[channel].insert(queueFd_[channel].end(), records.begin(), records.end());
}

std::vector<CanTransmitRecord> FakeDriver::sentCan(unsigned channel) const
{
    const QMutexLocker lock(&lock_);
    return sent_[channel];
}

std::vector<CanFdTransmitRecord> FakeDriver::sentFd(unsigned channel) const
{
    const QMutexLocker lock(&lock_);
    return sentFd_[channel];
}

std::uint32_t FakeDriver::TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count)
{
    const unsigned index = channelOf(channel);
    note("TransmitCan", {index, count});
    {
        const QMutexLocker lock(&lock_);
        sent_[index].insert(sent_[index].end(), records, records + count);
    }
    return onTransmitCan ? onTransmitCan(index, records, count) : count;
}

std::uint32_t FakeDriver::TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count)
{
    const unsigned index = channelOf(channel);
    note("TransmitCanFd", {index, count});
    {
        const QMutexLocker lock(&lock_);
        sentFd_[index].insert(sentFd_[index].end(), records, records + count);
    }
    return onTransmitCanFd ? onTransmitCanFd(index, records, count) : count;
}

std::uint32_t FakeDriver::ReceiveCan(Handle channel, CanReceiveRecord *records, std::uint32_t capacity, std::uint32_t)
{
    const QMutexLocker lock(&lock_);
    return receiveAnswer ? receiveAnswer : takeFront(queue_[channelOf(channel)], records, capacity);
}

std::uint32_t FakeDriver::ReceiveCanFd(Handle channel, CanFdReceiveRecord *records, std::uint32_t capacity,
                                       std::uint32_t)
{
    const QMutexLocker lock(&lock_);
    return receiveAnswer ? receiveAnswer : takeFront(queueFd_[channelOf(channel)], records, capacity);
}

const PropertyInterface *FakeDriver::GetPropertyInterface(Handle device)
{
    note("GetPropertyInterface", {device});
    return hasProperties ? &properties_ : nullptr;
}
