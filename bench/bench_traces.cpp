// Recordings of every format read and written in memory, classic frames of 8 bytes and FD frames of 64, against a plain
// copy of the same bytes.
#include "benchframes.h"

#include "traces/traceformats.h"

#include <QBuffer>

#include <algorithm>
#include <string>

namespace
{

constexpr int kFrames = 100000;
constexpr int kPiece = 1000; // frames at once, about what a round of a saturated bus brings
constexpr std::int64_t kStart = 1398128223803317000;

std::vector<RawFrame> frames(bool fd)
{
    constexpr std::int64_t gap = 18000; // nanoseconds, as two saturated channels have it
    std::vector<RawFrame> all(kFrames);
    std::uint32_t number = 0;
    for (RawFrame &frame : all) {
        frame.time = ++number * gap;
        frame.extended = number % 4 == 0;
        frame.id = frame.extended ? 0x18FEF100 + number % 64 : number % 0x7FF;
        frame.channel = static_cast<std::uint16_t>(1 + number % 2);
        frame.fd = frame.bitRateSwitch = fd;
        frame.length = fd ? kRawDataBytes : 8;
        for (unsigned i = 0; i < frame.length; ++i)
            frame.data[i] = static_cast<std::uint8_t>(number * 31 + i * 7);
    }
    return all;
}

QByteArray written(const std::vector<RawFrame> &all, TraceFormat format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    TraceWriterOptions options;
    options.startUtc = kStart;
    const auto writer = createTrace(&buffer, format, options);
    bool good = true;
    for (int i = 0; i < kFrames; i += kPiece)
        good = writer->write(&all[static_cast<std::size_t>(i)], kPiece) && good;
    if (!good || !writer->finish())
        qFatal("a buffer refused");
    return bytes;
}

void writeTrace(benchmark::State &state, TraceFormat format, bool fd)
{
    const auto all = frames(fd);
    for (auto _ : state)
        benchmark::DoNotOptimize(written(all, format));
    countFrames(state, kFrames);
}

void readTrace(benchmark::State &state, TraceFormat format, bool fd)
{
    const QByteArray bytes = written(frames(fd), format);
    std::vector<RawFrame> piece(kPiece);
    for (auto _ : state) {
        QBuffer buffer;
        buffer.setData(bytes);
        buffer.open(QIODevice::ReadOnly);
        QString reason;
        const auto reader = openTrace(&buffer, QString(), &reason);
        int read = 0;
        while (reader && !reader->atEnd())
            read += reader->read(piece.data(), kPiece);
        if (read != kFrames)
            qFatal("frames lost");
    }
    countFrames(state, kFrames);
}

void copyTrace(benchmark::State &state, TraceFormat format, bool fd)
{
    const QByteArray bytes = written(frames(fd), format);
    for (auto _ : state) {
        QByteArray copy(bytes.constData(), bytes.size());
        benchmark::DoNotOptimize(copy);
    }
    countFrames(state, kFrames);
}

// Every format that is registered.
const bool registered = [] {
    for (const TraceFormatEntry &entry : traceFormats()) {
        for (const bool fd : {false, true}) {
            const std::string kind = std::string(entry.name) + (fd ? "_fd64" : "_classic8");
            const TraceFormat format = entry.format;
            const auto add = [&](const std::string &name, auto function) {
                benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
                    function(state, format, fd);
                })->Unit(benchmark::kMillisecond);
            };
            if (entry.read)
                add("readTrace/" + kind, readTrace);
            add("writeTrace/" + kind, writeTrace);
            add("copyTrace/baseline_" + kind, copyTrace);
        }
    }
    return true;
}();

} // namespace
