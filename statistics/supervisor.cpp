#include "statistics/supervisor.h"

#include "signals/messagelookup.h"

#include <algorithm>
#include <cmath>

namespace
{

// The key without what differs between the senders of a parameter group.
std::uint64_t groupOf(IdentifierKey key)
{
    key.id = parameterGroup(key.id);
    return key.packed();
}

} // namespace

Supervisor::Supervisor(const Baseline &baseline, double tolerance) : tolerance_(tolerance)
{
    expect(baseline);
}

void Supervisor::expect(const Baseline &baseline)
{
    receivedOnly_ = baseline.receivedOnly;
    for (const BaselineMessage &message : baseline.messages) {
        const auto scaled = [](std::int64_t value, double factor) {
            return static_cast<std::int64_t>(std::llround(static_cast<double>(value) * std::max(0.0, factor)));
        };
        Watched watched{message, scaled(message.minimum, 1 - tolerance_), scaled(message.maximum, 1 + tolerance_)};
        watched.last = now_;
        auto &places = message.group ? groups_ : places_;
        if (places.emplace(message.group ? groupOf(message.key) : message.key.packed(), watched_.size()).second)
            watched_.push_back(watched);
    }
}

// Every sender of a parameter group becomes a message of its own when it is first heard; the group itself has come
// then.
Supervisor::Watched *Supervisor::find(const IdentifierKey &key)
{
    const std::uint64_t packed = key.packed();
    const auto place = places_.find(packed);
    if (place != places_.end())
        return &watched_[place->second];
    const auto group = key.extended ? groups_.find(groupOf(key)) : groups_.end();
    if (group == groups_.end() || watched_.size() >= IdentifierTable::kMaxIdentifiers)
        return nullptr;
    Watched sender = watched_[group->second];
    sender.message.key = key;
    sender.message.group = false;
    sender.message.optional = true; // its group has come
    sender.seen = sender.missing = false;
    Watched &whole = watched_[group->second];
    whole.seen = true;
    whole.missing = false;
    places_.emplace(packed, watched_.size());
    watched_.push_back(sender);
    return &watched_.back();
}

void Supervisor::add(const RawFrame &frame, std::vector<Violation> *violations)
{
    if (!begun_) {
        begun_ = true;
        now_ = frame.time;
        for (Watched &watched : watched_)
            watched.last = now_;
    }
    now_ = std::max(now_, frame.time);
    if (frame.remote || frame.error || (receivedOnly_ && frame.direction == Direction::Sent))
        return;
    const IdentifierKey key = IdentifierKey::of(frame);
    Watched *const found = find(key);
    if (!found) {
        // A bus may send any number of identifiers; those that an identifier table would keep are told one by one.
        if (newOnes_.size() < IdentifierTable::kMaxIdentifiers && newOnes_.insert(key.packed()).second)
            violations->push_back({Violation::Kind::New, key, frame.time});
        return;
    }
    Watched &watched = *found;
    if (watched.seen && periodic(watched) && !watched.missing) {
        const std::int64_t distance = frame.time - watched.last;
        if (distance > watched.latest)
            violations->push_back({Violation::Kind::Late, key, frame.time, distance, watched.latest});
        else if (distance < watched.earliest)
            violations->push_back({Violation::Kind::Early, key, frame.time, distance, watched.earliest});
    }
    watched.seen = true;
    watched.missing = false;
    watched.last = frame.time;
}

void Supervisor::advance(std::int64_t time, std::vector<Violation> *violations)
{
    if (!begun_)
        return;
    now_ = std::max(now_, time);
    for (Watched &watched : watched_) {
        if (!periodic(watched) || watched.missing || (watched.message.group && watched.seen))
            continue;
        const std::int64_t distance = now_ - watched.last;
        if (distance <= kMissingFactor * watched.latest)
            continue;
        watched.missing = true;
        violations->push_back({Violation::Kind::Missing, watched.message.key, now_, distance, watched.latest});
    }
}

void Supervisor::finish(std::vector<Violation> *violations)
{
    advance(now_, violations);
    for (Watched &watched : watched_) {
        if (watched.seen || watched.missing || watched.message.optional)
            continue;
        watched.missing = true;
        violations->push_back(
            {Violation::Kind::Missing, watched.message.key, now_, now_ - watched.last, watched.latest});
    }
}
