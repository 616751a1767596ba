#include "analysis/recordingmodel.h"

#include "device/driver/timeunits.h"
#include "frames/rawframetexts.h"
#include "traces/columntitles.h"

#include <QDateTime>

#include <algorithm>

namespace
{
constexpr std::uint64_t kBlock = RecordingIndex::kBlockRows;
constexpr int kKeptBlocks = 96;
constexpr std::uint64_t kLookBackBlocks = 64; // for an identifier's row before; some 65,000 rows

QDateTime dateOf(std::int64_t utc)
{
    const std::int64_t rest =
        (utc % kNanosecondsPerMillisecond + kNanosecondsPerMillisecond) % kNanosecondsPerMillisecond;
    return QDateTime::fromMSecsSinceEpoch((utc - rest) / kNanosecondsPerMillisecond);
}
} // namespace

QString recordingSeconds(std::int64_t nanoseconds)
{
    const auto size =
        nanoseconds < 0 ? 0 - static_cast<std::uint64_t>(nanoseconds) : static_cast<std::uint64_t>(nanoseconds);
    const std::uint64_t microseconds = size / kNanosecondsPerMicrosecond;
    constexpr std::uint64_t unit = kNanosecondsPerSecond / kNanosecondsPerMicrosecond;
    return (nanoseconds < 0 ? QStringLiteral("-") : QString()) + QString::number(microseconds / unit) +
           QLatin1Char('.') + QString::number(microseconds % unit).rightJustified(6, QLatin1Char('0'));
}

QString recordingDate(std::int64_t utc)
{
    const std::int64_t microseconds =
        ((utc % kNanosecondsPerMillisecond + kNanosecondsPerMillisecond) % kNanosecondsPerMillisecond) /
        kNanosecondsPerMicrosecond;
    return dateOf(utc).toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")) +
           QString::number(microseconds).rightJustified(3, QLatin1Char('0'));
}

RecordingModel::RecordingModel(const RecordingIndex &index, QObject *parent)
    : QAbstractTableModel(parent), index_(index), source_(index), blocks_(kKeptBlocks)
{
}

int RecordingModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int RecordingModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : FrameColumnCount;
}

QVariant RecordingModel::data(const QModelIndex &index, int role) const
{
    if (role != Qt::DisplayRole || !index.isValid())
        return {};
    return rows_.at(static_cast<std::size_t>(index.row())).at(static_cast<std::size_t>(index.column()));
}

QVariant RecordingModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return QAbstractTableModel::headerData(section, orientation, role);
    return columnTitles().value(section);
}

void RecordingModel::setFilter(const RecordingFilter *filter)
{
    filter_ = filter;
    top_ = 0;
    refresh();
}

std::uint64_t RecordingModel::total() const
{
    return filter_ ? filter_->matches() : index_.rows();
}

std::uint64_t RecordingModel::rowOf(std::uint64_t position) const
{
    return filter_ ? filter_->rowOf(position) : position;
}

std::uint64_t RecordingModel::positionFrom(std::uint64_t row) const
{
    return filter_ ? filter_->matchFrom(row) : std::min(row, index_.rows());
}

void RecordingModel::show(std::uint64_t position, int count)
{
    top_ = position;
    count_ = count;
    const std::uint64_t all = total();
    top_ = std::min(top_, all);
    const auto there = static_cast<std::size_t>(std::min<std::uint64_t>(static_cast<std::uint64_t>(count), all - top_));
    std::vector<FrameRow> rows;
    for (std::size_t i = 0; i < there; ++i)
        rows.push_back(makeRow(top_ + i));
    for (const FrameRow &row : rows)
        longestData_ = std::max(longestData_, row[DataColumn].size());
    const int before = rowCount();
    const int now = static_cast<int>(there);
    if (now > before)
        beginInsertRows({}, before, now - 1);
    else if (now < before)
        beginRemoveRows({}, now, before - 1);
    rows_ = std::move(rows);
    if (now > before)
        endInsertRows();
    else if (now < before)
        endRemoveRows();
    if (now > 0)
        emit dataChanged(index(0, 0), index(now - 1, FrameColumnCount - 1));
}

void RecordingModel::refresh()
{
    // Blocks that were not whole may have got more.
    const std::uint64_t last = index_.rows() / kBlock;
    if (const Frames *block = blocks_.object(last); block && block->size() < kBlock)
        blocks_.remove(last);
    show(top_, count_);
}

void RecordingModel::setTimes(RecordingTimes times)
{
    times_ = times;
    refresh();
}

void RecordingModel::setMarked(std::uint64_t row)
{
    marked_ = row;
    refresh();
}

void RecordingModel::setBookmarks(const QSet<quint64> &rows)
{
    bookmarks_ = rows;
    refresh();
}

const RecordingModel::Frames *RecordingModel::blockOf(std::uint64_t row) const
{
    const std::uint64_t number = row / kBlock;
    const std::uint64_t there = std::min(kBlock, index_.rows() - number * kBlock);
    if (const Frames *known = blocks_.object(number); known && known->size() >= there)
        return known;
    auto *frames = new Frames(kBlock);
    const int got = source_.read(number * kBlock, static_cast<int>(kBlock), frames->data());
    frames->resize(static_cast<std::size_t>(got));
    blocks_.insert(number, frames);
    return blocks_.object(number);
}

std::optional<RawFrame> RecordingModel::frameAt(std::uint64_t row) const
{
    if (row >= index_.rows())
        return std::nullopt;
    const Frames *block = blockOf(row);
    const auto offset = static_cast<std::size_t>(row % kBlock);
    return offset < block->size() ? std::optional(block->at(offset)) : std::nullopt;
}

FrameRow RecordingModel::makeRow(std::uint64_t position) const
{
    const std::uint64_t row = rowOf(position);
    const std::optional<RawFrame> frame = frameAt(row);
    ModelItem item;
    if (frame) {
        item = textsOf(*frame);
        item.timeStamp = timeText(position, row, *frame);
        if (const auto start = index_.state().startUtc)
            item.systemTime = dateOf(*start + frame->time).toString(QStringLiteral("hh:mm:ss.zzz"));
    }
    item.indexText = QString::number(row + 1) + (bookmarks_.contains(row) ? QStringLiteral(" *") : QString());
    return toFrameRow(std::move(item));
}

QString RecordingModel::timeText(std::uint64_t position, std::uint64_t row, const RawFrame &frame) const
{
    const auto since = [&frame](const std::optional<RawFrame> &other) {
        return other ? recordingSeconds(frame.time - other->time) : QString();
    };
    switch (times_) {
    case RecordingTimes::Absolute:
        if (const auto start = index_.state().startUtc)
            return recordingDate(*start + frame.time);
        break;
    case RecordingTimes::SincePrevious:
        return position > 0 ? since(frameAt(rowOf(position - 1))) : QString();
    case RecordingTimes::SincePreviousOfId: {
        const auto before = timeBeforeOfId(row, frame);
        return before ? recordingSeconds(frame.time - *before) : QString();
    }
    case RecordingTimes::SinceMarked:
        return since(frameAt(marked_));
    case RecordingTimes::SinceStart:
        break;
    }
    return recordingSeconds(frame.time);
}

std::optional<std::int64_t> RecordingModel::timeBeforeOfId(std::uint64_t row, const RawFrame &frame) const
{
    const std::uint64_t first = row / kBlock - std::min(row / kBlock, kLookBackBlocks);
    for (std::uint64_t end = row; end > first * kBlock; end = (end - 1) / kBlock * kBlock) {
        const Frames *block = blockOf(end - 1);
        const std::uint64_t begin = (end - 1) / kBlock * kBlock;
        for (auto i = std::min<std::size_t>(static_cast<std::size_t>(end - begin), block->size()); i > 0; --i) {
            const RawFrame &other = block->at(i - 1);
            if (other.id == frame.id && other.extended == frame.extended && other.channel == frame.channel &&
                other.error == frame.error)
                return other.time;
        }
    }
    return std::nullopt;
}
