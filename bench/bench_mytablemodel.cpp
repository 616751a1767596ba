// Refresh rounds of the model alone, without a view, against a copy of the same rows.
#include "benchframes.h"

#include "frames/mytablemodel.h"

namespace
{

QList<FrameRow> rows(int count, int distinct)
{
    QList<FrameRow> list;
    for (const ModelItem &item : finishedItems(count, distinct, false))
        list.append(toFrameRow(item));
    return list;
}

// limit: rows kept in the list; a round shows at most so many.
void appendRound(benchmark::State &state)
{
    const int limit = static_cast<int>(state.range(0));
    const QList<FrameRow> round = rows(std::min(limit, kRound), 2048);
    MyTableModel model;
    while (model.rowCount() < limit)
        model.appendRows(round.mid(0, limit - model.rowCount()));
    for (auto _ : state) {
        model.removeFirstRows(round.size());
        model.appendRows(round);
    }
    countFrames(state, round.size());
}

void mergeRound(benchmark::State &state)
{
    const QList<FrameRow> round = rows(kRound, 1000);
    MyTableModel model;
    for (auto _ : state)
        for (const FrameRow &row : round)
            model.mergeRow(row);
    countFrames(state, kRound);
}

void copyRound(benchmark::State &state)
{
    const QList<FrameRow> round = rows(kRound, 2048);
    for (auto _ : state) {
        QList<FrameRow> copy;
        copy.reserve(round.size());
        for (const FrameRow &row : round)
            copy.append(row);
        benchmark::DoNotOptimize(copy);
    }
    countFrames(state, kRound);
}

} // namespace

BENCHMARK(appendRound)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(mergeRound)->Unit(benchmark::kMillisecond);
BENCHMARK(copyRound)->Name("copyRound/baseline")->Unit(benchmark::kMillisecond);
