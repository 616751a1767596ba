// The signals of a set of databases by their names, for filters: a snapshot that never changes, for any thread.
#pragma once

#include "signals/databaseset.h"
#include "traces/framefilter.h"

class SignalNames : public SignalSource
{
public:
    // Null when there are no databases.
    static std::shared_ptr<const SignalSource> of(const DatabaseSet &set) { return of(set.entries(), set.lookup()); }
    static std::shared_ptr<const SignalSource> of(const std::vector<DatabaseSet::Entry> &entries,
                                                  std::shared_ptr<const MessageLookup> lookup);

    int signalNumber(const QString &name) const override;
    std::optional<double> signalValue(int number, const RawFrame &frame) const override;
    QStringList signalNames() const override;

private:
    SignalNames(const std::vector<DatabaseSet::Entry> &entries, std::shared_ptr<const MessageLookup> lookup);
    void note(const QString &name, const MessageDefinition *message, int place);

    // Where the signals of a name are: their places in the messages that have one.
    using Places = QHash<const MessageDefinition *, int>;

    const std::shared_ptr<const MessageLookup> lookup_; // keeps the databases
    QHash<QString, int> numbers_;
    std::vector<Places> named_;
};
