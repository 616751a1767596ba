#include "drivercontract.h"

#include <QDeadlineTimer>
#include <QtTest>

#include <atomic>
#include <cstring>
#include <thread>

namespace
{

constexpr int kPatienceMs = 10000;
constexpr std::uint32_t kReadCapacity = 100;
// For what must not arrive: longer than any driver keeps a frame to itself.
constexpr int kSilenceMs = 50;

template <typename Record, typename Receive> std::vector<Record> collect(std::size_t count, Receive receive)
{
    std::vector<Record> all;
    const QDeadlineTimer deadline(kPatienceMs);
    while (all.size() < count && !deadline.hasExpired()) {
        Record records[kReadCapacity];
        const std::uint32_t filled = receive(records, kReadCapacity);
        all.insert(all.end(), records, records + filled);
        if (filled == 0)
            QTest::qSleep(1);
    }
    return all;
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
        QVERIFY(info.firmwareVersion != 0);
        QVERIFY(info.serialNumber[0] != 0);
        QVERIFY(driver_->GetPropertyInterface(device_));
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
    const CanTransmitRecord classic = canRecord(1);
    const CanFdTransmitRecord fd = fdRecord(1);
    for (const Driver::Handle handle : {closedChannel, device_, Driver::Handle(0), Driver::Handle(0xFFFFFFFF)}) {
        CanReceiveRecord received[2];
        CanFdReceiveRecord receivedFd[2];
        QVERIFY(driver_->StartChannel(handle) != kDriverSuccess);
        QVERIFY(driver_->ResetChannel(handle) != kDriverSuccess);
        QCOMPARE(driver_->TransmitCan(handle, &classic, 1), 0u);
        QCOMPARE(driver_->TransmitCanFd(handle, &fd, 1), 0u);
        QCOMPARE(driver_->ReceiveCan(handle, received, 2, 0), 0u);
        QCOMPARE(driver_->ReceiveCanFd(handle, receivedFd, 2, 0), 0u);
    }
    QCOMPARE(driver_->InitChannel(device_, kChannelCount, &init), 0u);
    // None of it disturbed what is open.
    QCOMPARE(driver_->TransmitCan(channel_[0], &classic, 1), 1u);
    QCOMPARE(receiveCan(1, 1).size(), std::size_t(1));
}

void DriverContract::aChannelWorksFromStartToReset()
{
    QVERIFY(openDevice() != 0);
    initChannel(0);
    initChannel(1);
    const CanTransmitRecord record = canRecord(0x123);
    QCOMPARE(driver_->TransmitCan(channel_[0], &record, 1), 0u);
    startChannel(0);
    startChannel(1);
    QCOMPARE(driver_->TransmitCan(channel_[0], &record, 1), 1u);
    QCOMPARE(receiveCan(1, 1).size(), std::size_t(1));

    const Driver::Handle old = channel_[0];
    QCOMPARE(driver_->ResetChannel(old), kDriverSuccess);
    QCOMPARE(driver_->TransmitCan(old, &record, 1), 0u);
    QVERIFY(driver_->StartChannel(old) != kDriverSuccess);
    QCOMPARE(driver_->GetDeviceStatus(device_), kStatusPresent);
    initChannel(0);
    startChannel(0);
    QCOMPARE(driver_->TransmitCan(channel_[1], &record, 1), 1u);
    QCOMPARE(receiveCan(0, 1).size(), std::size_t(1));
}

void DriverContract::framesArriveAsTheyWereSent_data()
{
    QTest::addColumn<bool>("fd");
    QTest::addColumn<uint>("id");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("flags");
    for (const int length : {0, 1, 2, 3, 4, 5, 6, 7, 8}) {
        QTest::addRow("classic standard %d", length) << false << 0x7FFu << length << 0;
        QTest::addRow("classic extended %d", length) << false << (0x1FFFFFFFu | kIdExtendedFlag) << length << 0;
    }
    QTest::newRow("classic identifier 0") << false << 0u << 8 << 0;
    QTest::newRow("extended with a small identifier") << false << (0x12u | kIdExtendedFlag) << 8 << 0;
    QTest::newRow("remote standard") << false << (0x321u | kIdRemoteFlag) << 0 << 0;
    QTest::newRow("remote extended, 8 asked for") << false << (0x321u | kIdRemoteFlag | kIdExtendedFlag) << 8 << 0;
    for (const int length : {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64}) {
        QTest::addRow("FD standard %d", length) << true << 0x456u << length << 0;
        QTest::addRow("FD extended, switched %d", length)
            << true << (0x1ABCDEF0u | kIdExtendedFlag) << length << int(kFdBitRateSwitch);
    }
}

void DriverContract::framesArriveAsTheyWereSent()
{
    QFETCH(bool, fd);
    QFETCH(uint, id);
    QFETCH(int, length);
    QFETCH(int, flags);
    openBoth();
    for (unsigned sender = 0; sender < kChannelCount; ++sender) {
        const unsigned receiver = 1 - sender;
        if (fd) {
            const CanFdTransmitRecord sent = fdRecord(id, std::uint8_t(length), std::uint8_t(flags));
            QCOMPARE(driver_->TransmitCanFd(channel_[sender], &sent, 1), 1u);
            const auto received = receiveFd(receiver, 1);
            QCOMPARE(received.size(), std::size_t(1));
            QCOMPARE(received[0].id, sent.id);
            QCOMPARE(int(received[0].length), length);
            QCOMPARE(int(received[0].flags), flags);
            QVERIFY(std::memcmp(received[0].data, sent.data, sizeof sent.data) == 0);
        } else {
            const CanTransmitRecord sent = canRecord(id, std::uint8_t(length));
            QCOMPARE(driver_->TransmitCan(channel_[sender], &sent, 1), 1u);
            const auto received = receiveCan(receiver, 1);
            QCOMPARE(received.size(), std::size_t(1));
            QCOMPARE(received[0].id, sent.id);
            QCOMPARE(int(received[0].length), length);
            QVERIFY(std::memcmp(received[0].data, sent.data, sizeof sent.data) == 0);
        }
    }
}

void DriverContract::batchesKeepOrderAndTime()
{
    constexpr unsigned kBatches = 20;
    constexpr unsigned kBatch = 50;
    openBoth();
    std::thread sender([this] {
        std::vector<CanTransmitRecord> records(kBatch, canRecord(0x100));
        for (unsigned batch = 0; batch < kBatches; ++batch) {
            for (unsigned i = 0; i < kBatch; ++i) {
                const unsigned number = batch * kBatch + i;
                std::memcpy(records[i].data, &number, sizeof number);
                records[i].id = 0x700 - number % 0x300; // falling: order must not come from the identifiers
            }
            for (std::uint32_t done = 0; done < kBatch;) {
                const std::uint32_t taken = driver_->TransmitCan(channel_[0], &records[done], kBatch - done);
                if (taken == 0)
                    return;
                done += taken;
            }
        }
    });
    const auto received = receiveCan(1, kBatches * kBatch);
    sender.join();
    QCOMPARE(received.size(), std::size_t(kBatches * kBatch));
    for (unsigned i = 0; i < received.size(); ++i) {
        unsigned number = 0;
        std::memcpy(&number, received[i].data, sizeof number);
        QCOMPARE(number, i);
        QVERIFY(i == 0 || received[i].timeStamp >= received[i - 1].timeStamp);
    }
    QVERIFY(received.back().timeStamp < 60u * 1000000u); // microseconds since the opening
    QCOMPARE(receiveCan(0, 0).size(), std::size_t(0));
    CanReceiveRecord none;
    QCOMPARE(driver_->ReceiveCan(channel_[0], &none, 1, 0), 0u); // the sender hears nothing of it
}

void DriverContract::classicAndFdQueuesAreApart()
{
    openBoth();
    const CanTransmitRecord classic[] = {canRecord(1), canRecord(2)};
    const CanFdTransmitRecord fd[] = {fdRecord(3), fdRecord(4, 64, kFdBitRateSwitch), fdRecord(5)};
    QCOMPARE(driver_->TransmitCan(channel_[0], classic, 1), 1u);
    QCOMPARE(driver_->TransmitCanFd(channel_[0], fd, 3), 3u);
    QCOMPARE(driver_->TransmitCan(channel_[0], classic + 1, 1), 1u);
    const auto receivedFd = receiveFd(1, 3);
    const auto received = receiveCan(1, 2);
    QCOMPARE(receivedFd.size(), std::size_t(3));
    QCOMPARE(received.size(), std::size_t(2));
    QCOMPARE(received[1].id, 2u);
    QCOMPARE(receivedFd[2].id, 5u);
    QVERIFY(received[0].timeStamp <= receivedFd[0].timeStamp);
    QVERIFY(received[1].timeStamp >= receivedFd[2].timeStamp);
}

void DriverContract::aReceiveFillsNoMoreThanItsCapacity()
{
    constexpr std::uint32_t kFrames = 10;
    constexpr std::uint32_t kCapacity = 3;
    openBoth();
    const std::vector<CanTransmitRecord> sent(kFrames, canRecord(0x55));
    QCOMPARE(driver_->TransmitCan(channel_[1], sent.data(), kFrames), kFrames);
    std::uint32_t total = 0;
    const QDeadlineTimer deadline(kPatienceMs);
    while (total < kFrames && !deadline.hasExpired()) {
        CanReceiveRecord received[kCapacity + 1];
        std::memset(received, 0xEE, sizeof received);
        const std::uint32_t filled = driver_->ReceiveCan(channel_[0], received, kCapacity, 0);
        QVERIFY(filled <= kCapacity);
        for (std::uint32_t i = filled; i <= kCapacity; ++i)
            QCOMPARE(received[i].id, 0xEEEEEEEEu);
        total += filled;
    }
    QCOMPARE(total, kFrames);
    CanReceiveRecord none;
    QCOMPARE(driver_->ReceiveCan(channel_[0], &none, 0, 0), 0u);
}

void DriverContract::aReceiveMayWait()
{
    openBoth();
    CanReceiveRecord received[1];
    QCOMPARE(driver_->ReceiveCan(channel_[1], received, 1, 5), 0u);
    std::thread sender([this] {
        QTest::qSleep(20);
        const CanTransmitRecord record = canRecord(0x77);
        driver_->TransmitCan(channel_[0], &record, 1);
    });
    const std::uint32_t filled = driver_->ReceiveCan(channel_[1], received, 1, kPatienceMs);
    sender.join();
    QCOMPARE(filled, 1u);
    QCOMPARE(received[0].id, 0x77u);
}

void DriverContract::transmitTypes_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("returned");
    QTest::newRow("normal") << int(TransmitType::Normal) << false;
    QTest::newRow("single") << int(TransmitType::Single) << false;
    QTest::newRow("self-receive") << int(TransmitType::SelfReceive) << true;
    QTest::newRow("single self-receive") << int(TransmitType::SingleSelfReceive) << true;
}

void DriverContract::transmitTypes()
{
    QFETCH(int, type);
    QFETCH(bool, returned);
    openBoth();
    const CanTransmitRecord classic = canRecord(0x10, 8, TransmitType(type));
    const CanFdTransmitRecord fd = fdRecord(0x11, 12, 0, TransmitType(type));
    QCOMPARE(driver_->TransmitCan(channel_[0], &classic, 1), 1u);
    QCOMPARE(driver_->TransmitCanFd(channel_[0], &fd, 1), 1u);
    QCOMPARE(receiveCan(1, 1).size(), std::size_t(1));
    QCOMPARE(receiveFd(1, 1).size(), std::size_t(1));
    if (returned) {
        QCOMPARE(receiveCan(0, 1).size(), std::size_t(1));
        QCOMPARE(receiveFd(0, 1).size(), std::size_t(1));
    }
    QTest::qSleep(kSilenceMs);
    for (const Driver::Handle channel : channel_) {
        CanReceiveRecord more;
        CanFdReceiveRecord moreFd;
        QCOMPARE(driver_->ReceiveCan(channel, &more, 1, 0), 0u);
        QCOMPARE(driver_->ReceiveCanFd(channel, &moreFd, 1, 0), 0u);
    }
}

void DriverContract::filtersActOnRanges_data()
{
    // Rows as "mode-start-end"; identifier words that pass, of those sent.
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QList<uint>>("passing");
    const uint ext = kIdExtendedFlag;
    QTest::newRow("no row") << QStringList() << QList<uint>{0x0FF, 0x100, 0x1FF, 0x200, 0x100 | ext, 0x1FFFFFFF | ext};
    QTest::newRow("standard range") << QStringList{"0-0x100-0x1FF"} << QList<uint>{0x100, 0x1FF};
    QTest::newRow("one identifier") << QStringList{"0-0x200-0x200"} << QList<uint>{0x200};
    QTest::newRow("extended range") << QStringList{"1-0x100-0x1FFFFFFF"} << QList<uint>{0x100 | ext, 0x1FFFFFFF | ext};
    QTest::newRow("several rows") << QStringList{"0-0x0-0xFF", "1-0x1FFFFFFF-0x1FFFFFFF", "0-0x200-0x7FF"}
                                  << QList<uint>{0x0FF, 0x200, 0x1FFFFFFF | ext};
}

void DriverContract::filtersActOnRanges()
{
    QFETCH(QStringList, rows);
    QFETCH(QList<uint>, passing);
    openBoth();
    QCOMPARE(setProperty("1/filter_clear", "0"), kDriverSuccess);
    for (const QString &row : rows) {
        const QStringList fields = row.split('-');
        QCOMPARE(setProperty("1/filter_mode", fields.at(0).toUtf8().constData()), kDriverSuccess);
        QCOMPARE(setProperty("1/filter_start", fields.at(1).toUtf8().constData()), kDriverSuccess);
        QCOMPARE(setProperty("1/filter_end", fields.at(2).toUtf8().constData()), kDriverSuccess);
    }
    QCOMPARE(setProperty("1/filter_ack", "0"), kDriverSuccess);

    for (const uint id : {0x0FFu, 0x100u, 0x1FFu, 0x200u, 0x100u | kIdExtendedFlag, 0x1FFFFFFFu | kIdExtendedFlag}) {
        const CanTransmitRecord classic = canRecord(id);
        const CanFdTransmitRecord fd = fdRecord(id);
        QCOMPARE(driver_->TransmitCan(channel_[0], &classic, 1), 1u);
        QCOMPARE(driver_->TransmitCanFd(channel_[0], &fd, 1), 1u);
        // The filtered channel still sends what it likes, and the other one hears it.
        QCOMPARE(driver_->TransmitCan(channel_[1], &classic, 1), 1u);
        QCOMPARE(receiveCan(0, 1).size(), std::size_t(1));
    }
    const auto classic = receiveCan(1, std::size_t(passing.size()));
    const auto fd = receiveFd(1, std::size_t(passing.size()));
    QCOMPARE(int(classic.size()), passing.size());
    QCOMPARE(int(fd.size()), passing.size());
    for (int i = 0; i < passing.size(); ++i) {
        QCOMPARE(classic[std::size_t(i)].id, passing.at(i));
        QCOMPARE(fd[std::size_t(i)].id, passing.at(i));
    }
}

void DriverContract::aChannelIsInitialisedWithoutFilter()
{
    openBoth();
    QCOMPARE(setProperty("0/filter_clear", "0"), kDriverSuccess);
    QCOMPARE(setProperty("0/filter_mode", "0"), kDriverSuccess);
    QCOMPARE(setProperty("0/filter_start", "0x1"), kDriverSuccess);
    QCOMPARE(setProperty("0/filter_end", "0x2"), kDriverSuccess);
    QCOMPARE(setProperty("0/filter_ack", "0"), kDriverSuccess);
    QCOMPARE(driver_->ResetChannel(channel_[0]), kDriverSuccess);
    initChannel(0);
    startChannel(0);
    const CanTransmitRecord record = canRecord(0x700);
    QCOMPARE(driver_->TransmitCan(channel_[1], &record, 1), 1u);
    QCOMPARE(receiveCan(0, 1).size(), std::size_t(1));
}

void DriverContract::unknownPropertiesAreRefused()
{
    openBoth();
    for (const char *path :
         {"0/filter", "2/filter_clear", "filter_clear", "0filter_clear", "", "0/", "0/filter_clear2"})
        QVERIFY2(setProperty(path, "0") != kDriverSuccess, path);
}

void DriverContract::closingUnderSendersAndReceivers()
{
    openBoth();
    std::atomic<bool> end{false};
    std::atomic<unsigned> frames{0};
    std::vector<std::thread> workers;
    for (unsigned channel = 0; channel < kChannelCount; ++channel) {
        workers.emplace_back([&, handle = channel_[channel]] {
            const std::vector<CanFdTransmitRecord> records(30, fdRecord(0x100, 8, kFdBitRateSwitch));
            while (!end)
                driver_->TransmitCanFd(handle, records.data(), 30);
        });
        workers.emplace_back([&, handle = channel_[channel]] {
            CanReceiveRecord classic[10];
            CanFdReceiveRecord fd[10];
            while (!end)
                frames += driver_->ReceiveCan(handle, classic, 10, 0) + driver_->ReceiveCanFd(handle, fd, 10, 1);
        });
    }
    QTRY_VERIFY_WITH_TIMEOUT(frames > 500, kPatienceMs);
    driver_->CloseDevice(device_);
    const unsigned atClose = frames;
    end = true;
    for (std::thread &worker : workers)
        worker.join();
    QVERIFY(frames <= atClose + 40); // at most what was on its way
    QCOMPARE(driver_->TransmitCan(channel_[0], nullptr, 0), 0u);
}
