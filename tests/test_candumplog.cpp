#include "device/driver/simulated/candumplog.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sstream>

class TestCandumpLog : public QObject
{
    Q_OBJECT

private slots:
    void lines_data()
    {
        // expected: identifier word, length, data, then "fd" and "switched" where they hold; else why there is no frame
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const QByteArray &line, const char *expected) {
            QTest::newRow(name) << line << QByteArray(expected);
        };
        row("classic", "(1.000002) can0 166#D0320009", "166 4 d0320009");
        row("no data", "(1.000002) can0 000#", "0 0 ");
        row("eight bytes", "(1.000002) vcan12 7FF#0011223344556677", "7ff 8 0011223344556677");
        row("extended", "(1.000002) can0 1F334455#1122", "9f334455 2 1122");
        row("extended zero", "(1.000002) can0 00000001#1122", "80000001 2 1122");
        row("lower case", "(1.000002) can0 1ab#ff", "1ab 1 ff");
        row("remote", "(1.000002) can0 123#R", "40000123 0 ");
        row("remote with length", "(1.000002) can0 123#R4", "40000123 4 00000000");
        row("remote with length 9", "(1.000002) can0 00000123#R9", "c0000123 8 0000000000000000");
        row("raw length code", "(1.000002) can0 123#1122334455667788_E", "123 8 1122334455667788");
        row("FD, switched", "(1.000002) can0 123##1DEADBEEF", "123 4 deadbeef fd switched");
        row("FD", "(1.000002) can0 123##0", "123 0  fd");
        row("FD, error state", "(1.000002) can0 1F334455##2AA", "9f334455 1 aa fd");
        row("FD 12", "(1.000002) can0 123##3000102030405060708090A0B", "123 12 000102030405060708090a0b fd switched");
        row("FD 9 is padded", "(1.000002) can0 123##0000102030405060708", "123 12 000102030405060708000000 fd");
        row("FD 64", "(1.000002) can0 123##1" + QByteArray(128, 'A'),
            ("123 64 " + QByteArray(128, 'a') + " fd switched").constData());
        row("direction behind", "(1.000002) can0 123#11 R", "123 1 11");

        row("error frame", "(1.000002) can0 20000080#0000000000000000", "error");
        row("flags above the error flag", "(1.000002) can0 C0000123#11", "malformed");
        row("standard too large", "(1.000002) can0 800#11", "malformed");
        row("four digits", "(1.000002) can0 1234#11", "malformed");
        row("nine digits", "(1.000002) can0 123456789#11", "malformed");
        row("half a byte", "(1.000002) can0 123#112", "malformed");
        row("nine bytes", "(1.000002) can0 123#112233445566778899", "malformed");
        row("65 FD bytes", "(1.000002) can0 123##1" + QByteArray(130, 'A'), "malformed");
        row("FD without flags", "(1.000002) can0 123##", "malformed");
        row("garbage behind", "(1.000002) can0 123#11zz", "malformed");
        row("no interface", "(1.000002) 123#11", "malformed");
        row("no time", "can0 123#11", "malformed");
        row("no fraction", "(1) can0 123#11", "malformed");
        row("time out of range", "(99999999999999999999.000000) can0 123#11", "malformed");
        row("fraction too long", "(1.0000000001) can0 123#11", "malformed");
        row("negative time", "(-1.000002) can0 123#11", "malformed");
        row("no mark", "(1.000002) can0 12311", "malformed");
        row("bytes above 127", "(1.000002) can0 \xff\xfe#11", "malformed");
        row("a zero byte", QByteArray("(1.000002) can0 123#11\0", 23), "malformed");
        row("cut", "(1.000002) can0", "malformed");
        row("only a bracket", "(", "malformed");
    }
    void lines()
    {
        QFETCH(QByteArray, line);
        QFETCH(QByteArray, expected);
        LoggedFrame read{};
        const CandumpLine kind = parseCandumpLine(line.toStdString(), &read);
        if (kind != CandumpLine::Frame) {
            QCOMPARE(QByteArray(kind == CandumpLine::ErrorFrame ? "error" : "malformed"), expected);
            return;
        }
        const BusFrame &frame = read.frame;
        QByteArray text = QByteArray::number(frame.id, 16) + ' ' + QByteArray::number(frame.length) + ' ' +
                          QByteArray(reinterpret_cast<const char *>(frame.data), frame.length).toHex();
        text += frame.fd ? " fd" : "";
        text += frame.bitRateSwitch ? " switched" : "";
        QCOMPARE(text, expected);
        QCOMPARE(read.time, BusTime(1000002000));
    }

    void times()
    {
        LoggedFrame read{};
        QCOMPARE(parseCandumpLine("(1398128223.803317) can0 166#", &read), CandumpLine::Frame);
        QCOMPARE(read.time, BusTime(1398128223803317000));
        QCOMPARE(parseCandumpLine("(0.5) can0 166#", &read), CandumpLine::Frame);
        QCOMPARE(read.time, BusTime(500000000));
        QCOMPARE(parseCandumpLine("(000.000000001) can0 166#", &read), CandumpLine::Frame);
        QCOMPARE(read.time, BusTime(1));
    }

    void wholeFiles()
    {
        std::string text = "(1.0) can0 001#\r\n\n   \n(1.1) can0 20000001#\n(1.2) can0 00?garbage\n";
        text += "(1.3) can0 002#" + std::string(1 << 20, 'A') + "\n"; // a line without end in sight
        text += std::string("\0\xff\x80\n", 4);
        text += "(0.9) can1 003##1AA\n(1.4) can0 004#"; // the last line has no line end
        std::istringstream stream(text);
        const CandumpLog log = readCandumpLog(stream);
        QCOMPARE(log.frames.size(), std::size_t(3));
        QCOMPARE(log.frames[0].frame.id, 1u);
        QCOMPARE(log.frames[1].frame.id, 3u);
        QCOMPARE(log.frames[2].frame.id, 4u);
        QCOMPARE(log.errorFrames, std::size_t(1));
        QCOMPARE(log.malformed, std::size_t(3));
        QVERIFY(!log.cut);
    }

    void filesThatHoldNothing()
    {
        const QTemporaryDir dir;
        CandumpLog log;
        QVERIFY(!loadCandumpLog(dir.filePath("missing.log").toStdString(), &log));
        QVERIFY(!loadCandumpLog(dir.path().toStdString(), &log));
        QFile file(dir.filePath("empty.log"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!loadCandumpLog(file.fileName().toStdString(), &log));
        file.write("no frame at all\n");
        file.flush();
        QVERIFY(!loadCandumpLog(file.fileName().toStdString(), &log));
        file.write("(1.0) can0 123#11\n");
        file.flush();
        QVERIFY(loadCandumpLog(file.fileName().toStdString(), &log));
        QCOMPARE(log.malformed, std::size_t(1));
    }
};

QTEST_APPLESS_MAIN(TestCandumpLog)
#include "test_candumplog.moc"
