#include "device/devicelayer.h"
#include "fakedriver.h"

#include <QSemaphore>
#include <QtTest>

#include <thread>

class TestDeviceLayer : public QObject
{
    Q_OBJECT

private:
    FakeDriver *fake_ = nullptr;

    void openBoth()
    {
        QVERIFY(openDevice(kDeviceType, 0, 0));
        QVERIFY(initChannel(0, 0));
        QVERIFY(initChannel(1, 0));
        fake_->takeCalls();
    }

private slots:
    void init() { fake_ = FakeDriver::install(); }

    void openingTriesTwiceAndRefusesASecondDevice()
    {
        fake_->openAnswers = {0, 9};
        QVERIFY(openDevice(kDeviceType, 3, 0));
        QCOMPARE(fake_->takeCalls(),
                 QStringList({"OpenDevice(41,3,0)", "ResetDriver()", "OpenDevice(41,3,0)", "GetPropertyInterface(9)"}));
        QVERIFY(!openDevice(kDeviceType, 0, 0));
        QVERIFY(fake_->takeCalls().isEmpty());
        closeDevice();
        fake_->deviceHandle = 0;
        fake_->takeCalls();
        QVERIFY(!openDevice(kDeviceType, 0, 0));
        QVERIFY(!isDeviceOpen());
        QCOMPARE(fake_->takeCalls(), QStringList({"OpenDevice(41,0,0)", "ResetDriver()", "OpenDevice(41,0,0)"}));
        QVERIFY(!updateDevice(2));

        fake_->deviceHandle = 7;
        fake_->hasProperties = false;
        QVERIFY(!openDevice(kDeviceType, 0, 0));
        QVERIFY(isDeviceOpen()); // the handle stays until it is closed
        QCOMPARE(fake_->takeCalls().last(), QString("CloseDevice(7)"));
        QVERIFY(!clearFilter(0));
        closeDevice();
        QVERIFY(!isDeviceOpen());
    }

    void channelsAreConfigured()
    {
        openBoth();
        QVERIFY(setTerminalResistance(1, 120));
        QVERIFY(setCustomBaudRate(0, QString::fromUtf8("率,1")));
        QVERIFY(initChannel(2, 5)); // any non-zero channel is channel 1
        QCOMPARE(fake_->takeCalls(),
                 QStringList({"SetValue(1/initenal_resistance,120)",
                              QString::fromUtf8("SetValue(0/baud_rate_custom,率,1)"), "InitChannel(7,1)"}));
        QCOMPARE(int(fake_->lastInit.channelType), 1);
        QCOMPARE(int(fake_->lastInit.workMode1), 5);
        QCOMPARE(int(fake_->lastInit.workMode2), 5);

        for (const char *refused : {"0/filter_start", "0/filter_end"}) {
            fake_->failing = QStringList{refused};
            QVERIFY(!applyFilterRows(0, "0-100-1FF"));
            QVERIFY(fake_->takeCalls().last().contains(refused));
        }
        fake_->failing.clear();
        QVERIFY(!applyFilterRows(0, "x-1-2"));
        closeDevice();
    }

    void exactlyOneFrameIsSent()
    {
        CanTransmitRecord classic[3] = {};
        CanFdTransmitRecord fd[2] = {};
        QVERIFY(!sendCan(0, classic, 1));
        QVERIFY(fake_->takeCalls().isEmpty()); // the channel is closed
        openBoth();
        QVERIFY(!sendCan(0, classic, 3));
        QVERIFY(sendCan(0, classic, 1));
        QVERIFY(!sendCanFd(5, fd, 2));
        QVERIFY(sendCanFd(5, fd, 1));
        closeDevice();
    }

    // A call that a worker is inside of must end before the device is closed under it.
    void closingWaitsForTheWorkersCall()
    {
        for (const unsigned channel : {0u, 1u}) {
            openBoth();
            QSemaphore inside;
            QSemaphore goOn;
            fake_->onTransmitCan = [&](unsigned, const CanTransmitRecord *, std::uint32_t) {
                inside.release();
                goOn.acquire();
                return 1u;
            };
            std::thread worker([channel] {
                const CanTransmitRecord record{};
                sendCan(channel, &record, 1);
            });
            inside.acquire();
            std::thread closer([] { closeDevice(); });
            QTRY_VERIFY(!isChannelOpen(channel));
            QTest::qWait(30);
            const bool early = fake_->calls().contains("CloseDevice(7)");
            goOn.release();
            worker.join();
            closer.join();
            QVERIFY(!early && fake_->calls().contains("CloseDevice(7)"));
        }
    }
};

QTEST_GUILESS_MAIN(TestDeviceLayer)
#include "test_devicelayer.moc"
