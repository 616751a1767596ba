#include "device/devicelayer.h"
#include "fakedriver.h"

#include <QSemaphore>
#include <QtTest>

#include <cstring>
#include <functional>
#include <thread>

Q_DECLARE_METATYPE(std::function<bool()>)

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

    // 1 is success, and nothing else is.
    void onlyOneIsSuccess_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<std::function<bool()>>("call");
        using Call = std::function<bool()>;
        QTest::newRow("standard") << "SetCanFdStandard" << Call([] { return setCanFdStandard(0, 1); });
        QTest::newRow("arbitration") << "SetArbitrationBaud" << Call([] { return setBaudRate(0, 1, 1); });
        QTest::newRow("data") << "SetDataBaud" << Call([] { return setBaudRate(0, 1, 1); });
        QTest::newRow("rates") << "0/baud_rate_custom" << Call([] { return setCustomBaudRate(0, "1M"); });
        QTest::newRow("clear") << "0/filter_clear" << Call([] { return clearFilter(0); });
        QTest::newRow("range") << "0/filter_mode" << Call([] { return setFilterRange(0, 0, "0x1", "0x2"); });
        QTest::newRow("end") << "0/filter_end" << Call([] { return setFilterRange(0, 0, "0x1", "0x2"); });
        QTest::newRow("acknowledge") << "0/filter_ack" << Call([] { return ackFilter(0); });
        QTest::newRow("start") << "StartChannel" << Call([] { return startChannel(0); });
        QTest::newRow("update") << "UpdateDevice" << Call([] { return updateDevice(0); });
        QTest::newRow("reset") << "ResetChannel" << Call([] { return resetChannel(0); });
    }
    void onlyOneIsSuccess()
    {
        QFETCH(QString, operation);
        QFETCH(std::function<bool()>, call);
        openBoth();
        fake_->failing = QStringList{operation};
        for (const std::uint32_t answer : {0u, 2u, 0xFFFFFFFFu}) {
            fake_->failure = answer;
            QVERIFY(!call());
            QVERIFY(isChannelOpen(0)); // also when it could not be reset
        }
        fake_->failing.clear();
        QVERIFY(call());
        QCOMPARE(isChannelOpen(0), operation != "ResetChannel");
        QVERIFY(isChannelOpen(1));
        closeDevice();
    }

    void deviceInformation()
    {
        openBoth();
        fake_->info.firmwareVersion = 0x1234;
        std::memcpy(fake_->info.serialNumber, "A 7", 3);
        QCOMPARE(refreshDeviceInfo(), 0x1234u);
        QVERIFY(deviceInfoText().startsWith("SN:A7"));
        QCOMPARE(unsigned(readDeviceInfo().firmwareVersion), 0x1234u);
        fake_->infoAnswer = 2;
        QCOMPARE(unsigned(readDeviceInfo().firmwareVersion), 0u);
        for (const std::uint32_t status : {0u, 1u, 3u}) { // 2 is present
            fake_->status = status;
            QVERIFY(deviceInfoText().isEmpty());
            QCOMPARE(refreshDeviceInfo(), 0u);
        }
        fake_->status = kStatusPresent;
        QVERIFY(!deviceInfoText().isEmpty()); // kept
        closeDevice();
    }

    void closingForgetsEverything()
    {
        openBoth();
        refreshDeviceInfo();
        QVERIFY(initChannel(1, 5));
        closeDevice();
        QVERIFY(!isDeviceOpen() && !isChannelOpen(0) && !isChannelOpen(1));
        QVERIFY(deviceInfoText().isEmpty());
        fake_->takeCalls();
        QVERIFY(!clearFilter(0)); // no property interface
        QVERIFY(fake_->takeCalls().isEmpty());
        closeDevice(); // nothing to close
        QVERIFY(fake_->takeCalls().isEmpty());
    }

    void frameIdentifiers()
    {
        QCOMPARE(makeFrameId(0x123, 0, 0, 0), 0x123u);
        QCOMPARE(makeFrameId(0x123, 1, 0, 0), 0x80000123u);
        QCOMPARE(makeFrameId(0x123, 0, 7, 0), 0x40000123u);
        QCOMPARE(makeFrameId(0x123, 0, 0, 2), 0x20000123u);
        QCOMPARE(makeFrameId(0x123, 1, 1, 1), 0xE0000123u);
    }

    void busEventsOfOpenChannels()
    {
        fake_->report[1].state = {ControllerState::BusOff, true, 255, 3};
        fake_->report[1].events.resize(2);
        QVERIFY(takeBusEvents(1).events.empty()); // closed
        QVERIFY(channelState(1).controller == ControllerState::Unknown);
        openBoth();
        QCOMPARE(takeBusEvents(1).events.size(), std::size_t(2));
        QCOMPARE(int(channelState(2).receiveErrors), 3);
        QVERIFY(takeBusEvents(0).events.empty());
        closeDevice();

        setDriver(nullptr);
        QVERIFY(deviceNames().isEmpty() && !openDevice(kDeviceType, 0, 0) && refreshDeviceInfo() == 0);
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

    void closingWaitsForTheWorkersCall_data()
    {
        QTest::addColumn<unsigned>("channel");
        QTest::addColumn<QString>("call");
        QTest::newRow("close, channel 1") << 0u << "CloseDevice(7)";
        QTest::newRow("close, channel 2") << 1u << "CloseDevice(7)";
        QTest::newRow("reset, channel 1") << 0u << "ResetChannel(101)";
        QTest::newRow("reset, channel 2") << 1u << "ResetChannel(102)";
        QTest::newRow("restart, channel 1") << 0u << "UpdateDevice(7)";
        QTest::newRow("restart, channel 2") << 1u << "UpdateDevice(7)";
    }
    // A call that a worker is inside of must end before its channel or the device is closed or restarted under it.
    void closingWaitsForTheWorkersCall()
    {
        QFETCH(unsigned, channel);
        QFETCH(QString, call);
        const bool close = call.startsWith("Close");
        const bool reset = call.startsWith("Reset");
        openBoth();
        QSemaphore inside;
        QSemaphore goOn;
        QSemaphore closing;
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
        std::thread closer([&] {
            closing.release();
            if (reset)
                resetChannel(channel);
            else if (close)
                closeDevice();
            else
                updateDevice(0);
        });
        closing.acquire();
        if (close)
            QTRY_VERIFY(!isChannelOpen(channel)); // workers learn of it at once
        QTest::qWait(30);
        const bool early = fake_->calls().contains(call);
        goOn.release();
        worker.join();
        closer.join();
        QVERIFY(!early && fake_->calls().contains(call));
        QCOMPARE(isChannelOpen(channel), !close && !reset);
        closeDevice();
    }
};

QTEST_GUILESS_MAIN(TestDeviceLayer)
#include "test_devicelayer.moc"
