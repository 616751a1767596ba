// The transmit list as a table. Cells are checked when they are set; a change that holds is told as a whole new list,
// and shown when setList() brings it. GUI thread only.
#pragma once

#include "transmit/transmitentry.h"
#include "transmit/transmitrun.h"

#include <QAbstractTableModel>
#include <QHash>

enum TransmitColumn {
    OnColumn,
    NameColumn,
    EntryChannelColumn,
    EntryIdColumn,
    EntryFormatColumn,
    EntryTypeColumn,
    EntryProtocolColumn,
    SendTypeColumn,
    LengthColumn,
    EntryDataColumn,
    ModeColumn,
    IntervalColumn,
    CountColumn,
    AwaitsColumn,
    KeyColumn,
    ChangesColumn,
    ResumesColumn,
    SentColumn,
    RefusedColumn,
    LastSentColumn,
    CommentColumn,
    TransmitColumnCount
};

// What a delegate may ask of a cell beside the usual: its choices (QStringList), or the pattern of its text (QString).
enum TransmitRole { ChoicesRole = Qt::UserRole, PatternRole };

class TransmitModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    const TransmitList &list() const { return list_; }
    // A reset, unless it has the same entries in the same places.
    void setList(const TransmitList &list);
    // In the list's order.
    void setCounts(const std::vector<TransmitCounts> &counts);
    void retranslate();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // Choices are set by their index, everything else by its text. false, with refused(), when the value does not hold.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    // The same value in several rows, as one change.
    bool setCells(const QVector<int> &rows, int column, const QVariant &value);

signals:
    void edited(const TransmitList &list);
    void refused(const QString &reason);

private:
    QString text(const TransmitEntry &entry, int column) const;
    QString countText(const TransmitEntry &entry, int column) const;

    TransmitList list_;
    QHash<unsigned, TransmitCounts> counts_; // by serial
};

// Sets one cell of an entry; why it cannot be, else an empty text.
QString setTransmitField(TransmitEntry &entry, int column, const QVariant &value);
