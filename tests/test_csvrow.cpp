#include "device/language.h"
#include "frames/csvreader.h"
#include "frames/csvrow.h"
#include "frames/framebuilder.h"
#include "testfolder.h"

#include <QTextCodec>
#include <QtTest>

#include <cstring>

namespace
{

bool parse(const QByteArray &line, CsvFrame &frame)
{
    return parseCsvRow(line.constData(), static_cast<std::size_t>(line.size()), frame);
}

// Index,system time,time stamp,channel,direction,identifier,format,type,length,protocol,data.
QByteArray line(const char *channel, const char *id, const char *format, const char *type, const char *length,
                const char *protocol, const QByteArray &data)
{
    return "1,=\"10:00:00.001\",0x1," +
           QByteArrayList{channel, "Rx", id, format, type, length, protocol, data}.join(',');
}

} // namespace

class TestCsvRow : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { setLanguageCode(SimplifiedChinese); }

    void writtenAsPrescribed()
    {
        ModelItem item;
        QString *const texts[] = {&item.indexText, &item.systemTime,   &item.timeStamp,  &item.channelText,
                                  &item.dirText,   &item.idText,       &item.formatText, &item.typeText,
                                  &item.dlcText,   &item.protocolText, &item.dataText};
        for (int i = 0; i < FrameColumnCount; ++i)
            *texts[i] = QString("帧%1").arg(i);
        QString rows("before\n");
        appendCsvRow(rows, item);
        QCOMPARE(rows, QString("before\n帧0,=\"帧1\",帧2,帧3,帧4,帧5,帧6,帧7,帧8,帧9,帧10\n"));
        QCOMPARE(csvHeaderLine({"a", "b"}), QString("a,b\n"));
    }

    // What is captured in one language is sent as the same frame in any other.
    void roundTrip_data()
    {
        QTest::addColumn<unsigned>("written");
        QTest::addColumn<unsigned>("read");
        for (unsigned written = 0; written < LanguageCount; ++written)
            for (unsigned read = 0; read < LanguageCount; ++read)
                QTest::addRow("%u to %u", written, read) << written << read;
    }
    void roundTrip()
    {
        QFETCH(unsigned, written);
        QFETCH(unsigned, read);
        for (const quint32 id : {0x7FFu, 0x9FFFFFFFu, 0x40000000u, 0xC0000123u})
            for (const int length : {0, 1, 8, 64})
                for (const quint8 flags : {0, 1}) {
                    CanFdTransmitRecord sent{};
                    sent.id = id;
                    sent.length = static_cast<quint8>(length);
                    sent.flags = flags;
                    if (!(id & kIdRemoteFlag))
                        for (int i = 0; i < length; ++i)
                            sent.data[i] = static_cast<quint8>(0xF0 + i);
                    setLanguageCode(written);
                    QList<ModelItem> batch;
                    appendItem(batch, sent, 1);
                    batch.first().systemTime = "23:59:59.999";
                    QString text;
                    appendCsvRow(text, batch.first());
                    setLanguageCode(read);
                    CsvFrame frame;
                    QVERIFY(parse(text.trimmed().toUtf8(), frame));
                    QCOMPARE(frame.timeMs, 86399999u);
                    QCOMPARE(frame.channel, 1u);
                    CanFdTransmitRecord back;
                    toRecord(frame, back);
                    QCOMPARE(std::memcmp(&back, &sent, sizeof sent), 0);
                }
    }

    void rows_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("outcome"); // id length data..., or "no frame"
        const char *std = "Standard Frame";
        const char *data = "data frame";
        const QString none("no frame");
        QTest::newRow("plain") << line("1", "0x12", std, data, "2", "CAN", "x| 01 AB ") << "12 2 01ab";
        QTest::newRow("no last blank") << line("1", "0x12", std, data, "2", "CAN", "x| 01 aB") << "12 2 01ab";
        QTest::newRow("further fields") << line("1", "0x12", std, data, "1", "CAN", "x| 01 ") + ",,x"
                                        << "12 1 01";
        QTest::newRow("too few bytes") << line("1", "0x12", std, data, "3", "CAN", "x| 01 ") << "12 3 010000";
        QTest::newRow("too many bytes") << line("1", "0x12", std, data, "1", "CAN", "x| 01 02 ") << "12 1 01";
        QTest::newRow("empty piece") << line("1", "0x12", std, data, "3", "CAN", "x| 01  02") << "12 3 010002";
        QTest::newRow("no data") << line("1", "0x12", std, data, "2", "CAN", "") << "12 2 0000";
        QTest::newRow("length 0") << line("1", "0x12", std, data, "0", "CAN", "x| zz") << "12 0 ";
        QTest::newRow("words are matched whole")
            << line("1", "0x12", "standard frame", "data frame ", "0", "CAN", "x| ") << "c0000012 0 ";
        QTest::newRow("length 255") << line("1", "0x12", std, data, "255", "CAN", "x| 01 ") << "12 8 0100000000000000";
        QTest::newRow("300 pieces") << line("1", "0x12", std, data, "264", "CAN",
                                            "x| " + QByteArray("07 ").repeated(300))
                                    << "12 8 0707070707070707";
        QTest::newRow("300 pieces, FD") << line("1", "0x12", std, data, "255", "CANFD",
                                                "x| " + QByteArray("07 ").repeated(300))
                                        << "12 64 " + QString("07").repeated(64);
        QTest::newRow("channel 3") << line("3", "0x1", std, data, "0", "CAN", "") << "1 0  no channel";
        QTest::newRow("channel 0") << line("0", "0x1", std, data, "0", "CAN", "") << "1 0  no channel";
        QTest::newRow("channel empty") << line("", "0x1", std, data, "0", "CAN", "") << "1 0  no channel";

        QTest::newRow("empty") << QByteArray() << none;
        QTest::newRow("ten fields") << QByteArray("1,10:00:00.000,1,1,Rx,0x1,Standard Frame,data frame,0,CAN") << none;
        QTest::newRow("repeated header")
            << QByteArray("index,system time,time stamp,channel,Rx/Tx,ID,Frame,type,DLC,CAN-FD,data") << none;
        QTest::newRow("no 0x") << line("1", "12", std, data, "0", "CAN", "x| ") << none;
        QTest::newRow("no digits") << line("1", "0x", std, data, "0", "CAN", "x| ") << none;
        QTest::newRow("no number") << line("1", "0x1G", std, data, "0", "CAN", "x| ") << none;
        QTest::newRow("standard too large") << line("1", "0x800", std, data, "0", "CAN", "x| ") << none;
        QTest::newRow("extended too large") << line("1", "0x20000000", "扩展帧", data, "0", "CAN", "x| ") << none;
        QTest::newRow("flag bits") << line("1", "0x180000001", "扩展帧", data, "0", "CAN", "x| ") << none;
        QTest::newRow("length no number") << line("1", "0x1", std, data, "x", "CAN", "x| ") << none;
        QTest::newRow("length negative") << line("1", "0x1", std, data, "-1", "CAN", "x| ") << none;
        QTest::newRow("data no number") << line("1", "0x1", std, data, "2", "CAN", "x| 01 0g") << none;
        QTest::newRow("data too large") << line("1", "0x1", std, data, "2", "CAN", "x| 01 100") << none;
    }
    void rows()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, outcome);
        CsvFrame frame;
        if (!parse(text, frame)) {
            QCOMPARE(QString("no frame"), outcome);
            return;
        }
        const QByteArray data(reinterpret_cast<const char *>(frame.data), frame.length);
        QCOMPARE(QString("%1 %2 %3").arg(frame.id, 0, 16).arg(frame.length).arg(QString::fromLatin1(data.toHex())) +
                     (frame.channel == CsvFrame::kNoChannel ? " no channel" : ""),
                 outcome);
    }

    void timesAndProtocols()
    {
        const QList<QPair<QByteArray, quint32>> times{{"=\"00:00:01.002\"", 1002},
                                                      {"01:00:00.000", 3600000},
                                                      {"=\"24:00:00.000\"", 0},
                                                      {"10:60:00.000", 0},
                                                      {"10:00:00", 0},
                                                      {"", 0},
                                                      {"=\"", 0},
                                                      {"1O:00:00.000", 0}};
        CsvFrame frame;
        for (const auto &time : times) {
            QVERIFY(parse("1," + time.first + ",,1,Tx,0x1,,,0,CAN,", frame));
            QCOMPARE(frame.timeMs, time.second);
        }
        const QList<QPair<QByteArray, int>> protocols{
            {"CAN", 0}, {"CAN-加速", 0}, {"CANFD", 1}, {"CANFD-加速", 2}, {"xCANFD-acceleration", 2}};
        for (const auto &protocol : protocols) {
            QVERIFY(parse("1,,,1,Tx,0x1,,,0," + protocol.first + ",", frame));
            QCOMPARE(int(frame.canFd) + int(frame.bitRateSwitch), protocol.second);
        }
    }

    void files_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("lines");
        const QByteArray mark("\xEF\xBB\xBF");
        QTest::newRow("LF") << QByteArray("h\na\nb\n") << QStringList{"a", "b"};
        QTest::newRow("CRLF, no last end") << QByteArray("h\r\na\r\n\r\nb") << QStringList{"a", "", "b"};
        QTest::newRow("UTF-8") << QByteArray("序号\n标准帧\n") << QStringList{"标准帧"};
        QTest::newRow("UTF-8, mark") << mark + QByteArray("h\n标准帧\n") << QStringList{"标准帧"};
        QTextCodec *gb = QTextCodec::codecForName("GB18030");
        QTest::newRow("GB18030") << gb->fromUnicode("序号,类型\r\na\r\n标准帧,無\r\n扩展帧")
                                 << QStringList{"a", "标准帧,無", "扩展帧"};
        QTest::newRow("GB18030, then UTF-8") << gb->fromUnicode("index\n标准帧\n") + "扩展帧\n"
                                             << QStringList{"标准帧", "扩展帧"};
        QTest::newRow("GB18030, ASCII header") << gb->fromUnicode("index\n標準幀\n") << QStringList{"標準幀"};
        QTest::newRow("UTF-8 cut at the end")
            << QByteArray("序号\n标准帧\n数\xE6") << QStringList{"标准帧", "数\uFFFD"};
        QTest::newRow("header alone") << QByteArray("h") << QStringList{};
        QTest::newRow("empty") << QByteArray() << QStringList{};
        QTest::newRow("mark alone") << mark << QStringList{};
        // Lines that span and that overrun what is read at once.
        const QByteArray wide = "a," + QByteArray(CsvReader::kLongestLine - 2, 'x');
        QTest::newRow("long") << "h\n" + (wide + "\n").repeated(9) + "b"
                              << QStringList(QVector<QString>(9, QString::fromLatin1(wide)).toList()) +
                                     QStringList{"b"};
        QTest::newRow("too long") << "h\n" + wide + "y\nb\n" << QStringList{"a", "b"};
        QTest::newRow("far too long") << "h\n" + QByteArray(3000000, 'x') + "zz,1,2,\nb\n" << QStringList{"*", "b"};
        QTest::newRow("far too long at the end") << "h\nb\n" + QByteArray(3000000, 'x') << QStringList{"b", "*"};
    }
    void files()
    {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, lines);
        const TestFolder folder;
        folder.write("rows.csv", content);
        CsvReader reader;
        QVERIFY(reader.open(folder.path("rows.csv")));
        for (int pass = 0; pass < 2; ++pass) {
            CsvReader::Line line;
            for (const QString &expected : qAsConst(lines)) {
                QVERIFY(reader.next(line));
                const QString text = QString::fromUtf8(line.text, static_cast<int>(line.size));
                if (expected == "*")
                    QVERIFY(!text.contains(',') && text.size() <= CsvReader::kLongestLine);
                else
                    QCOMPARE(text, expected);
            }
            QVERIFY(!reader.next(line));
            QVERIFY(!reader.next(line));
            QVERIFY(reader.rewind());
        }
    }

    void whatIsNoFileIsRefused()
    {
        const TestFolder folder;
        CsvReader reader;
        QVERIFY(!reader.open(folder.path("nowhere.csv")));
        QVERIFY(!reader.open(folder.path("config")));
        QVERIFY(!reader.open(QString()));
    }
};

QTEST_GUILESS_MAIN(TestCsvRow)
#include "test_csvrow.moc"
