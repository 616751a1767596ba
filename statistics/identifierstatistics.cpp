#include "statistics/identifierstatistics.h"

#include <algorithm>
#include <cmath>

namespace
{

constexpr std::size_t kFirstSlots = 1024;

// The 64-bit mixer of MurmurHash3.
std::uint64_t mixed(std::uint64_t value)
{
    value ^= value >> 33;
    value *= 0xFF51AFD7ED558CCDULL;
    value ^= value >> 33;
    value *= 0xC4CEB9FE1A85EC53ULL;
    return value ^ (value >> 33);
}

void noteChanges(IdentifierStatistics &entry, const RawFrame &frame)
{
    const unsigned common = std::min(entry.last.length, frame.length);
    for (unsigned i = 0; i < common; ++i) {
        const std::uint8_t difference = entry.last.data[i] ^ frame.data[i];
        if (difference == 0)
            continue;
        entry.movedBits[i] |= difference;
        entry.changedAt[i] = frame.time;
    }
    // Bytes that were not there before have changed, but no bit of them has moved.
    for (unsigned i = common; i < frame.length; ++i)
        entry.changedAt[i] = frame.time;
}

} // namespace

IdentifierKey IdentifierKey::of(const RawFrame &frame)
{
    return {frame.id, frame.channel, frame.direction, frame.extended, frame.remote, frame.error};
}

std::uint64_t IdentifierKey::packed() const
{
    constexpr unsigned kExtendedBit = 32;
    constexpr unsigned kRemoteBit = 33;
    constexpr unsigned kErrorBit = 34;
    constexpr unsigned kDirectionBit = 35;
    constexpr unsigned kChannelShift = 36;
    const auto bit = [](bool value, unsigned place) { return std::uint64_t(value ? 1 : 0) << place; };
    return std::uint64_t(channel) << kChannelShift | bit(direction == Direction::Sent, kDirectionBit) |
           bit(error, kErrorBit) | bit(remote, kRemoteBit) | bit(extended, kExtendedBit) | id;
}

void PeriodStatistics::add(std::int64_t distance)
{
    now = distance;
    minimum = count == 0 ? distance : std::min(minimum, distance);
    maximum = count == 0 ? distance : std::max(maximum, distance);
    ++count;
    const double before = static_cast<double>(distance) - mean;
    mean += before / static_cast<double>(count);
    squares += before * (static_cast<double>(distance) - mean);
}

double PeriodStatistics::deviation() const
{
    return count < 2 ? 0 : std::sqrt(squares / static_cast<double>(count - 1));
}

IdentifierTable::IdentifierTable() : slots_(kFirstSlots) {}

std::size_t IdentifierTable::slotOf(std::uint64_t packed) const
{
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = mixed(packed) & mask;
    while (slots_[slot].entry != 0 && slots_[slot].packed != packed)
        slot = (slot + 1) & mask;
    return slot;
}

const IdentifierStatistics *IdentifierTable::add(const RawFrame &frame)
{
    const IdentifierKey key = IdentifierKey::of(frame);
    const std::uint64_t packed = key.packed();
    std::size_t slot = slotOf(packed);
    if (slots_[slot].entry == 0) {
        if (entries_.size() >= kMaxIdentifiers) {
            ++beyondCeiling_;
            return nullptr;
        }
        if (entries_.size() + 1 > slots_.size() / 2) {
            grow();
            slot = slotOf(packed);
        }
        IdentifierStatistics entry;
        entry.key = key;
        entry.firstSeen = frame.time;
        entry.changedAt.fill(kNeverChanged);
        entries_.push_back(entry);
        slots_[slot] = {packed, static_cast<std::uint32_t>(entries_.size())};
    }
    IdentifierStatistics &entry = entries_[slots_[slot].entry - 1];
    if (entry.count > 0) {
        noteChanges(entry, frame);
        entry.period.add(frame.time - entry.lastSeen);
    }
    ++entry.count;
    entry.lastSeen = frame.time;
    entry.last = frame;
    return &entry;
}

void IdentifierTable::clear()
{
    *this = IdentifierTable();
}

const IdentifierStatistics *IdentifierTable::find(const IdentifierKey &key) const
{
    const std::uint32_t entry = slots_[slotOf(key.packed())].entry;
    return entry == 0 ? nullptr : &entries_[entry - 1];
}

void IdentifierTable::grow()
{
    std::vector<Slot> old(slots_.size() * 2);
    old.swap(slots_);
    for (const Slot &slot : old) {
        if (slot.entry != 0)
            slots_[slotOf(slot.packed)] = slot;
    }
}
