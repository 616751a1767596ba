#include "benchframes.h"

#include "frames/framebuilder.h"

#include <type_traits>

template <typename Record> std::vector<Record> rawFrames(int count)
{
    std::vector<Record> records(static_cast<std::size_t>(count));
    std::uint32_t number = 0;
    for (Record &record : records) {
        record.id = number % kStandardIdLimit;
        record.length = sizeof record.data;
        for (std::size_t i = 0; i < sizeof record.data; ++i)
            record.data[i] = static_cast<std::uint8_t>(number + i);
        if constexpr (sizeof record.data == kFdDataBytes)
            record.flags = kFdBitRateSwitch;
        record.timeStamp = 1000000000ull + number * 17;
        ++number;
    }
    return records;
}

template std::vector<CanReceiveRecord> rawFrames(int);
template std::vector<CanFdReceiveRecord> rawFrames(int);

namespace
{
template <typename Record> QList<ModelItem> items(int count, int distinct)
{
    QList<ModelItem> batch;
    for (Record &record : rawFrames<Record>(count)) {
        record.id %= static_cast<std::uint32_t>(distinct);
        appendItem(batch, record, record.id % 2);
        batch.last().indexText = QString::number(batch.size());
        batch.last().systemTime = QStringLiteral("12:34:56.789");
    }
    return batch;
}
} // namespace

QList<ModelItem> finishedItems(int count, int distinct, bool fd)
{
    return fd ? items<CanFdReceiveRecord>(count, distinct) : items<CanReceiveRecord>(count, distinct);
}

void countFrames(benchmark::State &state, int perRound)
{
    const double frames = static_cast<double>(state.iterations()) * perRound;
    state.counters["per_frame"] = benchmark::Counter(frames, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["frames"] = benchmark::Counter(frames, benchmark::Counter::kIsRate);
}
