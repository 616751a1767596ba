#include "statistics/recordingcomparison.h"

#include "traces/tracereader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{

bool sameData(const RawFrame &a, const RawFrame &b)
{
    return a.length == b.length && (a.remote || std::memcmp(a.data, b.data, a.length) == 0);
}

} // namespace

RecordingComparison::RecordingComparison(Side left, Side right, bool sameChannels, std::size_t mostWaiting)
    : sides_{std::move(left), std::move(right)},
      ends_{sides_[0].index->rows(), sides_[1].index->rows()},
      sameChannels_(sameChannels),
      mostWaiting_(std::max<std::size_t>(mostWaiting, 2 * kFramesAtATime))
{
    thread_ = std::thread(&RecordingComparison::run, this);
}

RecordingComparison::~RecordingComparison()
{
    cancel();
    thread_.join();
}

RecordingComparison::State RecordingComparison::state() const
{
    const std::lock_guard<std::mutex> lock(guard_);
    return state_;
}

std::vector<ComparedIdentifier> RecordingComparison::result() const
{
    std::vector<ComparedIdentifier> all;
    if (!state().finished)
        return all;
    for (const Entry &entry : entries_)
        all.push_back(entry.compared);
    std::sort(all.begin(), all.end(),
              [](const ComparedIdentifier &a, const ComparedIdentifier &b) { return a.key.packed() < b.key.packed(); });
    return all;
}

// Frames wait for their counterparts, few when the recordings are alike. Identifiers for which there would be too many,
// because they come at very different places, get rounds of their own; one alone never has more than a chunk waiting.
void RecordingComparison::run()
{
    readRound(true);
    for (;;) {
        bool more = false;
        for (Entry &entry : entries_) {
            entry.drop();
            entry.open = std::exchange(entry.later, false) && entry.compared.isInBoth();
            more = more || entry.open;
        }
        if (!more || stop_)
            break;
        readRound(false);
    }
    const std::lock_guard<std::mutex> lock(guard_);
    state_.finished = true;
}

void RecordingComparison::readRound(bool first)
{
    RecordingRows rows[2] = {RecordingRows(*sides_[0].index), RecordingRows(*sides_[1].index)};
    std::uint64_t at[2] = {sides_[0].row, sides_[1].row};
    for (const int side : {0, 1}) {
        ended_[side] = at[side] >= ends_[side];
        waiting_[side] = 0;
        const std::lock_guard<std::mutex> lock(guard_);
        state_.total += ended_[side] ? 0 : ends_[side] - at[side];
    }
    std::vector<RawFrame> frames(kFramesAtATime);
    while (!stop_ && !(ended_[0] && ended_[1])) {
        const int behind = waiting_[1] < waiting_[0] ? 1 : 0;
        const int side = ended_[behind] ? 1 - behind : behind;
        const int wanted = static_cast<int>(std::min<std::uint64_t>(kFramesAtATime, ends_[side] - at[side]));
        const int got = rows[side].read(at[side], wanted, frames.data());
        for (int i = 0; i < got; ++i)
            take(side, at[side] + static_cast<std::uint64_t>(i), frames[static_cast<std::size_t>(i)], first);
        at[side] += static_cast<std::uint64_t>(got);
        ended_[side] = got < wanted || at[side] == ends_[side];
        while (waiting_[0] + waiting_[1] > mostWaiting_)
            postponeLongest();
        const std::lock_guard<std::mutex> lock(guard_);
        state_.done += static_cast<std::uint64_t>(got);
        state_.unreadable = state_.unreadable || got < wanted;
    }
}

RecordingComparison::Entry *RecordingComparison::entryOf(const RawFrame &frame)
{
    IdentifierKey key = IdentifierKey::of(frame);
    key.direction = Direction::Received;
    if (!sameChannels_)
        key.channel = 0;
    const auto known = places_.find(key.packed());
    if (known != places_.end())
        return &entries_[known->second];
    if (entries_.size() >= kMaxIdentifiers)
        return nullptr;
    places_.emplace(key.packed(), entries_.size());
    entries_.emplace_back();
    entries_.back().compared.key = key;
    return &entries_.back();
}

void RecordingComparison::take(int side, std::uint64_t row, const RawFrame &frame, bool first)
{
    if (frame.error)
        return;
    Entry *entry = entryOf(frame);
    if (!entry) {
        const std::lock_guard<std::mutex> lock(guard_);
        state_.beyondCeiling += first ? 1 : 0;
        return;
    }
    ComparedIdentifier &compared = entry->compared;
    if (first) {
        ComparedSide &own = compared.sides[side];
        if (own.count > 0)
            own.period.add(frame.time - own.lastTime);
        own.lastTime = frame.time;
        ++own.count;
    }
    if (entry->open)
        compare(entry, side, row, frame);
}

void RecordingComparison::compare(Entry *entry, int side, std::uint64_t row, const RawFrame &frame)
{
    if (entry->size() == 0 || entry->ahead == side) {
        if (ended_[1 - side])
            return; // there will be nothing to compare with
        entry->ahead = side;
        entry->waiting.push_back({row, frame});
        ++waiting_[side];
        return;
    }
    const Waiting other = entry->waiting[entry->head++];
    --waiting_[1 - side];
    ++entry->pairs;
    if (!sameData(frame, other.frame)) {
        ComparedSide *sides = entry->compared.sides;
        sides[side].row = row;
        sides[side].frame = frame;
        sides[1 - side].row = other.row;
        sides[1 - side].frame = other.frame;
        entry->compared.difference = entry->pairs;
        waiting_[entry->ahead] -= entry->size();
        entry->drop();
        entry->open = false;
    } else if (entry->head * 2 > entry->waiting.size()) {
        entry->waiting.erase(entry->waiting.begin(), entry->waiting.begin() + static_cast<std::ptrdiff_t>(entry->head));
        entry->head = 0;
    }
}

void RecordingComparison::postponeLongest()
{
    const auto longest = std::max_element(entries_.begin(), entries_.end(),
                                          [](const Entry &a, const Entry &b) { return a.size() < b.size(); });
    waiting_[longest->ahead] -= longest->size();
    longest->drop();
    longest->open = false;
    longest->later = true;
}

void RecordingComparison::Entry::drop()
{
    waiting.clear();
    head = 0;
    pairs = 0;
}
