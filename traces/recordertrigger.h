// When a recorder begins and ends on its own, and what it keeps from before.
#pragma once

#include "device/driver/identifiers.h"
#include "traces/rawframe.h"

#include <QByteArray>

#include <optional>
#include <vector>

// What a frame, or what happened between two, must be to start or stop a recording.
struct RecorderTrigger {
    enum class Kind : std::uint8_t {
        Identifier, // a frame that is no error frame, with an identifier in the range
        Data,       // the same, whose data fit the mask as well
        ErrorFrame, // any error frame
        LostFrames, // frames were lost before they reached the recorder
    };
    Kind kind = Kind::Identifier;
    std::uint32_t firstId = 0;
    std::uint32_t lastId = kLargestExtendedId;
    std::optional<bool> extended; // unset: both kinds of identifiers
    std::uint16_t channel = 0;    // 0: any; also of error frames
    // Data: (data & mask) == (value & mask), byte by byte. A frame that has fewer bytes than the mask does not fit;
    // a value shorter than the mask goes on with zeros.
    QByteArray mask;
    QByteArray value;

    bool matches(const RawFrame &frame) const;
};

bool anyMatches(const std::vector<RecorderTrigger> &triggers, const RawFrame &frame);
bool anyMatchesLost(const std::vector<RecorderTrigger> &triggers);

// The last frames before a trigger, as many as a number and a time allow.
class PreTriggerBuffer
{
public:
    // No buffer holds more, whatever was asked for: some 18 MB.
    static constexpr int kMostFrames = 200'000;

    // At most so many frames (0: as many as fit the time), no older than so many milliseconds before the newest
    // (0: however old). With both 0 nothing is kept.
    PreTriggerBuffer(int frames, int milliseconds);

    void add(const RawFrame &frame);
    // Lets go of what is too old at a time, in nanoseconds as frames have it.
    void dropOld(std::int64_t now);
    int size() const { return count_; }
    // From the oldest on; index below size().
    const RawFrame &at(int index) const { return ring_[place(index)]; }
    void clear() { count_ = 0; }

private:
    std::size_t place(int index) const { return (first_ + static_cast<std::size_t>(index)) % ring_.size(); }
    void grow();

    const int most_;
    const std::int64_t span_;    // nanoseconds; 0: any
    std::vector<RawFrame> ring_; // grows up to what is needed
    std::size_t first_ = 0;
    int count_ = 0;
};
