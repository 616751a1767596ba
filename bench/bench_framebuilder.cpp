// Building received records, settings look-ups included, against a copy of the same number of characters.
#include "benchframes.h"

#include "device/settingsstore.h"
#include "frames/framebuilder.h"

#include <QTemporaryDir>

namespace
{

// A store as full as the program's own.
void fillSettings(bool hex)
{
    static const QTemporaryDir dir;
    settings::load(dir.filePath(QStringLiteral("setdb.txt")));
    for (int i = 0; i < 60; ++i)
        settings::setValue(QStringLiteral("ch%1param").arg(i), QStringLiteral("0"), false);
    settings::setValue(QStringLiteral("timeHex"), hex ? QStringLiteral("1") : QStringLiteral("0"), false);
    settings::setValue(QStringLiteral("recvIDAdd"), QStringLiteral("0"), false);
}

template <typename Record> void build(benchmark::State &state, bool hex)
{
    fillSettings(hex);
    const auto records = rawFrames<Record>(1000); // one driver read
    for (auto _ : state) {
        QList<ModelItem> batch;
        batch.reserve(static_cast<int>(records.size()));
        for (const Record &record : records) {
            // The look-up of the continuity check, which stands in the receive thread.
            benchmark::DoNotOptimize(settings::number(QStringLiteral("recvIDAdd"), QStringLiteral("0")));
            appendItem(batch, record, 0);
        }
        benchmark::DoNotOptimize(batch);
    }
    countFrames(state, static_cast<int>(records.size()));
}

// Copies the eleven texts of every item, character by character as text.
void copyTexts(benchmark::State &state, bool fd)
{
    const QList<ModelItem> items = finishedItems(1000, 2048, fd);
    for (auto _ : state) {
        for (const ModelItem &item : items)
            for (int column = 0; column < FrameColumnCount; ++column) {
                const QString &text = columnText(item, static_cast<FrameColumn>(column));
                QString copy(text.constData(), text.size());
                benchmark::DoNotOptimize(copy);
            }
    }
    countFrames(state, items.size());
}

void buildClassic(benchmark::State &state, bool hex)
{
    build<CanReceiveRecord>(state, hex);
}
void buildFd(benchmark::State &state, bool hex)
{
    build<CanFdReceiveRecord>(state, hex);
}

} // namespace

BENCHMARK_CAPTURE(buildClassic, classic8_hex, true);
BENCHMARK_CAPTURE(buildClassic, classic8_seconds, false);
BENCHMARK_CAPTURE(copyTexts, baseline_classic8, false);
BENCHMARK_CAPTURE(buildFd, fd64_hex, true);
BENCHMARK_CAPTURE(copyTexts, baseline_fd64, true);
