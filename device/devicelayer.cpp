#include "device/devicelayer.h"

#include "device/devicestate.h"
#include "device/driver/nulldriver.h"

#include <QDebug>
#include <QReadWriteLock>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>

namespace
{

constexpr unsigned long kRetryPauseMs = 10;

struct Layer {
    std::unique_ptr<Driver> driver = std::make_unique<NullDriver>(); // never null
    DeviceState state;
    std::atomic<std::int64_t> openedAt{0};
    // Per channel: workers hold it shared during a driver call, closing and resetting hold it exclusively, so that a
    // handle is never closed under a call. The lock prefers waiting writers.
    QReadWriteLock guard[kChannelCount];
};

Layer &layer()
{
    static Layer theLayer;
    return theLayer;
}

Driver *driver()
{
    return layer().driver.get();
}
DeviceState &state()
{
    return layer().state;
}

unsigned channelIndex(unsigned channel)
{
    return channel != 0 ? 1 : 0;
}

bool setProperty(unsigned channel, const char *name, const QByteArray &value)
{
    const PropertyInterface *properties = state().properties;
    if (!properties || !properties->SetValue)
        return false;
    const QByteArray path = QByteArray::number(channelIndex(channel)) + name;
    return properties->SetValue(path.constData(), value.constData()) == kDriverSuccess;
}

// Runs call(handle) with the channel guarded against closing; an empty answer when the channel is closed.
template <typename Call> auto withChannel(unsigned channel, Call call) -> decltype(call(Driver::Handle()))
{
    const unsigned index = channelIndex(channel);
    const QReadLocker guard(&layer().guard[index]);
    const Driver::Handle handle = state().channel[index];
    return handle != 0 ? call(handle) : decltype(call(handle))();
}

} // namespace

void setDriver(std::unique_ptr<Driver> newDriver)
{
    state().reset();
    layer().driver = newDriver ? std::move(newDriver) : std::make_unique<NullDriver>();
}

QStringList deviceNames()
{
    QStringList names;
    for (const std::string &name : driver()->deviceNames())
        names.append(QString::fromStdString(name));
    return names;
}

std::vector<DriverNotice> takeDriverNotices()
{
    return driver()->takeNotices();
}

bool isDeviceOpen()
{
    return state().device != 0;
}

std::int64_t deviceOpenedAt()
{
    return layer().openedAt;
}

bool isDeviceUsable()
{
    return isDeviceOpen() && state().properties;
}

bool isChannelOpen(unsigned channel)
{
    return state().channel[channelIndex(channel)] != 0;
}

bool openDevice(unsigned type, unsigned index, unsigned reserved)
{
    if (isDeviceOpen())
        return false;
    state().device = driver()->OpenDevice(type, index, reserved);
    if (!isDeviceOpen()) {
        driver()->ResetDriver();
        QThread::msleep(kRetryPauseMs);
        state().device = driver()->OpenDevice(type, index, reserved);
        if (!isDeviceOpen())
            return false;
    }
    layer().openedAt = std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
    state().properties = driver()->GetPropertyInterface(state().device);
    if (state().properties)
        return true;
    // The handle stays stored on purpose: the device counts as open until closeDevice() resets the state.
    driver()->CloseDevice(state().device);
    return false;
}

void closeDevice()
{
    // Workers learn of the end at once from the cleared handles; the guards then wait for the calls under way.
    for (auto &handle : state().channel)
        handle = 0;
    const QWriteLocker first(&layer().guard[0]);
    const QWriteLocker second(&layer().guard[1]);
    if (isDeviceOpen())
        driver()->CloseDevice(state().device);
    state().reset();
}

bool updateDevice(unsigned index)
{
    qDebug("isDeviceOpend:%d", isDeviceOpen() ? 1 : 0);
    if (!isDeviceOpen())
        openDevice(kDeviceType, index, 0);
    qDebug("isDeviceOpend:%d", isDeviceOpen() ? 1 : 0);
    // No worker may be inside a call while the adapter restarts under it.
    const QWriteLocker first(&layer().guard[0]);
    const QWriteLocker second(&layer().guard[1]);
    return isDeviceOpen() && driver()->UpdateDevice(state().device) == kDriverSuccess;
}

DeviceInfoRecord readDeviceInfo()
{
    DeviceInfoRecord record{};
    if (driver()->GetDeviceInfo(state().device, &record) != kDriverSuccess)
        record = DeviceInfoRecord{};
    return record;
}

unsigned refreshDeviceInfo()
{
    if (driver()->GetDeviceStatus(state().device) != kStatusPresent)
        return 0;
    DeviceInfoRecord record{};
    driver()->GetDeviceInfo(state().device, &record);
    QString serial = QString::fromLatin1(record.serialNumber, sizeof record.serialNumber);
    serial.remove(QLatin1Char(' '));
    state().infoText = QStringLiteral("SN:") + serial + QStringLiteral(", DriverLib:") +
                       versionText(record.driverVersion) + QStringLiteral(", Firmware:") +
                       versionText(record.firmwareVersion);
    return record.firmwareVersion;
}

QString deviceInfoText()
{
    if (driver()->GetDeviceStatus(state().device) != kStatusPresent)
        return {};
    return state().infoText;
}

QString versionText(unsigned word)
{
    return QStringLiteral("V%1.%2%3")
        .arg((word >> 8) & 0xF, 0, 16)
        .arg((word >> 4) & 0xF, 0, 16)
        .arg(word & 0xF, 0, 16);
}

bool setCanFdStandard(unsigned channel, unsigned standard)
{
    return driver()->SetCanFdStandard(state().device, channelIndex(channel), standard) == kDriverSuccess;
}

bool setBaudRate(unsigned channel, unsigned arbitration, unsigned data)
{
    const unsigned index = channelIndex(channel);
    return driver()->SetArbitrationBaud(state().device, index, arbitration) == kDriverSuccess &&
           driver()->SetDataBaud(state().device, index, data) == kDriverSuccess;
}

bool setCustomBaudRate(unsigned channel, const QString &text)
{
    return setProperty(channel, "/baud_rate_custom", text.toUtf8());
}

bool setTerminalResistance(unsigned channel, unsigned value)
{
    // The driver matches this spelling literally.
    return setProperty(channel, "/initenal_resistance", QByteArray::number(value));
}

bool clearFilter(unsigned channel)
{
    return setProperty(channel, "/filter_clear", "0");
}

bool setFilterRange(unsigned channel, unsigned kind, const QString &start, const QString &end)
{
    return setProperty(channel, "/filter_mode", QByteArray::number(kind)) &&
           setProperty(channel, "/filter_start", start.toUtf8()) && setProperty(channel, "/filter_end", end.toUtf8());
}

bool ackFilter(unsigned channel)
{
    return setProperty(channel, "/filter_ack", "0");
}

bool applyFilterRows(unsigned channel, const QString &rowText)
{
    if (!clearFilter(channel))
        return false;
    const QStringList rows = rowText.isEmpty() ? QStringList() : rowText.split(QLatin1Char('|'));
    for (const QString &row : rows) {
        const QStringList fields = row.split(QLatin1Char('-'));
        bool kindIsNumber = false;
        const unsigned kind = fields.at(0).toUInt(&kindIsNumber);
        if (fields.size() != 3 || !kindIsNumber)
            return false;
        if (!setFilterRange(channel, kind, QStringLiteral("0x") + fields.at(1), QStringLiteral("0x") + fields.at(2)))
            return false;
    }
    return ackFilter(channel);
}

bool initChannel(unsigned channel, unsigned mode)
{
    const unsigned index = channelIndex(channel);
    ChannelInitRecord &record = state().initRecord;
    record.channelType = kChannelTypeCanFd;
    record.workMode1 = static_cast<std::uint8_t>(mode);
    record.workMode2 = static_cast<std::uint8_t>(mode);
    state().channel[index] = driver()->InitChannel(state().device, index, &record);
    return isChannelOpen(index);
}

bool startChannel(unsigned channel)
{
    return driver()->StartChannel(state().channel[channelIndex(channel)]) == kDriverSuccess;
}

bool resetChannel(unsigned channel)
{
    const unsigned index = channelIndex(channel);
    const QWriteLocker guard(&layer().guard[index]);
    if (driver()->ResetChannel(state().channel[index]) != kDriverSuccess)
        return false;
    state().channel[index] = 0;
    return true;
}

BusReport takeBusEvents(unsigned channel)
{
    return withChannel(channel,
                       [](Driver::Handle handle) { return driver()->busReport(handle, BusQuestion::StateAndEvents); });
}

ChannelState channelState(unsigned channel)
{
    return withChannel(channel, [](Driver::Handle handle) { return driver()->busReport(handle, BusQuestion::State); })
        .state;
}

std::uint32_t makeFrameId(std::uint32_t id, std::uint32_t extended, std::uint32_t remote, std::uint32_t third)
{
    return id | (extended != 0 ? kIdExtendedFlag : 0) | (remote != 0 ? kIdRemoteFlag : 0) |
           (third != 0 ? kIdThirdFlag : 0);
}

bool sendCan(unsigned channel, const CanTransmitRecord *records, std::uint32_t count)
{
    return withChannel(channel, [&](Driver::Handle handle) { return driver()->TransmitCan(handle, records, count); }) ==
           1;
}

bool sendCanFd(unsigned channel, const CanFdTransmitRecord *records, std::uint32_t count)
{
    return withChannel(channel,
                       [&](Driver::Handle handle) { return driver()->TransmitCanFd(handle, records, count); }) == 1;
}

std::uint32_t receiveCan(unsigned channel, CanReceiveRecord *buffer, std::uint32_t capacity, std::uint32_t waitMs)
{
    const std::uint32_t filled = withChannel(
        channel, [&](Driver::Handle handle) { return driver()->ReceiveCan(handle, buffer, capacity, waitMs); });
    return filled <= capacity ? filled : 0;
}

std::uint32_t receiveCanFd(unsigned channel, CanFdReceiveRecord *buffer, std::uint32_t capacity, std::uint32_t waitMs)
{
    const std::uint32_t filled = withChannel(
        channel, [&](Driver::Handle handle) { return driver()->ReceiveCanFd(handle, buffer, capacity, waitMs); });
    return filled <= capacity ? filled : 0;
}
