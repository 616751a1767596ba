// The identifiers of a bus as rows: what each does, how regularly, and what supervision finds of it.
#pragma once

#include "signals/messagelookup.h"
#include "statistics/livestatistics.h"

#include <QAbstractTableModel>

class IdentifierModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        ChannelColumn,
        DirectionColumn,
        IdColumn,
        KindColumn,
        LengthColumn,
        CountColumn,
        DataColumn,
        PeriodColumn,
        MeanColumn,
        MinimumColumn,
        MaximumColumn,
        DeviationColumn,
        LastSeenColumn,
        SupervisionColumn,
        MessageColumn,
        ColumnCount
    };

    using QAbstractTableModel::QAbstractTableModel;

    // Shows another moment; what was shown before is left in the snapshot, to be filled again.
    void show(StatisticsSnapshot &snapshot);
    const StatisticsSnapshot &shown() const { return shown_; }
    // Only rows that have every word of the text in their channel, direction, identifier, kind, message's
    // name or supervision.
    void setSearch(const QString &text);
    // What the identifiers are called; null: nothing.
    void setLookup(std::shared_ptr<const MessageLookup> lookup);
    void setTexts(); // in the current language

    // Null when the row's message was never seen.
    const IdentifierStatistics *entry(int row) const;
    const IdentifierKey &key(int row) const { return keyOf(order_[static_cast<std::size_t>(row)]); }
    QString text(int row, int column) const;
    // All rows as they stand, with a header; UTF-8 with a byte-order mark.
    QByteArray csv() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    // Stable: equal rows stand in the order in which they were first seen. column -1: in that order.
    void sort(int column, Qt::SortOrder order) override;

private:
    const IdentifierKey &keyOf(std::size_t place) const;
    const IdentifierStatistics *entryAt(std::size_t place) const;
    const SupervisionMark *markOf(const IdentifierKey &key) const;
    QString searched(std::size_t place) const;
    QString supervisionText(std::size_t place) const;
    const QString &foundName(const IdentifierKey &key) const;
    const QString &messageName(std::size_t place) const;
    void findNames();
    double number(std::size_t place, int column) const;
    std::vector<std::size_t> arranged() const;
    void rearrange(std::vector<std::size_t> next, bool anew);
    QVariant background(int row, int column) const;
    QByteArray changes(int row) const;

    StatisticsSnapshot shown_;
    std::shared_ptr<const MessageLookup> lookup_;
    std::vector<QString> names_;      // of the identifiers' messages
    std::vector<std::size_t> order_;  // places in the identifiers, then in the absent ones, as shown
    std::vector<std::uint64_t> keys_; // of the rows, packed
    QStringList words_;
    int sortColumn_ = -1;
    Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
};
