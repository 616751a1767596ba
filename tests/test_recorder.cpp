// The recorder: rows of files, triggers, and what happens when nothing can be written.
#include "traces/recorder.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cerrno>
#include <cstring>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

Q_DECLARE_METATYPE(TraceFormat)
Q_DECLARE_METATYPE(std::vector<RecorderTrigger>)

namespace
{

using Kind = RecorderTrigger::Kind;
using Event = RecorderEvent::Kind;

constexpr std::int64_t kMillisecond = 1'000'000;

RawFrame frameOf(std::uint32_t id, std::int64_t milliseconds = 0, QByteArray data = QByteArray(8, 1))
{
    RawFrame frame;
    frame.time = milliseconds * kMillisecond;
    frame.id = id;
    frame.length = static_cast<std::uint8_t>(data.size());
    std::memcpy(frame.data, data.constData(), frame.length);
    return frame;
}

// A recorder with a clock that stands still until it is told, and all it says.
class Bench
{
public:
    explicit Bench(TraceFormat format = TraceFormat::Candump)
    {
        settings.format = format;
        settings.path = folder.filePath(QStringLiteral("run/drive.log"));
        QDir(folder.path()).mkdir(QStringLiteral("run"));
    }
    void begin()
    {
        recorder = std::make_unique<Recorder>(
            settings, [this](const RecorderEvent &event) { events.push_back(event); }, [this] { return now; });
        recorder->begin();
    }
    void feed(const std::vector<RawFrame> &frames) { recorder->write(frames.data(), static_cast<int>(frames.size())); }
    void feedLong(int count, int first = 0)
    {
        for (int index = first; index < first + count; ++index)
            feed({frameOf(static_cast<std::uint32_t>(index % 0x800), index)});
    }
    std::vector<RawFrame> frames(const QString &path) const
    {
        QFile file(path);
        QString error;
        if (!file.open(QIODevice::ReadOnly))
            return {};
        const auto reader = openTrace(&file, path, &error);
        std::vector<RawFrame> all;
        RawFrame frame;
        while (reader && reader->read(&frame, 1) == 1)
            all.push_back(frame);
        return reader && !reader->error() ? all : std::vector<RawFrame>();
    }
    // Identifiers in hexadecimal; a bar between files.
    QString recorded() const
    {
        QStringList texts;
        for (const QString &name : names()) {
            QStringList ids;
            for (const RawFrame &frame : frames(QFileInfo(settings.path).dir().filePath(name)))
                ids << QString::number(frame.id, 16);
            texts << ids.join(QLatin1Char(' '));
        }
        return texts.join(QStringLiteral(" | "));
    }
    QStringList names() const { return QFileInfo(settings.path).dir().entryList(QDir::Files, QDir::Name); }
    int count(Event kind) const
    {
        return static_cast<int>(std::count_if(events.begin(), events.end(),
                                              [kind](const RecorderEvent &event) { return event.kind == kind; }));
    }
    std::uint64_t framesOf(Event kind) const
    {
        std::uint64_t sum = 0;
        for (const RecorderEvent &event : events)
            sum += event.kind == kind ? event.frames + event.lost : 0;
        return sum;
    }

    QTemporaryDir folder;
    RecorderSettings settings;
    std::vector<RecorderEvent> events;
    std::int64_t now = 0;
    std::unique_ptr<Recorder> recorder;
};

RecorderTrigger idTrigger(std::uint32_t first, std::uint32_t last)
{
    RecorderTrigger trigger;
    trigger.firstId = first;
    trigger.lastId = last;
    return trigger;
}

RecorderTrigger kindTrigger(Kind kind)
{
    RecorderTrigger trigger;
    trigger.kind = kind;
    return trigger;
}

} // namespace

class TestRecorder : public QObject
{
    Q_OBJECT

private slots:
    void rotationBySize_data()
    {
        QTest::addColumn<TraceFormat>("format");
        for (const TraceFormat format : {TraceFormat::Candump, TraceFormat::Blf, TraceFormat::Trc, TraceFormat::Asc})
            QTest::newRow(qPrintable(traceFormatText(format))) << format;
    }
    void rotationBySize()
    {
        QFETCH(TraceFormat, format);
        constexpr int count = 20000;
        Bench bench(format);
        bench.settings.rotateBytes = 30000;
        QFile(QFileInfo(bench.settings.path).dir().filePath(QStringLiteral("drive_0007.log")))
            .open(QIODevice::WriteOnly);
        bench.begin();
        bench.feedLong(count);
        bench.recorder->end();
        QCOMPARE(bench.names().first(), QStringLiteral("drive_0007.log")); // older files stay as they are
        QCOMPARE(bench.names()[1], QStringLiteral("drive_0008.log"));
        QVERIFY(bench.count(Event::FileBegun) > 3);
        std::int64_t next = 0;
        for (const QString &name : bench.names().mid(1)) {
            const QString path = QFileInfo(bench.settings.path).dir().filePath(name);
            QVERIFY2(QFileInfo(path).size() < 45000, qPrintable(name));
            for (const RawFrame &frame : bench.frames(path))
                QCOMPARE(frame.id, std::uint32_t(next++ % 0x800));
        }
        QCOMPARE(next, count);
        QCOMPARE(bench.framesOf(Event::FileEnded), std::uint64_t(count));
        QCOMPARE(bench.count(Event::Trouble), 0);
    }

    void rotationByTimeInARing()
    {
        Bench bench;
        bench.settings.rotateSeconds = 2;
        bench.settings.keepFiles = 2;
        bench.begin();
        bench.feed({frameOf(1, 500), frameOf(2, 2499), frameOf(3, 2500), frameOf(4, 4600), frameOf(5, 4700)});
        bench.recorder->end();
        QCOMPARE(bench.recorded(), QStringLiteral("3 | 4 5"));
        QCOMPARE(bench.names(), (QStringList{"drive_0002.log", "drive_0003.log"}));
        QCOMPARE(bench.recorder->recordedFrames(), 5u);
        bench.begin(); // another day, in the same ring
        bench.feed({frameOf(6, 500)});
        bench.recorder->end();
        QCOMPARE(bench.recorded(), QStringLiteral("4 5 | 6"));
    }

    void aLimitCountsWhatIsRecorded()
    {
        Bench bench;
        bench.settings.start = {idTrigger(8, 8)};
        bench.settings.preTriggerFrames = 2;
        bench.settings.mostFrames = 5;
        bench.begin();
        std::vector<RawFrame> frames;
        for (std::uint32_t id = 1; id < 20; ++id)
            frames.push_back(frameOf(id));
        bench.feed(frames);
        QCOMPARE(bench.recorded(), QStringLiteral("6 7 8 9 a"));
        QVERIFY(bench.recorder->done());
        QCOMPARE(bench.count(Event::FileEnded), 1);
    }

    void triggers_data()
    {
        QTest::addColumn<std::vector<RecorderTrigger>>("start");
        QTest::addColumn<std::vector<RecorderTrigger>>("stop");
        QTest::addColumn<int>("preFrames");
        QTest::addColumn<int>("preMilliseconds");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, std::vector<RecorderTrigger> start, std::vector<RecorderTrigger> stop,
                            int frames, int milliseconds, const char *expected) {
            QTest::newRow(name) << start << stop << frames << milliseconds << QString::fromLatin1(expected);
        };
        RecorderTrigger data = kindTrigger(Kind::Data);
        data.mask = QByteArray::fromHex("00f0");
        data.value = QByteArray::fromHex("ff5f");
        RecorderTrigger extended = idTrigger(0x10, 0x12);
        extended.extended = true;
        RecorderTrigger second = idTrigger(0x10, 0x16);
        second.channel = 2;
        row("stop at an identifier", {}, {idTrigger(0x12, 0x13)}, 0, 0, "10 11 12");
        row("start at an identifier", {idTrigger(0x12, 0x13)}, {}, 0, 0, "12 88 13 14 15 16");
        row("from to, again", {idTrigger(0x11, 0x11), idTrigger(0x14, 0x14)}, {idTrigger(0x12, 0x12)}, 0, 0,
            "11 12 | 14 15 16");
        row("frames before", {idTrigger(0x13, 0x13)}, {}, 2, 0, "12 88 13 14 15 16");
        row("time before", {idTrigger(0x14, 0x14)}, {}, 0, 25, "88 13 14 15 16");
        row("both before", {idTrigger(0x14, 0x14)}, {}, 1, 25, "13 14 15 16");
        row("data", {data}, {}, 0, 0, "15 16");
        row("extended", {extended}, {}, 0, 0, "");
        row("channel", {second}, {}, 0, 0, "16");
        row("error frame", {kindTrigger(Kind::ErrorFrame)}, {}, 1, 0, "12 88 13 14 15 16");
        row("until an error", {}, {kindTrigger(Kind::ErrorFrame)}, 0, 0, "10 11 12 88");
        row("lost frames", {kindTrigger(Kind::LostFrames)}, {}, 1, 0, "13 14 15 16");
        row("until lost", {}, {kindTrigger(Kind::LostFrames)}, 0, 0, "10 11 12 88 13");
    }
    void triggers()
    {
        QFETCH(std::vector<RecorderTrigger>, start);
        QFETCH(std::vector<RecorderTrigger>, stop);
        QFETCH(int, preFrames);
        QFETCH(int, preMilliseconds);
        QFETCH(QString, expected);
        std::vector<RawFrame> first{frameOf(0x10, 0), frameOf(0x11, 10), frameOf(0x12, 20), frameOf(0x88, 30),
                                    frameOf(0x13, 40)};
        first[3].error = true;
        std::vector<RawFrame> second{frameOf(0x14, 50, QByteArray::fromHex("ff")),
                                     frameOf(0x15, 60, QByteArray::fromHex("0057")), frameOf(0x16, 70)};
        second[2].channel = 2;
        for (const bool oneByOne : {false, true}) {
            Bench bench;
            bench.settings.start = start;
            bench.settings.stop = stop;
            bench.settings.preTriggerFrames = preFrames;
            bench.settings.preTriggerMilliseconds = preMilliseconds;
            bench.begin();
            for (const auto &part : {first, second}) {
                if (!oneByOne)
                    bench.feed(part);
                for (const RawFrame &frame : oneByOne ? part : std::vector<RawFrame>())
                    bench.feed({frame});
                bench.recorder->markLost(part.size() == first.size() ? 7 : 0);
            }
            QCOMPARE(bench.recorder->done(), start.empty() && !stop.empty());
            bench.recorder->end();
            QCOMPARE(bench.recorded(), expected);
        }
    }

    void longPreTrigger()
    {
        PreTriggerBuffer before(0, 1000 * 3600);
        constexpr int more = 10;
        for (int index = 0; index < PreTriggerBuffer::kMostFrames + more; ++index)
            before.add(frameOf(static_cast<std::uint32_t>(index)));
        QCOMPARE(before.size(), PreTriggerBuffer::kMostFrames);
        QCOMPARE(before.at(0).id, std::uint32_t(more));
        QCOMPARE(before.at(before.size() - 1).id, std::uint32_t(PreTriggerBuffer::kMostFrames + more - 1));
    }

    void whatIsOnTheDisk()
    {
        Bench bench(TraceFormat::Blf);
        bench.begin();
        bench.feedLong(10);
        QVERIFY(bench.frames(bench.settings.path).empty());
        bench.now += 1000;
        bench.recorder->tick();
        QCOMPARE(bench.frames(bench.settings.path).size(), std::size_t(10)); // what a killed program leaves behind
    }

    void removedFolder()
    {
#ifdef Q_OS_WIN
        QSKIP("a folder with an open file in it cannot be removed here");
#endif
        Bench bench;
        bench.begin();
        bench.feedLong(10);
        QVERIFY(QDir(bench.folder.filePath(QStringLiteral("run"))).removeRecursively());
        for (int second = 0; second < 5; ++second) {
            bench.now += 1000;
            bench.feedLong(10, 10);
        }
        QCOMPARE(bench.count(Event::Trouble), 1);
        QCOMPARE(bench.events.back().lost, 11u); // those of the file, up to the one with which it was missed
        QVERIFY(QDir(bench.folder.path()).mkdir(QStringLiteral("run")));
        bench.now += 1000;
        bench.feedLong(10, 60);
        bench.recorder->end();
        QCOMPARE(bench.count(Event::Recovered), 1);
        QCOMPARE(bench.framesOf(Event::Recovered), bench.recorder->lostFrames());
        QCOMPARE(bench.recorder->lostFrames() + bench.recorder->recordedFrames(), 70u);
        QCOMPARE(bench.frames(bench.settings.path).size(), std::size_t(bench.recorder->recordedFrames()));
        QVERIFY(bench.recorder->recordedFrames() >= 9);
    }

#ifdef Q_OS_UNIX
    void fullDisk_data()
    {
        rotationBySize_data();
    }
    void fullDisk()
    {
        QFETCH(TraceFormat, format);
        constexpr int count = 40000;
        Bench bench(format);
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit before{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
        rlimit tight = before;
        tight.rlim_cur = 100'000; // of every file: the next bytes are refused, as on a full disk
        bench.begin();
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &tight), 0);
        for (int index = 0; index < count; index += 100) {
            bench.now += 100;
            bench.feedLong(100, index);
        }
        const int told = bench.count(Event::Trouble);
        const auto trouble = std::find_if(bench.events.begin(), bench.events.end(),
                                          [](const auto &event) { return event.kind == Event::Trouble; });
        const auto whole = bench.frames(bench.settings.path);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &before), 0);
        QCOMPARE(told, 1);
        QCOMPARE(trouble->reason, QString::fromLocal8Bit(std::strerror(EFBIG)));
        QVERIFY(!whole.empty()); // can be read while there is no room, up to its last frame
        bench.now += 1000;
        bench.feedLong(100, count);
        bench.recorder->end();
        QCOMPARE(bench.count(Event::Trouble), 1);
        QCOMPARE(bench.count(Event::Recovered), 1);
        QCOMPARE(bench.framesOf(Event::Recovered), bench.recorder->lostFrames());
        QCOMPARE(bench.frames(bench.settings.path).size(), std::size_t(bench.recorder->recordedFrames()));
        QCOMPARE(bench.recorder->lostFrames() + bench.recorder->recordedFrames(), std::uint64_t(count + 100));
    }
#endif

    void nothingCanBeOpened()
    {
        Bench bench;
        bench.settings.path = bench.folder.filePath(QStringLiteral("missing/drive.log"));
        bench.begin();
        QCOMPARE(bench.count(Event::Trouble), 1);
        QVERIFY(!bench.events.front().reason.isEmpty());
        bench.feedLong(3);
        bench.recorder->end();
        QCOMPARE(bench.recorder->lostFrames(), 3u);
        QCOMPARE(bench.events.size(), std::size_t(1));
    }
};

QTEST_APPLESS_MAIN(TestRecorder)
#include "test_recorder.moc"
