#include "drivercontract.h"

#include <QDeadlineTimer>
#include <QtTest>

#include <array>
#include <atomic>
#include <cstring>
#include <thread>

namespace
{

constexpr int kPatienceMs = 10000;
constexpr std::uint32_t kReadCapacity = 7;
constexpr int kUntouched = 0xEE;
// For what must not arrive: longer than any driver keeps a frame to itself.
constexpr int kSilenceMs = 50;

template <typename Record, typename Receive> std::vector<Record> collect(std::size_t count, Receive receive)
{
    std::vector<Record> all;
    const QDeadlineTimer deadline(kPatienceMs);
    while (all.size() < count && !deadline.hasExpired()) {
        Record records[kReadCapacity + 1];
        std::memset(records, kUntouched, sizeof records);
        const std::uint32_t filled = receive(records, kReadCapacity);
        if (filled > kReadCapacity || records[kReadCapacity].length != kUntouched)
            return {};
        all.insert(all.end(), records, records + filled);
        if (filled == 0)
            QTest::qSleep(1);
    }
    return all;
}

// Of the same size.
template <typename Sent, typename Received>
void compareFrames(const std::vector<Sent> &sent, const std::vector<Received> &received)
{
    for (std::size_t i = 0; i < sent.size(); ++i) {
        QCOMPARE(received[i].id, sent[i].id);
        QCOMPARE(int(received[i].length), int(sent[i].length));
        QVERIFY(std::memcmp(received[i].data, sent[i].data, sizeof sent[i].data) == 0);
    }
}

using Identifiers = std::vector<std::uint32_t>;

template <typename Record> Identifiers identifiers(const std::vector<Record> &records)
{
    Identifiers words;
    for (const Record &record : records)
        words.push_back(record.id);
    return words;
}

} // namespace

void DriverContract::init()
{
    driver_ = createDriver();
}

void DriverContract::cleanup()
{
    if (driver_ && device_ != 0)
        driver_->CloseDevice(device_);
    driver_.reset();
    device_ = 0;
    channel_[0] = channel_[1] = 0;
}

Driver::Handle DriverContract::openDevice()
{
    device_ = driver_->OpenDevice(kDeviceType, 0, 0);
    return device_;
}

void DriverContract::initChannel(unsigned channel, std::uint8_t workMode)
{
    ChannelInitRecord record{};
    record.channelType = 1;
    record.workMode1 = record.workMode2 = workMode;
    channel_[channel] = driver_->InitChannel(device_, channel, &record);
    QVERIFY(channel_[channel] != 0);
}

void DriverContract::startChannel(unsigned channel)
{
    QCOMPARE(driver_->StartChannel(channel_[channel]), kDriverSuccess);
}

void DriverContract::openBoth()
{
    QVERIFY(openDevice() != 0);
    for (unsigned channel = 0; channel < kChannelCount; ++channel) {
        QCOMPARE(driver_->SetCanFdStandard(device_, channel, 0), kDriverSuccess);
        QCOMPARE(driver_->SetArbitrationBaud(device_, channel, 0), kDriverSuccess);
        QCOMPARE(driver_->SetDataBaud(device_, channel, 0), kDriverSuccess);
        initChannel(channel);
        startChannel(channel);
    }
}

std::uint32_t DriverContract::setProperty(const char *path, const char *value)
{
    const PropertyInterface *properties = driver_->GetPropertyInterface(device_);
    return properties ? properties->SetValue(path, value) : 0;
}

std::vector<CanReceiveRecord> DriverContract::receiveCan(unsigned channel, std::size_t count)
{
    return collect<CanReceiveRecord>(count, [&](CanReceiveRecord *records, std::uint32_t capacity) {
        return driver_->ReceiveCan(channel_[channel], records, capacity, 0);
    });
}

std::vector<CanFdReceiveRecord> DriverContract::receiveFd(unsigned channel, std::size_t count)
{
    return collect<CanFdReceiveRecord>(count, [&](CanFdReceiveRecord *records, std::uint32_t capacity) {
        return driver_->ReceiveCanFd(channel_[channel], records, capacity, 0);
    });
}

bool DriverContract::reachesTheOther(unsigned sender, std::uint32_t id)
{
    if (transmit(sender, {canRecord(id)}) != 1)
        return false;
    const auto received = receiveCan(1 - sender, 1);
    return received.size() == 1 && received[0].id == id;
}

bool DriverContract::hasNothing(unsigned channel)
{
    CanReceiveRecord classic;
    CanFdReceiveRecord fd;
    return driver_->ReceiveCan(channel_[channel], &classic, 1, 0) == 0 &&
           driver_->ReceiveCanFd(channel_[channel], &fd, 1, 0) == 0;
}

CanTransmitRecord DriverContract::canRecord(std::uint32_t id, std::uint8_t length, TransmitType type)
{
    CanTransmitRecord record{};
    record.id = id;
    record.length = length;
    for (std::uint8_t i = 0; i < length && (id & kIdRemoteFlag) == 0; ++i)
        record.data[i] = static_cast<std::uint8_t>(0xA0 + i);
    record.transmitType = static_cast<std::uint32_t>(type);
    return record;
}

CanFdTransmitRecord DriverContract::fdRecord(std::uint32_t id, std::uint8_t length, std::uint8_t flags,
                                             TransmitType type)
{
    CanFdTransmitRecord record{};
    record.id = id;
    record.length = length;
    record.flags = flags;
    for (std::uint8_t i = 0; i < length; ++i)
        record.data[i] = static_cast<std::uint8_t>(0x5A ^ i);
    record.transmitType = static_cast<std::uint32_t>(type);
    return record;
}

void DriverContract::openingAndClosing()
{
    const auto names = driver_->deviceNames();
    QVERIFY(!names.empty());
    QCOMPARE(driver_->OpenDevice(kDeviceType + 1, 0, 0), 0u);
    QCOMPARE(driver_->OpenDevice(kDeviceType, static_cast<std::uint32_t>(names.size()), 0), 0u);

    Driver::Handle previous = 0;
    for (int round = 0; round < 3; ++round) {
        QVERIFY(openDevice() != 0);
        QVERIFY(device_ != previous);
        QCOMPARE(driver_->OpenDevice(kDeviceType, 0, 0), 0u);
        QCOMPARE(driver_->GetDeviceStatus(device_), kStatusPresent);
        DeviceInfoRecord info{};
        QCOMPARE(driver_->GetDeviceInfo(device_, &info), kDriverSuccess);
        QCOMPARE(unsigned(info.channelCount), kChannelCount);
        QVERIFY(info.firmwareVersion != 0 && info.serialNumber[0] != 0);
        driver_->CloseDevice(device_);
        QVERIFY(driver_->GetDeviceStatus(device_) != kStatusPresent);
        previous = device_;
    }
    QVERIFY(openDevice() != 0);
    driver_->ResetDriver();
    QVERIFY(openDevice() != 0);
}

void DriverContract::staleAndForeignHandlesAreRefused()
{
    openBoth();
    const Driver::Handle closedDevice = device_;
    const Driver::Handle closedChannel = channel_[0];
    driver_->CloseDevice(device_);
    openBoth();
    ChannelInitRecord init{};
    init.channelType = 1;
    DeviceInfoRecord info{};
    for (const Driver::Handle handle : {closedDevice, channel_[0], Driver::Handle(0), Driver::Handle(0xFFFFFFFF)}) {
        QVERIFY(driver_->GetDeviceStatus(handle) != kStatusPresent);
        QVERIFY(driver_->GetDeviceInfo(handle, &info) != kDriverSuccess);
        QVERIFY(!driver_->GetPropertyInterface(handle));
        QVERIFY(driver_->SetArbitrationBaud(handle, 0, 0) != kDriverSuccess);
        QVERIFY(driver_->SetDataBaud(handle, 0, 0) != kDriverSuccess);
        QVERIFY(driver_->SetCanFdStandard(handle, 0, 0) != kDriverSuccess);
        QVERIFY(driver_->UpdateDevice(handle) != kDriverSuccess);
        QCOMPARE(driver_->InitChannel(handle, 0, &init), 0u);
        driver_->CloseDevice(handle);
    }
    const Driver::Handle open = channel_[0];
    for (const Driver::Handle handle : {closedChannel, device_, Driver::Handle(0), Driver::Handle(0xFFFFFFFF)}) {
        QVERIFY(driver_->StartChannel(handle) != kDriverSuccess);
        QVERIFY(driver_->ResetChannel(handle) != kDriverSuccess);
        channel_[0] = handle;
        QCOMPARE(transmit(0, {canRecord(1)}), 0u);
        QCOMPARE(transmit(0, {fdRecord(1)}), 0u);
        QVERIFY(hasNothing(0));
    }
    channel_[0] = open;
    QCOMPARE(driver_->InitChannel(device_, kChannelCount, &init), 0u);
    QVERIFY(reachesTheOther(0)); // none of it disturbed what is open
}

void DriverContract::aChannelWorksFromStartToReset()
{
    QVERIFY(openDevice() != 0);
    initChannel(0);
    initChannel(1);
    QCOMPARE(transmit(0, {canRecord(1)}), 0u);
    startChannel(0);
    startChannel(1);
    QVERIFY(reachesTheOther(0));

    QCOMPARE(driver_->ResetChannel(channel_[0]), kDriverSuccess);
    QCOMPARE(transmit(0, {canRecord(1)}), 0u);
    QVERIFY(driver_->StartChannel(channel_[0]) != kDriverSuccess);
    QCOMPARE(driver_->GetDeviceStatus(device_), kStatusPresent);
    initChannel(0);
    startChannel(0);
    QVERIFY(reachesTheOther(1));
}

// Classic and FD frames are fetched apart, whatever came between them.
void DriverContract::framesArriveAsTheyWereSent()
{
    std::vector<CanTransmitRecord> classic{canRecord(0), canRecord(0x12 | kIdExtendedFlag),
                                           canRecord(0x321 | kIdRemoteFlag, 0),
                                           canRecord(0x321 | kIdRemoteFlag | kIdExtendedFlag, 8)};
    for (std::uint8_t length = 0; length <= kClassicDataBytes; ++length) {
        classic.push_back(canRecord(0x7FF, length));
        classic.push_back(canRecord(kIdMask | kIdExtendedFlag, length));
    }
    std::vector<CanFdTransmitRecord> fd;
    for (const std::uint8_t length : {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64}) {
        fd.push_back(fdRecord(0x456, length));
        fd.push_back(fdRecord(0x1ABCDEF0 | kIdExtendedFlag, length, kFdBitRateSwitch));
    }
    const CanTransmitRecord last = canRecord(0x10);
    openBoth();
    for (unsigned sender = 0; sender < kChannelCount; ++sender) {
        QCOMPARE(transmit(sender, classic), std::uint32_t(classic.size()));
        QCOMPARE(transmit(sender, fd), std::uint32_t(fd.size()));
        QCOMPARE(transmit(sender, {last}), 1u);
        const auto receivedFd = receiveFd(1 - sender, fd.size());
        auto received = receiveCan(1 - sender, classic.size() + 1);
        QCOMPARE(receivedFd.size(), fd.size());
        QCOMPARE(received.size(), classic.size() + 1);
        compareFrames(fd, receivedFd);
        for (std::size_t i = 0; i < fd.size(); ++i)
            QCOMPARE(receivedFd[i].flags, fd[i].flags);
        QCOMPARE(received.back().id, last.id);
        QVERIFY(received.front().timeStamp <= receivedFd.front().timeStamp);
        QVERIFY(received.back().timeStamp >= receivedFd.back().timeStamp);
        received.pop_back();
        compareFrames(classic, received);
    }
}

void DriverContract::batchesKeepOrderAndTime()
{
    constexpr unsigned kBatches = 20;
    constexpr unsigned kBatch = 50;
    std::vector<CanTransmitRecord> sent;
    for (unsigned i = 0; i < kBatches * kBatch; ++i) {
        sent.push_back(canRecord(0x700 - i % 0x300)); // falling: order must not come from the identifiers
        std::memcpy(sent.back().data, &i, sizeof i);
    }
    openBoth();
    std::thread sender([&] {
        for (auto batch = sent.begin(); batch != sent.end(); batch += kBatch)
            transmit(0, std::vector<CanTransmitRecord>(batch, batch + kBatch));
    });
    const auto received = receiveCan(1, sent.size());
    sender.join();
    QCOMPARE(received.size(), sent.size());
    compareFrames(sent, received);
    for (std::size_t i = 1; i < received.size(); ++i)
        QVERIFY(received[i].timeStamp >= received[i - 1].timeStamp);
    QVERIFY(received.back().timeStamp < 60u * 1000000u); // microseconds since the opening
    QVERIFY(hasNothing(0));                              // the sender hears nothing of it
}

void DriverContract::aReceiveMayWait()
{
    openBoth();
    CanReceiveRecord received{};
    QCOMPARE(driver_->ReceiveCan(channel_[1], &received, 1, 5), 0u);
    std::thread sender([this] {
        QTest::qSleep(20);
        transmit(0, {canRecord(0x77)});
    });
    const std::uint32_t filled = driver_->ReceiveCan(channel_[1], &received, 1, kPatienceMs);
    sender.join();
    QCOMPARE(filled, 1u);
    QCOMPARE(received.id, 0x77u);
}

void DriverContract::transmitTypes()
{
    openBoth();
    for (const TransmitType type :
         {TransmitType::Normal, TransmitType::Single, TransmitType::SelfReceive, TransmitType::SingleSelfReceive}) {
        QCOMPARE(transmit(0, {canRecord(0x10, 8, type)}), 1u);
        QCOMPARE(transmit(0, {fdRecord(0x11, 12, 0, type)}), 1u);
        QCOMPARE(receiveCan(1, 1).size(), std::size_t(1));
        QCOMPARE(receiveFd(1, 1).size(), std::size_t(1));
        if (type >= TransmitType::SelfReceive) {
            QCOMPARE(receiveCan(0, 1).size(), std::size_t(1));
            QCOMPARE(receiveFd(0, 1).size(), std::size_t(1));
        }
        QTest::qSleep(kSilenceMs);
        QVERIFY(hasNothing(0) && hasNothing(1));
    }
}

void DriverContract::filtersActOnRanges()
{
    constexpr std::uint32_t ext = kIdExtendedFlag;
    const Identifiers sent{0x0FF, 0x100, 0x1FF, 0x200, 0x100 | ext, 0x1FFFFFFF | ext};
    struct Case {
        std::vector<std::array<const char *, 3>> rows; // mode, start, end
        Identifiers passing;
    };
    const Case cases[] = {
        {{{"0", "0x100", "0x1FF"}}, {0x100, 0x1FF}},
        {{{"0", "0x200", "0x200"}}, {0x200}},
        {{{"1", "0x100", "0x1FFFFFFF"}}, {0x100 | ext, 0x1FFFFFFF | ext}},
        {{}, sent},
        {{{"0", "0x0", "0xFF"}, {"1", "0x1FFFFFFF", "0x1FFFFFFF"}, {"0", "0x200", "0x7FF"}},
         {0x0FF, 0x200, 0x1FFFFFFF | ext}},
    };
    Identifiers active = sent;
    openBoth();
    for (const Case &filter : cases) {
        QCOMPARE(setProperty("1/filter_clear", "0"), kDriverSuccess);
        for (const auto &row : filter.rows) {
            QCOMPARE(setProperty("1/filter_mode", row[0]), kDriverSuccess);
            QCOMPARE(setProperty("1/filter_start", row[1]), kDriverSuccess);
            QCOMPARE(setProperty("1/filter_end", row[2]), kDriverSuccess);
        }
        QVERIFY(setProperty("1/filter_mode", "7") != kDriverSuccess); // and changes nothing
        QVERIFY(reachesTheOther(0, active.back()));                   // not yet
        QCOMPARE(setProperty("1/filter_ack", "0"), kDriverSuccess);
        active = filter.passing;
        for (const std::uint32_t id : sent) {
            QCOMPARE(transmit(0, {canRecord(id)}), 1u);
            QCOMPARE(transmit(0, {fdRecord(id)}), 1u);
            QVERIFY(reachesTheOther(1, id)); // the filtered channel still sends what it likes
        }
        QCOMPARE(identifiers(receiveCan(1, filter.passing.size())), filter.passing);
        QCOMPARE(identifiers(receiveFd(1, filter.passing.size())), filter.passing);
    }
    for (const char *path :
         {"0/filter", "2/filter_clear", "filter_clear", "0:filter_clear", "", "0/", "0/filter_clear2"})
        QVERIFY2(setProperty(path, "0") != kDriverSuccess, path);

    // A channel is initialised without filter.
    QCOMPARE(driver_->ResetChannel(channel_[1]), kDriverSuccess);
    initChannel(1);
    startChannel(1);
    QVERIFY(reachesTheOther(0, 0x100));
}

// Beside the frames, on their clock, and only once.
void DriverContract::errorFramesAndState()
{
    const auto ask = [this](BusQuestion question) { return driver_->busReport(channel_[0], question); };
    openBoth();
    for (const Driver::Handle handle : {device_, Driver::Handle(0), Driver::Handle(0xFFFFFFFF)})
        QVERIFY(driver_->busReport(handle, BusQuestion::State).state.controller == ControllerState::Unknown);
    QCOMPARE(transmit(1, {canRecord(1)}), 1u);
    const std::uint64_t before = receiveCan(0, 1).at(0).timeStamp;
    QVERIFY(ask(BusQuestion::StateAndEvents).events.empty());
    const ControllerState healthy = ask(BusQuestion::State).state.controller;
    QVERIFY(healthy == ControllerState::ErrorActive || healthy == ControllerState::Unknown);

    disturbFirstChannel();
    QCOMPARE(transmit(1, {canRecord(2)}), 1u);
    const std::uint64_t after = receiveCan(0, 1).at(0).timeStamp;
    QVERIFY(hasNothing(0));
    const bool known = ask(BusQuestion::State).state.countersKnown;
    const BusReport report = ask(BusQuestion::StateAndEvents);
    QVERIFY(!report.events.empty());
    QCOMPARE(report.lost, std::uint64_t(0));
    for (const BusEvent &event : report.events) {
        QVERIFY(event.classes != 0);
        QVERIFY(event.timeStamp >= before && event.timeStamp <= after);
    }
    QCOMPARE(report.state.countersKnown, known);
    QVERIFY(ask(BusQuestion::StateAndEvents).events.empty());

    disturbFirstChannel(); // a channel that begins anew has forgotten it
    const Driver::Handle gone = channel_[0];
    QCOMPARE(driver_->ResetChannel(gone), kDriverSuccess);
    QVERIFY(!driver_->busReport(gone, BusQuestion::State).state.countersKnown);
    initChannel(0);
    startChannel(0);
    QVERIFY(ask(BusQuestion::StateAndEvents).events.empty());
}

void DriverContract::closingUnderSendersAndReceivers()
{
    openBoth();
    std::atomic<bool> end{false};
    std::atomic<unsigned> frames{0};
    std::vector<std::thread> workers;
    for (unsigned channel = 0; channel < kChannelCount; ++channel) {
        workers.emplace_back([&, channel] {
            const std::vector<CanFdTransmitRecord> records(30, fdRecord(0x100, 8, kFdBitRateSwitch));
            while (!end)
                transmit(channel, records);
        });
        workers.emplace_back([&, handle = channel_[channel]] {
            CanReceiveRecord classic[10];
            CanFdReceiveRecord fd[10];
            while (!end)
                frames += driver_->ReceiveCan(handle, classic, 10, 0) + driver_->ReceiveCanFd(handle, fd, 10, 1);
        });
        workers.emplace_back([&, handle = channel_[channel]] {
            while (!end)
                driver_->busReport(handle, BusQuestion::StateAndEvents);
        });
    }
    QTRY_VERIFY_WITH_TIMEOUT(frames > 500, kPatienceMs);
    driver_->CloseDevice(device_);
    const unsigned atClose = frames;
    end = true;
    for (std::thread &worker : workers)
        worker.join();
    QVERIFY(frames <= atClose + 40); // at most what was on its way
    QCOMPARE(transmit(0, std::vector<CanTransmitRecord>()), 0u);
}
