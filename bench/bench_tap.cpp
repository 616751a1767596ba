// The tap: what a frame costs that nobody reads, and what the receivers of two full channels take without a window,
// with nobody reading, with one reader, with one recorder. OSTREL_BENCH_SECONDS: how long such a run takes, 10 when not
// set.
#include "benchframes.h"
#include "processusage.h"

#include "device/devicelayer.h"
#include "device/driver/simulated/simulateddriver.h"
#include "frames/adapterclock.h"
#include "frames/pendingframes.h"
#include "frames/rawrecords.h"
#include "frames/recvthread.h"
#include "frames/tap.h"
#include "traces/recorder.h"

#include <QTemporaryDir>

#include <atomic>
#include <thread>

namespace
{

constexpr int kFramesPerSecond = 28000; // of one channel
constexpr int kBatch = 1000;            // of the driver's reads
constexpr std::size_t kEnough = 4096;   // frames for which a reader is woken
constexpr std::chrono::milliseconds kReaderWait{100};

// Two channels that receive classic frames of 8 bytes as fast as a bus could bring them, numbered and free of cost.
class PacedDriver : public SimulatedDriver
{
public:
    PacedDriver() : records_(rawFrames<CanReceiveRecord>(kBatch)) {}

    std::uint32_t ReceiveCan(Handle handle, CanReceiveRecord *records, std::uint32_t capacity, std::uint32_t) override
    {
        std::uint64_t &given = given_[handle == firstChannel_ ? 0 : 1];
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin_;
        const std::uint64_t due = static_cast<std::uint64_t>(elapsed.count() * kFramesPerSecond) - given;
        const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(due, capacity));
        std::copy_n(records_.begin(), count, records);
        for (std::uint32_t i = 0; i < count; ++i)
            records[i].timeStamp = ++given;
        return count;
    }
    std::uint32_t ReceiveCanFd(Handle, CanFdReceiveRecord *, std::uint32_t, std::uint32_t) override { return 0; }
    Handle InitChannel(Handle device, std::uint32_t channel, const ChannelInitRecord *record) override
    {
        const Handle handle = SimulatedDriver::InitChannel(device, channel, record);
        if (channel == 0)
            firstChannel_ = handle;
        return handle;
    }
    // After the receivers have ended.
    std::uint64_t given() const { return given_[0] + given_[1]; }

private:
    const std::vector<CanReceiveRecord> records_;
    const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    std::atomic<Handle> firstChannel_{0};
    std::uint64_t given_[kChannelCount] = {};
};

// What takes the frames: a reader that counts them, with a recorder behind it or not.
class Listener
{
public:
    explicit Listener(const char *format)
    {
        if (*format) {
            RecorderSettings settings;
            settings.format = traceFormatFromText(QString::fromLatin1(format)).value();
            settings.path = folder_.filePath(QStringLiteral("recording"));
            recorder_ = std::make_unique<Recorder>(settings, [](const RecorderEvent &) {});
            recorder_->begin();
        }
        thread_ = std::thread([this] { read(); });
    }
    // Everything that came, once no more can.
    std::uint64_t end()
    {
        reader_.interrupt();
        thread_.join();
        if (recorder_)
            recorder_->end();
        return recorder_ ? recorder_->recordedFrames() : frames_;
    }
    std::uint64_t lost() const { return lost_; }

private:
    void read()
    {
        TapBatch batch;
        for (bool goOn = true; goOn;) {
            goOn = reader_.take(batch, kReaderWait, kEnough);
            frames_ += batch.frames.size();
            lost_ += batch.lost;
            if (recorder_)
                recorder_->write(batch.frames.data(), static_cast<int>(batch.frames.size()));
        }
    }

    QTemporaryDir folder_;
    TapReader reader_;
    std::unique_ptr<Recorder> recorder_;
    std::thread thread_;
    std::uint64_t frames_ = 0;
    std::uint64_t lost_ = 0;
};

// format: of a recorder; "": a reader alone; null: nobody.
void tapPaced(benchmark::State &state, const char *format)
{
    bool ok = false;
    const double asked = qEnvironmentVariable("OSTREL_BENCH_SECONDS").toDouble(&ok);
    const double seconds = ok && asked > 0 ? asked : 10;
    setPendingFramesTaken(false);
    for (auto _ : state) {
        auto owned = std::make_unique<PacedDriver>();
        PacedDriver &driver = *owned;
        setDriver(std::move(owned));
        if (!openDevice(kDeviceType, 0, 0) || !initChannel(0, 0) || !initChannel(1, 0))
            state.SkipWithError("the simulated adapter does not open");
        std::unique_ptr<Listener> listener;
        if (format)
            listener = std::make_unique<Listener>(format);
        recvThread receivers[] = {recvThread(0), recvThread(1)};
        const ProcessUsage before = ProcessUsage::now();
        for (recvThread &receiver : receivers)
            receiver.start();
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
        for (recvThread &receiver : receivers)
            receiver.stopAndWait();
        state.counters["cpu_percent"] = (ProcessUsage::now().cpuSeconds - before.cpuSeconds) / seconds * 100;
        state.counters["frames_per_second"] = static_cast<double>(driver.given()) / seconds;
        if (listener && (listener->end() != driver.given() || listener->lost() != 0))
            state.SkipWithError("frames are lost");
        state.SetIterationTime(seconds);
        closeDevice();
    }
    setPendingFramesTaken(true);
}

// What the receive thread does for the tap with a batch that nobody reads.
void tapNobody(benchmark::State &state)
{
    const auto records = rawFrames<CanReceiveRecord>(kBatch);
    for (auto _ : state) {
        noteAdapterTime(0, records.back().timeStamp);
        benchmark::DoNotOptimize(tapHasReaders());
    }
    countFrames(state, kBatch);
}

// The same with one reader, its taking included.
void tapReader(benchmark::State &state)
{
    const auto records = rawFrames<CanReceiveRecord>(kBatch);
    TapReader reader;
    TapBatch taken;
    std::vector<RawFrame> batch;
    for (auto _ : state) {
        batch.clear();
        for (const CanReceiveRecord &record : records)
            batch.push_back(toRawFrame(record, 0));
        publishToTap(batch.data(), batch.size());
        reader.take(taken, std::chrono::milliseconds(0));
        benchmark::DoNotOptimize(taken.frames.data());
    }
    countFrames(state, kBatch);
}

} // namespace

BENCHMARK(tapNobody);
BENCHMARK(tapReader);
BENCHMARK_CAPTURE(tapPaced, baseline_nobody, nullptr)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(tapPaced, reader, "")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(tapPaced, blf, "blf")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(tapPaced, candump, "candump")->UseManualTime()->Iterations(1);
