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

} // namespace

class TestCsvRow : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { setLanguageCode(SimplifiedChinese); }

    // What is captured in one language is sent as the same frame in any other.
    void roundTrips()
    {
        for (const quint32 id : {0x7FFu, 0x9FFFFFFFu, 0x40000000u, 0xC0000123u})
            for (unsigned languages = 0; languages < LanguageCount * LanguageCount; ++languages) {
                CanFdTransmitRecord sent{};
                sent.id = id;
                sent.length = 64;
                sent.flags = languages % 2;
                for (quint8 i = 0; i < sent.length && !(id & kIdRemoteFlag); ++i)
                    sent.data[i] = static_cast<quint8>(0xF0 + i);
                setLanguageCode(languages / LanguageCount);
                QList<ModelItem> batch;
                appendItem(batch, sent, 1);
                batch.first().systemTime = "23:59:59.999";
                QString text;
                appendCsvRow(text, batch.first());
                setLanguageCode(languages % LanguageCount);
                CsvFrame frame;
                QVERIFY2(parse(text.trimmed().toUtf8(), frame), qPrintable(text));
                QCOMPARE(frame.timeMs, 86399999u);
                QCOMPARE(frame.channel, 1u);
                CanFdTransmitRecord back;
                toRecord(frame, back);
                QVERIFY2(std::memcmp(&back, &sent, sizeof sent) == 0, qPrintable(text));
            }
    }

    void rows_data()
    {
        QTest::addColumn<QByteArray>("text"); // from the channel on
        QTest::addColumn<QString>("outcome"); // id length data..., or "no frame"
        const auto row = [](const char *name, const QByteArray &text, const QString &outcome = "no frame") {
            QTest::newRow(name) << text << outcome;
        };
        const QByteArray seven300 = "x| " + QByteArray("07 ").repeated(300);
        row("plain", "1,Rx,0x12,标准帧,数据帧,2,CAN,x| 01 AB ", "12 2 01ab");
        row("no last blank", "1,Rx,0x12,标准帧,数据帧,2,CAN,x| 01 aB", "12 2 01ab");
        row("further fields", "1,Rx,0x12,标准帧,数据帧,1,CAN,x| 01 ,,x", "12 1 01");
        row("too few bytes", "1,Rx,0x12,标准帧,数据帧,3,CAN,x| 01 ", "12 3 010000");
        row("too many bytes", "1,Rx,0x12,标准帧,数据帧,1,CAN,x| 01 02 ", "12 1 01");
        row("empty piece", "1,Rx,0x12,标准帧,数据帧,3,CAN,x| 01  02", "12 3 010002");
        row("no data", "1,Rx,0x12,标准帧,数据帧,2,CAN,", "12 2 0000");
        row("length 0", "1,Rx,0x12,标准帧,数据帧,0,CAN,x| zz", "12 0 ");
        row("words are matched whole", "1,Rx,0x12,standard frame,data frame ,0,CAN,x| ", "c0000012 0 ");
        row("length 255", "1,Rx,0x12,标准帧,数据帧,255,CAN,x| 01 ", "12 8 0100000000000000");
        row("300 pieces", "1,Rx,0x12,标准帧,数据帧,260,CAN," + seven300, "12 4 07070707");
        row("300 pieces, FD", "1,Rx,0x12,标准帧,数据帧,255,CANFD," + seven300, "12 64 " + QString("07").repeated(64));
        row("channel 3", "3,Rx,0x1,标准帧,数据帧,0,CAN,", "1 0  no channel");
        row("channel 0", "0,Rx,0x1,标准帧,数据帧,0,CAN,", "1 0  no channel");
        row("channel empty", ",Rx,0x1,标准帧,数据帧,0,CAN,", "1 0  no channel");

        row("ten fields", "1,Rx,0x1,标准帧,数据帧,0,CAN");
        row("repeated header", "channel,Rx/Tx,ID,Frame,type,DLC,CAN-FD,data");
        row("no 0x", "1,Rx,12,标准帧,数据帧,0,CAN,x| ");
        row("no digits", "1,Rx,0x,标准帧,数据帧,0,CAN,x| ");
        row("no number", "1,Rx,0x1G,标准帧,数据帧,0,CAN,x| ");
        row("standard too large", "1,Rx,0x800,标准帧,数据帧,0,CAN,x| ");
        row("extended too large", "1,Rx,0x20000000,扩展帧,数据帧,0,CAN,x| ");
        row("flag bits", "1,Rx,0x180000001,扩展帧,数据帧,0,CAN,x| ");
        row("length no number", "1,Rx,0x1,标准帧,数据帧,x,CAN,x| ");
        row("length negative", "1,Rx,0x1,标准帧,数据帧,-1,CAN,x| ");
        row("data no number", "1,Rx,0x1,标准帧,数据帧,2,CAN,x| 01 0g");
        row("data too large", "1,Rx,0x1,标准帧,数据帧,2,CAN,x| 01 100");
    }
    void rows()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, outcome);
        CsvFrame frame;
        if (!parse("1,=\"10:00:00.001\",0x1," + text, frame)) {
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
        CsvFrame frame;
        QVERIFY(!parse("", frame));
        const auto timeOf = [&frame](const QByteArray &text) {
            return parse("1," + text + ",,1,Tx,0x1,,,0,CAN,", frame) ? frame.timeMs : ~0u;
        };
        QCOMPARE(timeOf("=\"00:00:01.002\""), 1002u);
        QCOMPARE(timeOf("01:00:00.000"), 3600000u);
        for (const char *none :
             {"=\"24:00:00.000\"", "10:60:00.000", "10:00:60.000", "10:00:00", "", "=\"", "1O:00:00.000"})
            QVERIFY(timeOf(none) == 0 && !frame.hasTime);
        QVERIFY(timeOf("00:00:00.000") == 0 && frame.hasTime);
        const std::pair<const char *, int> protocols[] = {
            {"CAN", 0}, {"CAN-加速", 0}, {"CANFD", 1}, {"CANFD-加速", 2}, {"xCANFD-acceleration", 2}};
        for (const auto &[text, flags] : protocols) {
            QVERIFY(parse(QByteArray("1,,,1,Tx,0x1,,,0,") + text + ",", frame));
            QCOMPARE(int(frame.canFd) + int(frame.bitRateSwitch), flags);
        }
    }

    void files_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("lines"); // "*" for one that is none
        const auto file = [](const char *name, const QByteArray &content, const QStringList &lines) {
            QTest::newRow(name) << content << lines;
        };
        file("LF", "h\na\nb\n", {"a", "b"});
        file("CRLF, no last end", "h\r\na\r\n\r\nb", {"a", "", "b"});
        file("UTF-8", "序号\n标准帧\n", {"标准帧"});
        file("UTF-8, mark", "\xEF\xBB\xBFh\n标准帧\n", {"标准帧"});
        file("mark, no UTF-8", "\xEF\xBB\xBFh\n\xB1\xEA\n", {"\uFFFD\uFFFD"});
        const QTextCodec *gb = QTextCodec::codecForName("GB18030");
        file("GB18030", gb->fromUnicode("序号,类型\r\na\r\n标准帧,無\r\n扩展帧"), {"a", "标准帧,無", "扩展帧"});
        file("GB18030, then UTF-8", gb->fromUnicode("index\n标准帧\n") + "扩展帧\n", {"标准帧", "扩展帧"});
        file("UTF-8 cut at the end", "序号\n标准帧\n数\xE6", {"标准帧", "数\uFFFD"});
        file("header alone", "h", {});
        file("empty", "", {});
        file("mark alone", "\xEF\xBB\xBF", {});
        // Lines that span and that overrun what is read at once.
        const QByteArray wide = "a," + QByteArray(CsvReader::kLongestLine - 2, 'x');
        const QByteArray huge(3000000, 'x');
        const QStringList nine = QString::fromLatin1((wide + "\n").repeated(9)).split('\n', Qt::SkipEmptyParts);
        file("long", "h\n" + (wide + "\n").repeated(9) + "b", nine + QStringList("b"));
        file("too long", "h\n" + wide + "y\nb\n", {"a", "b"});
        file("far too long", "h\n" + huge + "zz,1,2,\nb\n", {"*", "b"});
        file("far too long at the end", "h\nb\n" + huge, {"b", "*"});
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
            QVERIFY(reader.rewind());
        }
        for (const char *none : {"nowhere.csv", "config", ""})
            QVERIFY(!reader.open(folder.path(none)));
    }
};

QTEST_GUILESS_MAIN(TestCsvRow)
#include "test_csvrow.moc"
