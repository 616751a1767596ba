// The choice of drivers, and several drivers offered as one.
#include "device/driver/driverfactory.h"
#include "device/driver/driverlist.h"
#include "fakedriver.h"

#include <QtTest>

class TestDrivers : public QObject
{
    Q_OBJECT

private slots:
    void theListHandsEverythingToTheDriverWhoseDeviceIsOpen()
    {
        FakeDriver *fakes[] = {new FakeDriver, new FakeDriver};
        std::vector<std::unique_ptr<Driver>> drivers;
        for (FakeDriver *fake : fakes)
            drivers.emplace_back(fake);
        fakes[1]->deviceHandle = 8;
        fakes[0]->names = {"can0 + can1", "can2"};
        fakes[1]->names = {"simulated"};
        fakes[0]->notices = {{DriverNotice::Kind::InterfaceDown, "can2"}};
        fakes[1]->notices = {{DriverNotice::Kind::NotHardware, "simulated"}};
        DriverList list(std::move(drivers));

        QCOMPARE(list.deviceNames(), (std::vector<std::string>{"can0 + can1", "can2", "simulated"}));
        QCOMPARE(list.takeNotices().size(), std::size_t(2));
        QVERIFY(list.takeNotices().empty());

        QCOMPARE(list.OpenDevice(kDeviceType, 3, 0), 0u);
        QCOMPARE(list.OpenDevice(kDeviceType, 2, 0), 8u);
        QCOMPARE(fakes[1]->takeCalls(), QStringList{"OpenDevice(41,0,0)"});
        fakes[0]->names = {"can2"};
        QCOMPARE(list.deviceNames().size(), std::size_t(3)); // as long as a device is open
        list.SetDataBaud(8, 1, 3);
        const CanTransmitRecord record{};
        QCOMPARE(list.TransmitCan(FakeDriver::channelHandle(1), &record, 1), 1u);
        fakes[1]->report[1].lost = 5;
        QCOMPARE(list.busReport(FakeDriver::channelHandle(1), BusQuestion::State).lost, std::uint64_t(5));
        list.CloseDevice(8);
        QCOMPARE(fakes[1]->takeCalls(), QStringList({"SetDataBaud(8,1,3)", "TransmitCan(1,1)", "CloseDevice(8)"}));
        QVERIFY(fakes[0]->calls().isEmpty());

        // An interface that has gone since the list was shown does not shift what the others mean.
        QCOMPARE(list.OpenDevice(kDeviceType, 1, 0), 7u);
        QCOMPARE(fakes[0]->takeCalls(), QStringList{"OpenDevice(41,1,0)"});
    }

    void anUnknownChoiceIsThePlatformsOwnList()
    {
        const std::vector<std::string> own = makeDriver("")->deviceNames();
        QVERIFY(!own.empty());
        for (const char *choice : {"no such driver", ":"})
            QCOMPARE(makeDriver(choice)->deviceNames(), own);
        QCOMPARE(makeDriver("simulated:ignored")->deviceNames(), std::vector<std::string>{"Halden-D2 (simulated)"});
    }
};

QTEST_GUILESS_MAIN(TestDrivers)
#include "test_drivers.moc"
