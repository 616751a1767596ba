#include "device/devicelayer.h"
#include "device/settingsstore.h"
#include "fakedriver.h"
#include "frames/pendingframes.h"
#include "frames/recvthread.h"
#include "testfolder.h"

#include <QElapsedTimer>
#include <QtTest>

#include <algorithm>

class TestRecvThread : public QObject
{
    Q_OBJECT

private:
    FakeDriver *fake_ = nullptr;
    QList<ModelItem> taken_;

    template <typename Record> static std::vector<Record> records(const QVector<quint32> &ids)
    {
        std::vector<Record> made;
        for (const quint32 id : ids) {
            made.emplace_back();
            made.back().id = id;
        }
        return made;
    }
    void feed(unsigned channel, const QVector<quint32> &ids) { fake_->feed(channel, records<CanReceiveRecord>(ids)); }
    void feedFd(unsigned channel, const QVector<quint32> &ids)
    {
        fake_->feedFd(channel, records<CanFdReceiveRecord>(ids));
    }
    bool received(int count)
    {
        taken_.clear();
        return QTest::qWaitFor([&] {
            taken_ += takePendingFrames();
            return taken_.size() >= count;
        });
    }

private slots:
    void init()
    {
        fake_ = FakeDriver::install();
        takePendingFrames();
        QVERIFY(openDevice(kDeviceType, 0, 0));
        QVERIFY(initChannel(0, 0) && initChannel(1, 0));
    }
    void cleanup() { closeDevice(); }

    void bothChannelsAreDrainedInOrder()
    {
        constexpr quint32 kFrames = 2500;
        constexpr quint32 kLargestRead = 1000;
        QVector<quint32> ids;
        for (quint32 id = 0; id < kFrames; ++id)
            ids << id;
        QStringList expected; // a thousand of a queue at once, classic ones first
        for (quint32 begin = 0; begin < kFrames; begin += kLargestRead)
            for (const char *protocol : {"CAN", "CANFD"})
                for (quint32 id = begin; id < std::min(begin + kLargestRead, kFrames); ++id)
                    expected << QString::asprintf("%s 0x%03X", protocol, id);

        recvThread first(0), second(1);
        for (recvThread *thread : {&first, &second})
            thread->setRecvParams(7, 5); // neither is taken
        for (const unsigned channel : {0u, 1u}) {
            feed(channel, ids);
            feedFd(channel, ids);
        }
        first.start();
        second.start();
        QVERIFY(received(2 * expected.size()));
        QStringList got[2];
        for (const ModelItem &item : qAsConst(taken_))
            got[item.channel] << item.protocolText + ' ' + item.idText;
        QCOMPARE(got[0], expected);
        QCOMPARE(got[1], expected);
    }

    void startsAgainAfterEveryKindOfEnd()
    {
        recvThread thread(0);
        thread.stop();
        thread.start();
        QVERIFY(thread.wait(5000)); // stopped before it began
        QCOMPARE(fake_->receiveCalls.load(), 0);
        for (const bool close : {false, true}) {
            thread.start();
            QTest::qWait(20); // more than ten idle passes
            feed(0, {1});
            QVERIFY(received(1));
            close ? closeDevice() : thread.stopAndWait();
            QVERIFY(thread.wait(5000));
        }
        thread.stopAndWait(); // too late, but harmless
        QVERIFY(openDevice(kDeviceType, 0, 0) && initChannel(0, 0));
        thread.start();
        feed(0, {1});
        QVERIFY(received(1));
    } // destroyed while it runs

    // A pass asks both queues without waiting and then sleeps for a millisecond, so that idling costs nothing.
    void polls()
    {
        recvThread thread(0);
        QElapsedTimer clock;
        clock.start();
        thread.start();
        QTest::qWait(50);
        thread.stopAndWait();
        QVERIFY(fake_->receiveCalls > 2);
        QVERIFY(fake_->receiveCalls <= 2 * (clock.elapsed() + 1));
        QCOMPARE(fake_->longestWaitMs.load(), 0u);
    }

    void continuity()
    {
        struct Case {
            QVector<quint32> ids;
            QVariantList error; // last and current identifier
        };
        const Case cases[] = {
            {{0x100, 0x101}, {}},
            {{0x100, 0x102}, {0x100, 0x102}},
            {{0x100, 0x101, 0x105, 0x100}, {}}, // one shot
            {{0x7FF, 0x000}, {}},
            {{0x9FFFFFFF, 0x80000000}, {0x1FFFFFFF, 0}}, // only standard ones wrap
            {{0x80000100, 0x40000101}, {}},
            {{0, 5, 6}, {}}, // standard 0 is none yet, extended 0 is one
            {{0x80000000, 5}, {0, 5}},
        };
        for (const Case &c : cases)
            for (const bool isFd : {false, true}) {
                const TestFolder folder;
                settings::setValue("recvIDAdd", "1", false);
                recvThread thread(0);
                QSignalSpy errors(&thread, &recvThread::errorID);
                connect(
                    &thread, &recvThread::errorID, this,
                    [] { QCOMPARE(settings::value("recvIDAdd", ""), QString("0")); },
                    Qt::DirectConnection); // disarmed before it is told
                isFd ? feedFd(0, c.ids) : feed(0, c.ids);
                thread.start();
                QVERIFY(received(c.ids.size()));
                thread.stopAndWait();
                QCOMPARE(errors.count(), c.error.isEmpty() ? 0 : 1);
                QCOMPARE(errors.value(0), c.error);
                QVERIFY(folder.read("config/setdb.txt").contains("recvIDAdd,0"));
            }
    }

    void continuityRemembersUntilItIsCleared()
    {
        const TestFolder folder;
        recvThread thread(0);
        QSignalSpy errors(&thread, &recvThread::errorID);
        const auto passes = [&](const char *setting, quint32 id) {
            settings::setValue("recvIDAdd", setting, false);
            feed(0, {id});
            return received(1);
        };
        thread.start();
        QVERIFY(passes("1", 0x100));
        feedFd(0, {0x400}); // FD frames have a memory of their own
        QVERIFY(received(1));
        QCOMPARE(settings::value("recvIDAdd", ""), QString("1"));
        QVERIFY(passes("2", 0x200)); // exactly 1 arms
        QVERIFY(passes("0", 0x300));
        QVERIFY(passes("1", 0x101));
        QCOMPARE(errors.count(), 0);
        QVERIFY(passes("1", 0x500)); // compared with what was seen when the check last ran
        QTRY_COMPARE(errors.count(), 1);
        QCOMPARE(errors.last(), QVariantList({0x101u, 0x500u}));
        thread.clearLastIds();
        QVERIFY(passes("1", 0x600));
        QCOMPARE(settings::value("recvIDAdd", ""), QString("1"));
        thread.stopAndWait();
        QCOMPARE(errors.count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestRecvThread)
#include "test_recvthread.moc"
