// The rows of a recording that are in sight, as a table with the frame list's columns. Rows outside of it cost nothing:
// a view's own scroll bar and header would take eight bytes for each.
#pragma once

#include "frames/modelitem.h"
#include "traces/recordingfilter.h"

#include <QAbstractTableModel>
#include <QCache>
#include <QSet>

enum class RecordingTimes { Absolute, SinceStart, SincePrevious, SincePreviousOfId, SinceMarked };

class RecordingModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit RecordingModel(const RecordingIndex &index, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Only what the filter has found is shown; null: everything. The filter outlives its use here.
    void setFilter(const RecordingFilter *filter);
    const RecordingFilter *filter() const { return filter_; }
    // Rows that are shown in all; a position is a row's place among them.
    std::uint64_t total() const;
    std::uint64_t rowOf(std::uint64_t position) const;   // of the recording; position below total()
    std::uint64_t positionFrom(std::uint64_t row) const; // of the first shown row at or after this one
    // The window on them: up to count rows from the position on.
    void show(std::uint64_t position, int count);
    std::uint64_t top() const { return top_; }
    // The texts anew: language, rows that have come.
    void refresh();

    void setTimes(RecordingTimes times);
    void setMarked(std::uint64_t row); // of the recording
    std::uint64_t marked() const { return marked_; }
    void setBookmarks(const QSet<quint64> &rows);
    // Characters of the longest data text that was ever in sight.
    int longestData() const { return longestData_; }
    // The frame of a row of the recording; nothing when it cannot be read.
    std::optional<RawFrame> frameAt(std::uint64_t row) const;

private:
    using Frames = std::vector<RawFrame>;

    const Frames *blockOf(std::uint64_t row) const;
    FrameRow makeRow(std::uint64_t position) const;
    QString timeText(std::uint64_t position, std::uint64_t row, const RawFrame &frame) const;
    std::optional<std::int64_t> timeBeforeOfId(std::uint64_t row, const RawFrame &frame) const;

    const RecordingIndex &index_;
    const RecordingFilter *filter_ = nullptr;
    mutable RecordingRows source_;
    mutable QCache<quint64, Frames> blocks_;
    std::vector<FrameRow> rows_; // in sight
    std::uint64_t top_ = 0;
    int count_ = 0;
    int longestData_ = 0;
    RecordingTimes times_ = RecordingTimes::SinceStart;
    std::uint64_t marked_ = 0;
    QSet<quint64> bookmarks_;
};

// Seconds with six decimals, with a minus where due.
QString recordingSeconds(std::int64_t nanoseconds);
// "yyyy-MM-dd hh:mm:ss.zzzzzz", local time of nanoseconds since 1970 UTC.
QString recordingDate(std::int64_t utc);
