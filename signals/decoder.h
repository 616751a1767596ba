// The values that a message's bytes carry. A decoder is made once per message; decoding allocates nothing.
#pragma once

#include "signals/database.h"
#include "traces/rawframe.h"

#include <vector>

constexpr unsigned kByteBits = 8;
constexpr unsigned kWordBits = 64; // of the words that values are taken from

enum class SignalState : std::uint8_t {
    Valid,
    NotSelected, // its multiplexer has another value, or is not valid itself
    BeyondFrame, // the frame is too short for it
};

struct SignalValue {
    double physical = 0;
    // Exact: the integer (of an unsigned signal of 64 bits: its bits), or the bits of a float or double.
    std::int64_t raw = 0;
    SignalState state = SignalState::BeyondFrame;
};

class MessageDecoder
{
public:
    MessageDecoder() = default;
    explicit MessageDecoder(const MessageDefinition &message);

    // Values that decode() fills, in the order of the message's signals.
    int signalCount() const { return static_cast<int>(steps_.size()); }
    // Any thread. Remote and error frames carry nothing: everything is beyond them.
    void decode(const RawFrame &frame, SignalValue *values) const;
    // Of `length` bytes those beyond a frame's 64 do not count.
    void decode(const std::uint8_t *data, unsigned length, SignalValue *values) const;

private:
    enum class Kind : std::uint8_t { Signed, Unsigned, Unsigned64, Float, Double };
    // How one signal is cut out: eight bytes are loaded, the signal is shifted to their top and then down to the
    // bottom.
    struct Step {
        std::uint8_t load;      // first of the eight bytes; never beyond the frame's 64
        std::uint8_t up;        // shift left
        std::uint8_t down;      // shift right
        std::uint8_t extraBits; // in the ninth byte; 0: has none
        std::uint8_t needed;    // bytes of the frame
        Kind kind;
        bool motorola;
        bool selected;            // multiplexed
        std::int32_t target;      // index of its value
        std::int32_t multiplexer; // index of its multiplexer's value
        std::uint32_t firstRange; // in ranges_
        std::uint32_t rangeCount;
        double factor;
        double offset;
    };

    void addStep(const SignalDefinition &signal, int index);
    static Step stepOf(const SignalDefinition &signal, int index);
    void decodeBytes(const std::uint8_t *data, unsigned length, SignalValue *values) const;
    bool isSelected(const Step &step, const SignalValue *values) const;

    std::vector<Step> steps_; // multiplexers before what they select
    std::vector<SelectorRange> ranges_;
};

// What a raw value, as SignalValue has it, means.
double physicalValue(const SignalDefinition &signal, std::int64_t raw);
