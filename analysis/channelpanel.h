// What a channel carries: load, controller, frames and bytes by kind, the load of the last minutes.
#pragma once

#include "frames/buswatch.h"
#include "statistics/channelstatistics.h"

#include <QAbstractTableModel>
#include <QGroupBox>

class LoadCurve;
class QLabel;
class QTableView;

// Rows: the kinds of frames, then all of them. Texts are kept and told only where they change.
class KindModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { RxRate, RxBytes, TxRate, TxBytes, RxTotal, TxTotal, ColumnCount };
    static constexpr int kRows = static_cast<int>(kFrameKinds) + 1;

    using QAbstractTableModel::QAbstractTableModel;

    // ofWhole: the rates are those of the whole time, not of its last second.
    void show(const ChannelStatistics &statistics, bool ofWhole);
    void setTexts();

    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : kRows; }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : ColumnCount; }
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    std::array<std::array<std::uint64_t, ColumnCount>, kRows> numbers_{};
};

class ChannelPanel : public QGroupBox
{
    Q_OBJECT

public:
    explicit ChannelPanel(unsigned channel, QWidget *parent = nullptr); // from 0

    // statistics: null as long as there are none. report: null of a recording, of which there is no present.
    void show(const ChannelStatistics *statistics, const BusReport *report);
    void setTexts();

private:
    const unsigned channel_;
    KindModel *kinds_;
    QLabel *load_;
    QLabel *state_;
    QTableView *table_;
    LoadCurve *curve_;
};
