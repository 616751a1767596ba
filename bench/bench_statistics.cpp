// The statistics window: what a frame costs with 2,000 identifiers on the bus, and what a refresh costs.
#include "analysis/statisticswindow.h"

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace
{

constexpr std::uint32_t kIdentifiers = 2000;
constexpr int kBatch = 2800; // what 56,000 frames a second bring in an interval
constexpr std::int64_t kDistanceNs = 1'000'000'000 / 56000;
constexpr QSize kWindowSize(1120, 760);

std::vector<RawFrame> traffic()
{
    std::vector<RawFrame> frames(kBatch);
    for (std::uint32_t i = 0; i < kBatch; ++i) {
        frames[i].id = i % kIdentifiers;
        frames[i].channel = static_cast<std::uint16_t>(1 + i % 2);
        frames[i].length = 8;
        frames[i].data[i % 8] = static_cast<std::uint8_t>(i);
        frames[i].time = i * kDistanceNs;
    }
    return frames;
}

void next(std::vector<RawFrame> &frames)
{
    for (RawFrame &frame : frames) {
        frame.time += kBatch * kDistanceNs;
        ++frame.data[0];
    }
}

void statisticsConsume(benchmark::State &state)
{
    LiveStatistics statistics;
    for (const unsigned channel : {1U, 2U})
        statistics.setRates(channel, {1'000'000, 5'000'000});
    std::vector<RawFrame> frames = traffic();
    statistics.consume(frames.data(), frames.size());
    if (state.range(0) != 0)
        statistics.supervise(statistics.learn());
    for (auto _ : state) {
        next(frames);
        statistics.consume(frames.data(), frames.size());
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kBatch);
    state.counters["per_frame"] =
        benchmark::Counter(kBatch, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(statisticsConsume)->ArgName("supervised")->Arg(0)->Arg(1);

// From the snapshot to the last pixel, off-screen.
void statisticsRefresh(benchmark::State &state)
{
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    StatisticsWindow window(nullptr);
    window.open();
    window.resize(kWindowSize);
    std::vector<RawFrame> frames = traffic();
    for (auto _ : state) {
        state.PauseTiming();
        next(frames);
        publishToTap(frames.data(), frames.size());
        QApplication::processEvents();
        std::this_thread::sleep_for(LiveSource::kInterval * 2);
        state.ResumeTiming();
        window.refresh();
        QApplication::processEvents();
    }
}
BENCHMARK(statisticsRefresh)->Unit(benchmark::kMillisecond)->Iterations(20);

} // namespace
