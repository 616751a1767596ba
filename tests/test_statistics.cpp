// Statistics of a bus: loads, periods, moved bits, what a baseline finds wrong.
#include "statistics/busstatistics.h"
#include "statistics/supervisor.h"

#include "device/driver/framelength.h"
#include "device/language.h"

#include <QTest>

#include <cmath>
#include <random>

namespace
{

constexpr std::int64_t kMillisecond = 1000000;
constexpr std::int64_t kSecond = 1000 * kMillisecond;

RawFrame frameAt(std::int64_t time, std::uint32_t id = 0x100, unsigned length = 8, std::uint8_t fill = 0x55)
{
    RawFrame frame;
    frame.time = time;
    frame.id = id;
    frame.length = static_cast<std::uint8_t>(length);
    std::fill_n(frame.data, length, fill);
    return frame;
}

QString text(const std::vector<Violation> &violations)
{
    static const char *const kinds[] = {"late", "early", "missing", "new"};
    QStringList parts;
    for (const Violation &violation : violations)
        parts.append(
            QStringLiteral("%1 %2 at %3")
                .arg(QLatin1String(kinds[static_cast<int>(violation.kind)]), QString::number(violation.key.id, 16))
                .arg(violation.time / kMillisecond));
    return parts.join(QStringLiteral("; "));
}

} // namespace

class TestStatistics : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setLanguageCode(English); }

    void loadIsTheShareOfTheBus();
    void loadFallsWhenNothingComes();
    void kindsAreCountedApart();
    void periodsAgreeWithTheirDefinition();
    void bitsThatMovedAreKnown();
    void memoryHasACeiling();
    void baselineSurvivesItsFile();
    void damagedBaselineSaysWhere_data();
    void damagedBaselineSaysWhere();
    void supervisionNamesWhatIsWrong();
};

void TestStatistics::loadIsTheShareOfTheBus()
{
    ChannelStatistics statistics({500000, 2000000});
    std::uint64_t bits = 0;
    for (int i = 0; i < 2500; ++i) { // a frame each millisecond; FD with switch, rates 1 : 4
        RawFrame frame =
            frameAt(i * kMillisecond, 0x18FF0000U + static_cast<unsigned>(i), 12, static_cast<std::uint8_t>(i));
        frame.extended = frame.fd = frame.bitRateSwitch = true;
        frame.direction = i % 2 == 0 ? Direction::Sent : Direction::Received;
        statistics.add(frame);
        const FrameBits wire = frameBits({frame.id | kIdExtendedFlag, true, true, false, frame.length, 0, frame.data});
        bits += 4 * wire.arbitration + wire.data;
    }
    const double busy = static_cast<double>(bits) / 2e6;
    QVERIFY(std::abs(static_cast<double>(statistics.busyTime()) / 1e9 - busy) < 1e-9 * 2500);
    QVERIFY(std::abs(*statistics.loadMean() - busy / 2.499) < 1e-5);
    QVERIFY(std::abs(*statistics.loadNow() - busy / 2.5) < 0.002);
    QVERIFY(*statistics.loadPeak() >= *statistics.loadNow());
    QCOMPARE(statistics.lastSecond(Direction::Sent, FrameKind::FdSwitched).frames, 500U);
    QCOMPARE(statistics.lastSecond(Direction::Sent, FrameKind::FdSwitched).bytes, 6000U);

    // Nothing is known of a bus whose rate is not.
    ChannelStatistics unknown;
    unknown.add(frameAt(0));
    unknown.add(frameAt(kSecond));
    QVERIFY(!unknown.loadNow() && !unknown.loadMean() && !unknown.loadPeak());
}

void TestStatistics::loadFallsWhenNothingComes()
{
    ChannelStatistics statistics({125000, 0});
    for (int i = 0; i < 1000; ++i)
        statistics.add(frameAt(i * kMillisecond));
    statistics.advance(kSecond);
    const double busy = *statistics.loadNow();
    QVERIFY(busy > 0.85 && busy < 1.1);
    QCOMPARE(statistics.loadCurve().size(), 10U);
    // A frame longer than a point of the curve lies in several of them: none is above the whole.
    ChannelStatistics slow({500, 0});
    slow.add(frameAt(0));
    slow.add(frameAt(kSecond));
    slow.advance(kSecond + kSecond / 10);
    const std::vector<float> curve = slow.loadCurve();
    QCOMPARE(curve.size(), 11U);
    QVERIFY(std::all_of(curve.begin() + 1, curve.end(), [](float load) { return load <= 1.001F; }));
    QVERIFY(curve[9] > 0.99F);

    statistics.advance(kSecond + kSecond / 2);
    QVERIFY(std::abs(*statistics.loadNow() - busy / 2) < 0.01);
    statistics.advance(24 * 3600 * kSecond);
    QCOMPARE(*statistics.loadNow(), 0.0);
    QCOMPARE(*statistics.loadPeak(), busy);
    QCOMPARE(statistics.loadCurve().size(), ChannelStatistics::kCurvePoints - 1);
    const auto total = statistics.counted(Direction::Received).frames;
    statistics.add(frameAt(0)); // a time that goes back
    QCOMPARE(statistics.counted(Direction::Received).frames, total + 1);
    QCOMPARE(statistics.lastTime(), 24 * 3600 * kSecond);
}

void TestStatistics::kindsAreCountedApart()
{
    RawFrame frames[7] = {};
    frames[0].length = 3;
    frames[1].extended = true;
    frames[2].fd = true;
    frames[3].fd = frames[3].bitRateSwitch = true;
    frames[3].length = 64;
    frames[4].remote = true;
    frames[4].length = 8; // asked for, not carried
    frames[5].error = true;
    frames[5].length = 8;
    frames[6].direction = Direction::Sent;
    frames[6].channel = 2;
    BusStatistics statistics;
    statistics.add(frames, 7);
    QCOMPARE(statistics.channels().size(), 2U);
    const ChannelStatistics &first = statistics.channels().at(1);
    const std::uint64_t bytes[kFrameKinds] = {3, 0, 0, 64, 0, 0};
    for (std::size_t kind = 0; kind < kFrameKinds; ++kind) {
        QCOMPARE(first.counted(Direction::Received, static_cast<FrameKind>(kind)).frames, 1U);
        QCOMPARE(first.counted(Direction::Received, static_cast<FrameKind>(kind)).bytes, bytes[kind]);
    }
    QCOMPARE(first.counted(Direction::Sent).frames, 0U);
    QCOMPARE(statistics.channels().at(2).counted(Direction::Sent).frames, 1U);
    // Standard, extended, remote and error frames of one number are four identifiers, and so is the other channel's.
    QCOMPARE(statistics.identifiers().entries().size(), 5U);
    statistics.clear();
    QCOMPARE(statistics.channels().at(1).counted(Direction::Received).frames, 0U);
    QVERIFY(statistics.identifiers().entries().empty());
}

void TestStatistics::periodsAgreeWithTheirDefinition()
{
    std::mt19937 random(20261121);
    std::vector<std::int64_t> times[3000];
    IdentifierTable table;
    for (std::int64_t time = 0; time < 60000; ++time) {
        const unsigned id = random() % 3000;
        times[id].push_back(time * kMillisecond);
        table.add(frameAt(time * kMillisecond, id, 0));
    }
    QCOMPARE(table.entries().size(), 3000U);
    for (const IdentifierStatistics &entry : table.entries()) {
        const std::vector<std::int64_t> &seen = times[entry.key.id];
        QCOMPARE(entry.count, seen.size());
        QVERIFY(table.find(entry.key) == &entry);
        std::vector<double> distances;
        for (std::size_t i = 1; i < seen.size(); ++i)
            distances.push_back(static_cast<double>(seen[i] - seen[i - 1]));
        QVERIFY(distances.size() >= 2);
        double mean = 0;
        for (const double distance : distances)
            mean += distance / static_cast<double>(distances.size());
        double squares = 0;
        for (const double distance : distances)
            squares += (distance - mean) * (distance - mean);
        QVERIFY(std::abs(entry.period.mean - mean) < 1);
        QVERIFY(std::abs(entry.period.deviation() - std::sqrt(squares / static_cast<double>(distances.size() - 1))) <
                1);
        QCOMPARE(static_cast<double>(entry.period.minimum), *std::min_element(distances.begin(), distances.end()));
        QCOMPARE(static_cast<double>(entry.period.maximum), *std::max_element(distances.begin(), distances.end()));
        QCOMPARE(static_cast<double>(entry.period.now), distances.back());
    }
}

void TestStatistics::bitsThatMovedAreKnown()
{
    IdentifierTable table;
    table.add(frameAt(0, 0x10, 2, 0x00));
    table.add(frameAt(1, 0x10, 2, 0x81));
    table.add(frameAt(2, 0x10, 4, 0x81)); // two bytes more
    const IdentifierStatistics &entry = *table.add(frameAt(3, 0x10, 1, 0x80));
    QCOMPARE(int(entry.movedBits[0]), 0x81);
    QCOMPARE(int(entry.movedBits[1]), 0x81);
    QCOMPARE(int(entry.movedBits[2]), 0);
    QCOMPARE(entry.changedAt[0], 3);
    QCOMPARE(entry.changedAt[1], 1);
    QCOMPARE(entry.changedAt[3], 2);
    QCOMPARE(entry.changedAt[4], kNeverChanged);
}

void TestStatistics::memoryHasACeiling()
{
    IdentifierTable table;
    for (std::uint32_t id = 0; id < IdentifierTable::kMaxIdentifiers + 10; ++id) {
        RawFrame frame = frameAt(id, id, 0);
        frame.extended = true;
        QCOMPARE(table.add(frame) == nullptr, id >= IdentifierTable::kMaxIdentifiers);
    }
    QCOMPARE(table.entries().size(), IdentifierTable::kMaxIdentifiers);
    QCOMPARE(table.beyondCeiling(), 10U);
    RawFrame known = frameAt(0, 5, 0);
    known.extended = true;
    QCOMPARE(table.add(known)->count, 2U);

    BusStatistics statistics;
    for (std::size_t channel = 1; channel <= BusStatistics::kMaxChannels + 3; ++channel) {
        known.channel = static_cast<std::uint16_t>(channel);
        statistics.add(&known, 1);
    }
    QCOMPARE(statistics.channels().size(), BusStatistics::kMaxChannels);
    QCOMPARE(statistics.beyondCeiling(), 3U);
}

void TestStatistics::baselineSurvivesItsFile()
{
    IdentifierTable table;
    for (int i = 0; i < 20; ++i) {
        RawFrame periodic = frameAt(i * 10 * kMillisecond + i % 2 * kMillisecond, 0x123);
        periodic.channel = 2;
        table.add(periodic);
        RawFrame irregular = frameAt(i * i * i * kMillisecond, 0x1ABCDEF0);
        irregular.extended = true;
        irregular.direction = Direction::Sent;
        table.add(irregular);
    }
    RawFrame remote = frameAt(0, 0x7);
    remote.remote = true;
    table.add(remote);

    QString error;
    const auto baseline = baselineFromJson(toJson(learnBaseline(table)), &error);
    QVERIFY2(baseline, qPrintable(error));
    QCOMPARE(baseline->messages.size(), 2U);
    const BaselineMessage &irregular = baseline->messages[0];
    QVERIFY(irregular.key == table.entries()[1].key);
    QCOMPARE(irregular.mean, 0.0);
    const BaselineMessage &periodic = baseline->messages[1];
    QVERIFY(periodic.key == table.entries()[0].key);
    QCOMPARE(periodic.mean, table.entries()[0].period.mean);
    QCOMPARE(periodic.minimum, 9 * kMillisecond);
    QCOMPARE(periodic.maximum, 11 * kMillisecond);
}

void TestStatistics::damagedBaselineSaysWhere_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("place");

    const QByteArray head = R"({"ostrel_baseline":1,"messages":[)";
    const QByteArray good = R"({"channel":1,"direction":"rx","id":"0x7FF","extended":false})";
    QTest::newRow("cut") << head + good << "offset";
    QTest::newRow("another version") << QByteArray(R"({"ostrel_baseline":2,"messages":[]})") << "version 1";
    QTest::newRow("identifier too large") << head + good + QByteArray(good).replace("7FF", "800") + "]}"
                                          << "offset";
    QTest::newRow("second message") << head + good + "," + QByteArray(good).replace("7FF", "800") + "]}"
                                    << "message 2: \"id\"";
    QTest::newRow("channel 0") << head + QByteArray(good).replace(":1", ":0") + "]}"
                               << "message 1: \"channel\"";
    QTest::newRow("direction") << head + QByteArray(good).replace("rx", "up") + "]}"
                               << "message 1: \"direction\"";
    QTest::newRow("times not in order")
        << head + QByteArray(good).replace("}", R"(,"mean_ms":5,"minimum_ms":6,"maximum_ms":4})") + "]}"
        << "message 1: \"mean_ms\"";
    QTest::newRow("a message that is none") << head + "7]}"
                                            << "message 1";
}

void TestStatistics::damagedBaselineSaysWhere()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, place);

    QString error;
    QVERIFY(!baselineFromJson(json, &error));
    QVERIFY2(error.contains(place), qPrintable(error));
}

void TestStatistics::supervisionNamesWhatIsWrong()
{
    BaselineMessage periodic;
    periodic.key = IdentifierKey::of(frameAt(0, 0x10));
    periodic.mean = 10 * kMillisecond;
    periodic.minimum = 9 * kMillisecond;
    periodic.maximum = 11 * kMillisecond;
    BaselineMessage second = periodic;
    second.key.id = 0x20;
    BaselineMessage event;
    event.key = IdentifierKey::of(frameAt(0, 0x30));
    Supervisor supervisor({{periodic, second, event}}, 0.1); // 8.1 to 12.1 ms

    std::vector<Violation> found;
    const auto frame = [&](std::int64_t milliseconds, std::uint32_t id) {
        RawFrame made = frameAt(milliseconds * kMillisecond, id);
        supervisor.advance(made.time, &found);
        supervisor.add(made, &found);
    };
    frame(0, 0x10);
    frame(12, 0x10); // within the tolerance
    frame(25, 0x10); // late
    frame(33, 0x10); // early
    frame(42, 0x99); // new, told once
    frame(42, 0x99);
    frame(43, 0x10);
    // 0x20 has not come since the beginning, 0x10 not since 43; neither is told twice.
    frame(90, 0x10);
    frame(99, 0x10);
    supervisor.finish(&found);
    supervisor.finish(&found);
    QCOMPARE(text(found),
             QStringLiteral("late 10 at 25; early 10 at 33; missing 20 at 42; new 99 at 42; missing 10 at 90; "
                            "missing 30 at 99"));
    QCOMPARE(found[0].distance, 13 * kMillisecond);
    QCOMPARE(found[0].limit, 12100000);
}

QTEST_GUILESS_MAIN(TestStatistics)

#include "test_statistics.moc"
