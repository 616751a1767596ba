// The bus load of the statistics against the time that the simulated bus itself has spent, over the same frames.
#include "device/devicelayer.h"
#include "device/driver/simulated/simulateddriver.h"
#include "device/language.h"
#include "frames/framesender.h"
#include "frames/pendingframes.h"
#include "frames/recvthread.h"
#include "statistics/livestatistics.h"
#include "testfolder.h"

#include <QtTest>

#include <random>

using Vehicle = SimulatorOptions::Traffic;
Q_DECLARE_METATYPE(Vehicle)
Q_DECLARE_METATYPE(TransmitType)

namespace
{

constexpr double kTolerance = 0.001;
constexpr double kMoments = 0.005; // of a second's load: frames lie across its ends, clocks of a loaded machine jump
constexpr BusRates kRates{1'000'000, 5'000'000};
constexpr std::uint32_t kBaseIds = 0x600;
constexpr std::uint32_t kLastId = 0x6FF;      // what each channel sends last
constexpr std::uint32_t kUnimportant = 0x700; // first of the base identifiers of a vehicle that never pauses
constexpr unsigned kBaseShift = 18;           // of an extended identifier

// Every kind of frame, with data that need stuff bits and data that need none.
std::vector<RawFrame> everyKind(int count, std::uint32_t firstBase = 0)
{
    constexpr std::uint8_t kFdLengths[] = {0, 5, 8, 12, 16, 20, 32, 64};
    std::minstd_rand random;
    std::vector<RawFrame> frames(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < frames.size(); ++i) {
        RawFrame &frame = frames[i];
        frame.fd = i % 2 == 1;
        frame.bitRateSwitch = i % 4 == 1;
        frame.extended = i % 3 == 0;
        frame.remote = i % 10 == 4;
        frame.id = firstBase + random() % (firstBase == 0 ? kBaseIds : kStandardIdLimit - firstBase);
        if (frame.extended)
            frame.id = frame.id << kBaseShift | random() % (1U << kBaseShift);
        frame.length = frame.fd ? kFdLengths[random() % 8] : static_cast<std::uint8_t>(random() % 9);
        for (unsigned byte = 0; byte < frame.length && !frame.remote; ++byte)
            frame.data[byte] = i % 5 == 0 ? 0 : static_cast<std::uint8_t>(random());
    }
    return frames;
}

std::vector<BusFrame> onBus(const std::vector<RawFrame> &frames)
{
    std::vector<BusFrame> made;
    for (const RawFrame &frame : frames) {
        BusFrame bus;
        bus.id = makeFrameId(frame.id, frame.extended, frame.remote, 0);
        bus.fd = frame.fd;
        bus.bitRateSwitch = frame.bitRateSwitch;
        bus.length = frame.length;
        std::copy_n(frame.data, frame.length, bus.data);
        made.push_back(bus);
    }
    return made;
}

// Both channels open on the simulated bus, with the threads that a window has.
struct Traffic {
    const TestFolder folder;
    SimulatedDriver *adapter;
    LiveStatistics statistics;
    recvThread loops[kChannelCount] = {recvThread(0), recvThread(1)};
    std::unique_ptr<LiveSource> source;

    explicit Traffic(SimulatorOptions options)
    {
        setLanguageCode(English);
        auto driver = std::make_unique<SimulatedDriver>(std::move(options));
        adapter = driver.get();
        setDriver(std::move(driver));
        setPendingFramesTaken(false);
        openDevice(kDeviceType, 0, 0);
        source = std::make_unique<LiveSource>(statistics);
        for (unsigned channel = 0; channel < kChannelCount; ++channel) {
            statistics.setRates(channel + 1, kRates);
            setBaudRate(channel, 0, 0);
            initChannel(channel, 0);
        }
        for (unsigned channel = 0; channel < kChannelCount; ++channel) {
            startChannel(channel);
            loops[channel].start();
        }
    }
    ~Traffic()
    {
        for (recvThread &loop : loops)
            loop.stopAndWait();
        source.reset();
        closeDevice();
        setDriver(nullptr);
        setPendingFramesTaken(true);
    }
    ChannelStatistics of(unsigned channel) const
    {
        StatisticsSnapshot snapshot;
        statistics.snapshot(&snapshot);
        return snapshot.channels.at(channel + 1);
    }
    bool heard(unsigned channel, std::uint32_t id) const
    {
        StatisticsSnapshot snapshot;
        statistics.snapshot(&snapshot);
        return std::any_of(snapshot.identifiers.begin(), snapshot.identifiers.end(), [&](const auto &entry) {
            return entry.key.id == id && entry.key.channel == channel + 1 && entry.key.direction == Direction::Received;
        });
    }
    // The vehicle falls silent when nobody understands it; channel 1 hears its last frame.
    static void silence()
    {
        for (const unsigned channel : {1U, 0U})
            setBaudRate(channel, 1, 1);
    }
    // Share by which a channel's bus time is off.
    double error(unsigned channel) const
    {
        const auto carried = static_cast<double>(adapter->carriedTime());
        return std::abs(static_cast<double>(of(channel).busyTime()) - carried) / carried;
    }
};

} // namespace

class TestBusLoad : public QObject
{
    Q_OBJECT

private slots:
    void agreesWithTheBus_data()
    {
        QTest::addColumn<Vehicle>("vehicle");
        QTest::addColumn<int>("sent"); // by each channel
        QTest::addColumn<unsigned long>("pauseMs");
        QTest::addColumn<TransmitType>("type");
        QTest::newRow("ordinary") << Vehicle::BuiltIn << 200 << 5ul << TransmitType::Normal;
        QTest::newRow("sent until nothing more fits") << Vehicle::Off << 8000 << 0ul << TransmitType::Normal;
        QTest::newRow("beside a vehicle that never pauses") << Vehicle::Flood << 2000 << 0ul << TransmitType::Normal;
        QTest::newRow("back to the sender") << Vehicle::Off << 200 << 1ul << TransmitType::SelfReceive;
    }
    void agreesWithTheBus()
    {
        QFETCH(Vehicle, vehicle);
        QFETCH(int, sent);
        QFETCH(unsigned long, pauseMs);
        QFETCH(TransmitType, type);
        SimulatorOptions options;
        options.traffic = vehicle;
        options.flood = onBus(everyKind(1000, kUnimportant));
        Traffic traffic(options);
        for (const RawFrame &frame : everyKind(sent)) {
            for (unsigned channel = 0; channel < kChannelCount; ++channel)
                QVERIFY(sendRaw(channel, frame, type) == SendResult::Taken);
            QThread::msleep(pauseMs);
        }
        RawFrame last;
        last.id = kLastId;
        for (unsigned channel = 0; channel < kChannelCount; ++channel)
            QVERIFY(sendRaw(channel, last, type) == SendResult::Taken);
        QTRY_VERIFY(traffic.heard(0, kLastId) && traffic.heard(1, kLastId));
        traffic.silence();
        for (unsigned channel = 0; channel < kChannelCount; ++channel) {
            QTRY_VERIFY2(traffic.error(channel) < kTolerance, qPrintable(QString::number(traffic.error(channel))));
            qInfo("channel %u: the bus %.3f ms, the statistics %.3f ms", channel + 1,
                  double(traffic.adapter->carriedTime()) / 1e6, double(traffic.of(channel).busyTime()) / 1e6);
            if (vehicle != Vehicle::Off)
                break; // channel 2 was deaf before the vehicle was silent
        }
    }

    // A bus that is never idle shows 100 %, at every moment, and none shows more. A machine that stops for a while
    // stops the simulated bus as well: then a later second is looked at.
    void aFullBusIsAWhole()
    {
        constexpr int kAttempts = 20;
        SimulatorOptions options;
        options.traffic = SimulatorOptions::Traffic::Flood;
        options.flood = onBus(everyKind(1000, kUnimportant));
        Traffic traffic(options);
        QTRY_VERIFY(traffic.heard(1, options.flood.back().id & kIdMask));
        const auto whole = [](std::optional<double> load) { return load && std::abs(*load - 1) < kMoments; };
        for (const unsigned channel : {0U, 1U, 0U, 1U}) {
            bool seen = false;
            for (int attempt = 0; attempt < kAttempts && !seen; ++attempt) {
                traffic.statistics.clear();
                QTest::qWait(1100);
                const ChannelStatistics shown = traffic.of(channel);
                QVERIFY(shown.loadPeak().value_or(0) < 1 + kMoments);
                seen = whole(shown.loadNow()) && whole(shown.loadMean()) && whole(shown.loadPeak());
                qInfo("now %.5f, mean %.5f, peak %.5f", shown.loadNow().value_or(0), shown.loadMean().value_or(0),
                      shown.loadPeak().value_or(0));
            }
            QVERIFY(seen);
        }
    }
};

QTEST_GUILESS_MAIN(TestBusLoad)
#include "test_busload.moc"
