// The signal databases in use: one set for the whole program, remembered, and following its files. GUI thread.
#pragma once

#include "signals/databaseset.h"
#include "signals/databasewatcher.h"

#include <QObject>

#include <memory>

class SignalDatabases : public QObject
{
    Q_OBJECT

public:
    // The program's; it lives as long as somebody holds it, and everybody gets the same one.
    static std::shared_ptr<SignalDatabases> shared();

    // Loads the databases of the last time; once, when the first window is shown.
    void start();

    const std::vector<DatabaseSet::Entry> &entries() const { return set_.entries(); }
    std::shared_ptr<const MessageLookup> lookup() const { return set_.lookup(); }
    // Neither in use nor, before start(), remembered.
    bool isEmpty() const;
    void add(const QString &path, DatabaseChannels channels);
    void remove(const QString &path);
    void setChannels(const QString &path, DatabaseChannels channels);
    // The database of the simulated adapter's vehicle, beside the program; empty when it is in use or not there.
    QString unusedVehicleDatabase() const;

signals:
    void changed(); // lookup() is that of the new databases
    void log(const QString &message);

private:
    SignalDatabases();
    void tell(const DatabaseSet::Outcome &outcome);
    void reload();
    void apply();

    DatabaseSet set_;
    DatabaseWatcher watcher_;
    bool started_ = false;
};
