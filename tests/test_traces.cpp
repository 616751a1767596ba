// The contract of every format of recordings.
#include "tracecontract.h"

#include "device/language.h"
#include "traces/traceformats.h"

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
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
                QVERIFY2(read.error && !read.error->place.toString().isEmpty(), qPrintable(QString::number(size)));
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
                QVERIFY2(read.error && !read.error->reason.toString().isEmpty(), bytes.toHex().constData());
        }
        Pipe endless; // a file that never ends a line or an object
        const ReadTrace read = readTrace(&endless, format);
        QVERIFY(read.error && read.frames.empty());
    }

    void damageInEveryLanguage_data() { formatRows(); }
    void damageInEveryLanguage()
    {
        QFETCH(TraceFormat, format);
        if (!canBeRead(format))
            return;
        const auto restored = qScopeGuard([] { setLanguageCode(English); });
        QSet<QString> reasons;
        QSet<QString> places;
        QSet<QString> refusals;
        QSet<QString> losses;
        for (unsigned code = 0; code < LanguageCount; ++code) {
            setLanguageCode(code);
            const ReadTrace read = readTrace("no frame of any format", format);
            QVERIFY(read.error);
            reasons.insert(read.error->reason.toString());
            places.insert(read.error->place.toString().remove(QRegularExpression(QStringLiteral("[^0-9]"))));
            refusals.insert(readTrace(QByteArray()).openError);
            losses.insert(lossText(Loss::ErrorFrame));
        }
        QCOMPARE(reasons.size(), int(LanguageCount));
        QCOMPARE(places.size(), 1);
        QVERIFY(!places.contains(QString()));
        QCOMPARE(refusals.size(), int(LanguageCount));
        QCOMPARE(losses.size(), int(LanguageCount));
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
        QVERIFY(byName.opened && byName.error && byName.error->place.toString() == QLatin1String("line 1"));
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
