// The frame list: rows of ready-made texts, oldest first. GUI thread only.
#pragma once

#include "frames/modelitem.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QSet>

#include <array>

class MyTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit MyTableModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override; // number of titles
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    // A column past the eleven stores nothing, but is told and answered as if it did.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Replaces the titles, marks of filtered columns included. No signal: tell the view.
    void setHeader(const QStringList &titles);
    const QStringList &header() const { return header_; }

    // Empty when row or column is out of range.
    QString cellText(int row, int column) const;
    // The row must exist.
    const FrameRow &row(int row) const { return rows_.at(row); }

    void appendRows(const QList<FrameRow> &rows);
    // Overwrites the oldest row of the same channel, identifier and direction, in a model reset; without one the row
    // goes to the end.
    void mergeRow(const FrameRow &row);
    void removeFirstRows(int count); // one notification per row
    void clear();

    // The texts a column may show; empty: all. Marks the column's title with "*". No signal: tell the view.
    void setFilter(int column, const QStringList &accepted);
    const QStringList &filter(int column) const { return filters_.at(column); } // column 0..10
    // Whether some column has a condition.
    bool isFiltered() const { return filtered_; }
    // Whether every column that has a condition shows one of its texts.
    bool acceptsRow(const FrameRow &row) const;
    bool acceptsRow(const ModelItem &item) const;

private:
    struct MergeKey {
        QString channel;
        QString id;
        QString direction;
        bool operator==(const MergeKey &other) const
        {
            return channel == other.channel && id == other.id && direction == other.direction;
        }
        friend uint qHash(const MergeKey &key, uint seed)
        {
            return ::qHash(key.id, seed) ^ (::qHash(key.channel, seed) * 31 + ::qHash(key.direction, seed));
        }
    };
    static MergeKey keyOf(const FrameRow &row);
    void buildIndex();
    void dropIndex();
    void insertAtEnd(const FrameRow &row);
    template <typename TextOf> bool accepts(TextOf textOf) const;

    QList<FrameRow> rows_;
    QStringList header_;
    QList<QStringList> filters_;                           // one per column
    std::array<QSet<QString>, FrameColumnCount> accepted_; // the same texts, to look up: a list may hold thousands
    bool filtered_ = false;

    // The oldest row of every key, counted from the first row that the index ever knew; built when a merge needs it.
    QHash<MergeKey, qint64> index_;
    qint64 removedRows_ = 0; // rows removed at the front since the index was built
    bool indexValid_ = false;
    bool indexUnique_ = false; // no key stands in two rows
};
