// The tree channel -> message -> signal with what is known of each. Values are taken from the store row by row, for the
// rows that a view shows.
#pragma once

#include "analysis/signalhub.h"

#include <QAbstractItemModel>

class SignalTreeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column { Name, Value, Unit, Text, Raw, Minimum, Maximum, Changed, ColumnCount };

    explicit SignalTreeModel(SignalHub *hub, QObject *parent = nullptr);

    // Takes the message's values anew. Bits of the columns that show something else now, first of the message's row,
    // then of its signals'; for a moment. For an index of a message or signal.
    const std::vector<unsigned> &refresh(const QModelIndex &index);
    // The signal, or false: the index is none.
    bool signalAt(const QModelIndex &index, SignalId *id) const;
    bool isEmpty() const { return channels_[0].empty() && channels_[1].empty(); }
    void languageChanged();

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;

private:
    struct Node {
        const KnownMessage *message;
        bool seen = false;
        MessageRecord record;
    };
    static constexpr int kChannels = 2;

    static constexpr unsigned bit(Column column) { return 1U << column; }
    static constexpr unsigned kAllColumns = (1U << ColumnCount) - 1;
    static unsigned changedColumns(const SignalRecord &before, const SignalRecord &now);

    void rebuild();
    const Node *nodeOf(const QModelIndex &index) const; // of a message or signal; else null
    QString messageText(const Node &node, int column) const;
    QString signalText(const Node &node, int signal, int column) const;
    QString toolTip(const Node &node, int signal) const; // signal -1: the message's

    SignalHub *hub_;
    std::shared_ptr<const MessageLookup> lookup_; // keeps the messages
    std::vector<Node> channels_[kChannels];
    MessageRecord before_; // room for refresh()
    std::vector<unsigned> changed_;
};
