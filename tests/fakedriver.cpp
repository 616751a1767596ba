#include "fakedriver.h"

#include "device/devicelayer.h"

#include <QMutexLocker>

namespace
{
FakeDriver *current = nullptr; // the property interface carries no context
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
    const QString call = QString("%1(%2)").arg(name, arguments.join(','));
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

QStringList FakeDriver::takeCalls()
{
    const QMutexLocker lock(&lock_);
    return std::exchange(calls_, {});
}

std::uint32_t FakeDriver::setValue(const char *path, const char *value)
{
    current->note("SetValue", QStringList{QString::fromUtf8(path), QString::fromUtf8(value)});
    return current->answer(path);
}

BusReport FakeDriver::busReport(Handle channel, BusQuestion question)
{
    BusReport answered = report[channelOf(channel)];
    if (question == BusQuestion::State)
        answered.events.clear();
    return answered;
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

std::uint32_t FakeDriver::TransmitCan(Handle channel, const CanTransmitRecord *records, std::uint32_t count)
{
    const unsigned index = channelOf(channel);
    note("TransmitCan", {index, count});
    append(sent_[index], std::vector<CanTransmitRecord>(records, records + count));
    return onTransmitCan ? onTransmitCan(index, records, count) : count;
}

std::uint32_t FakeDriver::TransmitCanFd(Handle channel, const CanFdTransmitRecord *records, std::uint32_t count)
{
    const unsigned index = channelOf(channel);
    note("TransmitCanFd", {index, count});
    append(sentFd_[index], std::vector<CanFdTransmitRecord>(records, records + count));
    return onTransmitCanFd ? onTransmitCanFd(index, records, count) : count;
}

const PropertyInterface *FakeDriver::GetPropertyInterface(Handle device)
{
    note("GetPropertyInterface", {device});
    return hasProperties ? &properties_ : nullptr;
}
