#include "signals/databaseset.h"

#include <QCryptographicHash>

#include <algorithm>

DatabaseSet::Entry *DatabaseSet::entryOf(const QString &path)
{
    const auto found =
        std::find_if(entries_.begin(), entries_.end(), [&](const Entry &entry) { return entry.path == path; });
    return found == entries_.end() ? nullptr : &*found;
}

DatabaseSet::Outcome DatabaseSet::load(Entry *entry)
{
    Outcome outcome{entry->path, Change::Kept, {}};
    QByteArray content;
    DbcProblem problem;
    if (!readDbcContent(entry->path, &content, &problem)) {
        const QByteArray reason = problem.detail.toUtf8();
        if (entry->database && reason == entry->rejected)
            outcome.change = Change::Unchanged; // told already
        else
            outcome.problems.append(problem);
        entry->rejected = reason;
        return outcome;
    }
    const QByteArray fingerprint = QCryptographicHash::hash(content, QCryptographicHash::Sha256);
    if (entry->database && (fingerprint == entry->fingerprint || fingerprint == entry->rejected)) {
        if (fingerprint == entry->fingerprint)
            entry->rejected.clear();
        outcome.change = Change::Unchanged;
        return outcome;
    }
    DbcResult result = readDbc(content);
    outcome.problems = result.problems;
    // An editor may have just begun to write: a file without messages does not replace one with them.
    const bool emptied = entry->database && !entry->database->messages.empty() && result.database.messages.isEmpty();
    if (!result.usable() || emptied) {
        entry->rejected = fingerprint;
        return outcome;
    }
    entry->rejected.clear();
    entry->database = std::make_shared<LoadedDatabase>(std::move(result));
    entry->fingerprint = fingerprint;
    outcome.change = Change::Loaded;
    return outcome;
}

DatabaseSet::Outcome DatabaseSet::add(const QString &path, DatabaseChannels channels)
{
    Outcome outcome;
    if (Entry *present = entryOf(path)) {
        present->channels = channels;
        outcome = load(present);
    } else {
        Entry entry;
        entry.path = path;
        entry.channels = channels;
        outcome = load(&entry);
        if (outcome.change == Change::Kept)
            return outcome;
        entries_.push_back(std::move(entry));
    }
    renewLookup();
    return outcome;
}

bool DatabaseSet::remove(const QString &path)
{
    const auto gone =
        std::remove_if(entries_.begin(), entries_.end(), [&](const Entry &entry) { return entry.path == path; });
    if (gone == entries_.end())
        return false;
    entries_.erase(gone, entries_.end());
    renewLookup();
    return true;
}

bool DatabaseSet::setChannels(const QString &path, DatabaseChannels channels)
{
    Entry *entry = entryOf(path);
    if (!entry)
        return false;
    entry->channels = channels;
    renewLookup();
    return true;
}

QVector<DatabaseSet::Outcome> DatabaseSet::reloadChanged()
{
    QVector<Outcome> outcomes;
    for (Entry &entry : entries_) {
        const Outcome outcome = load(&entry);
        if (outcome.change != Change::Unchanged)
            outcomes.append(outcome);
    }
    renewLookup();
    return outcomes;
}

QStringList DatabaseSet::paths() const
{
    QStringList paths;
    for (const Entry &entry : entries_)
        paths.append(entry.path);
    return paths;
}

void DatabaseSet::renewLookup()
{
    std::vector<MessageLookup::Entry> entries;
    entries.reserve(entries_.size());
    for (const Entry &entry : entries_)
        entries.push_back({entry.database, entry.channels});
    lookup_ = std::make_shared<MessageLookup>(entries);
}
