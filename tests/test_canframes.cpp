// The parts of the SocketCAN driver that need no CAN interface.
#include "device/driver/driverfactory.h"
#include "device/driver/socketcan/canframes.h"
#include "device/driver/socketcan/frameclock.h"
#include "device/driver/socketcan/socketcandriver.h"
#include "device/driver/socketcan/socketcaninfo.h"

#include <QtTest>

#include <cstring>

class TestCanFrames : public QObject
{
    Q_OBJECT

private slots:
    void framesFromTheKernel_data()
    {
        QTest::addColumn<uint>("id");
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("flags");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<bool>("isFrame");
        QTest::addColumn<uint>("idWord");
        QTest::addColumn<int>("flagsByte");
        const int classic = CAN_MTU;
        const int fd = CANFD_MTU;
        QTest::newRow("classic") << 0x7FFu << 8 << 0 << classic << true << 0x7FFu << 0;
        QTest::newRow("stray bits above a standard identifier") << 0x1F00u << 8 << 0 << classic << true << 0x700u << 0;
        QTest::newRow("extended") << (0x1FFFFFFFu | CAN_EFF_FLAG) << 3 << 0 << classic << true
                                  << (0x1FFFFFFFu | kIdExtendedFlag) << 0;
        QTest::newRow("remote") << (0x12u | CAN_RTR_FLAG) << 4 << 0 << classic << true << (0x12u | kIdRemoteFlag) << 0;
        QTest::newRow("error") << (0x4u | CAN_ERR_FLAG) << 8 << 0 << classic << false << 0u << 0;
        QTest::newRow("FD") << 0x55u << 64 << 0 << fd << true << 0x55u << 0;
        QTest::newRow("FD, every flag but the switch")
            << 0x55u << 12 << (CANFD_FDF | CANFD_ESI) << fd << true << 0x55u << 0;
        QTest::newRow("FD, every flag") << 0x55u << 12 << (CANFD_FDF | CANFD_ESI | CANFD_BRS) << fd << true << 0x55u
                                        << 1;
        QTest::newRow("remote FD there is not") << (0x55u | CAN_RTR_FLAG) << 8 << 0 << fd << true << 0x55u << 0;
        QTest::newRow("length past the data") << 0x1u << 200 << 0 << fd << true << 0x1u << 0;
        QTest::newRow("XL") << 0x1u << 8 << 0 << 12 + 2048 << false << 0u << 0;
        QTest::newRow("cut") << 0x1u << 8 << 0 << classic - 1 << false << 0u << 0;
    }
    void framesFromTheKernel()
    {
        QFETCH(uint, id);
        QFETCH(int, length);
        QFETCH(int, flags);
        QFETCH(int, bytes);
        QFETCH(bool, isFrame);
        QFETCH(uint, idWord);
        QFETCH(int, flagsByte);
        canfd_frame kernelFrame{};
        kernelFrame.can_id = id;
        kernelFrame.len = std::uint8_t(length);
        kernelFrame.flags = std::uint8_t(flags);
        std::memset(kernelFrame.data, 0xC3, sizeof kernelFrame.data);
        BusFrame frame;
        QCOMPARE(fromKernelFrame(kernelFrame, std::size_t(bytes), &frame), isFrame);
        if (!isFrame)
            return;
        CanFdReceiveRecord record;
        fillRecord(frame, 0, &record);
        QCOMPARE(record.id, idWord);
        QCOMPARE(int(record.flags), flagsByte);
        const int expected = std::min(length, frame.fd ? 64 : 8);
        QCOMPARE(int(record.length), expected);
        const int data = frame.remote() ? 0 : expected;
        for (int i = 0; i < 64; ++i)
            QCOMPARE(int(record.data[i]), i < data ? 0xC3 : 0);
    }

    void framesToTheKernelAndBack()
    {
        for (int length = 0; length <= 64; ++length) {
            CanFdTransmitRecord record{};
            record.id = 0x1ABCDEF0u | kIdExtendedFlag | kIdThirdFlag;
            record.length = std::uint8_t(length);
            record.flags = kFdBitRateSwitch;
            std::memset(record.data, 0x5A, sizeof record.data);
            BusFrame frame;
            BusFrame back;
            canfd_frame kernelFrame;
            QVERIFY(toBusFrame(record, &frame));
            QCOMPARE(toKernelFrame(frame, &kernelFrame), std::size_t(CANFD_MTU));
            QCOMPARE(kernelFrame.can_id, 0x1ABCDEF0u | CAN_EFF_FLAG); // the spare flag would make an error frame
            QCOMPARE(int(kernelFrame.flags), CANFD_BRS);
            QCOMPARE(int(kernelFrame.len), int(fdWireLength(unsigned(length))));
            QVERIFY(fromKernelFrame(kernelFrame, CANFD_MTU, &back));
            QVERIFY(back.fd && back.bitRateSwitch && back.length == frame.length);
            QVERIFY(std::memcmp(back.data, frame.data, sizeof back.data) == 0);
        }
        CanTransmitRecord remote{};
        remote.id = 0x123u | kIdRemoteFlag;
        remote.length = 8;
        BusFrame frame;
        canfd_frame kernelFrame;
        QVERIFY(toBusFrame(remote, &frame));
        QCOMPARE(toKernelFrame(frame, &kernelFrame), std::size_t(CAN_MTU));
        QCOMPARE(kernelFrame.can_id, 0x123u | CAN_RTR_FLAG);
        QCOMPARE(int(kernelFrame.len), 8);
    }

    void timeIsNotMovedByTheWallClock()
    {
        constexpr std::int64_t kMs = 1000000;
        const std::int64_t opened = 50 * kMs;
        const std::int64_t wall = 1700000000000 * kMs;
        FrameClock clock(opened);
        clock.look(opened + 10 * kMs, wall);
        QCOMPARE(clock.microseconds(wall - 4 * kMs), std::uint64_t(6000));
        QCOMPARE(clock.microseconds(wall - 3 * kMs), std::uint64_t(7000));
        // The wall clock goes an hour back, then two on; the frames were stamped before.
        clock.look(opened + 20 * kMs, wall - 3600000 * kMs);
        QCOMPARE(clock.microseconds(wall + 5 * kMs), std::uint64_t(20000));
        clock.look(opened + 30 * kMs, wall + 3600000 * kMs);
        QCOMPARE(clock.microseconds(wall - 3600000 * kMs + 5 * kMs), std::uint64_t(20000));
        QCOMPARE(clock.microseconds(wall + 3600000 * kMs - kMs), std::uint64_t(29000));
        // A frame from before the opening.
        QCOMPARE(FrameClock(opened).microseconds(0), std::uint64_t(0));
    }

    void deviceInformation()
    {
        QCOMPARE(int(kernelVersionWord("6.18.3-amd64")), 0x618);
        QCOMPARE(int(kernelVersionWord("5.4")), 0x504);
        QCOMPARE(int(kernelVersionWord("99.120.1")), 0xF99);
        QCOMPARE(int(kernelVersionWord("next")), 0);

        CanInterface first;
        first.name = "can0";
        first.driver = "gs_usb";
        first.bitRate = 500000;
        first.dataBitRate = 2000000;
        first.irq = 17;
        CanInterface second = first;
        second.name = "can1";
        QCOMPARE(hardwareText({first, second}), std::string("can0+can1 gs_usb 500k/2M"));
        second.dataBitRate = 0;
        second.bitRate = 83333;
        QCOMPARE(hardwareText({first, second}), std::string("can0 gs_usb 500k/2M, can1 gs_usb 83333"));
        QCOMPARE(hardwareText({}), std::string());

        first.name = second.name = "a_name_of_fifte"; // the longest there is
        first.driver = "a driver with a name so long that nothing fits";
        const DeviceInfoRecord info = socketCanDeviceInfo({first, second});
        QCOMPARE(QByteArray(info.serialNumber, sizeof info.serialNumber), QByteArray("a_name_of_fifte+a_na"));
        QCOMPARE(int(info.hardwareType[sizeof info.hardwareType - 1]), 0);
        QVERIFY(info.firmwareVersion >= 0xF000);
        QCOMPARE(int(info.irqNumber), 17);
        QCOMPARE(int(info.channelCount), 2);
    }

    void choices()
    {
        const std::string simulated = makeDriver("simulated")->deviceNames().front();
        QCOMPARE(makeDriver("socketcan:can7,can8")->deviceNames(), std::vector<std::string>{"can7 + can8"});
        QCOMPARE(makeDriver("socketcan:,can7")->deviceNames(), std::vector<std::string>{"can7"});
        QCOMPARE(makeDriver("socketcan")->deviceNames().size(), (canInterfaces().size() + 1) / 2);
        for (const char *choice : {"", "socketcan:can0,can1,can2"}) { // the platform's own list
            const auto names = makeDriver(choice)->deviceNames();
            QCOMPARE(names.size(), (canInterfaces().size() + 1) / 2 + 1);
            QCOMPARE(names.back(), simulated);
        }
    }

    void anInterfaceThatIsNotThere()
    {
        SocketCanDriver driver({"ostrel_none0", "ostrel_none1"});
        QCOMPARE(driver.deviceNames(), std::vector<std::string>{"ostrel_none0 + ostrel_none1"});
        QCOMPARE(driver.OpenDevice(kDeviceType, 0, 0), 0u);
        const auto notices = driver.takeNotices();
        QCOMPARE(notices.size(), std::size_t(1));
        QVERIFY(notices[0].kind == DriverNotice::Kind::InterfaceMissing);
        QCOMPARE(notices[0].detail, std::string("ostrel_none0 + ostrel_none1"));
        QVERIFY(driver.GetDeviceStatus(1) != kStatusPresent);
    }
};

QTEST_GUILESS_MAIN(TestCanFrames)
#include "test_canframes.moc"
