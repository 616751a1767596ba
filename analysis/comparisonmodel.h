// What a comparison of two recordings has found, a row for each identifier.
#pragma once

#include "statistics/recordingcomparison.h"

#include <QAbstractTableModel>

class ComparisonModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        ChannelColumn,
        IdColumn,
        KindColumn,
        FindingColumn,
        LeftCountColumn,
        RightCountColumn,
        LeftPeriodColumn, // means, in milliseconds
        RightPeriodColumn,
        DifferenceColumn, // number of the frame with the first difference, and its rows
        LeftDataColumn,
        RightDataColumn,
        ColumnCount
    };
    enum class Finding { Same, OnlyLeft, OnlyRight, DataDiffer };
    enum class Shown { Everything, OnlyInOne, DataDiffer };

    using QAbstractTableModel::QAbstractTableModel;

    void setResult(std::vector<ComparedIdentifier> result);
    void setShown(Shown shown);
    void setTexts(); // in the current language

    const ComparedIdentifier &identifier(int row) const { return result_.at(order_.at(static_cast<std::size_t>(row))); }
    const std::vector<ComparedIdentifier> &all() const { return result_; }
    static Finding findingOf(const ComparedIdentifier &identifier);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order) override;

private:
    static QVariant alignment(int column);
    static QString text(const ComparedIdentifier &identifier, int column);
    static double number(const ComparedIdentifier &identifier, int column);
    void arrange();

    std::vector<ComparedIdentifier> result_;
    std::vector<std::size_t> order_; // of the rows, in result_
    Shown shownRows_ = Shown::Everything;
    int sortColumn_ = -1;
    Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
};
