#include "device/devicelayer.h"
#include "device/language.h"
#include "fakedriver.h"
#include "frames/pendingframes.h"
#include "frames/rowclock.h"
#include "frames/sendthread.h"
#include "testfolder.h"

#include <QRegularExpression>
#include <QtTest>

#include <memory>

namespace
{

constexpr uint kHour = 3600000;
const QString kDone("channel1Data transmission completed!");

struct Template {
    uint id = 0x100;
    uint extended = 0;
    uint canFd = 0;
    QByteArray data = QByteArray(64, 0);
    uint length = 8;
    int increment = 0; // of identifier and data
    qint64 count = 1;
    uint framesPerSend = 1;
    uint interval = 0;
};

QByteArray csvRow(const QByteArray &time, const QByteArray &id, const QByteArray &channel = "1",
                  const QByteArray &protocol = "CAN")
{
    return "1,=\"" + time + "\",0x0," + channel + ",Tx," + id + ",标准帧,数据帧,2," + protocol + ",x| 01 FF \n";
}

// "identifier word, length, the first eight bytes", in hexadecimal.
template <typename Record> QString text(const Record &record)
{
    const QByteArray data(reinterpret_cast<const char *>(record.data), 8);
    return QString("%1 %2 ").arg(record.id, 0, 16).arg(record.length, 0, 16) + data.toHex();
}

} // namespace

class TestSendThread : public QObject
{
    Q_OBJECT

private:
    FakeDriver *fake_ = nullptr;
    std::unique_ptr<TestFolder> folder_;
    std::unique_ptr<sendThread> thread_;
    QStringList events_; // log lines and "end N" in the order of their emission, by the worker

    // Opens the device and its channels but for the first ones.
    static void openFrom(unsigned firstChannel)
    {
        closeDevice();
        QVERIFY(openDevice(kDeviceType, 0, 0));
        for (unsigned channel = firstChannel; channel < kChannelCount; ++channel)
            QVERIFY(initChannel(channel, 0));
    }
    void configure(const Template &t)
    {
        thread_->setSend(t.id, t.increment, t.extended, t.canFd, 1, reinterpret_cast<const quint8 *>(t.data.data()),
                         t.length, t.increment, t.count, t.framesPerSend, t.interval, 0, 3);
    }
    QString write(const QByteArray &rows)
    {
        folder_->write("rows.csv", "titles\n" + rows);
        return folder_->path("rows.csv");
    }
    // Runs the configured thread to its end.
    QStringList finish(const std::function<void()> &meanwhile = [] {})
    {
        fake_->takeCalls();
        events_.clear();
        thread_->start();
        meanwhile();
        if (!thread_->wait(20000))
            qFatal("still running");
        return events_;
    }
    QStringList send(const Template &t)
    {
        configure(t);
        return finish();
    }
    QStringList sendFile(const QByteArray &rows, int repeat, uint interval, uint channel = 0)
    {
        thread_->setFileSend(write(rows), repeat, interval, channel);
        return finish();
    }
    // What the adapter's library answers to a batch.
    void answer(quint32 value)
    {
        fake_->onTransmitCan = [value](unsigned, const CanTransmitRecord *, std::uint32_t) { return value; };
        fake_->onTransmitCanFd = [value](unsigned, const CanFdTransmitRecord *, std::uint32_t) { return value; };
    }
    QStringList batches() const { return fake_->calls().filter("Transmit"); }

private slots:
    void init()
    {
        fake_ = FakeDriver::install();
        takePendingFrames();
        folder_ = std::make_unique<TestFolder>();
        setLanguageCode(English);
        openFrom(0);
        answer(1); // it took the batch
        thread_ = std::make_unique<sendThread>(0);
        const auto note = [this](const QString &line) { events_ << line; };
        connect(thread_.get(), &sendThread::log, this, note, Qt::DirectConnection);
        connect(
            thread_.get(), &sendThread::endSend, this, [note](uint channel) { note(QString("end %1").arg(channel)); },
            Qt::DirectConnection);
    }
    void cleanup()
    {
        thread_.reset();
        closeDevice();
        setLanguageCode(SimplifiedChinese);
    }

    void countInBatches()
    {
        Template t;
        t.count = 5;
        t.framesPerSend = 2;
        t.interval = 1;
        QCOMPARE(send(t), QStringList({"Channel:1 Start sending data: Total frames of data:5, sending interval:1ms...",
                                       kDone, "end 0"}));
        QCOMPARE(batches(), QStringList({"TransmitCan(0,2)", "TransmitCan(0,2)", "TransmitCan(0,1)"}));
        QCOMPARE(thread_->framesPerSend(), 1u);
        const QList<ModelItem> shown = takePendingFrames();
        QCOMPARE(shown.size(), 5);
        QCOMPARE(shown[4].idText + shown[4].dirText, QString("0x100Tx"));

        // Sizes that cannot be.
        t.canFd = 1;
        t.length = ~0u; // no carry may run past the data
        t.data.fill('\xff');
        t.increment = 1;
        t.count = 2500;
        t.framesPerSend = 5000;
        send(t);
        QCOMPARE(batches(), QStringList({"TransmitCanFd(0,1000)", "TransmitCanFd(0,1000)", "TransmitCanFd(0,500)"}));
        QCOMPARE(int(fake_->sentFd(0).back().length), 64);
        t.canFd = 0;
        t.count = 2;
        t.framesPerSend = 0;
        send(t);
        QCOMPARE(batches(), QStringList({"TransmitCan(0,1)", "TransmitCan(0,1)"}));
        QCOMPARE(int(fake_->sentCan(0).back().length), 8);
        for (const qint64 count : {0, -5}) {
            t.count = count;
            QCOMPARE(send(t).contains(kDone), count == 0);
        }
    }

    void increments()
    {
        struct Case {
            uint id;
            uint extended;
            const char *data;
            uint length;
            const char *next; // the second frame
        };
        const Case cases[] = {
            {0x7FF, 0, "0000", 2, "0 2 0100000000000000"},
            {0x7FF, 1, "ff00", 2, "80000800 2 0001000000000000"},
            {0x1FFFFFFF, 1, "ffff07", 2, "80000000 2 0000070000000000"}, // the carry stops at the length
            {1, 0, "ffffffffffffff01", 8, "2 8 0000000000000002"},
            {1, 0, "ff", 0, "2 0 ff00000000000000"},
        };
        for (const Case &c : cases) {
            Template t;
            t.id = c.id;
            t.extended = c.extended;
            t.data = QByteArray::fromHex(c.data).leftJustified(64, '\0');
            t.length = c.length;
            t.increment = 1;
            t.count = 2;
            send(t);
            QCOMPARE(text(fake_->sentCan(0).back()), QString(c.next));
            t.canFd = 1;
            t.framesPerSend = 2;
            send(t);
            const CanFdTransmitRecord fd = fake_->sentFd(0).back();
            QCOMPARE(text(fd), QString(c.next));
            QVERIFY(fd.flags == 1 && fd.transmitType == 3);
        }
    }

    // What failed is not shown and ends the run; only 1 is success.
    void failures()
    {
        const auto linesOf = [this](uint canFd, qint64 count, uint framesPerSend) {
            Template t;
            t.canFd = canFd;
            t.count = count;
            t.framesPerSend = framesPerSend;
            t.interval = kHour;
            return send(t).mid(1);
        };
        const QString classic("channel1CAN Data sending failed！");
        answer(0);
        QCOMPARE(linesOf(0, 1, 1), QStringList({classic, kDone, "end 0"}));
        QCOMPARE(linesOf(1, 3, 1), QStringList({"channel1CANFD Data sending failed！", "end 0"}));
        QCOMPARE(batches(), QStringList("TransmitCanFd(0,1)"));
        answer(2);
        QCOMPARE(linesOf(0, 4, 2), QStringList({classic, "end 0"}));
        QCOMPARE(batches(), QStringList("TransmitCan(0,2)"));
        QVERIFY(takePendingFrames().isEmpty());
    }

    // Every line of the log, in every language; none for a number that is no language.
    void languages()
    {
        const QStringList languages[] = {
            {"通道: 1开始发送数据：一直发送，发送间隔:0ms...",
             "通道1CAN数据发送失败！",
             "通道: 1开始发送数据：一直发送，发送间隔:0ms...",
             "通道1CANFD数据发送失败！",
             "通道: 1开始发送数据：数据总帧数:1，发送间隔:0ms...",
             "通道1数据发送完成！",
             "通道: 1开始发送数据：数据总帧数:1，发送间隔:0ms...",
             "通道1数据中止发送！",
             "开始发送文件: /no/%1...",
             "文件发送错误！",
             "开始发送文件: ROWS...",
             "文件中止发送！",
             "开始发送文件: ROWS...",
             "文件中跳过了1行无效数据！",
             "文件中有1行的时间无法读取，已立即发送",
             "文件发送完成！",
             "未被接收的帧数：1（只听模式、无应答或通道未打开）",
             "开始发送文件: ROWS...",
             "文件发送完成！",
             "文件中没有可发送的帧！",
             "开始发送文件: ROWS...",
             "文件发送完成！",
             "没有打开的通道！"},
            {"通道: 1開始發送數據：一直發送，發送間隔:0ms...",
             "通道1CAN數據發送失敗！",
             "通道: 1開始發送數據：一直發送，發送間隔:0ms...",
             "通道1CANFD數據發送失敗！",
             "通道: 1開始發送數據：數據縂幀數:1，發送間隔:0ms...",
             "通道1數據發送完成！",
             "通道: 1開始發送數據：數據縂幀數:1，發送間隔:0ms...",
             "通道1數據中止發送！",
             "開始發送文件: /no/%1...",
             "文件發送錯誤！",
             "開始發送文件: ROWS...",
             "文件中止發送！",
             "開始發送文件: ROWS...",
             "檔案中跳過了1行無效數據！",
             "檔案中有1行的時間無法讀取，已立即發送",
             "文件發送完成！",
             "未被接收的幀數：1（只聽模式、無應答或通道未打開）",
             "開始發送文件: ROWS...",
             "文件發送完成！",
             "檔案中沒有可發送的幀！",
             "開始發送文件: ROWS...",
             "文件發送完成！",
             "沒有打開的通道！"},
            {"Channel:1 Start sending data: Keep sending, sending interval:0ms...",
             "channel1CAN Data sending failed！",
             "Channel:1 Start sending data: Keep sending, sending interval:0ms...",
             "channel1CANFD Data sending failed！",
             "Channel:1 Start sending data: Total frames of data:1, sending interval:0ms...",
             kDone,
             "Channel:1 Start sending data: Total frames of data:1, sending interval:0ms...",
             "channel1Data Aborted Sending!",
             "send file: /no/%1...",
             "File transmission Error!",
             "send file: ROWS...",
             "File Aborted Sending!",
             "send file: ROWS...",
             "Invalid rows of the file skipped: 1",
             "Rows sent at once because their time cannot be read: 1",
             "File transmission completed!",
             "Frames not taken: 1 (listen-only, no acknowledge or channel not open)",
             "send file: ROWS...",
             "File transmission completed!",
             "The file holds no frame to send!",
             "send file: ROWS...",
             "File transmission completed!",
             "No channel is open!"},
            {},
        };
        for (unsigned code = 0; code <= LanguageCount; ++code) {
            setLanguageCode(code);
            openFrom(0);
            QStringList lines;
            Template t;
            answer(0);
            for (const uint fd : {0u, 1u}) {
                t.canFd = fd;
                t.count = -1;
                lines += send(t);
            }
            answer(1);
            t.count = 1;
            lines += send(t);
            configure(t);
            thread_->stop();
            lines += finish();
            thread_->setFileSend("/no/%1", 1, 0, 0);
            lines += finish();
            thread_->setFileSend(write(""), 1, 0, 0);
            thread_->stop();
            lines += finish();
            answer(0);
            lines += sendFile(csvRow("", "0x100") + "short\n", 1, kRecordedTiming);
            lines += sendFile("", 1, 0);
            closeDevice();
            lines += sendFile("", 1, 0);
            const QStringList said = lines.filter(QRegularExpression("^(?!end )"));
            QCOMPARE(said, QStringList(languages[code]).replaceInStrings("ROWS", folder_->path("rows.csv")));
        }
    }

    void sleepsEndAtOnce_data()
    {
        QTest::addColumn<bool>("file");
        QTest::addColumn<uint>("interval");
        QTest::addColumn<int>("sent");
        QTest::addColumn<int>("count");
        QTest::newRow("count") << false << kHour << 1 << -1;
        QTest::newRow("count, after the last") << false << kHour << 1 << 1;
        QTest::newRow("file") << true << kHour << 0 << -1;
        QTest::newRow("recorded gap") << true << kRecordedTiming << 2 << -1;
    }
    void sleepsEndAtOnce()
    {
        QFETCH(bool, file);
        QFETCH(uint, interval);
        QFETCH(int, sent);
        QFETCH(int, count);
        const QString path = write(csvRow("01:00:00.000", "0x100") + csvRow("no time: at once", "0x101") +
                                   csvRow("03:00:00.000", "0x102"));
        Template t;
        t.count = count;
        t.interval = interval;
        const auto configureRun = [&] { file ? thread_->setFileSend(path, -1, interval, 0) : configure(t); };
        configureRun();
        thread_->stop(); // before the run: nothing is sent
        QCOMPARE(finish().filter("Aborted").size(), 1);
        QVERIFY(batches().isEmpty());
        for (const bool close : {false, true}) {
            thread_->stop(); // from before the configuration: does not count
            configureRun();
            const std::size_t before = fake_->sentCan(0).size();
            const QStringList events = finish([&] {
                QTRY_COMPARE(fake_->sentCan(0).size(), before + std::size_t(sent));
                QTest::qWait(20);
                QVERIFY(thread_->isRunning());
                close ? closeDevice() : thread_->stop();
            });
            QCOMPARE(events.last(), QString(file ? "end 1" : "end 0"));
            QCOMPARE(events.filter("Aborted").size(), close ? 0 : 1);
            QCOMPARE(takePendingFrames().size(), sent);
            const QString announced("Next frame due at ");
            const QStringList due = events.filter(announced);
            QCOMPARE(due.size(), interval == kRecordedTiming ? 1 : 0);
            for (const QString &line : due) {
                const QTime moment = QTime::fromString(line.mid(announced.size()), "hh:mm:ss");
                QVERIFY(qAbs(QTime::currentTime().addSecs(2 * 3600).secsTo(moment)) % (24 * 3600 - 60) < 60);
            }
        }
        openFrom(0);
        configureRun();
        thread_->start();
    } // destroyed while it sleeps

    void fileRows()
    {
        const QByteArray rows = csvRow("10:00:00.000", "0x100") + csvRow("", "0x101", "2", "CANFD-加速") + "\n" +
                                csvRow("", "0x102", "3") + csvRow("", "0x900") + "short\n" + "index,a,b,c\n" +
                                csvRow("", "0x103", "2", "CANFD");
        QCOMPARE(sendFile(rows, 2, 0, kChannelOfRow),
                 QStringList({"send file: " + folder_->path("rows.csv") + "...", "Invalid rows of the file skipped: 4",
                              "File transmission completed!", "end 0", "end 1"}));
        const QStringList pass{"TransmitCan(0,1)", "TransmitCanFd(1,1)", "TransmitCanFd(1,1)"};
        QCOMPARE(batches(), pass + pass);
        const auto fd = fake_->sentFd(1);
        QCOMPARE(text(fd[0]) + ", " + text(fd[1]), QString("101 2 01ff000000000000, 103 2 01ff000000000000"));
        QVERIFY(fd[0].flags == 1 && fd[1].flags == 0);
        QCOMPARE(fake_->sentCan(0)[0].transmitType, 0u);
        const QList<ModelItem> shown = takePendingFrames();
        QCOMPARE(shown.size(), 6);
        QCOMPARE(shown[1].channelText + shown[1].dirText + shown[1].protocolText + shown[2].idText,
                 QString("2TxCANFD-acceleration0x103"));

        // On a fixed channel the channel column does not count, and failing rows end nothing.
        answer(0);
        QCOMPARE(sendFile(rows, 1, 0, 1).at(1), QString("Invalid rows of the file skipped: 3"));
        QCOMPARE(batches().filter("(1,1)").size(), 4);
        QCOMPARE(takePendingFrames().size(), 4);
    }

    // A file ends by itself after its passes, or when no channel is open, or when it holds no frame.
    void fileEnds()
    {
        constexpr int kMany = 0x7FFFFFFF;
        const QByteArray frame = csvRow("10:00:00.000", "0x100");
        const QString done("File transmission completed!");
        const QString noFrame("The file holds no frame to send!");
        const QString noChannel("No channel is open!");
        struct Case {
            QByteArray rows;
            int repeat;
            unsigned closedChannels;
            QString last;
            int shown;
        };
        const Case cases[] = {
            {"", -1, 0, noFrame, 0},      {"", kMany, 0, noFrame, 0},      {"x\n\n", -1, 0, noFrame, 0},
            {frame, -1, 2, noChannel, 0}, {frame, kMany, 2, noChannel, 0}, {frame, 0, 0, done, 0},
            {frame, -2, 0, done, 0},      {frame, 3, 0, done, 3},          {frame, 3, 1, "not taken: 3", 3}, // shown
        };
        for (const Case &c : cases) {
            openFrom(c.closedChannels);
            takePendingFrames();
            const QStringList events = sendFile(c.rows, c.repeat, 0);
            QVERIFY2(events.at(events.size() - 3).contains(c.last), qPrintable(events.join('\n')));
            QVERIFY(events.contains(done));
            QCOMPARE(takePendingFrames().size(), c.shown);
        }
    }

    // Whoever refuses its frames, listen-only or unacknowledged, a file goes on: endlessly or as often as asked for.
    void refusedFramesEndNoFile()
    {
        const QByteArray frame = csvRow("10:00:00.000", "0x100");
        openFrom(0);
        answer(0);
        QVERIFY(sendFile(frame + frame, 3, 0)
                    .contains("Frames not taken: 6 (listen-only, no acknowledge or channel not open)"));
        for (const unsigned closedChannels : {0u, 1u}) {
            openFrom(closedChannels);
            takePendingFrames();
            thread_->setFileSend(write(frame), -1, 0, 0);
            int shown = 0;
            const QStringList events = finish([&] {
                QTRY_VERIFY((shown += takePendingFrames().size()) >= 5);
                thread_->stop();
            });
            shown += takePendingFrames().size();
            QCOMPARE(events.mid(1, 1), QStringList("File Aborted Sending!"));
            QVERIFY(events.at(2).startsWith(QString("Frames not taken: %1 ").arg(shown)));
        }
    }

    // Every row is due by its distance from the first one, so that delays do not add up; times that go back are the
    // next day's.
    void recordedTiming()
    {
        RowClock clock;
        for (int pass = 0; pass < 2; ++pass) {
            clock.clear();
            const auto first = clock.nextDue(86399900);
            const std::pair<quint64, int> rows[] = {{100, 200}, {200, 300}, {200, 300}, {400, 500}, {300, 86400400}};
            for (const auto &[time, distance] : rows)
                QCOMPARE((clock.nextDue(time) - first) / std::chrono::milliseconds(1), distance);
        }
    }
};

QTEST_GUILESS_MAIN(TestSendThread)
#include "test_sendthread.moc"
