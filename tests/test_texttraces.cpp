// What is particular to each text format of recordings.
#include "tracecontract.h"

#include "device/language.h"
#include "traces/asctrace.h"

#include <QTextCodec>
#include <QtTest>

namespace
{

constexpr std::int64_t kSecond = 1000000000;
constexpr std::int64_t kStart = 1398128223 * kSecond + 803317000;

} // namespace

class TestTextTraces : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setLanguageCode(English); }

    void candumpLines_data()
    {
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("can0 123#0102") << QByteArray("1 rx 123 2 0102");
        QTest::newRow("can1 00000123#0102 T") << QByteArray("2 tx 123x 2 0102");
        QTest::newRow("slcan 123#R8 R") << QByteArray("1 rx 123 r 8");
        QTest::newRow("can0 123##6AABB") << QByteArray("1 rx 123 2 aabb fd esi");
        QTest::newRow("can0 123#1122334455667788_C T") << QByteArray("1 tx 123 8 1122334455667788 dlc 12");
        QTest::newRow("can0 20000088#0000000000000000") << QByteArray("1 rx 88 error 8 0000000000000000");
        QTest::newRow("can0 123#0102 X") << QByteArray("line 1");
        QTest::newRow("can0 20000088#R") << QByteArray("line 1");
    }
    void candumpLines()
    {
        QFETCH(QByteArray, expected);
        const QByteArray line = QByteArray("(1.5) ") + QTest::currentDataTag();
        QCOMPARE(textsOf(readTrace(line + "\r\n", TraceFormat::Candump)), QString::fromLatin1(expected));
    }

    void candumpFiles()
    {
        const ReadTrace read = readTrace("# noise\n\n(1398128223.000000001) vcan3 001#\n(1398128222.5) bus 002#\n"
                                         "(1398128223.0) can3 003#\n(1398128223.0) vcan3 004#\n(1398128223.0) c99999 "
                                         "005#\n(1398128223.0) c4367 006#\n");
        QVERIFY(!read.error);
        QCOMPARE(*read.start, 1398128223 * kSecond + 1);
        QCOMPARE(read.frames[1].time, -kSecond / 2 - 1);
        QByteArray channels;
        for (const RawFrame &frame : read.frames)
            channels += QByteArray::number(frame.channel) + ' ';
        QCOMPARE(channels, QByteArray("4 1 2 4 3 4368 "));

        RawFrame frame;
        frame.time = -1;
        TraceWriterOptions options;
        options.nanoseconds = true;
        const WrittenTrace early = writeTrace(TraceFormat::Candump, {frame}, options);
        QCOMPARE(early.bytes, QByteArray("(0000000000.000000000) can0 000#\n"));
        QCOMPARE(lossTexts(early.losses), QStringLiteral("time before the recording's start 1"));
        options.startUtc = kStart;
        QCOMPARE(writeTrace(TraceFormat::Candump, {frame}, options).bytes,
                 QByteArray("(1398128223.803316999) can0 000#\n"));
    }

    void ascLines_data()
    {
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *line, const char *expected) { QTest::newRow(line) << QByteArray(expected); };
        row("1  123x   Rx   d 2 0A b  Length = 1 BitCount = 2 ID = 3", "1 rx 123x 2 0a0b");
        row("2\t7FF\tTx\td\tF 01 02 03 04 05 06 07 08", "2 tx 7FF 8 0102030405060708 dlc 15");
        row("1  123   Rx   r", "1 rx 123 r 0");
        row("1  123   Rx   r 5  Length = 0", "1 rx 123 r 5");
        row("1  ErrorFrame ECC: 10100010", "1 rx 0 error 0");
        row("CANFD   5 Tx ErrorFrame Not Acknowledge error", "5 tx 0 error 0  fd");
        row("CANFD 1 Rx 30a  Name_1 1 1 8  8 01 02 03 04 05 06 07 08 102203 133 307000 e0006659",
            "1 rx 30A 8 0102030405060708 fd brs esi");
        row("CANFD 1 Tx 30ax 1 0 9 12 01 02 03 04 05 06 07 08 09 0a 0b 0c",
            "1 tx 30Ax 12 0102030405060708090a0b0c fd brs");
        row("CANFD 1 Rx 30a 0 0 3  0  102203 133 10 e0006659", "1 rx 30A r 3");
        row("CANFD 1 Rx 30a 0 0 8  8 01 02 03 04 05 06 07 08 0 0 0 0", "1 rx 30A 8 0102030405060708");
        for (const char *noFrame :
             {"1  Statistic: D 1 R 0 XD 0 XR 0 E 0 O 0 B 0.1%", "1  123 TxRq d 1 00",
              "CAN 1 Status:chip status error active", "SV: 3 0 1 ::a = 1", "Start of measurement"})
            row(noFrame, "");
        for (const char *damaged :
             {"1  800  Rx d 0", "1  123 Rx d 2 00", "1  123 Rx d 2 00 1FF", "0  123 Rx d 0", "1  123 Rx q 0",
              "1  123 Rx d", "CANFD 1 Rx 123 0 0 9 65 00", "CANFD 1 Rx 123 0", ""})
            row(damaged, "line 2");
    }
    void ascLines()
    {
        QFETCH(QByteArray, expected);
        const QByteArray line = QByteArray(" 0.5 ") + QTest::currentDataTag();
        const ReadTrace read = readTrace("base hex  timestamps absolute\n" + line + "\n");
        QCOMPARE(textsOf(read), QString::fromLatin1(expected));
        QCOMPARE(read.skipped, 0u);
    }

    void ascFiles()
    {
        const ReadTrace read = readTrace("date Mit M\xE4r 7 11:30:05.250 pm 2018\nbase dec timestamps relative\n"
                                         "// a comment\nBegin Triggerblock Mit Mar 7 11:30:05.250 pm 2018\n"
                                         "0.25 1 Statistic: D 0\n0.5 1 291 Rx d 2 255 16\n1.000000001 1 291x Tx d 0\n"
                                         "0.1 1 EngineData Rx d 0\nEnd TriggerBlock");
        QVERIFY(!read.error);
        QCOMPARE(textsOf(read), QStringLiteral("1 rx 123 2 ff10\n1 tx 123x 0"));
        QCOMPARE(read.frames[1].time, 1750000001);
        QCOMPARE(read.skipped, 1u);
        const QDateTime start(QDate(2018, 3, 7), QTime(23, 30, 5, 250));
        QCOMPARE(*read.start, start.toMSecsSinceEpoch() * 1000000);
    }

    void ascDates()
    {
        const QDateTime day(QDate(2017, 9, 30), QTime(15, 6, 13, 191));
        for (const char *text :
             {"Sat Sep 30 15:06:13.191 2017", "Sam Sep 30 03:06:13.191 PM 2017", "sep 30 3:06:13.191 pm 2017"})
            QCOMPARE(parseAscDate(text).value_or(0), day.toMSecsSinceEpoch() * 1000000);
        QCOMPARE(QString::fromStdString(ascDateText(day.toMSecsSinceEpoch() * 1000000 + 999999)),
                 QStringLiteral("Sat Sep 30 15:06:13.191 2017"));
        const QDateTime midnight(QDate(2017, 12, 1), QTime(0, 0, 1));
        QCOMPARE(parseAscDate("Fre Dez 1 12:00:01 am 2017").value_or(0), midnight.toMSecsSinceEpoch() * 1000000);
        for (const char *text : {"", "Sat Sep 31 15:06:13 2017", "Sat Sep 30 2017", "Sat Sep 30 25:06:13 2017"})
            QVERIFY2(!parseAscDate(text), text);
    }

    void csvRows_data()
    {
        QTest::addColumn<QByteArray>("row");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const char *text, const char *expected) {
            QTest::newRow(name) << QByteArray(text) << QByteArray(expected);
        };
        row("english", "0x51B2,1,Rx,0x0C4,Standard Frame,data frame,2,CAN,x| 39 3A ", "1 rx C4 2 393a");
        row("simplified", "无,2,Tx,0x000000C4,扩展帧,远程帧,8,CAN,x| ", "2 tx C4x r 8");
        row("traditional", "0.5,3,Rx,0x0C4,標準幀,數據幀,1,CANFD-加速,x| 39 ", "3 rx C4 1 39 fd brs");
        row("bytes missing", "0x0,1,Rx,0x0C4,Standard Frame,data frame,3,CANFD,x| 39 1", "1 rx C4 3 390100 fd");
        for (const char *noFrame :
             {"0x0,1,Rx,0x8C4,Standard Frame,data frame,0,CAN,x| ", "0x0,0,Rx,0x0C4,a,b,0,CAN,x| ",
              "0x0,1,Rx,0x0C4,Standard Frame,data frame,1,CAN,x| 3Z ", "0x0,1,Rx,0C4,a,b,0,CAN,x| ",
              "0x0,1,Rx,0x0C4,a,b"})
            row(noFrame, noFrame, "");
    }
    void csvRows()
    {
        QFETCH(QByteArray, row);
        QFETCH(QByteArray, expected);
        const QByteArray file = "index,t,s,c,d,ID,Frame,t,DLC,CAN-FD,data\n1,=\"11:48:48.507\"," + row + '\n';
        const QByteArray chinese = QTextCodec::codecForName("GB18030")->fromUnicode(QString::fromUtf8(file));
        for (const QByteArray &bytes : {"\xEF\xBB\xBF" + file, chinese}) {
            const ReadTrace read = readTrace(bytes);
            QCOMPARE(textsOf(read), QString::fromLatin1(expected));
            QCOMPARE(read.skipped, expected.isEmpty() ? 1u : 0u);
        }
    }

    void csvTimes()
    {
        QByteArray file = "index,t,s,c,d,ID,Frame,t,DLC,CAN-FD,data\n";
        const auto add = [&file](const char *time, const char *stamp) {
            file += QByteArray("1,") + time + ',' + stamp + ",1,Rx,0x0C4,Standard Frame,data frame,0,CAN,x| \n";
        };
        add("=\"23:59:59.900\"", "0x64");
        add("23:59:59.901", "0x3E8");    // the stamp is finer
        add("=\"00:00:00.100\"", "无");  // past midnight
        add("=\"23:59:59.950\"", "无");  // back again
        add("=\"00:00:05.000\"", "0x0"); // the adapter has been opened anew
        add("garbage", "0x1");
        const std::int64_t evening = (86400 * 1000 - 100) * (kSecond / 1000);
        QList<qint64> times;
        for (const RawFrame &frame : readTrace(file).frames)
            times << (frame.time - evening) / 1000;
        QCOMPARE(times, (QList<qint64>{0, 900, 200000, 50000, 5100000, 5100000}));
    }
};

QTEST_APPLESS_MAIN(TestTextTraces)
#include "test_texttraces.moc"
