#include "device/devicelayer.h"
#include "device/language.h"
#include "fakedriver.h"
#include "frames/pendingframes.h"
#include "frames/sendthread.h"
#include "testfolder.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QtTest>

#include <algorithm>
#include <memory>

namespace
{

constexpr uint kHour = 3600000;

struct Template {
    uint id = 0x100;
    int idIncrement = 0;
    uint extended = 0;
    uint canFd = 0;
    quint8 bitRateSwitch = 0;
    QByteArray data = QByteArray(64, 0);
    uint length = 8;
    int dataIncrement = 0;
    qint64 count = 1;
    uint framesPerSend = 1;
    uint interval = 0;
    uint remote = 0;
    uint transmitType = 0;

    void configure(sendThread &thread) const
    {
        thread.setSend(id, idIncrement, extended, canFd, bitRateSwitch,
                       reinterpret_cast<const quint8 *>(data.constData()), length, dataIncrement, count, framesPerSend,
                       interval, remote, transmitType);
    }
};

const QByteArray kHeader("index,system time,time stamp,channel,Rx/Tx,ID,Frame,type,DLC,CAN-FD,data\n");

QByteArray csvRow(const QByteArray &time, const QByteArray &id, const QByteArray &channel = "1",
                  const QByteArray &protocol = "CAN")
{
    return "1,=\"" + time + "\",0x0," + channel + ",Tx," + id + ",标准帧,数据帧,2," + protocol + ",x| 01 FF \n";
}

} // namespace

class TestSendThread : public QObject
{
    Q_OBJECT

private:
    FakeDriver *fake_ = nullptr;
    std::unique_ptr<TestFolder> folder_;

    // Runs a configured thread to its end; the log lines and "end N" in the order of their emission.
    static QStringList finish(
        sendThread &thread, const std::function<void()> &meanwhile = [] {})
    {
        QStringList events;
        QMutex lock;
        const auto note = [&](const QString &text) {
            const QMutexLocker guard(&lock);
            events << text;
        };
        const auto log = QObject::connect(&thread, &sendThread::log, &thread, note, Qt::DirectConnection);
        const auto end = QObject::connect(
            &thread, &sendThread::endSend, &thread, [&](uint channel) { note(QString("end %1").arg(channel)); },
            Qt::DirectConnection);
        thread.start();
        meanwhile();
        if (!thread.wait(20000))
            note("still running");
        QObject::disconnect(log);
        QObject::disconnect(end);
        return events;
    }
    QStringList batches() const { return fake_->calls().filter("Transmit"); }

private slots:
    void init()
    {
        fake_ = FakeDriver::install();
        takePendingFrames();
        folder_ = std::make_unique<TestFolder>();
        setLanguageCode(English);
        QVERIFY(openDevice(kDeviceType, 0, 0) && initChannel(0, 0) && initChannel(1, 0));
        fake_->takeCalls();
        // The adapter's library answers 1 for a batch that it took.
        fake_->onTransmitCan = [](unsigned, const CanTransmitRecord *, std::uint32_t) { return 1u; };
        fake_->onTransmitCanFd = [](unsigned, const CanFdTransmitRecord *, std::uint32_t) { return 1u; };
    }
    void cleanup()
    {
        closeDevice();
        setLanguageCode(SimplifiedChinese);
    }

    void countInBatches()
    {
        sendThread thread(1);
        Template t;
        t.count = 5;
        t.framesPerSend = 2;
        t.configure(thread);
        QCOMPARE(finish(thread),
                 QStringList({"Channel:2 Start sending data: Total frames of data:5, sending interval:0ms...",
                              "channel2Data transmission completed!", "end 1"}));
        QCOMPARE(batches(), QStringList({"TransmitCan(1,2)", "TransmitCan(1,2)", "TransmitCan(1,1)"}));
        QCOMPARE(thread.framesPerSend(), 1u);
        const QList<ModelItem> shown = takePendingFrames();
        QCOMPARE(shown.size(), 5);
        QVERIFY(std::all_of(shown.begin(), shown.end(), [](const ModelItem &item) {
            return item.channel == 1 && item.direction == Transmitted && item.idText == "0x100";
        }));
    }

    void sizesThatCannotBe()
    {
        sendThread thread(0);
        Template t;
        t.count = 2500;
        t.framesPerSend = 5000;
        t.canFd = 1;
        t.length = 200;
        t.dataIncrement = 1;
        t.configure(thread);
        finish(thread);
        QCOMPARE(batches(), QStringList({"TransmitCanFd(0,1000)", "TransmitCanFd(0,1000)", "TransmitCanFd(0,500)"}));
        QCOMPARE(int(fake_->sentFd(0).front().length), 64);
        fake_->takeCalls();
        t.framesPerSend = 0;
        t.count = 2;
        t.canFd = 0;
        t.configure(thread);
        finish(thread);
        QCOMPARE(batches(), QStringList({"TransmitCan(0,1)", "TransmitCan(0,1)"}));
        QCOMPARE(int(fake_->sentCan(0).front().length), 8);
        for (const qint64 count : {0, -5}) {
            t.count = count;
            t.configure(thread);
            QCOMPARE(finish(thread).contains("channel1Data transmission completed!"), count == 0);
        }
    }

    void increments_data()
    {
        QTest::addColumn<uint>("id");
        QTest::addColumn<uint>("extended");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<uint>("length");
        QTest::addColumn<quint32>("nextId"); // identifier word of the second frame
        QTest::addColumn<QByteArray>("nextData");
        const auto hex = [](const char *text) { return QByteArray::fromHex(text); };
        QTest::newRow("standard wrap") << 0x7FFu << 0u << hex("0000") << 2u << 0u << hex("0100");
        QTest::newRow("extended") << 0x7FFu << 1u << hex("ff00") << 2u << 0x80000800u << hex("0001");
        QTest::newRow("extended wrap") << 0x1FFFFFFFu << 1u << hex("ffff") << 2u << 0x80000000u << hex("0000");
        QTest::newRow("carry stops at the length") << 1u << 0u << hex("ffff07") << 2u << 2u << hex("000007");
        QTest::newRow("long carry") << 1u << 0u << hex("ffffffffffffff01") << 8u << 2u << hex("0000000000000002");
        QTest::newRow("no length") << 1u << 0u << hex("ff") << 0u << 2u << hex("ff");
    }
    void increments()
    {
        QFETCH(uint, id);
        QFETCH(uint, extended);
        QFETCH(QByteArray, data);
        QFETCH(uint, length);
        QFETCH(quint32, nextId);
        QFETCH(QByteArray, nextData);
        Template t;
        t.id = id;
        t.extended = extended;
        t.idIncrement = t.dataIncrement = 1;
        t.data.replace(0, data.size(), data);
        t.length = length;
        t.count = 2;
        t.transmitType = 3;
        t.bitRateSwitch = 1;
        const auto check = [&](const auto &sent) {
            QCOMPARE(sent.size(), std::size_t(2));
            QCOMPARE(sent[0].id & kIdMask, id);
            QCOMPARE(QByteArray(reinterpret_cast<const char *>(sent[0].data), data.size()), data);
            QCOMPARE(sent[1].id, nextId);
            QCOMPARE(QByteArray(reinterpret_cast<const char *>(sent[1].data), data.size()), nextData);
            QCOMPARE(sent[1].transmitType, 3u);
            QCOMPARE(unsigned(sent[1].length), length);
        };
        sendThread thread(0);
        t.framesPerSend = 2;
        t.configure(thread);
        finish(thread);
        check(fake_->sentCan(0));
        t.canFd = 1;
        t.framesPerSend = 1;
        t.configure(thread);
        finish(thread);
        check(fake_->sentFd(0));
        QCOMPARE(int(fake_->sentFd(0)[0].flags), 1);
    }

    void failures_data()
    {
        QTest::addColumn<uint>("canFd");
        QTest::addColumn<qint64>("count");
        QTest::addColumn<quint32>("answer");
        QTest::addColumn<QStringList>("lines"); // after the start line
        const QString done("channel1Data transmission completed!");
        QTest::newRow("one frame") << 0u << qint64(1) << 0u
                                   << QStringList{"channel1CAN Data sending failed！", done, "end 0"};
        QTest::newRow("frames left") << 1u << qint64(3) << 0u
                                     << QStringList{"channel1CANFD Data sending failed！", "end 0"};
        QTest::newRow("endless") << 0u << qint64(-1) << 0u << QStringList{"channel1CAN Data sending failed！", "end 0"};
        QTest::newRow("success is 1 only")
            << 0u << qint64(4) << 2u << QStringList{"channel1CAN Data sending failed！", "end 0"};
    }
    void failures()
    {
        QFETCH(uint, canFd);
        QFETCH(qint64, count);
        QFETCH(quint32, answer);
        QFETCH(QStringList, lines);
        fake_->onTransmitCan = [answer](unsigned, const CanTransmitRecord *, std::uint32_t) { return answer; };
        fake_->onTransmitCanFd = [answer](unsigned, const CanFdTransmitRecord *, std::uint32_t) { return answer; };
        sendThread thread(0);
        Template t;
        t.canFd = canFd;
        t.count = count;
        t.framesPerSend = answer == 2 ? 2 : 1;
        t.interval = kHour;
        t.configure(thread);
        QCOMPARE(finish(thread).mid(1), lines);
        QCOMPARE(batches().size(), 1);
        QVERIFY(takePendingFrames().isEmpty()); // what failed is not shown
    }

    void languages_data()
    {
        QTest::addColumn<unsigned>("code");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("CN") << 0u
                            << QStringList{"通道: 1开始发送数据：一直发送，发送间隔:0ms...", "通道1CAN数据发送失败！",
                                           "开始发送文件: /no/%1...", "文件发送错误！"};
        QTest::newRow("TW") << 1u
                            << QStringList{"通道: 1開始發送數據：一直發送，發送間隔:0ms...", "通道1CAN數據發送失敗！",
                                           "開始發送文件: /no/%1...", "文件發送錯誤！"};
        QTest::newRow("EN") << 2u
                            << QStringList{"Channel:1 Start sending data: Keep sending, sending interval:0ms...",
                                           "channel1CAN Data sending failed！", "send file: /no/%1...",
                                           "File transmission Error!"};
        QTest::newRow("none") << 3u << QStringList{};
    }
    void languages()
    {
        QFETCH(unsigned, code);
        QFETCH(QStringList, lines);
        setLanguageCode(code);
        fake_->onTransmitCan = [](unsigned, const CanTransmitRecord *, std::uint32_t) { return 0u; };
        sendThread thread(0);
        Template t;
        t.count = -1;
        t.configure(thread);
        QStringList events = finish(thread);
        thread.setFileSend("/no/%1", 1, 0, 0);
        events += finish(thread);
        QCOMPARE(events.filter(QRegularExpression("^end ")), QStringList({"end 0", "end 0", "end 1"}));
        for (const char *end : {"end 0", "end 1"})
            events.removeAll(end);
        QCOMPARE(events, lines);
    }

    void sleepsEndAtOnce_data()
    {
        QTest::addColumn<bool>("file");
        QTest::addColumn<uint>("interval");
        QTest::addColumn<bool>("close");
        QTest::newRow("count, stop") << false << kHour << false;
        QTest::newRow("count, device closed") << false << kHour << true;
        QTest::newRow("file, stop") << true << kHour << false;
        QTest::newRow("recorded gap, stop") << true << kRecordedTiming << false;
        QTest::newRow("recorded gap, device closed") << true << kRecordedTiming << true;
    }
    void sleepsEndAtOnce()
    {
        QFETCH(bool, file);
        QFETCH(uint, interval);
        QFETCH(bool, close);
        folder_->write("rows.csv", kHeader + csvRow("01:00:00.000", "0x100") + csvRow("03:00:00.000", "0x101"));
        sendThread thread(0);
        Template t;
        t.count = -1;
        t.interval = interval;
        t.configure(thread);
        if (file)
            thread.setFileSend(folder_->path("rows.csv"), -1, interval, 0);
        thread.stop(); // a stop from before the run
        file ? thread.setFileSend(folder_->path("rows.csv"), -1, interval, 0) : t.configure(thread);
        const int sent = file && interval != kRecordedTiming ? 0 : 1;
        const QStringList events = finish(thread, [&] {
            QTRY_COMPARE(fake_->sentCan(0).size(), std::size_t(sent));
            QTest::qWait(20);
            QVERIFY(thread.isRunning());
            close ? closeDevice() : thread.stop();
        });
        QCOMPARE(events.last(), QString(file ? "end 1" : "end 0"));
        QCOMPARE(events.filter("Aborted").size(), close ? 0 : 1);
        QCOMPARE(fake_->sentCan(0).size(), std::size_t(sent));
        QCOMPARE(takePendingFrames().size(), sent);
    }

    void endlessUntilStoppedAndDestroyed()
    {
        Template t;
        t.count = -1;
        t.interval = 1;
        sendThread thread(0);
        t.configure(thread);
        const QStringList events = finish(thread, [&] {
            QTRY_VERIFY(fake_->sentCan(0).size() > 5);
            thread.stop();
        });
        QCOMPARE(events.mid(1), QStringList({"channel1Data Aborted Sending!", "end 0"}));
        t.configure(thread);
        thread.stop(); // before the run: nothing is sent
        fake_->takeCalls();
        QCOMPARE(finish(thread).mid(1), QStringList({"channel1Data Aborted Sending!", "end 0"}));
        QVERIFY(batches().isEmpty());
        t.interval = kHour;
        t.configure(thread);
        thread.start();
        QTRY_COMPARE(batches().size(), 1);
    }

    void aNewRunStartsFromInsideEndSend()
    {
        sendThread thread(0);
        Template t;
        int ends = 0;
        QObject::connect(&thread, &sendThread::endSend, this, [&] {
            if (++ends > 20)
                return;
            t.configure(thread);
            thread.wait();
            thread.start();
        });
        t.configure(thread);
        thread.start();
        QTRY_COMPARE(ends, 21);
        QCOMPARE(fake_->sentCan(0).size(), std::size_t(21));
    }

    void fileRows()
    {
        folder_->write("rows.csv", kHeader + csvRow("10:00:00.000", "0x100") + csvRow("", "0x101", "2", "CANFD-加速") +
                                       "\n" + csvRow("", "0x102", "3") + csvRow("", "0x900", "1") + "short\n" +
                                       kHeader + csvRow("", "0x103", "2", "CANFD"));
        sendThread thread(0);
        thread.setFileSend(folder_->path("rows.csv"), 2, 0, kChannelOfRow);
        const QStringList lines{"send file: " + folder_->path("rows.csv") + "...",
                                "4 invalid rows of the file skipped!", "File transmission completed!", "end 0",
                                "end 1"};
        QCOMPARE(finish(thread), lines);
        QCOMPARE(batches(), QStringList({"TransmitCan(0,1)", "TransmitCanFd(1,1)", "TransmitCanFd(1,1)",
                                         "TransmitCan(0,1)", "TransmitCanFd(1,1)", "TransmitCanFd(1,1)"}));
        const auto fd = fake_->sentFd(1);
        QCOMPARE(fd[0].flags * 10 + fd[1].flags, 10);
        QCOMPARE(fd[0].id * 0x1000 + fd[1].id, 0x101103u);
        QCOMPARE(fd[0].data[0] * 256 + fd[0].data[1], 0x01FF);
        QCOMPARE(fake_->sentCan(0)[0].transmitType, 0u);
        const QList<ModelItem> shown = takePendingFrames();
        QCOMPARE(shown.size(), 6);
        QCOMPARE(shown[1].channelText + shown[1].dirText + shown[1].protocolText, QString("2TxCANFD-acceleration"));

        // On a fixed channel the channel column does not count, and failing rows end nothing.
        fake_->onTransmitCan = [](unsigned, const CanTransmitRecord *, std::uint32_t) { return 0u; };
        thread.setFileSend(folder_->path("rows.csv"), 1, 0, 1);
        QCOMPARE(finish(thread).at(1), QString("3 invalid rows of the file skipped!"));
        QCOMPARE(fake_->sentCan(1).size() * 10 + fake_->sentFd(1).size(), std::size_t(26));
        QCOMPARE(takePendingFrames().size(), 4);
    }

    void passesThatSendNothingEnd_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("repeat");
        QTest::addColumn<int>("open"); // number of open channels
        QTest::newRow("endless, empty") << QByteArray() << -1 << 2;
        QTest::newRow("endless, no frame") << QByteArray("x\n\n") << -1 << 2;
        QTest::newRow("endless, closed") << csvRow("10:00:00.000", "0x100") << -1 << 0;
        QTest::newRow("many times, closed") << csvRow("10:00:00.000", "0x100") << 0x7FFFFFFF << 0;
        QTest::newRow("no time at all") << csvRow("10:00:00.000", "0x100") << 0 << 2;
        QTest::newRow("below endless") << csvRow("10:00:00.000", "0x100") << -2 << 2;
        QTest::newRow("many times, no frame") << QByteArray("x\n\n") << 0x7FFFFFFF << 2;
        QTest::newRow("endless, its channel closed") << csvRow("10:00:00.000", "0x100") << -1 << 1;
    }
    void passesThatSendNothingEnd()
    {
        QFETCH(QByteArray, rows);
        QFETCH(int, repeat);
        QFETCH(int, open);
        if (open < 2)
            QVERIFY(resetChannel(0));
        if (open < 1)
            QVERIFY(resetChannel(1));
        folder_->write("rows.csv", kHeader + rows);
        sendThread thread(0);
        thread.setFileSend(folder_->path("rows.csv"), repeat, 0, 0);
        const QStringList events = finish(thread);
        QCOMPARE(events.mid(events.size() - 3), QStringList({"File transmission completed!", "end 0", "end 1"}));
        QVERIFY(batches().isEmpty());
    }

    // Nobody takes a frame, as after the adapter has been pulled: an endless run ends, a counted one keeps its count.
    void passesThatNobodyTakes()
    {
        folder_->write("rows.csv", kHeader + csvRow("10:00:00.000", "0x100"));
        fake_->onTransmitCan = [](unsigned, const CanTransmitRecord *, std::uint32_t) { return 0u; };
        sendThread thread(0);
        for (const auto &[repeat, tries] : {std::pair<int, std::size_t>(-1, 1), {3, 4}}) {
            thread.setFileSend(folder_->path("rows.csv"), repeat, 0, 0);
            QCOMPARE(finish(thread).constLast(), QString("end 1"));
            QCOMPARE(fake_->sentCan(0).size(), tries);
        }
    }

    // Every row is due by its distance from the first one; delays of sending do not add up.
    void recordedTiming()
    {
        const QByteArray rows = csvRow("23:59:59.900", "0x100") + csvRow("00:00:00.100", "0x101") +
                                csvRow("00:00:00.200", "0x102") + csvRow("00:00:00.200", "0x103") +
                                csvRow("00:00:00.400", "0x104");
        folder_->write("rows.csv", kHeader + rows);
        QElapsedTimer clock;
        std::vector<qint64> moments;
        fake_->onTransmitCan = [&](unsigned, const CanTransmitRecord *, std::uint32_t) {
            moments.push_back(clock.elapsed());
            QThread::msleep(20);
            return 1u;
        };
        sendThread thread(0);
        thread.setFileSend(folder_->path("rows.csv"), 2, kRecordedTiming, 0);
        clock.start();
        finish(thread);
        const std::vector<qint64> due{0, 200, 300, 300, 500};
        QCOMPARE(moments.size(), 2 * due.size()); // the second pass begins at once
        for (const std::size_t pass : {0u, 5u})
            for (std::size_t i = 0; i < due.size(); ++i) {
                const qint64 moment = moments[pass + i] - moments[pass];
                QVERIFY2(moment >= due[i] - 1 && moment < due[i] + 150, qPrintable(QString::number(moment)));
            }
    }

    // An empty line makes the recording start anew; so does a row whose time cannot be read, when it is the first.
    void recordedTimingStartsAnew()
    {
        folder_->write("rows.csv", kHeader + csvRow("no time", "0x100") + csvRow("10:00:00.000", "0x101") + "\n" +
                                       csvRow("09:00:00.000", "0x102") + csvRow("09:00:00.050", "0x103"));
        sendThread thread(0);
        thread.setFileSend(folder_->path("rows.csv"), 1, kRecordedTiming, 0);
        QElapsedTimer clock;
        clock.start();
        finish(thread);
        QCOMPARE(fake_->sentCan(0).size(), std::size_t(4));
        QVERIFY(clock.elapsed() >= 49 && clock.elapsed() < 10000);
    }
};

QTEST_GUILESS_MAIN(TestSendThread)
#include "test_sendthread.moc"
