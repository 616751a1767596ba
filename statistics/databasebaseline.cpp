#include "statistics/databasebaseline.h"

#include "device/driver/timeunits.h"

#include <unordered_set>

namespace
{

bool isFor(DatabaseChannels channels, unsigned channel)
{
    if (channel == 1)
        return channels != DatabaseChannels::Second;
    return channel == 2 ? channels != DatabaseChannels::First : channels == DatabaseChannels::Both;
}

} // namespace

Baseline databaseBaseline(const std::vector<DatabaseSet::Entry> &databases, const std::vector<unsigned> &channels)
{
    Baseline baseline;
    baseline.receivedOnly = true;
    std::unordered_set<std::uint64_t> known; // of two databases the earlier one counts
    for (const unsigned channel : channels) {
        for (const DatabaseSet::Entry &entry : databases) {
            if (!isFor(entry.channels, channel))
                continue;
            for (const MessageDefinition &definition : entry.database->content.messages) {
                BaselineMessage message;
                message.key.id = definition.id;
                message.key.channel = static_cast<std::uint16_t>(channel);
                message.key.extended = definition.extended;
                if (!known.insert(message.key.packed()).second)
                    continue;
                message.minimum = message.maximum = definition.cycleTimeMs * kNanosecondsPerMillisecond;
                message.mean = static_cast<double>(message.minimum);
                message.optional = definition.cycleTimeMs == 0;
                message.group = definition.j1939;
                baseline.messages.push_back(message);
            }
        }
    }
    return baseline;
}
