#include "transmit/csventries.h"

#include "device/driver/timeunits.h"
#include "frames/csvrow.h"
#include "frames/rawrecords.h"
#include "transmit/framechecks.h"

#include <algorithm>
#include <map>
#include <utility>

namespace
{
constexpr char kLineFeed = '\n';

struct Rows {
    std::shared_ptr<TransmitEntry> entry;
    std::uint64_t rows = 0; // with a time
    std::uint64_t span = 0; // milliseconds from the first to the last of them
    std::uint32_t lastTime = 0;

    void addTime(std::uint32_t time)
    {
        if (rows++ > 0)
            span += (time + kMillisecondsPerDay - lastTime) % kMillisecondsPerDay; // past midnight
        lastTime = time;
    }
};

template <typename Record> RawFrame frameOf(const CsvFrame &row, unsigned channel)
{
    Record record;
    toRecord(row, record);
    return toRawFrame(record, channel, 0);
}
} // namespace

CsvEntries entriesFromCsv(const QString &rows)
{
    CsvEntries result;
    std::map<std::pair<unsigned, std::uint32_t>, Rows> known;
    std::vector<Rows *> order;
    for (const QByteArray &line : rows.toUtf8().split(kLineFeed)) {
        const QByteArray text = line.trimmed();
        CsvFrame row;
        if (text.isEmpty())
            continue;
        if (!parseCsvRow(text.constData(), static_cast<std::size_t>(text.size()), row)) {
            ++result.skipped;
            continue;
        }
        const unsigned channel = row.channel == CsvFrame::kNoChannel ? 0 : row.channel;
        const RawFrame frame =
            row.canFd ? frameOf<CanFdTransmitRecord>(row, channel) : frameOf<CanTransmitRecord>(row, channel);
        if (!isSendable(frame)) {
            ++result.skipped;
            continue;
        }
        Rows &same = known[{channel, row.id}];
        if (!same.entry) {
            same.entry = std::make_shared<TransmitEntry>();
            same.entry->serial = newTransmitSerial();
            same.entry->channel = channel;
            order.push_back(&same);
        }
        same.entry->frame = frame;
        if (row.hasTime)
            same.addTime(row.timeMs);
    }
    for (Rows *same : order) {
        const bool measured = same->rows > 1;
        same->entry->mode = measured ? TransmitMode::Periodic : TransmitMode::OnRequest;
        if (measured) {
            const std::uint64_t gaps = same->rows - 1;
            same->entry->interval =
                static_cast<unsigned>(std::clamp<std::uint64_t>((same->span + gaps / 2) / gaps, 1, kLongestInterval));
        }
        result.entries.append(same->entry);
    }
    return result;
}
