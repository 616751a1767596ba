#include "signals/messagelookup.h"

namespace
{

constexpr std::uint32_t kExtendedBit = 0x80000000;
constexpr unsigned kSourceBits = 8;
constexpr std::uint32_t kGroupMask = 0x3FFFF; // both data pages, PDU format, PDU specific
constexpr std::uint32_t kDestinationMask = 0xFF;
constexpr std::uint32_t kFirstBroadcastFormat = 240;

std::uint32_t keyOf(std::uint32_t id, bool extended)
{
    return extended ? id | kExtendedBit : id;
}

} // namespace

LoadedDatabase::LoadedDatabase(DbcResult result)
    : content(std::move(result.database)), problems(std::move(result.problems))
{
    messages.reserve(static_cast<std::size_t>(content.messages.size()));
    for (const MessageDefinition &message : content.messages)
        messages.push_back({&message, this, MessageDecoder(message)});
}

std::uint32_t parameterGroup(std::uint32_t id)
{
    const std::uint32_t group = (id >> kSourceBits) & kGroupMask;
    const std::uint32_t format = (group >> 8) & 0xFF;
    return format < kFirstBroadcastFormat ? group & ~kDestinationMask : group;
}

MessageLookup::MessageLookup(const std::vector<Entry> &entries)
{
    for (const Entry &entry : entries) {
        kept_.push_back(entry.database);
        for (unsigned i = 0; i < kChannels; ++i) {
            const bool here = i == kChannels - 1 ? entry.channels == DatabaseChannels::Both
                                                 : (static_cast<unsigned>(entry.channels) >> i) & 1;
            if (!here)
                continue;
            for (const KnownMessage &message : entry.database->messages) {
                const auto add = [&](QHash<std::uint32_t, const KnownMessage *> *table, std::uint32_t key) {
                    if (!table->contains(key))
                        table->insert(key, &message);
                };
                add(&channels_[i].exact, keyOf(message.definition->id, message.definition->extended));
                if (message.definition->j1939)
                    add(&channels_[i].groups, parameterGroup(message.definition->id));
            }
        }
    }
}

const KnownMessage *MessageLookup::find(unsigned channel, std::uint32_t id, bool extended) const
{
    const Channel &tables = channels_[channel >= 1 && channel < kChannels ? channel - 1 : kChannels - 1];
    const KnownMessage *found = tables.exact.value(keyOf(id, extended), nullptr);
    return found || !extended ? found : tables.groups.value(parameterGroup(id), nullptr);
}

const KnownMessage *MessageLookup::find(const RawFrame &frame) const
{
    return frame.error ? nullptr : find(frame.channel, frame.id, frame.extended);
}
