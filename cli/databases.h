// The signal databases that a command line names: for filters, names and values.
#pragma once

#include "signals/databaseset.h"
#include "traces/framefilter.h"

class Arguments;

class Databases : public SignalSource
{
public:
    static void addOptions(Arguments &arguments);
    // Loads what the options name; a file that cannot be used is a usage error, its smaller faults are told.
    void load(Arguments &arguments);

    bool isEmpty() const { return set_.entries().empty(); }
    const std::vector<DatabaseSet::Entry> &entries() const { return set_.entries(); }
    const MessageLookup &lookup() const { return *lookup_; }

    int signalNumber(const QString &name) const override;
    std::optional<double> signalValue(int number, const RawFrame &frame) const override;
    QStringList signalNames() const override;

private:
    void add(Arguments &arguments, const QString &path, DatabaseChannels channels);
    void indexSignals();

    DatabaseSet set_;
    std::shared_ptr<const MessageLookup> lookup_ = std::make_shared<MessageLookup>();
    // Where the signals of a name are: their places in the messages that have one.
    struct NamedSignal {
        QHash<const MessageDefinition *, int> places;
    };
    QHash<QString, int> numbers_;
    std::vector<NamedSignal> named_;
};
