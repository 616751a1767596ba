#include "device/devicelayer.h"
#include "fakedriver.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QtTest>

#include <cstring>
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
        QElapsedTimer timer;
        timer.start();
        QVERIFY(openDevice(kDeviceType, 3, 0));
        QVERIFY(timer.elapsed() >= 10);
        QCOMPARE(fake_->takeCalls(),
                 QStringList({"OpenDevice(41,3,0)", "ResetDriver()", "OpenDevice(41,3,0)", "GetPropertyInterface(9)"}));
        QVERIFY(!openDevice(kDeviceType, 0, 0));
        QVERIFY(fake_->takeCalls().isEmpty());
        closeDevice();
        QVERIFY(!isDeviceOpen());

        fake_->openAnswers = {0, 0, 0, 0, 0}; // continues after the answers used so far
        QVERIFY(!openDevice(kDeviceType, 0, 0));
        QVERIFY(!isDeviceOpen());
        QCOMPARE(fake_->calls().count("ResetDriver()"), 1);
    }

    void withoutPropertyInterfaceTheHandleStays()
    {
        fake_->hasProperties = false;
        QVERIFY(!openDevice(kDeviceType, 0, 0));
        QVERIFY(isDeviceOpen());
        QCOMPARE(fake_->takeCalls().last(), QString("CloseDevice(7)"));
        QVERIFY(!clearFilter(0));
        QVERIFY(!setCustomBaudRate(0, "x"));
        closeDevice();
        QVERIFY(!isDeviceOpen());
    }

    void channelConfiguration()
    {
        openBoth();
        QVERIFY(setBaudRate(7, 13, 3));
        fake_->failing = QStringList{"SetArbitrationBaud"};
        QVERIFY(!setBaudRate(0, 1, 2));
        QVERIFY(setTerminalResistance(1, 120));
        QVERIFY(setCustomBaudRate(0, QString::fromUtf8("率,1")));
        QCOMPARE(fake_->takeCalls(), QStringList({"SetArbitrationBaud(7,1,13)", "SetDataBaud(7,1,3)",
                                                  "SetArbitrationBaud(7,0,1)", "SetValue(1/initenal_resistance,120)",
                                                  QString::fromUtf8("SetValue(0/baud_rate_custom,率,1)")}));

        QVERIFY(initChannel(2, 5)); // any non-zero channel is channel 1
        QCOMPARE(fake_->takeCalls(), QStringList{"InitChannel(7,1)"});
        unsigned char bytes[32];
        std::memcpy(bytes, &fake_->lastInit, sizeof bytes);
        QCOMPARE(int(bytes[0]), 1);
        QCOMPARE(int(bytes[19]), 5);
        QCOMPARE(int(bytes[25]), 5);

        fake_->failing = QStringList{"ResetChannel"};
        QVERIFY(!resetChannel(0));
        QVERIFY(isChannelOpen(0));
        fake_->failing.clear();
        QVERIFY(resetChannel(0));
        QVERIFY(!isChannelOpen(0));
        QVERIFY(isChannelOpen(7));
        closeDevice();
        QVERIFY(!isChannelOpen(1));
    }

    void filterRows_data()
    {
        QTest::addColumn<QString>("rows");
        QTest::addColumn<QString>("failing");
        QTest::addColumn<bool>("success");
        QTest::addColumn<QStringList>("writes");
        const QStringList first{"0/filter_clear,0", "0/filter_mode,0", "0/filter_start,0x100", "0/filter_end,0x1FF"};
        QTest::newRow("two rows") << "0-100-1FF|1-2-3"
                                  << "" << true
                                  << QStringList(first + QStringList{"0/filter_mode,1", "0/filter_start,0x2",
                                                                     "0/filter_end,0x3", "0/filter_ack,0"});
        QTest::newRow("none") << ""
                              << "" << true << QStringList{"0/filter_clear,0", "0/filter_ack,0"};
        QTest::newRow("mode refused") << "0-100-1FF"
                                      << "0/filter_mode" << false << QStringList(first.mid(0, 2));
        QTest::newRow("clear refused") << "0-100-1FF"
                                       << "0/filter_clear" << false << QStringList(first.mid(0, 1));
        QTest::newRow("kind is no number") << "x-1-2"
                                           << "" << false << QStringList(first.mid(0, 1));
        QTest::newRow("two fields") << "0-100"
                                    << "" << false << QStringList(first.mid(0, 1));
        QTest::newRow("trailing bar") << "0-100-1FF|"
                                      << "" << false << first;
    }
    void filterRows()
    {
        QFETCH(QString, rows);
        QFETCH(QString, failing);
        QFETCH(bool, success);
        QFETCH(QStringList, writes);
        openBoth();
        fake_->failing = QStringList{failing};
        QCOMPARE(applyFilterRows(0, rows), success);
        QStringList expected;
        for (const QString &write : writes)
            expected << "SetValue(" + write + ")";
        QCOMPARE(fake_->takeCalls(), expected);
        closeDevice();
    }

    void framesAndAnswers()
    {
        QCOMPARE(makeFrameId(0x123, 1, 0, 0), 0x80000123u);
        QCOMPARE(makeFrameId(0x123, 0, 1, 0), 0x40000123u);
        QCOMPARE(makeFrameId(0x123, 1, 1, 1), 0xE0000123u);

        CanTransmitRecord classic[3] = {};
        CanFdTransmitRecord fd[2] = {};
        QVERIFY(!sendCan(0, classic, 1)); // channel closed: no driver call
        QVERIFY(fake_->takeCalls().isEmpty());
        openBoth();
        QVERIFY(!sendCan(0, classic, 3));
        QVERIFY(sendCan(0, classic, 1));
        QVERIFY(!sendCanFd(5, fd, 2));
        QVERIFY(sendCanFd(5, fd, 1));
        QCOMPARE(fake_->takeCalls(),
                 QStringList({"TransmitCan(0,3)", "TransmitCan(0,1)", "TransmitCanFd(1,2)", "TransmitCanFd(1,1)"}));
        CanReceiveRecord received[2];
        fake_->feed(1, {CanReceiveRecord{}, CanReceiveRecord{}, CanReceiveRecord{}});
        QCOMPARE(receiveCan(1, received, 2, 0), 2u);
        QCOMPARE(receiveCan(1, received, 2, 0), 1u);
        fake_->receiveAnswer = 0xFFFFFFFF;
        QCOMPARE(receiveCan(1, received, 2, 0), 0u);
        closeDevice();
        QCOMPARE(receiveCan(1, received, 2, 0), 0u);
    }

    void deviceInformation()
    {
        QCOMPARE(versionText(0x1234), QString("V2.34"));
        QCOMPARE(versionText(0x00FF), QString("V0.ff"));
        QVERIFY(openDevice(kDeviceType, 0, 0));
        fake_->info.firmwareVersion = 0x0123;
        fake_->info.driverVersion = 0x012A;
        std::memcpy(fake_->info.serialNumber, "AB 12", 5);
        QCOMPARE(refreshDeviceInfo(), 0x123u);
        const QString text = deviceInfoText();
        QVERIFY(text.startsWith("SN:AB12"));
        QVERIFY(text.endsWith(", DriverLib:V1.2a, Firmware:V1.23"));
        QCOMPARE(text.count(QChar(0)), 15);
        fake_->status = 0;
        QVERIFY(deviceInfoText().isEmpty());
        QCOMPARE(refreshDeviceInfo(), 0u);
        fake_->infoAnswer = 0;
        QCOMPARE(int(readDeviceInfo().firmwareVersion), 0);
        closeDevice();
    }

    void restartIntoTheBootLoaderOpensFirst()
    {
        QVERIFY(updateDevice(2));
        QCOMPARE(fake_->takeCalls(), QStringList({"OpenDevice(41,2,0)", "GetPropertyInterface(7)", "UpdateDevice(7)"}));
        fake_->failing = QStringList{"UpdateDevice"};
        QVERIFY(!updateDevice(2));
        closeDevice();
        fake_->deviceHandle = 0;
        QVERIFY(!updateDevice(2));
    }

    // A call that a worker is inside of must end before the device is closed under it.
    void closingWaitsForTheWorkersCall()
    {
        openBoth();
        QSemaphore inside;
        QSemaphore goOn;
        fake_->onTransmitCan = [&](unsigned, const CanTransmitRecord *, std::uint32_t) {
            inside.release();
            goOn.acquire();
            return 1u;
        };
        std::thread worker([] {
            CanTransmitRecord record{};
            sendCan(0, &record, 1);
        });
        inside.acquire();
        std::thread closer([] { closeDevice(); });
        QTRY_VERIFY(!isChannelOpen(0));
        QTest::qWait(30);
        QVERIFY(!fake_->calls().contains("CloseDevice(7)"));
        goOn.release();
        worker.join();
        closer.join();
        QVERIFY(fake_->calls().contains("CloseDevice(7)"));
    }
};

QTEST_GUILESS_MAIN(TestDeviceLayer)
#include "test_devicelayer.moc"
