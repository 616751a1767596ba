// The data of a transmit entry as the signals of a database. GUI thread only.
#pragma once

#include "signals/messagelookup.h"
#include "transmit/transmitentry.h"

#include <QAbstractTableModel>

enum SignalFieldColumn {
    FieldNameColumn,
    FieldValueColumn, // physical, or the value's text
    FieldUnitColumn,
    FieldRawColumn,
    FieldBitsColumn, // as changes over time name them
    FieldRangeColumn,
    FieldCommentColumn,
    SignalFieldColumnCount
};

class SignalFields : public QAbstractTableModel
{
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    // What the fields show: the entry's message, of the databases on its channel. Null, a remote frame, or one that no
    // database knows: no rows.
    void show(const TransmitEntryPointer &entry, const std::shared_ptr<const MessageLookup> &lookup);
    bool isKnown() const { return message_ != nullptr; }
    // "Engine", empty when it is not known.
    QString messageName() const;
    void retranslate();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // Values are kept within the declared limits, raw ones within what the bits carry; a signal that is not selected
    // takes its multiplexer along. Tells edited(), and told() when the value is another one than was asked for.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

signals:
    // The entry with other data: the model itself shows it once show() brings it.
    void edited(const TransmitEntryPointer &entry);
    void told(const QString &text); // empty: all is as asked for

private:
    QString cellText(int row, int column) const;

    TransmitEntryPointer entry_;
    std::shared_ptr<const MessageLookup> lookup_; // keeps message_
    const KnownMessage *message_ = nullptr;
    std::vector<SignalValue> values_;
};

// An entry that sends the message with its start values, at its cycle time; on request when it has none. Channel: 0
// or 1.
TransmitEntryPointer entryOfMessage(const MessageDefinition &message, unsigned channel);
// Whether one frame can carry it.
bool isOneFrame(const MessageDefinition &message);
