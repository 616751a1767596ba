// The databases in use, each on channel 1, 2 or both. One thread owns the set; what lookup() gives is for any thread.
#pragma once

#include "signals/messagelookup.h"

class DatabaseSet
{
public:
    struct Entry {
        QString path;
        DatabaseChannels channels = DatabaseChannels::Both;
        std::shared_ptr<const LoadedDatabase> database; // never null
        QByteArray fingerprint;                         // of the file's content
        QByteArray rejected; // fingerprint of, or error with, what was told as unreadable since
    };
    enum class Change {
        Unchanged, // the file has the content that is loaded
        Loaded,
        Kept, // the file cannot be read (any more); what was loaded stays
    };
    struct Outcome {
        QString path;
        Change change = Change::Unchanged;
        QVector<DbcProblem> problems; // of the reading; may be told though the database was loaded
    };

    // Loads a file; one that is in the set already gets the channels and is read again. Kept: it is not in the set.
    Outcome add(const QString &path, DatabaseChannels channels);
    bool remove(const QString &path);
    bool setChannels(const QString &path, DatabaseChannels channels);
    // Reads again what has changed on the disk; only what is not Unchanged is told.
    QVector<Outcome> reloadChanged();

    const std::vector<Entry> &entries() const { return entries_; }
    QStringList paths() const;
    // The present state; later changes of the set do not show in it. Never null.
    std::shared_ptr<const MessageLookup> lookup() const { return lookup_; }

private:
    Entry *entryOf(const QString &path);
    static Outcome load(Entry *entry);
    void renewLookup();

    std::vector<Entry> entries_;
    std::shared_ptr<const MessageLookup> lookup_ = std::make_shared<MessageLookup>();
};
