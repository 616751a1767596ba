// What the signal windows share: the databases in use, which are remembered and follow their files, and the live values
// that they give. GUI thread.
#pragma once

#include "analysis/signalstore.h"
#include "signals/databaseset.h"
#include "signals/databasewatcher.h"

#include <QObject>

class SignalHub : public QObject
{
    Q_OBJECT

public:
    explicit SignalHub(QObject *parent = nullptr);
    ~SignalHub() override;

    // Loads the databases of the last time; once, when the first window is shown.
    void start();

    const std::vector<DatabaseSet::Entry> &databases() const { return set_.entries(); }
    std::shared_ptr<const MessageLookup> lookup() const { return set_.lookup(); }
    void add(const QString &path, DatabaseChannels channels);
    void remove(const QString &path);
    void setChannels(const QString &path, DatabaseChannels channels);
    // The database of the simulated adapter's vehicle, beside the program; empty when it is in use or not there.
    QString unusedVehicleDatabase() const;

    SignalStore &store() { return store_; }
    // Frames are read while somebody wants them.
    void want() { setWanted(wanted_ + 1); }
    void unwant() { setWanted(wanted_ - 1); }

signals:
    void databasesChanged(); // store and lookup() are those of the new databases
    void log(const QString &message);

private:
    void tell(const DatabaseSet::Outcome &outcome);
    void reload();
    void apply();
    void setWanted(int count);

    DatabaseSet set_;
    DatabaseWatcher watcher_;
    SignalStore store_;
    std::unique_ptr<LiveSource> source_; // while wanted
    int wanted_ = 0;
    bool started_ = false;
};
