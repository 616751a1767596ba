#include "device/devicelayer.h"
#include "device/settingsstore.h"
#include "fakedriver.h"
#include "frames/pendingframes.h"
#include "frames/recvthread.h"
#include "testfolder.h"

#include <QSignalSpy>
#include <QtTest>

class TestRecvThread : public QObject
{
    Q_OBJECT

private:
    FakeDriver *fake_ = nullptr;
    QList<ModelItem> taken_;

    static std::vector<CanReceiveRecord> classic(const std::vector<quint32> &ids)
    {
        std::vector<CanReceiveRecord> records(ids.size());
        for (std::size_t i = 0; i < ids.size(); ++i)
            records[i].id = ids[i];
        return records;
    }
    static std::vector<CanFdReceiveRecord> fd(const std::vector<quint32> &ids)
    {
        std::vector<CanFdReceiveRecord> records(ids.size());
        for (std::size_t i = 0; i < ids.size(); ++i)
            records[i].id = ids[i];
        return records;
    }
    bool received(int count)
    {
        return QTest::qWaitFor([&] {
            taken_ += takePendingFrames();
            return taken_.size() >= count;
        });
    }

private slots:
    void init()
    {
        fake_ = FakeDriver::install();
        taken_.clear();
        takePendingFrames();
        QVERIFY(openDevice(kDeviceType, 0, 0));
        QVERIFY(initChannel(0, 0) && initChannel(1, 0));
    }
    void cleanup() { closeDevice(); }

    void drainsBothQueuesClassicFirst()
    {
        std::vector<quint32> many(2500);
        for (quint32 i = 0; i < many.size(); ++i)
            many[i] = i % 0x700;
        fake_->feed(1, classic(many));
        fake_->feedFd(1, fd({0x7F1, 0x7F2}));
        recvThread thread(1);
        thread.setRecvParams(7, 5); // neither is taken
        thread.start();
        QVERIFY(received(2502));
        thread.stop();
        QVERIFY(thread.wait(5000));
        QCOMPARE(taken_.size(), 2502);
        QCOMPARE(taken_.at(1000).idText, QString("0x7F1")); // one batch of a thousand, then the FD queue
        QCOMPARE(taken_.at(1001).idText, QString("0x7F2"));
        taken_.removeAt(1000);
        taken_.removeAt(1000);
        for (int i = 0; i < taken_.size(); ++i) {
            QCOMPARE(taken_.at(i).idText.mid(2).toUInt(nullptr, 16), many[static_cast<std::size_t>(i)]);
            QCOMPARE(taken_.at(i).channel, 1u);
        }
    }

    void startsAgainAfterEveryKindOfEnd()
    {
        recvThread thread(0);
        thread.stop();
        thread.start();
        QVERIFY(thread.wait(5000)); // stopped before it began
        thread.start();
        QTest::qWait(20); // more than ten idle passes
        QVERIFY(thread.isRunning());
        fake_->feed(0, classic({1}));
        QVERIFY(received(1));
        closeDevice();
        QVERIFY(thread.wait(5000)); // the channel was closed
        thread.stopAndWait();       // too late, but harmless

        QVERIFY(openDevice(kDeviceType, 0, 0) && initChannel(0, 0));
        fake_->feed(0, classic({2}));
        thread.start();
        QVERIFY(received(2));
        thread.stopAndWait();
        fake_->receiveAnswer = 0xFFFFFFFF; // more than was asked for
        thread.start();
        QTest::qWait(20);
        QVERIFY(takePendingFrames().isEmpty());
    } // destroyed while it runs

    void continuity_data()
    {
        QTest::addColumn<QVector<quint32>>("words");
        QTest::addColumn<QVector<quint32>>("error"); // last and current identifier, or empty
        using Ids = QVector<quint32>;
        QTest::newRow("in order") << Ids{0x100, 0x101} << Ids{};
        QTest::newRow("gap") << Ids{0x100, 0x102} << Ids{0x100, 0x102};
        QTest::newRow("one shot") << Ids{0x100, 0x101, 0x105, 0x100} << Ids{};
        QTest::newRow("standard wrap") << Ids{0x7FF, 0x000} << Ids{};
        QTest::newRow("extended wrap") << Ids{0x9FFFFFFF, 0x80000000} << Ids{0x1FFFFFFF, 0};
        QTest::newRow("flags do not count") << Ids{0x80000100, 0x40000101} << Ids{};
        QTest::newRow("identifier 0 alone is none yet") << Ids{0, 5, 6} << Ids{};
        QTest::newRow("extended 0 is one") << Ids{0x80000000, 5} << Ids{0, 5};
    }
    void continuity()
    {
        QFETCH(QVector<quint32>, words);
        QFETCH(QVector<quint32>, error);
        const std::vector<quint32> ids(words.begin(), words.end());
        for (const bool isFd : {false, true}) {
            const TestFolder folder;
            settings::setValue("recvIDAdd", "1", false);
            recvThread thread(0);
            QSignalSpy errors(&thread, &recvThread::errorID);
            isFd ? fake_->feedFd(0, fd(ids)) : fake_->feed(0, classic(ids));
            thread.start();
            taken_.clear();
            QVERIFY(received(words.size()));
            thread.stopAndWait();
            QCOMPARE(errors.count(), error.isEmpty() ? 0 : 1);
            if (!error.isEmpty())
                QCOMPARE(errors.first(), QVariantList({error[0], error[1]}));
            QCOMPARE(settings::value("recvIDAdd", "x"), QString("0"));
            QVERIFY(folder.read("config/setdb.txt").contains("recvIDAdd,0"));
        }
    }

    void continuityRemembersUntilItIsCleared()
    {
        const TestFolder folder;
        recvThread thread(0);
        QSignalSpy errors(&thread, &recvThread::errorID);
        const auto feed = [&](quint32 id, const char *setting) {
            settings::setValue("recvIDAdd", setting, false);
            fake_->feed(0, classic({id}));
            taken_.clear();
            return received(1);
        };
        thread.start();
        QVERIFY(feed(0x100, "1"));
        fake_->feedFd(0, fd({0x400})); // FD frames have a memory of their own
        taken_.clear();
        QVERIFY(received(1));
        QCOMPARE(settings::value("recvIDAdd", ""), QString("1"));
        QVERIFY(feed(0x200, "2")); // exactly 1 arms
        QVERIFY(feed(0x300, "0"));
        QVERIFY(feed(0x101, "1"));
        QCOMPARE(errors.count(), 0);
        QVERIFY(feed(0x500, "1")); // compared with what was seen when the check last ran
        QTRY_COMPARE(errors.count(), 1);
        QCOMPARE(errors.last(), QVariantList({0x101u, 0x500u}));
        thread.clearLastIds();
        QVERIFY(feed(0x600, "1"));
        QCOMPARE(settings::value("recvIDAdd", ""), QString("1"));
        thread.stopAndWait();
        QCOMPARE(errors.count(), 1);
    }

    void fourThreadsHandOverWholeBatches()
    {
        recvThread first(0);
        recvThread second(1);
        std::vector<quint32> ids(3000);
        for (quint32 i = 0; i < ids.size(); ++i)
            ids[i] = i % 0x800;
        for (const unsigned channel : {0u, 1u}) {
            fake_->feed(channel, classic(ids));
            fake_->feedFd(channel, fd(ids));
        }
        first.start();
        second.start();
        QVERIFY(received(12000));
        quint32 next[2][2] = {};
        for (const ModelItem &item : qAsConst(taken_)) {
            quint32 &expected = next[item.channel][item.protocolText == "CAN"];
            QCOMPARE(item.idText.mid(2).toUInt(nullptr, 16), ids[expected++]);
        }
        QVERIFY(next[0][0] == 3000 && next[0][1] == 3000 && next[1][0] == 3000 && next[1][1] == 3000);
    }
};

QTEST_GUILESS_MAIN(TestRecvThread)
#include "test_recvthread.moc"
