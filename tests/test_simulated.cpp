#include "device/driver/simulated/simulateddriver.h"
#include "drivercontract.h"

#include <QDir>
#include <QtTest>

#include <atomic>
#include <functional>
#include <thread>

using Traffic = SimulatorOptions::Traffic;

namespace
{

constexpr std::uint32_t kSlowest = 13; // 5 kbit/s: 45 frames a second

SimulatorOptions options(Traffic traffic)
{
    SimulatorOptions result;
    result.traffic = traffic;
    result.transmitPatienceMs = 60000; // a wait that nothing interrupts fails by the test's own time limit
    return result;
}

} // namespace

class TestSimulated : public DriverContract
{
    Q_OBJECT

protected:
    std::unique_ptr<Driver> createDriver() override { return std::make_unique<SimulatedDriver>(options(Traffic::Off)); }

    // Nobody is left to acknowledge.
    void disturbFirstChannel() override
    {
        QCOMPARE(driver_->SetArbitrationBaud(device_, 1, kSlowest), kDriverSuccess);
        QCOMPARE(transmit(0, {canRecord(3)}), 0u);
        QCOMPARE(driver_->SetArbitrationBaud(device_, 1, 0), kDriverSuccess);
    }

private:
    SimulatedDriver *use(const SimulatorOptions &wanted)
    {
        driver_ = std::make_unique<SimulatedDriver>(wanted);
        return static_cast<SimulatedDriver *>(driver_.get());
    }
    void openSlow()
    {
        openBoth();
        for (unsigned channel = 0; channel < kChannelCount; ++channel)
            QCOMPARE(driver_->SetArbitrationBaud(device_, channel, kSlowest), kDriverSuccess);
    }

private slots:
    // --- who hears whom -----------------------------------------------------------------------------------------

    void ratesDecideWhoHears()
    {
        // The second channel's settings; the first has the defaults: 1M, 5M, ISO.
        struct Case {
            unsigned arbitration;
            unsigned data;
            unsigned standard;
            const char *custom;
            unsigned heard; // so many of a classic frame, an FD one and one with bit-rate switch
        };
        for (const Case &second :
             {Case{0, 0, 0, nullptr, 3}, Case{2, 0, 0, nullptr, 0}, Case{0, 2, 0, nullptr, 2},
              Case{0, 0, 1, nullptr, 1}, Case{2, 2, 0, "1M 5Mbps(75%)", 3}, Case{2, 2, 0, "998k/5.01M", 3},
              Case{0, 0, 0, "1M", 2}, Case{0, 0, 0, "500kbps(80%) 5M", 0}}) {
            openBoth();
            QCOMPARE(driver_->SetArbitrationBaud(device_, 1, second.arbitration), kDriverSuccess);
            QCOMPARE(driver_->SetDataBaud(device_, 1, second.data), kDriverSuccess);
            QCOMPARE(driver_->SetCanFdStandard(device_, 1, second.standard), kDriverSuccess);
            QVERIFY(!second.custom || setProperty("1/baud_rate_custom", second.custom) == kDriverSuccess);
            // On a quiet bus whoever hears is the one who acknowledges.
            QCOMPARE(transmit(0, {canRecord(1)}), std::uint32_t(second.heard > 0));
            QCOMPARE(transmit(0, {fdRecord(2)}), std::uint32_t(second.heard > 1));
            QCOMPARE(transmit(0, {fdRecord(3, 8, kFdBitRateSwitch)}), std::uint32_t(second.heard > 2));
            driver_->CloseDevice(device_);
        }
    }

    void valuesOutOfRangeAreRefused()
    {
        openBoth();
        QCOMPARE(driver_->SetArbitrationBaud(device_, 0, 18), 0u);
        QCOMPARE(driver_->SetDataBaud(device_, 0, 9), 0u);
        QCOMPARE(driver_->SetCanFdStandard(device_, 0, 2), 0u);
        QCOMPARE(driver_->SetDataBaud(device_, kChannelCount, 0), 0u);
        QCOMPARE(transmit(0, {canRecord(0x800)}), 0u);
        QCOMPARE(transmit(0, {canRecord(1, 8, static_cast<TransmitType>(4))}), 0u);
        QVERIFY(reachesTheOther(0));
    }

    void properties()
    {
        openBoth();
        for (const char *rates :
             {"500k", "500kbps(80%)+2Mbps(80%)", "83.33K", "5000 5000", "1Mbit/s / 8Mbit/s", "1M 5M 8,15,4,1"})
            QVERIFY2(setProperty("1/baud_rate_custom", rates) == kDriverSuccess, rates);
        for (const char *rates : {"", "fast", "4k", "1.1M", "500k 9M", "500k(80%", "500bit", "500k;2M", "500k x",
                                  "-500k", "99999999999999999999999999999999999999999999"})
            QVERIFY2(setProperty("1/baud_rate_custom", rates) == 0, rates);
        QCOMPARE(setProperty("0/initenal_resistance", "120"), kDriverSuccess);
        QCOMPARE(setProperty("0/initenal_resistance", "on"), 0u);

        // A filter's steps, of which the last is refused.
        for (const char *steps :
             {"mode=2", "mode=", "start=0x1", "mode=0 end=0x1", "mode=0 start=0x", "mode=0 start=0xG",
              "mode=0 start=0x800", "mode=0 start=0x7FF end=0x800", "mode=1 start=0x20000000",
              "mode=1 start=0x100000001", "mode=1 start=0x10 end=0xF", "mode=1 ack=0", "clear=x"}) {
            QCOMPARE(setProperty("0/filter_clear", "0"), kDriverSuccess);
            const QList<QByteArray> writes = QByteArray(steps).split(' ');
            for (const QByteArray &write : writes) {
                const int equals = write.indexOf('=');
                const QByteArray path = "0/filter_" + write.left(equals);
                const std::uint32_t expected = write == writes.last() ? 0 : kDriverSuccess;
                QVERIFY2(setProperty(path.constData(), write.mid(equals + 1).constData()) == expected, steps);
            }
        }
    }

    void listenOnlySendsAndAcknowledgesNothing()
    {
        for (const Traffic traffic : {Traffic::Off, Traffic::BuiltIn}) {
            use(options(traffic));
            QVERIFY(openDevice() != 0);
            initChannel(0);
            initChannel(1, 1);
            startChannel(1);
            startChannel(0);
            QCOMPARE(transmit(1, {canRecord(1)}), 0u);
            // Nobody to acknowledge but the vehicle.
            QCOMPARE(transmit(0, {canRecord(1)}), std::uint32_t(traffic == Traffic::BuiltIn));
            QVERIFY(traffic == Traffic::Off || !receiveCan(1, 1).empty());
            driver_->CloseDevice(device_);
        }
    }

    void theVehicleSpeaksAtTheRatesOfTheFirstChannel()
    {
        use(options(Traffic::BuiltIn));
        QVERIFY(openDevice() != 0);
        QCOMPARE(driver_->SetArbitrationBaud(device_, 1, 2), kDriverSuccess);
        initChannel(0);
        initChannel(1);
        startChannel(1);
        startChannel(0);
        QVERIFY(receiveCan(1, 50).size() >= 50);
        QVERIFY(hasNothing(0));
        QCOMPARE(transmit(0, {canRecord(1)}), 0u);
        QCOMPARE(transmit(1, {canRecord(1)}), 1u);
    }

    // --- full queues --------------------------------------------------------------------------------------------

    void aFloodWithoutBusTimeReachesBothChannels()
    {
        SimulatorOptions flood = options(Traffic::Flood);
        flood.busTime = false;
        use(flood);
        openBoth();
        QVERIFY(receiveFd(0, 8000).size() >= 8000 && receiveFd(1, 8000).size() >= 8000);
    }

    void whatFindsNoRoomIsCounted()
    {
        SimulatorOptions small = options(Traffic::Off);
        small.receiveCapacity = 10;
        use(small);
        openBoth();
        QCOMPARE(transmit(0, std::vector<CanTransmitRecord>(25, canRecord(1))), 25u);
        QCOMPARE(transmit(0, std::vector<CanFdTransmitRecord>(12, fdRecord(1))), 12u);
        std::uint64_t lost = 0;
        const auto countLost = [&] {
            for (const DriverNotice &notice : driver_->takeNotices())
                if (notice.kind == DriverNotice::Kind::FramesLost && notice.channel == 1)
                    lost += notice.count;
            return lost;
        };
        QTRY_COMPARE_WITH_TIMEOUT(countLost(), std::uint64_t(15 + 2), 10000);
        QCOMPARE(receiveCan(1, 10).size(), std::size_t(10));
        QCOMPARE(receiveFd(1, 10).size(), std::size_t(10));
        QCOMPARE(countLost(), std::uint64_t(15 + 2)); // told once
    }

    void waitingForRoomHasAnEnd()
    {
        SimulatorOptions impatient = options(Traffic::Off);
        impatient.transmitPatienceMs = 20;
        impatient.transmitCapacity = 4;
        use(impatient);
        openSlow();
        const std::uint32_t taken = transmit(0, std::vector<CanTransmitRecord>(5000, canRecord(1)));
        QVERIFY(taken >= 4 && taken < 5000);
    }

    // --- coming and going ---------------------------------------------------------------------------------------

    void waitingSendersAreInterrupted()
    {
        SimulatedDriver *simulated = nullptr;
        const std::pair<const char *, std::function<void()>> interruptions[] = {
            {"close", [&] { driver_->CloseDevice(device_); }}, {"reset", [&] { driver_->ResetChannel(channel_[0]); }},
            {"unplug", [&] { simulated->unplug(); }},          {"update", [&] { driver_->UpdateDevice(device_); }},
            {"driver reset", [&] { driver_->ResetDriver(); }},
        };
        for (const auto &interruption : interruptions) {
            simulated = use(options(Traffic::Off));
            openSlow();
            std::atomic<bool> returned{false};
            std::uint32_t taken = 0;
            std::thread sender([&] {
                taken = transmit(0, std::vector<CanTransmitRecord>(5000, canRecord(1)));
                returned = true;
            });
            const std::size_t first = receiveCan(1, 2).size(); // the sender is in its call
            interruption.second();
            QTRY_VERIFY2_WITH_TIMEOUT(returned, interruption.first, 20000);
            sender.join();
            QVERIFY2(first >= 2 && taken >= first && taken < 2000, interruption.first);
            QCOMPARE(driver_->GetDeviceStatus(device_) == kStatusPresent, interruption.first == QByteArray("reset"));
            driver_->CloseDevice(device_);
            simulated->replug();
            openBoth();
            QVERIFY(reachesTheOther(0));
        }
    }

    void anUnpluggedAdapterStaysGoneUntilOpenedAgain()
    {
        SimulatedDriver *simulated = use(options(Traffic::Off));
        const auto threads = [] { return QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(); };
        const int before = threads();
        for (int round = 0; round < 50; ++round) {
            openBoth();
            QVERIFY(reachesTheOther(0));
            simulated->unplug();
            QCOMPARE(transmit(0, {canRecord(1)}), 0u);
            QVERIFY(hasNothing(1));
            QCOMPARE(driver_->StartChannel(channel_[0]), 0u);
            QCOMPARE(setProperty("0/filter_clear", "0"), 0u);
            if (round % 2 == 0)
                simulated->replug();
            QVERIFY(driver_->GetDeviceStatus(device_) != kStatusPresent);
            driver_->CloseDevice(device_);
            QVERIFY(round % 2 == 0 || driver_->OpenDevice(kDeviceType, 0, 0) == 0);
            simulated->replug();
        }
        QTRY_VERIFY(threads() <= before); // a joined thread leaves the list a moment later, one of an earlier test too
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

    // --- options ------------------------------------------------------------------------------------------------

    void environment()
    {
        const auto read = [](const char *trace, const char *firmware) {
            qputenv("OSTREL_SIM_TRACE", trace);
            qputenv("OSTREL_SIM_FIRMWARE", firmware);
            const SimulatorOptions options = SimulatorOptions::fromEnvironment();
            return qMakePair(options.traffic, unsigned(options.firmwareVersion));
        };
        QCOMPARE(read("", ""), qMakePair(Traffic::BuiltIn, 0x217u));
        QCOMPARE(read("off", "0x210"), qMakePair(Traffic::Off, 0x210u));
        QCOMPARE(read("flood", "10ab"), qMakePair(Traffic::Flood, 0x10ABu));
        QCOMPARE(read("a.log", "V2.10"), qMakePair(Traffic::Trace, 0x217u));
        QCOMPARE(read("", "10000"), qMakePair(Traffic::BuiltIn, 0x217u));
        qputenv("OSTREL_SIM_ERRORS", "25");
        QCOMPARE(SimulatorOptions::fromEnvironment().errorOneIn, 25u);
        qputenv("OSTREL_SIM_ERRORS", "many");
        QCOMPARE(SimulatorOptions::fromEnvironment().errorOneIn, 0u);
        qunsetenv("OSTREL_SIM_ERRORS");
        qunsetenv("OSTREL_SIM_TRACE");
        qunsetenv("OSTREL_SIM_FIRMWARE");
    }

    void openingSaysThatThisIsNoHardware()
    {
        SimulatorOptions missing = options(Traffic::Trace);
        missing.tracePath = "no such file.log";
        missing.firmwareVersion = 0x210;
        use(missing);
        for (int round = 0; round < 2; ++round) {
            openBoth();
            DeviceInfoRecord info{};
            QCOMPARE(driver_->GetDeviceInfo(device_, &info), kDriverSuccess);
            QCOMPARE(int(info.firmwareVersion), 0x210);
            const auto notices = driver_->takeNotices();
            QCOMPARE(notices.size(), std::size_t(2));
            QCOMPARE(notices[0].kind, DriverNotice::Kind::TraceUnreadable);
            QCOMPARE(notices[0].detail, missing.tracePath);
            QCOMPARE(notices[1].kind, DriverNotice::Kind::NotHardware);
            QVERIFY(!receiveCan(0, 1).empty()); // the built-in vehicle plays instead
            driver_->CloseDevice(device_);
        }
    }
};

QTEST_GUILESS_MAIN(TestSimulated)
#include "test_simulated.moc"
