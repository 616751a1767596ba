// Figures of a recording opened by row: ostrel_bench_recordings FILE EXPRESSION. Needs a file that is not kept:
// bench/make-candump-log makes one. Prints a table; nothing is judged.
#include "traces/recordingfilter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <random>

namespace
{
constexpr int kJumps = 300;
constexpr int kRowsInSight = 40;
constexpr double kNsPerMs = 1e6;
constexpr auto kStep = std::chrono::milliseconds(1);

double since(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / kNsPerMs;
}

void print(const char *what, double value, const char *unit)
{
    std::printf("%-36s %12.2f %s\n", what, value, unit);
}

double residentMiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024;
    return 0;
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc != 3) {
        std::fputs("ostrel_bench_recordings FILE EXPRESSION\n", stderr);
        return 2;
    }
    FilterError wrong;
    const auto expression = FrameFilter::parse(QString::fromLocal8Bit(argv[2]), &wrong);
    QElapsedTimer timer;
    timer.start();
    RecordingIndex index(QString::fromLocal8Bit(argv[1]));
    QString error;
    if (!expression || !index.open(&error)) {
        std::fprintf(stderr, "%s\n", qPrintable(expression ? error : wrong.message));
        return 1;
    }
    std::vector<RawFrame> frames(kRowsInSight);
    while (RecordingRows(index).read(0, kRowsInSight, frames.data()) < kRowsInSight && !index.settled())
        index.waitForMore(0, kStep);
    print("first rows", since(timer), "ms");
    while (!index.settled())
        index.waitForMore(index.rows(), kStep);
    print("index complete", since(timer), "ms");
    print("rows", static_cast<double>(index.rows()), "");
    print("index", static_cast<double>(index.bytesUsed()) / static_cast<double>(index.rows()), "bytes/row");

    RecordingRows rows(index);
    std::mt19937_64 random(1);
    std::vector<double> jumps;
    for (int i = 0; i < kJumps; ++i) {
        timer.restart();
        rows.read(random() % index.rows(), kRowsInSight, frames.data());
        jumps.push_back(since(timer));
    }
    std::sort(jumps.begin(), jumps.end());
    print("jump, median", jumps[kJumps / 2], "ms");
    print("jump, slowest", jumps.back(), "ms");

    timer.restart();
    RecordingFilter filter(index, *expression);
    while (filter.matches() == 0 && !filter.finished())
        std::this_thread::sleep_for(kStep);
    print("filter, first results", since(timer), "ms");
    while (!filter.finished())
        std::this_thread::sleep_for(kStep);
    print("filter, complete", since(timer), "ms");
    print("filter, matches", static_cast<double>(filter.matches()), "");
    jumps.clear();
    for (int i = 0; i < kJumps && filter.matches() > kRowsInSight; ++i) {
        const std::uint64_t first = random() % (filter.matches() - kRowsInSight);
        timer.restart();
        for (std::uint64_t match = first; match < first + kRowsInSight; ++match)
            rows.read(filter.rowOf(match), 1, frames.data());
        jumps.push_back(since(timer));
    }
    std::sort(jumps.begin(), jumps.end());
    if (!jumps.empty())
        print("jump among the matches, slowest", jumps.back(), "ms");
    print("most memory", residentMiB(), "MiB");
    return 0;
}
