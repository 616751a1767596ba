// Rows of a capture written, and rows of a file read into driver records, against a plain copy of the same bytes.
#include "benchframes.h"

#include "frames/csvreader.h"
#include "frames/csvrow.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstring>

namespace
{

QByteArray rowsOf(const QList<ModelItem> &items)
{
    QString rows;
    for (const ModelItem &item : items)
        appendCsvRow(rows, item);
    return rows.toUtf8();
}

void write(benchmark::State &state, bool fd)
{
    const QList<ModelItem> items = finishedItems(kRound, 2048, fd);
    for (auto _ : state)
        benchmark::DoNotOptimize(rowsOf(items));
    countFrames(state, kRound);
}

void copyRows(benchmark::State &state, bool fd)
{
    const QByteArray rows = rowsOf(finishedItems(kRound, 2048, fd));
    for (auto _ : state) {
        QByteArray copy(rows.constData(), rows.size());
        benchmark::DoNotOptimize(copy);
    }
    countFrames(state, kRound);
}

constexpr int kFileRounds = 20;

QString writeFile(const QTemporaryDir &dir, bool fd)
{
    QFile file(dir.filePath(QStringLiteral("rows.csv")));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("no file to measure with");
    file.write("header\n");
    const QByteArray rows = rowsOf(finishedItems(kRound, 2048, fd));
    for (int i = 0; i < kFileRounds; ++i)
        file.write(rows);
    return file.fileName();
}

void readFrames(benchmark::State &state, bool fd)
{
    const QTemporaryDir dir;
    CsvReader reader;
    if (!reader.open(writeFile(dir, fd)))
        qFatal("cannot read back");
    for (auto _ : state) {
        reader.rewind();
        CsvReader::Line line;
        CsvFrame frame;
        CanTransmitRecord classicRecord;
        CanFdTransmitRecord fdRecord;
        int frames = 0;
        while (reader.next(line)) {
            frames += parseCsvRow(line.text, line.size, frame);
            frame.canFd ? toRecord(frame, fdRecord) : toRecord(frame, classicRecord);
            benchmark::DoNotOptimize(&fdRecord);
            benchmark::DoNotOptimize(&classicRecord);
        }
        if (frames != kRound * kFileRounds)
            qFatal("rows lost");
    }
    countFrames(state, kRound * kFileRounds);
}

void copyFile(benchmark::State &state, bool fd)
{
    const QTemporaryDir dir;
    QFile file(writeFile(dir, fd));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read back");
    for (auto _ : state) {
        file.seek(0);
        benchmark::DoNotOptimize(file.readAll());
    }
    countFrames(state, kRound * kFileRounds);
}

} // namespace

BENCHMARK_CAPTURE(write, classic8, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(copyRows, baseline_classic8, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(write, fd64, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(copyRows, baseline_fd64, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readFrames, classic8, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(copyFile, baseline_classic8, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readFrames, fd64, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(copyFile, baseline_fd64, true)->Unit(benchmark::kMillisecond);
