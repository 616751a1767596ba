#include "device/devicelayer.h"
#include "fakedriver.h"
#include "frames/csvrow.h"
#include "frames/framebuilder.h"
#include "frames/framesender.h"
#include "frames/pendingframes.h"
#include "frames/tap.h"
#include "testfolder.h"
#include "transmit/csventries.h"
#include "transmit/framechecks.h"
#include "transmit/signalfields.h"
#include "transmit/transmitengine.h"
#include "transmit/transmitfile.h"
#include "transmit/transmitmodel.h"

#include <QMutex>
#include <QtTest>

#include <optional>

using namespace std::chrono_literals;

namespace
{

std::shared_ptr<TransmitEntry> entry(std::uint32_t id, TransmitMode mode, unsigned interval, std::uint64_t count = 1)
{
    auto made = std::make_shared<TransmitEntry>();
    made->serial = newTransmitSerial();
    made->frame.id = id;
    made->frame.length = 8;
    made->mode = mode;
    made->interval = interval;
    made->count = count;
    return made;
}

// An engine on the scripted driver with both channels open.
struct Bench {
    TestFolder folder;
    FakeDriver *driver = FakeDriver::install();
    QMutex lock;
    QStringList lines;
    std::unique_ptr<TransmitEngine> engine = std::make_unique<TransmitEngine>([this](const QString &line) {
        const QMutexLocker guard(&lock);
        lines << line;
    });

    Bench()
    {
        setLanguageCode(English);
        openDevice(kDeviceType, 0, 0);
        for (const unsigned channel : {0U, 1U})
            initChannel(channel, 0);
    }
    ~Bench()
    {
        engine.reset();
        closeDevice();
        takePendingFrames();
    }
    QStringList log()
    {
        const QMutexLocker guard(&lock);
        return lines;
    }
    std::vector<std::uint32_t> sent(unsigned channel = 0) const
    {
        std::vector<std::uint32_t> ids;
        for (const CanTransmitRecord &record : driver->sentCan(channel))
            ids.push_back(record.id);
        return ids;
    }
    TransmitCounts count(int place) const { return engine->counts().at(static_cast<std::size_t>(place)); }
};

} // namespace

class TestTransmit : public QObject
{
    Q_OBJECT

private slots:
    // Check values of the public catalogue of CRC parameters, over "123456789".
    void checksumsAreTheNamedOnes()
    {
        const QPair<Checksum, int> known[] = {{Checksum::Crc8SaeJ1850, 0x4B},
                                              {Checksum::Crc8AutosarH2F, 0xDF},
                                              {Checksum::Sum, 0xDD},
                                              {Checksum::Xor, 0x31}};
        for (const auto &[kind, value] : known) {
            ChecksumRun run(kind);
            run.add(reinterpret_cast<const std::uint8_t *>("1234"), 4);
            run.add(reinterpret_cast<const std::uint8_t *>("56789"), 5);
            QCOMPARE(int(run.value()), value);
        }
    }

    void dataChangeOverTime_data()
    {
        QTest::addColumn<QString>("changes");
        QTest::addColumn<QStringList>("frames"); // of frames 0, 1, 2, ...; empty: the text is refused
        QTest::newRow("counter wraps") << "counter 1:2"
                                       << QStringList{"01ff00", "03ff00", "05ff00", "07ff00", "01ff00"};
        QTest::newRow("counter from what is there")
            << "counter 8:8 step 2" << QStringList{"01ff00", "010100", "010300"};
        QTest::newRow("big-endian across bytes") << "counter 15:16 be" << QStringList{"01ff00", "01ff01", "01ff02"};
        QTest::newRow("little-endian across bytes") << "counter 8:16" << QStringList{"01ff00", "010001", "010101"};
        QTest::newRow("toggle") << "TOGGLE 16:1;" << QStringList{"01ff00", "01ff01", "01ff00"};
        QTest::newRow("ramp") << "ramp 16:8 0x10..20 step 3" << QStringList{"01ff10", "01ff13", "01ff10"};
        QTest::newRow("checksum after the rest") << "sum 2; counter 0:8" << QStringList{"01ff00", "02ff01", "03ff02"};
        QTest::newRow("checksum over a part") << "xor 0 1..1" << QStringList{"ffff00"};
        QTest::newRow("nothing") << " ; " << QStringList{"01ff00", "01ff00"};
        for (const char *wrong : {"counter", "counter 0:0", "counter 0:65", "counter 511:2", "counter 0:4 step 0",
                                  "ramp 0:4 1..16", "ramp 0:8 5..4", "ramp 0:8", "toggle 0:1 step 2",
                                  "counter 0:4 1..2", "crc9 1", "sum 64", "sum 1 5..4", "sum 1 0..64", "sum"})
            QTest::newRow(wrong) << wrong << QStringList();
    }
    void dataChangeOverTime()
    {
        QFETCH(QString, changes);
        QFETCH(QStringList, frames);
        const ByteChanges parsed = parseByteChanges(changes);
        QCOMPARE(parsed.error.isEmpty(), !frames.isEmpty());
        for (int number = 0; number < frames.size(); ++number) {
            RawFrame frame;
            frame.length = 3;
            frame.data[0] = 1;
            frame.data[1] = 0xFF;
            applyChanges(parsed.list, static_cast<std::uint64_t>(number), frame);
            QCOMPARE(QByteArray(reinterpret_cast<char *>(frame.data), 3).toHex(), frames.at(number).toLatin1());
        }
    }

    void filesKeepEverything()
    {
        const TestFolder folder;
        auto full = entry(0x18FF50E5, TransmitMode::Response, 0);
        full->frame.extended = full->frame.fd = full->frame.bitRateSwitch = true;
        full->frame.length = 12;
        full->frame.data[11] = 0xAB;
        full->on = full->resumes = false;
        full->channel = 1;
        full->name = QStringLiteral("\"名\", {");
        full->type = TransmitType::SelfReceive;
        full->key = transmitKeys().constLast();
        full->comment = QStringLiteral("a\nb");
        QVERIFY(setAwaited(*full, QStringLiteral("00000120/1FFFFFF0")));
        QVERIFY(setChanges(*full, QStringLiteral("counter 0:4; autosar-crc8h2f 11")).isEmpty());
        const TransmitList list{full, entry(1, TransmitMode::Counted, kLongestInterval, kHighestCount)};
        const QString path = folder.path("list.json");
        QCOMPARE(writeTransmitFile(path, list), QString());
        const TransmitFile again = readTransmitFile(path);
        QCOMPARE(again.error, QString());
        QCOMPARE(again.entries.size(), 2);
        QCOMPARE(transmitFileContent(again.entries), transmitFileContent(list));
        QVERIFY(transmitFileContent(list) != transmitFileContent({list[1], list[0]}));
        QCOMPARE(again.entries[0]->changes.size(), std::size_t(2));

        // A folder that cannot be written to: the file is as it was.
        QVERIFY(!writeTransmitFile(folder.path("missing/list.json"), {}).isEmpty());
    }

    void damagedFilesSayWhere_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<QString>("error");
        QTest::newRow("cut") << QByteArray("\n]}") << QByteArray() << "line 4, column";
        QTest::newRow("version") << QByteArray("\"version\": 1") << QByteArray("\"version\": 2") << "version";
        QTest::newRow("another format") << QByteArray("ostrel-") << QByteArray("other-") << "no transmit list";
        QTest::newRow("identifier") << QByteArray("\"id\":\"7FF\"") << QByteArray("\"id\":\"800\"")
                                    << "entry 2: the field \"id\"";
        QTest::newRow("kind") << QByteArray("\"id\":\"7FF\"") << QByteArray("\"id\":5") << "entry 2: the field \"id\"";
        QTest::newRow("unknown") << QByteArray("\"comment\"") << QByteArray("\"coment\"")
                                 << "entry 1: the field \"coment\"";
        QTest::newRow("interval") << QByteArray("\"interval\":10") << QByteArray("\"interval\":0")
                                  << "entry 1: the field \"interval\"";
        QTest::newRow("fraction") << QByteArray("\"interval\":10") << QByteArray("\"interval\":1.5")
                                  << "entry 1: the field \"interval\"";
        QTest::newRow("data") << QByteArray("\"data\":\"00 ") << QByteArray("\"data\":\"00 00 ")
                              << "entry 1: the field \"data\"";
        QTest::newRow("channel") << QByteArray("\"channel\":1") << QByteArray("\"channel\":3")
                                 << "entry 1: the field \"channel\"";
        QTest::newRow("length") << QByteArray("\"length\":8") << QByteArray("\"length\":9")
                                << "entry 1: the field \"length\"";
        QTest::newRow("changes") << QByteArray("\"changes\":\"\"") << QByteArray("\"changes\":\"sum 9\"")
                                 << "entry 1: A change lies";
        QTest::newRow("mode") << QByteArray("periodic") << QByteArray("sometimes") << "entry 1: the field \"mode\"";
    }
    void damagedFilesSayWhere()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(QString, error);
        setLanguageCode(English);
        QByteArray content =
            transmitFileContent({entry(1, TransmitMode::Periodic, 10), entry(0x7FF, TransmitMode::Periodic, 10)});
        const int place = content.indexOf(from);
        QVERIFY(place >= 0);
        content.replace(place, from.size(), to);
        const TransmitFile file = parseTransmitFile(content);
        QVERIFY2(file.error.startsWith(error) || file.error.contains(error), qPrintable(file.error));
        QVERIFY(file.entries.isEmpty());
    }

    void countsAreExactAndEqualTimesKeepTheOrder()
    {
        Bench bench;
        TransmitList list;
        for (const std::uint32_t id : {5U, 3U, 9U, 1U})
            list << entry(id, TransmitMode::Counted, 4, 25);
        list << entry(7, TransmitMode::Counted, 1, 10);
        bench.engine->setEntries(list);
        bench.engine->start();
        QTRY_VERIFY(!bench.engine->hasWork());
        QTRY_COMPARE(bench.sent().size(), std::size_t(110));
        // Rounds of the equal ones come in the list's order, whatever lies between them.
        std::vector<std::uint32_t> equal = bench.sent();
        equal.erase(std::remove(equal.begin(), equal.end(), 7U), equal.end());
        for (std::size_t place = 0; place < equal.size(); ++place)
            QCOMPARE(equal[place], list[int(place % 4)]->frame.id);
        // No drift: the last moment is where the plan has it.
        QTRY_COMPARE(bench.count(3).sent, std::uint64_t(25));
        for (const int place : {0, 3})
            QCOMPARE(bench.count(place).lastDue - bench.engine->startedAt(), TransmitClock::duration(24 * 4ms));
        QVERIFY(bench.count(0).lastSent > 0);
    }

    void changesTakeEffectAndStopIsAtOnce()
    {
        Bench bench;
        auto slow = entry(1, TransmitMode::Periodic, 900'000);
        auto other = entry(2, TransmitMode::Periodic, 900'000);
        bench.engine->setEntries({slow, other});
        bench.engine->start();
        QTRY_COMPARE(bench.sent().size(), std::size_t(2));
        // A shorter interval counts from the last moment; the other entry is not disturbed.
        auto quick = std::make_shared<TransmitEntry>(*slow);
        quick->interval = 2;
        quick->frame.data[0] = 0x77;
        bench.engine->setEntries({other, quick});
        QTRY_VERIFY(bench.count(1).sent > 20);
        QCOMPARE(bench.count(0).sent, std::uint64_t(1));
        QCOMPARE(int(bench.driver->sentCan(0).back().data[0]), 0x77);
        // Off, and gone.
        auto off = std::make_shared<TransmitEntry>(*quick);
        off->on = false;
        bench.engine->setEntries({other, off});
        QVERIFY(bench.engine->hasWork()); // the other one
        const std::uint64_t before = bench.count(1).sent;
        QTest::qWait(30);
        QVERIFY(bench.count(1).sent <= before + 1); // one may have been on its way
        bench.engine->setEntries({quick});
        QTRY_VERIFY(bench.count(0).sent > before + 5);
        bench.engine->stop();
        QVERIFY(!bench.engine->isRunning());
        QTest::qWait(20);
        const std::size_t stopped = bench.sent().size();
        QTest::qWait(30);
        QCOMPARE(bench.sent().size(), stopped);
    }

    void aDriverThatHoldsItsSenderDoesNotHoldTheOwner()
    {
        Bench bench;
        std::atomic<bool> free{false};
        bench.driver->onTransmitCan = [&free](unsigned, const CanTransmitRecord *, std::uint32_t) {
            while (!free)
                QThread::msleep(1);
            return kDriverSuccess;
        };
        bench.engine->setEntries({entry(1, TransmitMode::Periodic, 5)});
        bench.engine->start();
        QTest::qWait(1300);
        QVERIFY(bench.engine->counts().size() == 1);
        QVERIFY(!SendersHalted());                // nobody else has the driver meanwhile
        bench.engine->setEntries(TransmitList()); // while a frame of it is on its way
        auto again = entry(2, TransmitMode::Periodic, 5);
        bench.engine->setEntries({again});
        free = true;
        QTRY_VERIFY(bench.count(0).sent > 0);
        {
            std::optional<SendersHalted> halted;
            QTRY_VERIFY((halted.emplace(), *halted));
            const std::size_t before = bench.sent().size();
            QTest::qWait(30);
            QCOMPARE(bench.sent().size(), before);
        }
        // What is over by more than a second is missed rather than sent in a rush; the grid stays.
        free = false;
        QTest::qWait(1300);
        free = true;
        QTRY_VERIFY(bench.count(0).skipped > 100);
    }

    void aClosingChannelStopsItsEntries()
    {
        Bench bench;
        auto resuming = entry(1, TransmitMode::Periodic, 2);
        auto ending = entry(2, TransmitMode::Periodic, 2);
        ending->resumes = false;
        auto elsewhere = entry(3, TransmitMode::Periodic, 2);
        elsewhere->channel = 1;
        bench.engine->setEntries({resuming, ending, elsewhere});
        bench.engine->start();
        QTRY_VERIFY(bench.count(2).sent > 3 && bench.count(1).sent > 3);
        closeDevice();
        QTRY_COMPARE(bench.log().size(), 2);
        QCOMPARE(bench.log().filter("channel 1 is closed, entries stopped: 2").size(), 1);
        const std::uint64_t before[] = {bench.count(0).sent, bench.count(1).sent, bench.count(2).sent};
        // Asked for on a closed channel: refused, and told so.
        const std::uint64_t refused = bench.count(1).refused;
        bench.engine->request(ending->serial);
        QTRY_COMPARE(bench.count(1).refused, refused + 1);
        QVERIFY(openDevice(kDeviceType, 0, 0) && initChannel(0, 0) && initChannel(1, 0));
        QTRY_VERIFY(bench.count(0).sent > before[0] && bench.count(2).sent > before[2]);
        QCOMPARE(bench.count(1).sent, before[1]);
        QCOMPARE(bench.log().filter("is open again, entries going on: 1").size(), 2);
        // Switched off and on: that is a beginning.
        auto off = std::make_shared<TransmitEntry>(*ending);
        off->on = false;
        bench.engine->setEntries({resuming, off, elsewhere});
        bench.engine->setEntries({resuming, ending, elsewhere});
        QTRY_VERIFY(bench.count(1).sent > before[1]);
    }

    void requestsAndAnswers()
    {
        Bench bench;
        auto onKey = entry(1, TransmitMode::OnRequest, 0);
        onKey->interval = 1;
        onKey->on = false;
        auto answer = entry(2, TransmitMode::Response, 0);
        QVERIFY(setAwaited(*answer, QStringLiteral("120/7F0")));
        bench.engine->setEntries({onKey, answer});
        bench.engine->request(onKey->serial); // not started, not on
        QTRY_COMPARE(bench.sent(), std::vector<std::uint32_t>{1});
        bench.engine->request(12345678); // nobody
        bench.engine->start();
        QTRY_VERIFY(tapHasReaders());
        RawFrame heard;
        heard.id = 0x12F;
        const auto hear = [&heard](auto RawFrame::*field, auto value) {
            RawFrame other = heard;
            other.*field = value;
            publishToTap(&other, 1);
        };
        hear(&RawFrame::id, 0x130U);
        hear(&RawFrame::extended, true);
        hear(&RawFrame::direction, Direction::Sent);
        hear(&RawFrame::channel, std::uint16_t(2));
        hear(&RawFrame::length, std::uint8_t(3)); // this one
        QTRY_COMPARE(bench.sent(), (std::vector<std::uint32_t>{1, 2}));
        bench.engine->stop();
        QVERIFY(!tapHasReaders());
        QCOMPARE(bench.count(1).sent, std::uint64_t(1));
    }

    void rowsBecomeEntriesWithTheirMeasuredPeriod()
    {
        setLanguageCode(English);
        QString rows = QStringLiteral("titles\n");
        for (int i = 0; i < 5; ++i) {
            CanReceiveRecord record{};
            record.id = 0x123;
            record.length = 2;
            record.data[0] = static_cast<std::uint8_t>(i);
            QList<ModelItem> batch;
            appendItem(batch, record, 1);
            batch[0].systemTime = QStringLiteral("23:59:59.%1").arg(100 * i, 3, 10, QChar('0'));
            appendCsvRow(rows, batch[0]);
            if (i == 0) {
                record.id = 7;
                batch.clear();
                appendItem(batch, record, 0);
                appendCsvRow(rows, batch[0]);
            }
        }
        const CsvEntries taken = entriesFromCsv(rows);
        QCOMPARE(taken.skipped, 1);
        QCOMPARE(taken.entries.size(), 2);
        const TransmitEntry &many = *taken.entries[0];
        QCOMPARE(many.frame.id, 0x123U);
        QCOMPARE(many.channel, 1U);
        QCOMPARE(int(many.frame.data[0]), 4);
        QVERIFY(many.mode == TransmitMode::Periodic);
        QCOMPARE(many.interval, 100U);
        QVERIFY(taken.entries[1]->mode == TransmitMode::OnRequest);
    }

    void dataAreEditedAsSignals_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("data"); // afterwards; empty: refused
        QTest::addColumn<QString>("shown");   // of the cell
        QTest::addColumn<QString>("told");    // part of it
        QTest::newRow("value") << 0 << int(FieldValueColumn) << "12.5" << QByteArray("7d00020000000000") << "12.5"
                               << "";
        QTest::newRow("beyond the limits")
            << 0 << int(FieldValueColumn) << "30" << QByteArray("c800020000000000") << "20"
            << "limited to 20";
        QTest::newRow("raw, beyond the limits")
            << 0 << int(FieldRawColumn) << "0xFA" << QByteArray("fa00020000000000") << "250"
            << "";
        QTest::newRow("text") << 1 << int(FieldValueColumn) << "Reverse" << QByteArray("0000010000000000") << "Reverse"
                              << "";
        QTest::newRow("number in place of a text")
            << 1 << int(FieldValueColumn) << "3" << QByteArray("0000030000000000") << "3"
            << "";
        QTest::newRow("takes its multiplexer along")
            << 4 << int(FieldValueColumn) << "-2" << QByteArray("00000200010000fe") << "-2"
            << "";
        QTest::newRow("no value") << 0 << int(FieldValueColumn) << "fast" << QByteArray() << "0"
                                  << "fast";
        QTest::newRow("no raw value") << 0 << int(FieldRawColumn) << "1.5" << QByteArray() << "0"
                                      << "1.5";
        QTest::newRow("no column to edit") << 0 << int(FieldUnitColumn) << "m" << QByteArray() << "bar"
                                           << "";
    }
    void dataAreEditedAsSignals()
    {
        QFETCH(int, row);
        QFETCH(int, column);
        QFETCH(QString, value);
        QFETCH(QByteArray, data);
        QFETCH(QString, shown);
        QFETCH(QString, told);
        setLanguageCode(English);
        const auto database = std::make_shared<const LoadedDatabase>(
            readDbc("BO_ 800 Gear: 8 Box\n"
                    " SG_ Pressure : 0|8@1+ (0.1,0) [0|20] \"bar\" X\n SG_ Lever : 16|4@1+ (1,0) [0|0] \"\" X\n"
                    " SG_ Page M : 32|4@1+ (1,0) [0|0] \"\" X\n SG_ A m0 : 56|8@1- (1,0) [0|0] \"\" X\n"
                    " SG_ B m1 : 56|8@1- (1,0) [0|0] \"\" X\n"
                    "VAL_ 800 Lever 1 \"Reverse\" 2 \"Neutral\" ;\n"
                    "BA_DEF_ BO_ \"GenMsgCycleTime\" INT 0 10000;\nBA_DEF_ SG_ \"GenSigStartValue\" FLOAT 0 10000;\n"
                    "BA_ \"GenMsgCycleTime\" BO_ 800 40;\nBA_ \"GenSigStartValue\" SG_ 800 Lever 2;\n"));
        const auto lookup = std::make_shared<const MessageLookup>(
            std::vector<MessageLookup::Entry>{{database, DatabaseChannels::Second}});
        const TransmitEntryPointer entry = entryOfMessage(database->content.messages.at(0), 1);
        QVERIFY(entry->name == "Gear" && entry->mode == TransmitMode::Periodic && entry->interval == 40);
        QVERIFY(transmitProblem(*entry).isEmpty());
        SignalFields fields;
        const auto elsewhere = std::make_shared<TransmitEntry>(*entry);
        elsewhere->channel = 0;
        fields.show(elsewhere, lookup);
        QVERIFY(!fields.isKnown());
        fields.show(entry, lookup);
        QCOMPARE(fields.rowCount(), 5);
        TransmitEntryPointer edited;
        QString said;
        connect(&fields, &SignalFields::told, this, [&said](const QString &text) { said = text; });
        connect(&fields, &SignalFields::edited, this, [&](const TransmitEntryPointer &changed) {
            edited = changed;
            fields.show(changed, lookup);
        });
        const QModelIndex cell = fields.index(row, column);
        QCOMPARE(fields.setData(cell, value), !data.isEmpty());
        if (edited)
            QCOMPARE(QByteArray(reinterpret_cast<const char *>(edited->frame.data), 8).toHex(), data);
        QCOMPARE(cell.data().toString(), shown);
        QVERIFY2(told.isEmpty() ? said.isEmpty() : said.contains(told), qPrintable(said));
        edited.reset();
        QVERIFY(data.isEmpty() || fields.setData(cell, cell.data(Qt::EditRole)));
        QVERIFY(!edited); // what stands there changes nothing, rounded or not
        fields.disconnect(this);
    }

    void cellsAreCheckedAsThePanelsAre()
    {
        setLanguageCode(English);
        TransmitEntry cell;
        cell.frame.length = 8;
        const auto set = [&cell](int column, const QVariant &value) { return setTransmitField(cell, column, value); };
        QCOMPARE(set(EntryIdColumn, "7FF"), QString());
        QVERIFY(set(EntryIdColumn, "800").contains("0~0x7FF"));
        QCOMPARE(cell.frame.id, 0x7FFU);
        QCOMPARE(set(EntryProtocolColumn, CanFdBitRateSwitch), QString());
        QCOMPARE(set(LengthColumn, 15), QString());
        QCOMPARE(set(EntryDataColumn, "1 23 456"), QString());
        QCOMPARE(QByteArray(reinterpret_cast<char *>(cell.frame.data), 5).toHex(), QByteArray("0123045600"));
        QCOMPARE(set(EntryTypeColumn, RemoteFrame), QString()); // forces the protocol, and with it the length
        QVERIFY(!cell.frame.fd && !cell.frame.bitRateSwitch && cell.frame.length == 8);
        QVERIFY(!set(IntervalColumn, "0").isEmpty());
        QVERIFY(!set(ChangesColumn, "counter 8:8x").isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestTransmit)
#include "test_transmit.moc"
