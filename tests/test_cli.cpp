// The command line with the simulated adapter, mostly on a quiet bus: replaying, recording, generating, interrupting.
#include "cliprocess.h"
#include "frames/rawrecords.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <csignal>

using namespace cli;

namespace
{

const QStringList kRates{QStringLiteral("--rate"), QStringLiteral("500k/2M")};

QByteArray transmitList(const QByteArray &entries)
{
    return "{\"format\":\"ostrel-transmit-list\",\"version\":1,\"entries\":[" + entries + "]}";
}

// What an adapter can send, on both channels, a millisecond apart.
std::vector<RawFrame> sendableFrames()
{
    std::vector<RawFrame> frames;
    for (RawFrame frame : everyKindOfFrame()) {
        frame.time = static_cast<std::int64_t>(frames.size()) * 1000000;
        frame.channel = static_cast<std::uint16_t>(1 + frames.size() % 2);
        frame.direction = Direction::Received;
        frame.errorStateIndicator = false;
        frame.rawDlc = 0;
        if (isSendable(frame))
            frames.push_back(frame);
    }
    return frames;
}

// In the order in which they were on the bus: received classic and FD frames are read one after the other, and sent
// ones are handed over in order.
std::vector<RawFrame> onlyOf(const std::vector<RawFrame> &frames, unsigned channel, Direction direction)
{
    std::vector<RawFrame> chosen;
    std::copy_if(frames.begin(), frames.end(), std::back_inserter(chosen),
                 [&](const RawFrame &frame) { return frame.channel == channel && frame.direction == direction; });
    if (direction == Direction::Received)
        std::stable_sort(chosen.begin(), chosen.end(),
                         [](const RawFrame &a, const RawFrame &b) { return a.time < b.time; });
    for (RawFrame &frame : chosen)
        frame.time = 0;
    return chosen;
}

} // namespace

class TestCli : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void devices();
    void everyFormatAndBack_data();
    void everyFormatAndBack();
    void endsWith_data();
    void endsWith();
    void recordsToAPipe();
    void interrupted_data();
    void interrupted();
    void rowsOfFiles();
    void generates();
    void transmitsAList();

private:
    const Folder folder_;
    std::vector<RawFrame> sent_;
    std::vector<RawFrame> recorded_; // both directions of both channels
};

void TestCli::initTestCase()
{
    sent_ = sendableFrames();
    TraceWriterOptions options;
    options.startUtc = 1398128223803317000;
    const QString input = folder_.write("in.blf", writeTrace(TraceFormat::Blf, sent_, options).bytes);
    const Ended ended = run(words("replay --record") << folder_.path("first.blf") << input << kRates);
    QVERIFY2(ended.code == 0, ended.errors.constData());
    recorded_ = folder_.read("first.blf").frames;
    QCOMPARE(recorded_.size(), 2 * sent_.size());
}

void TestCli::devices()
{
    const Ended text = run(words("devices"));
    QCOMPARE(text.code, 0);
    const Ended ended = run(words("devices --json"));
    QCOMPARE(ended.code, 0);
    const QJsonArray all = QJsonDocument::fromJson(ended.out).array();
    QCOMPARE(all.size(), 1);
    QVERIFY(text.out.contains(all[0].toObject()[QStringLiteral("name")].toString().toUtf8()));
}

void TestCli::everyFormatAndBack_data()
{
    QTest::addColumn<int>("row");
    for (std::size_t row = 0; row < traceLimits().size(); ++row)
        QTest::newRow(qPrintable(traceFormatText(traceLimits()[row].format))) << static_cast<int>(row);
}

// Recorded, converted, read back, replayed and recorded again.
void TestCli::everyFormatAndBack()
{
    QFETCH(int, row);
    const TraceLimits &limits = traceLimits()[static_cast<std::size_t>(row)];
    const QString converted = folder_.path("converted.") + traceFormatEnding(limits.format);
    const Ended conversion = run(words("convert") << folder_.path("first.blf") << converted);
    QVERIFY2(conversion.code == 0, conversion.errors.constData());
    if (limits.format == TraceFormat::Pcapng) {
        QVERIFY(QFileInfo(converted).size() > static_cast<qint64>(recorded_.size()) * 16);
        return;
    }
    const QString backAgain = folder_.path("back.blf");
    QCOMPARE(run(words("convert") << converted << backAgain).code, 0);
    QCOMPARE(difference(folder_.read(backAgain).frames, heldBy(limits, recorded_), limits.resolution), QString());
    const QString again = folder_.path("again.blf");
    const Ended replay = run(words("replay --speed 4 --filter tx --record") << again << converted << kRates);
    QVERIFY2(replay.code == 0, replay.errors.constData());
    const std::vector<RawFrame> frames = folder_.read(again).frames;
    for (unsigned channel : {1u, 2u})
        for (Direction direction : {Direction::Received, Direction::Sent})
            QCOMPARE(difference(onlyOf(frames, channel, direction), onlyOf(recorded_, channel, direction), 0),
                     QString());
}

void TestCli::endsWith_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("told"); // on the standard error
    const QByteArray log = "(1.0) can0 123#11\n";
    const QString damaged = folder_.write("damaged.json", transmitList("{\"id\":\"1\"},\n{\"id\":\"800\"}"));
    const QString one = folder_.write("one.json", transmitList("{\"id\":\"1\",\"mode\":\"counted\"}"));
    const QString keys =
        folder_.write("keys.json", transmitList("{\"id\":\"1\",\"mode\":\"request\"},{\"id\":\"2\",\"on\":false}"));
    const struct {
        const char *name;
        const char *arguments;
        QString list; // the last argument, where there is one
        QByteArray input;
        int code;
        const char *told;
    } rows[] = {
        {"no command", "", "", "", 2, "Usage"},
        {"unknown command", "fly", "", "", 2, "fly"},
        {"unknown option", "show --fly", "", "", 2, "fly"},
        {"help", "replay --help", "", "", 0, ""},
        {"operands missing", "convert x.blf", "", "", 2, "output"},
        {"unknown format", "convert - - --format wav", "", log, 2, "wav"},
        {"no format", "convert - -", "", log, 2, "--format"},
        {"wrong filter", "show - --filter id", "", log, 2, "character 3"},
        {"wrong number", "generate --count many", "", "", 2, "many"},
        {"wrong rate", "record --rate fast x.blf", "", "", 2, "fast"},
        {"option given twice", "show - --count 1 --count 2", "", log, 2, "--count is given more than once"},
        {"ends before it begins", "show - --from 3 --to 2", "", log, 2, "--from"},
        {"channel 0", "show - --channels 2,0", "", log, 2, "channel 0"},
        {"format that is only written", "show - --input-format pcapng", "", log, 2, "written"},
        {"data longer than the frame", "generate --data 112233 --length 2", "", "", 2, "--length"},
        {"wrong trigger", "record --start-on noon x.blf", "", "", 2, "noon"},
        {"no such device", "record --device 7 x.blf", "", "", 1, "\"7\""},
        {"no such file", "show none.asc", "", "", 1, "none.asc"},
        {"empty input", "show -", "", "", 1, "empty"},
        {"log without frames", "show", folder_.write("empty.log", {}), "", 0, ""},
        {"empty device", "show /dev/null", "", "", 1, "empty"},
        {"cut input", "show -", "", log + "(2.0) can0 12", 1, "line 2"},
        {"no recording", "show -", "", "hello\nworld\n", 1, "format"},
        {"lost in the format", "convert - - --format csv", "", "(1.0) can0 123##2AA\n", 1, "indicator"},
        {"error frames are not sent", "replay --linger 0 -", "", "(1.0) can0 20000001#0000000000000000\n", 1,
         "1 frames cannot be sent"},
        {"nobody acknowledges", "replay --linger 0 --only 1 -", "", log, 1, "1 frames were not taken"},
        {"channel without adapter", "replay --linger 0 -", "", "(1.0) can4 123#\n", 1, "1 frames were not taken"},
        {"mapped channel", "replay --linger 0 --map 5=2 -", "", "(1.0) can4 123#\n", 0, "1 frames sent"},
        {"no list", "transmit", "", "", 2, "one list"},
        {"list missing", "transmit --linger 0 none.json", "", "", 1, "none.json"},
        {"damaged list", "transmit --linger 0", damaged, "", 1, "entry 2: the field \"id\""},
        {"nothing by itself", "transmit --linger 0", keys, "", 1, "nothing to send"},
        {"list that nobody acknowledges", "transmit --linger 0 --only 1", one, "", 1, "1 frames were not taken"},
        {"list on another channel", "transmit --linger 0 --only 2", one, "", 1, "not opened"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << words(row.arguments) + (row.list.isEmpty() ? QStringList() : QStringList(row.list))
                                << row.input << row.code << QByteArray(row.told);
}

void TestCli::endsWith()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, input);
    QFETCH(int, code);
    QFETCH(QByteArray, told);
    const Ended ended = run(arguments, input);
    QVERIFY2(ended.code == code, ended.errors.constData());
    QVERIFY2(ended.errors.contains(told), ended.errors.constData());
}

void TestCli::recordsToAPipe()
{
    const Ended recording = run(words("record - --format asc --count 50") + kRates, {}, "");
    QVERIFY2(recording.code == 0, recording.errors.constData());
    const ReadTrace trace = readTrace(recording.out);
    QVERIFY(!trace.error && trace.start);
    QCOMPARE(trace.frames.size(), std::size_t(50));
    const Ended live = run(words("show --count 7") + kRates, {}, "");
    QCOMPARE(live.out.count('\n'), 7);
}

void TestCli::interrupted_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("signalNumber");
    QTest::newRow("Ctrl+C") << "record" << SIGINT;
    QTest::newRow("request to end") << "record" << SIGTERM;
    QTest::newRow("lingering") << "generate --count 300 --interval 0 --data random --linger 80000 --record" << SIGINT;
}

void TestCli::interrupted()
{
    QFETCH(QString, command);
    QFETCH(int, signalNumber);
    const QString file = folder_.path("interrupted.blf");
    QFile::remove(file);
    QProcess process;
    start(&process, command.split(' ') << file << kRates, "");
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(file).size() > 1000, kTimeoutMs); // brought to the disk each second
    ::kill(static_cast<pid_t>(process.processId()), signalNumber);
    const Ended ended = end(&process);
    QVERIFY2(ended.code == 0, ended.errors.constData());
    const ReadTrace trace = folder_.read(file);
    QVERIFY(!trace.error && !trace.frames.empty());
    QVERIFY2(ended.errors.contains(QByteArray::number(qulonglong(trace.frames.size())) + " frames in"),
             ended.errors.constData());
}

void TestCli::rowsOfFiles()
{
    const QString row = folder_.path("row.log");
    const Ended ended = run(words("record --rotate-size 4k --keep 2 --count 400 --only 1") + kRates << row, {}, "");
    QVERIFY2(ended.code == 0, ended.errors.constData());
    const QStringList files = QDir(folder_.path(".")).entryList({"row_*.log"});
    QCOMPARE(files.size(), 2);
    QVERIFY2(!files.contains("row_0001.log"), qPrintable(files.join(' ')));
    const QString triggered = folder_.path("triggered.log");
    QCOMPARE(run(words("record --duration 1 --start-on id:0D1 --stop-on id:128 --only 1") + kRates << triggered, {}, "")
                 .code,
             0);
    const auto frames = folder_.read("triggered_0001.log").frames;
    QVERIFY(frames.size() >= 2 && frames.front().id == 0x0D1 && frames.back().id == 0x128);
}

void TestCli::generates()
{
    const QString file = folder_.path("generated.log");
    const Ended ended =
        run(words("generate --channel 2 --count 20 --interval 0 --brs --id 100..103 --length 16 --record")
            << file << kRates);
    QVERIFY2(ended.code == 0, ended.errors.constData());
    const auto frames = onlyOf(folder_.read(file).frames, 1, Direction::Received);
    QCOMPARE(frames.size(), std::size_t(20));
    for (unsigned i = 0; i < frames.size(); ++i) {
        QVERIFY(frames[i].fd && frames[i].bitRateSwitch && frames[i].length == 16);
        QVERIFY(frames[i].id == 0x100 + i % 4 && frames[i].data[0] == i);
    }
    const auto random = [&] {
        const Ended ran =
            run(words("generate --count 30 --interval 0 --id random --length random --data random --seed 4 "
                      "--record")
                << file << kRates);
        return ran.code == 0 ? onlyOf(folder_.read(file).frames, 2, Direction::Received) : std::vector<RawFrame>();
    };
    const auto once = random();
    QCOMPARE(once.size(), std::size_t(30));
    QCOMPARE(difference(random(), once, 0), QString());
}

void TestCli::transmitsAList()
{
    const QString file = folder_.path("transmitted.log");
    const QString list = folder_.write(
        "list.json", transmitList("{\"id\":\"100\",\"mode\":\"counted\",\"count\":20,\"interval\":5,\"length\":1,"
                                  "\"changes\":\"counter 0:8\"},"
                                  "{\"id\":\"101\",\"channel\":2,\"interval\":10,\"mode\":\"periodic\"},"
                                  "{\"id\":\"102\",\"on\":false}"));
    const auto transmit = [&](const char *options) {
        const Ended ended = run(words("transmit --record") << file << words(options) << list << kRates);
        return ended.code == 0 ? folder_.read(file).frames : std::vector<RawFrame>();
    };
    // A moment at the end itself is none any more: ten of the periodic one.
    const auto timed = transmit("--duration 0.1");
    const auto counted = onlyOf(timed, 1, Direction::Sent);
    QCOMPARE(counted.size(), std::size_t(20));
    for (unsigned i = 0; i < counted.size(); ++i)
        QVERIFY(counted[i].id == 0x100 && counted[i].length == 1 && counted[i].data[0] == i);
    QCOMPARE(onlyOf(timed, 2, Direction::Sent).size(), std::size_t(10));
    QCOMPARE(onlyOf(timed, 2, Direction::Received).size(), counted.size());

    const auto limited = transmit("--count 33");
    QCOMPARE(onlyOf(limited, 1, Direction::Sent).size() + onlyOf(limited, 2, Direction::Sent).size(), std::size_t(33));

    QProcess process; // until it is interrupted
    start(&process, words("transmit --record - --record-format candump") + kRates + QStringList(list));
    QTRY_VERIFY_WITH_TIMEOUT(process.bytesAvailable() > 0, kTimeoutMs);
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    const Ended ended = end(&process);
    QVERIFY2(ended.code == 0, ended.errors.constData());
    QVERIFY2(ended.errors.contains(QByteArray::number(ended.out.count('\n') / 2) + " frames sent"), // and received
             ended.errors.constData());
}

QTEST_GUILESS_MAIN(TestCli)
#include "test_cli.moc"
