// Recordings by row: the index against reading from the front, filter and search against a plain pass, files that
// change.
#include "tracecontract.h"

#include "frames/recordingsource.h"
#include "traces/recordingexport.h"
#include "traces/traceformats.h"

#include <QTemporaryDir>
#include <QtTest>

#include <random>

Q_DECLARE_METATYPE(TraceFormat)

namespace
{

constexpr std::uint64_t kBlock = RecordingIndex::kBlockRows;
constexpr int kFrames = 13522;

// Every kind of frame, over and over; time goes on.
std::vector<RawFrame> manyFrames(int count)
{
    const std::vector<RawFrame> kinds = everyKindOfFrame();
    std::vector<RawFrame> frames;
    for (int i = 0; i < count; ++i) {
        frames.push_back(kinds[static_cast<std::size_t>(i) % kinds.size()]);
        frames.back().time = std::int64_t(i) * 1357000;
    }
    return frames;
}

void save(const QString &path, const QByteArray &content, QIODevice::OpenMode mode = QIODevice::WriteOnly)
{
    QFile file(path);
    QVERIFY(file.open(mode));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QString text(const RawFrame &frame)
{
    return QString::number(frame.time) + QLatin1Char(' ') + frameText(frame);
}

// What stands in `rows` rows from the first one on.
QStringList texts(RecordingRows &rows, std::uint64_t first, int count)
{
    std::vector<RawFrame> frames(static_cast<std::size_t>(count));
    QStringList all;
    const int got = rows.read(first, count, frames.data());
    for (int i = 0; i < got; ++i)
        all.append(text(frames[static_cast<std::size_t>(i)]));
    return all;
}

QStringList texts(const std::vector<RawFrame> &frames)
{
    QStringList all;
    for (const RawFrame &frame : frames)
        all.append(text(frame));
    return all;
}

FrameFilter filterOf(const char *text)
{
    FilterError error;
    const auto filter = FrameFilter::parse(QLatin1String(text), &error);
    if (!filter)
        qFatal("%s", qPrintable(error.message));
    return *filter;
}

class Collector : public FrameConsumer
{
public:
    void consume(const RawFrame *frames, std::size_t count) override
    {
        all.insert(all.end(), frames, frames + count);
        longest = std::max(longest, frames[count - 1].time - frames[0].time);
    }
    void intervalEnded() override { ++intervals; }

    std::vector<RawFrame> all;
    std::int64_t longest = 0;
    int intervals = 0;
};

} // namespace

class TestRecordings : public QObject
{
    Q_OBJECT

private slots:
    void rowsEqualReading_data();
    void rowsEqualReading();
    void filterEqualsPass_data();
    void filterEqualsPass();
    void searches();
    void exports();
    void followsAndSurvives();
    void damage();
    void feedsConsumers();

private:
    QString path(const char *name) const { return dir_.filePath(QLatin1String(name)); }

    QTemporaryDir dir_;
};

void TestRecordings::rowsEqualReading_data()
{
    QTest::addColumn<TraceFormat>("format");
    for (const TraceFormatEntry &entry : traceFormats())
        if (entry.read)
            QTest::newRow(entry.name) << entry.format;
}

void TestRecordings::rowsEqualReading()
{
    QFETCH(TraceFormat, format);
    TraceWriterOptions options;
    options.startUtc = 1398128223803317000;
    QByteArray bytes = writeTrace(format, manyFrames(kFrames), options).bytes;
    if (format == TraceFormat::Asc) // times that count from the line before
        bytes.replace("timestamps absolute", "timestamps relative");
    const QString file = path("rows");
    save(file, bytes);
    const ReadTrace read = readTrace(bytes);
    const QStringList expected = texts(read.frames);
    QVERIFY(expected.size() > 2 * int(kBlock));

    RecordingIndex index(file);
    QString error;
    QVERIFY2(index.open(&error), qPrintable(error));
    QTRY_VERIFY(index.settled());
    QVERIFY(index.format() == format);
    QCOMPARE(index.rows(), std::uint64_t(expected.size()));
    QVERIFY(index.state().startUtc == read.start);
    QVERIFY(!index.state().error);
    QVERIFY(index.bytesUsed() < index.rows());

    RecordingRows rows(index);
    std::mt19937 random(1);
    for (int i = 0; i < 60; ++i) {
        const int first = int(random() % unsigned(expected.size()));
        const int count = 1 + int(random() % 300);
        QCOMPARE(texts(rows, std::uint64_t(first), count), expected.mid(first, count));
    }
    QCOMPARE(texts(rows, kBlock - 5, int(kBlock) + 10), expected.mid(int(kBlock) - 5, int(kBlock) + 10));
    QVERIFY(texts(rows, index.rows(), 1).isEmpty());
    if (format != TraceFormat::Asc) {
        QCOMPARE(index.rowAtTime(read.frames[9000].time), std::uint64_t(9000));
        QCOMPARE(index.rowAtTime(read.frames[9000].time + 1), std::uint64_t(9001));
        QCOMPARE(index.rowAtTime(read.frames.back().time + 1), index.rows());
    }
}

void TestRecordings::filterEqualsPass_data()
{
    QTest::addColumn<QByteArray>("expression");
    for (const char *text : {"id 7F", "not id 7F", "data 25 ?? and tx", "id 100..1FF", "time ..5", "fd or remote"})
        QTest::newRow(text) << QByteArray(text);
    QTest::newRow("all") << QByteArray("");
}

void TestRecordings::filterEqualsPass()
{
    QFETCH(QByteArray, expression);
    constexpr int frames = 80000; // several runs for every thread
    const QByteArray bytes = writeTrace(TraceFormat::Candump, manyFrames(frames)).bytes;
    save(path("filter.log"), bytes);
    const FrameFilter filter = filterOf(expression.constData());
    std::vector<std::uint64_t> expected;
    const ReadTrace read = readTrace(bytes);
    for (std::size_t row = 0; row < read.frames.size(); ++row)
        if (filter.matches(read.frames[row]))
            expected.push_back(row);

    RecordingIndex index(path("filter.log"));
    QString error;
    QVERIFY(index.open(&error));
    RecordingFilter found(index, filter, 3); // while the index is made
    QTRY_VERIFY(found.finished());
    QCOMPARE(found.rowsDone(), std::uint64_t(frames));
    QCOMPARE(found.matches(), std::uint64_t(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        QCOMPARE(found.rowOf(i), expected[i]);
        QCOMPARE(found.matchFrom(expected[i]), std::uint64_t(i));
        QCOMPARE(found.matchFrom(expected[i] + 1), std::uint64_t(i + 1));
    }
    QVERIFY(found.bytesUsed() < frames / 4 + 1000);
}

void TestRecordings::searches()
{
    std::vector<RawFrame> frames = manyFrames(kFrames);
    for (RawFrame &frame : frames)
        frame.id = 1;
    for (const int row : {3, 4095, 4096, 9000})
        frames[static_cast<std::size_t>(row)].id = 0x55;
    save(path("search.log"), writeTrace(TraceFormat::Candump, frames).bytes);
    RecordingIndex index(path("search.log"));
    QString error;
    QVERIFY(index.open(&error));
    QTRY_VERIFY(index.settled());
    std::atomic<bool> stop{false};
    const auto search = [&](std::uint64_t from, bool backwards, const char *within = "") {
        const auto row = searchRecording(index, filterOf("id 55"), filterOf(within), from, backwards, stop);
        return row ? int(*row) : -1;
    };
    QCOMPARE(search(0, false), 3);
    QCOMPARE(search(4, false), 4095);
    QCOMPARE(search(4096, false), 4096);
    QCOMPARE(search(9001, false), -1);
    QCOMPARE(search(index.rows(), false), -1);
    QCOMPARE(search(index.rows() + 7, true), 9000);
    QCOMPARE(search(8999, true), 4096);
    QCOMPARE(search(4095, true), 4095);
    QCOMPARE(search(2, true), -1);
    QCOMPARE(search(4, false, "time 6.."), 9000);
    stop = true;
    QCOMPARE(search(0, false), -1);
}

void TestRecordings::exports()
{
    const std::vector<RawFrame> frames = manyFrames(kFrames);
    save(path("in.log"), writeTrace(TraceFormat::Candump, frames).bytes);
    RecordingIndex index(path("in.log"));
    QString error;
    QVERIFY(index.open(&error));
    QTRY_VERIFY(index.settled());
    RecordingFilter filter(index, filterOf("fd and id 7F and not remote"));
    QTRY_VERIFY(filter.finished());
    const auto exported = [&](const RecordingFilter *only, TraceFormat format) {
        RecordingExport run(index, only, 100, 9000, path("out"), format);
        while (!run.state().finished)
            QTest::qWait(1);
        return run.state();
    };
    const auto written = [&] {
        QFile file(path("out"));
        return file.open(QIODevice::ReadOnly) ? readTrace(&file).frames : std::vector<RawFrame>();
    };
    QCOMPARE(exported(nullptr, TraceFormat::Candump).written, std::uint64_t(8900));
    std::vector<RawFrame> expected(readTrace(writeTrace(TraceFormat::Candump, frames).bytes).frames);
    expected = {expected.begin() + 100, expected.begin() + 9000};
    QCOMPARE(difference(written(), expected, 1000), QString());
    expected.erase(std::remove_if(expected.begin(), expected.end(),
                                  [](const RawFrame &f) { return !f.fd || f.id != 0x7F || f.remote; }),
                   expected.end());
    const RecordingExport::State state = exported(&filter, TraceFormat::Csv);
    QCOMPARE(state.error, QString());
    QCOMPARE(state.written, std::uint64_t(expected.size()));
    QCOMPARE(written().size(), expected.size());
    QVERIFY(std::any_of(state.losses.begin(), state.losses.end(), [](const TraceLoss &loss) {
        return loss.what == lossText(Loss::ErrorStateIndicator) && loss.count > 0;
    }));
    // What stood there stays when nothing comes of it.
    RecordingExport refused(index, nullptr, 0, 5, path("no/such/folder"), TraceFormat::Asc);
    QTRY_VERIFY(refused.state().finished);
    QVERIFY(!refused.state().error.isEmpty());
}

void TestRecordings::followsAndSurvives()
{
    const QByteArray bytes = writeTrace(TraceFormat::Candump, manyFrames(kFrames)).bytes;
    const int cut = bytes.size() / 2; // within a line
    const QString file = path("grows.log");
    save(file, bytes.left(cut));
    const auto expected = [&](const QByteArray &part) { return std::uint64_t(part.count('\n')); };
    RecordingIndex index(file);
    QString error;
    QVERIFY(index.open(&error));
    QTRY_VERIFY(index.settled());
    QCOMPARE(index.rows(), expected(bytes.left(cut)));
    RecordingFilter filter(index, filterOf("id 7F"));
    QTRY_VERIFY(filter.finished());
    const std::uint64_t before = filter.matches();

    index.setFollow(true);
    save(file, bytes.mid(cut), QIODevice::Append);
    QTRY_COMPARE(index.rows(), std::uint64_t(kFrames));
    QTRY_VERIFY(index.settled() && !index.state().error);
    QTRY_VERIFY(filter.finished());
    QVERIFY(filter.matches() > before);
    QCOMPARE(filter.rowsDone(), std::uint64_t(kFrames));
    RecordingRows rows(index);
    QCOMPARE(texts(rows, 0, kFrames), texts(readTrace(bytes).frames));

    QVERIFY(QFile::resize(file, cut));
    QTRY_VERIFY(index.state().change == RecordingIndex::Change::Shorter);
    RecordingRows shorter(index);
    QVERIFY(texts(shorter, std::uint64_t(kFrames) - 10, 10).isEmpty());
    QCOMPARE(texts(shorter, 0, 10).size(), 10);
    QVERIFY(QFile::resize(file, 0));
    QVERIFY(texts(shorter, 5000, 10).isEmpty());

#ifdef Q_OS_WIN
    QSKIP("a file that is open cannot be removed here");
#endif
    save(file, bytes);
    RecordingIndex vanishing(file);
    QVERIFY(vanishing.open(&error));
    QTRY_VERIFY(vanishing.settled());
    QVERIFY(QFile::remove(file));
    QTRY_VERIFY(vanishing.state().change == RecordingIndex::Change::Gone);
    RecordingRows none(vanishing);
    QVERIFY(texts(none, 0, 10).isEmpty());
    RecordingIndex missing(file);
    QVERIFY(!missing.open(&error));
    QVERIFY(!error.isEmpty());
}

void TestRecordings::damage()
{
    QByteArray bytes = writeTrace(TraceFormat::Candump, manyFrames(5000)).bytes;
    bytes += "(1.0) can0 nonsense\n";
    save(path("damaged.log"), bytes);
    RecordingIndex index(path("damaged.log"));
    QString error;
    QVERIFY(index.open(&error));
    QTRY_VERIFY(index.settled());
    QCOMPARE(index.rows(), std::uint64_t(5000));
    QVERIFY(index.state().error && index.state().error->place.arguments == QStringList(QStringLiteral("5001")));
}

void TestRecordings::feedsConsumers()
{
    save(path("feed.log"), writeTrace(TraceFormat::Candump, manyFrames(kFrames)).bytes);
    RecordingIndex index(path("feed.log"));
    QString error;
    QVERIFY(index.open(&error));
    QTRY_VERIFY(index.settled());
    Collector collector;
    RecordingSource source(index, collector, 100, 9000);
    QTRY_VERIFY(source.finished());
    QCOMPARE(source.done(), std::uint64_t(8900));
    RecordingRows rows(index);
    QCOMPARE(texts(collector.all), texts(rows, 100, 8900));
    QVERIFY(collector.longest < 50000000);
    QVERIFY(collector.intervals >= int(8900 * 1357000LL / 50000000)); // 50 ms of the recording each
}

QTEST_GUILESS_MAIN(TestRecordings)
#include "test_recordings.moc"
