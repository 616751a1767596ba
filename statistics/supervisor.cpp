#include "statistics/supervisor.h"

#include <algorithm>
#include <cmath>

Supervisor::Supervisor(const Baseline &baseline, double tolerance)
{
    watched_.reserve(baseline.messages.size());
    for (const BaselineMessage &message : baseline.messages) {
        const auto scaled = [](std::int64_t value, double factor) {
            return static_cast<std::int64_t>(std::llround(static_cast<double>(value) * std::max(0.0, factor)));
        };
        Watched watched{message, scaled(message.minimum, 1 - tolerance), scaled(message.maximum, 1 + tolerance)};
        places_.emplace(message.key.packed(), watched_.size());
        watched_.push_back(watched);
    }
}

void Supervisor::add(const RawFrame &frame, std::vector<Violation> *violations)
{
    if (!begun_) {
        begun_ = true;
        begin_ = now_ = frame.time;
    }
    now_ = std::max(now_, frame.time);
    if (frame.remote || frame.error)
        return;
    const IdentifierKey key = IdentifierKey::of(frame);
    const auto place = places_.find(key.packed());
    if (place == places_.end()) {
        // A bus may send any number of identifiers; those that an identifier table would keep are told one by one.
        if (newOnes_.size() < IdentifierTable::kMaxIdentifiers && newOnes_.insert(key.packed()).second)
            violations->push_back({Violation::Kind::New, key, frame.time});
        return;
    }
    Watched &watched = watched_[place->second];
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
        if (!periodic(watched) || watched.missing)
            continue;
        const std::int64_t distance = now_ - (watched.seen ? watched.last : begin_);
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
        if (watched.seen || watched.missing)
            continue;
        watched.missing = true;
        violations->push_back({Violation::Kind::Missing, watched.message.key, now_, now_ - begin_, watched.latest});
    }
}
