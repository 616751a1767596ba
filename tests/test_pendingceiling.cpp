#include "device/devicelayer.h"
#include "device/language.h"
#include "fakedriver.h"
#include "frames/pendingframes.h"
#include "frames/recvthread.h"
#include "frames/sendthread.h"
#include "testfolder.h"

#include <QtTest>

#include <array>
#include <atomic>

namespace
{
constexpr int kRows = 20;
constexpr int kOneBatch = 1000;

enum class Ending { WindowTakes, Stop, ChannelClosed };
enum class Worker { Receiver, CountSender, FileSender };
} // namespace
Q_DECLARE_METATYPE(Ending)
Q_DECLARE_METATYPE(Worker)

class TestPendingCeiling : public QObject
{
    Q_OBJECT

private:
    FakeDriver *fake_ = nullptr;
    std::atomic<int> sent_{0};

    static void fill()
    {
        QList<ModelItem> batch;
        batch.reserve(kPendingCeiling);
        for (int i = 0; i < kPendingCeiling; ++i)
            batch.append(ModelItem());
        appendPendingFrames(std::move(batch));
    }

private slots:
    void init()
    {
        fake_ = FakeDriver::install();
        takePendingFrames();
        setLanguageCode(English);
        QVERIFY(openDevice(kDeviceType, 0, 0) && initChannel(0, 0) && initChannel(1, 0));
        sent_ = 0;
        fake_->onTransmitCan = [this](unsigned, const CanTransmitRecord *, std::uint32_t) { return ++sent_, 1u; };
    }
    void cleanup()
    {
        closeDevice();
        takePendingFrames();
        setLanguageCode(SimplifiedChinese);
    }

    void pausesAtTheCeiling_data()
    {
        QTest::addColumn<Worker>("worker");
        QTest::addColumn<Ending>("ending");
        const std::pair<const char *, Worker> workers[] = {
            {"receiver", Worker::Receiver}, {"count", Worker::CountSender}, {"file", Worker::FileSender}};
        const std::pair<const char *, Ending> endings[] = {
            {"the window takes", Ending::WindowTakes}, {"stop", Ending::Stop}, {"close", Ending::ChannelClosed}};
        for (const auto &worker : workers)
            for (const auto &ending : endings)
                QTest::addRow("%s, %s", worker.first, ending.first) << worker.second << ending.second;
    }
    // No frame leaves or enters the driver while the list is full; every way out of the wait works.
    void pausesAtTheCeiling()
    {
        QFETCH(Worker, worker);
        QFETCH(Ending, ending);
        TestFolder folder;
        setLanguageCode(English);
        fill();
        QVERIFY(!pendingFramesHaveRoom());
        recvThread receiver(0);
        QStringList log;
        connect(&receiver, &recvThread::log, this, [&log](const QString &line) { log += line; });
        sendThread sender(0);
        QThread *thread = &sender;
        if (worker == Worker::Receiver) {
            fake_->feed(0, std::vector<CanReceiveRecord>(kRows));
            thread = &receiver;
        } else if (worker == Worker::CountSender) {
            const std::array<quint8, kFdDataBytes> data{};
            sender.setSend(1, 0, 0, 0, 0, data.data(), 8, 0, kRows, 1, 0, 0, 0);
        } else {
            QByteArray rows = "header\n";
            for (int i = 0; i < kRows; ++i)
                rows += "1,=\"10:00:00.000\",0x0,1,Tx,0x001,f,t,1,CAN,x| 01 \n";
            folder.write("send.csv", rows);
            sender.setFileSend(folder.path("send.csv"), 1, 0, 0);
        }
        thread->start();
        if (worker == Worker::Receiver)
            QTRY_COMPARE(log.size(), 1);
        QTest::qWait(150); // long enough for a thread that does not wait
        QVERIFY(thread->isRunning());
        QCOMPARE(sent_.load(), 0);
        QList<ModelItem> held = takePendingFrames();
        QCOMPARE(held.size(), kPendingCeiling);
        if (ending == Ending::WindowTakes) {
            held.clear();
            QTRY_COMPARE((held += takePendingFrames()).size(), kRows);
            QCOMPARE(sent_.load(), worker == Worker::Receiver ? 0 : kRows);
        }
        if (worker == Worker::Receiver && ending == Ending::WindowTakes) {
            QCOMPARE(log.at(0),
                     QString("Channel 1 pauses receiving: 500000 frames wait for the window, frames may be lost!"));
            fill();
            QTest::qWait(50);
            QCOMPARE(log.size(), 1); // the same burst of pauses goes on
            takePendingFrames();
        }
        if (ending == Ending::ChannelClosed)
            closeDevice();
        else if (worker == Worker::Receiver)
            receiver.stop();
        else
            sender.stop();
        QVERIFY(thread->wait(5000));
    }

    // Both receivers and both senders at once, on a driver that never runs dry, with a window that takes nothing.
    void memoryHasACeiling()
    {
        fake_->feed(0, std::vector<CanReceiveRecord>(kPendingCeiling));
        fake_->feedFd(1, std::vector<CanFdReceiveRecord>(kPendingCeiling));
        recvThread first(0), second(1);
        sendThread sender(0);
        const std::array<quint8, kFdDataBytes> data{};
        sender.setSend(1, 0, 0, 0, 0, data.data(), 8, 0, -1, kMaxFramesPerSend, 0, 0, 0);
        for (QThread *thread : std::array<QThread *, 3>{&first, &second, &sender})
            thread->start();
        QTRY_VERIFY_WITH_TIMEOUT(!pendingFramesHaveRoom(), 60000);
        QTest::qWait(100);
        const int pending = takePendingFrames().size();
        QVERIFY2(pending <= kPendingCeiling + 5 * kOneBatch, qPrintable(QString::number(pending)));
        sender.stop();
        QVERIFY(sender.wait(5000));
        first.stopAndWait();
        second.stopAndWait();
    }
};

QTEST_GUILESS_MAIN(TestPendingCeiling)
#include "test_pendingceiling.moc"
