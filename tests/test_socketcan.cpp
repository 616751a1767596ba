// The SocketCAN driver on virtual CAN interfaces: the contract, and what only this driver has. Needs vcan0 to be up;
// the tests that set interfaces up, down and aside make their own and need the right to.
#include "device/driver/socketcan/cansocket.h"
#include "device/driver/socketcan/socketcandriver.h"
#include "drivercontract.h"

#include <linux/can.h>
#include <linux/can/error.h>
#include <sys/socket.h>

#include <QProcess>
#include <QtTest>

using Kind = DriverNotice::Kind;

namespace
{

constexpr char kBus[] = "vcan0";
constexpr char kOwn[] = "ostreltest0";
constexpr char kRenamed[] = "ostreltest1";

bool ip(const QString &arguments)
{
    QProcess process;
    process.start(QStringLiteral("ip"), arguments.split(QLatin1Char(' ')));
    return process.waitForFinished() && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

// A node of its own on an interface.
class Node
{
public:
    explicit Node(const char *name)
    {
        CanInterface interface;
        int error = 0;
        if (findCanInterface(name, &interface))
            socket_ = openReceivingSocket(interface.index, &error);
    }
    bool send(std::uint32_t id, std::size_t bytes, std::uint8_t flags) const
    {
        return send(id, bytes, std::vector<std::uint8_t>(), flags);
    }
    bool send(std::uint32_t id, std::size_t bytes, const std::vector<std::uint8_t> &data = {},
              std::uint8_t flags = 0) const
    {
        canfd_frame frame{};
        frame.can_id = id;
        frame.len = 8;
        frame.flags = flags;
        std::copy(data.begin(), data.end(), frame.data);
        return ::send(socket_.get(), &frame, bytes, 0) == ssize_t(bytes);
    }
    bool hears()
    {
        FrameReader reader;
        return reader.read(socket_.get()) > 0;
    }

private:
    Descriptor socket_;
};

} // namespace

class TestSocketCan : public DriverContract
{
    Q_OBJECT

protected:
    std::unique_ptr<Driver> createDriver() override
    {
        return std::make_unique<SocketCanDriver>(std::vector<std::string>{kBus, kBus});
    }
    // Virtual interfaces make no error frames of their own but carry them.
    void disturbFirstChannel() override { QVERIFY(Node(kBus).send(CAN_ERR_FLAG | CAN_ERR_BUSERROR, CAN_MTU)); }

private:
    // Channel 1 on an interface made for this test.
    void useOwnInterface()
    {
        removeOwn();
        if (!ip(QStringLiteral("link add %1 type vcan").arg(kOwn)))
            QSKIP("no right to add a vcan interface");
        QVERIFY(ip(QStringLiteral("link set %1 up mtu 72").arg(kOwn)));
        driver_ = std::make_unique<SocketCanDriver>(std::vector<std::string>{kOwn});
        QVERIFY(openDevice() != 0);
        driver_->takeNotices();
    }
    static void removeOwn()
    {
        ip(QStringLiteral("link del %1").arg(kOwn));
        ip(QStringLiteral("link del %1").arg(kRenamed));
    }
    std::vector<Kind> noticeKinds()
    {
        std::vector<Kind> kinds;
        for (const DriverNotice &notice : driver_->takeNotices())
            kinds.push_back(notice.kind);
        return kinds;
    }
    bool isPresent() { return driver_->GetDeviceStatus(device_) == kStatusPresent; }

private slots:
    void initTestCase()
    {
        CanInterface bus;
        if (!findCanInterface(kBus, &bus) || !bus.up || !bus.fd)
            QSKIP("no CAN interface vcan0 with FD that is up: the SocketCAN driver is not tested");
    }
    void cleanupTestCase() { removeOwn(); }

    void everyInterfaceIsOffered()
    {
        SocketCanDriver all;
        std::size_t interfaces = 0;
        for (const std::string &name : all.deviceNames())
            interfaces += name.find(" + ") == std::string::npos ? 1 : 2;
        QCOMPARE(interfaces, canInterfaces().size());
        QVERIFY(all.deviceNames().front().rfind(kBus, 0) == 0);
    }

    void whatTheKernelAddsComesApart()
    {
        openBoth();
        Node node(kBus);
        QVERIFY(node.send(CAN_ERR_FLAG | CAN_ERR_CRTL, CAN_MTU, {0, CAN_ERR_CRTL_RX_PASSIVE}));
        QVERIFY(node.send(CAN_ERR_FLAG | CAN_ERR_LOSTARB | CAN_ERR_CNT, CAN_MTU, {11, 0, 0, 0, 0, 0, 96, 130}));
        QVERIFY(node.send(0x10, CANFD_MTU, CANFD_FDF | CANFD_ESI));
        QVERIFY(node.send(0x11, CANFD_MTU, CANFD_FDF | CANFD_BRS));
        QVERIFY(node.send(0x12, CAN_MTU));
        const auto fd = receiveFd(0, 2);
        const auto classic = receiveCan(0, 1);
        QCOMPARE(fd.size(), std::size_t(2));
        QCOMPARE(int(fd[0].flags), 0);
        QCOMPARE(int(fd[0].errorStateIndicator), 1);
        QCOMPARE(int(fd[1].flags), 1);
        QCOMPARE(int(fd[1].errorStateIndicator), 0);
        QCOMPARE(classic.size(), std::size_t(1));
        QCOMPARE(classic[0].id, 0x12u);

        const BusReport report = driver_->busReport(channel_[0], BusQuestion::StateAndEvents);
        QCOMPARE(report.events.size(), std::size_t(2));
        QCOMPARE(report.events[1].classes, std::uint32_t(CAN_ERR_LOSTARB | CAN_ERR_CNT));
        QCOMPARE(int(report.events[1].data[buserror::ArbitrationBit]), 11);
        QVERIFY(report.state.controller == ControllerState::ErrorPassive && report.state.countersKnown);
        QCOMPARE(int(report.state.receiveErrors), 130);

        constexpr int kFlood = 5000; // nobody takes them: a bound, and the rest counted
        for (int i = 0; i < kFlood; ++i)
            QVERIFY(node.send(CAN_ERR_FLAG | CAN_ERR_BUSERROR, CAN_MTU));
        QVERIFY(node.send(0x13, CAN_MTU));
        QCOMPARE(receiveCan(0, 1).size(), std::size_t(1));
        const BusReport flood = driver_->busReport(channel_[0], BusQuestion::StateAndEvents);
        QVERIFY(flood.lost > 0);
        QCOMPARE(flood.events.size() + flood.lost, std::uint64_t(kFlood));
    }

    void listenOnlyTransmitsNothing()
    {
        QVERIFY(openDevice() != 0);
        initChannel(0, 1);
        startChannel(0);
        Node node(kBus);
        const CanTransmitRecord classic = canRecord(0x1);
        const CanFdTransmitRecord fd = fdRecord(0x1);
        QCOMPARE(driver_->TransmitCan(channel_[0], &classic, 1), 0u);
        QCOMPARE(driver_->TransmitCanFd(channel_[0], &fd, 1), 0u);
        QVERIFY(node.send(0x2, CAN_MTU));
        QCOMPARE(receiveCan(0, 1).size(), std::size_t(1));
        QVERIFY(!node.hears());
    }

    // Nobody reads: what fits stays in order, what does not is counted to the last frame.
    void lostFramesAreCounted()
    {
        constexpr unsigned kFrames = 70000;
        openBoth();
        driver_->takeNotices();
        Node node(kBus);
        for (unsigned i = 0; i < kFrames; ++i)
            QVERIFY(node.send(i & CAN_SFF_MASK, CAN_MTU));
        std::uint64_t lost = 0;
        const auto countLost = [&] {
            for (const DriverNotice &notice : driver_->takeNotices())
                if (notice.kind == Kind::FramesLost && notice.channel == 1)
                    lost += notice.count;
        };
        QTRY_VERIFY_WITH_TIMEOUT((countLost(), lost > 0), 10000);
        std::size_t received = 0;
        CanReceiveRecord records[1000];
        const auto count = [&] {
            countLost();
            while (const std::uint32_t filled = driver_->ReceiveCan(channel_[1], records, 1000, 0))
                received += filled;
            return received + lost;
        };
        QTRY_COMPARE_WITH_TIMEOUT(count(), std::uint64_t(kFrames), 10000);
    }

    void anInterfaceThatIsDownFailsToStart()
    {
        useOwnInterface();
        QVERIFY(ip(QStringLiteral("link set %1 down").arg(kOwn)));
        QVERIFY(isPresent()); // no channel needs it yet
        initChannel(0);
        QVERIFY(driver_->StartChannel(channel_[0]) != kDriverSuccess);
        QCOMPARE(noticeKinds(), std::vector<Kind>{Kind::InterfaceDown});
        ChannelInitRecord record{};
        record.channelType = 1;
        QCOMPARE(driver_->InitChannel(device_, 1, &record), 0u); // the device has one interface
        QCOMPARE(noticeKinds(), std::vector<Kind>{Kind::InterfaceMissing});
    }

    // The other half of the pair works on.
    void onlyAnInterfaceWhoseChannelRunsCanBeLost()
    {
        useOwnInterface();
        driver_ = std::make_unique<SocketCanDriver>(std::vector<std::string>{kBus, kOwn});
        QVERIFY(openDevice() != 0);
        QVERIFY(ip(QStringLiteral("link set %1 down").arg(kOwn)));
        initChannel(0);
        startChannel(0);
        initChannel(1);
        QVERIFY(driver_->StartChannel(channel_[1]) != kDriverSuccess);
        QVERIFY(isPresent());
        QVERIFY(ip(QStringLiteral("link del %1").arg(kOwn)));
        QVERIFY(isPresent());
        QVERIFY(Node(kBus).send(0x2, CAN_MTU));
        QCOMPARE(receiveCan(0, 1).size(), std::size_t(1));
    }

    void aClassicInterfaceTakesClassicFrames()
    {
        useOwnInterface();
        QVERIFY(ip(QStringLiteral("link set %1 down").arg(kOwn)));
        QVERIFY(ip(QStringLiteral("link set %1 up mtu 16").arg(kOwn)));
        initChannel(0);
        startChannel(0);
        QCOMPARE(noticeKinds(), std::vector<Kind>{Kind::InterfaceNotFd});
        const CanTransmitRecord classic = canRecord(0x1, 8, TransmitType::SelfReceive);
        const CanFdTransmitRecord fd = fdRecord(0x1);
        QCOMPARE(driver_->TransmitCanFd(channel_[0], &fd, 1), 0u);
        QCOMPARE(driver_->TransmitCan(channel_[0], &classic, 1), 1u);
        QCOMPARE(receiveCan(0, 1).size(), std::size_t(1));
    }

    void anInterfaceGoesDownAndComesBack()
    {
        useOwnInterface();
        initChannel(0);
        startChannel(0);
        const CanTransmitRecord record = canRecord(0x1, 8, TransmitType::SelfReceive);
        for (int round = 0; round < 2; ++round) {
            QVERIFY(ip(QStringLiteral("link set %1 down").arg(kOwn)));
            QVERIFY(!isPresent());
            QCOMPARE(driver_->TransmitCan(channel_[0], &record, 1), 0u);
            QTest::qWait(100);
            QCOMPARE(noticeKinds(), std::vector<Kind>{Kind::InterfaceDown}); // once
            QVERIFY(ip(QStringLiteral("link set %1 up").arg(kOwn)));
            QVERIFY(isPresent());
            std::vector<Kind> told;
            QTRY_VERIFY((told = told.empty() ? noticeKinds() : told, !told.empty()));
            QCOMPARE(told, std::vector<Kind>{Kind::InterfaceBack});
            QCOMPARE(driver_->TransmitCan(channel_[0], &record, 1), 1u);
            QCOMPARE(receiveCan(0, 1).size(), std::size_t(1));
        }
    }

    void anInterfaceIsRemovedOrRenamed_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("name"); // under which it can be opened again
        QTest::newRow("removed") << QStringLiteral("link del %1").arg(kOwn) << kOwn;
        QTest::newRow("renamed") << QStringLiteral("link set %1 name %2").arg(kOwn, kRenamed) << kRenamed;
    }
    void anInterfaceIsRemovedOrRenamed()
    {
        QFETCH(QString, command);
        QFETCH(QString, name);
        useOwnInterface();
        initChannel(0);
        startChannel(0);
        ip(QStringLiteral("link set %1 down").arg(kOwn)); // kernels before 6.2 rename no interface that is up
        QVERIFY(ip(command));
        ip(QStringLiteral("link add %1 type vcan").arg(name)); // a new one of the old name is not the old one
        QVERIFY(ip(QStringLiteral("link set %1 up mtu 72").arg(name)));
        QVERIFY(!isPresent());
        DeviceInfoRecord info{};
        QVERIFY(driver_->GetDeviceInfo(device_, &info) != kDriverSuccess);
        QVERIFY(!noticeKinds().empty());
        QCOMPARE(driver_->CloseDevice(device_), kDriverSuccess);

        driver_ = std::make_unique<SocketCanDriver>(std::vector<std::string>{name.toStdString()});
        QVERIFY(openDevice() != 0);
        initChannel(0);
        startChannel(0);
        const CanTransmitRecord record = canRecord(0x1, 8, TransmitType::SelfReceive);
        QCOMPARE(driver_->TransmitCan(channel_[0], &record, 1), 1u);
        QCOMPARE(receiveCan(0, 1).size(), std::size_t(1));
    }
};

QTEST_GUILESS_MAIN(TestSocketCan)
#include "test_socketcan.moc"
