// The signal databases that a command line names: for filters, names and values.
#pragma once

#include "signals/signalnames.h"

class Arguments;

class Databases
{
public:
    static void addOptions(Arguments &arguments);
    // Loads what the options name; a file that cannot be used is a usage error, its smaller faults are told.
    void load(Arguments &arguments);

    bool isEmpty() const { return set_.entries().empty(); }
    QStringList paths() const { return set_.paths(); }
    const std::vector<DatabaseSet::Entry> &entries() const { return set_.entries(); }
    const MessageLookup &lookup() const { return *lookup_; }

    // For filters; null when there are no databases.
    const std::shared_ptr<const SignalSource> &signalSource() const { return signalSource_; }

private:
    void add(Arguments &arguments, const QString &path, DatabaseChannels channels);

    DatabaseSet set_;
    std::shared_ptr<const MessageLookup> lookup_ = std::make_shared<MessageLookup>();
    std::shared_ptr<const SignalSource> signalSource_;
};
