// The bus of the simulated adapter by itself, in its own time.
#include "device/driver/simulated/tracereplay.h"
#include "device/driver/simulated/virtualbus.h"

#include <QtTest>

#include <cstring>

using Times = std::vector<std::uint64_t>;

namespace
{

constexpr BusTime kMs = 1000000;
constexpr std::size_t kMany = 100000; // frames, more than fit anywhere

enum class Kind { Classic, Fd, FdSwitched };

BusFrame busFrame(std::uint32_t id, std::uint8_t length = 0, Kind kind = Kind::Classic)
{
    BusFrame frame;
    frame.id = id;
    frame.length = length;
    frame.fd = kind != Kind::Classic;
    frame.bitRateSwitch = kind == Kind::FdSwitched;
    return frame;
}

// The virtual bus with both channels started, and perhaps a vehicle.
class StartedBus : public VirtualBus
{
public:
    explicit StartedBus(std::unique_ptr<TrafficSource> vehicle = nullptr, const SimulatorOptions &options = {})
        : VirtualBus(options)
    {
        setTraffic(std::move(vehicle));
        start(0, 0);
        start(1, 0);
    }
    bool send(unsigned index, std::uint32_t id, BusTime ready = 0, TransmitType type = TransmitType::Normal)
    {
        return enqueue(index, busFrame(id), type, ready);
    }
    BusReport take(unsigned index) { return channel(index).report(BusQuestion::StateAndEvents); }
    // When the frames of these identifiers end that follow each other from a time on, in microseconds.
    Times endsFrom(BusTime start, const std::vector<std::uint32_t> &ids)
    {
        Times ends;
        for (const std::uint32_t id : ids)
            ends.push_back((start += frameDuration(busFrame(id), channel(0).settings)) / 1000);
        return ends;
    }
    // When the channel heard its classic frames.
    Times heardAt(unsigned index)
    {
        Times times;
        CanReceiveRecord record;
        while (channel(index).classic.take(&record, 1) == 1)
            times.push_back(record.timeStamp);
        return times;
    }
};

// Whether the next frame to be fetched is this one, and no earlier than the one before, which came at *time.
template <typename Record> bool isNext(BoundedQueue<Record> &queue, const BusFrame &sent, std::uint64_t *time)
{
    Record record;
    if (queue.take(&record, 1) == 0 || record.timeStamp < *time)
        return false;
    *time = record.timeStamp;
    Record expected;
    fillRecord(sent, *time, &expected);
    return std::memcmp(&record, &expected, sizeof record) == 0;
}

} // namespace

class TestVirtualBus : public QObject
{
    Q_OBJECT

private slots:
    void framesTakeTheirTime()
    {
        const BusSettings rates{1000000, 5000000, 0};
        // One stuff bit in seven zeros; none; 102 in 512 zeros.
        QCOMPARE(frameDuration(busFrame(0x7BD, 0, Kind::Fd), rates), BusTime(29000 + 34 * 1000));
        QCOMPARE(frameDuration(busFrame(0x7BD, 0, Kind::FdSwitched), rates), BusTime(29000 + 33 * 200));
        QCOMPARE(frameDuration(busFrame(0x7BD, 64, Kind::FdSwitched), rates), BusTime(29000 + (550 + 102) * 200));
    }

    void theLowestIdentifierWinsTheBus()
    {
        StartedBus bus;
        // Channel by channel the order stays; between them the one that is more dominant at the first difference wins.
        const std::uint32_t sameBase = 0x100u << 18 | kIdExtendedFlag; // loses to the standard frame
        bus.send(0, 0x400, 10);
        bus.send(0, 0x100, 10);
        bus.send(1, 0x401, 10);
        bus.send(1, sameBase, 10);
        bus.send(1, 0x100, 10);
        // Each of the two front frames waits for the lower one; what stands behind it comes too late to compete.
        const Times ends = bus.endsFrom(10, {0x400, 0x100, 0x401, sameBase, 0x100});
        QCOMPARE(bus.advance(1000, 100) / 1000, ends[0]);
        QCOMPARE(bus.advance(kMs, 100), kNever);
        QCOMPARE(bus.heardAt(1), Times(ends.begin(), ends.begin() + 2));
        QCOMPARE(bus.heardAt(0), Times(ends.begin() + 2, ends.end()));

        StartedBus equals;
        for (const unsigned channel : {0, 0, 1, 1})
            equals.send(channel, 0x100);
        QCOMPARE(equals.advance(kMs, 100), kNever);
        const Times turns = equals.endsFrom(0, {0x100, 0x100, 0x100, 0x100});
        QCOMPARE(equals.heardAt(1), (Times{turns[0], turns[2]}));
        QCOMPARE(equals.heardAt(0), (Times{turns[1], turns[3]}));
    }

    void framesWithoutListenersWaitOrAreGivenUp()
    {
        StartedBus bus;
        for (const TransmitType type : {TransmitType::Single, TransmitType::Normal, TransmitType::Single})
            bus.send(0, 0x1, 0, type);
        bus.initialise(1, false, 0);
        QCOMPARE(bus.advance(1000 * kMs, 100), kNever);
        bus.start(1, 1000 * kMs);
        QCOMPARE(bus.advance(2000 * kMs, 100), kNever);
        // The first single-shot is gone, the others had their chance.
        QCOMPARE(bus.heardAt(1).size(), std::size_t(2));
    }

    // ISO 11898-1's counters and states, and that what is told agrees with them.
    void aSenderWithoutListenersBecomesErrorPassive()
    {
        StartedBus bus;
        bus.initialise(1, false, 0);
        const BusFrame frame = busFrame(1, 8, Kind::Fd);
        bus.tryInVain(0, frame, 0);
        bus.tryInVain(0, frame, 1000); // the first one is on the wire still
        QCOMPARE(int(bus.take(0).state.transmitErrors), 8);
        const std::pair<unsigned, ControllerState> states[] = {{11, ControllerState::ErrorActive},
                                                               {12, ControllerState::ErrorWarning},
                                                               {15, ControllerState::ErrorWarning},
                                                               {16, ControllerState::ErrorPassive},
                                                               {40, ControllerState::ErrorPassive}};
        unsigned tries = 1;
        for (const auto &[upTo, state] : states) {
            for (; tries < upTo; ++tries)
                bus.tryInVain(0, frame, tries * kMs);
            const ChannelState now = bus.take(0).state;
            QVERIFY(now.controller == state);
            QCOMPARE(unsigned(now.transmitErrors), std::min(8 * upTo, 128u)); // alone it never leaves the bus
        }
        bus.start(1, 50 * kMs);
        for (int i = 0; i < 2; ++i)
            bus.enqueue(0, frame, TransmitType::Normal, 50 * kMs);
        bus.advance(60 * kMs, 100);
        CanFdReceiveRecord records[2];
        QCOMPARE(bus.channel(1).fd.take(records, 2), std::size_t(2));
        QCOMPARE(int(records[0].errorStateIndicator), 1);
        QCOMPARE(int(records[1].errorStateIndicator), 0);
        QVERIFY(bus.take(0).state.controller == ControllerState::ErrorWarning);
    }

    void otherRatesAreErrors_data()
    {
        QTest::addColumn<unsigned>("arbitrationRate");
        QTest::addColumn<bool>("listenOnly");
        QTest::addColumn<int>("frames");
        QTest::addColumn<int>("flags");
        QTest::addColumn<int>("counted");
        QTest::addColumn<int>("afterOneUnderstood");
        QTest::newRow("arbitration") << 500000u << false << 100 << int(buserror::kStuff) << 100 << 99;
        QTest::newRow("data phase") << 1000000u << false << 200 << int(buserror::kForm) << 200 << 127;
        QTest::newRow("listen-only") << 500000u << true << 100 << int(buserror::kStuff) << 0 << 0;
    }
    void otherRatesAreErrors()
    {
        QFETCH(unsigned, arbitrationRate);
        QFETCH(bool, listenOnly);
        QFETCH(int, frames);
        QFETCH(int, flags);
        StartedBus bus(makeFlood({busFrame(0x1, 8, Kind::FdSwitched)}));
        bus.initialise(1, listenOnly, 0);
        bus.setSettings(1, {arbitrationRate, 2000000, 0}, 0);
        bus.start(1, 0);
        bus.advance(1000 * kMs, std::size_t(frames));
        const BusReport report = bus.take(1);
        QVERIFY(report.events.size() >= std::size_t(frames));
        QCOMPARE(int(report.events[0].data[buserror::ProtocolFlags]), flags);
        QTEST(int(report.state.receiveErrors), "counted");
        bus.setSettings(1, bus.channel(0).settings, 1000 * kMs);
        bus.advance(1000 * kMs, 1);
        QTEST(int(bus.take(1).state.receiveErrors), "afterOneUnderstood");
        QVERIFY(bus.take(0).events.empty());
    }

    // Whatever is destroyed on the wire arrives all the same, once and in order; the sums of both sides agree.
    void destroyedFramesAreRepeated()
    {
        SimulatorOptions options;
        options.errorOneIn = 10;
        StartedBus bus(nullptr, options);
        constexpr unsigned kFrames = 2000;
        unsigned arrived = 0;
        std::size_t errors[kChannelCount] = {};
        for (unsigned i = 0; i < kFrames; ++i) {
            bus.send(0, i % 0x800, i * kMs);
            bus.advance((i + 1) * kMs, 100);
            for (unsigned channel = 0; channel < kChannelCount; ++channel)
                for (const BusEvent &event : bus.take(channel).events)
                    errors[channel] += (event.classes & buserror::kProtocol) != 0;
            CanReceiveRecord record;
            while (bus.channel(1).classic.take(&record, 1) == 1)
                QCOMPARE(record.id, std::uint32_t(arrived++ % 0x800));
        }
        QCOMPARE(arrived, kFrames);
        QCOMPARE(errors[0], errors[1]);
        QVERIFY2(errors[0] > 150 && errors[0] < 300, qPrintable(QString::number(errors[0]))); // 2000 / 9
    }

    void aSenderThatAlwaysFailsLeavesTheBusForAWhile()
    {
        SimulatorOptions options;
        options.errorOneIn = 1;
        StartedBus bus(nullptr, options);
        bus.send(0, 0x1);
        bus.send(1, 0x0, 0, TransmitType::Single);
        bus.advance(10 * kMs, 1 + 32); // the other one's only try; 32 times 8
        QVERIFY(bus.channel(1).transmissions.empty());
        const BusReport off = bus.take(0);
        QVERIFY(off.state.controller == ControllerState::BusOff);
        QCOMPARE(off.events.back().classes, buserror::kBusOff | buserror::kCounters);
        ChannelState followed;
        for (const BusEvent &event : off.events)
            followed = stateAfter(followed, event);
        QVERIFY(followed.controller == ControllerState::BusOff);
        bus.advance(10 * kMs, 1);
        const BusReport again = bus.take(0);
        QCOMPARE(again.events.at(0).classes, buserror::kRestarted | buserror::kCounters);
        QCOMPARE(again.events.at(0).timeStamp - off.events.back().timeStamp, std::uint64_t(128 * 11));
        QVERIFY(stateAfter(followed, again.events.at(0)).controller == ControllerState::ErrorActive);
        QCOMPARE(int(again.state.transmitErrors), 8);
    }

    void theVehicleLeavesRoomOnASlowBus()
    {
        VirtualBus bus{SimulatorOptions()};
        bus.setTraffic(makeBuiltInVehicle());
        bus.setSettings(0, {5000, 100000, 0}, 0);
        bus.start(0, 0);
        bus.advance(100000 * kMs, kMany);
        QVERIFY(bus.enqueue(0, busFrame(0x7FF), TransmitType::Normal, 100000 * kMs));
        bus.advance(103000 * kMs, kMany);
        QVERIFY(bus.channel(0).transmissions.empty());
        const std::size_t heard = bus.channel(0).classic.size() + bus.channel(0).fd.size();
        QVERIFY2(heard > 500 && heard < 3000, qPrintable(QString::number(heard)));
    }

    // Bursts that the bus is too slow for, identifiers that fall within them, a recorder's clock that jumps back.
    void bothChannelsHearTheWholeTrace()
    {
        constexpr unsigned kFrames = 600;
        constexpr unsigned kLoops = 3;
        std::vector<LoggedFrame> log;
        for (unsigned i = 0; i < kFrames; ++i) {
            const BusTime burst = 1000003 * kMs + i / 50 * 20 * kMs;
            log.push_back(
                {i % 50 == 49 ? burst - 3 * kMs : burst, busFrame(0x7FF - i, 8, i % 3 ? Kind::Classic : Kind::Fd)});
            std::memcpy(log.back().frame.data, &i, sizeof i);
        }
        StartedBus bus(std::make_unique<TraceReplay>(log));
        bus.advance(10000 * kMs, kLoops * kFrames);
        for (unsigned index = 0; index < kChannelCount; ++index) {
            BusChannel &channel = bus.channel(index);
            std::uint64_t time = 0;
            for (unsigned i = 0; i < kLoops * kFrames; ++i) {
                const BusFrame &sent = log[i % kFrames].frame;
                QVERIFY(sent.fd ? isNext(channel.fd, sent, &time) : isNext(channel.classic, sent, &time));
            }
            QVERIFY2(time < 1000000, qPrintable(QString::number(time))); // three loops of 220 ms
        }
        QCOMPARE(bus.vehicleCounts().size(), std::size_t(kFrames));
        QCOMPARE(bus.vehicleCounts().at(0x7FF), std::uint64_t(kLoops));
    }

    void withoutBusTimeNothingIsLost()
    {
        SimulatorOptions timeless;
        timeless.busTime = false;
        VirtualBus bus(timeless);
        bus.setTraffic(makeFlood({busFrame(0x123, 8)}));
        bus.start(0, 0);
        std::uint32_t number = 0;
        for (int round = 0; round < 20; ++round) {
            bus.advance((1000 + round) * kMs, kMany); // until the receiver is behind
            CanReceiveRecord record;
            while (bus.channel(0).classic.take(&record, 1) == 1) {
                QVERIFY(std::memcmp(record.data, &number, sizeof number) == 0);
                ++number;
            }
        }
        QVERIFY(number > kMany);
    }
};

QTEST_APPLESS_MAIN(TestVirtualBus)
#include "test_virtualbus.moc"
