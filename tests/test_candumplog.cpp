#include "device/driver/simulated/candumplog.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sstream>

class TestCandumpLog : public QObject
{
    Q_OBJECT

private slots:
    void frames_data()
    {
        // identifier word, length, data, then "fd" and "switched" where they hold
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const QByteArray &text, const QByteArray &expected) {
            QTest::newRow(text.constData()) << expected;
        };
        row("166#D0320009", "166 4 d0320009");
        row("7FF#0011223344556677", "7ff 8 0011223344556677");
        row("1F334455#1122", "9f334455 2 1122");
        row("00000001#1122", "80000001 2 1122");
        row("1ab#ff", "1ab 1 ff");
        row("123#R", "40000123 0 ");
        row("123#R4", "40000123 4 00000000");
        row("00000123#R9", "c0000123 8 0000000000000000");
        row("123#1122334455667788_E", "123 8 1122334455667788"); // the raw length code is not looked at
        row("123##1DEADBEEF", "123 4 deadbeef fd switched");
        row("123##0", "123 0  fd");
        row("1F334455##2AA", "9f334455 1 aa fd"); // the error state is not looked at
        row("123##3000102030405060708090A0B", "123 12 000102030405060708090a0b fd switched");
        row("123##0000102030405060708", "123 12 000102030405060708000000 fd"); // 9 bytes are padded
        row("123##1" + QByteArray(128, 'A'), "123 64 " + QByteArray(128, 'a') + " fd switched");
        row("123#11 R", "123 1 11"); // the direction
    }
    void frames()
    {
        QFETCH(QByteArray, expected);
        LoggedFrame read{};
        const std::string line = std::string("(1.000002) vcan12 ") + QTest::currentDataTag();
        QCOMPARE(parseLoggedLine(line, &read), LoggedLine::Frame);
        const BusFrame &frame = read.frame;
        QByteArray text = QByteArray::number(frame.id, 16) + ' ' + QByteArray::number(frame.length) + ' ' +
                          QByteArray(reinterpret_cast<const char *>(frame.data), frame.length).toHex();
        text += frame.fd ? " fd" : "";
        text += frame.bitRateSwitch ? " switched" : "";
        QCOMPARE(text, expected);
        QCOMPARE(read.time, BusTime(1000002000));
    }

    void noFrames()
    {
        LoggedFrame read{};
        QCOMPARE(parseLoggedLine("(1.000002) can0 20000080#0000000000000000", &read), LoggedLine::ErrorFrame);
        using namespace std::string_literals;
        for (const std::string &text :
             {"C0000123#11"s, "800#11"s, "1234#11"s, "123456789#11"s, "123#112"s, "123#112233445566778899"s,
              "123##1" + std::string(130, 'A'), "123##"s, "123#11zz"s, "12311"s, "\xff\xfe#11"s, "123#11\0"s})
            QVERIFY2(parseLoggedLine("(1.000002) can0 " + text, &read) == LoggedLine::Malformed, text.c_str());
        for (const char *line :
             {"(1.000002) 123#11", "can0 123#11", "(1) can0 123#11", "(99999999999999999999.000000) can0 123#11",
              "(1.0000000001) can0 123#11", "(-1.000002) can0 123#11", "(1.000002) can0", "("})
            QVERIFY2(parseLoggedLine(line, &read) == LoggedLine::Malformed, line);
    }

    void times()
    {
        LoggedFrame read{};
        for (const auto &[text, time] :
             {std::pair("1398128223.803317", BusTime(1398128223803317000)), {"0.5", 500000000}, {"000.000000001", 1}}) {
            QCOMPARE(parseLoggedLine(std::string("(") + text + ") can0 166#", &read), LoggedLine::Frame);
            QCOMPARE(read.time, time);
        }
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
        QFile file(dir.filePath("some.log"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        for (const char *lines : {"", "no frame at all\n", "(1.0) can0 123#11\n"}) {
            file.write(lines);
            file.flush();
            QCOMPARE(loadCandumpLog(file.fileName().toStdString(), &log), *lines == '(');
        }
        QCOMPARE(log.malformed, std::size_t(1));
    }
};

QTEST_APPLESS_MAIN(TestCandumpLog)
#include "test_candumplog.moc"
