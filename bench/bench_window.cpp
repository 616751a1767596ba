// The whole window on the simulated adapter: what it costs, whether it keeps up and what it loses (nothing).
// A run takes OSTREL_BENCH_SECONDS (10 when not set); a repetition is one run. OSTREL_BENCH_FILES: where the captures
// go, the folder for temporary files when not set.
#include "benchframes.h"
#include "processusage.h"
#include "trialscene.h"

#include "app/displayfilter.h"
#include "app/receiveview.h"
#include "device/driver/driverfactory.h"
#include "frames/csvreader.h"
#include "frames/csvrow.h"
#include "frames/mytablemodel.h"
#include "frames/pendingframes.h"

#include <QApplication>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryDir>
#include <QWindow>

#include <atomic>
#include <chrono>
#include <thread>

namespace
{
constexpr double kUsPerSecond = 1e6;
constexpr int kSettleMs = 1000; // from opening on, until lists and buffers have their size
constexpr char kShowWindow[] = "--show-window";
constexpr char kShowNothing[] = "--show-nothing";

int runMs()
{
    bool ok = false;
    const double seconds = qEnvironmentVariable("OSTREL_BENCH_SECONDS").toDouble(&ok);
    return ok && seconds > 0 ? static_cast<int>(seconds * 1000) : 10000;
}

QString captureFolder()
{
    return qEnvironmentVariable("OSTREL_BENCH_FILES", QDir::tempPath()) + "/ostrel-bench-XXXXXX";
}

// The event loop as the program runs it: it sleeps when there is nothing to do.
void runLoop(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

// Lets the event loop run, and tells what the process has used meanwhile.
void measureUsage(benchmark::State &state)
{
    const ProcessUsage before = ProcessUsage::now();
    QElapsedTimer clock;
    clock.start();
    runLoop(runMs());
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    state.counters["cpu_percent"] = (ProcessUsage::now().cpuSeconds - before.cpuSeconds) / seconds * 100;
    state.SetIterationTime(seconds);
}

// The window by itself: the stand-in for its user, who looks for dialogs two hundred times a second, is away meanwhile.
void measureUsage(benchmark::State &state, Scene &scene)
{
    scene.user.reset();
    measureUsage(state);
    scene.user = std::make_unique<WindowDriver>(*scene.window);
}

// After measureUsage: the watch's timer costs something itself.
void measureGap(benchmark::State &state)
{
    LoopWatch watch;
    watch.start();
    runLoop(runMs());
    state.counters["longest_gap_ms"] = watch.longestMs();
}

SimulatorOptions flood(bool busTime)
{
    SimulatorOptions options;
    options.traffic = SimulatorOptions::Traffic::Flood;
    options.busTime = busTime;
    return options;
}

SimulatorOptions quietBus()
{
    SimulatorOptions options;
    options.traffic = SimulatorOptions::Traffic::Off;
    return options;
}

double framesCounted(const WindowDriver &user)
{
    return static_cast<double>(user.received());
}

bool openEverything(benchmark::State &state, Scene &scene)
{
    const bool opened = scene.user->openEverything();
    if (!opened)
        state.SkipWithError("not opened");
    return opened;
}

// The frames of the flood are numbered in their data: every channel's rows must count on without a gap. Answers the
// rows, -1 when some are missing.
double numberedRows(const QString &path)
{
    CsvReader reader;
    if (!reader.open(path))
        return -1;
    CsvReader::Line line;
    CsvFrame frame;
    std::array<std::uint32_t, kChannelCount> next{};
    std::array<bool, kChannelCount> seen{};
    double rows = 0;
    while (reader.next(line)) {
        if (!parseCsvRow(line.text, line.size, frame))
            return -1;
        std::uint32_t number = 0;
        for (unsigned i = 0; i < sizeof number; ++i)
            number |= static_cast<std::uint32_t>(frame.data[i]) << (8 * i);
        if (seen[frame.channel] && number != next[frame.channel])
            return -1;
        seen[frame.channel] = true;
        next[frame.channel] = number + 1;
        ++rows;
    }
    return rows;
}

void endCapture(benchmark::State &state, Scene &scene)
{
    scene.user->closeDevice();
    scene.user->stopCapture();
    if (scene.user->log().contains("丢失"))
        state.SkipWithError("frames were lost");
}

// Both channels as full as a bus can be, everything captured.
void saturated(benchmark::State &state)
{
    const QTemporaryDir folder(captureFolder());
    for (auto _ : state) {
        Scene scene(flood(true));
        const double residentBefore = ProcessUsage::now().residentMiB();
        scene.user->startCapture(folder.filePath("saturated.csv"));
        if (!openEverything(state, scene))
            return;
        runLoop(kSettleMs);
        measureUsage(state, scene);
        measureGap(state);
        state.counters["grown_MiB"] = ProcessUsage::now().residentMiB() - residentBefore;
        endCapture(state, scene);
        state.counters["frames"] = framesCounted(*scene.user);
    }
}

// The same with conditions on two columns of a list of 50,000 rows: one lets one channel through, the other holds a
// text for every row.
void saturatedFiltered(benchmark::State &state)
{
    constexpr int kRows = 50000;
    const QTemporaryDir folder(captureFolder());
    for (auto _ : state) {
        Scene scene(flood(true));
        auto *view = scene.window->findChild<ReceiveView *>();
        view->setListLimit(kRows);
        appendPendingFrames(finishedItems(kRows, kRows, false));
        view->refresh();
        QStringList texts;
        for (int row = 0; row < view->model()->rowCount(); ++row)
            texts.append(view->model()->cellText(row, TimeStampColumn));
        auto *filter = scene.window->findChild<DisplayFilter *>();
        filter->setCondition(texts, TimeStampColumn);
        filter->setCondition({"1"}, ChannelColumn);
        scene.user->startCapture(folder.filePath("filtered.csv"));
        if (!openEverything(state, scene))
            return;
        runLoop(kSettleMs);
        measureUsage(state, scene);
        measureGap(state);
        endCapture(state, scene);
    }
}

// Frames that take no time on the bus: as many as the program can take.
void wholePath(benchmark::State &state)
{
    SimulatorOptions options = flood(false);
    BusFrame frame;
    frame.length = kClassicDataBytes;
    options.flood.push_back(frame);
    const QTemporaryDir folder(captureFolder());
    const QString path = folder.filePath("flood.csv");
    for (auto _ : state) {
        Scene scene(options);
        scene.user->startCapture(path);
        if (!openEverything(state, scene))
            return;
        runLoop(kSettleMs);
        const double framesBefore = framesCounted(*scene.user);
        const double residentBefore = ProcessUsage::now().residentMiB();
        QElapsedTimer clock;
        clock.start();
        measureUsage(state, scene);
        state.counters["frames_per_s"] =
            (framesCounted(*scene.user) - framesBefore) / (static_cast<double>(clock.nsecsElapsed()) / 1e9);
        state.counters["grown_MiB"] = ProcessUsage::now().residentMiB() - residentBefore;
        endCapture(state, scene);
        const double frames = framesCounted(*scene.user);
        state.counters["frames"] = frames;
        if (numberedRows(path) != frames)
            state.SkipWithError("rows are missing");
    }
    QFile::remove(path);
}

void idleBus(benchmark::State &state)
{
    for (auto _ : state) {
        Scene scene(quietBus());
        if (!openEverything(state, scene))
            return;
        runLoop(kSettleMs);
        measureUsage(state, scene);
    }
}

void deviceClosed(benchmark::State &state)
{
    for (auto _ : state) {
        Scene scene(quietBus());
        runLoop(kSettleMs);
        measureUsage(state, scene);
    }
}

// --- what the above is compared with -----------------------------------------------------------------------------

// Two threads that do nothing but wake every millisecond, as receivers must.
void twoPollers(benchmark::State &state)
{
    for (auto _ : state) {
        std::atomic<bool> stop{false};
        const auto poll = [&stop] {
            while (!stop)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        };
        std::thread pollers[] = {std::thread(poll), std::thread(poll)};
        measureUsage(state);
        stop = true;
        for (std::thread &poller : pollers)
            poller.join();
    }
}

// An event loop that has nothing to do but to be watched.
void emptyLoop(benchmark::State &state)
{
    for (auto _ : state) {
        measureUsage(state);
        measureGap(state);
    }
}

// --- start -------------------------------------------------------------------------------------------------------

void showAndReport(QWidget &window)
{
    window.show();
    while (!window.windowHandle()->isExposed())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::processEvents();
    QTextStream(stdout) << ProcessUsage::now().residentMiB() << '\n';
}

// What the child process does: as the program's own main function, up to the window shown and painted.
int showWindow()
{
    const TestFolder folder;
    folder.copyCatalogues();
    setDriver(makeDriver(qgetenv("OSTREL_DRIVER").toStdString()));
    {
        MainWindow window;
        showAndReport(window);
    }
    setDriver(nullptr);
    return 0;
}

int showNothing()
{
    QWidget window;
    window.resize(1366, 768);
    showAndReport(window);
    return 0;
}

void start(benchmark::State &state, const char *what)
{
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(what)});
        if (!child.waitForReadyRead()) {
            state.SkipWithError("no window");
            return;
        }
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        state.counters["resident_MiB"] = child.readAllStandardOutput().trimmed().toDouble();
        child.waitForFinished();
    }
}
} // namespace

BENCHMARK_CAPTURE(start, window, kShowWindow)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(start, baseline, kShowNothing)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(deviceClosed)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(idleBus)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(twoPollers)->Name("twoPollers/baseline")->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(saturated)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(saturatedFiltered)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(emptyLoop)->Name("emptyLoop/baseline")->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(wholePath)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const QString task = QCoreApplication::arguments().value(1);
    if (task == QLatin1String(kShowWindow))
        return showWindow();
    if (task == QLatin1String(kShowNothing))
        return showNothing();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
