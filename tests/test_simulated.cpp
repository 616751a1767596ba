#include "device/driver/simulated/bittiming.h"
#include "device/driver/simulated/candumplog.h"
#include "device/driver/simulated/simulateddriver.h"
#include "drivercontract.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <cstring>
#include <fstream>
#include <numeric>
#include <set>
#include <thread>

using Traffic = SimulatorOptions::Traffic;
Q_DECLARE_METATYPE(Traffic)

namespace
{

SimulatorOptions options(Traffic traffic)
{
    SimulatorOptions result;
    result.traffic = traffic;
    result.transmitPatienceMs = 60000; // a wait that nothing interrupts fails by the test's own time limit
    return result;
}

// What a frame is, without its time.
QByteArray text(std::uint32_t id, unsigned length, bool fd, bool switched, const std::uint8_t *data)
{
    return QByteArray::number(id, 16) + (fd ? (switched ? " FD+ " : " FD ") : " CAN ") + QByteArray::number(length) +
           ' ' + QByteArray(reinterpret_cast<const char *>(data), int(length)).toHex();
}
QByteArray text(const BusFrame &f)
{
    return text(f.id, f.length, f.fd, f.bitRateSwitch, f.data);
}
QByteArray text(const CanReceiveRecord &r)
{
    return text(r.id, r.length, false, false, r.data);
}
QByteArray text(const CanFdReceiveRecord &r)
{
    return text(r.id, r.length, true, r.flags != 0, r.data);
}

template <typename Record> std::vector<std::uint64_t> gaps(const std::vector<Record> &records)
{
    std::vector<std::uint64_t> result;
    for (std::size_t i = 1; i < records.size(); ++i)
        result.push_back(records[i].timeStamp - records[i - 1].timeStamp);
    return result;
}

} // namespace

class TestSimulated : public DriverContract
{
    Q_OBJECT

protected:
    std::unique_ptr<Driver> createDriver() override { return std::make_unique<SimulatedDriver>(options(Traffic::Off)); }

private:
    SimulatedDriver *use(const SimulatorOptions &wanted)
    {
        auto made = std::make_unique<SimulatedDriver>(wanted);
        SimulatedDriver *raw = made.get();
        driver_ = std::move(made);
        return raw;
    }
    // The classic identifier words that a channel hears, up to and with `last`.
    QList<uint> identifiersUpTo(unsigned channel, uint last)
    {
        QList<uint> heard;
        const QDeadlineTimer deadline(10000);
        while (!heard.contains(last) && !deadline.hasExpired())
            for (const CanReceiveRecord &record : receiveCan(channel, 1))
                heard.append(record.id);
        return heard.contains(last) ? heard : QList<uint>();
    }
    std::vector<DriverNotice> noticesOf(DriverNotice::Kind kind)
    {
        std::vector<DriverNotice> found;
        for (const DriverNotice &notice : driver_->takeNotices())
            if (notice.kind == kind)
                found.push_back(notice);
        return found;
    }

private slots:
    // --- who hears whom -----------------------------------------------------------------------------------------

    void ratesDecideWhoHears_data()
    {
        // The second channel's settings; the first has the defaults: 1M, 5M, ISO.
        QTest::addColumn<uint>("arbitration");
        QTest::addColumn<uint>("data");
        QTest::addColumn<uint>("standard");
        QTest::addColumn<QByteArray>("custom");
        QTest::addColumn<bool>("classic");
        QTest::addColumn<bool>("fd");
        QTest::addColumn<bool>("switched");
        const QByteArray none;
        QTest::newRow("the same") << 0u << 0u << 0u << none << true << true << true;
        QTest::newRow("other arbitration rate") << 2u << 0u << 0u << none << false << false << false;
        QTest::newRow("other data rate") << 0u << 2u << 0u << none << true << true << false;
        QTest::newRow("other standard") << 0u << 0u << 1u << none << true << false << false;
        QTest::newRow("custom, the same") << 2u << 2u << 0u << QByteArray("1M 5Mbps(75%)") << true << true << true;
        QTest::newRow("custom, almost the same") << 2u << 2u << 0u << QByteArray("998k/5.01M") << true << true << true;
        QTest::newRow("custom, other data rate") << 0u << 0u << 0u << QByteArray("1M") << true << true << false;
        QTest::newRow("custom, other") << 0u << 0u << 0u << QByteArray("500kbps(80%) 5M") << false << false << false;
    }
    void ratesDecideWhoHears()
    {
        QFETCH(uint, arbitration);
        QFETCH(uint, data);
        QFETCH(uint, standard);
        QFETCH(QByteArray, custom);
        QFETCH(bool, classic);
        QFETCH(bool, fd);
        QFETCH(bool, switched);
        openBoth();
        QCOMPARE(driver_->SetArbitrationBaud(device_, 1, arbitration), kDriverSuccess);
        QCOMPARE(driver_->SetDataBaud(device_, 1, data), kDriverSuccess);
        QCOMPARE(driver_->SetCanFdStandard(device_, 1, standard), kDriverSuccess);
        if (!custom.isEmpty())
            QCOMPARE(setProperty("1/baud_rate_custom", custom.constData()), kDriverSuccess);
        const CanTransmitRecord classicFrame = canRecord(1);
        const CanFdTransmitRecord fdFrame = fdRecord(2);
        const CanFdTransmitRecord switchedFrame = fdRecord(3, 8, kFdBitRateSwitch);
        // On a quiet bus whoever hears is the one who acknowledges.
        QCOMPARE(driver_->TransmitCan(channel_[0], &classicFrame, 1), classic ? 1u : 0u);
        QCOMPARE(driver_->TransmitCanFd(channel_[0], &fdFrame, 1), fd ? 1u : 0u);
        QCOMPARE(driver_->TransmitCanFd(channel_[0], &switchedFrame, 1), switched ? 1u : 0u);
        QCOMPARE(receiveCan(1, classic).size(), std::size_t(classic));
        QCOMPARE(receiveFd(1, std::size_t(fd) + switched).size(), std::size_t(fd) + switched);
    }

    void valuesOutOfRangeAreRefused()
    {
        openBoth();
        QCOMPARE(driver_->SetArbitrationBaud(device_, 0, 17), kDriverSuccess);
        QCOMPARE(driver_->SetArbitrationBaud(device_, 0, 18), 0u);
        QCOMPARE(driver_->SetDataBaud(device_, 0, 8), kDriverSuccess);
        QCOMPARE(driver_->SetDataBaud(device_, 0, 9), 0u);
        QCOMPARE(driver_->SetCanFdStandard(device_, 0, 2), 0u);
        QCOMPARE(driver_->SetDataBaud(device_, 2, 0), 0u);
        ChannelInitRecord record{};
        record.channelType = 1;
        record.workMode1 = record.workMode2 = 2;
        QCOMPARE(driver_->InitChannel(device_, 0, &record), 0u);
        const CanTransmitRecord wide = canRecord(0x800);
        const CanTransmitRecord unknownType = canRecord(1, 8, static_cast<TransmitType>(4));
        driver_->CloseDevice(device_);
        openBoth();
        QCOMPARE(driver_->TransmitCan(channel_[0], &wide, 1), 0u);
        QCOMPARE(driver_->TransmitCan(channel_[0], &unknownType, 1), 0u);
    }

    void properties_data()
    {
        QTest::addColumn<QList<QByteArray>>("writes"); // all but the last succeed
        QTest::addColumn<bool>("lastSucceeds");
        const auto row = [](const char *name, const QList<QByteArray> &writes, bool succeeds) {
            QTest::newRow(name) << writes << succeeds;
        };
        row("resistance", {"0/initenal_resistance=120"}, true);
        row("resistance, spelled right", {"0/internal_resistance=120"}, false);
        row("resistance, no number", {"0/initenal_resistance=on"}, false);
        row("mode 2", {"0/filter_mode=2"}, false);
        row("mode empty", {"0/filter_mode="}, false);
        row("start without mode", {"0/filter_start=0x1"}, false);
        row("end without start", {"0/filter_mode=0", "0/filter_end=0x1"}, false);
        row("no number behind 0x", {"0/filter_mode=0", "0/filter_start=0x"}, false);
        row("no hexadecimal", {"0/filter_mode=0", "0/filter_start=0xG"}, false);
        row("past 11 bits", {"0/filter_mode=0", "0/filter_start=0x800"}, false);
        row("11 bits", {"0/filter_mode=0", "0/filter_start=0x7FF", "0/filter_end=0x7FF"}, true);
        row("past 29 bits", {"0/filter_mode=1", "0/filter_start=0x20000000"}, false);
        row("past 32 bits", {"0/filter_mode=1", "0/filter_start=0x100000001"}, false);
        row("end below start", {"0/filter_mode=1", "0/filter_start=0x10", "0/filter_end=0xF"}, false);
        row("a range begun", {"0/filter_mode=1", "0/filter_ack=0"}, false);
        row("a range begun, cleared", {"0/filter_mode=1", "0/filter_clear=0", "0/filter_ack=0"}, true);
        row("clear, no number", {"0/filter_clear=x"}, false);
        for (const char *rates :
             {"500k", "500kbps(80%)+2Mbps(80%)", "83.33K", "5000 5000", "1Mbit/s / 8Mbit/s", "1M 5M 8,15,4,1"})
            row(rates, {QByteArray("1/baud_rate_custom=") + rates}, true);
        for (const char *rates : {"", "fast", "4k", "1.1M", "500k 9M", "500k(80%", "500bit", "500k;2M", "500k x",
                                  "-500k", "99999999999999999999999999999999999999999999"})
            row(rates, {QByteArray("1/baud_rate_custom=") + rates}, false);
    }
    void properties()
    {
        QFETCH(QList<QByteArray>, writes);
        QFETCH(bool, lastSucceeds);
        openBoth();
        for (int i = 0; i < writes.size(); ++i) {
            const int equals = writes.at(i).indexOf('=');
            const bool expected = i + 1 < writes.size() || lastSucceeds;
            QCOMPARE(setProperty(writes.at(i).left(equals).constData(), writes.at(i).mid(equals + 1).constData()),
                     expected ? kDriverSuccess : 0u);
        }
    }

    // Programmed ranges act from the acknowledgement on, and a refused one changes nothing.
    void filtersActWhenAcknowledged()
    {
        openBoth();
        const CanTransmitRecord records[] = {canRecord(0x300), canRecord(0x100)};
        const auto passes = [&] {
            driver_->TransmitCan(channel_[0], records, 2);
            const auto heard = identifiersUpTo(1, records[1].id);
            return heard.contains(records[0].id);
        };
        for (const char *write : {"clear", "mode", "start", "end"})
            QCOMPARE(setProperty((QByteArray("1/filter_") + write).constData(), qstrcmp(write, "end") ? "0" : "0x1FF"),
                     kDriverSuccess);
        QVERIFY(passes());
        QCOMPARE(setProperty("1/filter_mode", "7"), 0u);
        QCOMPARE(setProperty("1/filter_ack", "0"), kDriverSuccess);
        QVERIFY(!passes());
        QCOMPARE(setProperty("1/filter_clear", "0"), kDriverSuccess);
        QCOMPARE(setProperty("1/filter_ack", "0"), kDriverSuccess);
        QVERIFY(passes());
    }

    void listenOnlySendsAndAcknowledgesNothing()
    {
        QVERIFY(openDevice() != 0);
        initChannel(0);
        initChannel(1, 1);
        startChannel(0);
        startChannel(1);
        const CanTransmitRecord record = canRecord(0x1);
        QCOMPARE(driver_->TransmitCan(channel_[1], &record, 1), 0u);
        QCOMPARE(driver_->TransmitCan(channel_[0], &record, 1), 0u); // nobody to acknowledge

        use(options(Traffic::BuiltIn));
        QVERIFY(openDevice() != 0);
        initChannel(1, 1);
        startChannel(1);
        initChannel(0);
        startChannel(0);
        QCOMPARE(driver_->TransmitCan(channel_[1], &record, 1), 0u);
        QCOMPARE(driver_->TransmitCan(channel_[0], &record, 1), 1u); // the vehicle does
        QVERIFY(!identifiersUpTo(1, record.id).isEmpty());
    }

    void theVehicleSpeaksAtTheRatesOfTheFirstChannel()
    {
        SimulatedDriver *simulated = use(options(Traffic::BuiltIn));
        QVERIFY(openDevice() != 0);
        QCOMPARE(driver_->SetArbitrationBaud(device_, 1, 2), kDriverSuccess);
        initChannel(0);
        initChannel(1);
        startChannel(1);
        startChannel(0);
        QVERIFY(receiveCan(1, 50).size() >= 50);
        CanReceiveRecord none;
        QCOMPARE(driver_->ReceiveCan(channel_[0], &none, 1, 0), 0u);
        const CanTransmitRecord record = canRecord(1);
        QCOMPARE(driver_->TransmitCan(channel_[0], &record, 1), 0u);
        QCOMPARE(driver_->TransmitCan(channel_[1], &record, 1), 1u);
        // Every kind of frame is there.
        std::set<QByteArray> kinds;
        QTRY_COMPARE_WITH_TIMEOUT(
            [&] {
                for (const auto &entry : simulated->vehicleCounts())
                    kinds.insert(QByteArray(entry.first & kIdExtendedFlag ? "ext " : "std ") +
                                 (entry.first & kIdRemoteFlag ? "remote" : "data"));
                for (const CanFdReceiveRecord &fd : receiveFd(1, 1))
                    kinds.insert(fd.flags ? "FD switched" : "FD");
                return kinds.size();
            }(),
            std::size_t(6), 20000);
    }

    void theVehicleLeavesRoomOnASlowBus()
    {
        constexpr BusTime kSecond = 1000000000;
        VirtualBus bus(options(Traffic::Off));
        bus.setTraffic(makeBuiltInVehicle());
        bus.setSettings(0, {5000, 100000, 0}, 0);
        bus.start(0, 0);
        bus.advance(100 * kSecond, 1000000);
        BusFrame last;
        last.id = 0x7FF;
        QVERIFY(bus.enqueue(0, last, TransmitType::Normal, 100 * kSecond));
        bus.advance(103 * kSecond, 1000000);
        QVERIFY(bus.channel(0).transmissions.empty());
        const std::size_t heard = bus.channel(0).classic.size() + bus.channel(0).fd.size();
        QVERIFY2(heard > 500 && heard < 3000, qPrintable(QString::number(heard)));
    }

    // --- the wire -----------------------------------------------------------------------------------------------

    void framesTakeTheirTime_data()
    {
        QTest::addColumn<bool>("fd");
        QTest::addColumn<uint>("id");
        QTest::addColumn<int>("length");
        QTest::addColumn<bool>("switched");
        QTest::addColumn<qulonglong>("nanoseconds"); // at 1M and 5M
        const uint ext = 0x123 | kIdExtendedFlag;
        QTest::newRow("classic 0") << false << 0x123u << 0 << false << 47000ull;
        QTest::newRow("classic 8") << false << 0x123u << 8 << false << 111000ull;
        QTest::newRow("classic extended 8") << false << ext << 8 << false << 131000ull;
        QTest::newRow("remote 8") << false << (0x123u | kIdRemoteFlag) << 8 << false << 47000ull;
        QTest::newRow("FD 0") << true << 0x123u << 0 << false << (29 + 33) * 1000ull;
        QTest::newRow("FD switched 0") << true << 0x123u << 0 << true << 29000 + 33 * 200ull;
        QTest::newRow("FD switched 16") << true << 0x123u << 16 << true << 29000 + 161 * 200ull;
        QTest::newRow("FD switched extended 20") << true << ext << 20 << true << 48000 + 198 * 200ull;
        QTest::newRow("FD switched 64") << true << 0x123u << 64 << true << 29000 + 550 * 200ull;
    }
    void framesTakeTheirTime()
    {
        QFETCH(bool, fd);
        QFETCH(uint, id);
        QFETCH(int, length);
        QFETCH(bool, switched);
        QFETCH(qulonglong, nanoseconds);
        constexpr std::uint32_t kFrames = 100; // fit into the transmit queue, so the bus is never idle between them
        openBoth();
        std::vector<std::uint64_t> apart;
        if (fd) {
            const auto flags = switched ? kFdBitRateSwitch : std::uint8_t(0);
            const std::vector<CanFdTransmitRecord> sent(kFrames, fdRecord(id, std::uint8_t(length), flags));
            QCOMPARE(driver_->TransmitCanFd(channel_[0], sent.data(), kFrames), kFrames);
            apart = gaps(receiveFd(1, kFrames));
        } else {
            const std::vector<CanTransmitRecord> sent(kFrames, canRecord(id, std::uint8_t(length)));
            QCOMPARE(driver_->TransmitCan(channel_[0], sent.data(), kFrames), kFrames);
            apart = gaps(receiveCan(1, kFrames));
        }
        QCOMPARE(apart.size(), std::size_t(kFrames - 1));
        // The first may have gone before the others were there.
        const auto total = std::accumulate(apart.begin() + 1, apart.end(), std::uint64_t(0));
        QVERIFY2(total * 1000 + 1000 >= (kFrames - 2) * nanoseconds &&
                     total * 1000 <= (kFrames - 2) * nanoseconds + 1000,
                 qPrintable(QString::number(total)));
    }

    void theLowestIdentifierWinsTheBus()
    {
        VirtualBus bus(options(Traffic::Off));
        std::vector<QByteArray> order;
        for (unsigned channel = 0; channel < kChannelCount; ++channel)
            bus.start(channel, 0);
        const auto send = [&bus](unsigned channel, std::uint32_t id) {
            BusFrame frame;
            frame.id = id;
            QVERIFY(bus.enqueue(channel, frame, TransmitType::Normal, 10));
        };
        // Channel by channel the order stays; between them the one that is more dominant at the first difference wins.
        send(0, 0x400);
        send(0, 0x100);
        send(1, 0x401);
        send(1, 0x100u << 18 | kIdExtendedFlag); // the same first 11 bits: loses to the standard frame
        send(1, 0x100);
        QCOMPARE(bus.advance(1000, 100), BusTime(10 + 47000));
        QCOMPARE(bus.advance(1000000, 100), kNever);
        CanReceiveRecord received[2][3];
        QCOMPARE(bus.channel(1).classic.take(received[1], 3), std::size_t(2));
        QCOMPARE(bus.channel(0).classic.take(received[0], 3), std::size_t(3));
        QCOMPARE(received[1][0].timeStamp, 47u);
        QCOMPARE(received[1][1].timeStamp, 94u);
        QCOMPARE(received[0][0].timeStamp, 141u);
        QCOMPARE(received[0][1].timeStamp, 208u);
        QCOMPARE(received[0][2].timeStamp, 255u);
    }

    void equalIdentifiersTakeTurns()
    {
        VirtualBus bus(options(Traffic::Off));
        BusFrame frame;
        frame.id = 0x100;
        for (unsigned channel = 0; channel < kChannelCount; ++channel) {
            bus.start(channel, 0);
            for (int i = 0; i < 2; ++i)
                QVERIFY(bus.enqueue(channel, frame, TransmitType::Normal, 0));
        }
        QCOMPARE(bus.advance(1000000, 100), kNever);
        std::vector<std::uint64_t> ends;
        for (unsigned channel = 0; channel < kChannelCount; ++channel) {
            CanReceiveRecord received[2];
            QCOMPARE(bus.channel(channel).classic.take(received, 2), std::size_t(2));
            ends.insert(ends.end(), {received[0].timeStamp, received[1].timeStamp});
        }
        QCOMPARE(ends, (std::vector<std::uint64_t>{94, 188, 47, 141}));
    }

    void framesWithoutListenersWaitOrAreGivenUp()
    {
        VirtualBus bus(options(Traffic::Off));
        bus.start(0, 0);
        bus.start(1, 0);
        BusFrame frame;
        for (const TransmitType type : {TransmitType::Single, TransmitType::Normal, TransmitType::Single})
            QVERIFY(bus.enqueue(0, frame, type, 0));
        bus.initialise(1, false, 0);
        QCOMPARE(bus.advance(1000000000, 100), kNever);
        bus.start(1, 1000000000);
        QCOMPARE(bus.advance(2000000000, 100), kNever);
        QCOMPARE(bus.channel(1).classic.size(),
                 std::size_t(2)); // the first single-shot is gone, the others had their chance
    }

    void withoutBusTimeNothingIsLost()
    {
        constexpr std::size_t kFrames = 100000;
        SimulatorOptions flood = options(Traffic::Flood);
        flood.busTime = false;
        BusFrame classic;
        classic.id = 0x123;
        classic.length = 8;
        flood.flood = {classic};
        use(flood);
        openBoth();
        std::vector<CanReceiveRecord> received[kChannelCount];
        std::vector<std::thread> receivers;
        for (unsigned channel = 0; channel < kChannelCount; ++channel)
            receivers.emplace_back([&, channel] { received[channel] = receiveCan(channel, kFrames); });
        for (std::thread &receiver : receivers)
            receiver.join();
        for (const auto &frames : received) {
            QVERIFY(frames.size() >= kFrames);
            std::uint32_t first = 0;
            std::memcpy(&first, frames.front().data, sizeof first);
            for (std::size_t i = 0; i < frames.size(); ++i) {
                std::uint32_t number = 0;
                std::memcpy(&number, frames[i].data, sizeof number);
                if (number != first + i)
                    QCOMPARE(std::size_t(number), first + i);
            }
        }
        QVERIFY(noticesOf(DriverNotice::Kind::FramesLost).empty());
    }

    void whatFindsNoRoomIsCounted()
    {
        SimulatorOptions small = options(Traffic::Off);
        small.receiveCapacity = 10;
        use(small);
        openBoth();
        const std::vector<CanTransmitRecord> classic(25, canRecord(1));
        const std::vector<CanFdTransmitRecord> fd(12, fdRecord(1));
        QCOMPARE(driver_->TransmitCan(channel_[0], classic.data(), 25), 25u);
        QCOMPARE(driver_->TransmitCanFd(channel_[0], fd.data(), 12), 12u);
        std::uint64_t lost = 0;
        QTRY_COMPARE_WITH_TIMEOUT(
            [&] {
                for (const DriverNotice &notice : noticesOf(DriverNotice::Kind::FramesLost))
                    lost += notice.channel == 1 ? notice.count : 1000;
                return lost;
            }(),
            std::uint64_t(15 + 2), 10000);
        QCOMPARE(receiveCan(1, 10).size(), std::size_t(10));
        QCOMPARE(receiveFd(1, 10).size(), std::size_t(10));
        QVERIFY(noticesOf(DriverNotice::Kind::FramesLost).empty());
    }

    // --- coming and going ---------------------------------------------------------------------------------------

    void waitingSendersAreInterrupted_data()
    {
        QTest::addColumn<QByteArray>("by");
        for (const char *by : {"close", "reset", "unplug", "update", "driver reset"})
            QTest::newRow(by) << QByteArray(by);
    }
    void waitingSendersAreInterrupted()
    {
        QFETCH(QByteArray, by);
        SimulatedDriver *simulated = use(options(Traffic::Off));
        openBoth();
        for (unsigned channel = 0; channel < kChannelCount; ++channel)
            QCOMPARE(driver_->SetArbitrationBaud(device_, channel, 13), kDriverSuccess); // 5 kbit/s: 45 frames a second
        std::atomic<bool> returned{false};
        std::uint32_t taken = 0;
        const std::vector<CanTransmitRecord> records(5000, canRecord(1));
        std::thread sender([&] {
            taken = driver_->TransmitCan(channel_[0], records.data(), 5000);
            returned = true;
        });
        const auto first = receiveCan(1, 2); // the sender is in its call
        if (by == "close")
            driver_->CloseDevice(device_);
        else if (by == "reset")
            driver_->ResetChannel(channel_[0]);
        else if (by == "unplug")
            simulated->unplug();
        else if (by == "update")
            driver_->UpdateDevice(device_);
        else
            driver_->ResetDriver();
        QTRY_VERIFY_WITH_TIMEOUT(returned, 20000);
        sender.join();
        QCOMPARE(first.size(), std::size_t(2));
        QVERIFY(taken >= 2 && taken < 2000);
    }

    void waitingForRoomHasAnEnd()
    {
        SimulatorOptions impatient = options(Traffic::Off);
        impatient.transmitPatienceMs = 20;
        impatient.transmitCapacity = 4;
        use(impatient);
        openBoth();
        for (unsigned channel = 0; channel < kChannelCount; ++channel)
            QCOMPARE(driver_->SetArbitrationBaud(device_, channel, 13), kDriverSuccess);
        const std::vector<CanTransmitRecord> records(5000, canRecord(1));
        const std::uint32_t taken = driver_->TransmitCan(channel_[0], records.data(), 5000);
        QVERIFY(taken >= 4 && taken < 5000);
    }

    void unpluggingFiftyTimes()
    {
        SimulatorOptions prompt = options(Traffic::BuiltIn);
        prompt.vehicleDelayMs = 5;
        SimulatedDriver *simulated = use(prompt);
        const auto threads = [] { return QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(); };
        const int before = threads();
        for (int round = 0; round < 50; ++round) {
            openBoth();
            const CanTransmitRecord record = canRecord(0x7E0);
            QCOMPARE(driver_->TransmitCan(channel_[0], &record, 1), 1u);
            QVERIFY(!receiveCan(0, 1).empty() && !receiveCan(1, 1).empty());
            simulated->unplug();
            QVERIFY(driver_->GetDeviceStatus(device_) != kStatusPresent);
            QCOMPARE(driver_->TransmitCan(channel_[0], &record, 1), 0u);
            CanReceiveRecord received;
            QCOMPARE(driver_->ReceiveCan(channel_[1], &received, 1, 0), 0u);
            QCOMPARE(driver_->StartChannel(channel_[0]), 0u);
            QCOMPARE(setProperty("0/filter_clear", "0"), 0u);
            if (round % 2 == 0)
                simulated->replug(); // the open device stays gone
            QVERIFY(driver_->GetDeviceStatus(device_) != kStatusPresent);
            driver_->CloseDevice(device_);
            if (round % 2 != 0)
                QCOMPARE(driver_->OpenDevice(kDeviceType, 0, 0), 0u);
            simulated->replug();
        }
        QTRY_COMPARE(threads(), before); // a joined thread leaves the list a moment later
    }

    void theBootLoaderTakesTheAdapterAway()
    {
        openBoth();
        QCOMPARE(driver_->UpdateDevice(device_), kDriverSuccess);
        QVERIFY(driver_->GetDeviceStatus(device_) != kStatusPresent);
        QCOMPARE(driver_->UpdateDevice(device_), 0u);
        driver_->CloseDevice(device_);
        openBoth();
        QCOMPARE(driver_->GetDeviceStatus(device_), kStatusPresent);
    }

    // The table has no context: its calls reach the driver that was asked last, and none once that one is gone.
    void thePropertyTableOutlivesItsDriver()
    {
        openBoth();
        const PropertyInterface *table = driver_->GetPropertyInterface(device_);
        QCOMPARE(table->SetValue("0/filter_clear", "0"), kDriverSuccess);
        QCOMPARE(table->SetValue(nullptr, "0"), 0u);
        QCOMPARE(table->SetValue("0/filter_clear", nullptr), 0u);
        driver_->CloseDevice(device_);
        QCOMPARE(table->SetValue("0/filter_clear", "0"), 0u);
        driver_.reset();
        QCOMPARE(table->SetValue("0/filter_clear", "0"), 0u);
    }

    // --- options and traffic ------------------------------------------------------------------------------------

    void environment_data()
    {
        QTest::addColumn<QByteArray>("trace");
        QTest::addColumn<QByteArray>("firmware");
        QTest::addColumn<Traffic>("traffic");
        QTest::addColumn<int>("version");
        QTest::newRow("nothing set") << QByteArray() << QByteArray() << Traffic::BuiltIn << 0x217;
        QTest::newRow("quiet, old firmware") << QByteArray("off") << QByteArray("0x210") << Traffic::Off << 0x210;
        QTest::newRow("flood") << QByteArray("flood") << QByteArray("10ab") << Traffic::Flood << 0x10AB;
        QTest::newRow("trace, bad firmware") << QByteArray("a.log") << QByteArray("V2.10") << Traffic::Trace << 0x217;
        QTest::newRow("firmware too large") << QByteArray() << QByteArray("10000") << Traffic::BuiltIn << 0x217;
    }
    void environment()
    {
        QFETCH(QByteArray, trace);
        QFETCH(QByteArray, firmware);
        QFETCH(Traffic, traffic);
        QFETCH(int, version);
        qputenv("OSTREL_SIM_TRACE", trace);
        qputenv("OSTREL_SIM_FIRMWARE", firmware);
        const SimulatorOptions read = SimulatorOptions::fromEnvironment();
        QCOMPARE(read.traffic, traffic);
        driver_ = std::make_unique<SimulatedDriver>();
        qunsetenv("OSTREL_SIM_TRACE");
        qunsetenv("OSTREL_SIM_FIRMWARE");
        QVERIFY(openDevice() != 0);
        DeviceInfoRecord info{};
        QCOMPARE(driver_->GetDeviceInfo(device_, &info), kDriverSuccess);
        QCOMPARE(int(info.firmwareVersion), version);
        QVERIFY(info.hardwareVersion && info.driverVersion && info.interfaceVersion && info.irqNumber);
        QCOMPARE(QByteArray(info.hardwareType), QByteArray("Halden-D2 (simulated)"));
    }

    void openingSaysThatThisIsNoHardware()
    {
        SimulatorOptions missing = options(Traffic::Trace);
        missing.tracePath = "no such file.log";
        SimulatedDriver *simulated = use(missing);
        for (int round = 0; round < 2; ++round) {
            openBoth();
            const auto notices = driver_->takeNotices();
            QCOMPARE(notices.size(), std::size_t(2));
            QCOMPARE(notices[0].kind, DriverNotice::Kind::TraceUnreadable);
            QCOMPARE(notices[0].detail, std::string("no such file.log"));
            QCOMPARE(notices[1].kind, DriverNotice::Kind::NotHardware);
            QVERIFY(!notices[1].detail.empty());
            QVERIFY(!receiveCan(0, 1).empty()); // the built-in vehicle plays instead
            driver_->CloseDevice(device_);
        }
        QVERIFY(!simulated->vehicleCounts().empty());
    }

    void bothChannelsHearTheWholeTrace()
    {
        constexpr std::size_t kLoops = 3;
        const QTemporaryDir dir;
        const std::string path = dir.filePath("made.log").toStdString();
        {
            // Bursts that the bus is too slow for, identifiers that fall within them, a clock that jumps back.
            std::ofstream file(path);
            file << "garbage\n(1000.000000) can0 20000004#0000000000000000\n";
            for (int i = 0; i < 600; ++i) {
                char line[220];
                const int time = i % 50 == 49 ? i / 50 * 20000 - 3000 : i / 50 * 20000;
                const char *const forms[] = {"%03X#%08X", "%08X#%08X00", "%03X#R%X", "%03X##1%08X", "%08X##0%08X"};
                const int form = i % 5;
                const unsigned id = form == 1 || form == 4 ? 0x18000000u - unsigned(i) : 0x7FFu - unsigned(i);
                std::snprintf(line, sizeof line, (std::string("(1000.%06d) can0 ") + forms[form] + "\n").c_str(),
                              time + 3000, id, form == 2 ? unsigned(i % 9) : unsigned(i));
                file << line;
            }
        }
        CandumpLog log;
        QVERIFY(loadCandumpLog(path, &log));
        QCOMPARE(log.frames.size(), std::size_t(600));
        QCOMPARE(log.malformed + log.errorFrames, std::size_t(2));

        SimulatorOptions trace = options(Traffic::Trace);
        trace.tracePath = path;
        SimulatedDriver *simulated = use(trace);
        openBoth();
        QList<QByteArray> expected[2]; // classic and FD are fetched apart
        FrameCounts counts;
        for (std::size_t loop = 0; loop < kLoops; ++loop)
            for (const LoggedFrame &logged : log.frames) {
                expected[logged.frame.fd ? 1 : 0].append(text(logged.frame));
                ++counts[logged.frame.id];
            }
        for (unsigned channel = 0; channel < kChannelCount; ++channel) {
            const auto classic = receiveCan(channel, std::size_t(expected[0].size()));
            const auto fd = receiveFd(channel, std::size_t(expected[1].size()));
            QVERIFY(classic.size() >= std::size_t(expected[0].size()));
            QVERIFY(fd.size() >= std::size_t(expected[1].size()));
            for (int i = 0; i < expected[0].size(); ++i)
                QCOMPARE(text(classic[std::size_t(i)]), expected[0].at(i));
            for (int i = 0; i < expected[1].size(); ++i)
                QCOMPARE(text(fd[std::size_t(i)]), expected[1].at(i));
            for (const std::uint64_t apart : gaps(classic))
                QVERIFY(apart < 60000000u);
        }
        const FrameCounts sent = simulated->vehicleCounts();
        QCOMPARE(sent.size(), counts.size());
        for (const auto &entry : counts)
            QVERIFY(sent.at(entry.first) >= entry.second);
    }
};

QTEST_GUILESS_MAIN(TestSimulated)
#include "test_simulated.moc"
