// The parts of the SocketCAN driver that need no CAN interface.
#include "device/driver/driverfactory.h"
#include "device/driver/socketcan/canframes.h"
#include "device/driver/socketcan/frameclock.h"
#include "device/driver/socketcan/socketcandriver.h"
#include "device/driver/socketcan/socketcaninfo.h"

#include <QtTest>

#include <cstring>

struct KernelFrame {
    uint id;
    int length;
    int flags;
    int bytes;
    uint idWord; // of the record; none for what is no frame
    int flagsByte;
};
Q_DECLARE_METATYPE(KernelFrame)

class TestCanFrames : public QObject
{
    Q_OBJECT

private:
    static constexpr uint kNone = 0xFFFFFFFF;

private slots:
    void framesFromTheKernel_data()
    {
        QTest::addColumn<KernelFrame>("kernel");
        constexpr uint ext = CAN_EFF_FLAG;
        constexpr int notSwitched = CANFD_FDF | CANFD_ESI;
        QTest::newRow("classic") << KernelFrame{0x7FF, 8, 0, CAN_MTU, 0x7FF, 0};
        QTest::newRow("stray bits above a standard identifier") << KernelFrame{0x1F00, 8, 0, CAN_MTU, 0x700, 0};
        QTest::newRow("extended") << KernelFrame{0x1FFFFFFF | ext, 3, 0, CAN_MTU, 0x1FFFFFFF | kIdExtendedFlag, 0};
        QTest::newRow("remote") << KernelFrame{0x12 | CAN_RTR_FLAG, 4, 0, CAN_MTU, 0x12 | kIdRemoteFlag, 0};
        QTest::newRow("error") << KernelFrame{0x4 | CAN_ERR_FLAG, 8, 0, CAN_MTU, kNone, 0};
        QTest::newRow("FD, not switched") << KernelFrame{0x55, 64, notSwitched, CANFD_MTU, 0x55, 0};
        QTest::newRow("FD, every flag") << KernelFrame{0x55, 12, notSwitched | CANFD_BRS, CANFD_MTU, 0x55, 1};
        QTest::newRow("remote FD there is not") << KernelFrame{0x55 | CAN_RTR_FLAG, 8, 0, CANFD_MTU, 0x55, 0};
        QTest::newRow("length past the data") << KernelFrame{0x1, 200, 0, CANFD_MTU, 0x1, 0};
        QTest::newRow("classic length past the data") << KernelFrame{0x1, 9, 0, CAN_MTU, 0x1, 0};
        QTest::newRow("XL") << KernelFrame{0x1, 8, 0, 12 + 2048, kNone, 0};
        QTest::newRow("cut") << KernelFrame{0x1, 8, 0, CAN_MTU - 1, kNone, 0};
    }
    void framesFromTheKernel()
    {
        QFETCH(KernelFrame, kernel);
        canfd_frame kernelFrame{};
        kernelFrame.can_id = kernel.id;
        kernelFrame.len = std::uint8_t(kernel.length);
        kernelFrame.flags = std::uint8_t(kernel.flags);
        std::memset(kernelFrame.data, 0xC3, sizeof kernelFrame.data);
        BusFrame frame;
        QCOMPARE(fromKernelFrame(kernelFrame, std::size_t(kernel.bytes), &frame), kernel.idWord != kNone);
        if (kernel.idWord == kNone)
            return;
        CanFdReceiveRecord record;
        fillRecord(frame, 0, &record);
        QCOMPARE(record.id, kernel.idWord);
        QCOMPARE(int(record.flags), kernel.flagsByte);
        QCOMPARE(record.errorStateIndicator != 0, (kernel.flags & CANFD_ESI) != 0);
        const int expected = std::min(kernel.length, frame.fd ? 64 : 8);
        QCOMPARE(int(record.length), expected);
        const int data = frame.remote() ? 0 : expected;
        for (int i = 0; i < 64; ++i)
            QCOMPARE(int(record.data[i]), i < data ? 0xC3 : 0);
    }

    void errorFramesFromTheKernel()
    {
        canfd_frame kernelFrame{};
        kernelFrame.len = 200;
        std::memset(kernelFrame.data, 0xC3, sizeof kernelFrame.data);
        BusEvent event;
        for (const uint id : {0x4u, CAN_EFF_FLAG | 0x4u, CAN_RTR_FLAG | 0x4u}) {
            kernelFrame.can_id = id;
            QVERIFY(!fromKernelFrame(kernelFrame, CAN_MTU, &event));
        }
        kernelFrame.can_id = CAN_ERR_FLAG | CAN_ERR_MASK;
        QVERIFY(!fromKernelFrame(kernelFrame, CANFD_MTU, &event));
        QVERIFY(fromKernelFrame(kernelFrame, CAN_MTU, &event));
        QCOMPARE(event.classes, std::uint32_t(CAN_ERR_MASK));
        QCOMPARE(int(event.data[7]), 0xC3);
        QVERIFY(stateAfter(ChannelState(), event).controller == ControllerState::BusOff);
    }

    void framesToTheKernel()
    {
        CanFdTransmitRecord record{};
        record.id = 0x1ABCDEF0u | kIdExtendedFlag | kIdThirdFlag;
        record.flags = kFdBitRateSwitch;
        std::memset(record.data, 0x5A, sizeof record.data);
        BusFrame frame;
        canfd_frame kernelFrame;
        const int lengths[][2] = {{8, 8},   {9, 12},  {13, 16}, {17, 20}, {21, 24},
                                  {25, 32}, {33, 48}, {49, 64}, {200, 64}};
        for (const auto &[length, onTheWire] : lengths) {
            record.length = std::uint8_t(length);
            QVERIFY(toBusFrame(record, &frame));
            QCOMPARE(toKernelFrame(frame, &kernelFrame), std::size_t(CANFD_MTU));
            QCOMPARE(kernelFrame.can_id, 0x1ABCDEF0u | CAN_EFF_FLAG); // the spare flag would make an error frame
            QCOMPARE(int(kernelFrame.flags), CANFD_BRS);
            QCOMPARE(int(kernelFrame.len), onTheWire);
            for (int i = 0; i < 64; ++i)
                QCOMPARE(int(kernelFrame.data[i]), i < length ? 0x5A : 0);
        }
        frame.fd = false;
        QCOMPARE(toKernelFrame(frame, &kernelFrame), std::size_t(CAN_MTU));
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

        first.name = second.name = "a_name_of_fifte"; // the longest there is
        first.driver = "a driver with a name so long that nothing fits";
        const DeviceInfoRecord info = socketCanDeviceInfo({first, second});
        QCOMPARE(QByteArray(info.serialNumber, sizeof info.serialNumber), QByteArray("a_name_of_fifte+a_na"));
        QCOMPARE(int(info.hardwareType[sizeof info.hardwareType - 1]), 0);
        QVERIFY(info.firmwareVersion >= 0xF000);
        QCOMPARE(int(info.irqNumber), 17);
    }

    void choices()
    {
        QCOMPARE(makeDriver("socketcan:can7,can8")->deviceNames(), std::vector<std::string>{"can7 + can8"});
        QCOMPARE(makeDriver("socketcan:,can7")->deviceNames(), std::vector<std::string>{"can7"});
        const std::size_t pairs = (canInterfaces().size() + 1) / 2;
        QCOMPARE(makeDriver("socketcan")->deviceNames().size(), pairs);
        for (const char *choice : {"", "socketcan:can0,can1,can2"}) // the platform's own list
            QCOMPARE(makeDriver(choice)->deviceNames().size(), pairs + 1);
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
