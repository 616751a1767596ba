// What a channel tells beside its frames: to the operation log, to the tap, to whoever asks for its state.
#include "device/devicelayer.h"
#include "device/driver/simulated/simulateddriver.h"
#include "device/language.h"
#include "fakedriver.h"
#include "frames/pendingframes.h"
#include "frames/recvthread.h"
#include "frames/tap.h"
#include "statistics/livestatistics.h"
#include "testfolder.h"

#include <QtTest>

using namespace std::chrono_literals;
using namespace buserror;

namespace
{

BusEvent eventOf(std::uint32_t classes, std::uint8_t controller = 0, std::uint8_t protocol = 0)
{
    BusEvent made;
    made.classes = classes;
    made.data[ControllerFlags] = controller;
    made.data[ProtocolFlags] = protocol;
    return made;
}

BusReport reportOf(int errors, const std::vector<BusEvent> &states = {})
{
    BusReport report;
    report.events.assign(static_cast<std::size_t>(errors), eventOf(kProtocol | kBusError, 0, kStuff));
    for (const BusEvent &state : states)
        report.events.push_back(state);
    for (const BusEvent &each : report.events)
        report.state = stateAfter(report.state, each);
    return report;
}

} // namespace

class TestBusEvents : public QObject
{
    Q_OBJECT

private slots:
    void init() { setLanguageCode(English); }

    // Asked every 100 ms for so many seconds; each asking finds so many error frames.
    void aBurstIsALine_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<int>("perAsking");
        QTest::addColumn<QStringList>("lines");
        const auto line = [](int frames) { return QString("Channel 2: %1 error frames (stuff error)").arg(frames); };
        QTest::newRow("none") << 3 << 0 << QStringList();
        QTest::newRow("one second") << 1 << 2 << QStringList{line(20)};
        QTest::newRow("goes on") << 25 << 1 << QStringList{line(11), line(100), line(100), line(39)};
    }
    void aBurstIsALine()
    {
        QFETCH(int, seconds);
        QFETCH(int, perAsking);
        QStringList lines;
        BusEventLog log(1, [&](const QString &line) { lines.append(line); });
        for (int ms = 0; ms < seconds * 1000; ms += 100)
            log.add(reportOf(perAsking), ms);
        for (int ms = seconds * 1000; ms < seconds * 1000 + 3000; ms += 100)
            log.add({}, ms); // quiet: nothing more, and what was left is told
        log.end();
        QTEST(lines, "lines");
    }

    void changesOfTheStateAreLines()
    {
        QStringList lines;
        BusEventLog log(0, [&](const QString &line) { lines.append(line); });
        const BusEvent warning = eventOf(kController, kTransmitWarning);
        const BusEvent passive = eventOf(kController, kTransmitPassive);
        const BusEvent off = eventOf(kBusOff);
        const BusEvent active = eventOf(kController, kErrorActive);
        log.add(reportOf(0, {warning, passive, passive}), 0);
        log.add(reportOf(0, {off, active}), 100);  // it was off between two looks
        log.add(reportOf(0, {passive, off}), 200); // too many for this second
        log.add(reportOf(0, {off}), 1100);
        log.add({}, 1200); // nobody knows: nothing is told
        QCOMPARE(
            lines,
            QStringList({"Channel 1: the controller is error passive", "Channel 1: the controller is bus-off",
                         "Channel 1: the controller is error active again", "Channel 1: the controller is bus-off"}));
    }

    void receiveLoopHandsEventsOn()
    {
        FakeDriver *fake = FakeDriver::install();
        QVERIFY(openDevice(kDeviceType, 0, 0) && initChannel(1, 0));
        fake->report[1] = reportOf(1);
        fake->report[1].events[0].timeStamp = 1234;
        fake->report[1].state = {ControllerState::ErrorWarning, true, 96, 7};
        fake->report[1].lost = 3;
        TapReader reader;
        recvThread loop(1);
        QSignalSpy lines(&loop, &recvThread::log);
        loop.start();
        QTRY_COMPARE(int(lastBusReport(1).state.transmitErrors), 96);
        TapBatch batch;
        QVERIFY(reader.take(batch, 10s));
        loop.stopAndWait();
        QVERIFY(loop.lostErrorFrames() >= 6 && loop.lostErrorFrames() % 3 == 0); // of every asking
        QVERIFY(!batch.frames.empty());
        const RawFrame &frame = batch.frames.front();
        QVERIFY(frame.error && frame.channel == 2 && frame.length == 8 && frame.direction == Direction::Received);
        QCOMPARE(frame.id, kProtocol | kBusError);
        QCOMPARE(frame.time, std::int64_t(1234000));
        QCOMPARE(frame.data[ProtocolFlags], kStuff);
        QVERIFY(lines.size() >= 1 && lines[0][0].toString().startsWith("Channel 2: "));
        QVERIFY(lastBusReport(1).state.controller == ControllerState::Unknown); // no loop any more
        closeDevice();
    }

    // Alone on the bus: nobody acknowledges, the controller becomes error passive, statistics count the error frames.
    void simulatedErrorsReachLogAndStatistics()
    {
        const TestFolder folder;
        setLanguageCode(English);
        SimulatorOptions options;
        options.traffic = SimulatorOptions::Traffic::Off;
        setDriver(std::make_unique<SimulatedDriver>(options));
        setPendingFramesTaken(false);
        QVERIFY(openDevice(kDeviceType, 0, 0) && setBaudRate(0, 0, 0) && initChannel(0, 0) && startChannel(0));
        LiveStatistics statistics;
        statistics.setRates(1, {1'000'000, 5'000'000});
        QStringList lines;
        {
            const LiveSource source(statistics);
            recvThread loop(0);
            QObject::connect(&loop, &recvThread::log, this, [&](const QString &line) { lines.append(line); });
            loop.start();
            CanTransmitRecord record{};
            record.length = 8;
            QTRY_VERIFY(!sendCan(0, &record, 1) && lastBusReport(0).state.controller == ControllerState::ErrorPassive);
            loop.stopAndWait();
            QCoreApplication::processEvents();
        }
        StatisticsSnapshot snapshot;
        statistics.snapshot(&snapshot);
        QVERIFY(snapshot.channels.at(1).counted(Direction::Received, FrameKind::Error).frames > 0);
        QVERIFY(snapshot.channels.at(1).busyTime() > 0);
        QVERIFY2(lines.join("\n").contains("Channel 1: the controller is error passive (TEC 128, REC 0)"),
                 qPrintable(lines.join("\n")));
        QVERIFY(lines.join('\n').contains("no acknowledgement"));
        closeDevice();
        setDriver(nullptr);
        setPendingFramesTaken(true);
    }
};

QTEST_GUILESS_MAIN(TestBusEvents)
#include "test_busevents.moc"
