// What the signal windows of one source of frames share: the live bus', or those of a part of a recording. GUI thread.
#pragma once

#include "analysis/signaldatabases.h"
#include "analysis/signalreading.h"

class SignalHub : public QObject
{
    Q_OBJECT

public:
    // Without a part: live.
    explicit SignalHub(const std::optional<RecordingPart> &part = {}, QObject *parent = nullptr);
    ~SignalHub() override;

    // Loads the databases of the last time unless they are.
    void start() { databases_->start(); }
    SignalDatabases *databases() const { return databases_.get(); }
    std::shared_ptr<const MessageLookup> lookup() const { return databases_->lookup(); }

    // The values: live ones, or what they were at the recording's end.
    SignalStore &store() { return values_->store(); }
    const SignalReading &values() const { return *values_; }
    // Values are read while somebody wants them; a recording to its end once somebody has.
    void want() { setWanted(wanted_ + 1); }
    void unwant() { setWanted(wanted_ - 1); }
    // For curves that are added together: the live values, else a pass over the recording that is theirs alone.
    std::shared_ptr<SignalReading> curveReading() const;

    bool isLive() const { return !part_; }
    // " - drive.log", with the rows when it is not all of them; live: nothing.
    QString titleEnd() const;
    // Of the recording's first and last row, nanoseconds; live or without rows: nothing.
    std::optional<std::pair<std::int64_t, std::int64_t>> times() const { return times_; }

signals:
    void databasesChanged(); // store and lookup() are those of the new databases

private:
    void setWanted(int count);
    void readTimes();

    const std::optional<RecordingPart> part_;
    const std::shared_ptr<SignalDatabases> databases_;
    const std::shared_ptr<SignalReading> values_;
    std::optional<std::pair<std::int64_t, std::int64_t>> times_;
    int wanted_ = 0;
    bool reading_ = false; // values_
};

// A recording was not read to its end.
QString fileChangedText();
