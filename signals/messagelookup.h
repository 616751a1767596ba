// Which message a frame is, over several databases: a snapshot that never changes, for any thread.
#pragma once

#include "signals/dbcreader.h"
#include "signals/decoder.h"

#include <QHash>

#include <memory>

struct LoadedDatabase;

struct KnownMessage {
    const MessageDefinition *definition;
    const LoadedDatabase *database;
    MessageDecoder decoder;
};

// A database with the decoders of its messages; never changes once it is loaded.
struct LoadedDatabase {
    explicit LoadedDatabase(DbcResult result);
    LoadedDatabase(const LoadedDatabase &) = delete;
    LoadedDatabase &operator=(const LoadedDatabase &) = delete;

    const SignalDatabase content;
    const QVector<DbcProblem> problems;
    std::vector<KnownMessage> messages; // in content's order
};

enum class DatabaseChannels : std::uint8_t { First = 1, Second = 2, Both = 3 };

// The parameter group of a 29-bit identifier, without priority and source; without the destination when the PDU format
// is below 240 (SAE J1939-21).
std::uint32_t parameterGroup(std::uint32_t id);

class MessageLookup
{
public:
    struct Entry {
        std::shared_ptr<const LoadedDatabase> database;
        DatabaseChannels channels;
    };

    MessageLookup() = default;
    // Of two databases that know the same identifier on a channel the earlier one is used.
    explicit MessageLookup(const std::vector<Entry> &entries);

    // By the exact identifier, else by its parameter group; nullptr when no database knows it. Channels from 1; on
    // those above 2, which recordings may have, databases for both channels count.
    const KnownMessage *find(unsigned channel, std::uint32_t id, bool extended) const;
    // Error frames are no message.
    const KnownMessage *find(const RawFrame &frame) const;

private:
    struct Channel {
        QHash<std::uint32_t, const KnownMessage *> exact;
        QHash<std::uint32_t, const KnownMessage *> groups;
    };
    static constexpr unsigned kChannels = 3; // the third stands for all others

    std::vector<std::shared_ptr<const LoadedDatabase>> kept_;
    Channel channels_[kChannels];
};
