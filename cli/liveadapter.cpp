#include "cli/liveadapter.h"

#include "cli/messages.h"
#include "device/devicelayer.h"
#include "device/devicetexts.h"
#include "device/driver/driverfactory.h"
#include "frames/pendingframes.h"

#include <chrono>

namespace
{

constexpr qint64 kLookEveryMs = 1000;

// The device that the option names; nothing, and told, when there is none.
std::optional<unsigned> deviceIndex(const QString &device)
{
    const QStringList names = deviceNames();
    bool isNumber = false;
    const unsigned number = device.toUInt(&isNumber);
    const int index = device.isEmpty() ? 0 : isNumber ? static_cast<int>(number) : names.indexOf(device);
    if (index >= 0 && index < names.size())
        return static_cast<unsigned>(index);
    tell(QStringLiteral("there is no device \"%1\"; \"ostrel-cli devices\" shows them").arg(device));
    return std::nullopt;
}

std::int64_t systemTimeOfOpening()
{
    using namespace std::chrono;
    const auto system = duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
    const auto steady = duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
    return system - (steady - deviceOpenedAt());
}

} // namespace

void chooseDriver()
{
    setPendingFramesTaken(false);
    setDriver(makeDriver(qgetenv("OSTREL_DRIVER").toStdString()));
}

bool LiveAdapter::open(const AdapterSetup &setup)
{
    chooseDriver();
    const auto index = deviceIndex(setup.device);
    open_ = index && openDevice(kDeviceType, *index, 0);
    tellNotices();
    if (!open_) {
        if (index)
            tell(QStringLiteral("the device cannot be opened"));
        return false;
    }
    startUtc_ = systemTimeOfOpening();
    sinceLook_.start();
    if (openChannels(setup))
        return true;
    close();
    return false;
}

bool LiveAdapter::openChannels(const AdapterSetup &setup)
{
    for (unsigned channel = 0; channel < kChannelCount; ++channel) {
        if (!setup.used[channel])
            continue;
        const ChannelStep failed = openChannel(channel, setup.channel[channel]);
        tellNotices();
        if (failed != ChannelStep::None) {
            tell(QStringLiteral("channel %1: ").arg(channel + 1) + stepFailureText(failed));
            return false;
        }
        receivers_[channel] = std::make_unique<recvThread>(channel);
        receivers_[channel]->setRecvParams(1, 1000);
        receivers_[channel]->start();
    }
    return true;
}

bool LiveAdapter::poll()
{
    tellNotices();
    if (sinceLook_.hasExpired(kLookEveryMs)) {
        sinceLook_.start();
        if (!gone_ && deviceInfoText().isEmpty() && refreshDeviceInfo() == 0) {
            gone_ = true;
            tell(QStringLiteral("the adapter does not answer any more"));
        }
    }
    return !gone_;
}

void LiveAdapter::endReceiver(unsigned channel)
{
    receivers_[channel]->stopAndWait();
    const std::uint64_t lost = receivers_[channel]->lostErrorFrames();
    if (lost > 0)
        tell(QStringLiteral("channel %1 lost %2 error frames").arg(channel + 1).arg(lost));
    lost_ += lost;
}

void LiveAdapter::tellNotices()
{
    for (const DriverNotice &notice : takeDriverNotices()) {
        if (notice.kind == DriverNotice::Kind::BuiltInVehicle)
            continue; // a hint for who has windows
        tell(noticeText(notice));
        if (notice.kind == DriverNotice::Kind::FramesLost)
            lost_ += notice.count;
    }
}

void LiveAdapter::close()
{
    if (!open_)
        return;
    open_ = false;
    for (unsigned channel = 0; channel < kChannelCount; ++channel)
        if (receivers_[channel])
            endReceiver(channel);
    tellNotices();
    closeDevice();
    for (auto &receiver : receivers_)
        receiver.reset();
    setDriver(nullptr);
}
