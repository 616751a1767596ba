#include "device/devicelayer.h"
#include "fakedriver.h"
#include "frames/adapterclock.h"
#include "frames/framesender.h"
#include "frames/pendingframes.h"
#include "frames/rawrecords.h"
#include "frames/recvthread.h"
#include "frames/sendthread.h"
#include "frames/tap.h"
#include "testfolder.h"

#include <QtTest>

#include <thread>

using namespace std::chrono_literals;

namespace
{

constexpr std::int64_t kSecond = 1'000'000'000;

void publish(std::initializer_list<std::uint32_t> ids, std::uint16_t channel = 1)
{
    std::vector<RawFrame> frames;
    for (const std::uint32_t id : ids) {
        frames.emplace_back();
        frames.back().id = id;
        frames.back().channel = channel;
    }
    publishToTap(frames.data(), frames.size());
}

QVector<std::uint32_t> ids(const TapBatch &batch)
{
    QVector<std::uint32_t> all;
    for (const RawFrame &frame : batch.frames)
        all << frame.id;
    return all;
}

// "Rx1 x123 FD B 0102", with R for remote, S and x for the kind of identifier.
QString text(const RawFrame &frame)
{
    const QByteArray data(reinterpret_cast<const char *>(frame.data), frame.length);
    return QString("%1%2 %3%4%5%6%7 %8 ")
               .arg(frame.direction == Direction::Received ? "Rx" : "Tx")
               .arg(frame.channel)
               .arg(frame.extended ? "x" : "s")
               .arg(frame.id, 0, 16)
               .arg(frame.fd ? " FD" : "", frame.bitRateSwitch ? " B" : "", frame.remote ? " R" : "")
               .arg(frame.length) +
           data.toHex();
}

template <typename Record> Record record(std::uint32_t id, std::uint8_t length)
{
    Record made{};
    made.id = id;
    made.length = length;
    for (std::size_t i = 0; i < sizeof made.data; ++i)
        made.data[i] = static_cast<std::uint8_t>(i + 1);
    if constexpr (sizeof made.data == kFdDataBytes)
        made.flags = kFdBitRateSwitch;
    return made;
}

} // namespace

class TestTap : public QObject
{
    Q_OBJECT

private slots:
    void everyReaderHasItsOwnBoundedQueue()
    {
        QVERIFY(!tapHasReaders());
        publish({1});
        TapReader wide;
        TapBatch batch;
        {
            TapReader narrow(3);
            QVERIFY(tapHasReaders());
            publish({2, 3});
            publish({4, 5, 6});
            QVERIFY(narrow.take(batch, 0ms));
            QCOMPARE(ids(batch), QVector<std::uint32_t>({2, 3, 4}));
            QCOMPARE(batch.lost, 2u);
            publish({7});
            QVERIFY(narrow.take(batch, 0ms, 9)); // room again; more than it can hold is not waited for
            QCOMPARE(ids(batch), QVector<std::uint32_t>({7}));
            QCOMPARE(batch.lost, 0u);
        }
        publish({8});
        QVERIFY(wide.take(batch, 0ms));
        QCOMPARE(ids(batch), QVector<std::uint32_t>({2, 3, 4, 5, 6, 7, 8}));
        QVERIFY(wide.take(batch, 0ms) && batch.frames.empty());
    }

    void waitsForEnoughOrTheInterruption()
    {
        for (const bool interrupt : {false, true}) {
            TapReader reader(3);
            TapBatch batch;
            std::atomic<bool> ended{false}, goOn{false};
            std::thread taker([&] {
                goOn = reader.take(batch, 1h, 5); // five never fit: three are enough
                ended = true;
            });
            publish({1});
            publish({2});
            QTest::qWait(20);
            QVERIFY(!ended);
            interrupt ? reader.interrupt() : publish({3});
            QTRY_VERIFY(ended);
            taker.join();
            QCOMPARE(goOn.load(), !interrupt);
            QCOMPARE(batch.frames.size(), interrupt ? 2u : 3u);
            QCOMPARE(reader.take(batch, interrupt ? 1h : 0ms), !interrupt);
        }
    }

    // Publishers of their own order each, while other readers come and go.
    void manyThreads()
    {
        constexpr std::uint32_t kFrames = 20000;
        constexpr std::uint16_t kPublishers = 3;
        TapReader steady;
        std::atomic<bool> done{false};
        std::vector<std::thread> publishers;
        for (std::uint16_t channel = 0; channel < kPublishers; ++channel)
            publishers.emplace_back([channel] {
                for (std::uint32_t id = 0; id < kFrames; id += 2)
                    publish({id, id + 1}, channel);
            });
        std::thread visitor([&] {
            TapBatch batch;
            while (!done)
                TapReader(10).take(batch, 1ms);
        });
        std::uint32_t next[kPublishers] = {};
        TapBatch batch;
        for (std::size_t taken = 0; taken < kPublishers * kFrames; taken += batch.frames.size()) {
            QVERIFY(steady.take(batch, 10s) && !batch.frames.empty() && batch.lost == 0);
            for (const RawFrame &frame : batch.frames)
                QCOMPARE(frame.id, next[frame.channel]++);
        }
        done = true;
        for (std::thread &publisher : publishers)
            publisher.join();
        visitor.join();
    }

    void clockTakesTheSmallestDifferenceOfLate()
    {
        struct Step {
            std::int64_t opening, host, adapter; // seconds
            std::int64_t difference;
        };
        const Step steps[] = {
            {1, 100, 0, 100},  {1, 103, 5, 98},   {1, 104, 0, 98}, // a late frame teaches nothing
            {1, 111, 10, 98},  {1, 119, 20, 98},                   // the window before still counts
            {1, 121, 20, 99},  {1, 131, 30, 101},                  // the two before no longer do
            {1, 200, 10, 190},                                     // nothing for long
            {2, 201, 1, 200},  {2, 202, 0, 200},                   // the device was opened again
        };
        AdapterClock clock;
        for (const Step &step : steps) {
            clock.observe(step.opening, step.host * kSecond, step.adapter * kSecond);
            QVERIFY(clock.isKnown(step.opening) && !clock.isKnown(step.opening + 1));
            QCOMPARE(clock.adapterTime(step.host * kSecond), (step.host - step.difference) * kSecond);
        }
    }

    void threadsAndSendersPassIt_data()
    {
        QTest::addColumn<bool>("window");
        QTest::newRow("with a window") << true;
        QTest::newRow("without") << false;
    }
    // What was received and what the driver took, and nothing else; with or without a window to show it.
    void threadsAndSendersPassIt()
    {
        QFETCH(bool, window);
        setPendingFramesTaken(window);
        FakeDriver *fake = FakeDriver::install();
        bool taken = true;
        fake->onTransmitCan = [&](unsigned, const CanTransmitRecord *, std::uint32_t) { return taken ? 1u : 0u; };
        fake->onTransmitCanFd = [](unsigned, const CanFdTransmitRecord *, std::uint32_t) { return 1u; };
        QVERIFY(openDevice(kDeviceType, 0, 0) && initChannel(0, 0) && initChannel(1, 0));
        takePendingFrames();
        TapReader reader;
        TapBatch batch;
        const auto passed = [&](int count) {
            QStringList texts;
            while (texts.size() < count && reader.take(batch, 5s) && !batch.frames.empty())
                for (const RawFrame &frame : batch.frames)
                    texts << text(frame);
            return texts;
        };

        RawFrame raw = toRawFrame(record<CanTransmitRecord>(0x7FF, 1), 0, 0);
        QCOMPARE(sendRaw(1, raw, TransmitType::Single), SendResult::Taken);
        QCOMPARE(passed(1), QStringList("Tx2 s7ff 1 01"));
        QVERIFY(batch.frames[0].time < 3600 * kSecond); // since the opening: the adapter has not spoken yet
        QCOMPARE(fake->sentCan(1).at(0).transmitType, 1u);

        auto classic = record<CanReceiveRecord>(0x80000123, 200);
        classic.timeStamp = 5'000'000'000;
        fake->feed(0, {classic, record<CanReceiveRecord>(kIdRemoteFlag | 5, 2)});
        fake->feedFd(0, {record<CanFdReceiveRecord>(6, 3)});
        recvThread receiver(0);
        receiver.start();
        QCOMPARE(passed(3), QStringList({"Rx1 x123 8 0102030405060708", "Rx1 s5 R 2 0000", "Rx1 s6 FD B 3 010203"}));
        receiver.stopAndWait();
        fake->feed(0, {classic});
        receiver.start();
        QCOMPARE(passed(1).size(), 1);
        QCOMPARE(batch.frames[0].time, 5000 * kSecond);
        receiver.stopAndWait();

        // Each channel's sender goes by the adapter's clock, once one of them has heard it.
        sendThread sender(1);
        const auto bytes = record<CanFdTransmitRecord>(0, 0);
        const auto sendCount = [&](uint fd) {
            sender.setSend(0x10, 1, 1, fd, 1, bytes.data, 2, 0, 70, 69, 0, 0, 0);
            sender.start();
            sender.wait();
        };
        sendCount(1);
        const QStringList sent = passed(70);
        QCOMPARE(sent.size(), 70);
        QCOMPARE(sent.at(0) + ", " + sent.at(69), QString("Tx2 x10 FD B 2 0102, Tx2 x55 FD B 2 0102"));
        QVERIFY(batch.frames.back().time >= 5000 * kSecond && batch.frames.back().time < 9000 * kSecond);

        TestFolder folder;
        folder.write("rows.csv", "titles\n1,,0x0,1,Tx,0x101,标准帧,数据帧,2,CAN,x| 01 FF \n"
                                 "1,,0x0,2,Tx,0x102,标准帧,数据帧,2,CANFD,x| 01 FF \n");
        sender.setFileSend(folder.path("rows.csv"), 1, 0, kChannelOfRow);
        QVERIFY(resetChannel(0));
        sender.start();
        sender.wait();
        taken = false;
        sendCount(0);
        QCOMPARE(sendRaw(1, raw, TransmitType::Normal), SendResult::Refused);
        raw.error = true;
        QCOMPARE(sendRaw(1, raw, TransmitType::Normal), SendResult::Unsendable);
        QCOMPARE(passed(1), QStringList("Tx2 s102 FD 2 01ff")); // the first row's channel is closed
        QVERIFY(reader.take(batch, 0ms) && batch.frames.empty());
        QCOMPARE(takePendingFrames().size(), window ? 1 + 4 + 70 + 2 : 0);
        closeDevice();
        setPendingFramesTaken(true);
    }

    void whatCannotBeSent()
    {
        const auto frame = [](std::uint32_t id, bool extended, bool fd, bool remote, std::uint8_t length) {
            RawFrame made;
            made.id = id;
            made.extended = extended;
            made.fd = fd;
            made.remote = remote;
            made.length = length;
            return made;
        };
        for (const RawFrame &good : {frame(0x7FF, false, false, true, 8), frame(0x1FFFFFFF, true, true, false, 64)})
            QVERIFY(isSendable(good));
        for (const RawFrame &bad : {frame(0x800, false, false, false, 0), frame(0x20000000, true, false, false, 0),
                                    frame(1, false, false, false, 9), frame(1, false, true, false, 9),
                                    frame(1, false, true, false, 65), frame(1, false, true, true, 0)})
            QVERIFY(!isSendable(bad));
    }
};

QTEST_GUILESS_MAIN(TestTap)
#include "test_tap.moc"
