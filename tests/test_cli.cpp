// The command line as its users run it: the built program, the simulated adapter on a quiet bus, files, pipes, signals.
#include "tracecontract.h"

#include "frames/rawrecords.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

namespace
{

constexpr int kTimeoutMs = 60000;
const QStringList kRates{QStringLiteral("--rate"), QStringLiteral("500k/2M")};

struct Ended {
    int code = -1;
    QByteArray out;
    QByteArray errors;
};

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

void start(QProcess *process, const QStringList &arguments, const char *traffic = "off")
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("OSTREL_DRIVER"), QStringLiteral("simulated"));
    environment.insert(QStringLiteral("OSTREL_SIM_TRACE"), QLatin1String(traffic));
    process->setProcessEnvironment(environment);
    process->start(QStringLiteral(OSTREL_CLI), arguments);
}

Ended end(QProcess *process)
{
    Ended ended;
    if (process->waitForFinished(kTimeoutMs) && process->exitStatus() == QProcess::NormalExit)
        ended.code = process->exitCode();
    ended.out = process->readAllStandardOutput();
    ended.errors = process->readAllStandardError();
    return ended;
}

Ended run(const QStringList &arguments, const QByteArray &input = {}, const char *traffic = "off")
{
    QProcess process;
    start(&process, arguments, traffic);
    process.write(input);
    process.closeWriteChannel();
    return end(&process);
}

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
    void select_data();
    void select();
    void showsJson();
    void tableOfSignals();
    void endsWith_data();
    void endsWith();
    void livePipe();
    void recordsToAPipe();
    void interrupted_data();
    void interrupted();
    void manyFiles();
    void baseline();
    void rowsOfFiles();
    void generates();
    void transmitsAList();

private:
    QString path(const char *name) const { return folder_.filePath(QLatin1String(name)); }
    ReadTrace read(const QString &name) const
    {
        QFile file(name);
        file.open(QIODevice::ReadOnly);
        return readTrace(&file, {}, name);
    }
    void write(const QString &name, const QByteArray &content) const
    {
        QFile file(name);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

    QTemporaryDir folder_;
    std::vector<RawFrame> sent_;
    std::vector<RawFrame> recorded_; // both directions of both channels
};

void TestCli::initTestCase()
{
    sent_ = sendableFrames();
    TraceWriterOptions options;
    options.startUtc = 1398128223803317000;
    write(path("in.blf"), writeTrace(TraceFormat::Blf, sent_, options).bytes);
    const Ended ended = run(words("replay --record") << path("first.blf") << path("in.blf") << kRates);
    QVERIFY2(ended.code == 0, ended.errors.constData());
    recorded_ = read(path("first.blf")).frames;
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
    const QString converted = path("converted.") + traceFormatEnding(limits.format);
    const Ended conversion = run(words("convert") << path("first.blf") << converted);
    QVERIFY2(conversion.code == 0, conversion.errors.constData());
    if (limits.format == TraceFormat::Pcapng) {
        QVERIFY(QFileInfo(converted).size() > static_cast<qint64>(recorded_.size()) * 16);
        return;
    }
    const QString backAgain = path("back.blf");
    QCOMPARE(run(words("convert") << converted << backAgain).code, 0);
    QCOMPARE(difference(read(backAgain).frames, heldBy(limits, recorded_), limits.resolution), QString());
    const QString again = path("again.blf");
    const Ended replay = run(words("replay --speed 4 --filter tx --record") << again << converted << kRates);
    QVERIFY2(replay.code == 0, replay.errors.constData());
    const std::vector<RawFrame> frames = read(again).frames;
    for (unsigned channel : {1u, 2u})
        for (Direction direction : {Direction::Received, Direction::Sent})
            QCOMPARE(difference(onlyOf(frames, channel, direction), onlyOf(recorded_, channel, direction), 0),
                     QString());
}

void TestCli::select_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("log");
    const QString all = "(0000000001.000000) can0 123#11\n(0000000002.500000) can1 124#22\n"
                        "(0000000003.000000) can0 1F334455#33 T\n";
    const QStringList lines = all.split('\n');
    QTest::newRow("everything") << "" << all;
    QTest::newRow("identifiers") << "--id 124,1F000000..1FFFFFFF" << lines[1] + '\n' + lines[2] + '\n';
    QTest::newRow("mask") << "--id 120/7F4" << lines[0] + '\n';
    QTest::newRow("channel") << "--channels 2" << lines[1] + '\n';
    QTest::newRow("time") << "--from 2 --to 2.5" << lines[1] + '\n';
    QTest::newRow("filter") << "--filter tx" << lines[2] + '\n';
    QTest::newRow("all of them") << "--from 2 --channels 1" << lines[2] + '\n';
    QTest::newRow("start") << "--id 123 --start 1398128223"
                           << "(1398128224.000000) can0 123#11\n";
    QTest::newRow("relative") << "--id 123 --start 1398128223 --times relative" << lines[0] + '\n';
    QTest::newRow("nanoseconds") << "--id 123 --nanoseconds"
                                 << "(0000000001.000000000) can0 123#11\n";
}

void TestCli::select()
{
    QFETCH(QString, options);
    QFETCH(QString, log);
    const QByteArray input = "(1.0) can0 123#11\n(2.5) can1 124#22\n(3.0) can0 1F334455#33 T\n";
    const Ended ended = run(words("convert - - --format candump") + options.split(' ', Qt::SkipEmptyParts), input);
    QVERIFY2(ended.code == 0, ended.errors.constData());
    QCOMPARE(QString::fromLatin1(ended.out), log);
}

void TestCli::showsJson()
{
    write(path("one.dbc"), "BU_: A\nBO_ 291 Engine: 8 A\n SG_ Speed : 0|16@1+ (0.5,0) [0|0] \"rpm\" A\n");
    const Ended ended = run(words("show - --json --dbc") << path("one.dbc"),
                            "(1.5) can1 123#1000000000000000 T\n(2.0) can0 1F334455##5AABB\n(3.0) can0 124#R4\n");
    QVERIFY2(ended.code == 0, ended.errors.constData());
    const QList<QByteArray> lines = ended.out.split('\n');
    QCOMPARE(lines.size(), 4);
    const QJsonObject first = QJsonDocument::fromJson(lines[0]).object();
    const QJsonObject expected{{"time", 1.5},         {"channel", 2},
                               {"direction", "tx"},   {"id", 291},
                               {"extended", false},   {"remote", false},
                               {"fd", false},         {"brs", false},
                               {"esi", false},        {"error", false},
                               {"length", 8},         {"data", "1000000000000000"},
                               {"message", "Engine"}, {"signals", QJsonObject{{"Speed", 8}}}};
    QCOMPARE(first, expected);
    const QJsonObject second = QJsonDocument::fromJson(lines[1]).object();
    QVERIFY(second["fd"].toBool() && second["brs"].toBool() && second["extended"].toBool());
    QVERIFY(!second.contains("message"));
    const QJsonObject third = QJsonDocument::fromJson(lines[2]).object();
    QVERIFY(third["remote"].toBool() && third["length"].toInt() == 4 && third["data"].toString().isEmpty());
}

void TestCli::tableOfSignals()
{
    write(path("two.dbc"), "BU_: A\nBO_ 291 Engine: 8 A\n SG_ Mode M : 0|8@1+ (1,0) [0|0] \"\" A\n"
                           " SG_ Speed m1 : 8|16@1+ (0.5,0) [0|0] \"rpm\" A\n"
                           "BO_ 292 Doors: 1 A\n SG_ Open : 0|8@1+ (1,0) [0|0] \"a,b\" A\n");
    const Ended ended = run(words("convert - - --format csv --signals Doors,Speed --dbc") << path("two.dbc"),
                            "(1.5) can1 123#01E803\n(1.6) can1 123#02E803\n(1.7) can0 125#\n(2.0) can0 124#07\n");
    QVERIFY2(ended.code == 0, ended.errors.constData());
    QCOMPARE(ended.out, QByteArray("time [s],channel,Doors.Open [a,b],Engine.Speed [rpm]\n1.500000,2,,500\n"
                                   "2.000000,1,7,\n")
                            .replace("Doors.Open [a,b]", "\"Doors.Open [a,b]\""));
    const Ended unknown = run(words("convert - - --format csv --signals Nothing --dbc") << path("two.dbc"));
    QVERIFY2(unknown.code == 2 && unknown.errors.contains("Nothing"), unknown.errors.constData());
}

void TestCli::endsWith_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("told"); // on the standard error
    const QByteArray log = "(1.0) can0 123#11\n";
    QTest::newRow("no command") << QStringList() << QByteArray() << 2 << QByteArray("Usage");
    QTest::newRow("unknown command") << words("fly") << QByteArray() << 2 << QByteArray("fly");
    QTest::newRow("unknown option") << words("show --fly") << QByteArray() << 2 << QByteArray("fly");
    QTest::newRow("help") << words("replay --help") << QByteArray() << 0 << QByteArray();
    QTest::newRow("operands missing") << words("convert x.blf") << QByteArray() << 2 << QByteArray("output");
    QTest::newRow("unknown format") << words("convert - - --format wav") << log << 2 << QByteArray("wav");
    QTest::newRow("no format") << words("convert - -") << log << 2 << QByteArray("--format");
    QTest::newRow("wrong filter") << words("show - --filter id") << log << 2 << QByteArray("character 3");
    QTest::newRow("wrong number") << words("generate --count many") << QByteArray() << 2 << QByteArray("many");
    QTest::newRow("wrong rate") << words("record --rate fast x.blf") << QByteArray() << 2 << QByteArray("fast");
    QTest::newRow("wrong trigger") << words("record --start-on noon x.blf") << QByteArray() << 2 << QByteArray("noon");
    QTest::newRow("no such device") << words("record --device 7 x.blf") << QByteArray() << 1 << QByteArray("\"7\"");
    QTest::newRow("no such file") << words("show none.asc") << QByteArray() << 1 << QByteArray("none.asc");
    QTest::newRow("empty input") << words("show -") << QByteArray() << 1 << QByteArray("empty");
    QTest::newRow("cut input") << words("show -") << log + "(2.0) can0 12" << 1 << QByteArray("line 2");
    QTest::newRow("no recording") << words("show -") << QByteArray("hello\nworld\n") << 1 << QByteArray("format");
    QTest::newRow("lost in the format") << words("convert - - --format csv") << QByteArray("(1.0) can0 123##2AA\n") << 1
                                        << QByteArray("indicator");
    QTest::newRow("error frames are not sent")
        << words("replay --linger 0 -") << QByteArray("(1.0) can0 20000001#0000000000000000\n") << 1
        << QByteArray("1 frames cannot be sent");
    QTest::newRow("nobody acknowledges") << words("replay --linger 0 --only 1 -") << log << 1
                                         << QByteArray("1 frames were not taken");
    QTest::newRow("channel without adapter") << words("replay --linger 0 -") << QByteArray("(1.0) can4 123#\n") << 1
                                             << QByteArray("1 frames were not taken");
    QTest::newRow("mapped channel") << words("replay --linger 0 --map 5=2 -") << QByteArray("(1.0) can4 123#\n") << 0
                                    << QByteArray("1 frames sent");
    write(path("damaged.json"), transmitList("{\"id\":\"1\"},\n{\"id\":\"800\"}"));
    write(path("one.json"), transmitList("{\"id\":\"1\",\"mode\":\"counted\"}"));
    write(path("keys.json"), transmitList("{\"id\":\"1\",\"mode\":\"request\"},{\"id\":\"2\",\"on\":false}"));
    const QStringList transmit = words("transmit --linger 0");
    QTest::newRow("no list") << words("transmit") << QByteArray() << 2 << QByteArray("one list");
    QTest::newRow("list missing") << transmit + words("none.json") << QByteArray() << 1 << QByteArray("none.json");
    QTest::newRow("damaged list") << transmit + QStringList(path("damaged.json")) << QByteArray() << 1
                                  << QByteArray("entry 2: the field \"id\"");
    QTest::newRow("nothing by itself") << transmit + QStringList(path("keys.json")) << QByteArray() << 1
                                       << QByteArray("nothing to send");
    QTest::newRow("list that nobody acknowledges") << transmit + words("--only 1") + QStringList(path("one.json"))
                                                   << QByteArray() << 1 << QByteArray("1 frames were not taken");
    QTest::newRow("list on another channel") << transmit + words("--only 2") + QStringList(path("one.json"))
                                             << QByteArray() << 1 << QByteArray("not opened");
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

// A line goes through as soon as it is there.
void TestCli::livePipe()
{
    QProcess process;
    start(&process, words("convert - - --input-format candump --format candump"));
    QByteArray out;
    for (const char *line : {"(0000000001.000000) can0 123#11\n", "(0000000002.000000) can0 124#22\n"}) {
        process.write(line);
        QTRY_VERIFY_WITH_TIMEOUT((out += process.readAllStandardOutput()).endsWith(line), kTimeoutMs);
    }
    process.closeWriteChannel();
    QCOMPARE(end(&process).code, 0);
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
    QTest::addColumn<int>("signalNumber");
    QTest::newRow("Ctrl+C") << SIGINT;
    QTest::newRow("request to end") << SIGTERM;
}

void TestCli::interrupted()
{
    QFETCH(int, signalNumber);
    const QString file = path("interrupted.blf");
    QFile::remove(file);
    QProcess process;
    start(&process, words("record") + kRates << file, "");
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(file).size() > 1000, kTimeoutMs); // brought to the disk each second
    ::kill(static_cast<pid_t>(process.processId()), signalNumber);
    const Ended ended = end(&process);
    QVERIFY2(ended.code == 0, ended.errors.constData());
    const ReadTrace trace = read(file);
    QVERIFY(!trace.error && !trace.frames.empty());
    QVERIFY2(ended.errors.contains(QByteArray::number(qulonglong(trace.frames.size())) + " frames in"),
             ended.errors.constData());
}

void TestCli::manyFiles()
{
    QVERIFY(QDir(folder_.path()).mkdir("into"));
    QStringList inputs;
    for (int i = 0; i < 8; ++i) {
        inputs << path(qPrintable(QStringLiteral("many%1.log").arg(i)));
        write(inputs.last(), QByteArray("(1.0) can0 00") + char('0' + i) + "#\n");
    }
    const Ended ended = run(words("convert -j 3 --format trc --into") << path("into") << inputs);
    QVERIFY2(ended.code == 0, ended.errors.constData());
    for (int i = 0; i < inputs.size(); ++i) {
        const auto frames = read(path(qPrintable(QStringLiteral("into/many%1.trc").arg(i)))).frames;
        QVERIFY(frames.size() == 1 && frames[0].id == unsigned(i));
    }
    const Ended counted = run(words("statistics --json -j 3") + inputs);
    QCOMPARE(counted.code, 0);
    const QList<QByteArray> lines = counted.out.trimmed().split('\n');
    QCOMPARE(lines.size(), inputs.size());
    for (int i = 0; i < inputs.size(); ++i) { // in the order of the inputs
        const QJsonObject object = QJsonDocument::fromJson(lines[i]).object();
        QCOMPARE(object["input"].toString(), inputs[i]);
        QCOMPARE(object["identifiers"].toArray()[0].toObject()["id"].toInt(), i);
    }
    inputs[3] = path("none.log");
    QCOMPARE(run(words("statistics") + inputs).code, 1);
}

void TestCli::baseline()
{
    QByteArray log;
    for (int i = 0; i < 40; ++i)
        log += "(" + QByteArray::number(1 + i * 0.1, 'f', 3) + ") can0 " + (i % 2 ? "124" : "123") + "#00\n";
    const Ended learned = run(words("statistics - --learn") << path("baseline.json"), log);
    QVERIFY2(learned.code == 0, learned.errors.constData());
    QCOMPARE(run(words("statistics - --check") << path("baseline.json"), log).code, 0);
    const Ended lacking = run(words("statistics - --id 123 --check") << path("baseline.json"), log);
    QCOMPARE(lacking.code, 1);
    QVERIFY2(lacking.out.contains("124 missing"), lacking.out.constData());
    // What a database says of both; only the channel with frames is held against it.
    QFile database(path("cycles.dbc"));
    QVERIFY(database.open(QIODevice::WriteOnly));
    database.write("BU_: A\nBO_ 291 One: 8 A\nBO_ 292 Two: 8 A\nBA_DEF_ BO_ \"GenMsgCycleTime\" INT 0 9000;\n"
                   "BA_DEF_DEF_ \"GenMsgCycleTime\" 200;\n");
    database.close();
    const QStringList check = words("statistics - --check-dbc --dbc") << path("cycles.dbc");
    const Ended kept = run(check, log);
    QVERIFY2(kept.code == 0, (kept.out + kept.errors).constData());
    const Ended early = run(check, log + "(4.9) can0 123#\n(5.0) can0 7FF#\n");
    QCOMPARE(early.code, 1);
    QVERIFY2(early.out.contains("123 One early") && early.out.contains("7FF new"), early.out.constData());
    const Ended silent = run(check + words("--id 7FF"), log);
    QVERIFY2(silent.code == 1 && silent.out.contains("124 Two missing"), silent.out.constData());
    QCOMPARE(run(words("statistics - --check-dbc"), log).code, 2);
    const Ended slower = run(words("statistics - --json --tolerance 5 --check") << path("baseline.json"),
                             "(1.0) can0 123#\n(1.0) can0 124#\n(1.4) can0 123#\n(1.4) can0 124#\n(1.4) can0 125#\n");
    QCOMPARE(slower.code, 1);
    const QJsonArray violations = QJsonDocument::fromJson(slower.out).object()["violations"].toArray();
    QCOMPARE(violations.size(), 1);
    QCOMPARE(violations[0].toObject()["kind"].toString(), QStringLiteral("new"));
}

void TestCli::rowsOfFiles()
{
    const QString row = path("row.log");
    const Ended ended = run(words("record --rotate-size 4k --keep 2 --count 400 --only 1") + kRates << row, {}, "");
    QVERIFY2(ended.code == 0, ended.errors.constData());
    const QStringList files = QDir(folder_.path()).entryList({"row_*.log"});
    QCOMPARE(files.size(), 2);
    QVERIFY2(!files.contains("row_0001.log"), qPrintable(files.join(' ')));
    const QString triggered = path("triggered.log");
    QCOMPARE(run(words("record --duration 1 --start-on id:0D1 --stop-on id:128 --only 1") + kRates << triggered, {}, "")
                 .code,
             0);
    const auto frames = read(path("triggered_0001.log")).frames;
    QVERIFY(frames.size() >= 2 && frames.front().id == 0x0D1 && frames.back().id == 0x128);
}

void TestCli::generates()
{
    const QString file = path("generated.log");
    const Ended ended =
        run(words("generate --channel 2 --count 20 --interval 0 --brs --id 100..103 --length 16 --record")
            << file << kRates);
    QVERIFY2(ended.code == 0, ended.errors.constData());
    const auto frames = onlyOf(read(file).frames, 1, Direction::Received);
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
        return ran.code == 0 ? onlyOf(read(file).frames, 2, Direction::Received) : std::vector<RawFrame>();
    };
    const auto once = random();
    QCOMPARE(once.size(), std::size_t(30));
    QCOMPARE(difference(random(), once, 0), QString());
}

void TestCli::transmitsAList()
{
    const QString file = path("transmitted.log");
    const QString list = path("list.json");
    write(list, transmitList("{\"id\":\"100\",\"mode\":\"counted\",\"count\":20,\"interval\":5,\"length\":1,"
                             "\"changes\":\"counter 0:8\"},"
                             "{\"id\":\"101\",\"channel\":2,\"interval\":10,\"mode\":\"periodic\"},"
                             "{\"id\":\"102\",\"on\":false}"));
    const auto transmit = [&](const char *options) {
        const Ended ended = run(words("transmit --record") << file << words(options) << list << kRates);
        return ended.code == 0 ? read(file).frames : std::vector<RawFrame>();
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
