// What the windows of signals show of frames, without the windows.
#include "analysis/signalhub.h"
#include "analysis/signalstore.h"
#include "analysis/signaltreemodel.h"
#include "device/driver/timeunits.h"
#include "testfolder.h"

#include <QBrush>
#include <QtTest>

#include <cmath>

class TestSignalStore : public QObject
{
    Q_OBJECT

    const TestFolder folder_;

private slots:
    // A cell that shows something else is told, for it is not painted again otherwise; without frames nothing is.
    void cellsThatChange()
    {
        folder_.write("cells.dbc", "BO_ 100 Known: 8 N\n SG_ A : 0|8@1+ (0.5,0) [0|0] \"\" N\n"
                                   " SG_ B : 32|8@1- (1,0) [0|0] \"V\" N\nVAL_ 100 A 1 \"one\" 2 \"two\" ;\n");
        SignalHub hub;
        hub.databases()->add(folder_.path("cells.dbc"), DatabaseChannels::First);
        SignalTreeModel model(&hub);
        const QModelIndex message = model.index(0, 0, model.index(0, 0)); // of channel 1
        const auto shown = [&] {
            QStringList cells;
            for (int row = 0; row <= model.rowCount(message); ++row)
                for (int column = 0; column < SignalTreeModel::ColumnCount; ++column) {
                    const QModelIndex first = row == 0 ? message : model.index(row - 1, 0, message);
                    const QModelIndex cell = first.sibling(first.row(), column);
                    cells += cell.data().toString() + cell.data(Qt::ForegroundRole).value<QBrush>().color().name();
                }
            return cells;
        };
        std::uint32_t random = 5;
        for (int round = 0; round < 500; ++round) {
            const QStringList before = shown();
            random = random * 1664525 + 1013904223;
            RawFrame frame;
            frame.time = round * 1'000'000;
            frame.id = 100;
            frame.channel = 1;
            frame.length = random >> 30 ? 8 : 2;
            frame.data[0] = random >> 16 & 3;
            frame.data[4] = std::uint8_t(random >> 20);
            if (round % 3 > 0)
                hub.store().consume(&frame, 1);
            if (round % 50 == 49)
                hub.store().resetRanges();
            const std::vector<unsigned> changed = model.refresh(message);
            const QStringList after = shown();
            for (int i = 0; i < after.size(); ++i)
                QVERIFY2(before[i] == after[i] ||
                             changed[i / SignalTreeModel::ColumnCount] >> i % SignalTreeModel::ColumnCount & 1,
                         qPrintable(QString("%1: %2 %3").arg(i).arg(before[i], after[i])));
            for (const unsigned columns : model.refresh(message))
                QCOMPARE(columns, 0U);
        }
    }

    // What cannot be in a live bus' good frames.
    void storeKnowsShortFramesAndRestartedClocks()
    {
        folder_.write("short.dbc", "BO_ 100 Known: 8 N\n SG_ A : 0|8@1+ (0.5,0) [0|0] \"\" N\n"
                                   " SG_ B : 32|8@1+ (1,0) [0|0] \"\" N\n");
        DatabaseSet set;
        set.add(folder_.path("short.dbc"), DatabaseChannels::First);
        SignalStore store;
        const auto feed = store.feed({1, 100, false, "A"}); // before anything knows it
        store.setLookup(set.lookup());
        const KnownMessage *message = set.lookup()->find(1, 100, false);
        const auto send = [&](std::int64_t time, std::uint8_t value, std::uint8_t length, std::uint16_t channel) {
            RawFrame frame;
            frame.time = time;
            frame.id = 100;
            frame.channel = channel;
            frame.length = length;
            frame.data[0] = value;
            store.consume(&frame, 1);
        };
        MessageRecord record;
        QVERIFY(!store.read(1, message, &record));
        send(10 * kNanosecondsPerSecond, 8, 8, 1);
        send(11 * kNanosecondsPerSecond, 6, 2, 1);
        send(20 * kNanosecondsPerSecond, 99, 8, 2); // no database there; a thread that is ahead of the other channel's
        send(12 * kNanosecondsPerSecond, 6, 2, 1);
        QVERIFY(store.read(1, message, &record));
        QCOMPARE(int(record.count), 3);
        QCOMPARE(record.values[0].value.physical, 3.0);
        QCOMPARE(record.values[0].range.maximum, 4.0);
        QVERIFY(record.values[1].state == SignalState::BeyondFrame && record.values[1].seen);
        send(kNanosecondsPerSecond, 2, 8, 1); // opened again
        std::vector<CurvePoint> points;
        store.take(*feed, &points);
        QCOMPARE(int(points.size()), 5);
        QVERIFY(std::isnan(points[3].value) && points[4].time > points[2].time);
        QCOMPARE(points[4].value, 1.0);
        store.resetRanges();
        QVERIFY(store.read(1, message, &record));
        QCOMPARE(record.values[0].range.maximum, 1.0);
        store.endFeed(feed);
        send(2 * kNanosecondsPerSecond, 2, 8, 1);
        store.take(*feed, &points);
        QVERIFY(points.empty());
    }
};

QTEST_MAIN(TestSignalStore)
#include "test_signalstore.moc"
