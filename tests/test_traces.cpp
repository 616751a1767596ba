// The contract of every format of recordings, then what is particular to each text format.
#include "tracecontract.h"

#include "device/language.h"
#include "traces/asctrace.h"
#include "traces/traceformats.h"

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextCodec>
#include <QtTest>

#include <cstring>
#include <random>

Q_DECLARE_METATYPE(TraceFormat)

namespace
{

constexpr std::int64_t kSecond = 1000000000;
constexpr std::int64_t kStart = 1398128223 * kSecond + 803317000; // of a day between two changes of the clocks
constexpr char kMark[] = "\xEF\xBB\xBF";                          // UTF-8
constexpr int kRandomFiles = 300;

// Endless bytes, or a file in small pieces with nothing in between.
class Pipe : public QIODevice
{
public:
    explicit Pipe(QByteArray content = {}) : content_(std::move(content)) { open(ReadOnly | Unbuffered); }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 most) override
    {
        if (content_.isEmpty()) {
            std::memset(data, 'x', static_cast<std::size_t>(most));
            return most;
        }
        if (at_ == content_.size())
            return -1;
        const int size = std::min({++reads_ % 8, content_.size() - at_, static_cast<int>(most)});
        std::memcpy(data, content_.constData() + at_, static_cast<std::size_t>(size));
        at_ += size;
        return size;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray content_;
    int at_ = 0;
    int reads_ = 0;
};

// Takes so many bytes, then refuses.
class FullDisk : public QBuffer
{
public:
    qint64 room = 0;

protected:
    qint64 writeData(const char *data, qint64 size) override
    {
        const qint64 taken = QBuffer::writeData(data, std::min(size, room));
        room -= taken;
        return taken < size && taken == 0 ? -1 : taken;
    }
};

void formatRows()
{
    QTest::addColumn<TraceFormat>("format");
    for (const TraceFormatEntry &entry : traceFormats())
        QTest::newRow(entry.name) << entry.format;
}

bool canBeRead(TraceFormat format)
{
    const auto &all = traceFormats();
    return std::any_of(all.begin(), all.end(),
                       [format](const auto &entry) { return entry.format == format && entry.read; });
}

QString lossTexts(const std::vector<TraceLoss> &losses)
{
    QStringList texts;
    for (const TraceLoss &loss : losses)
        texts << loss.what + QStringLiteral(" %1").arg(loss.count);
    return texts.join(QStringLiteral(", "));
}

QString textsOf(const ReadTrace &read)
{
    QStringList texts;
    for (const RawFrame &frame : read.frames)
        texts << frameText(frame);
    if (read.error)
        texts << read.error->place;
    return texts.join(QLatin1Char('\n'));
}

#ifdef OSTREL_PUBLIC_TRACES
enum ExpectedColumn {
    TimeColumn,
    ChannelColumn,
    IdColumn,
    ExtendedColumn,
    RemoteColumn,
    ErrorColumn,
    FdColumn,
    SwitchColumn,
    EsiColumn,
    ReceivedColumn,
    LengthColumn,
    DataColumn
};

// What a row expects; what other readers have no common idea of is as it was read: channels that formats do not have,
// everything of an error frame but that it is one.
RawFrame expectedFrame(const QJsonArray &row, const RawFrame &read)
{
    RawFrame frame = read;
    frame.error = row[ErrorColumn].toBool();
    if (frame.error)
        return frame;
    frame.id = row[IdColumn].toVariant().toUInt();
    frame.extended = row[ExtendedColumn].toBool();
    frame.remote = row[RemoteColumn].toBool();
    frame.fd = row[FdColumn].toBool();
    frame.bitRateSwitch = row[SwitchColumn].toBool();
    frame.errorStateIndicator = row[EsiColumn].toBool();
    frame.direction = row[ReceivedColumn].toBool() ? Direction::Received : Direction::Sent;
    frame.length = std::uint8_t(std::min(row[LengthColumn].toInt(), frame.fd ? 64 : 8)); // classic frames have no more
    const QByteArray data = QByteArray::fromHex(row[DataColumn].toString().toLatin1());
    std::memcpy(frame.data, data.constData(), std::min<std::size_t>(std::size_t(data.size()), frame.length));
    return frame;
}
#endif

} // namespace

class TestTraces : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setLanguageCode(English); }

    void roundTrip_data() { formatRows(); }
    void roundTrip()
    {
        QFETCH(TraceFormat, format);
        const TraceLimits &limits = limitsOf(format);
        TraceWriterOptions options;
        for (const std::optional<std::int64_t> start : {std::optional<std::int64_t>(), std::optional(kStart)}) {
            options.startUtc = start;
            std::vector<TraceLoss> losses;
            const auto expected = heldBy(limits, everyKindOfFrame(), &losses);
            const WrittenTrace written = writeTrace(format, everyKindOfFrame(), options);
            QCOMPARE(lossTexts(written.losses), lossTexts(losses));
            if (!canBeRead(format))
                continue;
            const ReadTrace read = readTrace(written.bytes);
            QVERIFY2(read.opened && !read.error, qPrintable(textsOf(read)));
            QCOMPARE(read.format, format);
            QCOMPARE(read.skipped, 0u);
            QCOMPARE(difference(read.frames, expected, limits.resolution), QString());
            if (limits.dated && start) {
                QVERIFY(read.start);
                const std::int64_t moved = *read.start + read.frames[0].time - (*start + expected[0].time);
                QVERIFY2(std::abs(moved) <= limits.resolution, qPrintable(QString::number(moved)));
            }
        }
    }

    void everyPair()
    {
        for (const TraceLimits &first : traceLimits()) {
            if (!canBeRead(first.format))
                continue;
            const auto once = readTrace(writeTrace(first.format, everyKindOfFrame()).bytes).frames;
            for (const TraceLimits &second : traceLimits()) {
                if (!canBeRead(second.format))
                    continue;
                const auto twice = readTrace(writeTrace(second.format, once).bytes).frames;
                const auto expected = heldBy(second, heldBy(first, everyKindOfFrame()));
                const QString differs = difference(twice, expected, 2 * std::max(first.resolution, second.resolution));
                QVERIFY2(differs.isEmpty(),
                         qPrintable(traceFormatText(first.format) + QStringLiteral(" to ") +
                                    traceFormatText(second.format) + QStringLiteral(": ") + differs));
            }
        }
    }

    void cutAnywhere_data() { formatRows(); }
    void cutAnywhere()
    {
        QFETCH(TraceFormat, format);
        if (!canBeRead(format))
            return;
        constexpr int padding = 3; // the most that may follow the last object
        const TraceLimits &limits = limitsOf(format);
        auto frames = heldBy(limits, everyKindOfFrame());
        frames.erase(frames.begin() + 12, frames.end() - 12);
        const WrittenTrace written = writeTrace(format, frames, {}, true);
        std::vector<int> ends = written.sizes;
        ends.push_back(written.bytes.size());
        for (int size = 0; size <= written.bytes.size(); ++size) {
            const QByteArray bytes = written.bytes.left(size);
            const ReadTrace read = readTrace(bytes, format);
            const auto after = std::upper_bound(written.sizes.begin(), written.sizes.end(), size);
            const long whole = std::max(0l, long(after - written.sizes.begin()) - 1);
            // the last row may be whole without its end
            if (limits.text)
                QVERIFY2(long(read.frames.size()) - whole <= 1 && whole <= long(read.frames.size()),
                         qPrintable(QString::number(size)));
            QVERIFY(read.frames.size() <= frames.size());
            QCOMPARE(
                difference(read.frames, {frames.begin(), frames.begin() + long(read.frames.size())}, limits.resolution),
                QString());
            const QByteArray rest = bytes.mid(bytes.lastIndexOf('\n') + 1).trimmed();
            const bool harmless = rest.isEmpty() || rest == kMark || rest == "End TriggerBlock" ||
                                  rest.startsWith(';') || long(read.frames.size()) > whole;
            if (limits.text && harmless)
                QVERIFY2(!read.error, qPrintable(QString::number(size)));
            else if (size > 0 && *std::lower_bound(ends.begin(), ends.end(), size) - size > padding)
                QVERIFY2(read.error && !read.error->place.isEmpty(), qPrintable(QString::number(size)));
        }
    }

    void damagedFiles_data() { formatRows(); }
    void damagedFiles()
    {
        QFETCH(TraceFormat, format);
        if (!canBeRead(format))
            return;
        const auto frames = heldBy(limitsOf(format), everyKindOfFrame());
        const QByteArray whole = writeTrace(format, {frames.begin(), frames.begin() + 40}).bytes;
        const auto handler = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        const auto restored = qScopeGuard([handler] { qInstallMessageHandler(handler); }); // zlib's complaints
        std::mt19937 random(20261121);
        for (int file = 0; file < kRandomFiles; ++file) {
            QByteArray bytes = file % 2 ? whole : QByteArray(int(random() % 3000), '\0');
            const int changes = file % 2 ? 1 + int(random() % 4) : bytes.size();
            for (int i = 0; i < changes && !bytes.isEmpty(); ++i)
                bytes[file % 2 ? int(random() % unsigned(bytes.size())) : i] = char(random());
            const ReadTrace read = readTrace(bytes, format);
            for (const RawFrame &frame : read.frames) {
                QVERIFY(frame.length <= (frame.fd ? kRawDataBytes : 8) && frame.channel > 0);
                QVERIFY(frame.id <= (frame.extended || frame.error ? 0x1FFFFFFFu : 0x7FFu));
            }
            if (file % 2 == 0 && !bytes.trimmed().isEmpty())
                QVERIFY2(read.error && !read.error->reason.isEmpty(), bytes.toHex().constData());
        }
        Pipe endless; // a file that never ends a line or an object
        const ReadTrace read = readTrace(&endless, format);
        QVERIFY(read.error && read.frames.empty());
    }

    void foreignFiles()
    {
        for (const QByteArray &bytes :
             {QByteArray(), QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16), QByteArray(5000, '\0'),
              QByteArray("hello\nworld\n"), QByteArray(300000, 'A')}) {
            const ReadTrace read = readTrace(bytes);
            QVERIFY(!read.opened && !read.openError.isEmpty());
        }
        QString error;
        QBuffer noise;
        noise.setData("hello\n");
        noise.open(QIODevice::ReadOnly);
        const ReadTrace byName = readTrace(&noise, {}, QStringLiteral("some.LOG"));
        QVERIFY(byName.opened && byName.error && byName.error->place == QLatin1String("line 1"));
    }

    void pipes_data() { formatRows(); }
    void pipes()
    {
        QFETCH(TraceFormat, format);
        if (!canBeRead(format))
            return;
        const QByteArray bytes = writeTrace(format, everyKindOfFrame()).bytes;
        Pipe pipe(bytes);
        const ReadTrace read = readTrace(&pipe, format);
        QVERIFY2(!read.error, qPrintable(textsOf(read)));
        QCOMPARE(difference(read.frames, readTrace(bytes).frames, 0), QString());
    }

    void fullDisk_data() { formatRows(); }
    void fullDisk()
    {
        QFETCH(TraceFormat, format);
        std::vector<RawFrame> frames;
        for (const auto every = everyKindOfFrame(); frames.size() < 20000;)
            frames.insert(frames.end(), every.begin(), every.end());
        FullDisk disk;
        disk.open(QIODevice::WriteOnly);
        disk.room = 20001;
        const auto writer = createTrace(&disk, format, {});
        std::vector<RawFrame> taken;
        int refused = 0;
        for (std::size_t i = 0; i + 100 <= frames.size(); i += 100) {
            if (writer->write(&frames[i], 100)) {
                taken.insert(taken.end(), frames.begin() + long(i), frames.begin() + long(i) + 100);
            } else {
                QVERIFY(!writer->errorText().isEmpty());
                disk.room = ++refused < 3 ? 1000 : 1 << 30;
            }
        }
        QVERIFY(refused >= 3);
        QVERIFY(writer->finish());
        if (canBeRead(format)) {
            const ReadTrace read = readTrace(disk.data(), format);
            QVERIFY2(!read.error, qPrintable(textsOf(read).right(200)));
            QCOMPARE(read.frames.size(), heldBy(limitsOf(format), taken).size());
        }
    }

    void namesAndFormats()
    {
        for (const TraceFormatEntry &entry : traceFormats()) {
            QCOMPARE(traceFormatFromText(QString::fromLatin1(entry.name).toUpper()), std::optional(entry.format));
            QCOMPARE(traceFormatText(entry.format), QString::fromLatin1(entry.name));
            QCOMPARE(traceFormatOfName(QStringLiteral("a.b.") + QString::fromLatin1(entry.ending).toUpper()),
                     std::optional(entry.format));
        }
        QVERIFY(!traceFormatOfName(QStringLiteral("log")) && !traceFormatFromText(QStringLiteral("xml")));
    }

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

    void publicRecordings();
    void vehicleLog();
};

void TestTraces::publicRecordings()
{
#ifdef OSTREL_PUBLIC_TRACES
    const QString folder = QStringLiteral(OSTREL_PUBLIC_TRACES "/");
    QFile file(folder + QStringLiteral("expected.json"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonObject files = QJsonDocument::fromJson(file.readAll()).object();
    int compared = 0;
    for (auto entry = files.begin(); entry != files.end(); ++entry) {
        const auto format = traceFormatOfName(entry.key());
        if (!format || !canBeRead(*format))
            continue;
        QFile recording(folder + entry.key());
        QVERIFY(recording.open(QIODevice::ReadOnly));
        const ReadTrace read = readTrace(&recording);
        const QJsonArray rows = entry->toArray();
        QVERIFY2(!read.error && int(read.frames.size()) == rows.size(), qPrintable(entry.key() + '\n' + textsOf(read)));
        for (int i = 0; i < rows.size(); ++i) {
            const QJsonArray row = rows[i].toArray();
            const RawFrame &frame = read.frames[std::size_t(i)];
            QCOMPARE(frameText(frame), frameText(expectedFrame(row, frame)));
            const double time = row[TimeColumn].toDouble();
            const double absolute = double(read.start.value_or(0) + frame.time) / kSecond;
            QVERIFY(std::abs(double(frame.time) / kSecond - time) < 1e-6 || std::abs(absolute - time) < 1e-3);
        }
        ++compared;
    }
    QVERIFY(compared > 0);
#else
    QSKIP("the public recordings are not there");
#endif
}

void TestTraces::vehicleLog()
{
#ifdef OSTREL_VEHICLE_LOG
    QFile file(QStringLiteral(OSTREL_VEHICLE_LOG));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    const ReadTrace read = readTrace(bytes);
    QVERIFY(!read.error);
    QCOMPARE(read.frames.size(), std::size_t(6158));
    QSet<std::uint32_t> ids;
    for (const RawFrame &frame : read.frames)
        ids << frame.id;
    QCOMPARE(ids.size(), 34);
    TraceWriterOptions options;
    options.startUtc = read.start;
    QCOMPARE(writeTrace(TraceFormat::Candump, read.frames, options).bytes, bytes);
#else
    QSKIP("the vehicle's log is not there");
#endif
}

QTEST_APPLESS_MAIN(TestTraces)
#include "test_traces.moc"
