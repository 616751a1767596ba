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
        std::vector<std::unique_ptr<Driver>> drivers;
        FakeDriver *fakes[2] = {};
        for (unsigned i = 0; i < 2; ++i) {
            auto fake = std::make_unique<FakeDriver>();
            fakes[i] = fake.get();
            fakes[i]->deviceHandle = 7 + i;
            drivers.push_back(std::move(fake));
        }
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
        list.SetDataBaud(8, 1, 3);
        const CanTransmitRecord record{};
        QCOMPARE(list.TransmitCan(FakeDriver::channelHandle(1), &record, 1), 1u);
        list.CloseDevice(8);
        QCOMPARE(fakes[1]->takeCalls(), QStringList({"SetDataBaud(8,1,3)", "TransmitCan(1,1)", "CloseDevice(8)"}));
        QVERIFY(fakes[0]->calls().isEmpty());

        // An interface that has gone since the list was shown does not shift what the others mean.
        fakes[0]->names = {"can2"};
        QCOMPARE(list.OpenDevice(kDeviceType, 1, 0), 7u);
        QCOMPARE(fakes[0]->takeCalls(), QStringList{"OpenDevice(41,1,0)"});
    }

    void choices_data()
    {
        QTest::addColumn<QString>("choice");
        for (const char *choice : {"", "simulated", "no such driver", "simulated:ignored", ":"})
            QTest::newRow(choice) << choice;
    }
    void choices()
    {
        QFETCH(QString, choice);
        const std::unique_ptr<Driver> driver = makeDriver(choice.toStdString());
        QVERIFY(driver);
        const auto names = driver->deviceNames();
        QVERIFY(!names.empty());
        if (choice.startsWith("simulated"))
            QCOMPARE(names, std::vector<std::string>{"Halden-D2 (simulated)"});
    }
};

QTEST_GUILESS_MAIN(TestDrivers)
#include "test_drivers.moc"
