// Signals decoded, and a database loaded: the project's vehicle.dbc where it lies beside the tree, else one of the same
// size that is made here. The baseline adds up the same payload bytes.
#include "signals/messagelookup.h"

#include <benchmark/benchmark.h>

#include <QFile>

#include <memory>
#include <numeric>
#include <random>

namespace
{

constexpr int kFrames = 4096;

QByteArray generated()
{
    constexpr int kMessages = 217;
    constexpr int kSignals = 4;
    QByteArray content("VERSION \"\"\nBU_: Node\n");
    for (int i = 0; i < kMessages; ++i) {
        const QByteArray id = QByteArray::number(2304279330u + unsigned(i) * 256);
        content += "BO_ " + id + " Message_" + QByteArray::number(i) + ": 8 Vector__XXX\n";
        for (int j = 0; j < kSignals; ++j)
            content += " SG_ Signal_" + QByteArray::number(j) + " : " + QByteArray::number(16 * j) +
                       "|16@1- (0.01,0) [-100|100] \"m/s\" Vector__XXX\n";
        content += "CM_ BO_ " + id + " \"the " + QByteArray::number(i) + "th message of this database\";\n";
    }
    return content;
}

QByteArray content()
{
    QFile file(QStringLiteral(OSTREL_DBC_FILES "/vehicle.dbc"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : generated();
}

// Frames of every message in turn, with random data.
std::vector<RawFrame> framesOf(const LoadedDatabase &database)
{
    std::mt19937 random(1);
    std::vector<RawFrame> frames(kFrames);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const MessageDefinition &message = *database.messages[i % database.messages.size()].definition;
        frames[i].id = message.id;
        frames[i].extended = message.extended;
        frames[i].length = std::uint8_t(std::min<unsigned>(message.length, kRawDataBytes));
        for (std::uint8_t &byte : frames[i].data)
            byte = std::uint8_t(random());
    }
    return frames;
}

void decodeFrames(benchmark::State &state)
{
    const auto database = std::make_shared<LoadedDatabase>(readDbc(content()));
    const MessageLookup lookup({{database, DatabaseChannels::Both}});
    const std::vector<RawFrame> frames = framesOf(*database);
    std::vector<SignalValue> values(256);
    std::int64_t decoded = 0;
    for (auto _ : state)
        for (const RawFrame &frame : frames) {
            const KnownMessage *message = lookup.find(frame);
            message->decoder.decode(frame, values.data());
            decoded += message->decoder.signalCount();
            benchmark::DoNotOptimize(values.data());
            benchmark::ClobberMemory();
        }
    state.counters["signals_per_s"] = benchmark::Counter(double(decoded), benchmark::Counter::kIsRate);
}
BENCHMARK(decodeFrames)->Name("decodeFrames");

void addBytes(benchmark::State &state)
{
    const std::vector<RawFrame> frames = framesOf(LoadedDatabase(readDbc(content())));
    for (auto _ : state)
        for (const RawFrame &frame : frames)
            benchmark::DoNotOptimize(std::accumulate(frame.data, frame.data + frame.length, 0));
    state.counters["frames_per_s"] =
        benchmark::Counter(double(state.iterations()) * kFrames, benchmark::Counter::kIsRate);
}
BENCHMARK(addBytes)->Name("decodeFrames/baseline");

void load(benchmark::State &state)
{
    const QByteArray bytes = content();
    for (auto _ : state)
        benchmark::DoNotOptimize(LoadedDatabase(readDbc(bytes)).messages.size());
}
BENCHMARK(load)->Name("loadDatabase")->Unit(benchmark::kMillisecond);

void countLines(benchmark::State &state)
{
    const QByteArray bytes = content();
    for (auto _ : state)
        benchmark::DoNotOptimize(bytes.split('\n').size());
}
BENCHMARK(countLines)->Name("loadDatabase/baseline")->Unit(benchmark::kMillisecond);

} // namespace
