// The command line on recordings alone: converting, showing, counting.
#include "cliprocess.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <csignal>
#include <unistd.h>

using namespace cli;

class TestCliFiles : public QObject
{
    Q_OBJECT

private slots:
    void select_data();
    void select();
    void showsJson();
    void tableOfSignals();
    void exactValues();
    void timesOfDay_data();
    void timesOfDay();
    void livePipe_data();
    void livePipe();
    void keepsItsInput_data();
    void keepsItsInput();
    void manyFiles();
    void baseline();

private:
    const Folder folder_;
};

void TestCliFiles::select_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("log");
    const QString all = "(0000000001.000000) can0 123#11\n(0000000002.500000) can1 124#22\n"
                        "(0000000003.000000) can0 1F334455#33 T\n";
    const QStringList lines = all.split('\n');
    QTest::newRow("everything") << "" << all;
    QTest::newRow("identifiers") << "--id 124,1F000000..1FFFFFFF" << lines[1] + '\n' + lines[2] + '\n';
    QTest::newRow("lists, repeated") << "--id 123 --channels 2 --id 124 --channels 1"
                                     << lines[0] + '\n' + lines[1] + '\n';
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

void TestCliFiles::select()
{
    QFETCH(QString, options);
    QFETCH(QString, log);
    const QByteArray input = "(1.0) can0 123#11\n(2.5) can1 124#22\n(3.0) can0 1F334455#33 T\n";
    const Ended ended = run(words("convert - - --format candump") + options.split(' ', Qt::SkipEmptyParts), input);
    QVERIFY2(ended.code == 0, ended.errors.constData());
    QCOMPARE(QString::fromLatin1(ended.out), log);
}

void TestCliFiles::showsJson()
{
    const QString database =
        folder_.write("one.dbc", "BU_: A\nBO_ 291 Engine: 8 A\n SG_ Speed : 0|16@1+ (0.5,0) [0|0] \"rpm\" A\n");
    const Ended ended = run(words("show - --json --dbc") << database,
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

void TestCliFiles::tableOfSignals()
{
    const QString database =
        folder_.write("two.dbc", "BU_: A\nBO_ 291 Engine: 8 A\n SG_ Mode M : 0|8@1+ (1,0) [0|0] \"\" A\n"
                                 " SG_ Speed m1 : 8|16@1+ (0.5,0) [0|0] \"rpm\" A\n"
                                 "BO_ 292 Doors: 1 A\n SG_ Open : 0|8@1+ (1,0) [0|0] \"a,b\" A\n");
    const Ended ended = run(words("convert - - --format csv --signals Doors,Speed --dbc") << database,
                            "(1.5) can1 123#01E803\n(1.6) can1 123#02E803\n(1.7) can0 125#\n(2.0) can0 124#07\n");
    QVERIFY2(ended.code == 0, ended.errors.constData());
    QCOMPARE(ended.out, QByteArray("time [s],channel,Doors.Open [a,b],Engine.Speed [rpm]\n1.500000,2,,500\n"
                                   "2.000000,1,7,\n")
                            .replace("Doors.Open [a,b]", "\"Doors.Open [a,b]\""));
    const Ended all = run(words("convert - - --format csv --dbc") << database, "(2.0) can0 124#07\n");
    QCOMPARE(all.out.split('\n').value(1), QByteArray("2.000000,1,,,7"));
    const Ended frames = run(words("convert - - --format csv --signals none --dbc") << database, "(2.0) can0 124#07\n");
    QVERIFY2(frames.out.contains(",0x124,"), frames.out.constData());
    const Ended unknown = run(words("convert - - --format csv --signals Nothing --dbc") << database);
    QVERIFY2(unknown.code == 2 && unknown.errors.contains("Nothing"), unknown.errors.constData());
}

void TestCliFiles::exactValues()
{
    const QString database =
        folder_.write("wide.dbc", "BU_: A\nBO_ 291 Wide: 8 A\n SG_ U : 0|64@1+ (1,0) [0|0] \"\" A\n"
                                  " SG_ S : 0|64@1- (-1,5) [0|0] \"\" A\n"
                                  " SG_ D : 0|64@1- (1,0) [0|0] \"\" A\n"
                                  "SIG_VALTYPE_ 291 D : 2;\n");
    const QByteArray log = "(1.0) can0 123#FFFFFFFFFFFFFF7F\n(2.0) can0 123#0100000000000080\n";
    const Ended table = run(words("convert - - --format csv --dbc") << database, log);
    QVERIFY2(table.out.endsWith("1.000000,1,9223372036854775807,-9223372036854775802,nan\n"
                                "2.000000,1,9223372036854775809,9223372036854775812,-5e-324\n"),
             table.out.constData());
    const Ended json = run(words("show - --json --dbc") << database, log);
    QVERIFY2(json.out.contains("{\"U\":9223372036854775807,\"S\":-9223372036854775802,\"D\":null}"),
             json.out.constData());
}

void TestCliFiles::timesOfDay_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("log");
    QTest::newRow("stay") << ""
                          << "(0000086399.000000) can0 123#11\n(0000086401.500000) can0 124#\n";
    QTest::newRow("chosen by the time since the first") << "--from 2 --to 3"
                                                        << "(0000086401.500000) can0 124#\n";
    QTest::newRow("relative") << "--times relative --to 0"
                              << "(0000000000.000000) can0 123#11\n";
    QTest::newRow("a start given") << "--start 1398128223 --from 1"
                                   << "(1398128225.500000) can0 124#\n";
}

// A recording that has times of day, and no date, across midnight.
void TestCliFiles::timesOfDay()
{
    QFETCH(QString, options);
    QFETCH(QString, log);
    const Ended csv = run(words("convert - - --format csv"), "(86399.0) can0 123#11\n(86401.5) can0 124#\n");
    QVERIFY2(csv.out.contains("23:59:59.000") && csv.out.contains("00:00:01.500"), csv.out.constData());
    const Ended ended = run(words("convert - - --format candump") + options.split(' ', Qt::SkipEmptyParts), csv.out);
    QCOMPARE(QString::fromLatin1(ended.out), log);
    QCOMPARE(run(words("convert - - --format csv"), csv.out).out, csv.out);
}

void TestCliFiles::livePipe_data()
{
    QTest::addColumn<QString>("input");
    QTest::newRow("standard input") << "-";
    QTest::newRow("a pipe by name") << "/dev/stdin";
}

// A line goes through as soon as it is there, after an interrupt too; the writer's silence is the end then.
void TestCliFiles::livePipe()
{
    QFETCH(QString, input);
    QProcess process;
    start(&process, words("convert --format candump") << input << "-");
    QByteArray out;
    for (const char *line : {"(0000000001.000000) can0 123#11\n", "(0000000002.000000) can0 124#22\n"}) {
        process.write(line);
        QTRY_VERIFY_WITH_TIMEOUT((out += process.readAllStandardOutput()).endsWith(line), kTimeoutMs);
        ::kill(static_cast<pid_t>(process.processId()), out.count('\n') == 1 ? SIGINT : 0);
    }
    const Ended ended = end(&process);
    QVERIFY2(ended.code == 0 && ended.errors.contains(": 2 frames"), ended.errors.constData());
}

void TestCliFiles::keepsItsInput_data()
{
    QTest::addColumn<QString>("command");
    for (const char *command : {"convert --nanoseconds", "replay --record", "statistics --learn"})
        QTest::newRow(command) << command;
}

// Not even under another name of the same file.
void TestCliFiles::keepsItsInput()
{
    QFETCH(QString, command);
    const QByteArray log = "(1.0) can0 123#11\n";
    const QString file = folder_.write("kept.log", log);
    const QString other = folder_.path("other.log");
    QVERIFY(QFile::exists(other) || ::link(qPrintable(file), qPrintable(other)) == 0);
    QCOMPARE(run(command.split(' ') << other << file).code, 2);
    QFile kept(file);
    QVERIFY(kept.open(QIODevice::ReadOnly) && kept.readAll() == log);
}

void TestCliFiles::manyFiles()
{
    QVERIFY(QDir(folder_.path(".")).mkdir("into"));
    QStringList inputs;
    for (int i = 0; i < 8; ++i) {
        inputs << folder_.write(QString("many%1.log").arg(i), QByteArray("(1.0) can0 00") + char('0' + i) + "#\n");
    }
    const Ended ended = run(words("convert -j 3 --format trc --into") << folder_.path("into") << inputs);
    QVERIFY2(ended.code == 0, ended.errors.constData());
    for (int i = 0; i < inputs.size(); ++i) {
        const auto frames = folder_.read(QString("into/many%1.trc").arg(i)).frames;
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
    inputs[3] = folder_.path("none.log");
    QCOMPARE(run(words("statistics") + inputs).code, 1);
}

void TestCliFiles::baseline()
{
    QByteArray log;
    for (int i = 0; i < 40; ++i)
        log += "(" + QByteArray::number(1 + i * 0.1, 'f', 3) + ") can0 " + (i % 2 ? "124" : "123") + "#00\n";
    const Ended learned = run(words("statistics - --learn") << folder_.path("baseline.json"), log);
    QVERIFY2(learned.code == 0, learned.errors.constData());
    QCOMPARE(run(words("statistics - --check") << folder_.path("baseline.json"), log).code, 0);
    // Only what is chosen is expected.
    QCOMPARE(run(words("statistics - --id 123 --check") << folder_.path("baseline.json"), log).code, 0);
    const Ended lacking =
        run(words("statistics - --id 124,125 --check") << folder_.path("baseline.json"), "(1.0) can0 125#\n");
    QVERIFY2(lacking.code == 1 && lacking.out.contains("124 missing") && !lacking.out.contains("123"),
             lacking.out.constData());
    // What a database says of both; only the channel with frames is held against it.
    const QString database = folder_.write(
        "cycles.dbc", "BU_: A\nBO_ 291 One: 8 A\nBO_ 292 Two: 8 A\nBA_DEF_ BO_ \"GenMsgCycleTime\" INT 0 9000;\n"
                      "BA_DEF_DEF_ \"GenMsgCycleTime\" 200;\n");
    const QStringList check = words("statistics - --check-dbc --dbc") << database;
    const Ended kept = run(check, log);
    QVERIFY2(kept.code == 0, (kept.out + kept.errors).constData());
    const Ended early = run(check, log + "(4.9) can0 123#\n(5.0) can0 7FF#\n");
    QCOMPARE(early.code, 1);
    QVERIFY2(early.out.contains("123 One early") && early.out.contains("7FF new"), early.out.constData());
    const Ended silent = run(check, "(5.0) can0 7FF#\n");
    QVERIFY2(silent.code == 1 && silent.out.contains("124 Two missing"), silent.out.constData());
    QCOMPARE(run(words("statistics - --check-dbc"), log).code, 2);
    const Ended slower = run(words("statistics - --json --tolerance 5 --check") << folder_.path("baseline.json"),
                             "(1.0) can0 123#\n(1.0) can0 124#\n(1.4) can0 123#\n(1.4) can0 124#\n(1.4) can0 125#\n");
    QCOMPARE(slower.code, 1);
    const QJsonArray violations = QJsonDocument::fromJson(slower.out).object()["violations"].toArray();
    QCOMPARE(violations.size(), 1);
    QCOMPARE(violations[0].toObject()["kind"].toString(), QStringLiteral("new"));
}

QTEST_GUILESS_MAIN(TestCliFiles)
#include "test_clifiles.moc"
