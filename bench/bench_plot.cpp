// A plot of 16 curves with ten million points in all: the repaint after a zoom, and what the points take.
#include "analysis/plotview.h"
#include "analysis/signalstore.h"
#include "signals/databaseset.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>
#include <cmath>

namespace
{
constexpr int kCurves = 16;
constexpr int kPoints = 10'000'000 / kCurves;
constexpr std::int64_t kStep = 1'000'000; // nanoseconds
constexpr QSize kView(1200, 700);

// stacked; noisy: every column is filled from top to bottom nearly, else it is a slow wave with a little noise.
void plotRepaint(benchmark::State &state)
{
    const bool stacked = state.range(0) != 0;
    const bool noisy = state.range(1) != 0;
    std::vector<PlotSignal> curves(kCurves);
    QVector<PlotSignal *> shown;
    std::size_t bytes = 0;
    std::uint32_t random = 1;
    for (int i = 0; i < kCurves; ++i) {
        PlotSignal &curve = curves[std::size_t(i)];
        curve.number = i + 1;
        curve.colour = plotColour(i + 1);
        for (int point = 0; point < kPoints; ++point) {
            random = random * 1664525 + 1013904223;
            const double noise = double(random >> 8) / double(1 << 24);
            curve.data.append({point * kStep, noisy ? noise : std::sin(point * 1e-4 * (i + 1)) + noise / 20});
        }
        bytes += curve.data.bytes();
        shown.append(&curve);
    }
    PlotView view;
    view.resize(kView);
    view.setCurves(shown);
    view.setStacked(stacked);
    view.show();
    view.fit();
    QCoreApplication::processEvents();
    const double whole = double(kPoints) * double(kStep) / kNanosecondsPerSecond;
    int round = 0;
    for (auto _ : state) {
        const double span = whole / (1 + round++ % 8);
        view.setTimes(whole / 3 - span / 3, whole / 3 + span * 2 / 3);
        view.showAll();
        view.grab();
    }
    state.counters["bytesPerPoint"] = double(bytes) / (double(kCurves) * kPoints);
}
BENCHMARK(plotRepaint)->ArgNames({"stacked", "noisy"})->ArgsProduct({{0, 1}, {0, 1}})->Unit(benchmark::kMillisecond);

// Frames that the database knows, six signals each, one of them on a curve.
void signalStore(benchmark::State &state)
{
    DatabaseSet set;
    set.add(QStringLiteral(OSTREL_VEHICLE_DATABASE), DatabaseChannels::Both);
    SignalStore store;
    store.setLookup(set.lookup());
    const auto feed = store.feed({1, 196, false, QStringLiteral("EngineSpeed")});
    std::vector<RawFrame> frames(2800); // of 50 ms at 56,000 frames a second
    for (std::size_t i = 0; i < frames.size(); ++i) {
        frames[i].time = std::int64_t(i) * 1000;
        frames[i].id = 196;
        frames[i].length = 8;
        frames[i].data[1] = std::uint8_t(i);
    }
    std::vector<CurvePoint> points;
    for (auto _ : state) {
        store.consume(frames.data(), frames.size());
        store.take(*feed, &points);
    }
    state.SetItemsProcessed(std::int64_t(state.iterations()) * std::int64_t(frames.size()));
}
BENCHMARK(signalStore);
} // namespace
